// Routing of packets to body codecs.
//
// Encoding looks up the header codec by the record's version byte, reads the
// body code and hands the record to the body row's encode operation.
// Decoding checks the protocol mark, decodes the header, copies the header's
// extension (the unit type) into the result and, for the unit types and codes
// that the function-unit decoder handles, runs the body row's decode
// operation over the body bytes.
#include "api/BodyOperations.h"

#include <span>

#include "engine/HeaderCodec.h"
#include "engine/Cursor.h"

namespace trov {

namespace {

// Which bodies TROV_DecodeFU decodes, by unit type. Rules are taken in order;
// an empty code list means every code.
struct UnitRule {
    std::span<const uint16_t> units;
    std::span<const uint16_t> codes;
};

constexpr uint16_t kAllUnits[] = {1, 29, 33, 34};
constexpr uint16_t kUnit4[] = {4};
constexpr uint16_t kUnit4Codes[] = {5, 6, 7, 53, 56, 69, 82, 83, 84, 88, 93, 94, 95, 97};
constexpr uint16_t kUnits23And9[] = {23, 9};
constexpr uint16_t kUnits23And9Codes[] = {6, 53, 83, 84};
constexpr uint16_t kUnit8[] = {8};
constexpr uint16_t kUnit8Codes[] = {84, 93, 94, 95, 97};
constexpr uint16_t kUnit31[] = {31};
constexpr uint16_t kUnit31Codes[] = {93, 94, 95, 97};

constexpr UnitRule kUnitRules[] = {
    {kAllUnits, {}},
    {kUnit4, kUnit4Codes},
    {kUnits23And9, kUnits23And9Codes},
    {kUnit8, kUnit8Codes},
    {kUnit31, kUnit31Codes},
};

bool contains(std::span<const uint16_t> list, uint16_t v) {
    for (uint16_t x : list)
        if (x == v) return true;
    return false;
}

// The packet's opening checks, shared by both decoders: the mark, the header
// codec, the header length; then the header is decoded into `info`.
TrovResult decodePacketHeader(HeaderInfo *info, DecodeResult *result, const PacketCursor *cursor,
                              const HeaderCodecRow **rowOut) {
    if (info == nullptr || result == nullptr || cursor == nullptr || cursor->position == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    const PacketCursor c = *cursor;
    if (c.remaining < 2 || loadU16(c.position) != TROV_PROTOCOL_MARK) return TROV_RESULT_BAD_PACKET;
    if (c.remaining < 3) return TROV_RESULT_BAD_PACKET;
    const HeaderCodecRow *row = findHeaderRow(packetVersion(c));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    if (c.remaining < row->headerLength) return TROV_RESULT_BAD_PACKET;
    row->decodeHeader(&c, info);
    *rowOut = row;
    return TROV_RESULT_OK;
}

// The body cursor: right after the header, `length` bytes, but never past the
// bytes the caller's cursor holds (a header may claim more than arrived).
PacketCursor bodyCursor(const PacketCursor &packet, uint32_t headerLength, uint32_t length) {
    const uint32_t available = packet.remaining - headerLength;
    return PacketCursor{packet.position + headerLength, length < available ? length : available};
}

} // namespace

bool decodesUnitBody(uint16_t unitType, uint16_t code, DecodeResult *result) {
    for (const UnitRule &rule : kUnitRules) {
        if (!contains(rule.units, unitType)) continue;
        return rule.codes.empty() || contains(rule.codes, code);
    }
    if (code == 10) {
        result->type = 0;
        return true;
    }
    if (code == 27) return unitType == 18;
    if (code == 19) return unitType == 24 || unitType == 25;
    return false;
}

namespace {

// The encoders' common checks: arguments, the header codec of the record's
// version, the body code read through it, and a body codec that encodes.
TrovResult findEncoder(const Tables &tables, uint8_t selector, const HeaderInfo *info,
                       const void *record, const void *output, const BodyCodecRow **rowOut,
                       uint16_t *codeOut) {
    if (info == nullptr || record == nullptr || output == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const auto version = static_cast<uint8_t>(info->version);
    if (findHeaderRow(version) == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    *codeOut = info->code;
    const BodyCodecRow *row = findBodyRow(tables, *codeOut, version, selector);
    if (row == nullptr || row->encode == nullptr) return TROV_RESULT_NO_BODY_CODEC;
    *rowOut = row;
    return TROV_RESULT_OK;
}

} // namespace

TrovResult encodeBody(const Tables &tables, uint8_t selector, HeaderInfo *info,
                      const void *record, void *output, void *context) {
    const BodyCodecRow *row = nullptr;
    uint16_t code = 0;
    if (TrovResult r = findEncoder(tables, selector, info, record, output, &row, &code)) return r;
    return row->encode(info, record, output, context, 0);
}

TrovResult routeFU(const Tables &tables, HeaderInfo *info, DecodeResult *result, const PacketCursor *cursor,
                   const BodyCodecRow **rowOut, PacketCursor *body) {
    *rowOut = nullptr;
    const HeaderCodecRow *header = nullptr;
    if (TrovResult r = decodePacketHeader(info, result, cursor, &header)) return r;

    result->type = info->extension;
    const uint16_t code = info->code;
    if (!decodesUnitBody(result->type, code, result)) return TROV_RESULT_OK;

    const auto version = static_cast<uint8_t>(info->version);
    const BodyCodecRow *row = findBodyRow(tables, code, version, kSelectFU);
    if (row == nullptr || row->decode == nullptr) return TROV_RESULT_NO_BODY_CODEC;

    // Body 0x31 runs to the end of the packet whatever the header says.
    const uint32_t length = code == 0x31 ? cursor->remaining - header->headerLength
                                         : info->bodyLength;
    *body = bodyCursor(*cursor, header->headerLength, length);
    *rowOut = row;
    return TROV_RESULT_OK;
}

TrovResult decodeFU(const Tables &tables, HeaderInfo *info, DecodeResult *result,
                    const PacketCursor *cursor, void *context) {
    const BodyCodecRow *row = nullptr;
    PacketCursor body{};
    if (TrovResult r = routeFU(tables, info, result, cursor, &row, &body)) return r;
    if (row == nullptr) return TROV_RESULT_OK;
    return row->decode(info, result, &body, context);
}

TrovResult decodeFP(const Tables &tables, HeaderInfo *info, DecodeResult *result,
                    const PacketCursor *cursor) {
    const HeaderCodecRow *header = nullptr;
    if (TrovResult r = decodePacketHeader(info, result, cursor, &header)) return r;

    const uint16_t code = info->code;
    const auto version = static_cast<uint8_t>(info->version);
    const BodyCodecRow *row = findBodyRow(tables, code, version, kSelectFP);
    if (row == nullptr || row->decode == nullptr) return TROV_RESULT_NO_BODY_CODEC;

    // Body 0x1a runs to the end of the packet when its first bytes say so.
    uint32_t length = info->bodyLength;
    if (code == 0x1a) {
        const uint32_t available = cursor->remaining - header->headerLength;
        const uint8_t *b = cursor->position + header->headerLength;
        if ((available > 0 && b[0] == 0x01) || (available > 1 && b[1] == 0x0B) ||
            (available > 2 && b[2] == 0x0D))
            length = available;
    }
    const PacketCursor body = bodyCursor(*cursor, header->headerLength, length);
    return row->decode(info, result, &body, nullptr);
}

TrovResult encodeFPWithExtension(const Tables &tables, HeaderInfo *info, const void *record,
                                 PacketCursor *output, void *context, uint16_t value) {
    const BodyCodecRow *row = nullptr;
    uint16_t code = 0;
    if (TrovResult r = findEncoder(tables, kSelectFP, info, record, output, &row, &code)) return r;

    // Where the body carries the extension value: bytes 22-23 of the packet
    // for these codes, bytes 20-21 for code 102. A value already there stays.
    uint32_t offset = 0;
    if (code == 88 || code == 103 || code == 114 || code == 115 || code == 129) offset = 22;
    if (code == 102) offset = 20;
    if (offset != 0 && output->position != nullptr && output->remaining >= offset + 2 &&
        loadU16(output->position + offset) == 0)
        storeU16(output->position + offset, value);

    return row->encode(info, record, output, context, 1);
}

TrovResult attributePacketSize(const Tables &tables, const HeaderInfo *info, uint16_t attributeId,
                               const void *value, uint8_t isArray, uint16_t *size) {
    if (info == nullptr || value == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const auto version = static_cast<uint8_t>(info->version);
    const AttributeCodecRow *row = findAttributeRow(tables, attributeId, version);
    if (row == nullptr) return TROV_RESULT_NO_ATTRIBUTE_CODEC;
    // The query reports the protocol's 16-bit figure, wrapped for values
    // longer than 65535 bytes; the encoders go by the true extent.
    WireSize bytes;
    const TrovResult r = row->ops.encCalc(value, isArray, &bytes, version);
    if (r == TROV_RESULT_OK) *size = bytes.bytes;
    return r;
}

TrovResult eventPacketSize(const Tables &tables, const HeaderInfo *info, uint16_t eventCode,
                           const void *event, uint16_t *size) {
    if (info == nullptr || event == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    // Always the FP event table: the size query knows no FU events.
    const EventCodecRow *row =
        findEventRow(tables, eventCode, static_cast<uint8_t>(info->version), kSelectFP);
    if (row == nullptr) return TROV_RESULT_NO_EVENT_CODEC;
    // The FP event rows size the information record they are given.
    auto *record = static_cast<PacketCursor *>(const_cast<void *>(event));
    RecordSize reported{};
    const TrovResult r = row->decCalc(record, 0, &reported);
    if (r == TROV_RESULT_OK) *size = reported.bytes;
    return r;
}

} // namespace trov

using namespace trov;

extern "C" {

TROV_API TrovResult TROV_EncodeFU(HeaderInfo *info, const void *record, EncodeOutput *output) {
    return encodeBody(activeTables(), kSelectFU, info, record, output, nullptr);
}

TROV_API TrovResult TROV_DecodeFU(HeaderInfo *info, DecodeResult *result,
                                  const PacketCursor *cursor, void *context) {
    return decodeFU(activeTables(), info, result, cursor, context);
}

TROV_API TrovResult TROV_EncodeFP(HeaderInfo *info, const void *record, EncodeOutput *output,
                                  void *context) {
    return encodeBody(activeTables(), kSelectFP, info, record, output, context);
}

TROV_API TrovResult TROV_DecodeFP(HeaderInfo *info, DecodeResult *result,
                                  const PacketCursor *cursor) {
    return decodeFP(activeTables(), info, result, cursor);
}

TROV_API TrovResult TROV_GetAttributePacketSize(const HeaderInfo *info, uint16_t attributeId,
                                                const void *value, uint8_t isArray,
                                                uint16_t *size) {
    return attributePacketSize(activeTables(), info, attributeId, value, isArray, size);
}

TROV_API TrovResult TROV_GetEventPacketSize(const HeaderInfo *info, uint16_t eventCode,
                                            const void *event, uint16_t *size) {
    return eventPacketSize(activeTables(), info, eventCode, event, size);
}

} // extern "C"
