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

TEST_F(MainWindowForm, EveryObjectHasItsClassAndFixedText)
{
    // name, class, fixed text (nullptr: set at run time or none).
    const char *const Btn = "QPushButton", *const Lbl = "QLabel", *const Act = "QAction";
    const struct { const char *name, *className, *text; } rows[] = {
    {"centralWidget", "QWidget", nullptr}, {"WorldMap", Lbl, nullptr}, {"StarChart1", Lbl, nullptr},
    {"StarChart2", Lbl, nullptr}, {"LongitudeFrame", Lbl, nullptr},
    {"LatitudeFrameL", Lbl, nullptr}, {"LatitudeFrameR", Lbl, nullptr},
    {"Rect1Frame", "QFrame", nullptr}, {"Rect2Frame", "QFrame", nullptr},
    {"Rect3Frame", "QFrame", nullptr}, {"Rect4Frame", "QFrame", nullptr},
    {"SourceButton", Btn, "MOON"}, {"AzimuthLabel", Lbl, "Azimuth"},
    {"ElevationLabel", Lbl, "Elevation"}, {"HomeAzimuth", Btn, nullptr},
    {"DxAzimuth", Btn, nullptr}, {"HomeElevation", Btn, nullptr}, {"DxElevation", Btn, nullptr},
    {"HomeRiseTime", Btn, "Rise"}, {"DxRiseTime", Btn, "Rise"}, {"HomeSetTime", Btn, "Set"},
    {"DxSetTime", Btn, "Set"}, {"CallsignLabel", Lbl, "Call"}, {"GridLabel", Lbl, "Grid"},
    {"LatitudeLabel", Lbl, "Latitude"}, {"LongitudeLabel", Lbl, "Longitude"},
    {"HomeDopplerLabel", Lbl, "Doppler"}, {"MutualDopplerLabel", Lbl, "Mutual"},
    {"HomeCallsign", Btn, nullptr}, {"DxCallsign", Btn, nullptr}, {"HomeGrid", Btn, nullptr},
    {"DxGrid", Btn, nullptr}, {"HomeLatitude", Btn, nullptr}, {"DxLatitude", Btn, nullptr},
    {"HomeLongitude", Btn, nullptr}, {"DxLongitude", Btn, nullptr}, {"HomeDoppler", Btn, nullptr},
    {"DxDoppler", Btn, nullptr}, {"MutualDoppler", Btn, nullptr},
    {"SpatialOffsetLabel", Lbl, "Spatial"}, {"SkyTempLabel", Lbl, "SkyTemp"},
    {"DegradationLabel", Lbl, "Degrad"}, {"PathLossLabel", Lbl, "PathLoss"},
    {"DistanceLabel", Lbl, "Distance"}, {"HomeSpatialOffset", Btn, nullptr},
    {"DxSpatialOffset", Btn, nullptr}, {"HomeSkyTemp", Btn, nullptr}, {"DxSkyTemp", Btn, nullptr},
    {"HomeDegradation", Btn, nullptr}, {"DxDegradation", Btn, nullptr}, {"PathLoss", Btn, nullptr},
    {"Distance", Btn, nullptr}, {"SetFrequencyButton", Btn, nullptr},
    {"SetDateTimeButton", Btn, nullptr}, {"DateTimeButton", Btn, nullptr},
    {"ViewModeButton", "QToolButton", nullptr}, {"TimeAdjustPlayButton", "QToolButton", "\u25b6"},
    {"TimeAdjustMinMButton", Btn, "-10 min"}, {"TimeAdjustMinPButton", Btn, "+10 min"},
    {"TimeAdjustHourMButton", Btn, "-Hour"}, {"TimeAdjustHourPButton", Btn, "+Hour"},
    {"TimeAdjustDayMButton", Btn, "-Day"}, {"TimeAdjustDayPButton", Btn, "+Day"},
    {"TimeAdjustWeekMButton", Btn, "-Week"}, {"TimeAdjustWeekPButton", Btn, "+Week"},
    {"menuConfigure", "QMenu", "Configure"}, {"menuFavorites", "QMenu", "Favorites"},
    {"menuHelp", "QMenu", "Help"}, {"actionAbout", Act, "About"},
    {"actionHomeStation", Act, "Home Station"}, {"actionDxStation", Act, "DX Station"},
    {"actionSources", Act, "Sources"}, {"actionOverlays", Act, "Overlays"},
    {"actionEme50M", Act, "50Mhz EME"}, {"actionEme144M", Act, "144Mhz EME"},
    {"actionEme432M", Act, "432Mhz EME"}, {"actionEme900M", Act, "900Mhz EME"},
    {"actionEme1296M", Act, "1296Mhz EME"}, {"actionEme2304M", Act, "2304Mhz EME"},
    {"actionEme3400M", Act, "3400Mhz EME"}, {"actionEme5760M", Act, "5760Mhz EME"},
    {"actionEme10G", Act, "10Ghz EME"}, {"actionEme47G", Act, "47Ghz EME"},
    {"actionFavorites", Act, "Favorites"}, {"actionStationControl", Act, "Station Control"},
    };
    for (const auto &row : rows) {
        const QObject *object = window.findChild<QObject *>(row.name);
        ASSERT_NE(object, nullptr) << row.name;
        EXPECT_STREQ(object->metaObject()->className(), row.className) << row.name;
        const QVariant text = object->property(object->inherits("QMenu") ? "title" : "text");
        EXPECT_TRUE(!row.text || text.toString() == QString::fromUtf8(row.text))
            << row.name << " shows " << text.toString().toStdString();
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
    // The widest text the display cycle writes into each, with 10 pixels to spare.
    const struct { const char *name, *text; } readouts[] = {
    {"SourceButton", "USER RA/DEC"}, {"SourceButton", "SAGITTARIUS"}, {"HomeAzimuth", " 359.99"},
    {"DxAzimuth", " 359.99"}, {"HomeElevation", " -89.99"}, {"DxElevation", " -89.99"},
    {"HomeRiseTime", "Rise: 12-31 23:59"}, {"DxRiseTime", "Rise: 12-31 23:59"},
    {"HomeSetTime", "Set: 12-31 23:59"}, {"DxSetTime", "Set: 12-31 23:59"},
    {"HomeCallsign", "VK9/Q9QQ/MM"}, {"DxCallsign", "VK9/Q9QQ/MM"}, {"HomeGrid", "JO62QM"},
    {"DxGrid", "RE78WW"}, {"HomeLatitude", "-89.99"}, {"DxLatitude", "-89.99"},
    {"HomeLongitude", "-179.99"}, {"DxLongitude", "-179.99"}, {"HomeDoppler", "-140000 Hz"},
    {"DxDoppler", "-140000 Hz"}, {"MutualDoppler", "-140000 Hz"}, {"HomeSpatialOffset", "-179.9"},
    {"DxSpatialOffset", "-179.9"}, {"HomeSkyTemp", "12345.6"}, {"DxSkyTemp", "12345.6"},
    {"HomeDegradation", "-99.9"}, {"DxDegradation", "-99.9"}, {"PathLoss", "-99.9"},
    {"Distance", "49.999999 AU"}, {"SetFrequencyButton", "47088.00 Mhz"},
    {"DateTimeButton", "Wed May 28 23:59:59 2025"}, {"ViewModeButton", "View"},
    {"TimeAdjustMinMButton", "-10 min"}, {"TimeAdjustMinPButton", "+10 min"},
    {"TimeAdjustWeekMButton", "-Week"}, {"TimeAdjustWeekPButton", "+Week"},
    };
    for (const auto &row : readouts) {
        auto *button = window.findChild<QAbstractButton *>(row.name);
        ASSERT_NE(button, nullptr) << row.name;
        EXPECT_LE(QFontMetrics(button->font()).horizontalAdvance(row.text), button->width() - 10)
            << row.name << " " << row.text;
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
    EXPECT_EQ(version->text(), "Lunaquill v1.05 Feb 28, 2025");
    EXPECT_TRUE(notes->toPlainText().contains("Doppler"));
    EXPECT_EQ(ok->text(), "Ok");
    dialog.show();
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

} // namespace
