#include "SharedState.h"

#include <algorithm>
#include <climits>

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

void AdvanceDisplayOffset(int32_t step)
{
    const int64_t sum = int64_t(displayOffset) + step;
    displayOffset = int32_t(std::clamp<int64_t>(sum, INT32_MIN, INT32_MAX));
}

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
