// Every test shares the process-wide records: each starts from zero, in a
// home folder of its own with no settings file.
#pragma once

#include "GuiTestSupport.h"
#include "tracking/SharedState.h"

#include <cstring>

namespace lunaquill::test {

inline void ResetSharedState()
{
    ClearTestHome();
    homeData = {};
    dxStation = {};
    overlaySettings = {};
    memset(homeTracks, 0, sizeof homeTracks);
    memset(dxTracks, 0, sizeof dxTracks);
    displayOffset = 0;
    homeStationSet = dxStationSet = homeSeesSource = dxSeesSource = 0;
}

} // namespace lunaquill::test
