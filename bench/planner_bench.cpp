// Cost of a plan against one refresh of the Moon: a 31-day mutual plan
// (FN42mm with JO62qm), the home station alone, 30 days of conditions, and one
// ComputeSource(Moon, 15) (libnova's rise/set with the full lunar theory).
#include "tracking/ComputeSource.h"
#include "tracking/EmePlanner.h"

#include <benchmark/benchmark.h>

using namespace lunaquill;

namespace {

constexpr int64_t kJune1 = 1748736000; // 2025-06-01 00:00 UTC

PlanRequest Request(bool dx, int days)
{
    PlanRequest r;
    r.home = {42.520833, -70.958333, 0.0};
    r.dx = {52.520833, 13.375, 0.0};
    r.hasDx = dx;
    r.frequencyMHz = 1296.0;
    r.days = days;
    return r;
}

void BM_MutualPlan(benchmark::State &state)
{
    PlanRequest r = Request(state.range(0) != 0, int(state.range(1)));
    int64_t shift = 0;
    for (auto _ : state) {
        r.from = kJune1 + (shift++ % 64) * 3607; // a new start every run
        benchmark::DoNotOptimize(PlanMutualWindows(r));
    }
}
BENCHMARK(BM_MutualPlan)->ArgNames({"dx", "days"})->Args({1, 31})->Args({0, 31})->Args({1, 3})
    ->Unit(benchmark::kMillisecond);

void BM_Conditions(benchmark::State &state)
{
    PlanRequest r = Request(false, 30);
    int64_t shift = 0;
    for (auto _ : state) {
        r.from = kJune1 + (shift++ % 64) * 86400;
        benchmark::DoNotOptimize(PlanConditions(r));
    }
}
BENCHMARK(BM_Conditions)->Unit(benchmark::kMillisecond);

void BM_ComputeMoonAll(benchmark::State &state)
{
    SourceTrack record{};
    int64_t step = 0;
    for (auto _ : state) {
        // A new instant every call, so no date is remembered from the last.
        time_t t = time_t(kJune1 + (step++) * 3600);
        struct tm utc {};
        gmtime_r(&t, &utc);
        ComputeSource(Moon, TrackAll, utc, 42.520833, -70.958333, 1296.0, record);
        benchmark::DoNotOptimize(record);
    }
}
BENCHMARK(BM_ComputeMoonAll)->Unit(benchmark::kMillisecond);

} // namespace
