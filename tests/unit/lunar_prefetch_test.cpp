// The Moon's positions computed ahead on two threads (private copies of
// libnova's lunar theory) against the plain sequential calls. libnova keeps
// its nutation between calls, so each figure depends on the calls made before
// it: the two runs start from the same state by running in two processes
// forked from one, and make the program's calls in the program's order.
#include "tracking/ComputeSource.h"
#include "tracking/LunarCache.h"
#include "UtcTime.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

using namespace lunaquill;

namespace {

void Append(std::string &bytes, const void *value, size_t size)
{
    bytes.append(static_cast<const char *>(value), size);
}

// Every figure of a record, bit for bit (the record's padding left out).
void AppendRecord(std::string &bytes, const SourceTrack &r)
{
    for (double value : {r.azimuth, r.elevation, r.doppler, r.skyTemperature, r.spatialOffset,
                         r.degradation, r.pathLossVsPerigee, r.semiDiameter,
                         r.greenwichHourAngle, r.rightAscension, r.declination, r.distance,
                         r.phase, r.subLatitude, r.subLongitude, r.riseTime, r.setTime,
                         r.transitTime})
        Append(bytes, &value, sizeof value);
    Append(bytes, &r.riseSetStatus, sizeof r.riseSetStatus);
    Append(bytes, &r.aboveHorizon, sizeof r.aboveHorizon);
}

struct Counts {
    int steps = 0;
    int moonUpBefore = 0; // steps that may search the day before for the pass's rise
    int prefetched = 0;
};

// As the window recomputes at each step: the DX station, then home; for each
// the Moon with every figure, the Sun with every figure, then Mars. Both
// stations' records live through the run (their last state steers the next
// rise/set). The instants: a minute apart for eight hours, then 7 h 13 min
// apart for a month and a half.
std::string RunSteps(bool prefetch, Counts &counts)
{
    UseLunarPrefetch(prefetch);
    const struct { double latitude, longitude; } stations[] = {{-33.9, 151.2}, {42.51, -70.96}};
    SourceTrack records[2][3] = {};
    std::string bytes;
    const time_t start = 1795478400; // 2026-11-24 00:00 UTC
    for (int step = 0; step < 500 + 120; ++step) {
        const time_t t = step < 500 ? start + 60 * step : start + 500 * 60 + 25980 * (step - 500);
        const struct tm utc = Utc(t);
        if (prefetch)
            counts.prefetched += PrepareMoonRiseSet(utc);
        for (int s = 0; s < 2; ++s) {
            const uint32_t ids[3] = {Moon, Sun, Mars};
            const uint32_t flags[3] = {TrackAll, TrackAll, TrackPosition};
            for (int k = 0; k < 3; ++k) {
                SourceTrack &record = records[s][k];
                const bool wasAbove = record.aboveHorizon;
                ComputeSource(ids[k], flags[k], utc, stations[s].latitude,
                              stations[s].longitude, 1296.0, record);
                if (k == 0 && wasAbove)
                    ++counts.moonUpBefore;
                AppendRecord(bytes, record);
            }
        }
        ++counts.steps;
    }
    UseLunarPrefetch(true);
    return bytes;
}

TEST(LunarPrefetch, FiguresAreThoseOfThePlainCallsBitForBit)
{
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        close(pipeEnds[0]);
        Counts counts;
        const std::string bytes = RunSteps(false, counts);
        size_t written = 0;
        while (written < bytes.size()) {
            const ssize_t n = write(pipeEnds[1], bytes.data() + written, bytes.size() - written);
            if (n <= 0)
                _exit(1);
            written += size_t(n);
        }
        _exit(0);
    }
    close(pipeEnds[1]);
    std::string plain;
    char buffer[65536];
    for (ssize_t n; (n = read(pipeEnds[0], buffer, sizeof buffer)) > 0;)
        plain.append(buffer, size_t(n));
    close(pipeEnds[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

    Counts counts;
    const std::string ahead = RunSteps(true, counts);
    EXPECT_EQ(counts.prefetched, counts.steps); // the threads really ran
    EXPECT_GT(counts.moonUpBefore, 200);
    EXPECT_LT(counts.moonUpBefore, 1000);
    ASSERT_EQ(ahead.size(), plain.size());
    size_t firstDifference = 0;
    while (firstDifference < ahead.size() && ahead[firstDifference] == plain[firstDifference])
        ++firstDifference;
    EXPECT_EQ(firstDifference, ahead.size()) << "first differing byte";
}

} // namespace
