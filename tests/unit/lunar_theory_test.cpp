// Our evaluation of the lunar theory against libnova's, bit for bit; and the
// Moon's positions computed ahead on two threads against the plain calls.
// libnova keeps its nutation between calls, so the two runs of the program's
// calls start from one state in two forked processes.
#include "tracking/ComputeSource.h"
#include "tracking/LunarCache.h"
#include "tracking/LunarSeries.h"
#include "UtcTime.h"

#include <libnova/lunar.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace lunaquill;
namespace {

bool SameBits(const ln_rect_posn &a, const ln_rect_posn &b)
{
    return memcmp(&a.X, &b.X, sizeof a.X) == 0 && memcmp(&a.Y, &b.Y, sizeof a.Y) == 0
           && memcmp(&a.Z, &b.Z, sizeof a.Z) == 0;
}

// Dates from 1800 to 2200 with every fraction of a day, J2000.0 itself (where
// every power of time is zero) and the instants a rise/set search asks for;
// at full precision and at the truncations libnova's phase and distance use,
// and one above its limit of 0.01. On two threads at once, as the program
// runs it.
TEST(LunarTheory, PositionsAreLibnovasBitForBit)
{
    std::vector<double> dates = {2451545.0, 2451545.0 - 1.0, 2461368.5, 2461369.0 + 1.0 / 1440.0};
    uint64_t state = 88172645463325252u;
    for (int i = 0; i < 400; ++i) {
        state ^= state << 13, state ^= state >> 7, state ^= state << 17;
        dates.push_back(2378497.0 + double(state % 146100000) / 1000.0); // 1800-01-01 + 400 y
    }
    const double precisions[] = {0.0, 0.00001, 0.0001, 0.003, 0.5};
    auto ours = [&](std::vector<ln_rect_posn> &out) {
        for (double precision : precisions)
            for (double jd : dates)
                out.push_back(LunarGeoPosition(jd, precision));
    };
    std::vector<ln_rect_posn> first, second;
    std::thread other(ours, std::ref(second));
    ours(first);
    other.join();
    size_t n = 0;
    for (double precision : precisions)
        for (double jd : dates) {
            ln_rect_posn theirs;
            ln_get_lunar_geo_posn(jd, &theirs, precision);
            ASSERT_TRUE(SameBits(first[n], theirs) && SameBits(second[n], theirs))
                << "JD " << jd << " precision " << precision << ": " << first[n].X << " vs "
                << theirs.X;
            ++n;
        }
    // A sanity check on the reference: the Moon lies 356,000 to 407,000 km away.
    ln_rect_posn moon = LunarGeoPosition(2461369.5, 0);
    const double km = std::sqrt(moon.X * moon.X + moon.Y * moon.Y + moon.Z * moon.Z);
    EXPECT_TRUE(km > 356000 && km < 407000) << km;
}

// Every figure of a record, bit for bit (the record's padding left out).
void AppendRecord(std::string &bytes, const SourceTrack &r)
{
    auto raw = [&](const auto &v) { bytes.append(reinterpret_cast<const char *>(&v), sizeof v); };
    for (double value : {r.azimuth, r.elevation, r.doppler, r.skyTemperature, r.spatialOffset,
                         r.degradation, r.pathLossVsPerigee, r.semiDiameter,
                         r.greenwichHourAngle, r.rightAscension, r.declination, r.distance,
                         r.phase, r.subLatitude, r.subLongitude, r.riseTime, r.setTime,
                         r.transitTime})
        raw(value);
    raw(r.riseSetStatus);
    raw(r.aboveHorizon);
}
constexpr int kSteps = 620;

// As the window recomputes: DX, then home; the Moon and Sun with every figure,
// then Mars; the records live on (their last state steers the next rise/set).
// A minute apart for 8 h, then 7 h 13 min apart for 45 days. A hash of each
// step's figures; counts the steps prefetched and those with the Moon up
// before (these may search the day before for the pass's rise).
std::vector<size_t> RunSteps(bool prefetch, int &prefetched, int &moonUpBefore)
{
    UseLunarPrefetch(prefetch);
    const double stations[2][2] = {{-33.9, 151.2}, {42.51, -70.96}};
    const uint32_t ids[3] = {Moon, Sun, Mars}, flags[3] = {TrackAll, TrackAll, TrackPosition};
    SourceTrack records[2][3] = {};
    std::vector<size_t> hashes;
    const time_t start = 1795478400; // 2026-11-24 00:00 UTC
    for (int step = 0; step < kSteps; ++step) {
        const struct tm utc =
            Utc(step < 500 ? start + 60 * step : start + 30000 + 25980 * (step - 500));
        if (prefetch)
            prefetched += PrepareMoonRiseSet(utc);
        std::string bytes;
        for (int s = 0; s < 2; ++s)
            for (int k = 0; k < 3; ++k) {
                moonUpBefore += k == 0 && records[s][k].aboveHorizon;
                ComputeSource(ids[k], flags[k], utc, stations[s][0], stations[s][1], 1296.0,
                              records[s][k]);
                AppendRecord(bytes, records[s][k]);
            }
        hashes.push_back(std::hash<std::string>{}(bytes));
    }
    UseLunarPrefetch(true);
    return hashes;
}

TEST(LunarPrefetch, FiguresAreThoseOfThePlainCallsBitForBit)
{
    int pipeEnds[2], unused = 0;
    ASSERT_EQ(pipe(pipeEnds), 0);
    std::vector<size_t> plain(kSteps); // under the pipe's 64 KiB: written at once
    const ssize_t size = ssize_t(plain.size() * sizeof plain[0]);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        _exit(write(pipeEnds[1], RunSteps(false, unused, unused).data(), size) == size ? 0 : 1);
    close(pipeEnds[1]);
    ASSERT_EQ(read(pipeEnds[0], plain.data(), size), size);
    close(pipeEnds[0]);
    int status = 0;
    ASSERT_TRUE(waitpid(child, &status, 0) == child && WIFEXITED(status) && !WEXITSTATUS(status));

    int prefetched = 0, moonUpBefore = 0;
    const std::vector<size_t> ahead = RunSteps(true, prefetched, moonUpBefore);
    EXPECT_EQ(prefetched, kSteps); // the threads really ran
    EXPECT_TRUE(moonUpBefore > 200 && moonUpBefore < 1000) << moonUpBefore;
    EXPECT_EQ(std::mismatch(ahead.begin(), ahead.end(), plain.begin()).first - ahead.begin(),
              kSteps) << "first step with other figures";
}

} // namespace
