// Styles of the panels and the layout that follows the window's size.
#include "MainWindow.h"

#include "PanelStyles.h"
#include "ui_MainWindow.h"

#include "render/MapLayers.h"
#include "tracking/SharedState.h"

#include <QDebug>

using namespace lunaquill;

void MainWindow::ApplyStyles()
{
    for (QWidget *w : {(QWidget *)ui->centralWidget, (QWidget *)ui->Rect1Frame,
                       (QWidget *)ui->Rect2Frame, (QWidget *)ui->Rect3Frame,
                       (QWidget *)ui->Rect4Frame})
        w->setStyleSheet(kLightGrayStyle);
    for (QWidget *w : {ui->LatitudeFrameL, ui->LatitudeFrameR, ui->LongitudeFrame})
        w->setStyleSheet(kPlainBlackStyle);
    for (QWidget *w : std::initializer_list<QWidget *>{
             ui->AzimuthLabel, ui->ElevationLabel, ui->CallsignLabel, ui->GridLabel,
             ui->LatitudeLabel, ui->LongitudeLabel, ui->HomeDopplerLabel,
             ui->MutualDopplerLabel, ui->SpatialOffsetLabel, ui->SkyTempLabel,
             ui->DegradationLabel, ui->PathLossLabel, ui->DistanceLabel, ui->PathLoss,
             ui->Distance, ui->HomeAzimuth, ui->HomeRiseTime, ui->HomeSetTime,
             ui->HomeElevation, ui->HomeCallsign, ui->HomeGrid, ui->HomeLatitude,
             ui->HomeLongitude, ui->HomeDoppler, ui->HomeSpatialOffset, ui->HomeSkyTemp,
             ui->HomeDegradation, ui->MutualDoppler})
        w->setStyleSheet(kDarkGreenStyle);
    for (QWidget *w : {ui->DxAzimuth, ui->DxRiseTime, ui->DxSetTime, ui->DxElevation,
                       ui->DxLatitude, ui->DxLongitude, ui->DxDoppler, ui->DxSpatialOffset,
                       ui->DxSkyTemp, ui->DxDegradation})
        w->setStyleSheet(kDarkRedStyle);
    for (QWidget *w : {ui->SourceButton, ui->DxCallsign, ui->DxGrid, ui->SetFrequencyButton})
        w->setStyleSheet(kDarkBlueStyle);
    for (QWidget *w : std::initializer_list<QWidget *>{
             ui->ViewModeButton, ui->SetDateTimeButton, ui->DateTimeButton,
             ui->TimeAdjustPlayButton, ui->TimeAdjustMinMButton, ui->TimeAdjustHourMButton,
             ui->TimeAdjustDayMButton, ui->TimeAdjustWeekMButton, ui->TimeAdjustMinPButton,
             ui->TimeAdjustHourPButton, ui->TimeAdjustDayPButton, ui->TimeAdjustWeekPButton})
        w->setStyleSheet(kGrayStyle);

    ui->SetDateTimeButton->setIcon(QIcon(menuIcon));
    const QSize button = ui->SetDateTimeButton->size();
    ui->SetDateTimeButton->setIconSize(QSize(button.width() * 8 / 10, button.height() * 8 / 10));
}

namespace {

void LogGeometry(const char *sizeText, const char *geometryText, const QRect &r)
{
    qDebug(sizeText, r.width(), r.height());
    qDebug(geometryText, r.left(), r.top(), r.right(), r.bottom());
}

} // namespace

void MainWindow::resizeEvent(QResizeEvent *event)
{
    const QSize size = event->size();
    if (!size.isValid())
        return;
    if (size == lastSize) {
        redrawRequested = true;
        UpdateDisplay();
        return;
    }
    lastSize = size;
    qDebug("Screen changed to (%d x %d)", size.width(), size.height());
    windowRect = geometry();
    LogGeometry("Screen size is (%d x %d)", "Screen Geometry (%d,%d to %d,%d)", windowRect);

    if (latStripRect.isNull())
        latStripRect = ui->LatitudeFrameR->geometry();
    if (lngStripRect.isNull())
        lngStripRect = ui->LongitudeFrame->geometry();
    mapRect = ui->WorldMap->geometry();
    mapRect.setX(20);
    mapRect.setWidth(windowRect.width() - 2 * latStripRect.width());
    ui->WorldMap->setGeometry(mapRect);
    mapRect = ui->WorldMap->geometry();
    LogGeometry("WorldMap size is: (%d x %d)", "WorldMap Geometry (%d,%d to %d,%d)", mapRect);

    latStripRect.setLeft(mapRect.right());
    latStripRect.setWidth(20);
    latStripRect.setTop(0);
    latStripRect.setHeight(mapRect.height());
    ui->LatitudeFrameR->setGeometry(latStripRect);
    latStripRect = ui->LatitudeFrameR->geometry();
    LogGeometry("Lat labels size is: (%d x %d)", "Lat labels Geometry (%d,%d to %d,%d)",
                latStripRect);

    const int stripHeight = lngStripRect.height();
    lngStripRect.setLeft(0);
    lngStripRect.setTop(mapRect.bottom());
    lngStripRect.setRight(windowRect.right());
    lngStripRect.setHeight(stripHeight);
    ui->LongitudeFrame->setGeometry(lngStripRect);
    lngStripRect = ui->LongitudeFrame->geometry();
    LogGeometry("Lng labels size is: (%d x %d)", "Lng labels Geometry (%d,%d to %d,%d)",
                lngStripRect);

    // The map-sized images follow the map (without a map image, nothing).
    if (mapLoaded) {
        const QSize map = mapRect.size();
        baseMap = topoMaster.scaled(map, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        sunShade = baseMap;
        moonShade = baseMap;
        if (!skyNoiseMaster.isNull())
            scaledSkyNoise = skyNoiseMaster.scaled(map, Qt::IgnoreAspectRatio,
                                                   Qt::FastTransformation);
        skyLayer = QPixmap(map);
        skyLayer.fill(Qt::black);
        screenOverlay = QPixmap(map);
        DrawMapOverlay();
        ui->WorldMap->setPixmap(baseMap);
    }

    // The four panels spread with equal gaps, the first gap at the left edge.
    QFrame *frames[] = {ui->Rect1Frame, ui->Rect2Frame, ui->Rect3Frame, ui->Rect4Frame};
    QRect rects[4];
    int total = 0;
    for (int i = 0; i < 4; ++i) {
        rects[i] = frames[i]->geometry();
        total += rects[i].width();
    }
    qDebug("Rect1 x:%d width:%d", 10, rects[0].width());
    qDebug("Rect2 x:%d width:%d", rects[1].x(), rects[1].width());
    qDebug("Rect3 x:%d width:%d", rects[2].x(), rects[2].width());
    qDebug("Rect4 x:%d width:%d", rects[3].x(), rects[3].width());
    const int gap = (windowRect.width() - total) / 5;
    int x = gap;
    for (int i = 0; i < 4; ++i) {
        rects[i].moveLeft(x);
        frames[i]->setGeometry(rects[i]);
        x += rects[i].width() + gap;
    }

    skyOverlayParameter = topoMaster.width() >= 1
                              ? (int32_t)((double)mapRect.width() / topoMaster.width() * 376.0)
                              : 376;
    overlaysStale = true;
    redrawRequested = true;
    UpdateDisplay();
}
