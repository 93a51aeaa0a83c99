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

// Function-unit body records.
static_assert(sizeof(EmptyBody) == 1);
static_assert(sizeof(AttributeBody) == 32 && offsetof(AttributeBody, value) == 8 &&
              offsetof(AttributeBody, buffer) == 16);
static_assert(sizeof(BlockBody) == 32 && offsetof(BlockBody, buffer) == 16);
static_assert(sizeof(LongStringBody) == 32 && offsetof(LongStringBody, buffer) == 16);
static_assert(sizeof(StringBody) == 32 && offsetof(StringBody, buffer) == 16);
static_assert(sizeof(U16Body) == 2);
static_assert(sizeof(U32Body) == 4);
static_assert(sizeof(ByteBody) == 1);
static_assert(sizeof(U16AttributeBody) == 32 && offsetof(U16AttributeBody, id) == 2 &&
              offsetof(U16AttributeBody, value) == 8 && offsetof(U16AttributeBody, buffer) == 16);
static_assert(sizeof(U16Bytes12Body) == 14 && offsetof(U16Bytes12Body, bytes1) == 2);
static_assert(sizeof(U16Bytes16Body) == 18 && offsetof(U16Bytes16Body, bytes1) == 2);
static_assert(sizeof(U16LongStringBody) == 40 && offsetof(U16LongStringBody, string1) == 8 &&
              offsetof(U16LongStringBody, buffer) == 24);
static_assert(sizeof(U16StringBody) == 40 && offsetof(U16StringBody, string1) == 8 &&
              offsetof(U16StringBody, buffer) == 24);
static_assert(sizeof(U16PairBody) == 4 && offsetof(U16PairBody, value1) == 2);
static_assert(sizeof(U16U32Body) == 8 && offsetof(U16U32Body, value1) == 4);
static_assert(sizeof(U16ByteBody) == 4 && offsetof(U16ByteBody, value1) == 2);
static_assert(sizeof(U32AttributeBody) == 32 && offsetof(U32AttributeBody, id) == 4 &&
              offsetof(U32AttributeBody, value) == 8 && offsetof(U32AttributeBody, buffer) == 16);
static_assert(sizeof(U32BlockBody) == 40 && offsetof(U32BlockBody, block) == 8 &&
              offsetof(U32BlockBody, buffer) == 24);
static_assert(sizeof(U32LongStringBody) == 40 && offsetof(U32LongStringBody, string1) == 8 &&
              offsetof(U32LongStringBody, buffer) == 24);
static_assert(sizeof(U32StringBody) == 40 && offsetof(U32StringBody, string1) == 8 &&
              offsetof(U32StringBody, buffer) == 24);
static_assert(sizeof(U32U16Body) == 8 && offsetof(U32U16Body, value1) == 4);
static_assert(sizeof(U32PairBody) == 8 && offsetof(U32PairBody, value1) == 4);
static_assert(sizeof(U32ByteBody) == 8 && offsetof(U32ByteBody, value1) == 4);
static_assert(sizeof(ByteAttributeBody) == 32 && offsetof(ByteAttributeBody, id) == 2 &&
              offsetof(ByteAttributeBody, value) == 8 && offsetof(ByteAttributeBody, buffer) == 16);
static_assert(sizeof(ByteBlockBody) == 40 && offsetof(ByteBlockBody, block) == 8 &&
              offsetof(ByteBlockBody, buffer) == 24);
static_assert(sizeof(ByteLongStringBody) == 40 && offsetof(ByteLongStringBody, string1) == 8 &&
              offsetof(ByteLongStringBody, buffer) == 24);
static_assert(sizeof(ByteStringBody) == 40 && offsetof(ByteStringBody, string1) == 8 &&
              offsetof(ByteStringBody, buffer) == 24);
static_assert(sizeof(ByteU32Body) == 8 && offsetof(ByteU32Body, value1) == 4);
static_assert(sizeof(U16LongStringByteBody) == 48 &&
              offsetof(U16LongStringByteBody, string1) == 8 &&
              offsetof(U16LongStringByteBody, value2) == 24 &&
              offsetof(U16LongStringByteBody, buffer) == 32);
static_assert(sizeof(U16PairAttributeBody) == 32 && offsetof(U16PairAttributeBody, value1) == 2 &&
              offsetof(U16PairAttributeBody, id) == 4 &&
              offsetof(U16PairAttributeBody, value) == 8 &&
              offsetof(U16PairAttributeBody, buffer) == 16);
static_assert(sizeof(U16PairLongStringBody) == 40 && offsetof(U16PairLongStringBody, value1) == 2 &&
              offsetof(U16PairLongStringBody, string2) == 8 &&
              offsetof(U16PairLongStringBody, buffer) == 24);
static_assert(sizeof(U16PairStringBody) == 40 && offsetof(U16PairStringBody, value1) == 2 &&
              offsetof(U16PairStringBody, string2) == 8 &&
              offsetof(U16PairStringBody, buffer) == 24);
static_assert(sizeof(U16PairU32Body) == 8 && offsetof(U16PairU32Body, value1) == 2 &&
              offsetof(U16PairU32Body, value2) == 4);
static_assert(sizeof(U16U32AttributeBody) == 40 && offsetof(U16U32AttributeBody, value1) == 4 &&
              offsetof(U16U32AttributeBody, id) == 8 &&
              offsetof(U16U32AttributeBody, value) == 16 &&
              offsetof(U16U32AttributeBody, buffer) == 24);
static_assert(sizeof(U16U32StringBody) == 40 && offsetof(U16U32StringBody, value1) == 4 &&
              offsetof(U16U32StringBody, string2) == 8 && offsetof(U16U32StringBody, buffer) == 24);
static_assert(sizeof(U16U32PairBody) == 12 && offsetof(U16U32PairBody, value1) == 4 &&
              offsetof(U16U32PairBody, value2) == 8);
static_assert(sizeof(U16ByteStringBody) == 40 && offsetof(U16ByteStringBody, value1) == 2 &&
              offsetof(U16ByteStringBody, string2) == 8 &&
              offsetof(U16ByteStringBody, buffer) == 24);
static_assert(sizeof(U16BytePairBody) == 4 && offsetof(U16BytePairBody, value1) == 2 &&
              offsetof(U16BytePairBody, value2) == 3);
static_assert(sizeof(U32LongStringPairBody) == 56 &&
              offsetof(U32LongStringPairBody, string1) == 8 &&
              offsetof(U32LongStringPairBody, string2) == 24 &&
              offsetof(U32LongStringPairBody, buffer) == 40);
static_assert(sizeof(U32LongStringByteBody) == 48 &&
              offsetof(U32LongStringByteBody, string1) == 8 &&
              offsetof(U32LongStringByteBody, value2) == 24 &&
              offsetof(U32LongStringByteBody, buffer) == 32);
static_assert(sizeof(U32StringPairBody) == 56 && offsetof(U32StringPairBody, string1) == 8 &&
              offsetof(U32StringPairBody, string2) == 24 &&
              offsetof(U32StringPairBody, buffer) == 40);
static_assert(sizeof(U32StringU16Body) == 48 && offsetof(U32StringU16Body, string1) == 8 &&
              offsetof(U32StringU16Body, value2) == 24 && offsetof(U32StringU16Body, buffer) == 32);
static_assert(sizeof(U32StringByteBody) == 48 && offsetof(U32StringByteBody, string1) == 8 &&
              offsetof(U32StringByteBody, value2) == 24 &&
              offsetof(U32StringByteBody, buffer) == 32);
static_assert(sizeof(U32U16AttributeBody) == 32 && offsetof(U32U16AttributeBody, value1) == 4 &&
              offsetof(U32U16AttributeBody, id) == 6 && offsetof(U32U16AttributeBody, value) == 8 &&
              offsetof(U32U16AttributeBody, buffer) == 16);
static_assert(sizeof(U32U16LongStringBody) == 40 && offsetof(U32U16LongStringBody, value1) == 4 &&
              offsetof(U32U16LongStringBody, string2) == 8 &&
              offsetof(U32U16LongStringBody, buffer) == 24);
static_assert(sizeof(U32U16StringBody) == 40 && offsetof(U32U16StringBody, value1) == 4 &&
              offsetof(U32U16StringBody, string2) == 8 && offsetof(U32U16StringBody, buffer) == 24);
static_assert(sizeof(U32U16PairBody) == 8 && offsetof(U32U16PairBody, value1) == 4 &&
              offsetof(U32U16PairBody, value2) == 6);
static_assert(sizeof(U32U16U32Body) == 12 && offsetof(U32U16U32Body, value1) == 4 &&
              offsetof(U32U16U32Body, value2) == 8);
static_assert(sizeof(U32PairAttributeBody) == 40 && offsetof(U32PairAttributeBody, value1) == 4 &&
              offsetof(U32PairAttributeBody, id) == 8 &&
              offsetof(U32PairAttributeBody, value) == 16 &&
              offsetof(U32PairAttributeBody, buffer) == 24);
static_assert(sizeof(U32PairLongStringBody) == 40 && offsetof(U32PairLongStringBody, value1) == 4 &&
              offsetof(U32PairLongStringBody, string2) == 8 &&
              offsetof(U32PairLongStringBody, buffer) == 24);
static_assert(sizeof(U32PairStringBody) == 40 && offsetof(U32PairStringBody, value1) == 4 &&
              offsetof(U32PairStringBody, string2) == 8 &&
              offsetof(U32PairStringBody, buffer) == 24);
static_assert(sizeof(U32PairU16Body) == 12 && offsetof(U32PairU16Body, value1) == 4 &&
              offsetof(U32PairU16Body, value2) == 8);
static_assert(sizeof(U32TripleBody) == 12 && offsetof(U32TripleBody, value1) == 4 &&
              offsetof(U32TripleBody, value2) == 8);
static_assert(sizeof(U32PairByteBody) == 12 && offsetof(U32PairByteBody, value1) == 4 &&
              offsetof(U32PairByteBody, value2) == 8);
static_assert(sizeof(U32ByteAttributeBody) == 32 && offsetof(U32ByteAttributeBody, value1) == 4 &&
              offsetof(U32ByteAttributeBody, id) == 6 &&
              offsetof(U32ByteAttributeBody, value) == 8 &&
              offsetof(U32ByteAttributeBody, buffer) == 16);
static_assert(sizeof(U32ByteLongStringBody) == 40 && offsetof(U32ByteLongStringBody, value1) == 4 &&
              offsetof(U32ByteLongStringBody, string2) == 8 &&
              offsetof(U32ByteLongStringBody, buffer) == 24);
static_assert(sizeof(U32ByteStringBody) == 40 && offsetof(U32ByteStringBody, value1) == 4 &&
              offsetof(U32ByteStringBody, string2) == 8 &&
              offsetof(U32ByteStringBody, buffer) == 24);
static_assert(sizeof(U32ByteU32Body) == 12 && offsetof(U32ByteU32Body, value1) == 4 &&
              offsetof(U32ByteU32Body, value2) == 8);
static_assert(sizeof(ByteU16StringBody) == 40 && offsetof(ByteU16StringBody, value1) == 2 &&
              offsetof(ByteU16StringBody, string2) == 8 &&
              offsetof(ByteU16StringBody, buffer) == 24);
static_assert(sizeof(ByteU32LongStringBody) == 40 && offsetof(ByteU32LongStringBody, value1) == 4 &&
              offsetof(ByteU32LongStringBody, string2) == 8 &&
              offsetof(ByteU32LongStringBody, buffer) == 24);
static_assert(sizeof(ByteU32PairBody) == 12 && offsetof(ByteU32PairBody, value1) == 4 &&
              offsetof(ByteU32PairBody, value2) == 8);
static_assert(sizeof(BytePairLongStringBody) == 40 &&
              offsetof(BytePairLongStringBody, value1) == 1 &&
              offsetof(BytePairLongStringBody, string2) == 8 &&
              offsetof(BytePairLongStringBody, buffer) == 24);
static_assert(sizeof(BytePairStringBody) == 40 && offsetof(BytePairStringBody, value1) == 1 &&
              offsetof(BytePairStringBody, string2) == 8 &&
              offsetof(BytePairStringBody, buffer) == 24);
static_assert(sizeof(BytePairU16Body) == 4 && offsetof(BytePairU16Body, value1) == 1 &&
              offsetof(BytePairU16Body, value2) == 2);
static_assert(sizeof(U16TripleStringBody) == 40 && offsetof(U16TripleStringBody, value1) == 2 &&
              offsetof(U16TripleStringBody, value2) == 4 &&
              offsetof(U16TripleStringBody, string3) == 8 &&
              offsetof(U16TripleStringBody, buffer) == 24);
static_assert(sizeof(U16U32U16ByteBody) == 12 && offsetof(U16U32U16ByteBody, value1) == 4 &&
              offsetof(U16U32U16ByteBody, value2) == 8 &&
              offsetof(U16U32U16ByteBody, value3) == 10);
static_assert(sizeof(U32U16PairStringBody) == 40 && offsetof(U32U16PairStringBody, value1) == 4 &&
              offsetof(U32U16PairStringBody, value2) == 6 &&
              offsetof(U32U16PairStringBody, string3) == 8 &&
              offsetof(U32U16PairStringBody, buffer) == 24);
static_assert(sizeof(U32U16ByteStringBody) == 40 && offsetof(U32U16ByteStringBody, value1) == 4 &&
              offsetof(U32U16ByteStringBody, value2) == 6 &&
              offsetof(U32U16ByteStringBody, string3) == 8 &&
              offsetof(U32U16ByteStringBody, buffer) == 24);
static_assert(sizeof(U32PairLongStringPairBody) == 56 &&
              offsetof(U32PairLongStringPairBody, value1) == 4 &&
              offsetof(U32PairLongStringPairBody, string2) == 8 &&
              offsetof(U32PairLongStringPairBody, string3) == 24 &&
              offsetof(U32PairLongStringPairBody, buffer) == 40);
static_assert(sizeof(U32PairStringByteBody) == 48 && offsetof(U32PairStringByteBody, value1) == 4 &&
              offsetof(U32PairStringByteBody, string2) == 8 &&
              offsetof(U32PairStringByteBody, value3) == 24 &&
              offsetof(U32PairStringByteBody, buffer) == 32);
static_assert(sizeof(U32PairU16LongStringBody) == 48 &&
              offsetof(U32PairU16LongStringBody, value1) == 4 &&
              offsetof(U32PairU16LongStringBody, value2) == 8 &&
              offsetof(U32PairU16LongStringBody, string3) == 16 &&
              offsetof(U32PairU16LongStringBody, buffer) == 32);
static_assert(sizeof(U32PairU16ByteBody) == 12 && offsetof(U32PairU16ByteBody, value1) == 4 &&
              offsetof(U32PairU16ByteBody, value2) == 8 &&
              offsetof(U32PairU16ByteBody, value3) == 10);
static_assert(sizeof(U32TripleLongStringBody) == 48 &&
              offsetof(U32TripleLongStringBody, value1) == 4 &&
              offsetof(U32TripleLongStringBody, value2) == 8 &&
              offsetof(U32TripleLongStringBody, string3) == 16 &&
              offsetof(U32TripleLongStringBody, buffer) == 32);
static_assert(sizeof(U32TripleStringBody) == 48 && offsetof(U32TripleStringBody, value1) == 4 &&
              offsetof(U32TripleStringBody, value2) == 8 &&
              offsetof(U32TripleStringBody, string3) == 16 &&
              offsetof(U32TripleStringBody, buffer) == 32);
static_assert(sizeof(U32QuadBody) == 16 && offsetof(U32QuadBody, value1) == 4 &&
              offsetof(U32QuadBody, value2) == 8 && offsetof(U32QuadBody, value3) == 12);
static_assert(sizeof(U32TripleByteBody) == 16 && offsetof(U32TripleByteBody, value1) == 4 &&
              offsetof(U32TripleByteBody, value2) == 8 &&
              offsetof(U32TripleByteBody, value3) == 12);
static_assert(sizeof(U32PairByteLongStringBody) == 48 &&
              offsetof(U32PairByteLongStringBody, value1) == 4 &&
              offsetof(U32PairByteLongStringBody, value2) == 8 &&
              offsetof(U32PairByteLongStringBody, string3) == 16 &&
              offsetof(U32PairByteLongStringBody, buffer) == 32);
static_assert(sizeof(U32PairByteStringBody) == 48 && offsetof(U32PairByteStringBody, value1) == 4 &&
              offsetof(U32PairByteStringBody, value2) == 8 &&
              offsetof(U32PairByteStringBody, string3) == 16 &&
              offsetof(U32PairByteStringBody, buffer) == 32);
static_assert(sizeof(U32PairByteU16Body) == 12 && offsetof(U32PairByteU16Body, value1) == 4 &&
              offsetof(U32PairByteU16Body, value2) == 8 &&
              offsetof(U32PairByteU16Body, value3) == 10);
static_assert(sizeof(U32PairBytePairBody) == 12 && offsetof(U32PairBytePairBody, value1) == 4 &&
              offsetof(U32PairBytePairBody, value2) == 8 &&
              offsetof(U32PairBytePairBody, value3) == 9);
static_assert(sizeof(U32ByteU16U32Body) == 12 && offsetof(U32ByteU16U32Body, value1) == 4 &&
              offsetof(U32ByteU16U32Body, value2) == 6 && offsetof(U32ByteU16U32Body, value3) == 8);
static_assert(sizeof(U32ByteU32PairBody) == 16 && offsetof(U32ByteU32PairBody, value1) == 4 &&
              offsetof(U32ByteU32PairBody, value2) == 8 &&
              offsetof(U32ByteU32PairBody, value3) == 12);
static_assert(sizeof(U32BytePairLongStringBody) == 40 &&
              offsetof(U32BytePairLongStringBody, value1) == 4 &&
              offsetof(U32BytePairLongStringBody, value2) == 5 &&
              offsetof(U32BytePairLongStringBody, string3) == 8 &&
              offsetof(U32BytePairLongStringBody, buffer) == 24);
static_assert(sizeof(U32BytePairStringBody) == 40 && offsetof(U32BytePairStringBody, value1) == 4 &&
              offsetof(U32BytePairStringBody, value2) == 5 &&
              offsetof(U32BytePairStringBody, string3) == 8 &&
              offsetof(U32BytePairStringBody, buffer) == 24);
static_assert(sizeof(ByteU16PairU32Body) == 12 && offsetof(ByteU16PairU32Body, value1) == 2 &&
              offsetof(ByteU16PairU32Body, value2) == 4 &&
              offsetof(ByteU16PairU32Body, value3) == 8);
static_assert(sizeof(ByteU32TripleBody) == 16 && offsetof(ByteU32TripleBody, value1) == 4 &&
              offsetof(ByteU32TripleBody, value2) == 8 &&
              offsetof(ByteU32TripleBody, value3) == 12);
static_assert(sizeof(BytePairU16U32Body) == 8 && offsetof(BytePairU16U32Body, value1) == 1 &&
              offsetof(BytePairU16U32Body, value2) == 2 &&
              offsetof(BytePairU16U32Body, value3) == 4);
static_assert(sizeof(BytePairU32PairBody) == 12 && offsetof(BytePairU32PairBody, value1) == 1 &&
              offsetof(BytePairU32PairBody, value2) == 4 &&
              offsetof(BytePairU32PairBody, value3) == 8);
static_assert(sizeof(U32U16PairByteLongStringBody) == 48 &&
              offsetof(U32U16PairByteLongStringBody, value1) == 4 &&
              offsetof(U32U16PairByteLongStringBody, value2) == 6 &&
              offsetof(U32U16PairByteLongStringBody, value3) == 8 &&
              offsetof(U32U16PairByteLongStringBody, string4) == 16 &&
              offsetof(U32U16PairByteLongStringBody, buffer) == 32);
static_assert(sizeof(U32U16U32PairByteBody) == 20 && offsetof(U32U16U32PairByteBody, value1) == 4 &&
              offsetof(U32U16U32PairByteBody, value2) == 8 &&
              offsetof(U32U16U32PairByteBody, value3) == 12 &&
              offsetof(U32U16U32PairByteBody, value4) == 16);
static_assert(sizeof(U32PairU16PairU32Body) == 16 && offsetof(U32PairU16PairU32Body, value1) == 4 &&
              offsetof(U32PairU16PairU32Body, value2) == 8 &&
              offsetof(U32PairU16PairU32Body, value3) == 10 &&
              offsetof(U32PairU16PairU32Body, value4) == 12);
static_assert(sizeof(U32TripleU16ByteBody) == 16 && offsetof(U32TripleU16ByteBody, value1) == 4 &&
              offsetof(U32TripleU16ByteBody, value2) == 8 &&
              offsetof(U32TripleU16ByteBody, value3) == 12 &&
              offsetof(U32TripleU16ByteBody, value4) == 14);
static_assert(sizeof(U32QuadLongStringBody) == 48 && offsetof(U32QuadLongStringBody, value1) == 4 &&
              offsetof(U32QuadLongStringBody, value2) == 8 &&
              offsetof(U32QuadLongStringBody, value3) == 12 &&
              offsetof(U32QuadLongStringBody, string4) == 16 &&
              offsetof(U32QuadLongStringBody, buffer) == 32);
static_assert(sizeof(U32QuadStringBody) == 48 && offsetof(U32QuadStringBody, value1) == 4 &&
              offsetof(U32QuadStringBody, value2) == 8 &&
              offsetof(U32QuadStringBody, value3) == 12 &&
              offsetof(U32QuadStringBody, string4) == 16 &&
              offsetof(U32QuadStringBody, buffer) == 32);
static_assert(sizeof(U32QuadU16Body) == 20 && offsetof(U32QuadU16Body, value1) == 4 &&
              offsetof(U32QuadU16Body, value2) == 8 && offsetof(U32QuadU16Body, value3) == 12 &&
              offsetof(U32QuadU16Body, value4) == 16);
static_assert(sizeof(U32QuadByteBody) == 20 && offsetof(U32QuadByteBody, value1) == 4 &&
              offsetof(U32QuadByteBody, value2) == 8 && offsetof(U32QuadByteBody, value3) == 12 &&
              offsetof(U32QuadByteBody, value4) == 16);
static_assert(sizeof(U32TripleByteU16Body) == 16 && offsetof(U32TripleByteU16Body, value1) == 4 &&
              offsetof(U32TripleByteU16Body, value2) == 8 &&
              offsetof(U32TripleByteU16Body, value3) == 12 &&
              offsetof(U32TripleByteU16Body, value4) == 14);
static_assert(sizeof(U32ByteU32TripleBody) == 20 && offsetof(U32ByteU32TripleBody, value1) == 4 &&
              offsetof(U32ByteU32TripleBody, value2) == 8 &&
              offsetof(U32ByteU32TripleBody, value3) == 12 &&
              offsetof(U32ByteU32TripleBody, value4) == 16);
static_assert(sizeof(ByteU32QuadBody) == 20 && offsetof(ByteU32QuadBody, value1) == 4 &&
              offsetof(ByteU32QuadBody, value2) == 8 && offsetof(ByteU32QuadBody, value3) == 12 &&
              offsetof(ByteU32QuadBody, value4) == 16);
static_assert(sizeof(U32TripleU16PairByteBody) == 20 &&
              offsetof(U32TripleU16PairByteBody, value1) == 4 &&
              offsetof(U32TripleU16PairByteBody, value2) == 8 &&
              offsetof(U32TripleU16PairByteBody, value3) == 12 &&
              offsetof(U32TripleU16PairByteBody, value4) == 14 &&
              offsetof(U32TripleU16PairByteBody, value5) == 16);

} // namespace trov::layout
