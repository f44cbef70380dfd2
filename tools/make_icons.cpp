// Draws the map icons (Sun, Moon, planets, station dish, menu) and the sky
// dial of the star charts; the icons also at twice the pixels, as
// "<name>@2x.png", for scaled screens.
// Usage: make_icons <out-folder>
#include "render/SkyDial.h"

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <cstdio>

namespace {

// Pixels per unit of the drawings below: 2 for the "@2x" images, whose
// painters then draw the same shapes at twice the detail.
double canvasRatio = 1.0;

QImage Canvas(int width, int height)
{
    QImage image(int(width * canvasRatio), int(height * canvasRatio), QImage::Format_ARGB32);
    image.setDevicePixelRatio(canvasRatio);
    image.fill(Qt::transparent);
    return image;
}

void Antialias(QPainter &painter)
{
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
}

// A shaded ball, lit from the upper left, with a darker rim so it stands out
// on both the dark ocean and the white ice of the map.
void DrawBall(QPainter &painter, QPointF centre, double radius, QColor colour)
{
    QRadialGradient shade(centre, radius, centre - QPointF(radius, radius) * 0.4);
    shade.setColorAt(0.0, colour.lighter(135));
    shade.setColorAt(0.6, colour);
    shade.setColorAt(1.0, colour.darker(150));
    painter.setPen(QPen(colour.darker(260), 1.0));
    painter.setBrush(shade);
    painter.drawEllipse(centre, radius, radius);
}

QImage Planet(int size, QColor colour)
{
    QImage image = Canvas(size, size);
    QPainter painter(&image);
    Antialias(painter);
    DrawBall(painter, QPointF(size / 2.0, size / 2.0), size / 2.0 - 1.5, colour);
    return image;
}

QImage Jupiter()
{
    QImage image = Planet(20, QColor(222, 190, 145));
    QPainter painter(&image);
    Antialias(painter);
    QPainterPath disc;
    disc.addEllipse(QPointF(10, 10), 7.5, 7.5);
    painter.setClipPath(disc);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(150, 95, 55, 190));
    painter.drawRect(QRectF(0, 6.2, 20, 2.0));   // north equatorial belt
    painter.drawRect(QRectF(0, 11.3, 20, 1.8));  // south equatorial belt
    painter.setBrush(QColor(150, 95, 55, 110));
    painter.drawRect(QRectF(0, 3.5, 20, 1.0));
    painter.drawRect(QRectF(0, 15.0, 20, 1.0));
    painter.setBrush(QColor(190, 80, 50, 220));
    painter.drawEllipse(QPointF(12.5, 13.2), 1.4, 0.9);  // the Great Red Spot
    return image;
}

QImage Saturn()
{
    QImage image = Canvas(32, 20);
    QPainter painter(&image);
    Antialias(painter);
    const QPointF centre(16, 10);
    painter.translate(centre);
    painter.rotate(-16);
    auto drawRing = [&painter]() {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(120, 95, 60), 3.4));
        painter.drawEllipse(QPointF(0, 0), 13.3, 4.3);
        painter.setPen(QPen(QColor(235, 215, 165), 2.0));
        painter.drawEllipse(QPointF(0, 0), 13.3, 4.3);
    };
    drawRing();  // the far side, hidden behind the globe where they cross
    DrawBall(painter, QPointF(0, 0), 6.6, QColor(225, 200, 140));
    painter.setClipRect(QRectF(-16, 0.6, 32, 10));  // the near side crosses in front
    drawRing();
    return image;
}

QImage Moon()
{
    QImage image = Planet(24, QColor(200, 200, 196));
    QPainter painter(&image);
    Antialias(painter);
    QPainterPath disc;
    disc.addEllipse(QPointF(12, 12), 10.0, 10.0);
    painter.setClipPath(disc);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(95, 95, 100, 150));
    painter.drawEllipse(QPointF(8.5, 8.0), 3.6, 3.0);    // Mare Imbrium
    painter.drawEllipse(QPointF(13.5, 8.5), 2.2, 2.0);   // Mare Serenitatis
    painter.drawEllipse(QPointF(15.0, 11.8), 2.6, 2.0);  // Mare Tranquillitatis
    painter.drawEllipse(QPointF(19.3, 9.5), 1.4, 1.6);   // Mare Crisium
    painter.drawEllipse(QPointF(6.0, 12.5), 2.6, 4.2);   // Oceanus Procellarum
    painter.drawEllipse(QPointF(10.5, 16.5), 2.2, 1.5);  // Mare Nubium
    painter.drawEllipse(QPointF(16.0, 15.5), 1.5, 1.3);  // Mare Nectaris
    return image;
}

QImage Sun()
{
    QImage image = Canvas(24, 24);
    QPainter painter(&image);
    Antialias(painter);
    painter.translate(12, 12);
    painter.setPen(QPen(QColor(200, 110, 0), 0.8));
    painter.setBrush(QColor(255, 170, 20));
    for (int ray = 0; ray < 12; ++ray) {
        QPolygonF spike;
        spike << QPointF(-2.0, -6.5) << QPointF(0, -11.6) << QPointF(2.0, -6.5);
        painter.drawPolygon(spike);
        painter.rotate(30);
    }
    QRadialGradient glow(QPointF(0, 0), 7.5, QPointF(-2, -2));
    glow.setColorAt(0.0, QColor(255, 255, 200));
    glow.setColorAt(0.5, QColor(255, 225, 40));
    glow.setColorAt(1.0, QColor(255, 160, 0));
    painter.setPen(QPen(QColor(210, 110, 0), 1.0));
    painter.setBrush(glow);
    painter.drawEllipse(QPointF(0, 0), 7.0, 7.0);
    return image;
}

// A parabolic dish on an elevation-over-azimuth mount, aimed up and to the right.
QImage Dish()
{
    QImage image = Canvas(24, 24);
    QPainter painter(&image);
    Antialias(painter);
    const QColor outline(40, 40, 45);
    painter.setPen(QPen(outline, 1.0));

    painter.setBrush(QColor(150, 150, 160));
    QPolygonF pedestal;
    pedestal << QPointF(10.5, 13) << QPointF(13.5, 13) << QPointF(15, 20) << QPointF(9, 20);
    painter.drawPolygon(pedestal);
    painter.drawRoundedRect(QRectF(5.5, 19.5, 13, 3), 1, 1);

    painter.translate(13, 9.5);
    painter.rotate(-45);  // local x runs along the dish axis
    QPainterPath bowl;
    bowl.moveTo(0, -9);
    bowl.quadTo(-10.5, 0, 0, 9);
    bowl.closeSubpath();
    QLinearGradient shine(-5, 0, 0, 0);
    shine.setColorAt(0, QColor(150, 155, 165));
    shine.setColorAt(1, QColor(250, 250, 252));
    painter.setBrush(shine);
    painter.drawPath(bowl);
    painter.setPen(QPen(QColor(140, 140, 150), 1.0));  // feed struts, seen on light and dark
    painter.drawLine(QPointF(0, -8.5), QPointF(6, 0));
    painter.drawLine(QPointF(0, 8.5), QPointF(6, 0));
    painter.setPen(QPen(outline, 0.8));
    painter.setBrush(QColor(230, 60, 40));
    painter.drawEllipse(QPointF(6, 0), 1.6, 1.6);  // feed horn
    return image;
}

QImage Menu()
{
    QImage image = Canvas(32, 32);
    QPainter painter(&image);
    Antialias(painter);
    painter.setPen(QPen(QColor(30, 30, 30), 1.0));
    painter.setBrush(QColor(245, 245, 245));
    for (double top : {7.5, 13.5, 19.5})
        painter.drawRoundedRect(QRectF(5.5, top, 21, 4), 2, 2);
    return image;
}

// The sky dial of the star charts, as the program draws it, at 512 pixels.
QImage Dial()
{
    QImage image = Canvas(512, 512);
    QPainter painter(&image);
    lunaquill::DrawSkyDial(painter, 512);
    return image;
}

bool Save(const QImage &image, const QString &folder, const char *name)
{
    QString path = folder + "/" + name;
    if (canvasRatio != 1.0)
        path.replace(".png", QString("@%1x.png").arg(canvasRatio));
    if (image.save(path, "png"))
        return true;
    std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_icons <out-folder>\n");
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");  // no display needed
    QGuiApplication app(argc, argv);  // text drawing needs the font database
    const QString folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);

    bool ok = Save(Dial(), folder, "dial.png");
    for (double ratio : {1.0, 2.0}) {
        canvasRatio = ratio;
        ok = ok && Save(Sun(), folder, "sun-icon.png") && Save(Moon(), folder, "moon-icon.png") &&
             Save(Planet(20, QColor(160, 158, 155)), folder, "mercury-icon.png") &&
             Save(Planet(20, QColor(240, 225, 165)), folder, "venus-icon.png") &&
             Save(Planet(20, QColor(215, 90, 45)), folder, "mars-icon.png") &&
             Save(Jupiter(), folder, "jupiter-icon.png") && Save(Saturn(), folder, "saturn-icon.png") &&
             Save(Planet(20, QColor(130, 220, 230)), folder, "uranus-icon.png") &&
             Save(Planet(20, QColor(60, 100, 230)), folder, "neptune-icon.png") &&
             Save(Planet(16, QColor(165, 145, 125)), folder, "pluto-icon.png") &&
             Save(Dish(), folder, "dish-icon.png") && Save(Menu(), folder, "menu-icon.png");
    }
    return ok ? 0 : 1;
}
