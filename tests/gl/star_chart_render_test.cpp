// The chart sphere's mesh, and the star charts drawn with OpenGL and read back, on the xcb
// platform under Xvfb; without a display or a context the drawing test skips.
#include "app/MainWindow.h"
#include "ui_MainWindow.h"

#include "SharedStateReset.h"
#include "render/Projection.h"
#include "render/SkyDial.h"
#include "render/SphereMesh.h"
#include "render/StarChartRenderer.h"

#include <QApplication>
#include <QPainter>
#include <QPointer>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <link.h>

#include <cmath>
#include <cstring>
#include <memory>

using namespace lunaquill;

namespace {

// A map of 10-degree cells, each its own colour: red from the column (180 W
// first), green from the row (90 N first). 720 x 360, two pixels a degree.
QRgb CellColour(double latitude, double longitude)
{
    const int column = int(std::floor((longitude + 540.0) / 10.0)) % 36;
    return qRgb(20 + 6 * column, 20 + 12 * int(std::floor((90.0 - latitude) / 10.0)), 90);
}

// Where (latitude, longitude) appears on a 400-pixel chart seen from above
// the station, from the station's east, north and up directions: the camera
// 2.7 radii from the centre, a 45-degree field of view.
QPoint Seen(double stationLatitude, double stationLongitude, double latitude, double longitude)
{
    const double d = M_PI / 180.0, a = stationLatitude * d, b = stationLongitude * d;
    const double x = std::cos(latitude * d) * std::cos(longitude * d),
                 y = std::cos(latitude * d) * std::sin(longitude * d), z = std::sin(latitude * d);
    const double east = -std::sin(b) * x + std::cos(b) * y;
    const double north = -std::sin(a) * (std::cos(b) * x + std::sin(b) * y) + std::cos(a) * z;
    const double up = std::cos(a) * (std::cos(b) * x + std::sin(b) * y) + std::sin(a) * z;
    const double scale = 200.0 / std::tan(22.5 * d) / (2.7 - up);
    return QPoint(int(std::floor(200.0 + east * scale)), int(std::floor(200.0 - north * scale)));
}

// Mesa unloads its driver when the display closes, before the leak check at
// exit; the blocks the driver's own static data still held then look leaked.
// Keep every loaded driver mapped to the end.
void KeepGlDriversLoaded()
{
    dl_iterate_phdr([](dl_phdr_info *info, size_t, void *) {
        if (info->dlpi_name && strstr(info->dlpi_name, "/dri/"))
            dlopen(info->dlpi_name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
        return 0;
    }, nullptr);
}

TEST(SphereMesh, CountsVerticesAndIndices)
{
    const SphereMesh mesh = BuildSphereMesh();
    ASSERT_EQ(mesh.vertices.size(), 101u * 102u);
    ASSERT_EQ(mesh.indices.size(), 60600u);
    // Ring 51: v = 51 / 101 = 0.5049505, phi = pi (v - 0.5) = 0.0155524 rad,
    // sin phi = 0.0155518, cos phi = 0.9998791; segment 25 is theta = pi / 2.
    const float s = 0.0155518f, c = 0.9998791f, v = 0.5049505f;
    const struct { int index; float x, y, z, u, v; } rows[] = {
        {0, 0, -1, 0, 0, 0},     // first: the south pole
        {50 * 102 + 51, -c, s, 0, 0.5f, v}, {25 * 102 + 51, 0, s, c, 0.25f, v},
        {10301, 0, 1, 0, 1, 1},  // last: the north pole
    };
    for (const auto &r : rows) {
        const SphereVertex &p = mesh.vertices[r.index];
        for (auto [got, want] :
             {std::pair{p.x, r.x}, {p.y, r.y}, {p.z, r.z}, {p.u, r.u}, {p.v, r.v}})
            EXPECT_NEAR(got, want, 1e-6) << "vertex " << r.index;
    }
}

// The texture's bytes against Qt's own turn and conversion, the whole image in one band and
// in bands of 16 rows and the rest, on odd sizes (a row of 7 pixels has no middle pair), with
// the unused byte of an opaque pixel written as 0x00: the conversion sets alpha all the same.
TEST(TurnRows, AsQtTurnsAndConvertsToRgba8888)
{
    for (const QSize size : {QSize(7, 5), QSize(1600, 801), QSize(1, 1)}) {
        QImage image(size, QImage::Format_RGB32);
        uint32_t seed = 7;
        for (int y = 0; y < image.height(); ++y) {
            auto *row = reinterpret_cast<quint32 *>(image.scanLine(y));
            for (int x = 0; x < image.width(); ++x) {
                seed = seed * 1664525u + 1013904223u;
                row[x] = seed & (x % 2 ? 0x00ffffffu : 0xffffffffu);
            }
        }
        const QImage rgba = image.mirrored(true, true).convertToFormat(QImage::Format_RGBA8888);
        const QImage turnedBack = rgba.mirrored(true, true); // RGBA8888 already: turned only
        const int width = size.width(), height = size.height();
        for (int band : {height, 16}) {
            std::vector<quint32> turned(size_t(width) * height), again(turned.size());
            for (int first = 0; first < height; first += band) {
                const int count = std::min(band, height - first);
                TurnRows(image, first, count, true, turned.data() + size_t(first) * width);
                TurnRows(rgba, first, count, false, again.data() + size_t(first) * width);
            }
            for (int y = 0; y < height; ++y) {
                ASSERT_EQ(std::memcmp(turned.data() + size_t(y) * width, rgba.constScanLine(y), 4 * width), 0)
                    << width << "x" << height << " in bands of " << band << ", row " << y;
                ASSERT_EQ(std::memcmp(again.data() + size_t(y) * width, turnedBack.constScanLine(y), 4 * width), 0)
                    << width << "x" << height << " in bands of " << band << ", row " << y;
            }
        }
    }
}

TEST(StarChartRender, StationAtTheCentreEastRightNorthUpAndTheWindowsCharts)
{
    test::ResetSharedState();
    CopyField(dxStation.grid, "HM13ma"); // the North Atlantic, 33 N 37 W
    dxStation.latitude = 33.0;
    dxStation.longitude = -37.0;
    auto window = std::make_unique<MainWindow>();
    QPointer<StarChartRenderer> renderer = window->findChild<StarChartRenderer *>();
    if (!renderer->isReady())
        GTEST_SKIP() << "no OpenGL context on this display";
    KeepGlDriversLoaded();
    auto render = [&](const QPixmap &overlay, float latitude, float longitude, int side = 400) {
        QImage target(side, side, QImage::Format_RGB32);
        renderer->render(overlay, target, latitude, longitude);
        return target;
    };
    // 10 degrees east on the equator: sin 10 / (2.7 - cos 10) / tan 22.5 =
    // 0.2444 of the half-width, 48.9 pixels right of the centre.
    ASSERT_EQ(Seen(0, 95, 0, 105), QPoint(248, 200));

    QImage cells(720, 360, QImage::Format_RGB32);
    for (int y = 0; y < 360; ++y)
        for (int x = 0; x < 720; ++x)
            cells.setPixel(x, y, CellColour(90.0 - (y + 0.5) / 2.0, (x + 0.5) / 2.0 - 180.0));
    QPixmap overlay = QPixmap::fromImage(cells);
    // Stations at cell centres (the last straddles 180); points a cell away.
    const struct { float latitude, longitude; } stations[] = {
        {45, -65}, {-35, 155}, {75, 5}, {-5, -175}};
    const struct { float north, east; } offsets[] = {{0, 0}, {0, 10}, {10, 0}, {0, -10}, {-10, 0}};
    for (const auto &s : stations) {
        const QImage chart = render(overlay, s.latitude, s.longitude);
        // The outline 200 tan(asin(1 / 2.7)) / tan 22.5 = 192.5 pixels out, then background.
        EXPECT_EQ(qAlpha(chart.pixel(389, 200)), 255);
        EXPECT_EQ(qAlpha(chart.pixel(396, 200)), 0);
        for (const auto &o : offsets) {
            const double latitude = s.latitude + o.north, longitude = s.longitude + o.east;
            const QPoint at = Seen(s.latitude, s.longitude, latitude, longitude);
            EXPECT_EQ(QColor(chart.pixel(at)).rgb(), CellColour(latitude, longitude))
                << s.latitude << "," << s.longitude << " to " << latitude << "," << longitude;
        }
    }
    // The charts of a refresh share the overlay's texture; a changed overlay is taken up at once.
    QPainter(&overlay).fillRect(overlay.rect(), Qt::white);
    EXPECT_EQ(QColor(render(overlay, -35, 155).pixel(200, 200)), QColor(Qt::white));

    // The quick path (one texture updated in place, no depth buffer, its own read-back) against
    // the reference path (a new texture from a turned copy of each overlay, the depth test, Qt's
    // read-back), pixel for pixel: maps of single-pixel noise at the window's size in
    // the two formats an overlay comes in (opaque, uploaded as it is; premultiplied, converted),
    // seen from stations all over at several sizes. Each overlay is new, so the kept texture is
    // written over each time, and once at another size.
    auto noiseMap = [](QSize size, QImage::Format format, uint32_t seed) {
        QImage noise(size, QImage::Format_ARGB32);
        for (int y = 0; y < noise.height(); ++y)
            for (int x = 0; x < noise.width(); ++x) {
                seed = seed * 1664525u + 1013904223u;
                const int alpha = format == QImage::Format_RGB32 ? 255 : int(seed & 0xff);
                noise.setPixel(x, y, qRgba(seed >> 24, (seed >> 16) & 0xff, (seed >> 8) & 0xff, alpha));
            }
        return QPixmap::fromImage(noise.convertToFormat(format));
    };
    const struct { QImage::Format format; QSize size; } maps[] = {
        {QImage::Format_RGB32, {1600, 800}}, {QImage::Format_ARGB32_Premultiplied, {1600, 800}},
        {QImage::Format_RGB32, {2000, 1000}}, {QImage::Format_RGB32, {1600, 800}}};
    const std::pair<float, float> places[] = {{0.f, 0.f}, {42.5f, -71.0f}, {-33.9f, 151.2f},
                                              {89.0f, 10.0f}, {-60.0f, -179.5f}, {-89.5f, 95.0f}};
    int seed = 1;
    for (const auto &map : maps)
        for (int side : {400, 771, 1187}) {
            const QPixmap busy = noiseMap(map.size, map.format, uint32_t(seed++));
            ASSERT_EQ(busy.toImage().format(), map.format);
            for (const auto &[latitude, longitude] : places) {
                renderer->setReferencePath(true);
                const QImage reference = render(busy, latitude, longitude, side);
                renderer->setReferencePath(false);
                const QImage quick = render(busy, latitude, longitude, side);
                ASSERT_EQ(quick.format(), reference.format());
                EXPECT_EQ(quick, reference) << map.format << " " << map.size.width() << " map, "
                                            << side << " px, " << latitude << "," << longitude;
            }
        }
    // No two faces overlap, so the depth test decides nothing: a station every 7.5 degrees of
    // latitude, 20 of longitude, on the window's chart size.
    const QPixmap busy = noiseMap({1600, 800}, QImage::Format_RGB32, 99);
    for (float latitude = -90.0f; latitude <= 90.0f; latitude += 7.5f)
        for (float longitude = -180.0f; longitude < 180.0f; longitude += 20.0f) {
            renderer->setReferencePath(true);
            const QImage reference = render(busy, latitude, longitude, 771);
            renderer->setReferencePath(false);
            EXPECT_EQ(render(busy, latitude, longitude, 771), reference) << latitude << "," << longitude;
        }

    // The window's own: no home station (a first run sets JJ00aa), its position in the Sahara,
    // and every layer off: the overlay is the plain map. The DX station stands in the Sahara
    // too, so a chart turned for the unrolled map would show the Atlantic at its centre.
    homeData.grid[0] = '\0';
    homeStationSet = 0;
    homeData.latitude = 23.0;
    homeData.longitude = 10.0;
    dxStation.latitude = 23.0;
    dxStation.longitude = 10.0;
    overlaySettings = {};
    window->resize(1640, 960);
    window->show();
    QApplication::processEvents();
    Ui::MainWindow *ui = window->widgets();
    window->ViewModeButtonPressed();

    // No home station: the plain dial, drawn at the chart's size.
    const QImage dial = SkyDial(ui->StarChart1->size(), 1.0).toImage();
    ASSERT_EQ(dial.size(), QSize(790, 790));
    EXPECT_EQ(ui->StarChart1->pixmap().toImage().convertToFormat(dial.format()), dial);
    // At any map offset the DX station's pixel of the rolled overlay is the chart's centre.
    for (int offset : {0, 6, 13}) {
        overlaySettings.MapOffset = offset;
        window->DrawMapOverlay();
        window->TimeAdjusted();
        const QRgb want = window->screenOverlayPixmap().toImage().pixel(
            LatLongToPoint(1600, 800, offset, 23.0, 10.0));
        const QImage chart = ui->StarChart2->pixmap().toImage().convertToFormat(dial.format());
        const QRgb got = chart.pixel(chart.width() / 2, chart.height() / 2);
        EXPECT_LE(std::abs(qRed(got) - qRed(want)) + std::abs(qGreen(got) - qGreen(want))
                      + std::abs(qBlue(got) - qBlue(want)), 12)
            << "offset " << offset << ": " << std::hex << got << " for " << want;
        if (offset != 0)
            continue;
        // The globe fills the face inside the ring (radius 0.94 * 395 = 371.3 about the
        // centre, 395.0): 2 pixels inside it, in all four directions, the globe; 2 pixels
        // beyond, the ring's inner circle, untouched.
        for (const QPoint direction : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)}) {
            const QPoint inside = QPoint(395, 395) + direction * 369 - (direction.x() + direction.y() > 0 ? direction : QPoint());
            const QPoint ring = QPoint(395, 395) + direction * 373 - (direction.x() + direction.y() > 0 ? direction : QPoint());
            EXPECT_NE(chart.pixel(inside), dial.pixel(inside)) << inside.x() << "," << inside.y();
            EXPECT_EQ(chart.pixel(ring), dial.pixel(ring)) << ring.x() << "," << ring.y();
        }
    }
    // The renderer is released with the window (the sanitizer build finds anything left).
    window.reset();
    EXPECT_TRUE(renderer.isNull());
}

} // namespace
