// Formatting of the numbers the panels show: printf formats into a fixed
// buffer, as every displayed number is.
#pragma once

#include "tracking/FieldText.h" // FieldText, for the panels

#include <QString>

#include <cstddef>
#include <cstdint>

namespace lunaquill {

// printf into a 128-byte buffer; longer results are cut.
QString Printf(const char *format, ...) __attribute__((format(printf, 1, 2)));

// "<prefix>%02d-%02d %02d:%02d" of a record's rise or set (month, day, hour,
// minute), or "<prefix>always up" / "<prefix>never up".
QString RiseSetText(const char *prefix, double julianDate, int32_t riseSetStatus);


// The name SourceButton shows for a tracked source, upper-cased; empty for an
// index outside the 24 sources.
QString SourceButtonText(int32_t source);

} // namespace lunaquill
