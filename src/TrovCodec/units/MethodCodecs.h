// Method parameters: the codecs behind the FU method table.
//
// A method invocation (body 0x1d) carries a method code and the method's
// parameters. On a request the host's parameter record is written to the
// wire; on a reply the wire is read into a parameter record. The two sides
// of a method are independent, and each is one of a few shapes (the
// reference lists each method's wire size, checked against these lists):
//
//   request  none | one byte | two bytes | fixed block of 3..14 bytes |
//            u16 length L, L octets (L + 2) | u8 length L, L octets (L + 1) |
//            u8 count N, N u16 (2N + 1) | u16 count N, N u32 (4N + 2) |
//            fixed fields and length-prefixed strings | fixed fields and
//            counted lists with wider elements (the computed sizes)
//   reply    none | one byte | structured (a structure-codec descriptor) |
//            specific (fixed fields and counted strings and lists)
//
// Every side but the structured reply is a layout of the field model
// (engine/Field.h) in wire order: scalars, byte blocks, counted lists and
// counted character strings, run by the shared walker. Each method is one
// row of kMethods: its code, its two shapes and field lists.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>

#include "engine/CodecTypes.h"
#include "engine/Field.h"
#include "engine/FieldWalker.h"

namespace trov {

inline constexpr int kMaxMethodFields = 6;

// ---- the two sides of a method ---------------------------------------------------

enum class MethodReply : uint8_t {
    None,       // nothing is read; record size 0
    OneByte,    // one byte into an 8-byte record; params length 0
    Structured, // through the structure codec (replyDescriptor)
    Specific,   // the method's own field list
};

struct MethodInfo {
    uint16_t code;
    Field requestFields[kMaxMethodFields];
    MethodReply reply;
    Field replyFields[kMaxMethodFields]; // None: empty; OneByte: {u8}; Specific
    const Plan *replyDescriptor;              // Structured only
};

// ---- structured replies ----------------------------------------------------------

// 0xbb: u8 status, u8 count N, N entries of (u16, u32).
//   record: u8 @0, u8 count @1, entries @8 -> {u16 @0, u32 @4} (8 bytes each)
inline constexpr Field kMethodEntry16x32Fields[] = {fields::named(fields::u16, "key"), fields::named(fields::u32, "value")};
inline constexpr Plan kMethodEntry16x32 = structurePlan(kMethodEntry16x32Fields);
inline constexpr Field kMethodReplyBBFields[] = {fields::named(fields::u8, "status"), fields::named(fields::count8, "count"),
                                                 fields::named(fields::records(kMethodEntry16x32, 8), "entries")};
inline constexpr Plan kMethodReplyBB = structurePlan(kMethodReplyBBFields);
// 0xbc: u32 value, u8 length L, L characters.
//   record: u32 @0, u8 length @4, characters @8 (zero-terminated)
inline constexpr Field kMethodReplyBCFields[] = {fields::named(fields::u32, "value"), fields::named(fields::count8, "length"),
                                                 fields::named(fields::chars, "text")};
inline constexpr Plan kMethodReplyBC = structurePlan(kMethodReplyBCFields);
// 0xc0: u16 value, u16 count N, N entries of (u8 length L, L octets).
//   record: u16 @0, u16 count @2, entries @8 -> {u8 length @0, octets @8} (16 bytes each)
inline constexpr Field kMethodOctetEntryFields[] = {fields::named(fields::count8, "length"), fields::named(fields::plainOctets, "data")};
inline constexpr Plan kMethodOctetEntry = structurePlan(kMethodOctetEntryFields);
inline constexpr Field kMethodReplyC0Fields[] = {fields::named(fields::u16, "value"), fields::named(fields::count16, "count"),
                                                 fields::named(fields::records(kMethodOctetEntry, 16), "entries")};
inline constexpr Plan kMethodReplyC0 = structurePlan(kMethodReplyC0Fields);

static_assert(kMethodReplyBB.valid && kMethodReplyBB.record == 16);
static_assert(kMethodReplyBC.valid && kMethodReplyBC.record == 16);
static_assert(kMethodReplyC0.valid && kMethodReplyC0.record == 16);

// ---- the methods, in table order -----------------------------------------------------

namespace method_fields {
using namespace fields;
inline constexpr Field block2 = bytes(2);
using A = MethodReply;

inline constexpr MethodInfo kMethods[] = {
    {0x6b, {block2}, A::None, {}, nullptr},
    {0xa1, {u8, u32}, A::None, {}, nullptr},
    {0x98, {u32, u32}, A::None, {}, nullptr},
    {0x97, {u8, u32, u32, u32}, A::None, {}, nullptr},
    {0x6f, {block2}, A::None, {}, nullptr},
    {0x75, {u8}, A::None, {}, nullptr},
    {0x95, {u8, u16s8, u32s8}, A::Specific, {u16, u32s16}, nullptr},
    {0x96, {}, A::Specific, {u8, chr8}, nullptr},
    {0x9b, {u8, u32, u32}, A::None, {}, nullptr},
    {0x6c, {block2}, A::None, {}, nullptr},
    {0x70, {block2}, A::None, {}, nullptr},
    {0x85, {u16, u16s8}, A::None, {}, nullptr},
    {0xa9, {u16, u16, u32s8}, A::None, {}, nullptr},
    {0x82, {}, A::None, {}, nullptr},
    {0x8a, {}, A::None, {}, nullptr},
    {0x72, {}, A::None, {}, nullptr},
    {0x74, {u8}, A::None, {}, nullptr},
    {0x73, {}, A::None, {}, nullptr},
    {0x88, {oct8}, A::OneByte, {u8}, nullptr},
    {0xa8, {u16, chr8}, A::OneByte, {u8}, nullptr},
    {0x0c, {oct8}, A::Specific, {u8, oct8}, nullptr},
    {0x90, {u16, oct16}, A::Specific, {u16, u16, chr16}, nullptr},
    {0x94, {u8, u16, oct8}, A::Specific, {u8, u16s8}, nullptr},
    {0x91, {u32, u16s16}, A::Specific, {u8, u16s8, u32s8}, nullptr},
    {0x76, {u8, u32s8}, A::None, {}, nullptr},
    {0x77, {}, A::None, {}, nullptr},
    {0x99, {u8, chr8}, A::OneByte, {u8}, nullptr},
    {0x9a, {block2}, A::None, {}, nullptr},
    {0xa5, {u8, chr8, chr8}, A::None, {}, nullptr},
    {0xa7, {}, A::Specific, {u32, u32, u16}, nullptr},
    {0x87, {}, A::Specific, {u8, u32, oct8}, nullptr},
    {0x89, {u8}, A::OneByte, {u8}, nullptr},
    {0x7d, {block2}, A::None, {}, nullptr},
    {0x7c, {block2}, A::None, {}, nullptr},
    {0x66, {}, A::None, {}, nullptr},
    {0x65, {u8, u32}, A::None, {}, nullptr},
    {0x68, {u8, oct8}, A::None, {}, nullptr},
    {0x84, {}, A::None, {}, nullptr},
    {0x0e, {oct8}, A::Specific, {u16, oct8}, nullptr},
    {0x8d, {}, A::Specific, {u16, u16, u32}, nullptr},
    {0x92, {}, A::OneByte, {u8}, nullptr},
    {0x83, {u8}, A::None, {}, nullptr},
    {0x0b, {oct16}, A::Specific, {u16, oct16}, nullptr},
    {0x69, {u16, u32, u32, u32}, A::None, {}, nullptr},
    {0xa2, {u16, oct8, oct8}, A::None, {}, nullptr},
    {0x6d, {block2}, A::None, {}, nullptr},
    {0xaa, {u16, u32}, A::None, {}, nullptr},
    {0x6a, {u16, oct8}, A::None, {}, nullptr},
    {0x8c, {u8, u16}, A::None, {}, nullptr},
    {0xa3, {u8, u16}, A::None, {}, nullptr},
    {0x6e, {u8, oct8, oct8}, A::None, {}, nullptr},
    {0x8f, {u32, oct8}, A::Specific, {u32, oct8}, nullptr},
    {0x7e, {u16, u32}, A::None, {}, nullptr},
    {0x7f, {u8, u16, u32}, A::None, {}, nullptr},
    {0x93, {u8}, A::Specific, {u16, oct8}, nullptr},
    {0x67, {u8}, A::None, {}, nullptr},
    {0x8e, {u32, u32}, A::OneByte, {u8}, nullptr},
    {0x0d, {oct16}, A::Specific, {u8, oct16}, nullptr},
    {0x9c, {u16, u16}, A::None, {}, nullptr},
    {0x9d, {u32, u8, oct8}, A::None, {}, nullptr},
    {0xa4, {u16, u16, oct8}, A::None, {}, nullptr},
    {0x9e, {u8}, A::OneByte, {u8}, nullptr},
    {0x9f, {u8, u32, u32}, A::None, {}, nullptr},
    {0xa0, {u8, u32, u32, u32}, A::Specific, {u8, u32, u32, oct16}, nullptr},
    {0xa6, {}, A::OneByte, {u8}, nullptr},
    {0xab, {u8, oct8, u16s8}, A::None, {}, nullptr},
    {0xac, {u32, u32s8}, A::None, {}, nullptr},
    {0xae, {u16, u16}, A::None, {}, nullptr},
    {0xad, {}, A::None, {}, nullptr},
    {0xb1, {u16, u32s16}, A::None, {}, nullptr},
    {0xaf, {u32, oct16}, A::None, {}, nullptr},
    {0xb0, {u32s16}, A::Specific, {u16, u32s16}, nullptr},
    {0xb2, {u8, oct16}, A::Specific, {u16, oct8, oct8}, nullptr},
    {0xb3, {u16, u32, oct8}, A::Specific, {u32, u32, u32}, nullptr},
    {0xb4, {u8, u8, u16s8}, A::Specific, {u8, u8, chr8, u16s8}, nullptr},
    {0xb5, {u8}, A::None, {}, nullptr},
    {0xb6, {u16s8}, A::None, {}, nullptr},
    {0xb7, {u16s8}, A::None, {}, nullptr},
    {0xb8, {oct8}, A::Specific, {u8, chr8}, nullptr},
    {0xb9, {}, A::Specific, {u8, u32s8}, nullptr},
    {0xba, {u32, u32}, A::Specific, {u32, u8, chr8}, nullptr},
    {0xbb, {u8}, A::Structured, {}, &kMethodReplyBB},
    {0xbc, {}, A::Structured, {}, &kMethodReplyBC},
    {0xbd, {u16, chr8, u32s8}, A::None, {}, nullptr},
    {0xbe, {u8, u16s8, oct8}, A::None, {}, nullptr},
    {0xbf, {u32, u16, u16s16}, A::None, {}, nullptr},
    {0xc0, {u16, u32s8, oct16}, A::Structured, {}, &kMethodReplyC0},
};
} // namespace method_fields

using method_fields::kMethods;
inline constexpr size_t kMethodCount = std::size(kMethods);

// ---- plans -------------------------------------------------------------------

struct MethodPlans {
    Plan request;
    Plan reply; // None, OneByte and Specific replies
    // The decode size pass reports the wire bytes it walked as the params
    // length, except for the one-byte reply, whose params length is 0
    // although it reads a byte.
    bool replyReportsLength;
};

inline constexpr auto kMethodPlans = [] {
    std::array<MethodPlans, kMethodCount> plans{};
    for (size_t i = 0; i < kMethodCount; ++i)
        plans[i] = {makePlan(kMethods[i].requestFields),
                    makePlan(kMethods[i].replyFields, PlanRules{.terminateChars = true}),
                    kMethods[i].reply != MethodReply::OneByte};
    return plans;
}();

// ---- the generic operations (MethodCodecs.cpp) ---------------------------------

// The packet bytes of a parameter record: the 16-bit figure and the true
// extent, which passes 65535 when a u16 length or count is near its top (the
// method body refuses such parameters). An empty field list needs no record.
// Results: 0; 1 wireBytes null, params null for a non-empty field list, or a
// counted part with a count above 0 and a null pointer.
TrovResult methodEncCalc(const Plan &plan, const void *params, WireSize *wireBytes);
// Writes a record that methodEncCalc accepted. Nothing is written when the
// cursor, its position or params is null.
void methodEncode(const Plan &plan, PacketCursor *cursor, const void *params);
// Checks that the cursor holds the item without moving the cursor, and
// reports the wire bytes walked as the params length (0 when the method's
// reply does not report it) and the record size: the fixed part plus each
// counted part's elements rounded up to 8. Results: 0; 1 a null argument or
// cursor position (non-empty list); 5 the cursor ends before the item. On
// failure the out-parameters are unchanged.
TrovResult methodDecCalc(const Plan &plan, bool reportsLength, const PacketCursor *cursor,
                         uint16_t *paramsLength, RecordSize *size);
// Reads the item into `record` (8-aligned, at least the extent methodDecCalc
// reports), counted parts behind the fixed part, and advances the cursor.
// Returns the first free address behind what was written.
void *methodDecode(const Plan &plan, void *record, PacketCursor *cursor);

// Structured replies: the structure codec's size pass on a copy of the cursor
// (record size from the descriptor's record size; params length the wire
// bytes of the item), and its decode pass with the extra area behind the
// record. Results as structDecCalc's: 0, 1, 5.
TrovResult structuredReplyDecCalc(const Plan &d, const PacketCursor *cursor, uint16_t *paramsLength,
                                  RecordSize *size);
void *structuredReplyDecode(const Plan &d, void *record, PacketCursor *cursor);

// ---- a table row's operations ----------------------------------------------------

// The params length the body passes on encoding is not used by these methods:
// their records say how long they are.
template <size_t I>
struct MethodRowOps {
    static constexpr const MethodInfo &kMethod = kMethods[I];
    static constexpr const MethodPlans &kPlans = kMethodPlans[I];

    static TrovResult encCalc(const void *params, uint16_t, WireSize *wireBytes) {
        return methodEncCalc(kPlans.request, params, wireBytes);
    }
    static void encode(PacketCursor *cursor, const void *params, uint16_t) {
        methodEncode(kPlans.request, cursor, params);
    }
    static TrovResult decCalc(const PacketCursor *cursor, uint16_t *paramsLength, RecordSize *size) {
        if constexpr (kMethod.reply == MethodReply::Structured)
            return structuredReplyDecCalc(*kMethod.replyDescriptor, cursor, paramsLength, size);
        else
            return methodDecCalc(kPlans.reply, kPlans.replyReportsLength, cursor, paramsLength, size);
    }
    static void *decode(void *record, PacketCursor *cursor) {
        if constexpr (kMethod.reply == MethodReply::Structured)
            return structuredReplyDecode(*kMethod.replyDescriptor, record, cursor);
        else
            return methodDecode(kPlans.reply, record, cursor);
    }
};

constexpr size_t methodIndex(uint16_t code) {
    for (size_t i = 0; i < kMethodCount; ++i)
        if (kMethods[i].code == code) return i;
    return kMethodCount;
}

// The table row of a method code of kMethods.
template <uint16_t Code>
constexpr MethodCodecRow methodRow() {
    constexpr size_t i = methodIndex(Code);
    static_assert(i < kMethodCount, "no method of this code");
    using Ops = MethodRowOps<i>;
    return MethodCodecRow{Code, 0, &Ops::encCalc, &Ops::encode, &Ops::decCalc, &Ops::decode};
}

// ---- compile-time checks -------------------------------------------------------

// Each reply has the shape its kind states; every code once.
constexpr bool methodsHold() {
    for (size_t i = 0; i < kMethodCount; ++i) {
        const MethodInfo &m = kMethods[i];
        const Plan &reply = kMethodPlans[i].reply;
        const bool shaped = m.reply == MethodReply::Specific ? reply.count > 0 && m.replyDescriptor == nullptr
                            : m.reply == MethodReply::Structured ? reply.count == 0 && m.replyDescriptor != nullptr
                            : m.reply == MethodReply::OneByte
                                ? reply.count == 1 && reply.fields[0].kind == FieldKind::U8 && reply.record == 8
                                : reply.count == 0 && m.replyDescriptor == nullptr;
        if (!shaped || !kMethodPlans[i].request.valid || !reply.valid || m.code == 0 || methodIndex(m.code) != i)
            return false;
    }
    return true;
}
static_assert(methodsHold(), "a method's reply disagrees with its kind");
static_assert(kMethodCount == 87);

} // namespace trov
