#include "RadioSources.h"

namespace lunaquill {

// Right ascension h m s; declination as sign flag, degrees, minutes, seconds.
const FixedSource FixedSourceCoordinates[12] = {
    {{17, 45, 40.0409}, {1, 29, 0, 28.118}}, // Sagittarius A
    {{23, 23, 26.0}, {0, 58, 48, 0.0}},      // Cassiopeia A
    {{19, 59, 24.0}, {0, 40, 43, 48.0}},     // Cygnus A
    {{5, 34, 48.0}, {0, 22, 0, 36.0}},       // Taurus A
    {{12, 30, 36.0}, {0, 12, 23, 24.0}},     // Virgo A
    {{13, 25, 12.0}, {1, 43, 0, 0.0}},       // Centaurus A
    {{5, 35, 24.0}, {1, 5, 22, 48.0}},       // Orion M42
    {{18, 17, 24.0}, {1, 16, 8, 24.0}},      // M17
    {{3, 19, 30.0}, {0, 41, 30, 36.0}},      // Perseus A
    {{22, 28, 12.0}, {0, 0, 0, 0.0}},        // Aquarius
    {{9, 59, 24.0}, {0, 30, 45, 0.0}},       // Leo
    {{5, 30, 0.0}, {1, 44, 59, 24.0}},       // Pictor
};

} // namespace lunaquill
