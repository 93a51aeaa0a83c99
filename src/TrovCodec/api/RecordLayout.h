// Compile-time checks of the public record layouts. Hosts read these records
// in place, so their sizes and offsets are part of the interface, identical
// on 64-bit Linux and Windows.
#pragma once

#include <cstddef>

#include "api/TrovCodec.h"

namespace trov::layout {

static_assert(sizeof(void *) == 8, "the interface is defined for 64-bit hosts");

static_assert(sizeof(PacketCursor) == 16);
static_assert(offsetof(PacketCursor, position) == 0 && offsetof(PacketCursor, remaining) == 8);

static_assert(sizeof(HeaderInfo) == 24);
static_assert(offsetof(HeaderInfo, mark) == 0 && offsetof(HeaderInfo, version) == 2 &&
              offsetof(HeaderInfo, flags) == 4 && offsetof(HeaderInfo, code) == 6 &&
              offsetof(HeaderInfo, value4) == 8 && offsetof(HeaderInfo, bodyLength) == 10 &&
              offsetof(HeaderInfo, value6) == 12 && offsetof(HeaderInfo, value7) == 16 &&
              offsetof(HeaderInfo, extension) == 20);

static_assert(sizeof(BufferDesc) == 16);
static_assert(offsetof(BufferDesc, data) == 0 && offsetof(BufferDesc, capacity) == 8 &&
              offsetof(BufferDesc, flags) == 10);

static_assert(sizeof(DecodeResult) == 24);
static_assert(offsetof(DecodeResult, record) == 0 && offsetof(DecodeResult, buffer) == 8 &&
              offsetof(DecodeResult, type) == 16);

static_assert(sizeof(EncodeOutput) == 16);
static_assert(offsetof(EncodeOutput, data) == 0 && offsetof(EncodeOutput, length) == 8);

static_assert(sizeof(TrovResult) == 4);

static_assert(sizeof(AttributeArrayHeader) == 16 && offsetof(AttributeArrayHeader, elements) == 8);
static_assert(sizeof(OctetString) == 16 && offsetof(OctetString, data) == 8);
static_assert(sizeof(AttributeEntry) == 16 && offsetof(AttributeEntry, length) == 2 &&
              offsetof(AttributeEntry, value) == 8);
static_assert(sizeof(AttributeList) == 16 && offsetof(AttributeList, entries) == 8);

} // namespace trov::layout
