// The layout descriptions through the exported interface: a description
// exists exactly for the codes the decoders know, every layout keeps its
// fields inside its record, and the frames are their public records.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "TrovLayout.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"

namespace {

// Names present and unique, fields inside the record, pointers inside their fields.
void expectWellFormed(const TrovLayoutInfo &l, const std::string &what) {
    std::set<std::string> names;
    ASSERT_EQ(l.fields == nullptr, l.fieldCount == 0) << what;
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        const TrovFieldInfo &f = l.fields[i];
        ASSERT_TRUE(f.name != nullptr && f.name[0] != '\0') << what << " field " << i;
        EXPECT_TRUE(names.insert(f.name).second) << what << " repeats " << f.name;
        EXPECT_LE(f.offset + f.width, l.recordBytes) << what << " " << f.name;
        if (f.dataOffset != TROV_NO_DATA) {
            EXPECT_LE(f.dataOffset + 8u, f.offset + f.width) << what << " " << f.name;
        }
        if (f.countField >= 0) { // a count, or the code that picks an event's or parameters' record
            const bool code = f.kindId == TROV_KIND_EVENT || f.kindId == TROV_KIND_PARAMS;
            ASSERT_LT(f.countField, l.fieldCount) << what << " " << f.name;
            EXPECT_EQ(l.fields[f.countField].kindId, code ? TROV_KIND_U16 : TROV_KIND_COUNT) << what << " " << f.name;
        }
    }
}

// A short event list (body 0x0a) with one event of `code` and zeros behind it.
TrovResult decodeOneEvent(uint16_t code) {
    std::vector<uint8_t> body = {0, 0, 0, 1, 1, uint8_t(code >> 8), uint8_t(code), 0};
    body.resize(body.size() + 600, 0);
    return Decoded(replyPacket(0x0a, body)).result;
}

// Every code of every family: described (and well formed) exactly where the
// decoders have a codec, else the family's result; a body without a reply
// layout has no request layout. (That the codecs write and read records as
// described: EncodeRoundTripTest, RecordWalkTest, ReplyEncodeTest; how many events:
// PublicRecordsTest.)
TEST(LayoutDescription, EveryFamilyDescribedExactlyWhenDecoded) {
    using Describe = TrovResult (*)(uint16_t, TrovLayoutInfo *);
    using Decodes = bool (*)(uint16_t, const TrovLayoutInfo *); // the layout, when described
    const struct { const char *what; uint32_t last; TrovResult none; Describe describe; Decodes decodes; int count; } families[] = {
        {"reply", 0xFF, TROV_RESULT_NO_BODY_CODEC, [](uint16_t c, TrovLayoutInfo *l) { return TROV_DescribeBody(c, 0x10, 0, l); }, nullptr, 0},
        {"request", 0xFF, TROV_RESULT_NO_BODY_CODEC, [](uint16_t c, TrovLayoutInfo *l) {
             TrovLayoutInfo reply;
             const TrovResult r = TROV_DescribeBody(c, 0x10, 1, l);
             EXPECT_TRUE(r != 0 || TROV_DescribeBody(c, 0x10, 0, &reply) == 0) << c;
             return r;
         }, nullptr, 0},
        {"event", 0x13F, TROV_RESULT_NO_EVENT_CODEC, [](uint16_t c, TrovLayoutInfo *l) { return TROV_DescribeEvent(c, 0x10, l); },
         [](uint16_t c, const TrovLayoutInfo *l) {
             EXPECT_TRUE(l == nullptr || l->fieldCount > 0) << c;
             return decodeOneEvent(c) != TROV_RESULT_NO_EVENT_CODEC;
         }, 0},
        {"attribute", 0x3800, TROV_RESULT_NO_ATTRIBUTE_CODEC,
         [](uint16_t c, TrovLayoutInfo *l) { return c == 0 ? TrovResult{TROV_RESULT_NO_ATTRIBUTE_CODEC} : TROV_DescribeAttribute(c, 0x10, l); },
         [](uint16_t c, const TrovLayoutInfo *l) {
             const HeaderInfo info{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, 0, 0, 0, 0, 0, 0, 0};
             alignas(8) static const uint8_t zeros[512] = {};
             uint16_t size = 0;
             const TrovResult sized = c == 0 ? TrovResult{TROV_RESULT_NO_ATTRIBUTE_CODEC} : TROV_GetAttributePacketSize(&info, c, zeros, 0, &size);
             // A zeroed value has every count 0: its size is the fixed wire bytes.
             EXPECT_TRUE(l == nullptr || l->form != TROV_LAYOUT_FIELDS || sized != 0 || size == l->wireFixed) << c;
             return sized != TROV_RESULT_NO_ATTRIBUTE_CODEC;
         }, 1208},
        {"data type", 0x30, TROV_RESULT_NO_DATA_TYPE_CODEC, [](uint16_t c, TrovLayoutInfo *l) { return TROV_DescribeDataType(c, 0x10, l); }, nullptr, 0},
        {"method request", 0xFF, TROV_RESULT_NO_METHOD_CODEC, [](uint16_t c, TrovLayoutInfo *l) { return TROV_DescribeMethod(c, 0x10, 1, l); }, nullptr, 0},
        {"method reply", 0xFF, TROV_RESULT_NO_METHOD_CODEC, [](uint16_t c, TrovLayoutInfo *l) { return TROV_DescribeMethod(c, 0x10, 0, l); }, nullptr, 0},
    };
    for (const auto &f : families) {
        int described = 0;
        for (uint32_t code = 0; code <= f.last; ++code) {
            TrovLayoutInfo l;
            const std::string what = std::string(f.what) + " " + std::to_string(code);
            const TrovResult r = f.describe(uint16_t(code), &l);
            if (f.decodes != nullptr) {
                EXPECT_EQ(r == 0, f.decodes(uint16_t(code), r == 0 ? &l : nullptr)) << what;
            }
            if (r != 0) {
                EXPECT_EQ(r, f.none) << what;
                continue;
            }
            expectWellFormed(l, what);
            ++described;
        }
        EXPECT_TRUE(f.count == 0 || described == f.count) << f.what << ": " << described;
    }
}

// ---- the frames: event lists and the method invocation --------------------------------

// A layout's members in wire order: name, kind and record offset of each.
std::string members(const TrovLayoutInfo &l) {
    std::string s;
    for (uint16_t i = 0; i < l.fieldCount; ++i)
        s += std::string(i ? " " : "") + l.fields[i].name + ":" + l.fields[i].kind + "@" + std::to_string(l.fields[i].offset);
    return s;
}

struct FrameCase {
    const char *name;
    uint16_t code;
    int request;
    uint8_t form;
    const char *record;
    size_t recordBytes;
    uint16_t wireFixed; // the shortest body that decodes
    const char *fields;
    const char *picker; // the field whose code picks the events' or parameters' record
    size_t entryBytes;  // events only: an entry's record and members, and its head on the wire
    const char *entry;
    uint16_t entryWire;
};

const char *const kMethodMembers = "value0:u32@0 method:u16@4 params:params@8 buffer:buffer@24";
const FrameCase kFrames[] = {
    {"LongEventList", 0x4d, 0, TROV_LAYOUT_EVENT_LIST, "EventListBody", sizeof(EventListBody), 12,
     "value0:u32@0 value1:u8@4 value2:u16@6 value3:u16@8 value4:u8@10 count:count@12 entries:events@16 buffer:buffer@24",
     "eventCode", sizeof(EventEntry), "field1:u16@0 field2:u32@4 field3:u32@8 field4:u8@12 eventCode:u16@14 body:event@16",
     13},
    {"ShortEventList", 0x0a, 0, TROV_LAYOUT_EVENT_LIST, "ShortEventListBody", sizeof(ShortEventListBody), 5,
     "value0:u32@0 count:count@4 entries:events@8 buffer:buffer@16", "eventCode", sizeof(EventBriefEntry),
     "eventCode:u16@0 field2:u8@2 body:event@8", 3},
    {"MethodRequest", 0x1d, 1, TROV_LAYOUT_METHOD_CALL, "MethodBody", sizeof(MethodBody), 6, kMethodMembers, "method", 0, "", 0},
    {"MethodReply", 0x1d, 0, TROV_LAYOUT_METHOD_CALL, "MethodBody", sizeof(MethodBody), 6, kMethodMembers, "method", 0, "", 0},
};

const TrovFieldInfo *kindIn(const TrovLayoutInfo &l, uint8_t kindId) {
    for (uint16_t i = 0; i < l.fieldCount; ++i)
        if (l.fields[i].kindId == kindId) return &l.fields[i];
    return nullptr;
}

class Frames : public testing::TestWithParam<FrameCase> {};

// The description is the public record, member by member in wire order
// (offsets as the public header lays the records out), with the counts and
// codes where the record keeps them. (That the decoders fill those records,
// and the shortest bodies that decode: EventListInternalTest, CppLayerTest,
// GuardPageTest and the extent sweep.)
TEST_P(Frames, DescribedAsThePublicRecord) {
    const FrameCase &c = GetParam();
    TrovLayoutInfo l{};
    ASSERT_EQ(TROV_DescribeBody(c.code, TROV_PROTOCOL_VERSION, c.request, &l), 0u);
    EXPECT_EQ(l.form, c.form);
    EXPECT_STREQ(l.record, c.record);
    EXPECT_EQ(l.recordBytes, c.recordBytes);
    EXPECT_EQ(l.wireFixed, c.wireFixed);
    expectWellFormed(l, c.name);
    EXPECT_EQ(members(l), c.fields);
    const TrovFieldInfo *params = kindIn(l, TROV_KIND_PARAMS), *events = kindIn(l, TROV_KIND_EVENTS);
    if (c.form == TROV_LAYOUT_METHOD_CALL) {
        ASSERT_NE(params, nullptr);
        EXPECT_STREQ(l.fields[params->countField].name, c.picker);
        EXPECT_EQ(params->dataOffset, offsetof(MethodBody, params));
        EXPECT_EQ(params->offset + params->width, offsetof(MethodBody, paramsLength) + 2); // the length with it
        return;
    }
    ASSERT_NE(events, nullptr);
    EXPECT_STREQ(l.fields[events->countField].name, "count");
    EXPECT_EQ(events->dataOffset, events->offset);
    TrovLayoutInfo entry{};
    ASSERT_EQ(TROV_DescribeNested(events, &entry), 0u);
    EXPECT_EQ(entry.recordBytes, c.entryBytes);
    expectWellFormed(entry, std::string(c.name) + " entry");
    EXPECT_EQ(members(entry), c.entry);
    const TrovFieldInfo *event = kindIn(entry, TROV_KIND_EVENT);
    ASSERT_NE(event, nullptr);
    EXPECT_STREQ(entry.fields[event->countField].name, c.picker);
    EXPECT_EQ(entry.wireFixed, c.entryWire);
}

INSTANTIATE_TEST_SUITE_P(Bodies, Frames, testing::ValuesIn(kFrames),
                         [](const testing::TestParamInfo<FrameCase> &info) { return std::string(info.param.name); });

// (Codes without a description: the sweeps above.) A method code below the
// raw range needs a row of its own; no description goes to a null out.
TEST(LayoutDescription, UnknownMethodAndNullOut) {
    TrovLayoutInfo l;
    EXPECT_EQ(TROV_DescribeMethod(0x1FFF, 0x10, 1, &l), TROV_RESULT_NO_METHOD_CODEC);
    EXPECT_EQ(TROV_DescribeBody(0x0b, 0x10, 1, nullptr), 1u);
    EXPECT_EQ(TROV_DescribeEvent(0x02, 0x10, nullptr), 1u);
    EXPECT_EQ(TROV_DescribeMethod(0x6b, 0x10, 1, nullptr), 1u);
    EXPECT_EQ(TROV_DescribeAttribute(0x0002, 0x10, nullptr), 1u);
    EXPECT_EQ(TROV_DescribeDataType(0x02, 0x10, nullptr), 1u);
}

} // namespace
