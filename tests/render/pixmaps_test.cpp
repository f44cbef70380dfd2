// The committed images in pixmaps/ and the sky model the sky-noise image is
// drawn from. Runs in the source folder, where the program finds pixmaps/.
#include "render/SkyNoiseModel.h"
#include "tracking/EmeFigures.h"

#include <QColor>
#include <QHash>
#include <QImage>
#include <gtest/gtest.h>
#include <libnova/transform.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace lunaquill;

QImage LoadPixmap(const char *name)
{
    QImage image(QString("pixmaps/") + name);
    EXPECT_FALSE(image.isNull()) << "cannot load pixmaps/" << name;
    return image;
}

TEST(WorldMap, EquirectangularWithOceanSandAndIceWhereTheyBelong)
{
    const QImage map = LoadPixmap("nasa-topo_1600.jpg");
    ASSERT_EQ(map.size(), QSize(1600, 800));
    // Mean colour of the 5 x 5 pixels around a place (180 W at the left, 90 N on top).
    auto at = [&](double latitude, double longitude) {
        const int cx = int((longitude + 180.0) / 360.0 * 1600);
        const int cy = int((90.0 - latitude) / 180.0 * 800);
        int r = 0, g = 0, b = 0;
        for (int y = cy - 2; y <= cy + 2; ++y)
            for (int x = cx - 2; x <= cx + 2; ++x) {
                const QColor c = map.pixelColor(x, y);
                r += c.red(), g += c.green(), b += c.blue();
            }
        return QColor(r / 25, g / 25, b / 25);
    };
    const QColor pacific = at(0.0, -150.0), sahara = at(23.0, 10.0), greenland = at(72.0, -40.0);
    EXPECT_GT(pacific.blue(), pacific.red() + 20) << "mid-Pacific should be ocean";
    EXPECT_GT(sahara.red(), sahara.blue() + 30) << "Sahara should be sand";
    EXPECT_GT(std::min({greenland.red(), greenland.green(), greenland.blue()}), 200) << "ice";
    // Mirrored east-west, central Australia would be the South Pacific.
    EXPECT_GT(at(-25.0, 133.0).red(), at(-25.0, 133.0).blue()) << "Australia should be desert";
}

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

// Position 0..1 along the documented palette (navy, blue, cyan, green,
// yellow, red, white at equal steps of log10 T), by the nearest sample.
double PalettePosition(QRgb colour)
{
    static QHash<QRgb, double> known;
    if (known.contains(colour))
        return known[colour];
    static const int stops[7][3] = {{0, 0, 128},   {0, 0, 255}, {0, 255, 255}, {0, 255, 0},
                                    {255, 255, 0}, {255, 0, 0}, {255, 255, 255}};
    const int channels[3] = {qRed(colour), qGreen(colour), qBlue(colour)};
    double best = 0.0, bestDistance = 1e9;
    for (int k = 0; k <= 1200; ++k) {
        const int i = std::min(k / 200, 5);
        const double f = k / 200.0 - i;
        double distance = 0.0;
        for (int c = 0; c < 3; ++c) {
            const double d = stops[i][c] + (stops[i + 1][c] - stops[i][c]) * f - channels[c];
            distance += d * d;
        }
        if (distance < bestDistance)
            bestDistance = distance, best = k / 1200.0;
    }
    return known[colour] = best;
}

// The hottest pixel (highest palette position) within `half` pixels of a point.
QPoint HottestNear(const QImage &sky, QPoint centre, int half)
{
    QPoint best = centre;
    double hottest = -1.0;
    for (int y = std::max(0, centre.y() - half); y <= std::min(799, centre.y() + half); ++y)
        for (int x = centre.x() - half; x <= centre.x() + half; ++x)
            if (const double t = PalettePosition(sky.pixel((x + 1600) % 1600, y)); t > hottest)
                hottest = t, best = QPoint(x, y);
    return best;
}

TEST(SkyNoiseImage, GalacticCentreOnColumn376AndNoSeam)
{
    const QImage sky = LoadPixmap("skynoise_1600.png");
    ASSERT_EQ(sky.size(), QSize(1600, 800));
    EXPECT_FALSE(sky.hasAlphaChannel());
    // Sgr A* on the left edge of column 376, row (90 + 29.008) / 0.225 = 528.9.
    auto within3 = [](QPoint a, QPoint b) {
        return std::abs(a.x() - b.x()) <= 3 && std::abs(a.y() - b.y()) <= 3;
    };
    const QPoint centre = HottestNear(sky, QPoint(800, 400), 800);
    EXPECT_TRUE(within3(centre, QPoint(376, 528))) << centre.x() << "," << centre.y();
    // RA grows to the right: Cyg A, 33.45 degrees east, lies 148.7 columns right
    // of it, row (90 - 40.734) / 0.225 = 218.96 (mirrored, it would be 2 * 148 off).
    EXPECT_TRUE(within3(HottestNear(sky, QPoint(524, 218), 20), QPoint(524, 218)));
    // The map rolls the image round, so column 1599 is drawn beside column 0:
    // the step across that join is no larger than the steps beside it.
    for (int y = 0; y < 800; ++y) {
        auto step = [&](int a, int b) {
            const QColor p = sky.pixelColor(a, y), q = sky.pixelColor(b, y);
            return std::max({std::abs(p.red() - q.red()), std::abs(p.green() - q.green()),
                             std::abs(p.blue() - q.blue())});
        };
        ASSERT_LE(step(1599, 0), std::max(step(1598, 1599), step(0, 1)) + 2) << "row " << y;
    }
}

TEST(Icons, HaveTheirSizeTransparentCornersAndAnOpaqueCentre)
{
    const struct { const char *file; int width, height; } icons[] = {
        {"sun-icon.png", 24, 24},     {"moon-icon.png", 24, 24},    {"mercury-icon.png", 20, 20},
        {"venus-icon.png", 20, 20},   {"mars-icon.png", 20, 20},    {"jupiter-icon.png", 20, 20},
        {"saturn-icon.png", 32, 20},  {"uranus-icon.png", 20, 20},  {"neptune-icon.png", 20, 20},
        {"pluto-icon.png", 16, 16},   {"dish-icon.png", 24, 24},    {"menu-icon.png", 32, 32},
        {"dial.png", 512, 512}};
    for (const auto &icon : icons) {
        SCOPED_TRACE(icon.file);
        const QImage image = LoadPixmap(icon.file);
        ASSERT_EQ(image.size(), QSize(icon.width, icon.height));
        ASSERT_TRUE(image.hasAlphaChannel());
        const int right = icon.width - 1, bottom = icon.height - 1;
        for (QPoint corner : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), {right, bottom}})
            EXPECT_EQ(qAlpha(image.pixel(corner)), 0) << corner.x() << "," << corner.y();
        EXPECT_EQ(qAlpha(image.pixel(icon.width / 2, icon.height / 2)), 255);
    }
}

TEST(Dial, RingLiesOutsideTheChartClip)
{
    // As the chart label shows it, 400 x 400; the chart's sphere is clipped to
    // the ellipse at (15, 15), 365 x 365: inside it the dial is plain black sky.
    const QImage shown = LoadPixmap("dial.png")
                             .scaled(400, 400, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                             .convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(shown.size(), QSize(400, 400));
    int lit = 0, ring = 0;
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 400; ++x) {
            const double u = (x + 0.5 - 197.5) / 182.5, v = (y + 0.5 - 197.5) / 182.5;
            const QColor c = shown.pixelColor(x, y);
            const bool bright = std::max({c.red(), c.green(), c.blue()}) > 8;
            (u * u + v * v <= 1.0 ? lit : ring) += bright;
        }
    EXPECT_EQ(lit, 0);
    EXPECT_GT(ring, 5000) << "the ring itself is drawn";
}

} // namespace
