// The world map: projection, its layers, the mouse read-out and the charts.
#include "MainWindow.h"

#include "ImageRoot.h"
#include "PanelText.h"
#include "ui_MainWindow.h"

#include "render/MapLayers.h"
#include "render/Projection.h"
#include "render/ShadeOverlay.h"
#include "tracking/ComputeSource.h"
#include "tracking/Maidenhead.h"
#include "tracking/SharedState.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>

#include <cstring>

using namespace lunaquill;

namespace {

// Logs the shifts of the sky overlay when set (off by default).
bool skyOverlayDebug = false;

// The map point of a source's sub-point, or false for a record never computed.
bool SubPointOf(const SourceTrack &record) { return record.valid != 0; }

QPixmap LoadImage(const char *name)
{
    return QPixmap(ImageRoot(QDir::currentPath(), QCoreApplication::applicationDirPath()) + name);
}

} // namespace

// --- projection -------------------------------------------------------------

void MainWindow::LatLongToPoint(double latitude, double longitude, QPoint &point)
{
    const QRect map = ui->WorldMap->geometry();
    point = lunaquill::LatLongToPoint(map.width(), map.height(), overlaySettings.MapOffset,
                                      latitude, longitude);
}

QPoint MainWindow::AzAltToDial(QRect rect, double azimuth, double altitude)
{
    return lunaquill::AzAltToDial(rect, azimuth, altitude);
}

void MainWindow::MapPixelToDialPixel(QPoint point, int centreX, int centreY, int &x, int &y)
{
    lunaquill::MapPixelToDialPixel(point, centreX, centreY, x, y);
}

void MainWindow::worldToSpherical(int x, int y, int z, double &u, double &v)
{
    WorldToSpherical(x, y, z, u, v);
}

void MainWindow::cart2pol(int x, int y, double &radius, double &angle)
{
    Cart2Pol(x, y, radius, angle);
}

void MainWindow::pol2cart(double radius, double angle, int &x, int &y)
{
    Pol2Cart(radius, angle, x, y);
}

// --- mouse ------------------------------------------------------------------

bool MainWindow::MapPointFromMouse(QPoint windowPosition, double &latitude, double &longitude,
                                   char *grid7)
{
    if (!MouseToMap(windowPosition, ui->WorldMap->geometry(), ui->centralWidget->geometry(),
                    overlaySettings.MapOffset, latitude, longitude))
        return false;
    return LatLongToGrid(grid7, latitude, longitude) == 0;
}

void MainWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (overlaySettings.StarChartOverlay)
        return;
    const QPoint position = event->position().toPoint();
    double latitude, longitude;
    if (!MouseToMap(position, ui->WorldMap->geometry(), ui->centralWidget->geometry(),
                    overlaySettings.MapOffset, latitude, longitude)) {
        if (hoverVisible) {
            redrawRequested = true;
            hoverVisible = false;
        }
        return;
    }
    char grid[7];
    if (LatLongToGrid(grid, latitude, longitude) != 0)
        return;
    const QRect map = ui->WorldMap->geometry();
    const int left = position.x() + 125 <= map.right() ? position.x() : map.right() - 140;
    const int top = std::min(position.y(), map.bottom()) - 35;
    hoverBox = QRect(left, top, 125, 35);
    hoverMouseX = position.x();
    hoverLatitude = latitude;
    hoverLongitude = longitude;
    memcpy(hoverGrid, grid, sizeof hoverGrid);
    redrawRequested = true;
    hoverVisible = true;
}

void MainWindow::mousePressEvent(QMouseEvent *event)
{
    if (overlaySettings.StarChartOverlay)
        return;
    double latitude, longitude;
    char grid[7];
    if (!MapPointFromMouse(event->position().toPoint(), latitude, longitude, grid))
        return;
    if (event->button() == Qt::LeftButton) {
        CopyField(dxStation.grid, grid);
        dxStation.latitude = latitude;
        dxStation.longitude = longitude;
        ui->DxGrid->setText(QString::fromLatin1(grid));
        ui->DxLatitude->setText(Printf("%0.2f", latitude));
        ui->DxLongitude->setText(Printf("%0.2f", longitude));
        dxStationSet = 1;
        redrawRequested = true;
    }
    UpdateDisplay();
}

// --- images -----------------------------------------------------------------

void MainWindow::LoadPixmaps()
{
    menuIcon = LoadImage("/pixmaps/menu-icon.png");
    stationIcon = LoadImage("/pixmaps/dish-icon.png");
    dxStationIcon = LoadImage("/pixmaps/dish-icon.png");
    moonIcon = LoadImage("/pixmaps/moon-icon.png");
    sunIcon = LoadImage("/pixmaps/sun-icon.png");
    mercuryIcon = LoadImage("/pixmaps/mercury-icon.png");
    venusIcon = LoadImage("/pixmaps/venus-icon.png");
    marsIcon = LoadImage("/pixmaps/mars-icon.png");
    jupiterIcon = LoadImage("/pixmaps/jupiter-icon.png");
    saturnIcon = LoadImage("/pixmaps/saturn-icon.png");
    uranusIcon = LoadImage("/pixmaps/uranus-icon.png");
    neptuneIcon = LoadImage("/pixmaps/neptune-icon.png");
    plutoIcon = LoadImage("/pixmaps/pluto-icon.png");
    topoMaster = LoadImage("/pixmaps/nasa-topo_1600.jpg");
    if (topoMaster.isNull())
        return; // no map: it stays blank

    loadingPixmaps = true;
    mapLoaded = true;
    windowRect = geometry();
    qDebug("Screen size is (%d x %d)", windowRect.width(), windowRect.height());
    qDebug("Screen Geometry (%d,%d to %d,%d)", windowRect.left(), windowRect.top(),
           windowRect.right(), windowRect.bottom());
    const QRect map = ui->WorldMap->geometry();
    qDebug("WorldMap size is: (%d x %d)", map.width(), map.height());
    qDebug("WorldMap Geometry (%d,%d to %d,%d)", map.left(), map.top(), map.right(), map.bottom());
    latStripRect = ui->LatitudeFrameR->geometry();
    qDebug("Lat labels size is: (%d x %d)", latStripRect.width(), latStripRect.height());
    qDebug("Lat labels Geometry (%d,%d to %d,%d)", latStripRect.left(), latStripRect.top(),
           latStripRect.right(), latStripRect.bottom());
    lngStripRect = ui->LongitudeFrame->geometry();
    qDebug("Lng labels size is: (%d x %d)", lngStripRect.width(), lngStripRect.height());
    qDebug("Lng labels Geometry (%d,%d to %d,%d)", lngStripRect.left(), lngStripRect.top(),
           lngStripRect.right(), lngStripRect.bottom());

    baseMap = topoMaster.scaled(map.size(), Qt::IgnoreAspectRatio, Qt::FastTransformation);
    sunShade = baseMap;
    moonShade = baseMap;
    skyNoiseMaster = LoadImage("/pixmaps/skynoise_1600.png");
    if (!skyNoiseMaster.isNull())
        scaledSkyNoise = skyNoiseMaster.scaled(map.size(), Qt::IgnoreAspectRatio,
                                               Qt::FastTransformation);
    skyLayer = QPixmap(map.size());
    skyLayer.fill(Qt::black);
    screenOverlay = QPixmap(map.size());
    DrawMapOverlay();
    ui->WorldMap->setPixmap(baseMap);
    ui->WorldMap->show();

    dialMaster = LoadImage("/pixmaps/dial.png");
    if (!dialMaster.isNull())
        dialScaled = dialMaster.scaled(ui->StarChart1->size(), Qt::KeepAspectRatio);
    ui->WorldMap->setVisible(!overlaySettings.StarChartOverlay);
    ui->StarChart1->setVisible(overlaySettings.StarChartOverlay);
    ui->StarChart2->setVisible(overlaySettings.StarChartOverlay);
    loadingPixmaps = false;
}

void MainWindow::DrawMapOverlay()
{
    if (baseMap.isNull())
        return;
    DrawBaseMap(baseMap, topoMaster, overlaySettings.MapOffset, overlaySettings.LatitudeGridlines,
                overlaySettings.LongitudeGridlines);
    DrawLatitudeLabels();
    DrawLongitudeLabels();
}

void MainWindow::DrawLatitudeLabels()
{
    const QPixmap labels = LatitudeLabels(ui->LatitudeFrameR->size(), ui->WorldMap->height());
    ui->LatitudeFrameR->setPixmap(labels);
    ui->LatitudeFrameL->setPixmap(labels);
    ui->LatitudeFrameR->update();
    ui->LatitudeFrameL->update();
}

void MainWindow::DrawLongitudeLabels()
{
    ui->LongitudeFrame->setPixmap(LongitudeLabels(ui->LongitudeFrame->size(),
                                                  ui->WorldMap->width(),
                                                  overlaySettings.MapOffset));
    ui->LongitudeFrame->update();
}

// --- layers -----------------------------------------------------------------

void MainWindow::CreateShadeOverlay(QPixmap &layer, double latitude, double longitude,
                                    double strength)
{
    lunaquill::CreateShadeOverlay(layer, latitude, longitude, strength);
}

void MainWindow::CreateSkyOverlay(QPixmap &target, const QPixmap &source, int column)
{
    if (!homeTracks[SagittariusA].valid || source.isNull() || target.isNull())
        return;
    QPoint sagittarius;
    LatLongToPoint(homeTracks[SagittariusA].subLatitude, homeTracks[SagittariusA].subLongitude,
                   sagittarius);
    RollSkyOverlay(target, source, column, sagittarius.x(), skyOverlayDebug);
}

void MainWindow::DrawOverlay(QPainter &painter, const QPixmap &layer)
{
    DrawRolled(painter, layer, ui->WorldMap->width(), overlaySettings.MapOffset);
}

void MainWindow::CreateScreenOverlay()
{
    if (baseMap.isNull())
        return;
    screenOverlay = baseMap.copy();
    QPainter painter(&screenOverlay);
    const OverlaySettings &on = overlaySettings;

    if (on.SkyNoiseOverlay && !skyLayer.isNull()) {
        painter.setOpacity(0.4);
        painter.drawPixmap(0, 0, skyLayer);
    }
    if (on.StarsOverlay) {
        painter.setBrush(QBrush(Qt::lightGray, Qt::SolidPattern));
        painter.setOpacity(0.5);
        for (int c = 0; c < 88; ++c)
            DrawMapStars(painter, c);
    }
    if (on.ConstellationsOverlay) {
        painter.setOpacity(1.0);
        painter.setPen(Qt::black);
        for (int c = 0; c < 88; ++c)
            DrawMapConstellation(painter, c);
    }

    // Radio sources only together with the sky noise.
    painter.setPen(Qt::yellow);
    painter.setBrush(QBrush(Qt::yellow, Qt::SolidPattern));
    painter.setOpacity(1.0);
    if (on.SkyNoiseOverlay) {
        static const char *const names[12] = {"Sagittarius", "Cassiopeia", "Cygnus", "Taurus",
                                              "Virgo", "Centaurus", "Orion", "M17", "Perseus",
                                              "Aquarius", "Leo", "Pictor"};
        for (uint32_t id = SagittariusA; id <= Pictor; ++id) {
            const SourceTrack &source = homeTracks[id];
            if (!SubPointOf(source))
                continue;
            QPoint p;
            LatLongToPoint(source.subLatitude, source.subLongitude, p);
            p.setX(p.x() + 6);
            painter.drawEllipse(p, 2, 2);
            const char *name = names[id - SagittariusA];
            painter.drawText(p.x() - 3 * (int)strlen(name), p.y() - 8, QString::fromLatin1(name));
        }
    }

    painter.setOpacity(0.4);
    if (SubPointOf(homeTracks[Sun]) && on.SunShadingOverlay)
        DrawOverlay(painter, sunShade);
    if (SubPointOf(homeTracks[Moon]) && on.MoonShadingOverlay)
        DrawOverlay(painter, moonShade);

    painter.setOpacity(1.0);
    const struct { uint32_t id; bool shown; const QPixmap &icon; } bodies[] = {
        {Sun, on.SunOverlay, sunIcon},         {Moon, on.MoonOverlay, moonIcon},
        {Mercury, on.MercuryOverlay, mercuryIcon}, {Mars, on.MarsOverlay, marsIcon},
        {Venus, on.VenusOverlay, venusIcon},   {Jupiter, on.JupiterOverlay, jupiterIcon},
        {Saturn, on.SaturnOverlay, saturnIcon}, {Neptune, on.NeptuneOverlay, neptuneIcon},
        {Uranus, on.UranusOverlay, uranusIcon}, {Pluto, on.PlutoOverlay, plutoIcon},
    };
    for (const auto &body : bodies) {
        const SourceTrack &track = homeTracks[body.id];
        if (!body.shown || !SubPointOf(track) || body.icon.isNull())
            continue;
        QPoint p;
        LatLongToPoint(track.subLatitude, track.subLongitude, p);
        painter.drawPixmap(p.x() - body.icon.width() / 2, p.y() - body.icon.height() / 2, body.icon);
    }
    if (on.FavoriteStationsOverlay)
        DrawFavorites(painter, "Favorites.txt");
}

void MainWindow::DrawMap()
{
    ui->StarChart1->hide();
    ui->StarChart2->hide();
    ui->WorldMap->show();
    if (screenOverlay.isNull())
        return;
    QPixmap map = screenOverlay.copy();
    QPainter painter(&map);
    painter.setPen(Qt::black);

    auto drawStation = [&](const QPixmap &icon, double latitude, double longitude) {
        if (icon.isNull())
            return;
        QPoint p;
        LatLongToPoint(latitude, longitude, p);
        painter.drawPixmap(p.x() - icon.width() / 2, p.y() - icon.height() / 2, icon);
    };
    if (homeStationSet)
        drawStation(stationIcon, homeData.latitude, homeData.longitude);
    if (dxStationSet)
        drawStation(dxStationIcon, dxStation.latitude, dxStation.longitude);

    if (hoverVisible) {
        painter.fillRect(hoverBox, Qt::black);
        painter.setPen(Qt::cyan);
        painter.drawText(hoverBox.x() + 5, hoverBox.y() + 15,
                         Printf("%s  %-5.2f, %-5.2f", hoverGrid, hoverLatitude, hoverLongitude));
        // The Moon as an observer at the hovered point sees it now.
        SourceTrack moon{};
        ComputeSource(Moon, TrackPosition, DisplayedUtc(), hoverLatitude, hoverLongitude,
                      homeData.frequency, moon);
        if (moon.elevation < 0)
            painter.setPen(Qt::gray);
        painter.drawText(hoverBox.x() + 5, hoverBox.y() + 30,
                         Printf("AZ: %-5.2f EL: %-5.2f", moon.azimuth, moon.elevation));
    }
    painter.end();
    ui->WorldMap->setPixmap(map);
}

// --- stars, constellations, favourites, charts --------------------------------

void MainWindow::StarAttributes(double magnitude, double colourIndex, QColor &colour, int &size)
{
    size = magnitude < 0 ? 2 : 1;
    const struct { double below; const char *name; } scale[] = {
        {-0.16, "#a09eff"}, {0.15, "#a0d7ff"}, {0.45, "#d7e8ff"}, {0.68, "#ffffff"},
        {1.15, "#ffffdc"},  {1.6, "#ffe6aa"},
    };
    for (const auto &step : scale) {
        if (colourIndex < step.below) {
            colour = QColor(step.name);
            return;
        }
    }
    colour = QColor("#ffd7b1");
}

// The star and constellation tables and the favourites lists are not part of
// the program yet: these layers draw nothing until they are.
void MainWindow::DrawMapStars(QPainter &painter, int constellation)
{
    Q_UNUSED(painter);
    Q_UNUSED(constellation);
}

void MainWindow::DrawMapConstellation(QPainter &painter, int constellation)
{
    Q_UNUSED(painter);
    Q_UNUSED(constellation);
}

void MainWindow::DrawFavorites(QPainter &painter, const QString &fileName)
{
    Q_UNUSED(painter);
    Q_UNUSED(fileName);
}

namespace {

// The plain dial on a chart label; the sphere is drawn over it by the chart
// renderer once there is one.
void ShowDial(QLabel *chart, const QPixmap &dial)
{
    if (!dial.isNull())
        chart->setPixmap(dial.copy(0, 0, chart->width(), chart->height()));
    chart->show();
}

} // namespace

void MainWindow::DrawStarChart1()
{
    if (!overlaySettings.StarChartOverlay)
        return;
    ui->WorldMap->hide();
    ShowDial(ui->StarChart1, dialScaled);
}

void MainWindow::DrawStarChart2()
{
    if (!overlaySettings.StarChartOverlay)
        return;
    ui->WorldMap->hide();
    ShowDial(ui->StarChart2, dialScaled);
}
