// Plans as text: the CSV that the command line writes and the planner window
// copies or saves, the aligned tables of the terminal, and the command line of
// lunaquill-plan itself. No Qt.
#pragma once

#include "EmePlanner.h"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace lunaquill {

// An instant rounded to the nearest minute: "YYYY-MM-DDTHH:MMZ" when
// `iso`, else "YYYY-MM-DD HH:MM".
std::string FormatPlanTime(int64_t t, bool iso = true);
// "YYYY-MM-DD" of a day's 00:00.
std::string FormatPlanDate(int64_t t);
// A window's length in whole minutes, as its two rounded times differ.
int64_t PlanMinutes(int64_t start, int64_t end);

// One header line and one line per row, each ending in '\n'. Columns of a
// window without a DX station are left empty where they need one.
std::string WindowsCsv(const std::vector<MutualWindow> &windows, bool hasDx);
std::string ConditionsCsv(const std::vector<DayConditions> &days);

// The same as cells, for a table widget: header, then rows. Times as
// "YYYY-MM-DD HH:MM", or as the CSV writes them when `iso`.
std::vector<std::string> WindowColumns(bool hasDx);
std::vector<std::string> WindowCells(const MutualWindow &w, bool hasDx, bool iso = false);
std::vector<std::string> ConditionColumns();
std::vector<std::string> ConditionCells(const DayConditions &d, bool iso = false);

// A station given as a locator (4 or 6 characters, either case; 8 are
// refused) or as "LAT,LON" in decimal degrees (north and east positive,
// latitude within +-90, longitude within +-180). False when it is neither.
bool ParseStation(const std::string &text, double &latitude, double &longitude);

// "YYYY-MM-DDTHH:MMZ" to seconds since 1970; false when malformed or not a
// real date and time.
bool ParsePlanTime(const std::string &text, int64_t &t);

// What lunaquill-plan is run with when an option is not given.
struct PlanDefaults {
    bool homeSet = false;        // the settings file names a home station
    double homeLatitude = 0.0;
    double homeLongitude = 0.0;
    double frequencyMHz = 1296.0;
    int64_t now = 0;
    const char *version = "";
    const char *homeName = "";   // how the settings file's home station is shown
};

// lunaquill-plan: reads the options of argv[1..argc), writes the plan (or
// the help or version text) to `out` and returns 0; on bad input writes one
// line naming the argument to `err`, nothing to `out`, and returns 2.
int RunPlanCommand(int argc, const char *const *argv, const PlanDefaults &defaults, FILE *out,
                   FILE *err);

} // namespace lunaquill
