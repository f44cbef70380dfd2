// The Moon of the EME figures: mean orbital elements linear in the day
// number, Kepler's equation, then the largest periodic perturbations in
// longitude, latitude and distance (Schlyter's low-precision method), with a
// topocentric correction for the station.
#include "EmeFigures.h"

#include <cmath>

namespace lunaquill {

namespace {

constexpr double kDegPerRad = 57.29577951307855;

double sind(double degrees) { return sin(degrees / kDegPerRad); }
double cosd(double degrees) { return cos(degrees / kDegPerRad); }

} // namespace

MoonPosition LowPrecisionMoon(int year, int month, int day, double utHours,
                              double longitude, double latitude)
{
    const double d = DayNumber(year, month, day, utHours);

    // Mean elements (degrees; the node is deliberately not reduced).
    const double N = 125.1228 - 0.0529538083 * d;
    const double inclination = 0.08980417133212215; // 5.1454 degrees, radians
    const double w = fmod(318.0634 + 0.1643573223 * d + 360000.0, 360.0);
    const double a = 60.2666;                       // Earth radii
    const double e = 0.0549;
    const double M = fmod(115.3654 + 13.0649929509 * d + 360000.0, 360.0);

    // Eccentric anomaly in degrees, refined by two Newton steps.
    const double eDeg = 3.1455382952680124; // e * 180 / pi
    double E = M + eDeg * sind(M) * (1.0 + e * cosd(M));
    for (int i = 0; i < 2; ++i)
        E = E - (E - eDeg * sind(E) - M) / (1.0 - e * cosd(E));

    const double xv = a * (cosd(E) - e);
    const double yv = a * sqrt(0.99698599) * sind(E);
    const double r = sqrt(xv * xv + yv * yv);
    const double u = fmod(atan2(yv, xv) * kDegPerRad + 720.0, 360.0) + w;

    const double x = r * (cosd(N) * cosd(u) - sind(N) * sind(u) * cos(inclination));
    const double y = r * (sind(u) * cosd(N) * cos(inclination) + sind(N) * cosd(u));
    const double beta0 = atan2(r * sin(inclination) * sind(u), sqrt(x * x + y * y)) * kDegPerRad;
    const double lambda0 = fmod(atan2(y, x) * kDegPerRad + 720.0, 360.0);

    // Arguments of the Sun and the Moon for the perturbations.
    const double Ms = fmod(356.047 + 0.9856002585 * d + 3.6e6, 360.0);
    const double Ls = fmod(282.9404 + 4.70935e-5 * d + Ms + 720.0, 360.0);
    const double Lm = fmod(M + w + N + 720.0, 360.0);
    const double D = fmod(Lm - Ls + 360.0, 360.0);
    const double F = fmod(Lm - N + 360.0, 360.0);

    const double lambda = lambda0 - 1.274 * sind(M - 2 * D) + 0.658 * sind(2 * D)
                          - 0.186 * sind(Ms) - 0.059 * sind(2 * M - 2 * D)
                          - 0.057 * sind(M - 2 * D + Ms) + 0.053 * sind(M + 2 * D)
                          + 0.046 * sind(2 * D - Ms) + 0.041 * sind(M - Ms)
                          - 0.035 * sind(D) - 0.031 * sind(M + Ms)
                          - 0.015 * sind(2 * F - 2 * D) + 0.011 * sind(M - 4 * D);
    const double beta = beta0 - 0.173 * sind(F - 2 * D) - 0.055 * sind(M - F - 2 * D)
                        - 0.046 * sind(M + F - 2 * D) + 0.033 * sind(F + 2 * D)
                        + 0.017 * sind(2 * M + F);
    // Distance in Earth radii from its own series, not from r above.
    const double R = 60.36298 - 3.27746 * cosd(M) - 0.57994 * cosd(M - 2 * D)
                     - 0.46357 * cosd(2 * D) - 0.08904 * cosd(2 * M)
                     + 0.03865 * cosd(2 * M - 2 * D) - 0.03237 * cosd(2 * D - Ms)
                     - 0.02688 * cosd(M + 2 * D) - 0.02358 * cosd(M - 2 * D + Ms)
                     - 0.0203 * cosd(M - Ms) + 0.01719 * cosd(D) + 0.01671 * cosd(M + Ms);

    // Ecliptic to equatorial.
    const double xe = R * cosd(lambda) * cosd(beta);
    const double ye = R * sind(lambda) * cosd(beta);
    const double ze = R * sind(beta);
    const double obliquity = 23.4393 - 3.563e-7 * d;
    const double ye2 = ye * cosd(obliquity) - ze * sind(obliquity);
    const double ze2 = ye * sind(obliquity) + ze * cosd(obliquity);

    MoonPosition p{};
    p.geocentricRa = fmod(atan2(ye2, xe) * kDegPerRad + 360.0, 360.0);
    p.geocentricDec = atan2(ze2, sqrt(xe * xe + ye2 * ye2)) * kDegPerRad;
    p.distanceKm = R * 6378.14;
    p.localSiderealTime = fmod((Ls + 180.0) / 15.0 + utHours + longitude / 15.0 + 48.0, 24.0);
    const double HA = p.localSiderealTime * 15.0 - p.geocentricRa;

    // Topocentric correction.
    const double geocentricLat = latitude - 0.1924 * sind(2 * latitude);
    const double rho = 0.99883 + 0.00167 * cosd(2 * latitude);
    const double parallax = asin(1.0 / R) * kDegPerRad * rho;
    const double g = atan(tan(geocentricLat / kDegPerRad) / cosd(HA)) * kDegPerRad;
    p.topocentricRa = p.geocentricRa
                      - parallax * cosd(geocentricLat) * sind(HA) / cosd(p.geocentricDec);
    // On the equator g is 0 and the declination term 0/0; its limit there
    // (sin(geocentric latitude) / sin g tends to cos HA) takes its place.
    if (sind(g) == 0.0)
        p.topocentricDec = p.geocentricDec - parallax * sind(-p.geocentricDec) * cosd(HA);
    else
        p.topocentricDec = p.geocentricDec
                           - parallax * sind(geocentricLat) * sind(g - p.geocentricDec) / sind(g);

    double H = p.localSiderealTime * 15.0 - p.topocentricRa;
    if (H > 180.0)
        H -= 360.0;
    if (H < -180.0)
        H += 360.0;
    p.hourAngle = H;

    // Horizontal coordinates.
    const double Hr = -(H * 6.28318530718 / 360.0);
    const double dec = p.topocentricDec / kDegPerRad;
    const double phi = latitude / kDegPerRad;
    const double s = cos(Hr) * cos(dec) * cos(phi) + sin(dec) * sin(phi);
    const double c = sqrt(1.0 - s * s);
    p.elevation = atan(s / c) * kDegPerRad;
    const double sinA = sin(Hr) * cos(dec) / c;
    const double cosA = (sin(dec) - s * sin(phi)) / (c * cos(phi));
    // The rotation written with m (1 within rounding) and k (about 2e-13).
    const double m = sin(1.570796326795 - phi) / cos(phi);
    const double k = cos(1.570796326795 - phi) * sin(-3.14159265359);
    const double ra = m * cosA + k * sinA;
    const double rb = m * sinA - k * cosA;
    const double t = ra > 0 ? rb / (1.0 + ra) : (1.0 - ra) / rb;
    double A = 2.0 * atan(t);
    if (A < 0)
        A += 6.283185307179586;
    p.azimuth = A * kDegPerRad;
    return p;
}

namespace {

// Every Moon field of EmeMoonTrack; returns the echo Doppler (Hz) whatever the
// elevation, which the caller keeps or clears.
double TrackMoon(const struct tm &utc, double latitude, double longitude, double frequencyMHz,
                 SourceTrack &record)
{
    // Station 200 m above the ellipsoid, whatever its real height.
    const double phi = latitude / kDegPerRad;
    const double W = 1.0 - 0.00669438499958795 * sin(phi) * sin(phi);
    const double p = cos(phi) * (6378140.0 / sqrt(W) + 200.0);
    const double q = sin(phi) * (6335442.275258727 / sqrt(W) + 200.0);

    const int year = utc.tm_year + 1900;
    const int month = utc.tm_mon + 1;
    const double ut = utc.tm_hour + utc.tm_min / 60.0 + utc.tm_sec / 3600.0;

    // The Moon 100 seconds earlier gives its geocentric velocity.
    const MoonPosition before =
        LowPrecisionMoon(year, month, utc.tm_mday, ut - 0.027777777777777776, longitude, latitude);
    const MoonPosition now = LowPrecisionMoon(year, month, utc.tm_mday, ut, longitude, latitude);

    auto geocentric = [](const MoonPosition &m, double v[3]) {
        v[0] = m.distanceKm * cosd(m.geocentricDec) * cosd(m.geocentricRa);
        v[1] = m.distanceKm * cosd(m.geocentricDec) * sind(m.geocentricRa);
        v[2] = m.distanceKm * sind(m.geocentricDec);
    };
    double P1[3], P[3];
    geocentric(before, P1);
    geocentric(now, P);
    const double theta = now.localSiderealTime * 6.28318530718 / 24.0;

    const double rhoKm = sqrt(p * p + q * q) * 0.001;
    const double phiPrime = atan2(q, p);
    const double O[3] = {rhoKm * cos(phiPrime) * cos(theta), rhoKm * cos(phiPrime) * sin(theta),
                         rhoKm * sin(phiPrime)};

    const double delta[3] = {P[0] - O[0], P[1] - O[1], P[2] - O[2]};
    const double range = sqrt(delta[0] * delta[0] + delta[1] * delta[1] + delta[2] * delta[2]);
    const double omega = 7.292115852756013e-5; // Earth's rotation, rad/s
    const double V[3] = {(P[0] - P1[0]) / 100.0, (P[1] - P1[1]) / 100.0, (P[2] - P1[2]) / 100.0};
    const double U[3] = {-omega * O[1], omega * O[0], 0.0};
    const double rangeRate = ((V[0] - U[0]) * delta[0] + (V[1] - U[1]) * delta[1]
                              + (V[2] - U[2]) * delta[2]) / range;
    // Two-way shift, positive while the Moon approaches.
    const double doppler = 2.0 * (-rangeRate * frequencyMHz * 1e6 / 299792.458);

    record.skyTemperature = 0.0;
    record.azimuth = now.azimuth;
    record.elevation = now.elevation;
    record.rightAscension = now.geocentricRa;
    record.declination = now.geocentricDec;
    record.distance = now.distanceKm / 1.5e8;

    // Parallactic angle of the Moon at the station.
    const double A = now.azimuth / kDegPerRad;
    const double h = now.elevation / kDegPerRad;
    record.spatialOffset =
        atan2(sin(A) * cos(phi), cos(h) * sin(phi) - cos(A) * cos(phi) * sin(h)) * kDegPerRad;
    record.greenwichHourAngle = now.hourAngle - longitude;
    return doppler;
}

} // namespace

void EmeMoonTrack(const struct tm &utc, double latitude, double longitude,
                  double frequencyMHz, SourceTrack &record)
{
    const double doppler = TrackMoon(utc, latitude, longitude, frequencyMHz, record);
    if (record.elevation >= 0) {
        record.aboveHorizon = 1;
        record.doppler = doppler;
    } else {
        record.aboveHorizon = 0;
        record.doppler = 0.0;
    }
}

double EchoDoppler(const struct tm &utc, double latitude, double longitude, double frequencyMHz)
{
    SourceTrack scratch{};
    return TrackMoon(utc, latitude, longitude, frequencyMHz, scratch);
}

} // namespace lunaquill
