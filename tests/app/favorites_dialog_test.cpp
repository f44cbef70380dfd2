// The band and favourites lists: the table against the calculator, clicks
// that set the DX station, the refresh timer, a missing list, and the
// favourites on the map.
#include "app/FavoritesDialog.h"
#include "app/MainWindow.h"
#include "ui_FavoritesDialog.h"
#include "ui_MainWindow.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>
#include <libnova/julian_day.h>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

using namespace lunaquill;

namespace {

std::string Format(const char *format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Date(double jd)
{
    ln_date d;
    ln_get_date(jd, &d);
    char text[64];
    std::snprintf(text, sizeof text, "%02d-%02d %02d:%02d", d.months, d.days, d.hours, d.minutes);
    return text;
}

void WriteList(const char *name, const char *text)
{
    QFile file(test::SettingsFolder() + name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text);
}

// FN42 and OE47 lie almost antipodal, so the Moon is up at exactly one of
// them (away from the horizon); MOON is no locator; nothing after ZZZZZZ.
const char *kList = "/ test list\n"
                    "Q1ABC,FN42,a,b,c,d,Boston\n"
                    "Q2XYZ,OE47,a,b,c,d,Indian Ocean\n"
                    "Q3BAD,MOON,a,b,c,d,Nowhere\n"
                    "ZZZZZZ,,,,,,\n"
                    "Q4NOT,JO62,a,b,c,d,after the end\n";

class FavoritesDialogTest : public testing::Test
{
protected:
    void SetUp() override
    {
        test::ResetSharedState();
        homeData.frequency = 144.1;
        WriteList("Eme144M.txt", kList);
    }

    // Shows 2025-06-01 00:00 UTC.
    void FixTheInstant() { displayOffset = (int32_t)(1748736000 - time(nullptr)); }
};

TEST_F(FavoritesDialogTest, RowsShowTheMoonAtEachStation)
{
    FixTheInstant();
    std::unique_ptr<FavoritesDialog> opened;
    time_t shown;
    do { // the first fill, again if a second boundary fell inside it
        shown = DisplayedTime();
        opened = std::make_unique<FavoritesDialog>("Eme144M.txt", true);
    } while (DisplayedTime() != shown);
    const FavoritesDialog &dialog = *opened;
    QTableWidget *table = dialog.widgets()->tableWidget;

    EXPECT_EQ(dialog.windowTitle(), "Favorites List");
    EXPECT_EQ(dialog.size(), QSize(981, 729));
    QStringList headers;
    for (int column = 0; column < table->columnCount(); ++column)
        headers << table->horizontalHeaderItem(column)->text();
    EXPECT_EQ(headers.join('|'), "Location|Callsign|Grid|Azimuth|Elevation|Rise Time|Set Time|"
                                 "Doppler|Spatial Offset");
    ASSERT_EQ(dialog.count(), 3);
    ASSERT_EQ(table->rowCount(), 3);

    const struct tm utc = *gmtime(&shown);
    const double jd = 2440587.5 + shown / 86400.0;
    const struct { const char *location, *call, *grid; double latitude, longitude; } stations[] = {
        {"Boston", "Q1ABC", "FN42", 42.5208333, -70.9583333},   // worked example of the locator
        {"Indian Ocean", "Q2XYZ", "OE47", -42.4791667, 109.0416667}, // 40-90+7+12.5*2.5/60, 8+280+12.5*5/60-180
    };
    int up = 0;
    for (int row = 0; row < 2; ++row) {
        const auto &s = stations[row];
        EXPECT_NEAR(dialog.entries()[row].latitude, s.latitude, 1e-6);
        EXPECT_NEAR(dialog.entries()[row].longitude, s.longitude, 1e-6);
        SourceTrack moon{};
        ComputeSource(Moon, TrackPosition, utc, s.latitude, s.longitude, 144.1, moon);
        ComputeSource(Moon, TrackAll, utc, s.latitude, s.longitude, 144.1, moon);
        ASSERT_GT(std::abs(moon.elevation), 2.0) << "choose an instant away from moonrise";
        const std::string expected[9] = {
            s.location, s.call, s.grid, Format("%0.2f", moon.azimuth),
            Format("%0.2f", moon.elevation), Date(moon.riseTime), Date(moon.setTime),
            Format("%0.1f Hz", moon.doppler), Format("%0.1f", moon.spatialOffset)};
        const QColor background = moon.elevation > 0 ? QColor(172, 255, 172) : QColor(190, 190, 190);
        for (int column = 0; column < 9; ++column) {
            QTableWidgetItem *item = table->item(row, column);
            EXPECT_EQ(item->text().toStdString(), expected[column]) << row << "," << column;
            EXPECT_EQ(item->background().color(), background) << row << "," << column;
            EXPECT_EQ(item->foreground().color(), QColor(Qt::black));
        }
        if (moon.elevation > 0) { // during a pass: the rise of this pass, the set to come
            ++up;
            EXPECT_LT(moon.riseTime, jd);
            EXPECT_GT(moon.setTime, jd);
        } else {
            EXPECT_EQ(moon.doppler, 0.0);
        }
    }
    EXPECT_EQ(up, 1);
    for (int column = 0; column < 9; ++column)
        EXPECT_EQ(table->item(2, column)->text(), "") << "a grid that fails leaves its row blank";
}

TEST_F(FavoritesDialogTest, AClickSetsTheDxStationAndOkChecksItsGrid)
{
    const struct { int row; const char *call, *grid; double latitude, longitude; int set; } rows[] = {
        {0, "Q1ABC", "FN42", 42.5208333, -70.9583333, 1},
        {2, "Q3BAD", "MOON", 0.0, 0.0, 0}, // blank row: still copied, but no DX station
    };
    for (const auto &r : rows) {
        test::ResetSharedState();
        WriteList("Eme144M.txt", kList);
        CopyField(dxStation.location, "kept");
        MainWindow window;
        QTimer::singleShot(0, [&] {
            auto *dialog = qobject_cast<FavoritesDialog *>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            QTableWidget *table = dialog->widgets()->tableWidget;
            QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                              table->visualItemRect(table->item(r.row, 1)).center());
            dialog->widgets()->buttonBox->button(QDialogButtonBox::Ok)->click();
        });
        window.widgets()->actionEme144M->trigger();
        EXPECT_STREQ(dxStation.callsign, r.call);
        EXPECT_STREQ(dxStation.grid, r.grid);
        EXPECT_NEAR(dxStation.latitude, r.latitude, 1e-6);
        EXPECT_NEAR(dxStation.longitude, r.longitude, 1e-6);
        EXPECT_STREQ(dxStation.location, "kept");
        EXPECT_EQ(dxStationSet, r.set) << r.grid;
        EXPECT_EQ(window.widgets()->DxCallsign->text(), r.call);
    }
}

TEST_F(FavoritesDialogTest, RefreshEvery100MillisecondsOnlyAheadOfNow)
{
    for (const auto &[offset, interval] : {std::pair{-1, 5000}, {0, 5000}, {1, 100}}) {
        displayOffset = offset;
        FavoritesDialog dialog("Eme144M.txt", true);
        EXPECT_TRUE(dialog.refreshTimer().isActive());
        EXPECT_EQ(dialog.refreshTimer().interval(), interval) << offset;
    }
    // Ahead of now the table follows a step of the clock within 100 ms.
    displayOffset = 1;
    auto dialog = std::make_unique<FavoritesDialog>("Eme144M.txt", true);
    QTableWidgetItem *azimuth = dialog->widgets()->tableWidget->item(0, 3);
    const QString before = azimuth->text();
    displayOffset += 3600;
    QTRY_VERIFY_WITH_TIMEOUT(azimuth->text() != before, 1000);
    // Destroyed with its timer running: no refill reaches the freed dialog
    // (the sanitizer build would report it).
    dialog.reset();
    QTest::qWait(250);
}

TEST_F(FavoritesDialogTest, WithoutAListOnlyABareDialog)
{
    WriteList("Eme50M.txt", "ZZZZZZ,,,,,,\nQ1ABC,FN42,a,b,c,d,x\n");
    const struct { const char *file; bool show; int count; bool table; } cases[] = {
        {"Eme47G.txt", true, 0, false},   // missing: no table, no timer
        {"Eme50M.txt", true, 0, true},    // end marker first: a table without rows
        {"Eme144M.txt", false, 3, false}, // read only, as for the map
    };
    for (const auto &c : cases) {
        FavoritesDialog dialog(c.file, c.show);
        EXPECT_EQ(dialog.count(), c.count) << c.file;
        EXPECT_EQ(dialog.widgets() != nullptr, c.table) << c.file;
        EXPECT_EQ(dialog.refreshTimer().isActive(), c.table) << c.file;
        if (c.table) {
            EXPECT_EQ(dialog.widgets()->tableWidget->rowCount(), 0);
        }
    }
}

TEST_F(FavoritesDialogTest, FavouritesAreMarkedOnTheMap)
{
    WriteList("Favorites.txt", "Q1ABC,FN42,a,b,c,d,Boston\nQ3BAD,MOON,a,b,c,d,x\n");
    MainWindow window;
    window.resize(1640, 960);
    window.show();
    QApplication::processEvents();
    ASSERT_EQ(window.widgets()->WorldMap->size(), QSize(1600, 800));
    overlaySettings = {};
    auto yellow = [&](QRect box) {
        const QImage image = window.screenOverlayPixmap().toImage();
        int count = 0;
        for (int y = box.top(); y <= box.bottom(); ++y)
            for (int x = box.left(); x <= box.right(); ++x)
                count += image.pixel(x, y) == qRgb(255, 255, 0);
        return count;
    };
    // FN42 at x = (180 - 70.958) * 1600 / 360 + 6 = 490.6, y = (90 - 42.521) * 800 / 180 = 211.0;
    // the call's baseline 8 pixels higher, starting 3 * 5 pixels to the left.
    const QRect circle(487, 208, 8, 7), call(470, 190, 45, 15);
    window.CreateScreenOverlay();
    EXPECT_EQ(yellow(circle) + yellow(call), 0) << "switched off";
    overlaySettings.FavoriteStationsOverlay = true;
    window.CreateScreenOverlay();
    EXPECT_GE(yellow(circle), 9);
    EXPECT_GT(yellow(call), 10);
    EXPECT_EQ(yellow(QRect(0, 0, 1600, 800)), yellow(circle) + yellow(call)) << "only one station";
    QFile::remove(test::SettingsFolder() + "Favorites.txt");
    window.CreateScreenOverlay();
    EXPECT_EQ(window.screenOverlayPixmap().toImage(), window.baseMapPixmap().toImage());
}

} // namespace
