// Construction, the display cycle and the panel texts.
#include "MainWindow.h"

#include "Clock.h"
#include "PanelStyles.h"
#include "PanelText.h"
#include "Settings.h"
#include "StationControl.h"
#include "WindowLayout.h"
#include "ui_MainWindow.h"

#include "render/ShadeOverlay.h"
#include "render/StarChartRenderer.h"
#include "tracking/ComputeSource.h"
#include "tracking/SharedState.h"

#include <QFileInfo>

#include <cstring>


#include <future>

using namespace lunaquill;

namespace {

// The record of the tracked source in a result array; a tracking source
// outside the 24 (a bad ini value, or -1 from the Sources table) gets a
// scratch record, for which the calculator computes nothing.
SourceTrack &TrackedRecord(SourceTrack *records)
{
    static SourceTrack scratch;
    const int32_t source = homeData.trackingSource;
    return (source >= 0 && source < (int32_t)SourceCount) ? records[source] : scratch;
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), ui(new Ui::MainWindow)
{
    ui->setupUi(this);
    setWindowTitle(Printf("%s", "Q9QQ Lunaquill v1.05 Feb 28, 2025"));
    // The size is chosen when the window is first shown, for its screen,
    // unless the caller sets one before (see showEvent).
    setAttribute(Qt::WA_Resized, false);
    setMinimumSize(kMinimumWindowSize);
    RememberForm();

    const bool firstRun = !QFileInfo::exists(SettingsPath(kSettingsFileName));
    LoadHomeData(kSettingsFileName, homeData);
    LoadOverlays(kSettingsFileName, overlaySettings);
    if (homeData.grid[0] != '\0')
        homeStationSet = 1;
    if (dxStation.grid[0] != '\0')
        dxStationSet = 1;

    LoadPixmaps();

    displayOffset = 0;
    timeStep = 0;
    playing = false;
    skyOverlayParameter = 376;

    ApplyStyles();

    hoverVisible = false;
    hoverMouseX = 0;
    hoverBox = QRect(0, 0, 125, 35);
    // Moves without a button pressed reach the window (for the hover
    // read-out) only when it and the widgets over the map track the mouse.
    setMouseTracking(true);
    ui->centralWidget->setMouseTracking(true);
    ui->WorldMap->setMouseTracking(true);

    connect(ui->actionAbout, SIGNAL(triggered()), this, SLOT(About()));
    connect(ui->actionHomeStation, SIGNAL(triggered()), this, SLOT(HomeStation()));
    connect(ui->actionSources, SIGNAL(triggered()), this, SLOT(SourcesDisplay()));
    connect(ui->actionDxStation, SIGNAL(triggered()), this, SLOT(DxStation()));
    connect(ui->actionOverlays, SIGNAL(triggered()), this, SLOT(SetOverlays()));
    connect(ui->SourceButton, SIGNAL(pressed()), this, SLOT(SourceButtonPressed()));
    connect(ui->actionEme50M, SIGNAL(triggered()), this, SLOT(Eme50M()));
    connect(ui->actionEme144M, SIGNAL(triggered()), this, SLOT(Eme144M()));
    connect(ui->actionEme432M, SIGNAL(triggered()), this, SLOT(Eme432M()));
    connect(ui->actionEme900M, SIGNAL(triggered()), this, SLOT(Eme900M()));
    connect(ui->actionEme1296M, SIGNAL(triggered()), this, SLOT(Eme1296M()));
    connect(ui->actionEme2304M, SIGNAL(triggered()), this, SLOT(Eme2304M()));
    connect(ui->actionEme3400M, SIGNAL(triggered()), this, SLOT(Eme3400M()));
    connect(ui->actionEme5760M, SIGNAL(triggered()), this, SLOT(Eme5760M()));
    connect(ui->actionEme10G, SIGNAL(triggered()), this, SLOT(Eme10G()));
    connect(ui->actionEme47G, SIGNAL(triggered()), this, SLOT(Eme47G()));
    connect(ui->actionFavorites, SIGNAL(triggered()), this, SLOT(EmeFavorites()));
    connect(ui->DxGrid, SIGNAL(pressed()), this, SLOT(SetDxStation()));
    connect(ui->SetFrequencyButton, SIGNAL(pressed()), this, SLOT(SetFrequency()));
    connect(ui->SetDateTimeButton, SIGNAL(pressed()), this, SLOT(SetDateTime()));
    connect(ui->DateTimeButton, SIGNAL(pressed()), this, SLOT(DateTimeButtonPressed()));
    connect(ui->TimeAdjustPlayButton, SIGNAL(pressed()), this, SLOT(TimeAdjustPlayButtonPressed()));
    connect(ui->ViewModeButton, SIGNAL(pressed()), this, SLOT(ViewModeButtonPressed()));
    connect(ui->TimeAdjustMinMButton, SIGNAL(pressed()), this, SLOT(TimeAdjustMinMButtonPressed()));
    connect(ui->TimeAdjustHourMButton, SIGNAL(pressed()), this, SLOT(TimeAdjustHourMButtonPressed()));
    connect(ui->TimeAdjustDayMButton, SIGNAL(pressed()), this, SLOT(TimeAdjustDayMButtonPressed()));
    connect(ui->TimeAdjustWeekMButton, SIGNAL(pressed()), this, SLOT(TimeAdjustWeekMButtonPressed()));
    connect(ui->TimeAdjustMinPButton, SIGNAL(pressed()), this, SLOT(TimeAdjustMinPButtonPressed()));
    connect(ui->TimeAdjustHourPButton, SIGNAL(pressed()), this, SLOT(TimeAdjustHourPButtonPressed()));
    connect(ui->TimeAdjustDayPButton, SIGNAL(pressed()), this, SLOT(TimeAdjustDayPButtonPressed()));
    connect(ui->TimeAdjustWeekPButton, SIGNAL(pressed()), this, SLOT(TimeAdjustWeekPButtonPressed()));

    RecalculateSources();
    overlaysStale = true;
    redrawRequested = true;
    refreshAll = true; // the first panel refresh shows rise, set and distance at once

    stationControl = new StationControl(this);
    stationControl->Attach(ui->menuBar, ui->actionStationControl);
    StartWsjtxLink();
    connect(ui->actionPlanner, SIGNAL(triggered()), this, SLOT(Planner()));

    // The window's child: it lives as long as the window (in the program, as
    // long as the process) and is released with it. Without OpenGL it stays
    // idle and the charts show the plain dial.
    starChartRenderer = new StarChartRenderer(this);
    starChartRenderer->initialise();

    if (firstRun)
        ShowFirstRunHint();

    connect(&displayTimer, SIGNAL(timeout()), this, SLOT(TimerEvent()));
    displayTimer.start(10);
}

MainWindow::~MainWindow()
{
    // Nothing is saved here: settings are written when a dialog is accepted.
    delete ui;
}

void MainWindow::RecalculateSources()
{
    const struct tm utc = DisplayedUtc();
    if (dxStationSet || homeStationSet)
        PrepareMoonRiseSet(utc);
    // The planets go in the order of their overlay switches.
    const struct { uint32_t id; const bool &shown; } planets[] = {
        {Mercury, overlaySettings.MercuryOverlay}, {Mars, overlaySettings.MarsOverlay},
        {Venus, overlaySettings.VenusOverlay},     {Saturn, overlaySettings.SaturnOverlay},
        {Jupiter, overlaySettings.JupiterOverlay}, {Neptune, overlaySettings.NeptuneOverlay},
        {Uranus, overlaySettings.UranusOverlay},   {Pluto, overlaySettings.PlutoOverlay},
    };
    auto computeAll = [&](SourceTrack *records, double latitude, double longitude) {
        ComputeSource(Moon, TrackAll, utc, latitude, longitude, homeData.frequency, records[Moon]);
        ComputeSource(Sun, TrackPosition, utc, latitude, longitude, homeData.frequency, records[Sun]);
        for (const auto &planet : planets) {
            if (planet.shown)
                ComputeSource(planet.id, TrackPosition, utc, latitude, longitude,
                              homeData.frequency, records[planet.id]);
        }
        for (uint32_t id = SagittariusA; id <= Pictor; ++id)
            ComputeSource(id, TrackPosition, utc, latitude, longitude, homeData.frequency,
                          records[id]);
    };
    if (dxStationSet)
        computeAll(dxTracks, dxStation.latitude, dxStation.longitude);
    if (homeStationSet)
        computeAll(homeTracks, homeData.latitude, homeData.longitude);
    UpdateDisplay();
}

void MainWindow::UpdateDisplay()
{
    const QString source = SourceButtonText(homeData.trackingSource);
    if (!source.isEmpty())
        ui->SourceButton->setText(source);
    if (homeData.callsign[0] != '\0')
        ui->HomeCallsign->setText(FieldText(homeData.callsign, sizeof homeData.callsign));
    if (homeData.grid[0] != '\0') {
        homeStationSet = 1;
        ui->HomeGrid->setText(FieldText(homeData.grid, sizeof homeData.grid));
        ui->HomeLatitude->setText(Printf("%0.2f", homeData.latitude));
        ui->HomeLongitude->setText(Printf("%0.2f", homeData.longitude));
    }
    if (dxStation.callsign[0] != '\0')
        ui->DxCallsign->setText(FieldText(dxStation.callsign, sizeof dxStation.callsign));
    // The home flag is only ever raised here, never cleared; the DX flag
    // follows the DX grid both ways. A DX grid that is not a locator (the
    // station dialogs let one be typed) counts as no DX station.
    if (CheckDxGrid()) {
        ui->DxGrid->setText(FieldText(dxStation.grid, sizeof dxStation.grid));
        ui->DxLatitude->setText(Printf("%0.2f", dxStation.latitude));
        ui->DxLongitude->setText(Printf("%0.2f", dxStation.longitude));
    }
    ui->SetFrequencyButton->setText(Printf("%7.2f Mhz", homeData.frequency));
}

void MainWindow::TimerEvent()
{
    // Each tick counts 10 ms whatever the time really taken: a panel refresh
    // comes every 101 ticks, an overlay rebuild every 6001.
    // A forced refresh is consumed by the panel refresh itself, so one asked
    // for later in a tick (the play step) is shown at the next tick.
    panelTicks += 10;
    if (forceRefresh || panelTicks > 1000) {
        RefreshPanels();
        forceRefresh = false;
    }

    hoverTicks += 10;
    if (hoverTicks > 5000) {
        hoverTicks = 0;
        if (hoverVisible) {
            redrawRequested = true;
            hoverVisible = false;
        }
    }

    playTicks += 10;
    if (playTicks > 1000) {
        playTicks = 0;
        if (playing) {
            AdvanceDisplayOffset(timeStep);
            RecalculateSources();
            overlaysStale = true;
            forceRefresh = true; // the clock and every figure follow at the next tick
        }
    }

    overlayTicks += 10;
    if (overlaysStale || overlayTicks > 60000) {
        overlayTicks = 0;
        overlaysStale = false;
        RebuildOverlays();
        redrawRequested = true;
    } else if (!redrawRequested) {
        return;
    }
    Redraw();
    redrawRequested = false;
}

namespace {

// The read-outs of one station for the tracked source.
struct StationPanel {
    QPushButton *azimuth, *elevation, *doppler, *spatialOffset, *skyTemperature, *degradation;
    QPushButton *riseTime, *setTime;
};

// Colours a station's figures by whether it sees the source, writes them, and
// returns whether it sees it. Azimuth 0 exactly counts as not seen, as the
// rule has always been. The Doppler is left to the caller.
int32_t ShowStation(const StationPanel &panel, const SourceTrack &record, bool riseSet)
{
    const int32_t sees = (record.azimuth > 0 && record.elevation > 0) ? 1 : 0;
    for (QPushButton *figure : {panel.azimuth, panel.elevation, panel.doppler,
                                panel.spatialOffset, panel.skyTemperature, panel.degradation})
        figure->setStyleSheet(sees ? kDarkGreenStyle : kDarkRedStyle);
    if (!sees)
        panel.doppler->setText(" ");
    panel.azimuth->setText(Printf("%7.2f", record.azimuth));
    panel.elevation->setText(Printf("%7.2f", record.elevation));
    panel.spatialOffset->setText(Printf("%0.1f", record.spatialOffset));
    panel.skyTemperature->setText(Printf("%0.1f", record.skyTemperature));
    panel.degradation->setText(Printf("%0.1f", record.degradation));
    if (riseSet) {
        panel.riseTime->setText(RiseSetText("Rise: ", record.riseTime, record.riseSetStatus));
        panel.setTime->setText(RiseSetText("Set: ", record.setTime, record.riseSetStatus));
    }
    return sees;
}

} // namespace

void MainWindow::RefreshPanels()
{
    panelTicks = 0;
    const struct tm utc = DisplayedUtc();
    ui->DateTimeButton->setText(QString::fromLatin1(ClockText(utc)));

    uint32_t bits = (forceRefresh || refreshAll || playing) ? TrackAll : TrackPosition;
    refreshAll = false;
    if (utc.tm_sec == 0)
        bits |= TrackDistance | TrackRiseSet;
    if (homeData.trackingSource == Moon)
        bits |= TrackDistance;
    const bool riseSet = bits & TrackRiseSet;

    // Computed even without a home station (then at latitude and longitude 0).
    SourceTrack &home = TrackedRecord(homeTracks);
    ComputeSource((uint32_t)homeData.trackingSource, bits, utc, homeData.latitude,
                  homeData.longitude, homeData.frequency, home);
    homeSeesSource = ShowStation({ui->HomeAzimuth, ui->HomeElevation, ui->HomeDoppler,
                                  ui->HomeSpatialOffset, ui->HomeSkyTemp, ui->HomeDegradation,
                                  ui->HomeRiseTime, ui->HomeSetTime},
                                 home, riseSet);
    ui->PathLoss->setText(Printf("%0.1f", home.pathLossVsPerigee));
    if (bits == TrackAll)
        UpdateDisplay();
    if (bits & TrackDistance) {
        ui->Distance->setText(homeData.trackingSource == Moon
                                  ? Printf("%6.0f km", home.distance * 1.5e8)
                                  : Printf("%9.6f AU", home.distance));
    }
    ui->HomeDoppler->setText(homeStationSet ? Printf("%7.0f Hz", home.doppler) : QString(" "));

    SourceTrack &dx = TrackedRecord(dxTracks);
    if (dxStationSet) {
        ComputeSource((uint32_t)homeData.trackingSource, bits, utc, dxStation.latitude,
                      dxStation.longitude, homeData.frequency, dx);
        dxSeesSource = ShowStation({ui->DxAzimuth, ui->DxElevation, ui->DxDoppler,
                                    ui->DxSpatialOffset, ui->DxSkyTemp, ui->DxDegradation,
                                    ui->DxRiseTime, ui->DxSetTime},
                                   dx, riseSet);
        ui->DxDoppler->setText(Printf("%7.0f Hz", dx.doppler));
        ui->MutualDoppler->setStyleSheet(homeSeesSource && dxSeesSource ? kDarkGreenStyle
                                                                        : kDarkRedStyle);
    } else {
        // dxSeesSource keeps its last value, so the mutual figure may still
        // be formed from the last DX Doppler.
        ui->DxDoppler->setText(" ");
    }

    if (homeSeesSource && dxSeesSource)
        ui->MutualDoppler->setText(Printf("%7.0f Hz", (home.doppler + dx.doppler) * 0.5));
    else
        ui->MutualDoppler->setText(" ");
}

namespace {

ShadeRequest ShadeFrom(bool wanted, const QPixmap &layer, double latitude, double longitude,
                       double strength)
{
    return {wanted, layer.size(), latitude, longitude, strength};
}

} // namespace

void MainWindow::RebuildOverlays()
{
    // The shading pictures are pure pixel work for the worker threads, made
    // while this thread paints the screen overlay up to them; those started
    // ahead by TimeAdjusted are kept when the records agree with them.
    const SourceTrack &sun = homeTracks[Sun], &moon = homeTracks[Moon];
    StartShadePictures(ShadeFrom(sun.valid && overlaySettings.SunShadingOverlay, sunShade,
                                 sun.subLatitude, sun.subLongitude, 10.0),
                       ShadeFrom(moon.valid && overlaySettings.MoonShadingOverlay, moonShade,
                                 moon.subLatitude, moon.subLongitude, 8.0));
    if (homeTracks[SagittariusA].valid)
        CreateSkyOverlay(skyLayer, scaledSkyNoise, skyOverlayParameter);
    CreateScreenOverlay();
}

void MainWindow::StartShadePictures(const ShadeRequest &sun, const ShadeRequest &moon)
{
    ShadePicture *pictures[2] = {&sunPicture, &moonPicture};
    const ShadeRequest *requests[2] = {&sun, &moon};
    for (int i = 0; i < 2; ++i) {
        ShadePicture &picture = *pictures[i];
        const ShadeRequest &request = *requests[i];
        if (picture.image.valid() && SameShadeRequest(picture.request, request))
            continue;
        if (picture.image.valid())
            picture.image.get(); // no longer wanted, but it reads the column tables
        picture.request = {};
        picture.image = {};
        if (!request.wanted)
            continue;
        // The column tables are shared: remade for another width only once
        // the other picture no longer reads them.
        ShadePicture &other = *pictures[1 - i];
        if (other.image.valid() && other.request.size.width() != request.size.width())
            other.image.get();
        if (!PrepareShadeColumns(request.size.width()))
            continue;
        picture.request = request;
        picture.image = WorkerTask<QImage>([request] {
            return ShadeImage(request.size, request.latitude, request.longitude, request.strength);
        });
    }
}

void MainWindow::FinishShadePictures()
{
    const struct { ShadePicture &picture; QPixmap &layer; } shades[] = {
        {sunPicture, sunShade}, {moonPicture, moonShade}};
    for (const auto &shade : shades) {
        if (shade.picture.image.valid())
            PaintShade(shade.layer, shade.picture.image.get());
        shade.picture.request = {};
        shade.picture.image = {};
    }
}

void MainWindow::Redraw()
{
    if (overlaySettings.StarChartOverlay) {
        DrawStarChart1();
        DrawStarChart2();
    } else {
        DrawMap();
    }
}

void MainWindow::TimeAdjusted()
{
    // The work for the worker threads is started first: the Moon's positions
    // for the rise/set search, then the shading pictures from the sub-points
    // the home station's Sun and Moon are about to get (worked out without
    // libnova, so that nothing it keeps changes). RebuildOverlays keeps the
    // pictures if the records agree and makes them again if not.
    const struct tm utc = DisplayedUtc();
    if (dxStationSet || homeStationSet)
        PrepareMoonRiseSet(utc);
    ShadeRequest ahead[2];
    const struct { uint32_t id; bool on; const QPixmap &layer; double strength; } bodies[2] = {
        {Sun, overlaySettings.SunShadingOverlay, sunShade, 10.0},
        {Moon, overlaySettings.MoonShadingOverlay, moonShade, 8.0}};
    for (int i = 0; i < 2; ++i) {
        double latitude = 0.0, longitude = 0.0;
        const bool wanted = homeStationSet && bodies[i].on
                            && SubPointAhead(bodies[i].id, utc, homeData.latitude,
                                                      homeData.longitude, homeData.frequency,
                                                      latitude, longitude);
        ahead[i] = ShadeFrom(wanted, bodies[i].layer, latitude, longitude, bodies[i].strength);
    }
    // The sky layers of the screen overlay likewise, from where Sagittarius
    // is about to stand.
    double latitude = 0.0, longitude = 0.0;
    if (!baseMap.isNull() && baseMap.devicePixelRatio() == 1.0 && homeStationSet
        && SubPointAhead(SagittariusA, utc, homeData.latitude, homeData.longitude,
                         homeData.frequency, latitude, longitude)) {
        QPoint sagittarius;
        LatLongToPoint(latitude, longitude, sagittarius);
        skyCanvasRequest = SkyCanvasFor(sagittarius.x());
        skyCanvas = WorkerTask<QImage>([request = skyCanvasRequest] { return PaintSkyCanvas(request); });
    }
    StartShadePictures(ahead[0], ahead[1]);
    // Stepping evenly, the next step's instant is as far on again: its
    // Moon's positions are made while this step is drawn and the next waited for.
    const time_t now = DisplayedTime();
    if ((dxStationSet || homeStationSet) && lastStep != 0 && now != lastStep) {
        const time_t next = now + (now - lastStep);
        struct tm nextUtc {};
        if (gmtime_r(&next, &nextUtc))
            PrepareUpcomingMoonRiseSet(nextUtc);
    }
    lastStep = now;
    RecalculateSources();
    RebuildOverlays();
    Redraw();
    forceRefresh = true; // rise, set and distance for the new instant at the next tick
}

void MainWindow::ShowChanges()
{
    CheckDxGrid(); // before the sources, so that a new DX station is computed too
    RecalculateSources();
    overlaysStale = true;
    forceRefresh = true; // every figure, rise and set included
    RefreshPanels();
    forceRefresh = false;
}
