// The window's state for the benchmarks and the step hashes: a home station
// near Boston and a DX station near Sydney at 1296 MHz, every layer of the
// map on and every catalogue object drawn.
#pragma once

#include "tracking/SharedState.h"

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
