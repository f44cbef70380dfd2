// A band or favourites list (Eme144M.txt, Favorites.txt, ...): up to 500
// stations in the line format of StationLines.h, with its band-list rules.
#pragma once

#include <cstdint>

namespace lunaquill {

struct FavoriteEntry {
    char callsign[12];  // no terminator when 12 characters long
    char grid[8];       // no terminator when 8 characters long
    char location[64];  // no terminator when 64 characters long
    double latitude;    // from the grid, filled when the table is built
    double longitude;
};

constexpr int FavoriteCapacity = 500;

struct FavoriteList {
    FavoriteEntry entries[FavoriteCapacity];
    int32_t count;
};

// Clears `list`, then reads the file into it. Returns 0 (also for an empty
// file or one cut at 500 stations), -1 when the file cannot be opened.
int ReadFavoriteList(const char *path, FavoriteList &list);

} // namespace lunaquill
