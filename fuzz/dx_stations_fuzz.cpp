// The DX station list reader on any file.
#include "StationListChecks.h"

#include "tracking/DxStationList.h"
#include "tracking/StationLines.h"

using namespace lunaquill;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const fuzz::ScratchFile file;
    FUZZ_CHECK(ReadDxStations(file.Write(data, size)) == 0);
    // A line longer than 255 characters goes on as another record.
    fuzz::CheckStationList(data, size, dxStationRecords, dxStationCount, DxStationCapacity, true,
                           StationLineSize - 1, &DxStationRecord::prefix, &DxStationRecord::grid,
                           &DxStationRecord::location);
    return 0;
}
