// The texts of the station entry fields on any input: the degrees, minutes
// and seconds fields read back into a position, a position shown in the
// fields, and the number texts. Input: three field texts, the hemisphere
// index, a value (as strtod reads it), a width and a precision, one a line.
#include "FuzzSupport.h"

#include "tracking/StationEntry.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>

using namespace lunaquill;

namespace {

// A reader of one typed text whose value is finite whatever the text.
using TextReader = double (*)(const std::string &text);

// The position fields read alone, the other two empty.
template <int Field>
double PositionField(const std::string &text)
{
    const std::string texts[3] = {Field == 0 ? text : "", Field == 1 ? text : "",
                                  Field == 2 ? text : ""};
    double value = 0;
    ValueFromPositionFields(texts[0], texts[1], texts[2], NorthOrEast, value);
    return value;
}

const TextReader kTextReaders[] = {
    PositionField<0>, // degrees
    PositionField<1>, // minutes
    PositionField<2>, // seconds
};

// A small number from a text, whatever the text.
int SmallNumber(const std::string &text, int modulo)
{
    return (int)(strtol(text.c_str(), nullptr, 10) % modulo);
}

bool AllDigits(const std::string &text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

void CheckReadingFields(const std::string &degrees, const std::string &minutes,
                        const std::string &seconds, int hemisphere)
{
    double value = 1234.5;
    const bool read = ValueFromPositionFields(degrees, minutes, seconds, hemisphere, value);
    FUZZ_CHECK(read ? std::isfinite(value) : value == 1234.5);
    // The sign comes from the combo alone.
    double north = -1234.5, south = -1234.5;
    FUZZ_CHECK(ValueFromPositionFields(degrees, minutes, seconds, NorthOrEast, north) == read);
    FUZZ_CHECK(ValueFromPositionFields(degrees, minutes, seconds, SouthOrWest, south) == read);
    if (read)
        FUZZ_CHECK(south == -north && value == (hemisphere != NorthOrEast ? south : north));
    // Only the first ten characters of a field count.
    const std::string texts[3] = {degrees, minutes, seconds};
    for (int field = 0; field < 3; ++field) {
        FUZZ_CHECK(CutPositionField(texts[field]) == texts[field].substr(0, PositionFieldLimit));
        if (texts[field].size() < PositionFieldLimit)
            continue;
        std::string longer[3] = {degrees, minutes, seconds};
        longer[field] += "77";
        double longerValue = 1234.5;
        FUZZ_CHECK(ValueFromPositionFields(longer[0], longer[1], longer[2], hemisphere,
                                           longerValue) == read);
        FUZZ_CHECK(!read || longerValue == value);
    }
}

// A number typed as a whole (a frequency, a user point): taken exactly when
// strtod in the C locale reads the whole text, white space around it aside,
// as a decimal number (no hexadecimal, "inf" or "nan" forms) within the
// bounds, and then with strtod's value.
void CheckReadingWholeNumber(const std::string &text, double low, double high)
{
    double value = 1234.5;
    const bool read = ReadNumberWithin(text, low, high, value);
    char *end = nullptr;
    errno = 0;
    const double reference = strtod(text.c_str(), &end);
    // Below the smallest normal double, strtod and from_chars may disagree
    // on underflow; the readers' bounds make such a value meaningless anyway.
    if (errno == ERANGE && std::fabs(reference) < 1)
        return;
    const bool someNumber = end != text.c_str();
    while (*end != '\0' && isspace((unsigned char)*end))
        ++end;
    const bool whole = someNumber && *end == '\0' && strlen(text.c_str()) == text.size();
    const bool decimal = text.find_first_of("xXiInN") == std::string::npos;
    FUZZ_CHECK(read == (whole && decimal && reference >= low && reference <= high));
    FUZZ_CHECK(read ? value == reference : value == 1234.5);
}

void CheckShowingValue(double value)
{
    const PositionTexts texts = PositionTextsFromValue(value);
    // Not a finite number: shown as 0.
    FUZZ_CHECK(texts.hemisphere == (std::isfinite(value) && value < 0 ? SouthOrWest : NorthOrEast));
    FUZZ_CHECK(AllDigits(texts.degrees) && AllDigits(texts.minutes));
    const double seconds = strtod(texts.seconds.c_str(), nullptr);
    FUZZ_CHECK(texts.seconds.size() >= 7 && seconds >= 0);
    const long degrees = strtol(texts.degrees.c_str(), nullptr, 10);
    FUZZ_CHECK(degrees < 360);
    // Within a turn the three fields give the value to half the last digit of
    // the seconds, 0.5e-5 s. (Beyond, the minutes count from the reduced
    // degrees to the whole value: a position never lies there.)
    if (std::fabs(value) < 360) {
        const long minutes = strtol(texts.minutes.c_str(), nullptr, 10);
        FUZZ_CHECK(minutes < 60 && seconds <= 60);
        const double shown = degrees + minutes / 60.0 + seconds / 3600;
        FUZZ_CHECK(std::fabs(shown - std::fabs(value)) <= 0.5e-5 / 3600 + 1e-12);
    } else if (!std::isfinite(value)) {
        FUZZ_CHECK(texts.degrees == "0" && texts.minutes == "0" && texts.seconds == "0.00000");
    }
}

void CheckFormatFixed(double value, int width, int precision)
{
    const std::string text = FormatFixed(value, width, precision);
    FUZZ_CHECK((int)text.size() >= width);
    const size_t number = text.find_first_not_of(' ');
    FUZZ_CHECK(number != std::string::npos);
    FUZZ_CHECK(number == 0 || (int)text.size() == width);
    // Written in full and read back: within half a unit of the last digit.
    if (std::isfinite(value)) {
        const size_t point = text.find('.');
        const size_t decimals = point == std::string::npos ? 0 : text.size() - point - 1;
        FUZZ_CHECK(decimals == (size_t)precision && (precision > 0) == (point != std::string::npos));
        const double back = strtod(text.c_str(), nullptr);
        FUZZ_CHECK(std::fabs(back - value) <=
                   0.5 * std::pow(10.0, -precision) + 1e-15 * std::fabs(value));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::vector<std::string> fields = fuzz::Fields(data, size, 7);
    for (const TextReader read : kTextReaders) {
        const double value = read(fields[0]);
        FUZZ_CHECK(std::isfinite(value));
        // A text that starts with something other than white space keeps its
        // value when more is written after a space.
        if (!fields[0].empty() && !isspace((unsigned char)fields[0][0]))
            FUZZ_CHECK(read(fields[0] + " 7") == value);
    }
    CheckReadingWholeNumber(fields[0], MinimumFrequency, MaximumFrequency);
    CheckReadingWholeNumber(fields[1], -90, 90);
    CheckReadingFields(fields[0], fields[1], fields[2], SmallNumber(fields[3], 4));
    const double value = fuzz::DoubleField(fields[4]);
    CheckShowingValue(value);
    CheckFormatFixed(value, SmallNumber(fields[5], 40), std::abs(SmallNumber(fields[6], 18)));
    return 0;
}
