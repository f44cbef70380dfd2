// The station dialogs driven as a user would: typing, leaving fields,
// pressing Grid Convert, switching hemispheres, clicking list rows.
#include "GuiTestSupport.h"

#include "tracking/DxSelectDialog.h"
#include "tracking/DxStationDialog.h"
#include "tracking/DxStationList.h"
#include "tracking/HomeStationDialog.h"
#include "tracking/SharedState.h"

#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTableWidget>
#include <QTest>
#include <gtest/gtest.h>

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
void Enter(QWidget &dialog, const QString &field, const QString &text)
{
    QLineEdit *edit = Child(dialog, field);
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}

template <size_t N>
std::string Text(const char (&field)[N]) { return std::string(field, strnlen(field, N)); }

// Degrees, minutes, seconds and hemisphere as shown for "Latitude" or "Longitude".
std::string Fields(QWidget &dialog, const QString &which)
{
    QStringList texts;
    for (const char *part : {"DegEdit", "MinEdit", "SecEdit"})
        texts << Child(dialog, which + part)->text();
    QString combo = which + (which == "Latitude" ? "NSComboBox" : "EWComboBox");
    return (texts << Child<QComboBox>(dialog, combo)->currentText()).join(" ").toStdString();
}

// The home dialog and the DX station entry share their fields and rules.
struct Station {
    bool home;
    std::unique_ptr<QDialog> Open() const
    {
        if (home)
            return std::make_unique<HomeStationDialog>();
        return std::make_unique<DxSelectDialog>();
    }
    double &Latitude() const { return home ? homeData.latitude : dxStation.latitude; }
    double &Longitude() const { return home ? homeData.longitude : dxStation.longitude; }
    std::string Call() const { return home ? Text(homeData.callsign) : Text(dxStation.callsign); }
    std::string Grid() const { return home ? Text(homeData.grid) : Text(dxStation.grid); }
};
const Station kBoth[] = {{true}, {false}};

class StationDialogTest : public testing::Test {
protected:
    void SetUp() override
    {
        homeData = {}, dxStation = {}, dxStationCount = 0;
        test::ClearTestHome();
    }
};

TEST_F(StationDialogTest, HomeDialogShowsAndStoresTheHomeValues)
{
    // -0.5: 0 degrees, the sign shown by the choice alone. -400.5: the degrees reduced modulo
    // 360, the minutes counted from them, (400.5 - 40) * 60. The frequency as "%7.2f".
    homeData = {0, "Q1ABC", "FN42", "Boston", -0.5, -400.5, 144};
    HomeStationDialog dialog;
    QStringList texts;
    for (const char *name : {"CallsignEdit", "GridEdit", "LocationEdit", "FrequencyEdit"})
        texts << Child(dialog, name)->text();
    EXPECT_EQ(texts.join("|").toStdString(), "Q1ABC|FN42|Boston| 144.00");
    EXPECT_EQ(Fields(dialog, "Latitude"), "0 30 0.00000 S");
    EXPECT_EQ(Fields(dialog, "Longitude"), "40 21630 0.00000 W");

    Enter(dialog, "CallsignEdit", "Q9QQ");
    Child(dialog, "LocationEdit")->setText(QString::fromUtf8("Zürich")); // QTest types ASCII only
    QTest::keyClick(Child(dialog, "LocationEdit"), Qt::Key_Return);
    Enter(dialog, "FrequencyEdit", "1296,5 MHz"); // the leading number, as atof reads it
    EXPECT_EQ(Text(homeData.callsign) + Text(homeData.location), "Q9QQZ\xfcrich"); // Latin-1
    EXPECT_EQ(homeData.frequency, 1296.0);
}

TEST_F(StationDialogTest, ALocatorMovesTheStation)
{
    // A grid typed in the home dialog waits for Grid Convert; in the DX dialog it moves the
    // station at once. A non-locator then leaves the station where it was. Subsquare a, a of
    // FN42: 42 + 0.5*2.5/60 = 42 1' 15" N, 108 + 0.5*5/60 - 180 = -71 57' 30" (W).
    for (const Station &s : kBoth) {
        SCOPED_TRACE(s.home ? "home" : "DX");
        s.Latitude() = 1.25;
        auto dialog = s.Open();
        for (const char *grid : {"fn42aa", "F142"}) {
            Enter(*dialog, "GridEdit", grid);
            if (s.home) { // where it was until Grid Convert
                EXPECT_EQ(s.Latitude(), *grid == 'f' ? 1.25 : 42.0 + 0.5 * 2.5 / 60) << grid;
                QTest::mouseClick(Child<QPushButton>(*dialog, "GridConvertButton"), Qt::LeftButton);
            }
        }
        auto reopened = s.Open(); // shows what was stored
        for (QDialog *shown : {dialog.get(), reopened.get()}) {
            EXPECT_EQ(Fields(*shown, "Latitude"), "42 1 15.00000 N");
            EXPECT_EQ(Fields(*shown, "Longitude"), "71 57 30.00000 W");
        }
    }
}

TEST_F(StationDialogTest, TextsOfAnyLengthStayInsideTheirFields)
{
    const QString longText(200, QChar('W'));
    for (const Station &s : kBoth) {
        s.Latitude() = 7.5;
        auto dialog = s.Open();
        // Even a field that takes more text than its form allows stores no more than fits.
        for (QLineEdit *edit : dialog->findChildren<QLineEdit *>())
            edit->setMaxLength(longText.size());
        for (const char *name : {"CallsignEdit", "GridEdit", "LocationEdit"})
            if (dialog->findChild<QLineEdit *>(name))
                Enter(*dialog, name, longText);
        EXPECT_EQ(s.Call() + s.Grid(), std::string(11 + 7, 'W'));
        EXPECT_EQ(s.Latitude(), 7.5);
    }
    EXPECT_EQ(Text(homeData.location), std::string(63, 'W'));
    EXPECT_EQ(dxStation.location[0], '\0');
}

TEST_F(StationDialogTest, EachFieldAndChoiceStoresThePositionAtOnce)
{
    // Fields are cut to ten characters and read like atoi, atoi, atof: degrees + minutes / 60
    // + seconds / 360 (not 3600); the sign comes from the choice only, a typed minus is just
    // added in. (Any text is the station entry fuzz target's.)
    const double m = 30.0 / 360; // the 30 seconds typed first
    const struct { const char *field, *typed; double latitude, longitude; } steps[] = {
        {"LatitudeSecEdit", "30", 42 + m, 0},
        {"LatitudeNSComboBox", "1", -(42 + m), 0},
        {"LongitudeDegEdit", "71", -(42 + m), 71},
        {"LongitudeMinEdit", "30", -(42 + m), 71.5},
        {"LongitudeSecEdit", "36", -(42 + m), 71.6},
        {"LongitudeEWComboBox", "1", -(42 + m), -71.6},
        {"LongitudeDegEdit", "-71", -(42 + m), -(-71 + 0.6)},
        {"LatitudeDegEdit", "123456789012345", -(1234567890 + m), 70.4},
    };
    for (const Station &s : kBoth) {
        s.Latitude() = 42.0;
        auto dialog = s.Open();
        for (const auto &step : steps) {
            if (QComboBox *combo = dialog->findChild<QComboBox *>(step.field))
                combo->setCurrentIndex(QString(step.typed).toInt());
            else
                Enter(*dialog, step.field, step.typed);
            SCOPED_TRACE(std::string(step.field) + " " + step.typed);
            EXPECT_NEAR(s.Latitude(), step.latitude, Tolerance);
            EXPECT_NEAR(s.Longitude(), step.longitude, Tolerance);
        }
        // Cut to ten characters, and not refilled.
        EXPECT_EQ(Fields(*dialog, "Latitude"), "1234567890 0 30 S");
    }
}

// ---- DX Station Selections ------------------------------------------------

void WriteDxList(const QByteArray &bytes)
{
    QFile file(test::SettingsFolder() + "DxStations.txt");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

TEST_F(StationDialogTest, DxListShowsBandedRowsAndAClickPicksTheStation)
{
    // Five sections (headings in rows 0, 3, 5, 7, 9): colour groups 1, 2, 3, 0, then 1 again.
    WriteDxList("/ sample\n,,,,,,North America\nQ1ABC,FN42,4x 17el,1 kW,144,Q65,Boston MA\n"
                "QA2XYZ\n,,,,,,Europe\nQ3DEF,JO62qm,,,,,Berlin\n,,,,,,Africa\nQ4GHI\n"
                ",,,,,,Asia\nQ5JKL\n,,,,,,Oceania\nQ6MNO\nQ123456789AB,FN42,a,b,c,d,Long call\n"
                "ZZZZZZ,,,,,,\nQ7PQR,FN42,a,b,c,d,after the end\n");
    DxStationDialog dialog;
    QTableWidget *table = Child<QTableWidget>(dialog, "DxStationTable");
    auto row = [&](int r) {
        QStringList texts;
        for (int column = 0; column < table->columnCount(); ++column)
            texts << table->item(r, column)->text();
        return texts.join("|").toStdString();
    };
    ASSERT_EQ(table->rowCount(), 12);
    EXPECT_EQ(row(1), "Boston MA|Q1ABC|FN42|42.52|-70.96");
    // A twelve-character call takes the grid's comma: "FN42", a, b, c are skipped.
    EXPECT_EQ(row(11), "d|Q123456789AB|| 0.00| 0.00");

    // Each heading starts a band of one colour across the row (seen in its last column); four
    // colours, the fifth section takes the first again.
    auto band = [&](int r) { return table->item(r, 4)->background().color().rgb(); };
    EXPECT_TRUE(band(0) == band(2) && band(3) == band(4) && band(9) == band(0));
    EXPECT_EQ(band(11), band(9));
    EXPECT_EQ(QSet<QRgb>({band(0), band(3), band(5), band(7)}).size(), 4);

    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto click = [&](int r, int column) {
        QTableWidgetItem *item = table->item(r, column);
        table->scrollToItem(item);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          table->visualItemRect(item).center());
        return Text(dxStation.callsign) + " " + Text(dxStation.grid);
    };
    EXPECT_EQ(click(4, 3), "Q3DEF JO62qm");
    // JO62qm: 10*14 - 90 + 2 + 12.5*2.5/60 and 2*6 + 20*9 + 16.5*5/60 - 180 = 13.375.
    EXPECT_NEAR(dxStation.latitude, 52.0 + 12.5 * 2.5 / 60, Tolerance);
    EXPECT_NEAR(dxStation.longitude, 13.375, Tolerance);
    EXPECT_EQ(click(11, 1), "Q123456789A "); // cut to what the DX call holds
    EXPECT_EQ(click(3, 0), " "); // a heading row is a record too
}

} // namespace
} // namespace lunaquill
