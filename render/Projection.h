// The map projection and the screen geometry of the world map and the sky
// dial: geographic and horizontal coordinates to pixels and back. Free
// functions of their inputs only, so the main window's methods are thin
// wrappers and the arithmetic can be tested without a window.
//
// Angles are degrees (north and east positive) unless a name says radians.
// Results are truncated toward zero, not rounded. Inputs that cannot be
// represented (NaN, values far beyond int) give pixel 0 or the nearest int
// instead of undefined behaviour; for finite inputs in range the arithmetic
// is unchanged.
#pragma once

#include <cstdint>
#include <limits>

#include <QPoint>
#include <QRect>

namespace lunaquill {

// An integer sum worked in 64 bits, brought back into the int range.
inline int SaturateToInt(int64_t value)
{
    if (value < std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    if (value > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    return int(value);
}

// Degrees to radians as the drawing code has always done it: pi taken as
// 3.14159265359, divided by 180.
constexpr double kDrawDegToRad = 0.017453292519944444;

// Equirectangular map of mapWidth x mapHeight pixels, 180 W at the left edge,
// rolled eastward by mapOffset hours of mapWidth / 24 pixels each. The x is
// the remainder of a truncated division, so a negative sum stays negative;
// there is no clamping. A zero width gives x = 0 (no division by zero), a
// zero height y = 0.
QPoint LatLongToPoint(int mapWidth, int mapHeight, int mapOffset, double latitude,
                      double longitude);

// The same projection with the map's own terms worked out once, for the
// thousands of points drawn on one map: Point gives exactly LatLongToPoint.
class MapGrid {
public:
    MapGrid(int mapWidth, int mapHeight, int mapOffset);
    int X(double longitude) const;
    int Y(double latitude) const;
    QPoint Point(double latitude, double longitude) const { return {X(longitude), Y(latitude)}; }

private:
    int width, height;
    double dx, dy;   // degrees a pixel
    int64_t shift;   // pixels the offset rolls the map
};

// How far east, in degrees, LatLongToPoint rolls every place: mapWidth / 24
// pixels an hour of offset. A sphere wrapped in the rolled map shows a place
// of longitude L at L plus this.
double MapRollDegrees(int mapWidth, int mapOffset);

// Equal-area azimuthal sky dial: zenith at the rectangle's centre, horizon at
// 540 * sin 45 pixels, nadir at 540 pixels whatever the rectangle's size.
// North is up, east to the left (the sky seen looking up). The point is
// relative to the rectangle's own origin (only its width and height count).
QPoint AzAltToDial(const QRect &dial, double azimuth, double altitude);

// Pushes p 1 % further away from the centre (cx, cy). The centre is added to
// p as well, so callers pass p relative to the centre.
void MapPixelToDialPixel(QPoint p, int cx, int cy, int &x, int &y);

// Texture coordinates (u, v in 0..1) of the point (x, y, z) on a sphere. The
// squares are summed in 32-bit integers (wrapping, as it always has) and the
// longitude angle is taken only for x >= 1, 0 otherwise.
void WorldToSpherical(int x, int y, int z, double &u, double &v);

// Radius (integer squares) and angle in radians; angle 0 when x is 0.
void Cart2Pol(int x, int y, double &radius, double &angle);

// Polar (angle in radians) to pixels, floored before truncation so negative
// values round downward.
void Pol2Cart(double radius, double angle, int &x, int &y);

// The mouse position windowPos (main-window coordinates) over the map label
// whose geometry is mapGeometry inside the central widget centralGeometry.
// The horizontal correction is map left minus central left and the vertical
// one central top minus map top: not mirror images, and kept so. Returns
// whether the point lies on the map; only then are latitude and longitude
// written.
bool MouseToMap(QPoint windowPos, const QRect &mapGeometry, const QRect &centralGeometry,
                int mapOffset, double &latitude, double &longitude);

} // namespace lunaquill
