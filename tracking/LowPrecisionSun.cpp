// The Sun from its low-precision orbital elements (Schlyter), geocentric.
#include "EmeFigures.h"

#include <cmath>

namespace lunaquill {

namespace {
constexpr double kDegPerRad = 57.29577951307855;
}

SunPosition LowPrecisionSun(double d, double utHours, double latitude, double longitude)
{
    const double M = fmod(356.047 + 0.9856002585 * d + 3.6e6, 360.0);
    const double e = 0.016709 - 1.151e-9 * d;
    const double w = 282.9404 + 4.70935e-5 * d;

    // One Newton step for the eccentric anomaly (the Moon takes two).
    const double Mr = M / kDegPerRad;
    const double E0 = M + e * kDegPerRad * sin(Mr) * (1.0 + e * cos(Mr));
    const double E0r = E0 / kDegPerRad;
    const double E = E0 - (E0 - e * kDegPerRad * sin(E0r) - M) / (1.0 - e * cos(E0r));
    const double Er = E / kDegPerRad;

    const double x = cos(Er) - e;
    const double y = sqrt(1.0 - e * e) * sin(Er);
    const double r = sqrt(x * x + y * y);
    const double lambda = fmod(atan2(y, x) * kDegPerRad + w + 720.0, 360.0) / kDegPerRad;

    const double xs = r * cos(lambda);
    const double ys = r * sin(lambda);
    const double obliquity = (23.4393 - 3.563e-7 * d) / kDegPerRad;

    SunPosition sun{};
    // Left in (-180, 180]: half the year the right ascension is negative.
    sun.rightAscension = atan2(ys * cos(obliquity), xs) * kDegPerRad;
    sun.declination = atan2(ys * sin(obliquity),
                            sqrt(xs * xs + (ys * cos(obliquity)) * (ys * cos(obliquity))))
                      * kDegPerRad;

    const double lst = fmod((fmod(M + w + 720.0, 360.0) + 180.0) / 15.0 + utHours
                                + longitude / 15.0 + 48.0,
                            24.0);
    const double H = (lst * 15.0 - sun.rightAscension) / kDegPerRad;
    const double dec = sun.declination / kDegPerRad;
    const double phi = latitude / kDegPerRad;
    sun.azimuth = fmod(atan2(cos(dec) * sin(H), sin(phi) * cos(dec) * cos(H) - cos(phi) * sin(dec))
                           * kDegPerRad
                       + 180.0 + 360.0,
                       360.0);
    sun.elevation = asin(cos(phi) * cos(dec) * cos(H) + sin(phi) * sin(dec)) * kDegPerRad;
    return sun;
}

} // namespace lunaquill
