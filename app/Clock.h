// The simulated clock: the text of the date/time button, the eight step
// buttons and the offsets that the date dialog and the zone query compute.
// The displayed instant itself is lunaquill::DisplayedTime() (SharedState.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace lunaquill {

// "Sun Jun  1 00:00:00 2025": weekday, month, day in three places, time and
// year. Returns a static 80-byte buffer, overwritten by the next call.
const char *ClockText(const struct tm &time);

// A step button (object name) and the seconds one press adds to the offset.
// The "minute" buttons step ten minutes; this is intended.
struct TimeStep {
    const char *buttonName;
    int32_t seconds;
};

inline constexpr TimeStep kTimeSteps[] = {
    {"TimeAdjustMinMButton", -600},     {"TimeAdjustMinPButton", 600},
    {"TimeAdjustHourMButton", -3600},   {"TimeAdjustHourPButton", 3600},
    {"TimeAdjustDayMButton", -86400},   {"TimeAdjustDayPButton", 86400},
    {"TimeAdjustWeekMButton", -604800}, {"TimeAdjustWeekPButton", 604800},
};
inline constexpr size_t kTimeStepCount = sizeof kTimeSteps / sizeof kTimeSteps[0];

// The step of the button with that object name; 0 for any other name.
int32_t TimeStepSeconds(const char *buttonName);

// Seconds east of UTC of the local standard time (daylight saving ignored):
// now, broken down as UTC and converted back as local standard time.
int32_t LocalStandardTimeOffset();

// The display offset that makes the displayed instant the entered date and
// time, taken as UTC whatever the local zone and daylight saving. month 1..12;
// a day past the month's end runs on into the next month. An instant beyond
// the offset's 32 bits gives the nearest offset that fits.
int32_t OffsetForEnteredUtc(int32_t month, int32_t day, int32_t year,
                            int32_t hours, int32_t minutes, int32_t seconds);

} // namespace lunaquill
