// The star charts drawn for real with OpenGL and read back. Runs on the xcb
// platform under Xvfb; without a display or a context every test skips.
#include "app/MainWindow.h"
#include "ui_MainWindow.h"

#include "SharedStateReset.h"
#include "render/Projection.h"
#include "render/StarChartRenderer.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QPointer>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace lunaquill;

namespace {

// A 720 x 360 map (two pixels a degree) of 10-degree cells, each its own
// colour: red from the column (180 W first), green from the row (90 N first).
QRgb CellColour(double latitude, double longitude)
{
    const int column = int(std::floor((longitude + 180.0) / 10.0)) % 36;
    const int row = int(std::floor((90.0 - latitude) / 10.0));
    return qRgb(20 + 6 * ((column + 36) % 36), 20 + 12 * row, 90);
}

QPixmap CellMap()
{
    QImage map(720, 360, QImage::Format_RGB32);
    for (int y = 0; y < 360; ++y)
        for (int x = 0; x < 720; ++x)
            map.setPixel(x, y, CellColour(90.0 - (y + 0.5) / 2.0, (x + 0.5) / 2.0 - 180.0));
    return QPixmap::fromImage(map);
}

// Where (latitude, longitude) appears on a size x size chart seen from above
// the station, worked from the station's east, north and up directions: the
// camera 2.7 radii from the centre, a 45-degree field of view.
QPoint Seen(double stationLatitude, double stationLongitude, double latitude,
            double longitude, int size)
{
    const double d = M_PI / 180.0, a = stationLatitude * d, b = stationLongitude * d;
    const double p[3] = {std::cos(latitude * d) * std::cos(longitude * d),
                         std::cos(latitude * d) * std::sin(longitude * d),
                         std::sin(latitude * d)};
    const double east = -std::sin(b) * p[0] + std::cos(b) * p[1];
    const double north = -std::sin(a) * std::cos(b) * p[0] - std::sin(a) * std::sin(b) * p[1]
                         + std::cos(a) * p[2];
    const double up = std::cos(a) * std::cos(b) * p[0] + std::cos(a) * std::sin(b) * p[1]
                      + std::sin(a) * p[2];
    const double scale = 1.0 / std::tan(22.5 * d) / (2.7 - up);
    return QPoint(int(std::floor((1.0 + east * scale) * size / 2.0)),
                  int(std::floor((1.0 - north * scale) * size / 2.0)));
}

class StarChartRenderTest : public testing::Test
{
protected:
    void SetUp() override
    {
        test::ResetSharedState();
        renderer = std::make_unique<StarChartRenderer>();
        if (!renderer->initialise())
            GTEST_SKIP() << "no OpenGL context on this display";
    }

    QImage Render(const QPixmap &overlay, double latitude, double longitude)
    {
        QImage target(400, 400, QImage::Format_RGB32);
        renderer->render(overlay, target, float(latitude), float(longitude));
        return target;
    }

    std::unique_ptr<StarChartRenderer> renderer;
};

TEST_F(StarChartRenderTest, StationAtTheCentreEastRightNorthUp)
{
    const QPixmap overlay = CellMap();
    // Stations at cell centres; the points one cell away on each side.
    const struct { double latitude, longitude; } stations[] = {
        {45, -65}, {-35, 155}, {5, 95}, {75, 5}, {-5, -175}, // the last straddles 180
    };
    const struct { double north, east; } offsets[] = {{0, 0}, {0, 10}, {10, 0}, {0, -10}, {-10, 0}};
    for (const auto &s : stations) {
        const QImage chart = Render(overlay, s.latitude, s.longitude);
        ASSERT_EQ(chart.size(), QSize(400, 400));
        // The outline: 200 tan(asin(1 / 2.7)) / tan 22.5 = 192.5 pixels from
        // the centre; the cleared background stays transparent.
        EXPECT_EQ(qAlpha(chart.pixel(389, 200)), 255);
        EXPECT_EQ(qAlpha(chart.pixel(396, 200)), 0);
        for (const auto &o : offsets) {
            const double latitude = s.latitude + o.north, longitude = s.longitude + o.east;
            const QPoint at = Seen(s.latitude, s.longitude, latitude, longitude, 400);
            EXPECT_EQ(QColor(chart.pixel(at)).rgb(),
                      CellColour(latitude, longitude > 180 ? longitude - 360 : longitude))
                << "station " << s.latitude << "," << s.longitude << " point " << latitude << ","
                << longitude << " at " << at.x() << "," << at.y();
        }
        // Hand check of the projection for one point: 10 degrees east on the
        // equator is x = sin 10 / (2.7 - cos 10) / tan 22.5 = 0.2444 of the
        // half-width, 48.9 pixels right of the centre.
        if (s.latitude == 5) {
            EXPECT_EQ(Seen(0, 95, 0, 105, 400), QPoint(248, 200));
        }
    }
}

TEST_F(StarChartRenderTest, LongitudeNinetyTurnsOnlyAboutX)
{
    Render(CellMap(), 30.0, 90.0);
    // A turn of 30 degrees about x alone: cos 30 = 0.8660, sin 30 = 0.5.
    const QMatrix4x4 &m = renderer->modelMatrix();
    EXPECT_FLOAT_EQ(m(0, 0), 1.0f);
    EXPECT_FLOAT_EQ(m(0, 2), 0.0f);
    EXPECT_FLOAT_EQ(m(2, 0), 0.0f);
    EXPECT_NEAR(m(1, 1), 0.8660254, 1e-6);
    EXPECT_NEAR(m(1, 2), -0.5, 1e-6);
    EXPECT_NEAR(m(2, 1), 0.5, 1e-6);
}

TEST_F(StarChartRenderTest, TextureReusedOnlyWhileTheOverlayIsUnchanged)
{
    // The second chart of a refresh reuses the first one's texture: the
    // picture is the same as a fresh renderer's.
    QPixmap overlay = CellMap();
    Render(overlay, 45, -65);
    const QImage reused = Render(overlay, -35, 155);
    StarChartRenderer fresh;
    ASSERT_TRUE(fresh.initialise());
    QImage target(400, 400, QImage::Format_RGB32);
    fresh.render(overlay, target, -35.0f, 155.0f);
    EXPECT_EQ(reused, target);

    // A changed overlay is taken up at once.
    QPainter(&overlay).fillRect(overlay.rect(), Qt::white);
    EXPECT_EQ(QColor(Render(overlay, -35, 155).pixel(200, 200)).rgb(), qRgb(255, 255, 255));
}

TEST(StarChartWindow, ChartsFollowTheStationsAndTheRendererTheWindow)
{
    test::ResetSharedState();
    CopyField(dxStation.grid, "HM13ma"); // the North Atlantic, 33 N 37 W
    dxStation.latitude = 33.0;
    dxStation.longitude = -37.0;
    dxStationSet = 1;
    auto window = std::make_unique<MainWindow>();
    QPointer<StarChartRenderer> renderer = window->findChild<StarChartRenderer *>();
    ASSERT_TRUE(renderer);
    if (!renderer->isReady())
        GTEST_SKIP() << "no OpenGL context on this display";
    // No home station (a first run sets JJ00aa) and every layer off: the
    // overlay is the plain map, smooth over the ocean.
    homeData.grid[0] = '\0';
    homeStationSet = 0;
    overlaySettings = {};
    window->resize(1640, 960);
    window->show();
    QApplication::processEvents();
    Ui::MainWindow *ui = window->widgets();

    // The chart's centre is the map at the station; without a home station
    // the first chart is the plain dial.
    auto centreMatchesMap = [&](QLabel *chart, double latitude, double longitude) {
        const QImage overlay = window->screenOverlayPixmap().toImage();
        const QColor expected = overlay.pixel(LatLongToPoint(1600, 800, 0, latitude, longitude));
        const QColor centre = chart->pixmap().toImage().pixel(395, 395);
        EXPECT_NEAR(centre.red(), expected.red(), 6);
        EXPECT_NEAR(centre.green(), expected.green(), 6);
        EXPECT_NEAR(centre.blue(), expected.blue(), 6);
    };
    window->ViewModeButtonPressed();
    const QImage dial = QPixmap(QDir::currentPath() + "/pixmaps/dial.png")
                            .scaled(790, 790, Qt::KeepAspectRatio)
                            .toImage();
    EXPECT_EQ(ui->StarChart1->pixmap().toImage().convertToFormat(dial.format()), dial);
    centreMatchesMap(ui->StarChart2, 33.0, -37.0);

    CopyField(homeData.grid, "DG87ma"); // the South Pacific, 23 S 103 W
    homeData.latitude = -23.0;
    homeData.longitude = -103.0;
    homeStationSet = 1;
    window->TimeAdjusted();
    centreMatchesMap(ui->StarChart1, -23.0, -103.0);

    // Both charts whole and round, side by side over the map.
    const QRect left = ui->StarChart1->geometry(), right = ui->StarChart2->geometry();
    EXPECT_EQ(left.size(), QSize(790, 790));
    EXPECT_EQ(right.size(), QSize(790, 790));
    EXPECT_LE(left.right(), right.left());
    EXPECT_TRUE(ui->WorldMap->geometry().contains(left.united(right)));

    // Back and forth many times: the same renderer throughout, released with
    // the window (the sanitizer build finds anything left behind).
    for (int i = 0; i < 10; ++i)
        window->ViewModeButtonPressed();
    EXPECT_TRUE(ui->StarChart1->isVisible());
    EXPECT_EQ(window->findChild<StarChartRenderer *>(), renderer.data());
    window.reset();
    EXPECT_TRUE(renderer.isNull());
}

} // namespace
