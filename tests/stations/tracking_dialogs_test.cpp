// The station and Sources dialogs driven as a user would: typing, leaving fields, pressing Grid
// Convert, switching hemispheres, clicking list rows; the Sources table at a fixed instant against
// the calculator (which the unit tests hold against libnova) and the user points typed in place.
#include "GuiTestSupport.h"
#include "SharedStateReset.h"

#include "tracking/DxSelectDialog.h"
#include "tracking/DxStationDialog.h"
#include "tracking/HomeStationDialog.h"
#include "tracking/SourcesDialog.h"
#include "ui_SourcesDialog.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTableWidget>
#include <QTest>
#include <gtest/gtest.h>
#include <libnova/libnova.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

namespace lunaquill {
namespace {

template <typename T = QLineEdit>
T *Child(QWidget &parent, const QString &name) { return parent.findChild<T *>(name); }

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

// Degrees, minutes, seconds and hemisphere of latitude, then of longitude, as shown.
std::string Position(QWidget &dialog)
{
    QStringList texts;
    for (QString which : {"Latitude", "Longitude"}) {
        for (const char *part : {"DegEdit", "MinEdit", "SecEdit"})
            texts << Child(dialog, which + part)->text();
        texts << Child<QComboBox>(dialog, which + (which[1] == 'a' ? "NS" : "EW") + "ComboBox")
                     ->currentText();
    }
    return texts.join(" ").toStdString();
}

TEST(StationDialog, FieldsChoicesLocatorsAndLongTextsStoreAtOnce)
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
    const QString longText(200, QChar('W'));
    for (bool home : {true, false}) {
        SCOPED_TRACE(home ? "home" : "DX");
        test::ResetSharedState();
        homeData = {0, "Q1ABC", "FN42", "Boston", 0, 0, 144};
        double &latitude = home ? homeData.latitude : dxStation.latitude;
        double &longitude = home ? homeData.longitude : dxStation.longitude;
        auto open = [home] { return std::unique_ptr<QDialog>(home ? (QDialog *)new HomeStationDialog : new DxSelectDialog); };
        // -0.5: 0 degrees, the sign shown by the choice alone. -400.5: the degrees reduced
        // modulo 360, the minutes counted from them, (400.5 - 40) * 60.
        latitude = -0.5;
        longitude = -400.5;
        auto dialog = open();
        EXPECT_EQ(Position(*dialog), "0 30 0.00000 S 40 21630 0.00000 W");
        if (home) { // a frequency of 1 to 300000 MHz or nothing; QTest types ASCII only
            Child(*dialog, "LocationEdit")->setText(QString::fromUtf8("Zürich"));
            QTest::keyClick(Child(*dialog, "LocationEdit"), Qt::Key_Return);
            EXPECT_EQ(Text(homeData.location), "Z\xfcrich"); // Latin-1
            for (const char *typed : {"1296,5 MHz", "abc", "0", "1e308"}) {
                Enter(*dialog, "FrequencyEdit", typed);
                EXPECT_TRUE(homeData.frequency == 144.0 && Child(*dialog, "FrequencyEdit")->text() == " 144.00") << typed;
            }
            Enter(*dialog, "FrequencyEdit", " 1296.065");
            EXPECT_EQ(homeData.frequency, 1296.065);
        }
        latitude = 42.0;
        longitude = 0.0;
        dialog = open();
        for (const auto &step : steps) {
            if (QComboBox *combo = dialog->findChild<QComboBox *>(step.field))
                combo->setCurrentIndex(QString(step.typed).toInt());
            else
                Enter(*dialog, step.field, step.typed);
            EXPECT_TRUE(std::abs(latitude - step.latitude) < 1e-7 && std::abs(longitude - step.longitude) < 1e-7)
                << step.field << " " << step.typed << ": " << latitude << ", " << longitude;
        }
        EXPECT_EQ(Position(*dialog), "1234567890 0 30 S -71 30 36 W"); // cut, not refilled

        // A grid typed in the home dialog waits for Grid Convert; in the DX dialog it moves the
        // station at once. A non-locator then leaves the station where it was. Subsquare a, a
        // of FN42: 42 + 0.5*2.5/60 = 42 1' 15" N, 108 + 0.5*5/60 - 180 = -71 57' 30" (W).
        for (const char *grid : {"fn42aa", "F142", "ZZ99zz", "FN42ay"}) { // the last two lie off the globe
            Enter(*dialog, "GridEdit", grid);
            if (home) { // where it was until Grid Convert
                EXPECT_EQ(latitude, *grid == 'f' ? -(1234567890 + m) : 42.0 + 0.5 * 2.5 / 60);
                QTest::mouseClick(Child<QPushButton>(*dialog, "GridConvertButton"), Qt::LeftButton);
            }
        }
        auto reopened = open(); // shows what was stored
        for (QDialog *shown : {dialog.get(), reopened.get()})
            EXPECT_EQ(Position(*shown), "42 1 15.00000 N 71 57 30.00000 W");

        // Even a field that takes more text than its form allows stores no more than fits.
        for (QLineEdit *edit : dialog->findChildren<QLineEdit *>())
            edit->setMaxLength(longText.size());
        for (const char *name : {"CallsignEdit", "GridEdit", "LocationEdit"})
            if (dialog->findChild<QLineEdit *>(name))
                Enter(*dialog, name, longText);
        EXPECT_EQ(home ? Text(homeData.callsign) + Text(homeData.grid) + Text(homeData.location)
                       : Text(dxStation.callsign) + Text(dxStation.grid) + Text(dxStation.location),
                  std::string(home ? 11 + 7 + 63 : 11 + 7, 'W'));
    }
}

TEST(StationDialog, DxListShowsBandedRowsInItsOwnCharactersAndAClickPicksTheStation)
{
    test::ResetSharedState();
    // Five sections (headings in rows 0, 3, 5, 7, 9): colour groups 1, 2, 3, 0, then 1 again.
    // Rows 12 and 13: a line in UTF-8 and one in Latin-1 show the same characters.
    QFile file(test::SettingsFolder() + "DxStations.txt");
    file.open(QIODevice::WriteOnly);
    file.write("/ sample\n,,,,,,North America\nQ1ABC,FN42,4x 17el,1 kW,144,Q65,Boston MA\n"
               "QA2XYZ\n,,,,,,Europe\nQ3DEF,JO62qm,,,,,Berlin\n,,,,,,Africa\nQ4GHI\n"
               ",,,,,,Asia\nQ5JKL\n,,,,,,Oceania\nQ6MNO\nQ123456789AB,FN42,a,b,c,d,Long call\n"
               "Q1\xc3\x84\x42\x43,JO62,a,b,c,d,Z\xc3\xbcrich\nQ2ABC,JO62,a,b,c,d,Z\xfcrich\n"
               "ZZZZZZ,,,,,,\nQ7PQR,FN42,a,b,c,d,after the end\n");
    file.close();
    DxStationDialog dialog;
    QTableWidget *table = Child<QTableWidget>(dialog, "DxStationTable");
    ASSERT_EQ(table->rowCount(), 14);
    // Location, call, grid and the grid's position as "%5.2f" (42.52, -70.96 for FN42).
    QStringList texts;
    for (int column = 0; column < table->columnCount(); ++column)
        texts << table->item(1, column)->text();
    EXPECT_EQ(texts.join("|").toStdString(), "Boston MA|Q1ABC|FN42|42.52|-70.96");
    EXPECT_EQ(table->item(12, 0)->text() + table->item(12, 1)->text() + table->item(13, 0)->text(),
              QString::fromUtf8("Z\u00fcrichQ1\u00c4BCZ\u00fcrich"));

    // Each heading starts a band of one colour across the row (seen in its last column); four
    // colours, the fifth section takes the first again.
    auto band = [&](int r) { return table->item(r, 4)->background().color().rgb(); };
    EXPECT_TRUE(band(0) == band(2) && band(3) == band(4) && band(9) == band(0) && band(11) == band(9));
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
    EXPECT_NEAR(dxStation.latitude, 52.0 + 12.5 * 2.5 / 60, 1e-7);
    EXPECT_NEAR(dxStation.longitude, 13.375, 1e-7);
    EXPECT_EQ(click(11, 1), "Q123456789A "); // cut to what the DX call holds
    EXPECT_EQ(click(3, 0), " "); // a heading row is a record too
}

constexpr time_t kInstant = 1741586400; // 2025-03-10 06:00:00 UTC, 01:00 in Boston

QString Date(double jd)
{
    ln_date d;
    ln_get_date(jd, &d);
    return QString::asprintf("%02d-%02d %02d:%02d", d.months, d.days, d.hours, d.minutes);
}

TEST(SourcesDialog, ShowsTheDisplayedInstantTakesClicksAndTypedUserPoints)
{
    std::unique_ptr<SourcesDialog> dialog;
    for (time_t now = 0; now != time(nullptr);) { // again if the clock ticks meanwhile
        // From fresh records each time: whether the Moon was up at the last
        // computation steers its rise.
        test::ResetSharedState();
        homeData = {0, "", "FN42mm", "", 42.51, -70.96, 1296.0};
        now = time(nullptr);
        displayOffset = (int32_t)(kInstant - now);
        dialog = std::make_unique<SourcesDialog>();
    }
    dialog->show();
    QTableWidget *table = dialog->widgets()->SourcesTable;
    // The waxing gibbous Moon is up (light green), the Sun is not (grey), nor the user's
    // point at elevation 0: only above 0 counts.
    for (uint32_t id : {Moon, Sun, UserAzEl}) {
        SourceTrack r{};
        ComputeSource(id, TrackAll, *gmtime(&kInstant), 42.51, -70.96, 1296.0, r);
        const QStringList expected = {kSourceNames[id], QString::asprintf("%7.2f", r.azimuth),
            QString::asprintf("%7.2f", r.elevation), QString::asprintf("%7.2f", r.rightAscension),
            QString::asprintf("%7.2f", r.declination), QString::asprintf("%9.6f", r.distance),
            QString::asprintf("%4.2f", r.phase), Date(r.riseTime), Date(r.setTime)};
        for (int c = 0; c < 9; ++c)
            EXPECT_EQ(table->item(id, c)->text(), expected[c]) << id << " " << c;
        EXPECT_EQ(table->item(id, 8)->background().color(),
                  id == Moon ? QColor(172, 255, 172) : QColor(190, 190, 190));
    }
    // Cassiopeia A (declination +58.8°) never sets at 42.5° N (90° - 42.5° < 58.8°).
    EXPECT_EQ(table->item(CassiopeiaA, 7)->text() + "|" + table->item(CassiopeiaA, 8)->text(),
              "always up|always up");
    dialog->SourceChanged(nullptr); // a click beside the rows tracks nothing
    EXPECT_EQ(homeData.trackingSource, -1);

    // A press on a user cell reads it, and restarts the 10 s refresh (a coarse timer: within
    // 5 %); a press on another cell, of a user row or not, leaves the timer alone. Only a
    // whole number within the sky is taken (azimuth 0..360, elevation and declination
    // -90..90, right ascension 0..24 h); other text leaves the record as it was and the cell
    // showing it again. The DX records are never written.
    dxTracks[UserAzEl].azimuth = 99;
    double &azimuth = homeTracks[UserAzEl].azimuth, &elevation = homeTracks[UserAzEl].elevation;
    double &ra = homeTracks[UserRaDec].rightAscension, &dec = homeTracks[UserRaDec].declination;
    const struct { int row, column; const char *typed; double *field, stored; bool taken; } rows[] = {
        {UserAzEl, 1, "123.5", &azimuth, 123.5, true}, {UserAzEl, 1, "360", &azimuth, 360, true},
        {UserAzEl, 1, "360.01", &azimuth, 360, false}, {UserAzEl, 1, "-1", &azimuth, 360, false},
        {UserAzEl, 2, "-90", &elevation, -90, true},   {UserAzEl, 2, "abc", &elevation, -90, false},
        {UserAzEl, 2, "90.5", &elevation, -90, false}, {UserAzEl, 2, "", &elevation, -90, false},
        {UserRaDec, 3, " 5.5 ", &ra, 5.5, true},       {UserRaDec, 3, "1e308", &ra, 5.5, false},
        {UserRaDec, 3, "24.001", &ra, 5.5, false},     {UserRaDec, 3, "6h", &ra, 5.5, false},
        {UserRaDec, 3, "24", &ra, 24, true},           {UserRaDec, 3, "nan", &ra, 24, false},
        {UserRaDec, 4, "-12", &dec, -12, true},        {UserRaDec, 4, "-90.5", &dec, -12, false},
        {UserRaDec, 4, "inf", &dec, -12, false},
    };
    auto press = [&](QTableWidgetItem *item) { // the refresh's time left after the press
        dialog->refreshTimer().start(60000);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualItemRect(item).center());
        return dialog->refreshTimer().remainingTime();
    };
    for (const auto &r : rows) {
        QTableWidgetItem *item = table->item(r.row, r.column);
        table->blockSignals(true); // the text only, as if typed before
        item->setText(r.typed);
        table->blockSignals(false);
        const int remaining = press(item);
        EXPECT_TRUE(remaining > 9500 && remaining <= 10500) << remaining;
        EXPECT_EQ(*r.field, r.stored) << r.typed;
        EXPECT_EQ(item->text(), r.taken ? QString(r.typed) : QString::asprintf("%7.2f", r.stored)) << r.typed;
    }
    for (const auto &[row, column] : {std::pair{(int)UserRaDec, 1}, {(int)Moon, 2}}) {
        const QString shown = table->item(row, column)->text();
        EXPECT_GT(press(table->item(row, column)), 50000) << row;
        EXPECT_EQ(table->item(row, column)->text(), shown);
    }
    EXPECT_EQ(dxTracks[UserAzEl].azimuth, 99);

    // Typed through the cell's editor, the value is kept when the edit ends; a refresh meanwhile
    // leaves the cell alone. A value beyond the sky is refused at once: no "inf" or "nan" in
    // the row.
    for (const auto &[column, typed, shown] : {std::tuple{1, "77", "  77.00"}, {2, "1e308", " -90.00"}}) {
        table->editItem(table->item(UserAzEl, column));
        auto *editor = table->viewport()->findChild<QLineEdit *>();
        ASSERT_NE(editor, nullptr);
        editor->setText(typed);
        dialog->TimerEvent();
        QTest::keyClick(editor, Qt::Key_Return);
        QApplication::processEvents(); // the edit ends through a queued call
        dialog->TimerEvent();
        EXPECT_EQ(table->item(UserAzEl, column)->text(), shown);
    }
    for (int column = 0; column < 9; ++column)
        EXPECT_FALSE(table->item(UserAzEl, column)->text().contains(QRegularExpression("nan|inf")));

    // A row chosen with the keyboard is tracked as a click would track it.
    table->setFocus();
    table->setCurrentCell(Moon, 0);
    EXPECT_EQ(homeData.trackingSource, Moon);
    QTest::keyClick(table, Qt::Key_Down);
    QTest::keyClick(table, Qt::Key_Down);
    EXPECT_EQ(homeData.trackingSource, Mercury);

    dialog->reject();
    EXPECT_FALSE(dialog->refreshTimer().isActive());
}

} // namespace
} // namespace lunaquill
