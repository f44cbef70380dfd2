// Configure -> Planner from the main window: lists, chart, clicks to the clock, CSV, choices.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "ui_PlannerWindow.h"
#include "app/PlannerWindow.h"
#include "tracking/PlanText.h"

#include <QChartView>
#include <QClipboard>
#include <QTemporaryDir>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

constexpr int64_t kJune1 = 1748736000; // 2025-06-01 00:00 UTC

class PlannerWindowTest : public WindowTest
{
protected:
    // The main window at 2025-06-01 00:00 UTC (FN42mm, DX JO62qm), the planner from the menu.
    void OpenPlanner(const char *ini = "[HOME_DATA]\nGrid=FN42mm\nLatitude=42.520833\n"
                                       "Longitude=-70.958333\nFrequency=1296\n")
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

    static std::string Cell(QTableWidget *table, int row, int column)
    {
        return table->item(row, column) ? table->item(row, column)->text().toStdString() : "-";
    }

    // As a mouse gives it (press and release, then the double click); the clock it then shows.
    std::string DoubleClickRow(QTableWidget *table, int row)
    {
        const QPoint centre = table->visualItemRect(table->item(row, 0)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, centre);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, centre);
        Refresh();
        return ui->DateTimeButton->text().toStdString();
    }

    PlannerWindow *planner = nullptr;
    Ui::PlannerWindow *pui = nullptr;
};

} // namespace

TEST_F(PlannerWindowTest, ListsChartsAndMovesTheClock)
{
    OpenPlanner();
    EXPECT_TRUE(planner->isVisible() && !planner->isModal());
    // As lunaquill-plan prints them: 14:54-23:38, 16:01-23:50, 17:05-23:59 (FN42mm-JO62qm).
    QTableWidget *table = pui->WindowsTable;
    ASSERT_EQ(table->rowCount(), 3);
    EXPECT_EQ(Cell(table, 0, 0) + " " + Cell(table, 0, 1) + " " + Cell(table, 0, 2),
              "2025-06-01 14:54 2025-06-01 23:38 524");
    EXPECT_EQ(DoubleClickRow(table, 1).substr(0, 16), "Mon Jun  2 16:01");
    EXPECT_NEAR(double(DisplayedTime()), double(planner->windows()[1].start), 2.0);
    EXPECT_EQ(Cell(table, 0, 0), "2025-06-01 14:54"); // the plan stays where it was made
    // The chart's middle is the middle of the three days, to a few minutes a pixel.
    QChartView *view = planner->windowsChart();
    const QPointF middle = view->chart()->mapToScene(view->chart()->plotArea().center());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->mapFromScene(middle));
    EXPECT_NEAR(double(DisplayedTime()), double(kJune1 + 36 * 3600), 900.0);
    // The month: new Moon on 2025-06-25, the Sun within 15 deg, its row marked.
    pui->Tabs->setCurrentIndex(1);
    table = pui->MonthTable;
    ASSERT_EQ(table->rowCount(), 30);
    EXPECT_EQ(Cell(table, 0, 0) + " " + Cell(table, 29, 0), "2025-06-01 2025-06-30");
    EXPECT_EQ(Cell(table, 24, 10), "yes");
    int bestRows = 0;
    for (int r = 0; r < 30; ++r) {
        bestRows += Cell(table, r, 9) == "yes";
        const bool marked = table->item(r, 0)->background().style() != Qt::NoBrush;
        EXPECT_TRUE(marked || (Cell(table, r, 9) != "yes" && Cell(table, r, 10) != "yes")) << r;
    }
    EXPECT_GE(bestRows, 1);
    EXPECT_EQ(DoubleClickRow(table, 4).substr(0, 10), "Thu Jun  5");
    EXPECT_NEAR(double(DisplayedTime()), double(planner->conditions()[4].transit), 2.0);
    // Copy gives the month's CSV; Save CSV writes the same, or says why not.
    pui->CopyButton->click();
    const QString copied = QGuiApplication::clipboard()->text();
    EXPECT_TRUE(copied.startsWith("date,transit_utc,elevation_deg,") && copied.count('\n') == 31);
    QTemporaryDir folder;
    ASSERT_TRUE(planner->SaveCsv(folder.filePath("month.csv")));
    QFile saved(folder.filePath("month.csv"));
    EXPECT_TRUE(saved.open(QIODevice::ReadOnly) && saved.readAll() == copied.toUtf8());
    QString error;
    EXPECT_TRUE(!planner->SaveCsv(folder.filePath("no/such/x.csv"), &error) && !error.isEmpty());
}

TEST_F(PlannerWindowTest, FollowsStationsFrequencyAndListAndKeepsItsChoices)
{
    WriteIni("/ test list\nDL1AB,JO62qm,,,,,Berlin\nK1XY,FN42mm,,,,,Boston\nZZZZZZ\n",
             lunaquill::SettingsFolder() + "DxStations.txt");
    OpenPlanner();
    const double doppler1296 = planner->windows()[0].dopplerStart;
    // A new frequency: the plan follows at its next look, once a second.
    homeData.frequency = 144.0;
    EXPECT_TRUE(QTest::qWaitFor([&] { return planner->request().frequencyMHz == 144.0; }, 10000));
    EXPECT_NEAR(planner->windows()[0].dopplerStart, doppler1296 * 144.0 / 1296.0, 1.0);
    // No DX station: no DX columns; home's own windows, the first open from the start.
    dxStationSet = 0;
    EXPECT_TRUE(QTest::qWaitFor([&] { return !planner->request().hasDx; }, 10000));
    EXPECT_EQ(pui->WindowsTable->columnCount(), int(WindowColumns(false).size()));
    EXPECT_NEAR(double(planner->windows()[0].start), double(kJune1), 10.0);
    EXPECT_GT(planner->windows()[1].minutes, 524.0);
    // A DX station from the list (none, the main window's, then its valid lines): DL1AB's.
    ASSERT_EQ(pui->DxCombo->count(), 4);
    pui->DxCombo->setCurrentIndex(2);
    EXPECT_NEAR(planner->request().dx.longitude, 13.375, 1e-9);
    EXPECT_EQ(Cell(pui->WindowsTable, 0, 0), "2025-06-01 14:54");
    // Choices go to PLANNER, the rest of the file kept, and come back in the next window.
    pui->DaysSpin->setValue(7);
    pui->HomeMinSpin->setValue(10.0);
    pui->Tabs->setCurrentIndex(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ReadIni().contains("Tab=1"); }, 10000));
    const QByteArray ini = ReadIni();
    for (const char *line : {"[PLANNER]", "Days=7", "HomeMinElevation=10", "Grid=FN42mm"})
        EXPECT_TRUE(ini.contains(line)) << line << ini.constData();
    window.reset();
    OpenPlanner(nullptr);
    EXPECT_EQ(pui->DaysSpin->value(), 7);
    EXPECT_EQ(pui->Tabs->currentIndex(), 1);
    for (const MutualWindow &w : planner->windows())
        EXPECT_GE(w.home.elevationStart, 10.0 - 0.01);
}
