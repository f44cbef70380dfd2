// The band and favourites list reader on any file.
#include "StationListChecks.h"

#include "tracking/FavoriteList.h"

#include <memory>

using namespace lunaquill;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const fuzz::ScratchFile file;
    // On the heap, exactly the size of the list, so a write past it is caught.
    static const auto list = std::make_unique<FavoriteList>();
    FUZZ_CHECK(ReadFavoriteList(file.Write(data, size), *list) == 0);
    // Only the first 255 characters of a line are read: one record a line at most.
    fuzz::CheckStationList(data, size, list->entries, list->count, FavoriteCapacity, false, 0,
                           &FavoriteEntry::callsign, &FavoriteEntry::grid,
                           &FavoriteEntry::location);
    return 0;
}
