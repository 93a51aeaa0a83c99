// Body 0x1d: a method invocation.
//
// Wire: bytes 0-3 a u32, bytes 4-5 the u16 method code, then the method's
// parameters as the method's codec writes them. Record: MethodBody
// (TrovBodies.h). The method's codec is found in the FU method table; codes
// of 0x2000 and above without a row are carried as raw bytes.
#pragma once

#include "api/Dispatch.h"

namespace trov {

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

// The same, dispatching through a given table view (for tests).
TrovResult encodeMethodBodyWith(const Tables &tables, HeaderInfo *info, const MethodBody *record,
                                EncodeOutput *output);
TrovResult decodeMethodBodyWith(const Tables &tables, HeaderInfo *info, DecodeResult *result,
                                const PacketCursor *body);

} // namespace trov
