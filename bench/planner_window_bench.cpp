// What the EME Planner costs the GUI thread: one whole Replan (31-day mutual
// plan, 30 days of conditions, both tables and both charts rebuilt) for
// FN42mm with JO62qm, the window shown offscreen.
#include "app/PlannerWindow.h"

#include "tracking/SharedState.h"
#include "ui_PlannerWindow.h"

#include <QApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cstdlib>

using namespace lunaquill;

namespace {

PlannerWindow *planner;

void BM_Replan(benchmark::State &state)
{
    planner->widgets()->DaysSpin->setValue(int(state.range(0)));
    for (auto _ : state) {
        planner->Replan();
        QApplication::processEvents(); // the charts and tables laid out and painted
    }
}
BENCHMARK(BM_Replan)->ArgName("days")->Arg(3)->Arg(31)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QTemporaryDir home;
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    QApplication application(argc, argv);
    homeData.latitude = 42.520833;
    homeData.longitude = -70.958333;
    homeData.frequency = 1296.0;
    CopyField(homeData.grid, "FN42mm");
    CopyField(dxStation.grid, "JO62qm");
    dxStation.latitude = 52.520833;
    dxStation.longitude = 13.375;
    dxStationSet = 1;
    PlannerWindow window;
    window.resize(1180, 760);
    window.show();
    QApplication::processEvents();
    planner = &window;

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
