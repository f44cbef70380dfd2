// The map's costs at a 1600 x 800 map: one shading layer, the composed
// screen overlay with every layer on, and a whole TimeAdjusted (recompute
// every source, both shades, sky, screen overlay, draw), which play mode runs
// once a second on the GUI thread; the same in the star-chart view, and one
// chart, each the charts' reference way (/0) and quick way (/1). The charts
// need an X server for their OpenGL context, e.g.
//   QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1920x1080x24" build/bench/window_bench
#include "app/MainWindow.h"

#include "render/StarChartRenderer.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cstdlib>

using namespace lunaquill;

namespace {

MainWindow *window;

void EveryLayerOn()
{
    homeData.latitude = 42.51;
    homeData.longitude = -70.96;
    homeData.frequency = 1296.0;
    CopyField(homeData.grid, "FN42mm");
    homeStationSet = 1;
    CopyField(dxStation.grid, "QF56oc");
    dxStation.latitude = -33.9;
    dxStation.longitude = 151.2;
    dxStationSet = 1;
    OverlaySettings &on = overlaySettings;
    on.SunOverlay = on.MoonOverlay = on.MercuryOverlay = on.VenusOverlay = on.MarsOverlay = true;
    on.SaturnOverlay = on.JupiterOverlay = on.NeptuneOverlay = on.UranusOverlay = true;
    on.PlutoOverlay = on.SunShadingOverlay = on.MoonShadingOverlay = on.SkyNoiseOverlay = true;
    on.StarsOverlay = on.ConstellationsOverlay = on.LatitudeGridlines = true;
    on.LongitudeGridlines = on.FavoriteStationsOverlay = true;
    on.StarsMagnitude = 20; // every catalogue object
    on.StarChartOverlay = false;
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
    for (auto _ : state) {
        displayOffset += 60; // a new instant each time, as in play mode
        window->TimeAdjusted();
    }
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
    for (auto _ : state) {
        displayOffset += 60;
        window->TimeAdjusted();
    }
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
    for (auto _ : state) {
        displayOffset += 60;
        window->RecalculateSources();
    }
}
BENCHMARK(BM_RecalculateSources)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QTemporaryDir home;
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    unsetenv("XDG_CONFIG_HOME"); // settings in <home>/.config/Lunaquill/, not a real profile
    // The images are found in pixmaps/ below the source folder.
    QDir::setCurrent(LUNAQUILL_SOURCE_DIR);
    QApplication application(argc, argv);
    MainWindow mainWindow;
    mainWindow.resize(1640, 960);
    mainWindow.show();
    QApplication::processEvents();
    window = &mainWindow;
    EveryLayerOn();

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
