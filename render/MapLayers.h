// The pieces of the layered world map that do not need the main window: the
// base map with its grid, the hour and latitude scales, and the rolling of a
// map-sized layer by the map offset or under the sky.
#pragma once

#include <QPainter>
#include <QPixmap>
#include <QSize>
#include <QString>

namespace lunaquill {

// Column of the base map's topographic image at which the rolled map starts
// (offset > 0). Two forms, kept both: (24 - offset) * (w / 24) up to offset
// 12, w - (w / 24) * offset above. They differ when w is not a multiple of 24.
int MapRollSplit(int width, int mapOffset);

// The same split for the overlay layers: w - (w / 24) * offset.
int OverlayRollSplit(int width, int mapOffset);

// Redraws the base map: the topographic master scaled to the base map's size,
// rolled by the map offset (the pieces are cut from that scaled map, which at
// the master's own size is the master), then the grid lines, fixed to the
// screen: 17 latitude lines (the equator light grey, the others dark grey)
// and 23 longitude lines (Greenwich light grey). Does nothing when the base
// map or the master is null. Offsets whose split falls outside the map are
// not rolled. A base map of a scaled screen (device pixel ratio above 1) is
// drawn in its own pixels, so its grid lines are one screen pixel wide.
void DrawBaseMap(QPixmap &baseMap, const QPixmap &topoMaster, int mapOffset, bool latitudeLines,
                 bool longitudeLines);

// "+90" ... "+10", "  0", "-10" ... "-90".
QString LatitudeLabelText(int value);

// Label i (0..24) of the hour scale: the hours west of Greenwich, "%02dh".
QString LongitudeLabelText(int i, int mapOffset);

// The latitude scale (+90 at the top to -90 at the bottom, every 10 degrees)
// and the hour scale, white on black, for labels of labelSize beside and
// below a map of the given height or width. A null pixmap for an empty size.
// Drawn with `ratio` pixels to each of the label's (a scaled screen's).
QPixmap LatitudeLabels(QSize labelSize, int mapHeight, qreal ratio = 1.0);
QPixmap LongitudeLabels(QSize labelSize, int mapWidth, int mapOffset, qreal ratio = 1.0);

// Draws a map-sized layer rolled by the map offset, as the base map is
// rolled, both pieces cut from the layer itself (full layer height), at
// whatever pixel ratio the layer has.
// Offsets whose split falls outside the map draw the layer unrolled.
void DrawRolled(QPainter &painter, const QPixmap &layer, int mapWidth, int mapOffset);

// Rolls the map-sized sky-noise image `source` into `target` so that its
// reference column lands under Sagittarius, whose map x is sagittariusX. With
// debug set, the shift and both copies are logged.
void RollSkyOverlay(QPixmap &target, const QPixmap &source, int column, int sagittariusX,
                    bool debug);

// The same roll of an unscaled image drawn with `painter` as it stands (its
// opacity, say): the pixels of drawing the rolled layer, without making it.
// Any thread.
void DrawSkyRolled(QPainter &painter, const QImage &source, int column, int sagittariusX);

} // namespace lunaquill
