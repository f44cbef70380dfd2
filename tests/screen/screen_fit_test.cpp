// The window as it opens on a real X screen (Xvfb, with or without a window
// manager) of the size and scale CTest gives: it fits; the map, its scales,
// the charts and every panel element lie inside it apart, large enough, their
// widest texts whole, drawn in the screen's pixels. With room: 1640 x 960.
#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "app/MainWindow.h"
#include "tracking/SharedState.h"
#include "ui_MainWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QTest>
#include <gtest/gtest.h>

using namespace lunaquill;

namespace {

std::string Name(const QWidget *w) { return w->objectName().toStdString(); }

// A widget's rectangle in the window's coordinates.
QRect InWindow(const QWidget *w, const QWidget *window)
{
    return QRect(w->mapTo(window, QPoint(0, 0)), w->size());
}

// The widest texts the read-outs show (digits are equally wide in the panels'
// font): a rise time, the clock, an outer planet's distance, a Doppler shift at
// 47 GHz, an 11-character call sign, a 47 GHz frequency, the longest source
// name, a hot sky, a longitude.
void ShowWidestTexts(Ui::MainWindow *ui)
{
    const std::pair<std::vector<QAbstractButton *>, const char *> texts[] = {
        {{ui->HomeRiseTime, ui->DxRiseTime}, "Rise: 12-31 23:59"}, {{ui->Distance}, "49.123456 AU"},
        {{ui->DateTimeButton}, "Wed Sep 30 23:59:59 2026"}, {{ui->SourceButton}, "SAGITTARIUS A"},
        {{ui->HomeDoppler, ui->DxDoppler, ui->MutualDoppler}, "-376000 Hz"},
        {{ui->HomeCallsign, ui->DxCallsign}, "VE1ABC/VY2X"}, {{ui->SetFrequencyButton}, "47088.00 Mhz"},
        {{ui->HomeSkyTemp, ui->DxSkyTemp}, "12345.6"}, {{ui->HomeLongitude, ui->DxLongitude}, "-179.99"},
    };
    for (const auto &[buttons, text] : texts)
        for (QAbstractButton *b : buttons)
            b->setText(text);
}

class ScreenFit : public testing::Test
{
protected:
    void SetUp() override
    {
        if (QGuiApplication::platformName() != "xcb")
            GTEST_SKIP() << "needs an X screen of the size under test (xvfb-run)";
        test::ResetSharedState();
        window = std::make_unique<MainWindow>(); // no settings file: a first run
        ui = window->widgets();
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        QTest::qWait(100);
        free = window->screen()->availableGeometry();
        roomForTheForm = free.width() >= 1640 && free.height() >= 960;
    }

    std::unique_ptr<MainWindow> window;
    Ui::MainWindow *ui = nullptr;
    QRect free;
    bool roomForTheForm = false;
};

TEST_F(ScreenFit, WindowFitsEveryPanelElementIsWholeAndApartAndDrawingsUseTheScreensPixels)
{
    EXPECT_DOUBLE_EQ(window->devicePixelRatioF(), qEnvironmentVariable("QT_SCALE_FACTOR", "1").toDouble());
    // Smaller screens: the whole free area, a window manager's frame (with a
    // title bar, reported a moment after mapping) included.
    for (int wait = 0; !roomForTheForm && wait < 40 && window->frameGeometry().size() != free.size(); ++wait)
        QTest::qWait(50);
    const QSize frame = window->frameGeometry().size();
    EXPECT_TRUE(free.contains(window->frameGeometry())) << frame.width() << "x" << frame.height();
    EXPECT_EQ(roomForTheForm ? window->size() : frame, roomForTheForm ? QSize(1640, 960) : free.size());
    EXPECT_TRUE(!qEnvironmentVariableIntValue("LUNAQUILL_WINDOW_MANAGED") || frame.height() > window->height());

    const QRect inside = window->rect();
    const QRect map = InWindow(ui->WorldMap, window.get());
    const QRect mapAndScales = map.adjusted(-20, 0, 20, 20);
    EXPECT_TRUE(inside.contains(mapAndScales));
    EXPECT_TRUE(roomForTheForm ? ui->WorldMap->geometry() == QRect(20, 0, 1600, 800)
                               : map.width() == 2 * map.height() && map.width() >= inside.width() * 3 / 4);

    ShowWidestTexts(ui);
    std::vector<QWidget *> elements;
    for (QFrame *frame : {ui->Rect1Frame, ui->Rect2Frame, ui->Rect3Frame, ui->Rect4Frame}) {
        EXPECT_TRUE(inside.contains(InWindow(frame, window.get()))) << Name(frame);
        EXPECT_FALSE(InWindow(frame, window.get()).intersects(mapAndScales)) << Name(frame);
        for (QWidget *w : frame->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
            elements.push_back(w);
    }
    ASSERT_EQ(elements.size(), 54u); // 11 + 17 + 14 + 12
    for (size_t i = 0; i < elements.size(); ++i) {
        QWidget *w = elements[i];
        const QRect r = InWindow(w, window.get());
        EXPECT_TRUE(inside.contains(r) && r.width() >= 20 && r.height() >= 14) << Name(w);
        EXPECT_GE(w->font().pointSizeF(), roomForTheForm ? 9.0 : 8.0) << Name(w);
        for (size_t j = 0; j < i; ++j)
            EXPECT_FALSE(r.intersects(InWindow(elements[j], window.get())))
                << Name(w) << " over " << Name(elements[j]);
        const auto *b = qobject_cast<QAbstractButton *>(w);
        const auto *l = qobject_cast<QLabel *>(w);
        const QString text = b ? b->text() : l ? l->text() : QString();
        // Whole: the text and a pixel either side within the element.
        EXPECT_LE(w->fontMetrics().horizontalAdvance(text) + 2, r.width()) << Name(w) << " " << text.toStdString();
        EXPECT_LE(w->fontMetrics().height(), r.height()) << Name(w);
    }
    // The first-run hint lies on the map, clear of the panels.
    ASSERT_NE(window->firstRunHint(), nullptr);
    EXPECT_TRUE(map.contains(InWindow(window->firstRunHint(), window.get())));

    // The map and its scales drawn in the screen's own pixels.
    const qreal ratio = window->devicePixelRatioF();
    window->TimerEvent(); // the first drawing
    auto drawnAtTheRatio = [ratio](const QLabel *label) {
        const QPixmap shown = label->pixmap();
        return shown.devicePixelRatio() == ratio && qAbs(shown.width() - label->width() * ratio) <= 1 &&
               qAbs(shown.height() - label->height() * ratio) <= 1;
    };
    for (QLabel *label : {ui->WorldMap, ui->LatitudeFrameL, ui->LongitudeFrame})
        EXPECT_TRUE(drawnAtTheRatio(label)) << Name(label);
    // The charts: square, centred in the map's halves and drawn at the same ratio.
    window->ViewModeButtonPressed();
    QApplication::processEvents();
    const QRect area = ui->WorldMap->geometry();
    const QLabel *charts[] = {ui->StarChart1, ui->StarChart2};
    for (int i = 0; i < 2; ++i) {
        const QRect chart = charts[i]->geometry();
        EXPECT_TRUE(charts[i]->isVisible() && chart.width() == chart.height() && drawnAtTheRatio(charts[i])) << i;
        EXPECT_GE(chart.width(), std::min(area.width() / 2, area.height()) - 10);
        EXPECT_NEAR(chart.center().x(), area.left() + area.width() / 4 + i * area.width() / 2, 1.0) << i;
        EXPECT_NEAR(chart.center().y(), area.center().y(), 1.0) << i;
    }
    overlaySettings.StarChartOverlay = false;
}

} // namespace
