#include "MapLayers.h"

#include "Projection.h"

#include <QBrush>
#include <QColor>
#include <QDebug>
#include <QPen>
#include <QPoint>
#include <QRect>

#include <cmath>
#include <cstdint>
#include <limits>

namespace lunaquill {

namespace {

// A roll at column `split`: columns split..w of the source go to the left
// edge, columns 0..split after them. The rectangles are given by their
// corners, so each is one column wider and one row taller than the piece;
// the painter clips the extra column and row at the source's edge.
struct RolledPieces {
    QRect firstSource, firstTarget, secondSource, secondTarget;
};

RolledPieces RollAt(int width, int height, int split)
{
    return RolledPieces{QRect(QPoint(split, 0), QPoint(width, height)),
                        QRect(QPoint(0, 0), QPoint(width - split, height)),
                        QRect(QPoint(0, 0), QPoint(split, height)),
                        QRect(QPoint(width - split, 0), QPoint(width, height))};
}

// The pieces are cut in the source's own pixels, which a source made for a
// scaled screen has `ratio` of to each of the painter's.
void DrawPieces(QPainter &painter, const QPixmap &source, const RolledPieces &pieces)
{
    const qreal ratio = source.devicePixelRatio();
    auto pixels = [ratio](const QRect &r) {
        return QRectF(r.x() * ratio, r.y() * ratio, r.width() * ratio, r.height() * ratio);
    };
    painter.drawPixmap(QRectF(pieces.firstTarget), source, pixels(pieces.firstSource));
    painter.drawPixmap(QRectF(pieces.secondTarget), source, pixels(pieces.secondSource));
}

bool SplitInsideMap(int split, int width)
{
    return split >= 0 && split <= width;
}

QPen GridPen(bool centreLine)
{
    return QPen(QBrush(centreLine ? Qt::lightGray : Qt::darkGray), 1.0, Qt::SolidLine,
                Qt::RoundCap, Qt::BevelJoin);
}

// Paints the whole scale black and leaves the pen white for the texts.
void BlankScale(QPainter &painter, const QRect &scale)
{
    painter.setPen(Qt::black);
    painter.setBrush(QBrush(Qt::black, Qt::SolidPattern));
    painter.drawRect(scale);
    painter.setPen(Qt::white);
}

void LogCopy(const QRect &source, const QRect &target)
{
    qDebug("Copying source_overlay(%d,%d,%d,%d) to pixmap(%d,%d,%d,%d)", source.left(),
           source.top(), source.right(), source.bottom(), target.left(), target.top(),
           target.right(), target.bottom());
}

} // namespace

int MapRollSplit(int width, int mapOffset)
{
    const int64_t part = width / 24;
    if (mapOffset <= 12)
        return SaturateToInt((24 - int64_t(mapOffset)) * part);
    return SaturateToInt(width - part * mapOffset);
}

int OverlayRollSplit(int width, int mapOffset)
{
    return SaturateToInt(width - int64_t(width / 24) * mapOffset);
}

void DrawBaseMap(QPixmap &baseMap, const QPixmap &topoMaster, int mapOffset, bool latitudeLines,
                 bool longitudeLines)
{
    if (baseMap.isNull() || topoMaster.isNull())
        return;
    // Drawn in the map's own pixels, its pixel ratio set again at the end.
    const qreal ratio = baseMap.devicePixelRatio();
    const int width = baseMap.width();
    const int height = baseMap.height();
    baseMap = topoMaster.scaled(width, height, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    // The pieces are cut from the map at its own size, so that a map wider
    // or narrower than the master shows each column of the world once. At
    // the master's own size this is the master itself.
    const QPixmap unrolled = baseMap;

    QPainter painter(&baseMap);
    painter.setOpacity(1.0);
    if (mapOffset > 0) {
        const int split = MapRollSplit(width, mapOffset);
        if (SplitInsideMap(split, width))
            DrawPieces(painter, unrolled, RollAt(width, height, split));
    }

    // The grid stays fixed to the screen whatever the roll.
    const QRect map = baseMap.rect();
    if (latitudeLines) {
        for (int i = 1; i <= 17; ++i) {
            const int y = map.top() + int(i * double(height) / 18.0);
            painter.setPen(GridPen(i == 9));
            painter.drawLine(map.left() + 1, y, map.right() - 1, y);
        }
    }
    if (longitudeLines) {
        for (int i = 1; i <= 23; ++i) {
            const int x = map.left() + int(i * double(width) / 24.0);
            painter.setPen(GridPen(i == 12));
            painter.drawLine(x, map.top() + 1, x, map.bottom() - 1);
        }
    }
    painter.end();
    baseMap.setDevicePixelRatio(ratio);
}

QString LatitudeLabelText(int value)
{
    if (value >= 1)
        return QString::asprintf("+%02d", value);
    if (value == 0)
        return QString::asprintf(" %2d", value);
    return QString::asprintf("%02d", value);
}

QString LongitudeLabelText(int i, int mapOffset)
{
    // 64-bit so that an odd offset from the settings cannot overflow.
    long long hour = (long long)mapOffset - i + 12;
    if (hour < 0)
        hour += 24;
    else if (hour >= 24)
        hour -= 24;
    return QString::asprintf("%02lldh", hour);
}

namespace {

// A black scale of `size` with `ratio` pixels to each of the label's.
QPixmap ScalePixmap(QSize size, qreal ratio)
{
    QPixmap scale(size * ratio);
    scale.setDevicePixelRatio(ratio);
    return scale;
}

} // namespace

QPixmap LatitudeLabels(QSize labelSize, int mapHeight, qreal ratio)
{
    QPixmap scale = ScalePixmap(labelSize, ratio);
    if (scale.isNull())
        return scale;
    QPainter painter(&scale);
    BlankScale(painter, scale.rect());
    for (int i = 0; i <= 18; ++i) {
        const double y = i * (mapHeight / 18.0);
        int baseline = int(y) + 4;
        if (i == 0)
            baseline = 10; // keep +90 inside the top edge
        else if (i == 18)
            baseline = int(y - 3.0); // and -90 inside the bottom edge
        painter.drawText(0, baseline, LatitudeLabelText(90 - 10 * i));
    }
    painter.end();
    return scale;
}

QPixmap LongitudeLabels(QSize labelSize, int mapWidth, int mapOffset, qreal ratio)
{
    QPixmap scale = ScalePixmap(labelSize, ratio);
    if (scale.isNull())
        return scale;
    QPainter painter(&scale);
    BlankScale(painter, scale.rect());
    const int baseline = labelSize.height() - 5;
    for (int i = 0; i <= 24; ++i) {
        const int x = int(i * double(mapWidth) / 24.0) + 12;
        painter.drawText(x, baseline, LongitudeLabelText(i, mapOffset));
    }
    painter.end();
    return scale;
}

void DrawRolled(QPainter &painter, const QPixmap &layer, int mapWidth, int mapOffset)
{
    const int split = OverlayRollSplit(mapWidth, mapOffset);
    if (mapOffset == 0 || !SplitInsideMap(split, mapWidth)) {
        painter.drawPixmap(0, 0, layer);
        return;
    }
    const int height = int(std::lround(layer.height() / layer.devicePixelRatio()));
    DrawPieces(painter, layer, RollAt(mapWidth, height, split));
}

namespace {

// The pieces that put the sky image's reference column under Sagittarius.
RolledPieces SkyRoll(int width, int height, int column, int sagittariusX, bool debug)
{
    const bool left = sagittariusX <= column;
    int64_t shift = int64_t(column) - sagittariusX + (left ? 0 : width);
    // Sagittarius off the map (a negative x) or a reference column beyond a
    // small map would cut pieces outside the image; the roll repeats every
    // map width, so fold the shift back into it.
    if (shift < 0 || shift > width)
        shift = (shift % width + width) % width;

    if (debug) {
        if (left)
            qDebug("Shifting source_overlay to the LEFT by %d pixels", int(shift));
        else
            qDebug("Shifting source_overlay to the RIGHT by %d pixels", int(shift));
    }
    return RollAt(width, height, int(shift));
}

} // namespace

void RollSkyOverlay(QPixmap &target, const QPixmap &source, int column, int sagittariusX,
                    bool debug)
{
    if (target.isNull() || source.isNull())
        return;
    const RolledPieces pieces = SkyRoll(source.width(), source.height(), column, sagittariusX, debug);
    QPainter painter(&target);
    DrawPieces(painter, source, pieces);
    if (debug) {
        LogCopy(pieces.firstSource, pieces.firstTarget);
        LogCopy(pieces.secondSource, pieces.secondTarget);
    }
}

void DrawSkyRolled(QPainter &painter, const QImage &source, int column, int sagittariusX)
{
    if (source.isNull())
        return;
    const RolledPieces pieces = SkyRoll(source.width(), source.height(), column, sagittariusX, false);
    painter.drawImage(QRectF(pieces.firstTarget), source, QRectF(pieces.firstSource));
    painter.drawImage(QRectF(pieces.secondTarget), source, QRectF(pieces.secondSource));
}

} // namespace lunaquill
