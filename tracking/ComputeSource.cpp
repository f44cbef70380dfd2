#include "ComputeSource.h"

#include "EmeFigures.h"
#include "LunarCache.h"
#include "RadioSources.h"

#include <libnova/libnova.h>

#include <cmath>
#include <cstdio>
#include <cstring>

namespace lunaquill {

const char *const kSourceNames[SourceCount] = {
    "Moon", "Sun", "Mercury", "Venus", "Mars", "Jupiter", "Saturn", "Uranus",
    "Neptune", "Pluto", "Sagittarius A", "Cassiopeia A", "Cygnus A", "Taurus A",
    "Virgo A", "Centaurus A", "Orion M42", "M17", "Perseus A", "Aquarius", "Leo",
    "Pictor", "User Az/El", "User RA/Dec",
};

namespace {

struct Planet {
    void (*equCoords)(double, struct ln_equ_posn *);
    double (*earthDistance)(double);
    double (*disk)(double);
    int (*riseSet)(double, struct ln_lnlat_posn *, struct ln_rst_time *);
};

const Planet kPlanets[8] = {
    {ln_get_mercury_equ_coords, ln_get_mercury_earth_dist, ln_get_mercury_disk, ln_get_mercury_rst},
    {ln_get_venus_equ_coords, ln_get_venus_earth_dist, ln_get_venus_disk, ln_get_venus_rst},
    {ln_get_mars_equ_coords, ln_get_mars_earth_dist, ln_get_mars_disk, ln_get_mars_rst},
    {ln_get_jupiter_equ_coords, ln_get_jupiter_earth_dist, ln_get_jupiter_disk, ln_get_jupiter_rst},
    {ln_get_saturn_equ_coords, ln_get_saturn_earth_dist, ln_get_saturn_disk, ln_get_saturn_rst},
    {ln_get_uranus_equ_coords, ln_get_uranus_earth_dist, ln_get_uranus_disk, ln_get_uranus_rst},
    {ln_get_neptune_equ_coords, ln_get_neptune_earth_dist, ln_get_neptune_disk, ln_get_neptune_rst},
    {ln_get_pluto_equ_coords, ln_get_pluto_earth_dist, ln_get_pluto_disk, ln_get_pluto_rst},
};

// libnova writes no times for a source that never rises or never sets: the
// zero-initialised times are stored then.
void StoreRiseSet(const ln_rst_time &rst, int status, SourceTrack &record)
{
    record.riseTime = rst.rise;
    record.setTime = rst.set;
    record.transitTime = rst.transit;
    record.riseSetStatus = status;
}

// libnova's horizontal azimuth counts from south through west; ours from north.
void StoreHorizontal(const ln_equ_posn &equ, ln_lnlat_posn &observer, double jd,
                     const struct tm &utc, SourceTrack &record)
{
    ln_hrz_posn hrz;
    ln_get_hrz_from_equ(const_cast<ln_equ_posn *>(&equ), &observer, jd, &hrz);
    record.azimuth = fmod(hrz.az + 180.0, 360.0);
    record.elevation = hrz.alt;
    SubSourcePoint(utc, record.rightAscension, record.declination, record.subLatitude,
                   record.subLongitude);
}

// The Moon's and the Sun's places and sub-points, from our own low-precision
// theories: nothing of libnova, so nothing it keeps, is touched.
void MoonPlace(const struct tm &utc, const ln_lnlat_posn &observer, double frequencyMHz,
               SourceTrack &record)
{
    EmeMoonTrack(utc, observer.lat, observer.lng, frequencyMHz, record);
    record.rightAscension /= 15.0;
    SubSourcePoint(utc, record.rightAscension, record.declination, record.subLatitude,
                   record.subLongitude);
}

void SunPlace(const struct tm &utc, const ln_lnlat_posn &observer, SourceTrack &record)
{
    const double ut = utc.tm_hour + utc.tm_min / 60.0 + utc.tm_sec / 3600.0;
    const double d = DayNumber(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, ut);
    const SunPosition sun = LowPrecisionSun(d, ut, observer.lat, observer.lng);
    record.azimuth = sun.azimuth;
    record.elevation = sun.elevation;
    record.rightAscension = sun.rightAscension / 15.0;
    record.declination = sun.declination;
    record.doppler = 0.0;
    record.skyTemperature = 0.0;
    record.aboveHorizon = sun.elevation >= 0 ? 1 : 0;
    SubSourcePoint(utc, record.rightAscension, record.declination, record.subLatitude,
                   record.subLongitude);
}

void ComputeMoon(uint32_t flags, const struct tm &utc, double jd, ln_lnlat_posn &observer,
                 double frequencyMHz, int32_t wasAbove, SourceTrack &record)
{
    if (flags & TrackPosition) {
        MoonPlace(utc, observer, frequencyMHz, record);

        ln_equ_posn equ{record.rightAscension * 15.0, record.declination};
        ln_lnlat_posn ecliptic;
        ln_get_ecl_from_equ(&equ, jd, &ecliptic);
        record.skyTemperature = SkyTemperatureAt(frequencyMHz, ecliptic.lng);
        const double distanceKm = record.distance * 150000000.0;
        record.pathLossVsPerigee = PathLossVsPerigee(distanceKm);
        record.semiDiameter = 6007566.96 / distanceKm;
        record.degradation =
            Degradation(record.pathLossVsPerigee, record.skyTemperature, frequencyMHz);
    }
    if (flags & TrackPhase)
        record.phase = CachedLunarDisk(jd);
    if (flags & TrackRiseSet) {
        ln_rst_time rst{};
        int status = CachedLunarRst(jd, &observer, &rst);
        StoreRiseSet(rst, status, record);
        // Up now and rising only later: the pass began the day before.
        if (wasAbove && rst.rise > jd) {
            ln_rst_time earlier{};
            record.riseSetStatus = CachedLunarRst(jd - 1.0, &observer, &earlier);
            record.riseTime = earlier.rise;
            if (earlier.set > jd)
                record.setTime = earlier.set;
        }
    }
}

void ComputeSun(uint32_t flags, const struct tm &utc, double jd, ln_lnlat_posn &observer,
                int32_t wasAbove, SourceTrack &record)
{
    if (flags & TrackPosition)
        SunPlace(utc, observer, record);
    if (flags & TrackDistance)
        record.distance = ln_get_earth_solar_dist(jd);
    if (flags & TrackPhase)
        record.phase = 1.0;
    if (flags & TrackRiseSet) {
        ln_rst_time rst{};
        int status = ln_get_solar_rst(jd, &observer, &rst);
        double rise = rst.rise, set = rst.set;
        if (wasAbove && rst.rise > jd) {
            ln_rst_time earlier{};
            status = ln_get_solar_rst(jd - 1.0, &observer, &earlier);
            rise = earlier.rise;
            if (earlier.set > jd)
                set = earlier.set;
        }
        // Once today's sunset has passed, show tomorrow's set but keep
        // today's rise.
        if (set < jd || rise > set) {
            ln_rst_time later{};
            status = ln_get_solar_rst(jd + 1.0, &observer, &later);
            set = later.set;
        }
        record.riseTime = rise;
        record.setTime = set;
        record.transitTime = rst.transit;
        record.riseSetStatus = status;
    }
}

// A planet's place at a date: libnova's VSOP87 series depend on the date
// alone (no nutation, and their own caches only remember the last date), so
// the place last computed for the date is the place, and the second station
// at the same instant costs nothing. One entry per planet and thread.
ln_equ_posn PlanetPlace(const Planet &planet, double jd)
{
    struct Entry {
        double jd;
        ln_equ_posn place;
        bool set;
    };
    thread_local Entry last[8] = {};
    Entry &entry = last[&planet - kPlanets];
    if (!entry.set || memcmp(&entry.jd, &jd, sizeof jd) != 0) {
        planet.equCoords(jd, &entry.place);
        entry.jd = jd;
        entry.set = true;
    }
    return entry.place;
}

void ComputePlanet(const Planet &planet, uint32_t flags, const struct tm &utc, double jd,
                   ln_lnlat_posn &observer, SourceTrack &record)
{
    if (flags & TrackPosition) {
        ln_equ_posn equ = PlanetPlace(planet, jd);
        record.rightAscension = equ.ra / 15.0;
        record.declination = equ.dec;
        StoreHorizontal(equ, observer, jd, utc, record);
    }
    if (flags & TrackDistance)
        record.distance = planet.earthDistance(jd);
    if (flags & TrackPhase)
        record.phase = planet.disk(jd);
    if (flags & TrackRiseSet) {
        // From the day before: libnova finds the next events from there.
        ln_rst_time rst{};
        int status = planet.riseSet(jd - 1.0, &observer, &rst);
        StoreRiseSet(rst, status, record);
    }
}

// Fixed radio sources and the user's RA/Dec point.
void ComputeFixed(const ln_equ_posn *position, uint32_t flags, const struct tm &utc, double jd,
                  ln_lnlat_posn &observer, SourceTrack &record)
{
    if ((flags & TrackPosition) && position) {
        record.rightAscension = position->ra / 15.0;
        record.declination = position->dec;
        StoreHorizontal(*position, observer, jd, utc, record);
    }
    if (flags & TrackRiseSet) {
        ln_equ_posn equ{record.rightAscension * 15.0, record.declination};
        ln_rst_time rst{};
        int status = ln_get_object_rst(jd - 1.0, &observer, &equ, &rst);
        StoreRiseSet(rst, status, record);
    }
}

} // namespace

namespace {

double JulianDayOf(const struct tm &utc)
{
    struct tm time = utc;
    ln_date date;
    ln_get_date_from_tm(&time, &date);
    return ln_get_julian_day(&date);
}

} // namespace

bool SubPointAhead(uint32_t sourceId, const struct tm &utc, double latitude, double longitude,
                   double frequencyMHz, double &subLatitude, double &subLongitude)
{
    const ln_lnlat_posn observer{longitude, latitude};
    SourceTrack scratch{};
    if (sourceId == Moon) {
        MoonPlace(utc, observer, frequencyMHz, scratch);
    } else if (sourceId == Sun) {
        SunPlace(utc, observer, scratch);
    } else if (sourceId >= SagittariusA && sourceId <= Pictor) {
        // As ComputeFixed places it; the sub-point needs no horizon.
        FixedSource fixed = FixedSourceCoordinates[sourceId - SagittariusA];
        SubSourcePoint(utc, ln_hms_to_deg(&fixed.ra) / 15.0, ln_dms_to_deg(&fixed.dec),
                       scratch.subLatitude, scratch.subLongitude);
    } else {
        return false;
    }
    subLatitude = scratch.subLatitude;
    subLongitude = scratch.subLongitude;
    return true;
}

bool PrepareMoonRiseSet(const struct tm &utc)
{
    return PrefetchLunarRiseSet(JulianDayOf(utc));
}

void PrepareUpcomingMoonRiseSet(const struct tm &utc)
{
    PrefetchUpcomingLunarRiseSet(JulianDayOf(utc));
}

void ComputeSource(uint32_t sourceId, uint32_t flags, const struct tm &utc, double latitude,
                   double longitude, double frequencyMHz, SourceTrack &record)
{
    const double jd = JulianDayOf(utc);

    if (flags & TrackRiseSet)
        flags |= TrackPosition;
    ln_lnlat_posn observer{longitude, latitude};
    // The Moon's and the Sun's rise/set logic reads whether the source was up
    // at the previous call, before this call updates it.
    const int32_t wasAbove = record.aboveHorizon;

    if (sourceId == Moon) {
        ComputeMoon(flags, utc, jd, observer, frequencyMHz, wasAbove, record);
    } else if (sourceId == Sun) {
        ComputeSun(flags, utc, jd, observer, wasAbove, record);
    } else if (sourceId >= Mercury && sourceId <= Pluto) {
        ComputePlanet(kPlanets[sourceId - Mercury], flags, utc, jd, observer, record);
    } else if (sourceId >= SagittariusA && sourceId <= Pictor) {
        FixedSource fixed = FixedSourceCoordinates[sourceId - SagittariusA];
        ln_equ_posn equ{ln_hms_to_deg(&fixed.ra), ln_dms_to_deg(&fixed.dec)};
        ComputeFixed(&equ, flags, utc, jd, observer, record);
    } else if (sourceId == UserAzEl) {
        // Azimuth and elevation are the user's; nothing else is computed.
        record.rightAscension = 0.0;
        record.declination = 0.0;
        record.distance = 0.0;
        record.phase = 0.0;
        record.doppler = 0.0;
        record.riseTime = 0.0;
        record.setTime = 0.0;
        record.transitTime = 0.0;
        record.riseSetStatus = 0;
    } else if (sourceId == UserRaDec) {
        ln_equ_posn equ{record.rightAscension * 15.0, record.declination};
        ComputeFixed(&equ, flags, utc, jd, observer, record);
        record.distance = 0.0;
    }

    record.valid = 1;
    if (record.elevation >= 0) {
        record.aboveHorizon = 1;
    } else { // also for a NaN elevation
        record.aboveHorizon = 0;
        record.doppler = 0.0;
    }
}

void FormatRiseSet(char *text, size_t size, const char *prefix, double julianDate,
                   int32_t riseSetStatus)
{
    if (riseSetStatus != 0) {
        snprintf(text, size, "%s%s", prefix, riseSetStatus > 0 ? "always up" : "never up");
        return;
    }
    ln_date date;
    ln_get_date(julianDate, &date);
    snprintf(text, size, "%s%02d-%02d %02d:%02d", prefix, date.months, date.days, date.hours,
             date.minutes);
}

} // namespace lunaquill
