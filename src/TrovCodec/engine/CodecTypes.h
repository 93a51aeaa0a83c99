// The types every codec shares: what the size passes report, the four
// operations of a value codec and the rows of the dispatch tables. Neutral
// ground: the engine, the families and the dispatch tables all include it,
// and it includes nothing of theirs.
#pragma once

#include <cstdint>

#include "TrovCodec.h"

namespace trov {

// What a decode size pass reports. `bytes` is the record size in the
// protocol's own 16-bit arithmetic, which wraps on purpose and is what the
// protocol reports, sums and records as capacity. `extent` is what the decode
// pass really writes, in 32 bits; it equals `bytes` for all but oversized
// input, and whoever allocates for a decode gives the block at least `extent`
// bytes of real room, so a wrapped figure never lets a decode write past its
// block.
struct RecordSize {
    uint16_t bytes;
    uint32_t extent;
};

// What an encode size pass reports. `bytes` is the packet size in the
// protocol's own 16-bit arithmetic: it wraps for a value longer than 65535
// bytes, and it is what the size query reports and what length fields
// carry. `extent` is what Encode really writes, in 32 bits (saturating, so
// that no sum of a hostile record wraps back into range). Whoever reserves
// room for an encode goes by `extent` and refuses what its length fields
// cannot frame, so a wrapped figure never lets an encode write past its
// buffer. `nullData` tells that the write pass would follow a null pointer
// (array elements, string bytes or a value behind a non-zero count or
// length): the size is still what the record states, so a size query answers
// as usual, but every encoder refuses such a record with 1.
struct WireSize {
    uint16_t bytes = 0;
    uint32_t extent = 0;
    bool nullData = false;

    // Past this extent no length field can state a value and every encoder
    // refuses it, so the size passes over lists and arrays stop there: a
    // record whose entries share one value many times over would otherwise
    // be sized once per path through it, which grows exponentially with its
    // depth. Sizes above the limit are then those of the part sized (the
    // encoders' answer, 5, is the same).
    static constexpr uint32_t kSizingLimit = 0xFFFF;
    constexpr bool pastLimit() const { return extent > kSizingLimit; }

    static constexpr WireSize of(uint32_t n) { return WireSize{static_cast<uint16_t>(n), n, false}; }
    constexpr void add(const WireSize &s) {
        bytes = static_cast<uint16_t>(bytes + s.bytes);
        extent = s.extent > UINT32_MAX - extent ? UINT32_MAX : extent + s.extent;
        nullData = nullData || s.nullData;
    }
    constexpr void add(uint32_t n) { add(of(n)); }
};

// The four operations of a value codec (attribute and data-type rows).
// EncCalc reports packet bytes (1 when it cannot size the value without
// following a null pointer; a null pointer that only Encode would follow is
// reported in `nullData`); Encode writes them unchecked; DecCalc checks
// the packet holds the value, moves past it and reports record bytes; Decode
// fills the record area unchecked and returns the next free 8-aligned address.
struct ValueCodecOps {
    TrovResult (*encCalc)(const void *value, uint8_t isArray, WireSize *packetBytes,
                          uint8_t version);
    void (*encode)(PacketCursor *cursor, const void *value, uint8_t isArray, uint8_t version);
    TrovResult (*decCalc)(PacketCursor *cursor, uint8_t isArray, RecordSize *recordBytes,
                          uint8_t version);
    void *(*decode)(void *record, PacketCursor *cursor, uint8_t isArray, uint8_t version);
};

// Sizes of a decoded item: the protocol's 16-bit figure and the true extent.
struct Sizes {
    uint16_t bytes = 0;
    uint32_t extent = 0;
    void add(uint16_t b, uint64_t e) {
        bytes = static_cast<uint16_t>(bytes + b);
        extent = e > UINT32_MAX - extent ? UINT32_MAX : extent + static_cast<uint32_t>(e);
    }
    void add(const RecordSize &r) { add(r.bytes, r.extent); }
};

// ---- the rows of the dispatch tables -------------------------------------------

// The packet header codec. Field operations take a field index 0..9.
struct HeaderCodecRow {
    uint8_t version;      // exact match, no wildcard; 0 ends the table
    uint8_t headerLength; // bytes
    TrovResult (*getFromRecord)(uint32_t index, const HeaderInfo *info, void *out);
    TrovResult (*setToRecord)(uint32_t index, HeaderInfo *info, const void *value);
    TrovResult (*getFromPacket)(uint32_t index, const PacketCursor *cursor, void *out);
    TrovResult (*setToPacket)(uint32_t index, const PacketCursor *cursor, const void *value);
    uint8_t *(*encodeHeader)(const HeaderInfo *info, const PacketCursor *cursor);
    const uint8_t *(*decodeHeader)(const PacketCursor *cursor, HeaderInfo *info);
};

struct AttributeCodecRow {
    const uint16_t *identifiers; // zero-terminated; null ends the table
    uint8_t version;
    ValueCodecOps ops;
};

struct DataTypeCodecRow {
    uint16_t code;
    uint8_t version;
    ValueCodecOps ops;
};

// A body row: encode builds the whole packet (header and body) into `output`;
// decode reads a body at `body` into `result`.
using BodyEncodeFn = TrovResult (*)(HeaderInfo *info, const void *record, void *output,
                                    void *context, uint8_t mode);
using BodyDecodeFn = TrovResult (*)(HeaderInfo *info, DecodeResult *result,
                                    const PacketCursor *body, void *context);

struct BodyCodecRow {
    uint16_t code;
    uint8_t version;
    BodyEncodeFn encode; // null for decode-only codes
    BodyDecodeFn decode;
};

// A method row: the parameters of a method invocation.
struct MethodCodecRow {
    uint16_t code;
    uint8_t version;
    // wireBytes: the parameters' 16-bit figure and their true extent.
    TrovResult (*encCalc)(const void *params, uint16_t paramsLength, WireSize *wireBytes);
    void (*encode)(PacketCursor *cursor, const void *params, uint16_t paramsLength);
    TrovResult (*decCalc)(const PacketCursor *cursor, uint16_t *paramsLength,
                          RecordSize *recordBytes);
    void *(*decode)(void *record, PacketCursor *cursor);
};

// An event row: events travel only towards the host, so a row holds the two
// decode-side operations.
struct EventCodecRow {
    uint16_t code;
    uint8_t version;
    TrovResult (*decCalc)(PacketCursor *cursor, uint8_t flag, RecordSize *recordBytes);
    void *(*decode)(void *record, PacketCursor *cursor, uint8_t flag);
};

static_assert(sizeof(ValueCodecOps) == 4 * sizeof(void *));
static_assert(sizeof(BodyCodecRow) == 3 * sizeof(void *));
static_assert(sizeof(EventCodecRow) == 3 * sizeof(void *));
static_assert(sizeof(MethodCodecRow) == 5 * sizeof(void *));

// The value codec of an attribute identifier at a version, from the
// installed view of the tables (null when there is none); defined with the
// lookups (engine/Tables.cpp).
const ValueCodecOps *attributeCodec(uint16_t id, uint8_t version);

} // namespace trov
