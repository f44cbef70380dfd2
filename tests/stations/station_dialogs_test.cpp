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

template <typename T = QLineEdit>
T *Child(QWidget &parent, const QString &name)
{
    if (T *child = parent.findChild<T *>(name))
        return child;
    throw std::runtime_error("no widget " + name.toStdString());
}

// Replaces the text of a field by typing and ends the edit with Enter.
void Enter(QLineEdit *edit, const QString &text)
{
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}

template <size_t N>
std::string Text(const char (&field)[N]) { return std::string(field, strnlen(field, N)); }

// Degrees, minutes, seconds and hemisphere as shown for "Latitude" or "Longitude".
QStringList Fields(QWidget &dialog, const QString &which)
{
    QStringList texts;
    for (const char *part : {"DegEdit", "MinEdit", "SecEdit"})
        texts << Child(dialog, which + part)->text();
    QString combo = which + (which == "Latitude" ? "NSComboBox" : "EWComboBox");
    return texts << Child<QComboBox>(dialog, combo)->currentText();
}

enum class Which { Home, Dx };
void PrintTo(Which w, std::ostream *os) { *os << (w == Which::Home ? "Home" : "Dx"); }
std::unique_ptr<QDialog> Open(Which w)
{
    return w == Which::Home ? std::unique_ptr<QDialog>(new HomeStationDialog) : std::make_unique<DxSelectDialog>();
}
double &Latitude(Which w) { return w == Which::Home ? homeData.latitude : dxStation.latitude; }
double &Longitude(Which w) { return w == Which::Home ? homeData.longitude : dxStation.longitude; }
std::string Call(Which w) { return w == Which::Home ? Text(homeData.callsign) : Text(dxStation.callsign); }
std::string Grid(Which w) { return w == Which::Home ? Text(homeData.grid) : Text(dxStation.grid); }

class StationDialogTest : public testing::Test {
protected:
    void SetUp() override { homeData = {}, dxStation = {}, dxStationCount = 0, test::ClearTestHome(); }
};

TEST(PositionTexts, DegreesAreReducedModulo360AndNonNumbersShownAsZero)
{
    PositionTexts texts = PositionTextsFromValue(-400.5); // minutes from the reduced degrees: (400.5 - 40)*60
    EXPECT_EQ(texts.degrees + " " + texts.minutes + " " + texts.seconds, "40 21630 0.00000");
    EXPECT_EQ(texts.hemisphere, SouthOrWest);
    texts = PositionTextsFromValue(NAN);
    EXPECT_EQ(texts.degrees + " " + texts.minutes + " " + texts.seconds, "0 0 0.00000");
    for (double huge : {1e300, -1e300, (double)INFINITY, -3e9}) // no integer overflow
        EXPECT_FALSE(PositionTextsFromValue(huge).minutes.empty()) << huge;
}

TEST_F(StationDialogTest, TitlesLabelsAndButton)
{
    for (Which w : {Which::Home, Which::Dx}) {
        auto dialog = Open(w);
        QStringList texts = {dialog->windowTitle(), Child<QPushButton>(*dialog, "GridConvertButton")->text()};
        for (QLabel *label : dialog->findChildren<QLabel *>())
            texts << label->text();
        texts.sort();
        EXPECT_EQ(texts.join(",").toStdString(),
                  w == Which::Home ? "Callsign,Deg,E/W,Frequency,Grid,Grid Convert,Home Station,Latitude,Location,"
                                     "Longitude,Min,N/S,Sec"
                                   : "Callsign,Deg,Dx Select,E/W,Grid,Grid Convert,Latitude,Longitude,Min,N/S,Sec");
    }
}

TEST_F(StationDialogTest, HomeDialogShowsAndStoresTheHomeValues)
{
    homeData = {0, "Q1ABC", "FN42", "Boston", -0.5, 151.25, 144};
    HomeStationDialog dialog;
    EXPECT_EQ(Child(dialog, "CallsignEdit")->text() + Child(dialog, "GridEdit")->text(), "Q1ABCFN42");
    EXPECT_EQ(Child(dialog, "LocationEdit")->text(), "Boston");
    EXPECT_EQ(Child(dialog, "FrequencyEdit")->text(), " 144.00"); // "%7.2f"
    EXPECT_EQ(Fields(dialog, "Latitude"), QStringList({"0", "30", "0.00000", "S"}));
    EXPECT_EQ(Fields(dialog, "Longitude"), QStringList({"151", "15", "0.00000", "E"}));
    EXPECT_EQ(homeData.latitude, -0.5); // showing writes nothing back

    Enter(Child(dialog, "CallsignEdit"), "Q9QQ");
    Child(dialog, "LocationEdit")->setText(QString::fromUtf8("Zürich")); // QTest types ASCII only
    QTest::keyClick(Child(dialog, "LocationEdit"), Qt::Key_Return);
    Enter(Child(dialog, "FrequencyEdit"), "432.1");
    EXPECT_EQ(Text(homeData.callsign), "Q9QQ");
    EXPECT_EQ(Text(homeData.location), "Z\xfcrich"); // Latin-1
    EXPECT_DOUBLE_EQ(homeData.frequency, 432.1);
    Enter(Child(dialog, "FrequencyEdit"), "1296,5 MHz"); // the leading number, as atof
    EXPECT_EQ(homeData.frequency, 1296.0);
    Enter(Child(dialog, "FrequencyEdit"), "abc");
    EXPECT_EQ(homeData.frequency, 0.0);
}

// A grid typed in the home dialog waits for Grid Convert; in the DX dialog
// it moves the station at once. A non-locator leaves the station where it was.
struct LocatorCase {
    const char *grid;
    QStringList latitude, longitude; // as shown, from the stored position
};
void PrintTo(const LocatorCase &c, std::ostream *os) { *os << c.grid; }
class LocatorTest : public StationDialogTest,
                    public testing::WithParamInterface<std::tuple<Which, LocatorCase>> {};

TEST_P(LocatorTest, MovesTheStationOnlyForALocator)
{
    const auto &[w, c] = GetParam();
    Latitude(w) = 1.25;
    Longitude(w) = -2.5;
    auto dialog = Open(w);
    Enter(Child(*dialog, "GridEdit"), c.grid);
    EXPECT_EQ(Grid(w), c.grid);
    if (w == Which::Home) {
        EXPECT_TRUE(Latitude(w) == 1.25 && Longitude(w) == -2.5) << "moved before Grid Convert";
        QTest::mouseClick(Child<QPushButton>(*dialog, "GridConvertButton"), Qt::LeftButton);
    }
    auto reopened = Open(w); // shows what was stored
    for (QDialog *shown : {dialog.get(), reopened.get()}) {
        EXPECT_EQ(Fields(*shown, "Latitude"), c.latitude);
        EXPECT_EQ(Fields(*shown, "Longitude"), c.longitude);
    }
}

// FN42 is the middle of its square:
//   latitude  = 10*13 - 90 + 2 + 12.5*2.5/60 =  42.5208333 = 42° 31' 15" N
//   longitude = 2*4 + 20*5 + 12.5*5/60 - 180 = -70.9583333 = 70° 57' 30" W
const QStringList fn42Lat = {"42", "31", "15.00000", "N"}, fn42Lon = {"70", "57", "30.00000", "W"};
const QStringList unchangedLat = {"1", "15", "0.00000", "N"}, unchangedLon = {"2", "30", "0.00000", "W"};
INSTANTIATE_TEST_SUITE_P(
    Locators, LocatorTest,
    testing::Combine(testing::Values(Which::Home, Which::Dx), testing::Values(
        LocatorCase{"FN42", fn42Lat, fn42Lon},
        LocatorCase{"FN42A", fn42Lat, fn42Lon}, // one subsquare letter: the middle of the square
        // Subsquare a, a: 42 + 0.5*2.5/60 = 42° 1' 15", 108 + 0.5*5/60 - 180 = -71° 57' 30".
        LocatorCase{"fn42aa", {"42", "1", "15.00000", "N"}, {"71", "57", "30.00000", "W"}},
        LocatorCase{"FN4", unchangedLat, unchangedLon},
        LocatorCase{"F142", unchangedLat, unchangedLon})),
    [](const auto &info) {
        return (std::get<0>(info.param) == Which::Home ? "Home_" : "Dx_") + std::string(std::get<1>(info.param).grid);
    });

TEST_F(StationDialogTest, TextsOfAnyLengthStayInsideTheirFields)
{
    const QString longText(200, QChar('W'));
    for (Which w : {Which::Home, Which::Dx}) {
        Latitude(w) = 7.5;
        auto dialog = Open(w);
        Enter(Child(*dialog, "CallsignEdit"), longText); // typing stops at the field's size
        EXPECT_EQ(Call(w), std::string(11, 'W'));
        // Even a field that took more text stores no more than fits.
        for (const char *name : {"CallsignEdit", "GridEdit", "LocationEdit"})
            if (QLineEdit *edit = dialog->findChild<QLineEdit *>(name))
                edit->setMaxLength(32767), edit->setText(longText), QTest::keyClick(edit, Qt::Key_Return);
        EXPECT_EQ(Call(w), std::string(11, 'W'));
        EXPECT_EQ(Grid(w), std::string(7, 'W'));
        EXPECT_EQ(Latitude(w), 7.5);
    }
    EXPECT_EQ(Text(homeData.location), std::string(63, 'W'));
    EXPECT_EQ(dxStation.location[0], '\0');
}

TEST_F(StationDialogTest, ClosingWithTheCursorInAFieldIsSafe)
{
    // Destroying the fields moves the focus, which ends the edit: this once
    // called the slot of an already destroyed dialog.
    for (Which w : {Which::Home, Which::Dx}) {
        auto dialog = Open(w);
        dialog->show();
        dialog->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(dialog.get()));
        QLineEdit *callsign = Child(*dialog, "CallsignEdit");
        callsign->setFocus();
        QTest::keyClicks(callsign, "Q1X");
        ASSERT_EQ(QApplication::focusWidget(), callsign);
        dialog.reset();
    }
}

class PositionFieldTest : public StationDialogTest, public testing::WithParamInterface<Which> {};

TEST_P(PositionFieldTest, EachFieldAndChoiceStoresThePositionAtOnce)
{
    const Which w = GetParam();
    Latitude(w) = 42.0;
    auto dialog = Open(w);
    Enter(Child(*dialog, "LatitudeSecEdit"), "30");
    EXPECT_NEAR(Latitude(w), 42 + 30.0 / 360, Tolerance); // 42.0833, not 42.00833
    EXPECT_EQ(Fields(*dialog, "Latitude"), QStringList({"42", "0", "30", "N"})); // not refilled
    Child<QComboBox>(*dialog, "LatitudeNSComboBox")->setCurrentIndex(1);
    EXPECT_NEAR(Latitude(w), -(42 + 30.0 / 360), Tolerance);

    Enter(Child(*dialog, "LongitudeDegEdit"), "71");
    Enter(Child(*dialog, "LongitudeMinEdit"), "30");
    Enter(Child(*dialog, "LongitudeSecEdit"), "36");
    EXPECT_NEAR(Longitude(w), 71.6, Tolerance); // 71 + 30/60 + 36/360
    QComboBox *ew = Child<QComboBox>(*dialog, "LongitudeEWComboBox");
    ew->setCurrentIndex(1);
    EXPECT_NEAR(Longitude(w), -71.6, Tolerance);
    ew->setCurrentIndex(0);
    EXPECT_NEAR(Longitude(w), 71.6, Tolerance);
    ew->setCurrentIndex(1); // the sign comes from the choice only: a typed minus is just added in
    Enter(Child(*dialog, "LongitudeDegEdit"), "-71");
    EXPECT_NEAR(Longitude(w), -(-71 + 0.5 + 0.1), Tolerance);
    EXPECT_NEAR(Latitude(w), -(42 + 30.0 / 360), Tolerance);

    // Read like atoi/atof after cutting each field to ten characters.
    QLineEdit *degrees = Child(*dialog, "LatitudeDegEdit");
    Enter(degrees, "123456789012345");
    EXPECT_EQ(degrees->text(), "1234567890");
    EXPECT_NEAR(Latitude(w), -(1234567890.0 + 30.0 / 360), Tolerance);
    Enter(degrees, "99999999999999"); // more than an int holds
    EXPECT_TRUE(std::isfinite(Latitude(w)) && Latitude(w) < -2e9);
    Enter(degrees, " 7abc");
    Enter(Child(*dialog, "LatitudeMinEdit"), "x");
    Enter(Child(*dialog, "LatitudeSecEdit"), "1.5e1");
    EXPECT_NEAR(Latitude(w), -(7 + 15.0 / 360), Tolerance);
    Enter(Child(*dialog, "LongitudeSecEdit"), "nan"); // no number: the position stays
    EXPECT_NEAR(Longitude(w), -(-71 + 0.5 + 0.1), Tolerance);
}

INSTANTIATE_TEST_SUITE_P(BothDialogs, PositionFieldTest, testing::Values(Which::Home, Which::Dx),
                         [](const auto &info) { return info.param == Which::Home ? "Home" : "Dx"; });

// ---- DX Station Selections ------------------------------------------------

void WriteDxList(const QByteArray &bytes)
{
    QFile file(test::SettingsFolder() + "DxStations.txt");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// Five sections (headings in rows 0, 3, 5, 7, 9): colour groups 1, 2, 3, 0, then 1 again.
const QByteArray sampleList = "/ sample\n,,,,,,North America\nQ1ABC,FN42,4x 17el,1 kW,144,Q65,Boston MA\n"
                              "QA2XYZ\n,,,,,,Europe\nQ3DEF,JO62qm,,,,,Berlin\n,,,,,,Africa\nQ4GHI\n"
                              ",,,,,,Asia\nQ5JKL\n,,,,,,Oceania\nQ6MNO\nQ123456789AB,FN42,a,b,c,d,Long call\n"
                              "ZZZZZZ,,,,,,\nQ7PQR,FN42,a,b,c,d,after the end\n";

TEST_F(StationDialogTest, DxListShowsBandedRowsAndAClickPicksTheStation)
{
    WriteDxList(sampleList);
    DxStationDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), "DX Station Selections");
    QTableWidget *table = Child<QTableWidget>(dialog, "DxStationTable");
    auto row = [&](int r) {
        QStringList texts;
        for (int column = 0; column < table->columnCount(); ++column)
            texts << (r < 0 ? table->horizontalHeaderItem(column) : table->item(r, column))->text();
        return texts;
    };
    EXPECT_EQ(row(-1), QStringList({"Location", "Prefix / Call", "Grid", "Latitude", "Longitude"}));
    ASSERT_EQ(table->rowCount(), 12);
    EXPECT_EQ(row(0), QStringList({"North America", "", "", " 0.00", " 0.00"}));
    EXPECT_EQ(row(1), QStringList({"Boston MA", "Q1ABC", "FN42", "42.52", "-70.96"}));
    // A twelve-character call takes the grid's comma: "FN42", a, b, c are skipped.
    EXPECT_EQ(row(11), QStringList({"d", "Q123456789AB", "", " 0.00", " 0.00"}));

    // Each heading starts a band of one colour across all columns.
    auto colour = [&](int r, int column = 0) { return table->item(r, column)->background().color(); };
    for (int r = 0; r < 12; ++r)
        for (int column = 0; column < 5; ++column) {
            EXPECT_EQ(colour(r, column), colour(r)) << r << "," << column;
            EXPECT_TRUE(colour(r).lightness() > 200 && table->item(r, column)->foreground().color().lightness() < 60)
                << "dark text on a light band, row " << r;
        }
    EXPECT_EQ(colour(2), colour(0));
    EXPECT_EQ(QSet<QRgb>({colour(0).rgb(), colour(3).rgb(), colour(5).rgb(), colour(7).rgb()}).size(), 4);
    EXPECT_EQ(colour(9), colour(0)); // the fifth section takes the first colour again

    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto click = [&](int r, int column) {
        QTableWidgetItem *item = table->item(r, column);
        table->scrollToItem(item);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualItemRect(item).center());
        return Text(dxStation.callsign) + " " + Text(dxStation.grid);
    };
    EXPECT_EQ(click(4, 3), "Q3DEF JO62qm");
    // JO62qm: 10*14 - 90 + 2 + 12.5*2.5/60 and 2*6 + 20*9 + 16.5*5/60 - 180 = 13.375.
    EXPECT_NEAR(dxStation.latitude, 52.0 + 12.5 * 2.5 / 60, Tolerance);
    EXPECT_NEAR(dxStation.longitude, 13.375, Tolerance);
    EXPECT_EQ(click(11, 1), "Q123456789A "); // cut to what the DX call holds
    EXPECT_EQ(dxStation.latitude, 0.0);
    EXPECT_EQ(click(3, 0), " "); // a heading row is a record too
}

TEST_F(StationDialogTest, DxListIsEmptyWithoutAFileOrWithoutStations)
{
    for (const char *bytes : {"", "/ only\n/ comments\n", "ZZZZZZ,,,,,,\nQ1ABC,FN42,a,b,c,d,Boston\n"}) {
        if (*bytes)
            WriteDxList(bytes);
        DxStationDialog dialog;
        EXPECT_EQ(Child<QTableWidget>(dialog, "DxStationTable")->rowCount(), 0) << bytes;
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr); // no message
    }
}

} // namespace
} // namespace lunaquill
