// The shading layer: the fast image path against the point-by-point
// reference, and the picture against an independent double-precision model
// of strength * cos(angular distance from the sub-point).
#include "render/ShadeOverlay.h"

#include <QColor>
#include <QImage>
#include <QPixmap>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace lunaquill;

namespace {

QImage Shade(int width, int height, double latitude, double longitude, double strength,
             bool reference = false)
{
    QPixmap layer(width, height);
    layer.fill(Qt::red); // every pixel must be overwritten
    if (reference)
        CreateShadeOverlayReference(layer, latitude, longitude, strength);
    else
        CreateShadeOverlay(layer, latitude, longitude, strength);
    return layer.toImage().convertToFormat(QImage::Format_RGB32);
}

// Grey of an opaque grey pixel, -1 for anything else.
int Grey(const QImage &image, int x, int y)
{
    const QRgb p = image.pixel(x, y);
    if (qRed(p) != qGreen(p) || qGreen(p) != qBlue(p) || qAlpha(p) != 255)
        return -1;
    return qRed(p);
}

struct ShadeCase {
    const char *note;
    int width, height;
    double latitude, longitude, strength;
};

class ShadeIdentity : public testing::TestWithParam<ShadeCase> {};

TEST_P(ShadeIdentity, FastEqualsPointByPoint)
{
    const ShadeCase &c = GetParam();
    const QImage fast = Shade(c.width, c.height, c.latitude, c.longitude, c.strength);
    const QImage reference = Shade(c.width, c.height, c.latitude, c.longitude, c.strength, true);
    ASSERT_EQ(fast.size(), reference.size());
    int differing = 0;
    QPoint first;
    for (int y = 0; y < fast.height(); ++y)
        for (int x = 0; x < fast.width(); ++x)
            if (fast.pixel(x, y) != reference.pixel(x, y) && differing++ == 0)
                first = QPoint(x, y);
    EXPECT_EQ(differing, 0) << "first at " << first.x() << "," << first.y();
    for (int y = 0; y < fast.height(); ++y)
        for (int x = 0; x < fast.width(); ++x)
            ASSERT_GE(Grey(fast, x, y), 0) << "not an opaque grey at " << x << "," << y;
}

INSTANTIATE_TEST_SUITE_P(
    Layers, ShadeIdentity,
    testing::Values(ShadeCase{"Sun_1600x800", 1600, 800, 0.0, 0.0, 10.0},
                    ShadeCase{"Moon_1600x800", 1600, 800, -18.7, 133.25, 8.0},
                    ShadeCase{"odd_width", 37, 19, 23.4, -120.5, 8.0},
                    ShadeCase{"pure_cosine", 101, 50, -60.0, 170.0, 1.0},
                    ShadeCase{"near_pole", 333, 167, 89.9, 45.0, 10.0},
                    ShadeCase{"antimeridian", 64, 32, -23.44, -179.9, 0.5},
                    ShadeCase{"zero_strength", 50, 25, 10.0, 10.0, 0.0},
                    ShadeCase{"negative_strength", 61, 30, 10.0, 10.0, -3.0},
                    ShadeCase{"nan_sub_point", 20, 10, std::numeric_limits<double>::quiet_NaN(),
                              0.0, 10.0},
                    ShadeCase{"one_pixel", 1, 1, 90.0, 0.0, 10.0}),
    [](const testing::TestParamInfo<ShadeCase> &info) { return std::string(info.param.note); });

// Independent model: the grey of pixel (c, r) from the exact angular
// distance, pixel longitudes 360 c / w - 180 and latitudes 90 - 180 r / h.
double ModelGrey(int c, int r, int w, int h, double latitude, double longitude, double strength)
{
    const double rad = M_PI / 180.0;
    const double rowLatitude = (90.0 - 180.0 * r / h) * rad;
    const double columnLongitude = (360.0 * c / w - 180.0) * rad;
    const double cosDistance =
        sin(rowLatitude) * sin(latitude * rad) +
        cos(rowLatitude) * cos(latitude * rad) * cos(columnLongitude - longitude * rad);
    return 255.0 * std::clamp(strength * cosDistance, 0.0, 1.0);
}

TEST(ShadeOverlay, FollowsTheCosineOfTheDistance)
{
    struct Body {
        double latitude, longitude, strength;
    } bodies[] = {{23.0, -45.0, 10.0}, {-5.5, 100.0, 8.0}, {40.0, 170.0, 1.0}};
    for (const Body &b : bodies) {
        const int w = 360, h = 180;
        const QImage image = Shade(w, h, b.latitude, b.longitude, b.strength);
        for (int r = 0; r < h; ++r) {
            for (int c = 0; c < w; ++c) {
                // Single precision moves v by about 1e-6 * strength: allow the
                // truncation to fall either side of a nearby integer.
                const double model = ModelGrey(c, r, w, h, b.latitude, b.longitude, b.strength);
                const int grey = Grey(image, c, r);
                ASSERT_GE(grey, int(std::floor(model - 0.02))) << c << "," << r;
                ASSERT_LE(grey, int(std::floor(model + 0.02))) << c << "," << r;
            }
        }
    }
}

TEST(ShadeOverlay, SunAtZeroZero)
{
    const QImage image = Shade(1600, 800, 0.0, 0.0, 10.0);
    EXPECT_EQ(Grey(image, 800, 400), 255); // the sub-point
    EXPECT_EQ(Grey(image, 0, 400), 0);     // the antipode
    // The lit part of the equator row runs from the 90 W column (400) to the
    // 90 E column (1200), to within a pixel.
    int firstLit = -1, lastLit = -1;
    for (int c = 0; c < 1600; ++c) {
        if (Grey(image, c, 400) > 0) {
            if (firstLit < 0)
                firstLit = c;
            lastLit = c;
        }
    }
    EXPECT_NEAR(firstLit, 400, 1);
    EXPECT_NEAR(lastLit, 1200, 1);
    // Full white where cos d >= 1 / 10, within 84.26 degrees: 374.5 columns
    // either side of 800.
    int firstWhite = -1, lastWhite = -1;
    for (int c = 0; c < 1600; ++c) {
        if (Grey(image, c, 400) == 255) {
            if (firstWhite < 0)
                firstWhite = c;
            lastWhite = c;
        }
    }
    EXPECT_NEAR(firstWhite, 426, 1);
    EXPECT_NEAR(lastWhite, 1174, 1);
}

TEST(ShadeOverlay, StrengthOneHasNoPlateau)
{
    const QImage image = Shade(1600, 800, 0.0, 0.0, 1.0);
    int white = 0;
    for (int y = 0; y < 800; ++y)
        for (int x = 0; x < 1600; ++x)
            white += Grey(image, x, y) == 255;
    EXPECT_LE(white, 1);
    EXPECT_EQ(Grey(image, 800, 400), 255);
    // cos(60.075 degrees) = 0.49887, * 255 = 127.2 at column 1067
    EXPECT_EQ(Grey(image, 1067, 400), 127);
    EXPECT_EQ(Grey(image, 801, 400), 254); // cos(0.225 degrees) * 255 = 254.998
}

TEST(ShadeOverlay, TopRowIsExactlyTheNorthPole)
{
    // At 90 N every column is the same point: one grey level across the row.
    // Strength 1: sin 23 degrees * 255 = 99.6.
    const QImage image = Shade(1600, 800, 23.0, 0.0, 1.0);
    for (int c = 0; c < 1600; ++c)
        ASSERT_EQ(Grey(image, c, 0), 99) << "column " << c;
    const QImage strong = Shade(1600, 800, 23.0, 0.0, 10.0);
    for (int c = 0; c < 1600; ++c)
        ASSERT_EQ(Grey(strong, c, 0), 255) << "column " << c;
}

TEST(ShadeOverlay, ColumnTablesFollowTheWidth)
{
    Shade(211, 10, 0.0, 0.0, 10.0);
    const int builds = ShadeColumnTableBuilds();
    EXPECT_EQ(ShadeColumnTableWidth(), 211);

    Shade(211, 77, 30.0, 60.0, 8.0); // same width, other height: reused
    EXPECT_EQ(ShadeColumnTableBuilds(), builds);

    Shade(212, 10, 0.0, 0.0, 10.0); // resize: remade
    EXPECT_EQ(ShadeColumnTableBuilds(), builds + 1);
    EXPECT_EQ(ShadeColumnTableWidth(), 212);

    // After a resize the tables describe the new width: compare with a
    // layer made from scratch at that width by the reference path.
    const QImage again = Shade(211, 20, 10.0, 20.0, 10.0);
    const QImage reference = Shade(211, 20, 10.0, 20.0, 10.0, true);
    EXPECT_EQ(again, reference);
}

TEST(ShadeOverlay, EmptyLayerDrawsNothing)
{
    QPixmap empty;
    CreateShadeOverlay(empty, 0.0, 0.0, 10.0);
    CreateShadeOverlayReference(empty, 0.0, 0.0, 10.0);
    EXPECT_TRUE(empty.isNull());
    EXPECT_EQ(ShadeColumnTableWidth(), 0);
    // The next real layer is fully drawn again.
    const QImage image = Shade(8, 4, 0.0, 0.0, 10.0);
    EXPECT_EQ(Grey(image, 4, 2), 255);
}

} // namespace
