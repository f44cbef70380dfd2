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

// FN42mm and JO62qm, the centres of their subsquares: FN42 is 42..43 N, 72..70 W; m (12)
// adds 12 * 2.5' + 1.25' of latitude and 12 * 5' + 2.5' of longitude.
const PlanSite kBoston{42.0 + 31.25 / 60, -72.0 + 62.5 / 60, 0.0};
// JO62: 52..53 N, 12..14 E; q (16) adds 16 * 5' + 2.5' of longitude.
const PlanSite kBerlin{52.0 + 31.25 / 60, 12.0 + 82.5 / 60, 0.0};

// The windows a scan of every `step` seconds finds: a window opens at the first scanned
// second at or above the minimum and closes at the first one below it.
std::vector<PlanInterval> Scan(const PlanSite &s, int64_t from, int64_t to, int64_t step)
{
    std::vector<PlanInterval> windows;
    bool open = false;
    int64_t start = 0;
    for (int64_t t = from; t < to; t += step) {
        const bool up = PlannerMoonElevation(s.latitude, s.longitude, double(t)) >= s.minElevation;
        if (up && !open)
            start = t;
        else if (!up && open)
            windows.push_back({start, t});
        open = up;
    }
    if (open)
        windows.push_back({start, to});
    return windows;
}

void ExpectSameWindows(const std::vector<PlanInterval> &found,
                       const std::vector<PlanInterval> &scanned, int64_t tolerance)
{
    ASSERT_EQ(found.size(), scanned.size());
    for (size_t i = 0; i < found.size(); ++i) {
        EXPECT_NEAR(double(found[i].start), double(scanned[i].start), double(tolerance)) << i;
        EXPECT_NEAR(double(found[i].end), double(scanned[i].end), double(tolerance)) << i;
    }
}

double Jd(int64_t t)
{
    time_t tt = time_t(t);
    return ln_get_julian_from_timet(&tt);
}

int64_t FromJd(double jd)
{
    time_t t;
    ln_get_timet_from_julian(jd, &t);
    return int64_t(t);
}

double LibnovaDeclination(int64_t t)
{
    ln_equ_posn equ;
    ln_get_lunar_equ_coords(Jd(t), &equ);
    return equ.dec;
}

} // namespace

TEST(PlannerElevation, IsThePanelsElevationAtWholeSeconds)
{
    for (int64_t t : {kJune1, kJune1 + 12345, kJune1 + 40 * kDay + 86399}) {
        SourceTrack r{};
        ComputeSource(Moon, TrackPosition, Utc(time_t(t)), kBoston.latitude, kBoston.longitude,
                      1296.0, r);
        EXPECT_DOUBLE_EQ(PlannerMoonElevation(kBoston.latitude, kBoston.longitude, double(t)),
                         r.elevation);
    }
}

// Edges to the second against a per-second scan of the same function (3 days), and to
// 10 s against a per-10 s scan at the poles, the equator, high latitudes and with a
// minimum elevation, over a week in which the Moon crosses the equator.
TEST(MoonWindows, AgreeWithBruteForceScans)
{
    const int64_t from = kJune1 + 3600 * 7 + 123;
    ExpectSameWindows(MoonWindows(kBoston, from, from + 3 * kDay),
                      Scan(kBoston, from, from + 3 * kDay, 1), 1);

    const PlanSite sites[] = {
        {90.0, 0.0, 0.0},   {-90.0, 0.0, 0.0},   {0.0, 0.0, 0.0},    {0.0, 179.9, -2.0},
        {78.2, 15.6, 0.0},  {-77.8, 166.7, 0.0}, {69.6, 18.9, 5.0},  {52.520833, 13.291667, 20.0},
        {89.5, -45.0, -2.0}, {-66.0, 110.0, 2.0},
    };
    for (int64_t start : {kJune1, kJune1 + 9 * kDay}) {
        for (const PlanSite &s : sites) {
            SCOPED_TRACE(testing::Message() << s.latitude << "," << s.longitude << " min "
                                            << s.minElevation << " from " << start);
            ExpectSameWindows(MoonWindows(s, start, start + 7 * kDay),
                              Scan(s, start, start + 7 * kDay, 10), 10);
        }
    }
}

// The same station twice: its own rise to set. Against libnova's lunar rise and set
// (geocentric altitude +0.125 deg: parallax less refraction), with the minimum put where
// that horizon falls topocentrically, about -0.83 deg; the low-precision Moon then agrees
// within a few minutes.
TEST(MutualWindows, SameStationTwiceIsItsOwnRiseToSet)
{
    PlanRequest r;
    r.home = kBoston;
    r.home.minElevation = -0.83;
    r.dx = r.home;
    r.hasDx = true;
    r.from = kJune1;
    r.days = 5;
    const std::vector<MutualWindow> plan = PlanMutualWindows(r);
    const std::vector<PlanInterval> own = MoonWindows(r.home, r.from, r.from + 5 * kDay);
    ASSERT_EQ(plan.size(), own.size());
    ASSERT_GE(plan.size(), 4u);
    ln_lnlat_posn observer{r.home.longitude, r.home.latitude};
    for (size_t i = 0; i < plan.size(); ++i) {
        EXPECT_EQ(plan[i].start, own[i].start);
        EXPECT_EQ(plan[i].end, own[i].end);
        // Same station: no polarisation difference, no loss, Doppler its own echo.
        EXPECT_NEAR(plan[i].polarisation[1], 0.0, 1e-9);
        EXPECT_NEAR(plan[i].polarisationLoss[1], 0.0, 1e-9);
        if (plan[i].start > r.from) {
            ln_rst_time rst;
            ASSERT_EQ(ln_get_lunar_rst(Jd(plan[i].start - 3 * 3600), &observer, &rst), 0);
            EXPECT_NEAR(double(plan[i].start), double(FromJd(rst.rise)), 240.0) << i;
            // Rising: the echo comes back higher (the Moon approaches).
            EXPECT_GT(plan[i].dopplerStart, 0.0);
        }
        if (plan[i].end < r.from + 5 * kDay) {
            ln_rst_time rst;
            ASSERT_EQ(ln_get_lunar_rst(Jd(plan[i].end - 3 * 3600), &observer, &rst), 0);
            EXPECT_NEAR(double(plan[i].end), double(FromJd(rst.set)), 240.0) << i;
            EXPECT_LT(plan[i].dopplerEnd, 0.0);
        }
    }
}

// Two stations at the poles never share the Moon (topocentric elevation there is about
// +-declination less a degree of parallax); each pole alone sees a Moon that never sets
// while libnova's declination stays well on its side, and none while it stays on the other.
TEST(MutualWindows, PolesNeverShareAndCircumpolarMoon)
{
    PlanRequest r;
    r.home = {90.0, 0.0, 0.0};
    r.dx = {-90.0, 0.0, 0.0};
    r.hasDx = true;
    r.from = kJune1;
    r.days = 31;
    EXPECT_TRUE(PlanMutualWindows(r).empty());

    // Find three days with the Moon north of +5 deg throughout (libnova's full theory).
    int64_t from = 0;
    for (int64_t t = kJune1; t < kJune1 + 30 * kDay && !from; t += kDay / 4) {
        bool north = true;
        for (int64_t u = t; u <= t + 3 * kDay && north; u += 3600)
            north = LibnovaDeclination(u) > 5.0;
        if (north)
            from = t;
    }
    ASSERT_NE(from, 0);
    r.from = from;
    r.days = 3;
    r.hasDx = false;
    const std::vector<MutualWindow> north = PlanMutualWindows(r);
    ASSERT_EQ(north.size(), 1u);
    EXPECT_EQ(north[0].start, from);
    EXPECT_EQ(north[0].end, from + 3 * kDay);
    EXPECT_NEAR(north[0].minutes, 3 * 1440.0, 1e-9);
    r.home = {-90.0, 0.0, 0.0};
    EXPECT_TRUE(PlanMutualWindows(r).empty());
}

// A real pair: the windows are the overlap of the two stations' own windows, every edge
// sits on one station's minimum (or on the ends of the range), and the figures at the
// edges and the peak are those of the calculator at those seconds.
TEST(MutualWindows, BostonBerlinOverlapAndFigures)
{
    PlanRequest r;
    r.home = kBoston;
    r.dx = kBerlin;
    r.dx.minElevation = 10.0;
    r.hasDx = true;
    r.frequencyMHz = 144.0;
    r.from = kJune1;
    r.days = 7;
    const std::vector<MutualWindow> plan = PlanMutualWindows(r);
    const int64_t to = r.from + 7 * kDay;
    // Brute force on the intersection of two per-10 s scans.
    const std::vector<PlanInterval> scanned =
        IntersectWindows(Scan(r.home, r.from, to, 10), Scan(r.dx, r.from, to, 10));
    ASSERT_EQ(plan.size(), scanned.size());
    ASSERT_GE(plan.size(), 3u);
    for (size_t i = 0; i < plan.size(); ++i) {
        const MutualWindow &w = plan[i];
        EXPECT_NEAR(double(w.start), double(scanned[i].start), 10.0);
        EXPECT_NEAR(double(w.end), double(scanned[i].end), 10.0);
        EXPECT_DOUBLE_EQ(w.minutes, (w.end - w.start) / 60.0);
        EXPECT_GE(w.home.elevationStart, -0.01);
        EXPECT_GE(w.dx.elevationStart, 10.0 - 0.01);
        // One station is at its minimum at each edge.
        EXPECT_NEAR(std::min(w.home.elevationStart, w.dx.elevationStart - 10.0), 0.0, 0.01);
        EXPECT_NEAR(std::min(w.home.elevationEnd, w.dx.elevationEnd - 10.0), 0.0, 0.01);
        // The peak of the lower station lies inside and beats both edges.
        EXPECT_GE(w.peakTime, w.start);
        EXPECT_LT(w.peakTime, w.end);
        EXPECT_GE(w.peakElevation, std::min(w.home.elevationStart, w.dx.elevationStart));
        EXPECT_GE(w.peakElevation, std::min(w.home.elevationEnd, w.dx.elevationEnd));
        double scanPeak = -90.0;
        for (int64_t t = w.start; t < w.end; ++t)
            scanPeak = std::max(scanPeak,
                                std::min(PlannerMoonElevation(kBoston.latitude, kBoston.longitude, t),
                                         PlannerMoonElevation(kBerlin.latitude, kBerlin.longitude, t)));
        EXPECT_NEAR(w.peakElevation, scanPeak, 1e-9);
        // Middle figures as the calculator gives them.
        SourceTrack home{}, dx{};
        ComputeSource(Moon, TrackPosition, Utc(time_t(w.middle)), kBoston.latitude,
                      kBoston.longitude, 144.0, home);
        ComputeSource(Moon, TrackPosition, Utc(time_t(w.middle)), kBerlin.latitude,
                      kBerlin.longitude, 144.0, dx);
        EXPECT_DOUBLE_EQ(w.home.degradation, home.degradation);
        EXPECT_DOUBLE_EQ(w.dx.skyTemperature, dx.skyTemperature);
        EXPECT_DOUBLE_EQ(w.polarisation[1],
                         PolarisationDifference(home.spatialOffset, dx.spatialOffset));
        // Mutual Doppler at 144 MHz stays within a few hundred hertz.
        EXPECT_LT(std::fabs(w.dopplerStart), 500.0);
    }
}

// Hand-worked: 30 deg -> |cos 60| = 0.5 -> 6.0206 dB; 22.5 deg -> cos 45 -> 3.0103 dB;
// 20 deg -> cos 40 = 0.76604 -> 2.3149 dB;
// 45 deg -> cos 90 = 0, floored at 0.0562 -> 25.005 dB.
TEST(Polarisation, FoldAndLoss)
{
    const struct { double home, dx, delta, loss; } rows[] = {
        {10.0, -20.0, 30.0, 6.0206},   {100.0, -100.0, 20.0, 2.3149},
        {-170.0, 10.0, 0.0, 0.0},      {45.0, -45.0, -90.0, 0.0},
        {-60.0, 7.5, -67.5, 3.0103},   {170.0, 125.0, 45.0, 25.0049},
        {-179.0, 179.0, 2.0, 0.0212},  {0.0, 0.0, 0.0, 0.0},
    };
    for (const auto &row : rows) {
        const double delta = PolarisationDifference(row.home, row.dx);
        EXPECT_NEAR(delta, row.delta, 1e-9) << row.home << " " << row.dx;
        EXPECT_NEAR(PolarisationLoss(delta), row.loss, 1e-3) << row.home << " " << row.dx;
    }
}

// Daily figures (June 2025 at FN42mm, 1296 MHz) against a per-minute scan of the date, libnova's full lunar theory and its
// Sun: the highest instant within 8 minutes of libnova's meridian transit when that falls
// inside the date (the highest elevation leads or lags the meridian by minutes while the
// declination moves fast), declination within 0.3 deg, distance within 300 km, Sun-Moon
// angle within 0.5 deg.
TEST(Conditions, AgreeWithLibnova)
{
    PlanRequest r;
    r.home = kBoston;
    r.frequencyMHz = 1296.0;
    r.from = kJune1 + 5 * 3600 + 17; // the first day is the whole of June 1
    r.days = 30;
    const std::vector<DayConditions> days = PlanConditions(r);
    ASSERT_EQ(days.size(), 30u);
    ln_lnlat_posn observer{kBoston.longitude, kBoston.latitude};
    int best = 0, near = 0;
    double perigee = 1e9; // the least distance of the month, by libnova
    for (const DayConditions &d : days)
        perigee = std::min(perigee, ln_get_lunar_earth_dist(Jd(d.transit)));
    for (size_t i = 0; i < days.size(); ++i) {
        const DayConditions &d = days[i];
        EXPECT_EQ(d.date, kJune1 + int64_t(i) * kDay);
        ASSERT_GE(d.transit, d.date);
        ASSERT_LT(d.transit, d.date + kDay);
        const double jd = Jd(d.transit);
        ln_rst_time rst;
        ln_get_lunar_rst(Jd(d.date), &observer, &rst);
        const int64_t transit = FromJd(rst.transit);
        auto elevation = [&](int64_t t) {
            return PlannerMoonElevation(kBoston.latitude, kBoston.longitude, double(t));
        };
        for (int64_t t = d.date; t < d.date + kDay; t += 60)
            ASSERT_LE(elevation(t), d.elevation + 1e-9) << i;
        // A day whose highest Moon is at one of its ends, with the declination
        // falling or rising fast, has its meridian passage lower.
        if (d.transit > d.date + 3600 && d.transit < d.date + kDay - 3600) {
            EXPECT_NEAR(double(d.transit), double(transit), 480.0) << i;
        }
        ln_equ_posn moon, sun;
        ln_get_lunar_equ_coords(jd, &moon);
        ln_get_solar_equ_coords(jd, &sun);
        EXPECT_NEAR(d.declination, moon.dec, 0.3) << i;
        EXPECT_NEAR(d.distanceKm, ln_get_lunar_earth_dist(jd), 300.0) << i;
        const double angle = ln_get_angular_separation(&moon, &sun);
        EXPECT_NEAR(d.sunMoonAngle, angle, 0.5) << i;
        if (std::fabs(angle - 15.0) > 1.0) {
            EXPECT_EQ(d.sunNear, angle < 15.0) << i;
        }
        // At 1296 MHz the sky adds little: the best days (least degradation, the
        // figure nearest 0) are those nearest perigee, 0.5 dB being some 10,000 km
        // there (40 log10(1 + 10000 / 357000) = 0.48 dB).
        if (d.best) {
            EXPECT_LT(ln_get_lunar_earth_dist(jd), perigee + 10000.0) << i;
        }
        best += d.best;
        near += d.sunNear;
    }
    EXPECT_GE(best, 1);
    // New Moon of 2025-06-25: a day or two with the Sun close.
    EXPECT_GE(near, 1);
    EXPECT_LE(near, 4);
}

TEST(PlanRequest, RefusesWhatCannotBePlanned)
{
    PlanRequest good;
    good.home = kBoston;
    good.from = kJune1;
    ASSERT_TRUE(PlanRequestValid(good));
    auto with = [&](auto change) {
        PlanRequest r = good;
        change(r);
        return r;
    };
    const PlanRequest bad[] = {
        with([](PlanRequest &r) { r.days = 0; }),
        with([](PlanRequest &r) { r.days = kMaxPlanDays + 1; }),
        with([](PlanRequest &r) { r.home.latitude = 90.5; }),
        with([](PlanRequest &r) { r.home.longitude = std::nan(""); }),
        with([](PlanRequest &r) { r.frequencyMHz = -1.0; }),
        with([](PlanRequest &r) { r.frequencyMHz = HUGE_VAL; }),
        with([](PlanRequest &r) { r.hasDx = true; r.dx.minElevation = 91.0; }),
    };
    for (const PlanRequest &r : bad) {
        EXPECT_FALSE(PlanRequestValid(r));
        EXPECT_TRUE(PlanMutualWindows(r).empty());
        EXPECT_TRUE(PlanConditions(r).empty());
    }
}
