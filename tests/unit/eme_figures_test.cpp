// The EME link figures against worked examples and hand calculations.
#include "tracking/EmeFigures.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace lunaquill;

TEST(SkyTemperature, ReadsTheTableOneCellBehindHalfTheLongitude)
{
    // At 144 MHz the figure is the table entry itself; elsewhere
    // (144 / f)^2.6 * (T - 2.7) + 2.7, worked by hand.
    const struct { double frequency, lambda, kelvin; } rows[] = {
        {144, 1.0, 231},    // below 2 degrees: entry 179
        {144, 3.999, 234},  {144, 4.0, 246},    // entries 0 and 1
        {144, 359.9, 238},  // entry 178
        {144, 266.0, 3018}, // entry 132, near the galactic centre
        {1296, 2.0, 3.4640910421},
        // Out of range and non-finite: entry 179, never outside the table (363 would give 180).
        {144, -3.0, 231},   {144, 360.0, 231},  {144, 363.0, 231}, {144, 1e12, 231},
        {144, NAN, 231},    {144, -INFINITY, 231},
    };
    for (const auto &row : rows)
        EXPECT_NEAR(SkyTemperatureAt(row.frequency, row.lambda), row.kelvin, 1e-7)
            << row.frequency << " MHz at " << row.lambda;
}

TEST(PathLossAndDegradation, WorkedExamples)
{
    EXPECT_DOUBLE_EQ(PathLossVsPerigee(356903.0), 0.0);
    // -40 log10(406700 / 356903) = -2.26896 dB.
    EXPECT_NEAR(PathLossVsPerigee(406700.0), -2.268959, 1e-6);
    // Against a sky as cold as the reference 13 (408 / f)^2.6 only the path loss remains.
    for (double f : {144.0, 432.0, 1296.0, 10368.0})
        EXPECT_NEAR(Degradation(-1.5, 13.0 * std::pow(408.0 / f, 2.6), f), -1.5, 1e-12) << f;
    // 1000 K at 144 MHz against 13 (408 / 144)^2.6 = 194.947 K: -10 log10(1080 / 274.947).
    EXPECT_NEAR(Degradation(0.0, 1000.0, 144.0), -5.9417425, 1e-6);
}

TEST(SubSourcePoint, AddsOneHundredAndEightyBelow180)
{
    // Day 0 is 2000 January 0.0 UT, i.e. JD 2451543.5; within a year the truncating divisions
    // still count real calendar days.
    EXPECT_DOUBLE_EQ(DayNumber(2000, 1, 1, 12.0), 1.5);
    EXPECT_DOUBLE_EQ(DayNumber(2025, 6, 1, 0.0), 9284.0);
    EXPECT_DOUBLE_EQ(DayNumber(2024, 3, 1, 0.0) - DayNumber(2024, 2, 28, 0.0), 2.0);
    EXPECT_DOUBLE_EQ(DayNumber(2025, 3, 1, 0.0) - DayNumber(2025, 2, 28, 0.0), 1.0);
    // 2025-06-01: d = 9284 + UT / 24, sidereal angle 4.894961213 + 6.300388099 d radians;
    // x = fmod(15 ra - angle in degrees, 360), worked out by hand.
    const struct { int hour, minute, second; double raHours, longitude; } rows[] = {
        {0, 0, 0, 0.0, 108.78922519739717},   // x = -71.21: -180 <= x < 180, +180
        {0, 0, 0, 12.0, -71.21077480260283},  // x = -251.21: below -180, +180
        {12, 34, 56, 6.0, 9.539157105609775}, // x = -170.46
    };
    for (const auto &row : rows) {
        struct tm utc {};
        utc.tm_year = 125, utc.tm_mon = 5, utc.tm_mday = 1;
        utc.tm_hour = row.hour, utc.tm_min = row.minute, utc.tm_sec = row.second;
        double lat = 0, lon = 0;
        SubSourcePoint(utc, row.raHours, 12.5, lat, lon);
        EXPECT_DOUBLE_EQ(lat, 12.5);
        EXPECT_NEAR(lon, row.longitude, 1e-6) << row.raHours;
    }
}
