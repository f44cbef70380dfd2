// The sky standing over the map: catalogue objects, constellation outlines
// and their abbreviations, each drawn at its sub-point for one instant. Free
// functions of their inputs, so the main window's methods stay thin and the
// drawing can be checked on a plain pixmap.
#pragma once

#include "SkyTables.h"

#include <QColor>
#include <QPainter>

#include <ctime>

namespace lunaquill {

// The map the sky is drawn on and the instant (UTC) whose sky it shows.
struct SkyView {
    int mapWidth;
    int mapHeight;
    int mapOffset;   // hours the map is rolled eastward
    struct tm utc;
};

// Size 2 for magnitudes below 0, else 1; colour by colour index (B-V), from
// blue-white "#a09eff" below -0.16 to orange "#ffd7b1" from 1.6 up.
void StarStyle(double magnitude, double colourIndex, QColor &colour, int &size);

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

// The outline with the painter's pen, vertex to vertex. A step whose
// longitude jumps across the date line by more than 90 degrees is drawn as
// two level stubs, from each end to the map edge it is nearer (x = width - 1
// and x = 1), not interpolated. The last vertex is not joined to the first.
void DrawOutline(QPainter &painter, const SkyView &view, const ConstellationOutline *outline);

// The row's abbreviation centred over its label point: x - 3 * length,
// baseline y - 8, in the painter's pen.
void DrawConstellationLabel(QPainter &painter, const SkyView &view, const ConstellationRow &row);

// The same for constellation number c (0..87) of the built-in tables; any
// other number, or an absent entry, draws nothing.
void DrawConstellationObjects(QPainter &painter, const SkyView &view, int c, int magnitudeLimit);
void DrawConstellationOutline(QPainter &painter, const SkyView &view, int c);
void DrawConstellationLabel(QPainter &painter, const SkyView &view, int c);

} // namespace lunaquill
