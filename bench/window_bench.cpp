// The map's costs at a 1600 x 800 map: one shading layer, the composed
// screen overlay with every layer on, and a whole TimeAdjusted (recompute
// every source, both shades, sky, screen overlay, draw), which play mode runs
// once a second on the GUI thread; the same in the star-chart view, and one
// chart, each the charts' reference way (/0) and quick way (/1). The charts
// need an X server for their OpenGL context, e.g.
//   QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1920x1080x24" build/bench/window_bench
#include "app/MainWindow.h"
#include "BenchWindow.h"

#include "render/StarChartRenderer.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <ctime>

using namespace lunaquill;

namespace {

MainWindow *window;

// CPU time of every thread of the process, ms: with the main thread's time
// (the CPU column) it shows how much work went to the other threads.
double ProcessCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// Runs `step` once per iteration and reports the process's CPU time per step.
template <typename Step>
void MeasureSteps(benchmark::State &state, Step step)
{
    const double start = ProcessCpuMs();
    for (auto _ : state)
        step();
    state.counters["process_cpu_ms"] =
        benchmark::Counter((ProcessCpuMs() - start) / double(state.iterations()));
}


void BM_SunShadeLayer(benchmark::State &state)
{
    QPixmap layer(1600, 800);
    double longitude = 0;
    for (auto _ : state) {
        window->CreateShadeOverlay(layer, -20.0, longitude, 10.0);
        longitude += 0.25;
    }
}
BENCHMARK(BM_SunShadeLayer)->Unit(benchmark::kMillisecond);

void BM_CreateScreenOverlay(benchmark::State &state)
{
    window->TimeAdjusted();
    for (auto _ : state)
        window->CreateScreenOverlay();
}
BENCHMARK(BM_CreateScreenOverlay)->Unit(benchmark::kMillisecond);

void BM_TimeAdjusted(benchmark::State &state)
{
    MeasureSteps(state, [] {
        displayOffset += 60; // a new instant each time, as in play mode
        window->TimeAdjusted();
    });
}
BENCHMARK(BM_TimeAdjusted)->Unit(benchmark::kMillisecond);

// The charts the reference way (argument 0: a new texture for each overlay,
// the depth test, Qt's read-back) or the quick way (argument 1), which draw
// the same pixels.
void ChooseChartPath(const benchmark::State &state)
{
    window->findChild<StarChartRenderer *>()->setReferencePath(state.range(0) == 0);
}

// The same in the star-chart view: both charts rendered in place of the map.
void BM_TimeAdjustedChartView(benchmark::State &state)
{
    ChooseChartPath(state);
    overlaySettings.StarChartOverlay = true;
    MeasureSteps(state, [] {
        displayOffset += 60;
        window->TimeAdjusted();
    });
    overlaySettings.StarChartOverlay = false;
}
BENCHMARK(BM_TimeAdjustedChartView)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// One chart: dial copy, texture from the overlay, sphere, read-back, clip.
void BM_DrawStarChart1(benchmark::State &state)
{
    ChooseChartPath(state);
    overlaySettings.StarChartOverlay = true;
    window->TimeAdjusted();
    for (auto _ : state) {
        window->CreateScreenOverlay(); // a new overlay each time, as each refresh makes
        window->DrawStarChart1();
    }
    overlaySettings.StarChartOverlay = false;
}
BENCHMARK(BM_DrawStarChart1)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_RecalculateSources(benchmark::State &state)
{
    MeasureSteps(state, [] {
        displayOffset += 60;
        window->RecalculateSources();
    });
}
BENCHMARK(BM_RecalculateSources)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QTemporaryDir home;
    UseScratchHome(home);
    QApplication application(argc, argv);
    MainWindow mainWindow;
    ShowAtFormSize(mainWindow);
    window = &mainWindow;
    EveryLayerOn();

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
