// What holds for the records of a station list (the DX list, a band list)
// after reading any file.
#pragma once

#include "FuzzSupport.h"

#include "tracking/Maidenhead.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace lunaquill::fuzz {

// The file's text as the readers see it: CR LF read as LF.
inline std::string TextOfFile(const uint8_t *data, size_t size)
{
    std::string text;
    text.reserve(size);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == '\r' && i + 1 < size && data[i + 1] == '\n')
            continue;
        text += (char)data[i];
    }
    return text;
}

// Checks one list. Per record: each field is its text, then zeros to its
// full width; no field holds a comma, the location no newline (nor the call
// and grid when `newlineEndsEveryField`); no record is the end marker; the
// position is still the zero of a cleared record (it is filled when the list
// is shown) and the grid converts within its field. Over the list: the count
// within its capacity and the number of lines (`extraLinesPerByte` allows for
// lines cut into pieces), every record past the count all zero, and the
// fields' texts found in the file in the order they are read.
template <typename Record, size_t CallSize, size_t GridSize, size_t LocationSize>
void CheckStationList(const uint8_t *data, size_t size, const Record *records, int count,
                      int capacity, bool newlineEndsEveryField, size_t bytesPerPiece,
                      char (Record::*call)[CallSize], char (Record::*grid)[GridSize],
                      char (Record::*location)[LocationSize])
{
    const std::string text = TextOfFile(data, size);
    const size_t lines = std::count(text.begin(), text.end(), '\n') + 1;
    FUZZ_CHECK(count >= 0 && count <= capacity);
    FUZZ_CHECK((size_t)count <= lines + (bytesPerPiece ? text.size() / bytesPerPiece : 0));

    size_t from = 0; // where the next field's text may start in the file
    auto checkField = [&](const char *field, size_t width, const char *stops) {
        const size_t length = strnlen(field, width);
        for (size_t i = length; i < width; ++i)
            FUZZ_CHECK(field[i] == '\0');
        const std::string_view value(field, length);
        FUZZ_CHECK(value.find_first_of(stops) == std::string_view::npos);
        if (length > 0) {
            from = text.find(value, from);
            FUZZ_CHECK(from != std::string::npos);
            from += length;
        }
    };
    const char *callStops = newlineEndsEveryField ? ",\n" : ",";
    for (int i = 0; i < count; ++i) {
        const Record &record = records[i];
        checkField(record.*call, CallSize, callStops);
        FUZZ_CHECK(memcmp(record.*call, "ZZZZZZ", 7) != 0);
        checkField(record.*grid, GridSize, callStops);
        checkField(record.*location, LocationSize, ",\n");
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
