// Body 0x1d: a method invocation.
//
// Wire: bytes 0-3 a u32, bytes 4-5 the u16 method code, then the method's
// parameters as the method's codec writes them. Record: MethodBody
// (TrovBodies.h). The method's codec is found in the FU method table; codes
// of 0x2000 and above without a row are carried as raw bytes.
#pragma once

#include <cstddef>

#include "engine/Tables.h"
#include "engine/Field.h"
#include "engine/FieldWalker.h"
#include "engine/Memory.h"

namespace trov {

// The prefix ahead of the parameters, stated once: the codec writes and reads
// it through this list, and the layout description describes MethodBody from
// it. Behind it in the record: the parameters' pointer, their u16 length and
// the managed buffer of decoded parameters.
inline constexpr Field kMethodPrefixFields[] = {Field{FieldKind::U32, 0, 0, "value0"},
                                                Field{FieldKind::U16, 0, 0, "method"}};
inline constexpr Plan kMethodPrefix = makePlan(kMethodPrefixFields);
inline constexpr uint8_t kMethodCodeField = 1; // the method code's index in the prefix
inline constexpr uint16_t kMethodParams = static_cast<uint16_t>(alignTo(kMethodPrefix.fieldsEnd, 8));
inline constexpr uint16_t kMethodParamsLength = kMethodParams + 8;
inline constexpr uint16_t kMethodBuffer = static_cast<uint16_t>(alignTo(kMethodParamsLength + 2, 8));

static_assert(kMethodPrefix.valid && kMethodPrefix.wireFixed == 6 &&
                  kMethodPrefix.fields[0].offset == offsetof(MethodBody, value0) &&
                  kMethodPrefix.fields[kMethodCodeField].offset == offsetof(MethodBody, method) &&
                  kMethodParams == offsetof(MethodBody, params) &&
                  kMethodParamsLength == offsetof(MethodBody, paramsLength) &&
                  kMethodBuffer == offsetof(MethodBody, buffer) &&
                  kMethodBuffer + sizeof(BufferDesc) == sizeof(MethodBody),
              "the method prefix disagrees with MethodBody");

// The body row's operations (shapes of BodyEncodeFn and BodyDecodeFn).
// Encode results: 0; 11 no method codec (below 0x2000); the method codec's
// size result; 8, 6, 7 from reserving the output. Decode results: 0; 5
// fewer than 6 bytes; 6 allocation failed; 11; the method codec's size
// result; the buffer preparation's result. Failures set result->type to 6
// and free what the call allocated.
TrovResult encodeMethodBody(HeaderInfo *info, const void *record, void *output, void *context,
                            uint8_t mode);
TrovResult decodeMethodBody(HeaderInfo *info, DecodeResult *result, const PacketCursor *body,
                            void *context);

// Writes a method invocation whose parameters `params` sizes
// (`encCalc(WireSize &)`) and writes (`encode(PacketCursor &)`): the request
// side through the method's row, the reply side through its reply plan.
// The body length is the parameters' 16-bit figure plus the prefix, in 16
// bits; parameters within 6 bytes of 65535 (or past it) make a body the
// header cannot frame, which the reservation refuses once the figure is
// stored.
template <class Params>
TrovResult encodeMethodWith(HeaderInfo *info, const MethodBody &record, EncodeOutput *output, const Params &params) {
    WireSize wire;
    if (TrovResult r = params.encCalc(wire)) return r;
    WireSize size = WireSize::of(kMethodPrefix.wireFixed);
    size.add(wire);
    PacketCursor body{};
    bool allocated = false;
    if (TrovResult r = reserveEncodeBuffer(info, size, output, &body, &allocated)) return r;
    walkEncode(kMethodPrefix, body, reinterpret_cast<const uint8_t *>(&record), FieldEnv{});
    params.encode(body);
    return finishEncodeBuffer(output, body, allocated);
}

// The same, dispatching through a given table view (for tests).
TrovResult encodeMethodBodyWith(const Tables &tables, HeaderInfo *info, const MethodBody *record,
                                EncodeOutput *output);
// `read`, when given, receives the body bytes read on success.
TrovResult decodeMethodBodyWith(const Tables &tables, HeaderInfo *info, DecodeResult *result,
                                const PacketCursor *body, uint32_t *read = nullptr);

} // namespace trov
