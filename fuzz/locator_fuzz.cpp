// The locator conversions on any text and any pair of doubles. Input: the
// locator text, a line feed, the latitude, a line feed, the longitude (each
// number as strtod reads it, so "nan", "inf", "1e308" and "0x1p-1074" reach
// the conversion).
#include "FuzzSupport.h"

#include "tracking/Maidenhead.h"

#include <cctype>
#include <cmath>
#include <cstring>
#include <memory>

using namespace lunaquill;

namespace {

bool Within(int c, char low, char high) { return c >= low && c <= high; }

bool Field(char c) { return Within(toupper((unsigned char)c), 'A', 'R'); }
bool Subsquare(char c) { return Within(tolower((unsigned char)c), 'a', 'x'); }

// Four or six characters of a locator on the globe: field letters A-R,
// square digits, subsquare letters a-x, either case.
bool IsOnTheGlobe(const std::string &text)
{
    return (text.size() == 4 || text.size() == 6) && Field(text[0]) && Field(text[1]) &&
           isdigit((unsigned char)text[2]) && isdigit((unsigned char)text[3]) &&
           (text.size() == 4 || (Subsquare(text[4]) && Subsquare(text[5])));
}

// What the conversion accepts: the first six characters of the C string
// begin with a locator's square, and a subsquare of two letters, if there is
// one, is a real subsquare; anything after the sixth character is not read.
bool IsAccepted(const std::string &text)
{
    const std::string six = std::string(text.c_str()).substr(0, 6) + std::string(6, '\0');
    auto letter = [](char c) { return isalpha((unsigned char)c) != 0; };
    return Field(six[0]) && Field(six[1]) && isdigit((unsigned char)six[2]) &&
           isdigit((unsigned char)six[3]) &&
           (!letter(six[4]) || !letter(six[5]) || (Subsquare(six[4]) && Subsquare(six[5])));
}

void CheckGridToLatLong(const std::string &text)
{
    double latitude = 1234.5, longitude = -1234.5;
    const int result = GridToLatLong(text.c_str(), latitude, longitude);
    FUZZ_CHECK(result == (IsAccepted(text) ? 0 : 1));
    if (result == 1) {
        FUZZ_CHECK(latitude == 1234.5 && longitude == -1234.5);
    } else { // on the globe, within the square
        FUZZ_CHECK(latitude > -90 && latitude < 90 && longitude > -180 && longitude < 180);
    }
    // A locator goes back to itself, upper-case field, lower-case subsquare,
    // a square to its middle subsquare "mm".
    if (IsOnTheGlobe(text)) {
        FUZZ_CHECK(result == 0);
        FUZZ_CHECK(latitude > -90 && latitude < 90 && longitude > -180 && longitude < 180);
        char back[7];
        FUZZ_CHECK(LatLongToGrid(back, latitude, longitude) == 0);
        std::string expected = text.size() == 4 ? text + "mm" : text;
        for (int i = 0; i < 6; ++i)
            expected[i] = (char)(i < 2 ? toupper((unsigned char)expected[i])
                                       : tolower((unsigned char)expected[i]));
        FUZZ_CHECK(expected == back);
    }
    // A field of 8 bytes without a terminator: only its first six count.
    char field[8];
    memset(field, 'x', sizeof field);
    memcpy(field, text.data(), std::min(text.size(), sizeof field));
    double fieldLatitude = 0, fieldLongitude = 0, sixLatitude = 0, sixLongitude = 0;
    const std::string six = std::string(field, 8).substr(0, 6);
    FUZZ_CHECK(GridToLatLong(field, fieldLatitude, fieldLongitude) ==
               GridToLatLong(six.c_str(), sixLatitude, sixLongitude));
    FUZZ_CHECK(memcmp(&fieldLatitude, &sixLatitude, sizeof(double)) == 0 &&
               memcmp(&fieldLongitude, &sixLongitude, sizeof(double)) == 0);
}

void CheckLatLongToGrid(double latitude, double longitude)
{
    // Exactly seven bytes on the heap: a write past them is caught.
    const auto grid = std::make_unique<char[]>(7);
    memset(grid.get(), '?', 7);
    const int result = LatLongToGrid(grid.get(), latitude, longitude);
    const bool refused = !(longitude >= -180 && longitude <= 180);
    FUZZ_CHECK(result == (refused ? 1 : 0));
    FUZZ_CHECK(grid[6] == '\0');
    if (refused) {
        for (int i = 0; i < 6; ++i)
            FUZZ_CHECK(grid[i] == '\0');
        return;
    }
    // The latitude is not checked: only a position on the globe promises a
    // locator, whose middle lies within half a subsquare of the position.
    if (!(latitude >= -90 && latitude <= 90))
        return;
    FUZZ_CHECK(Within(grid[0], 'A', 'S') && Within(grid[1], 'A', 'S'));
    FUZZ_CHECK(Within(grid[2], '0', '9') && Within(grid[3], '0', '9'));
    FUZZ_CHECK(Within(grid[4], 'a', 'x') && Within(grid[5], 'a', 'x'));
    // 90 and 180 (or a longitude that rounds to 180 when 180 is added) lie
    // on the edge of a field S beyond the globe: no locator.
    const bool onEdge = grid[0] == 'S' || grid[1] == 'S';
    FUZZ_CHECK(onEdge == (latitude + 90 >= 180 || longitude + 180 >= 360));
    double middleLatitude = 0, middleLongitude = 0;
    FUZZ_CHECK(GridToLatLong(grid.get(), middleLatitude, middleLongitude) == (onEdge ? 1 : 0));
    if (!onEdge) {
        FUZZ_CHECK(std::fabs(middleLatitude - latitude) <= 1.25 / 60 + 1e-9);
        FUZZ_CHECK(std::fabs(middleLongitude - longitude) <= 2.5 / 60 + 1e-9);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::vector<std::string> fields = fuzz::Fields(data, size, 3);
    CheckGridToLatLong(fields[0]);
    CheckLatLongToGrid(fuzz::DoubleField(fields[1]), fuzz::DoubleField(fields[2]));
    return 0;
}
