// A smooth model of the galactic radio sky at 144 MHz, from which the
// sky-noise image in pixmaps/ is drawn. No all-sky survey ships with Debian,
// so the sky is built from a few galactic components and the brightest radio
// sources, then scaled along the ecliptic to the program's own 144 MHz table,
// so that the picture agrees with the sky temperature shown for the Moon.
#pragma once

#include <QRgb>

namespace lunaquill {

// Amplitudes (K) of the diffuse components, fitted by non-negative least
// squares to the 144 MHz ecliptic table; see pixmaps/README.md.
struct SkyModelAmplitudes {
    double floor;   // uniform extragalactic and halo background
    double haze;    // broad emission toward the inner Galaxy
    double ridge;   // thin galactic ridge around the centre
    double disc;    // galactic disc, all longitudes
    double loopI;   // North Polar Spur (Loop I), filled
    double loopII;  // Loop II shell (Cetus arc)
};
extern const SkyModelAmplitudes kSkyModelAmplitudes;

// Brightness temperature (K) at 144 MHz toward J2000 (ra, dec), degrees,
// from the model alone.
double SkyModelTemperature(double ra, double dec);

// The model multiplied along the ecliptic by its ratio to SkyTemp144Table;
// the correction fades out with ecliptic latitude (sigma 15 degrees).
double CalibratedSkyTemperature(double ra, double dec);

// Mean of `temperature` over the ecliptic longitudes that the program reads
// from table entry `entry` (2*entry + 2 up to 2*entry + 4 degrees), five
// points at ecliptic latitude 0.
double EclipticBinMean(int entry, double (*temperature)(double ra, double dec));

// False colour of a temperature: log10 T from 150 K (navy) to 6000 K (white)
// through blue, cyan, green, yellow and red; clamped at both ends, opaque.
QRgb SkyPaletteColour(double kelvin);

} // namespace lunaquill
