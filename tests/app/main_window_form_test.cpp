// The main window's widget set as a user meets it: named widgets of the right
// kind with their fixed texts, the menus, read-outs wide enough for the longest
// text the display cycle writes; and the About box.
#include "ui_MainWindow.h"

#include "app/AboutDialog.h"

#include <QFontMetrics>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace {

class MainWindowForm : public testing::Test
{
protected:
    void SetUp() override
    {
        ui.setupUi(&window);
        window.resize(1640, 960); // the minimum size the program enforces
        window.show();
    }
    QMainWindow window;
    Ui::MainWindow ui;
};

TEST_F(MainWindowForm, FixedTextsOfWidgetsMenusAndActions)
{
    const char *texts =
        "SourceButton=MOON|AzimuthLabel=Azimuth|ElevationLabel=Elevation|HomeRiseTime=Rise|"
        "DxRiseTime=Rise|HomeSetTime=Set|DxSetTime=Set|CallsignLabel=Call|GridLabel=Grid|"
        "LatitudeLabel=Latitude|LongitudeLabel=Longitude|HomeDopplerLabel=Doppler|"
        "MutualDopplerLabel=Mutual|SpatialOffsetLabel=Spatial|SkyTempLabel=SkyTemp|"
        "DegradationLabel=Degrad|PathLossLabel=PathLoss|DistanceLabel=Distance|"
        "TimeAdjustPlayButton=\u25b6|TimeAdjustMinMButton=-10 min|TimeAdjustMinPButton=+10 min|"
        "TimeAdjustHourMButton=-Hour|TimeAdjustHourPButton=+Hour|TimeAdjustDayMButton=-Day|"
        "TimeAdjustDayPButton=+Day|TimeAdjustWeekMButton=-Week|TimeAdjustWeekPButton=+Week|"
        "menuConfigure=Configure|menuFavorites=Favorites|menuHelp=Help|actionAbout=About|"
        "actionHomeStation=Home Station|actionDxStation=DX Station|actionSources=Sources|"
        "actionOverlays=Overlays|actionEme50M=50Mhz EME|actionEme144M=144Mhz EME|"
        "actionEme432M=432Mhz EME|actionEme900M=900Mhz EME|actionEme1296M=1296Mhz EME|"
        "actionEme2304M=2304Mhz EME|actionEme3400M=3400Mhz EME|actionEme5760M=5760Mhz EME|"
        "actionEme10G=10Ghz EME|actionEme47G=47Ghz EME|actionFavorites=Favorites|"
        "actionStationControl=Station Control";
    for (const QString &entry : QString::fromUtf8(texts).split('|')) {
        const QString name = entry.section('=', 0, 0);
        const QObject *object = window.findChild<QObject *>(name);
        ASSERT_NE(object, nullptr) << name.toStdString();
        EXPECT_EQ(object->property(object->inherits("QMenu") ? "title" : "text").toString(),
                  entry.section('=', 1))
            << name.toStdString();
    }
}

TEST_F(MainWindowForm, MenusHoldTheirEntriesInOrder)
{
    EXPECT_EQ(ui.menuBar->actions(),
              (QList<QAction *>{ui.menuConfigure->menuAction(), ui.menuHelp->menuAction()}));
    EXPECT_EQ(ui.menuConfigure->actions(),
              (QList<QAction *>{ui.actionHomeStation, ui.actionDxStation,
                                ui.menuFavorites->menuAction(), ui.actionSources,
                                ui.actionOverlays, ui.actionStationControl}));
    EXPECT_EQ(ui.menuFavorites->actions(),
              (QList<QAction *>{ui.actionEme50M, ui.actionEme144M, ui.actionEme432M,
                                ui.actionEme900M, ui.actionEme1296M, ui.actionEme2304M,
                                ui.actionEme3400M, ui.actionEme5760M, ui.actionEme10G,
                                ui.actionEme47G, ui.actionFavorites}));
    EXPECT_EQ(ui.menuHelp->actions(), QList<QAction *>{ui.actionAbout});
}

TEST_F(MainWindowForm, ReadOutsFitTheirWidestTextAndPanelsFitTheWindow)
{
    // The widest text the display cycle writes into each, with 10 pixels to
    // spare; a name starting with "*" stands for its Home and its Dx read-out.
    const struct { const char *name, *text; } readouts[] = {
        {"*Azimuth", " 359.99"}, {"*Elevation", " -89.99"}, {"*RiseTime", "Rise: 12-31 23:59"},
        {"*SetTime", "Set: 12-31 23:59"}, {"*Callsign", "VK9/Q9QQ/MM"}, {"*Grid", "RE78WW"},
        {"*Latitude", "-89.99"}, {"*Longitude", "-179.99"}, {"*Doppler", "-140000 Hz"},
        {"*SpatialOffset", "-179.9"}, {"*SkyTemp", "12345.6"}, {"*Degradation", "-99.9"},
        {"MutualDoppler", "-140000 Hz"}, {"PathLoss", "-99.9"}, {"Distance", "49.999999 AU"},
        {"SourceButton", "USER RA/DEC"}, {"SourceButton", "SAGITTARIUS"},
        {"SetFrequencyButton", "47088.00 Mhz"}, {"DateTimeButton", "Wed May 28 23:59:59 2025"},
        {"ViewModeButton", "View"}, {"TimeAdjustMinMButton", "-10 min"},
        {"TimeAdjustMinPButton", "+10 min"}, {"TimeAdjustWeekMButton", "-Week"},
        {"TimeAdjustWeekPButton", "+Week"},
    };
    for (const auto &row : readouts) {
        const QString pattern = row.name;
        for (const QString &name : pattern[0] != '*' ? QStringList{pattern}
                                   : QStringList{"Home" + pattern.mid(1), "Dx" + pattern.mid(1)}) {
            auto *button = window.findChild<QAbstractButton *>(name);
            ASSERT_NE(button, nullptr) << name.toStdString();
            const int width = QFontMetrics(button->font()).horizontalAdvance(row.text);
            EXPECT_LE(width, button->width() - 10) << name.toStdString() << " " << row.text;
        }
    }
    for (const QFrame *frame : {ui.Rect1Frame, ui.Rect2Frame, ui.Rect3Frame, ui.Rect4Frame}) {
        const QRect r = frame->geometry();
        EXPECT_TRUE(r.left() >= 0 && r.right() <= 1639) << frame->objectName().toStdString();
        EXPECT_GE(r.top(), ui.LongitudeFrame->geometry().bottom());
        EXPECT_LE(r.bottom(), 960 - 30); // below a menu bar of up to 30 pixels
    }
}

TEST(AboutDialogTest, ShowsVersionAndNotesAndClosesWithOk)
{
    lunaquill::AboutDialog dialog;
    const auto *version = dialog.findChild<QLabel *>("VersionLabel");
    const auto *notes = dialog.findChild<QPlainTextEdit *>("NotesText");
    auto *ok = dialog.findChild<QPushButton *>("OkButton");
    ASSERT_TRUE(version && notes && ok);
    EXPECT_EQ(version->text() + "|" + ok->text(), "Lunaquill v1.05 Feb 28, 2025|Ok");
    EXPECT_TRUE(notes->toPlainText().contains("Doppler"));
    dialog.show();
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_TRUE(dialog.isHidden() && dialog.result() == QDialog::Accepted);
}

} // namespace
