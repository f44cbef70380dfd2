// libnova's full lunar theory costs milliseconds a call, and the rise/set
// search evaluates it at jd - 1, jd and jd + 1 whatever the station. These
// wrappers remember the Moon's positions and illuminated fraction per Julian
// Date, so refreshing the Moon for hundreds of stations at one instant costs
// one evaluation per date; results are bit-identical to the plain calls.
#pragma once

#include <libnova/ln_types.h>

namespace lunaquill {

// ln_get_lunar_equ_coords, remembered per Julian Date.
void CachedLunarEquCoords(double jd, struct ln_equ_posn *position);

// ln_get_lunar_rst: the same search with the remembered coordinates.
int CachedLunarRst(double jd, struct ln_lnlat_posn *observer, struct ln_rst_time *rst);

// ln_get_lunar_disk, remembered per Julian Date.
double CachedLunarDisk(double jd);

} // namespace lunaquill
