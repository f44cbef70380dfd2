// Writes the sky tables of render/SkyTables.h as C++ sources:
//   render/ConstellationTable.cpp     names, label points, areas, ranks
//   render/ConstellationOutlines.cpp  B1875 boundary vertices
//   render/StarCatalogue.cpp          stars to V 6.75 and bright deep-sky objects
// from python3-astropy (Roman 1987 boundaries, constellation names),
// kstars-data (Hipparcos/Tycho stars, OpenNGC) and stellarium-data (B-V where
// KStars has none). See render/SKY-TABLES.md.
// Usage: make_sky_tables <downloads folder with the packages unpacked> <output folder>
#include <QCoreApplication>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include "render/SkyLayers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

constexpr int kDay = 86400;         // right ascension in seconds of time
constexpr int kPole = 90 * 60;      // declination in arcminutes

[[noreturn]] void Fail(const std::string &message)
{
    std::fprintf(stderr, "make_sky_tables: %s\n", message.c_str());
    std::exit(1);
}

std::string ReadFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        Fail("cannot read " + path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// "kstars-data 5:3.6.2-2" from the .deb name that tools/fetch_sources.sh keeps.
std::string PackageVersion(const std::string &root, const std::string &package)
{
    std::ifstream in(root + "/.deb-name");
    std::string deb;
    if (!(in >> deb))
        return package + " (version unknown)";
    const size_t first = deb.find('_'), second = deb.find('_', first + 1);
    std::string version = deb.substr(first + 1, second - first - 1);
    for (size_t at; (at = version.find("%3a")) != std::string::npos;)
        version.replace(at, 3, ":");
    return package + " " + version;
}

// Shortest text that reads back as the same double.
std::string Number(double value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string text(buffer, result.ptr);
    if (text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

std::string Upper(std::string text)
{
    for (char &c : text)
        c = char(std::toupper((unsigned char)c));
    return text;
}

// --- boundaries ---------------------------------------------------------------

struct BoundaryRow {
    int raLow, raHigh, decLow;  // seconds of time, arcminutes
    int constellation;
};

struct Constellation {
    std::string abbreviation;  // upper case
    std::string name;
};

struct Sky {
    std::vector<Constellation> constellations;  // sorted by abbreviation
    std::vector<BoundaryRow> rows;              // in the file's order
    std::vector<int> ra, dec;                   // grid edges; ra cyclic, dec from -90 to +90
    std::vector<std::vector<int>> owner;        // [ra cell][dec cell]
};

std::vector<std::string> Lines(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#')
            lines.push_back(line);
    return lines;
}

// The constellation of the B1875 point (ra seconds, dec arcminutes): the first
// row with raLow < ra < raHigh and dec > decLow, the rule the table is made for.
int Lookup(const Sky &sky, double ra, double dec)
{
    for (const BoundaryRow &row : sky.rows)
        if (row.raLow < ra && ra < row.raHigh && dec > row.decLow)
            return row.constellation;
    Fail("a point outside every boundary row");
}

Sky ReadBoundaries(const std::string &astropyData)
{
    Sky sky;
    std::map<std::string, int> byMixedCase;
    for (const std::string &line : Lines(ReadFile(astropyData + "/constellation_names.dat"))) {
        const size_t space = line.find(' ');
        std::string name = line.substr(space + 1);
        name.erase(name.find_last_not_of(" \r") + 1);
        if (const size_t o = name.find("\xc3\xb6"); o != std::string::npos)
            name.replace(o, 2, "o");  // Bootes, in ASCII
        sky.constellations.push_back({line.substr(0, space), name});
    }
    if (sky.constellations.size() != 88)
        Fail("expected 88 constellation names");
    std::sort(sky.constellations.begin(), sky.constellations.end(),
              [](const Constellation &a, const Constellation &b) {
                  return Upper(a.abbreviation) < Upper(b.abbreviation);
              });
    for (size_t i = 0; i < sky.constellations.size(); ++i) {
        byMixedCase[sky.constellations[i].abbreviation] = int(i);
        sky.constellations[i].abbreviation = Upper(sky.constellations[i].abbreviation);
    }
    // The program's table has always spelled row 1 "Antila"; kept.
    sky.constellations[1].name = "Antila";

    std::set<int> raEdges, decEdges{-kPole, kPole};
    for (const std::string &line : Lines(ReadFile(astropyData + "/constellation_data_roman87.dat"))) {
        std::istringstream fields(line);
        double raLow, raHigh, decLow;
        std::string abbreviation;
        if (!(fields >> raLow >> raHigh >> decLow >> abbreviation) || !byMixedCase.count(abbreviation))
            Fail("bad boundary row: " + line);
        // The table's four decimals stand for whole seconds of time and whole arcminutes.
        BoundaryRow row{int(std::lround(raLow * 3600)), int(std::lround(raHigh * 3600)),
                        int(std::lround(decLow * 60)), byMixedCase[abbreviation]};
        sky.rows.push_back(row);
        raEdges.insert(row.raLow % kDay);
        raEdges.insert(row.raHigh % kDay);
        decEdges.insert(row.decLow);
    }
    sky.ra.assign(raEdges.begin(), raEdges.end());
    sky.dec.assign(decEdges.begin(), decEdges.end());
    const size_t columns = sky.ra.size(), bands = sky.dec.size() - 1;
    sky.owner.assign(columns, std::vector<int>(bands));
    for (size_t i = 0; i < columns; ++i) {
        const double west = sky.ra[i], east = i + 1 < columns ? sky.ra[i + 1] : sky.ra[0] + kDay;
        for (size_t j = 0; j < bands; ++j)
            sky.owner[i][j] = Lookup(sky, std::fmod((west + east) / 2, kDay),
                                     (sky.dec[j] + sky.dec[j + 1]) / 2.0);
    }
    return sky;
}

double CellWidth(const Sky &sky, size_t i)  // seconds of time
{
    return (i + 1 < sky.ra.size() ? sky.ra[i + 1] : sky.ra[0] + kDay) - sky.ra[i];
}

double Radians(int arcminutes) { return arcminutes / 60.0 * M_PI / 180.0; }

// Right ascension (seconds) from which constellation c is measured without a
// wrap: the east end of its widest run of uncovered columns, 0 if it has none.
int UnwrapOrigin(const Sky &sky, int c)
{
    const size_t columns = sky.ra.size();
    std::vector<bool> covered(columns);
    for (size_t i = 0; i < columns; ++i)
        covered[i] = std::count(sky.owner[i].begin(), sky.owner[i].end(), c) > 0;
    if (std::all_of(covered.begin(), covered.end(), [](bool b) { return b; }))
        return 0;
    double widest = -1;
    int origin = 0;
    for (size_t i = 0; i < columns; ++i) {
        if (covered[i] || !covered[(i + columns - 1) % columns])
            continue;  // not the first column of a gap
        double width = 0;
        size_t n = i;
        for (; !covered[n]; n = (n + 1) % columns)
            width += CellWidth(sky, n);
        if (width > widest) {
            widest = width;
            origin = sky.ra[n];
        }
    }
    return origin;
}

int Unwrapped(int ra, int origin) { return ra < origin ? ra + kDay : ra; }

struct Summary {
    double area, labelRa, labelDec;
    int rank;
};

using CellMask = std::vector<std::vector<bool>>;  // [ra cell][dec cell]

CellMask CellsOf(const Sky &sky, int c)
{
    CellMask cells(sky.ra.size(), std::vector<bool>(sky.dec.size() - 1));
    for (size_t i = 0; i < sky.ra.size(); ++i)
        for (size_t j = 0; j + 1 < sky.dec.size(); ++j)
            cells[i][j] = sky.owner[i][j] == c;
    return cells;
}

// The area and the area-weighted mean RA and Dec of the cells, RA unwrapped
// from the origin: with dA = dRA d(sin Dec), Dec's moment integrates
// Dec cos Dec, i.e. Dec sin Dec + cos Dec.
Summary Moments(const Sky &sky, const CellMask &cells, int origin)
{
    double weight = 0, raMoment = 0, decMoment = 0;
    for (size_t i = 0; i < sky.ra.size(); ++i) {
        const double a1 = Unwrapped(sky.ra[i], origin) / 3600.0;
        const double a2 = a1 + CellWidth(sky, i) / 3600.0;
        for (size_t j = 0; j + 1 < sky.dec.size(); ++j) {
            if (!cells[i][j])
                continue;
            const double d1 = Radians(sky.dec[j]), d2 = Radians(sky.dec[j + 1]);
            const double band = std::sin(d2) - std::sin(d1);
            auto g = [](double d) { return d * std::sin(d) + std::cos(d); };
            weight += (a2 - a1) * band;
            raMoment += 0.5 * (a2 * a2 - a1 * a1) * band;
            decMoment += (a2 - a1) * (g(d2) - g(d1));
        }
    }
    const double ra = std::fmod(raMoment / weight, 24.0);
    const double toSquareDegrees = (180 / M_PI) * (180 / M_PI);
    return {weight / 24.0 * 2 * M_PI * toSquareDegrees, ra < 0 ? ra + 24 : ra,
            decMoment / weight * 180 / M_PI, 0};
}

// The largest of the cells' connected areas (Serpens: Caput of its two).
CellMask LargestArea(const Sky &sky, const CellMask &cells, int origin)
{
    const int columns = int(sky.ra.size()), bands = int(sky.dec.size()) - 1;
    CellMask seen(columns, std::vector<bool>(bands)), best;
    double bestArea = -1;
    for (int i0 = 0; i0 < columns; ++i0)
        for (int j0 = 0; j0 < bands; ++j0) {
            if (!cells[i0][j0] || seen[i0][j0])
                continue;
            CellMask area(columns, std::vector<bool>(bands));
            std::vector<std::pair<int, int>> stack{{i0, j0}};
            seen[i0][j0] = true;
            while (!stack.empty()) {
                const auto [i, j] = stack.back();
                stack.pop_back();
                area[i][j] = true;
                const std::pair<int, int> next[] = {{(i + 1) % columns, j},
                                                    {(i + columns - 1) % columns, j},
                                                    {i, j + 1}, {i, j - 1}};
                for (const auto &[a, b] : next)
                    if (b >= 0 && b < bands && cells[a][b] && !seen[a][b]) {
                        seen[a][b] = true;
                        stack.emplace_back(a, b);
                    }
            }
            const double size = Moments(sky, area, origin).area;
            if (size > bestArea) {
                bestArea = size;
                best = area;
            }
        }
    return best;
}

// A label point inside constellation c: the area-weighted mean of its cells
// (the rule the published label points follow), else that of its largest
// area, else, at that mean RA, the middle of the longest run of its cells
// in declination (the mean of a polar cap lies outside it).
void PlaceLabel(const Sky &sky, int c, Summary &summary)
{
    auto inside = [&](const Summary &s) {
        return Lookup(sky, s.labelRa * 3600.0, s.labelDec * 60.0) == c;
    };
    if (inside(summary))
        return;
    const int origin = UnwrapOrigin(sky, c);
    Summary part = Moments(sky, LargestArea(sky, CellsOf(sky, c), origin), origin);
    if (!inside(part)) {
        size_t column = 0;
        while (column + 1 < sky.ra.size() && sky.ra[column + 1] <= part.labelRa * 3600.0)
            ++column;
        int bestLength = -1;
        for (size_t j = 0; j + 1 < sky.dec.size();) {
            size_t end = j;
            while (end + 1 < sky.dec.size() && sky.owner[column][end] == c)
                ++end;
            if (end > j && sky.dec[end] - sky.dec[j] > bestLength) {
                bestLength = sky.dec[end] - sky.dec[j];
                part.labelDec = (sky.dec[j] + sky.dec[end]) / 120.0;
            }
            j = std::max(end, j + 1);
        }
    }
    if (!inside(part))
        Fail("no label point inside " + sky.constellations[c].abbreviation);
    summary.labelRa = part.labelRa;
    summary.labelDec = part.labelDec;
}

std::vector<Summary> Summaries(const Sky &sky)
{
    std::vector<Summary> out(88);
    for (int c = 0; c < 88; ++c) {
        out[c] = Moments(sky, CellsOf(sky, c), UnwrapOrigin(sky, c));
        PlaceLabel(sky, c, out[c]);
    }
    std::vector<int> order(88);
    for (int c = 0; c < 88; ++c)
        order[c] = c;
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return out[a].area > out[b].area; });
    for (int r = 0; r < 88; ++r)
        out[order[r]].rank = r + 1;
    return out;
}

// --- outlines -----------------------------------------------------------------

enum Direction { North, East, South, West };

struct Edge {
    int fromRa, fromDec, toRa, toDec;  // grid indices
    Direction direction;
    int neighbour;
};

using Loop = std::vector<std::pair<int, int>>;  // vertices as (ra seconds, dec arcminutes)

// The boundary loops of constellation c, each clockwise (interior on the
// right), with a vertex at every turn and wherever the neighbour changes.
std::vector<Loop> Outline(const Sky &sky, int c)
{
    const int columns = int(sky.ra.size()), bands = int(sky.dec.size()) - 1;
    std::vector<Edge> edges;
    for (int i = 0; i < columns; ++i) {
        const int e = (i + 1) % columns, w = (i + columns - 1) % columns;
        for (int j = 0; j < bands; ++j) {
            if (sky.owner[i][j] != c)
                continue;
            if (sky.owner[w][j] != c)
                edges.push_back({i, j, i, j + 1, North, sky.owner[w][j]});
            if (j + 1 < bands && sky.owner[i][j + 1] != c)
                edges.push_back({i, j + 1, e, j + 1, East, sky.owner[i][j + 1]});
            if (sky.owner[e][j] != c)
                edges.push_back({e, j + 1, e, j, South, sky.owner[e][j]});
            if (j > 0 && sky.owner[i][j - 1] != c)
                edges.push_back({e, j, i, j, West, sky.owner[i][j - 1]});
        }
    }
    std::map<std::pair<int, int>, size_t> startingAt;
    for (size_t k = 0; k < edges.size(); ++k)
        if (!startingAt.emplace(std::make_pair(edges[k].fromRa, edges[k].fromDec), k).second)
            Fail("a boundary touches itself at a corner: " + sky.constellations[c].abbreviation);

    const int origin = UnwrapOrigin(sky, c);
    std::vector<bool> used(edges.size());
    std::vector<Loop> loops;
    for (size_t first = 0; first < edges.size(); ++first) {
        if (used[first])
            continue;
        std::vector<size_t> chain;
        for (size_t k = first; !used[k];
             k = startingAt.at(std::make_pair(edges[k].toRa, edges[k].toDec))) {
            used[k] = true;
            chain.push_back(k);
        }
        Loop loop;
        for (size_t n = 0; n < chain.size(); ++n) {
            const Edge &in = edges[chain[(n + chain.size() - 1) % chain.size()]];
            const Edge &out = edges[chain[n]];
            if (in.direction != out.direction || in.neighbour != out.neighbour)
                loop.emplace_back(sky.ra[out.fromRa], sky.dec[out.fromDec]);
        }
        // Start at the westernmost vertex, the lowest of equals.
        const auto west = std::min_element(loop.begin(), loop.end(), [&](auto a, auto b) {
            return std::make_pair(Unwrapped(a.first, origin), a.second)
                   < std::make_pair(Unwrapped(b.first, origin), b.second);
        });
        std::rotate(loop.begin(), west, loop.end());
        loops.push_back(loop);
    }
    std::sort(loops.begin(), loops.end(), [&](const Loop &a, const Loop &b) {
        return Unwrapped(a[0].first, origin) < Unwrapped(b[0].first, origin);
    });
    return loops;
}

// --- objects ------------------------------------------------------------------

struct Object {
    int constellation;
    int32_t number, type;
    double ra, dec, colourIndex, magnitude;
    std::string raText, decText;  // as the source gives them
};

int ConstellationOfJ2000(const Sky &sky, double raHours, double decDegrees)
{
    const lunaquill::OutlinePoint b1875 =
        lunaquill::Precess({raHours, decDegrees}, lunaquill::kJ2000, lunaquill::kB1875);
    return Lookup(sky, b1875.rightAscension * 3600.0, b1875.declination * 60.0);
}

template <typename T> T Read(const std::string &bytes, size_t at)
{
    T value;
    std::memcpy(&value, bytes.data() + at, sizeof value);  // little-endian files, x86 host
    return value;
}

std::string Scaled(int64_t value, int decimals)  // 139794, 6 -> "0.139794"
{
    const double scale = std::pow(10.0, decimals);
    return Number(double(value) / scale);
}

// B-V by HD number from a second source, Stellarium's Hipparcos stars to
// V 7.5 (stars_0 and stars_1: 28-byte records, HIP in bytes 0-2, B-V in byte
// 12 as (B-V + 0.5) * 127 / 4) and its cross-identification table
// (HIP, component, SAO, HD, HR, tab-separated).
std::map<int32_t, double> SecondColourIndices(const std::string &stellariumStars)
{
    std::map<int32_t, double> byHip;
    for (const char *name : {"/stars_0_0v0_8.cat", "/stars_1_0v0_8.cat"}) {
        const std::string bytes = ReadFile(stellariumStars + name);
        if (bytes.size() < 32 || Read<uint32_t>(bytes, 0) != 0x835f040a || Read<int32_t>(bytes, 4) != 0)
            Fail(std::string("not a Stellarium Hipparcos star file: ") + name);
        const int level = Read<int32_t>(bytes, 16);
        const int zones = level >= 0 && level <= 3 ? 20 << (2 * level) : 0;
        size_t at = 32 + 4 * size_t(zones), stars = 0;
        if (zones == 0 || bytes.size() < at)
            Fail(std::string("bad Stellarium star file header: ") + name);
        for (int zone = 0; zone < zones; ++zone)
            stars += Read<uint32_t>(bytes, 32 + 4 * size_t(zone));
        if (bytes.size() != at + 28 * stars)
            Fail(std::string("bad Stellarium star file size: ") + name);
        for (; at < bytes.size(); at += 28) {
            const int32_t hip = int32_t(Read<uint32_t>(bytes, at) & 0xffffff);
            byHip[hip] = Read<uint8_t>(bytes, at + 12) * 4.0 / 127.0 - 0.5;
        }
    }
    std::map<int32_t, double> byHd;
    std::istringstream crossIds(ReadFile(stellariumStars + "/cross-id.dat"));
    for (std::string line; std::getline(crossIds, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        std::vector<std::string> fields;
        std::istringstream in(line);
        for (std::string field; std::getline(in, field, '\t');)
            fields.push_back(field);
        if (fields.size() < 4 || fields[3].empty())
            continue;
        const auto colour = byHip.find(std::atoi(fields[0].c_str()));
        if (colour != byHip.end())
            byHd.emplace(std::atoi(fields[3].c_str()), colour->second);
    }
    return byHd;
}

// Stars of KStars' binary star files to V 6.75; copies kept in neighbouring
// sky cells are dropped. KStars stores a missing B-V as 0: the second source
// gives it then (0.00 there is a measured value), else it is unknown.
void ReadStars(const Sky &sky, const std::string &file, const std::map<int32_t, double> &secondColour,
               std::set<std::tuple<int32_t, int32_t, int16_t, int32_t>> &seen,
               std::vector<Object> &objects)
{
    const std::string bytes = ReadFile(file);
    constexpr size_t kFirstRecord = 6458, kRecord = 32;
    if (bytes.size() < kFirstRecord || bytes.compare(124, 2, "SK") != 0
        || (bytes.size() - kFirstRecord) % kRecord != 0)
        Fail("not a KStars star file: " + file);
    for (size_t at = kFirstRecord; at < bytes.size(); at += kRecord) {
        const auto ra = Read<int32_t>(bytes, at), dec = Read<int32_t>(bytes, at + 4);
        const auto hd = Read<int32_t>(bytes, at + 20);
        const auto v = Read<int16_t>(bytes, at + 24), bv = Read<int16_t>(bytes, at + 26);
        const auto flags = Read<uint8_t>(bytes, at + 30);
        if (v > 675 || !seen.emplace(ra, dec, v, hd).second)
            continue;
        Object star;
        star.number = hd;
        star.type = (flags & 0x04) ? 3 : (flags & 0x02) ? 2 : 1;
        star.ra = ra / 1e6;
        star.dec = dec / 1e5;
        const auto second = hd != 0 ? secondColour.find(hd) : secondColour.end();
        star.colourIndex = bv != 0 ? bv / 100.0
                           : second != secondColour.end() ? std::round(second->second * 1000) / 1000
                                                          : lunaquill::kUnknownColourIndex;
        star.magnitude = v / 100.0;
        star.raText = Scaled(ra, 6);
        star.decText = Scaled(dec, 5);
        star.constellation = ConstellationOfJ2000(sky, star.ra, star.dec);
        objects.push_back(star);
    }
}

// A star listed twice, once with its HD number and once without (HD 0), within
// 20" and 0.3 mag: the copy without a number is dropped.
void DropUnnumberedTwins(std::vector<Object> &stars)
{
    std::vector<size_t> byDec(stars.size());
    for (size_t k = 0; k < stars.size(); ++k)
        byDec[k] = k;
    std::sort(byDec.begin(), byDec.end(), [&](size_t a, size_t b) { return stars[a].dec < stars[b].dec; });
    constexpr double limit = 20.0 / 3600.0;  // degrees
    auto twins = [&](const Object &a, const Object &b) {
        const double dRa = std::remainder(a.ra - b.ra, 24.0) * 15.0 * std::cos(a.dec * M_PI / 180);
        return b.number != 0 && std::hypot(dRa, a.dec - b.dec) <= limit
               && std::fabs(a.magnitude - b.magnitude) <= 0.3;
    };
    std::vector<bool> twin(stars.size());
    for (size_t n = 0; n < byDec.size(); ++n) {
        const Object &a = stars[byDec[n]];
        if (a.number != 0)
            continue;
        size_t first = n;
        while (first > 0 && a.dec - stars[byDec[first - 1]].dec <= limit)
            --first;
        for (size_t m = first; m < byDec.size() && stars[byDec[m]].dec - a.dec <= limit; ++m)
            if (twins(a, stars[byDec[m]]))
                twin[byDec[n]] = true;
    }
    size_t kept = 0, dropped = 0;
    for (size_t k = 0; k < stars.size(); ++k) {
        if (twin[k])
            ++dropped;
        else
            stars[kept++] = stars[k];
    }
    stars.resize(kept);
    std::printf("stars: %zu unnumbered twins dropped\n", dropped);
}

// OpenNGC objects brighter than V 10 or with a Messier name; stars and
// multiple stars are left to the star files.
void ReadDeepSky(const Sky &sky, const std::string &file, std::vector<Object> &objects)
{
    QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "OpenNGC");
    db.setDatabaseName(QString::fromStdString(file));
    db.setConnectOptions("QSQLITE_OPEN_READONLY");
    if (!QFile::exists(db.databaseName()) || !db.open())
        Fail("cannot open " + file + ": " + db.lastError().text().toStdString());
    QSqlQuery query(db);
    if (!query.exec("SELECT name, catalog_identifier, type, ra, dec, magnitude FROM cat "
                    "WHERE (magnitude <= 10.0 OR name LIKE 'M %') AND type NOT IN (0, 17, 255)"))
        Fail("cannot query " + file + ": " + query.lastError().text().toStdString());
    // KStars type -> our type and its fixed colour index.
    const std::map<int, std::pair<int, double>> types = {
        {3, {7, 0.2}},  {4, {9, 0.7}}, {5, {11, 0.0}}, {6, {10, 0.0}}, {7, {11, 0.0}},
        {8, {0, 0.9}},  {13, {5, 0.2}}, {14, {4, 0.9}}, {15, {6, 0.0}},
    };
    while (query.next()) {
        const QString name = query.value(0).toString();
        QString id = query.value(1).toString();
        if (name.startsWith("M "))
            id = id.startsWith("NGC") || id.startsWith("IC") ? id : name;
        else
            id = name;
        Object object;
        if (id.startsWith("NGC"))
            object.number = id.mid(3).trimmed().toInt();
        else if (id.startsWith("IC"))
            object.number = 10000 + id.mid(2).trimmed().toInt();
        else
            object.number = 20000 + id.mid(2).trimmed().toInt();
        const auto type = types.find(query.value(2).toInt());
        object.type = type == types.end() ? 12 : type->second.first;
        object.colourIndex = type == types.end() ? 0.0 : type->second.second;
        object.ra = query.value(3).toDouble() / 15.0;
        object.dec = query.value(4).toDouble();
        object.magnitude = query.value(5).isNull() ? 0.0 : query.value(5).toDouble();
        object.raText = Number(object.ra);
        object.decText = Number(object.dec);
        object.constellation = ConstellationOfJ2000(sky, object.ra, object.dec);
        objects.push_back(object);
    }
}

// --- output -------------------------------------------------------------------

void Write(const std::string &path, const std::string &text)
{
    std::ofstream out(path, std::ios::binary);
    if (!(out << text) || !out.flush())
        Fail("cannot write " + path);
}

std::string Header(const std::string &from, const std::string &what)
{
    return "// Generated by tools/make_sky_tables.cpp from " + from + "; do not edit.\n// " + what
           + "\n#include \"SkyTables.h\"\n\nnamespace lunaquill {\n";
}

std::string Quoted(const std::string &text) { return "\"" + text + "\""; }

std::string ConstellationTable(const Sky &sky, const std::string &from)
{
    const std::vector<Summary> summaries = Summaries(sky);
    std::string out = Header(from, "Label point: area-weighted mean B1875 position; areas in square degrees.")
                      + "\nconst ConstellationRow kConstellations[kConstellationCount] = {\n";
    for (int c = 0; c < 88; ++c) {
        const Summary &s = summaries[c];
        out += "    {" + Quoted(sky.constellations[c].abbreviation) + ", "
               + Quoted(sky.constellations[c].name) + ", " + Number(s.labelRa) + ", "
               + Number(s.labelDec) + ", " + Number(s.area) + ", " + std::to_string(s.rank) + "},\n";
    }
    return out + "};\n\n} // namespace lunaquill\n";
}

std::string OutlineTable(const Sky &sky, const std::string &from)
{
    std::string out = Header(from, "B1875 boundary vertices, clockwise, first vertex not repeated.")
                      + "\nnamespace {\n";
    std::string pointers;
    int total = 0;
    for (int c = 0; c < 88; ++c) {
        const std::string abbreviation = sky.constellations[c].abbreviation;
        std::vector<std::pair<int, int>> points;
        size_t secondPart = 0;
        for (const Loop &loop : Outline(sky, c)) {  // Serpens: Caput, then Cauda
            if (!points.empty())
                secondPart = points.size();
            points.insert(points.end(), loop.begin(), loop.end());
        }
        out += "\nconst OutlinePoint k" + abbreviation + "Points[] = {\n";
        for (size_t k = 0; k < points.size(); ++k) {
            out += (k % 3 == 0 ? "    " : " ") + std::string("{") + Number(points[k].first / 3600.0)
                   + ", " + Number(points[k].second / 60.0) + "},";
            if (k % 3 == 2 || k + 1 == points.size())
                out += "\n";
        }
        out += "};\nconst ConstellationOutline k" + abbreviation + " = {" + Quoted(abbreviation)
               + ", " + std::to_string(points.size()) + ", " + std::to_string(secondPart) + ", k"
               + abbreviation + "Points};\n";
        pointers += std::string(c % 8 == 0 ? "    " : " ") + "&k" + abbreviation + ","
                    + (c % 8 == 7 ? "\n" : "");
        total += int(points.size());
    }
    std::printf("outlines: %d points\n", total);
    return out + "\n} // namespace\n\nconst ConstellationOutline *const kConstellationOutlines"
                 "[kConstellationCount] = {\n"
           + pointers + "};\n\n} // namespace lunaquill\n";
}

std::string CatalogueTable(const Sky &sky, std::vector<Object> objects, const std::string &from)
{
    std::stable_sort(objects.begin(), objects.end(), [](const Object &a, const Object &b) {
        return std::tie(a.constellation, a.magnitude, a.number, a.ra, a.dec)
               < std::tie(b.constellation, b.magnitude, b.number, b.ra, b.dec);
    });
    std::string out = Header(from, "J2000 positions; constellation by the B1875 boundaries. "
                                   "{number, type, RA h, Dec deg, colour index, V}")
                      + "\nnamespace {\n";
    std::string pointers;
    std::map<int, int> byType;
    for (int c = 0; c < 88; ++c) {
        const std::string abbreviation = sky.constellations[c].abbreviation;
        int count = 0;
        out += "\nconst CatalogueObject k" + abbreviation + "Objects[] = {\n";
        for (const Object &o : objects) {
            if (o.constellation != c)
                continue;
            out += "    {" + std::to_string(o.number) + ", " + std::to_string(o.type) + ", "
                   + o.raText + ", " + o.decText + ", " + Number(o.colourIndex) + ", "
                   + Number(o.magnitude) + "},\n";
            ++count;
            ++byType[o.type];
        }
        out += "};\nconst ObjectList k" + abbreviation + " = {" + Quoted(abbreviation) + ", "
               + std::to_string(count) + ", k" + abbreviation + "Objects};\n";
        pointers += std::string(c % 8 == 0 ? "    " : " ") + "&k" + abbreviation + ","
                    + (c % 8 == 7 ? "\n" : "");
    }
    std::printf("objects: %zu;", objects.size());
    for (const auto &[type, count] : byType)
        std::printf(" type %d: %d", type, count);
    std::printf("\n");
    return out + "\n} // namespace\n\nconst ObjectList *const kCatalogue[kConstellationCount] = {\n"
           + pointers + "};\n\n} // namespace lunaquill\n";
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_sky_tables <downloads-folder> <output-folder>\n");
        return 2;
    }
    QCoreApplication app(argc, argv);  // plugin paths for the SQLite driver
    const std::string downloads = argv[1], output = argv[2];
    const std::string astropy = downloads + "/python3-astropy";
    const std::string kstars = downloads + "/kstars-data";
    const std::string astropyData = astropy + "/usr/lib/python3/dist-packages/astropy/coordinates/data";
    const std::string kstarsData = kstars + "/usr/share/kstars";
    const std::string stellarium = downloads + "/stellarium-data";
    const std::string stellariumStars = stellarium + "/usr/share/stellarium/stars/default";

    const Sky sky = ReadBoundaries(astropyData);
    const std::string boundaries = PackageVersion(astropy, "python3-astropy");
    Write(output + "/ConstellationTable.cpp",
          ConstellationTable(sky, boundaries + " (constellation_names.dat, "
                                               "constellation_data_roman87.dat)"));
    Write(output + "/ConstellationOutlines.cpp",
          OutlineTable(sky, boundaries + " (constellation_data_roman87.dat)"));

    std::vector<Object> objects;
    std::set<std::tuple<int32_t, int32_t, int16_t, int32_t>> seen;
    const auto secondColour = SecondColourIndices(stellariumStars);
    ReadStars(sky, kstarsData + "/namedstars.dat", secondColour, seen, objects);
    ReadStars(sky, kstarsData + "/unnamedstars.dat", secondColour, seen, objects);
    DropUnnumberedTwins(objects);
    int unknown = 0;
    for (const Object &star : objects)
        unknown += star.colourIndex == lunaquill::kUnknownColourIndex;
    std::printf("stars: %zu, %d without a colour index in either source\n", objects.size(), unknown);
    ReadDeepSky(sky, kstarsData + "/OpenNGC.kscat", objects);
    Write(output + "/StarCatalogue.cpp",
          CatalogueTable(sky, objects,
                         PackageVersion(kstars, "kstars-data")
                             + " (namedstars.dat, unnamedstars.dat, OpenNGC.kscat), "
                             + PackageVersion(stellarium, "stellarium-data")
                             + " (stars_0, stars_1, cross-id.dat: B-V where KStars has none) and "
                             + boundaries + " (constellation boundaries)"));
    return 0;
}
