#include "SkyDial.h"

#include <QFont>
#include <QPainterPath>

#include <algorithm>

namespace lunaquill {

void DrawSkyDial(QPainter &painter, double size)
{
    // Drawn for a 512-pixel dial and scaled: the text, ticks and lines keep
    // their proportions at any size.
    constexpr double design = 512, radius = design / 2, ringInner = radius * kDialFaceFraction;
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.scale(size / design, size / design);
    painter.translate(radius, radius);

    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawEllipse(QPointF(0, 0), radius, radius);
    painter.setBrush(QColor(28, 30, 38));
    QPainterPath ring;
    ring.addEllipse(QPointF(0, 0), radius - 1, radius - 1);
    ring.addEllipse(QPointF(0, 0), ringInner, ringInner);
    painter.drawPath(ring);

    const QColor tickColour(170, 175, 190);
    painter.setPen(QPen(tickColour, 1.2));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QPointF(0, 0), ringInner + 1, ringInner + 1);

    QFont font("DejaVu Sans");
    font.setPixelSize(14);
    font.setBold(true);
    painter.setFont(font);
    const double band = radius - ringInner, bandMiddle = -(radius + ringInner) / 2;
    const QRectF textBox(-20, bandMiddle - band / 2, 40, band);
    for (int azimuth = 0; azimuth < 360; azimuth += 10) {
        painter.save();
        painter.rotate(azimuth); // clockwise from north, as azimuth runs
        if (azimuth % 30 != 0) {
            painter.setPen(QPen(tickColour, 2.0));
            painter.drawLine(QPointF(0, -ringInner - 1), QPointF(0, -radius + 4));
        } else {
            static const char *const cardinal[] = {"N", "E", "S", "W"};
            const QString label =
                azimuth % 90 == 0 ? cardinal[azimuth / 90] : QString::number(azimuth);
            painter.setPen(azimuth == 0 ? QColor(255, 90, 70) : QColor(235, 235, 240));
            if (azimuth > 90 && azimuth < 270) { // keep the lower labels upright
                painter.translate(0, bandMiddle);
                painter.rotate(180);
                painter.translate(0, -bandMiddle);
            }
            painter.drawText(textBox, Qt::AlignCenter, label);
        }
        painter.restore();
    }
    painter.restore();
}

QRectF DialFace(double size)
{
    const double radius = size / 2 * kDialFaceFraction;
    return QRectF(size / 2 - radius, size / 2 - radius, 2 * radius, 2 * radius);
}

QPixmap SkyDial(QSize labelSize, qreal devicePixelRatio)
{
    static QPixmap made;
    static QSize madeFor;
    static qreal madeAt = 0;
    if (labelSize.isEmpty() || devicePixelRatio <= 0)
        return QPixmap();
    if (!made.isNull() && madeFor == labelSize && madeAt == devicePixelRatio)
        return made;
    QPixmap dial(labelSize * devicePixelRatio);
    dial.setDevicePixelRatio(devicePixelRatio);
    dial.fill(Qt::transparent);
    QPainter painter(&dial);
    DrawSkyDial(painter, std::min(labelSize.width(), labelSize.height()));
    painter.end();
    made = dial;
    madeFor = labelSize;
    madeAt = devicePixelRatio;
    return made;
}

} // namespace lunaquill
