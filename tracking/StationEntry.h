// Latitude and longitude as the station dialogs show and read them: degrees,
// minutes and seconds fields plus a hemisphere combo. No Qt here, so the
// conversions can be checked on their own.
#pragma once

#include <string>

namespace lunaquill {

// Combo index of the hemisphere choice: 0 north or east, 1 south or west.
enum Hemisphere { NorthOrEast = 0, SouthOrWest = 1 };

// The three field texts and the combo index that show one decimal value:
// degrees "%d" and minutes "%d" (both without sign, degrees reduced modulo
// 360), seconds "%7.5f"; the sign goes to the combo. A value that is not a
// finite number is shown as 0.
struct PositionTexts {
    std::string degrees;
    std::string minutes;
    std::string seconds;
    int hemisphere;
};
PositionTexts PositionTextsFromValue(double value);

// Each field keeps at most this many characters when it is read back.
constexpr size_t PositionFieldLimit = 10;

// The first PositionFieldLimit characters of a field's text.
std::string CutPositionField(const std::string &text);

// Decimal degrees from the three field texts (cut first, then read like
// atoi, atoi, atof, always with '.' as the decimal point) and the combo
// index: (min/60 + deg + sec/360), negated for a non-zero index. Returns
// false and leaves value unchanged when the sum is not a finite number.
bool ValueFromPositionFields(const std::string &degrees, const std::string &minutes,
                             const std::string &seconds, int hemisphere, double &value);

// atof in the C locale: leading white space, an optional sign, then as much
// of a number as there is; 0 when there is none or it is out of range.
double ReadDouble(const std::string &text);

// The operating frequencies the program computes with, in MHz, and the one
// it starts with.
constexpr double MinimumFrequency = 1.0;
constexpr double MaximumFrequency = 300000.0;
constexpr double DefaultFrequency = 1296.0;

// A number typed as a whole: white space around it, an optional sign, digits
// with an optional '.' and exponent, in the C locale, from low to high. False
// for any other text ("", "abc", "1,296.0", "12 MHz", "nan", "1e308" beyond
// high); value is then left unchanged.
bool ReadNumberWithin(const std::string &text, double low, double high, double &value);

// printf "%W.Pf" with '.' whatever the process locale (Qt sets the locale
// from the environment, and the texts must read back the same way).
std::string FormatFixed(double value, int width, int precision);

} // namespace lunaquill
