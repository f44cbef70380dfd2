// The band and favourites lists: the table against the calculator, clicks that set the DX
// station, the refresh timer, and the favourites on the map.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "app/FavoritesDialog.h"
#include "app/Settings.h"
#include "ui_FavoritesDialog.h"

#include <QLabel>
#include <QTemporaryDir>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

// The list's stations, their locators worked by hand: FN42 is the worked example, OE47
// 40 - 90 + 7 + 12.5 * 2.5 / 60, 8 + 280 + 12.5 * 5 / 60 - 180. ZZ99zz is no locator.
const struct { const char *location, *call, *grid; double latitude, longitude; } kStations[] = {
    {"Boston", "Q1ABC", "FN42", 42.5208333, -70.9583333},
    {"Indian Ocean", "Q2XYZ", "OE47", -42.4791667, 109.0416667},
    {"Nowhere", "Q3BAD", "ZZ99zz", 0.0, 0.0}};

class FavoritesDialogTest : public WindowTest
{
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        homeData.frequency = 144.1;
        // FN42 and OE47 lie almost antipodal, so the Moon is up at exactly one of them;
        // ZZ99zz is no locator (fields end at R); nothing after ZZZZZZ is read.
        WriteIni("/ test list\nQ1ABC,FN42,a,b,c,d,Boston\nQ2XYZ,OE47,a,b,c,d,Indian Ocean\n"
                 "Q3BAD,ZZ99zz,a,b,c,d,Nowhere\nZZZZZZ,,,,,,\nQ4NOT,JO62,a,b,c,d,after the end\n",
                 test::SettingsFolder() + "Eme144M.txt");
    }
};

TEST_F(FavoritesDialogTest, RowsShowTheMoonAtEachStation)
{
    displayOffset = (int32_t)(1748736000 - time(nullptr)); // 2025-06-01 00:00 UTC
    std::unique_ptr<FavoritesDialog> dialog;
    time_t shown;
    do { // the first fill, again if a second boundary fell inside it
        shown = DisplayedTime();
        dialog = std::make_unique<FavoritesDialog>("Eme144M.txt", true);
    } while (DisplayedTime() != shown);
    QTableWidget *table = dialog->widgets()->tableWidget;
    ASSERT_EQ(table->rowCount(), 3);

    const struct tm utc = *gmtime(&shown);
    int up = 0;
    for (int row = 0; row < 2; ++row) {
        const auto &s = kStations[row];
        SourceTrack moon{};
        ComputeSource(Moon, TrackPosition, utc, s.latitude, s.longitude, 144.1, moon);
        ComputeSource(Moon, TrackAll, utc, s.latitude, s.longitude, 144.1, moon);
        ASSERT_GT(std::abs(moon.elevation), 2.0) << "choose an instant away from moonrise";
        const std::string expected =
            std::string(s.location) + "|" + s.call + "|" + s.grid + "|" +
            Format("%0.2f|", moon.azimuth) + Format("%0.2f|", moon.elevation) +
            DateText("", moon.riseTime) + "|" + DateText("", moon.setTime) + "|" +
            Format("%0.1f Hz|", moon.doppler) + Format("%0.1f", moon.spatialOffset);
        const QColor background = moon.elevation > 0 ? QColor(172, 255, 172)
                                                     : QColor(190, 190, 190);
        QStringList cells;
        for (int column = 0; column < 9; ++column) {
            QTableWidgetItem *item = table->item(row, column);
            cells << item->text();
            EXPECT_TRUE(item->background().color() == background && item->foreground().color() == Qt::black)
                << row << "," << column;
        }
        EXPECT_EQ(cells.join('|').toStdString(), expected);
        up += moon.elevation > 0;
    }
    EXPECT_EQ(up, 1);
    for (int column = 0; column < 9; ++column)
        EXPECT_EQ(table->item(2, column)->text(), "") << "a grid that fails leaves its row blank";
}

// A row chosen by a click or by the keyboard is the DX station, and the window shows it at once
// whatever the dialog's result: call, grid, position and the Moon's figures there. A row whose
// grid is no locator is copied but sets no DX station.
TEST_F(FavoritesDialogTest, AChosenRowIsTheDxStationShownWhateverTheResult)
{
    Open(nullptr, false);
    CopyField(dxStation.location, "kept");
    const struct { int row; bool keyboard; QDialogButtonBox::StandardButton button; } rows[] = {
        {0, false, QDialogButtonBox::Ok}, {1, true, QDialogButtonBox::Cancel}, {2, false, QDialogButtonBox::Cancel}};
    for (const auto &r : rows) {
        const auto &s = kStations[r.row];
        WhenOpen<FavoritesDialog>([&r](FavoritesDialog &d) {
            QTableWidget *table = d.widgets()->tableWidget;
            if (r.keyboard) { // Down from the row above
                table->setFocus();
                table->setCurrentCell(r.row - 1, 1);
                QTest::keyClick(table, Qt::Key_Down);
            } else {
                QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                                  table->visualItemRect(table->item(r.row, 1)).center());
            }
        }, r.button);
        ui->actionEme144M->trigger();
        EXPECT_EQ(QString(dxStation.callsign) + dxStation.grid + dxStation.location,
                  QString(s.call) + s.grid + "kept");
        EXPECT_NEAR(dxStation.latitude, s.latitude, 1e-6);
        EXPECT_NEAR(dxStation.longitude, s.longitude, 1e-6);
        EXPECT_EQ(dxStationSet, r.row < 2) << s.grid;
        if (r.row < 2) {
            const SourceTrack &moon = dxTracks[Moon];
            EXPECT_EQ(Texts({ui->DxCallsign, ui->DxGrid, ui->DxLatitude, ui->DxLongitude,
                             ui->DxAzimuth, ui->DxElevation}),
                      std::string(s.call) + "|" + s.grid + "|" + Format("%0.2f|", s.latitude)
                          + Format("%0.2f|", s.longitude) + Format("%7.2f|", moon.azimuth)
                          + Format("%7.2f", moon.elevation));
        } else {
            EXPECT_EQ(Text(ui->DxDoppler), " "); // nothing computed for it
        }
    }
}

// A list that is not there: a bare dialog (no table, no timer: see the table below) that
// says on one line which file it looked for, where, and where the examples are.
TEST_F(FavoritesDialogTest, AMissingListSaysWhatWasLookedForAndWhere)
{
    Open(nullptr, false);
    QString title, line;
    QSize size;
    WhenOpen<QDialog>([&](QDialog &d) {
        title = d.windowTitle();
        const QList<QLabel *> labels = d.findChildren<QLabel *>();
        line = labels.size() == 1 ? labels[0]->text() : QString::number(labels.size());
        size = d.size();
        d.reject();
    });
    ui->actionEme47G->trigger();
    EXPECT_TRUE(title == "Favorites List" && size != QSize(640, 480));
    // The tests run in the source tree, whose examples/ holds the lists.
    EXPECT_EQ(line, "Lunaquill found no list Eme47G.txt in the folder " + lunaquill::SettingsFolder()
                        + "; example lists come with the program (in " + QDir::currentPath()
                        + "/examples/).");

    // Installed: the documentation folder beside the program's; else no folder named.
    QTemporaryDir root;
    ASSERT_TRUE(QDir().mkpath(root.path() + "/bin") &&
                QDir().mkpath(root.path() + "/share/doc/lunaquill/examples"));
    WriteIni("Q1ABC,FN42\n", root.path() + "/share/doc/lunaquill/examples/Favorites.txt");
    EXPECT_EQ(ExampleListsFolder(root.path() + "/bin", root.path() + "/bin"),
              root.path() + "/share/doc/lunaquill/examples/");
    EXPECT_EQ(ExampleListsFolder(root.path(), root.path()), "");
}

// The same list written in UTF-8 and in Latin-1 shows the same characters; in UTF-8 a location
// whose 64-byte limit falls inside a character ends before it. The DX station taken from a row
// shows its call as written.
TEST_F(FavoritesDialogTest, ListsInUtf8OrLatin1ShowTheirOwnCharacters)
{
    const QString zurich = QString::fromUtf8("Q1\u00c4BC,JO62qm,a,b,c,d,Z\u00fcrich\n");
    const QString location = QString(62, 'L') + QString::fromUtf8("\u20ac") + "uro"; // 62 + 3 + 3 bytes
    WriteIni((zurich + "Q2ABC,FN42,a,b,c,d," + location + "\n").toUtf8(), test::SettingsFolder() + "Eme432M.txt");
    WriteIni(zurich.toLatin1(), test::SettingsFolder() + "Eme50M.txt");
    for (const char *file : {"Eme432M.txt", "Eme50M.txt"}) {
        FavoritesDialog dialog(file, true);
        QTableWidget *table = dialog.widgets()->tableWidget;
        EXPECT_EQ(table->item(0, 0)->text() + "|" + table->item(0, 1)->text(),
                  QString::fromUtf8("Z\u00fcrich|Q1\u00c4BC")) << file;
        if (table->rowCount() > 1) {
            EXPECT_EQ(table->item(1, 0)->text(), QString(62, 'L'));
        }
    }
    Open(nullptr, false);
    WhenOpen<FavoritesDialog>([](FavoritesDialog &d) { d.FavoriteSelected(d.widgets()->tableWidget->item(0, 0)); },
                              QDialogButtonBox::Ok);
    ui->actionEme432M->trigger();
    EXPECT_EQ(ui->DxCallsign->text(), QString::fromUtf8("Q1\u00c4BC"));
}

// The table and its timer as the list and the clock allow: 100 ms only ahead of now.
TEST_F(FavoritesDialogTest, TableAndRefreshAsTheListAndTheClockAllow)
{
    WriteIni("ZZZZZZ,,,,,,\nQ1ABC,FN42,a,b,c,d,x\n", test::SettingsFolder() + "Eme50M.txt");
    const struct { const char *file; bool show; int offset, count, rows, interval; } cases[] = {
        {"Eme144M.txt", true, -1, 3, 3, 5000}, {"Eme144M.txt", true, 0, 3, 3, 5000},
        {"Eme144M.txt", true, 1, 3, 3, 100},   {"Eme50M.txt", true, 1, 0, 0, 100},
        {"Eme47G.txt", true, 1, 0, -1, 0},     // missing: a bare dialog, no timer
        {"Eme144M.txt", false, 1, 3, -1, 0},   // read only, as for the map
    };
    for (const auto &c : cases) {
        displayOffset = c.offset;
        FavoritesDialog dialog(c.file, c.show);
        EXPECT_EQ(dialog.count(), c.count) << c.file;
        ASSERT_EQ(dialog.widgets() != nullptr, c.rows >= 0) << c.file;
        EXPECT_EQ(c.rows < 0 ? -1 : dialog.widgets()->tableWidget->rowCount(), c.rows);
        const QTimer &timer = dialog.refreshTimer();
        EXPECT_EQ(timer.isActive() ? timer.interval() : 0, c.interval) << c.file << " " << c.offset;
    }
    // Ahead of now the table follows a step of the clock within 100 ms.
    auto dialog = std::make_unique<FavoritesDialog>("Eme144M.txt", true);
    QTableWidgetItem *azimuth = dialog->widgets()->tableWidget->item(0, 3);
    const QString before = azimuth->text();
    displayOffset += 3600;
    QTRY_VERIFY_WITH_TIMEOUT(azimuth->text() != before, 1000);
    // Destroyed with its timer running: no refill may reach the freed dialog (the sanitizer sees).
    dialog.reset();
    QTest::qWait(250);
}

TEST_F(FavoritesDialogTest, FavouritesAreMarkedOnTheMap)
{
    WriteIni("Q1ABC,FN42,a,b,c,d,Boston\nQ3BAD,MOON,a,b,c,d,x\n", test::SettingsFolder() + "Favorites.txt");
    Open(nullptr);
    ASSERT_EQ(ui->WorldMap->size(), QSize(1600, 800));
    overlaySettings = {};
    overlaySettings.FavoriteStationsOverlay = true;
    window->CreateScreenOverlay();
    const QImage image = window->screenOverlayPixmap().toImage();
    // FN42 at x = (180 - 70.958) * 1600 / 360 + 6 = 490.6, y = (90 - 42.521) * 800 / 180 = 211.0;
    // the call's baseline 8 pixels higher, starting 3 * 5 pixels to the left.
    int circle = 0, call = 0, elsewhere = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) == qRgb(255, 255, 0))
                ++(QRect(487, 208, 8, 7).contains(x, y) ? circle : QRect(470, 190, 45, 15).contains(x, y) ? call : elsewhere);
    EXPECT_TRUE(circle >= 9 && call > 10 && elsewhere == 0) << circle << " " << call << " " << elsewhere;
}

} // namespace
