// Map projection, sky dial and mouse-to-map conversions. Expected pixels are
// worked by hand in the row comments (1600 x 800 map: 0.225 degrees a pixel,
// 66 pixels an hour).
#include "render/Projection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace lunaquill;

namespace {

struct MapRow {
    const char *note;
    int width, height, offset;
    double latitude, longitude;
    int x, y;
};

const MapRow kMapRows[] = {
    // 0 / 0.225 = 0; 90 / 0.225 = 400
    {"180 W at the left edge", 1600, 800, 0, 0.0, -180.0, 0, 400},
    // 360 / 0.225 = 1600, 1600 % 1600 = 0: the right edge wraps to the left
    {"180 E wraps to x 0", 1600, 800, 0, 0.0, 180.0, 0, 400},
    // (800 + 66 * 12) % 1600 = 1592
    {"Greenwich with offset 12", 1600, 800, 12, 0.0, 0.0, 1592, 400},
    // trunc(359.9 / 0.225) = 1599; (1599 + 66 * 23) % 1600 = 1517
    {"offset 23 near 180 E", 1600, 800, 23, 0.0, 179.9, 1517, 400},
    // -0.1 / 0.225 = -0.44 truncates to 0, not floor -1
    {"truncation toward zero", 1600, 800, 0, 0.0, -180.1, 0, 400},
    // -20 / 0.225 = -88.9 -> -88, and -88 % 1600 stays -88
    {"negative x kept", 1600, 800, 0, 0.0, -200.0, -88, 400},
    {"north pole on row 0", 1600, 800, 0, 90.0, 0.0, 800, 0},
    // 180 / 0.225 = 800: one past the last row, no clamping
    {"south pole below the map", 1600, 800, 0, -90.0, 0.0, 800, 800},
    // -10 / 0.225 = -44.4 -> -44
    {"beyond the pole not clamped", 1600, 800, 0, 100.0, 0.0, 800, -44},
    // 1610 wide: 180.1 / (360 / 1610) = 805.4 -> 805; (805 + 67 * 13) % 1610 = 66
    {"odd width, offset 13", 1610, 805, 13, 45.0, 0.1, 66, 201},
    // trunc(45 / (180 / 805)) = trunc(201.25) = 201 above
};

TEST(LatLongToPoint, WorkedExamples)
{
    for (const MapRow &row : kMapRows) {
        SCOPED_TRACE(row.note);
        const QPoint p = LatLongToPoint(row.width, row.height, row.offset, row.latitude,
                                        row.longitude);
        EXPECT_EQ(p.x(), row.x);
        EXPECT_EQ(p.y(), row.y);
    }
}

TEST(LatLongToPoint, DegenerateInputsStayDefined)
{
    // A zero-sized map has no pixel to divide into: both coordinates are 0.
    EXPECT_EQ(LatLongToPoint(0, 0, 5, 10.0, 20.0), QPoint(0, 0));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // NaN counts as pixel 0 before the roll: only the shift (66 * 2) remains.
    EXPECT_EQ(LatLongToPoint(1600, 800, 2, nan, nan), QPoint(132, 0));
    const QPoint far = LatLongToPoint(1600, 800, 0, -1e300, 1e300);
    EXPECT_GT(far.x(), -1600);
    EXPECT_LT(far.x(), 1600);
    EXPECT_EQ(far.y(), std::numeric_limits<int>::max());
    // An offset far outside 0..23 must not overflow; the remainder stays in range.
    const QPoint rolled = LatLongToPoint(1600, 800, std::numeric_limits<int>::max(), 0.0, 0.0);
    EXPECT_GT(rolled.x(), -1600);
    EXPECT_LT(rolled.x(), 1600);
}

struct DialRow {
    const char *note;
    double azimuth, altitude;
    int x, y;
};

// 1080 x 1080 dial, centre (540, 540). Horizon radius 540 sin 45 = 381.84.
const DialRow kDialRows[] = {
    {"zenith at the centre", 123.0, 90.0, 540, 540},
    {"east horizon 381 pixels left", 90.0, 0.0, 159, 540},
    {"north horizon straight up", 0.0, 0.0, 540, 159},
    {"south horizon straight down", 180.0, 0.0, 540, 921},
    {"west horizon to the right", 270.0, 0.0, 921, 540},
    // sin(135 / 2 degrees) * 540 = 498.9 -> 498, north: up
    {"45 below the horizon, north", 0.0, -45.0, 540, 42},
    {"nadir on the 540-pixel rim", 0.0, -90.0, 540, 0},
    // 60 degrees above: radius sin 15 * 540 = 139.76; azimuth 30: angle 210,
    // x = 540 + trunc(-0.5 * 139.76) = 471, y = 540 + trunc(-0.866 * 139.76) = 419
    {"azimuth 30, altitude 60", 30.0, 60.0, 471, 419},
};

TEST(AzAltToDial, WorkedExamples)
{
    for (const DialRow &row : kDialRows) {
        SCOPED_TRACE(row.note);
        EXPECT_EQ(AzAltToDial(QRect(0, 0, 1080, 1080), row.azimuth, row.altitude),
                  QPoint(row.x, row.y));
    }
}

TEST(MapPixelToDialPixel, PushesOnePercentOutAndAddsTheCentre)
{
    struct Row {
        int px, py, cx, cy, x, y;
    } rows[] = {
        // x = 200 - trunc(-340 * -0.01 = 3.4) + 540 = 737
        // y = trunc(-640 * 0.01 = -6.4) + 540 - 100 = 434
        {200, -100, 540, 540, 737, 434},
        // (690 - 540) * -0.01 = -1.5 truncates to -1 (floor would be -2): 690 + 1 + 540
        {690, 540, 540, 540, 1231, 1080},
        // p = 0: 0 + 540 + trunc(0.01 * -540 = -5.4) = 535 on both axes
        {0, 0, 540, 540, 535, 535},
    };
    for (const Row &r : rows) {
        int x = 0, y = 0;
        MapPixelToDialPixel(QPoint(r.px, r.py), r.cx, r.cy, x, y);
        EXPECT_EQ(x, r.x) << r.px << "," << r.py;
        EXPECT_EQ(y, r.y) << r.px << "," << r.py;
    }
    int x = 0, y = 0;
    MapPixelToDialPixel(QPoint(std::numeric_limits<int>::max(), std::numeric_limits<int>::min()),
                        std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), x, y);
    EXPECT_EQ(x, std::numeric_limits<int>::max()); // saturates instead of overflowing
    EXPECT_EQ(y, std::numeric_limits<int>::min());
}

TEST(WorldToSpherical, HalfSpaceRuleAndPoles)
{
    const double quarterTurn = 0.785398163397448; // pi / 4
    struct Row {
        const char *note;
        int x, y, z;
        double u, v;
    } rows[] = {
        {"on the y axis: no longitude", 0, 5, 0, 0.5, 0.5},
        {"negative x: no longitude", -3, 0, 0, 0.5, 0.5},
        {"x <= 0 ignores atan2 = 3 pi / 4", -1, 1, 0, 0.5, 0.5},
        {"x >= 1: atan2(1, 1) / 2 pi + 0.5", 1, 1, 0, quarterTurn / (2 * M_PI) + 0.5, 0.5},
        {"x >= 1, below the axis", 1, -1, 0, 0.5 - quarterTurn / (2 * M_PI), 0.5},
        {"north pole", 0, 0, 5, 0.5, 1.0},
        {"south pole", 0, 0, -5, 0.5, 0.0},
        {"the origin", 0, 0, 0, 0.5, 0.5},
        // 46341^2 + 100^2 passes 2^31 in 32-bit arithmetic: the sum wraps
        // negative, the radius is not a number and the latitude falls to 0.
        {"32-bit sum wraps", 46341, 0, 100, 0.5, 0.5},
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.note);
        double u = -1, v = -1;
        WorldToSpherical(r.x, r.y, r.z, u, v);
        EXPECT_NEAR(u, r.u, 1e-10);
        EXPECT_NEAR(v, r.v, 1e-10);
    }
}

TEST(Cart2Pol, AngleZeroOnTheVerticalAxis)
{
    struct Row {
        int x, y;
        double radius, angle;
    } rows[] = {
        {0, 5, 5.0, 0.0},
        {0, -5, 5.0, 0.0},
        {3, 4, 5.0, 0.927295218001612},   // atan(4 / 3)
        {-3, -4, 5.0, -2.214297435588181}, // atan(4 / 3) - pi
        {0, 0, 0.0, 0.0},
    };
    for (const auto &r : rows) {
        double radius = -1, angle = -1;
        Cart2Pol(r.x, r.y, radius, angle);
        EXPECT_DOUBLE_EQ(radius, r.radius) << r.x << "," << r.y;
        EXPECT_NEAR(angle, r.angle, 1e-12) << r.x << "," << r.y;
    }
}

TEST(Pol2Cart, FloorsBeforeTruncating)
{
    struct Row {
        double radius, angle;
        int x, y;
    } rows[] = {
        {10.0, 0.0, 10, 0},
        {10.0, M_PI, -10, 0},             // sin(pi) is a tiny positive number
        {1.0, 3 * M_PI / 4, -1, 0},      // -0.707 floors to -1 (truncation: 0)
        {1.0, -M_PI / 4, 0, -1},
        {5.0, M_PI / 2, 0, 5},
    };
    for (const auto &r : rows) {
        int x = 99, y = 99;
        Pol2Cart(r.radius, r.angle, x, y);
        EXPECT_EQ(x, r.x) << r.radius << " at " << r.angle;
        EXPECT_EQ(y, r.y) << r.radius << " at " << r.angle;
    }
    int x = 99, y = 99;
    Pol2Cart(std::numeric_limits<double>::quiet_NaN(), 0.0, x, y);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    Pol2Cart(1e300, 0.0, x, y);
    EXPECT_EQ(x, std::numeric_limits<int>::max());
}

struct MouseRow {
    const char *note;
    QRect map, central;
    int offset;
    QPoint mouse;
    bool onMap;
    double latitude, longitude;
};

// Map 1600 x 800 (0.225 degrees a pixel). The map's left edge is subtracted
// as map minus central, its top as central minus map (not mirror images).
const MouseRow kMouseRows[] = {
    // px = 110 - (10 - 0) = 100; py = 100 - (25 - 40) = 115
    // -> longitude 100 * 0.225 - 180 = -157.5, latitude 90 - 115 * 0.225 = 64.125
    {"tops added, lefts subtracted", QRect(10, 40, 1600, 800), QRect(0, 25, 1700, 900), 0,
     QPoint(110, 100), true, 64.125, -157.5},
    // px = 80 - (10 - 30) = 100; py = 100 - (25 - 40) = 115
    {"central left added back", QRect(10, 40, 1600, 800), QRect(30, 25, 1700, 900), 0,
     QPoint(80, 100), true, 64.125, -157.5},
    // px = 110 - 792 - 10 = -692, + 1600 = 908 -> 908 * 0.225 - 180 = 24.3
    {"negative px wraps once", QRect(10, 40, 1600, 800), QRect(0, 25, 1700, 900), 12,
     QPoint(110, 100), true, 64.125, 24.3},
    // px = 0 - 66 * 30 - 10 = -1990, + 1600 = -390: still negative
    {"wraps only once", QRect(10, 40, 1600, 800), QRect(0, 25, 1700, 900), 30, QPoint(0, 100),
     false, 0, 0},
    // px = 1620 - 10 = 1610 >= 1600
    {"right of the map", QRect(10, 40, 1600, 800), QRect(0, 25, 1700, 900), 0, QPoint(1620, 100),
     false, 0, 0},
    // py = 40 - (60 - 10) = -10
    {"above the map", QRect(10, 10, 1600, 800), QRect(0, 60, 1700, 900), 0, QPoint(110, 40),
     false, 0, 0},
    // py = 785 - (25 - 40) = 800: one past the bottom row
    {"below the map", QRect(10, 40, 1600, 800), QRect(0, 25, 1700, 900), 0, QPoint(110, 785),
     false, 0, 0},
    // py = 784 + 15 = 799 -> 90 - 799 * 0.225 = -89.775
    {"bottom row", QRect(10, 40, 1600, 800), QRect(0, 25, 1700, 900), 0, QPoint(110, 784), true,
     -89.775, -157.5},
    {"zero-sized map", QRect(10, 40, 0, 0), QRect(0, 25, 1700, 900), 0, QPoint(10, 10), false, 0,
     0},
};

TEST(MouseToMap, AsymmetricCorrections)
{
    for (const MouseRow &row : kMouseRows) {
        SCOPED_TRACE(row.note);
        double latitude = 123.0, longitude = 456.0;
        const bool onMap = MouseToMap(row.mouse, row.map, row.central, row.offset, latitude,
                                      longitude);
        EXPECT_EQ(onMap, row.onMap);
        if (row.onMap) {
            EXPECT_NEAR(latitude, row.latitude, 1e-9);
            EXPECT_NEAR(longitude, row.longitude, 1e-9);
        } else {
            EXPECT_EQ(latitude, 123.0); // left as they were
            EXPECT_EQ(longitude, 456.0);
        }
    }
}

TEST(MouseToMap, RoundTripsThroughLatLongToPoint)
{
    // With the map at the central widget's origin the two conversions agree
    // to within the truncation of one pixel, at any offset.
    const QRect map(0, 0, 1600, 800), central(0, 0, 1600, 800);
    for (int offset : {0, 5, 12, 23}) {
        for (double longitude : {-179.0, -90.0, 0.0, 45.5, 179.0}) {
            const QPoint p = LatLongToPoint(1600, 800, offset, 30.0, longitude);
            double latitude = 0, back = 0;
            ASSERT_TRUE(MouseToMap(p, map, central, offset, latitude, back));
            EXPECT_NEAR(back, longitude, 0.225) << "offset " << offset;
            EXPECT_NEAR(latitude, 30.0, 0.225);
        }
    }
}

} // namespace
