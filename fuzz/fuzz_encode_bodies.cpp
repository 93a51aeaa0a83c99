// Builds function-unit request records from fuzz input (RecordBuilder) for
// every body code with an encoder, and encodes them through TROV_EncodeFU:
// into a packet the library allocates, then into caller buffers of every
// size from two bytes short of the packet to one byte spare, each allocated
// with exactly that size so that AddressSanitizer sees any byte written past
// it. The results must agree, the header must announce the body it carries,
// and a record that follows a null pointer or names no codec must be refused.
// Bodies whose request and reply share a layout (the attribute bodies among
// them) and raw method invocations are decoded again on unit type 1 and
// re-encoded to the same bytes. The size query answers for every attribute
// value and agrees with the encoder where the body is one attribute.
//
// Input: the builder's hostility byte, then the body code (a code without an
// encoder picks a row by index), u16 value4, u32 value6, u32 value7, then the
// record's decisions (RecordBuilder.h).
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "RecordBuilder.h"

namespace {

using namespace trovfuzz;
using Bytes = std::vector<uint8_t>;

constexpr uint8_t kCanary = 0xA5;

const std::vector<const trov::BodyCodecRow *> &encodingRows() {
    static const std::vector<const trov::BodyCodecRow *> rows = [] {
        std::vector<const trov::BodyCodecRow *> v;
        for (const trov::BodyCodecRow *row = trov::FUCodecTable; row->code != 0; ++row)
            if (row->encode != nullptr) v.push_back(row);
        return v;
    }();
    return rows;
}

const trov::BodyCodecRow &pickRow(uint8_t b) {
    for (const trov::BodyCodecRow *row : encodingRows())
        if (row->code == b) return *row;
    return *encodingRows()[b % encodingRows().size()];
}

uint16_t wireU16(const uint8_t *p) { return static_cast<uint16_t>(p[0] << 8 | p[1]); }

// Into a packet the library allocates; on success `packet` holds a copy.
TrovResult encodeAllocated(const HeaderInfo &head, const void *record, Bytes &packet) {
    HeaderInfo info = head;
    EncodeOutput out{nullptr, 0};
    const TrovResult r = TROV_EncodeFU(&info, record, &out);
    if (r != TROV_RESULT_OK) {
        check(out.data == nullptr, "a failed encode handed over a packet");
        return r;
    }
    check(out.data != nullptr && out.length >= TROV_HEADER_LENGTH, "a packet shorter than its header");
    check(info.bodyLength == out.length - TROV_HEADER_LENGTH, "bodyLength is not the length of the body");
    check(wireU16(out.data + 8) == info.bodyLength, "the header bytes 8-9 are not bodyLength");
    packet.assign(out.data, out.data + out.length);
    trovFree(out.data);
    return r;
}

// Into a caller's buffer of exactly `size` bytes; on success `packet` holds
// what the call wrote. A buffer refused as too small stays untouched, and
// nothing is written behind the packet.
TrovResult encodeInto(const HeaderInfo &head, const void *record, uint32_t size, Bytes &packet) {
    std::unique_ptr<uint8_t[]> buffer(new uint8_t[size]);
    std::memset(buffer.get(), kCanary, size);
    HeaderInfo info = head;
    EncodeOutput out{buffer.get(), size};
    const TrovResult r = TROV_EncodeFU(&info, record, &out);
    if (r == TROV_RESULT_BUFFER_TOO_SMALL)
        for (uint32_t i = 0; i < size; ++i) check(buffer[i] == kCanary, "a buffer refused as too small was written");
    if (r == TROV_RESULT_OK) {
        check(out.data == buffer.get() && out.length <= size, "the packet is not in the caller's buffer");
        for (uint32_t i = out.length; i < size; ++i) check(buffer[i] == kCanary, "a byte written behind the packet");
        packet.assign(buffer.get(), buffer.get() + out.length);
    }
    return r;
}

// Decodes the packet as a reply of its code on unit type 1, then encodes the
// decoded record with the same header fields.
void roundTrip(const HeaderInfo &head, const Bytes &packet, bool faithful) {
    Bytes copy(packet);
    const PacketCursor cursor{copy.data(), static_cast<uint32_t>(copy.size())};
    HeaderInfo info{};
    DecodeResult result{nullptr, nullptr, 0};
    const TrovResult r = TROV_DecodeFU(&info, &result, &cursor, nullptr);
    if (r != TROV_RESULT_OK) {
        if (faithful) {
            std::fprintf(stderr, "body 0x%04x of %zu bytes decodes with %u:", head.code, packet.size(), r);
            for (uint8_t b : packet) std::fprintf(stderr, " %02x", b);
            std::fprintf(stderr, "\n");
        }
        check(!faithful, "an encoded body does not decode");
        check(result.record == nullptr && result.type == 6, "a failed decode kept its record");
        return;
    }
    check(result.record != nullptr && result.type == 1, "a decoded body without its record");
    check(info.code == head.code && info.bodyLength == packet.size() - TROV_HEADER_LENGTH,
          "the decoded header is not the encoded one");
    Bytes again;
    const TrovResult e = encodeAllocated(head, result.record, again);
    if (faithful) {
        check(e == TROV_RESULT_OK, "a decoded body does not encode again");
        check(again == packet, "decoding and encoding again changed the packet");
    }
    if (result.buffer != nullptr) trovFree(result.buffer->data);
    trovFree(result.record);
}

// The size query on every attribute of a body record. Where the body is one
// attribute among fixed fields and it encoded, the query must report what
// the encoder wrote for the value.
void querySizes(const HeaderInfo &head, const TrovLayoutInfo &layout, const void *record, const Bytes &packet,
                TrovResult encoded) {
    uint32_t others = 0;
    int attributes = 0;
    bool fixedOthers = true;
    uint16_t size = 0;
    TrovResult sized = TROV_RESULT_OK;
    const auto *base = static_cast<const uint8_t *>(record);
    for (uint16_t i = 0; i < layout.fieldCount; ++i) {
        const TrovFieldInfo &f = layout.fields[i];
        if (f.kindId == TROV_KIND_ATTRIBUTE) {
            uint16_t id = 0;
            const void *value = nullptr;
            std::memcpy(&id, base + f.offset, sizeof id);
            std::memcpy(&value, base + f.dataOffset, sizeof value);
            sized = TROV_GetAttributePacketSize(&head, id, value, 1, &size);
            ++attributes;
        } else if (f.kindId >= TROV_KIND_OCTETS && f.kindId <= TROV_KIND_REST) {
            fixedOthers = false;
        } else {
            // The wire bytes of the fixed kinds; the others take none of their own.
            static const uint8_t wire[] = {0, 1, 2, 4, 0, 0, 12};
            others += f.kindId == TROV_KIND_BYTES ? f.width : f.kindId < sizeof wire ? wire[f.kindId] : 0;
        }
    }
    if (attributes == 1 && fixedOthers && encoded == TROV_RESULT_OK)
        check(sized == TROV_RESULT_OK && size == packet.size() - TROV_HEADER_LENGTH - others - 2,
              "the size query disagrees with the encoded value");
}

// Whether the reply of a body reads what its request writes: the two sides
// are one layout.
bool sameLayout(const TrovLayoutInfo &a, const TrovLayoutInfo &b) {
    return a.form == b.form && a.recordBytes == b.recordBytes && a.fieldCount == b.fieldCount && a.fields == b.fields;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    TROV_InitCoder();
    RecordBuilder builder(data, size);
    FuzzInput &in = builder.input();

    const trov::BodyCodecRow &row = pickRow(in.u8());
    HeaderInfo head{};
    head.mark = TROV_PROTOCOL_MARK;
    head.version = TROV_PROTOCOL_VERSION;
    head.flags = TROV_FLAG_EXTENSION16;
    head.code = row.code;
    head.value4 = in.u16();
    head.value6 = in.u32();
    head.value7 = in.u32();
    head.extension = 1; // unit type 1: the reply of every code is decoded

    TrovLayoutInfo request{}, reply{};
    check(TROV_DescribeBody(row.code, TROV_PROTOCOL_VERSION, 1, &request) == TROV_RESULT_OK,
          "an encoding row without a request layout");
    const void *record = builder.record(request);
    bool roundTrips = false;
    if (request.form == TROV_LAYOUT_METHOD_CALL) { // raw parameters round-trip
        const auto *body = static_cast<const MethodBody *>(record);
        TrovLayoutInfo params{};
        roundTrips = TROV_DescribeMethod(body->method, TROV_PROTOCOL_VERSION, 1, &params) == TROV_RESULT_OK &&
                     params.form == TROV_LAYOUT_RAW;
    } else {
        roundTrips = TROV_DescribeBody(row.code, TROV_PROTOCOL_VERSION, 0, &reply) == TROV_RESULT_OK &&
                     sameLayout(request, reply);
    }

    Bytes packet;
    const TrovResult r = encodeAllocated(head, record, packet);
    if (builder.mustFail()) {
        check(r != TROV_RESULT_OK || builder.deep(), "a record that must be refused was encoded");
    } else {
        check(r == TROV_RESULT_OK || r == TROV_RESULT_BAD_VALUE || r == TROV_RESULT_SHORT_INPUT,
              "a well-formed record was refused for another reason than its length");
    }

    if (r == TROV_RESULT_OK) {
        const auto n = static_cast<uint32_t>(packet.size());
        for (uint32_t bytes = n - 2; bytes <= n + 1; ++bytes) {
            Bytes into;
            const TrovResult ri = encodeInto(head, record, bytes, into);
            if (bytes < n) {
                check(ri == TROV_RESULT_BUFFER_TOO_SMALL, "a buffer too short for the packet was not refused");
            } else {
                check(ri == TROV_RESULT_OK, "a buffer that holds the packet was refused");
                check(into == packet, "the caller's buffer got other bytes than the library's packet");
            }
        }
        if (roundTrips) roundTrip(head, packet, builder.faithful());
    } else {
        Bytes into;
        const TrovResult ri = encodeInto(head, record, TROV_HEADER_LENGTH + in.u16(), into);
        check(ri == r || ri == TROV_RESULT_BUFFER_TOO_SMALL, "the result depends on the caller's buffer");
    }
    if (request.form == TROV_LAYOUT_FIELDS) querySizes(head, request, record, packet, r);
    return 0;
}
