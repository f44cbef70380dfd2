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
    fuzz::CheckStationList(data, size, ListFormat::Favorites, list->entries, list->count,
                           FavoriteCapacity, &FavoriteEntry::callsign, &FavoriteEntry::grid,
                           &FavoriteEntry::location);
    return 0;
}
