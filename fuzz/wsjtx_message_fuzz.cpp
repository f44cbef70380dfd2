// The WSJT-X message reader on any datagram, and the follow decision on what
// it reads. Input: the datagram's bytes as they arrive.
#include "FuzzSupport.h"

#include "tracking/Maidenhead.h"
#include "tracking/WsjtxMessage.h"

#include <cmath>
#include <cstring>
#include <string>

using namespace lunaquill;

namespace {

// A field holds a terminated text of the allowed characters.
template <size_t N>
bool Bounded(const char (&field)[N], int (*allowed)(int))
{
    const size_t n = strnlen(field, N);
    if (n == N)
        return false;
    for (size_t i = 0; i < n; ++i)
        if (!allowed((unsigned char)field[i]))
            return false;
    return true;
}

int Printable(int c) { return c >= 0x20 && c < 0x7f; }
int Token(int c) { return c > 0x20 && c < 0x7f; }

uint32_t Word(const uint8_t *p) { return (uint32_t)p[0] << 24 | p[1] << 16 | p[2] << 8 | p[3]; }

std::string Summary(const WsjtxMessage &m)
{
    return std::to_string((int)m.type) + "|" + m.id + "|" + std::to_string(m.maxSchema) + "|" +
           m.version + "|" + m.revision + "|" + std::to_string(m.dialHz) + "|" + m.dxCall + "|" +
           m.dxGrid + "|" + std::to_string(m.dxReadable);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const WsjtxMessage m = ReadWsjtxMessage(data, size);
    FUZZ_CHECK(Bounded(m.id, Printable) && Bounded(m.version, Printable) &&
               Bounded(m.revision, Printable));
    FUZZ_CHECK(Bounded(m.dxCall, Token) && Bounded(m.dxGrid, Token));
    FUZZ_CHECK(m.dxReadable || (m.dxCall[0] == '\0' && m.dxGrid[0] == '\0'));

    if (m.type == WsjtxType::Ignored) {
        FUZZ_CHECK(Summary(m) == Summary(WsjtxMessage()));
    } else {
        // The header, checked here by hand: magic, schema 1 to 3, a known type.
        FUZZ_CHECK(size >= 16 && Word(data) == kWsjtxMagic);
        FUZZ_CHECK(Word(data + 4) >= 1 && Word(data + 4) <= kWsjtxMaxSchema);
        const uint32_t type = Word(data + 8);
        FUZZ_CHECK((type == 0 && m.type == WsjtxType::Heartbeat) ||
                   (type == 1 && m.type == WsjtxType::Status) ||
                   (type == 6 && m.type == WsjtxType::Close));
        // The dial frequency follows the id.
        if (m.type == WsjtxType::Status) {
            const uint32_t idCount = Word(data + 12);
            const size_t dial = 16 + (idCount == 0xffffffffu ? 0 : idCount);
            FUZZ_CHECK(dial + 8 <= size);
            FUZZ_CHECK(m.dialHz == ((uint64_t)Word(data + dial) << 32 | Word(data + dial + 4)));
        }
    }
    // Bytes after the fields read change nothing.
    std::string longer((const char *)data, size);
    longer += std::string("\xff\xff\xff\xff\x00", 5);
    const WsjtxMessage again = ReadWsjtxMessage((const uint8_t *)longer.data(), longer.size());
    FUZZ_CHECK(m.type == WsjtxType::Ignored || Summary(again) == Summary(m));

    // The follow decision: a station that is a locator, a real dial, and
    // nothing more from the same Status.
    WsjtxFollowMemory memory;
    const WsjtxFollowChange first = FollowWsjtxStatus(memory, m, true, true);
    FUZZ_CHECK(m.type == WsjtxType::Status || (!first.dx && !first.frequency));
    if (first.dx) {
        double latitude = 0, longitude = 0;
        FUZZ_CHECK(GridToLatLong(first.dxGrid, latitude, longitude) == 0);
        FUZZ_CHECK(latitude == first.latitude && longitude == first.longitude);
        FUZZ_CHECK(std::isfinite(latitude) && std::isfinite(longitude));
        FUZZ_CHECK(strcmp(first.dxCall, m.dxCall) == 0 && strcmp(first.dxGrid, m.dxGrid) == 0);
    }
    if (first.frequency)
        FUZZ_CHECK(first.frequencyMHz >= kWsjtxLowestDialHz / 1e6 &&
                   first.frequencyMHz <= kWsjtxHighestDialHz / 1e6);
    const WsjtxFollowChange second = FollowWsjtxStatus(memory, m, true, true);
    FUZZ_CHECK(!second.dx && !second.frequency);
    return 0;
}
