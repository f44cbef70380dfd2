#include "ShadeOverlay.h"

#include "Projection.h"

#include <QColor>
#include <QImage>
#include <QPainter>

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace lunaquill {

namespace {

// Sine and cosine of each column's longitude, shared by every call and every
// body; never freed.
struct ColumnTables {
    float *sine = nullptr;
    float *cosine = nullptr;
    int width = 0;
    int builds = 0;
};
ColumnTables columnTables;

// Makes the tables for `width` columns unless they already exist. False when
// the memory cannot be had; the tables are then empty and the recorded width
// is left as it was, so the next call tries again.
bool PrepareColumnTables(int width)
{
    if (width == columnTables.width && columnTables.sine && columnTables.cosine)
        return true;
    free(columnTables.sine);
    free(columnTables.cosine);
    const size_t bytes = size_t(width < 0 ? 0 : width) * sizeof(float);
    columnTables.sine = static_cast<float *>(malloc(bytes));
    columnTables.cosine = static_cast<float *>(malloc(bytes));
    if (width > 0 && (!columnTables.sine || !columnTables.cosine)) {
        free(columnTables.sine);
        free(columnTables.cosine);
        columnTables.sine = nullptr;
        columnTables.cosine = nullptr;
        return false;
    }
    for (int c = 0; c < width; ++c) {
        // Single-precision storage of double-precision steps, as the map has
        // always been shaded.
        float longitude = ((float)c / (float)width - 0.5) * 360.0;
        longitude = longitude * kDrawDegToRad;
        columnTables.sine[c] = std::sin(longitude);
        columnTables.cosine[c] = std::cos(longitude);
    }
    columnTables.width = width;
    ++columnTables.builds;
    return true;
}

// The body's direction scaled by the strength: (a, b, c) = strength *
// (sin lon cos lat, sin lat, cos lon cos lat).
struct BodyVector {
    float a, b, c;
};

BodyVector MakeBodyVector(double latitude, double longitude, double strength)
{
    const float sinLatitude = std::sin(float(latitude * kDrawDegToRad));
    const float cosLatitude = std::cos(float(latitude * kDrawDegToRad));
    const float sinLongitude = std::sin(float(longitude * kDrawDegToRad));
    const float cosLongitude = std::cos(float(longitude * kDrawDegToRad));
    return BodyVector{float(sinLongitude * cosLatitude * strength),
                      float(sinLatitude * strength),
                      float(cosLongitude * cosLatitude * strength)};
}

// What stays constant along a row: v = p * cos[c] + q * sin[c] + r.
struct RowTerms {
    float p, q, r;
};

RowTerms MakeRowTerms(const BodyVector &body, int row, int height)
{
    // Sampled at the row's upper edge, so row 0 lies at exactly 90 N.
    const float latitude = ((float)row / (float)height - 0.5) * -180.0 * kDrawDegToRad;
    const float sinLatitude = std::sin(latitude);
    const float cosLatitude = std::cos(latitude);
    return RowTerms{body.c * cosLatitude, body.a * cosLatitude, body.b * sinLatitude};
}

inline int ShadeGrey(const RowTerms &row, int column)
{
    float v = row.p * columnTables.cosine[column] + row.q * columnTables.sine[column] + row.r;
    if (!(v >= 0.0f)) // below the horizon, or NaN from a NaN sub-point
        v = 0.0f;
    if (v > 1.0)
        v = 1.0;
    return int(v * 255.0) & 0xff;
}

} // namespace

bool PrepareShadeColumns(int width)
{
    return PrepareColumnTables(width);
}

QImage ShadeImage(QSize size, double latitude, double longitude, double strength)
{
    const int width = size.width();
    const int height = size.height();
    // The tables are only read here; they are made by PrepareShadeColumns.
    if (width <= 0 || height <= 0 || width != columnTables.width || !columnTables.sine
        || !columnTables.cosine)
        return QImage();
    QImage image(width, height, QImage::Format_RGB32);
    if (image.isNull())
        return image;
    const BodyVector body = MakeBodyVector(latitude, longitude, strength);
    for (int r = 0; r < height; ++r) {
        const RowTerms row = MakeRowTerms(body, r, height);
        QRgb *line = reinterpret_cast<QRgb *>(image.scanLine(r));
        for (int c = 0; c < width; ++c) {
            const int grey = ShadeGrey(row, c);
            line[c] = qRgb(grey, grey, grey);
        }
    }
    return image;
}

void PaintShade(QPixmap &layer, QImage image)
{
    if (image.isNull() || image.size() != layer.size())
        return;
    image.setDevicePixelRatio(layer.devicePixelRatio()); // pixel for pixel on a scaled screen
    // A layer of the picture's own format becomes the picture itself: the
    // same pixels as copying it in, without the copy.
    if (layer.toImage().format() == image.format()) {
        layer = QPixmap::fromImage(std::move(image));
        return;
    }
    QPainter painter(&layer);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(0, 0, image);
}

void CreateShadeOverlay(QPixmap &layer, double latitude, double longitude, double strength)
{
    if (!PrepareShadeColumns(layer.width()))
        return;
    PaintShade(layer, ShadeImage(layer.size(), latitude, longitude, strength));
}

bool SameShadeRequest(const ShadeRequest &a, const ShadeRequest &b)
{
    auto same = [](double x, double y) { return memcmp(&x, &y, sizeof x) == 0; };
    return a.wanted == b.wanted && a.size == b.size && same(a.latitude, b.latitude)
           && same(a.longitude, b.longitude) && same(a.strength, b.strength);
}

int ShadeColumnTableWidth()
{
    return columnTables.width;
}

int ShadeColumnTableBuilds()
{
    return columnTables.builds;
}

} // namespace lunaquill
