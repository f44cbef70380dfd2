// Configure -> Planner, driven from the main window: what the EME Planner lists and charts,
// where a double click or a chart click takes the clock, how it follows the stations and
// the frequency, its CSV and its saved choices.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "ui_PlannerWindow.h"
#include "app/Clock.h"
#include "app/PlannerWindow.h"
#include "tracking/PlanText.h"

#include <QChartView>
#include <QClipboard>
#include <QTemporaryDir>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

constexpr int64_t kJune1 = 1748736000; // 2025-06-01 00:00 UTC
// FN42mm's centre, the home station of these tests.
const char *kBoston =
    "[HOME_DATA]\nGrid=FN42mm\nLatitude=42.520833\nLongitude=-70.958333\nFrequency=1296\n";

std::string ClockAt(int64_t t)
{
    const time_t tt = time_t(t);
    struct tm utc {};
    gmtime_r(&tt, &utc);
    return ClockText(utc);
}

class PlannerWindowTest : public WindowTest
{
protected:
    // The main window at 2025-06-01 00:00 UTC with JO62qm as the DX station, and the
    // planner opened from the menu.
    void OpenPlanner(const char *ini = kBoston)
    {
        Open(ini);
        CopyField(dxStation.grid, "JO62qm");
        dxStation.latitude = 52.520833;
        dxStation.longitude = 13.375;
        dxStationSet = 1;
        displayOffset = int32_t(kJune1 - time(nullptr));
        window->TimeAdjusted();
        ui->actionPlanner->trigger();
        QApplication::processEvents();
        planner = window->findChild<PlannerWindow *>();
        ASSERT_NE(planner, nullptr);
        pui = planner->widgets();
    }

    std::string Cell(QTableWidget *table, int row, int column)
    {
        QTableWidgetItem *item = table->item(row, column);
        return item ? item->text().toStdString() : "<none>";
    }

    void DoubleClickRow(QTableWidget *table, int row)
    {
        // As a mouse gives it: press and release, then the double click.
        const QRect rect = table->visualItemRect(table->item(row, 0));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, rect.center());
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, rect.center());
    }

    PlannerWindow *planner = nullptr;
    Ui::PlannerWindow *pui = nullptr;
};

} // namespace

TEST_F(PlannerWindowTest, OpensBesideTheWindowAndListsTheMutualWindows)
{
    OpenPlanner();
    EXPECT_TRUE(planner->isVisible());
    EXPECT_FALSE(planner->isModal());
    EXPECT_EQ(planner->windowTitle().toStdString(), "EME Planner");
    EXPECT_EQ(pui->Tabs->tabText(0).toStdString(), "Mutual windows");
    EXPECT_EQ(pui->Tabs->tabText(1).toStdString(), "Month");
    EXPECT_EQ(pui->DaysSpin->value(), 3);

    // The same plan as the command line's for these stations: FN42mm with JO62qm from
    // 2025-06-01 00:00 for 3 days (lunaquill-plan prints 14:54-23:38, 16:01-23:50,
    // 17:05-23:59).
    QTableWidget *table = pui->WindowsTable;
    ASSERT_EQ(table->rowCount(), 3);
    EXPECT_EQ(table->horizontalHeaderItem(0)->text().toStdString(), "Start (UTC)");
    EXPECT_EQ(Cell(table, 0, 0), "2025-06-01 14:54");
    EXPECT_EQ(Cell(table, 0, 1), "2025-06-01 23:38");
    EXPECT_EQ(Cell(table, 0, 2), "524");
    EXPECT_EQ(Cell(table, 2, 0), "2025-06-03 17:05");
    // Both elevations and the shaded windows on the chart.
    EXPECT_EQ(planner->windowsChart()->chart()->series().size(), 3);

    // The main window goes on ticking beside it.
    const std::string before = ui->DateTimeButton->text().toStdString();
    Refresh();
    EXPECT_EQ(ui->DateTimeButton->text().toStdString().substr(0, 10), before.substr(0, 10));

    // A double click on the second row takes the clock to its start.
    DoubleClickRow(table, 1);
    Refresh();
    const int64_t start = planner->windows()[1].start;
    const std::string clock = ui->DateTimeButton->text().toStdString();
    EXPECT_TRUE(clock == ClockAt(start) || clock == ClockAt(start + 1)) << clock;
    EXPECT_EQ(clock.substr(0, 16), "Mon Jun  2 16:01");
    // The plan stays where it was made.
    EXPECT_EQ(Cell(table, 0, 0), "2025-06-01 14:54");

    // A click in the middle of the chart: the middle of the three days, to the chart's
    // resolution of a few minutes a pixel.
    QChartView *view = planner->windowsChart();
    const QRectF plot = view->chart()->plotArea();
    const QPoint middle = view->mapFromScene(view->chart()->mapToScene(plot.center()));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, middle);
    EXPECT_NEAR(double(DisplayedTime()), double(kJune1 + 36 * 3600), 900.0);
    Refresh();
    EXPECT_EQ(ui->DateTimeButton->text().toStdString().substr(0, 12), "Mon Jun  2 1");
}

TEST_F(PlannerWindowTest, MonthTabMarksBestAndSunDaysAndMovesTheClock)
{
    OpenPlanner();
    pui->Tabs->setCurrentIndex(1);
    QTableWidget *table = pui->MonthTable;
    ASSERT_EQ(table->rowCount(), 30);
    EXPECT_EQ(Cell(table, 0, 0), "2025-06-01");
    EXPECT_EQ(Cell(table, 29, 0), "2025-06-30");
    // New Moon on 2025-06-25: the Sun within 15 deg there, its row marked.
    int sunRows = 0, bestRows = 0;
    for (int r = 0; r < 30; ++r) {
        const bool sun = Cell(table, r, 10) == "yes", best = Cell(table, r, 9) == "yes";
        sunRows += sun;
        bestRows += best;
        if (sun || best) {
            EXPECT_NE(table->item(r, 0)->background().style(), Qt::NoBrush) << r;
        }
    }
    EXPECT_GE(sunRows, 1);
    EXPECT_EQ(Cell(table, 24, 10), "yes");
    EXPECT_GE(bestRows, 1);

    DoubleClickRow(table, 4);
    Refresh();
    const std::string clock = ui->DateTimeButton->text().toStdString();
    EXPECT_EQ(clock.substr(0, 10), "Thu Jun  5");
    const int64_t transit = planner->conditions()[4].transit;
    EXPECT_TRUE(clock == ClockAt(transit) || clock == ClockAt(transit + 1)) << clock;

    // Copy gives the month's CSV; Save CSV writes the same.
    pui->CopyButton->click();
    const QString copied = QGuiApplication::clipboard()->text();
    EXPECT_TRUE(copied.startsWith("date,transit_utc,elevation_deg,declination_deg,distance_km,"
                                  "path_loss_db,sky_temp_k,degradation_db,sun_moon_deg"));
    EXPECT_EQ(copied.count('\n'), 31);
    QTemporaryDir folder;
    const QString path = folder.filePath("month.csv");
    ASSERT_TRUE(planner->SaveCsv(path));
    QFile saved(path);
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(saved.readAll()), copied);
    QString error;
    EXPECT_FALSE(planner->SaveCsv(folder.filePath("no/such/folder/x.csv"), &error));
    EXPECT_FALSE(error.isEmpty());
}

TEST_F(PlannerWindowTest, FollowsStationsAndFrequencyAndKeepsItsChoices)
{
    OpenPlanner();
    const double doppler1296 = planner->windows()[0].dopplerStart;
    // A new frequency: the plan follows at its next look, once a second.
    homeData.frequency = 144.0;
    EXPECT_TRUE(QTest::qWaitFor([&] { return planner->request().frequencyMHz == 144.0; }, 10000));
    ASSERT_FALSE(planner->windows().empty());
    EXPECT_NEAR(planner->windows()[0].dopplerStart, doppler1296 * 144.0 / 1296.0, 1.0);
    // No DX station: the home station's own windows, without the DX columns.
    dxStationSet = 0;
    EXPECT_TRUE(QTest::qWaitFor([&] { return !planner->request().hasDx; }, 10000));
    EXPECT_EQ(pui->WindowsTable->columnCount(), int(WindowColumns(false).size()));
    // The first opens at the start (the displayed instant, a few seconds on by now),
    // still up from the night; the next is a whole pass.
    EXPECT_NEAR(double(planner->windows()[0].start), double(kJune1), 10.0);
    EXPECT_GT(planner->windows()[1].minutes, 524.0);

    // Choices go to PLANNER and come back in the next window.
    pui->DaysSpin->setValue(7);
    pui->HomeMinSpin->setValue(10.0);
    pui->Tabs->setCurrentIndex(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ReadIni().contains("Tab=1"); }, 10000));
    const QByteArray ini = ReadIni();
    EXPECT_TRUE(ini.contains("[PLANNER]")) << ini.constData();
    EXPECT_TRUE(ini.contains("Days=7"));
    EXPECT_TRUE(ini.contains("HomeMinElevation=10"));
    EXPECT_TRUE(ini.contains("Tab=1"));
    EXPECT_TRUE(ini.contains("Grid=FN42mm")); // the rest of the file kept

    window.reset();
    OpenPlanner(nullptr);
    EXPECT_EQ(pui->DaysSpin->value(), 7);
    EXPECT_DOUBLE_EQ(pui->HomeMinSpin->value(), 10.0);
    EXPECT_EQ(pui->Tabs->currentIndex(), 1);
    for (const MutualWindow &w : planner->windows())
        EXPECT_GE(w.home.elevationStart, 10.0 - 0.01);
}

// A DX station taken from the DX list inside the planner.
TEST_F(PlannerWindowTest, DxStationFromTheList)
{
    WriteIni("/ test list\nDL1AB,JO62qm,,,,,Berlin\nK1XY,FN42mm,,,,,Boston\nZZZZZZ\n",
             lunaquill::SettingsFolder() + "DxStations.txt");
    OpenPlanner();
    dxStationSet = 0;
    QComboBox *combo = pui->DxCombo;
    ASSERT_EQ(combo->count(), 4);
    EXPECT_TRUE(combo->itemText(2).startsWith("DL1AB  JO62qm"));
    combo->setCurrentIndex(2);
    EXPECT_TRUE(planner->request().hasDx);
    EXPECT_NEAR(planner->request().dx.longitude, 13.375, 1e-9);
    EXPECT_EQ(Cell(pui->WindowsTable, 0, 0), "2025-06-01 14:54");
}
