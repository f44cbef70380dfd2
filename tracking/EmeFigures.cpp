#include "EmeFigures.h"

#include <cmath>

namespace lunaquill {

const int32_t SkyTemp144Table[180] = {
    234, 246, 257, 267, 275, 280, 283, 286, 291, 298, 305, 313,
    322, 331, 341, 351, 361, 369, 376, 381, 383, 382, 379, 374,
    370, 366, 363, 361, 363, 368, 376, 388, 401, 415, 428, 440,
    453, 467, 487, 512, 544, 579, 607, 618, 609, 588, 563, 539,
    512, 482, 450, 422, 398, 379, 363, 349, 334, 319, 302, 282,
    262, 242, 226, 213, 205, 200, 198, 197, 196, 197, 200, 202,
    204, 205, 204, 203, 202, 201, 203, 206, 212, 218, 223, 227,
    231, 236, 240, 243, 247, 257, 276, 301, 324, 339, 346, 344,
    339, 331, 323, 316, 312, 310, 312, 317, 327, 341, 358, 375,
    392, 407, 422, 437, 451, 466, 480, 494, 511, 530, 552, 579,
    612, 653, 702, 768, 863, 1008, 1232, 1557, 1966, 2385, 2719, 2924,
    3018, 3038, 2986, 2836, 2570, 2213, 1823, 1461, 1163, 939, 783, 677,
    602, 543, 494, 452, 419, 392, 373, 360, 353, 350, 350, 350,
    350, 350, 350, 348, 344, 337, 329, 319, 307, 295, 284, 276,
    272, 272, 273, 274, 274, 271, 266, 260, 252, 245, 238, 231,
};

double DayNumber(int year, int month, int day, double utHours)
{
    // 32-bit integer arithmetic with truncating divisions, as the method has it.
    int32_t d = 367 * year - 7 * (year + (month + 9) / 12) / 4 + 275 * month / 9 + day - 730530;
    return d + utHours / 24.0;
}

double SkyTemperatureAt(double frequencyMHz, double eclipticLongitude)
{
    // The complement of trunc(-lambda/2) is floor(lambda/2) - 1: the table is
    // read one cell behind lambda/2, which is its calibration. Below 2 degrees
    // that gives -1, read as unsigned it is above 180 and becomes 179.
    // Index 180 cannot arise for longitudes below 360; it is sent to 179 too,
    // as are non-finite longitudes, so the read stays inside the table.
    double scaled = eclipticLongitude * -0.5;
    int32_t truncated = (scaled > -2147483648.0 && scaled < 2147483647.0) ? (int32_t)scaled : 0;
    uint32_t index = (uint32_t)~truncated;
    if (index >= 180)
        index = 179;
    double t144 = SkyTemp144Table[index];
    return pow(144.0 / frequencyMHz, 2.6) * (t144 - 2.7) + 2.7;
}

double PathLossVsPerigee(double distanceKm)
{
    return -40.0 * log10(distanceKm / 356903.0);
}

double Degradation(double pathLossDb, double skyTemperature, double frequencyMHz)
{
    return pathLossDb
           - 10.0 * log10((skyTemperature + 80.0) / (13.0 * pow(408.0 / frequencyMHz, 2.6) + 80.0));
}

double SiderealDegrees(const struct tm &utc)
{
    double ut = utc.tm_hour + utc.tm_min / 60.0 + utc.tm_sec / 3600.0;
    double d = DayNumber(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, ut);
    double siderealRadians = 4.894961213 + 6.300388099 * d;
    return siderealRadians * 57.29577951307855;
}

double Remainder360(double a)
{
    if (!(std::fabs(a) < 1e12))
        return std::fmod(a, 360.0);
    // Here the quotient is exact: a / 360 lies at least a's last place / 360
    // from any whole number, more than half the quotient's last place, so it
    // never rounds onto one. Then q * 360 and a - q * 360 (the true remainder,
    // which fits) are exact too.
    const double r = a - std::trunc(a / 360.0) * 360.0;
    return r == 0 ? std::copysign(0.0, a) : r;  // a zero keeps a's sign, as fmod's does
}

double SubLongitude(double raHours, double siderealDegrees)
{
    double x = Remainder360(raHours * 15.0 - siderealDegrees);
    // Both branches add 180, and every value below 180 takes one of them:
    // this is the program's rule for the sub-point's longitude.
    if (x < -180.0)
        x += 180.0;
    else if (x < 180.0)
        x += 180.0;
    return x;
}

void SubSourcePoint(const struct tm &utc, double raHours, double decDegrees,
                    double &subLatitude, double &subLongitude)
{
    subLatitude = decDegrees;
    subLongitude = SubLongitude(raHours, SiderealDegrees(utc));
}

} // namespace lunaquill
