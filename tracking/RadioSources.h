// Positions of the fixed radio sources (ids 10..21), handed to libnova as they
// stand.
#pragma once

#include <libnova/ln_types.h>

namespace lunaquill {

struct FixedSource {
    ln_hms ra;
    ln_dms dec;
};

// Indexed by source id - 10.
extern const FixedSource FixedSourceCoordinates[12];

} // namespace lunaquill
