// The locator conversions against worked examples.
#include "tracking/Maidenhead.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace lunaquill;

TEST(GridToLatLong, WorkedExamplesAndRefusals)
{
    const struct { const char *grid; double latitude, longitude; } rows[] = {
        // FN42: 42 + 12.5 * 2.5 / 60 and 2*4 + 20*5 + 12.5 * 5 / 60 - 180.
        {"FN42", 42.520833333333336, -70.958333333333329},
        {"FN42A", 42.520833333333336, -70.958333333333329}, // one letter: middle
        {"fn42aa", 42.0 + 0.5 * 2.5 / 60, -72.0 + 0.5 * 5.0 / 60},
        {"FN42mm", 42.0 + 12.5 * 2.5 / 60, -72.0 + 12.5 * 5.0 / 60},
        {"FN42MMxy", 42.0 + 12.5 * 2.5 / 60, -72.0 + 12.5 * 5.0 / 60}, // six characters, any case
        {"AA00aa", -90.0 + 0.5 * 2.5 / 60, -180.0 + 0.5 * 5.0 / 60},
        {"RR99xx", 89.0 + 23.5 * 2.5 / 60, 178.0 + 23.5 * 5.0 / 60},
        // Any letter counts by its distance from 'A', beyond R too.
        {"ZZ00", 160.0 + 12.5 * 2.5 / 60, 320.0 + 12.5 * 5.0 / 60},
        // Not locators: refused, the target left unchanged.
        {"FN4", 12, 34}, {"F142", 12, 34}, {"", 12, 34}, {"1N42", 12, 34}, {"FNA2", 12, 34},
        {"FN4x", 12, 34}, {" FN42", 12, 34}, {"\xff\xfe" "42", 12, 34}, {nullptr, 12, 34},
    };
    for (const auto &row : rows) {
        double lat = 12, lon = 34;
        EXPECT_EQ(GridToLatLong(row.grid, lat, lon), row.latitude == 12 ? 1 : 0);
        EXPECT_NEAR(lat, row.latitude, 1e-12) << (row.grid ? row.grid : "null");
        EXPECT_NEAR(lon, row.longitude, 1e-12) << (row.grid ? row.grid : "null");
    }
    // Eight bytes without a terminator: only six are looked at; a short text ends at its NUL
    // (see the sanitizer build).
    const char field[8] = {'F', 'N', '4', '2', 'm', 'm', 'x', 'y'}, shortText[3] = {'F', 'N', 0};
    double lat = 0, lon = 0;
    EXPECT_EQ(GridToLatLong(field, lat, lon) + GridToLatLong(shortText, lat, lon), 0 + 1);
}

TEST(LatLongToGrid, WorkedExamplesAndRefusals)
{
    const struct { double latitude, longitude; const char *grid; } rows[] = {
        {42.5, -71.0, "FN42mm"}, {0.0, 0.0, "JJ00aa"},  {-33.9, 151.2, "QF56oc"},
        {51.5, -0.12, "IO91wm"}, {-90.0, -180.0, "AA00aa"},
        {90.0, 0.0, "JS00aa"},   // latitude 90: second letter 'S'
        {0.0, 180.0, "SJ00aa"},  // longitude 180: first letter 'S'
        // Longitudes beyond 180 are refused with an empty text.
        {0, -180.0001, ""}, {0, 180.0001, ""}, {0, 1e300, ""}, {0, -INFINITY, ""}, {0, NAN, ""},
    };
    for (const auto &row : rows) {
        char grid[7] = "ABCDEF";
        EXPECT_EQ(LatLongToGrid(grid, row.latitude, row.longitude), *row.grid ? 0 : 1);
        EXPECT_STREQ(grid, row.grid);
        EXPECT_EQ(grid[6], '\0');
    }
    // Unchecked latitudes still stay inside the buffer.
    char grid[8] = {0, 0, 0, 0, 0, 0, 0, 'z'};
    EXPECT_EQ(LatLongToGrid(grid, NAN, 0.0), 0);
    EXPECT_EQ(LatLongToGrid(grid, 1e300, 0.0), 0);
    EXPECT_TRUE(grid[6] == '\0' && grid[7] == 'z');

    // Round trip: the centre of the subsquare lies within half a subsquare.
    for (double lat = -89.9; lat < 90; lat += 7.3) {
        for (double lon = -179.9; lon < 180; lon += 11.1) {
            double clat = 0, clon = 0;
            ASSERT_EQ(LatLongToGrid(grid, lat, lon), 0);
            ASSERT_EQ(GridToLatLong(grid, clat, clon), 0) << grid;
            EXPECT_LE(std::fabs(clat - lat), 1.25 / 60 + 1e-9) << grid;
            EXPECT_LE(std::fabs(clon - lon), 2.5 / 60 + 1e-9) << grid;
        }
    }
}
