// The committed images in pixmaps/ and the sky model the sky-noise image is
// drawn from. Runs in the source folder, where the program finds pixmaps/.
#include "render/SkyNoiseModel.h"
#include "tracking/EmeFigures.h"

#include <QColor>
#include <QHash>
#include <QImage>
#include <gtest/gtest.h>
#include <libnova/transform.h>

#include <cmath>

namespace {

using lunaquill::SkyTemp144Table;

QImage LoadPixmap(const char *name)
{
    QImage image(QString("pixmaps/") + name);
    EXPECT_FALSE(image.isNull()) << "cannot load pixmaps/" << name;
    return image;
}

// ---- World map ------------------------------------------------------------

// Mean colour of the 5x5 pixels around a place on the 1600x800
// equirectangular map (180 W at the left, 90 N at the top).
QColor MapColourAt(const QImage &map, double latitude, double longitude)
{
    int cx = static_cast<int>((longitude + 180.0) / 360.0 * map.width());
    int cy = static_cast<int>((90.0 - latitude) / 180.0 * map.height());
    int r = 0, g = 0, b = 0;
    for (int y = cy - 2; y <= cy + 2; ++y)
        for (int x = cx - 2; x <= cx + 2; ++x) {
            QColor c = map.pixelColor(x, y);
            r += c.red(), g += c.green(), b += c.blue();
        }
    return QColor(r / 25, g / 25, b / 25);
}

TEST(WorldMap, IsEquirectangular1600By800)
{
    QImage map = LoadPixmap("nasa-topo_1600.jpg");
    EXPECT_EQ(map.size(), QSize(1600, 800));
}

TEST(WorldMap, OceanSandAndIceLieWhereTheyBelong)
{
    QImage map = LoadPixmap("nasa-topo_1600.jpg");
    ASSERT_FALSE(map.isNull());
    QColor pacific = MapColourAt(map, 0.0, -150.0);
    EXPECT_GT(pacific.blue(), pacific.red() + 20) << "mid-Pacific should be ocean";
    QColor sahara = MapColourAt(map, 23.0, 10.0);
    EXPECT_GT(sahara.red(), sahara.blue() + 30) << "Sahara should be sand";
    QColor greenland = MapColourAt(map, 72.0, -40.0);
    EXPECT_GT(std::min({greenland.red(), greenland.green(), greenland.blue()}), 200)
        << "central Greenland should be ice";
    // Mirrored east-west, the two points above would still be sea and desert;
    // central Australia would become the South Pacific.
    QColor australia = MapColourAt(map, -25.0, 133.0);
    EXPECT_GT(australia.red(), australia.blue()) << "central Australia should be desert";
}

// ---- Sky model ------------------------------------------------------------

// RMS difference (K) between the table and the mean of `temperature` over the
// ecliptic longitudes the program reads from each entry: entry i serves
// 2i + 2 up to 2i + 4 degrees (SkyTemperatureAt reads one cell behind).
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
        double error = mean - SkyTemp144Table[entry];
        sum += error * error;
    }
    return std::sqrt(sum / 180.0);
}

TEST(SkyModel, AloneFollowsTheEclipticTableRoughly)
{
    EXPECT_LT(EclipticRms(lunaquill::SkyModelTemperature), 45.0);
}

TEST(SkyModel, CalibratedFollowsTheEclipticTable)
{
    EXPECT_LT(EclipticRms(lunaquill::CalibratedSkyTemperature), 5.0);
}

TEST(SkyModel, CalibrationMatchesWhatTheProgramShowsForTheMoon)
{
    // The 3038 K entry 133 is shown for ecliptic longitudes 268..270 degrees,
    // right beside the Galactic centre; the model must peak there too.
    for (double longitude : {268.5, 269.5}) {
        ln_lnlat_posn ecliptic = {longitude, 0.0};
        ln_equ_posn equatorial;
        ln_get_equ_from_ecl(&ecliptic, 2451545.0, &equatorial);
        EXPECT_NEAR(lunaquill::CalibratedSkyTemperature(equatorial.ra, equatorial.dec),
                    lunaquill::SkyTemperatureAt(144.0, longitude), 0.03 * 3038)
            << "at ecliptic longitude " << longitude;
    }
}

TEST(SkyModel, GalacticPoleIsFarColderThanTheCentre)
{
    double pole = lunaquill::CalibratedSkyTemperature(192.859, 27.128);      // NGP, J2000
    double centre = lunaquill::CalibratedSkyTemperature(266.417, -29.008);   // Sgr A*
    EXPECT_LT(pole, centre / 10.0);
    // Measured cold-sky temperatures near 150 MHz lie around 150..300 K.
    EXPECT_GT(pole, 150.0);
    EXPECT_LT(pole, 300.0);
}

TEST(SkyModel, CygnusAStandsOutByItsFlux)
{
    // 10,700 Jy spread over a Gaussian of sigma 3 degrees at 144 MHz:
    // T = S lambda^2 / (2 k 2 pi sigma^2)
    //   = 1.07e-22 * 2.0819^2 / (2 * 1.380649e-23 * 2 pi * 0.05236^2) = 975 K.
    // The diffuse sky around it is taken from four points 15 degrees away.
    const double ra = 299.868, dec = 40.734;
    double around = (lunaquill::SkyModelTemperature(ra, dec + 15.0) +
                     lunaquill::SkyModelTemperature(ra, dec - 15.0) +
                     lunaquill::SkyModelTemperature(ra + 15.0 / std::cos(dec * M_PI / 180), dec) +
                     lunaquill::SkyModelTemperature(ra - 15.0 / std::cos(dec * M_PI / 180), dec)) /
                    4.0;
    EXPECT_NEAR(lunaquill::SkyModelTemperature(ra, dec) - around, 975.0, 150.0);
}

// ---- Sky-noise image ----------------------------------------------------

// Position 0..1 along the documented palette (navy, blue, cyan, green,
// yellow, red, white at equal steps of log10 T), by the nearest sample.
double PalettePosition(QRgb colour)
{
    static QHash<QRgb, double> known;
    auto found = known.constFind(colour);
    if (found != known.constEnd())
        return *found;
    static const int stops[7][3] = {{0, 0, 128},   {0, 0, 255}, {0, 255, 255}, {0, 255, 0},
                                    {255, 255, 0}, {255, 0, 0}, {255, 255, 255}};
    double best = 0.0, bestDistance = 1e9;
    for (int k = 0; k <= 1200; ++k) {
        double t = k / 1200.0;
        int i = std::min(k / 200, 5);
        double f = t * 6.0 - i;
        double distance = 0.0;
        for (int c = 0; c < 3; ++c) {
            double value = stops[i][c] + (stops[i + 1][c] - stops[i][c]) * f;
            int channel = c == 0 ? qRed(colour) : c == 1 ? qGreen(colour) : qBlue(colour);
            distance += (value - channel) * (value - channel);
        }
        if (distance < bestDistance)
            bestDistance = distance, best = t;
    }
    known.insert(colour, best);
    return best;
}

// Column and row of a J2000 position: RA 266.417 on the left edge of
// column 376, 0.225 degrees a pixel, RA growing to the right, Dec +90 on top.
QPoint SkyPixel(double ra, double dec)
{
    double x = 376.0 + std::remainder(ra - 266.417, 360.0) / 0.225;
    double y = (90.0 - dec) / 0.225;
    return QPoint(static_cast<int>(std::floor(std::fmod(x + 1600.0, 1600.0))),
                  static_cast<int>(std::floor(y)));
}

// The hottest pixel (highest palette position) within `half` pixels of a point.
QPoint HottestNear(const QImage &sky, QPoint centre, int half)
{
    QPoint best = centre;
    double hottest = -1.0;
    for (int y = std::max(0, centre.y() - half); y <= std::min(799, centre.y() + half); ++y)
        for (int dx = -half; dx <= half; ++dx) {
            int x = (centre.x() + dx + 1600) % 1600;
            double t = PalettePosition(sky.pixel(x, y));
            if (t > hottest)
                hottest = t, best = QPoint(centre.x() + dx, y);
        }
    return best;
}

class SkyNoiseImage : public testing::Test {
protected:
    void SetUp() override
    {
        sky = LoadPixmap("skynoise_1600.png");
        ASSERT_FALSE(sky.isNull());
    }
    QImage sky;
};

TEST_F(SkyNoiseImage, IsOpaque1600By800)
{
    EXPECT_EQ(sky.size(), QSize(1600, 800));
    EXPECT_FALSE(sky.hasAlphaChannel());
}

TEST_F(SkyNoiseImage, HottestPixelIsTheGalacticCentre)
{
    QPoint hottest = HottestNear(sky, QPoint(800, 400), 800);
    EXPECT_LE(std::abs(hottest.x() - 376), 3) << hottest.x() << "," << hottest.y();
    EXPECT_LE(std::abs(hottest.y() - 528), 3) << hottest.x() << "," << hottest.y();
    EXPECT_EQ(SkyPixel(266.417, -29.008), QPoint(376, 528));
}

TEST_F(SkyNoiseImage, BrightSourcesSitAtTheirPositions)
{
    // East of the Galactic centre by RA: a mirrored image would put them
    // 2 * 148 and 2 * 375 columns away from where they are expected.
    struct Source {
        const char *name;
        double ra, dec;
    };
    for (const Source &source : {Source{"Cyg A", 299.868, 40.734}, Source{"Cas A", 350.866, 58.812}}) {
        QPoint expected = SkyPixel(source.ra, source.dec);
        QPoint found = HottestNear(sky, expected, 20);
        EXPECT_LE(std::abs(found.x() - expected.x()), 3) << source.name;
        EXPECT_LE(std::abs(found.y() - expected.y()), 3) << source.name;
    }
}

TEST_F(SkyNoiseImage, PoleIsColderThanTheCentreInColour)
{
    double pole = PalettePosition(sky.pixelColor(SkyPixel(192.859, 27.128)).rgb());
    double centre = PalettePosition(sky.pixelColor(SkyPixel(266.417, -29.008)).rgb());
    EXPECT_LT(pole, 0.2);    // navy to blue: below about 280 K
    EXPECT_GT(centre, 0.75); // between yellow and red: above about 2400 K
}

TEST_F(SkyNoiseImage, RightEdgeJoinsLeftEdgeWithoutASeam)
{
    // The map rolls the image round, so column 1599 is drawn next to column 0:
    // the step across that join must be no larger than the steps beside it.
    for (int y = 0; y < 800; ++y) {
        auto step = [&](int a, int b) {
            QColor p = sky.pixelColor(a, y), q = sky.pixelColor(b, y);
            return std::max({std::abs(p.red() - q.red()), std::abs(p.green() - q.green()),
                             std::abs(p.blue() - q.blue())});
        };
        int neighbours = std::max(step(1598, 1599), step(0, 1));
        ASSERT_LE(step(1599, 0), neighbours + 2) << "row " << y;
    }
}

// ---- Icons and dial -------------------------------------------------------

struct IconCase {
    const char *file;
    int width, height;
};

class Icon : public testing::TestWithParam<IconCase> {};

TEST_P(Icon, HasItsSizeTransparentCornersAndAnOpaqueCentre)
{
    const IconCase &icon = GetParam();
    QImage image = LoadPixmap(icon.file);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(icon.width, icon.height));
    ASSERT_TRUE(image.hasAlphaChannel());
    int right = image.width() - 1, bottom = image.height() - 1;
    for (QPoint corner : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)})
        EXPECT_EQ(qAlpha(image.pixel(corner)), 0) << corner.x() << "," << corner.y();
    EXPECT_EQ(qAlpha(image.pixel(image.width() / 2, image.height() / 2)), 255);
}

INSTANTIATE_TEST_SUITE_P(
    Pixmaps, Icon,
    testing::Values(IconCase{"sun-icon.png", 24, 24}, IconCase{"moon-icon.png", 24, 24},
                    IconCase{"mercury-icon.png", 20, 20}, IconCase{"venus-icon.png", 20, 20},
                    IconCase{"mars-icon.png", 20, 20}, IconCase{"jupiter-icon.png", 20, 20},
                    IconCase{"saturn-icon.png", 32, 20}, IconCase{"uranus-icon.png", 20, 20},
                    IconCase{"neptune-icon.png", 20, 20}, IconCase{"pluto-icon.png", 16, 16},
                    IconCase{"dish-icon.png", 24, 24}, IconCase{"menu-icon.png", 32, 32},
                    IconCase{"dial.png", 512, 512}),
    [](const testing::TestParamInfo<IconCase> &info) {
        QString name = QString(info.param.file).section('.', 0, 0).remove('-');
        return name.toStdString();
    });

class Dial : public testing::Test {
protected:
    void SetUp() override
    {
        QImage dial = LoadPixmap("dial.png");
        ASSERT_FALSE(dial.isNull());
        // As the chart label shows it: scaled to 400 x 400 keeping its aspect.
        shown = dial.scaled(400, 400, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                    .convertToFormat(QImage::Format_ARGB32);
    }
    // A point of the ring at this azimuth and radius, about the dial centre.
    QColor RingAt(double azimuth, double radius) const
    {
        double a = azimuth * M_PI / 180.0;
        return shown.pixelColor(static_cast<int>(200.0 + radius * std::sin(a)),
                                static_cast<int>(200.0 - radius * std::cos(a)));
    }
    QImage shown;
};

TEST_F(Dial, RingLiesOutsideTheChartClip)
{
    // The chart's sphere is clipped to the ellipse at (15, 15), 365 x 365:
    // everything of the dial inside it must be plain black sky.
    ASSERT_EQ(shown.size(), QSize(400, 400));
    int lit = 0;
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 400; ++x) {
            double u = (x + 0.5 - 197.5) / 182.5, v = (y + 0.5 - 197.5) / 182.5;
            QColor c = shown.pixelColor(x, y);
            if (u * u + v * v <= 1.0 && std::max({c.red(), c.green(), c.blue()}) > 8)
                ++lit;
        }
    EXPECT_EQ(lit, 0);
}

TEST_F(Dial, TicksEveryTenDegreesAndLabelsOnTheCardinalPoints)
{
    // Ticks run across the ring (radius 188..198 at this size) at every
    // 10 degrees that carries no label.
    for (int azimuth = 10; azimuth < 360; azimuth += 10) {
        if (azimuth % 30 == 0)
            continue;
        QColor tick = RingAt(azimuth, 193.0);
        EXPECT_GT(tick.lightness(), 100) << "no tick at " << azimuth;
        QColor between = RingAt(azimuth + 5.0, 193.0);
        EXPECT_LT(between.lightness(), 80) << "ring not dark at " << azimuth + 5;
    }
    // Each 30-degree mark carries a label: some light pixels in its box.
    for (int azimuth = 0; azimuth < 360; azimuth += 30) {
        int light = 0;
        for (double da = -6.0; da <= 6.0; da += 0.5)
            for (double r = 189.0; r <= 198.0; r += 1.0)
                light += RingAt(azimuth + da, r).lightness() > 120;
        EXPECT_GT(light, 5) << "no label at " << azimuth;
    }
    // North is marked in red, so the chart's top is found at a glance.
    int reddest = 0;
    for (double da = -6.0; da <= 6.0; da += 0.5)
        for (double r = 189.0; r <= 198.0; r += 1.0) {
            QColor c = RingAt(da, r);
            reddest = std::max(reddest, c.red() - c.green());
        }
    EXPECT_GT(reddest, 80);
}

} // namespace
