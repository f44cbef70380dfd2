// The locator conversions against worked examples.
#include "tracking/Maidenhead.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace lunaquill;

TEST(GridToLatLong, SquareCentreAndSubsquares)
{
    struct Row { const char *grid; double latitude; double longitude; };
    const Row rows[] = {
        // FN42: 42 + 12.5 * 2.5 / 60 and 2*4 + 20*5 + 12.5 * 5 / 60 - 180.
        {"FN42", 42.520833333333336, -70.958333333333329},
        {"FN42A", 42.520833333333336, -70.958333333333329}, // one letter: middle
        {"fn42aa", 42.0 + 0.5 * 2.5 / 60, -72.0 + 0.5 * 5.0 / 60},
        {"FN42mm", 42.0 + 12.5 * 2.5 / 60, -72.0 + 12.5 * 5.0 / 60},
        {"JJ00aa", 0.0 + 0.5 * 2.5 / 60, 0.0 + 0.5 * 5.0 / 60},
        {"AA00aa", -90.0 + 0.5 * 2.5 / 60, -180.0 + 0.5 * 5.0 / 60},
        {"RR99xx", 89.0 + 23.5 * 2.5 / 60, 178.0 + 23.5 * 5.0 / 60},
        // Any letter counts by its distance from 'A', beyond R too.
        {"ZZ00", 160.0 + 12.5 * 2.5 / 60, 320.0 + 12.5 * 5.0 / 60},
    };
    for (const Row &row : rows) {
        double lat = 99, lon = 99;
        ASSERT_EQ(GridToLatLong(row.grid, lat, lon), 0) << row.grid;
        EXPECT_NEAR(lat, row.latitude, 1e-12) << row.grid;
        EXPECT_NEAR(lon, row.longitude, 1e-12) << row.grid;
    }
}

TEST(GridToLatLong, RefusesNonLocatorsAndLeavesTheTargetUnchanged)
{
    for (const char *grid : {"FN4", "F142", "", "F", "1N42", "FNA2", "FN4x", " FN42", "\xff\xfe" "42"}) {
        double lat = 12.0, lon = 34.0;
        EXPECT_EQ(GridToLatLong(grid, lat, lon), 1) << grid;
        EXPECT_EQ(lat, 12.0);
        EXPECT_EQ(lon, 34.0);
    }
    double lat = 0, lon = 0;
    EXPECT_EQ(GridToLatLong(nullptr, lat, lon), 1);
}

TEST(GridToLatLong, ReadsNoFurtherThanSixCharactersOrTheTerminator)
{
    // Eight bytes without a terminator: only six are looked at.
    char field[8] = {'F', 'N', '4', '2', 'm', 'm', 'x', 'y'};
    double lat = 0, lon = 0;
    EXPECT_EQ(GridToLatLong(field, lat, lon), 0);
    EXPECT_NEAR(lat, 42.5208333, 1e-6);
    // A three-byte text stops at its NUL.
    char shortText[3] = {'F', 'N', '\0'};
    EXPECT_EQ(GridToLatLong(shortText, lat, lon), 1);
}

TEST(LatLongToGrid, WorkedExamples)
{
    struct Row { double latitude; double longitude; const char *grid; };
    const Row rows[] = {
        {42.5, -71.0, "FN42mm"},
        {0.0, 0.0, "JJ00aa"},
        {-33.9, 151.2, "QF56oc"},
        {51.5, -0.12, "IO91wm"},
        {90.0, 0.0, "JS00aa"},     // latitude 90: second letter 'S'
        {0.0, 180.0, "SJ00aa"},    // longitude 180: first letter 'S'
        {-90.0, -180.0, "AA00aa"},
    };
    for (const Row &row : rows) {
        char grid[7];
        memset(grid, 'x', sizeof grid);
        ASSERT_EQ(LatLongToGrid(grid, row.latitude, row.longitude), 0);
        EXPECT_STREQ(grid, row.grid);
    }
}

TEST(LatLongToGrid, RefusesLongitudesBeyond180)
{
    for (double lon : {-180.0001, 180.0001, 1e300, -double(INFINITY), double(NAN)}) {
        char grid[7] = "ABCDEF";
        EXPECT_EQ(LatLongToGrid(grid, 0.0, lon), 1) << lon;
        EXPECT_EQ(grid[0], '\0');
        EXPECT_EQ(grid[6], '\0');
    }
    // Unchecked latitudes still stay inside the buffer.
    char grid[8] = {0, 0, 0, 0, 0, 0, 0, 'z'};
    EXPECT_EQ(LatLongToGrid(grid, NAN, 0.0), 0);
    EXPECT_EQ(LatLongToGrid(grid, 1e300, 0.0), 0);
    EXPECT_EQ(grid[6], '\0');
    EXPECT_EQ(grid[7], 'z');
}

TEST(LatLongToGrid, RoundTripsThroughSubsquareCentres)
{
    for (double lat = -89.9; lat < 90; lat += 7.3) {
        for (double lon = -179.9; lon < 180; lon += 11.1) {
            char grid[7];
            ASSERT_EQ(LatLongToGrid(grid, lat, lon), 0);
            double clat = 0, clon = 0;
            ASSERT_EQ(GridToLatLong(grid, clat, clon), 0) << grid;
            // The centre of the subsquare lies within half a subsquare.
            EXPECT_LE(std::fabs(clat - lat), 1.25 / 60 + 1e-9) << grid;
            EXPECT_LE(std::fabs(clon - lon), 2.5 / 60 + 1e-9) << grid;
        }
    }
}
