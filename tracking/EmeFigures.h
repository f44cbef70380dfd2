// The Moon and the Sun of the EME figures, and the link figures built on them.
// Low-precision orbital-element models (after Paul Schlyter's "How to compute
// planetary positions"), cheap enough to run for every station every second.
#pragma once

#include "ComputeSource.h"

#include <cstdint>
#include <ctime>

namespace lunaquill {

// Sky brightness temperature (K) at 144 MHz along the ecliptic, one entry per
// 2 degrees of ecliptic longitude (read one cell behind, see SkyTemperatureAt).
extern const int32_t SkyTemp144Table[180];

// Day number of the orbital-element method: days since 2000 Jan 0.0 UT, built
// with truncating 32-bit integer divisions, plus the fraction of the day.
double DayNumber(int year, int month, int day, double utHours);

struct MoonPosition {
    double geocentricRa;      // degrees, 0..360
    double geocentricDec;     // degrees
    double topocentricRa;     // degrees
    double topocentricDec;    // degrees
    double localSiderealTime; // hours
    double hourAngle;         // degrees, within +-180, from the topocentric RA
    double azimuth;           // degrees, 0..360 from north through east
    double elevation;         // degrees
    double distanceKm;        // geocentric
};

MoonPosition LowPrecisionMoon(int year, int month, int day, double utHours,
                              double longitude, double latitude);

struct SunPosition {
    double rightAscension;  // degrees, (-180, 180]
    double declination;     // degrees
    double azimuth;         // degrees from north through east
    double elevation;       // degrees, geocentric
};

SunPosition LowPrecisionSun(double dayNumber, double utHours, double latitude,
                            double longitude);

// Fills the Moon's azimuth, elevation, doppler, spatialOffset,
// greenwichHourAngle, rightAscension (degrees: the caller divides by 15),
// declination, distance (AU), aboveHorizon; skyTemperature is cleared.
void EmeMoonTrack(const struct tm &utc, double latitude, double longitude,
                  double frequencyMHz, SourceTrack &record);

// The own-echo Doppler (Hz) of EmeMoonTrack, also below the horizon, where the
// record's doppler reads 0: a plan that opens at a negative minimum elevation
// still needs the shift the station will tune to.
double EchoDoppler(const struct tm &utc, double latitude, double longitude, double frequencyMHz);

// Sky temperature (K) behind a body at this ecliptic longitude (degrees),
// scaled from the 144 MHz table with spectral index 2.6.
double SkyTemperatureAt(double frequencyMHz, double eclipticLongitude);

// Extra path loss (dB) against perigee (356,903 km): 0 there, negative beyond.
double PathLossVsPerigee(double distanceKm);

// Degradation (dB) against a cold sky with 80 K of receiver noise.
double Degradation(double pathLossDb, double skyTemperature, double frequencyMHz);

// Sub-source point of a body: latitude = declination, longitude by the
// program's own +180 rule (degrees east, above -180 and below 360).
void SubSourcePoint(const struct tm &utc, double raHours, double decDegrees,
                    double &subLatitude, double &subLongitude);

// Its two steps, for many bodies at one instant: the sidereal angle of the
// instant (degrees, not reduced), then a body's longitude against it.
double SiderealDegrees(const struct tm &utc);
double SubLongitude(double raHours, double siderealDegrees);

// std::fmod(a, 360.0), bit for bit, in a fraction of its time at the sidereal
// angles of these centuries.
double Remainder360(double a);

} // namespace lunaquill
