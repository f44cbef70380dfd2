// The sky dial under the star charts: a black disc with an azimuth ring in
// its outer margin (N up, E right, ticks every 10 degrees, labels every 30),
// drawn as vectors at whatever size and pixel density it is shown.
#pragma once

#include <QPainter>
#include <QPixmap>
#include <QRectF>

namespace lunaquill {

// Where the ring starts, as a fraction of the dial's radius: inside it is
// the face the chart's globe fills.
constexpr double kDialFaceFraction = 0.94;

// The dial in the square (0, 0)-(size, size) of the painter's coordinates.
void DrawSkyDial(QPainter &painter, double size);

// The face inside the ring of a dial of that size: the circle, as its
// bounding square, that the chart's globe fills.
QRectF DialFace(double size);

// The dial for a chart label of labelSize (logical pixels): a square of the
// smaller side at the top left, transparent beyond it, drawn at
// devicePixelRatio device pixels per logical pixel so it is sharp at any
// scaling. The last one made is kept.
QPixmap SkyDial(QSize labelSize, qreal devicePixelRatio);

} // namespace lunaquill
