// The star chart's pieces at the window's sizes (a 1600 x 800 overlay, a
// 771-pixel globe on a 790-pixel dial): a chart from an unchanged overlay
// (sphere and read-back) and from a new one (the texture too), each the
// reference way (argument 0) and the quick way (argument 1), and the globe
// laid on the dial. LP_NUM_THREADS=0 keeps Mesa's rasteriser on the calling
// thread, so the CPU column is the whole work. Needs an X server for the OpenGL context, e.g.
//   QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1920x1080x24" build/bench/star_chart_bench
#include "render/SkyDial.h"
#include "render/StarChartRenderer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <benchmark/benchmark.h>

#include <cstdlib>

using namespace lunaquill;

namespace {

StarChartRenderer *renderer;

QPixmap NoiseOverlay(uint32_t seed)
{
    QImage noise(1600, 800, QImage::Format_RGB32);
    for (int y = 0; y < noise.height(); ++y)
        for (int x = 0; x < noise.width(); ++x) {
            seed = seed * 1664525u + 1013904223u;
            noise.setPixel(x, y, qRgb(seed >> 24, (seed >> 16) & 0xff, (seed >> 8) & 0xff));
        }
    return QPixmap::fromImage(noise);
}

void BM_ChartSameOverlay(benchmark::State &state)
{
    renderer->setReferencePath(state.range(0) == 0);
    const QPixmap overlay = NoiseOverlay(1);
    for (auto _ : state) {
        QImage globe(771, 771, QImage::Format_ARGB32_Premultiplied);
        renderer->render(overlay, globe, 42.5f, -71.0f);
        benchmark::DoNotOptimize(globe.constBits());
    }
}
BENCHMARK(BM_ChartSameOverlay)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Two overlays in turn, so that each chart takes a new texture.
void BM_ChartNewOverlay(benchmark::State &state)
{
    renderer->setReferencePath(state.range(0) == 0);
    const QPixmap overlays[] = {NoiseOverlay(1), NoiseOverlay(2)};
    int turn = 0;
    for (auto _ : state) {
        QImage globe(771, 771, QImage::Format_ARGB32_Premultiplied);
        renderer->render(overlays[turn ^= 1], globe, 42.5f, -71.0f);
        benchmark::DoNotOptimize(globe.constBits());
    }
}
BENCHMARK(BM_ChartNewOverlay)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_ClipToDialFace(benchmark::State &state)
{
    renderer->setReferencePath(false);
    const QPixmap dial = SkyDial(QSize(790, 790), 1.0);
    QImage globe = GlobeImage(dial);
    renderer->render(NoiseOverlay(1), globe, 42.5f, -71.0f);
    for (auto _ : state) {
        QPixmap chart = dial;
        ClipToDialFace(chart, globe);
        benchmark::DoNotOptimize(chart.cacheKey());
    }
}
BENCHMARK(BM_ClipToDialFace)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    setenv("QT_QPA_PLATFORM", "xcb", 0);
    QGuiApplication application(argc, argv);
    StarChartRenderer chartRenderer;
    if (!chartRenderer.initialise()) {
        fprintf(stderr, "no OpenGL context on this display\n");
        return 1;
    }
    renderer = &chartRenderer;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
