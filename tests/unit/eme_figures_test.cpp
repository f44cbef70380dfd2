// The EME link figures against worked examples and hand calculations.
#include "tracking/EmeFigures.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace lunaquill;

TEST(SkyTemperature, ReadsTheTableOneCellBehindHalfTheLongitude)
{
    struct Row { double lambda; double kelvin; };
    // At 144 MHz the figure is the table entry itself.
    const Row rows[] = {
        {1.0, 231},    // below 2 degrees: entry 179
        {0.0, 231},
        {2.0, 234},    // entry 0
        {3.999, 234},
        {4.0, 246},    // entry 1
        {359.9, 238},  // entry 178
        {266.0, 3018}, // entry 132, near the galactic centre
    };
    for (const Row &row : rows)
        EXPECT_NEAR(SkyTemperatureAt(144.0, row.lambda), row.kelvin, 1e-9) << row.lambda;
}

TEST(SkyTemperature, ScalesWithSpectralIndexAboveTheBackground)
{
    // (144/1296)^2.6 * (234 - 2.7) + 2.7, worked by hand: 3.46409 K.
    EXPECT_NEAR(SkyTemperatureAt(1296.0, 2.0), 3.4640910421, 1e-8);
    // At 50 MHz the sky is hotter: (144/50)^2.6 * 231.3 + 2.7.
    EXPECT_NEAR(SkyTemperatureAt(50.0, 2.0), std::pow(2.88, 2.6) * 231.3 + 2.7, 1e-9);
}

TEST(SkyTemperature, OutOfRangeLongitudesStayInsideTheTable)
{
    for (double lambda : {-1000.0, -3.0, 360.0, 363.0, 1e12, double(NAN), double(INFINITY), -double(INFINITY)}) {
        double t = SkyTemperatureAt(144.0, lambda);
        EXPECT_GE(t, 196.0) << lambda;
        EXPECT_LE(t, 3038.0) << lambda;
    }
}

TEST(PathLoss, IsZeroAtPerigeeAndNegativeBeyond)
{
    EXPECT_DOUBLE_EQ(PathLossVsPerigee(356903.0), 0.0);
    // -40 log10(406700 / 356903) = -2.26896 dB.
    EXPECT_NEAR(PathLossVsPerigee(406700.0), -2.268959, 1e-6);
}

TEST(Degradation, EqualsPathLossAgainstTheColdSkyReference)
{
    for (double f : {144.0, 432.0, 1296.0, 10368.0}) {
        double coldSky = 13.0 * std::pow(408.0 / f, 2.6);
        EXPECT_NEAR(Degradation(-1.5, coldSky, f), -1.5, 1e-12) << f;
    }
    // A hotter sky degrades: 1000 K at 144 MHz against 13*(408/144)^2.6 = 195.3 K.
    EXPECT_NEAR(Degradation(0.0, 1000.0, 144.0),
                -10.0 * std::log10(1080.0 / (13.0 * std::pow(408.0 / 144.0, 2.6) + 80.0)), 1e-12);
}

TEST(DayNumber, CountsDaysFromTheStartOf2000)
{
    // Day 0 is 2000 January 0.0 UT, i.e. JD 2451543.5.
    EXPECT_DOUBLE_EQ(DayNumber(2000, 1, 1, 12.0), 1.5);
    EXPECT_DOUBLE_EQ(DayNumber(2025, 6, 1, 0.0), 9284.0);
    EXPECT_DOUBLE_EQ(DayNumber(2047, 12, 31, 23.5), 17532.979166666668);
    // Within a year the truncating divisions still count real calendar days.
    EXPECT_DOUBLE_EQ(DayNumber(2024, 3, 1, 0.0) - DayNumber(2024, 2, 28, 0.0), 2.0);
    EXPECT_DOUBLE_EQ(DayNumber(2025, 3, 1, 0.0) - DayNumber(2025, 2, 28, 0.0), 1.0);
}

TEST(SubSourcePoint, AddsOneHundredAndEightyBelow180)
{
    // 2025-06-01 00:00 UT: d = 9284, sidereal angle 4.894961213 + 6.300388099 d
    // radians; x = fmod(15 ra - angle in degrees, 360), worked out by hand.
    struct tm utc {};
    utc.tm_year = 125;
    utc.tm_mon = 5;
    utc.tm_mday = 1;
    struct Row { double raHours; double longitude; };
    const Row rows[] = {
        {0.0, 108.78922519739717},   // x = -71.21: -180 <= x < 180, +180
        {12.0, -71.21077480260283},  // x = -251.21: below -180, +180
        {18.5, 26.289225197397172},  // x = -153.71
    };
    for (const Row &row : rows) {
        double lat = 0, lon = 0;
        SubSourcePoint(utc, row.raHours, 12.5, lat, lon);
        EXPECT_DOUBLE_EQ(lat, 12.5);
        EXPECT_NEAR(lon, row.longitude, 1e-6) << row.raHours;
    }
}
