// The main window's widget set as a user meets it: every named widget of the
// right kind in the right panel, the fixed texts, the menus, and read-outs wide
// enough for the longest text the display cycle writes into them.
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
#include <QToolButton>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace {

// The minimum window size the program enforces.
constexpr int kMinWidth = 1640;
constexpr int kMinHeight = 960;
// Width of each latitude strip beside the map, fixed by the resize rule.
constexpr int kStripWidth = 20;

// One form built for the whole suite: the tests only read it.
class Form
{
public:
    Form()
    {
        ui.setupUi(&window);
        window.resize(kMinWidth, kMinHeight);
        window.show();
    }
    QMainWindow window;
    Ui::MainWindow ui;

    template <typename T = QObject>
    T *find(const char *name) const
    {
        return window.findChild<T *>(name);
    }
};

std::unique_ptr<Form> form;

class MainWindowForm : public testing::Test
{
protected:
    static void SetUpTestSuite() { form = std::make_unique<Form>(); }
    static void TearDownTestSuite() { form.reset(); }
};

std::vector<std::string> ChildWidgetNames(const QObject *parent)
{
    std::vector<std::string> names;
    for (const QObject *child : parent->children())
        if (child->isWidgetType())
            names.push_back(child->objectName().toStdString());
    return names;
}

// ---------------------------------------------------------------------------
// Every object the program reaches by name, with its class and its parent.

struct NamedWidget {
    const char *name;
    const char *className;
    const char *parent;
};

std::ostream &operator<<(std::ostream &out, const NamedWidget &row)
{
    return out << row.name;
}

const NamedWidget kNamedWidgets[] = {
    {"actionAbout", "QAction", "MainWindow"},
    {"actionHomeStation", "QAction", "MainWindow"},
    {"actionDxStation", "QAction", "MainWindow"},
    {"actionSources", "QAction", "MainWindow"},
    {"actionOverlays", "QAction", "MainWindow"},
    {"actionEme50M", "QAction", "MainWindow"},
    {"actionEme144M", "QAction", "MainWindow"},
    {"actionEme432M", "QAction", "MainWindow"},
    {"actionEme900M", "QAction", "MainWindow"},
    {"actionEme1296M", "QAction", "MainWindow"},
    {"actionEme2304M", "QAction", "MainWindow"},
    {"actionEme3400M", "QAction", "MainWindow"},
    {"actionEme5760M", "QAction", "MainWindow"},
    {"actionEme10G", "QAction", "MainWindow"},
    {"actionEme47G", "QAction", "MainWindow"},
    {"actionFavorites", "QAction", "MainWindow"},
    {"centralWidget", "QWidget", "MainWindow"},
    {"WorldMap", "QLabel", "centralWidget"},
    {"StarChart1", "QLabel", "centralWidget"},
    {"StarChart2", "QLabel", "centralWidget"},
    {"Rect1Frame", "QFrame", "centralWidget"},
    {"AzimuthLabel", "QLabel", "Rect1Frame"},
    {"SourceButton", "QPushButton", "Rect1Frame"},
    {"ElevationLabel", "QLabel", "Rect1Frame"},
    {"HomeAzimuth", "QPushButton", "Rect1Frame"},
    {"HomeRiseTime", "QPushButton", "Rect1Frame"},
    {"HomeSetTime", "QPushButton", "Rect1Frame"},
    {"HomeElevation", "QPushButton", "Rect1Frame"},
    {"DxAzimuth", "QPushButton", "Rect1Frame"},
    {"DxRiseTime", "QPushButton", "Rect1Frame"},
    {"DxSetTime", "QPushButton", "Rect1Frame"},
    {"DxElevation", "QPushButton", "Rect1Frame"},
    {"Rect2Frame", "QFrame", "centralWidget"},
    {"CallsignLabel", "QLabel", "Rect2Frame"},
    {"HomeCallsign", "QPushButton", "Rect2Frame"},
    {"DxCallsign", "QPushButton", "Rect2Frame"},
    {"GridLabel", "QLabel", "Rect2Frame"},
    {"LatitudeLabel", "QLabel", "Rect2Frame"},
    {"LongitudeLabel", "QLabel", "Rect2Frame"},
    {"HomeDopplerLabel", "QLabel", "Rect2Frame"},
    {"MutualDopplerLabel", "QLabel", "Rect2Frame"},
    {"HomeGrid", "QPushButton", "Rect2Frame"},
    {"HomeLatitude", "QPushButton", "Rect2Frame"},
    {"HomeLongitude", "QPushButton", "Rect2Frame"},
    {"HomeDoppler", "QPushButton", "Rect2Frame"},
    {"MutualDoppler", "QPushButton", "Rect2Frame"},
    {"DxGrid", "QPushButton", "Rect2Frame"},
    {"DxLatitude", "QPushButton", "Rect2Frame"},
    {"DxLongitude", "QPushButton", "Rect2Frame"},
    {"DxDoppler", "QPushButton", "Rect2Frame"},
    {"Rect3Frame", "QFrame", "centralWidget"},
    {"SpatialOffsetLabel", "QLabel", "Rect3Frame"},
    {"SkyTempLabel", "QLabel", "Rect3Frame"},
    {"DegradationLabel", "QLabel", "Rect3Frame"},
    {"PathLossLabel", "QLabel", "Rect3Frame"},
    {"DistanceLabel", "QLabel", "Rect3Frame"},
    {"HomeSpatialOffset", "QPushButton", "Rect3Frame"},
    {"DxSpatialOffset", "QPushButton", "Rect3Frame"},
    {"HomeSkyTemp", "QPushButton", "Rect3Frame"},
    {"DxSkyTemp", "QPushButton", "Rect3Frame"},
    {"HomeDegradation", "QPushButton", "Rect3Frame"},
    {"DxDegradation", "QPushButton", "Rect3Frame"},
    {"PathLoss", "QPushButton", "Rect3Frame"},
    {"Distance", "QPushButton", "Rect3Frame"},
    {"SetFrequencyButton", "QPushButton", "Rect3Frame"},
    {"Rect4Frame", "QFrame", "centralWidget"},
    {"SetDateTimeButton", "QPushButton", "Rect4Frame"},
    {"DateTimeButton", "QPushButton", "Rect4Frame"},
    {"TimeAdjustPlayButton", "QToolButton", "Rect4Frame"},
    {"TimeAdjustMinMButton", "QPushButton", "Rect4Frame"},
    {"TimeAdjustHourMButton", "QPushButton", "Rect4Frame"},
    {"TimeAdjustDayMButton", "QPushButton", "Rect4Frame"},
    {"TimeAdjustWeekMButton", "QPushButton", "Rect4Frame"},
    {"TimeAdjustMinPButton", "QPushButton", "Rect4Frame"},
    {"TimeAdjustHourPButton", "QPushButton", "Rect4Frame"},
    {"TimeAdjustDayPButton", "QPushButton", "Rect4Frame"},
    {"TimeAdjustWeekPButton", "QPushButton", "Rect4Frame"},
    {"ViewModeButton", "QToolButton", "Rect4Frame"},
    {"LongitudeFrame", "QLabel", "centralWidget"},
    {"LatitudeFrameL", "QLabel", "centralWidget"},
    {"LatitudeFrameR", "QLabel", "centralWidget"},
    {"menuBar", "QMenuBar", "MainWindow"},
    {"menuConfigure", "QMenu", "menuBar"},
    {"menuFavorites", "QMenu", "menuConfigure"},
    {"menuHelp", "QMenu", "menuBar"},
};

class NamedWidgetTest : public MainWindowForm, public testing::WithParamInterface<NamedWidget>
{
};

TEST_P(NamedWidgetTest, ExistsWithItsClassAndParent)
{
    const NamedWidget &row = GetParam();
    const QObject *object = form->find(row.name);
    ASSERT_NE(object, nullptr) << row.name << " is missing";
    EXPECT_STREQ(object->metaObject()->className(), row.className);
    ASSERT_NE(object->parent(), nullptr);
    EXPECT_EQ(object->parent()->objectName().toStdString(), row.parent);
    // Names are looked up across the whole window: each must be unique.
    EXPECT_EQ(form->window.findChildren<QObject *>(row.name).size(), 1) << row.name;
}

INSTANTIATE_TEST_SUITE_P(Form, NamedWidgetTest, testing::ValuesIn(kNamedWidgets),
                         [](const testing::TestParamInfo<NamedWidget> &info) {
                             return std::string(info.param.name);
                         });

// Every QLabel of the panels has a name ending in Label, and the other way round.
TEST_F(MainWindowForm, PanelLabelsAndButtonsFollowTheNamingRule)
{
    for (const char *frame : {"Rect1Frame", "Rect2Frame", "Rect3Frame", "Rect4Frame"}) {
        for (QWidget *child : form->find<QFrame>(frame)->findChildren<QWidget *>()) {
            const QString name = child->objectName();
            SCOPED_TRACE(name.toStdString());
            if (name.endsWith("Label"))
                EXPECT_NE(qobject_cast<QLabel *>(child), nullptr);
            else
                EXPECT_NE(qobject_cast<QAbstractButton *>(child), nullptr);
        }
    }
}

// ---------------------------------------------------------------------------
// Creation order: each container's children come in the order the program
// documents (later siblings also paint over earlier ones).

TEST_F(MainWindowForm, WidgetsAreCreatedInTheDocumentedOrder)
{
    using Names = std::vector<std::string>;
    EXPECT_EQ(ChildWidgetNames(form->find("centralWidget")),
              (Names{"WorldMap", "StarChart1", "StarChart2", "Rect1Frame", "Rect2Frame",
                     "Rect3Frame", "Rect4Frame", "LongitudeFrame", "LatitudeFrameL",
                     "LatitudeFrameR"}));
    EXPECT_EQ(ChildWidgetNames(form->find("Rect1Frame")),
              (Names{"AzimuthLabel", "SourceButton", "ElevationLabel", "HomeAzimuth",
                     "HomeRiseTime", "HomeSetTime", "HomeElevation", "DxAzimuth", "DxRiseTime",
                     "DxSetTime", "DxElevation"}));
    EXPECT_EQ(ChildWidgetNames(form->find("Rect2Frame")),
              (Names{"CallsignLabel", "HomeCallsign", "DxCallsign", "GridLabel",
                     "LatitudeLabel", "LongitudeLabel", "HomeDopplerLabel", "MutualDopplerLabel",
                     "HomeGrid", "HomeLatitude", "HomeLongitude", "HomeDoppler", "MutualDoppler",
                     "DxGrid", "DxLatitude", "DxLongitude", "DxDoppler"}));
    EXPECT_EQ(ChildWidgetNames(form->find("Rect3Frame")),
              (Names{"SpatialOffsetLabel", "SkyTempLabel", "DegradationLabel", "PathLossLabel",
                     "DistanceLabel", "HomeSpatialOffset", "DxSpatialOffset", "HomeSkyTemp",
                     "DxSkyTemp", "HomeDegradation", "DxDegradation", "PathLoss", "Distance",
                     "SetFrequencyButton"}));

    // Rect4: date and time, play, the eight steps (any order), view last.
    Names rect4 = ChildWidgetNames(form->find("Rect4Frame"));
    ASSERT_EQ(rect4.size(), 12u);
    EXPECT_EQ(Names(rect4.begin(), rect4.begin() + 3),
              (Names{"SetDateTimeButton", "DateTimeButton", "TimeAdjustPlayButton"}));
    for (auto name = rect4.begin() + 3; name != rect4.end() - 1; ++name)
        EXPECT_EQ(name->rfind("TimeAdjust", 0), 0u) << *name;
    EXPECT_EQ(rect4.back(), "ViewModeButton");

    Names actions;
    for (const QObject *child : form->window.children())
        if (qobject_cast<const QAction *>(child))
            actions.push_back(child->objectName().toStdString());
    EXPECT_EQ(actions,
              (Names{"actionAbout", "actionHomeStation", "actionDxStation", "actionSources",
                     "actionOverlays", "actionEme50M", "actionEme144M", "actionEme432M",
                     "actionEme900M", "actionEme1296M", "actionEme2304M", "actionEme3400M",
                     "actionEme5760M", "actionEme10G", "actionEme47G", "actionFavorites"}));
}

// ---------------------------------------------------------------------------
// Fixed texts.

struct StaticText {
    const char *name;
    const char *text;
};

std::ostream &operator<<(std::ostream &out, const StaticText &row)
{
    return out << row.name << " \"" << row.text << "\"";
}

const StaticText kStaticTexts[] = {
    {"SourceButton", "MOON"},
    {"AzimuthLabel", "Azimuth"},
    {"ElevationLabel", "Elevation"},
    {"HomeRiseTime", "Rise"},
    {"DxRiseTime", "Rise"},
    {"HomeSetTime", "Set"},
    {"DxSetTime", "Set"},
    {"CallsignLabel", "Call"},
    {"GridLabel", "Grid"},
    {"LatitudeLabel", "Latitude"},
    {"LongitudeLabel", "Longitude"},
    {"HomeDopplerLabel", "Doppler"},
    {"MutualDopplerLabel", "Mutual"},
    {"SpatialOffsetLabel", "Spatial"},
    {"SkyTempLabel", "SkyTemp"},
    {"DegradationLabel", "Degrad"},
    {"PathLossLabel", "PathLoss"},
    {"DistanceLabel", "Distance"},
    {"TimeAdjustMinMButton", "-10 min"},
    {"TimeAdjustHourMButton", "-Hour"},
    {"TimeAdjustDayMButton", "-Day"},
    {"TimeAdjustWeekMButton", "-Week"},
    {"TimeAdjustMinPButton", "+10 min"},
    {"TimeAdjustHourPButton", "+Hour"},
    {"TimeAdjustDayPButton", "+Day"},
    {"TimeAdjustWeekPButton", "+Week"},
    {"TimeAdjustPlayButton", "\u25b6"},
    {"actionAbout", "About"},
    {"actionHomeStation", "Home Station"},
    {"actionDxStation", "DX Station"},
    {"actionSources", "Sources"},
    {"actionOverlays", "Overlays"},
    {"actionEme50M", "50Mhz EME"},
    {"actionEme144M", "144Mhz EME"},
    {"actionEme432M", "432Mhz EME"},
    {"actionEme900M", "900Mhz EME"},
    {"actionEme1296M", "1296Mhz EME"},
    {"actionEme2304M", "2304Mhz EME"},
    {"actionEme3400M", "3400Mhz EME"},
    {"actionEme5760M", "5760Mhz EME"},
    {"actionEme10G", "10Ghz EME"},
    {"actionEme47G", "47Ghz EME"},
    {"actionFavorites", "Favorites"},
    {"menuConfigure", "Configure"},
    {"menuFavorites", "Favorites"},
    {"menuHelp", "Help"},
};

class StaticTextTest : public MainWindowForm, public testing::WithParamInterface<StaticText>
{
};

TEST_P(StaticTextTest, ShowsItsText)
{
    const StaticText &row = GetParam();
    const QObject *object = form->find(row.name);
    ASSERT_NE(object, nullptr) << row.name;
    QString shown;
    if (auto label = qobject_cast<const QLabel *>(object))
        shown = label->text();
    else if (auto button = qobject_cast<const QAbstractButton *>(object))
        shown = button->text();
    else if (auto action = qobject_cast<const QAction *>(object))
        shown = action->text();
    else if (auto menu = qobject_cast<const QMenu *>(object))
        shown = menu->title();
    EXPECT_EQ(shown.toStdString(), row.text);
}

INSTANTIATE_TEST_SUITE_P(Form, StaticTextTest, testing::ValuesIn(kStaticTexts),
                         [](const testing::TestParamInfo<StaticText> &info) {
                             return std::string(info.param.name);
                         });

TEST_F(MainWindowForm, PlayAndViewButtonsExplainThemselves)
{
    for (const char *name : {"TimeAdjustPlayButton", "ViewModeButton"}) {
        const auto *button = form->find<QToolButton>(name);
        ASSERT_NE(button, nullptr) << name;
        EXPECT_FALSE(button->text().trimmed().isEmpty()) << name;
        EXPECT_FALSE(button->toolTip().isEmpty()) << name;
    }
}

// ---------------------------------------------------------------------------
// Menus: Configure then Help; Favorites is a submenu of Configure.

TEST_F(MainWindowForm, MenusHoldTheirEntriesInOrder)
{
    const Ui::MainWindow &ui = form->ui;
    EXPECT_EQ(ui.menuBar->actions(),
              (QList<QAction *>{ui.menuConfigure->menuAction(), ui.menuHelp->menuAction()}));
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
    EXPECT_EQ(form->window.menuBar(), ui.menuBar);
    EXPECT_EQ(form->window.centralWidget(), ui.centralWidget);
}

// ---------------------------------------------------------------------------
// The pixmap labels show their images unscaled from the top-left corner: the
// map projection counts pixels from there.

TEST_F(MainWindowForm, PixmapLabelsAreUnscaledAndTopLeft)
{
    for (const char *name : {"WorldMap", "StarChart1", "StarChart2"}) {
        const auto *label = form->find<QLabel>(name);
        ASSERT_NE(label, nullptr) << name;
        EXPECT_FALSE(label->hasScaledContents()) << name;
        EXPECT_EQ(label->alignment() & (Qt::AlignHorizontal_Mask | Qt::AlignVertical_Mask),
                  Qt::AlignLeft | Qt::AlignTop)
            << name;
    }
}

// ---------------------------------------------------------------------------
// Geometry at the minimum window size. The resize rule puts the map at x 20
// with width = window width - 2 * 20, a 20-pixel latitude strip on each side
// and the longitude strip right under the map across the whole window; the
// form starts out in exactly that arrangement so nothing jumps at start.

TEST_F(MainWindowForm, MapAndStripsMatchTheResizeRuleAtMinimumSize)
{
    const QRect map = form->find<QLabel>("WorldMap")->geometry();
    const QRect left = form->find<QLabel>("LatitudeFrameL")->geometry();
    const QRect right = form->find<QLabel>("LatitudeFrameR")->geometry();
    const QRect bottom = form->find<QLabel>("LongitudeFrame")->geometry();

    EXPECT_EQ(map.x(), kStripWidth);
    EXPECT_EQ(map.width(), kMinWidth - 2 * kStripWidth);
    EXPECT_EQ(map.y(), 0);
    // 1600 x 800: the equirectangular map has two pixels of longitude per
    // pixel of latitude.
    EXPECT_EQ(map.width(), 2 * map.height());

    EXPECT_EQ(left, QRect(0, 0, kStripWidth, map.height()));
    EXPECT_EQ(right, QRect(map.right() + 1, 0, kStripWidth, map.height()));
    EXPECT_EQ(bottom.topLeft(), QPoint(0, map.bottom() + 1));
    EXPECT_EQ(bottom.width(), kMinWidth);
    EXPECT_GT(bottom.height(), 0);

    // The star charts take the map's place, side by side, without overlapping.
    const QRect chart1 = form->find<QLabel>("StarChart1")->geometry();
    const QRect chart2 = form->find<QLabel>("StarChart2")->geometry();
    EXPECT_TRUE(map.contains(chart1)) << "StarChart1";
    EXPECT_TRUE(map.contains(chart2)) << "StarChart2";
    EXPECT_FALSE(chart1.intersects(chart2));
}

const char *const kFrames[] = {"Rect1Frame", "Rect2Frame", "Rect3Frame", "Rect4Frame"};

TEST_F(MainWindowForm, PanelsSitBelowTheMapInsideTheWindow)
{
    const QRect longitudeStrip = form->find<QLabel>("LongitudeFrame")->geometry();
    const QRect central = form->ui.centralWidget->rect();
    for (const char *name : kFrames) {
        SCOPED_TRACE(name);
        const QRect frame = form->find<QFrame>(name)->geometry();
        EXPECT_GT(frame.top(), longitudeStrip.bottom());
        EXPECT_TRUE(central.contains(frame)) << "central widget is " << central.width() << " x "
                                             << central.height();
        // Room for a menu bar of up to 30 pixels on any desktop.
        EXPECT_LE(frame.y() + frame.height(), kMinHeight - 30);
    }
}

// The resize rule spreads the panels with equal gaps (the first one at the left
// edge too): gap = (window width - sum of widths) / 5. At the minimum size the
// form already stands that way, and the gaps are positive.
TEST_F(MainWindowForm, PanelsStartWithTheEqualGapsOfTheResizeRule)
{
    int widthSum = 0;
    for (const char *name : kFrames)
        widthSum += form->find<QFrame>(name)->width();
    const int gap = (kMinWidth - widthSum) / 5;
    EXPECT_GT(gap, 0);

    int x = gap;
    int y = form->find<QFrame>(kFrames[0])->y();
    for (const char *name : kFrames) {
        const QRect frame = form->find<QFrame>(name)->geometry();
        EXPECT_EQ(frame.x(), x) << name;
        EXPECT_EQ(frame.y(), y) << name;
        x += frame.width() + gap;
    }
}

// No panel element sticks out of its panel or covers another one.
TEST_F(MainWindowForm, PanelElementsDoNotOverlap)
{
    for (const char *name : kFrames) {
        const QFrame *frame = form->find<QFrame>(name);
        const QList<QWidget *> children =
            frame->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
        for (int i = 0; i < children.size(); ++i) {
            const QRect a = children[i]->geometry();
            EXPECT_TRUE(frame->rect().contains(a)) << children[i]->objectName().toStdString();
            for (int j = i + 1; j < children.size(); ++j)
                EXPECT_FALSE(a.intersects(children[j]->geometry()))
                    << children[i]->objectName().toStdString() << " and "
                    << children[j]->objectName().toStdString();
        }
    }
}

// ---------------------------------------------------------------------------
// Read-outs wide enough for the longest text they are given. The texts follow
// the display formats: "%7.2f" angles, "Rise: %02d-%02d %02d:%02d",
// "%7.0f Hz", "%0.1f", "%0.2f", "%6.0f km", "%9.6f AU" (Pluto near 50 AU),
// "%7.2f Mhz" (47 GHz band), the clock text, an 11-character call sign, the
// longest source name upper-cased.

struct Readout {
    const char *name;
    const char *widestText;
};

std::ostream &operator<<(std::ostream &out, const Readout &row)
{
    return out << row.name << " \"" << row.widestText << "\"";
}

// Room the button's frame and rounded corners take from the text.
constexpr int kPadding = 10;

const Readout kReadouts[] = {
    {"SourceButton", "USER RA/DEC"},
    {"SourceButton", "SAGITTARIUS"},
    {"HomeAzimuth", " 359.99"},
    {"DxAzimuth", " 359.99"},
    {"HomeElevation", " -89.99"},
    {"DxElevation", " -89.99"},
    {"HomeRiseTime", "Rise: 12-31 23:59"},
    {"DxRiseTime", "Rise: 12-31 23:59"},
    {"HomeSetTime", "Set: 12-31 23:59"},
    {"DxSetTime", "Set: 12-31 23:59"},
    {"HomeCallsign", "VK9/Q9QQ/MM"},
    {"DxCallsign", "VK9/Q9QQ/MM"},
    {"HomeGrid", "JO62QM"},
    {"DxGrid", "RE78WW"},
    {"HomeLatitude", "-89.99"},
    {"DxLatitude", "-89.99"},
    {"HomeLongitude", "-179.99"},
    {"DxLongitude", "-179.99"},
    {"HomeDoppler", " -12345 Hz"},
    {"HomeDoppler", "-140000 Hz"},
    {"DxDoppler", "-140000 Hz"},
    {"MutualDoppler", "-140000 Hz"},
    {"HomeSpatialOffset", "-179.9"},
    {"DxSpatialOffset", "-179.9"},
    {"HomeSkyTemp", "12345.6"},
    {"DxSkyTemp", "12345.6"},
    {"HomeDegradation", "-99.9"},
    {"DxDegradation", "-99.9"},
    {"PathLoss", "-99.9"},
    {"Distance", "384400 km"},
    {"Distance", " 0.123456 AU"},
    {"Distance", "49.999999 AU"},
    {"SetFrequencyButton", "1296.00 Mhz"},
    {"SetFrequencyButton", "47088.00 Mhz"},
    {"DateTimeButton", "Sun Jun  1 00:00:00 2025"},
    {"DateTimeButton", "Wed May 28 23:59:59 2025"},
    {"TimeAdjustMinMButton", "-10 min"},
    {"TimeAdjustMinPButton", "+10 min"},
    {"TimeAdjustWeekMButton", "-Week"},
    {"TimeAdjustWeekPButton", "+Week"},
    {"ViewModeButton", "View"},
};

class ReadoutWidthTest : public MainWindowForm, public testing::WithParamInterface<Readout>
{
};

TEST_P(ReadoutWidthTest, LongestTextFits)
{
    const Readout &row = GetParam();
    const auto *button = form->find<QAbstractButton>(row.name);
    ASSERT_NE(button, nullptr) << row.name;
    const int needed = QFontMetrics(button->font()).horizontalAdvance(QString::fromUtf8(row.widestText));
    EXPECT_LE(needed, button->width() - kPadding)
        << row.name << " is " << button->width() << " wide";
    EXPECT_LE(QFontMetrics(button->font()).height(), button->height() - 4) << row.name;
}

INSTANTIATE_TEST_SUITE_P(Form, ReadoutWidthTest, testing::ValuesIn(kReadouts));

// The panel headings fit as well; a label draws no button frame, so it needs
// less room around its text.
TEST_F(MainWindowForm, PanelLabelsFitTheirText)
{
    constexpr int kLabelPadding = 6;
    for (const char *frame : kFrames) {
        for (const QLabel *label : form->find<QFrame>(frame)->findChildren<QLabel *>()) {
            const int needed = QFontMetrics(label->font()).horizontalAdvance(label->text());
            EXPECT_LE(needed, label->width() - kLabelPadding) << label->objectName().toStdString();
        }
    }
}

// ---------------------------------------------------------------------------
// About box.

TEST(AboutDialogTest, ShowsVersionAndNotesAndClosesWithOk)
{
    lunaquill::AboutDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), "About Lunaquill");

    const auto *version = dialog.findChild<QLabel *>("VersionLabel");
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(version->text(), "Lunaquill v1.05 Feb 28, 2025");

    const auto *notes = dialog.findChild<QPlainTextEdit *>("NotesText");
    ASSERT_NE(notes, nullptr);
    EXPECT_TRUE(notes->isReadOnly());
    for (const char *topic : {"EME", "Doppler", "sky temperature", "degradation", "path loss",
                              "star charts"})
        EXPECT_TRUE(notes->toPlainText().contains(topic)) << topic;

    auto *ok = dialog.findChild<QPushButton *>("OkButton");
    ASSERT_NE(ok, nullptr);
    EXPECT_EQ(ok->text(), "Ok");
    dialog.show();
    ASSERT_TRUE(dialog.isVisible());
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

} // namespace
