// What holds for the records of a station list (the DX list, a band list)
// after reading any file.
#pragma once

#include "FuzzSupport.h"

#include "tracking/Maidenhead.h"
#include "tracking/StationLines.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <iconv.h>

namespace lunaquill::fuzz {

struct Station {
    std::string call, grid, location;
};

// How glibc's converter takes text as UTF-8: whole, whole but for a last
// character cut off by the end (the bytes of which `cut` receives), or not.
enum class Utf8Reading { Whole, CutAtEnd, Not };

inline Utf8Reading ReadAsUtf8(const std::string &text, std::string *cut = nullptr)
{
    auto convert = [](const std::string &bytes, size_t &left) {
        iconv_t converter = iconv_open("UTF-32LE", "UTF-8");
        std::string out(4 * bytes.size() + 4, '\0');
        char *in = const_cast<char *>(bytes.data()), *to = out.data();
        size_t room = out.size();
        left = bytes.size();
        const int error = iconv(converter, &in, &left, &to, &room) == (size_t)-1 ? errno : 0;
        iconv_close(converter);
        return error;
    };
    size_t left = 0;
    const int error = convert(text, left);
    if (error == 0)
        return Utf8Reading::Whole;
    if (error != EINVAL)
        return Utf8Reading::Not;
    // glibc calls any incomplete end EINVAL, even one no character starts
    // with ("\xe0\x80"): the end is a cut character only when some
    // continuation makes it a whole one.
    const std::string end = text.substr(text.size() - left);
    for (size_t more = 1; more <= 3; ++more)
        for (char next : {'\x80', '\x90', '\xa0'}) {
            size_t rest = 0;
            if (convert(end + next + std::string(more - 1, '\x80'), rest) == 0) {
                if (cut)
                    *cut = end;
                return Utf8Reading::CutAtEnd;
            }
        }
    return Utf8Reading::Not;
}

// The stations of a list file by the rules users' files are read by, worked
// out plainly over the whole text rather than line by line from the file.
inline std::vector<Station> ExpectedStations(const uint8_t *data, size_t size, ListFormat format,
                                             size_t capacity)
{
    const bool dx = format == ListFormat::DxStations;
    std::string text; // CR LF read as LF
    for (size_t i = 0; i < size; ++i)
        if (!(data[i] == '\r' && i + 1 < size && data[i + 1] == '\n'))
            text += (char)data[i];

    std::vector<Station> stations;
    size_t next = 0;
    while (stations.size() < capacity && next < text.size()) {
        // A line of at most 255 characters with its newline; a band list
        // drops the rest of a longer line, the DX list reads it as a line.
        const size_t newline = text.find('\n', next);
        const size_t lineEnd = newline == std::string::npos ? text.size() : newline + 1;
        std::string line = text.substr(next, std::min<size_t>(lineEnd - next, 255));
        next = dx || line.size() < 255 || line.back() == '\n' ? next + line.size() : lineEnd;
        line.resize(strnlen(line.c_str(), line.size())); // the line is read as a C string
        if (line.empty() || line[0] == '/' || (dx && line[0] == '\n'))
            continue;
        // UTF-8 text loses a last character cut off by the line's limit, and
        // none of its characters is split between two fields.
        std::string cut;
        const Utf8Reading reading = ReadAsUtf8(line, &cut);
        line.resize(line.size() - cut.size());
        // A field ends at a comma (consumed) or after its width (not).
        size_t at = 0;
        auto field = [&](size_t width, const char *stops) {
            size_t length = std::min(width, line.find_first_of(stops, at) - at);
            while (reading != Utf8Reading::Not && at + length < line.size() && length > 0 &&
                   (line[at + length] & 0xC0) == 0x80)
                --length; // back to the first byte of the character cut in two
            std::string value = line.substr(at, length);
            at += value.size();
            if (value.size() < width && at < line.size() && line[at] == ',')
                ++at;
            return value;
        };
        const char *stops = dx ? ",\n" : ",";
        Station station;
        station.call = field(12, stops);
        if (station.call == "ZZZZZZ")
            break;
        station.grid = field(8, stops);
        for (int skipped = 0; skipped < 4; ++skipped)
            field(line.size(), ",");
        station.location = field(64, ",\n");
        stations.push_back(station);
    }
    return stations;
}

// Checks one list against the expected stations: the count, and per record
// each field's text followed by zeros to its full width, without a comma
// (nor a newline where a newline ends the field); the position still the
// zero of a cleared record (it is filled when the list is shown), a grid that
// converts within its field, and every record past the count all zero.
template <typename Record, size_t CallSize, size_t GridSize, size_t LocationSize>
void CheckStationList(const uint8_t *data, size_t size, ListFormat format, const Record *records,
                      int count, int capacity, char (Record::*call)[CallSize],
                      char (Record::*grid)[GridSize], char (Record::*location)[LocationSize])
{
    const std::vector<Station> expected = ExpectedStations(data, size, format, capacity);
    FUZZ_CHECK(count >= 0 && (size_t)count == expected.size());

    auto checkField = [](const char *field, size_t width, const std::string &text,
                         const char *stops) {
        const size_t length = strnlen(field, width);
        for (size_t i = length; i < width; ++i)
            FUZZ_CHECK(field[i] == '\0');
        FUZZ_CHECK(std::string(field, length) == text);
        FUZZ_CHECK(text.find_first_of(stops) == std::string::npos);
    };
    const char *stops = format == ListFormat::DxStations ? ",\n" : ",";
    for (int i = 0; i < count; ++i) {
        const Record &record = records[i];
        checkField(record.*call, CallSize, expected[i].call, stops);
        checkField(record.*grid, GridSize, expected[i].grid, stops);
        checkField(record.*location, LocationSize, expected[i].location, ",\n");
        FUZZ_CHECK(record.latitude == 0 && record.longitude == 0);
        double latitude = 0, longitude = 0;
        if (GridToLatLong(record.*grid, latitude, longitude) == 0)
            FUZZ_CHECK(latitude == latitude && longitude == longitude);
    }
    static const Record zero{};
    for (int i = count; i < capacity; ++i)
        FUZZ_CHECK(memcmp(&records[i], &zero, sizeof zero) == 0);
}

} // namespace lunaquill::fuzz
