#include "DxStationList.h"

#include <cstdio>
#include <cstring>

namespace lunaquill {

DxStationRecord dxStationRecords[DxStationCapacity];
int dxStationCount;

namespace {

// Lists kept on Windows end their lines with CR LF; read them as text mode
// does there, so that no CR ends up in a field.
void DropCarriageReturn(char *line)
{
    size_t length = strlen(line);
    if (length >= 2 && line[length - 2] == '\r' && line[length - 1] == '\n') {
        line[length - 2] = '\n';
        line[length - 1] = '\0';
    }
}

// Copies one field of at most N characters, up to a comma (which is
// consumed) or the line's end. A field that fills all N characters gets no
// terminator and the comma after it is left for the next field, as the list
// files have always been read. Returns where reading goes on.
template <size_t N>
const char *ReadField(char (&field)[N], const char *p)
{
    size_t n = 0;
    while (n < N && *p != '\0' && *p != '\n' && *p != ',')
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

uint32_t ReadDxStations(const char *path)
{
    dxStationCount = 0;
    FILE *file = path ? fopen(path, "r") : nullptr;
    if (!file)
        return DxStationsUnreadable;
    memset(dxStationRecords, 0, sizeof dxStationRecords);

    char line[256];
    while (dxStationCount < DxStationCapacity && fgets(line, sizeof line, file)) {
        DropCarriageReturn(line);
        if (line[0] == '/' || line[0] == '\n' || line[0] == '\0')
            continue;
        DxStationRecord &record = dxStationRecords[dxStationCount];
        const char *p = ReadField(record.prefix, line);
        if (memcmp(record.prefix, "ZZZZZZ", 7) == 0) {
            record = DxStationRecord{};
            break;
        }
        p = ReadField(record.grid, p);
        for (int skipped = 0; skipped < 4; ++skipped)
            p = SkipField(p);
        ReadField(record.location, p);
        ++dxStationCount;
    }
    fclose(file);
    return 0;
}

} // namespace lunaquill
