#include "Projection.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace lunaquill {

namespace {

// double -> int without undefined behaviour: NaN gives 0, values beyond the
// int range give the nearest limit; everything else truncates as a cast does.
int TruncateToInt(double value)
{
    if (std::isnan(value))
        return 0;
    if (value <= double(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    if (value >= 2147483648.0)
        return std::numeric_limits<int>::max();
    return int(value);
}

// x*x + y*y + z*z in 32-bit integers. Done unsigned so that an overflow
// wraps (as the plain int sum always did in practice) instead of being
// undefined.
int32_t SumOfSquares32(int x, int y, int z)
{
    const uint32_t ux = uint32_t(x), uy = uint32_t(y), uz = uint32_t(z);
    return int32_t(ux * ux + uy * uy + uz * uz);
}

} // namespace

MapGrid::MapGrid(int mapWidth, int mapHeight, int mapOffset)
    : width(mapWidth), height(mapHeight), dx(mapWidth != 0 ? 360.0 / mapWidth : 0.0),
      dy(mapHeight != 0 ? 180.0 / mapHeight : 0.0),
      // 64-bit so that odd offsets cannot overflow; same result in range.
      shift(int64_t(mapWidth / 24) * mapOffset)
{
}

int MapGrid::X(double longitude) const
{
    if (width == 0)
        return 0;
    const int64_t x = TruncateToInt((longitude + 180.0) / dx) + shift;
    // C++ % keeps the dividend's sign: a negative sum gives a negative x.
    // Most points need no wrapping, and the division is the dearest step.
    return int(x >= 0 && x < width ? x : x % width);
}

int MapGrid::Y(double latitude) const
{
    return height != 0 ? TruncateToInt((90.0 - latitude) / dy) : 0;
}

QPoint LatLongToPoint(int mapWidth, int mapHeight, int mapOffset, double latitude,
                      double longitude)
{
    return MapGrid(mapWidth, mapHeight, mapOffset).Point(latitude, longitude);
}

double MapRollDegrees(int mapWidth, int mapOffset)
{
    return mapWidth > 0 ? double(mapWidth / 24) * mapOffset * 360.0 / mapWidth : 0.0;
}

QPoint AzAltToDial(const QRect &dial, double azimuth, double altitude)
{
    // The dial image has a fixed 540-pixel radius to its nadir.
    const double radius = sin((90.0 - altitude) * 0.5 * kDrawDegToRad) * 540.0;
    const double angle = fmod(azimuth + 180.0, 360.0) * kDrawDegToRad;
    return QPoint(dial.width() / 2 + TruncateToInt(sin(angle) * radius),
                  dial.height() / 2 + TruncateToInt(cos(angle) * radius));
}

void MapPixelToDialPixel(QPoint p, int cx, int cy, int &x, int &y)
{
    const int64_t px = p.x(), py = p.y();
    x = SaturateToInt(px - TruncateToInt(double(px - cx) * -0.01) + cx);
    y = SaturateToInt(TruncateToInt(double(py - cy) * 0.01) + int64_t(cy) + py);
}

void WorldToSpherical(int x, int y, int z, double &u, double &v)
{
    const double r = sqrt(double(SumOfSquares32(x, y, z)));
    // Only the x >= 1 half-space gets a longitude; the texture wants it so.
    const double longitudeAngle = x >= 1 ? atan2(y, x) : 0.0;
    const double latitudeAngle = r > 0 ? asin(z / r) : 0.0;
    u = longitudeAngle / 6.28318530718 + 0.5;
    v = latitudeAngle / 3.14159265359 + 0.5;
}

void Cart2Pol(int x, int y, double &radius, double &angle)
{
    radius = sqrt(double(SumOfSquares32(x, y, 0)));
    angle = x != 0 ? atan2(y, x) : 0.0;
}

void Pol2Cart(double radius, double angle, int &x, int &y)
{
    x = TruncateToInt(floor(cos(angle) * radius));
    y = TruncateToInt(floor(sin(angle) * radius));
}

bool MouseToMap(QPoint windowPos, const QRect &mapGeometry, const QRect &centralGeometry,
                int mapOffset, double &latitude, double &longitude)
{
    const int64_t width = mapGeometry.width();
    const int64_t height = mapGeometry.height();
    const int64_t shift = (width / 24) * mapOffset;
    int64_t px = windowPos.x() - shift - (int64_t(mapGeometry.left()) - centralGeometry.left());
    if (px < 0)
        px += width;
    const int64_t py = windowPos.y() - (int64_t(centralGeometry.top()) - mapGeometry.top());
    if (px < 0 || px >= width || py < 0 || py >= height)
        return false;
    longitude = int(px) * (360.0 / int(width)) - 180.0;
    latitude = 90.0 - int(py) * (180.0 / int(height));
    return true;
}

} // namespace lunaquill
