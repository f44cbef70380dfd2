// The lines of the station lists users keep: the DX station list and the band
// and favourites lists. One station a line, comma-separated: call, grid, four
// fields the program does not use, location; '/' starts a comment line; a
// "ZZZZZZ" call ends the list. The two kinds of list differ in a few rules
// that users' files have always been read by (see ListFormat).
// Plain C++, no Qt: every byte sequence is read within the buffers below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>

namespace lunaquill {

enum class ListFormat {
    // DxStations.txt: a line longer than 255 characters goes on as a further
    // line; a newline ends every field; a line that is only a newline is
    // skipped.
    DxStations,
    // Band and favourites lists: only the first 255 characters of a line are
    // read; a newline ends the location only, so on a line without further
    // commas it stays in the call or the grid; a line that is only a newline
    // is a station (with the newline for its call).
    Favorites,
};

// 255 characters of a line and the terminating NUL.
constexpr int StationLineSize = 256;

// Reads the next line as a text-mode read on Windows does: CR LF becomes LF
// before the line is cut to 255 characters, so a CR never ends up in a
// field. The line keeps its LF. False at the end of the file.
bool ReadStationLine(FILE *file, char (&line)[StationLineSize], ListFormat format);

// The text fields of one station. A field that fills its whole width has no
// terminator: read it with strnlen(field, sizeof field).
struct StationText {
    char call[12];
    char grid[8];
    char location[64];
};

enum class LineKind { Skipped, EndOfList, Station };

// How many bytes from the start of text (of `length` bytes) form whole,
// well-formed UTF-8 characters, up to the first byte that breaks UTF-8.
// `cutAtEnd`, when given, tells whether that byte begins a character that
// the end of the text cuts off.
size_t Utf8Length(const char *text, size_t length, bool *cutAtEnd = nullptr);

// Whether all of text is well-formed UTF-8 (no overlong forms, no surrogates).
inline bool IsUtf8(const char *text, size_t length) { return Utf8Length(text, length) == length; }

// Splits one line (NUL-terminated) into `station`, which it clears first.
// A field stops at a comma, which is consumed, or at its full width, which
// leaves the rest, comma included, to the next field. In a line of UTF-8
// text (its end may be a character cut by the line's limit) a field never
// ends in part of a character: one that would not fit whole goes to the
// next field, and a cut one at the line's end is dropped. Any other line is
// taken byte by byte (Latin-1).
LineKind ParseStationLine(const char *line, ListFormat format, StationText &station);

// Reads the stations of an open list, at most `capacity`, handing each to
// `store` with its index, until the end of the file or the "ZZZZZZ" line.
// Returns how many were stored.
int ReadStationLines(FILE *file, ListFormat format, int capacity,
                     const std::function<void(int, const StationText &)> &store);

} // namespace lunaquill
