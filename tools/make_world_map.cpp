// Scales NASA's Blue Marble (xplanet-images: earth.jpg, 2048x1024,
// equirectangular, 180 W at the left, 90 N at the top) to the 1600x800 map
// the program loads.
// Usage: make_world_map <unpacked xplanet-images folder> <out.jpg>
#include <QCoreApplication>
#include <QImage>
#include <QImageWriter>

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_world_map <unpacked-folder> <out-file>\n");
        return 2;
    }
    QCoreApplication app(argc, argv);  // sets the plugin paths for the JPEG writer
    const QString source = QString::fromLocal8Bit(argv[1]) + "/usr/share/xplanet/images/earth.jpg";
    QImage earth(source);
    if (earth.isNull()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(source));
        return 1;
    }
    const QImage map = earth.convertToFormat(QImage::Format_RGB32)
                           .scaled(1600, 800, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);

    QImageWriter writer(QString::fromLocal8Bit(argv[2]), "jpg");
    writer.setQuality(90);
    writer.setProgressiveScanWrite(false);  // baseline JPEG
    writer.setOptimizedWrite(true);
    if (!writer.write(map)) {
        std::fprintf(stderr, "cannot write %s: %s\n", argv[2], qPrintable(writer.errorString()));
        return 1;
    }
    return 0;
}
