// The process-wide records that the main window, the dialogs and the drawing
// code read and write directly: home and DX station, overlay switches, the two
// result arrays, the display offset and the station flags. Zero at start.
#pragma once

#include "ComputeSource.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>

namespace lunaquill {

struct HomeData {
    int32_t trackingSource;
    char callsign[12];
    char grid[8];
    char location[64];
    double latitude;    // degrees, north positive
    double longitude;   // degrees, east positive
    double frequency;   // MHz
};

struct DxStation {
    char callsign[12];
    char grid[8];
    char location[64];
    double latitude;
    double longitude;
};

// Member order as in the ini group OVERLAYS (planets deliberately not in
// source order).
struct OverlaySettings {
    bool SunOverlay;
    bool MoonOverlay;
    bool MercuryOverlay;
    bool VenusOverlay;
    bool MarsOverlay;
    bool SaturnOverlay;
    bool JupiterOverlay;
    bool NeptuneOverlay;
    bool UranusOverlay;
    bool PlutoOverlay;
    bool SunShadingOverlay;
    bool MoonShadingOverlay;
    bool SkyNoiseOverlay;
    int32_t StarsMagnitude;
    bool StarsOverlay;
    bool ConstellationsOverlay;
    bool LatitudeGridlines;
    bool LongitudeGridlines;
    int32_t MapOffset;          // hours the map is rolled eastward, 0..23
    bool StarChartOverlay;      // star-chart view instead of the map
    bool FavoriteStationsOverlay;
};

extern HomeData homeData;
extern DxStation dxStation;
extern OverlaySettings overlaySettings;
extern SourceTrack homeTracks[SourceCount];
extern SourceTrack dxTracks[SourceCount];
extern int32_t displayOffset;   // seconds: displayed time minus system time
extern int32_t homeStationSet;  // the home grid is non-empty
extern int32_t dxStationSet;    // the DX grid is non-empty (and converts)
extern int32_t homeSeesSource;  // the tracked source was up at the last refresh
extern int32_t dxSeesSource;

// Moves the display offset by a step, stopping at the limits of its 32 bits
// instead of wrapping (a wrap would throw the clock back to 1958).
void AdvanceDisplayOffset(int32_t step);

// The displayed instant: system time in whole seconds plus the display offset.
time_t DisplayedTime();
// Its UTC breakdown.
struct tm DisplayedUtc();

// Copies text into a fixed character field, cut so that the NUL still fits.
template <size_t N>
void CopyField(char (&field)[N], const char *text)
{
    size_t n = text ? strnlen(text, N - 1) : 0;
    memcpy(field, text, n);
    field[n] = '\0';
}

} // namespace lunaquill
