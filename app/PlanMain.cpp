// lunaquill-plan: the planner on the command line, with the home station and
// frequency of the settings file when none are given.
#include "Settings.h"

#include "tracking/PlanText.h"

#include <cmath>
#include <cstdio>
#include <ctime>

using namespace lunaquill;

int main(int argc, char **argv)
{
    PlanDefaults defaults;
    defaults.now = int64_t(time(nullptr));
    defaults.version = LUNAQUILL_VERSION;
    HomeData home{};
    LoadHomeData(kSettingsFileName, home);
    // A home station is set when it has a grid, as the main window has it.
    if (home.grid[0] && std::isfinite(home.latitude) && std::isfinite(home.longitude)
        && std::fabs(home.latitude) <= 90.0 && std::fabs(home.longitude) <= 360.0) {
        defaults.homeSet = true;
        defaults.homeLatitude = home.latitude;
        defaults.homeLongitude = home.longitude;
        defaults.homeName = home.grid;
    }
    if (std::isfinite(home.frequency) && home.frequency > 0)
        defaults.frequencyMHz = home.frequency;
    return RunPlanCommand(argc, argv, defaults, stdout, stderr);
}
