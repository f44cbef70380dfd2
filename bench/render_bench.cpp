// Costs of the map layers rebuilt on every display refresh, at the world
// map's own 1600 x 800 size.
#include "render/MapLayers.h"
#include "render/ShadeOverlay.h"
#include "render/SkyLayers.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

// A stand-in for the topographic image: smooth colours, no alpha.
QPixmap SyntheticTopography()
{
    QImage image(1600, 800, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x % 256, y % 256, (x + y) % 256));
    return QPixmap::fromImage(image);
}

void ShadeOverlayFast(benchmark::State &state)
{
    QPixmap layer(1600, 800);
    for (auto _ : state)
        lunaquill::CreateShadeOverlay(layer, 12.3, -45.6, 10.0);
}
BENCHMARK(ShadeOverlayFast)->Unit(benchmark::kMillisecond);

void BaseMapWithGrid(benchmark::State &state)
{
    const QPixmap master = SyntheticTopography();
    QPixmap baseMap(1600, 800);
    for (auto _ : state)
        lunaquill::DrawBaseMap(baseMap, master, 5, true, true);
}
BENCHMARK(BaseMapWithGrid)->Unit(benchmark::kMillisecond);

// The star and constellation layers as the screen overlay draws them (onto an
// image): every catalogue object (magnitude limit 20) at opacity 0.5, then the
// outlines and abbreviations, at 2024-03-20 12:00 UTC. SkyStarsOneByOne is the
// same stars drawn as one ellipse each.
lunaquill::SkyView BenchSkyView()
{
    struct tm utc = {};
    utc.tm_year = 124;
    utc.tm_mon = 2;
    utc.tm_mday = 20;
    utc.tm_hour = 12;
    return {1600, 800, 0, utc};
}

void SkyStars(benchmark::State &state)
{
    QImage layer = SyntheticTopography().toImage();
    const lunaquill::SkyView view = BenchSkyView();
    for (auto _ : state) {
        QPainter painter(&layer);
        painter.setOpacity(0.5);
        for (int c = 0; c < lunaquill::kConstellationCount; ++c)
            lunaquill::DrawConstellationObjects(painter, view, c, 20);
    }
}
BENCHMARK(SkyStars)->Unit(benchmark::kMillisecond);

void SkyStarsOneByOne(benchmark::State &state)
{
    QImage layer = SyntheticTopography().toImage();
    const lunaquill::SkyView view = BenchSkyView();
    for (auto _ : state) {
        QPainter painter(&layer);
        painter.setOpacity(0.5);
        for (int c = 0; c < lunaquill::kConstellationCount; ++c)
            lunaquill::DrawObjectsOneByOne(painter, view, lunaquill::kCatalogue[c], 20);
    }
}
BENCHMARK(SkyStarsOneByOne)->Unit(benchmark::kMillisecond);

// The outlines and abbreviations as the window draws them, and the old way:
// everything precessed at every drawing, the lines drawn by Qt.
void SkyConstellations(benchmark::State &state)
{
    QImage layer = SyntheticTopography().toImage();
    const lunaquill::SkyView view = BenchSkyView();
    const bool old = state.range(0) != 0;
    for (auto _ : state) {
        QPainter painter(&layer);
        painter.setPen(Qt::black);
        for (int c = 0; c < lunaquill::kConstellationCount; ++c) {
            if (old) {
                lunaquill::DrawOutline(painter, view, lunaquill::kConstellationOutlines[c]);
                lunaquill::DrawConstellationLabel(painter, view, lunaquill::kConstellations[c]);
            } else {
                lunaquill::DrawConstellationOutline(painter, view, c);
                lunaquill::DrawConstellationLabel(painter, view, c);
            }
        }
    }
}
BENCHMARK(SkyConstellations)->ArgName("old")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);


} // namespace

int main(int argc, char **argv)
{
    // Pixmaps need a GUI application; no window is ever shown.
    if (!getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
