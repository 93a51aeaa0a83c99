// The layouts of the function-unit bodies, one line each: the public
// record and its members in wire order, each with its kind. A layout serves
// every body code whose request or reply has that shape. The compiler lays
// every layout out by the kinds' rules and checks the result against the
// record's offsets and size (BodyLayout.h), so a record and its layout
// cannot drift apart.
#pragma once

#include <cstddef>

#include "units/BodyLayout.h"

namespace trov {

// Replies that are not field lists.
inline constexpr BodyLayout kNoReplyBody{BodyKind::NoReply, nullptr, 0, nullptr};
inline constexpr BodyLayout kEventListBody{BodyKind::EventList, nullptr, 0, "EventListBody"};
inline constexpr BodyLayout kShortEventListBody{BodyKind::ShortEventList, nullptr, 0, "ShortEventListBody"};

// A body without fields; its record's one member is padding.
inline constexpr Plan kEmptyPlan{};
inline constexpr BodyLayout kEmptyBody{BodyKind::Fields, &kEmptyPlan, sizeof(EmptyBody), "EmptyBody"};

namespace body_layouts {
using namespace body_fields;

#define u8(m) member(fields::u8, #m, offsetof(R, m))
#define u16(m) member(fields::u16, #m, offsetof(R, m))
#define u32(m) member(fields::u32, #m, offsetof(R, m))
#define bytes(m, n) member(fields::bytes(n), #m, offsetof(R, m))
#define str8(m) member(body_fields::str8, #m, offsetof(R, m), offsetof(R, m) + 8)
#define str16(m) member(fields::oct16, #m, offsetof(R, m), offsetof(R, m) + 8)
#define block(m) member(body_fields::block, #m, offsetof(R, m), offsetof(R, m) + 8)
#define attribute(id, value) member(fields::attribute, #id, offsetof(R, id), offsetof(R, value))
#define buffer(m) member(fields::buffer, #m, offsetof(R, m))

// A layout `Name` over the public record `Record` of `size` bytes (0: the
// layout covers the record's leading members only).
#define TROV_LAYOUT(Record, Name, size, ...)                                                     \
    struct Name##Fields {                                                                        \
        using R = Record;                                                                        \
        static constexpr Field given[] = {__VA_ARGS__};                                          \
        static constexpr Plan plan = makePlan(given);                                            \
    };                                                                                           \
    static_assert(placedAsRecord(Name##Fields::plan, Name##Fields::given, size),                 \
                  #Name ": the fields disagree with the record");                               \
    inline constexpr BodyLayout k##Name{BodyKind::Fields, &Name##Fields::plan, sizeof(Record), #Record};
#define TROV_BODY(Record, ...) TROV_LAYOUT(Record, Record, sizeof(Record), __VA_ARGS__)

// The request of body 0x4d: the five leading fields of an EventListBody.
TROV_LAYOUT(EventListBody, EventListHead, 0, u32(value0), u8(value1), u16(value2), u16(value3),
    u8(value4))
TROV_BODY(AttributeBody, attribute(id, value), buffer(buffer))
TROV_BODY(BlockBody, block(block), buffer(buffer))
TROV_BODY(LongStringBody, str16(string0), buffer(buffer))
TROV_BODY(StringBody, str8(string0), buffer(buffer))
TROV_BODY(U16Body, u16(value0))
TROV_BODY(U32Body, u32(value0))
TROV_BODY(ByteBody, u8(value0))
TROV_BODY(U16AttributeBody, u16(value0), attribute(id, value), buffer(buffer))
TROV_BODY(U16Bytes12Body, u16(value0), bytes(bytes1, 12))
TROV_BODY(U16Bytes16Body, u16(value0), bytes(bytes1, 16))
TROV_BODY(U16LongStringBody, u16(value0), str16(string1), buffer(buffer))
TROV_BODY(U16StringBody, u16(value0), str8(string1), buffer(buffer))
TROV_BODY(U16PairBody, u16(value0), u16(value1))
TROV_BODY(U16U32Body, u16(value0), u32(value1))
TROV_BODY(U16ByteBody, u16(value0), u8(value1))
TROV_BODY(U32AttributeBody, u32(value0), attribute(id, value), buffer(buffer))
TROV_BODY(U32BlockBody, u32(value0), block(block), buffer(buffer))
TROV_BODY(U32LongStringBody, u32(value0), str16(string1), buffer(buffer))
TROV_BODY(U32StringBody, u32(value0), str8(string1), buffer(buffer))
TROV_BODY(U32U16Body, u32(value0), u16(value1))
TROV_BODY(U32PairBody, u32(value0), u32(value1))
TROV_BODY(U32ByteBody, u32(value0), u8(value1))
TROV_BODY(ByteAttributeBody, u8(value0), attribute(id, value), buffer(buffer))
TROV_BODY(ByteBlockBody, u8(value0), block(block), buffer(buffer))
TROV_BODY(ByteLongStringBody, u8(value0), str16(string1), buffer(buffer))
TROV_BODY(ByteStringBody, u8(value0), str8(string1), buffer(buffer))
TROV_BODY(ByteU32Body, u8(value0), u32(value1))
TROV_BODY(U16LongStringByteBody, u16(value0), str16(string1), u8(value2), buffer(buffer))
TROV_BODY(U16PairAttributeBody, u16(value0), u16(value1), attribute(id, value), buffer(buffer))
TROV_BODY(U16PairLongStringBody, u16(value0), u16(value1), str16(string2), buffer(buffer))
TROV_BODY(U16PairStringBody, u16(value0), u16(value1), str8(string2), buffer(buffer))
TROV_BODY(U16PairU32Body, u16(value0), u16(value1), u32(value2))
TROV_BODY(U16U32AttributeBody, u16(value0), u32(value1), attribute(id, value), buffer(buffer))
TROV_BODY(U16U32StringBody, u16(value0), u32(value1), str8(string2), buffer(buffer))
TROV_BODY(U16U32PairBody, u16(value0), u32(value1), u32(value2))
TROV_BODY(U16ByteStringBody, u16(value0), u8(value1), str8(string2), buffer(buffer))
TROV_BODY(U16BytePairBody, u16(value0), u8(value1), u8(value2))
TROV_BODY(U32LongStringPairBody, u32(value0), str16(string1), str16(string2), buffer(buffer))
TROV_BODY(U32LongStringByteBody, u32(value0), str16(string1), u8(value2), buffer(buffer))
TROV_BODY(U32StringPairBody, u32(value0), str8(string1), str8(string2), buffer(buffer))
TROV_BODY(U32StringU16Body, u32(value0), str8(string1), u16(value2), buffer(buffer))
TROV_BODY(U32StringByteBody, u32(value0), str8(string1), u8(value2), buffer(buffer))
TROV_BODY(U32U16AttributeBody, u32(value0), u16(value1), attribute(id, value), buffer(buffer))
TROV_BODY(U32U16LongStringBody, u32(value0), u16(value1), str16(string2), buffer(buffer))
TROV_BODY(U32U16StringBody, u32(value0), u16(value1), str8(string2), buffer(buffer))
TROV_BODY(U32U16PairBody, u32(value0), u16(value1), u16(value2))
TROV_BODY(U32U16U32Body, u32(value0), u16(value1), u32(value2))
TROV_BODY(U32PairAttributeBody, u32(value0), u32(value1), attribute(id, value), buffer(buffer))
TROV_BODY(U32PairLongStringBody, u32(value0), u32(value1), str16(string2), buffer(buffer))
TROV_BODY(U32PairStringBody, u32(value0), u32(value1), str8(string2), buffer(buffer))
TROV_BODY(U32PairU16Body, u32(value0), u32(value1), u16(value2))
TROV_BODY(U32TripleBody, u32(value0), u32(value1), u32(value2))
TROV_BODY(U32PairByteBody, u32(value0), u32(value1), u8(value2))
TROV_BODY(U32ByteAttributeBody, u32(value0), u8(value1), attribute(id, value), buffer(buffer))
TROV_BODY(U32ByteLongStringBody, u32(value0), u8(value1), str16(string2), buffer(buffer))
TROV_BODY(U32ByteStringBody, u32(value0), u8(value1), str8(string2), buffer(buffer))
TROV_BODY(U32ByteU32Body, u32(value0), u8(value1), u32(value2))
TROV_BODY(ByteU16StringBody, u8(value0), u16(value1), str8(string2), buffer(buffer))
TROV_BODY(ByteU32LongStringBody, u8(value0), u32(value1), str16(string2), buffer(buffer))
TROV_BODY(ByteU32PairBody, u8(value0), u32(value1), u32(value2))
TROV_BODY(BytePairLongStringBody, u8(value0), u8(value1), str16(string2), buffer(buffer))
TROV_BODY(BytePairStringBody, u8(value0), u8(value1), str8(string2), buffer(buffer))
TROV_BODY(BytePairU16Body, u8(value0), u8(value1), u16(value2))
TROV_BODY(U16TripleStringBody, u16(value0), u16(value1), u16(value2), str8(string3), buffer(buffer))
TROV_BODY(U16U32U16ByteBody, u16(value0), u32(value1), u16(value2), u8(value3))
TROV_BODY(U32U16PairStringBody, u32(value0), u16(value1), u16(value2), str8(string3),
    buffer(buffer))
TROV_BODY(U32U16ByteStringBody, u32(value0), u16(value1), u8(value2), str8(string3), buffer(buffer))
TROV_BODY(U32PairLongStringPairBody, u32(value0), u32(value1), str16(string2), str16(string3),
    buffer(buffer))
TROV_BODY(U32PairStringByteBody, u32(value0), u32(value1), str8(string2), u8(value3),
    buffer(buffer))
TROV_BODY(U32PairU16LongStringBody, u32(value0), u32(value1), u16(value2), str16(string3),
    buffer(buffer))
TROV_BODY(U32PairU16ByteBody, u32(value0), u32(value1), u16(value2), u8(value3))
TROV_BODY(U32TripleLongStringBody, u32(value0), u32(value1), u32(value2), str16(string3),
    buffer(buffer))
TROV_BODY(U32TripleStringBody, u32(value0), u32(value1), u32(value2), str8(string3), buffer(buffer))
TROV_BODY(U32QuadBody, u32(value0), u32(value1), u32(value2), u32(value3))
TROV_BODY(U32TripleByteBody, u32(value0), u32(value1), u32(value2), u8(value3))
TROV_BODY(U32PairByteLongStringBody, u32(value0), u32(value1), u8(value2), str16(string3),
    buffer(buffer))
TROV_BODY(U32PairByteStringBody, u32(value0), u32(value1), u8(value2), str8(string3),
    buffer(buffer))
TROV_BODY(U32PairByteU16Body, u32(value0), u32(value1), u8(value2), u16(value3))
TROV_BODY(U32PairBytePairBody, u32(value0), u32(value1), u8(value2), u8(value3))
TROV_BODY(U32ByteU16U32Body, u32(value0), u8(value1), u16(value2), u32(value3))
TROV_BODY(U32ByteU32PairBody, u32(value0), u8(value1), u32(value2), u32(value3))
TROV_BODY(U32BytePairLongStringBody, u32(value0), u8(value1), u8(value2), str16(string3),
    buffer(buffer))
TROV_BODY(U32BytePairStringBody, u32(value0), u8(value1), u8(value2), str8(string3), buffer(buffer))
TROV_BODY(ByteU16PairU32Body, u8(value0), u16(value1), u16(value2), u32(value3))
TROV_BODY(ByteU32TripleBody, u8(value0), u32(value1), u32(value2), u32(value3))
TROV_BODY(BytePairU16U32Body, u8(value0), u8(value1), u16(value2), u32(value3))
TROV_BODY(BytePairU32PairBody, u8(value0), u8(value1), u32(value2), u32(value3))
TROV_BODY(U32U16PairByteLongStringBody, u32(value0), u16(value1), u16(value2), u8(value3),
    str16(string4), buffer(buffer))
TROV_BODY(U32U16U32PairByteBody, u32(value0), u16(value1), u32(value2), u32(value3), u8(value4))
TROV_BODY(U32PairU16PairU32Body, u32(value0), u32(value1), u16(value2), u16(value3), u32(value4))
TROV_BODY(U32TripleU16ByteBody, u32(value0), u32(value1), u32(value2), u16(value3), u8(value4))
TROV_BODY(U32QuadLongStringBody, u32(value0), u32(value1), u32(value2), u32(value3),
    str16(string4), buffer(buffer))
TROV_BODY(U32QuadStringBody, u32(value0), u32(value1), u32(value2), u32(value3), str8(string4),
    buffer(buffer))
TROV_BODY(U32QuadU16Body, u32(value0), u32(value1), u32(value2), u32(value3), u16(value4))
TROV_BODY(U32QuadByteBody, u32(value0), u32(value1), u32(value2), u32(value3), u8(value4))
TROV_BODY(U32TripleByteU16Body, u32(value0), u32(value1), u32(value2), u8(value3), u16(value4))
TROV_BODY(U32ByteU32TripleBody, u32(value0), u8(value1), u32(value2), u32(value3), u32(value4))
TROV_BODY(ByteU32QuadBody, u8(value0), u32(value1), u32(value2), u32(value3), u32(value4))
TROV_BODY(U32TripleU16PairByteBody, u32(value0), u32(value1), u32(value2), u16(value3),
    u16(value4), u8(value5))

#undef TROV_BODY
#undef TROV_LAYOUT
#undef u8
#undef u16
#undef u32
#undef bytes
#undef str8
#undef str16
#undef block
#undef attribute
#undef buffer
} // namespace body_layouts

using namespace body_layouts;

} // namespace trov
