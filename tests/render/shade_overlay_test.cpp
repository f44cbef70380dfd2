// The shading layer, strength * cos(angular distance from the sub-point): the
// program's image path against the formula written out here on its own.
#include "render/ShadeOverlay.h"

#include <QImage>
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
    const float A = sinLambda * cosPhi * strength; // float product, scaled in double
    const float B = sinPhi * strength;
    const float C = cosLambda * cosPhi * strength;
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
        {1600, 800, 0.0, 0.0, 10.0},     {1600, 800, -18.7, 133.25, 8.0}, // Sun, Moon
        {37, 19, 23.4, -120.5, 8.0},     {37, 77, 30.0, 60.0, 8.0},
        {101, 50, -60.0, 170.0, 1.0},    {333, 167, 89.9, 45.0, 10.0},
        {64, 32, -23.44, -179.9, 0.5},   {61, 30, 10.0, 10.0, -3.0},
        {1, 1, 90.0, 0.0, 10.0},         {20, 10, std::numeric_limits<double>::quiet_NaN(), 0, 10},
    };
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
}

} // namespace
