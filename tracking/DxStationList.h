// The DX station list: up to 1000 stations read from DxStations.txt, one
// comma-separated line each (call, grid, four fields the program does not
// use, location), '/' comment lines, a "ZZZZZZ" line that ends the list.
#pragma once

#include <cstdint>

namespace lunaquill {

struct DxStationRecord {
    char prefix[12];    // prefix or call; no terminator when 12 characters long
    char grid[8];       // no terminator when 8 characters long
    char location[64];  // no terminator when 64 characters long
    double latitude;    // from the grid, filled when the list is shown
    double longitude;
};

constexpr int DxStationCapacity = 1000;
// What ReadDxStations returns when the file cannot be opened.
constexpr uint32_t DxStationsUnreadable = 0xFFFFFFFF;

extern DxStationRecord dxStationRecords[DxStationCapacity];
extern int dxStationCount;

// Reads the list into dxStationRecords (cleared first) and dxStationCount.
// Returns 0 when reading stopped normally (end of file, "ZZZZZZ", or a full
// list), DxStationsUnreadable with a count of 0 when the file cannot be
// opened. Lines are read in pieces of 255 characters (CR LF counts as one),
// so a longer line gives two or more records.
uint32_t ReadDxStations(const char *path);

} // namespace lunaquill
