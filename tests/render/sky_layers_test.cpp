// The sky tables against outside facts (IAU areas and boundaries, known objects, Yale B-V);
// stars and outlines drawn at their sub-points; the fast paths (stars, lines, the projection
// worked out once per view, outlines precessed once) against the old ways, bit for bit.
#include "render/Projection.h"
#include "render/SkyLayers.h"
#include "render/SkyTables.h"
#include "tracking/EmeFigures.h"
#include "tests/unit/UtcTime.h"

#include <QImage>
#include <QLine>
#include <QPainter>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <future>
#include <random>
#include <set>
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

TEST(SkyTables, AlphabeticalAreasCoverTheSkyOutlinesAreTheIauBoundaries)
{
    // The areas cover the sphere: 4 pi sr = 129600 / pi square degrees. "Antila" is the
    // table's own spelling, kept. The 1930 boundaries run along B1875 hour circles and
    // parallels, at whole seconds of time and whole arcminutes. Serpens is two loops, Caput
    // (14 vertices) then Cauda.
    double sum = 0;
    int total = 0;
    for (int c = 0; c < kConstellationCount; ++c) {
        const char *abbreviation = kConstellations[c].abbreviation;
        sum += kConstellations[c].area;
        EXPECT_TRUE(c == 0 || strcmp(kConstellations[c - 1].abbreviation, abbreviation) < 0);
        EXPECT_TRUE(strcmp(kConstellationOutlines[c]->abbreviation, abbreviation) == 0
                    && strcmp(kCatalogue[c]->abbreviation, abbreviation) == 0) << abbreviation;
        const ConstellationOutline &outline = *kConstellationOutlines[c];
        const int split = strcmp(outline.abbreviation, "SER") == 0 ? 14 : outline.count;
        total += outline.count;
        for (int i = 0; i < outline.count; ++i) {
            const int first = i < split ? 0 : split, end = i < split ? split : outline.count;
            const OutlinePoint &p = outline.points[i];
            const OutlinePoint &q = outline.points[i + 1 < end ? i + 1 : first];
            EXPECT_TRUE(p.rightAscension == q.rightAscension || p.declination == q.declination)
                << outline.abbreviation << " vertex " << i;
            EXPECT_TRUE(std::fabs(p.rightAscension * 3600 - std::round(p.rightAscension * 3600)) < 1e-6
                        && std::fabs(p.declination * 60 - std::round(p.declination * 60)) < 1e-9);
        }
    }
    EXPECT_TRUE(total == 1542 && std::fabs(sum - 41252.96) < 0.01) << total << " " << sum;
    EXPECT_STREQ(kConstellations[Index("ANT")].name, "Antila");
}

const CatalogueObject *Find(const char *constellation, int32_t number)
{
    const ObjectList &list = *kCatalogue[Index(constellation)];
    const CatalogueObject *end = list.objects + list.count;
    const CatalogueObject *o = std::find_if(list.objects, end, [&](auto &o) { return o.number == number; });
    return o == end ? nullptr : o;
}

TEST(SkyTables, KnownObjectsOnceInTheirConstellationsWithTheirColourIndex)
{
    // HD numbers for stars, NGC n, IC as 10000 + n, Messier-only as 20000 + m: Alpheratz (a
    // variable), Polaris, Sirius; M31 (galaxy), M13 (globular cluster), M1 (Crab), M45 (Pleiades).
    const struct { const char *constellation; int32_t number, type; double magnitude; } known[] = {
        {"AND", 358, 3, 2.06}, {"UMI", 8890, 3, 2.0}, {"CMA", 48915, 1, -1.44}, {"AND", 224, 0, 4.36},
        {"HER", 6205, 9, 5.8}, {"TAU", 1952, 11, 8.4}, {"TAU", 20045, 7, 1.6}};
    for (const auto &k : known) {
        const ObjectList &list = *kCatalogue[Index(k.constellation)];
        EXPECT_EQ(std::count_if(list.objects, list.objects + list.count, [&](const CatalogueObject &o) {
            return o.number == k.number && o.type == k.type && std::fabs(o.magnitude - k.magnitude) < 0.005;
        }), 1) << k.constellation << " " << k.number;
    }
    // B-V from the Yale Bright Star Catalogue (5th ed.): Capella 0.80 and Procyon 0.42
    // (KStars has none, the second source 0.79 and 0.44 on its 4/127 steps), Vega and Sirius
    // 0.00 (measured, KStars' own).
    const struct { const char *constellation; int32_t number; double colourIndex, tolerance; }
        stars[] = {{"AUR", 34029, 0.80, 0.02}, {"CMI", 61421, 0.42, 0.03},
                   {"LYR", 172167, 0.00, 0.01}, {"CMA", 48915, 0.00, 0.01}};
    for (const auto &k : stars)
        EXPECT_NEAR(Find(k.constellation, k.number)->colourIndex, k.colourIndex, k.tolerance) << k.number;

    // No star is listed twice: none without an HD number lies within 20" and 0.3 mag of
    // one with a number (theta Centauri, HD 123139, and epsilon Scorpii, HD 151680, were).
    std::vector<const CatalogueObject *> numbered, unnumbered;
    int total = 0, unknown = 0;
    for (const ObjectList *list : kCatalogue)
        for (const CatalogueObject *o = list->objects; o < list->objects + list->count; ++o, ++total) {
            if (o->type >= 1 && o->type <= 3)
                (o->number ? numbered : unnumbered).push_back(o);
            unknown += o->colourIndex == kUnknownColourIndex;
        }
    EXPECT_TRUE(total == 11330 && unknown == 29) << total << " " << unknown;
    for (const CatalogueObject *a : unnumbered)
        for (const CatalogueObject *b : numbered) {
            const double dRa = std::remainder(a->rightAscension - b->rightAscension, 24) * 15
                               * std::cos(a->declination * M_PI / 180);
            EXPECT_FALSE(std::hypot(dRa, a->declination - b->declination) <= 20 / 3600.0
                         && std::fabs(a->magnitude - b->magnitude) <= 0.3)
                << b->number;
        }
    EXPECT_TRUE(Find("CEN", 123139) && Find("SCO", 151680));
}

// What `draw` paints with a white pen on a black map, and the painted pixels.
template <typename Draw>
std::set<std::pair<int, int>> Painted(QImage &map, Draw draw)
{
    map.fill(Qt::black);
    {
        QPainter painter(&map);
        painter.setPen(Qt::white);
        draw(painter);
    }
    std::set<std::pair<int, int>> painted;
    for (int i = 0; i < map.width() * map.height(); ++i)
        if (map.pixel(i % map.width(), i / map.width()) != qRgb(0, 0, 0))
            painted.insert({i % map.width(), i / map.width()});
    return painted;
}

TEST(SkyLayers, ColourByIndexSizeByMagnitudeWithinTheLimitAndSirius)
{
    // Stars (1), multiple (2) and variable stars (3), open (7) and globular clusters (9),
    // planetary (10) and bright nebulae (11) are drawn: types -1..13 in turn.
    for (int type = -1; type <= 13; ++type)
        EXPECT_EQ(IsDrawnObject({1, type, 0.0, 0.0, 0.5, 5.0}, 20), "001110001011100"[type + 1] == '1') << type;
    // One star at longitude 0.25 of a 720 x 360 map, drawn when the limit is at least its
    // magnitude: a 5 x 5 disc without corners (21 pixels) below magnitude 0, else a plus (5),
    // in the colour of the first step whose bound lies above its B-V; white if it has none.
    const struct { double magnitude, colourIndex; int limit; QRgb colour; size_t pixels; }
        rows[] = {
            {-0.01, -0.17, 0, 0xa09eff, 21}, {0.0, -0.16, 0, 0xa0d7ff, 5}, {1.0, 0.15, 1, 0xd7e8ff, 5},
            {2.0, 0.45, 6, 0xffffff, 5},     {3.0, 0.68, 3, 0xffffdc, 5},  {4.0, 1.15, 4, 0xffe6aa, 5},
            {6.0, 1.6, 6, 0xffd7b1, 5},      {0.01, 0.5, 0, 0xffffff, 0},
            {5.0, kUnknownColourIndex, 6, 0xffffff, 5}};
    QImage map(720, 360, QImage::Format_RGB32);
    QColor colour; // and the window's own slot for a star, by the same rules
    int size = 0;
    for (const auto &row : rows) {
        StarStyle(row.magnitude, row.colourIndex, colour, size);
        EXPECT_TRUE(colour == QColor(QRgb(row.colour)) && size == (row.pixels == 21 ? 2 : 1)) << row.magnitude;
        const CatalogueObject object{1, 1, RaAt(0.25), 0.0, row.colourIndex, row.magnitude};
        const ObjectList list{"TST", 1, &object};
        EXPECT_EQ(Painted(map, [&](QPainter &p) { DrawObjects(p, {720, 360, 0, kEquinox}, &list, row.limit); })
                      .size(), row.pixels) << row.magnitude;
        EXPECT_EQ(map.pixel(360, 180), qRgb(0, 0, 0) | (row.pixels ? row.colour : 0));
    }
    // Sirius, J2000: 6h 45m 08.9s, -16 42' 58"; B-V 0.00, V -1.44: pale blue, size 2.
    double latitude, longitude;
    SubSourcePoint(kEquinox, 6.0 + 45 / 60.0 + 8.9 / 3600, -(16 + 42 / 60.0 + 58 / 3600.0), latitude, longitude);
    Painted(map, [](QPainter &p) { DrawConstellationObjects(p, {720, 360, 3, kEquinox}, Index("CMA"), 6); });
    EXPECT_EQ(map.pixel(LatLongToPoint(720, 360, 3, latitude, longitude)), qRgb(0xa0, 0xd7, 0xff));
}

TEST(SkyLayers, OutlinesSplitAtTheRolledMapsEdgeAndStayOpen)
{
    // A 720 x 360 map: two pixels a degree, longitude and declination 0.25 land mid-pixel.
    // J2000 longitude, declination of each vertex; the lines drawn.
    const struct { int offset; std::vector<std::pair<double, double>> vertices; std::vector<QLine> lines; } rows[] = {
        // Across the date line: out to x = 0 and in from x = 719 at the height where the
        // line from (2, 159) to (717 - 720, 139) meets x = 0: 159 - 20 * 2 / 5 = 151.
        {0, {{-178.75, 10.25}, {178.75, 20.25}}, {{{2, 159}, {0, 151}}, {{719, 151}, {717, 139}}}},
        {0, {{178.75, 20.25}, {-178.75, 10.25}}, {{{717, 139}, {719, 151}}, {{0, 151}, {2, 159}}}},
        // Within the map one line each; the closing edge back to the first is absent.
        {0, {{-9.75, 10.25}, {10.25, 10.25}, {10.25, -19.75}},
         {{{340, 159}, {380, 159}}, {{380, 159}, {380, 219}}}},
        // Offset 6 rolls everything 180 pixels east: -89.75 lands at x = 180 + 180 = 360,
        // and a step across the rolled edge (longitude 90) splits there.
        {6, {{-89.75, 10.25}, {-80.25, 10.25}}, {{{360, 159}, {379, 159}}}},
        {6, {{88.75, 0.25}, {91.25, 0.25}}, {{{717, 179}, {719, 179}}, {{0, 179}, {2, 179}}}},
    };
    for (const auto &row : rows) {
        std::vector<OutlinePoint> points;
        for (const auto &[longitude, declination] : row.vertices)
            points.push_back({RaAt(longitude), declination});
        EXPECT_EQ(MapLines({720, 360, row.offset, kEquinox}, {points}), row.lines) << row.vertices[0].first;
    }
    // A table outline paints its lines and nothing else; numbers outside the tables nothing.
    QImage map(720, 360, QImage::Format_RGB32);
    const SkyView view{720, 360, 3, kEquinox};
    const auto painted = Painted(map, [&](QPainter &painter) {
        DrawConstellationOutline(painter, view, Index("ORI"));
        DrawOutline(painter, view, nullptr);
        DrawObjects(painter, view, nullptr, 20);
        for (int c : {-1, 88, 1000}) {
            DrawConstellationObjects(painter, view, c, 20);
            DrawConstellationOutline(painter, view, c);
            DrawConstellationLabel(painter, view, c);
        }
    });
    const std::vector<QLine> orion = OutlineSegments(view, kConstellationOutlines[Index("ORI")]);
    EXPECT_EQ(painted, Painted(map, [&](QPainter &p) { p.drawLines(orion.data(), int(orion.size())); }));
    EXPECT_GT(painted.size(), 100u);

    // No line runs across the map: every outline at 24 instants through a day (Ursa Minor's
    // long step along +88 went the wrong way round at some of them), at offsets 0, 6 and -11.
    for (int offset : {0, 6, -11})
        for (int hour = 0; hour < 24; ++hour)
            for (int c = 0; c < kConstellationCount; ++c)
                for (const QLine &line : OutlineSegments({1600, 800, offset, Utc(1710936000 + hour * 3600 + 1200)},
                                                         kConstellationOutlines[c]))
                    ASSERT_TRUE(2 * std::abs(line.dx()) <= 1600 && std::min(line.x1(), line.x2()) >= 0
                                && std::max(line.x1(), line.x2()) < 1600)
                        << kConstellations[c].abbreviation << " offset " << offset << " hour " << hour;
}

// Inside any part, each a closed polygon of (RA h, Dec) points drawn as straight map lines: a
// ray north from the point, crossings counted the short way round; a loop that winds round
// the north pole holds the points it does not cross.
bool Inside(const std::vector<std::vector<OutlinePoint>> &parts, double ra, double dec)
{
    return std::any_of(parts.begin(), parts.end(), [&](const std::vector<OutlinePoint> &loop) {
        int crossings = 0;
        double winding = 0, decSum = 0;
        for (size_t i = 0; i < loop.size(); ++i) {
            const OutlinePoint &p = loop[i], &q = loop[(i + 1) % loop.size()];
            const double step = std::remainder(q.rightAscension - p.rightAscension, 24);
            const double a = std::remainder(p.rightAscension - ra, 24), b = a + step;
            winding += step;
            decSum += p.declination;
            crossings += (a < 0) != (b < 0) && std::fabs(a) < 6 && std::fabs(b) < 6
                         && p.declination + (q.declination - p.declination) * (-a / step) > dec;
        }
        return (crossings % 2 == 1) != (std::fabs(winding) > 12 && decSum > 0);
    });
}

TEST(SkyLayers, BoundariesPrecessedToTheCataloguesEpoch)
{
    // Hand calculation, IAU 1976 (Lieske 1977): B1875.0 = JD 2405889.25855 to J2000.0 is
    // T = -1.2499861, t = +1.2499861 Julian centuries; zeta = 2306.2181 t(1 - ...)
    // = 2881.0657", z = 2882.3040", theta = 2505.9456". AND's first vertex 22h 52m, +34.5:
    // A = cos d sin(a + zeta) = -0.2299198, B = cos theta cos d cos(a + zeta) - sin theta
    // sin d = 0.7844648, C = sin theta cos d cos(a + zeta) + cos theta sin d = 0.5759791;
    // a' = atan2(A, B) + z = 22.9643492 h, d' = asin C = +35.168228.
    const OutlinePoint j2000 = PrecessB1875ToJ2000({22.8666666666667, 34.5});
    EXPECT_NEAR(j2000.rightAscension, 22.9643492, 2e-7);
    EXPECT_NEAR(j2000.declination, 35.168228, 2e-6);

    // Ursa Minor's 9-hour step along +88 (8 h back through 0 h to 23 h) passes through
    // 35 intermediate points a quarter hour apart; Serpens is drawn as Caput and Cauda.
    const auto umi = OutlineParts(*kConstellationOutlines[Index("UMI")]);
    ASSERT_EQ(umi.size(), 1u);
    for (int k = 0; k <= 36; ++k) { // 8 h, 7.75 h, ... 0 h, ... 23 h
        const OutlinePoint want = PrecessB1875ToJ2000({std::fmod(32.0 - k / 4.0, 24.0), 88.0});
        EXPECT_TRUE(std::fabs(umi[0][1 + k].rightAscension - want.rightAscension) < 1e-9
                    && std::fabs(umi[0][1 + k].declination - want.declination) < 1e-9) << k;
    }
    EXPECT_EQ(OutlineParts(*kConstellationOutlines[Index("SER")]).size(), 2u);

    // The objects drawn at the default limit (6) inside their own outline as drawn: the
    // B1875 vertices unprecessed (as once drawn) leave hundreds outside, the precessed
    // outline none. Each label point lies inside its own constellation.
    int outsideBefore = 0, outsideAfter = 0;
    for (int c = 0; c < kConstellationCount; ++c) {
        const ConstellationOutline &outline = *kConstellationOutlines[c];
        const auto after = OutlineParts(outline);
        const std::vector<std::vector<OutlinePoint>> before = {{outline.points, outline.points + outline.count}};
        const ObjectList &list = *kCatalogue[c];
        for (const CatalogueObject *o = list.objects; o < list.objects + list.count; ++o)
            if (IsDrawnObject(*o, 6)) {
                outsideBefore += !Inside(before, o->rightAscension, o->declination);
                outsideAfter += !Inside(after, o->rightAscension, o->declination);
            }
        const OutlinePoint label = PrecessB1875ToJ2000({kConstellations[c].rightAscension, kConstellations[c].declination});
        EXPECT_TRUE(Inside(after, label.rightAscension, label.declination)) << outline.abbreviation;
    }
    EXPECT_TRUE(outsideBefore > 300 && outsideAfter == 0) << outsideBefore << " " << outsideAfter;
}

// The fast star drawing against one drawEllipse per star: every catalogue object over a textured
// image, dense maps where discs overlap, the map edges, other opacities and formats; the pen kept.
TEST(SkyLayers, FastStarsMatchQtEllipsesPixelForPixel)
{
    const struct { int width, height, offset; time_t utc; double opacity; QImage::Format format; } rows[] = {
        {1600, 800, 0, 1710936000, 0.5, QImage::Format_RGB32},
        {360, 180, 5, 1751598000, 0.5, QImage::Format_RGB32}, // dense: discs overlap
        {1000, 500, 13, 1924988400, 0.3, QImage::Format_ARGB32_Premultiplied},
        {200, 100, 23, 1704067200, 1.0, QImage::Format_RGB32}};
    for (const auto &row : rows) {
        QImage images[2];
        QColor pens[2];
        for (int i = 0; i < 2; ++i) {
            images[i] = QImage(row.width, row.height, row.format);
            for (int y = 0; y < row.height; ++y)
                for (int x = 0; x < row.width; ++x)
                    images[i].setPixel(x, y, qRgb(x % 256, y % 256, (x * y) % 256));
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


// The map point as the drawing once worked it out for each point: sub-point by the library's
// fmod, then the projection's own arithmetic, every term afresh.
QPoint OldMapPoint(const SkyView &view, double raHours, double decDegrees)
{
    const struct tm &utc = view.utc;
    const double ut = utc.tm_hour + utc.tm_min / 60.0 + utc.tm_sec / 3600.0;
    const double d = DayNumber(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, ut);
    const double siderealRadians = 4.894961213 + 6.300388099 * d;
    double longitude = std::fmod(raHours * 15.0 - siderealRadians * 57.29577951307855, 360.0);
    if (longitude < 180.0)
        longitude += 180.0;
    const double dx = 360.0 / view.mapWidth, dy = 180.0 / view.mapHeight;
    const int64_t shift = int64_t(view.mapWidth / 24) * view.mapOffset;
    return QPoint(int((int64_t(int((longitude + 180.0) / dx)) + shift) % view.mapWidth),
                  int((90.0 - decDegrees) / dy));
}

// Views from 1950 to 2100 on maps of several sizes and rolls.
const SkyView kViews[] = {{1600, 800, 0, Utc(1710936000)},   {720, 360, 5, Utc(1751598000)},
                          {1000, 500, 13, Utc(1924988400)},  {3200, 1600, -11, Utc(-631152000 + 7777)},
                          {1366, 683, 23, Utc(4102444799)},  {200, 100, 7, Utc(1704067200)}};

TEST(SkyLayers, ProjectionWorkedOutOncePerViewIsTheOldPointForPoint)
{
    for (const SkyView &view : kViews) {
        const SkyMapper mapPoint(view);
        auto check = [&](double ra, double dec) {
            const QPoint old = OldMapPoint(view, ra, dec);
            ASSERT_TRUE(mapPoint(ra, dec) == old && SkyPoint(view, ra, dec) == old)
                << view.mapWidth << " " << ra << " " << dec;
        };
        for (const ObjectList *list : kCatalogue)
            for (int i = 0; i < list->count; ++i)
                check(list->objects[i].rightAscension, list->objects[i].declination);
        for (const ConstellationOutline *outline : kConstellationOutlines)
            for (const auto &part : OutlineParts(*outline))
                for (const OutlinePoint &p : part)
                    check(p.rightAscension, p.declination);
    }
}

// The window's sky layers (stars at opacity 0.5, then black outlines and labels) drawn the
// old way (Qt's ellipses, lines and texts, everything precessed at every drawing) or as drawn
// now constellation by constellation; on a moved painter (a transform) the new way must fall
// back to Qt's throughout.
QImage SkyImage(const SkyView &view, QImage::Format format, int magnitudeLimit, bool moved, bool old)
{
    QImage image(view.mapWidth, view.mapHeight, format);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x % 256, y % 256, (x * y) % 256));
    QPainter painter(&image);
    if (moved)
        painter.translate(0.5, -0.25);
    painter.setOpacity(0.5);
    for (int c = 0; c < kConstellationCount; ++c)
        old ? DrawObjectsOneByOne(painter, view, kCatalogue[c], magnitudeLimit)
            : DrawConstellationObjects(painter, view, c, magnitudeLimit);
    painter.setOpacity(1.0);
    painter.setPen(Qt::black);
    for (int c = 0; c < kConstellationCount; ++c) {
        if (old) {
            DrawOutline(painter, view, kConstellationOutlines[c]);
            DrawConstellationLabel(painter, view, kConstellations[c]);
        } else {
            DrawConstellationOutline(painter, view, c);
            DrawConstellationLabel(painter, view, c);
        }
    }
    return image;
}

// The window paints these layers on a worker thread: drawn now on a second thread while this
// one draws the old way (both precess the outlines on first use), and on this thread; run
// under ThreadSanitizer too.
TEST(SkyLayers, SkyDrawnNowIsTheOldDrawingBitForBit)
{
    const struct { int limit; bool moved; } rows[] = {{20, false}, {6, false}, {-1, false},
                                                      {20, true},  {3, false}, {20, false}};
    for (size_t i = 0; i < std::size(kViews); ++i) {
        const SkyView &view = kViews[i];
        const QImage::Format format = i % 2 ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
        const auto &row = rows[i];
        std::future<QImage> elsewhere =
            std::async(std::launch::async, SkyImage, view, format, row.limit, row.moved, false);
        const QImage old = SkyImage(view, format, row.limit, row.moved, true);
        EXPECT_TRUE(SkyImage(view, format, row.limit, row.moved, false) == old
                    && elsewhere.get() == old)
            << view.mapWidth;
    }
}

// Random lines, ends up to a pixel beyond the image, through DrawLines and through Qt: the
// pens it sets straight (black, colours, width 0 and 1, square and round caps) and those it
// leaves to Qt (flat caps, wider, translucent, faded, antialiased, transformed).
TEST(SkyLayers, LinesSetStraightAreQtsLinesPixelForPixel)
{
    struct Pen { QPen pen; double opacity; bool antialiased, scaled; };
    const Pen pens[] = {
        {QPen(Qt::black), 1, false, false},
        {QPen(QColor(0x12, 0x34, 0x56), 0, Qt::SolidLine, Qt::RoundCap), 1, false, false},
        {QPen(Qt::yellow, 1, Qt::SolidLine, Qt::SquareCap), 1, false, false},
        {QPen(Qt::white, 1, Qt::SolidLine, Qt::FlatCap), 1, false, false},
        {QPen(Qt::cyan, 2), 1, false, false},
        {QPen(QColor(255, 0, 0, 128)), 1, false, false},
        {QPen(Qt::green), 0.5, false, false},
        {QPen(Qt::black), 1, true, false},
        {QPen(Qt::black), 1, false, true}};
    std::mt19937 random(21);
    for (const int span : {4, 40, 400, 1601}) {
        const int width = std::min(span, 1600), height = std::min(span, 800);
        std::uniform_int_distribution<int> x(-1, width + 1), y(-1, height + 1);
        std::vector<QLine> lines;
        for (int i = 0; i < 2000; ++i)
            lines.emplace_back(x(random), y(random), x(random), y(random));
        for (const QImage::Format format : {QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied})
            for (const Pen &pen : pens) {
                QImage images[2];
                for (int i = 0; i < 2; ++i) {
                    images[i] = QImage(width, height, format);
                    images[i].fill(QColor(40, 80, 120));
                    QPainter painter(&images[i]);
                    painter.setPen(pen.pen);
                    painter.setOpacity(pen.opacity);
                    painter.setRenderHint(QPainter::Antialiasing, pen.antialiased);
                    if (pen.scaled)
                        painter.scale(1.0, 1.0 + 1e-9);
                    i ? painter.drawLines(lines.data(), int(lines.size())) : DrawLines(painter, lines);
                }
                EXPECT_TRUE(images[0] == images[1]) << span << " " << pen.pen.color().name().toStdString();
            }
    }
}

} // namespace
