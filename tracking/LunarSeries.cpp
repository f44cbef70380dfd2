#include "LunarSeries.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace lunaquill {

namespace {

using namespace elp;

// A series with what does not depend on the date done once per term. The
// sine's argument is a sum of products added one by one; with t^0 = 1 the
// products of the zeroth power of time are fixed, so the sum starts from their
// total, `start`, and the date only brings the products of t (and for the
// main problem t^2 to t^4), kept as factors to multiply by the power.
//
// A zero product leaves the sum as it was (x + 0 = x for every x but -0,
// and no start is -0), so the zero factors are dropped and every term gets
// the same number of factor slots per power, the unused ones zero: the loop
// over the terms then has no branches and runs on the vector unit, each
// term's sum still formed in libnova's order.
struct Series {
    int count = 0;
    int powers = 1;      // powers of time with factors: 1, or 4 for the main problem
    int slots = 0;       // factor slots per power
    int level = 0;       // the truncation level it is compared with (0, 1 or 2)
    int timePower = 0;   // the amplitude is multiplied by t^timePower
    bool cosine = false; // a quarter turn added to the argument (the main distance series)
    std::vector<double> start, amplitude, size;
    std::vector<double> factors; // [power - 1][slot][term]
};

// The products of one term, in libnova's order, for one power of time.
using Products = std::vector<std::vector<double>>; // [power][product]

void AddTerm(Series &series, int j, double start, const Products &products)
{
    double y = start;
    for (double product : products[0])
        y += product * 1.0;
    series.start[size_t(j)] = y;
    for (int power = 1; power <= series.powers; ++power) {
        int slot = 0;
        for (double product : products[size_t(power)]) {
            if (product == 0.0)
                continue;
            series.factors[(size_t(power - 1) * size_t(series.slots) + size_t(slot++))
                               * size_t(series.count)
                           + size_t(j)] = product;
        }
    }
}

// The products a term adds for each power of time (0, then 1 to 4).
Products TermProducts(const SeriesTable &table, int number, int j)
{
    Products products(table.main ? 5 : 2);
    for (int k = 0; k < int(products.size()); ++k) {
        std::vector<double> &add = products[size_t(k)];
        if (table.main) {
            for (int i = 0; i < 4; ++i)
                add.push_back(table.main[j].ilu[i] * del[i][k]);
        } else if (table.earth) {
            const EarthTerm &e = table.earth[j];
            add.push_back(e.iz * zeta[k]);
            for (int i = 0; i < 4; ++i)
                add.push_back(e.ilu[i] * del[i][k]);
        } else if (number <= 15) { // planetary table 1: D, F and l together, eight planets
            const PlanetTerm &pl = table.planet[j];
            add.push_back(pl.ipla[8] * del[0][k] + pl.ipla[9] * del[2][k] + pl.ipla[10] * del[3][k]);
            for (int i = 0; i < 8; ++i)
                add.push_back(pl.ipla[i] * p[i][k]);
        } else { // planetary table 2: the four Delaunay arguments, seven planets
            const PlanetTerm &pl = table.planet[j];
            for (int i = 0; i < 4; ++i)
                add.push_back(pl.ipla[i + 7] * del[i][k]);
            for (int i = 0; i < 7; ++i)
                add.push_back(pl.ipla[i] * p[i][k]);
        }
    }
    return products;
}

Series PrepareSeries(int s)
{
    const SeriesTable &table = kSeries[s];
    const int number = s + 1;
    Series series;
    series.count = table.count;
    series.powers = table.main ? 4 : 1;
    series.level = s % 3;
    if ((number >= 7 && number <= 9) || (number >= 13 && number <= 15)
        || (number >= 19 && number <= 21) || (number >= 25 && number <= 27))
        series.timePower = 1;
    else if (number >= 34)
        series.timePower = 2;
    series.cosine = number == 3;

    std::vector<Products> products;
    for (int j = 0; j < table.count; ++j) {
        products.push_back(TermProducts(table, number, j));
        for (size_t k = 1; k < products.back().size(); ++k) {
            const auto &add = products.back()[k];
            series.slots = std::max(series.slots,
                                    int(std::count_if(add.begin(), add.end(),
                                                      [](double v) { return v != 0.0; })));
        }
    }
    const size_t count = size_t(table.count);
    series.start.resize(count);
    series.amplitude.resize(count);
    series.size.resize(count);
    series.factors.assign(size_t(series.powers) * size_t(series.slots) * count, 0.0);
    for (int j = 0; j < table.count; ++j) {
        double start = 0.0;
        if (table.main) {
            const MainTerm &m = table.main[j];
            const double tgv = m.B[0] + DTASM * m.B[4];
            series.amplitude[size_t(j)] = m.A + tgv * (DELNP - AM * DELNU) + m.B[1] * DELG
                                          + m.B[2] * DELE + m.B[3] * DELEP;
            series.size[size_t(j)] = m.A;
        } else if (table.earth) {
            start = table.earth[j].O * DEG;
            series.amplitude[size_t(j)] = series.size[size_t(j)] = table.earth[j].A;
        } else {
            start = table.planet[j].theta * DEG;
            series.amplitude[size_t(j)] = series.size[size_t(j)] = table.planet[j].O;
        }
        AddTerm(series, j, start, products[size_t(j)]);
    }
    return series;
}

struct Theory {
    Series series[36];
};

const Theory &PreparedTheory()
{
    static const Theory theory = [] {
        Theory made;
        for (int s = 0; s < 36; ++s)
            made.series[s] = PrepareSeries(s);
        return made;
    }();
    return theory;
}

// Every term's argument at the date, reduced as libnova's ln_range_radians2
// reduces it: whole turns taken off outside (-2 pi, 2 pi). Inside, the turns
// counted are none and the subtraction leaves the argument as it is, so the
// test libnova makes first need not be made.
void Arguments(const Series &series, const double t[5], double *arguments)
{
    const size_t count = size_t(series.count);
    for (size_t j = 0; j < count; ++j)
        arguments[j] = series.start[j];
    for (int power = 1; power <= series.powers; ++power) {
        const double tk = t[power];
        for (int slot = 0; slot < series.slots; ++slot) {
            const double *factor =
                &series.factors[(size_t(power - 1) * size_t(series.slots) + size_t(slot)) * count];
            for (size_t j = 0; j < count; ++j)
                arguments[j] += factor[j] * tk;
        }
    }
    for (size_t j = 0; j < count; ++j) {
        double y = arguments[j];
        if (series.cosine)
            y += M_PI_2;
        double turns = (int)(y / (M_PI * 2.0));
        turns *= (M_PI * 2.0);
        arguments[j] = y - turns;
    }
}

// The sines are taken in groups of like arguments: the sine's own path
// depends on the argument's size, and arguments in table order would send it
// down paths the processor cannot foresee. The sum is then formed in table
// order, as libnova forms it, of the terms above the truncation level.
double Sum(const Series &series, const double t[5], double level)
{
    const size_t count = size_t(series.count);
    thread_local std::vector<double> sines;
    thread_local std::vector<uint32_t> groups[4];
    sines.resize(count);
    Arguments(series, t, sines.data());
    size_t counts[4] = {};
    for (auto &group : groups)
        group.resize(count);
    for (uint32_t j = 0; j < count; ++j) {
        const double size = std::fabs(sines[j]);
        const int group = (size >= 0.126) + (size >= 0.855469) + (size >= 2.426265);
        groups[group][counts[group]++] = j;
    }
    for (int g = 0; g < 4; ++g) {
        for (size_t n = 0; n < counts[g]; ++n) {
            double &value = sines[groups[g][n]];
            value = std::sin(value);
        }
    }
    double result = 0;
    for (size_t j = 0; j < count; ++j) {
        if (!(std::fabs(series.size[j]) > level))
            continue;
        const double amplitude = series.timePower > 0
                                     ? series.amplitude[j] * t[series.timePower]
                                     : series.amplitude[j];
        result += amplitude * sines[j];
    }
    return result;
}

} // namespace

ln_rect_posn LunarGeoPosition(double JD, double precision)
{
    const Theory &theory = PreparedTheory();
    if (precision > 0.01)
        precision = 0.01;

    double t[5];
    t[0] = 1.0;
    t[1] = (JD - 2451545.0) / 36525.0;
    t[2] = t[1] * t[1];
    t[3] = t[2] * t[1];
    t[4] = t[3] * t[1];
    const double levels[3] = {precision * RAD, precision * RAD, precision * ATH};

    double elp[36];
    for (int s = 0; s < 36; ++s) {
        const Series &series = theory.series[s];
        elp[s] = Sum(series, t, levels[series.level]);
    }

    // From here on libnova's lines, unchanged.
    double a = elp[0] + elp[3] + elp[6] + elp[9] + elp[12] + elp[15] + elp[18] + elp[21] + elp[24]
               + elp[27] + elp[30] + elp[33];
    double b = elp[1] + elp[4] + elp[7] + elp[10] + elp[13] + elp[16] + elp[19] + elp[22]
               + elp[25] + elp[28] + elp[31] + elp[34];
    double c = elp[2] + elp[5] + elp[8] + elp[11] + elp[14] + elp[17] + elp[20] + elp[23]
               + elp[26] + elp[29] + elp[32] + elp[35];

    a = a / RAD + W1[0] + W1[1] * t[1] + W1[2] * t[2] + W1[3] * t[3] + W1[4] * t[4];
    b = b / RAD;
    c = c * A0 / ATH;

    double x = c * cos(b);
    double y = x * sin(a);
    x = x * cos(a);
    double z = c * sin(b);

    double pw = (P1 + P2 * t[1] + P3 * t[2] + P4 * t[3] + P5 * t[4]) * t[1];
    double qw = (Q1 + Q2 * t[1] + Q3 * t[2] + Q4 * t[3] + Q5 * t[4]) * t[1];
    const double ra = 2.0 * sqrt(1 - pw * pw - qw * qw);
    const double pwqw = 2.0 * pw * qw;
    const double pw2 = 1.0 - 2.0 * pw * pw;
    const double qw2 = 1.0 - 2.0 * qw * qw;
    pw = pw * ra;
    qw = qw * ra;

    ln_rect_posn moon;
    moon.X = pw2 * x + pwqw * y + pw * z;
    moon.Y = pwqw * x + qw2 * y - qw * z;
    moon.Z = -pw * x + qw * y + (pw2 + qw2 - 1) * z;
    return moon;
}

} // namespace lunaquill
