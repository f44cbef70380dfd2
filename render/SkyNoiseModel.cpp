#include "render/SkyNoiseModel.h"

#include "tracking/EmeFigures.h"

#include <libnova/transform.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace lunaquill {

const SkyModelAmplitudes kSkyModelAmplitudes = {163.0, 204.0, 2986.0, 430.0, 87.0, 114.0};

namespace {

constexpr double kRadian = 0.017453292519944444;
constexpr double kJ2000 = 2451545.0;

// Angle (degrees) between two directions given as longitude and latitude.
double AngularDistance(double lon1, double lat1, double lon2, double lat2)
{
    double cosine = std::sin(lat1 * kRadian) * std::sin(lat2 * kRadian) +
                    std::cos(lat1 * kRadian) * std::cos(lat2 * kRadian) *
                        std::cos((lon1 - lon2) * kRadian);
    return std::acos(std::clamp(cosine, -1.0, 1.0)) / kRadian;
}

// The shape of each diffuse component toward galactic (l, b), degrees, l in
// [-180, 180]; the amplitudes scale them.
std::array<double, 6> ComponentShapes(double l, double b)
{
    double loopI = AngularDistance(l, b, 329.0, 17.5);
    double loopII = AngularDistance(l, b, 100.0, -32.5);
    auto ring = [](double r, double radius) {
        double x = (r - radius) / 6.0;
        return std::exp(-0.5 * x * x);
    };
    return {
        1.0,
        std::exp(-std::fabs(b) / 28.3) * (1.0 + std::cos(l * kRadian)) / 2.0,
        std::exp(-std::fabs(l) / 22.2) * std::exp(-b * b / (2.0 * 7.5 * 7.5)),
        std::exp(-std::fabs(b) / 26.1),
        loopI <= 58.0 ? 1.0 : ring(loopI, 58.0),
        ring(loopII, 45.5),
    };
}

// The brightest sources at 144 MHz, each smeared into a Gaussian of
// sigma 3 degrees that holds its whole flux: peak = S lambda^2 / (2k 2pi sigma^2).
struct RadioSource {
    double ra, dec;   // J2000, degrees
    double fluxJy;    // at 144 MHz
};
constexpr RadioSource kSources[] = {
    {350.866, 58.812, 9000.0},   // Cas A
    {299.868, 40.734, 10700.0},  // Cyg A
    {83.633, 22.014, 1400.0},    // Tau A
    {187.706, 12.391, 1100.0},   // Vir A
    {201.365, -43.019, 2500.0},  // Cen A
};
constexpr double kSourceSigma = 3.0;

double SourcesTemperature(double ra, double dec)
{
    const double wavelength = 299792458.0 / 144e6;
    const double boltzmann = 1.380649e-23;
    const double sigma = kSourceSigma * kRadian;
    const double kelvinPerJy =
        1e-26 * wavelength * wavelength / (2.0 * boltzmann * 2.0 * M_PI * sigma * sigma);
    double sum = 0.0;
    for (const RadioSource &source : kSources) {
        double r = AngularDistance(ra, dec, source.ra, source.dec) / kSourceSigma;
        if (r < 6.0)
            sum += source.fluxJy * kelvinPerJy * std::exp(-0.5 * r * r);
    }
    return sum;
}

// Model / table ratio at the centre of each table entry's longitude bin.
struct Calibration {
    std::array<double, 180> ratio;
    Calibration()
    {
        for (int i = 0; i < 180; ++i)
            ratio[i] = SkyTemp144Table[i] / EclipticBinMean(i, SkyModelTemperature);
    }
    // Linear in ecliptic longitude between bin centres (2i + 3 degrees).
    double At(double longitude) const
    {
        double u = (longitude - 3.0) / 2.0;
        double below = std::floor(u);
        double fraction = u - below;
        int i = ((static_cast<int>(below) % 180) + 180) % 180;
        return ratio[i] * (1.0 - fraction) + ratio[(i + 1) % 180] * fraction;
    }
};

} // namespace

double SkyModelTemperature(double ra, double dec)
{
    ln_equ_posn equatorial = {ra, dec};
    ln_gal_posn galactic;
    ln_get_gal_from_equ2000(&equatorial, &galactic);
    double l = galactic.l > 180.0 ? galactic.l - 360.0 : galactic.l;

    const std::array<double, 6> shape = ComponentShapes(l, galactic.b);
    const SkyModelAmplitudes &a = kSkyModelAmplitudes;
    return a.floor * shape[0] + a.haze * shape[1] + a.ridge * shape[2] + a.disc * shape[3] +
           a.loopI * shape[4] + a.loopII * shape[5] + SourcesTemperature(ra, dec);
}

double CalibratedSkyTemperature(double ra, double dec)
{
    static const Calibration calibration;
    ln_equ_posn equatorial = {ra, dec};
    ln_lnlat_posn ecliptic;
    ln_get_ecl_from_equ(&equatorial, kJ2000, &ecliptic);
    double fade = std::exp(-ecliptic.lat * ecliptic.lat / (2.0 * 15.0 * 15.0));
    double ratio = calibration.At(ecliptic.lng);
    return SkyModelTemperature(ra, dec) * (1.0 + (ratio - 1.0) * fade);
}

double EclipticBinMean(int entry, double (*temperature)(double ra, double dec))
{
    double sum = 0.0;
    for (int k = 0; k < 5; ++k) {
        ln_lnlat_posn ecliptic = {2.0 * entry + 2.0 + 0.4 * (k + 0.5), 0.0};
        ln_equ_posn equatorial;
        ln_get_equ_from_ecl(&ecliptic, kJ2000, &equatorial);
        sum += temperature(equatorial.ra, equatorial.dec);
    }
    return sum / 5.0;
}

QRgb SkyPaletteColour(double kelvin)
{
    struct Stop {
        double at;
        int r, g, b;
    };
    static constexpr Stop stops[] = {
        {0.0 / 6, 0, 0, 128},    // navy
        {1.0 / 6, 0, 0, 255},    // blue
        {2.0 / 6, 0, 255, 255},  // cyan
        {3.0 / 6, 0, 255, 0},    // green
        {4.0 / 6, 255, 255, 0},  // yellow
        {5.0 / 6, 255, 0, 0},    // red
        {6.0 / 6, 255, 255, 255} // white
    };
    double t = (std::log10(std::max(kelvin, 1.0)) - std::log10(150.0)) /
               (std::log10(6000.0) - std::log10(150.0));
    t = std::clamp(t, 0.0, 1.0);
    int i = std::min(static_cast<int>(t * 6.0), 5);
    double f = (t - stops[i].at) * 6.0;
    auto mix = [f](int from, int to) { return static_cast<int>(std::lround(from + (to - from) * f)); };
    return qRgb(mix(stops[i].r, stops[i + 1].r), mix(stops[i].g, stops[i + 1].g),
                mix(stops[i].b, stops[i + 1].b));
}

} // namespace lunaquill
