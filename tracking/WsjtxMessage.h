// The messages WSJT-X sends to its "UDP servers", read from one datagram:
// big-endian QDataStream fields after a header of magic, schema number,
// message type and the sender's id. A listener that follows the DX station
// needs Heartbeat, Status and Close; every other datagram is ignored. Pure
// C++: the reader runs on bytes from the network and never trusts a count.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lunaquill {

inline constexpr uint32_t kWsjtxMagic = 0xadbccbda;
inline constexpr uint32_t kWsjtxMaxSchema = 3;

enum class WsjtxType { Ignored, Heartbeat, Status, Close };

// What a listener keeps of a message. Every text is NUL-terminated and cut to
// its field; the DX call and grid are cut to what the DX station record holds
// (a call of 11 characters, a locator of 6).
struct WsjtxMessage {
    WsjtxType type = WsjtxType::Ignored;
    char id[33] = {};            // the sender's id, printable ASCII ('?' for anything else)
    // Heartbeat
    uint32_t maxSchema = 0;
    char version[33] = {};
    char revision[33] = {};
    // Status, read up to the DX grid; the fields after it are not needed
    uint64_t dialHz = 0;
    char dxCall[12] = {};
    char dxGrid[7] = {};
    // The DX call and grid are printable ASCII without spaces (both may be
    // empty); otherwise they are left empty and this is false.
    bool dxReadable = false;
};

// Reads one datagram. Anything that is not a whole Heartbeat, Status (up to
// and including the DX grid) or Close of schema 1 to 3 comes back as Ignored
// with every other field at its default: a message is taken whole or not at
// all. Bytes after the fields read are ignored, as the protocol wants.
WsjtxMessage ReadWsjtxMessage(const uint8_t *data, size_t size);

// Dial frequencies taken as real: from 100 kHz (below the lowest amateur
// band) to 1 THz. 0 and 2^64-1 are what a broken sender leaves there.
inline constexpr uint64_t kWsjtxLowestDialHz = 100000;
inline constexpr uint64_t kWsjtxHighestDialHz = 1000000000000ULL;

// What the listener has applied so far, to act only on a change: WSJT-X
// repeats the same Status at every decoding period.
struct WsjtxFollowMemory {
    bool dxTaken = false;
    char dxCall[12] = {};
    char dxGrid[7] = {};
    bool dialTaken = false;
    uint64_t dialHz = 0;
};

// What one Status changes.
struct WsjtxFollowChange {
    bool dx = false;            // take dxCall, dxGrid and the position of the grid
    char dxCall[12] = {};
    char dxGrid[7] = {};
    double latitude = 0.0;
    double longitude = 0.0;
    bool frequency = false;     // take frequencyMHz as the operating frequency
    double frequencyMHz = 0.0;
};

// The DX station changes when its call or grid differs from the last one
// taken and the grid is a locator (an empty or unconvertible grid changes
// nothing); the frequency when the dial differs from the last one taken and
// lies within the limits above. Each only when followed. The memory records
// what is to be applied.
WsjtxFollowChange FollowWsjtxStatus(WsjtxFollowMemory &memory, const WsjtxMessage &status,
                                    bool followDx, bool followFrequency);

} // namespace lunaquill
