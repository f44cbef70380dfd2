// The locator conversions against worked examples. Buffer bounds and round trips over any
// input are the locator fuzz target's.
#include "tracking/Maidenhead.h"

#include <gtest/gtest.h>

#include <cmath>

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
}
