#include "PanelText.h"

#include "tracking/ComputeSource.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>

namespace lunaquill {

QString Printf(const char *format, ...)
{
    char buffer[128];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return QString::fromLatin1(buffer);
}

QString RiseSetText(const char *prefix, double julianDate, int32_t riseSetStatus)
{
    char text[128];
    FormatRiseSet(text, sizeof text, prefix, julianDate, riseSetStatus);
    return QString::fromLatin1(text);
}

QString SourceButtonText(int32_t source)
{
    // Shorter than the Sources table's names: the button is narrow.
    static const char *const names[24] = {
        "Moon", "Sun", "Mercury", "Venus", "Mars", "Jupiter", "Saturn", "Uranus",
        "Neptune", "Pluto", "Sagittarius", "Cassiopeia", "Cygnus", "Taurus", "Virgo",
        "Centaurus", "Orion", "M17", "Perseus A", "Aquarius", "Leo", "Pictor",
        "User Az/El", "User RA/Dec",
    };
    if (source < 0 || source >= 24)
        return QString();
    char text[32];
    snprintf(text, sizeof text, "%s", names[source]);
    for (char *c = text; *c; ++c)
        *c = (char)toupper((unsigned char)*c);
    return QString::fromLatin1(text);
}

} // namespace lunaquill
