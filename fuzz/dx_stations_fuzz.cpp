// The DX station list reader on any file.
#include "StationListChecks.h"

#include "tracking/DxStationList.h"

using namespace lunaquill;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const fuzz::ScratchFile file;
    FUZZ_CHECK(ReadDxStations(file.Write(data, size)) == 0);
    fuzz::CheckStationList(data, size, ListFormat::DxStations, dxStationRecords, dxStationCount,
                           DxStationCapacity, &DxStationRecord::prefix, &DxStationRecord::grid,
                           &DxStationRecord::location);
    return 0;
}
