// The sky model the committed sky-noise image in pixmaps/ is drawn from.
#include "render/SkyNoiseModel.h"
#include "tracking/EmeFigures.h"

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

} // namespace
