// The station dialogs driven as a user would: typing, leaving fields,
// pressing Grid Convert, switching hemispheres, clicking list rows.
#include "GuiTestSupport.h"

#include "tracking/DxSelectDialog.h"
#include "tracking/DxStationDialog.h"
#include "tracking/DxStationList.h"
#include "tracking/HomeStationDialog.h"
#include "tracking/SharedState.h"
#include "tracking/StationEntry.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTableWidget>
#include <QTest>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

namespace lunaquill {
namespace {

constexpr double Tolerance = 1e-7;

// FN42 is the middle of its square:
//   latitude  = 10*13 - 90 + 2 + 12.5*2.5/60       =  42.5208333...
//   longitude = 2*4 + 20*5 + 12.5*5/60 - 180       = -70.9583333...
constexpr double Fn42Latitude = 42.0 + 12.5 * 2.5 / 60;
constexpr double Fn42Longitude = 108.0 + 12.5 * 5 / 60 - 180;

template <typename T>
T *Child(QWidget &parent, const char *name)
{
    T *child = parent.findChild<T *>(name);
    if (!child)
        throw std::runtime_error(std::string("no widget ") + name);
    return child;
}

QLineEdit *Edit(QWidget &dialog, const char *name) { return Child<QLineEdit>(dialog, name); }
QComboBox *Combo(QWidget &dialog, const char *name) { return Child<QComboBox>(dialog, name); }

// Replaces the text of a field by typing and ends the edit with Enter.
void Enter(QLineEdit *edit, const QString &text)
{
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}

template <size_t N>
std::string Text(const char (&field)[N])
{
    return std::string(field, strnlen(field, N));
}

QStringList Texts(QLineEdit *degrees, QLineEdit *minutes, QLineEdit *seconds)
{
    return {degrees->text(), minutes->text(), seconds->text()};
}

void ShowActive(QWidget &dialog)
{
    dialog.show();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
}

class StationDialogTest : public testing::Test {
protected:
    void SetUp() override
    {
        homeData = HomeData{};
        dxStation = DxStation{};
        memset(dxStationRecords, 0, sizeof dxStationRecords);
        dxStationCount = 0;
        test::ClearTestHome();
    }
};

// ---- Texts shown from a value and values read from texts -----------------

struct ShownCase {
    double value;
    const char *degrees;
    const char *minutes;
    const char *seconds;
    int hemisphere;
};

TEST(PositionTexts, ShowDegreesMinutesSecondsAndHemisphere)
{
    const ShownCase cases[] = {
        // 0.5208333 deg = 31.25 min = 31 min 15 s
        {Fn42Latitude, "42", "31", "15.00000", NorthOrEast},
        // -0.9583333 deg = -57.5 min = 57 min 30 s, west
        {Fn42Longitude, "70", "57", "30.00000", SouthOrWest},
        {-33.5, "33", "30", "0.00000", SouthOrWest},
        {151.25, "151", "15", "0.00000", NorthOrEast},
        {-0.5, "0", "30", "0.00000", SouthOrWest},
        {0.0, "0", "0", "0.00000", NorthOrEast},
        // 12.3456 deg: 0.3456*60 = 20.736 min, 0.736*60 = 44.16 s
        {12.3456, "12", "20", "44.16000", NorthOrEast},
        // Degrees are reduced modulo 360, minutes count from the reduced
        // degrees: 400.5 -> 40, (400.5 - 40) * 60 = 21630.
        {400.5, "40", "21630", "0.00000", NorthOrEast},
        {-400.5, "40", "21630", "0.00000", SouthOrWest},
        {NAN, "0", "0", "0.00000", NorthOrEast},
    };
    for (const ShownCase &c : cases) {
        PositionTexts texts = PositionTextsFromValue(c.value);
        EXPECT_EQ(texts.degrees, c.degrees) << c.value;
        EXPECT_EQ(texts.minutes, c.minutes) << c.value;
        EXPECT_EQ(texts.seconds, c.seconds) << c.value;
        EXPECT_EQ(texts.hemisphere, c.hemisphere) << c.value;
    }
}

TEST(PositionTexts, HugeValuesGiveTextsWithoutOverflow)
{
    for (double value : {1e300, -1e300, (double)INFINITY, 3e9, -3e9}) {
        PositionTexts texts = PositionTextsFromValue(value);
        EXPECT_FALSE(texts.degrees.empty()) << value;
        EXPECT_FALSE(texts.minutes.empty()) << value;
        EXPECT_FALSE(texts.seconds.empty()) << value;
    }
}

struct ReadCase {
    const char *degrees;
    const char *minutes;
    const char *seconds;
    int hemisphere;
    double expected;
};

TEST(PositionFields, SecondsCountAsThreeHundredSixtiethsOfADegree)
{
    const ReadCase cases[] = {
        {"42", "0", "30", NorthOrEast, 42 + 30.0 / 360},        // 42.0833, not 42.00833
        {"42", "31", "15", NorthOrEast, 42 + 31.0 / 60 + 15.0 / 360},
        {"70", "57", "30", SouthOrWest, -(70 + 57.0 / 60 + 30.0 / 360)},
        {"70", "57", "30.00000", SouthOrWest, -(70 + 57.0 / 60 + 30.0 / 360)},
        // The sign comes from the combo; a typed minus is just added in.
        {"-10", "30", "0", NorthOrEast, -9.5},
        {"-10", "30", "0", SouthOrWest, 9.5},
        // Read like atoi/atof: leading spaces, trailing junk, no number = 0.
        {" 7abc", "x", "1.5e1", NorthOrEast, 7 + 15.0 / 360},
        {"", "", "", SouthOrWest, 0},
        // Cut to ten characters before reading.
        {"12345678901", "0", "0", NorthOrEast, 1234567890},
        {"0", "0", "1234567890123", NorthOrEast, 1234567890 / 360.0},
    };
    for (const ReadCase &c : cases) {
        double value = -999;
        EXPECT_TRUE(ValueFromPositionFields(c.degrees, c.minutes, c.seconds, c.hemisphere, value));
        EXPECT_NEAR(value, c.expected, Tolerance)
            << c.degrees << " " << c.minutes << " " << c.seconds << " " << c.hemisphere;
    }
}

TEST(PositionFields, NumbersBeyondTheRangeOfTheirTypeStayDefined)
{
    double value = 5;
    // Ten nines do not fit in an int; the result is large but finite.
    EXPECT_TRUE(ValueFromPositionFields("9999999999", "-9999999999", "0", NorthOrEast, value));
    EXPECT_TRUE(std::isfinite(value));
    // A sum that is no finite number leaves the value as it was.
    for (const char *seconds : {"nan", "inf", "-inf"}) {
        value = 5;
        EXPECT_FALSE(ValueFromPositionFields("1", "2", seconds, NorthOrEast, value)) << seconds;
        EXPECT_EQ(value, 5) << seconds;
    }
}

// ---- Home Station ---------------------------------------------------------

TEST_F(StationDialogTest, HomeDialogShowsItsTitleLabelsAndChoices)
{
    HomeStationDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), "Home Station");
    QSet<QString> labels;
    for (QLabel *label : dialog.findChildren<QLabel *>())
        labels.insert(label->text());
    for (const char *text : {"Callsign", "Grid", "Location", "Frequency", "Latitude", "Longitude",
                             "Deg", "Min", "Sec", "N/S", "E/W"})
        EXPECT_TRUE(labels.contains(text)) << text;
    EXPECT_EQ(Child<QPushButton>(dialog, "GridConvertButton")->text(), "Grid Convert");
    QComboBox *ns = Combo(dialog, "LatitudeNSComboBox");
    QComboBox *ew = Combo(dialog, "LongitudeEWComboBox");
    ASSERT_EQ(ns->count(), 2);
    ASSERT_EQ(ew->count(), 2);
    EXPECT_EQ(ns->itemText(0), "N");
    EXPECT_EQ(ns->itemText(1), "S");
    EXPECT_EQ(ew->itemText(0), "E");
    EXPECT_EQ(ew->itemText(1), "W");
}

TEST_F(StationDialogTest, HomeDialogOpensWithTheHomeValues)
{
    CopyField(homeData.callsign, "Q1ABC");
    CopyField(homeData.grid, "FN42");
    CopyField(homeData.location, "Boston");
    homeData.frequency = 144;
    homeData.latitude = -33.5;
    homeData.longitude = 151.25;
    HomeStationDialog dialog;
    EXPECT_EQ(Edit(dialog, "CallsignEdit")->text(), "Q1ABC");
    EXPECT_EQ(Edit(dialog, "GridEdit")->text(), "FN42");
    EXPECT_EQ(Edit(dialog, "LocationEdit")->text(), "Boston");
    EXPECT_EQ(Edit(dialog, "FrequencyEdit")->text(), " 144.00"); // "%7.2f"
    EXPECT_EQ(Texts(Edit(dialog, "LatitudeDegEdit"), Edit(dialog, "LatitudeMinEdit"),
                    Edit(dialog, "LatitudeSecEdit")),
              QStringList({"33", "30", "0.00000"}));
    EXPECT_EQ(Combo(dialog, "LatitudeNSComboBox")->currentIndex(), 1);
    EXPECT_EQ(Texts(Edit(dialog, "LongitudeDegEdit"), Edit(dialog, "LongitudeMinEdit"),
                    Edit(dialog, "LongitudeSecEdit")),
              QStringList({"151", "15", "0.00000"}));
    EXPECT_EQ(Combo(dialog, "LongitudeEWComboBox")->currentIndex(), 0);
    // Opening changes nothing.
    EXPECT_EQ(homeData.latitude, -33.5);
    EXPECT_EQ(homeData.longitude, 151.25);
}

TEST_F(StationDialogTest, HomeGridWaitsForGridConvert)
{
    HomeStationDialog dialog;
    ShowActive(dialog);
    QLineEdit *grid = Edit(dialog, "GridEdit");
    grid->setFocus();
    QTest::keyClicks(grid, "FN42");
    // Leaving the field stores the grid but does not move the station.
    QTest::mouseClick(Edit(dialog, "CallsignEdit"), Qt::LeftButton);
    EXPECT_EQ(Text(homeData.grid), "FN42");
    EXPECT_EQ(homeData.latitude, 0.0);
    EXPECT_EQ(homeData.longitude, 0.0);
    EXPECT_EQ(Edit(dialog, "LatitudeDegEdit")->text(), "0");

    QTest::mouseClick(Child<QPushButton>(dialog, "GridConvertButton"), Qt::LeftButton);
    EXPECT_NEAR(homeData.latitude, Fn42Latitude, Tolerance);
    EXPECT_NEAR(homeData.longitude, Fn42Longitude, Tolerance);
    EXPECT_EQ(Texts(Edit(dialog, "LatitudeDegEdit"), Edit(dialog, "LatitudeMinEdit"),
                    Edit(dialog, "LatitudeSecEdit")),
              QStringList({"42", "31", "15.00000"}));
    EXPECT_EQ(Combo(dialog, "LatitudeNSComboBox")->currentIndex(), 0);
    EXPECT_EQ(Texts(Edit(dialog, "LongitudeDegEdit"), Edit(dialog, "LongitudeMinEdit"),
                    Edit(dialog, "LongitudeSecEdit")),
              QStringList({"70", "57", "30.00000"}));
    EXPECT_EQ(Combo(dialog, "LongitudeEWComboBox")->currentIndex(), 1);
    // Showing W must not feed the shown fields back into the longitude.
    EXPECT_NEAR(homeData.longitude, Fn42Longitude, Tolerance);
}

TEST_F(StationDialogTest, HomeGridTypedThenGridConvertClickedAtOnce)
{
    HomeStationDialog dialog;
    ShowActive(dialog);
    QLineEdit *grid = Edit(dialog, "GridEdit");
    grid->setFocus();
    QTest::keyClicks(grid, "fn42aa");
    QTest::mouseClick(Child<QPushButton>(dialog, "GridConvertButton"), Qt::LeftButton);
    // Subsquare a, a: 42 + 0.5*2.5/60 and 2*4 + 20*5 + 0.5*5/60 - 180.
    EXPECT_EQ(Text(homeData.grid), "fn42aa");
    EXPECT_NEAR(homeData.latitude, 42.0 + 0.5 * 2.5 / 60, Tolerance);
    EXPECT_NEAR(homeData.longitude, 108.0 + 0.5 * 5 / 60 - 180, Tolerance);
}

TEST_F(StationDialogTest, HomeGridConvertOfANonLocatorLeavesThePosition)
{
    homeData.latitude = 1.25;
    homeData.longitude = -2.5;
    HomeStationDialog dialog;
    for (const char *text : {"FN4", "F142", ""}) {
        Enter(Edit(dialog, "GridEdit"), text);
        QTest::mouseClick(Child<QPushButton>(dialog, "GridConvertButton"), Qt::LeftButton);
        EXPECT_EQ(Text(homeData.grid), text);
        EXPECT_EQ(homeData.latitude, 1.25) << text;
        EXPECT_EQ(homeData.longitude, -2.5) << text;
        EXPECT_EQ(Edit(dialog, "LatitudeMinEdit")->text(), "15");
    }
}

TEST_F(StationDialogTest, HomeCallsignLocationAndFrequencyAreStored)
{
    HomeStationDialog dialog;
    Enter(Edit(dialog, "CallsignEdit"), "Q9QQ");
    // QTest types ASCII only; the ü arrives as a paste would.
    Edit(dialog, "LocationEdit")->setText(QString::fromUtf8("Zürich"));
    QTest::keyClick(Edit(dialog, "LocationEdit"), Qt::Key_Return);
    Enter(Edit(dialog, "FrequencyEdit"), "432.1");
    EXPECT_EQ(Text(homeData.callsign), "Q9QQ");
    EXPECT_EQ(Text(homeData.location), "Z\xfcrich"); // Latin-1
    EXPECT_DOUBLE_EQ(homeData.frequency, 432.1);
    Enter(Edit(dialog, "FrequencyEdit"), "abc");
    EXPECT_EQ(homeData.frequency, 0.0);
    Enter(Edit(dialog, "FrequencyEdit"), " 1296.00");
    EXPECT_EQ(homeData.frequency, 1296.0);
}

TEST_F(StationDialogTest, HomeTextsOfAnyLengthStayInsideTheirFields)
{
    homeData.latitude = 7.5;
    HomeStationDialog dialog;
    const QString longText(200, QChar('W'));

    // Typing stops at the field's size...
    Enter(Edit(dialog, "CallsignEdit"), longText);
    EXPECT_EQ(Edit(dialog, "CallsignEdit")->text().size(), 11);
    EXPECT_EQ(Text(homeData.callsign), std::string(11, 'W'));

    // ...and even a field that took more text stores no more than fits.
    struct Bound {
        const char *edit;
        size_t stored;
    };
    for (Bound bound : {Bound{"CallsignEdit", 11}, Bound{"GridEdit", 7}, Bound{"LocationEdit", 63}}) {
        QLineEdit *edit = Edit(dialog, bound.edit);
        edit->setMaxLength(32767);
        edit->setText(longText);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    EXPECT_EQ(Text(homeData.callsign), std::string(11, 'W'));
    EXPECT_EQ(Text(homeData.grid), std::string(7, 'W'));
    EXPECT_EQ(Text(homeData.location), std::string(63, 'W'));
    EXPECT_EQ(homeData.callsign[11], '\0');
    EXPECT_EQ(homeData.grid[7], '\0');
    EXPECT_EQ(homeData.location[63], '\0');
    EXPECT_EQ(homeData.latitude, 7.5);
}

// ---- Dx Select --------------------------------------------------------------

TEST_F(StationDialogTest, DxDialogHasNoLocationOrFrequency)
{
    DxSelectDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), "Dx Select");
    EXPECT_EQ(dialog.findChild<QLineEdit *>("LocationEdit"), nullptr);
    EXPECT_EQ(dialog.findChild<QLineEdit *>("FrequencyEdit"), nullptr);
    QSet<QString> labels;
    for (QLabel *label : dialog.findChildren<QLabel *>())
        labels.insert(label->text());
    EXPECT_FALSE(labels.contains("Location"));
    EXPECT_FALSE(labels.contains("Frequency"));
    for (const char *text : {"Callsign", "Grid", "Latitude", "Longitude", "Deg", "Min", "Sec", "N/S", "E/W"})
        EXPECT_TRUE(labels.contains(text)) << text;
}

TEST_F(StationDialogTest, DxGridMovesTheStationAsSoonAsItIsEntered)
{
    DxSelectDialog dialog;
    ShowActive(dialog);
    QLineEdit *grid = Edit(dialog, "GridEdit");
    grid->setFocus();
    QTest::keyClicks(grid, "FN42");
    QTest::mouseClick(Edit(dialog, "CallsignEdit"), Qt::LeftButton);
    EXPECT_EQ(Text(dxStation.grid), "FN42");
    EXPECT_NEAR(dxStation.latitude, Fn42Latitude, Tolerance);
    EXPECT_NEAR(dxStation.longitude, Fn42Longitude, Tolerance);
    EXPECT_EQ(Texts(Edit(dialog, "LongitudeDegEdit"), Edit(dialog, "LongitudeMinEdit"),
                    Edit(dialog, "LongitudeSecEdit")),
              QStringList({"70", "57", "30.00000"}));
    EXPECT_EQ(Combo(dialog, "LongitudeEWComboBox")->currentIndex(), 1);
}

struct LocatorCase {
    const char *name;
    const char *grid;
    bool converts;
    double latitude;
    double longitude;
};

void PrintTo(const LocatorCase &c, std::ostream *os)
{
    *os << c.grid;
}

class DxLocatorTest : public StationDialogTest, public testing::WithParamInterface<LocatorCase> {};

TEST_P(DxLocatorTest, SetsThePositionOnlyForALocator)
{
    const LocatorCase &c = GetParam();
    dxStation.latitude = 1.25;
    dxStation.longitude = -2.5;
    DxSelectDialog dialog;
    Enter(Edit(dialog, "GridEdit"), c.grid);
    EXPECT_EQ(Text(dxStation.grid), c.grid);
    double latitude = c.converts ? c.latitude : 1.25;
    double longitude = c.converts ? c.longitude : -2.5;
    EXPECT_NEAR(dxStation.latitude, latitude, Tolerance);
    EXPECT_NEAR(dxStation.longitude, longitude, Tolerance);
    PositionTexts shown = PositionTextsFromValue(latitude);
    EXPECT_EQ(Edit(dialog, "LatitudeDegEdit")->text().toStdString(), shown.degrees);
    EXPECT_EQ(Edit(dialog, "LatitudeMinEdit")->text().toStdString(), shown.minutes);
}

INSTANTIATE_TEST_SUITE_P(
    Locators, DxLocatorTest,
    testing::Values(
        LocatorCase{"FN42", "FN42", true, Fn42Latitude, Fn42Longitude},
        LocatorCase{"LowerCaseWithSubsquare", "fn42aa", true, 42.0 + 0.5 * 2.5 / 60,
                    108.0 + 0.5 * 5 / 60 - 180},
        // FN42mm: 42 + 12.5*2.5/60 = the middle of the square again.
        LocatorCase{"MiddleSubsquare", "FN42mm", true, Fn42Latitude, Fn42Longitude},
        // JO62qm: 2*6 + 20*9 + 16.5*5/60 - 180 = 13.375; 10*14 - 90 + 2 + 12.5*2.5/60.
        LocatorCase{"JO62qm", "JO62qm", true, 52.0 + 12.5 * 2.5 / 60, 13.375},
        LocatorCase{"OneSubsquareLetterIsTheSquare", "FN42A", true, Fn42Latitude, Fn42Longitude},
        LocatorCase{"ThreeCharacters", "FN4", false, 0, 0},
        LocatorCase{"DigitAsSecondCharacter", "F142", false, 0, 0},
        LocatorCase{"Empty", "", false, 0, 0}),
    [](const testing::TestParamInfo<LocatorCase> &info) { return info.param.name; });

TEST_F(StationDialogTest, DxTextsOfAnyLengthStayInsideTheirFields)
{
    DxSelectDialog dialog;
    dxStation.latitude = 7.5;
    const QString longText(200, QChar('K'));
    for (const char *name : {"CallsignEdit", "GridEdit"}) {
        QLineEdit *edit = Edit(dialog, name);
        edit->setMaxLength(32767);
        edit->setText(longText);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    EXPECT_EQ(Text(dxStation.callsign), std::string(11, 'K'));
    EXPECT_EQ(Text(dxStation.grid), std::string(7, 'K'));
    EXPECT_EQ(dxStation.location[0], '\0');
    EXPECT_EQ(dxStation.latitude, 7.5);
}

TEST_F(StationDialogTest, ClosingWithTheCursorInAFieldIsSafe)
{
    // Destroying the fields moves the focus, which ends the edit.
    for (int which = 0; which < 2; ++which) {
        std::unique_ptr<QDialog> dialog;
        if (which == 0)
            dialog = std::make_unique<HomeStationDialog>();
        else
            dialog = std::make_unique<DxSelectDialog>();
        ShowActive(*dialog);
        QLineEdit *callsign = Edit(*dialog, "CallsignEdit");
        callsign->setFocus();
        QTest::keyClicks(callsign, "Q1X");
        ASSERT_EQ(QApplication::focusWidget(), callsign);
        dialog.reset();
    }
}

// ---- Position fields, the same in both dialogs ----------------------------

enum class Which { Home, Dx };

class PositionFieldTest : public StationDialogTest, public testing::WithParamInterface<Which> {
protected:
    double &Latitude() { return GetParam() == Which::Home ? homeData.latitude : dxStation.latitude; }
    double &Longitude() { return GetParam() == Which::Home ? homeData.longitude : dxStation.longitude; }
    std::unique_ptr<QDialog> Open()
    {
        if (GetParam() == Which::Home)
            return std::make_unique<HomeStationDialog>();
        return std::make_unique<DxSelectDialog>();
    }
};

TEST_P(PositionFieldTest, ThirtySecondsAddThirtyThreeHundredSixtiethsOfADegree)
{
    Latitude() = 42.0;
    auto dialog = Open();
    EXPECT_EQ(Edit(*dialog, "LatitudeSecEdit")->text(), "0.00000");
    Enter(Edit(*dialog, "LatitudeSecEdit"), "30");
    EXPECT_NEAR(Latitude(), 42.0833333333, Tolerance); // not 42.0083
    // The fields are not refilled by a field edit.
    EXPECT_EQ(Edit(*dialog, "LatitudeSecEdit")->text(), "30");
    EXPECT_EQ(Edit(*dialog, "LatitudeDegEdit")->text(), "42");
}

TEST_P(PositionFieldTest, EachFieldAndComboStoresThePositionAtOnce)
{
    auto dialog = Open();
    Enter(Edit(*dialog, "LatitudeDegEdit"), "51");
    EXPECT_NEAR(Latitude(), 51.0, Tolerance);
    Enter(Edit(*dialog, "LatitudeMinEdit"), "30");
    EXPECT_NEAR(Latitude(), 51.5, Tolerance);
    Combo(*dialog, "LatitudeNSComboBox")->setCurrentIndex(1);
    EXPECT_NEAR(Latitude(), -51.5, Tolerance);
    Combo(*dialog, "LatitudeNSComboBox")->setCurrentIndex(0);
    EXPECT_NEAR(Latitude(), 51.5, Tolerance);

    Enter(Edit(*dialog, "LongitudeDegEdit"), "71");
    Enter(Edit(*dialog, "LongitudeMinEdit"), "30");
    Enter(Edit(*dialog, "LongitudeSecEdit"), "36");
    EXPECT_NEAR(Longitude(), 71.6, Tolerance); // 71 + 30/60 + 36/360
    Combo(*dialog, "LongitudeEWComboBox")->setCurrentIndex(1);
    EXPECT_NEAR(Longitude(), -71.6, Tolerance);
    // A typed minus does not choose the hemisphere.
    Enter(Edit(*dialog, "LongitudeDegEdit"), "-71");
    EXPECT_NEAR(Longitude(), -(-71 + 0.5 + 0.1), Tolerance);
    EXPECT_EQ(Combo(*dialog, "LongitudeEWComboBox")->currentIndex(), 1);
    EXPECT_NEAR(Latitude(), 51.5, Tolerance);
}

TEST_P(PositionFieldTest, FieldsAreCutToTenCharacters)
{
    auto dialog = Open();
    QLineEdit *degrees = Edit(*dialog, "LatitudeDegEdit");
    Enter(degrees, "123456789012345");
    EXPECT_EQ(degrees->text(), "1234567890");
    EXPECT_NEAR(Latitude(), 1234567890.0, Tolerance);
    // More than an int holds: read without overflow, still a number.
    Enter(degrees, "99999999999999");
    EXPECT_EQ(degrees->text(), "9999999999");
    EXPECT_TRUE(std::isfinite(Latitude()));
    EXPECT_GT(Latitude(), 2e9);
}

TEST_P(PositionFieldTest, ASecondsTextThatIsNoNumberLeavesThePosition)
{
    Longitude() = -3.25;
    auto dialog = Open();
    Enter(Edit(*dialog, "LongitudeSecEdit"), "nan");
    EXPECT_EQ(Longitude(), -3.25);
    Enter(Edit(*dialog, "LongitudeSecEdit"), "1e999");
    EXPECT_TRUE(std::isfinite(Longitude()));
}

INSTANTIATE_TEST_SUITE_P(BothDialogs, PositionFieldTest, testing::Values(Which::Home, Which::Dx),
                         [](const testing::TestParamInfo<Which> &info) {
                             return info.param == Which::Home ? "Home" : "Dx";
                         });

// ---- DX Station Selections ------------------------------------------------

void WriteDxList(const QByteArray &bytes)
{
    QFile file(test::SettingsFolder() + "DxStations.txt");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

const QByteArray sampleList =
    "/ sample list\n"
    ",,,,,,North America\n"
    "Q1ABC,FN42,4x 17el,1 kW,144,Q65,Boston MA\n"
    "QA2XYZ,XX99,dish,100 W,1296,,Nowhere\n"
    ",,,,,,Europe\n"
    "Q3DEF,JO62qm,dish,400 W,1296,,Berlin\n"
    ",,,,,,Africa\n"
    "Q4GHI,JF96,yagis,1 kW,144,,Cape Town\n"
    ",,,,,,Asia\n"
    "Q5JKL,PM95,dish,500 W,1296,,Tokyo\n"
    ",,,,,,Oceania\n"
    "Q6MNO,QF56,yagis,1 kW,144,,Sydney\n"
    "Q123456789AB,FN42,a,b,c,d,Long call\n"
    "ZZZZZZ,,,,,,\n"
    "Q7PQR,FN42,a,b,c,d,after the end\n";

TEST_F(StationDialogTest, DxListShowsOneRowPerStationWithItsPosition)
{
    WriteDxList(sampleList);
    DxStationDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), "DX Station Selections");
    QTableWidget *table = Child<QTableWidget>(dialog, "DxStationTable");
    ASSERT_EQ(table->columnCount(), 5);
    const char *headers[] = {"Location", "Prefix / Call", "Grid", "Latitude", "Longitude"};
    for (int column = 0; column < 5; ++column)
        EXPECT_EQ(table->horizontalHeaderItem(column)->text(), headers[column]);
    ASSERT_EQ(table->rowCount(), 12);

    auto row = [&](int r) {
        QStringList texts;
        for (int column = 0; column < 5; ++column)
            texts << table->item(r, column)->text();
        return texts;
    };
    EXPECT_EQ(row(0), QStringList({"North America", "", "", " 0.00", " 0.00"}));
    EXPECT_EQ(row(1), QStringList({"Boston MA", "Q1ABC", "FN42", "42.52", "-70.96"}));
    // XX99: X is 23 letters from A: 10*23 - 90 + 9 + 12.5*2.5/60 = 149.52,
    // 2*9 + 20*23 + 12.5*5/60 - 180 = 299.04 (letters are not range checked).
    EXPECT_EQ(row(2), QStringList({"Nowhere", "QA2XYZ", "XX99", "149.52", "299.04"}));
    EXPECT_EQ(row(4), QStringList({"Berlin", "Q3DEF", "JO62qm", "52.52", "13.38"}));
    // JF96: 10*5 - 90 + 6 + 0.52 = -33.48; 2*9 + 20*9 + 1.04 - 180 = 19.04.
    EXPECT_EQ(row(6), QStringList({"Cape Town", "Q4GHI", "JF96", "-33.48", "19.04"}));
    // A twelve-character call has no room for a terminator: shown as twelve
    // characters, and its grid field is empty.
    // The comma after it then ends the grid, and "FN42", a, b, c are the
    // four skipped fields.
    EXPECT_EQ(row(11), QStringList({"d", "Q123456789AB", "", " 0.00", " 0.00"}));
}

TEST_F(StationDialogTest, DxListBandsSectionsInFourRepeatingColours)
{
    WriteDxList(sampleList);
    DxStationDialog dialog;
    QTableWidget *table = Child<QTableWidget>(dialog, "DxStationTable");
    ASSERT_EQ(table->rowCount(), 12);
    auto colour = [&](int row, int column = 0) { return table->item(row, column)->background().color(); };

    // Headings at rows 0, 3, 5, 7, 9; each heading and its stations share
    // a colour across all columns.
    for (int row = 0; row < 12; ++row)
        for (int column = 1; column < 5; ++column)
            EXPECT_EQ(colour(row, column), colour(row)) << row << "," << column;
    EXPECT_EQ(colour(1), colour(0));
    EXPECT_EQ(colour(2), colour(0));
    EXPECT_EQ(colour(4), colour(3));
    QSet<QRgb> firstFour = {colour(0).rgb(), colour(3).rgb(), colour(5).rgb(), colour(7).rgb()};
    EXPECT_EQ(firstFour.size(), 4);
    // The fifth section takes the first colour again.
    EXPECT_EQ(colour(9), colour(0));
    EXPECT_EQ(colour(11), colour(0));
    // Light backgrounds under dark text.
    for (int row = 0; row < 12; ++row) {
        EXPECT_GT(colour(row).lightness(), 200) << row;
        EXPECT_LT(table->item(row, 0)->foreground().color().lightness(), 60) << row;
    }
}

TEST_F(StationDialogTest, ClickingARowMakesItTheDxStation)
{
    WriteDxList(sampleList);
    DxStationDialog dialog;
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    QTableWidget *table = Child<QTableWidget>(dialog, "DxStationTable");
    auto click = [&](int row, int column) {
        table->scrollToItem(table->item(row, column));
        QRect rect = table->visualItemRect(table->item(row, column));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, rect.center());
    };

    click(4, 0);
    EXPECT_EQ(Text(dxStation.callsign), "Q3DEF");
    EXPECT_EQ(Text(dxStation.grid), "JO62qm");
    EXPECT_NEAR(dxStation.latitude, 52.0 + 12.5 * 2.5 / 60, Tolerance);
    EXPECT_NEAR(dxStation.longitude, 13.375, Tolerance);
    EXPECT_EQ(dxStation.location[0], '\0');

    click(1, 3);
    EXPECT_EQ(Text(dxStation.callsign), "Q1ABC");
    EXPECT_EQ(Text(dxStation.grid), "FN42");
    EXPECT_NEAR(dxStation.latitude, Fn42Latitude, Tolerance);
    EXPECT_NEAR(dxStation.longitude, Fn42Longitude, Tolerance);

    // The twelve-character call is cut to what the DX call sign holds.
    click(11, 1);
    EXPECT_EQ(Text(dxStation.callsign), "Q123456789A");
    EXPECT_EQ(Text(dxStation.grid), "");
    EXPECT_EQ(dxStation.latitude, 0.0);

    // A heading row is a record too: it clears call and grid.
    click(1, 1);
    click(3, 0);
    EXPECT_EQ(Text(dxStation.callsign), "");
    EXPECT_EQ(Text(dxStation.grid), "");
}

TEST_F(StationDialogTest, DxListIsEmptyWithoutAFileOrWithoutStations)
{
    {
        DxStationDialog dialog;
        EXPECT_EQ(Child<QTableWidget>(dialog, "DxStationTable")->rowCount(), 0);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
    for (const QByteArray &bytes : {QByteArray("/ only\n/ comments\n"),
                                    QByteArray("ZZZZZZ,,,,,,\nQ1ABC,FN42,a,b,c,d,Boston\n")}) {
        WriteDxList(bytes);
        DxStationDialog dialog;
        EXPECT_EQ(Child<QTableWidget>(dialog, "DxStationTable")->rowCount(), 0) << bytes.constData();
    }
}

TEST_F(StationDialogTest, TheExampleListLoadsWithMadeUpCallsAndWorkingGrids)
{
    QFile example("examples/DxStations.txt");
    ASSERT_TRUE(example.open(QIODevice::ReadOnly)) << "run from the source folder";
    WriteDxList(example.readAll());
    DxStationDialog dialog;
    QTableWidget *table = Child<QTableWidget>(dialog, "DxStationTable");
    ASSERT_GE(table->rowCount(), 30);
    int headings = 0;
    for (int row = 0; row < table->rowCount(); ++row) {
        QString call = table->item(row, 1)->text();
        if (call.isEmpty()) {
            ++headings;
            continue;
        }
        EXPECT_TRUE(call.startsWith('Q')) << call.toStdString();
        EXPECT_FALSE(table->item(row, 0)->text().isEmpty()) << call.toStdString();
        double latitude = dxStationRecords[row].latitude;
        double longitude = dxStationRecords[row].longitude;
        EXPECT_TRUE(latitude != 0 || longitude != 0) << call.toStdString();
        EXPECT_LE(std::fabs(latitude), 90) << call.toStdString();
        EXPECT_LE(std::fabs(longitude), 180) << call.toStdString();
    }
    EXPECT_GE(headings, 6);
    // The first station: Boston, FN42li = 42 + 8.5*2.5/60, 2*4 + 100 + 11.5*5/60 - 180.
    EXPECT_EQ(table->item(1, 0)->text(), "Boston MA");
    EXPECT_EQ(table->item(1, 3)->text(), "42.35");
    EXPECT_EQ(table->item(1, 4)->text(), "-71.04");
}

} // namespace
} // namespace lunaquill
