// The Moon's geocentric position from the ELP 2000-82B theory, evaluated
// operation for operation as libnova 0.16 evaluates it in
// ln_get_lunar_geo_posn, so that every position is libnova's bit for bit.
// Unlike libnova's it writes no statics (two threads may call it at once) and
// it does once, per term, what does not depend on the date, which makes it
// several times faster.
#pragma once

#include <libnova/ln_types.h>

namespace lunaquill {

// ln_get_lunar_geo_posn(jd, &position, precision): rectangular geocentric
// ecliptic coordinates of date, km; `precision` truncates the series as there
// (0 keeps every term).
ln_rect_posn LunarGeoPosition(double jd, double precision);

// The theory's tables and constants, generated from libnova's source into
// LunarSeriesTables.cpp; the records are laid out as libnova lays them out.
namespace elp {

struct MainTerm { // the main problem (series 1 to 3)
    int ilu[4];
    double A;
    double B[5];
};

struct EarthTerm { // the Earth's figure, tides, the Moon's figure, relativity, solar eccentricity
    int iz;
    int ilu[4];
    double O;
    double A;
    double P;
};

struct PlanetTerm { // the planetary perturbations (series 10 to 21)
    int ipla[11];
    double theta;
    double O;
    double P;
};

// One series: exactly one of the three pointers is set.
struct SeriesTable {
    const MainTerm *main;
    const EarthTerm *earth;
    const PlanetTerm *planet;
    int count;
};

extern const SeriesTable kSeries[36];
extern const double RAD, DEG, ATH, A0, AM, ALPHA, DTASM, W12, PRECES, C1, C2;
extern const double DELNU, DELE, DELG, DELNP, DELEP;
extern const double P1, P2, P3, P4, P5, Q1, Q2, Q3, Q4, Q5;
extern const double W1[5], del[4][5], zeta[2], p[8][2];

} // namespace elp

} // namespace lunaquill
