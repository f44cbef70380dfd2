// The low-precision Moon and Sun against libnova's full theories, and the
// Doppler against the textbook range rate.
#include "tracking/ComputeSource.h"
#include "tracking/EmeFigures.h"
#include "UtcTime.h"

#include <gtest/gtest.h>
#include <libnova/libnova.h>

#include <cmath>

using namespace lunaquill;

namespace {

constexpr double kDegPerRad = 57.29577951307855;
constexpr time_t kStart2000 = 946684800; // 2000-01-01 00:00:00 UTC

double UtHours(const struct tm &t) { return t.tm_hour + t.tm_min / 60.0 + t.tm_sec / 3600.0; }

MoonPosition Model(const struct tm &utc, double longitude, double latitude, double earlier = 0)
{
    return LowPrecisionMoon(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday,
                            UtHours(utc) - earlier / 3600.0, longitude, latitude);
}

// Azimuth (from north) and elevation against libnova's (azimuth from the south), the azimuth
// error scaled down towards the zenith.
void ExpectHorizon(double azimuth, double elevation, const ln_hrz_posn &hrz, double tolerance)
{
    const double dAz = std::remainder(azimuth - hrz.az - 180.0, 360.0);
    EXPECT_NEAR(elevation, hrz.alt, tolerance);
    EXPECT_NEAR(dAz * std::cos(hrz.alt / kDegPerRad), 0.0, tolerance);
}

} // namespace

TEST(LowPrecisionMoonAndSun, AgreeWithLibnovaOverFortyYears)
{
    // Samples 49 days apart at varying hours from 2000 to 2040; the Moon is good to about
    // 0.1 degrees in position and a few hundred km in distance, the Sun to 0.05 degrees. On
    // the equator the topocentric declination is a limit (0/0 in the general form). libnova's
    // positions are referred to J2000, the models' to the equinox of date.
    const ln_lnlat_posn stations[] = {{-71.0, 42.5}, {151.2, -33.9}, {10.0, 60.0}, {-120.0, -10.0},
                                      {-30.0, 0.0}};
    for (int k = 0; k < 300; ++k) {
        time_t t = kStart2000 + (time_t)k * 49 * 86400 + k * 7919;
        const struct tm utc = Utc(t);
        const double jd = ln_get_julian_from_timet(&t), km = ln_get_lunar_earth_dist(jd);
        ln_equ_posn j2000, geo, sun;
        ln_get_lunar_equ_coords(jd, &j2000);
        ln_get_equ_prec(&j2000, jd, &geo);
        ln_get_solar_equ_coords(jd, &j2000);
        ln_get_equ_prec(&j2000, jd, &sun);
        for (ln_lnlat_posn station : stations) {
            SCOPED_TRACE(testing::Message() << k << " at " << station.lat);
            const MoonPosition m = Model(utc, station.lng, station.lat);
            ln_equ_posn model{m.geocentricRa, m.geocentricDec};
            ASSERT_LT(ln_get_angular_separation(&geo, &model), 0.12);
            ASSERT_NEAR(m.distanceKm, km, 350.0);
            ASSERT_TRUE(m.geocentricRa >= 0.0 && m.geocentricRa < 360.0);

            // libnova's diurnal parallax, then the horizon.
            ln_equ_posn shift, topo;
            ln_get_parallax(&geo, km / 149597870.7, &station, 0.0, jd, &shift);
            topo = {geo.ra + shift.ra, geo.dec + shift.dec};
            ln_hrz_posn hrz;
            ln_get_hrz_from_equ(&topo, &station, jd, &hrz);
            ExpectHorizon(m.azimuth, m.elevation, hrz, 0.15);

            // The spatial offset is the parallactic angle with the opposite sign:
            // -atan2(sin H, tan phi cos dec - sin dec cos H) from libnova's hour angle.
            SourceTrack track{};
            EmeMoonTrack(utc, station.lat, station.lng, 1296.0, track);
            const double lst = ln_get_apparent_sidereal_time(jd) * 15 + station.lng;
            const double H = (lst - topo.ra) / kDegPerRad, dec = topo.dec / kDegPerRad;
            const double phi = station.lat / kDegPerRad;
            const double q = atan2(sin(H), tan(phi) * cos(dec) - sin(dec) * cos(H));
            if (std::fabs(hrz.alt) < 80) { // ill-conditioned at the zenith
                EXPECT_NEAR(std::remainder(track.spatialOffset + q * kDegPerRad, 360.0), 0.0, 0.25);
            }

            const double ut = UtHours(utc);
            const SunPosition s = LowPrecisionSun(
                DayNumber(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, ut), ut, station.lat,
                station.lng);
            ln_equ_posn modelSun{s.rightAscension, s.declination};
            EXPECT_LT(ln_get_angular_separation(&sun, &modelSun), 0.05);
            EXPECT_TRUE(s.rightAscension > -180.0 && s.rightAscension <= 180.0);
            ln_get_hrz_from_equ(&sun, &station, jd, &hrz);
            ExpectHorizon(s.azimuth, s.elevation, hrz, 0.1);
        }
    }
}

TEST(EmeMoonTrack, DopplerOfAStationTwoHundredMetresUp)
{
    // The textbook range rate between the model's Moon (positions 100 s apart) and a station
    // 200 m above the ellipsoid (a = 6378.140 km, e^2 = 0.00669438499958795) turning at
    // 7.292115852756013e-5 rad/s with the model's sidereal time: the shift is -2 f rate / c.
    const double f = 10368.0, e2 = 0.00669438499958795, omega = 7.292115852756013e-5;
    int up = 0;
    for (int k = 0; k < 24; ++k) {
        const double lat = -78.0 + 39.0 * (k % 5), lon = -170.0 + 67.0 * (k % 6);
        const struct tm utc = Utc(kStart2000 + (time_t)k * 86400 * 401 + k * 3413);
        double P[2][3], theta = 0;
        for (int i = 0; i < 2; ++i) { // the Moon 100 s ago and now, km
            const MoonPosition m = Model(utc, lon, lat, (1 - i) * 100.0);
            const double ra = m.geocentricRa / kDegPerRad, dec = m.geocentricDec / kDegPerRad;
            const double unit[3] = {cos(dec) * cos(ra), cos(dec) * sin(ra), sin(dec)};
            for (int c = 0; c < 3; ++c)
                P[i][c] = m.distanceKm * unit[c];
            theta = m.localSiderealTime * M_PI / 12.0;
        }
        const double phi = lat / kDegPerRad, N = 6378.140 / std::sqrt(1 - e2 * sin(phi) * sin(phi));
        const double O[3] = {(N + 0.2) * cos(phi) * cos(theta), (N + 0.2) * cos(phi) * sin(theta),
                             (N * (1 - e2) + 0.2) * sin(phi)};
        const double U[3] = {-omega * O[1], omega * O[0], 0.0};
        double rate = 0, range = 0;
        for (int c = 0; c < 3; ++c) {
            rate += ((P[1][c] - P[0][c]) / 100.0 - U[c]) * (P[1][c] - O[c]);
            range += (P[1][c] - O[c]) * (P[1][c] - O[c]);
        }
        SourceTrack record{};
        EmeMoonTrack(utc, lat, lon, f, record);
        up += record.aboveHorizon;
        const double expected = -2e6 * f * rate / std::sqrt(range) / 299792.458;
        EXPECT_NEAR(record.doppler, record.aboveHorizon ? expected : 0.0, 0.01) << k;
    }
    EXPECT_GT(up, 6);
}
