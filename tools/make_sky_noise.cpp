// Draws the sky-noise image from the calibrated 144 MHz sky model.
// Layout: 1600x800, 0.225 degrees a pixel, RA increasing to the right with
// Sgr A* (RA 266.417) on the left edge of column 376, Dec +90 at the top.
// Usage: make_sky_noise <out.png>
#include "render/SkyNoiseModel.h"

#include <QImage>

#include <cmath>
#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_sky_noise <out-file>\n");
        return 2;
    }
    constexpr int width = 1600, height = 800, galacticCentreColumn = 376;
    constexpr double degreesPerPixel = 0.225, galacticCentreRa = 266.417;

    QImage sky(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        const double dec = 90.0 - (y + 0.5) * degreesPerPixel;
        QRgb *row = reinterpret_cast<QRgb *>(sky.scanLine(y));
        for (int x = 0; x < width; ++x) {
            double ra = galacticCentreRa + (x + 0.5 - galacticCentreColumn) * degreesPerPixel;
            ra = std::fmod(ra + 360.0, 360.0);
            row[x] = lunaquill::SkyPaletteColour(lunaquill::CalibratedSkyTemperature(ra, dec));
        }
    }
    if (!sky.convertToFormat(QImage::Format_RGB888).save(QString::fromLocal8Bit(argv[1]), "png")) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
