// The map: projection, sky dial and mouse-to-map conversions, the base map's roll and grid,
// the scale labels, the rolling of map-sized layers and the shading layer. Expected pixels are
// worked by hand in the comments (1600 x 800 map: 0.225 degrees a pixel, 66 pixels an hour).
#include "render/MapLayers.h"
#include "render/Projection.h"
#include "render/ShadeOverlay.h"

#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <limits>
#include <vector>

using namespace lunaquill;

namespace {

const QRgb kLand = qRgb(10, 200, 30), kMarker = qRgb(255, 0, 0);
const QRgb kLightGray = qRgb(192, 192, 192), kDarkGray = qRgb(128, 128, 128);
const int kMaxInt = std::numeric_limits<int>::max(), kMinInt = std::numeric_limits<int>::min();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

// A uniform image with one marker column (or `markerWidth` columns).
QPixmap Striped(int width, int height, int markerColumn, int markerWidth = 1)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(kLand);
    QPainter(&image).fillRect(markerColumn, 0, markerWidth, height, QColor(kMarker));
    return QPixmap::fromImage(image);
}

TEST(DrawBaseMap, GridLinesFixedToTheScreen)
{
    // 250 x 190: rows trunc(i * 190 / 18) = 10 (i = 1), 95 (9, the equator); columns
    // trunc(i * 250 / 24) = 10 (1), 125 (12, Greenwich). Lines are one pixel thick and leave
    // the outermost pixel at each end.
    QPixmap base(250, 190);
    DrawBaseMap(base, Striped(250, 190, 3), 0, true, true);
    const struct { int x, y; QRgb colour; } points[] = {
        {5, 10, kDarkGray},  {248, 10, kDarkGray}, {0, 10, kLand},       {5, 11, kLand},
        {5, 95, kLightGray}, {10, 188, kDarkGray}, {10, 0, kLand},       {11, 5, kLand},
        {125, 5, kLightGray}, {10, 95, kDarkGray}, // longitude lines drawn last
    };
    for (const auto &p : points)
        EXPECT_EQ(base.toImage().pixel(p.x, p.y), p.colour) << p.x << "," << p.y;
    // Each family has its own switch.
    DrawBaseMap(base, Striped(250, 190, 3), 0, false, true);
    EXPECT_EQ(base.toImage().pixel(5, 95), kLand);
    DrawBaseMap(base, Striped(250, 190, 3), 0, true, false);
    EXPECT_EQ(base.toImage().pixel(125, 5), kLand);
}

TEST(DrawBaseMap, RolledMapIsTheMapAtItsWidthTurnedBySplit)
{
    // Map column x shows column (x + split) mod w of the map unrolled: at 1600 the master
    // itself, as the pieces have always been cut; at any other width the master scaled to it,
    // so each column of the world shows once. Splits by hand, part = w / 24: 66 at 1600
    // (offset 12: 12 * 66; 13: 1600 - 13 * 66), 78 at 1880, 33 at 800. Offsets outside a day
    // (25: split 1600 - 1650 < 0) roll nothing.
    QImage master(1600, 30, QImage::Format_RGB32);
    for (int y = 0; y < master.height(); ++y)
        for (int x = 0; x < master.width(); ++x)
            master.setPixel(x, y, qRgb(x % 256, x / 256 * 30 + y % 7, 99));
    const struct { int width, offset, split; } rows[] = {
        {1600, 12, 792}, {1600, 13, 742}, {1880, 6, 1404}, {1880, 13, 866}, {800, 12, 396},
        {1600, 0, 0},    {1600, -3, 0},   {1600, 25, 0},
    };
    for (const auto &r : rows) {
        const QImage unrolled = QPixmap::fromImage(master).scaled(r.width, 30).toImage();
        QImage expected(r.width, 30, QImage::Format_RGB32);
        for (int i = 0; i < r.width * 30; ++i)
            expected.setPixel(i % r.width, i / r.width, unrolled.pixel((i % r.width + r.split) % r.width, i / r.width));
        QPixmap base(r.width, 30);
        DrawBaseMap(base, QPixmap::fromImage(master), r.offset, false, false);
        EXPECT_TRUE(base.toImage().convertToFormat(QImage::Format_RGB32) == expected)
            << r.width << " wide, offset " << r.offset;
    }
}

TEST(Roll, LayersFollowTheMapOffsetAndTheSkySagittarius)
{
    // Layers 1600 wide, marked at column 100, split at 1600 - 66 * offset: 12 gives split 808
    // and 100 + 1600 - 808 = 892, 23 gives 82 and 18; outside a day nothing is rolled. The sky,
    // 240 wide, has its reference column 100 under Sagittarius at x; off the map the shift is
    // folded into one map width: -300 -> 180, 500 -> 20.
    const struct { bool sky; int at, expected; } rows[] = {
        {false, 12, 892}, {false, 23, 18}, {false, 0, 100}, {false, -1, 100}, {false, 40, 100},
        {true, 40, 40},   {true, 150, 150}, {true, 239, 239}, {true, -300, 180}, {true, 500, 20}};
    for (const auto &r : rows) {
        const int width = r.sky ? 240 : 1600;
        QPixmap target(width, 10);
        target.fill(Qt::blue);
        if (r.sky) {
            RollSkyOverlay(target, Striped(width, 10, 100), 100, r.at, false);
        } else {
            QPainter painter(&target);
            DrawRolled(painter, Striped(width, 10, 100), width, r.at);
        }
        // All of the layer, moved: the marker at the expected column only, nothing left blue.
        EXPECT_TRUE(target.toImage() == Striped(width, 10, r.expected).toImage())
            << (r.sky ? "sky " : "") << r.at;
    }
    // Far outside a day the splits saturate instead of overflowing.
    EXPECT_TRUE(MapRollSplit(1600, 2000000000) == kMinInt && OverlayRollSplit(1600, 2000000000) == kMinInt);
    EXPECT_TRUE(MapRollSplit(1600, -2000000000) == kMaxInt && OverlayRollSplit(1600, -2000000000) == kMaxInt);
}

// The window draws the sky's roll straight onto the map at 40 % instead of rolling a layer
// and laying that on: the same pixels, over noise, at shifts inside, at and beyond the edges.
TEST(Roll, SkyDrawnRolledEqualsTheRolledLayerLaidOn)
{
    auto noise = [](int seed) {
        QImage image(320, 40, QImage::Format_RGB32);
        uint32_t state = 2463534242u * uint32_t(seed);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                state ^= state << 13, state ^= state >> 17, state ^= state << 5;
                image.setPixel(x, y, state | 0xff000000u);
            }
        return image;
    };
    const QPixmap sky = QPixmap::fromImage(noise(1));
    for (int at : {-700, -1, 0, 1, 75, 76, 77, 319, 320, 321, 900}) {
        QPixmap layer(320, 40);
        layer.fill(Qt::black);
        RollSkyOverlay(layer, sky, 76, at, false);
        QImage laidOn = noise(2), drawn = noise(2);
        QPainter first(&laidOn), second(&drawn);
        first.setOpacity(0.4);
        first.drawPixmap(0, 0, layer);
        second.setOpacity(0.4);
        DrawSkyRolled(second, sky.toImage(), 76, at);
        first.end();
        second.end();
        EXPECT_TRUE(laidOn == drawn) << at;
    }
}

// On a screen scaled to 200 % the layers have two pixels to each of the map's: the pieces are
// cut in the layer's own pixels (map column 100 is pixels 200-201, and with offset 12 lands on
// 892, pixels 1784-1785), the base map keeps its ratio and its grid lines are one pixel thick
// (row trunc(380 / 18) = 21 of a 190-high map), and the scales are made at twice the pixels.
TEST(Roll, ScaledScreenLayersAreCutInTheirOwnPixels)
{
    auto twoWide = [](int column) {
        QPixmap layer = Striped(3200, 20, column, 2);
        layer.setDevicePixelRatio(2.0);
        return layer;
    };
    QPixmap target(3200, 20);
    target.setDevicePixelRatio(2.0);
    target.fill(Qt::blue);
    QPainter painter(&target);
    DrawRolled(painter, twoWide(200), 1600, 12);
    painter.end();
    EXPECT_TRUE(target.toImage().convertToFormat(QImage::Format_RGB32)
                == twoWide(1784).toImage().convertToFormat(QImage::Format_RGB32));

    QPixmap base(500, 380);
    base.setDevicePixelRatio(2.0);
    DrawBaseMap(base, Striped(250, 190, 3), 0, true, false);
    const QImage grid = base.toImage();
    EXPECT_TRUE(base.devicePixelRatio() == 2.0 && base.size() == QSize(500, 380));
    EXPECT_TRUE(grid.pixel(40, 20) == kLand && grid.pixel(40, 21) == kDarkGray && grid.pixel(40, 22) == kLand);
    const QPixmap scale = LatitudeLabels(QSize(20, 100), 100, 2.0);
    EXPECT_TRUE(scale.size() == QSize(40, 200) && scale.devicePixelRatio() == 2.0);
}

TEST(ScaleLabels, TextsAndTheLastLatitudeInsideTheEdge)
{
    for (const auto &[value, text] : {std::pair{90, "+90"}, {5, "+05"}, {0, "  0"}, {-10, "-10"}, {-5, "-5"}})
        EXPECT_EQ(LatitudeLabelText(value), text) << value;
    // Hours west of Greenwich: offset - i + 12, one 24 added or taken away.
    const struct { int i, offset; const char *text; } hourTexts[] = {
        {0, 5, "17h"}, {12, 0, "00h"}, {13, 0, "23h"}, {0, 23, "11h"}};
    for (const auto &r : hourTexts)
        EXPECT_EQ(LongitudeLabelText(r.i, r.offset), r.text) << r.i << " / " << r.offset;
    EXPECT_EQ(LongitudeLabelText(0, 2147483647), "2147483635h"); // odd, but no overflow

    // The -90 label sits on baseline trunc(800 - 3) = 797, inside the edge: its digits just
    // above, the two rows below blank.
    const QImage latitude = LatitudeLabels(QSize(40, 800), 800).toImage();
    QImage blank(40, 2, latitude.format());
    blank.fill(Qt::black);
    EXPECT_NE(latitude.copy(0, 790, 40, 2), blank);
    EXPECT_EQ(latitude.copy(0, 798, 40, 2), blank);
}

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
    // Zenith at the centre; east horizon 381 pixels left; north up, the nadir on the 540-pixel
    // rim; radius sin 15 * 540 = 139.76 at angle 210: 540 - 69.88, 540 - 121.04.
    const struct { double azimuth, altitude; int x, y; } dial[] = {
        {123.0, 90.0, 540, 540}, {90.0, 0.0, 159, 540}, {0.0, -90.0, 540, 0}, {30.0, 60.0, 471, 419}};
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
    // x <= 0: no longitude; atan2(-1, 1) / 2 pi; pole, origin; the 32-bit sum wraps negative:
    // NaN radius, latitude 0.
    const struct { int x, y, z; double u, v; } spherical[] = {
        {0, 5, 0, 0.5, 0.5}, {1, -1, 0, 0.5 - 0.125, 0.5}, {0, 0, 5, 0.5, 1.0}, {0, 0, 0, 0.5, 0.5},
        {46341, 0, 100, 0.5, 0.5}};
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

// `ratio`: a layer of a scaled screen, shaded pixel for pixel all the same.
QImage Shade(int width, int height, double latitude, double longitude, double strength,
             qreal ratio = 1.0)
{
    QPixmap layer(width, height);
    layer.setDevicePixelRatio(ratio);
    layer.fill(Qt::red); // every pixel must be overwritten
    CreateShadeOverlay(layer, latitude, longitude, strength);
    return layer.toImage().convertToFormat(QImage::Format_RGB32);
}

// The layer pixel by pixel as the shading is defined, sharing no code with
// the program: each value in the precision the definition gives it.
QImage FormulaShade(int w, int h, double latitude, double longitude, double strength)
{
    const double k = 0.017453292519944444;
    std::vector<float> sine(w), cosine(w);
    for (int c = 0; c < w; ++c) {
        float lambda = ((float)c / (float)w - 0.5) * 360.0; // single precision
        lambda = lambda * k;                                // radians in double, back to single
        sine[c] = sinf(lambda);
        cosine[c] = cosf(lambda);
    }
    const float sinPhi = sinf(latitude * k), cosPhi = cosf(latitude * k);
    const float sinLambda = sinf(longitude * k), cosLambda = cosf(longitude * k);
    // Float products, scaled in double.
    const float A = sinLambda * cosPhi * strength, B = sinPhi * strength, C = cosLambda * cosPhi * strength;
    QImage layer(w, h, QImage::Format_RGB32);
    for (int r = 0; r < h; ++r) {
        const float phiR = ((float)r / (float)h - 0.5) * -180.0 * k;
        const float sr = sinf(phiR), cr = cosf(phiR);
        const float P = C * cr, Q = A * cr, R = B * sr;
        for (int c = 0; c < w; ++c) {
            float v = P * cosine[c] + Q * sine[c] + R;
            if (v < 0 || std::isnan(v)) // a NaN sub-point shades nothing
                v = 0;
            const int g = (int)(std::min(v, 1.0f) * 255.0) & 0xff;
            layer.setPixel(c, r, qRgb(g, g, g));
        }
    }
    return layer;
}

TEST(ShadeOverlay, EqualsTheFormulaBitForBit)
{
    // The column tables are made once per width: kept for another height, remade for another
    // width, emptied by an empty layer (which draws nothing); each layer is drawn in full.
    const struct { int width, height; double latitude, longitude, strength; } cases[] = {
        {1600, 800, 0.0, 0.0, 10.0}, {1600, 800, -18.7, 133.25, 8.0}, {37, 19, 23.4, -120.5, 8.0},
        {37, 77, 30.0, 60.0, 8.0},   {101, 50, -60.0, 170.0, 1.0},    {333, 167, 89.9, 45.0, 10.0},
        {64, 32, -23.44, -179.9, 0.5}, {61, 30, 10.0, 10.0, -3.0},    {1, 1, 90.0, 0.0, 10.0},
        {20, 10, kNaN, 0, 10}};
    int builds = ShadeColumnTableBuilds(), width = ShadeColumnTableWidth();
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " at " << c.latitude);
        EXPECT_EQ(Shade(c.width, c.height, c.latitude, c.longitude, c.strength),
                  FormulaShade(c.width, c.height, c.latitude, c.longitude, c.strength));
        builds += c.width != width;
        width = c.width;
        EXPECT_EQ(ShadeColumnTableBuilds(), builds);
    }
    QPixmap empty;
    CreateShadeOverlay(empty, 0.0, 0.0, 10.0);
    EXPECT_TRUE(empty.isNull() && ShadeColumnTableWidth() == 0);
    EXPECT_EQ(Shade(20, 4, 0.0, 0.0, 10.0), FormulaShade(20, 4, 0.0, 0.0, 10.0));
    EXPECT_EQ(Shade(64, 32, 23.4, -120.5, 8.0, 2.0), FormulaShade(64, 32, 23.4, -120.5, 8.0));
}

TEST(ShadeOverlay, PicturesMadeOnTwoThreadsAtOnceEqualTheFormula)
{
    // As the window makes them: the tables on this thread, then the Sun's and the Moon's
    // pictures at the same time on two threads, several rounds, each laid into its layer here.
    ASSERT_TRUE(PrepareShadeColumns(1600));
    for (int round = 0; round < 6; ++round) {
        // Sun, then Moon: latitude, longitude, strength.
        const double at[2][3] = {{-23.4 + 9.0 * round, -179.0 + 61.5 * round, 10.0},
                                 {28.0 - 11.0 * round, 170.0 - 57.25 * round, 8.0}};
        std::future<QImage> pictures[2];
        for (int i = 0; i < 2; ++i)
            pictures[i] = std::async(std::launch::async, ShadeImage, QSize(1600, 800), at[i][0], at[i][1], at[i][2]);
        for (int i = 0; i < 2; ++i) {
            // The Moon's layer with an alpha channel: the picture is copied into it
            // rather than taking its place.
            QImage base(1600, 800, i ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
            base.fill(QColor(255, 0, 0, i ? 128 : 255));
            QPixmap layer = QPixmap::fromImage(base);
            PaintShade(layer, pictures[i].get());
            EXPECT_EQ(layer.toImage().convertToFormat(QImage::Format_RGB32),
                      FormulaShade(1600, 800, at[i][0], at[i][1], at[i][2])) << round << " " << i;
        }
    }
    // Tables made for another width give no picture, and no picture leaves the layer alone.
    EXPECT_TRUE(ShadeImage(QSize(800, 400), 0.0, 0.0, 10.0).isNull());
    QPixmap kept(800, 400);
    kept.fill(Qt::red);
    PaintShade(kept, QImage());
    EXPECT_EQ(kept.toImage().pixel(400, 200), QColor(Qt::red).rgb());
}

} // namespace
