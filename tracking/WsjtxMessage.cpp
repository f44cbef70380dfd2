#include "WsjtxMessage.h"

#include "Maidenhead.h"

#include <cstring>

namespace lunaquill {

namespace {

// Big-endian fields from a datagram; every read checks what is left first
// and a failed read leaves the reader failed.
class FieldReader
{
public:
    FieldReader(const uint8_t *data, size_t size) : next(data), left(data ? size : 0) {}

    bool Number(uint64_t &value, size_t bytes)
    {
        if (left < bytes)
            return false;
        value = 0;
        for (size_t i = 0; i < bytes; ++i)
            value = value << 8 | next[i];
        Skip(bytes);
        return true;
    }

    bool Number32(uint32_t &value)
    {
        uint64_t wide = 0;
        if (!Number(wide, 4))
            return false;
        value = (uint32_t)wide;
        return true;
    }

    // A "utf8" field: a byte count, then that many bytes. The count 0xffffffff
    // is a null text (read as empty); a count beyond the datagram is a
    // malformed message.
    bool Text(const uint8_t *&bytes, size_t &count)
    {
        uint32_t stated = 0;
        if (!Number32(stated))
            return false;
        bytes = next;
        count = stated == 0xffffffffu ? 0 : stated;
        if (count > left)
            return false;
        Skip(count);
        return true;
    }

private:
    void Skip(size_t bytes)
    {
        next += bytes;
        left -= bytes;
    }

    const uint8_t *next;
    size_t left;
};

bool IsPrintable(uint8_t c) { return c >= 0x20 && c < 0x7f; }
bool IsTokenCharacter(uint8_t c) { return c > 0x20 && c < 0x7f; }

// A text for display: cut to the field, anything but printable ASCII as '?'.
template <size_t N>
void CopyShown(char (&field)[N], const uint8_t *bytes, size_t count)
{
    const size_t n = count < N - 1 ? count : N - 1;
    for (size_t i = 0; i < n; ++i)
        field[i] = IsPrintable(bytes[i]) ? (char)bytes[i] : '?';
    field[n] = '\0';
}

// A call or a locator: printable ASCII without spaces, cut to the field.
// Anything else leaves the field empty and returns false.
template <size_t N>
bool CopyToken(char (&field)[N], const uint8_t *bytes, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        if (!IsTokenCharacter(bytes[i])) {
            field[0] = '\0';
            return false;
        }
    }
    const size_t n = count < N - 1 ? count : N - 1;
    memcpy(field, bytes, n);
    field[n] = '\0';
    return true;
}

bool ReadHeartbeat(FieldReader &in, WsjtxMessage &message)
{
    const uint8_t *version, *revision;
    size_t versionCount, revisionCount;
    if (!in.Number32(message.maxSchema) || !in.Text(version, versionCount) ||
        !in.Text(revision, revisionCount))
        return false;
    CopyShown(message.version, version, versionCount);
    CopyShown(message.revision, revision, revisionCount);
    return true;
}

// The Status fields up to the DX grid, in their order.
bool ReadStatus(FieldReader &in, WsjtxMessage &message)
{
    const uint8_t *text, *dxCall, *dxGrid;
    size_t count, dxCallCount, dxGridCount;
    uint64_t number;
    const bool whole = in.Number(message.dialHz, 8) && in.Text(text, count) // mode
                       && in.Text(dxCall, dxCallCount)
                       && in.Text(text, count)                     // report
                       && in.Text(text, count)                     // Tx mode
                       && in.Number(number, 1) && in.Number(number, 1) &&
                       in.Number(number, 1)                        // Tx enabled, transmitting, decoding
                       && in.Number(number, 4) && in.Number(number, 4) // Rx DF, Tx DF
                       && in.Text(text, count) && in.Text(text, count) // DE call, DE grid
                       && in.Text(dxGrid, dxGridCount);
    if (!whole)
        return false;
    message.dxReadable = CopyToken(message.dxCall, dxCall, dxCallCount) &&
                         CopyToken(message.dxGrid, dxGrid, dxGridCount);
    if (!message.dxReadable)
        message.dxCall[0] = message.dxGrid[0] = '\0';
    return true;
}

} // namespace

WsjtxMessage ReadWsjtxMessage(const uint8_t *data, size_t size)
{
    FieldReader in(data, size);
    uint32_t magic = 0, schema = 0, type = 0;
    const uint8_t *id;
    size_t idCount;
    if (!in.Number32(magic) || magic != kWsjtxMagic || !in.Number32(schema) || schema < 1 ||
        schema > kWsjtxMaxSchema || !in.Number32(type) || !in.Text(id, idCount))
        return {};

    WsjtxMessage message;
    bool whole = false;
    switch (type) {
    case 0:
        message.type = WsjtxType::Heartbeat;
        whole = ReadHeartbeat(in, message);
        break;
    case 1:
        message.type = WsjtxType::Status;
        whole = ReadStatus(in, message);
        break;
    case 6:
        message.type = WsjtxType::Close;
        whole = true;
        break;
    default:
        break;
    }
    if (!whole)
        return {};
    CopyShown(message.id, id, idCount);
    return message;
}

WsjtxFollowChange FollowWsjtxStatus(WsjtxFollowMemory &memory, const WsjtxMessage &status,
                                    bool followDx, bool followFrequency)
{
    WsjtxFollowChange change;
    if (status.type != WsjtxType::Status)
        return change;

    const bool dxDiffers = !memory.dxTaken || strcmp(memory.dxCall, status.dxCall) != 0 ||
                           strcmp(memory.dxGrid, status.dxGrid) != 0;
    if (followDx && status.dxReadable && dxDiffers && status.dxGrid[0] != '\0' &&
        GridToLatLong(status.dxGrid, change.latitude, change.longitude) == 0) {
        change.dx = true;
        memcpy(change.dxCall, status.dxCall, sizeof change.dxCall);
        memcpy(change.dxGrid, status.dxGrid, sizeof change.dxGrid);
        memory.dxTaken = true;
        memcpy(memory.dxCall, status.dxCall, sizeof memory.dxCall);
        memcpy(memory.dxGrid, status.dxGrid, sizeof memory.dxGrid);
    }

    if (followFrequency && (!memory.dialTaken || memory.dialHz != status.dialHz) &&
        status.dialHz >= kWsjtxLowestDialHz && status.dialHz <= kWsjtxHighestDialHz) {
        change.frequency = true;
        change.frequencyMHz = (double)status.dialHz / 1e6;
        memory.dialTaken = true;
        memory.dialHz = status.dialHz;
    }
    return change;
}

} // namespace lunaquill
