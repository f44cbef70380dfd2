#include "EmePlanner.h"

#include "ComputeSource.h"
#include "EmeFigures.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace lunaquill {

namespace {

constexpr double kDegPerRad = 57.29577951307855;
constexpr int64_t kDay = 86400;
// The elevation is sampled hourly before edges are bisected. The Moon's
// elevation turns at most twice a day, so between two samples it crosses a
// threshold at most once; a pass that stays between samples (a grazing Moon)
// is caught by refining every sampled extremum.
constexpr int64_t kStep = 3600;

// Civil date of a day count since 1970-01-01 (proleptic Gregorian).
void CivilFromDays(int64_t days, int &year, int &month, int &day)
{
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int64_t doe = days - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    day = int(doy - (153 * mp + 2) / 5 + 1);
    month = int(mp < 10 ? mp + 3 : mp - 9);
    year = int(yoe + era * 400 + (month <= 2));
}

int64_t FloorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }

struct tm UtcOf(int64_t t)
{
    const time_t tt = time_t(t);
    struct tm utc {};
    gmtime_r(&tt, &utc);
    return utc;
}

SourceTrack MoonAt(double latitude, double longitude, double frequencyMHz, int64_t t)
{
    SourceTrack record{};
    ComputeSource(Moon, TrackPosition, UtcOf(t), latitude, longitude, frequencyMHz, record);
    return record;
}

// A station's figures from its Moon at a window's start, middle and end.
WindowSiteFigures SiteFigures(const SourceTrack (&moon)[3])
{
    return {moon[0].azimuth, moon[0].elevation, moon[2].azimuth, moon[2].elevation,
            moon[1].degradation, moon[1].skyTemperature, moon[1].spatialOffset};
}

// The whole second of [a, b] at which f is highest, f having one maximum
// there (golden-section search, then the last few seconds one by one).
template <typename F>
int64_t ArgMax(const F &f, int64_t a, int64_t b)
{
    const double r = 0.6180339887498949;
    double lo = double(a), hi = double(b);
    double x1 = hi - r * (hi - lo), x2 = lo + r * (hi - lo);
    double f1 = f(x1), f2 = f(x2);
    while (hi - lo > 4.0) {
        if (f1 < f2) {
            lo = x1;
            x1 = x2;
            f1 = f2;
            x2 = lo + r * (hi - lo);
            f2 = f(x2);
        } else {
            hi = x2;
            x2 = x1;
            f2 = f1;
            x1 = hi - r * (hi - lo);
            f1 = f(x1);
        }
    }
    int64_t best = std::max(a, int64_t(std::floor(lo)));
    const int64_t last = std::min(b, int64_t(std::ceil(hi)));
    double bestValue = f(double(best));
    for (int64_t t = best + 1; t <= last; ++t) {
        const double v = f(double(t));
        if (v > bestValue) {
            best = t;
            bestValue = v;
        }
    }
    return best;
}

// The highest second of f over [a, b]: the best sample of a kStep grid, then
// refined between its neighbours.
template <typename F>
int64_t HighestOver(const F &f, int64_t a, int64_t b)
{
    int64_t best = a;
    double bestValue = f(double(a));
    for (int64_t t = a;;) {
        t = std::min(t + kStep, b);
        const double v = f(double(t));
        if (v > bestValue) {
            best = t;
            bestValue = v;
        }
        if (t == b)
            break;
    }
    return ArgMax(f, std::max(a, best - kStep), std::min(b, best + kStep));
}

} // namespace

double PlannerMoonElevation(double latitude, double longitude, double seconds)
{
    const double dayCount = std::floor(seconds / kDay);
    int year, month, day;
    CivilFromDays(int64_t(dayCount), year, month, day);
    const double utHours = (seconds - dayCount * kDay) / 3600.0;
    return LowPrecisionMoon(year, month, day, utHours, longitude, latitude).elevation;
}

std::vector<PlanInterval> MoonWindows(const PlanSite &site, int64_t from, int64_t to)
{
    std::vector<PlanInterval> windows;
    if (to <= from)
        return windows;
    auto above = [&](double t) {
        return PlannerMoonElevation(site.latitude, site.longitude, t) - site.minElevation;
    };

    // Samples one step beyond both ends, so that an extremum next to an end
    // is seen as one.
    struct Sample {
        int64_t t;
        double value;
    };
    std::vector<Sample> samples;
    for (int64_t t = from - kStep; t < to + kStep; t += kStep)
        samples.push_back({t, above(double(t))});
    samples.push_back({to + kStep, above(double(to + kStep))});

    // An extremum between samples of one sign may cross the threshold: its
    // own instant joins the samples.
    const size_t gridSize = samples.size();
    for (size_t i = 1; i + 1 < gridSize; ++i) {
        const double a = samples[i - 1].value, b = samples[i].value, c = samples[i + 1].value;
        int64_t extremum;
        if (a < 0 && b < 0 && c < 0 && b >= a && b >= c)
            extremum = ArgMax(above, samples[i - 1].t, samples[i + 1].t);
        else if (a >= 0 && b >= 0 && c >= 0 && b <= a && b <= c)
            extremum = ArgMax([&](double t) { return -above(t); }, samples[i - 1].t,
                              samples[i + 1].t);
        else
            continue;
        samples.push_back({extremum, above(double(extremum))});
    }
    if (samples.size() > gridSize)
        std::sort(samples.begin(), samples.end(),
                  [](const Sample &x, const Sample &y) { return x.t < y.t; });

    // Each change of side, bisected to the first second on the new side.
    bool open = above(double(from)) >= 0;
    int64_t start = from;
    for (size_t i = 0; i + 1 < samples.size(); ++i) {
        const bool upA = samples[i].value >= 0, upB = samples[i + 1].value >= 0;
        if (upA == upB)
            continue;
        int64_t lo = samples[i].t, hi = samples[i + 1].t;
        while (hi - lo > 1) {
            const int64_t mid = lo + (hi - lo) / 2;
            if ((above(double(mid)) >= 0) == upA)
                lo = mid;
            else
                hi = mid;
        }
        if (hi <= from)
            continue;
        if (hi >= to)
            break;
        if (upB && !open) {
            open = true;
            start = hi;
        } else if (!upB && open) {
            open = false;
            windows.push_back({start, hi});
        }
    }
    if (open)
        windows.push_back({start, to});
    return windows;
}

std::vector<PlanInterval> IntersectWindows(const std::vector<PlanInterval> &a,
                                           const std::vector<PlanInterval> &b)
{
    std::vector<PlanInterval> common;
    size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        const int64_t start = std::max(a[i].start, b[j].start);
        const int64_t end = std::min(a[i].end, b[j].end);
        if (start < end)
            common.push_back({start, end});
        if (a[i].end < b[j].end)
            ++i;
        else
            ++j;
    }
    return common;
}

double PolarisationDifference(double homeOffset, double dxOffset)
{
    double delta = std::fmod(homeOffset - dxOffset + 90.0, 180.0);
    if (delta < 0)
        delta += 180.0;
    return delta - 90.0;
}

double PolarisationLoss(double delta)
{
    return -20.0 * std::log10(std::max(std::fabs(std::cos(2.0 * delta / kDegPerRad)), 0.0562));
}

bool PlanRequestValid(const PlanRequest &r)
{
    auto siteValid = [](const PlanSite &s) {
        return std::isfinite(s.latitude) && std::isfinite(s.longitude)
               && std::isfinite(s.minElevation) && std::fabs(s.latitude) <= 90.0
               && std::fabs(s.longitude) <= 360.0 && s.minElevation >= -90.0
               && s.minElevation <= 90.0;
    };
    return r.days >= 1 && r.days <= kMaxPlanDays && std::isfinite(r.frequencyMHz)
           && r.frequencyMHz > 0 && siteValid(r.home) && (!r.hasDx || siteValid(r.dx));
}

std::vector<MutualWindow> PlanMutualWindows(const PlanRequest &r)
{
    std::vector<MutualWindow> plan;
    if (!PlanRequestValid(r))
        return plan;
    const int64_t to = r.from + int64_t(r.days) * kDay;
    std::vector<PlanInterval> windows = MoonWindows(r.home, r.from, to);
    if (r.hasDx)
        windows = IntersectWindows(windows, MoonWindows(r.dx, r.from, to));

    const double nan = std::nan("");
    const double f = r.frequencyMHz;
    auto lower = [&](double t) {
        const double home = PlannerMoonElevation(r.home.latitude, r.home.longitude, t);
        return r.hasDx ? std::min(home, PlannerMoonElevation(r.dx.latitude, r.dx.longitude, t))
                       : home;
    };
    auto doppler = [&](int64_t t) {
        const struct tm utc = UtcOf(t);
        const double home = EchoDoppler(utc, r.home.latitude, r.home.longitude, f);
        return r.hasDx ? (home + EchoDoppler(utc, r.dx.latitude, r.dx.longitude, f)) * 0.5
                       : home;
    };

    for (const PlanInterval &w : windows) {
        MutualWindow m{};
        m.start = w.start;
        m.end = w.end;
        m.minutes = double(w.end - w.start) / 60.0;
        m.middle = w.start + (w.end - w.start) / 2;
        // The last second inside the window stands for its end.
        const int64_t last = std::max(w.start, w.end - 1);
        const int64_t at[3] = {w.start, m.middle, last};
        SourceTrack home[3], dx[3];
        for (int i = 0; i < 3; ++i) {
            home[i] = MoonAt(r.home.latitude, r.home.longitude, f, at[i]);
            if (r.hasDx)
                dx[i] = MoonAt(r.dx.latitude, r.dx.longitude, f, at[i]);
        }
        m.home = SiteFigures(home);
        m.peakTime = HighestOver(lower, w.start, last);
        m.peakElevation = lower(double(m.peakTime));
        m.dopplerStart = doppler(w.start);
        m.dopplerEnd = doppler(last);
        if (r.hasDx) {
            m.dx = SiteFigures(dx);
            for (int i = 0; i < 3; ++i) {
                m.polarisation[i] =
                    PolarisationDifference(home[i].spatialOffset, dx[i].spatialOffset);
                m.polarisationLoss[i] = PolarisationLoss(m.polarisation[i]);
            }
        } else {
            m.dx = {nan, nan, nan, nan, nan, nan, nan};
            for (int i = 0; i < 3; ++i)
                m.polarisation[i] = m.polarisationLoss[i] = nan;
        }
        plan.push_back(m);
    }
    return plan;
}

std::vector<DayConditions> PlanConditions(const PlanRequest &r)
{
    std::vector<DayConditions> days;
    if (!PlanRequestValid(r))
        return days;
    const double lat = r.home.latitude, lon = r.home.longitude;
    auto elevation = [&](double t) { return PlannerMoonElevation(lat, lon, t); };
    const int64_t first = FloorDiv(r.from, kDay) * kDay;
    // The degradation is a figure in dB against ideal conditions: 0 at best,
    // more negative the worse. The best days have the least of it.
    double least = -HUGE_VAL;
    for (int32_t i = 0; i < r.days; ++i) {
        DayConditions c{};
        c.date = first + int64_t(i) * kDay;
        c.transit = HighestOver(elevation, c.date, c.date + kDay - 1);
        const SourceTrack moon = MoonAt(lat, lon, r.frequencyMHz, c.transit);
        c.elevation = moon.elevation;
        c.declination = moon.declination;
        c.distanceKm = moon.distance * 150000000.0;
        c.pathLossDb = moon.pathLossVsPerigee;
        c.skyTemperature = moon.skyTemperature;
        c.degradation = moon.degradation;

        // Geocentric angle between the Sun and the Moon.
        const struct tm utc = UtcOf(c.transit);
        const double ut = utc.tm_hour + utc.tm_min / 60.0 + utc.tm_sec / 3600.0;
        const SunPosition sun =
            LowPrecisionSun(DayNumber(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, ut), ut,
                            lat, lon);
        const double d1 = sun.declination / kDegPerRad, d2 = moon.declination / kDegPerRad;
        const double dRa = (sun.rightAscension - moon.rightAscension * 15.0) / kDegPerRad;
        const double x = std::cos(d1) * std::sin(dRa);
        const double y = std::cos(d2) * std::sin(d1) - std::sin(d2) * std::cos(d1) * std::cos(dRa);
        const double z = std::sin(d2) * std::sin(d1) + std::cos(d2) * std::cos(d1) * std::cos(dRa);
        c.sunMoonAngle = std::atan2(std::hypot(x, y), z) * kDegPerRad;
        c.sunNear = c.sunMoonAngle < kSunNearDegrees;
        least = std::max(least, c.degradation);
        days.push_back(c);
    }
    for (DayConditions &c : days)
        c.best = c.degradation >= least - kBestDayMarginDb;
    return days;
}

} // namespace lunaquill
