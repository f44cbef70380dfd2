// The main window: owns every widget of the single window, runs the 10 ms
// display cycle and offers the slots through which menus, buttons, dialogs and
// the timer reach the program. Its definitions are split by concern:
//   MainWindow.cpp          construction, the display cycle, panel texts
//   MainWindowDisplay.cpp   resizing and the styles of the panels
//   MainWindowTime.cpp      the simulated clock and the time controls
//   MainWindowStations.cpp  the menu dialogs (stations, sources, overlays ...)
//   MainWindowMap.cpp       the map: projection, layers, mouse
//   MainWindowWsjtx.cpp     following WSJT-X's DX station and dial frequency
//   MainWindowPlanner.cpp   the EME Planner window
#pragma once

#include <QColor>
#include <QFont>
#include <QMainWindow>
#include <QMouseEvent>
#include <QOpenGLFunctions>
#include <QPainter>
#include <QPixmap>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QResizeEvent>
#include <QSize>
#include <QString>
#include <QTimer>

#include "render/ShadeOverlay.h"
#include "render/SkyLayers.h"
#include "tracking/WorkerPool.h"

#include <future>
#include <vector>

class QFrame;
class QMessageBox;
namespace Ui {
class MainWindow;
}

namespace lunaquill {
class PlannerWindow;
class StarChartRenderer;
class StationControl;
class WsjtxLink;
struct WsjtxFollowChange;
}

class MainWindow : public QMainWindow, protected QOpenGLFunctions
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // The generated widget set, for tests that read what the window shows.
    Ui::MainWindow *widgets() const { return ui; }

    // The display cycle's state, for tests that drive it.
    bool isPlaying() const { return playing; }
    int32_t step() const { return timeStep; }
    bool hoverIsVisible() const { return hoverVisible; }
    bool redrawIsRequested() const { return redrawRequested; }
    bool overlaysAreStale() const { return overlaysStale; }
    QRect hoverRect() const { return hoverBox; }
    const char *hoverLocator() const { return hoverGrid; }
    int32_t skyColumn() const { return skyOverlayParameter; }
    const QPixmap &screenOverlayPixmap() const { return screenOverlay; }
    const QPixmap &baseMapPixmap() const { return baseMap; }
    const QPixmap &sunShadePixmap() const { return sunShade; }
    const QPixmap &moonShadePixmap() const { return moonShade; }
    void requestForceRefresh() { forceRefresh = true; }
    // The first-run hint (no settings file yet); null once it has gone.
    QFrame *firstRunHint() const { return homeStationHint; }

public slots:
    // The method-index order of these 61 slots is fixed; keep it.
    bool About();
    void UpdateDisplay();
    bool HomeStation();
    bool SourcesDisplay();
    bool DxStation();
    bool Favorites(const QString &fileName);
    bool Eme50M();
    bool Eme144M();
    bool Eme432M();
    bool Eme900M();
    bool Eme1296M();
    bool Eme2304M();
    bool Eme3400M();
    bool Eme5760M();
    bool Eme10G();
    bool Eme47G();
    bool EmeFavorites();
    bool SetOverlays();
    void SourceButtonPressed();
    bool SetDxStation();
    bool SetFrequency();
    bool SetDateTime();
    int GmtTimeOffset();
    void DateTimeButtonPressed();
    void TimeAdjustPlayButtonPressed();
    void ViewModeButtonPressed();
    void TimeAdjusted();
    void TimeAdjustMinPButtonPressed();
    void TimeAdjustHourPButtonPressed();
    void TimeAdjustDayPButtonPressed();
    void TimeAdjustWeekPButtonPressed();
    void TimeAdjustMinMButtonPressed();
    void TimeAdjustHourMButtonPressed();
    void TimeAdjustDayMButtonPressed();
    void TimeAdjustWeekMButtonPressed();
    void RecalculateSources();
    // The shades, the sky layer and the screen overlay from the records.
    void RebuildOverlays();
    void StarAttributes(double magnitude, double colourIndex, QColor &colour, int &size);
    void LatLongToPoint(double latitude, double longitude, QPoint &point);
    QPoint AzAltToDial(QRect rect, double azimuth, double altitude);
    void MapPixelToDialPixel(QPoint point, int centreX, int centreY, int &x, int &y);
    void worldToSpherical(int x, int y, int z, double &u, double &v);
    void cart2pol(int x, int y, double &radius, double &angle);
    void pol2cart(double radius, double angle, int &x, int &y);
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void LoadPixmaps();
    void CreateShadeOverlay(QPixmap &layer, double latitude, double longitude, double strength);
    void CreateSkyOverlay(QPixmap &target, const QPixmap &source, int column);
    void CreateScreenOverlay();
    void DrawMapOverlay();
    void DrawOverlay(QPainter &painter, const QPixmap &layer);
    void DrawMap();
    void DrawLatitudeLabels();
    void DrawLongitudeLabels();
    void DrawMapConstellation(QPainter &painter, int constellation);
    void DrawMapStars(QPainter &painter, int constellation);
    void DrawStarChart1();
    void DrawStarChart2();
    void DrawFavorites(QPainter &painter, const QString &fileName);
    void TimerEvent();

    // Configure -> Planner: opens (or brings forward) the EME Planner.
    void Planner();

private:
    // Members in the order of the window's record.
    bool mapLoaded = false;
    QSize lastSize;
    bool redrawRequested = false;
    bool hoverVisible = false;
    char hoverGrid[7] = {};
    double hoverLatitude = 0.0;
    double hoverLongitude = 0.0;
    int hoverMouseX = 0;
    QRect hoverBox;
    bool playing = false;
    int32_t timeStep = 0;
    bool overlaysStale = false;
    int32_t skyOverlayParameter = 376;

    QPixmap menuIcon;
    QRect windowRect;
    QRect mapRect;
    QRect latStripRect;
    QRect lngStripRect;

    QPixmap sunShade;
    QPixmap moonShade;
    QPixmap baseMap;          // topographic image at map size, with grid lines
    QPixmap skyLayer;         // the sky-noise image rolled with the sky
    // The last roll of the sky-noise image. On an unscaled screen the roll is
    // drawn straight from the image (the same pixels as the rolled layer), so
    // the layer itself is made only for a scaled screen or a logged roll.
    struct SkyRoll {
        bool made = false;
        int column = 0;
        int sagittariusX = 0;
    } skyRoll;
    QPixmap screenOverlay;    // every sky and body layer over the base map
    QPixmap topoMaster;
    QPixmap scaledSkyNoise;
    QPixmap skyNoiseMaster;
    QPixmap stationIcon;
    QPixmap moonIcon;
    QPixmap sunIcon;
    QPixmap mercuryIcon;
    QPixmap venusIcon;
    QPixmap marsIcon;
    QPixmap jupiterIcon;
    QPixmap saturnIcon;
    QPixmap neptuneIcon;
    QPixmap uranusIcon;
    QPixmap plutoIcon;
    QPixmap dialMaster;
    QPixmap dxStationIcon;

    lunaquill::StarChartRenderer *starChartRenderer = nullptr;
    Ui::MainWindow *ui;
    QTimer displayTimer;

    bool loadingPixmaps = false;
    bool forceRefresh = false;
    bool refreshAll = false; // the next panel refresh asks for every figure
    int32_t panelTicks = 0;
    int32_t hoverTicks = 0;
    int32_t playTicks = 0;
    int32_t overlayTicks = 0;
    QPointer<QMessageBox> saveWarning; // open while a failed save is being reported

    // Rotator and radio; reads the home records after each panel refresh.
    lunaquill::StationControl *stationControl = nullptr;
    // Listens for WSJT-X; its Status messages set the DX station and frequency.
    lunaquill::WsjtxLink *wsjtxLink = nullptr;
    QPointer<lunaquill::PlannerWindow> planner; // made at its first opening

    void RefreshPanels();
    // After a dialog that changed what is in force: every source for the
    // stations as they now stand and every panel figure at once, the
    // overlays at the next tick.
    void ShowChanges();
    // Save a settings group; a save that fails is reported in the window.
    bool SaveHomeSettings(); // false: not saved (and reported)
    void SaveOverlaySettings();
    void ShowSaveFailure(const QString &error);
    // The Sun's and the Moon's shading pictures, made on the worker threads
    // and laid into their layers by the screen overlay just before it draws
    // them. A picture is asked for with the sub-point it shades from, and one
    // already under way for the same request is kept.
    struct ShadePicture {
        lunaquill::ShadeRequest request;
        lunaquill::WorkerTask<QImage> image;
    };
    ShadePicture sunPicture, moonPicture;
    // The screen overlay's sky layers (SkyLayers.h), painted ahead on a worker
    // by TimeAdjusted and taken by the screen overlay if its request still
    // holds, else painted there.
    lunaquill::SkyCanvasRequest SkyCanvasFor(int sagittariusX) const;
    lunaquill::SkyCanvasRequest skyCanvasRequest;
    lunaquill::WorkerTask<QImage> skyCanvas;
    time_t lastStep = 0; // the instant TimeAdjusted last showed
    void StartShadePictures(const lunaquill::ShadeRequest &sun,
                            const lunaquill::ShadeRequest &moon);
    void FinishShadePictures();
    void Redraw();
    void StepTime(int32_t step, QWidget *pressed);
    void SetStepButtonsGray();
    bool CheckDxGrid();
    void StartWsjtxLink();
    void FollowWsjtx(const lunaquill::WsjtxFollowChange &change);
    bool MapPointFromMouse(QPoint windowPosition, double &latitude, double &longitude,
                           char *grid7);
    void ApplyStyles();

    // Window size and layout below the form's own size (1640 x 960).
    void showEvent(QShowEvent *event) override; // chooses the size when first shown
    void ChooseSize();
    void ScreenChanged();
    void RememberForm();
    void RestoreForm();
    void LayOutFull();
    void LayOutCompact();
    void PlaceCharts();
    void LoadIcons();
    void MakeMapImages();
    void ShowFirstRunHint();
    void PlaceFirstRunHint();
    struct FormPlace {
        QWidget *widget;
        QRect geometry;
        QFont font;
    };
    std::vector<FormPlace> formPlaces; // every widget the layout moves, as the form has it
    bool compactLayout = false;
    bool sizeChosen = false;
    QFrame *homeStationHint = nullptr;
};
