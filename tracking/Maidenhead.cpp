#include "Maidenhead.h"

#include <cctype>
#include <cstring>

namespace lunaquill {

int GridToLatLong(const char *grid, double &latitude, double &longitude)
{
    if (!grid)
        return 1;
    // Only the first six characters matter; stop at the NUL so that a short
    // text is never read past its end.
    unsigned char c[6] = {};
    for (int i = 0; i < 6 && grid[i] != '\0'; ++i)
        c[i] = (unsigned char)grid[i];

    // Field letters A to R and subsquare letters A to X, either case: any
    // other letter lies off the globe, and the text is no locator.
    auto within = [](unsigned char letter, char first, char last) {
        return isalpha(letter) && toupper(letter) >= first && toupper(letter) <= last;
    };
    if (!within(c[0], 'A', 'R') || !within(c[1], 'A', 'R') || !isdigit(c[2]) || !isdigit(c[3]))
        return 1;
    int f1 = toupper(c[0]) - 'A';
    int f2 = toupper(c[1]) - 'A';
    int d1 = c[2] - '0';
    int d2 = c[3] - '0';
    int s1 = 12, s2 = 12; // the middle of the square
    if (isalpha(c[4]) && isalpha(c[5])) {
        if (!within(c[4], 'A', 'X') || !within(c[5], 'A', 'X'))
            return 1;
        s1 = tolower(c[4]) - 'a';
        s2 = tolower(c[5]) - 'a';
    }
    longitude = 2 * d1 + 20 * f1 + (s1 + 0.5) * 5 / 60 - 180;
    latitude = 10 * f2 - 90 + d2 + (s2 + 0.5) * 2.5 / 60;
    return 0;
}

int LatLongToGrid(char *buffer7, double latitude, double longitude)
{
    memset(buffer7, 0, 7);
    if (longitude < -180 || longitude > 180)
        return 1;
    // A NaN longitude passes the test above; refuse it here, since the
    // conversions below would be undefined for it.
    if (longitude != longitude)
        return 1;
    // The latitude is not checked: callers pass map positions. Out-of-range
    // or non-finite values give characters outside the usual ranges but stay
    // within the buffer; the integer conversions are kept finite.
    double a = latitude + 90;
    double o = longitude + 180;
    if (!(a > -1e9 && a < 1e9))
        a = 0;
    int n = (int)(o / 2);
    int m = (int)a;
    buffer7[0] = (char)('A' + (int)(o / 20));
    buffer7[1] = (char)('A' + (int)(a / 10));
    buffer7[2] = (char)('0' + n % 10);
    buffer7[3] = (char)('0' + m % 10);
    buffer7[4] = (char)('a' + (int)((o - 2 * n) * 60 / 5));
    buffer7[5] = (char)('a' + (int)((a - m) * 60 / 2.5));
    return 0;
}

} // namespace lunaquill
