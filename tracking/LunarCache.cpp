#include "LunarCache.h"

#include <libnova/lunar.h>
#include <libnova/rise_set.h>

#include <cstring>

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

private:
    double keys[Size] = {};
    Value values[Size] = {};
    int count = 0;
    int next = 0;
};

DateMemo<ln_equ_posn, 8> lunarPositions;
DateMemo<double, 4> lunarDisks;

} // namespace

void CachedLunarEquCoords(double jd, struct ln_equ_posn *position)
{
    *position = lunarPositions.get(jd, [](double date, ln_equ_posn &value) {
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
