// Planning ahead on the program's own Moon: when a home and a DX station both
// see it (mutual windows, with the figures of each window), and how the EME
// conditions run day by day. Plain C++ over the EME figures; no Qt.
//
// Every elevation is the one the panels show (LowPrecisionMoon through
// EmeMoonTrack), so a plan agrees with what the window shows at that instant.
// Instants are whole seconds since 1970-01-01 00:00 UTC.
#pragma once

#include <cstdint>
#include <vector>

namespace lunaquill {

struct PlanSite {
    double latitude = 0.0;      // degrees, north positive
    double longitude = 0.0;     // degrees, east positive
    double minElevation = 0.0;  // degrees: the Moon counts from here up
};

struct PlanRequest {
    PlanSite home;
    PlanSite dx;
    bool hasDx = false;         // without one: the home station's own windows
    double frequencyMHz = 1296.0;
    int64_t from = 0;
    int32_t days = 3;
};

// [start, end): the Moon is at or above the minimum elevation from the second
// `start` up to, not including, the second `end`.
struct PlanInterval {
    int64_t start;
    int64_t end;
};

// One station's Moon in a window: azimuth and elevation (degrees) at start and
// end; degradation (dB), sky temperature (K) and spatial offset (degrees) at
// the middle.
struct WindowSiteFigures {
    double azimuthStart, elevationStart, azimuthEnd, elevationEnd;
    double degradation, skyTemperature, spatialOffset;
};

struct MutualWindow {
    int64_t start;
    int64_t end;
    double minutes;
    WindowSiteFigures home;
    WindowSiteFigures dx; // NaN without a DX station
    // The highest elevation of the lower of the two stations, and when.
    int64_t peakTime;
    double peakElevation;
    // Mutual Doppler (Hz) at the operating frequency; the home station's own
    // echo when there is no DX station.
    double dopplerStart, dopplerEnd;
    int64_t middle; // where the stations' middle figures are taken
    // Home minus DX spatial offset (degrees, -90..90) and its loss (dB) for two
    // linearly polarised stations, at start, middle and end.
    double polarisation[3];
    double polarisationLoss[3];
};

struct DayConditions {
    int64_t date;            // 00:00 UTC of the day
    int64_t transit;         // the Moon's highest elevation at home that day
    double elevation;        // degrees, at transit
    double declination;      // degrees, geocentric
    double distanceKm;
    double pathLossDb;       // against perigee
    double skyTemperature;   // K at the operating frequency
    double degradation;      // dB
    double sunMoonAngle;     // degrees, geocentric
    bool best;               // within kBestDayMarginDb of the least degradation
                             // (the highest figure: it is 0 at best, negative)
    bool sunNear;            // the Sun within kSunNearDegrees of the Moon
};

constexpr int32_t kMaxPlanDays = 366;
constexpr double kBestDayMarginDb = 0.5;
constexpr double kSunNearDegrees = 15.0;

// The Moon's elevation (degrees) seen from a station at an instant given in
// seconds (fractions allowed); at whole seconds, exactly the panels' figure.
double PlannerMoonElevation(double latitude, double longitude, double seconds);

// The intervals of [from, to) in which the site sees the Moon at or above its
// minimum elevation; edges to the second.
std::vector<PlanInterval> MoonWindows(const PlanSite &site, int64_t from, int64_t to);

// The parts common to two sorted lists of disjoint intervals.
std::vector<PlanInterval> IntersectWindows(const std::vector<PlanInterval> &a,
                                           const std::vector<PlanInterval> &b);

// The mutual windows of [from, from + days) with their figures. Without a
// valid request (days outside 1..kMaxPlanDays, a position or elevation out of
// range or not finite, a frequency not above 0): none.
std::vector<MutualWindow> PlanMutualWindows(const PlanRequest &request);

// Home minus DX spatial offset folded into [-90, 90): a linear polarisation
// repeats every 180 degrees.
double PolarisationDifference(double homeOffset, double dxOffset);
// -20 log10(max(|cos 2 delta|, 0.0562)) dB.
double PolarisationLoss(double delta);

// The daily conditions at the home station for the UTC dates from the one of
// request.from on, request.days of them (the DX station is not used), with
// the best days and the days near the Sun marked.
std::vector<DayConditions> PlanConditions(const PlanRequest &request);

// Whether a request can be planned (see PlanMutualWindows).
bool PlanRequestValid(const PlanRequest &request);

} // namespace lunaquill
