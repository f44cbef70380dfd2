// The one calculator through which the program learns where a source stands
// for a station at an instant. Plain C++ over libnova; no Qt.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace lunaquill {

// Source indices, in the fixed order of the Sources table and of the ini key
// TrackingSource.
enum SourceId : uint32_t {
    Moon = 0, Sun, Mercury, Venus, Mars, Jupiter, Saturn, Uranus, Neptune, Pluto,
    SagittariusA, CassiopeiaA, CygnusA, TaurusA, VirgoA, CentaurusA, OrionM42, M17,
    PerseusA, Aquarius, Leo, Pictor, UserAzEl, UserRaDec,
    SourceCount
};

// Long names, as the Sources table shows them.
extern const char *const kSourceNames[SourceCount];

// Request bits of ComputeSource.
enum TrackFlags : uint32_t {
    TrackPosition = 1,   // az/el, RA/Dec, sub-point; for the Moon the EME figures
    TrackDistance = 2,
    TrackPhase = 4,
    TrackRiseSet = 8,    // implies TrackPosition
    TrackAll = 15
};

// One source seen from one station. Fields a call does not ask for keep the
// values of the last call that did, so long-lived records show the last
// figures computed.
struct SourceTrack {
    uint8_t valid;              // set by every call
    int32_t aboveHorizon;       // elevation >= 0
    double azimuth;             // degrees from north through east, [0, 360)
    double elevation;           // degrees
    double reserved;            // not written by the calculator
    double doppler;             // Hz, own-echo Doppler (Moon); 0 below the horizon
    double skyTemperature;      // K behind the Moon at the operating frequency
    double spatialOffset;       // degrees, parallactic angle of the Moon
    double degradation;         // dB against ideal conditions
    double pathLossVsPerigee;   // dB, 0 at perigee, negative beyond
    double semiDiameter;        // arc-minutes of the Moon's disc
    double greenwichHourAngle;  // degrees
    double rightAscension;      // hours
    double declination;         // degrees
    double distance;            // AU (1 AU = 150,000,000 km)
    double phase;               // illuminated fraction 0..1
    double subLatitude;         // degrees, where the source stands in the zenith
    double subLongitude;        // degrees east, (-180, 360)
    double riseTime;            // Julian Date (UT)
    double setTime;             // Julian Date (UT)
    double transitTime;         // Julian Date (UT)
    int32_t riseSetStatus;      // libnova: 0 rises and sets, 1 circumpolar, -1 never rises
};

// Fills `record` for source `sourceId` seen from (latitude, longitude)
// (degrees, north and east positive) at the UTC instant `utc`, as gmtime gives
// it. frequencyMHz is used by the Moon's figures only. Ids of 24 and above
// compute nothing but still refresh valid and aboveHorizon.
void ComputeSource(uint32_t sourceId, uint32_t flags, const struct tm &utc,
                   double latitude, double longitude, double frequencyMHz,
                   SourceTrack &record);

// Starts the Moon's positions for a rise/set search at `utc` on the worker
// threads, ahead of the ComputeSource calls that will ask for them (see
// PrefetchLunarRiseSet). The figures are the same with or without it. False
// when nothing could be started.
bool PrepareMoonRiseSet(const struct tm &utc);

// The same for an instant expected next, behind the work already handed out
// (see PrefetchUpcomingLunarRiseSet).
void PrepareUpcomingMoonRiseSet(const struct tm &utc);

// The sub-point that ComputeSource gives the Moon, the Sun or a fixed radio
// source (TrackPosition) for that station, bit for bit, worked out without
// the libnova calls that read or change what it keeps between calls
// (nutation), so that it may be asked ahead of the ComputeSource calls
// without changing their figures. False for any other source.
bool SubPointAhead(uint32_t sourceId, const struct tm &utc, double latitude, double longitude,
                   double frequencyMHz, double &subLatitude, double &subLongitude);

// "<prefix>MM-DD HH:MM" of a rise or set instant, into `text` (cut at `size`).
// A source that stays up all day (status 1) or never rises (-1) has no
// instant: "<prefix>always up" or "<prefix>never up".
void FormatRiseSet(char *text, size_t size, const char *prefix, double julianDate,
                   int32_t riseSetStatus);

} // namespace lunaquill
