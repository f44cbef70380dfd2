// The shading layer: the program's image path against the formula written
// out here on its own, and the picture against an independent
// double-precision model of strength * cos(angular distance from the sub-point).
#include "render/ShadeOverlay.h"

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

// The formula rounds each single-precision product and sum on its own.
#if defined(__clang__)
#pragma clang fp contract(off)
#elif defined(__GNUC__)
#pragma GCC optimize("fp-contract=off")
#endif

using namespace lunaquill;

namespace {

QImage Shade(int width, int height, double latitude, double longitude, double strength)
{
    QPixmap layer(width, height);
    layer.fill(Qt::red); // every pixel must be overwritten
    CreateShadeOverlay(layer, latitude, longitude, strength);
    return layer.toImage().convertToFormat(QImage::Format_RGB32);
}

// The layer step by step as the shading is defined, sharing no code with the
// program: each value in the precision the definition gives it, one pen
// change per change of grey and one drawPoint per pixel.
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
    const float A = sinLambda * cosPhi * strength; // float product, scaled in double
    const float B = sinPhi * strength;
    const float C = cosLambda * cosPhi * strength;

    QPixmap layer(w, h);
    layer.fill(Qt::red);
    QPainter painter(&layer);
    int lastGrey = -1;
    for (int r = 0; r < h; ++r) {
        const float phiR = ((float)r / (float)h - 0.5) * -180.0 * k;
        const float sr = sinf(phiR), cr = cosf(phiR);
        const float P = C * cr, Q = A * cr, R = B * sr;
        for (int c = 0; c < w; ++c) {
            float v = P * cosine[c] + Q * sine[c] + R;
            if (v < 0 || std::isnan(v)) // a NaN sub-point shades nothing
                v = 0;
            if (v > 1.0)
                v = 1.0;
            const int g = (int)(v * 255.0) & 0xff;
            if (g != lastGrey) {
                painter.setPen(QColor(g, g, g, 255));
                lastGrey = g;
            }
            painter.drawPoint(c, r);
        }
    }
    painter.end();
    return layer.toImage().convertToFormat(QImage::Format_RGB32);
}

// Grey of an opaque grey pixel, -1 for anything else.
int Grey(const QImage &image, int x, int y)
{
    const QRgb p = image.pixel(x, y);
    return qRed(p) == qGreen(p) && qGreen(p) == qBlue(p) && qAlpha(p) == 255 ? qRed(p) : -1;
}

TEST(ShadeOverlay, EqualsTheFormulaBitForBit)
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
        EXPECT_EQ(fast, FormulaShade(c.width, c.height, c.latitude, c.longitude, c.strength));
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

TEST(ShadeOverlay, ColumnTablesFollowTheWidth)
{
    Shade(211, 10, 0.0, 0.0, 10.0);
    const int builds = ShadeColumnTableBuilds();
    Shade(211, 77, 30.0, 60.0, 8.0); // same width, other height: reused
    EXPECT_EQ(ShadeColumnTableBuilds(), builds);
    Shade(212, 10, 0.0, 0.0, 10.0); // resize: remade
    EXPECT_EQ(ShadeColumnTableBuilds() * 1000 + ShadeColumnTableWidth(), (builds + 1) * 1000 + 212);
    // Back at 211 the tables describe that width again.
    EXPECT_EQ(Shade(211, 20, 10.0, 20.0, 10.0), FormulaShade(211, 20, 10.0, 20.0, 10.0));
    // An empty layer draws nothing; the next real layer is fully drawn again.
    QPixmap empty;
    CreateShadeOverlay(empty, 0.0, 0.0, 10.0);
    EXPECT_TRUE(empty.isNull() && ShadeColumnTableWidth() == 0);
    EXPECT_EQ(Grey(Shade(8, 4, 0.0, 0.0, 10.0), 4, 2), 255);
}

} // namespace
