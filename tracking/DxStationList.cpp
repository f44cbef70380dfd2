#include "DxStationList.h"

#include "StationLines.h"

#include <cstdio>
#include <cstring>

namespace lunaquill {

DxStationRecord dxStationRecords[DxStationCapacity];
int dxStationCount;

static_assert(sizeof DxStationRecord::prefix == sizeof StationText::call &&
              sizeof DxStationRecord::grid == sizeof StationText::grid &&
              sizeof DxStationRecord::location == sizeof StationText::location);

uint32_t ReadDxStations(const char *path)
{
    dxStationCount = 0;
    FILE *file = path ? fopen(path, "rb") : nullptr;
    if (!file)
        return DxStationsUnreadable;
    memset(dxStationRecords, 0, sizeof dxStationRecords);
    dxStationCount = ReadStationLines(file, ListFormat::DxStations, DxStationCapacity,
                                      [](int i, const StationText &station) {
                                          DxStationRecord &record = dxStationRecords[i];
                                          memcpy(record.prefix, station.call, sizeof record.prefix);
                                          memcpy(record.grid, station.grid, sizeof record.grid);
                                          memcpy(record.location, station.location,
                                                 sizeof record.location);
                                      });
    fclose(file);
    return 0;
}

} // namespace lunaquill
