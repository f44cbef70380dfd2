#include "SharedState.h"

namespace lunaquill {

HomeData homeData;
DxStation dxStation;
OverlaySettings overlaySettings;
SourceTrack homeTracks[SourceCount];
SourceTrack dxTracks[SourceCount];
int32_t displayOffset;
int32_t homeStationSet;
int32_t dxStationSet;
int32_t homeSeesSource;
int32_t dxSeesSource;

time_t DisplayedTime()
{
    return time(nullptr) + displayOffset;
}

struct tm DisplayedUtc()
{
    time_t t = DisplayedTime();
    struct tm utc {};
    gmtime_r(&t, &utc);
    return utc;
}

} // namespace lunaquill
