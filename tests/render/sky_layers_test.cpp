// The sky tables against outside facts (IAU areas and boundaries, where known objects are
// listed); stars and outlines drawn at their sub-points: which objects, colour and size, the
// outline's date-line split and missing closing edge, the fast stars against Qt's ellipses.
#include "render/Projection.h"
#include "render/SkyLayers.h"
#include "render/SkyTables.h"
#include "tracking/EmeFigures.h"
#include "tests/unit/UtcTime.h"

#include <QImage>
#include <QPainter>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

using namespace lunaquill;

namespace {

const struct tm kEquinox = Utc(1710936000); // 2024-03-20 12:00 UTC

// The right ascension (hours) whose sub-point lies at this longitude.
double RaAt(double longitude)
{
    double latitude, atZero;
    SubSourcePoint(kEquinox, 0.0, 0.0, latitude, atZero);
    return std::fmod((longitude - atZero) / 15.0 + 48.0, 24.0);
}

int Index(const char *abbreviation)
{
    for (int c = 0; c < kConstellationCount; ++c)
        if (strcmp(kConstellations[c].abbreviation, abbreviation) == 0)
            return c;
    return -1;
}

TEST(SkyTables, ConstellationsCoverTheSkyInAlphabeticalOrder)
{
    // The areas cover the sphere: 4 pi sr = 129600 / pi square degrees. "Antila" is the
    // table's own spelling, kept.
    double sum = 0;
    for (int c = 0; c < kConstellationCount; ++c) {
        const char *abbreviation = kConstellations[c].abbreviation;
        sum += kConstellations[c].area;
        EXPECT_TRUE(c == 0 || strcmp(kConstellations[c - 1].abbreviation, abbreviation) < 0);
        EXPECT_STREQ(kConstellationOutlines[c]->abbreviation, abbreviation);
        EXPECT_STREQ(kCatalogue[c]->abbreviation, abbreviation);
    }
    EXPECT_NEAR(sum, 41252.96, 0.01);
    EXPECT_STREQ(kConstellations[Index("ANT")].name, "Antila");
}

TEST(SkyTables, OutlinesAreTheIauBoundaries)
{
    // The 1930 boundaries run along B1875 hour circles and parallels, at whole seconds of
    // time and whole arcminutes. Serpens is two loops, Caput (14 vertices) then Cauda.
    int total = 0;
    for (int c = 0; c < kConstellationCount; ++c) {
        const ConstellationOutline &outline = *kConstellationOutlines[c];
        const int split = strcmp(outline.abbreviation, "SER") == 0 ? 14 : outline.count;
        total += outline.count;
        for (int i = 0; i < outline.count; ++i) {
            const int first = i < split ? 0 : split, end = i < split ? split : outline.count;
            const OutlinePoint &p = outline.points[i];
            const OutlinePoint &q = outline.points[i + 1 < end ? i + 1 : first];
            EXPECT_TRUE(p.rightAscension == q.rightAscension || p.declination == q.declination)
                << outline.abbreviation << " vertex " << i;
            EXPECT_NEAR(p.rightAscension * 3600, std::round(p.rightAscension * 3600), 1e-6);
            EXPECT_NEAR(p.declination * 60, std::round(p.declination * 60), 1e-9);
        }
    }
    EXPECT_EQ(total, 1542);
}

TEST(SkyTables, KnownObjectsInTheirConstellations)
{
    int total = 0;
    for (const ObjectList *list : kCatalogue)
        total += list->count;
    EXPECT_EQ(total, 11422);

    // HD numbers for stars, NGC n, IC as 10000 + n, Messier-only as 20000 + m.
    const struct { const char *constellation; int32_t number, type; double magnitude; } known[] = {
        {"AND", 358, 3, 2.06},     // Alpheratz, a variable
        {"UMI", 8890, 3, 2.0},     // Polaris
        {"CMA", 48915, 1, -1.44},  // Sirius
        {"AND", 224, 0, 4.36},     // M31, a galaxy
        {"HER", 6205, 9, 5.8},     // M13, a globular cluster
        {"TAU", 1952, 11, 8.4},    // M1, the Crab Nebula
        {"TAU", 20045, 7, 1.6},    // M45, the Pleiades
    };
    for (const auto &k : known) {
        const ObjectList &list = *kCatalogue[Index(k.constellation)];
        auto same = [&](const CatalogueObject &o) {
            return o.number == k.number && o.type == k.type
                   && std::fabs(o.magnitude - k.magnitude) < 0.005;
        };
        EXPECT_EQ(std::count_if(list.objects, list.objects + list.count, same), 1)
            << k.constellation << " " << k.number;
    }
}

// What `draw` paints with a white pen on a black map, and the painted pixels.
template <typename Draw>
std::set<std::pair<int, int>> Painted(QImage &map, Draw draw)
{
    map.fill(Qt::black);
    QPainter painter(&map);
    painter.setPen(Qt::white);
    draw(painter);
    painter.end();
    std::set<std::pair<int, int>> painted;
    for (int y = 0; y < map.height(); ++y)
        for (int x = 0; x < map.width(); ++x)
            if (map.pixel(x, y) != qRgb(0, 0, 0))
                painted.insert({x, y});
    return painted;
}

TEST(SkyLayers, ColourByIndexSizeByMagnitudeWithinTheLimitAndSirius)
{
    // Stars (1), multiple (2) and variable stars (3), open (7) and globular clusters (9),
    // planetary (10) and bright nebulae (11) are drawn: types -1..13 in turn.
    const char drawn[] = "0" "0111000101110" "0";
    for (int type = -1; type <= 13; ++type) {
        const CatalogueObject object{1, type, 0.0, 0.0, 0.5, 5.0};
        EXPECT_EQ(IsDrawnObject(object, 20), drawn[type + 1] == '1') << type;
    }
    // One star at longitude 0.25 of a 720 x 360 map, drawn when the limit is at least its
    // magnitude: a 5 x 5 disc without corners (21 pixels) below magnitude 0, else a plus (5),
    // in the colour of the first step whose bound lies above its B-V.
    const struct { double magnitude, colourIndex; int limit; QRgb colour; size_t pixels; }
        rows[] = {
            {-0.01, -0.17, 0, 0xa09eff, 21}, {0.0, -0.16, 0, 0xa0d7ff, 5},
            {1.0, 0.15, 1, 0xd7e8ff, 5},     {2.0, 0.45, 6, 0xffffff, 5},
            {3.0, 0.68, 3, 0xffffdc, 5},     {4.0, 1.15, 4, 0xffe6aa, 5},
            {6.0, 1.6, 6, 0xffd7b1, 5},      {0.01, 0.5, 0, 0xffffff, 0},
        };
    QImage map(720, 360, QImage::Format_RGB32);
    for (const auto &row : rows) {
        const CatalogueObject object{1, 1, RaAt(0.25), 0.0, row.colourIndex, row.magnitude};
        const ObjectList list{"TST", 1, &object};
        EXPECT_EQ(Painted(map, [&](QPainter &painter) {
            DrawObjects(painter, {720, 360, 0, kEquinox}, &list, row.limit);
        }).size(), row.pixels) << row.magnitude;
        EXPECT_EQ(map.pixel(360, 180), qRgb(0, 0, 0) | (row.pixels ? row.colour : 0));
        QColor colour; // the program's own slot, by the same rules
        int size = 0;
        StarStyle(row.magnitude, row.colourIndex, colour, size);
        EXPECT_TRUE(colour == QColor(QRgb(row.colour)) && size == (row.pixels == 21 ? 2 : 1));
    }
    // Sirius, J2000: 6h 45m 08.9s, -16 42' 58"; B-V 0.00, V -1.44: pale blue, size 2.
    double latitude, longitude;
    SubSourcePoint(kEquinox, 6.0 + 45 / 60.0 + 8.9 / 3600, -(16 + 42 / 60.0 + 58 / 3600.0),
                   latitude, longitude);
    const QPoint sirius = LatLongToPoint(720, 360, 3, latitude, longitude);
    Painted(map, [&](QPainter &painter) {
        DrawConstellationObjects(painter, {720, 360, 3, kEquinox}, Index("CMA"), 6);
    });
    EXPECT_EQ(map.pixel(sirius), qRgb(0xa0, 0xd7, 0xff));
}

TEST(SkyLayers, OutlinesSplitAtTheDateLineAndStayOpen)
{
    // A 720 x 360 map: two pixels a degree, longitude 0.25 lands mid-pixel.
    const struct {
        std::vector<std::pair<double, double>> vertices; // longitude, declination
        std::vector<QRect> lines;                         // what is painted
    } rows[] = {
        // -178.75 to +178.75: level stubs to x = 1 and x = 719, at each end's own height.
        {{{-178.75, 10}, {178.75, 20}}, {{1, 160, 2, 1}, {717, 140, 3, 1}}},
        {{{178.75, 20}, {-178.75, 10}}, {{1, 160, 2, 1}, {717, 140, 3, 1}}},
        // Across 0 within 90 degrees one line; the closing edge back to the first is absent.
        {{{-9.75, 10}, {10.25, 10}, {10.25, -10}}, {{340, 160, 41, 1}, {380, 160, 1, 41}}},
    };
    QImage map(720, 360, QImage::Format_RGB32);
    for (const auto &row : rows) {
        std::vector<OutlinePoint> points;
        for (const auto &[longitude, declination] : row.vertices)
            points.push_back({RaAt(longitude), declination});
        const ConstellationOutline outline{"TST", int32_t(points.size()), points.data()};
        std::set<std::pair<int, int>> expected;
        for (const QRect &line : row.lines)
            for (int y = line.top(); y <= line.bottom(); ++y)
                for (int x = line.left(); x <= line.right(); ++x)
                    expected.insert({x, y});
        const SkyView view{720, 360, 0, kEquinox};
        EXPECT_EQ(Painted(map, [&](QPainter &painter) {
            DrawOutline(painter, view, &outline);
            DrawOutline(painter, view, nullptr);
            DrawObjects(painter, view, nullptr, 20);
            for (int c : {-1, 88, 1000}) { // numbers outside the tables draw nothing
                DrawConstellationObjects(painter, view, c, 20);
                DrawConstellationOutline(painter, view, c);
                DrawConstellationLabel(painter, view, c);
            }
        }), expected) << row.vertices.size() << " vertices";
    }
}

// The fast star drawing against one drawEllipse per star: every catalogue
// object over a textured image, dense maps where discs overlap, the map
// edges, other opacities and formats; the painter's pen left the same.
TEST(SkyLayers, FastStarsMatchQtEllipsesPixelForPixel)
{
    const struct { int width, height, offset; time_t utc; double opacity; QImage::Format format; }
        rows[] = {
            {1600, 800, 0, 1710936000, 0.5, QImage::Format_RGB32},
            {360, 180, 5, 1751598000, 0.5, QImage::Format_RGB32},  // dense: discs overlap
            {1000, 500, 13, 1924988400, 0.3, QImage::Format_ARGB32_Premultiplied},
            {200, 100, 23, 1704067200, 1.0, QImage::Format_RGB32},
        };
    for (const auto &row : rows) {
        QImage images[2] = {QImage(row.width, row.height, row.format)};
        for (int y = 0; y < row.height; ++y)
            for (int x = 0; x < row.width; ++x)
                images[0].setPixel(x, y, qRgb(x % 256, y % 256, (x * y) % 256));
        images[1] = images[0].copy();
        QColor pens[2];
        for (int i = 0; i < 2; ++i) {
            QPainter painter(&images[i]);
            painter.setOpacity(row.opacity);
            for (int c = 0; c < kConstellationCount; ++c)
                (i ? DrawObjectsOneByOne : DrawObjects)(
                    painter, {row.width, row.height, row.offset, Utc(row.utc)}, kCatalogue[c], 20);
            pens[i] = painter.pen().color();
        }
        EXPECT_TRUE(images[0] == images[1] && pens[0] == pens[1]) << row.width;
    }
}

} // namespace
