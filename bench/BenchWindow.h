// The window as the benchmarks and the step hashes run it: offscreen unless
// told otherwise, with settings in a scratch home (not a real profile) and
// the images from pixmaps/ below the source folder; a home station near
// Boston and a DX station near Sydney at 1296 MHz, every layer of the map on
// and every catalogue object drawn.
#pragma once

#include "app/MainWindow.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <cstdlib>

// Before the QApplication is made.
inline void UseScratchHome(const QTemporaryDir &home)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    unsetenv("XDG_CONFIG_HOME"); // settings in <home>/.config/Lunaquill/
    QDir::setCurrent(LUNAQUILL_SOURCE_DIR);
}

inline void ShowAtFormSize(MainWindow &window)
{
    window.resize(1640, 960);
    window.show();
    QApplication::processEvents();
}

inline void EveryLayerOn()
{
    using namespace lunaquill;
    homeData.latitude = 42.51;
    homeData.longitude = -70.96;
    homeData.frequency = 1296.0;
    CopyField(homeData.grid, "FN42mm");
    homeStationSet = 1;
    CopyField(dxStation.grid, "QF56oc");
    dxStation.latitude = -33.9;
    dxStation.longitude = 151.2;
    dxStationSet = 1;
    OverlaySettings &on = overlaySettings;
    on.SunOverlay = on.MoonOverlay = on.MercuryOverlay = on.VenusOverlay = on.MarsOverlay = true;
    on.SaturnOverlay = on.JupiterOverlay = on.NeptuneOverlay = on.UranusOverlay = true;
    on.PlutoOverlay = on.SunShadingOverlay = on.MoonShadingOverlay = on.SkyNoiseOverlay = true;
    on.StarsOverlay = on.ConstellationsOverlay = on.LatitudeGridlines = true;
    on.LongitudeGridlines = on.FavoriteStationsOverlay = true;
    on.StarsMagnitude = 20; // every catalogue object
    on.StarChartOverlay = false;
}
