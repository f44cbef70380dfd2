// The window below its form size: the compact layout worked out by hand, the
// map's clicks in it, the way back to the form's layout, the charts' places,
// and the first-run hint.
#include "AppTestSupport.h"
#include "app/WindowLayout.h"
#include "ui_MainWindow.h"

#include <QLineEdit>
#include <QMainWindow>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

// The four panels as the form has them, with the program's minimum scales.
const std::array<PanelForm, 4> kPanels = {{{QSize(408, 106), 0.86}, {QSize(506, 106), 0.80},
                                           {QSize(380, 106), 0.82}, {QSize(304, 106), 0.87}}};

TEST(WindowLayout, TwoRowsAtTheMinimumSizeWorkedByHand)
{
    // Central area 1024 x 576. One row would need at least
    // 408 * 0.86 + 506 * 0.80 + 380 * 0.82 + 304 * 0.87 = 1332 of 1004
    // pixels, so two rows at full width (914 and 684 of 1012). The map:
    // 576 - 20 (scale) - 3 * 4 (gaps) - ceil(2 * 106 * 0.6) = 416 high,
    // 832 wide, centred: left (1024 - 832) / 2 = 96. The panels take the
    // rest: 128 / 212 = 0.604, 64 pixels high; gaps (1024 - 914) / 3 = 36 and
    // (1024 - 684) / 3 = 113.
    const CompactLayout layout = LayOutCompact(QSize(1024, 576), kPanels);
    EXPECT_EQ(layout.rows, 2);
    EXPECT_EQ(layout.map, QRect(96, 0, 832, 416));
    EXPECT_EQ(layout.latitudeLeft, QRect(76, 0, 20, 416));
    EXPECT_EQ(layout.latitudeRight, QRect(928, 0, 20, 416));
    EXPECT_EQ(layout.longitude, QRect(76, 416, 872, 20));
    EXPECT_EQ(layout.panels[0], QRect(36, 440, 408, 64));
    EXPECT_EQ(layout.panels[1], QRect(480, 440, 506, 64));
    EXPECT_EQ(layout.panels[2], QRect(113, 508, 380, 64));
    EXPECT_EQ(layout.panels[3], QRect(606, 508, 304, 64));
    EXPECT_NEAR(layout.scaleY, 128.0 / 212.0, 1e-9);
    // One pixel short of the form's height: one row (the real window at the
    // sizes of common screens is in screen_fit_test). Below the minimum nothing fits.
    EXPECT_EQ(LayOutCompact(QSize(1640, 935), kPanels).rows, 1);
    EXPECT_EQ(LayOutCompact(QSize(600, 400), kPanels).rows, 0);
}

TEST(WindowLayout, ChartsFontsAndScaledRectangles)
{
    // The form's map: the form's charts, 790 square, 5 pixels in.
    EXPECT_EQ(ChartRect(QRect(20, 0, 1600, 800), 0), QRect(25, 5, 790, 790));
    EXPECT_EQ(ChartRect(QRect(20, 0, 1600, 800), 1), QRect(825, 5, 790, 790));
    // A compact map 1304 x 652: 642 square, centred in its half.
    EXPECT_EQ(ChartRect(QRect(31, 0, 1304, 652), 1), QRect(688, 5, 642, 642));
    EXPECT_EQ(ScaledPointSize(9, 0.8), 8.0);
    EXPECT_DOUBLE_EQ(ScaledPointSize(12, 0.8), 9.6);
    EXPECT_EQ(ScaledPointSize(9, 1.2), 9.0);
    // Neighbours 4 pixels apart stay apart: 80 * 0.85 = 68, 84 * 0.85 = 71.4.
    EXPECT_EQ(ScaledRect(QRect(6, 38, 74, 30), 0.85, 0.6), QRect(5, 23, 63, 18));
    EXPECT_EQ(ScaledRect(QRect(84, 38, 118, 30), 0.85, 0.6).left(), 71);
}

// Every map icon has a twin at twice the pixels for scaled screens, read at ratio 2 ("@2x").
TEST(WindowLayout, EveryIconHasATwiceAsSharpTwin)
{
    const QStringList icons = QDir("pixmaps").entryList({"*-icon.png"});
    ASSERT_EQ(icons.size(), 12);
    for (const QString &name : icons) {
        const QPixmap sharp("pixmaps/" + QString(name).replace(".png", "@2x.png"));
        EXPECT_TRUE(sharp.size() == QPixmap("pixmaps/" + name).size() * 2 && sharp.devicePixelRatio() == 2.0)
            << name.toStdString();
    }
}

class WindowSizeTest : public WindowTest
{
protected:
    // Every widget of the central area with its geometry and font size.
    static std::string Places(QWidget *central)
    {
        std::string text;
        for (QWidget *w : central->findChildren<QWidget *>()) {
            const QRect g = w->geometry();
            text += QString::asprintf("%s %d,%d %dx%d %.1fpt\n", qPrintable(w->objectName()), g.x(),
                                      g.y(), g.width(), g.height(), w->font().pointSizeF()).toStdString();
        }
        return text;
    }
};

TEST_F(WindowSizeTest, TheCompactMapTakesClicksAndBackAtTheFormSizeEveryWidgetIsWhereTheFormPutsIt)
{
    Open("");
    window->resize(1366, 768);
    QApplication::processEvents();
    const QRect map = ui->WorldMap->geometry();
    ASSERT_GT(map.left(), 20); // centred, not at the form's place
    // Map pixel (w / 2, h / 4): longitude 0 (w = 2h is even), latitude 45
    // less under one pixel's 180 / h degrees: square JN05.
    const QPoint at = ui->centralWidget->geometry().topLeft() + map.topLeft()
                      + QPoint(map.width() / 2, map.height() / 4);
    QMouseEvent press(QEvent::MouseButtonPress, at, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &press);
    EXPECT_EQ(Text(ui->DxGrid).substr(0, 4) + " " + Text(ui->DxLongitude), "JN05 0.00");
    EXPECT_NEAR(ui->DxLatitude->text().toDouble(), 45.0, 180.0 / map.height());
    // The hover box is pulled in from the compact map's right edge.
    const QPoint right = at + QPoint(map.width() / 2 - 5, 0);
    QMouseEvent move(QEvent::MouseMove, right, right, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &move);
    EXPECT_EQ(window->hoverRect().left(), map.right() - 140);

    // The form itself, set up on a bare window: at 1640 wide the panels are
    // spread (1640 - 1598) / 5 = 8 apart, where the form has them; the right
    // latitude scale starts on the map's last column, the hour scale reaches
    // the window's right edge as the screen has it.
    QMainWindow bare;
    Ui::MainWindow form;
    form.setupUi(&bare);
    form.LatitudeFrameR->setGeometry(1619, 0, 20, 800);
    window->resize(1640, 960);
    QApplication::processEvents();
    form.LongitudeFrame->setGeometry(0, 799, window->geometry().right() + 1, 20);
    EXPECT_EQ(Places(ui->centralWidget), Places(form.centralWidget));
}

TEST_F(WindowSizeTest, FirstRunHintOpensTheHomeStationAndGoesOnceSaved)
{
    Open(nullptr); // no settings file
    QFrame *hint = window->firstRunHint();
    ASSERT_TRUE(hint && hint->isVisible()); // on the map: screen_fit_test
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr); // nothing blocks the window
    // Cancelled: the hint stays.
    auto *button = hint->findChild<QPushButton *>("FirstRunHomeStationButton");
    WhenOpen([](QDialog &) {}, QDialogButtonBox::Cancel);
    button->click();
    EXPECT_TRUE(hint->isVisible());
    // "Later" puts it away for this run.
    for (QPushButton *b : hint->findChildren<QPushButton *>())
        if (b->text() == "Later")
            b->click();
    EXPECT_FALSE(hint->isVisible());
    // Saved: it goes, and a window opened afterwards has none.
    WhenOpen([](QDialog &dialog) {
        dialog.findChild<QLineEdit *>("GridEdit")->setText("FN42mm");
        dialog.findChild<QPushButton *>("GridConvertButton")->click();
    }, QDialogButtonBox::Ok);
    button->click();
    EXPECT_EQ(window->firstRunHint(), nullptr);
    window.reset();
    Open(nullptr);
    EXPECT_EQ(window->firstRunHint(), nullptr);
    ClearTestHome();
}

} // namespace
