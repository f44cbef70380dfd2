// Draws the application icon for the desktop menu: a station dish under a
// night sky, its signal going up to the Moon and the echo coming back. One
// list of shapes is written both as a scalable SVG and as PNGs of the usual
// hicolor theme sizes, so the two always agree.
// Usage: make_app_icon <out-folder>   (writes <out-folder>/hicolor/...)
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QTransform>

#include <cstdio>
#include <vector>

namespace {

constexpr double kCanvas = 256.0;  // the shapes are drawn on a 256 x 256 canvas
constexpr int kPngSizes[] = {16, 24, 32, 48, 64, 128, 256};

struct Shape
{
    QPainterPath path;
    QBrush fill;  // Qt::NoBrush, a colour or a gradient in canvas coordinates
    QPen pen;     // Qt::NoPen or a solid colour
};

QPen Stroke(QColor colour, double width)
{
    QPen pen(colour, width);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

QPainterPath Circle(QPointF centre, double rx, double ry)
{
    QPainterPath path;
    path.addEllipse(centre, rx, ry);
    return path;
}

std::vector<Shape> IconShapes()
{
    std::vector<Shape> shapes;
    QPainterPath tile;
    tile.addRoundedRect(QRectF(12, 12, 232, 232), 44, 44);
    QLinearGradient night(0, 12, 0, 244);
    night.setColorAt(0, QColor(8, 18, 48));
    night.setColorAt(1, QColor(30, 64, 122));
    shapes.push_back({tile, night, QPen(QColor(4, 10, 30), 4)});

    for (const QPointF star : {QPointF(46, 52), QPointF(92, 34), QPointF(70, 96),
                               QPointF(220, 168), QPointF(116, 74)})
        shapes.push_back({Circle(star, 3.2, 3.2), QColor(235, 240, 255), Qt::NoPen});

    // The dish, aimed at the Moon; its feed sends the signal and hears the echo.
    const QPointF moon(170, 84);
    QTransform aim;  // along the dish axis: x towards the Moon
    aim.translate(84, 160);
    aim.rotate(-42);
    const QPointF feed = aim.map(QPointF(24, 0));

    // The signal up and its echo back, side by side, running under the Moon's disc.
    const QPointF side = aim.map(QPointF(0, 5)) - aim.map(QPointF(0, 0));
    QPainterPath up, down;
    up.moveTo(feed - side);
    up.lineTo(moon - side);
    down.moveTo(moon + side);
    down.lineTo(feed + side);
    shapes.push_back({up, Qt::NoBrush, Stroke(QColor(255, 206, 60), 6)});
    shapes.push_back({down, Qt::NoBrush, Stroke(QColor(255, 128, 48), 6)});

    // The Moon, lit from the upper left, with its darker maria.
    QRadialGradient light(moon, 54, moon - QPointF(20, 20));
    light.setColorAt(0.0, QColor(250, 250, 244));
    light.setColorAt(0.6, QColor(206, 206, 200));
    light.setColorAt(1.0, QColor(140, 140, 136));
    shapes.push_back({Circle(moon, 52, 52), light, QPen(QColor(70, 70, 76), 2.5)});
    const QColor mare(95, 95, 104, 140);
    shapes.push_back({Circle(moon + QPointF(-16, -14), 15, 12), mare, Qt::NoPen});
    shapes.push_back({Circle(moon + QPointF(8, -12), 9, 8), mare, Qt::NoPen});
    shapes.push_back({Circle(moon + QPointF(14, 4), 11, 8), mare, Qt::NoPen});
    shapes.push_back({Circle(moon + QPointF(-26, 10), 10, 16), mare, Qt::NoPen});
    shapes.push_back({Circle(moon + QPointF(-4, 24), 9, 6), mare, Qt::NoPen});

    // The ground: the lower part of the tile under a gentle hill.
    QPainterPath hill;
    hill.addEllipse(QPointF(110, 420), 260, 220);
    QLinearGradient grass(0, 196, 0, 244);
    grass.setColorAt(0, QColor(40, 110, 60));
    grass.setColorAt(1, QColor(18, 60, 34));
    shapes.push_back({tile.intersected(hill), grass, Qt::NoPen});

    // The dish on its pedestal.
    QPainterPath pedestal;
    pedestal.addPolygon(QPolygonF({QPointF(74, 168), QPointF(90, 168), QPointF(100, 212),
                                   QPointF(64, 212)}));
    pedestal.closeSubpath();
    shapes.push_back({pedestal, QColor(150, 152, 162), QPen(QColor(30, 30, 36), 3)});
    QPainterPath bowl;
    bowl.moveTo(0, -46);
    bowl.quadTo(-52, 0, 0, 46);
    bowl.closeSubpath();
    QLinearGradient shine(aim.map(QPointF(-26, 0)), aim.map(QPointF(0, 0)));
    shine.setColorAt(0, QColor(150, 156, 168));
    shine.setColorAt(1, QColor(252, 252, 255));
    shapes.push_back({aim.map(bowl), shine, QPen(QColor(30, 30, 36), 3)});
    QPainterPath struts;
    struts.moveTo(aim.map(QPointF(0, -44)));
    struts.lineTo(aim.map(QPointF(24, 0)));
    struts.lineTo(aim.map(QPointF(0, 44)));
    shapes.push_back({struts, Qt::NoBrush, Stroke(QColor(40, 40, 46), 3)});
    shapes.push_back({Circle(feed, 6, 6), QColor(230, 60, 40),
                      QPen(QColor(30, 30, 36), 2)});
    return shapes;
}

QString Number(double value)
{
    QString text = QString::number(value, 'f', 2);
    while (text.contains('.') && (text.endsWith('0') || text.endsWith('.')))
        text.chop(1);
    return text == "-0" ? "0" : text;
}

QString Point(QPointF p)
{
    return Number(p.x()) + " " + Number(p.y());
}

// SVG path data of a painter path: moves, lines and cubic curves.
QString PathData(const QPainterPath &path)
{
    QString data;
    QPointF start;
    auto closeIfBack = [&](QPointF at) {
        if (!data.isEmpty() && at == start)
            data += "Z";
    };
    QPointF last;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        switch (e.type) {
        case QPainterPath::MoveToElement:
            closeIfBack(last);
            start = e;
            data += "M" + Point(e);
            break;
        case QPainterPath::LineToElement:
            data += "L" + Point(e);
            break;
        case QPainterPath::CurveToElement:
            data += "C" + Point(e) + " " + Point(path.elementAt(i + 1)) + " " +
                    Point(path.elementAt(i + 2));
            i += 2;
            break;
        case QPainterPath::CurveToDataElement:
            break;
        }
        last = path.elementAt(i);
    }
    closeIfBack(last);
    return data;
}

QString Paint(const QColor &colour, const char *what)
{
    QString text = QString(" %1=\"%2\"").arg(what, colour.name(QColor::HexRgb));
    if (colour.alpha() != 255)
        text += QString(" %1-opacity=\"%2\"").arg(what, Number(colour.alphaF()));
    return text;
}

QString Stops(const QGradient &gradient)
{
    QString text;
    for (const auto &[at, colour] : gradient.stops()) {
        text += QString("<stop offset=\"%1\" stop-color=\"%2\"/>")
                    .arg(Number(at), colour.name(QColor::HexRgb));
    }
    return text;
}

QString Svg(const std::vector<Shape> &shapes)
{
    QString defs, body;
    int gradients = 0;
    for (const Shape &shape : shapes) {
        QString attributes;
        if (const QGradient *gradient = shape.fill.gradient()) {
            const QString id = QString("g%1").arg(++gradients);
            if (gradient->type() == QGradient::LinearGradient) {
                const auto *linear = static_cast<const QLinearGradient *>(gradient);
                defs += QString("<linearGradient id=\"%1\" gradientUnits=\"userSpaceOnUse\" "
                                "x1=\"%2\" y1=\"%3\" x2=\"%4\" y2=\"%5\">")
                            .arg(id, Number(linear->start().x()), Number(linear->start().y()),
                                 Number(linear->finalStop().x()),
                                 Number(linear->finalStop().y())) +
                        Stops(*gradient) + "</linearGradient>\n";
            } else {
                const auto *radial = static_cast<const QRadialGradient *>(gradient);
                defs += QString("<radialGradient id=\"%1\" gradientUnits=\"userSpaceOnUse\" "
                                "cx=\"%2\" cy=\"%3\" r=\"%4\" fx=\"%5\" fy=\"%6\">")
                            .arg(id, Number(radial->center().x()), Number(radial->center().y()),
                                 Number(radial->radius()), Number(radial->focalPoint().x()),
                                 Number(radial->focalPoint().y())) +
                        Stops(*gradient) + "</radialGradient>\n";
            }
            attributes += QString(" fill=\"url(#%1)\"").arg(id);
        } else if (shape.fill.style() == Qt::NoBrush) {
            attributes += " fill=\"none\"";
        } else {
            attributes += Paint(shape.fill.color(), "fill");
        }
        if (shape.pen.style() != Qt::NoPen) {
            attributes += Paint(shape.pen.color(), "stroke") +
                          QString(" stroke-width=\"%1\"").arg(Number(shape.pen.widthF()));
            if (shape.pen.capStyle() == Qt::RoundCap)
                attributes += " stroke-linecap=\"round\" stroke-linejoin=\"round\"";
        }
        if (shape.path.fillRule() == Qt::OddEvenFill)
            attributes += " fill-rule=\"evenodd\"";
        body += QString("<path d=\"%1\"%2/>\n").arg(PathData(shape.path), attributes);
    }
    return QString("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%1\" "
                   "viewBox=\"0 0 %1 %1\">\n<defs>\n%2</defs>\n%3</svg>\n")
        .arg(Number(kCanvas), defs, body);
}

QImage Png(const std::vector<Shape> &shapes, int size)
{
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.scale(size / kCanvas, size / kCanvas);
    for (const Shape &shape : shapes) {
        painter.setBrush(shape.fill);
        painter.setPen(shape.pen);
        painter.drawPath(shape.path);
    }
    return image;
}

bool Write(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size())
        return true;
    std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_app_icon <out-folder>\n");
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");  // no display needed
    QGuiApplication app(argc, argv);
    const QString theme = QString::fromLocal8Bit(argv[1]) + "/hicolor/";
    const std::vector<Shape> shapes = IconShapes();

    bool ok = Write(theme + "scalable/apps/lunaquill.svg", Svg(shapes).toUtf8());
    for (int size : kPngSizes) {
        const QString path = theme + QString("%1x%1/apps/lunaquill.png").arg(size);
        QDir().mkpath(QFileInfo(path).path());
        if (!Png(shapes, size).save(path, "png")) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            ok = false;
        }
    }
    return ok ? 0 : 1;
}
