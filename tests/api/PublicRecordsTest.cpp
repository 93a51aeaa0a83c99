// The public record declarations (TrovRecords.h) against the library's own
// layout descriptions: every declared record has the described size and
// every member sits at its field's offset (and keeps its data pointer where
// the description says), as this compiler lays the C structs out; and every
// code the library describes has a declaration. The check list is generated
// with the header (PublicRecordsChecks.inc).
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "TrovCodes.h"
#include "TrovEncode.h"
#include "TrovLayout.h"
#include "TrovRecords.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"

namespace {

enum class Family { Event, MethodRequest, MethodReply, Attribute, DataType, Fixed };

// `expected` -1: the member is the described field of the same index; else
// the codec's own offset for a structured record.
struct MemberCheck {
    const char *name;
    size_t offset;
    size_t dataOffset;
    int expected;
};

struct RecordCheck {
    Family family;
    uint16_t code;
    const char *type;
    size_t size;
    int expectedSize; // -1: the description's recordBytes
    const MemberCheck *members;
    size_t memberCount;
};

#include "api/PublicRecordsChecks.inc"

constexpr uint8_t kVersion = TROV_PROTOCOL_VERSION;

TrovResult describe(Family f, uint16_t code, TrovLayoutInfo *out) {
    switch (f) {
    case Family::Event: return TROV_DescribeEvent(code, kVersion, out);
    case Family::MethodRequest: return TROV_DescribeMethod(code, kVersion, 1, out);
    case Family::MethodReply: return TROV_DescribeMethod(code, kVersion, 0, out);
    case Family::Attribute: return TROV_DescribeAttribute(code, kVersion, out);
    case Family::DataType: return TROV_DescribeDataType(code, kVersion, out);
    default: return TROV_RESULT_NULL_ARGUMENT;
    }
}

// Size, then each member against the field of the same index (name, offset,
// data pointer), or against the codec's offset for structured records. One
// test over the whole list: a ctest per record would start the program (under
// Wine on Windows) some five hundred times.
void checkRecord(const RecordCheck &r) {
    SCOPED_TRACE(r.type);
    TrovLayoutInfo l{};
    if (r.family != Family::Fixed) {
        ASSERT_EQ(describe(r.family, r.code, &l), TROV_RESULT_OK);
    }
    EXPECT_EQ(r.size, r.expectedSize >= 0 ? size_t(r.expectedSize) : size_t(l.recordBytes));
    size_t described = 0;
    for (size_t i = 0; i < r.memberCount; ++i) {
        const MemberCheck &m = r.members[i];
        SCOPED_TRACE(m.name);
        if (m.expected >= 0) {
            // A structured record's member sits where the codec places it, and
            // where the description (when there is one) says: an array's
            // pointer where it is with elements.
            EXPECT_EQ(m.offset, size_t(m.expected));
            for (uint16_t k = 0; l.form == TROV_LAYOUT_STRUCTURE && k < l.fieldCount; ++k) {
                const TrovFieldInfo &f = l.fields[k];
                if (std::strcmp(f.name, m.name) != 0) continue;
                EXPECT_EQ(m.offset, f.kindId == TROV_KIND_RECORDS ? f.dataOffset : f.offset);
                ++described;
            }
            continue;
        }
        ASSERT_LT(described, l.fieldCount);
        const TrovFieldInfo &f = l.fields[described++];
        EXPECT_STREQ(m.name, f.name);
        EXPECT_EQ(m.offset, f.offset);
        EXPECT_EQ(m.dataOffset, f.dataOffset);
    }
    EXPECT_EQ(described, size_t(l.fieldCount));
}

TEST(PublicRecords, EveryDeclarationMatchesItsDescription) {
    for (const RecordCheck &r : kRecordChecks) checkRecord(r);
}

bool declared(Family f, uint16_t code) {
    for (const RecordCheck &r : kRecordChecks)
        if (r.family == f && r.code == code) return true;
    return false;
}

bool plainScalar(const TrovLayoutInfo &l) {
    return l.form == TROV_LAYOUT_FIELDS && l.fieldCount == 1 && l.fields[0].offset == 0 &&
           l.fields[0].kindId >= TROV_KIND_U8 && l.fields[0].kindId <= TROV_KIND_U32;
}

// Every code with a record of its own (not one scalar, not without
// parameters, not raw) has a declaration; an attribute has its row's, found
// through any identifier of the row.
TEST(PublicRecords, EveryDescribedCodeIsDeclared) {
    size_t events = 0, sides = 0, values = 0;
    for (uint32_t c = 1; c <= 0xFFFF; ++c) {
        const uint16_t code = uint16_t(c);
        TrovLayoutInfo l{};
        if (TROV_DescribeEvent(code, kVersion, &l) == 0) {
            ++events;
            EXPECT_TRUE(declared(Family::Event, code)) << "event " << c;
        }
        for (Family f : {Family::MethodRequest, Family::MethodReply})
            if (describe(f, code, &l) == 0 && l.form != TROV_LAYOUT_NONE && l.form != TROV_LAYOUT_RAW &&
                !plainScalar(l)) {
                ++sides;
                EXPECT_TRUE(declared(f, code)) << "method " << c;
            }
        if (TROV_DescribeDataType(code, kVersion, &l) == 0 && !plainScalar(l)) {
            EXPECT_TRUE(declared(Family::DataType, code)) << "data type " << c;
        }
        if (TROV_DescribeAttribute(code, kVersion, &l) == 0 && !plainScalar(l)) {
            ++values;
            bool found = declared(Family::Attribute, code);
            for (const RecordCheck &r : kRecordChecks) {
                TrovLayoutInfo row{};
                if (found) break;
                found = r.family == Family::Attribute && l.fields != nullptr &&
                        TROV_DescribeAttribute(r.code, kVersion, &row) == 0 && row.fields == l.fields;
            }
            EXPECT_TRUE(found) << "attribute " << c;
        }
    }
    EXPECT_EQ(events, 120u);
    EXPECT_GT(sides, 0u);
    EXPECT_GT(values, 0u);
}

// The typed front door takes only its code's request record, and encodes as
// TROV_EncodeFU does with the code set.
static_assert(std::is_invocable_v<decltype(&TROV_EncodeBody_0012), HeaderInfo *, const AttributeBody *, EncodeOutput *>);
static_assert(!std::is_invocable_v<decltype(&TROV_EncodeBody_0012), HeaderInfo *, const U32Body *, EncodeOutput *>);

TEST(PublicRecords, TypedEncodeIsTheGenericEncodeWithItsCode) {
    uint16_t values[] = {7, 9};
    AttributeArrayHeader array{2, values};
    AttributeBody body{TROV_ATTRIBUTE_0070, &array, {}};
    uint8_t typed[64] = {}, generic[64] = {};
    HeaderInfo a{TROV_PROTOCOL_MARK, 0x10, 0, 0, 0, 0, 0, 0, 0}, b = a;
    b.code = TROV_BODY_0012;
    EncodeOutput outA{typed, sizeof typed}, outB{generic, sizeof generic};
    ASSERT_EQ(TROV_EncodeBody_0012(&a, &body, &outA), TROV_RESULT_OK);
    ASSERT_EQ(TROV_EncodeFU(&b, &body, &outB), TROV_RESULT_OK);
    EXPECT_EQ(a.code, 0x12);
    ASSERT_EQ(outA.length, outB.length);
    EXPECT_EQ(std::memcmp(typed, generic, outA.length), 0);
    EXPECT_EQ(TROV_EncodeBody_0012(nullptr, &body, &outA), TROV_RESULT_NULL_ARGUMENT);
}

} // namespace
