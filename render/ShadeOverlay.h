// The Sun and Moon shading layer: a map-sized grey image, white where the
// body stands well above the horizon, black where it is below, with a short
// linear ramp between. The map overlay lays it over the map translucently.
#pragma once

#include <QImage>
#include <QPixmap>

namespace lunaquill {

// Paints the shading of a body whose sub-point is (latitude, longitude),
// degrees, over the whole layer. The grey is strength * cos(distance from the
// sub-point), clamped to 0..1, computed in single precision from column
// tables of the longitude sines and cosines that are kept for the process and
// remade only when the layer width changes. Column 0 is 180 W, row 0 exactly
// 90 N; the map offset is not applied (the finished layer is rolled when
// drawn). If the tables cannot be allocated the layer keeps its old picture.
void CreateShadeOverlay(QPixmap &layer, double latitude, double longitude, double strength);

// The same in three steps, so that the pictures of several bodies can be
// made on other threads: the column tables are made (or kept) for `width` on
// the GUI thread first; ShadeImage then only reads them and may run on any
// thread, several at once (a null image when the tables are missing or made
// for another width); PaintShade lays a picture into its layer on the GUI
// thread and leaves the layer alone for a null or wrongly sized picture.
bool PrepareShadeColumns(int width);
QImage ShadeImage(QSize size, double latitude, double longitude, double strength);
void PaintShade(QPixmap &layer, QImage image);

// What a shading picture is made from, for keeping a picture under way when
// it is asked for again: equal when every field is equal bit for bit.
struct ShadeRequest {
    bool wanted = false; // false: no picture
    QSize size;
    double latitude = 0.0;
    double longitude = 0.0;
    double strength = 0.0;
};
bool SameShadeRequest(const ShadeRequest &a, const ShadeRequest &b);

// The width the column tables were last made for, and how many times they
// have been made since the process started.
int ShadeColumnTableWidth();
int ShadeColumnTableBuilds();

} // namespace lunaquill
