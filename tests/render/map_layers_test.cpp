// Base map roll and grid, the scale labels, and the rolling of map-sized
// layers. Expected columns are worked by hand in the comments.
#include "render/MapLayers.h"

#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using namespace lunaquill;

namespace {

const QRgb kLand = qRgb(10, 200, 30), kMarker = qRgb(255, 0, 0);
const QRgb kLightGray = qRgb(192, 192, 192), kDarkGray = qRgb(128, 128, 128);

// A uniform image with one marker column.
QPixmap Striped(int width, int height, int markerColumn)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(kLand);
    for (int y = 0; y < height; ++y)
        image.setPixel(markerColumn, y, kMarker);
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
    const QRgb noLatitudes = base.toImage().pixel(5, 95);
    DrawBaseMap(base, Striped(250, 190, 3), 0, true, false);
    EXPECT_TRUE(noLatitudes == kLand && base.toImage().pixel(125, 5) == kLand);
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
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < r.width; ++x)
                expected.setPixel(x, y, unrolled.pixel((x + r.split) % r.width, y));
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
    const int low = std::numeric_limits<int>::min(), high = std::numeric_limits<int>::max();
    EXPECT_TRUE(MapRollSplit(1600, 2000000000) == low && OverlayRollSplit(1600, 2000000000) == low);
    EXPECT_TRUE(MapRollSplit(1600, -2000000000) == high
                && OverlayRollSplit(1600, -2000000000) == high);
}

// Leftmost inked (non-black) column between rows top and bottom.
int LeftmostInk(const QImage &image, int top, int bottom)
{
    for (int x = 0; x < image.width(); ++x)
        for (int y = std::max(top, 0); y <= std::min(bottom, image.height() - 1); ++y)
            if (image.pixel(x, y) != qRgb(0, 0, 0))
                return x;
    return image.width();
}

TEST(ScaleLabels, TextsAndTheLatitudeBaselines)
{
    const struct { int value; const char *text; } latitudes[] = {
        {90, "+90"}, {5, "+05"}, {0, "  0"}, {-10, "-10"}, {-5, "-5"}};
    for (const auto &r : latitudes)
        EXPECT_EQ(LatitudeLabelText(r.value), r.text) << r.value;
    // Hours west of Greenwich: offset - i + 12, one 24 added or taken away.
    const struct { int i, offset; const char *text; } hourTexts[] = {
        {0, 5, "17h"}, {12, 0, "00h"}, {13, 0, "23h"}, {0, 23, "11h"}};
    for (const auto &r : hourTexts)
        EXPECT_EQ(LongitudeLabelText(r.i, r.offset), r.text) << r.i << " / " << r.offset;
    EXPECT_EQ(LongitudeLabelText(0, 2147483647), "2147483635h"); // odd, but no overflow

    const QFontMetrics metrics{QFont()};
    const int up = metrics.ascent(), down = metrics.descent();
    // Latitude baselines: 10 for +90, trunc(i * 44.44) + 4 between, trunc(800 - 3) for -90.
    const QImage latitude = LatitudeLabels(QSize(40, 800), 800).toImage();
    for (int b : {10, 48, 404, 797})
        EXPECT_LT(LeftmostInk(latitude, b - up, b + down), 40) << "no text at baseline " << b;
    EXPECT_EQ(LeftmostInk(latitude, 798, 799), 40) << "-90 sits on 797, inside the edge";
}

} // namespace
