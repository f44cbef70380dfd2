// The planner against numbers from outside it: brute-force scans of the same elevation
// function, libnova's lunar rise/set, transit, distance and Sun, and hand-worked polarisation.
#include "tracking/EmePlanner.h"
#include "tracking/ComputeSource.h"
#include "UtcTime.h"

#include <gtest/gtest.h>
#include <libnova/libnova.h>

#include <cmath>
#include <vector>

using namespace lunaquill;

namespace {

constexpr int64_t kJune1 = 1748736000; // 2025-06-01 00:00:00 UTC
constexpr int64_t kDay = 86400;

// Subsquare centres: FN42mm is 42 N + 12 * 2.5' + 1.25', 72 W + 12 * 5' + 2.5';
// JO62qm is 52 N + 31.25', 12 E + 16 * 5' + 2.5'.
const PlanSite kBoston{42.0 + 31.25 / 60, -72.0 + 62.5 / 60, 0.0};
const PlanSite kBerlin{52.0 + 31.25 / 60, 12.0 + 82.5 / 60, 0.0};

double Elevation(const PlanSite &s, int64_t t)
{
    return PlannerMoonElevation(s.latitude, s.longitude, double(t));
}

// A window opens at the first scanned second at or above the minimum, closes at the next below.
std::vector<PlanInterval> Scan(const PlanSite &s, int64_t from, int64_t to, int64_t step)
{
    std::vector<PlanInterval> windows;
    for (int64_t t = from; t < to; t += step) {
        const bool up = Elevation(s, t) >= s.minElevation;
        const bool open = !windows.empty() && windows.back().end == to;
        if (up && !open)
            windows.push_back({t, to});
        else if (!up && open)
            windows.back().end = t;
    }
    return windows;
}

template <typename W>
void ExpectSameWindows(const std::vector<W> &found, const std::vector<PlanInterval> &scanned,
                       int64_t tolerance)
{
    ASSERT_EQ(found.size(), scanned.size());
    for (size_t i = 0; i < found.size(); ++i) {
        EXPECT_NEAR(double(found[i].start), double(scanned[i].start), double(tolerance)) << i;
        EXPECT_NEAR(double(found[i].end), double(scanned[i].end), double(tolerance)) << i;
    }
}

double Jd(int64_t t) { time_t tt = time_t(t); return ln_get_julian_from_timet(&tt); }
double FromJd(double jd) { time_t t; ln_get_timet_from_julian(jd, &t); return double(t); }

PlanRequest Request(PlanSite home, int days, const PlanSite *dx = nullptr)
{
    return PlanRequest{home, dx ? *dx : PlanSite{}, dx != nullptr, 1296.0, kJune1, days};
}

} // namespace

// Edges against scans of the same elevation: to the second over 3 days; to 10 s at poles,
// equator, high latitudes and minimum elevations, over weeks with the Moon crossing the equator.
TEST(MoonWindows, AgreeWithBruteForceScans)
{
    const int64_t from = kJune1 + 3600 * 7 + 123;
    ExpectSameWindows(MoonWindows(kBoston, from, from + 3 * kDay),
                      Scan(kBoston, from, from + 3 * kDay, 1), 1);
    const PlanSite sites[] = {{90.0, 0.0, 0.0},   {-90.0, 0.0, 0.0},  {0.0, 0.0, 0.0},
                              {0.0, 179.9, -2.0}, {78.2, 15.6, 0.0},  {-77.8, 166.7, 0.0},
                              {69.6, 18.9, 5.0},  {52.52, 13.29, 20.0}, {89.5, -45.0, -2.0},
                              {-66.0, 110.0, 2.0}};
    for (int64_t start : {kJune1, kJune1 + 9 * kDay})
        for (const PlanSite &s : sites) {
            SCOPED_TRACE(testing::Message() << s.latitude << "," << s.longitude << " @" << start);
            ExpectSameWindows(MoonWindows(s, start, start + 7 * kDay),
                              Scan(s, start, start + 7 * kDay, 10), 10);
        }
}

// The same station twice: its own rise to set, within minutes of libnova's (geocentric +0.125
// deg, about -0.83 topocentric); no polarisation loss; the echo higher rising, lower setting.
TEST(MutualWindows, SameStationTwiceIsItsOwnRiseToSet)
{
    const PlanSite home{kBoston.latitude, kBoston.longitude, -0.83};
    const PlanRequest r = Request(home, 5, &home);
    const std::vector<MutualWindow> plan = PlanMutualWindows(r);
    ExpectSameWindows(plan, MoonWindows(home, r.from, r.from + 5 * kDay), 0);
    ASSERT_GE(plan.size(), 4u);
    ln_lnlat_posn observer{home.longitude, home.latitude};
    for (const MutualWindow &w : plan) {
        EXPECT_NEAR(w.polarisation[1], 0.0, 1e-9);
        EXPECT_NEAR(w.polarisationLoss[1], 0.0, 1e-9);
        ln_rst_time rise, set;
        ASSERT_EQ(ln_get_lunar_rst(Jd(w.start - 3 * 3600), &observer, &rise), 0);
        ASSERT_EQ(ln_get_lunar_rst(Jd(w.end - 3 * 3600), &observer, &set), 0);
        if (w.start > r.from) {
            EXPECT_NEAR(double(w.start), FromJd(rise.rise), 240.0) << w.start;
            EXPECT_GT(w.dopplerStart, 0.0);
        }
        if (w.end < r.from + 5 * kDay) {
            EXPECT_NEAR(double(w.end), FromJd(set.set), 240.0) << w.end;
            EXPECT_LT(w.dopplerEnd, 0.0);
        }
    }
}

// The poles never share the Moon (elevation there is about +-declination); with libnova's
// declination above +5 deg all of June 1-2, 2025, it never sets at one, never rises at the other.
TEST(MutualWindows, PolesNeverShareAndCircumpolarMoon)
{
    const PlanSite north{90.0, 0.0, 0.0}, south{-90.0, 0.0, 0.0};
    EXPECT_TRUE(PlanMutualWindows(Request(north, 31, &south)).empty());
    for (int64_t t = kJune1; t <= kJune1 + 2 * kDay; t += 3600) {
        ln_equ_posn equ;
        ln_get_lunar_equ_coords(Jd(t), &equ);
        ASSERT_GT(equ.dec, 5.0) << t;
    }
    ExpectSameWindows(PlanMutualWindows(Request(north, 2)), {{kJune1, kJune1 + 2 * kDay}}, 0);
    EXPECT_TRUE(PlanMutualWindows(Request(south, 2)).empty());
}

// A real pair: the overlap of two per-10 s scans, one station on its minimum at each edge, the
// lower one's peak a per-second scan's, the middle figures and elevation the calculator's.
TEST(MutualWindows, BostonBerlinOverlapAndFigures)
{
    const PlanSite dxSite{kBerlin.latitude, kBerlin.longitude, 10.0};
    PlanRequest r = Request(kBoston, 7, &dxSite);
    r.frequencyMHz = 144.0;
    const std::vector<MutualWindow> plan = PlanMutualWindows(r);
    const int64_t to = r.from + 7 * kDay;
    ExpectSameWindows(
        plan, IntersectWindows(Scan(kBoston, r.from, to, 10), Scan(dxSite, r.from, to, 10)), 10);
    ASSERT_GE(plan.size(), 3u);
    for (const MutualWindow &w : plan) {
        EXPECT_DOUBLE_EQ(w.minutes, (w.end - w.start) / 60.0);
        EXPECT_NEAR(std::min(w.home.elevationStart, w.dx.elevationStart - 10.0), 0.0, 0.01);
        EXPECT_NEAR(std::min(w.home.elevationEnd, w.dx.elevationEnd - 10.0), 0.0, 0.01);
        double scanPeak = -90.0;
        for (int64_t t = w.start; t < w.end; ++t)
            scanPeak = std::max(scanPeak, std::min(Elevation(kBoston, t), Elevation(kBerlin, t)));
        EXPECT_NEAR(w.peakElevation, scanPeak, 1e-9);
        EXPECT_NEAR(std::min(Elevation(kBoston, w.peakTime), Elevation(kBerlin, w.peakTime)),
                    scanPeak, 1e-9);
        SourceTrack home{}, dx{};
        const struct tm middle = Utc(time_t(w.middle));
        ComputeSource(Moon, TrackPosition, middle, kBoston.latitude, kBoston.longitude, 144, home);
        ComputeSource(Moon, TrackPosition, middle, kBerlin.latitude, kBerlin.longitude, 144, dx);
        EXPECT_DOUBLE_EQ(Elevation(kBoston, w.middle), home.elevation);
        EXPECT_DOUBLE_EQ(w.home.degradation, home.degradation);
        EXPECT_DOUBLE_EQ(w.dx.skyTemperature, dx.skyTemperature);
        EXPECT_DOUBLE_EQ(w.polarisation[1],
                         PolarisationDifference(home.spatialOffset, dx.spatialOffset));
    }
}

// Hand-worked: 30 deg -> |cos 60| = 0.5 -> 6.0206 dB; 22.5 deg -> cos 45 -> 3.0103 dB; 20 deg
// -> cos 40 = 0.76604 -> 2.3149 dB; 45 deg -> cos 90 = 0, floored at 0.0562 -> 25.005 dB.
TEST(Polarisation, FoldAndLoss)
{
    const struct { double home, dx, delta, loss; } rows[] = {
        {10.0, -20.0, 30.0, 6.0206},  {100.0, -100.0, 20.0, 2.3149}, {-170.0, 10.0, 0.0, 0.0},
        {45.0, -45.0, -90.0, 0.0},    {-60.0, 7.5, -67.5, 3.0103},   {170.0, 125.0, 45.0, 25.0049},
        {-179.0, 179.0, 2.0, 0.0212}, {0.0, 0.0, 0.0, 0.0}};
    for (const auto &row : rows) {
        EXPECT_NEAR(PolarisationDifference(row.home, row.dx), row.delta, 1e-9) << row.home;
        EXPECT_NEAR(PolarisationLoss(row.delta), row.loss, 1e-3) << row.home;
    }
}

// June 2025 at FN42mm, 1296 MHz, against a per-minute scan and libnova: the highest instant
// within 8 min of the meridian transit well inside the date (near its ends a fast-moving
// declination shifts it more), declination 0.3 deg, distance 300 km, Sun-Moon angle 0.5 deg;
// best days within 10,000 km of perigee (40 log10(1 + 10000 / 357000) = 0.48 dB).
TEST(Conditions, AgreeWithLibnova)
{
    PlanRequest r = Request(kBoston, 30);
    r.frequencyMHz = 1296.0;
    r.from += 5 * 3600 + 17; // the first day is the whole of June 1
    const std::vector<DayConditions> days = PlanConditions(r);
    ASSERT_EQ(days.size(), 30u);
    ln_lnlat_posn observer{kBoston.longitude, kBoston.latitude};
    int best = 0, near = 0;
    double perigee = 1e9;
    for (const DayConditions &d : days)
        perigee = std::min(perigee, ln_get_lunar_earth_dist(Jd(d.transit)));
    for (size_t i = 0; i < days.size(); ++i) {
        const DayConditions &d = days[i];
        EXPECT_EQ(d.date, kJune1 + int64_t(i) * kDay);
        for (int64_t t = d.date; t < d.date + kDay; t += 60)
            ASSERT_LE(Elevation(kBoston, t), d.elevation + 1e-9) << i;
        ln_rst_time rst;
        ASSERT_EQ(ln_get_lunar_rst(Jd(d.date), &observer, &rst), 0);
        const bool inside = d.transit > d.date + 3600 && d.transit < d.date + kDay - 3600;
        EXPECT_NEAR(double(d.transit), inside ? FromJd(rst.transit) : d.transit, 480.0) << i;
        const double jd = Jd(d.transit);
        ln_equ_posn moon, sun;
        ln_get_lunar_equ_coords(jd, &moon);
        ln_get_solar_equ_coords(jd, &sun);
        EXPECT_NEAR(d.declination, moon.dec, 0.3) << i;
        EXPECT_NEAR(d.distanceKm, ln_get_lunar_earth_dist(jd), 300.0) << i;
        const double angle = ln_get_angular_separation(&moon, &sun);
        EXPECT_NEAR(d.sunMoonAngle, angle, 0.5) << i;
        EXPECT_TRUE(std::fabs(angle - 15.0) < 1.0 || d.sunNear == (angle < 15.0)) << i;
        EXPECT_LT(d.best ? ln_get_lunar_earth_dist(jd) - perigee : 0.0, 10000.0) << i;
        best += d.best;
        near += d.sunNear;
    }
    EXPECT_GE(best, 1);
    EXPECT_TRUE(near >= 1 && near <= 4) << near; // new Moon 2025-06-25: a day or two, Sun close
}

TEST(PlanRequest, RefusesWhatCannotBePlanned)
{
    ASSERT_TRUE(PlanRequestValid(Request(kBoston, kMaxPlanDays)));
    const PlanRequest bad[] = {
        Request(kBoston, 0), Request(kBoston, kMaxPlanDays + 1), Request({90.5, 0.0, 0.0}, 3),
        Request({0.0, std::nan(""), 0.0}, 3), {kBoston, {}, false, -1.0, kJune1, 3},
        {kBoston, {}, false, HUGE_VAL, kJune1, 3},
        {kBoston, {0.0, 0.0, 91.0}, true, 1296, kJune1, 3}};
    for (const PlanRequest &r : bad) {
        EXPECT_FALSE(PlanRequestValid(r));
        EXPECT_TRUE(PlanMutualWindows(r).empty());
        EXPECT_TRUE(PlanConditions(r).empty());
    }
}
