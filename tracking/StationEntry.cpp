#include "StationEntry.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>

namespace lunaquill {

namespace {

// Truncation toward zero that saturates instead of overflowing (NaN gives 0).
// The bound is symmetric so that the absolute value stays defined.
int TruncateToInt(double x)
{
    if (x != x)
        return 0;
    if (x >= INT_MAX)
        return INT_MAX;
    if (x <= -INT_MAX)
        return -INT_MAX;
    return (int)x;
}

// atoi without its undefined overflow: saturates at the int range.
int ReadInt(const std::string &text)
{
    long value = std::strtol(text.c_str(), nullptr, 10);
    return (int)std::clamp<long>(value, -INT_MAX, INT_MAX);
}

} // namespace

double ReadDouble(const std::string &text)
{
    const char *p = text.c_str();
    const char *end = p + text.size();
    while (p < end && isspace((unsigned char)*p))
        ++p;
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-'))
        negative = *p++ == '-';
    if (p < end && *p == '-') // a second sign is no number
        return 0;
    double value = 0;
    if (std::from_chars(p, end, value).ec != std::errc())
        value = 0;
    return negative ? -value : value;
}

bool ReadNumberWithin(const std::string &text, double low, double high, double &value)
{
    const char *p = text.c_str();
    const char *end = p + text.size();
    while (p < end && isspace((unsigned char)*p))
        ++p;
    while (end > p && isspace((unsigned char)end[-1]))
        --end;
    if (p < end && *p == '+' && p + 1 < end && p[1] != '-') // from_chars takes '-' only
        ++p;
    double number = 0;
    const auto [stop, error] = std::from_chars(p, end, number, std::chars_format::general);
    // Comparisons with NaN fail, and "inf" lies beyond any bound.
    if (error != std::errc() || stop != end || !(number >= low && number <= high))
        return false;
    value = number;
    return true;
}

PositionTexts PositionTextsFromValue(double value)
{
    if (!std::isfinite(value))
        value = 0;
    // trunc(value) reduced modulo 360 with the sign of the value; fmod gives
    // the same for every value an int can hold and stays defined beyond.
    int degrees = (int)std::fmod(value, 360.0);
    double minutesExact = (value - degrees) * 60;
    int minutes = TruncateToInt(minutesExact);
    double seconds = std::fabs((minutesExact - minutes) * 60);

    PositionTexts texts;
    texts.degrees = std::to_string(std::abs(degrees));
    texts.minutes = std::to_string(std::abs(minutes));
    texts.seconds = FormatFixed(seconds, 7, 5);
    texts.hemisphere = value < 0 ? SouthOrWest : NorthOrEast;
    return texts;
}

std::string CutPositionField(const std::string &text)
{
    return text.substr(0, PositionFieldLimit);
}

bool ValueFromPositionFields(const std::string &degrees, const std::string &minutes,
                             const std::string &seconds, int hemisphere, double &value)
{
    int deg = ReadInt(CutPositionField(degrees));
    int min = ReadInt(CutPositionField(minutes));
    double sec = ReadDouble(CutPositionField(seconds));
    // Seconds over 360, not 3600: positions entered this way have always been
    // stored like that, so the rule stays. The sign comes from the combo only.
    double sum = (min / 60.0 + deg + sec / 360) * (hemisphere != NorthOrEast ? -1 : 1);
    if (!std::isfinite(sum))
        return false;
    value = sum;
    return true;
}

std::string FormatFixed(double value, int width, int precision)
{
    // Room for the largest double written out in full.
    char buffer[400];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value,
                                std::chars_format::fixed, precision);
    std::string text(buffer, result.ec == std::errc() ? result.ptr : buffer);
    if ((int)text.size() < width)
        text.insert(0, width - text.size(), ' ');
    return text;
}

} // namespace lunaquill
