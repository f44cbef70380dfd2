#include "StationLines.h"

#include <cstddef>
#include <cstring>

namespace lunaquill {

namespace {

// The next byte of the file, with CR LF read as one LF.
int NextChar(FILE *file)
{
    int c = getc(file);
    if (c == '\r') {
        int next = getc(file);
        if (next == '\n')
            return '\n';
        if (next != EOF)
            ungetc(next, file);
    }
    return c;
}

// The number of bytes of the well-formed UTF-8 character at s, which has
// `left` bytes: 1 to 4, or 0 when the bytes there are none; `cut` then tells
// whether they begin one that ends beyond the text.
int Utf8Character(const unsigned char *s, size_t left, bool &cut)
{
    cut = false;
    const unsigned char lead = s[0];
    if (lead < 0x80)
        return 1;
    // The second byte's range excludes overlong forms, surrogates and code
    // points beyond U+10FFFF.
    int length;
    unsigned char low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF)
        length = 2;
    else if (lead >= 0xE0 && lead <= 0xEF)
        length = 3, low = lead == 0xE0 ? 0xA0 : 0x80, high = lead == 0xED ? 0x9F : 0xBF;
    else if (lead >= 0xF0 && lead <= 0xF4)
        length = 4, low = lead == 0xF0 ? 0x90 : 0x80, high = lead == 0xF4 ? 0x8F : 0xBF;
    else
        return 0;
    for (int i = 1; i < length; ++i) {
        if ((size_t)i == left) {
            cut = true;
            return 0;
        }
        if (s[i] < (i == 1 ? low : 0x80) || s[i] > (i == 1 ? high : 0xBF))
            return 0;
    }
    return length;
}

// Copies one field of at most N bytes, up to a comma (consumed), the end of
// the line text or, when newlineEnds, a newline. In UTF-8 text the field
// gives back the bytes of a last character it does not hold whole. Returns
// where reading goes on.
template <size_t N>
const char *ReadField(char (&field)[N], const char *p, bool newlineEnds, bool utf8)
{
    size_t n = 0;
    while (n < N && *p != '\0' && *p != ',' && !(newlineEnds && *p == '\n'))
        field[n++] = *p++;
    if (utf8) {
        // The field starts at a character and the line is UTF-8, so what is
        // not whole can only be a last character cut by the width or by the
        // line's end.
        const size_t whole = Utf8Length(field, n);
        memset(field + whole, 0, n - whole);
        p -= n - whole;
        n = whole;
    }
    if (n < N && *p == ',')
        ++p;
    return p;
}

// Moves past a field the program does not use, comma included.
const char *SkipField(const char *p)
{
    while (*p != '\0' && *p != ',')
        ++p;
    return *p == ',' ? p + 1 : p;
}

} // namespace

size_t Utf8Length(const char *text, size_t length, bool *cutAtEnd)
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    size_t at = 0;
    bool cut = false;
    while (at < length) {
        const int character = Utf8Character(bytes + at, length - at, cut);
        if (character == 0)
            break;
        at += character;
    }
    if (cutAtEnd)
        *cutAtEnd = cut;
    return at;
}

bool ReadStationLine(FILE *file, char (&line)[StationLineSize], ListFormat format)
{
    int n = 0;
    while (n < StationLineSize - 1) {
        int c = NextChar(file);
        if (c == EOF)
            break;
        line[n++] = (char)c;
        if (c == '\n')
            break;
    }
    line[n] = '\0';
    if (n == 0)
        return false;
    if (format == ListFormat::Favorites && n == StationLineSize - 1 && line[n - 1] != '\n') {
        int c;
        do
            c = NextChar(file);
        while (c != EOF && c != '\n');
    }
    return true;
}

LineKind ParseStationLine(const char *line, ListFormat format, StationText &station)
{
    station = StationText{};
    const bool dx = format == ListFormat::DxStations;
    if (line[0] == '/' || line[0] == '\0' || (dx && line[0] == '\n'))
        return LineKind::Skipped;
    const size_t length = strlen(line);
    bool cutAtEnd = false;
    const bool utf8 = Utf8Length(line, length, &cutAtEnd) == length || cutAtEnd;
    const char *p = ReadField(station.call, line, dx, utf8);
    // Six Zs and the terminator: "ZZZZZZZ", or in a band list "ZZZZZZ" with
    // the line's newline, is a station.
    if (memcmp(station.call, "ZZZZZZ", 7) == 0)
        return LineKind::EndOfList;
    p = ReadField(station.grid, p, dx, utf8);
    for (int skipped = 0; skipped < 4; ++skipped)
        p = SkipField(p);
    ReadField(station.location, p, true, utf8);
    return LineKind::Station;
}

int ReadStationLines(FILE *file, ListFormat format, int capacity,
                     const std::function<void(int, const StationText &)> &store)
{
    int count = 0;
    char line[StationLineSize];
    StationText station;
    while (count < capacity && ReadStationLine(file, line, format)) {
        LineKind kind = ParseStationLine(line, format, station);
        if (kind == LineKind::EndOfList)
            break;
        if (kind == LineKind::Station)
            store(count++, station);
    }
    return count;
}

} // namespace lunaquill
