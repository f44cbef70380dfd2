// The sky model the committed sky-noise image in pixmaps/ is drawn from; the sky dial,
// drawn at the size and pixel density it is shown.
#include "render/SkyDial.h"
#include "render/SkyNoiseModel.h"
#include "tracking/EmeFigures.h"

#include <QImage>

#include <gtest/gtest.h>
#include <libnova/transform.h>

#include <cmath>

namespace {

using namespace lunaquill;

// RMS difference (K) between the 144 MHz table and the mean of `temperature`
// at five points across the 2 degrees of ecliptic longitude each entry i is
// read for (2i + 2 up to 2i + 4, SkyTemperatureAt reads one cell behind).
double EclipticRms(double (*temperature)(double, double))
{
    double sum = 0.0;
    for (int entry = 0; entry < 180; ++entry) {
        double mean = 0.0;
        for (double offset : {0.2, 0.6, 1.0, 1.4, 1.8}) {
            ln_lnlat_posn ecliptic = {2.0 * entry + 2.0 + offset, 0.0};
            ln_equ_posn equatorial;
            ln_get_equ_from_ecl(&ecliptic, 2451545.0, &equatorial);
            mean += temperature(equatorial.ra, equatorial.dec) / 5.0;
        }
        sum += (mean - SkyTemp144Table[entry]) * (mean - SkyTemp144Table[entry]);
    }
    return std::sqrt(sum / 180.0);
}

TEST(SkyModel, FollowsTheEclipticTableAndTheGalaxy)
{
    EXPECT_LT(EclipticRms(SkyModelTemperature), 45.0);
    EXPECT_LT(EclipticRms(CalibratedSkyTemperature), 5.0);
    const double pole = CalibratedSkyTemperature(192.859, 27.128);     // NGP, J2000
    const double centre = CalibratedSkyTemperature(266.417, -29.008);  // Sgr A*
    EXPECT_LT(pole, centre / 10.0);
    // Measured cold-sky temperatures near 150 MHz lie around 150..300 K.
    EXPECT_TRUE(pole > 150.0 && pole < 300.0) << pole;
}

// The dial is drawn, not scaled: at 200 % it has twice the device pixels and is the same
// drawing as one made at twice the size (so "N" keeps smooth edges), not a blown-up copy;
// pixmaps/dial.png is that drawing at 512 pixels. Its face ends where the ring starts.
TEST(SkyDial, DrawnAtItsSizeAndPixelDensity)
{
    const QPixmap doubled = SkyDial(QSize(400, 400), 2.0);
    EXPECT_EQ(doubled.size(), QSize(800, 800));
    EXPECT_EQ(doubled.devicePixelRatio(), 2.0);
    const QImage sharp = doubled.toImage().convertToFormat(QImage::Format_ARGB32);
    const QImage big = SkyDial(QSize(800, 800), 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
    const QImage blown = SkyDial(QSize(400, 400), 1.0).toImage().scaled(800, 800).convertToFormat(
        QImage::Format_ARGB32);
    auto difference = [&](const QImage &other) {
        long sum = 0;
        for (int y = 0; y < 800; ++y)
            for (int x = 0; x < 800; ++x)
                sum += std::abs(qGray(sharp.pixel(x, y)) - qGray(other.pixel(x, y)));
        return sum;
    };
    EXPECT_LT(difference(big) * 20, difference(blown));
    EXPECT_EQ(SkyDial(QSize(512, 512), 1.0).toImage().convertToFormat(QImage::Format_ARGB32),
              QImage(QString::fromLocal8Bit(qgetenv("LUNAQUILL_SOURCE_DIR")) + "/pixmaps/dial.png")
                  .convertToFormat(QImage::Format_ARGB32));
    // A 790-pixel dial: face radius 0.94 * 395 = 371.3 about (395, 395); a wider label keeps
    // the dial square at its left.
    EXPECT_EQ(DialFace(790), QRectF(395 - 371.3, 395 - 371.3, 742.6, 742.6));
    const QImage wide = SkyDial(QSize(900, 790), 1.0).toImage();
    EXPECT_EQ(qAlpha(wide.pixel(395, 395)), 255);
    EXPECT_EQ(qAlpha(wide.pixel(850, 395)), 0);
}

} // namespace
