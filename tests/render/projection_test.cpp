// Map projection, sky dial and mouse-to-map conversions. Expected pixels are
// worked by hand in the row comments (1600 x 800 map: 0.225 degrees a pixel,
// 66 pixels an hour).
#include "render/Projection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace lunaquill;

namespace {

const int kMaxInt = std::numeric_limits<int>::max(), kMinInt = std::numeric_limits<int>::min();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Projection, MapAndDialPointsWorkedByHand)
{
    const struct { int width, height, offset; double latitude, longitude; int x, y; } rows[] = {
        {1600, 800, 0, 0.0, 180.0, 0, 400},    // 1600 % 1600: the right edge wraps to 0
        {1600, 800, 12, 0.0, 0.0, 1592, 400},  // (800 + 66 * 12) % 1600
        {1600, 800, 0, 0.0, -200.0, -88, 400}, // -88.9 -> -88, and -88 % 1600 stays negative
        {1600, 800, 0, -90.0, 0.0, 800, 800},  // one past the last row, no clamping
        {1600, 800, 0, 100.0, 0.0, 800, -44},  // beyond the pole: -44.4 -> -44
        // 180.1 / (360 / 1610) = 805.4, (805 + 67 * 13) % 1610 = 66; 45 / (180 / 805) = 201.25
        {1610, 805, 13, 45.0, 0.1, 66, 201},
        {0, 0, 5, 10.0, 20.0, 0, 0},           // no size: no division
        {1600, 800, 2, kNaN, kNaN, 132, 0},    // NaN counts as pixel 0: only the shift 66 * 2
    };
    for (const auto &r : rows)
        EXPECT_EQ(LatLongToPoint(r.width, r.height, r.offset, r.latitude, r.longitude),
                  QPoint(r.x, r.y)) << r.width << " / " << r.offset << " / " << r.longitude;
    // Far outside the range: defined, the remainder stays within the width.
    const QPoint far = LatLongToPoint(1600, 800, 0, -1e300, 1e300);
    EXPECT_TRUE(std::abs(far.x()) < 1600 && far.y() == kMaxInt);
    EXPECT_LT(std::abs(LatLongToPoint(1600, 800, kMaxInt, 0.0, 0.0).x()), 1600);

    // 1080 x 1080 dial, centre (540, 540); horizon radius 540 sin 45 = 381.84.
    const struct { double azimuth, altitude; int x, y; } dial[] = {
        {123.0, 90.0, 540, 540}, // zenith at the centre
        {90.0, 0.0, 159, 540},   // east horizon 381 pixels left
        {0.0, -90.0, 540, 0},    // north up, the nadir on the 540-pixel rim
        // radius sin 15 * 540 = 139.76 at angle 210: 540 - 69.88, 540 - 121.04
        {30.0, 60.0, 471, 419},
    };
    for (const auto &r : dial)
        EXPECT_EQ(AzAltToDial(QRect(0, 0, 1080, 1080), r.azimuth, r.altitude), QPoint(r.x, r.y))
            << r.azimuth << " / " << r.altitude;
    const struct { int px, py, cx, cy, x, y; } pushed[] = {
        // 200 - trunc(-340 * -0.01) + 540 = 737; trunc(-640 * 0.01) + 540 - 100 = 434
        {200, -100, 540, 540, 737, 434},
        {690, 540, 540, 540, 1231, 1080}, // -1.5 truncates to -1 (floor would give 1232)
        {kMaxInt, kMinInt, kMaxInt, kMinInt, kMaxInt, kMinInt}, // saturates
    };
    for (const auto &r : pushed) {
        int x = 0, y = 0;
        MapPixelToDialPixel(QPoint(r.px, r.py), r.cx, r.cy, x, y);
        EXPECT_EQ(QPoint(x, y), QPoint(r.x, r.y)) << r.px << "," << r.py;
    }
}

TEST(Projection, HalfSpaceRuleFloorsAndAsymmetricMouseCorrections)
{
    const struct { int x, y, z; double u, v; } spherical[] = {
        {0, 5, 0, 0.5, 0.5},           // x <= 0: no longitude
        {1, -1, 0, 0.5 - 0.125, 0.5},  // atan2(-1, 1) / 2 pi
        {0, 0, 5, 0.5, 1.0},  {0, 0, 0, 0.5, 0.5}, // pole, origin
        {46341, 0, 100, 0.5, 0.5}, // the 32-bit sum wraps negative: NaN radius, latitude 0
    };
    for (const auto &r : spherical) {
        double u = -1, v = -1;
        WorldToSpherical(r.x, r.y, r.z, u, v);
        EXPECT_TRUE(std::abs(u - r.u) < 1e-10 && std::abs(v - r.v) < 1e-10) << r.x << "," << r.y;
    }
    double radius = -1, angle = -1;
    Cart2Pol(0, -5, radius, angle); // angle 0 straight below the origin
    EXPECT_TRUE(radius == 5.0 && angle == 0.0);
    // pol2cart floors: -0.707 gives -1, 10 sin(pi) (tiny positive) 0; NaN 0, huge saturates.
    const struct { double radius, angle; int x, y; } cartesian[] = {
        {10.0, M_PI, -10, 0}, {1.0, 5 * M_PI / 4, -1, -1}, {kNaN, 0.0, 0, 0},
        {1e300, 0.0, kMaxInt, 0}};
    for (const auto &r : cartesian) {
        int x = 99, y = 99;
        Pol2Cart(r.radius, r.angle, x, y);
        EXPECT_EQ(QPoint(x, y), QPoint(r.x, r.y)) << r.radius << " at " << r.angle;
    }

    // Map 1600 x 800 at (10, 40) in a central widget at (0, 25) unless said
    // otherwise: px = mx - shift - (10 - 0), py = my - (25 - 40) = my + 15.
    const QRect map(10, 40, 1600, 800), central(0, 25, 1700, 900);
    const struct { QRect map, central; int offset; QPoint mouse; bool onMap; double lat, lon; }
        rows[] = {
        // px 100, py 115: 100 * 0.225 - 180 = -157.5, 90 - 115 * 0.225 = 64.125
        {map, QRect(30, 25, 1700, 900), 0, {80, 100}, true, 64.125, -157.5}, // 80 - (10 - 30)
        {map, central, 12, {110, 100}, true, 64.125, 24.3}, // 110 - 792 - 10 + 1600 = 908
        {map, central, 30, {0, 100}, false, 0, 0},      // -1990 + 1600: wrapped only once
        {map, central, 0, {1620, 100}, false, 0, 0},    // px 1610
        {QRect(10, 10, 1600, 800), QRect(0, 60, 1700, 900), 0, {110, 40}, false, 0, 0}, // py -10
        {map, central, 0, {110, 785}, false, 0, 0},     // py 800
        {map, central, 0, {110, 784}, true, -89.775, -157.5}, // bottom row 799
        {QRect(10, 40, 0, 0), central, 0, {10, 10}, false, 0, 0},
    };
    for (const auto &r : rows) {
        double latitude = 123.0, longitude = 456.0; // left alone off the map
        EXPECT_EQ(MouseToMap(r.mouse, r.map, r.central, r.offset, latitude, longitude), r.onMap)
            << r.mouse.x() << "," << r.mouse.y() << " offset " << r.offset;
        const QPointF expected = r.onMap ? QPointF(r.lat, r.lon) : QPointF(123.0, 456.0);
        EXPECT_EQ(QPointF(latitude, longitude), expected);
    }
}

} // namespace
