// The field lists of the function-unit bodies.
//
// One layout per distinct body shape, named after its record. A layout
// serves every body code whose request or reply has that shape, so codes of
// one shape share one operation in the codec table. Beside each layout, the
// compiler checks that the field list places every field where the public
// record has it and gives the record's size.
#pragma once

#include <cstddef>

#include "units/BodyLayout.h"

namespace trov {

// Replies that are not field lists.
inline constexpr BodyLayout kNoReplyBody{BodyKind::NoReply, nullptr, 0};
inline constexpr BodyLayout kEventListBody{BodyKind::EventList, nullptr, 0};
inline constexpr BodyLayout kShortEventListBody{BodyKind::ShortEventList, nullptr, 0};

// The request of body 0x4d: the five leading fields of an EventListBody.
inline constexpr BodyField kEventListHeadFields[] = {field::U32, field::U8, field::U16, field::U16,
    field::U8};
inline constexpr BodyLayout kEventListHead = fieldLayout(kEventListHeadFields);
static_assert(matchesRecord(kEventListHead, layoutRecordBytes(kEventListHead), {
    offsetof(EventListBody, value0), offsetof(EventListBody, value1),
    offsetof(EventListBody, value2), offsetof(EventListBody, value3),
    offsetof(EventListBody, value4)}));

// Field-list bodies.
inline constexpr BodyLayout kEmptyBody{BodyKind::Fields, nullptr, 0};
static_assert(matchesRecord(kEmptyBody, sizeof(EmptyBody), {}));

inline constexpr BodyField kAttributeBodyFields[] = {field::Attribute};
inline constexpr BodyLayout kAttributeBody = fieldLayout(kAttributeBodyFields);
static_assert(matchesRecord(kAttributeBody, sizeof(AttributeBody), {offsetof(AttributeBody, id),
    offsetof(AttributeBody, value), offsetof(AttributeBody, buffer)}));

inline constexpr BodyField kBlockBodyFields[] = {field::Block};
inline constexpr BodyLayout kBlockBody = fieldLayout(kBlockBodyFields);
static_assert(matchesRecord(kBlockBody, sizeof(BlockBody), {offsetof(BlockBody, block),
    offsetof(BlockBody, buffer)}));

inline constexpr BodyField kLongStringBodyFields[] = {field::String16};
inline constexpr BodyLayout kLongStringBody = fieldLayout(kLongStringBodyFields);
static_assert(matchesRecord(kLongStringBody, sizeof(LongStringBody), {
    offsetof(LongStringBody, string0), offsetof(LongStringBody, buffer)}));

inline constexpr BodyField kStringBodyFields[] = {field::String8};
inline constexpr BodyLayout kStringBody = fieldLayout(kStringBodyFields);
static_assert(matchesRecord(kStringBody, sizeof(StringBody), {offsetof(StringBody, string0),
    offsetof(StringBody, buffer)}));

inline constexpr BodyField kU16BodyFields[] = {field::U16};
inline constexpr BodyLayout kU16Body = fieldLayout(kU16BodyFields);
static_assert(matchesRecord(kU16Body, sizeof(U16Body), {offsetof(U16Body, value0)}));

inline constexpr BodyField kU32BodyFields[] = {field::U32};
inline constexpr BodyLayout kU32Body = fieldLayout(kU32BodyFields);
static_assert(matchesRecord(kU32Body, sizeof(U32Body), {offsetof(U32Body, value0)}));

inline constexpr BodyField kByteBodyFields[] = {field::U8};
inline constexpr BodyLayout kByteBody = fieldLayout(kByteBodyFields);
static_assert(matchesRecord(kByteBody, sizeof(ByteBody), {offsetof(ByteBody, value0)}));

inline constexpr BodyField kU16AttributeBodyFields[] = {field::U16, field::Attribute};
inline constexpr BodyLayout kU16AttributeBody = fieldLayout(kU16AttributeBodyFields);
static_assert(matchesRecord(kU16AttributeBody, sizeof(U16AttributeBody), {
    offsetof(U16AttributeBody, value0), offsetof(U16AttributeBody, id),
    offsetof(U16AttributeBody, value), offsetof(U16AttributeBody, buffer)}));

inline constexpr BodyField kU16Bytes12BodyFields[] = {field::U16, field::bytes(12)};
inline constexpr BodyLayout kU16Bytes12Body = fieldLayout(kU16Bytes12BodyFields);
static_assert(matchesRecord(kU16Bytes12Body, sizeof(U16Bytes12Body), {
    offsetof(U16Bytes12Body, value0), offsetof(U16Bytes12Body, bytes1)}));

inline constexpr BodyField kU16Bytes16BodyFields[] = {field::U16, field::bytes(16)};
inline constexpr BodyLayout kU16Bytes16Body = fieldLayout(kU16Bytes16BodyFields);
static_assert(matchesRecord(kU16Bytes16Body, sizeof(U16Bytes16Body), {
    offsetof(U16Bytes16Body, value0), offsetof(U16Bytes16Body, bytes1)}));

inline constexpr BodyField kU16LongStringBodyFields[] = {field::U16, field::String16};
inline constexpr BodyLayout kU16LongStringBody = fieldLayout(kU16LongStringBodyFields);
static_assert(matchesRecord(kU16LongStringBody, sizeof(U16LongStringBody), {
    offsetof(U16LongStringBody, value0), offsetof(U16LongStringBody, string1),
    offsetof(U16LongStringBody, buffer)}));

inline constexpr BodyField kU16StringBodyFields[] = {field::U16, field::String8};
inline constexpr BodyLayout kU16StringBody = fieldLayout(kU16StringBodyFields);
static_assert(matchesRecord(kU16StringBody, sizeof(U16StringBody), {offsetof(U16StringBody, value0),
    offsetof(U16StringBody, string1), offsetof(U16StringBody, buffer)}));

inline constexpr BodyField kU16PairBodyFields[] = {field::U16, field::U16};
inline constexpr BodyLayout kU16PairBody = fieldLayout(kU16PairBodyFields);
static_assert(matchesRecord(kU16PairBody, sizeof(U16PairBody), {offsetof(U16PairBody, value0),
    offsetof(U16PairBody, value1)}));

inline constexpr BodyField kU16U32BodyFields[] = {field::U16, field::U32};
inline constexpr BodyLayout kU16U32Body = fieldLayout(kU16U32BodyFields);
static_assert(matchesRecord(kU16U32Body, sizeof(U16U32Body), {offsetof(U16U32Body, value0),
    offsetof(U16U32Body, value1)}));

inline constexpr BodyField kU16ByteBodyFields[] = {field::U16, field::U8};
inline constexpr BodyLayout kU16ByteBody = fieldLayout(kU16ByteBodyFields);
static_assert(matchesRecord(kU16ByteBody, sizeof(U16ByteBody), {offsetof(U16ByteBody, value0),
    offsetof(U16ByteBody, value1)}));

inline constexpr BodyField kU32AttributeBodyFields[] = {field::U32, field::Attribute};
inline constexpr BodyLayout kU32AttributeBody = fieldLayout(kU32AttributeBodyFields);
static_assert(matchesRecord(kU32AttributeBody, sizeof(U32AttributeBody), {
    offsetof(U32AttributeBody, value0), offsetof(U32AttributeBody, id),
    offsetof(U32AttributeBody, value), offsetof(U32AttributeBody, buffer)}));

inline constexpr BodyField kU32BlockBodyFields[] = {field::U32, field::Block};
inline constexpr BodyLayout kU32BlockBody = fieldLayout(kU32BlockBodyFields);
static_assert(matchesRecord(kU32BlockBody, sizeof(U32BlockBody), {offsetof(U32BlockBody, value0),
    offsetof(U32BlockBody, block), offsetof(U32BlockBody, buffer)}));

inline constexpr BodyField kU32LongStringBodyFields[] = {field::U32, field::String16};
inline constexpr BodyLayout kU32LongStringBody = fieldLayout(kU32LongStringBodyFields);
static_assert(matchesRecord(kU32LongStringBody, sizeof(U32LongStringBody), {
    offsetof(U32LongStringBody, value0), offsetof(U32LongStringBody, string1),
    offsetof(U32LongStringBody, buffer)}));

inline constexpr BodyField kU32StringBodyFields[] = {field::U32, field::String8};
inline constexpr BodyLayout kU32StringBody = fieldLayout(kU32StringBodyFields);
static_assert(matchesRecord(kU32StringBody, sizeof(U32StringBody), {offsetof(U32StringBody, value0),
    offsetof(U32StringBody, string1), offsetof(U32StringBody, buffer)}));

inline constexpr BodyField kU32U16BodyFields[] = {field::U32, field::U16};
inline constexpr BodyLayout kU32U16Body = fieldLayout(kU32U16BodyFields);
static_assert(matchesRecord(kU32U16Body, sizeof(U32U16Body), {offsetof(U32U16Body, value0),
    offsetof(U32U16Body, value1)}));

inline constexpr BodyField kU32PairBodyFields[] = {field::U32, field::U32};
inline constexpr BodyLayout kU32PairBody = fieldLayout(kU32PairBodyFields);
static_assert(matchesRecord(kU32PairBody, sizeof(U32PairBody), {offsetof(U32PairBody, value0),
    offsetof(U32PairBody, value1)}));

inline constexpr BodyField kU32ByteBodyFields[] = {field::U32, field::U8};
inline constexpr BodyLayout kU32ByteBody = fieldLayout(kU32ByteBodyFields);
static_assert(matchesRecord(kU32ByteBody, sizeof(U32ByteBody), {offsetof(U32ByteBody, value0),
    offsetof(U32ByteBody, value1)}));

inline constexpr BodyField kByteAttributeBodyFields[] = {field::U8, field::Attribute};
inline constexpr BodyLayout kByteAttributeBody = fieldLayout(kByteAttributeBodyFields);
static_assert(matchesRecord(kByteAttributeBody, sizeof(ByteAttributeBody), {
    offsetof(ByteAttributeBody, value0), offsetof(ByteAttributeBody, id),
    offsetof(ByteAttributeBody, value), offsetof(ByteAttributeBody, buffer)}));

inline constexpr BodyField kByteBlockBodyFields[] = {field::U8, field::Block};
inline constexpr BodyLayout kByteBlockBody = fieldLayout(kByteBlockBodyFields);
static_assert(matchesRecord(kByteBlockBody, sizeof(ByteBlockBody), {offsetof(ByteBlockBody, value0),
    offsetof(ByteBlockBody, block), offsetof(ByteBlockBody, buffer)}));

inline constexpr BodyField kByteLongStringBodyFields[] = {field::U8, field::String16};
inline constexpr BodyLayout kByteLongStringBody = fieldLayout(kByteLongStringBodyFields);
static_assert(matchesRecord(kByteLongStringBody, sizeof(ByteLongStringBody), {
    offsetof(ByteLongStringBody, value0), offsetof(ByteLongStringBody, string1),
    offsetof(ByteLongStringBody, buffer)}));

inline constexpr BodyField kByteStringBodyFields[] = {field::U8, field::String8};
inline constexpr BodyLayout kByteStringBody = fieldLayout(kByteStringBodyFields);
static_assert(matchesRecord(kByteStringBody, sizeof(ByteStringBody), {
    offsetof(ByteStringBody, value0), offsetof(ByteStringBody, string1),
    offsetof(ByteStringBody, buffer)}));

inline constexpr BodyField kByteU32BodyFields[] = {field::U8, field::U32};
inline constexpr BodyLayout kByteU32Body = fieldLayout(kByteU32BodyFields);
static_assert(matchesRecord(kByteU32Body, sizeof(ByteU32Body), {offsetof(ByteU32Body, value0),
    offsetof(ByteU32Body, value1)}));

inline constexpr BodyField kU16LongStringByteBodyFields[] = {field::U16, field::String16,
    field::U8};
inline constexpr BodyLayout kU16LongStringByteBody = fieldLayout(kU16LongStringByteBodyFields);
static_assert(matchesRecord(kU16LongStringByteBody, sizeof(U16LongStringByteBody), {
    offsetof(U16LongStringByteBody, value0), offsetof(U16LongStringByteBody, string1),
    offsetof(U16LongStringByteBody, value2), offsetof(U16LongStringByteBody, buffer)}));

inline constexpr BodyField kU16PairAttributeBodyFields[] = {field::U16, field::U16,
    field::Attribute};
inline constexpr BodyLayout kU16PairAttributeBody = fieldLayout(kU16PairAttributeBodyFields);
static_assert(matchesRecord(kU16PairAttributeBody, sizeof(U16PairAttributeBody), {
    offsetof(U16PairAttributeBody, value0), offsetof(U16PairAttributeBody, value1),
    offsetof(U16PairAttributeBody, id), offsetof(U16PairAttributeBody, value),
    offsetof(U16PairAttributeBody, buffer)}));

inline constexpr BodyField kU16PairLongStringBodyFields[] = {field::U16, field::U16,
    field::String16};
inline constexpr BodyLayout kU16PairLongStringBody = fieldLayout(kU16PairLongStringBodyFields);
static_assert(matchesRecord(kU16PairLongStringBody, sizeof(U16PairLongStringBody), {
    offsetof(U16PairLongStringBody, value0), offsetof(U16PairLongStringBody, value1),
    offsetof(U16PairLongStringBody, string2), offsetof(U16PairLongStringBody, buffer)}));

inline constexpr BodyField kU16PairStringBodyFields[] = {field::U16, field::U16, field::String8};
inline constexpr BodyLayout kU16PairStringBody = fieldLayout(kU16PairStringBodyFields);
static_assert(matchesRecord(kU16PairStringBody, sizeof(U16PairStringBody), {
    offsetof(U16PairStringBody, value0), offsetof(U16PairStringBody, value1),
    offsetof(U16PairStringBody, string2), offsetof(U16PairStringBody, buffer)}));

inline constexpr BodyField kU16PairU32BodyFields[] = {field::U16, field::U16, field::U32};
inline constexpr BodyLayout kU16PairU32Body = fieldLayout(kU16PairU32BodyFields);
static_assert(matchesRecord(kU16PairU32Body, sizeof(U16PairU32Body), {
    offsetof(U16PairU32Body, value0), offsetof(U16PairU32Body, value1),
    offsetof(U16PairU32Body, value2)}));

inline constexpr BodyField kU16U32AttributeBodyFields[] = {field::U16, field::U32,
    field::Attribute};
inline constexpr BodyLayout kU16U32AttributeBody = fieldLayout(kU16U32AttributeBodyFields);
static_assert(matchesRecord(kU16U32AttributeBody, sizeof(U16U32AttributeBody), {
    offsetof(U16U32AttributeBody, value0), offsetof(U16U32AttributeBody, value1),
    offsetof(U16U32AttributeBody, id), offsetof(U16U32AttributeBody, value),
    offsetof(U16U32AttributeBody, buffer)}));

inline constexpr BodyField kU16U32StringBodyFields[] = {field::U16, field::U32, field::String8};
inline constexpr BodyLayout kU16U32StringBody = fieldLayout(kU16U32StringBodyFields);
static_assert(matchesRecord(kU16U32StringBody, sizeof(U16U32StringBody), {
    offsetof(U16U32StringBody, value0), offsetof(U16U32StringBody, value1),
    offsetof(U16U32StringBody, string2), offsetof(U16U32StringBody, buffer)}));

inline constexpr BodyField kU16U32PairBodyFields[] = {field::U16, field::U32, field::U32};
inline constexpr BodyLayout kU16U32PairBody = fieldLayout(kU16U32PairBodyFields);
static_assert(matchesRecord(kU16U32PairBody, sizeof(U16U32PairBody), {
    offsetof(U16U32PairBody, value0), offsetof(U16U32PairBody, value1),
    offsetof(U16U32PairBody, value2)}));

inline constexpr BodyField kU16ByteStringBodyFields[] = {field::U16, field::U8, field::String8};
inline constexpr BodyLayout kU16ByteStringBody = fieldLayout(kU16ByteStringBodyFields);
static_assert(matchesRecord(kU16ByteStringBody, sizeof(U16ByteStringBody), {
    offsetof(U16ByteStringBody, value0), offsetof(U16ByteStringBody, value1),
    offsetof(U16ByteStringBody, string2), offsetof(U16ByteStringBody, buffer)}));

inline constexpr BodyField kU16BytePairBodyFields[] = {field::U16, field::U8, field::U8};
inline constexpr BodyLayout kU16BytePairBody = fieldLayout(kU16BytePairBodyFields);
static_assert(matchesRecord(kU16BytePairBody, sizeof(U16BytePairBody), {
    offsetof(U16BytePairBody, value0), offsetof(U16BytePairBody, value1),
    offsetof(U16BytePairBody, value2)}));

inline constexpr BodyField kU32LongStringPairBodyFields[] = {field::U32, field::String16,
    field::String16};
inline constexpr BodyLayout kU32LongStringPairBody = fieldLayout(kU32LongStringPairBodyFields);
static_assert(matchesRecord(kU32LongStringPairBody, sizeof(U32LongStringPairBody), {
    offsetof(U32LongStringPairBody, value0), offsetof(U32LongStringPairBody, string1),
    offsetof(U32LongStringPairBody, string2), offsetof(U32LongStringPairBody, buffer)}));

inline constexpr BodyField kU32LongStringByteBodyFields[] = {field::U32, field::String16,
    field::U8};
inline constexpr BodyLayout kU32LongStringByteBody = fieldLayout(kU32LongStringByteBodyFields);
static_assert(matchesRecord(kU32LongStringByteBody, sizeof(U32LongStringByteBody), {
    offsetof(U32LongStringByteBody, value0), offsetof(U32LongStringByteBody, string1),
    offsetof(U32LongStringByteBody, value2), offsetof(U32LongStringByteBody, buffer)}));

inline constexpr BodyField kU32StringPairBodyFields[] = {field::U32, field::String8,
    field::String8};
inline constexpr BodyLayout kU32StringPairBody = fieldLayout(kU32StringPairBodyFields);
static_assert(matchesRecord(kU32StringPairBody, sizeof(U32StringPairBody), {
    offsetof(U32StringPairBody, value0), offsetof(U32StringPairBody, string1),
    offsetof(U32StringPairBody, string2), offsetof(U32StringPairBody, buffer)}));

inline constexpr BodyField kU32StringU16BodyFields[] = {field::U32, field::String8, field::U16};
inline constexpr BodyLayout kU32StringU16Body = fieldLayout(kU32StringU16BodyFields);
static_assert(matchesRecord(kU32StringU16Body, sizeof(U32StringU16Body), {
    offsetof(U32StringU16Body, value0), offsetof(U32StringU16Body, string1),
    offsetof(U32StringU16Body, value2), offsetof(U32StringU16Body, buffer)}));

inline constexpr BodyField kU32StringByteBodyFields[] = {field::U32, field::String8, field::U8};
inline constexpr BodyLayout kU32StringByteBody = fieldLayout(kU32StringByteBodyFields);
static_assert(matchesRecord(kU32StringByteBody, sizeof(U32StringByteBody), {
    offsetof(U32StringByteBody, value0), offsetof(U32StringByteBody, string1),
    offsetof(U32StringByteBody, value2), offsetof(U32StringByteBody, buffer)}));

inline constexpr BodyField kU32U16AttributeBodyFields[] = {field::U32, field::U16,
    field::Attribute};
inline constexpr BodyLayout kU32U16AttributeBody = fieldLayout(kU32U16AttributeBodyFields);
static_assert(matchesRecord(kU32U16AttributeBody, sizeof(U32U16AttributeBody), {
    offsetof(U32U16AttributeBody, value0), offsetof(U32U16AttributeBody, value1),
    offsetof(U32U16AttributeBody, id), offsetof(U32U16AttributeBody, value),
    offsetof(U32U16AttributeBody, buffer)}));

inline constexpr BodyField kU32U16LongStringBodyFields[] = {field::U32, field::U16,
    field::String16};
inline constexpr BodyLayout kU32U16LongStringBody = fieldLayout(kU32U16LongStringBodyFields);
static_assert(matchesRecord(kU32U16LongStringBody, sizeof(U32U16LongStringBody), {
    offsetof(U32U16LongStringBody, value0), offsetof(U32U16LongStringBody, value1),
    offsetof(U32U16LongStringBody, string2), offsetof(U32U16LongStringBody, buffer)}));

inline constexpr BodyField kU32U16StringBodyFields[] = {field::U32, field::U16, field::String8};
inline constexpr BodyLayout kU32U16StringBody = fieldLayout(kU32U16StringBodyFields);
static_assert(matchesRecord(kU32U16StringBody, sizeof(U32U16StringBody), {
    offsetof(U32U16StringBody, value0), offsetof(U32U16StringBody, value1),
    offsetof(U32U16StringBody, string2), offsetof(U32U16StringBody, buffer)}));

inline constexpr BodyField kU32U16PairBodyFields[] = {field::U32, field::U16, field::U16};
inline constexpr BodyLayout kU32U16PairBody = fieldLayout(kU32U16PairBodyFields);
static_assert(matchesRecord(kU32U16PairBody, sizeof(U32U16PairBody), {
    offsetof(U32U16PairBody, value0), offsetof(U32U16PairBody, value1),
    offsetof(U32U16PairBody, value2)}));

inline constexpr BodyField kU32U16U32BodyFields[] = {field::U32, field::U16, field::U32};
inline constexpr BodyLayout kU32U16U32Body = fieldLayout(kU32U16U32BodyFields);
static_assert(matchesRecord(kU32U16U32Body, sizeof(U32U16U32Body), {offsetof(U32U16U32Body, value0),
    offsetof(U32U16U32Body, value1), offsetof(U32U16U32Body, value2)}));

inline constexpr BodyField kU32PairAttributeBodyFields[] = {field::U32, field::U32,
    field::Attribute};
inline constexpr BodyLayout kU32PairAttributeBody = fieldLayout(kU32PairAttributeBodyFields);
static_assert(matchesRecord(kU32PairAttributeBody, sizeof(U32PairAttributeBody), {
    offsetof(U32PairAttributeBody, value0), offsetof(U32PairAttributeBody, value1),
    offsetof(U32PairAttributeBody, id), offsetof(U32PairAttributeBody, value),
    offsetof(U32PairAttributeBody, buffer)}));

inline constexpr BodyField kU32PairLongStringBodyFields[] = {field::U32, field::U32,
    field::String16};
inline constexpr BodyLayout kU32PairLongStringBody = fieldLayout(kU32PairLongStringBodyFields);
static_assert(matchesRecord(kU32PairLongStringBody, sizeof(U32PairLongStringBody), {
    offsetof(U32PairLongStringBody, value0), offsetof(U32PairLongStringBody, value1),
    offsetof(U32PairLongStringBody, string2), offsetof(U32PairLongStringBody, buffer)}));

inline constexpr BodyField kU32PairStringBodyFields[] = {field::U32, field::U32, field::String8};
inline constexpr BodyLayout kU32PairStringBody = fieldLayout(kU32PairStringBodyFields);
static_assert(matchesRecord(kU32PairStringBody, sizeof(U32PairStringBody), {
    offsetof(U32PairStringBody, value0), offsetof(U32PairStringBody, value1),
    offsetof(U32PairStringBody, string2), offsetof(U32PairStringBody, buffer)}));

inline constexpr BodyField kU32PairU16BodyFields[] = {field::U32, field::U32, field::U16};
inline constexpr BodyLayout kU32PairU16Body = fieldLayout(kU32PairU16BodyFields);
static_assert(matchesRecord(kU32PairU16Body, sizeof(U32PairU16Body), {
    offsetof(U32PairU16Body, value0), offsetof(U32PairU16Body, value1),
    offsetof(U32PairU16Body, value2)}));

inline constexpr BodyField kU32TripleBodyFields[] = {field::U32, field::U32, field::U32};
inline constexpr BodyLayout kU32TripleBody = fieldLayout(kU32TripleBodyFields);
static_assert(matchesRecord(kU32TripleBody, sizeof(U32TripleBody), {offsetof(U32TripleBody, value0),
    offsetof(U32TripleBody, value1), offsetof(U32TripleBody, value2)}));

inline constexpr BodyField kU32PairByteBodyFields[] = {field::U32, field::U32, field::U8};
inline constexpr BodyLayout kU32PairByteBody = fieldLayout(kU32PairByteBodyFields);
static_assert(matchesRecord(kU32PairByteBody, sizeof(U32PairByteBody), {
    offsetof(U32PairByteBody, value0), offsetof(U32PairByteBody, value1),
    offsetof(U32PairByteBody, value2)}));

inline constexpr BodyField kU32ByteAttributeBodyFields[] = {field::U32, field::U8,
    field::Attribute};
inline constexpr BodyLayout kU32ByteAttributeBody = fieldLayout(kU32ByteAttributeBodyFields);
static_assert(matchesRecord(kU32ByteAttributeBody, sizeof(U32ByteAttributeBody), {
    offsetof(U32ByteAttributeBody, value0), offsetof(U32ByteAttributeBody, value1),
    offsetof(U32ByteAttributeBody, id), offsetof(U32ByteAttributeBody, value),
    offsetof(U32ByteAttributeBody, buffer)}));

inline constexpr BodyField kU32ByteLongStringBodyFields[] = {field::U32, field::U8,
    field::String16};
inline constexpr BodyLayout kU32ByteLongStringBody = fieldLayout(kU32ByteLongStringBodyFields);
static_assert(matchesRecord(kU32ByteLongStringBody, sizeof(U32ByteLongStringBody), {
    offsetof(U32ByteLongStringBody, value0), offsetof(U32ByteLongStringBody, value1),
    offsetof(U32ByteLongStringBody, string2), offsetof(U32ByteLongStringBody, buffer)}));

inline constexpr BodyField kU32ByteStringBodyFields[] = {field::U32, field::U8, field::String8};
inline constexpr BodyLayout kU32ByteStringBody = fieldLayout(kU32ByteStringBodyFields);
static_assert(matchesRecord(kU32ByteStringBody, sizeof(U32ByteStringBody), {
    offsetof(U32ByteStringBody, value0), offsetof(U32ByteStringBody, value1),
    offsetof(U32ByteStringBody, string2), offsetof(U32ByteStringBody, buffer)}));

inline constexpr BodyField kU32ByteU32BodyFields[] = {field::U32, field::U8, field::U32};
inline constexpr BodyLayout kU32ByteU32Body = fieldLayout(kU32ByteU32BodyFields);
static_assert(matchesRecord(kU32ByteU32Body, sizeof(U32ByteU32Body), {
    offsetof(U32ByteU32Body, value0), offsetof(U32ByteU32Body, value1),
    offsetof(U32ByteU32Body, value2)}));

inline constexpr BodyField kByteU16StringBodyFields[] = {field::U8, field::U16, field::String8};
inline constexpr BodyLayout kByteU16StringBody = fieldLayout(kByteU16StringBodyFields);
static_assert(matchesRecord(kByteU16StringBody, sizeof(ByteU16StringBody), {
    offsetof(ByteU16StringBody, value0), offsetof(ByteU16StringBody, value1),
    offsetof(ByteU16StringBody, string2), offsetof(ByteU16StringBody, buffer)}));

inline constexpr BodyField kByteU32LongStringBodyFields[] = {field::U8, field::U32,
    field::String16};
inline constexpr BodyLayout kByteU32LongStringBody = fieldLayout(kByteU32LongStringBodyFields);
static_assert(matchesRecord(kByteU32LongStringBody, sizeof(ByteU32LongStringBody), {
    offsetof(ByteU32LongStringBody, value0), offsetof(ByteU32LongStringBody, value1),
    offsetof(ByteU32LongStringBody, string2), offsetof(ByteU32LongStringBody, buffer)}));

inline constexpr BodyField kByteU32PairBodyFields[] = {field::U8, field::U32, field::U32};
inline constexpr BodyLayout kByteU32PairBody = fieldLayout(kByteU32PairBodyFields);
static_assert(matchesRecord(kByteU32PairBody, sizeof(ByteU32PairBody), {
    offsetof(ByteU32PairBody, value0), offsetof(ByteU32PairBody, value1),
    offsetof(ByteU32PairBody, value2)}));

inline constexpr BodyField kBytePairLongStringBodyFields[] = {field::U8, field::U8,
    field::String16};
inline constexpr BodyLayout kBytePairLongStringBody = fieldLayout(kBytePairLongStringBodyFields);
static_assert(matchesRecord(kBytePairLongStringBody, sizeof(BytePairLongStringBody), {
    offsetof(BytePairLongStringBody, value0), offsetof(BytePairLongStringBody, value1),
    offsetof(BytePairLongStringBody, string2), offsetof(BytePairLongStringBody, buffer)}));

inline constexpr BodyField kBytePairStringBodyFields[] = {field::U8, field::U8, field::String8};
inline constexpr BodyLayout kBytePairStringBody = fieldLayout(kBytePairStringBodyFields);
static_assert(matchesRecord(kBytePairStringBody, sizeof(BytePairStringBody), {
    offsetof(BytePairStringBody, value0), offsetof(BytePairStringBody, value1),
    offsetof(BytePairStringBody, string2), offsetof(BytePairStringBody, buffer)}));

inline constexpr BodyField kBytePairU16BodyFields[] = {field::U8, field::U8, field::U16};
inline constexpr BodyLayout kBytePairU16Body = fieldLayout(kBytePairU16BodyFields);
static_assert(matchesRecord(kBytePairU16Body, sizeof(BytePairU16Body), {
    offsetof(BytePairU16Body, value0), offsetof(BytePairU16Body, value1),
    offsetof(BytePairU16Body, value2)}));

inline constexpr BodyField kU16TripleStringBodyFields[] = {field::U16, field::U16, field::U16,
    field::String8};
inline constexpr BodyLayout kU16TripleStringBody = fieldLayout(kU16TripleStringBodyFields);
static_assert(matchesRecord(kU16TripleStringBody, sizeof(U16TripleStringBody), {
    offsetof(U16TripleStringBody, value0), offsetof(U16TripleStringBody, value1),
    offsetof(U16TripleStringBody, value2), offsetof(U16TripleStringBody, string3),
    offsetof(U16TripleStringBody, buffer)}));

inline constexpr BodyField kU16U32U16ByteBodyFields[] = {field::U16, field::U32, field::U16,
    field::U8};
inline constexpr BodyLayout kU16U32U16ByteBody = fieldLayout(kU16U32U16ByteBodyFields);
static_assert(matchesRecord(kU16U32U16ByteBody, sizeof(U16U32U16ByteBody), {
    offsetof(U16U32U16ByteBody, value0), offsetof(U16U32U16ByteBody, value1),
    offsetof(U16U32U16ByteBody, value2), offsetof(U16U32U16ByteBody, value3)}));

inline constexpr BodyField kU32U16PairStringBodyFields[] = {field::U32, field::U16, field::U16,
    field::String8};
inline constexpr BodyLayout kU32U16PairStringBody = fieldLayout(kU32U16PairStringBodyFields);
static_assert(matchesRecord(kU32U16PairStringBody, sizeof(U32U16PairStringBody), {
    offsetof(U32U16PairStringBody, value0), offsetof(U32U16PairStringBody, value1),
    offsetof(U32U16PairStringBody, value2), offsetof(U32U16PairStringBody, string3),
    offsetof(U32U16PairStringBody, buffer)}));

inline constexpr BodyField kU32U16ByteStringBodyFields[] = {field::U32, field::U16, field::U8,
    field::String8};
inline constexpr BodyLayout kU32U16ByteStringBody = fieldLayout(kU32U16ByteStringBodyFields);
static_assert(matchesRecord(kU32U16ByteStringBody, sizeof(U32U16ByteStringBody), {
    offsetof(U32U16ByteStringBody, value0), offsetof(U32U16ByteStringBody, value1),
    offsetof(U32U16ByteStringBody, value2), offsetof(U32U16ByteStringBody, string3),
    offsetof(U32U16ByteStringBody, buffer)}));

inline constexpr BodyField kU32PairLongStringPairBodyFields[] = {field::U32, field::U32,
    field::String16, field::String16};
inline constexpr BodyLayout kU32PairLongStringPairBody =
    fieldLayout(kU32PairLongStringPairBodyFields);
static_assert(matchesRecord(kU32PairLongStringPairBody, sizeof(U32PairLongStringPairBody), {
    offsetof(U32PairLongStringPairBody, value0), offsetof(U32PairLongStringPairBody, value1),
    offsetof(U32PairLongStringPairBody, string2), offsetof(U32PairLongStringPairBody, string3),
    offsetof(U32PairLongStringPairBody, buffer)}));

inline constexpr BodyField kU32PairStringByteBodyFields[] = {field::U32, field::U32, field::String8,
    field::U8};
inline constexpr BodyLayout kU32PairStringByteBody = fieldLayout(kU32PairStringByteBodyFields);
static_assert(matchesRecord(kU32PairStringByteBody, sizeof(U32PairStringByteBody), {
    offsetof(U32PairStringByteBody, value0), offsetof(U32PairStringByteBody, value1),
    offsetof(U32PairStringByteBody, string2), offsetof(U32PairStringByteBody, value3),
    offsetof(U32PairStringByteBody, buffer)}));

inline constexpr BodyField kU32PairU16LongStringBodyFields[] = {field::U32, field::U32, field::U16,
    field::String16};
inline constexpr BodyLayout kU32PairU16LongStringBody =
    fieldLayout(kU32PairU16LongStringBodyFields);
static_assert(matchesRecord(kU32PairU16LongStringBody, sizeof(U32PairU16LongStringBody), {
    offsetof(U32PairU16LongStringBody, value0), offsetof(U32PairU16LongStringBody, value1),
    offsetof(U32PairU16LongStringBody, value2), offsetof(U32PairU16LongStringBody, string3),
    offsetof(U32PairU16LongStringBody, buffer)}));

inline constexpr BodyField kU32PairU16ByteBodyFields[] = {field::U32, field::U32, field::U16,
    field::U8};
inline constexpr BodyLayout kU32PairU16ByteBody = fieldLayout(kU32PairU16ByteBodyFields);
static_assert(matchesRecord(kU32PairU16ByteBody, sizeof(U32PairU16ByteBody), {
    offsetof(U32PairU16ByteBody, value0), offsetof(U32PairU16ByteBody, value1),
    offsetof(U32PairU16ByteBody, value2), offsetof(U32PairU16ByteBody, value3)}));

inline constexpr BodyField kU32TripleLongStringBodyFields[] = {field::U32, field::U32, field::U32,
    field::String16};
inline constexpr BodyLayout kU32TripleLongStringBody = fieldLayout(kU32TripleLongStringBodyFields);
static_assert(matchesRecord(kU32TripleLongStringBody, sizeof(U32TripleLongStringBody), {
    offsetof(U32TripleLongStringBody, value0), offsetof(U32TripleLongStringBody, value1),
    offsetof(U32TripleLongStringBody, value2), offsetof(U32TripleLongStringBody, string3),
    offsetof(U32TripleLongStringBody, buffer)}));

inline constexpr BodyField kU32TripleStringBodyFields[] = {field::U32, field::U32, field::U32,
    field::String8};
inline constexpr BodyLayout kU32TripleStringBody = fieldLayout(kU32TripleStringBodyFields);
static_assert(matchesRecord(kU32TripleStringBody, sizeof(U32TripleStringBody), {
    offsetof(U32TripleStringBody, value0), offsetof(U32TripleStringBody, value1),
    offsetof(U32TripleStringBody, value2), offsetof(U32TripleStringBody, string3),
    offsetof(U32TripleStringBody, buffer)}));

inline constexpr BodyField kU32QuadBodyFields[] = {field::U32, field::U32, field::U32, field::U32};
inline constexpr BodyLayout kU32QuadBody = fieldLayout(kU32QuadBodyFields);
static_assert(matchesRecord(kU32QuadBody, sizeof(U32QuadBody), {offsetof(U32QuadBody, value0),
    offsetof(U32QuadBody, value1), offsetof(U32QuadBody, value2), offsetof(U32QuadBody, value3)}));

inline constexpr BodyField kU32TripleByteBodyFields[] = {field::U32, field::U32, field::U32,
    field::U8};
inline constexpr BodyLayout kU32TripleByteBody = fieldLayout(kU32TripleByteBodyFields);
static_assert(matchesRecord(kU32TripleByteBody, sizeof(U32TripleByteBody), {
    offsetof(U32TripleByteBody, value0), offsetof(U32TripleByteBody, value1),
    offsetof(U32TripleByteBody, value2), offsetof(U32TripleByteBody, value3)}));

inline constexpr BodyField kU32PairByteLongStringBodyFields[] = {field::U32, field::U32, field::U8,
    field::String16};
inline constexpr BodyLayout kU32PairByteLongStringBody =
    fieldLayout(kU32PairByteLongStringBodyFields);
static_assert(matchesRecord(kU32PairByteLongStringBody, sizeof(U32PairByteLongStringBody), {
    offsetof(U32PairByteLongStringBody, value0), offsetof(U32PairByteLongStringBody, value1),
    offsetof(U32PairByteLongStringBody, value2), offsetof(U32PairByteLongStringBody, string3),
    offsetof(U32PairByteLongStringBody, buffer)}));

inline constexpr BodyField kU32PairByteStringBodyFields[] = {field::U32, field::U32, field::U8,
    field::String8};
inline constexpr BodyLayout kU32PairByteStringBody = fieldLayout(kU32PairByteStringBodyFields);
static_assert(matchesRecord(kU32PairByteStringBody, sizeof(U32PairByteStringBody), {
    offsetof(U32PairByteStringBody, value0), offsetof(U32PairByteStringBody, value1),
    offsetof(U32PairByteStringBody, value2), offsetof(U32PairByteStringBody, string3),
    offsetof(U32PairByteStringBody, buffer)}));

inline constexpr BodyField kU32PairByteU16BodyFields[] = {field::U32, field::U32, field::U8,
    field::U16};
inline constexpr BodyLayout kU32PairByteU16Body = fieldLayout(kU32PairByteU16BodyFields);
static_assert(matchesRecord(kU32PairByteU16Body, sizeof(U32PairByteU16Body), {
    offsetof(U32PairByteU16Body, value0), offsetof(U32PairByteU16Body, value1),
    offsetof(U32PairByteU16Body, value2), offsetof(U32PairByteU16Body, value3)}));

inline constexpr BodyField kU32PairBytePairBodyFields[] = {field::U32, field::U32, field::U8,
    field::U8};
inline constexpr BodyLayout kU32PairBytePairBody = fieldLayout(kU32PairBytePairBodyFields);
static_assert(matchesRecord(kU32PairBytePairBody, sizeof(U32PairBytePairBody), {
    offsetof(U32PairBytePairBody, value0), offsetof(U32PairBytePairBody, value1),
    offsetof(U32PairBytePairBody, value2), offsetof(U32PairBytePairBody, value3)}));

inline constexpr BodyField kU32ByteU16U32BodyFields[] = {field::U32, field::U8, field::U16,
    field::U32};
inline constexpr BodyLayout kU32ByteU16U32Body = fieldLayout(kU32ByteU16U32BodyFields);
static_assert(matchesRecord(kU32ByteU16U32Body, sizeof(U32ByteU16U32Body), {
    offsetof(U32ByteU16U32Body, value0), offsetof(U32ByteU16U32Body, value1),
    offsetof(U32ByteU16U32Body, value2), offsetof(U32ByteU16U32Body, value3)}));

inline constexpr BodyField kU32ByteU32PairBodyFields[] = {field::U32, field::U8, field::U32,
    field::U32};
inline constexpr BodyLayout kU32ByteU32PairBody = fieldLayout(kU32ByteU32PairBodyFields);
static_assert(matchesRecord(kU32ByteU32PairBody, sizeof(U32ByteU32PairBody), {
    offsetof(U32ByteU32PairBody, value0), offsetof(U32ByteU32PairBody, value1),
    offsetof(U32ByteU32PairBody, value2), offsetof(U32ByteU32PairBody, value3)}));

inline constexpr BodyField kU32BytePairLongStringBodyFields[] = {field::U32, field::U8, field::U8,
    field::String16};
inline constexpr BodyLayout kU32BytePairLongStringBody =
    fieldLayout(kU32BytePairLongStringBodyFields);
static_assert(matchesRecord(kU32BytePairLongStringBody, sizeof(U32BytePairLongStringBody), {
    offsetof(U32BytePairLongStringBody, value0), offsetof(U32BytePairLongStringBody, value1),
    offsetof(U32BytePairLongStringBody, value2), offsetof(U32BytePairLongStringBody, string3),
    offsetof(U32BytePairLongStringBody, buffer)}));

inline constexpr BodyField kU32BytePairStringBodyFields[] = {field::U32, field::U8, field::U8,
    field::String8};
inline constexpr BodyLayout kU32BytePairStringBody = fieldLayout(kU32BytePairStringBodyFields);
static_assert(matchesRecord(kU32BytePairStringBody, sizeof(U32BytePairStringBody), {
    offsetof(U32BytePairStringBody, value0), offsetof(U32BytePairStringBody, value1),
    offsetof(U32BytePairStringBody, value2), offsetof(U32BytePairStringBody, string3),
    offsetof(U32BytePairStringBody, buffer)}));

inline constexpr BodyField kByteU16PairU32BodyFields[] = {field::U8, field::U16, field::U16,
    field::U32};
inline constexpr BodyLayout kByteU16PairU32Body = fieldLayout(kByteU16PairU32BodyFields);
static_assert(matchesRecord(kByteU16PairU32Body, sizeof(ByteU16PairU32Body), {
    offsetof(ByteU16PairU32Body, value0), offsetof(ByteU16PairU32Body, value1),
    offsetof(ByteU16PairU32Body, value2), offsetof(ByteU16PairU32Body, value3)}));

inline constexpr BodyField kByteU32TripleBodyFields[] = {field::U8, field::U32, field::U32,
    field::U32};
inline constexpr BodyLayout kByteU32TripleBody = fieldLayout(kByteU32TripleBodyFields);
static_assert(matchesRecord(kByteU32TripleBody, sizeof(ByteU32TripleBody), {
    offsetof(ByteU32TripleBody, value0), offsetof(ByteU32TripleBody, value1),
    offsetof(ByteU32TripleBody, value2), offsetof(ByteU32TripleBody, value3)}));

inline constexpr BodyField kBytePairU16U32BodyFields[] = {field::U8, field::U8, field::U16,
    field::U32};
inline constexpr BodyLayout kBytePairU16U32Body = fieldLayout(kBytePairU16U32BodyFields);
static_assert(matchesRecord(kBytePairU16U32Body, sizeof(BytePairU16U32Body), {
    offsetof(BytePairU16U32Body, value0), offsetof(BytePairU16U32Body, value1),
    offsetof(BytePairU16U32Body, value2), offsetof(BytePairU16U32Body, value3)}));

inline constexpr BodyField kBytePairU32PairBodyFields[] = {field::U8, field::U8, field::U32,
    field::U32};
inline constexpr BodyLayout kBytePairU32PairBody = fieldLayout(kBytePairU32PairBodyFields);
static_assert(matchesRecord(kBytePairU32PairBody, sizeof(BytePairU32PairBody), {
    offsetof(BytePairU32PairBody, value0), offsetof(BytePairU32PairBody, value1),
    offsetof(BytePairU32PairBody, value2), offsetof(BytePairU32PairBody, value3)}));

inline constexpr BodyField kU32U16PairByteLongStringBodyFields[] = {field::U32, field::U16,
    field::U16, field::U8, field::String16};
inline constexpr BodyLayout kU32U16PairByteLongStringBody =
    fieldLayout(kU32U16PairByteLongStringBodyFields);
static_assert(matchesRecord(kU32U16PairByteLongStringBody, sizeof(U32U16PairByteLongStringBody), {
    offsetof(U32U16PairByteLongStringBody, value0), offsetof(U32U16PairByteLongStringBody, value1),
    offsetof(U32U16PairByteLongStringBody, value2), offsetof(U32U16PairByteLongStringBody, value3),
    offsetof(U32U16PairByteLongStringBody, string4),
    offsetof(U32U16PairByteLongStringBody, buffer)}));

inline constexpr BodyField kU32U16U32PairByteBodyFields[] = {field::U32, field::U16, field::U32,
    field::U32, field::U8};
inline constexpr BodyLayout kU32U16U32PairByteBody = fieldLayout(kU32U16U32PairByteBodyFields);
static_assert(matchesRecord(kU32U16U32PairByteBody, sizeof(U32U16U32PairByteBody), {
    offsetof(U32U16U32PairByteBody, value0), offsetof(U32U16U32PairByteBody, value1),
    offsetof(U32U16U32PairByteBody, value2), offsetof(U32U16U32PairByteBody, value3),
    offsetof(U32U16U32PairByteBody, value4)}));

inline constexpr BodyField kU32PairU16PairU32BodyFields[] = {field::U32, field::U32, field::U16,
    field::U16, field::U32};
inline constexpr BodyLayout kU32PairU16PairU32Body = fieldLayout(kU32PairU16PairU32BodyFields);
static_assert(matchesRecord(kU32PairU16PairU32Body, sizeof(U32PairU16PairU32Body), {
    offsetof(U32PairU16PairU32Body, value0), offsetof(U32PairU16PairU32Body, value1),
    offsetof(U32PairU16PairU32Body, value2), offsetof(U32PairU16PairU32Body, value3),
    offsetof(U32PairU16PairU32Body, value4)}));

inline constexpr BodyField kU32TripleU16ByteBodyFields[] = {field::U32, field::U32, field::U32,
    field::U16, field::U8};
inline constexpr BodyLayout kU32TripleU16ByteBody = fieldLayout(kU32TripleU16ByteBodyFields);
static_assert(matchesRecord(kU32TripleU16ByteBody, sizeof(U32TripleU16ByteBody), {
    offsetof(U32TripleU16ByteBody, value0), offsetof(U32TripleU16ByteBody, value1),
    offsetof(U32TripleU16ByteBody, value2), offsetof(U32TripleU16ByteBody, value3),
    offsetof(U32TripleU16ByteBody, value4)}));

inline constexpr BodyField kU32QuadLongStringBodyFields[] = {field::U32, field::U32, field::U32,
    field::U32, field::String16};
inline constexpr BodyLayout kU32QuadLongStringBody = fieldLayout(kU32QuadLongStringBodyFields);
static_assert(matchesRecord(kU32QuadLongStringBody, sizeof(U32QuadLongStringBody), {
    offsetof(U32QuadLongStringBody, value0), offsetof(U32QuadLongStringBody, value1),
    offsetof(U32QuadLongStringBody, value2), offsetof(U32QuadLongStringBody, value3),
    offsetof(U32QuadLongStringBody, string4), offsetof(U32QuadLongStringBody, buffer)}));

inline constexpr BodyField kU32QuadStringBodyFields[] = {field::U32, field::U32, field::U32,
    field::U32, field::String8};
inline constexpr BodyLayout kU32QuadStringBody = fieldLayout(kU32QuadStringBodyFields);
static_assert(matchesRecord(kU32QuadStringBody, sizeof(U32QuadStringBody), {
    offsetof(U32QuadStringBody, value0), offsetof(U32QuadStringBody, value1),
    offsetof(U32QuadStringBody, value2), offsetof(U32QuadStringBody, value3),
    offsetof(U32QuadStringBody, string4), offsetof(U32QuadStringBody, buffer)}));

inline constexpr BodyField kU32QuadU16BodyFields[] = {field::U32, field::U32, field::U32,
    field::U32, field::U16};
inline constexpr BodyLayout kU32QuadU16Body = fieldLayout(kU32QuadU16BodyFields);
static_assert(matchesRecord(kU32QuadU16Body, sizeof(U32QuadU16Body), {
    offsetof(U32QuadU16Body, value0), offsetof(U32QuadU16Body, value1),
    offsetof(U32QuadU16Body, value2), offsetof(U32QuadU16Body, value3),
    offsetof(U32QuadU16Body, value4)}));

inline constexpr BodyField kU32QuadByteBodyFields[] = {field::U32, field::U32, field::U32,
    field::U32, field::U8};
inline constexpr BodyLayout kU32QuadByteBody = fieldLayout(kU32QuadByteBodyFields);
static_assert(matchesRecord(kU32QuadByteBody, sizeof(U32QuadByteBody), {
    offsetof(U32QuadByteBody, value0), offsetof(U32QuadByteBody, value1),
    offsetof(U32QuadByteBody, value2), offsetof(U32QuadByteBody, value3),
    offsetof(U32QuadByteBody, value4)}));

inline constexpr BodyField kU32TripleByteU16BodyFields[] = {field::U32, field::U32, field::U32,
    field::U8, field::U16};
inline constexpr BodyLayout kU32TripleByteU16Body = fieldLayout(kU32TripleByteU16BodyFields);
static_assert(matchesRecord(kU32TripleByteU16Body, sizeof(U32TripleByteU16Body), {
    offsetof(U32TripleByteU16Body, value0), offsetof(U32TripleByteU16Body, value1),
    offsetof(U32TripleByteU16Body, value2), offsetof(U32TripleByteU16Body, value3),
    offsetof(U32TripleByteU16Body, value4)}));

inline constexpr BodyField kU32ByteU32TripleBodyFields[] = {field::U32, field::U8, field::U32,
    field::U32, field::U32};
inline constexpr BodyLayout kU32ByteU32TripleBody = fieldLayout(kU32ByteU32TripleBodyFields);
static_assert(matchesRecord(kU32ByteU32TripleBody, sizeof(U32ByteU32TripleBody), {
    offsetof(U32ByteU32TripleBody, value0), offsetof(U32ByteU32TripleBody, value1),
    offsetof(U32ByteU32TripleBody, value2), offsetof(U32ByteU32TripleBody, value3),
    offsetof(U32ByteU32TripleBody, value4)}));

inline constexpr BodyField kByteU32QuadBodyFields[] = {field::U8, field::U32, field::U32,
    field::U32, field::U32};
inline constexpr BodyLayout kByteU32QuadBody = fieldLayout(kByteU32QuadBodyFields);
static_assert(matchesRecord(kByteU32QuadBody, sizeof(ByteU32QuadBody), {
    offsetof(ByteU32QuadBody, value0), offsetof(ByteU32QuadBody, value1),
    offsetof(ByteU32QuadBody, value2), offsetof(ByteU32QuadBody, value3),
    offsetof(ByteU32QuadBody, value4)}));

inline constexpr BodyField kU32TripleU16PairByteBodyFields[] = {field::U32, field::U32, field::U32,
    field::U16, field::U16, field::U8};
inline constexpr BodyLayout kU32TripleU16PairByteBody =
    fieldLayout(kU32TripleU16PairByteBodyFields);
static_assert(matchesRecord(kU32TripleU16PairByteBody, sizeof(U32TripleU16PairByteBody), {
    offsetof(U32TripleU16PairByteBody, value0), offsetof(U32TripleU16PairByteBody, value1),
    offsetof(U32TripleU16PairByteBody, value2), offsetof(U32TripleU16PairByteBody, value3),
    offsetof(U32TripleU16PairByteBody, value4), offsetof(U32TripleU16PairByteBody, value5)}));

} // namespace trov
