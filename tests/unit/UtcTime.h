// The UTC breakdown of an instant, as the calculator takes it.
#pragma once

#include <ctime>

inline struct tm Utc(time_t t)
{
    struct tm utc {};
    gmtime_r(&t, &utc);
    return utc;
}
