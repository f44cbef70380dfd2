// The shading layer: the fast image path against the point-by-point
// reference, and the picture against an independent double-precision model
// of strength * cos(angular distance from the sub-point).
#include "render/ShadeOverlay.h"

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
    (reference ? CreateShadeOverlayReference : CreateShadeOverlay)(layer, latitude, longitude,
                                                                    strength);
    return layer.toImage().convertToFormat(QImage::Format_RGB32);
}

// Grey of an opaque grey pixel, -1 for anything else.
int Grey(const QImage &image, int x, int y)
{
    const QRgb p = image.pixel(x, y);
    return qRed(p) == qGreen(p) && qGreen(p) == qBlue(p) && qAlpha(p) == 255 ? qRed(p) : -1;
}

TEST(ShadeOverlay, FastEqualsPointByPointBitForBit)
{
    const struct { int width, height; double latitude, longitude, strength; } cases[] = {
        {1600, 800, 0.0, 0.0, 10.0},     {1600, 800, -18.7, 133.25, 8.0}, // Sun, Moon
        {37, 19, 23.4, -120.5, 8.0},     {101, 50, -60.0, 170.0, 1.0},
        {333, 167, 89.9, 45.0, 10.0},    {64, 32, -23.44, -179.9, 0.5},
        {61, 30, 10.0, 10.0, -3.0},      {1, 1, 90.0, 0.0, 10.0},
        {20, 10, std::numeric_limits<double>::quiet_NaN(), 0.0, 10.0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " at " << c.latitude
                                        << "," << c.longitude << " strength " << c.strength);
        const QImage fast = Shade(c.width, c.height, c.latitude, c.longitude, c.strength);
        EXPECT_EQ(fast, Shade(c.width, c.height, c.latitude, c.longitude, c.strength, true));
        for (int y = 0; y < fast.height(); ++y)
            for (int x = 0; x < fast.width(); ++x)
                ASSERT_GE(Grey(fast, x, y), 0) << "not an opaque grey at " << x << "," << y;
    }
}

TEST(ShadeOverlay, FollowsTheCosineOfTheDistance)
{
    // Pixel (c, r) lies at longitude 360 c / w - 180, latitude 90 - 180 r / h.
    const double rad = M_PI / 180.0;
    const struct { double latitude, longitude, strength; } bodies[] = {
        {23.0, -45.0, 10.0}, {-5.5, 100.0, 8.0}, {40.0, 170.0, 1.0}};
    for (const auto &b : bodies) {
        const QImage image = Shade(360, 180, b.latitude, b.longitude, b.strength);
        for (int r = 0; r < 180; ++r)
            for (int c = 0; c < 360; ++c) {
                const double phi = (90.0 - r) * rad, lambda = (c - 180.0) * rad;
                const double cosDistance = sin(phi) * sin(b.latitude * rad) +
                    cos(phi) * cos(b.latitude * rad) * cos(lambda - b.longitude * rad);
                const double model = 255.0 * std::clamp(b.strength * cosDistance, 0.0, 1.0);
                // Single precision moves the grey by about 1e-6 * strength * 255.
                ASSERT_GE(Grey(image, c, r), int(std::floor(model - 0.02))) << c << "," << r;
                ASSERT_LE(Grey(image, c, r), int(std::floor(model + 0.02))) << c << "," << r;
            }
    }
}

TEST(ShadeOverlay, SunAtZeroZero)
{
    const QImage image = Shade(1600, 800, 0.0, 0.0, 10.0);
    EXPECT_EQ(Grey(image, 800, 400), 255); // the sub-point
    EXPECT_EQ(Grey(image, 0, 400), 0);     // the antipode
    // Along the equator: lit from 90 W (column 400) to 90 E (1200), full white
    // where cos d >= 1 / 10, within 84.26 degrees or 374.5 columns of 800.
    QList<int> lit, white;
    for (int c = 0; c < 1600; ++c) {
        if (Grey(image, c, 400) > 0)
            lit.append(c);
        if (Grey(image, c, 400) == 255)
            white.append(c);
    }
    ASSERT_FALSE(lit.isEmpty());
    EXPECT_NEAR(lit.first(), 400, 1);
    EXPECT_NEAR(lit.last(), 1200, 1);
    EXPECT_EQ(lit.size(), lit.last() - lit.first() + 1) << "one lit stretch";
    EXPECT_NEAR(white.first(), 426, 1);
    EXPECT_NEAR(white.last(), 1174, 1);
}

TEST(ShadeOverlay, StrengthOneHasNoPlateauAndTheTopRowIsThePole)
{
    const QImage image = Shade(1600, 800, 0.0, 0.0, 1.0);
    EXPECT_EQ(Grey(image, 800, 400), 255);
    EXPECT_EQ(Grey(image, 801, 400), 254);  // cos(0.225 degrees) * 255 = 254.998, no plateau
    EXPECT_EQ(Grey(image, 1067, 400), 127); // cos(60.075 degrees) * 255 = 127.2
    // Row 0 is exactly 90 N: with the Sun at +23 one grey, sin 23 * 255 = 99.6.
    const QImage summer = Shade(1600, 800, 23.0, 0.0, 1.0);
    for (int c = 0; c < 1600; ++c)
        ASSERT_EQ(Grey(summer, c, 0), 99) << "column " << c;
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
    // Back at 211 the tables describe that width again.
    EXPECT_EQ(Shade(211, 20, 10.0, 20.0, 10.0), Shade(211, 20, 10.0, 20.0, 10.0, true));
    // An empty layer draws nothing; the next real layer is fully drawn again.
    QPixmap empty;
    CreateShadeOverlay(empty, 0.0, 0.0, 10.0);
    CreateShadeOverlayReference(empty, 0.0, 0.0, 10.0);
    EXPECT_TRUE(empty.isNull());
    EXPECT_EQ(ShadeColumnTableWidth(), 0);
    EXPECT_EQ(Grey(Shade(8, 4, 0.0, 0.0, 10.0), 4, 2), 255);
}

} // namespace
