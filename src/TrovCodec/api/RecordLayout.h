// Compile-time checks of the public record layouts. Hosts read these records
// in place, so their sizes and offsets are part of the interface, identical
// on 64-bit Linux and Windows.
#pragma once

#include <cstddef>

#include "TrovCodec.h"

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

static_assert(sizeof(EventEntry) == 24 && offsetof(EventEntry, field2) == 4 &&
              offsetof(EventEntry, field3) == 8 && offsetof(EventEntry, field4) == 12 &&
              offsetof(EventEntry, eventCode) == 14 && offsetof(EventEntry, body) == 16);
static_assert(sizeof(EventBriefEntry) == 16 && offsetof(EventBriefEntry, field2) == 2 &&
              offsetof(EventBriefEntry, body) == 8);
static_assert(sizeof(EventListBody) == 40 && offsetof(EventListBody, value1) == 4 &&
              offsetof(EventListBody, value2) == 6 && offsetof(EventListBody, value3) == 8 &&
              offsetof(EventListBody, value4) == 10 && offsetof(EventListBody, count) == 12 &&
              offsetof(EventListBody, entries) == 16 && offsetof(EventListBody, buffer) == 24);
static_assert(sizeof(ShortEventListBody) == 32 && offsetof(ShortEventListBody, count) == 4 &&
              offsetof(ShortEventListBody, entries) == 8 && offsetof(ShortEventListBody, buffer) == 16);

static_assert(sizeof(MethodBody) == 40 && offsetof(MethodBody, method) == 4 &&
              offsetof(MethodBody, params) == 8 && offsetof(MethodBody, paramsLength) == 16 &&
              offsetof(MethodBody, buffer) == 24);

static_assert(sizeof(EventExtendEntry) == 16 && offsetof(EventExtendEntry, identifier) == 2 &&
              offsetof(EventExtendEntry, value) == 8);
static_assert(sizeof(EventExtendList) == 16 && offsetof(EventExtendList, entries) == 8);
static_assert(sizeof(EventExtendRawItem) == 24 && offsetof(EventExtendRawItem, length) == 2 &&
              offsetof(EventExtendRawItem, data) == 8);
static_assert(sizeof(EventExtendSchemaRow) == 16 && offsetof(EventExtendSchemaRow, itemCount) == 2 &&
              offsetof(EventExtendSchemaRow, items) == 8);
static_assert(sizeof(EventExtendSchema) == 16 && offsetof(EventExtendSchema, rows) == 8);

// The function-unit body records are tied to their layouts where those are
// written (units/FunctionUnitBodies.h): every offset and size is checked
// there against the rules the codec lays records out by.

} // namespace trov::layout
