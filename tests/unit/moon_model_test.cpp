// The low-precision Moon and Sun against libnova's full theories, and the
// Doppler against the change of the range that libnova's Moon gives.
#include "tracking/ComputeSource.h"
#include "tracking/EmeFigures.h"
#include "UtcTime.h"

#include <gtest/gtest.h>
#include <libnova/libnova.h>

#include <cmath>

using namespace lunaquill;

namespace {

double UtHours(const struct tm &utc)
{
    return utc.tm_hour + utc.tm_min / 60.0 + utc.tm_sec / 3600.0;
}

// libnova's Moon (J2000) precessed to the equinox of date, as the orbital
// elements of the low-precision model are referred to it.
ln_equ_posn LibnovaMoonOfDate(double jd)
{
    ln_equ_posn j2000, ofDate;
    ln_get_lunar_equ_coords(jd, &j2000);
    ln_get_equ_prec(&j2000, jd, &ofDate);
    return ofDate;
}

constexpr time_t kStart2000 = 946684800; // 2000-01-01 00:00:00 UTC

} // namespace

TEST(LowPrecisionMoon, AgreesWithLibnovaOverFortyYears)
{
    // Weekly samples at varying hours from 2000 to 2040; the method is good
    // to a few arc-minutes in position and a few hundred km in distance.
    double worstSeparation = 0, worstDistance = 0;
    for (int k = 0; k < 2100; ++k) {
        time_t t = kStart2000 + (time_t)k * 7 * 86400 + k * 3671;
        struct tm utc = Utc(t);
        MoonPosition m = LowPrecisionMoon(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday,
                                          UtHours(utc), 10.0, 50.0);
        double jd = ln_get_julian_from_timet(&t);
        ln_equ_posn reference = LibnovaMoonOfDate(jd);
        ln_equ_posn model{m.geocentricRa, m.geocentricDec};
        worstSeparation = std::max(worstSeparation, ln_get_angular_separation(&reference, &model));
        worstDistance = std::max(worstDistance, std::fabs(ln_get_lunar_earth_dist(jd) - m.distanceKm));
        ASSERT_GE(m.geocentricRa, 0.0);
        ASSERT_LT(m.geocentricRa, 360.0);
    }
    EXPECT_LT(worstSeparation, 0.15);
    EXPECT_LT(worstDistance, 400.0);
}

TEST(LowPrecisionMoon, TopocentricAzimuthAndElevationAgreeWithLibnova)
{
    const ln_lnlat_posn stations[] = {{-71.0, 42.5}, {151.2, -33.9}, {10.0, 60.0}, {-120.0, -10.0}};
    for (int k = 0; k < 400; ++k) {
        time_t t = kStart2000 + (time_t)k * 86400 * 19 + k * 7919;
        struct tm utc = Utc(t);
        double jd = ln_get_julian_from_timet(&t);
        for (ln_lnlat_posn station : stations) {
            MoonPosition m = LowPrecisionMoon(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday,
                                              UtHours(utc), station.lng, station.lat);
            // libnova: geocentric position of date, diurnal parallax, then
            // the horizon (its azimuth counts from the south).
            ln_equ_posn geo = LibnovaMoonOfDate(jd), shift, topo;
            double au = ln_get_lunar_earth_dist(jd) / 149597870.7;
            ln_get_parallax(&geo, au, &station, 0.0, jd, &shift);
            topo.ra = geo.ra + shift.ra;
            topo.dec = geo.dec + shift.dec;
            ln_hrz_posn hrz;
            ln_get_hrz_from_equ(&topo, &station, jd, &hrz);
            double azimuth = std::fmod(hrz.az + 180.0, 360.0);
            double dAz = std::remainder(m.azimuth - azimuth, 360.0) * std::cos(hrz.alt / 57.2958);
            EXPECT_NEAR(m.elevation, hrz.alt, 0.25) << k;
            EXPECT_NEAR(dAz, 0.0, 0.25) << k;
        }
    }
}

TEST(LowPrecisionMoon, EquatorIsTheLimitOfNearbyLatitudes)
{
    // On the equator the topocentric declination is a limit (0/0 in the
    // general form): the figures there must be finite and match latitudes
    // 1e-9 degrees north and south, at hour angles from 0 to 180 including
    // 90 (cos HA = 0). The longitude sets the hour angle: HA = LST - RA.
    int compared = 0;
    for (int k = 0; k < 40; ++k) {
        const struct tm utc = Utc(kStart2000 + (time_t)k * 86400 * 37 + k * 5471);
        auto at = [&](double longitude, double latitude, SourceTrack &track) {
            EmeMoonTrack(utc, latitude, longitude, 1296.0, track); // the spatial offset
            return LowPrecisionMoon(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday,
                                    UtHours(utc), longitude, latitude);
        };
        SourceTrack equator{}, near{};
        const MoonPosition greenwich = at(0.0, 0.0, equator);
        if (std::fabs(greenwich.geocentricDec) < 5.0)
            continue; // near the zenith the azimuth is ill-conditioned
        for (double hourAngle : {0.0, 30.0, 90.0, -90.0, 135.0, 180.0}) {
            const double longitude = hourAngle - greenwich.localSiderealTime * 15.0
                                     + greenwich.geocentricRa;
            const MoonPosition onEquator = at(longitude, 0.0, equator);
            for (double latitude : {1e-9, -1e-9}) {
                const MoonPosition m = at(longitude, latitude, near);
                SCOPED_TRACE(testing::Message() << k << " HA " << hourAngle << " lat " << latitude);
                EXPECT_NEAR(onEquator.topocentricDec, m.topocentricDec, 1e-6);
                EXPECT_NEAR(onEquator.topocentricRa, m.topocentricRa, 1e-6);
                EXPECT_NEAR(onEquator.elevation, m.elevation, 1e-6);
                // Angles: 0 and 360 (+180 and -180) are one.
                EXPECT_NEAR(std::remainder(onEquator.azimuth - m.azimuth, 360.0), 0.0, 1e-6);
                EXPECT_NEAR(std::remainder(equator.spatialOffset - near.spatialOffset, 360.0),
                            0.0, 1e-6);
            }
            ++compared;
        }
    }
    EXPECT_GT(compared, 100);
}

TEST(EmeMoonTrack, DopplerFollowsTheRangeRate)
{
    // Reference range rate: libnova's Moon and the station rotating with
    // the apparent sidereal time, differenced over a minute.
    const double f = 1296.0;
    const ln_lnlat_posn stations[] = {{-71.0, 42.5}, {151.2, -33.9}, {5.0, 52.0}};
    int compared = 0;
    for (int k = 0; k < 300; ++k) {
        time_t t = kStart2000 + (time_t)k * 86400 * 23 + k * 4093;
        for (ln_lnlat_posn station : stations) {
            auto range = [&](double seconds) {
                double jd = ln_get_julian_from_timet(&t) + seconds / 86400.0;
                ln_equ_posn moon = LibnovaMoonOfDate(jd);
                double r = ln_get_lunar_earth_dist(jd);
                double ra = moon.ra / 57.29577951307855, dec = moon.dec / 57.29577951307855;
                double P[3] = {r * cos(dec) * cos(ra), r * cos(dec) * sin(ra), r * sin(dec)};
                double theta = (ln_get_apparent_sidereal_time(jd) * 15.0 + station.lng) / 57.29577951307855;
                double phi = station.lat / 57.29577951307855;
                double O[3] = {6378.0 * cos(phi) * cos(theta), 6378.0 * cos(phi) * sin(theta), 6357.0 * sin(phi)};
                return std::sqrt(std::pow(P[0] - O[0], 2) + std::pow(P[1] - O[1], 2) + std::pow(P[2] - O[2], 2));
            };
            double rangeRate = (range(30.0) - range(-30.0)) / 60.0; // km/s
            double expected = -2.0 * rangeRate * f * 1e6 / 299792.458;

            SourceTrack record{};
            EmeMoonTrack(Utc(t), station.lat, station.lng, f, record);
            if (!record.aboveHorizon) {
                EXPECT_EQ(record.doppler, 0.0);
                continue;
            }
            ++compared;
            // Approaching Moon (falling range): positive shift.
            if (std::fabs(expected) > 100.0)
                EXPECT_EQ(record.doppler > 0, rangeRate < 0) << k;
            EXPECT_NEAR(record.doppler, expected, 0.02 * std::fabs(expected) + 25.0) << k;
        }
    }
    EXPECT_GT(compared, 200);
}

TEST(LowPrecisionSun, AgreesWithLibnova)
{
    for (int k = 0; k < 600; ++k) {
        time_t t = kStart2000 + (time_t)k * 86400 * 23 + k * 5003;
        struct tm utc = Utc(t);
        double ut = UtHours(utc);
        double d = DayNumber(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, ut);
        SunPosition sun = LowPrecisionSun(d, ut, 42.5, -71.0);
        double jd = ln_get_julian_from_timet(&t);
        // libnova's Sun is referred to J2000; the model's to the equinox of date.
        ln_equ_posn j2000, reference;
        ln_get_solar_equ_coords(jd, &j2000);
        ln_get_equ_prec(&j2000, jd, &reference);
        ln_equ_posn model{sun.rightAscension, sun.declination};
        EXPECT_LT(ln_get_angular_separation(&reference, &model), 0.05) << k;
        EXPECT_GT(sun.rightAscension, -180.0);
        EXPECT_LE(sun.rightAscension, 180.0);

        ln_lnlat_posn station{-71.0, 42.5};
        ln_hrz_posn hrz;
        ln_get_hrz_from_equ(&reference, &station, jd, &hrz);
        EXPECT_NEAR(sun.elevation, hrz.alt, 0.1) << k;
    }
}
