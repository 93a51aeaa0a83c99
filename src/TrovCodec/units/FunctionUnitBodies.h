// The layouts of the function-unit bodies, one line each: the public
// record and its members in wire order, each with its kind. A layout serves
// every body code whose request or reply has that shape.
//
// The body records of TrovBodies.h are generated from these lines
// (trov_gen_records bodies): one record per layout, in the order below, with
// the members the kinds give, where the kinds' rules place them. The
// compiler lays every layout out and checks the result against the record's
// offsets and size (BodyLayout.h), so a record and its layout cannot drift
// apart. A changed layout therefore does not build until the header is
// regenerated: build trov_gen_records with TROV_BODY_RECORDS_UNCHECKED
// defined (the layouts then read nothing of the records), regenerate, and
// build as usual.
#pragma once

#include <cstddef>

#include "units/BodyLayout.h"

namespace trov {

// Replies that are not field lists.
inline constexpr BodyLayout kNoReplyBody{BodyKind::NoReply, nullptr, 0, nullptr};
inline constexpr BodyLayout kEventListBody{BodyKind::EventList, nullptr, 0, "EventListBody"};
inline constexpr BodyLayout kShortEventListBody{BodyKind::ShortEventList, nullptr, 0, "ShortEventListBody"};

namespace body_layouts {
using namespace body_fields;

#ifdef TROV_BODY_RECORDS_UNCHECKED
#define TROV_AT(m) kNoData
#define TROV_RECORD(Record)
#define TROV_CHECK(...)
#else
#define TROV_AT(m) offsetof(R, m)
#define TROV_RECORD(Record) using R = Record;
#define TROV_CHECK(...) static_assert(__VA_ARGS__);
#endif

#define u8(m) member(fields::u8, #m, TROV_AT(m))
#define u16(m) member(fields::u16, #m, TROV_AT(m))
#define u32(m) member(fields::u32, #m, TROV_AT(m))
#define bytes(m, n) member(fields::bytes(n), #m, TROV_AT(m))
#define str8(m) member(body_fields::str8, #m, TROV_AT(m), TROV_AT(m) + 8)
#define str16(m) member(fields::oct16, #m, TROV_AT(m), TROV_AT(m) + 8)
#define block(m) member(body_fields::block, #m, TROV_AT(m), TROV_AT(m) + 8)
#define attribute(id, value) member(fields::attribute, #id, TROV_AT(id), TROV_AT(value), #value)
#define buffer(m) member(fields::buffer, #m, TROV_AT(m))

// The members of layout `Name` over the public record `Record`, and their plan.
#define TROV_FIELDS(Record, Name, ...)                                                             \
    struct Name##Fields {                                                                          \
        TROV_RECORD(Record)                                                                        \
        static constexpr Member given[] = {__VA_ARGS__};                                           \
        static constexpr Plan plan = planOf(given);                                                \
        static constexpr auto pointers = pointersOf(given);                                        \
    };

// A body record's layout: the whole record, of the size its fields give.
#define TROV_BODY(Record, ...)                                                                     \
    TROV_FIELDS(Record, Record, __VA_ARGS__)                                                       \
    TROV_CHECK(placedAsRecord(Record##Fields::plan, Record##Fields::given) &&                      \
                   sizeof(Record) == bodyRecordBytes(Record##Fields::plan),                        \
               #Record ": the record is not what its layout gives; regenerate TrovBodies.h")       \
    inline constexpr BodyLayout k##Record{BodyKind::Fields, &Record##Fields::plan,                 \
                                         bodyRecordBytes(Record##Fields::plan), #Record,           \
                                         Record##Fields::pointers.data()};
#define TROV_LISTED(Record, ...) , &k##Record

// The request of body 0x4d: the five leading fields of an EventListBody
// (declared in TrovCodec.h, not generated).
TROV_FIELDS(EventListBody, EventListHead, u32(value0), u8(value1), u16(value2), u16(value3),
    u8(value4))
TROV_CHECK(placedAsRecord(EventListHeadFields::plan, EventListHeadFields::given),
           "EventListHead: the fields disagree with EventListBody")
inline constexpr BodyLayout kEventListHead{BodyKind::Fields, &EventListHeadFields::plan,
                                          sizeof(EventListBody), "EventListBody",
                                          EventListHeadFields::pointers.data()};

// A body without fields: its record's one member only gives the struct a size.
inline constexpr Plan kEmptyPlan{};
inline constexpr BodyLayout kEmptyBody{BodyKind::Fields, &kEmptyPlan, bodyRecordBytes(kEmptyPlan),
                                      "EmptyBody"};
TROV_CHECK(sizeof(EmptyBody) == kEmptyBody.recordBytes, "EmptyBody: regenerate TrovBodies.h")

// Every body record's layout, in the order TrovBodies.h declares them.
#define TROV_BODY_RECORDS(body)                                                                    \
    body(AttributeBody, attribute(id, value), buffer(buffer))                                      \
    body(BlockBody, block(block), buffer(buffer))                                                  \
    body(LongStringBody, str16(string0), buffer(buffer))                                           \
    body(StringBody, str8(string0), buffer(buffer))                                                \
    body(U16Body, u16(value0))                                                                     \
    body(U32Body, u32(value0))                                                                     \
    body(ByteBody, u8(value0))                                                                     \
    body(U16AttributeBody, u16(value0), attribute(id, value), buffer(buffer))                      \
    body(U16Bytes12Body, u16(value0), bytes(bytes1, 12))                                           \
    body(U16Bytes16Body, u16(value0), bytes(bytes1, 16))                                           \
    body(U16LongStringBody, u16(value0), str16(string1), buffer(buffer))                           \
    body(U16StringBody, u16(value0), str8(string1), buffer(buffer))                                \
    body(U16PairBody, u16(value0), u16(value1))                                                    \
    body(U16U32Body, u16(value0), u32(value1))                                                     \
    body(U16ByteBody, u16(value0), u8(value1))                                                     \
    body(U32AttributeBody, u32(value0), attribute(id, value), buffer(buffer))                      \
    body(U32BlockBody, u32(value0), block(block), buffer(buffer))                                  \
    body(U32LongStringBody, u32(value0), str16(string1), buffer(buffer))                           \
    body(U32StringBody, u32(value0), str8(string1), buffer(buffer))                                \
    body(U32U16Body, u32(value0), u16(value1))                                                     \
    body(U32PairBody, u32(value0), u32(value1))                                                    \
    body(U32ByteBody, u32(value0), u8(value1))                                                     \
    body(ByteAttributeBody, u8(value0), attribute(id, value), buffer(buffer))                      \
    body(ByteBlockBody, u8(value0), block(block), buffer(buffer))                                  \
    body(ByteLongStringBody, u8(value0), str16(string1), buffer(buffer))                           \
    body(ByteStringBody, u8(value0), str8(string1), buffer(buffer))                                \
    body(ByteU32Body, u8(value0), u32(value1))                                                     \
    body(U16LongStringByteBody, u16(value0), str16(string1), u8(value2), buffer(buffer))           \
    body(U16PairAttributeBody, u16(value0), u16(value1), attribute(id, value), buffer(buffer))     \
    body(U16PairLongStringBody, u16(value0), u16(value1), str16(string2), buffer(buffer))          \
    body(U16PairStringBody, u16(value0), u16(value1), str8(string2), buffer(buffer))               \
    body(U16PairU32Body, u16(value0), u16(value1), u32(value2))                                    \
    body(U16U32AttributeBody, u16(value0), u32(value1), attribute(id, value), buffer(buffer))      \
    body(U16U32StringBody, u16(value0), u32(value1), str8(string2), buffer(buffer))                \
    body(U16U32PairBody, u16(value0), u32(value1), u32(value2))                                    \
    body(U16ByteStringBody, u16(value0), u8(value1), str8(string2), buffer(buffer))                \
    body(U16BytePairBody, u16(value0), u8(value1), u8(value2))                                     \
    body(U32LongStringPairBody, u32(value0), str16(string1), str16(string2), buffer(buffer))       \
    body(U32LongStringByteBody, u32(value0), str16(string1), u8(value2), buffer(buffer))           \
    body(U32StringPairBody, u32(value0), str8(string1), str8(string2), buffer(buffer))             \
    body(U32StringU16Body, u32(value0), str8(string1), u16(value2), buffer(buffer))                \
    body(U32StringByteBody, u32(value0), str8(string1), u8(value2), buffer(buffer))                \
    body(U32U16AttributeBody, u32(value0), u16(value1), attribute(id, value), buffer(buffer))      \
    body(U32U16LongStringBody, u32(value0), u16(value1), str16(string2), buffer(buffer))           \
    body(U32U16StringBody, u32(value0), u16(value1), str8(string2), buffer(buffer))                \
    body(U32U16PairBody, u32(value0), u16(value1), u16(value2))                                    \
    body(U32U16U32Body, u32(value0), u16(value1), u32(value2))                                     \
    body(U32PairAttributeBody, u32(value0), u32(value1), attribute(id, value), buffer(buffer))     \
    body(U32PairLongStringBody, u32(value0), u32(value1), str16(string2), buffer(buffer))          \
    body(U32PairStringBody, u32(value0), u32(value1), str8(string2), buffer(buffer))               \
    body(U32PairU16Body, u32(value0), u32(value1), u16(value2))                                    \
    body(U32TripleBody, u32(value0), u32(value1), u32(value2))                                     \
    body(U32PairByteBody, u32(value0), u32(value1), u8(value2))                                    \
    body(U32ByteAttributeBody, u32(value0), u8(value1), attribute(id, value), buffer(buffer))      \
    body(U32ByteLongStringBody, u32(value0), u8(value1), str16(string2), buffer(buffer))           \
    body(U32ByteStringBody, u32(value0), u8(value1), str8(string2), buffer(buffer))                \
    body(U32ByteU32Body, u32(value0), u8(value1), u32(value2))                                     \
    body(ByteU16StringBody, u8(value0), u16(value1), str8(string2), buffer(buffer))                \
    body(ByteU32LongStringBody, u8(value0), u32(value1), str16(string2), buffer(buffer))           \
    body(ByteU32PairBody, u8(value0), u32(value1), u32(value2))                                    \
    body(BytePairLongStringBody, u8(value0), u8(value1), str16(string2), buffer(buffer))           \
    body(BytePairStringBody, u8(value0), u8(value1), str8(string2), buffer(buffer))                \
    body(BytePairU16Body, u8(value0), u8(value1), u16(value2))                                     \
    body(U16TripleStringBody, u16(value0), u16(value1), u16(value2), str8(string3),                \
        buffer(buffer))                                                                            \
    body(U16U32U16ByteBody, u16(value0), u32(value1), u16(value2), u8(value3))                     \
    body(U32U16PairStringBody, u32(value0), u16(value1), u16(value2), str8(string3),               \
        buffer(buffer))                                                                            \
    body(U32U16ByteStringBody, u32(value0), u16(value1), u8(value2), str8(string3),                \
        buffer(buffer))                                                                            \
    body(U32PairLongStringPairBody, u32(value0), u32(value1), str16(string2), str16(string3),      \
        buffer(buffer))                                                                            \
    body(U32PairStringByteBody, u32(value0), u32(value1), str8(string2), u8(value3),               \
        buffer(buffer))                                                                            \
    body(U32PairU16LongStringBody, u32(value0), u32(value1), u16(value2), str16(string3),          \
        buffer(buffer))                                                                            \
    body(U32PairU16ByteBody, u32(value0), u32(value1), u16(value2), u8(value3))                    \
    body(U32TripleLongStringBody, u32(value0), u32(value1), u32(value2), str16(string3),           \
        buffer(buffer))                                                                            \
    body(U32TripleStringBody, u32(value0), u32(value1), u32(value2), str8(string3),                \
        buffer(buffer))                                                                            \
    body(U32QuadBody, u32(value0), u32(value1), u32(value2), u32(value3))                          \
    body(U32TripleByteBody, u32(value0), u32(value1), u32(value2), u8(value3))                     \
    body(U32PairByteLongStringBody, u32(value0), u32(value1), u8(value2), str16(string3),          \
        buffer(buffer))                                                                            \
    body(U32PairByteStringBody, u32(value0), u32(value1), u8(value2), str8(string3),               \
        buffer(buffer))                                                                            \
    body(U32PairByteU16Body, u32(value0), u32(value1), u8(value2), u16(value3))                    \
    body(U32PairBytePairBody, u32(value0), u32(value1), u8(value2), u8(value3))                    \
    body(U32ByteU16U32Body, u32(value0), u8(value1), u16(value2), u32(value3))                     \
    body(U32ByteU32PairBody, u32(value0), u8(value1), u32(value2), u32(value3))                    \
    body(U32BytePairLongStringBody, u32(value0), u8(value1), u8(value2), str16(string3),           \
        buffer(buffer))                                                                            \
    body(U32BytePairStringBody, u32(value0), u8(value1), u8(value2), str8(string3),                \
        buffer(buffer))                                                                            \
    body(ByteU16PairU32Body, u8(value0), u16(value1), u16(value2), u32(value3))                    \
    body(ByteU32TripleBody, u8(value0), u32(value1), u32(value2), u32(value3))                     \
    body(BytePairU16U32Body, u8(value0), u8(value1), u16(value2), u32(value3))                     \
    body(BytePairU32PairBody, u8(value0), u8(value1), u32(value2), u32(value3))                    \
    body(U32U16PairByteLongStringBody, u32(value0), u16(value1), u16(value2), u8(value3),          \
        str16(string4), buffer(buffer))                                                            \
    body(U32U16U32PairByteBody, u32(value0), u16(value1), u32(value2), u32(value3), u8(value4))    \
    body(U32PairU16PairU32Body, u32(value0), u32(value1), u16(value2), u16(value3), u32(value4))   \
    body(U32TripleU16ByteBody, u32(value0), u32(value1), u32(value2), u16(value3), u8(value4))     \
    body(U32QuadLongStringBody, u32(value0), u32(value1), u32(value2), u32(value3),                \
        str16(string4), buffer(buffer))                                                            \
    body(U32QuadStringBody, u32(value0), u32(value1), u32(value2), u32(value3), str8(string4),     \
        buffer(buffer))                                                                            \
    body(U32QuadU16Body, u32(value0), u32(value1), u32(value2), u32(value3), u16(value4))          \
    body(U32QuadByteBody, u32(value0), u32(value1), u32(value2), u32(value3), u8(value4))          \
    body(U32TripleByteU16Body, u32(value0), u32(value1), u32(value2), u8(value3), u16(value4))     \
    body(U32ByteU32TripleBody, u32(value0), u8(value1), u32(value2), u32(value3), u32(value4))     \
    body(ByteU32QuadBody, u8(value0), u32(value1), u32(value2), u32(value3), u32(value4))          \
    body(U32TripleU16PairByteBody, u32(value0), u32(value1), u32(value2), u16(value3),             \
        u16(value4), u8(value5))

TROV_BODY_RECORDS(TROV_BODY)

// The layouts TrovBodies.h declares a record for, in its order.
inline constexpr const BodyLayout *kBodyRecordLayouts[] = {
    &kEmptyBody TROV_BODY_RECORDS(TROV_LISTED)};

#undef TROV_BODY_RECORDS
#undef TROV_LISTED
#undef TROV_BODY
#undef TROV_FIELDS
#undef TROV_AT
#undef TROV_RECORD
#undef TROV_CHECK
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
