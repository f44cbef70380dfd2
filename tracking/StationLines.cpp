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

// Copies one field of at most N characters, up to a comma (consumed), the
// end of the line text or, when newlineEnds, a newline. Returns where
// reading goes on.
template <size_t N>
const char *ReadField(char (&field)[N], const char *p, bool newlineEnds)
{
    size_t n = 0;
    while (n < N && *p != '\0' && *p != ',' && !(newlineEnds && *p == '\n'))
        field[n++] = *p++;
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
    const char *p = ReadField(station.call, line, dx);
    // Six Zs and the terminator: "ZZZZZZZ", or in a band list "ZZZZZZ" with
    // the line's newline, is a station.
    if (memcmp(station.call, "ZZZZZZ", 7) == 0)
        return LineKind::EndOfList;
    p = ReadField(station.grid, p, dx);
    for (int skipped = 0; skipped < 4; ++skipped)
        p = SkipField(p);
    ReadField(station.location, p, true);
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
