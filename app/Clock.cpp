#include "Clock.h"

#include <cstdio>
#include <cstring>
#include <limits>

namespace lunaquill {

namespace {

const char *const kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char *const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// A name from a table, "???" for an index that a broken-down time from
// anywhere but gmtime could carry.
template <size_t N>
const char *NameAt(const char *const (&names)[N], int index)
{
    return index >= 0 && static_cast<size_t>(index) < N ? names[index] : "???";
}

// mktime's fields are int; the wider sum keeps far-out values from overflowing.
int ToTmField(int64_t value)
{
    if (value > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    if (value < std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

int32_t ToOffset(double seconds)
{
    if (seconds > std::numeric_limits<int32_t>::max())
        return std::numeric_limits<int32_t>::max();
    if (seconds < std::numeric_limits<int32_t>::min())
        return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(seconds);
}

} // namespace

const char *ClockText(const struct tm &time)
{
    static char text[80];
    memset(text, 0, sizeof text);
    snprintf(text, sizeof text, "%.3s %.3s%3d %.2d:%.2d:%.2d %lld",
             NameAt(kWeekdays, time.tm_wday), NameAt(kMonths, time.tm_mon), time.tm_mday,
             time.tm_hour, time.tm_min, time.tm_sec,
             static_cast<long long>(time.tm_year) + 1900);
    return text;
}

int32_t TimeStepSeconds(const char *buttonName)
{
    if (!buttonName)
        return 0;
    for (const TimeStep &step : kTimeSteps) {
        if (strcmp(step.buttonName, buttonName) == 0)
            return step.seconds;
    }
    return 0;
}

int32_t LocalStandardTimeOffset()
{
    time_t now = time(nullptr);
    struct tm utc {};
    gmtime_r(&now, &utc);
    utc.tm_isdst = 0;
    time_t utcFieldsAsLocal = mktime(&utc);
    return ToOffset(difftime(now, utcFieldsAsLocal));
}

int32_t OffsetForEnteredUtc(int32_t month, int32_t day, int32_t year,
                            int32_t hours, int32_t minutes, int32_t seconds)
{
    // The fields are UTC: timegm reads them so whatever the local zone and
    // its history (a zone term taken at now is wrong for a date before the
    // zone last changed its standard offset). It also carries a day past the
    // month's end into the next month.
    struct tm entered {};
    entered.tm_mon = ToTmField(int64_t{month} - 1);
    entered.tm_mday = day;
    entered.tm_year = ToTmField(int64_t{year} - 1900);
    entered.tm_hour = hours;
    entered.tm_min = minutes;
    entered.tm_sec = seconds;
    const time_t enteredUtc = timegm(&entered);
    return ToOffset(difftime(enteredUtc, time(nullptr)));
}

} // namespace lunaquill
