// The WSJT-X message reader on the byte-by-byte Status example of the
// protocol's description and on hand-built hostile datagrams; the follow
// decision on a sequence of Status messages.
#include "tracking/WsjtxMessage.h"
#include "tracking/Maidenhead.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace lunaquill {
namespace {

using Bytes = std::vector<uint8_t>;

// A datagram written field by field, big-endian.
struct Datagram {
    Bytes bytes;
    Datagram &U(uint64_t value, int size)
    {
        for (int i = size - 1; i >= 0; --i)
            bytes.push_back((uint8_t)(value >> (8 * i)));
        return *this;
    }
    Datagram &Text(const std::string &text)
    {
        U(text.size(), 4);
        bytes.insert(bytes.end(), text.begin(), text.end());
        return *this;
    }
    Datagram &Header(uint32_t type, uint32_t schema = 3, uint32_t magic = kWsjtxMagic)
    {
        return U(magic, 4).U(schema, 4).U(type, 4).Text("WSJT-X");
    }
};

// The Status example of the description, byte by byte as printed there.
const Bytes kExample = {
    0xad, 0xbc, 0xcb, 0xda, 0, 0, 0, 3, 0, 0, 0, 1,                      // magic, schema 3, Status
    0, 0, 0, 6, 'W', 'S', 'J', 'T', '-', 'X',                            // id
    0, 0, 0, 0, 0x4d, 0x40, 0x61, 0xe8,                                  // dial 1,296,065,000 Hz
    0, 0, 0, 3, 'Q', '6', '5',                                           // mode
    0, 0, 0, 5, 'Q', '1', 'X', 'Y', 'Z',                                 // DX call
    0, 0, 0, 3, '-', '2', '1', 0, 0, 0, 3, 'Q', '6', '5',                // report, Tx mode
    0, 0, 0,                                                             // Tx enabled, transmitting, decoding
    0, 0, 0x05, 0xdc, 0, 0, 0x05, 0xdc,                                  // Rx DF, Tx DF
    0, 0, 0, 4, 'Q', '9', 'Q', 'Q', 0, 0, 0, 6, 'F', 'N', '4', '2', 'm', 'm', // DE call, grid
    0, 0, 0, 6, 'J', 'O', '6', '2', 'q', 'm',                            // DX grid
    0, 0, 0, 0, 1, 'A', 0, 0, 0xff, 0xff, 0xff, 0xff, 0, 0, 0, 0x3c,     // watchdog ... T/R period
    0, 0, 0, 7, 'D', 'e', 'f', 'a', 'u', 'l', 't', 0, 0, 0, 0,           // configuration, Tx message
};
// Where the DX grid ends in it: 12 + 10 + 8 + 7 + 9 + 14 + 3 + 8 + 18 + 10.
constexpr size_t kExampleDxGridEnd = 99;

WsjtxMessage Read(const Bytes &bytes) { return ReadWsjtxMessage(bytes.data(), bytes.size()); }

// A Status of the example's fields with the given dial, DX call and grid.
Bytes Status(uint64_t dialHz, const std::string &call, const std::string &grid, uint32_t schema = 3)
{
    return Datagram()
        .Header(1, schema)
        .U(dialHz, 8).Text("Q65").Text(call).Text("-21").Text("Q65").U(0, 3).U(1500, 4).U(1500, 4)
        .Text("Q9QQ").Text("FN42mm").Text(grid)
        .bytes;
}

std::string Shown(const WsjtxMessage &m)
{
    const char *types[] = {"Ignored", "Heartbeat", "Status", "Close"};
    return std::string(types[(int)m.type]) + "|" + m.id + "|" + std::to_string(m.dialHz) + "|" +
           m.dxCall + "|" + m.dxGrid + "|" + (m.dxReadable ? "readable" : "unreadable");
}

TEST(WsjtxMessage, TheDescribedExampleAndEveryCutOfIt)
{
    ASSERT_EQ(kExample.size(), kExampleDxGridEnd + 31);
    EXPECT_EQ(Shown(Read(kExample)), "Status|WSJT-X|1296065000|Q1XYZ|JO62qm|readable");
    EXPECT_EQ(Read(kExample).dialHz, 0x4d4061e8u);
    // Cut anywhere before the end of the DX grid: nothing of it is taken.
    // Cut after it: the same Status (older senders stop there).
    for (size_t size = 0; size <= kExample.size(); ++size) {
        const WsjtxMessage m = ReadWsjtxMessage(kExample.data(), size);
        if (size < kExampleDxGridEnd)
            EXPECT_EQ(Shown(m), "Ignored||0|||unreadable") << size;
        else
            EXPECT_EQ(Shown(m), "Status|WSJT-X|1296065000|Q1XYZ|JO62qm|readable") << size;
    }
    EXPECT_EQ(ReadWsjtxMessage(nullptr, 100).type, WsjtxType::Ignored);
}

TEST(WsjtxMessage, HostileHeadersCountsAndTexts)
{
    Bytes wrongMagic = kExample, countPastEnd = kExample, nullCall = kExample;
    wrongMagic[3] = 0xdb;
    countPastEnd[37] = 0x7f;        // the DX call's count: 0x7f000005
    for (int i = 37; i < 41; ++i)    // 0xffffffff: a null DX call, read as empty
        nullCall[i] = 0xff;
    nullCall.erase(nullCall.begin() + 41, nullCall.begin() + 46);
    const std::string longId(300, '\x07');

    const struct { Bytes datagram; const char *shown; } rows[] = {
        {wrongMagic, "Ignored||0|||unreadable"},
        {countPastEnd, "Ignored||0|||unreadable"},
        {nullCall, "Status|WSJT-X|1296065000||JO62qm|readable"},
        {Status(1, "Q1XYZ", "JO62", 0), "Ignored||0|||unreadable"},
        {Status(1, "Q1XYZ", "JO62", 1), "Status|WSJT-X|1|Q1XYZ|JO62|readable"},
        {Status(1, "Q1XYZ", "JO62", 2), "Status|WSJT-X|1|Q1XYZ|JO62|readable"},
        {Status(1, "Q1XYZ", "JO62", 4), "Ignored||0|||unreadable"},
        {Status(1, "Q1XYZ", "JO62", 0xffffffff), "Ignored||0|||unreadable"},
        {Datagram().Header(2).U(0, 8).U(0, 8).bytes, "Ignored||0|||unreadable"},   // Decode
        {Datagram().Header(0xffffffff).bytes, "Ignored||0|||unreadable"},
        {Datagram().Header(6).bytes, "Close|WSJT-X|0|||unreadable"},
        {Datagram().Header(6).U(0xffffffff, 4).bytes, "Close|WSJT-X|0|||unreadable"},
        {Datagram().U(kWsjtxMagic, 4).U(2, 4).U(6, 4).U(0xffffffff, 4).bytes,
         "Close||0|||unreadable"},
        {Datagram().U(kWsjtxMagic, 4).U(2, 4).U(6, 4).U(0xfffffffe, 4).bytes,
         "Ignored||0|||unreadable"},
        {Datagram().U(kWsjtxMagic, 4).U(2, 4).U(6, 4).Text(longId).bytes,
         "Close|????????????????????????????????|0|||unreadable"},
        // Calls and grids cut to the DX record; 0 and 2^64-1 read as sent.
        {Status(0, "VERYLONGCALL/QRP", "JO62qm12ab"),
         "Status|WSJT-X|0|VERYLONGCAL|JO62qm|readable"},
        {Status(UINT64_MAX, "Q1XYZ/P", ""), "Status|WSJT-X|18446744073709551615|Q1XYZ/P||readable"},
        // A NUL, a space, a control or a non-ASCII byte: neither call nor grid.
        {Status(7, std::string("Q1\0XYZ", 6), "JO62qm"), "Status|WSJT-X|7|||unreadable"},
        {Status(7, "Q1XYZ", "JO62 qm"), "Status|WSJT-X|7|||unreadable"},
        {Status(7, "Q1XYZ", "JO62\nm"), "Status|WSJT-X|7|||unreadable"},
        {Status(7, "\xc3\x98" "1XYZ", "JO62qm"), "Status|WSJT-X|7|||unreadable"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Shown(Read(row.datagram)), row.shown);

    const WsjtxMessage beat = Read(Datagram().Header(0).U(3, 4).Text("2.7.0\t").Text("r1").bytes);
    EXPECT_EQ(std::string(beat.version) + "|" + beat.revision + "|" + std::to_string(beat.maxSchema),
              "2.7.0?|r1|3");
    EXPECT_EQ(Read(Datagram().Header(0).U(3, 4).Text("2.7.0").bytes).type, WsjtxType::Ignored);
}

TEST(WsjtxMessage, FollowsOnlyChangesOfReadableStationsAndRealDials)
{
    // JO62qm by hand: longitude 2*6 + 20*9 + 16.5*5/60 - 180 = 13.375,
    // latitude 10*14 - 90 + 2 + 12.5*2.5/60 = 52.5208333.
    WsjtxFollowMemory memory;
    WsjtxFollowChange c = FollowWsjtxStatus(memory, Read(kExample), true, true);
    EXPECT_TRUE(c.dx && c.frequency);
    EXPECT_EQ(std::string(c.dxCall) + "|" + c.dxGrid, "Q1XYZ|JO62qm");
    EXPECT_DOUBLE_EQ(c.longitude, 13.375);
    EXPECT_NEAR(c.latitude, 52.5208333, 1e-7);
    EXPECT_DOUBLE_EQ(c.frequencyMHz, 1296.065);

    auto follow = [&](const Bytes &datagram, bool dx = true, bool frequency = true) {
        c = FollowWsjtxStatus(memory, Read(datagram), dx, frequency);
        return std::string(c.dx ? c.dxCall : "-") + "|" + (c.dx ? c.dxGrid : "-") + "|" +
               (c.frequency ? std::to_string(c.frequencyMHz) : "-");
    };
    const struct { Bytes datagram; bool dx, frequency; const char *change; } steps[] = {
        {kExample, true, true, "-|-|-"},                      // the same again: nothing
        {Status(1296065000, "Q1XYZ", "JO62qm", 2), true, true, "-|-|-"},
        {Status(1296070000, "Q1XYZ", "JO62qm"), true, true, "-|-|1296.070000"},
        {Status(1296070000, "Q1XYZ", ""), true, true, "-|-|-"},      // no grid: no station
        {Status(1296070000, "Q2ABC", "ZZ"), true, true, "-|-|-"},    // not a locator
        {Status(1296070000, "Q2ABC", "JO62 qm"), true, true, "-|-|-"},
        {Status(1296070000, "Q1XYZ/P", "JO62qm"), true, true, "Q1XYZ/P|JO62qm|-"},
        {Status(1296070000, "Q1XYZ/P", "JO62"), false, true, "-|-|-"}, // not followed ...
        {Status(1296070000, "Q1XYZ/P", "JO62"), true, true, "Q1XYZ/P|JO62|-"}, // ... until it is
        {Status(0, "Q1XYZ/P", "JO62"), true, true, "-|-|-"},
        {Status(UINT64_MAX, "Q1XYZ/P", "JO62"), true, true, "-|-|-"},
        {Status(kWsjtxLowestDialHz - 1, "Q1XYZ/P", "JO62"), true, true, "-|-|-"},
        {Status(kWsjtxLowestDialHz, "Q1XYZ/P", "JO62"), true, false, "-|-|-"},
        {Status(kWsjtxLowestDialHz, "Q1XYZ/P", "JO62"), true, true, "-|-|0.100000"},
        {Status(kWsjtxHighestDialHz, "Q1XYZ/P", "JO62"), true, true, "-|-|1000000.000000"},
        {Status(kWsjtxHighestDialHz + 1, "Q1XYZ/P", "JO62"), true, true, "-|-|-"},
        {Datagram().Header(6).bytes, true, true, "-|-|-"},
    };
    for (const auto &step : steps)
        EXPECT_EQ(follow(step.datagram, step.dx, step.frequency), step.change);
}

} // namespace
} // namespace lunaquill
