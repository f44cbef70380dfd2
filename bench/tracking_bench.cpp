// Cost of the calculator per source and request set, and of one refill of
// the favourites table (the Moon with every figure for 500 stations).
#include "tracking/ComputeSource.h"
#include "tracking/LunarSeries.h"

#include <libnova/lunar.h>

#include <benchmark/benchmark.h>

using namespace lunaquill;

namespace {

struct tm Instant(int step)
{
    time_t t = 1748736000 + step * 3600; // from 2025-06-01 00:00 UTC
    struct tm utc {};
    gmtime_r(&t, &utc);
    return utc;
}

void BM_ComputeSource(benchmark::State &state)
{
    const uint32_t id = (uint32_t)state.range(0);
    const uint32_t flags = (uint32_t)state.range(1);
    SourceTrack record{};
    int step = 0;
    for (auto _ : state) {
        // A new instant every call, so no date is remembered from the last.
        ComputeSource(id, flags, Instant(step++), 42.5, -71.0, 1296.0, record);
        benchmark::DoNotOptimize(record);
    }
    state.SetLabel(kSourceNames[id]);
}
BENCHMARK(BM_ComputeSource)
    ->ArgNames({"id", "flags"})
    ->Args({Moon, 1})->Args({Moon, 15})
    ->Args({Sun, 1})->Args({Sun, 15})
    ->Args({Jupiter, 1})->Args({Jupiter, 15})
    ->Args({CygnusA, 1})->Args({CygnusA, 15})
    ->Unit(benchmark::kMicrosecond);

// The full lunar theory at one date: libnova's evaluation and ours (the same
// bits), at a new date each time.
void BM_LunarTheoryLibnova(benchmark::State &state)
{
    double jd = 2461369.5;
    for (auto _ : state) {
        ln_rect_posn moon;
        ln_get_lunar_geo_posn(jd += 0.01, &moon, 0);
        benchmark::DoNotOptimize(moon);
    }
}
BENCHMARK(BM_LunarTheoryLibnova)->Unit(benchmark::kMicrosecond);

void BM_LunarTheoryOurs(benchmark::State &state)
{
    double jd = 2461369.5;
    for (auto _ : state)
        benchmark::DoNotOptimize(LunarGeoPosition(jd += 0.01, 0));
}
BENCHMARK(BM_LunarTheoryOurs)->Unit(benchmark::kMicrosecond);

void BM_FavouritesRefill(benchmark::State &state)
{
    // 500 stations spread over the globe, one instant per refill.
    SourceTrack records[500] = {};
    int step = 0;
    for (auto _ : state) {
        struct tm utc = Instant(step++);
        for (int i = 0; i < 500; ++i) {
            double lat = -80.0 + (i * 37 % 160);
            double lon = -179.0 + (i * 71 % 358);
            ComputeSource(Moon, TrackAll, utc, lat, lon, 144.0, records[i]);
        }
        benchmark::DoNotOptimize(records);
    }
}
BENCHMARK(BM_FavouritesRefill)->Unit(benchmark::kMillisecond);

} // namespace
