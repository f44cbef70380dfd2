#include "FavoriteList.h"

#include "StationLines.h"

#include <cstdio>
#include <cstring>

namespace lunaquill {

static_assert(sizeof FavoriteEntry::callsign == sizeof StationText::call &&
              sizeof FavoriteEntry::grid == sizeof StationText::grid &&
              sizeof FavoriteEntry::location == sizeof StationText::location);

int ReadFavoriteList(const char *path, FavoriteList &list)
{
    memset(&list, 0, sizeof list);
    FILE *file = path ? fopen(path, "rb") : nullptr;
    if (!file)
        return -1;
    list.count = ReadStationLines(file, ListFormat::Favorites, FavoriteCapacity,
                                  [&list](int i, const StationText &station) {
                                      FavoriteEntry &entry = list.entries[i];
                                      memcpy(entry.callsign, station.call, sizeof entry.callsign);
                                      memcpy(entry.grid, station.grid, sizeof entry.grid);
                                      memcpy(entry.location, station.location,
                                             sizeof entry.location);
                                  });
    fclose(file);
    return 0;
}

} // namespace lunaquill
