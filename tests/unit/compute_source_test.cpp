// The calculator's per-source rules: rise/set re-runs, the user points,
// unknown ids, request bits and bad input.
#include "tracking/ComputeSource.h"
#include "tracking/EmeFigures.h"
#include "UtcTime.h"
#include "tracking/LunarCache.h"

#include <gtest/gtest.h>
#include <libnova/libnova.h>

#include <cmath>
#include <cstring>
#include <random>

using namespace lunaquill;

namespace {

double JulianDay(time_t t)
{
    struct tm utc = Utc(t);
    ln_date date;
    ln_get_date_from_tm(&utc, &date);
    return ln_get_julian_day(&date);
}

constexpr double kLat = 42.5, kLon = -71.0;
ln_lnlat_posn Observer() { return {kLon, kLat}; }

// A record with a recognisable value in every field.
SourceTrack Filled()
{
    SourceTrack r;
    memset(&r, 0, sizeof r);
    double *fields[] = {&r.azimuth, &r.elevation, &r.reserved, &r.doppler, &r.skyTemperature,
                        &r.spatialOffset, &r.degradation, &r.pathLossVsPerigee, &r.semiDiameter,
                        &r.greenwichHourAngle, &r.rightAscension, &r.declination, &r.distance,
                        &r.phase, &r.subLatitude, &r.subLongitude, &r.riseTime, &r.setTime,
                        &r.transitTime};
    double v = 11.0;
    for (double *f : fields)
        *f = v++;
    r.riseSetStatus = 7;
    return r;
}

} // namespace

TEST(ComputeSource, MoonFiguresHangTogether)
{
    const time_t t = 1748736000; // 2025-06-01 00:00:00 UTC
    SourceTrack r{};
    ComputeSource(Moon, TrackAll, Utc(t), kLat, kLon, 1296.0, r);
    EXPECT_EQ(r.valid, 1);
    const double km = r.distance * 1.5e8;
    EXPECT_GT(km, 356000.0);
    EXPECT_LT(km, 407000.0);
    EXPECT_NEAR(r.pathLossVsPerigee, -40.0 * std::log10(km / 356903.0), 1e-9);
    EXPECT_NEAR(r.semiDiameter, 6007566.96 / km, 1e-9);
    EXPECT_NEAR(r.subLatitude, r.declination, 0.0);
    EXPECT_GE(r.rightAscension, 0.0);
    EXPECT_LT(r.rightAscension, 24.0);
    EXPECT_NEAR(r.phase, ln_get_lunar_disk(JulianDay(t)), 1e-12);
    EXPECT_EQ(r.aboveHorizon, r.elevation >= 0 ? 1 : 0);
    // Sky temperature at 1296 MHz lies between the scaled table's extremes.
    EXPECT_GT(r.skyTemperature, SkyTemperatureAt(1296.0, 136.0) - 1e-9);
    EXPECT_LT(r.skyTemperature, SkyTemperatureAt(1296.0, 266.5) + 1e-9);
}

TEST(ComputeSource, MoonRiseIsTakenFromTheDayBeforeWhileAPassRuns)
{
    ln_lnlat_posn observer = Observer();
    int checked = 0;
    for (int k = 0; k < 400 && checked < 20; ++k) {
        time_t t = 1735689600 + (time_t)k * 3 * 3600 + k * 97; // from 2025-01-01
        double jd = JulianDay(t);
        ln_rst_time today, before;
        int status = ln_get_lunar_rst(jd, &observer, &today);
        SourceTrack probe{};
        ComputeSource(Moon, TrackPosition, Utc(t), kLat, kLon, 144.0, probe);
        if (!probe.aboveHorizon || !(today.rise > jd) || status != 0)
            continue;
        ++checked;
        int statusBefore = ln_get_lunar_rst(jd - 1.0, &observer, &before);

        // Up at the previous call: the rise of the pass that began yesterday.
        SourceTrack wasUp{};
        wasUp.aboveHorizon = 1;
        ComputeSource(Moon, TrackAll, Utc(t), kLat, kLon, 144.0, wasUp);
        EXPECT_EQ(wasUp.riseTime, before.rise);
        EXPECT_EQ(wasUp.setTime, before.set > jd ? before.set : today.set);
        EXPECT_EQ(wasUp.riseSetStatus, statusBefore);
        EXPECT_EQ(wasUp.transitTime, today.transit);

        // Down at the previous call (first call after a start): today's rise.
        SourceTrack wasDown{};
        ComputeSource(Moon, TrackAll, Utc(t), kLat, kLon, 144.0, wasDown);
        EXPECT_EQ(wasDown.riseTime, today.rise);
        EXPECT_EQ(wasDown.setTime, today.set);
    }
    EXPECT_GE(checked, 10);
}

TEST(ComputeSource, SunShowsTomorrowsSetButTodaysRiseAfterSunset)
{
    // Central Europe, 2025-06-01: sunrise about 03:14 UT, sunset 19:19 UT.
    const double lat = 50.0, lon = 10.0;
    ln_lnlat_posn europe{lon, lat};
    struct tm utc = Utc(1748736000 + 19 * 3600 + 30 * 60); // 19:30 UT, just after sunset
    const double jd = JulianDay(1748736000 + 19 * 3600 + 30 * 60);
    ln_rst_time today, yesterday;
    ln_get_solar_rst(jd, &europe, &today);
    ln_get_solar_rst(jd - 1.0, &europe, &yesterday);
    ASSERT_GT(today.rise, jd);      // libnova gives the next events
    ASSERT_LT(yesterday.set, jd);

    // The previous refresh saw the Sun up: the rise of the day stays, while
    // the set shown is tomorrow's.
    SourceTrack r{};
    r.aboveHorizon = 1;
    ComputeSource(Sun, TrackAll, utc, lat, lon, 144.0, r);
    EXPECT_EQ(r.riseTime, yesterday.rise);
    EXPECT_EQ(r.setTime, today.set);
    EXPECT_LT(r.riseTime, jd);
    EXPECT_GT(r.setTime, jd + 0.9);
    ln_date rise;
    ln_get_date(r.riseTime, &rise);
    EXPECT_EQ(rise.days, 1);
    EXPECT_EQ(r.phase, 1.0);
    EXPECT_EQ(r.doppler, 0.0);
    EXPECT_DOUBLE_EQ(r.distance, ln_get_earth_solar_dist(jd));

    // 06:00 UT after a start (nothing seen before): the next rise lies after
    // the next set, so the set is taken from one day later.
    const double morning = JulianDay(1748736000 + 6 * 3600);
    ln_rst_time next, later;
    ln_get_solar_rst(morning, &europe, &next);
    ln_get_solar_rst(morning + 1.0, &europe, &later);
    ASSERT_GT(next.rise, next.set);
    SourceTrack fresh{};
    ComputeSource(Sun, TrackRiseSet, Utc(1748736000 + 6 * 3600), lat, lon, 144.0, fresh);
    EXPECT_EQ(fresh.riseTime, next.rise);
    EXPECT_EQ(fresh.setTime, later.set);
}

TEST(ComputeSource, PlanetsAndFixedSourcesRiseAndSetFromTheDayBefore)
{
    const time_t t = 1748736000 + 5 * 3600;
    const double jd = JulianDay(t);
    ln_lnlat_posn observer = Observer();

    SourceTrack mars{};
    ComputeSource(Mars, TrackAll, Utc(t), kLat, kLon, 144.0, mars);
    ln_rst_time rst;
    int status = ln_get_mars_rst(jd - 1.0, &observer, &rst);
    EXPECT_EQ(mars.riseTime, rst.rise);
    EXPECT_EQ(mars.setTime, rst.set);
    EXPECT_EQ(mars.riseSetStatus, status);
    EXPECT_DOUBLE_EQ(mars.distance, ln_get_mars_earth_dist(jd));
    EXPECT_DOUBLE_EQ(mars.phase, ln_get_mars_disk(jd));

    // Aquarius sits on the equator (declination 0): it still rises and sets.
    SourceTrack aquarius{};
    ComputeSource(Aquarius, TrackAll, Utc(t), kLat, kLon, 144.0, aquarius);
    EXPECT_EQ(aquarius.riseSetStatus, 0);
    EXPECT_DOUBLE_EQ(aquarius.declination, 0.0);
    EXPECT_DOUBLE_EQ(aquarius.rightAscension, 22.0 + 28.0 / 60 + 12.0 / 3600);
    ln_equ_posn equ{aquarius.rightAscension * 15.0, 0.0};
    ln_get_object_rst(jd - 1.0, &observer, &equ, &rst);
    EXPECT_EQ(aquarius.riseTime, rst.rise);
    EXPECT_EQ(aquarius.setTime, rst.set);
    // Up about twelve hours a day on the equator.
    EXPECT_NEAR(std::fabs(std::remainder(aquarius.setTime - aquarius.riseTime, 1.0)), 0.5, 0.01);
}

TEST(ComputeSource, FixedSourcesStandWhereTheirCoordinatesSay)
{
    // Sagittarius A: 17h45m40.0409s, -29 00' 28.118" (negative by its flag).
    const time_t t = 1748736000;
    SourceTrack r{};
    ComputeSource(SagittariusA, TrackPosition, Utc(t), kLat, kLon, 144.0, r);
    EXPECT_NEAR(r.rightAscension, 17.0 + 45.0 / 60 + 40.0409 / 3600, 1e-12);
    EXPECT_NEAR(r.declination, -(29.0 + 28.118 / 3600), 1e-12);
    EXPECT_GE(r.azimuth, 0.0);
    EXPECT_LT(r.azimuth, 360.0);
    // Libnova's horizon at the same instant, turned to a north-based azimuth.
    ln_equ_posn equ{r.rightAscension * 15.0, r.declination};
    ln_lnlat_posn observer = Observer();
    ln_hrz_posn hrz;
    ln_get_hrz_from_equ(&equ, &observer, JulianDay(t), &hrz);
    EXPECT_DOUBLE_EQ(r.elevation, hrz.alt);
    EXPECT_DOUBLE_EQ(r.azimuth, std::fmod(hrz.az + 180.0, 360.0));
}

TEST(ComputeSource, UserPointsAndUnknownIds)
{
    const struct tm utc = Utc(1748736000);
    // User Az/El: the stored elevation decides; everything else is cleared.
    SourceTrack azel = Filled();
    azel.elevation = -1.0;
    ComputeSource(UserAzEl, TrackAll, utc, kLat, kLon, 144.0, azel);
    EXPECT_EQ(azel.aboveHorizon, 0);
    EXPECT_EQ(azel.doppler, 0.0);
    EXPECT_EQ(azel.azimuth, 11.0);
    EXPECT_EQ(azel.rightAscension, 0.0);
    EXPECT_EQ(azel.riseTime, 0.0);
    EXPECT_EQ(azel.riseSetStatus, 0);
    EXPECT_EQ(azel.skyTemperature, 15.0); // untouched
    azel.elevation = 0.0;
    ComputeSource(UserAzEl, TrackPosition, utc, kLat, kLon, 144.0, azel);
    EXPECT_EQ(azel.aboveHorizon, 1);

    // User RA/Dec: the stored right ascension (hours) and declination.
    SourceTrack radec{};
    radec.rightAscension = 17.0 + 45.0 / 60 + 40.0409 / 3600;
    radec.declination = -(29.0 + 28.118 / 3600);
    radec.distance = 5.0;
    ComputeSource(UserRaDec, TrackPosition, utc, kLat, kLon, 144.0, radec);
    SourceTrack sgr{};
    ComputeSource(SagittariusA, TrackPosition, utc, kLat, kLon, 144.0, sgr);
    EXPECT_DOUBLE_EQ(radec.azimuth, sgr.azimuth);
    EXPECT_DOUBLE_EQ(radec.elevation, sgr.elevation);
    EXPECT_EQ(radec.distance, 0.0);

    // Ids of 24 and above touch nothing but valid, aboveHorizon and doppler.
    for (uint32_t id : {24u, 25u, 1000u, 0xffffffffu}) {
        SourceTrack before = Filled(), after = Filled();
        after.elevation = before.elevation = -3.0;
        ComputeSource(id, TrackAll, utc, kLat, kLon, 144.0, after);
        EXPECT_EQ(after.valid, 1);
        EXPECT_EQ(after.aboveHorizon, 0);
        EXPECT_EQ(after.doppler, 0.0);
        after.valid = before.valid;
        after.aboveHorizon = before.aboveHorizon;
        after.doppler = before.doppler;
        EXPECT_EQ(memcmp(&after, &before, sizeof before), 0) << id;
    }
}

TEST(ComputeSource, RequestBitsDecideWhatIsWritten)
{
    const struct tm utc = Utc(1748736000);
    // Rise/set without position: the position is computed all the same.
    SourceTrack r = Filled();
    ComputeSource(Jupiter, TrackRiseSet, utc, kLat, kLon, 144.0, r);
    EXPECT_NE(r.azimuth, 11.0);
    EXPECT_NE(r.rightAscension, 21.0);
    EXPECT_EQ(r.distance, 23.0); // distance was not asked for

    // A fixed source asked for distance or phase only changes nothing else.
    for (uint32_t flags : {2u, 4u, 6u}) {
        SourceTrack before = Filled(), after = Filled();
        ComputeSource(CygnusA, flags, utc, kLat, kLon, 144.0, after);
        after.valid = before.valid;
        after.aboveHorizon = before.aboveHorizon;
        EXPECT_EQ(memcmp(&after, &before, sizeof before), 0) << flags;
    }
}

TEST(ComputeSource, BadInputNeverCrashes)
{
    // NaN, infinite and huge positions, frequency 0, every source, and
    // random instants of 2000-2047: the figures may be NaN or infinite, as
    // the formulas give, but nothing crashes or runs away.
    const double values[] = {0.0, NAN, INFINITY, -INFINITY, 1e300, -1e300, 90.0, -90.0, 180.0, 720.5};
    std::mt19937 random(42);
    for (uint32_t id = 0; id < 26; ++id) {
        for (double lat : values) {
            time_t t = 946684800 + (time_t)(random() % 1514764800u);
            SourceTrack r{};
            ComputeSource(id, TrackAll, Utc(t), lat, values[random() % 10], values[random() % 3], r);
            EXPECT_EQ(r.valid, 1);
            EXPECT_TRUE(r.aboveHorizon == 0 || r.aboveHorizon == 1);
        }
    }
}

TEST(LunarCache, AgreesWithPlainCallsOverARealisticSequence)
{
    // Refreshes as the program makes them: the home station, the DX station,
    // then a favourites table, each also asking from the day before (a Moon
    // already up), at instants that move on by a second, a minute, ten
    // minutes or a day. Same status, and times within the bound of
    // LunarCache.h (libnova's own dependence on call history), whereas a
    // position remembered for the wrong date would be minutes off.
    const ln_lnlat_posn stations[] = {{-70.96, 42.51}, {151.2, -33.9}, {13.4, 52.5},
                                      {139.7, 35.7},   {-58.4, -34.6}, {15.6, 78.2}};
    const double steps[] = {1.0 / 86400, 60.0 / 86400, 600.0 / 86400, 1.0};
    double jd = 2460000.3;
    for (int refresh = 0; refresh < 40; ++refresh) {
        jd += steps[refresh % 4];
        for (ln_lnlat_posn observer : stations) {
            for (double when : {jd, jd - 1.0}) {
                ln_rst_time plain{}, cached{};
                const int plainStatus = ln_get_lunar_rst(when, &observer, &plain);
                const int cachedStatus = CachedLunarRst(when, &observer, &cached);
                ASSERT_EQ(plainStatus, cachedStatus) << refresh << " at " << observer.lat;
                if (plainStatus != 0)
                    continue; // no times are written
                for (auto [a, b] : {std::pair{plain.rise, cached.rise}, {plain.set, cached.set},
                                    {plain.transit, cached.transit}})
                    EXPECT_NEAR(a, b, 3e-8) << refresh << " at " << observer.lat;
            }
        }
        EXPECT_NEAR(CachedLunarDisk(jd), ln_get_lunar_disk(jd), 1e-12) << refresh;
    }
}

TEST(LunarCache, CircumpolarMoonLeavesNoUninitialisedTimes)
{
    // Far north the Moon can stay up or down all day; libnova then writes
    // no times, and the record gets zeros, never stack garbage.
    for (int k = 0; k < 60; ++k) {
        time_t t = 1735689600 + (time_t)k * 86400;
        SourceTrack r = {};
        r.riseTime = r.setTime = 123.0;
        ComputeSource(Moon, TrackAll, Utc(t), 78.0, 15.0, 144.0, r);
        if (r.riseSetStatus != 0) {
            EXPECT_EQ(r.riseTime, 0.0);
            EXPECT_EQ(r.setTime, 0.0);
        }
    }
}
