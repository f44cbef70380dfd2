// The sky standing over the map: catalogue objects, constellation outlines
// and their abbreviations, each drawn at its sub-point for one instant. Free
// functions of their inputs, so the main window's methods stay thin and the
// drawing can be checked on a plain pixmap.
#pragma once

#include "Projection.h"
#include "SkyTables.h"
#include "tracking/EmeFigures.h"

#include <QColor>
#include <QImage>
#include <QLine>
#include <QPainter>

#include <ctime>
#include <vector>

namespace lunaquill {

// The map the sky is drawn on and the instant (UTC) whose sky it shows.
struct SkyView {
    int mapWidth;
    int mapHeight;
    int mapOffset;   // hours the map is rolled eastward
    struct tm utc;
};

// The map point of a J2000 position at the view's instant: its sub-point
// (SubSourcePoint) projected on the rolled map (LatLongToPoint).
QPoint SkyPoint(const SkyView &view, double raHours, double decDegrees);

// The same for the thousands of points of one view, with the instant's
// sidereal angle and the map's terms worked out once: exactly SkyPoint.
class SkyMapper {
public:
    explicit SkyMapper(const SkyView &view);
    QPoint operator()(double raHours, double decDegrees) const
    {
        return grid.Point(decDegrees, SubLongitude(raHours, siderealDegrees));
    }

private:
    double siderealDegrees;
    MapGrid grid;
};

// Size 2 for magnitudes below 0, else 1; colour by colour index (B-V), from
// blue-white "#a09eff" below -0.16 to orange "#ffd7b1" from 1.6 up; white
// "#ffffff" for an unknown one (kUnknownColourIndex).
void StarStyle(double magnitude, double colourIndex, QColor &colour, int &size);

// A drawn object as a disc: its map point, its size (radius, as StarStyle
// gives it) and the step of its colour on StarStyle's scale.
struct StarDisc {
    QPoint centre;
    int size;
    int colour;
};

// Only stars, multiple and variable stars, open and globular clusters,
// planetary and bright nebulae are drawn (type mask 3726 over types 0..11),
// and only when the magnitude limit is at least the object's magnitude.
bool IsDrawnObject(const CatalogueObject &object, int magnitudeLimit);

// Each drawn object of the list, in table order, as a disc of its style's
// colour (pen and brush) and radius. Nothing for a null list. Leaves the
// painter's pen and brush in the last object's colour. On a painter of a
// 32-bit QImage (no transform, clipping or antialiasing, source-over) the
// discs are blended straight into the image, much faster and pixel for pixel
// the same; on any other painter they are drawn one by one.
void DrawObjects(QPainter &painter, const SkyView &view, const ObjectList *list,
                 int magnitudeLimit);

// The same, one drawEllipse per object: what DrawObjects must match pixel for
// pixel.
void DrawObjectsOneByOne(QPainter &painter, const SkyView &view, const ObjectList *list,
                         int magnitudeLimit);

// The lines as painter.drawLines draws them, pixel for pixel. On a painter
// of a 32-bit QImage as DrawObjects takes it, with an opaque, solid,
// one-pixel pen with caps and every end within a pixel of the image, they
// are set straight into the image, much faster.
void DrawLines(QPainter &painter, const std::vector<QLine> &lines);

// Julian days of the boundaries' epoch (B1875.0) and the catalogue's (J2000.0).
constexpr double kB1875 = 2405889.258550475;
constexpr double kJ2000 = 2451545.0;

// Mean place at toJd of the mean place at fromJd, by the IAU 1976 precession
// (Lieske 1977: zeta, z, theta with all their terms; libnova's
// ln_get_equ_prec2 leaves out those in T and t squared, some 2" over these
// 125 years); no nutation, aberration or proper motion.
OutlinePoint Precess(OutlinePoint from, double fromJd, double toJd);

// The boundary points are B1875 (the epoch the boundaries are defined in),
// the map and the catalogue J2000.
OutlinePoint PrecessB1875ToJ2000(OutlinePoint b1875);

// The outline as drawn: each separate area (Serpens has two) as its own
// list of J2000 points, each edge passing through points a quarter hour
// (along a parallel) or two degrees (along an hour circle) apart, so that
// the precessed edge follows the true curve and every edge takes its own way
// round.
std::vector<std::vector<OutlinePoint>> OutlineParts(const ConstellationOutline &outline);

// The map lines of polylines of J2000 points: each step the short way round
// the rolled map, split where it crosses the map's edge into a piece out to
// that edge and one in from the other, so no line runs across the map. No
// polyline is closed, nor joined to the next.
std::vector<QLine> MapLines(const SkyView &view, const std::vector<std::vector<OutlinePoint>> &parts);

// Those of the outline's parts.
std::vector<QLine> OutlineSegments(const SkyView &view, const ConstellationOutline *outline);

// Those lines with the painter's pen.
void DrawOutline(QPainter &painter, const SkyView &view, const ConstellationOutline *outline);

// The row's abbreviation centred over its label point (precessed to J2000):
// x - 3 * length, baseline y - 8, in the painter's pen.
void DrawConstellationLabel(QPainter &painter, const SkyView &view, const ConstellationRow &row);

// The same for constellation number c (0..87) of the built-in tables; any
// other number, or an absent entry, draws nothing. The outlines and label
// points are precessed once, at the first drawing (DrawOutline and the
// row's DrawConstellationLabel precess at every call).
void DrawConstellationObjects(QPainter &painter, const SkyView &view, int c, int magnitudeLimit);
void DrawConstellationOutline(QPainter &painter, const SkyView &view, int c);
void DrawConstellationLabel(QPainter &painter, const SkyView &view, int c);

// The screen overlay's first layers over a copy of the base map: the sky
// noise rolled under Sagittarius at 40 % (an unscaled screen's), the
// catalogue objects, and the constellation outlines with their
// abbreviations. A function of the request alone, so that it may be painted
// on a worker thread while the sources are computed.
struct SkyCanvasRequest {
    QImage base;
    QImage skyNoise; // null: no sky noise drawn
    int skyColumn = 0;
    int sagittariusX = 0;
    bool stars = false;
    int magnitudeLimit = 0;
    SkyView starsView{};
    bool constellations = false;
    SkyView outlinesView{};
};
bool SameSkyCanvas(const SkyCanvasRequest &a, const SkyCanvasRequest &b);
QImage PaintSkyCanvas(const SkyCanvasRequest &request);

// The objects and the constellations of the request over `canvas`, which
// already has its sky noise (a scaled screen's canvas included: the objects
// are drawn in its own pixels).
void PaintSkyObjects(QImage &canvas, const SkyCanvasRequest &request);

} // namespace lunaquill
