#include "SkyLayers.h"

#include "MapLayers.h"

#include "Projection.h"
#include "tracking/EmeFigures.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPaintEngine>
#include <QStaticText>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace lunaquill {

namespace {

bool InTable(int c) { return c >= 0 && c < kConstellationCount; }

// The colour scale by colour index: first step whose bound lies above it.
constexpr int kStarColours = 7;
const double kColourBounds[kStarColours - 1] = {-0.16, 0.15, 0.45, 0.68, 1.15, 1.6};
const QRgb kStarRgb[kStarColours] = {0xa09eff, 0xa0d7ff, 0xd7e8ff, 0xffffff,
                                     0xffffdc, 0xffe6aa, 0xffd7b1};

int ColourStep(double colourIndex)
{
    if (colourIndex >= kUnknownColourIndex)
        return 3;  // white
    int step = 0;
    while (step < kStarColours - 1 && !(colourIndex < kColourBounds[step]))
        ++step;
    return step;
}

} // namespace

void StarStyle(double magnitude, double colourIndex, QColor &colour, int &size)
{
    size = magnitude < 0 ? 2 : 1;
    colour = QColor::fromRgb(kStarRgb[ColourStep(colourIndex)]);
}

bool IsDrawnObject(const CatalogueObject &object, int magnitudeLimit)
{
    const unsigned type = unsigned(object.type);  // negative types fail the range test
    return type < 12 && ((3726u >> type) & 1u) && magnitudeLimit >= object.magnitude;
}

namespace {

// One pen and one brush per colour step, made once.
struct StarPaints {
    QPen pens[kStarColours];
    QBrush brushes[kStarColours];
    StarPaints()
    {
        for (int i = 0; i < kStarColours; ++i) {
            pens[i] = QPen(QColor::fromRgb(kStarRgb[i]));
            brushes[i] = QBrush(QColor::fromRgb(kStarRgb[i]), Qt::SolidPattern);
        }
    }
};

const StarPaints &Paints()
{
    static const StarPaints paints;
    return paints;
}

// The drawn objects of the list, in table order, with their map points.
std::vector<StarDisc> StarsOf(const SkyView &view, const ObjectList &list, int magnitudeLimit)
{
    const SkyMapper mapPoint(view);
    std::vector<StarDisc> stars;
    stars.reserve(size_t(std::max(list.count, 0)));
    for (int i = 0; i < list.count; ++i) {
        const CatalogueObject &object = list.objects[i];
        if (!IsDrawnObject(object, magnitudeLimit))
            continue;
        stars.push_back({mapPoint(object.rightAscension, object.declination),
                         object.magnitude < 0 ? 2 : 1, ColourStep(object.colourIndex)});
    }
    return stars;
}

// The pixels the raster engine blends for drawEllipse(centre, r, r) with a
// one-pixel pen and a brush, as rows [first, last] relative to the centre: a
// plus of 5 for r = 1, a 5 x 5 square without its corners for r = 2. Pen and
// brush both cover the left end of the middle rows, which is therefore
// blended twice (the last rows below).
struct DiscRow {
    int dy, first, last;
};
const DiscRow kDisc1[] = {{-1, 0, 0}, {0, -1, 1}, {1, 0, 0}, {0, -1, -1}};
const DiscRow kDisc2[] = {{-2, -1, 1}, {-1, -2, 2}, {0, -2, 2},  {1, -2, 2},
                          {2, -1, 1},  {-1, -2, -2}, {0, -2, -2}, {1, -2, -2}};

// The 32-bit image under the painter when its pixels can be blended directly
// with exactly the engine's arithmetic; null otherwise.
QImage *DirectTarget(QPainter &painter)
{
    QPaintDevice *device = painter.device();
    if (!device || device->devType() != QInternal::Image || !painter.paintEngine()
        || painter.paintEngine()->type() != QPaintEngine::Raster)
        return nullptr;
    QImage *image = static_cast<QImage *>(device);
    const bool format = image->format() == QImage::Format_RGB32
                        || image->format() == QImage::Format_ARGB32_Premultiplied;
    const bool plain = painter.deviceTransform().type() == QTransform::TxNone
                       && !painter.hasClipping()
                       && painter.compositionMode() == QPainter::CompositionMode_SourceOver
                       && !painter.testRenderHint(QPainter::Antialiasing);
    return format && plain ? image : nullptr;
}

// The premultiplied colour the engine blends for each star colour at this
// opacity, read back from the engine itself: an ellipse drawn onto
// transparent pixels leaves exactly that colour. Made again only when the
// opacity changes; each thread that draws stars keeps its own.
const QRgb *EngineColours(qreal opacity)
{
    thread_local qreal madeFor = -1;
    thread_local QRgb colours[kStarColours];
    if (opacity != madeFor) {
        QImage probe(3, 3, QImage::Format_ARGB32_Premultiplied);
        for (int c = 0; c < kStarColours; ++c) {
            probe.fill(0);
            QPainter painter(&probe);
            painter.setOpacity(opacity);
            painter.setPen(Paints().pens[c]);
            painter.setBrush(Paints().brushes[c]);
            painter.drawEllipse(QPoint(1, 1), 1, 1);
            painter.end();
            colours[c] = reinterpret_cast<const QRgb *>(probe.constScanLine(1))[1];
        }
        madeFor = opacity;
    }
    return colours;
}

// The raster engine's source-over of a premultiplied colour c onto d: each
// channel d * (255 - alpha of c) / 255, rounded its way, plus c.
inline uint SourceOver(uint d, uint c)
{
    const uint a = 255 - (c >> 24);
    uint t = (d & 0xff00ff) * a;
    t = ((t + ((t >> 8) & 0xff00ff) + 0x800080) >> 8) & 0xff00ff;
    uint x = ((d >> 8) & 0xff00ff) * a;
    x = (x + ((x >> 8) & 0xff00ff) + 0x800080) & 0xff00ff00;
    return c + (x | t);
}

// The image's pixels, fetched once (QImage's accessors check for sharing on
// every call).
struct Pixels {
    uchar *bits;
    qsizetype stride;
    int width, height;
    explicit Pixels(QImage &image)
        : bits(image.bits()), stride(image.bytesPerLine()), width(image.width()),
          height(image.height())
    {
    }
    uint *Line(int y) const { return reinterpret_cast<uint *>(bits + y * stride); }
};

template <size_t N>
void BlendDisc(const Pixels &image, QPoint centre, const DiscRow (&disc)[N], uint colour)
{
    for (const DiscRow &row : disc) {
        const int y = centre.y() + row.dy;
        if (y < 0 || y >= image.height)
            continue;
        const int first = std::max(centre.x() + row.first, 0);
        const int last = std::min(centre.x() + row.last, image.width - 1);
        uint *line = image.Line(y);
        for (int x = first; x <= last; ++x)
            line[x] = SourceOver(line[x], colour);
    }
}

// The colour a plain, opaque, one-pixel pen writes over whatever lies
// beneath (its premultiplied self), or false for any other pen or painter.
bool OpaqueLinePen(const QPainter &painter, uint &colour)
{
    const QPen &pen = painter.pen();
    const bool plain = pen.style() == Qt::SolidLine && pen.brush().style() == Qt::SolidPattern
                       && pen.capStyle() != Qt::FlatCap && (pen.widthF() == 0 || pen.widthF() == 1)
                       && painter.opacity() == 1.0 && pen.color().rgba64().isOpaque();
    colour = pen.color().rgba();
    return plain;
}

// The pixels the raster engine's cosmetic stroker sets for the line a-b with
// such a pen: the ends in 26.6 fixed point, pushed half a pixel outward along
// the major axis (the caps); one pixel per major step, at the pixel's centre
// (rounded down for a falling line), the minor coordinate advanced in 16.16
// steps of a truncated quotient. A line of one point is that pixel. Pixels
// off the image are skipped, as the engine does. Ends must lie within a
// pixel of the image, where the engine clips nothing.
void StrokeLine(const Pixels &image, QPoint a, QPoint b, uint colour)
{
    auto put = [&image, colour](int x, int y) {
        if (x >= 0 && x < image.width && y >= 0 && y < image.height)
            image.Line(y)[x] = colour;
    };
    if (a == b) {
        put(a.x(), a.y());
        return;
    }
    const bool vertical = std::abs(b.x() - a.x()) < std::abs(b.y() - a.y());
    auto major = [vertical](QPoint p) { return 64 * (vertical ? p.y() : p.x()); };
    auto minor = [vertical](QPoint p) { return 64 * (vertical ? p.x() : p.y()); };
    if (major(a) > major(b))
        std::swap(a, b);
    const int64_t step = int64_t(minor(b) - minor(a)) * 65536 / (major(b) - major(a));
    const int begin = major(a) - 32, end = major(b) + 32;
    int m = (begin + 32) >> 6;
    const int stop = (end + 32) >> 6;
    int64_t n = int64_t(minor(a)) * 1024 - (step >> 1);
    n += int64_t(m * 64 + (step > 0 ? 32 : 0) - begin) * step >> 6;
    for (; m < stop; ++m, n += step) {
        if (vertical)
            put(int(n >> 16), m);
        else
            put(m, int(n >> 16));
    }
}

bool NearImage(QPoint p, const Pixels &image)
{
    return p.x() >= -1 && p.x() <= image.width + 1 && p.y() >= -1 && p.y() <= image.height + 1;
}

} // namespace

namespace {

void EllipsesOneByOne(QPainter &painter, const std::vector<StarDisc> &stars)
{
    const StarPaints &paints = Paints();
    for (const StarDisc &star : stars) {
        painter.setPen(paints.pens[star.colour]);
        painter.setBrush(paints.brushes[star.colour]);
        painter.drawEllipse(star.centre, star.size, star.size);
    }
}

void DrawDiscs(QPainter &painter, const std::vector<StarDisc> &stars)
{
    if (stars.empty())
        return;
    QImage *image = DirectTarget(painter);
    if (!image) {
        EllipsesOneByOne(painter, stars);
        return;
    }
    // Thousands of tiny ellipses cost the engine far more than their few
    // pixels: blend the discs straight into the image, in table order, with
    // the engine's own colours and arithmetic.
    const QRgb *colours = EngineColours(painter.opacity());
    const Pixels pixels(*image);
    for (const StarDisc &star : stars) {
        if (star.size == 2)
            BlendDisc(pixels, star.centre, kDisc2, colours[star.colour]);
        else
            BlendDisc(pixels, star.centre, kDisc1, colours[star.colour]);
    }
    // Leave the painter as the star-by-star drawing does.
    painter.setPen(Paints().pens[stars.back().colour]);
    painter.setBrush(Paints().brushes[stars.back().colour]);
}

} // namespace

void DrawObjectsOneByOne(QPainter &painter, const SkyView &view, const ObjectList *list,
                         int magnitudeLimit)
{
    if (list && list->objects)
        EllipsesOneByOne(painter, StarsOf(view, *list, magnitudeLimit));
}

void DrawObjects(QPainter &painter, const SkyView &view, const ObjectList *list,
                 int magnitudeLimit)
{
    if (list && list->objects)
        DrawDiscs(painter, StarsOf(view, *list, magnitudeLimit));
}

void DrawLines(QPainter &painter, const std::vector<QLine> &lines)
{
    if (lines.empty())
        return;
    QImage *image = DirectTarget(painter);
    uint colour;
    if (image && OpaqueLinePen(painter, colour)) {
        // Thousands of short lines cost the engine more in set-up than in
        // pixels: the same pixels are set straight into the image.
        const Pixels pixels(*image);
        const bool near = std::all_of(lines.begin(), lines.end(), [&pixels](const QLine &line) {
            return NearImage(line.p1(), pixels) && NearImage(line.p2(), pixels);
        });
        if (near) {
            for (const QLine &line : lines)
                StrokeLine(pixels, line.p1(), line.p2(), colour);
            return;
        }
    }
    painter.drawLines(lines.data(), int(lines.size()));
}

OutlinePoint Precess(OutlinePoint from, double fromJd, double toJd)
{
    // Lieske et al. 1977 (IAU 1976): zeta, z and theta in arcseconds, T from J2000 to the
    // starting epoch and t from it to the final one, in Julian centuries.
    const double T = (fromJd - kJ2000) / 36525.0, t = (toJd - fromJd) / 36525.0;
    const double linear = 2306.2181 + 1.39656 * T - 0.000139 * T * T;
    const double zeta = (linear + (0.30188 - 0.000344 * T) * t + 0.017998 * t * t) * t;
    const double z = (linear + (1.09468 + 0.000066 * T) * t + 0.018203 * t * t) * t;
    const double theta = ((2004.3109 - 0.85330 * T - 0.000217 * T * T)
                          - (0.42665 + 0.000217 * T) * t - 0.041833 * t * t) * t;
    constexpr double arcsecond = M_PI / 180.0 / 3600.0;
    const double ra = from.rightAscension * M_PI / 12.0 + zeta * arcsecond;
    const double dec = from.declination * M_PI / 180.0;
    const double sinTheta = std::sin(theta * arcsecond), cosTheta = std::cos(theta * arcsecond);
    const double a = std::cos(dec) * std::sin(ra);
    const double b = cosTheta * std::cos(dec) * std::cos(ra) - sinTheta * std::sin(dec);
    const double c = sinTheta * std::cos(dec) * std::cos(ra) + cosTheta * std::sin(dec);
    double hours = std::fmod((std::atan2(a, b) + z * arcsecond) * 12.0 / M_PI, 24.0);
    if (hours < 0)
        hours += 24.0;
    // Near the pole the declination from its cosine is the more exact.
    const double declination = std::fabs(c) > 0.99 ? std::copysign(std::acos(std::hypot(a, b)), c)
                                                    : std::asin(c);
    return {hours, declination * 180.0 / M_PI};
}

OutlinePoint PrecessB1875ToJ2000(OutlinePoint b1875) { return Precess(b1875, kB1875, kJ2000); }

namespace {
constexpr double kParallelStep = 0.25;  // hours of right ascension
constexpr double kHourCircleStep = 2.0; // degrees of declination
} // namespace

std::vector<std::vector<OutlinePoint>> OutlineParts(const ConstellationOutline &outline)
{
    std::vector<std::vector<OutlinePoint>> parts;
    if (!outline.points || outline.count <= 0)
        return parts;
    const int second = outline.secondPart > 0 && outline.secondPart < outline.count
                           ? outline.secondPart : outline.count;
    for (auto [first, end] : {std::pair{0, second}, std::pair{second, int(outline.count)}}) {
        if (first == end)
            continue;
        std::vector<OutlinePoint> part;
        for (int i = first; i < end; ++i) {
            const OutlinePoint &p = outline.points[i];
            if (i > first) {
                // Every edge runs along a parallel, the short way round (none
                // spans 12 h), or along an hour circle. Precessed, either is a
                // curve; points a quarter hour or two degrees apart keep the
                // straight map lines between them within 1" of it.
                const OutlinePoint &q = outline.points[i - 1];
                const double hours = std::remainder(p.rightAscension - q.rightAscension, 24.0);
                const double degrees = p.declination - q.declination;
                const int pieces = int(std::ceil(std::max(std::fabs(hours) / kParallelStep,
                                                          std::fabs(degrees) / kHourCircleStep)));
                for (int k = 1; k < pieces; ++k)
                    part.push_back(PrecessB1875ToJ2000({q.rightAscension + hours * k / pieces,
                                                        q.declination + degrees * k / pieces}));
            }
            part.push_back(PrecessB1875ToJ2000(p));
        }
        parts.push_back(std::move(part));
    }
    return parts;
}

namespace {

// A step from a to b on the map, the short way round: where that crosses the
// map's edge, one piece out to the edge and one in from the other edge, at
// the height where the line crosses it.
void AddStep(std::vector<QLine> &segments, QPoint a, QPoint b, int width)
{
    const int dx = b.x() - a.x();
    if (2 * std::abs(dx) <= width) {
        segments.emplace_back(a, b);
        return;
    }
    const bool leftward = dx > 0;  // the short way leaves by the left edge
    const double bx = leftward ? b.x() - width : b.x() + width;
    const double edge = leftward ? 0.0 : width;
    const double t = std::clamp((edge - a.x()) / (bx - a.x()), 0.0, 1.0);
    const int y = int(std::lround(a.y() + t * (b.y() - a.y())));
    segments.emplace_back(a, QPoint(leftward ? 0 : width - 1, y));
    segments.emplace_back(QPoint(leftward ? width - 1 : 0, y), b);
}

} // namespace

std::vector<QLine> MapLines(const SkyView &view, const std::vector<std::vector<OutlinePoint>> &parts)
{
    std::vector<QLine> segments;
    const int width = view.mapWidth;
    if (width <= 0)
        return segments;
    const SkyMapper mapPoint(view);
    for (const std::vector<OutlinePoint> &part : parts) {
        QPoint previous;
        for (size_t i = 0; i < part.size(); ++i) {
            QPoint p = mapPoint(part[i].rightAscension, part[i].declination);
            p.setX((p.x() % width + width) % width);  // on the map, whatever the offset
            if (i > 0)
                AddStep(segments, previous, p, width);
            previous = p;
        }
    }
    return segments;
}

std::vector<QLine> OutlineSegments(const SkyView &view, const ConstellationOutline *outline)
{
    return outline ? MapLines(view, OutlineParts(*outline)) : std::vector<QLine>();
}

void DrawOutline(QPainter &painter, const SkyView &view, const ConstellationOutline *outline)
{
    const std::vector<QLine> segments = OutlineSegments(view, outline);
    if (!segments.empty())
        painter.drawLines(segments.data(), int(segments.size()));
}

namespace {

// Where the abbreviation's baseline starts: centred over the map point of
// its label point, x - 3 * length, y - 8.
QPoint LabelOrigin(const SkyView &view, const char (&abbreviation)[5], OutlinePoint j2000)
{
    const QPoint p = SkyMapper(view)(j2000.rightAscension, j2000.declination);
    return {p.x() - 3 * int(strnlen(abbreviation, sizeof abbreviation)), p.y() - 8};
}

QString LabelText(const char (&abbreviation)[5])
{
    return QString::fromLatin1(abbreviation, int(strnlen(abbreviation, sizeof abbreviation)));
}

// The abbreviation of constellation c laid out once, for a painter without
// a transform on the application's own thread; null for any other.
// drawStaticText at the baseline less the font's ascent (a whole number of
// 64ths, so the sum comes back exact) sets the pixels drawText sets, and
// saves the text's shaping at every drawing. Never freed: the layouts hold
// on to font engines the application tears down at its end.
QStaticText *LaidOutLabel(const QPainter &painter, int c)
{
    if (painter.deviceTransform().type() != QTransform::TxNone || !QCoreApplication::instance()
        || QThread::currentThread() != QCoreApplication::instance()->thread())
        return nullptr;
    static QStaticText *const laidOut = new QStaticText[kConstellationCount];
    if (laidOut[c].text().isEmpty())
        laidOut[c].setText(LabelText(kConstellations[c].abbreviation));
    return &laidOut[c];
}

// The outlines' parts and the label points in J2000, which no instant
// changes: precessed once, on first use, instead of at every drawing.
struct J2000Sky {
    std::vector<std::vector<OutlinePoint>> outlineParts[kConstellationCount];
    OutlinePoint labels[kConstellationCount];
};

const J2000Sky &PrecessedSky()
{
    static const J2000Sky sky = [] {
        J2000Sky made;
        for (int c = 0; c < kConstellationCount; ++c) {
            if (kConstellationOutlines[c])
                made.outlineParts[c] = OutlineParts(*kConstellationOutlines[c]);
            made.labels[c] = PrecessB1875ToJ2000({kConstellations[c].rightAscension,
                                                  kConstellations[c].declination});
        }
        return made;
    }();
    return sky;
}

} // namespace

void DrawConstellationLabel(QPainter &painter, const SkyView &view, const ConstellationRow &row)
{
    painter.drawText(LabelOrigin(view, row.abbreviation,
                                 PrecessB1875ToJ2000({row.rightAscension, row.declination})),
                     LabelText(row.abbreviation));
}

void DrawConstellationObjects(QPainter &painter, const SkyView &view, int c, int magnitudeLimit)
{
    if (InTable(c))
        DrawObjects(painter, view, kCatalogue[c], magnitudeLimit);
}

void DrawConstellationOutline(QPainter &painter, const SkyView &view, int c)
{
    if (!InTable(c) || !kConstellationOutlines[c])
        return;
    DrawLines(painter, MapLines(view, PrecessedSky().outlineParts[c]));
}

namespace {

void DrawLabelAt(QPainter &painter, int c, QPoint origin)
{
    if (QStaticText *laidOut = LaidOutLabel(painter, c)) {
        const qreal ascent = QFontMetricsF(painter.font(), painter.device()).ascent();
        painter.drawStaticText(QPointF(origin.x(), origin.y() - ascent), *laidOut);
    } else {
        painter.drawText(origin, LabelText(kConstellations[c].abbreviation));
    }
}

} // namespace

void DrawConstellationLabel(QPainter &painter, const SkyView &view, int c)
{
    if (InTable(c))
        DrawLabelAt(painter, c,
                    LabelOrigin(view, kConstellations[c].abbreviation, PrecessedSky().labels[c]));
}

SkyMapper::SkyMapper(const SkyView &view)
    : siderealDegrees(SiderealDegrees(view.utc)), grid(view.mapWidth, view.mapHeight, view.mapOffset)
{
}

QPoint SkyPoint(const SkyView &view, double raHours, double decDegrees)
{
    double latitude, longitude;
    SubSourcePoint(view.utc, raHours, decDegrees, latitude, longitude);
    return LatLongToPoint(view.mapWidth, view.mapHeight, view.mapOffset, latitude, longitude);
}

namespace {

bool SameView(const SkyView &a, const SkyView &b)
{
    return a.mapWidth == b.mapWidth && a.mapHeight == b.mapHeight && a.mapOffset == b.mapOffset
           && a.utc.tm_year == b.utc.tm_year && a.utc.tm_mon == b.utc.tm_mon
           && a.utc.tm_mday == b.utc.tm_mday && a.utc.tm_hour == b.utc.tm_hour
           && a.utc.tm_min == b.utc.tm_min && a.utc.tm_sec == b.utc.tm_sec;
}

} // namespace

bool SameSkyCanvas(const SkyCanvasRequest &a, const SkyCanvasRequest &b)
{
    return a.base.cacheKey() == b.base.cacheKey() && a.skyNoise.cacheKey() == b.skyNoise.cacheKey()
           && a.skyColumn == b.skyColumn && a.sagittariusX == b.sagittariusX
           && a.stars == b.stars && a.magnitudeLimit == b.magnitudeLimit
           && SameView(a.starsView, b.starsView) && a.constellations == b.constellations
           && SameView(a.outlinesView, b.outlinesView);
}

void PaintSkyObjects(QImage &canvas, const SkyCanvasRequest &request)
{
    if (request.stars) {
        // In the canvas's own pixels whatever the screen's scale: discs of
        // whole pixels, blended straight into them (a scaled painter would
        // draw each of the thousands as a path, twenty times slower).
        const qreal ratio = canvas.devicePixelRatio();
        canvas.setDevicePixelRatio(1.0);
        QPainter stars(&canvas);
        stars.setBrush(QBrush(Qt::lightGray, Qt::SolidPattern));
        stars.setOpacity(0.5);
        for (int c = 0; c < kConstellationCount; ++c)
            DrawConstellationObjects(stars, request.starsView, c, request.magnitudeLimit);
        stars.end();
        canvas.setDevicePixelRatio(ratio);
    }
    if (request.constellations) {
        QPainter painter(&canvas);
        painter.setOpacity(1.0);
        painter.setPen(Qt::black);
        for (int c = 0; c < kConstellationCount; ++c) {
            DrawConstellationOutline(painter, request.outlinesView, c);
            DrawConstellationLabel(painter, request.outlinesView, c);
        }
    }
}

QImage PaintSkyCanvas(const SkyCanvasRequest &request)
{
    QImage canvas = request.base;
    if (!request.skyNoise.isNull()) {
        QPainter sky(&canvas);
        sky.setOpacity(0.4);
        DrawSkyRolled(sky, request.skyNoise, request.skyColumn, request.sagittariusX);
    }
    PaintSkyObjects(canvas, request);
    return canvas;
}

} // namespace lunaquill
