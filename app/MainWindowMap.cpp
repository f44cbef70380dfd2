// The world map: projection, its layers, the mouse read-out and the charts.
#include "MainWindow.h"

#include "ImageRoot.h"
#include "PanelText.h"
#include "Settings.h"
#include "ui_MainWindow.h"

#include "render/MapLayers.h"
#include "render/Projection.h"
#include "render/ShadeOverlay.h"
#include "render/SkyDial.h"
#include "render/SkyLayers.h"
#include "render/StarChartRenderer.h"
#include "tracking/ComputeSource.h"
#include "tracking/FavoriteList.h"
#include "tracking/Maidenhead.h"
#include "tracking/SharedState.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>

#include <cstring>
#include <memory>

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

// An icon; on a scaled screen its "@2x" drawing where there is one, so that
// it is drawn sharp (the painter shows it at the icon's own size).
QPixmap LoadIcon(const QByteArray &name, qreal ratio)
{
    if (ratio > 1.0) {
        QPixmap sharp = LoadImage(QByteArray(name).replace(".png", "@2x.png").constData());
        if (!sharp.isNull()) {
            sharp.setDevicePixelRatio(2.0);
            return sharp;
        }
    }
    return LoadImage(name.constData());
}

// Where an icon goes so that its centre lies on `p`.
QPoint IconCorner(const QPoint &p, const QPixmap &icon)
{
    const QSizeF size = icon.deviceIndependentSize();
    return p - QPoint(int(size.width()) / 2, int(size.height()) / 2);
}

// The map as the sky layers see it, at the displayed instant.
SkyView SkyViewOf(const QRect &map)
{
    return {map.width(), map.height(), overlaySettings.MapOffset, DisplayedUtc()};
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
    // The map's top row lies at latitude 90, whose locator (field letter S)
    // is none: a click there sets no station.
    double centreLatitude, centreLongitude;
    return LatLongToGrid(grid7, latitude, longitude) == 0 &&
           GridToLatLong(grid7, centreLatitude, centreLongitude) == 0;
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
    LoadIcons();
    topoMaster = LoadImage("/pixmaps/nasa-topo_1600.jpg");
    if (topoMaster.isNull())
        return; // no map: it stays blank

    loadingPixmaps = true;
    mapLoaded = true;
    windowRect = geometry();
    qDebug("Screen size is (%d x %d)", windowRect.width(), windowRect.height());
    qDebug("Screen Geometry (%d,%d to %d,%d)", windowRect.left(), windowRect.top(),
           windowRect.right(), windowRect.bottom());
    mapRect = ui->WorldMap->geometry();
    qDebug("WorldMap size is: (%d x %d)", mapRect.width(), mapRect.height());
    qDebug("WorldMap Geometry (%d,%d to %d,%d)", mapRect.left(), mapRect.top(), mapRect.right(),
           mapRect.bottom());
    latStripRect = ui->LatitudeFrameR->geometry();
    qDebug("Lat labels size is: (%d x %d)", latStripRect.width(), latStripRect.height());
    qDebug("Lat labels Geometry (%d,%d to %d,%d)", latStripRect.left(), latStripRect.top(),
           latStripRect.right(), latStripRect.bottom());
    lngStripRect = ui->LongitudeFrame->geometry();
    qDebug("Lng labels size is: (%d x %d)", lngStripRect.width(), lngStripRect.height());
    qDebug("Lng labels Geometry (%d,%d to %d,%d)", lngStripRect.left(), lngStripRect.top(),
           lngStripRect.right(), lngStripRect.bottom());

    skyNoiseMaster = LoadImage("/pixmaps/skynoise_1600.png");
    MakeMapImages();
    ui->WorldMap->setPixmap(baseMap);
    ui->WorldMap->show();

    dialMaster = LoadImage("/pixmaps/dial.png");
    PlaceCharts();
    ui->WorldMap->setVisible(!overlaySettings.StarChartOverlay);
    ui->StarChart1->setVisible(overlaySettings.StarChartOverlay);
    ui->StarChart2->setVisible(overlaySettings.StarChartOverlay);
    loadingPixmaps = false;
}

void MainWindow::LoadIcons()
{
    const struct { QPixmap &icon; const char *name; } icons[] = {
        {menuIcon, "menu"},       {stationIcon, "dish"},   {dxStationIcon, "dish"},
        {moonIcon, "moon"},       {sunIcon, "sun"},        {mercuryIcon, "mercury"},
        {venusIcon, "venus"},     {marsIcon, "mars"},      {jupiterIcon, "jupiter"},
        {saturnIcon, "saturn"},   {uranusIcon, "uranus"},  {neptuneIcon, "neptune"},
        {plutoIcon, "pluto"},
    };
    const qreal ratio = devicePixelRatioF();
    for (const auto &entry : icons)
        entry.icon = LoadIcon(QByteArray("/pixmaps/") + entry.name + "-icon.png", ratio);
}

void MainWindow::MakeMapImages()
{
    const QSize map = ui->WorldMap->size();
    // The base map and the shades in the screen's own pixels, so that the
    // grid, the texts, the stars and the icons over them are drawn sharp on
    // a scaled screen; the sky noise is soft and stays at the map's size.
    const qreal ratio = devicePixelRatioF();
    baseMap = topoMaster.scaled(map * ratio, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    baseMap.setDevicePixelRatio(ratio);
    sunShade = baseMap;
    moonShade = baseMap;
    if (!skyNoiseMaster.isNull())
        scaledSkyNoise = skyNoiseMaster.scaled(map, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    skyLayer = QPixmap(map);
    skyLayer.fill(Qt::black);
    skyRoll = {};
    screenOverlay = QPixmap(map);
    DrawMapOverlay();
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
    const QPixmap labels = LatitudeLabels(ui->LatitudeFrameR->size(), ui->WorldMap->height(),
                                          devicePixelRatioF());
    ui->LatitudeFrameR->setPixmap(labels);
    ui->LatitudeFrameL->setPixmap(labels);
    ui->LatitudeFrameR->update();
    ui->LatitudeFrameL->update();
}

void MainWindow::DrawLongitudeLabels()
{
    ui->LongitudeFrame->setPixmap(LongitudeLabels(ui->LongitudeFrame->size(),
                                                  ui->WorldMap->width(),
                                                  overlaySettings.MapOffset, devicePixelRatioF()));
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
    if (&target == &skyLayer)
        skyRoll = {true, column, sagittarius.x()};
    if (&target != &skyLayer || baseMap.devicePixelRatio() != 1.0 || skyOverlayDebug)
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
    // Painted as an image: the star layer blends its thousands of tiny discs
    // straight into the pixels.
    QImage canvas;
    const OverlaySettings &on = overlaySettings;
    const bool skyShown = on.SkyNoiseOverlay && !skyLayer.isNull();
    if (baseMap.devicePixelRatio() == 1.0 && (!skyShown || skyRoll.made)) {
        // The sky layers as painted ahead, if they were painted for this;
        // while a worker still paints them, a shading picture no worker has
        // begun is made here meanwhile.
        if (skyCanvas.valid() && !skyCanvas.ready())
            moonPicture.image.runHereIfWaiting() || sunPicture.image.runHereIfWaiting();
        const SkyCanvasRequest request = SkyCanvasFor(skyRoll.sagittariusX);
        canvas = skyCanvas.valid() && SameSkyCanvas(skyCanvasRequest, request)
                     ? skyCanvas.get()
                     : PaintSkyCanvas(request);
    } else {
        // A scaled screen (the rolled sky layer stretched over the map's
        // pixels), or a sky layer not rolled since the map was made.
        canvas = baseMap.toImage();
        if (skyShown) {
            QPainter sky(&canvas);
            sky.setRenderHint(QPainter::SmoothPixmapTransform, canvas.devicePixelRatio() != 1.0);
            sky.setOpacity(0.4);
            sky.drawPixmap(0, 0, skyLayer);
        }
        PaintSkyObjects(canvas, SkyCanvasFor(0));
    }
    skyCanvas = {};
    const qreal ratio = canvas.devicePixelRatio();
    QPainter painter(&canvas);
    // On a scaled screen the icons' sharp drawings are fitted to its pixels.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, ratio != 1.0);

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

    FinishShadePictures();
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
        painter.drawPixmap(IconCorner(p, body.icon), body.icon);
    }
    if (on.FavoriteStationsOverlay)
        DrawFavorites(painter, "Favorites.txt");
    painter.end();
    screenOverlay = QPixmap::fromImage(std::move(canvas));
}

SkyCanvasRequest MainWindow::SkyCanvasFor(int sagittariusX) const
{
    const OverlaySettings &on = overlaySettings;
    SkyCanvasRequest request;
    request.base = baseMap.toImage();
    if (on.SkyNoiseOverlay && !skyLayer.isNull()) {
        request.skyNoise = scaledSkyNoise.toImage();
        request.skyColumn = skyOverlayParameter;
        request.sagittariusX = sagittariusX;
    }
    request.stars = on.StarsOverlay;
    request.magnitudeLimit = on.StarsMagnitude;
    request.starsView = SkyViewOf(request.base.rect());
    request.constellations = on.ConstellationsOverlay;
    request.outlinesView = SkyViewOf(ui->WorldMap->geometry());
    return request;
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
    if (map.devicePixelRatio() != 1.0)
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setPen(Qt::black);

    auto drawStation = [&](const QPixmap &icon, double latitude, double longitude) {
        if (icon.isNull())
            return;
        QPoint p;
        LatLongToPoint(latitude, longitude, p);
        painter.drawPixmap(IconCorner(p, icon), icon);
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
    StarStyle(magnitude, colourIndex, colour, size);
}

void MainWindow::DrawMapStars(QPainter &painter, int constellation)
{
    DrawConstellationObjects(painter, SkyViewOf(ui->WorldMap->geometry()), constellation,
                             overlaySettings.StarsMagnitude);
}

void MainWindow::DrawMapConstellation(QPainter &painter, int constellation)
{
    DrawConstellationOutline(painter, SkyViewOf(ui->WorldMap->geometry()), constellation);
}

void MainWindow::DrawFavorites(QPainter &painter, const QString &fileName)
{
    // Read afresh at each rebuild (a small file), so edits show within a
    // minute; a missing list draws nothing.
    auto list = std::make_unique<FavoriteList>();
    if (ReadFavoriteList(QFile::encodeName(SettingsFolder() + fileName).constData(), *list) != 0)
        return;
    for (int i = 0; i < list->count; ++i) {
        const FavoriteEntry &entry = list->entries[i];
        double latitude, longitude;
        if (GridToLatLong(entry.grid, latitude, longitude) != 0)
            continue;
        QPoint p;
        LatLongToPoint(latitude, longitude, p);
        p.setX(p.x() + 6);
        painter.drawEllipse(p, 2, 2);
        const QString call = FieldText(entry.callsign, sizeof entry.callsign);
        painter.drawText(p.x() - 3 * (int)call.size(), p.y() - 8, call);
    }
}

namespace {

// One chart: the dial drawn at the label's size and pixel density, and over
// its face the map on the sphere seen from above the station when there is
// one. The overlay is the rolled map, so the caller adds the roll to the
// station's longitude.
void DrawChart(QLabel *chart, bool dialShown, StarChartRenderer &renderer, const QPixmap &overlay,
               bool stationSet, double latitude, double longitude)
{
    QPixmap pixmap = dialShown ? SkyDial(chart->size(), chart->devicePixelRatioF()) : QPixmap();
    chart->setPixmap(pixmap);
    chart->show();
    if (stationSet && !pixmap.isNull()) {
        QImage globe = GlobeImage(pixmap);
        renderer.render(overlay, globe, float(latitude), float(longitude));
        ClipToDialFace(pixmap, globe);
    }
    chart->setPixmap(pixmap);
    chart->show();
}

} // namespace

void MainWindow::DrawStarChart1()
{
    if (!overlaySettings.StarChartOverlay)
        return;
    ui->WorldMap->hide();
    const double roll = MapRollDegrees(ui->WorldMap->width(), overlaySettings.MapOffset);
    DrawChart(ui->StarChart1, !dialMaster.isNull(), *starChartRenderer, screenOverlay, homeStationSet,
              homeData.latitude, homeData.longitude + roll);
}

void MainWindow::DrawStarChart2()
{
    if (!overlaySettings.StarChartOverlay)
        return;
    ui->WorldMap->hide();
    const double roll = MapRollDegrees(ui->WorldMap->width(), overlaySettings.MapOffset);
    DrawChart(ui->StarChart2, !dialMaster.isNull(), *starChartRenderer, screenOverlay, dxStationSet,
              dxStation.latitude, dxStation.longitude + roll);
}
