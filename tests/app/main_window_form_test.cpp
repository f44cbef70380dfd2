// The main window's widget set as a user meets it: every named widget of the
// right kind, the fixed texts, the menus, and read-outs wide enough for the
// longest text the display cycle writes into them.
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

struct Row {
    const char *name;
    const char *value;
};

class MainWindowForm : public testing::Test
{
protected:
    void SetUp() override
    {
        ui.setupUi(&window);
        window.resize(1640, 960); // the minimum size the program enforces
        window.show();
    }
    QWidget *Find(const char *name) { return window.findChild<QWidget *>(name); }

    QMainWindow window;
    Ui::MainWindow ui;
};

TEST_F(MainWindowForm, EveryWidgetHasItsNameAndClass)
{
    const Row widgets[] = {
    {"centralWidget", "QWidget"}, {"WorldMap", "QLabel"}, {"StarChart1", "QLabel"},
    {"StarChart2", "QLabel"}, {"Rect1Frame", "QFrame"}, {"AzimuthLabel", "QLabel"},
    {"SourceButton", "QPushButton"}, {"ElevationLabel", "QLabel"}, {"HomeAzimuth", "QPushButton"},
    {"HomeRiseTime", "QPushButton"}, {"HomeSetTime", "QPushButton"},
    {"HomeElevation", "QPushButton"}, {"DxAzimuth", "QPushButton"}, {"DxRiseTime", "QPushButton"},
    {"DxSetTime", "QPushButton"}, {"DxElevation", "QPushButton"}, {"Rect2Frame", "QFrame"},
    {"CallsignLabel", "QLabel"}, {"HomeCallsign", "QPushButton"}, {"DxCallsign", "QPushButton"},
    {"GridLabel", "QLabel"}, {"LatitudeLabel", "QLabel"}, {"LongitudeLabel", "QLabel"},
    {"HomeDopplerLabel", "QLabel"}, {"MutualDopplerLabel", "QLabel"}, {"HomeGrid", "QPushButton"},
    {"HomeLatitude", "QPushButton"}, {"HomeLongitude", "QPushButton"},
    {"HomeDoppler", "QPushButton"}, {"MutualDoppler", "QPushButton"}, {"DxGrid", "QPushButton"},
    {"DxLatitude", "QPushButton"}, {"DxLongitude", "QPushButton"}, {"DxDoppler", "QPushButton"},
    {"Rect3Frame", "QFrame"}, {"SpatialOffsetLabel", "QLabel"}, {"SkyTempLabel", "QLabel"},
    {"DegradationLabel", "QLabel"}, {"PathLossLabel", "QLabel"}, {"DistanceLabel", "QLabel"},
    {"HomeSpatialOffset", "QPushButton"}, {"DxSpatialOffset", "QPushButton"},
    {"HomeSkyTemp", "QPushButton"}, {"DxSkyTemp", "QPushButton"},
    {"HomeDegradation", "QPushButton"}, {"DxDegradation", "QPushButton"},
    {"PathLoss", "QPushButton"}, {"Distance", "QPushButton"}, {"SetFrequencyButton", "QPushButton"},
    {"Rect4Frame", "QFrame"}, {"SetDateTimeButton", "QPushButton"},
    {"DateTimeButton", "QPushButton"}, {"TimeAdjustPlayButton", "QToolButton"},
    {"TimeAdjustMinMButton", "QPushButton"}, {"TimeAdjustHourMButton", "QPushButton"},
    {"TimeAdjustDayMButton", "QPushButton"}, {"TimeAdjustWeekMButton", "QPushButton"},
    {"TimeAdjustMinPButton", "QPushButton"}, {"TimeAdjustHourPButton", "QPushButton"},
    {"TimeAdjustDayPButton", "QPushButton"}, {"TimeAdjustWeekPButton", "QPushButton"},
    {"ViewModeButton", "QToolButton"}, {"LongitudeFrame", "QLabel"}, {"LatitudeFrameL", "QLabel"},
    {"LatitudeFrameR", "QLabel"},
    };
    for (const Row &row : widgets) {
        QWidget *w = Find(row.name);
        ASSERT_NE(w, nullptr) << row.name;
        EXPECT_STREQ(w->metaObject()->className(), row.value) << row.name;
    }
}

TEST_F(MainWindowForm, FixedTexts)
{
    const Row texts[] = {
    {"SourceButton", "MOON"}, {"AzimuthLabel", "Azimuth"}, {"ElevationLabel", "Elevation"},
    {"HomeRiseTime", "Rise"}, {"DxRiseTime", "Rise"}, {"HomeSetTime", "Set"}, {"DxSetTime", "Set"},
    {"CallsignLabel", "Call"}, {"GridLabel", "Grid"}, {"LatitudeLabel", "Latitude"},
    {"LongitudeLabel", "Longitude"}, {"HomeDopplerLabel", "Doppler"},
    {"MutualDopplerLabel", "Mutual"}, {"SpatialOffsetLabel", "Spatial"},
    {"SkyTempLabel", "SkyTemp"}, {"DegradationLabel", "Degrad"}, {"PathLossLabel", "PathLoss"},
    {"DistanceLabel", "Distance"}, {"TimeAdjustMinMButton", "-10 min"},
    {"TimeAdjustHourMButton", "-Hour"}, {"TimeAdjustDayMButton", "-Day"},
    {"TimeAdjustWeekMButton", "-Week"}, {"TimeAdjustMinPButton", "+10 min"},
    {"TimeAdjustHourPButton", "+Hour"}, {"TimeAdjustDayPButton", "+Day"},
    {"TimeAdjustWeekPButton", "+Week"}, {"TimeAdjustPlayButton", "\u25b6"},
    {"actionAbout", "About"}, {"actionHomeStation", "Home Station"},
    {"actionDxStation", "DX Station"}, {"actionSources", "Sources"}, {"actionOverlays", "Overlays"},
    {"actionEme50M", "50Mhz EME"}, {"actionEme144M", "144Mhz EME"}, {"actionEme432M", "432Mhz EME"},
    {"actionEme900M", "900Mhz EME"}, {"actionEme1296M", "1296Mhz EME"},
    {"actionEme2304M", "2304Mhz EME"}, {"actionEme3400M", "3400Mhz EME"},
    {"actionEme5760M", "5760Mhz EME"}, {"actionEme10G", "10Ghz EME"}, {"actionEme47G", "47Ghz EME"},
    {"actionFavorites", "Favorites"}, {"menuConfigure", "Configure"},
    {"menuFavorites", "Favorites"}, {"menuHelp", "Help"},
    };
    for (const Row &row : texts) {
        QString text;
        if (auto *action = window.findChild<QAction *>(row.name))
            text = action->text();
        else if (auto *label = window.findChild<QLabel *>(row.name))
            text = label->text();
        else if (auto *button = window.findChild<QAbstractButton *>(row.name))
            text = button->text();
        else if (auto *menu = window.findChild<QMenu *>(row.name))
            text = menu->title();
        else
            ADD_FAILURE() << row.name << " missing";
        EXPECT_EQ(text.toStdString(), row.value) << row.name;
    }
}

TEST_F(MainWindowForm, MenusHoldTheirEntriesInOrder)
{
    EXPECT_EQ(ui.menuBar->actions(),
              (QList<QAction *>{ui.menuConfigure->menuAction(), ui.menuHelp->menuAction()}));
    EXPECT_EQ(ui.menuConfigure->title(), "Configure");
    EXPECT_EQ(ui.menuConfigure->actions(),
              (QList<QAction *>{ui.actionHomeStation, ui.actionDxStation,
                                ui.menuFavorites->menuAction(), ui.actionSources,
                                ui.actionOverlays}));
    EXPECT_EQ(ui.menuFavorites->actions(),
              (QList<QAction *>{ui.actionEme50M, ui.actionEme144M, ui.actionEme432M,
                                ui.actionEme900M, ui.actionEme1296M, ui.actionEme2304M,
                                ui.actionEme3400M, ui.actionEme5760M, ui.actionEme10G,
                                ui.actionEme47G, ui.actionFavorites}));
    EXPECT_EQ(ui.menuHelp->actions(), QList<QAction *>{ui.actionAbout});
}

TEST_F(MainWindowForm, ReadOutsFitTheirLongestTextAndPanelsFitTheWindow)
{
    // The widest texts the display cycle writes, with 10 pixels of padding.
    const Row readouts[] = {
    {"SourceButton", "USER RA/DEC"}, {"SourceButton", "SAGITTARIUS"}, {"HomeAzimuth", " 359.99"},
    {"DxAzimuth", " 359.99"}, {"HomeElevation", " -89.99"}, {"DxElevation", " -89.99"},
    {"HomeRiseTime", "Rise: 12-31 23:59"}, {"DxRiseTime", "Rise: 12-31 23:59"},
    {"HomeSetTime", "Set: 12-31 23:59"}, {"DxSetTime", "Set: 12-31 23:59"},
    {"HomeCallsign", "VK9/Q9QQ/MM"}, {"DxCallsign", "VK9/Q9QQ/MM"}, {"HomeGrid", "JO62QM"},
    {"DxGrid", "RE78WW"}, {"HomeLatitude", "-89.99"}, {"DxLatitude", "-89.99"},
    {"HomeLongitude", "-179.99"}, {"DxLongitude", "-179.99"}, {"HomeDoppler", " -12345 Hz"},
    {"HomeDoppler", "-140000 Hz"}, {"DxDoppler", "-140000 Hz"}, {"MutualDoppler", "-140000 Hz"},
    {"HomeSpatialOffset", "-179.9"}, {"DxSpatialOffset", "-179.9"}, {"HomeSkyTemp", "12345.6"},
    {"DxSkyTemp", "12345.6"}, {"HomeDegradation", "-99.9"}, {"DxDegradation", "-99.9"},
    {"PathLoss", "-99.9"}, {"Distance", "384400 km"}, {"Distance", " 0.123456 AU"},
    {"Distance", "49.999999 AU"}, {"SetFrequencyButton", "1296.00 Mhz"},
    {"SetFrequencyButton", "47088.00 Mhz"}, {"DateTimeButton", "Sun Jun  1 00:00:00 2025"},
    {"DateTimeButton", "Wed May 28 23:59:59 2025"}, {"TimeAdjustMinMButton", "-10 min"},
    {"TimeAdjustMinPButton", "+10 min"}, {"TimeAdjustWeekMButton", "-Week"},
    {"TimeAdjustWeekPButton", "+Week"}, {"ViewModeButton", "View"},
    };
    for (const Row &row : readouts) {
        auto *button = qobject_cast<QAbstractButton *>(Find(row.name));
        ASSERT_NE(button, nullptr) << row.name;
        const QFontMetrics metrics(button->font());
        EXPECT_LE(metrics.horizontalAdvance(QString::fromUtf8(row.value)), button->width() - 10)
            << row.name << " " << row.value;
    }
    for (const char *frame : {"Rect1Frame", "Rect2Frame", "Rect3Frame", "Rect4Frame"}) {
        const QRect r = Find(frame)->geometry();
        EXPECT_GE(r.left(), 0) << frame;
        EXPECT_LE(r.right(), 1639) << frame;
        EXPECT_GE(r.top(), ui.LongitudeFrame->geometry().bottom()) << frame;
        EXPECT_LE(r.bottom(), 960 - 30) << frame; // below a menu bar of up to 30 pixels
    }
}

TEST(AboutDialogTest, ShowsVersionAndNotesAndClosesWithOk)
{
    lunaquill::AboutDialog dialog;
    const auto *version = dialog.findChild<QLabel *>("VersionLabel");
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(version->text(), "Lunaquill v1.05 Feb 28, 2025");
    const auto *notes = dialog.findChild<QPlainTextEdit *>("NotesText");
    ASSERT_NE(notes, nullptr);
    EXPECT_TRUE(notes->toPlainText().contains("Doppler"));
    auto *ok = dialog.findChild<QPushButton *>("OkButton");
    ASSERT_NE(ok, nullptr);
    dialog.show();
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

} // namespace
