// The Moon's positions computed ahead on two threads (private copies of
// libnova's lunar theory) against the plain calls. libnova keeps its nutation
// between calls, so the two runs start from one state in two forked processes
// and make the program's calls in the program's order.
#include "tracking/ComputeSource.h"
#include "tracking/LunarCache.h"
#include "UtcTime.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <string>
#include <vector>

using namespace lunaquill;
namespace {

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
