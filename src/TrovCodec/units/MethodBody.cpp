// Body 0x1d, the method invocation: a u32, the u16 method code, then the
// method's parameters as its codec in the FU method table writes them
// (request) or as its codec reads them (reply). Decoded parameters live in
// the record's managed buffer.
#include "units/MethodBody.h"

#include "engine/HeaderCodec.h"

namespace trov {

TrovResult encodeMethodBodyWith(const Tables &tables, HeaderInfo *info, const MethodBody *record,
                                EncodeOutput *output) {
    const MethodCodecRow *row = findMethodRow(tables, record->method, static_cast<uint8_t>(info->version));
    if (row == nullptr) return TROV_RESULT_NO_METHOD_CODEC;
    struct {
        const MethodCodecRow &row;
        const MethodBody &m;
        TrovResult encCalc(WireSize &wire) const { return row.encCalc(m.params, m.paramsLength, &wire); }
        void encode(PacketCursor &c) const { row.encode(&c, m.params, m.paramsLength); }
    } params{*row, *record};
    return encodeMethodWith(info, *record, output, params);
}

TrovResult decodeMethodBodyWith(const Tables &tables, HeaderInfo *info, DecodeResult *result,
                                const PacketCursor *body, uint32_t *read) {
    bool recordAllocated = false;
    if (TrovResult r = allocateRecord(result, body, kMethodPrefix.wireFixed, sizeof(MethodBody), &recordAllocated))
        return r;
    auto *record = static_cast<MethodBody *>(result->record);
    PacketCursor c = *body;
    walkDecode(kMethodPrefix, c, reinterpret_cast<uint8_t *>(record), nullptr, FieldEnv{});
    record->params = nullptr;
    record->paramsLength = 0;

    auto fail = [&](TrovResult r, bool bufferAllocated) {
        releaseOnFailure(result, recordAllocated, bufferAllocated);
        return r;
    };
    const MethodCodecRow *row = findMethodRow(tables, record->method, static_cast<uint8_t>(info->version));
    if (row == nullptr) return fail(TROV_RESULT_NO_METHOD_CODEC, false);
    uint16_t paramsLength = 0;
    RecordSize size{};
    if (TrovResult r = row->decCalc(&c, &paramsLength, &size)) return fail(r, false);
    bool bufferAllocated = false;
    if (TrovResult r = prepareBuffer(result, &record->buffer, size.bytes, &bufferAllocated, size.extent))
        return fail(r, bufferAllocated);
    record->params = record->buffer.data;
    record->paramsLength = paramsLength;
    row->decode(record->buffer.data, &c);
    if (read != nullptr) *read = static_cast<uint32_t>(c.position - body->position);
    return TROV_RESULT_OK;
}

TrovResult encodeMethodBody(HeaderInfo *info, const void *record, void *output, void *, uint8_t) {
    return encodeMethodBodyWith(activeTables(), info, static_cast<const MethodBody *>(record),
                                static_cast<EncodeOutput *>(output));
}

TrovResult decodeMethodBody(HeaderInfo *info, DecodeResult *result, const PacketCursor *body, void *) {
    return decodeMethodBodyWith(activeTables(), info, result, body);
}

} // namespace trov
