#include "LunarCache.h"

#include "LunarSeries.h"

#include <libnova/lunar.h>
#include <libnova/rise_set.h>
#include <libnova/transform.h>
#include <libnova/utility.h>


#include <array>
#include <cmath>
#include <cstring>
#include <future>
#include <memory>
#include <system_error>

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
// promises behind the futures. A new prefetch waits for the last one's
// workers to end.
struct Prefetch {
    static constexpr int kDates = 4;
    double dates[kDates] = {};
    std::shared_future<ln_rect_posn> positions[kDates];
    std::future<void> workers[2];
};
Prefetch prefetch;
bool prefetchUsed = true;

void EndPrefetch()
{
    for (auto &worker : prefetch.workers) {
        if (worker.valid())
            worker.wait();
    }
    for (auto &position : prefetch.positions)
        position = {};
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
    EndPrefetch();
    if (!prefetchUsed)
        return false;
    // The dates as the search forms them: it asks for jd - 1.0, jd and
    // jd + 1.0; the search for a pass that began the day before asks for
    // (jd - 1.0) - 1.0 and then two it already has ((jd - 1.0) + 1.0 is jd
    // exactly at these magnitudes). One thread takes the day before and the one
    // before that, the other the instant and the day after, each in the
    // order they are asked for. The day before that is wasted when no pass
    // began the day before, but it costs the calling thread no time: that
    // waits for the day after, which the other thread ends no sooner.
    const double wanted[Prefetch::kDates] = {jd - 1.0, (jd - 1.0) - 1.0, jd, jd + 1.0};
    using Promises = std::array<std::promise<ln_rect_posn>, Prefetch::kDates>;
    auto promises = std::make_shared<Promises>();
    bool asked[Prefetch::kDates] = {};
    for (int i = 0; i < Prefetch::kDates; ++i) {
        prefetch.dates[i] = wanted[i];
        if (!lunarPositions.has(wanted[i])) { // already known: nothing to compute
            asked[i] = true;
            prefetch.positions[i] = (*promises)[i].get_future().share();
        }
    }
    for (int worker = 0; worker < 2; ++worker) {
        const int first = 2 * worker;
        const bool ask[2] = {asked[first], asked[first + 1]};
        const double dates[2] = {wanted[first], wanted[first + 1]};
        try {
            prefetch.workers[worker] = std::async(std::launch::async, [=] {
                for (int i = 0; i < 2; ++i) {
                    if (ask[i])
                        (*promises)[first + i].set_value(LunarGeoPosition(dates[i], 0));
                }
            });
        } catch (const std::system_error &) {
            // No thread to be had: these dates are computed by the caller.
            prefetch.positions[first] = prefetch.positions[first + 1] = {};
        }
    }
    return true;
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
