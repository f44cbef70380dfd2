// A text field of a record (a list's call, grid or location, a station's
// call) as the user wrote it: files and settings hold UTF-8 or Latin-1, and a
// Latin-1 text is practically never well-formed UTF-8, so UTF-8 is tried first.
#pragma once

#include "StationLines.h"

#include <QString>

#include <cstring>

namespace lunaquill {

// The field's bytes up to its NUL, read no further than its size.
inline QString FieldText(const char *field, size_t size)
{
    const size_t length = strnlen(field, size);
    return IsUtf8(field, length) ? QString::fromUtf8(field, (qsizetype)length)
                                 : QString::fromLatin1(field, (qsizetype)length);
}

} // namespace lunaquill
