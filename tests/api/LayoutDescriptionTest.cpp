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

class LayoutDescription : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(TROV_InitCoder(), 1); }
};

// Every body's layouts are well formed; a code without a reply layout has no
// request layout. (That the codecs write and read records as described: each
// request layout built by the walk and read back from its bytes,
// EncodeRoundTripTest; each reply layout written from its description,
// ReplyEncodeTest.)
TEST_F(LayoutDescription, BodiesDescribedAsDecoded) {
    for (uint16_t code = 0; code <= 0xFF; ++code) {
        TrovLayoutInfo req, rep;
        const TrovResult r = TROV_DescribeBody(code, 0x10, 1, &req);
        const TrovResult q = TROV_DescribeBody(code, 0x10, 0, &rep);
        if (q != 0) { EXPECT_EQ(q, TROV_RESULT_NO_BODY_CODEC) << code; EXPECT_EQ(r, q) << code; continue; }
        expectWellFormed(rep, "reply " + std::to_string(code));
        if (r != 0) { EXPECT_EQ(r, TROV_RESULT_NO_BODY_CODEC) << code; continue; }
        expectWellFormed(req, "request " + std::to_string(code));
    }
}

// A short event list (body 0x0a) with one event of `code` and zeros behind it.
TrovResult decodeOneEvent(uint16_t code) {
    std::vector<uint8_t> body = {0, 0, 0, 1, 1, uint8_t(code >> 8), uint8_t(code), 0};
    body.resize(body.size() + 600, 0);
    return Decoded(replyPacket(0x0a, body)).result;
}

// (How many: PublicRecordsTest.)
TEST_F(LayoutDescription, EventsDescribedExactlyWhenDecoded) {
    for (uint16_t code = 0; code <= 0x13F; ++code) {
        TrovLayoutInfo l;
        const TrovResult r = TROV_DescribeEvent(code, 0x10, &l);
        EXPECT_EQ(r == 0, decodeOneEvent(code) != TROV_RESULT_NO_EVENT_CODEC) << code;
        if (r != 0) { EXPECT_EQ(r, TROV_RESULT_NO_EVENT_CODEC) << code; continue; }
        expectWellFormed(l, "event " + std::to_string(code));
        EXPECT_GT(l.fieldCount, 0) << code;
    }
}

TEST_F(LayoutDescription, ValuesAndMethodsKeepTheirFieldsInside) {
    HeaderInfo info{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, 0, 0, 0, 0, 0, 0, 0};
    alignas(8) static const uint8_t zeros[512] = {};
    int attributes = 0;
    for (uint32_t id = 1; id <= 0x3800; ++id) {
        TrovLayoutInfo l;
        uint16_t size = 0;
        const TrovResult r = TROV_DescribeAttribute(uint16_t(id), 0x10, &l);
        const TrovResult sized = TROV_GetAttributePacketSize(&info, uint16_t(id), zeros, 0, &size);
        EXPECT_EQ(r == 0, sized != TROV_RESULT_NO_ATTRIBUTE_CODEC) << id;
        if (r != 0) { EXPECT_EQ(r, TROV_RESULT_NO_ATTRIBUTE_CODEC) << id; continue; }
        expectWellFormed(l, "attribute " + std::to_string(id));
        // A zeroed value has every count 0: its size is the fixed wire bytes.
        if (l.form == TROV_LAYOUT_FIELDS && sized == 0) {
            EXPECT_EQ(size, l.wireFixed) << id;
        }
        ++attributes;
    }
    EXPECT_EQ(attributes, 1208);
    for (uint16_t code = 0; code <= 0x30; ++code) {
        TrovLayoutInfo l;
        const TrovResult r = TROV_DescribeDataType(code, 0x10, &l);
        if (r == 0) expectWellFormed(l, "data type " + std::to_string(code));
        else EXPECT_EQ(r, TROV_RESULT_NO_DATA_TYPE_CODEC) << code;
    }
    for (uint16_t code = 0; code <= 0xFF; ++code)
        for (int request = 0; request < 2; ++request) {
            TrovLayoutInfo l;
            const TrovResult r = TROV_DescribeMethod(code, 0x10, request, &l);
            if (r == 0) expectWellFormed(l, "method " + std::to_string(code));
            else EXPECT_EQ(r, TROV_RESULT_NO_METHOD_CODEC) << code;
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

class Frames : public testing::TestWithParam<FrameCase> {
protected:
    void SetUp() override { ASSERT_EQ(TROV_InitCoder(), 1); }
};

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
TEST_F(LayoutDescription, UnknownMethodAndNullOut) {
    TrovLayoutInfo l;
    EXPECT_EQ(TROV_DescribeMethod(0x1FFF, 0x10, 1, &l), TROV_RESULT_NO_METHOD_CODEC);
    EXPECT_EQ(TROV_DescribeBody(0x0b, 0x10, 1, nullptr), 1u);
    EXPECT_EQ(TROV_DescribeEvent(0x02, 0x10, nullptr), 1u);
    EXPECT_EQ(TROV_DescribeMethod(0x6b, 0x10, 1, nullptr), 1u);
    EXPECT_EQ(TROV_DescribeAttribute(0x0002, 0x10, nullptr), 1u);
    EXPECT_EQ(TROV_DescribeDataType(0x02, 0x10, nullptr), 1u);
}

} // namespace
