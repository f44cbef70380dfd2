// The window as it opens on a real X screen (Xvfb, with or without a window
// manager) of the size and scale CTest gives: it fits the screen; the map, its scales, the
// charts and every read-out and button of the four panels lie inside it
// without overlapping, large enough and with their widest texts whole; and
// the map and the charts are drawn in the screen's own pixels. On a screen
// with room for 1640 x 960 the window is that, with the form's layout.
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

// The widest texts the read-outs show (digits are equally wide in the
// panels' font): a rise time, the clock, an outer planet's distance, a
// Doppler shift at 47 GHz, an 11-character call sign, a 47 GHz frequency,
// the longest source name, a hot sky.
void ShowWidestTexts(Ui::MainWindow *ui)
{
    for (QAbstractButton *b : {ui->HomeRiseTime, ui->DxRiseTime})
        b->setText("Rise: 12-31 23:59");
    ui->DateTimeButton->setText("Wed Sep 30 23:59:59 2026");
    ui->Distance->setText("49.123456 AU");
    for (QAbstractButton *b : {ui->HomeDoppler, ui->DxDoppler, ui->MutualDoppler})
        b->setText("-376000 Hz");
    for (QAbstractButton *b : {ui->HomeCallsign, ui->DxCallsign})
        b->setText("VE1ABC/VY2X");
    ui->SetFrequencyButton->setText("47088.00 Mhz");
    ui->SourceButton->setText("SAGITTARIUS A");
    for (QAbstractButton *b : {ui->HomeSkyTemp, ui->DxSkyTemp})
        b->setText("12345.6");
    for (QAbstractButton *b : {ui->HomeLongitude, ui->DxLongitude})
        b->setText("-179.99");
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
    }

    bool RoomForTheForm() const { return free.width() >= 1640 && free.height() >= 960; }

    std::unique_ptr<MainWindow> window;
    Ui::MainWindow *ui = nullptr;
    QRect free;
};

TEST_F(ScreenFit, WindowFitsAndEveryPanelElementIsWholeAndApart)
{
    const qreal scale = qEnvironmentVariable("QT_SCALE_FACTOR", "1").toDouble();
    EXPECT_DOUBLE_EQ(window->devicePixelRatioF(), scale);
    // Smaller screens: the whole free area, a window manager's frame included
    // (which it reports a moment after mapping the window).
    if (!RoomForTheForm()) {
        for (int wait = 0; wait < 40 && window->frameGeometry().size() != free.size(); ++wait)
            QTest::qWait(50);
    }
    EXPECT_TRUE(free.contains(window->frameGeometry()))
        << window->frameGeometry().width() << "x" << window->frameGeometry().height();
    if (RoomForTheForm()) {
        EXPECT_EQ(window->size(), QSize(1640, 960));
    } else {
        EXPECT_EQ(window->frameGeometry().size(), free.size());
    }
    if (qEnvironmentVariableIntValue("LUNAQUILL_WINDOW_MANAGED")) {
        EXPECT_GT(window->frameGeometry().height(), window->height()) << "no title bar";
    }

    const QRect inside = window->rect();
    const QRect map = InWindow(ui->WorldMap, window.get());
    const QRect mapAndScales = map.adjusted(-20, 0, 20, 20);
    EXPECT_TRUE(inside.contains(mapAndScales));
    if (RoomForTheForm()) {
        EXPECT_EQ(ui->WorldMap->geometry(), QRect(20, 0, 1600, 800));
    } else {
        EXPECT_EQ(map.width(), 2 * map.height());
        EXPECT_GE(map.width(), inside.width() * 3 / 4);
    }

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
        EXPECT_TRUE(inside.contains(r)) << Name(w);
        EXPECT_GE(r.width(), 20) << Name(w);
        EXPECT_GE(r.height(), 14) << Name(w);
        EXPECT_GE(w->font().pointSizeF(), 8.0) << Name(w);
        if (RoomForTheForm()) {
            EXPECT_GE(w->font().pointSizeF(), 9.0) << Name(w);
        }
        for (size_t j = 0; j < i; ++j)
            EXPECT_FALSE(r.intersects(InWindow(elements[j], window.get())))
                << Name(w) << " over " << Name(elements[j]);
        QString text;
        if (auto *b = qobject_cast<QAbstractButton *>(w))
            text = b->text();
        else if (auto *l = qobject_cast<QLabel *>(w))
            text = l->text();
        // Whole: the text and a pixel either side within the element.
        EXPECT_LE(w->fontMetrics().horizontalAdvance(text) + 2, r.width())
            << Name(w) << " \"" << text.toStdString() << "\"";
        EXPECT_LE(w->fontMetrics().height(), r.height()) << Name(w);
    }

    // The first-run hint lies on the map, clear of the panels.
    ASSERT_NE(window->firstRunHint(), nullptr);
    EXPECT_TRUE(map.contains(InWindow(window->firstRunHint(), window.get())));
}

TEST_F(ScreenFit, MapScalesAndChartsAreDrawnInTheScreensPixels)
{
    const qreal ratio = window->devicePixelRatioF();
    window->TimerEvent(); // the first drawing
    for (QLabel *label : {ui->WorldMap, ui->LatitudeFrameL, ui->LongitudeFrame}) {
        const QPixmap shown = label->pixmap();
        EXPECT_DOUBLE_EQ(shown.devicePixelRatio(), ratio) << Name(label);
        EXPECT_NEAR(shown.width(), label->width() * ratio, 1.0) << Name(label);
        EXPECT_NEAR(shown.height(), label->height() * ratio, 1.0) << Name(label);
    }

    // The charts: centred in the map's halves and drawn at the same ratio.
    window->ViewModeButtonPressed();
    QApplication::processEvents();
    const QRect map = ui->WorldMap->geometry();
    const QLabel *charts[] = {ui->StarChart1, ui->StarChart2};
    for (int i = 0; i < 2; ++i) {
        const QRect chart = charts[i]->geometry();
        EXPECT_TRUE(charts[i]->isVisible());
        EXPECT_EQ(chart.width(), chart.height());
        EXPECT_GE(chart.width(), std::min(map.width() / 2, map.height()) - 10);
        const int halfCentre = map.left() + map.width() / 4 + i * map.width() / 2;
        EXPECT_NEAR(chart.center().x(), halfCentre, 1.0) << i;
        EXPECT_NEAR(chart.center().y(), map.center().y(), 1.0) << i;
        EXPECT_DOUBLE_EQ(charts[i]->pixmap().devicePixelRatio(), ratio) << i;
        EXPECT_NEAR(charts[i]->pixmap().width(), chart.width() * ratio, 1.0) << i;
    }
    overlaySettings.StarChartOverlay = false;
}

} // namespace
