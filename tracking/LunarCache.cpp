#include "LunarCache.h"

#include "LunarSeries.h"
#include "WorkerPool.h"

#include <libnova/lunar.h>
#include <libnova/rise_set.h>
#include <libnova/transform.h>
#include <libnova/utility.h>


#include <cmath>
#include <cstring>
#include <future>

namespace lunaquill {

namespace {

// Small ring of the most recent dates. One rise/set search needs three
// dates and the re-run for a pass that began the day before two more.
template <typename Value, int Size>
class DateMemo
{
public:
    template <typename Compute>
    const Value &get(double jd, Compute compute)
    {
        for (int i = 0; i < count; ++i) {
            // Compared bit for bit, so a cached answer is the exact answer.
            if (memcmp(&keys[i], &jd, sizeof jd) == 0)
                return values[i];
        }
        int slot = next;
        next = (next + 1) % Size;
        if (count < Size)
            ++count;
        keys[slot] = jd;
        compute(jd, values[slot]);
        return values[slot];
    }

    bool has(double jd) const
    {
        for (int i = 0; i < count; ++i) {
            if (memcmp(&keys[i], &jd, sizeof jd) == 0)
                return true;
        }
        return false;
    }

private:
    double keys[Size] = {};
    Value values[Size] = {};
    int count = 0;
    int next = 0;
};

DateMemo<ln_equ_posn, 8> lunarPositions;
DateMemo<double, 4> lunarDisks;

// The dates of the last prefetch, with their positions as they become ready.
// Read and replaced on the calling thread only; the workers fulfil the
// futures. A task holds nothing but its date, so a prefetch that is replaced
// is merely no longer waited for.
struct Prefetch {
    static constexpr int kDates = 4;
    double dates[kDates] = {};
    WorkerTask<ln_rect_posn> positions[kDates];
    bool active = false;

    // The dates as the search forms them, in the order it asks for them:
    // jd - 1.0, jd and jd + 1.0, then for a pass that began the day before
    // (jd - 1.0) - 1.0 and two it already has ((jd - 1.0) + 1.0 is jd
    // exactly at these magnitudes). The last is wasted when no pass began
    // the day before, but the calling thread waits for the day after
    // meanwhile.
    static void DatesFor(double jd, double (&dates)[kDates])
    {
        const double wanted[kDates] = {jd - 1.0, jd, jd + 1.0, (jd - 1.0) - 1.0};
        memcpy(dates, wanted, sizeof wanted);
    }
    bool isFor(const double (&wanted)[kDates]) const
    {
        return active && memcmp(dates, wanted, sizeof dates) == 0;
    }
    // Tasks no worker has begun are dropped: nobody will ask for them.
    void end()
    {
        for (auto &position : positions) {
            position.cancel();
            position = {};
        }
        active = false;
    }
    void start(const double (&wanted)[kDates])
    {
        end();
        for (int i = 0; i < kDates; ++i) {
            dates[i] = wanted[i];
            if (!lunarPositions.has(wanted[i])) { // already known: nothing to compute
                const double date = wanted[i];
                positions[i] = WorkerTask<ln_rect_posn>([date] { return LunarGeoPosition(date, 0); });
            }
        }
        active = true;
    }
};
// The instant's positions, and those of the instant expected next.
Prefetch prefetch, upcoming;
bool prefetchUsed = true;

void EndPrefetch()
{
    prefetch.end();
    upcoming.end();
}

// The Moon's geocentric position at full precision: the prefetched one when
// the date was prefetched, else computed here.
ln_rect_posn PrefetchedGeoPosition(double jd)
{
    for (int i = 0; i < Prefetch::kDates; ++i) {
        if (prefetch.positions[i].valid() && memcmp(&prefetch.dates[i], &jd, sizeof jd) == 0)
            return prefetch.positions[i].get();
    }
    return LunarGeoPosition(jd, 0);
}

// ln_get_lunar_equ_coords from a geocentric position: its ecliptic longitude
// and latitude formed operation for operation as libnova's
// ln_get_lunar_ecl_coords forms them, then libnova's own conversion (which
// reads and keeps the nutation, so it stays on this thread, in call order).
void EquatorialFromGeocentric(const ln_rect_posn &moon, double jd, ln_equ_posn &position)
{
    ln_lnlat_posn ecliptic;
    ecliptic.lng = atan2(moon.Y, moon.X);
    ecliptic.lat = atan2(moon.Z, (sqrt((moon.X * moon.X) + (moon.Y * moon.Y))));
    ecliptic.lng = ln_range_degrees(ln_rad_to_deg(ecliptic.lng));
    ecliptic.lat = ln_rad_to_deg(ecliptic.lat);
    ln_get_equ_from_ecl(&ecliptic, jd, &position);
}

} // namespace

bool PrefetchLunarRiseSet(double jd)
{
    if (!prefetchUsed)
        return false;
    double wanted[Prefetch::kDates];
    Prefetch::DatesFor(jd, wanted);
    if (prefetch.isFor(wanted))
        return true; // already under way for this instant
    if (upcoming.isFor(wanted)) {
        std::swap(prefetch, upcoming);
        upcoming.end();
    } else {
        prefetch.start(wanted);
    }
    // The search needs the first three at once, and the two workers take two:
    // this thread makes one itself rather than wait for the third.
    for (int i = 0; i < 3; ++i) {
        if (prefetch.positions[i].runHereIfWaiting())
            break;
    }
    return true;
}

void PrefetchUpcomingLunarRiseSet(double jd)
{
    if (!prefetchUsed)
        return;
    double wanted[Prefetch::kDates];
    Prefetch::DatesFor(jd, wanted);
    if (!prefetch.isFor(wanted) && !upcoming.isFor(wanted))
        upcoming.start(wanted);
}

void UseLunarPrefetch(bool on)
{
    EndPrefetch();
    prefetchUsed = on;
}

void CachedLunarEquCoords(double jd, struct ln_equ_posn *position)
{
    *position = lunarPositions.get(jd, [](double date, ln_equ_posn &value) {
        if (prefetchUsed)
            EquatorialFromGeocentric(PrefetchedGeoPosition(date), date, value);
        else
            ln_get_lunar_equ_coords(date, &value);
    });
}

int CachedLunarRst(double jd, struct ln_lnlat_posn *observer, struct ln_rst_time *rst)
{
    return ln_get_body_rst_horizon(jd, observer, CachedLunarEquCoords,
                                   LN_LUNAR_STANDART_HORIZON, rst);
}

double CachedLunarDisk(double jd)
{
    return lunarDisks.get(jd, [](double date, double &value) { value = ln_get_lunar_disk(date); });
}

} // namespace lunaquill
