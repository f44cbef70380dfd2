// libnova's full lunar theory costs milliseconds a call, and the rise/set
// search evaluates it at jd - 1, jd and jd + 1 whatever the station. These
// wrappers remember the Moon's positions and illuminated fraction per Julian
// Date, so refreshing the Moon for hundreds of stations at one instant costs
// one evaluation per date.
//
// What they give is what the plain calls give, but not bit for bit: libnova
// keeps its nutation for 0.1 day, so each of its results depends slightly on
// the calls made before it, and a remembered position was computed under an
// earlier such state. The rise/set status is the same; rise, set and transit
// agree within 3e-8 day (3 ms): two plain calls whose nutation was kept from
// different moments already differ by up to about 1e-8 day, and in call
// sequences like the program's the wrappers stayed within 1.5e-9 day of the
// plain calls. The illuminated fraction agrees within 1e-12.
#pragma once

#include <libnova/ln_types.h>

namespace lunaquill {

// Starts computing, on the worker threads (WorkerPool.h), the Moon's
// positions that a rise/set search at `jd` will ask for (a day before, the
// instant, a day after, and two days before for a pass that began the day
// before), with the reentrant evaluation of libnova's lunar theory
// (LunarSeries.h). CachedLunarEquCoords then takes them as they are ready;
// each is bit for bit what it would have computed itself, and the nutation
// and every other kept state of libnova are used on the calling thread only,
// in the same order as without the prefetch. Asked again for the same
// instant it keeps what is under way. Call it from the thread that makes the
// Moon's calls. False (and nothing started) when the prefetch is off.
bool PrefetchLunarRiseSet(double jd);

// Starts, behind everything already handed to the workers, the positions
// for a rise/set search at `jd`, an instant expected next: when the display
// steps evenly (play mode, a step button pressed again) they are ready or
// under way when it comes. Replaced (the tasks not yet begun dropped) by the
// next call; a prefetch for another instant starts its own.
void PrefetchUpcomingLunarRiseSet(double jd);

// Off: no prefetch, and every position computed by ln_get_lunar_equ_coords
// itself, as before the prefetch existed (a test compares the two).
void UseLunarPrefetch(bool on);

// ln_get_lunar_equ_coords, remembered per Julian Date.
void CachedLunarEquCoords(double jd, struct ln_equ_posn *position);

// ln_get_lunar_rst: the same search with the remembered coordinates.
int CachedLunarRst(double jd, struct ln_lnlat_posn *observer, struct ln_rst_time *rst);

// ln_get_lunar_disk, remembered per Julian Date.
double CachedLunarDisk(double jd);

} // namespace lunaquill
