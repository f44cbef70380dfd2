// The WSJT-X message reader on the protocol description's Status example and
// hostile datagrams; the follow decision on a sequence of Status messages.
#include "tracking/WsjtxMessage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lunaquill {
namespace {

using Bytes = std::vector<uint8_t>;

// A datagram written field by field, big-endian, after a header of the given type.
struct Datagram {
    Bytes bytes;
    Datagram() = default;
    explicit Datagram(uint32_t type, uint32_t schema = 3)
    {
        U(kWsjtxMagic, 4).U(schema, 4).U(type, 4).Text("WSJT-X");
    }
    Datagram &U(uint64_t value, int size)
    {
        for (int i = size - 1; i >= 0; --i)
            bytes.push_back((uint8_t)(value >> (8 * i)));
        return *this;
    }
    Datagram &Text(const std::string &text)
    {
        U(text.size(), 4).bytes.insert(bytes.end(), text.begin(), text.end());
        return *this;
    }
};

// The Status example of the description, byte by byte as printed there.
const Bytes kExample = {
    0xad, 0xbc, 0xcb, 0xda, 0, 0, 0, 3, 0, 0, 0, 1,                      // magic, schema 3, Status
    0, 0, 0, 6, 'W', 'S', 'J', 'T', '-', 'X',                            // id
    0, 0, 0, 0, 0x4d, 0x40, 0x61, 0xe8,                                  // dial 1,296,065,000 Hz
    0, 0, 0, 3, 'Q', '6', '5', 0, 0, 0, 5, 'Q', '1', 'X', 'Y', 'Z',      // mode, DX call
    0, 0, 0, 3, '-', '2', '1', 0, 0, 0, 3, 'Q', '6', '5',                // report, Tx mode
    0, 0, 0, 0, 0, 0x05, 0xdc, 0, 0, 0x05, 0xdc,                         // 3 flags, Rx DF, Tx DF
    0, 0, 0, 4, 'Q', '9', 'Q', 'Q', 0, 0, 0, 6, 'F', 'N', '4', '2', 'm', 'm', // DE call, DE grid
    0, 0, 0, 6, 'J', 'O', '6', '2', 'q', 'm',                            // DX grid
    0, 0, 0, 0, 1, 'A', 0, 0, 0xff, 0xff, 0xff, 0xff, 0, 0, 0, 0x3c,     // watchdog ... T/R period
    0, 0, 0, 7, 'D', 'e', 'f', 'a', 'u', 'l', 't', 0, 0, 0, 0,           // configuration, Tx message
};
// Where the DX grid ends in it: 12 + 10 + 8 + 7 + 9 + 14 + 3 + 8 + 18 + 10.
constexpr size_t kExampleDxGridEnd = 99;
constexpr const char *kIgnored = "Ignored||0|||unreadable";

WsjtxMessage Read(const Bytes &bytes) { return ReadWsjtxMessage(bytes.data(), bytes.size()); }

// A Status of the example's fields with the given dial, DX call and grid.
Bytes Status(uint64_t dialHz, const std::string &call, const std::string &grid, uint32_t schema = 3)
{
    return Datagram(1, schema).U(dialHz, 8).Text("Q65").Text(call).Text("-21").Text("Q65")
        .U(0, 3).U(1500, 4).U(1500, 4).Text("Q9QQ").Text("FN42mm").Text(grid).bytes;
}

std::string Shown(const WsjtxMessage &m)
{
    const char *types[] = {"Ignored", "Heartbeat", "Status", "Close"};
    return std::string(types[(int)m.type]) + "|" + m.id + "|" + std::to_string(m.dialHz) + "|" +
           m.dxCall + "|" + m.dxGrid + "|" + (m.dxReadable ? "readable" : "unreadable");
}

TEST(WsjtxMessage, TheDescribedExampleEveryCutOfItAndHostileDatagrams)
{
    ASSERT_EQ(kExample.size(), kExampleDxGridEnd + 31);
    // Cut anywhere before the end of the DX grid: nothing of it is taken.
    // Cut after it: the same Status (older senders stop there).
    for (size_t size = 0; size <= kExample.size(); ++size)
        EXPECT_EQ(Shown(ReadWsjtxMessage(kExample.data(), size)),
                  size < kExampleDxGridEnd ? kIgnored : "Status|WSJT-X|1296065000|Q1XYZ|JO62qm|readable")
            << size;
    EXPECT_EQ(ReadWsjtxMessage(nullptr, 100).type, WsjtxType::Ignored);

    Bytes wrongMagic = kExample, countPastEnd = kExample, nullCall = kExample;
    wrongMagic[3] = 0xdb;
    countPastEnd[37] = 0x7f;                                       // the DX call's count: 0x7f000005
    std::fill(nullCall.begin() + 37, nullCall.begin() + 41, 0xff); // a null DX call, read as empty
    nullCall.erase(nullCall.begin() + 41, nullCall.begin() + 46);
    const auto close2 = [] { return Datagram().U(kWsjtxMagic, 4).U(2, 4).U(6, 4); };
    const struct { Bytes datagram; const char *shown; } rows[] = {
        {wrongMagic, kIgnored}, {countPastEnd, kIgnored},
        {nullCall, "Status|WSJT-X|1296065000||JO62qm|readable"},
        {Status(1, "Q1XYZ", "JO62", 0), kIgnored}, // schemas 1 to 3
        {Status(1, "Q1XYZ", "JO62", 4), kIgnored},
        {Status(1, "Q1XYZ", "JO62", 1), "Status|WSJT-X|1|Q1XYZ|JO62|readable"},
        {Datagram(2).U(0, 8).U(0, 8).bytes, kIgnored}, // a Decode
        {Datagram(6).bytes, "Close|WSJT-X|0|||unreadable"},
        {close2().U(0xffffffff, 4).bytes, "Close||0|||unreadable"}, // a null id
        {close2().U(0xfffffffe, 4).bytes, kIgnored},
        {close2().Text(std::string(300, '\x07')).bytes,
         "Close|????????????????????????????????|0|||unreadable"},
        // Calls and grids cut to the DX record; 0 and 2^64-1 read as sent.
        {Status(0, "VERYLONGCALL/QRP", "JO62qm12ab"), "Status|WSJT-X|0|VERYLONGCAL|JO62qm|readable"},
        {Status(UINT64_MAX, "Q1XYZ/P", ""), "Status|WSJT-X|18446744073709551615|Q1XYZ/P||readable"},
        // A NUL, a space, a control or a non-ASCII byte: neither call nor grid.
        {Status(7, std::string("Q1\0XYZ", 6), "JO62qm"), "Status|WSJT-X|7|||unreadable"},
        {Status(7, "Q1XYZ", "JO62 qm"), "Status|WSJT-X|7|||unreadable"},
        {Status(7, "Q1XYZ", "JO62\nm"), "Status|WSJT-X|7|||unreadable"},
        {Status(7, "\xc3\x98" "1XYZ", "JO62qm"), "Status|WSJT-X|7|||unreadable"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Shown(Read(row.datagram)), row.shown);

    const WsjtxMessage beat = Read(Datagram(0).U(3, 4).Text("2.7.0\t").Text("r1").bytes);
    EXPECT_EQ(std::string(beat.version) + "|" + beat.revision + "|" + std::to_string(beat.maxSchema),
              "2.7.0?|r1|3");
    EXPECT_EQ(Read(Datagram(0).U(3, 4).Text("2.7.0").bytes).type, WsjtxType::Ignored);
}

TEST(WsjtxMessage, FollowsOnlyChangesOfReadableStationsAndRealDials)
{
    WsjtxFollowMemory memory;
    WsjtxFollowChange c;
    auto follow = [&](const Bytes &datagram, bool dx = true, bool frequency = true) {
        c = FollowWsjtxStatus(memory, Read(datagram), dx, frequency);
        return std::string(c.dx ? c.dxCall : "-") + "|" + (c.dx ? c.dxGrid : "-") + "|" +
               (c.frequency ? std::to_string(c.frequencyMHz) : "-");
    };
    // JO62qm by hand: longitude 2*6 + 20*9 + 16.5*5/60 - 180 = 13.375,
    // latitude 10*14 - 90 + 2 + 12.5*2.5/60 = 52.5208333.
    EXPECT_EQ(follow(kExample), "Q1XYZ|JO62qm|1296.065000");
    EXPECT_DOUBLE_EQ(c.longitude, 13.375);
    EXPECT_NEAR(c.latitude, 52.5208333, 1e-7);

    const uint64_t low = kWsjtxLowestDialHz, high = kWsjtxHighestDialHz;
    const struct { Bytes datagram; bool dx, frequency; const char *change; } steps[] = {
        {kExample, true, true, "-|-|-"},                              // the same again: nothing
        {Status(1296070000, "Q1XYZ", "JO62qm"), true, true, "-|-|1296.070000"},
        {Status(1296070000, "Q1XYZ", ""), true, true, "-|-|-"},      // no grid: no station
        {Status(1296070000, "Q2ABC", "ZZ"), true, true, "-|-|-"},    // not a locator
        {Status(1296070000, "Q1XYZ/P", "JO62qm"), true, true, "Q1XYZ/P|JO62qm|-"},
        {Status(1296070000, "Q1XYZ/P", "JO62"), false, true, "-|-|-"}, // not followed ...
        {Status(1296070000, "Q1XYZ/P", "JO62"), true, true, "Q1XYZ/P|JO62|-"}, // ... until it is
        {Status(low - 1, "Q1XYZ/P", "JO62"), true, true, "-|-|-"},
        {Status(low, "Q1XYZ/P", "JO62"), true, false, "-|-|-"},   // not followed ...
        {Status(low, "Q1XYZ/P", "JO62"), true, true, "-|-|0.100000"}, // ... until it is
        {Status(high, "Q1XYZ/P", "JO62"), true, true, "-|-|1000000.000000"},
        {Status(high + 1, "Q1XYZ/P", "JO62"), true, true, "-|-|-"},
    };
    for (const auto &step : steps)
        EXPECT_EQ(follow(step.datagram, step.dx, step.frequency), step.change) << step.change;
}

} // namespace
} // namespace lunaquill
