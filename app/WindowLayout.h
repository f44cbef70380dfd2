// The window's layout below its full size. From 1640 x 960 up the form's own
// layout holds (the map 800 high across the width, the four panels at their
// own size under it). Below that the map keeps its 2:1 shape and is as large
// as the window allows with the four panels, shrunk or wrapped into two
// rows, fully under it.
#pragma once

#include <QRect>
#include <QSize>

#include <array>

namespace lunaquill {

inline constexpr QSize kFullWindowSize(1640, 960);
inline constexpr QSize kMinimumWindowSize(1024, 600);

// The window of the form: 1640 x 960 or larger.
bool IsFullSize(QSize window);

// What the four panels need: their size in the form, and the smallest
// horizontal scale at which every text they show still fits at 8 pt.
struct PanelForm {
    QSize size;
    double minimumScaleX;
};

struct CompactLayout {
    QRect map;
    QRect latitudeLeft, latitudeRight, longitude; // the scales beside and under the map
    std::array<QRect, 4> panels;
    std::array<double, 4> scaleX{}; // each panel's horizontal scale
    double scaleY = 1.0;            // the panels' common vertical scale
    int rows = 0;                   // 0: no layout fits
};

// The panels' vertical scale is never below this: read-outs at least 18
// pixels high, room for an 8 pt line.
inline constexpr double kMinimumPanelScaleY = 0.6;

// The layout for a central area of this size (the window without its menu
// bar): one row of panels when they fit across, else two (the first two
// panels above the last two), whichever leaves the larger map.
CompactLayout LayOutCompact(QSize central, const std::array<PanelForm, 4> &panels);

// Star chart 1 (which = 0, home) or 2 (which = 1, DX): a square centred in
// its half of the map, 5 pixels clear of the nearer edge.
QRect ChartRect(const QRect &map, int which);

// A form's font size at a scale, never below 8 pt nor above its own size.
double ScaledPointSize(double formPointSize, double scale);

// A rectangle of the form scaled about its parent's origin; adjacent
// rectangles stay adjacent (edges are rounded, not sizes).
QRect ScaledRect(const QRect &form, double scaleX, double scaleY);

} // namespace lunaquill
