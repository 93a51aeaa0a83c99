// The layout descriptions against the codecs they describe, through the
// exported interface: a record built field by field from a body's
// description must encode to the bytes the description predicts and decode
// back to the same fields; a description exists exactly for the codes the
// decoders know; every layout keeps its fields inside its record.
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

struct Built {
    alignas(8) uint8_t record[512] = {};
    std::vector<std::string> strings; // the data of counted fields, by field
    std::vector<uint8_t> wire;
    bool complete = true; // every field of a kind this test can fill
};

// Fills every field with a value of its own and predicts the body bytes.
void build(const TrovLayoutInfo &l, Built &b) {
    b.strings.resize(l.fieldCount);
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        const TrovFieldInfo &f = l.fields[i];
        const uint32_t pattern = 0x81A2C3E4u + 0x01010101u * i;
        switch (f.kindId) {
        case TROV_KIND_U8: case TROV_KIND_U16: case TROV_KIND_U32:
            putHost(b.record + f.offset, pattern, f.width);
            putWire(b.wire, pattern, f.width);
            break;
        case TROV_KIND_BYTES:
            for (uint16_t k = 0; k < f.width; ++k) b.record[f.offset + k] = uint8_t(0x40 + i + k);
            b.wire.insert(b.wire.end(), b.record + f.offset, b.record + f.offset + f.width);
            break;
        case TROV_KIND_OCTETS: case TROV_KIND_CHARS: case TROV_KIND_REST: {
            b.strings[i] = "s" + std::to_string(i) + "xyz";
            const uint8_t *data = reinterpret_cast<const uint8_t *>(b.strings[i].data());
            const uint32_t n = uint32_t(b.strings[i].size());
            putHost(b.record + f.offset, n, f.countRecordBytes);
            std::memcpy(b.record + f.dataOffset, &data, sizeof data);
            putWire(b.wire, n, f.countBytes);
            b.wire.insert(b.wire.end(), data, data + n);
            break;
        }
        case TROV_KIND_BUFFER: break;
        default: b.complete = false; break;
        }
    }
}

// Reads the fields back from a decoded record through the description.
void expectFields(const TrovLayoutInfo &l, const Built &b, const uint8_t *decoded, uint16_t code) {
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        const TrovFieldInfo &f = l.fields[i];
        if (f.kindId <= TROV_KIND_U32 || f.kindId == TROV_KIND_BYTES) {
            EXPECT_EQ(std::memcmp(decoded + f.offset, b.record + f.offset, f.width), 0) << code << " " << f.name;
        } else if (f.kindId != TROV_KIND_BUFFER) {
            const uint8_t *data;
            std::memcpy(&data, decoded + f.dataOffset, sizeof data);
            ASSERT_EQ(getHost(decoded + f.offset, f.countRecordBytes),
                      b.strings[i].size()) << code << " " << f.name;
            EXPECT_EQ(std::string(reinterpret_cast<const char *>(data), b.strings[i].size()), b.strings[i])
                << code << " " << f.name;
        }
    }
}

class LayoutDescription : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(TROV_InitCoder(), 1); }
};

TEST_F(LayoutDescription, BodiesEncodeAndDecodeAsDescribed) {
    int encoded = 0, decoded = 0;
    for (uint16_t code = 0; code <= 0xFF; ++code) {
        TrovLayoutInfo req, rep;
        const TrovResult r = TROV_DescribeBody(code, 0x10, 1, &req);
        const TrovResult q = TROV_DescribeBody(code, 0x10, 0, &rep);
        if (q != 0) { EXPECT_EQ(q, TROV_RESULT_NO_BODY_CODEC) << code; EXPECT_EQ(r, q) << code; continue; }
        expectWellFormed(rep, "reply " + std::to_string(code));
        if (r != 0) { EXPECT_EQ(r, TROV_RESULT_NO_BODY_CODEC) << code; continue; }
        expectWellFormed(req, "request " + std::to_string(code));
        if (req.form != TROV_LAYOUT_FIELDS) continue;
        Built b;
        build(req, b);
        if (!b.complete) continue;
        HeaderInfo info{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, 0, code, 0, 0, 0, 0, 0};
        EncodeOutput out{nullptr, 0};
        ASSERT_EQ(TROV_EncodeFU(&info, b.record, &out), 0u) << code;
        ASSERT_EQ(out.length, 20u + b.wire.size()) << code;
        EXPECT_EQ(std::vector<uint8_t>(out.data + 20, out.data + out.length), b.wire) << code;
        trovFree(out.data);
        ++encoded;
        if (rep.form != TROV_LAYOUT_FIELDS || std::strcmp(rep.record, req.record) != 0) continue;
        DecodeResult result{nullptr, nullptr, 0};
        ASSERT_EQ(decodeReply(code, b.wire, result), 0u) << code;
        expectFields(rep, b, static_cast<const uint8_t *>(result.record), code);
        if (result.buffer != nullptr) trovFree(result.buffer->data);
        trovFree(result.record);
        ++decoded;
    }
    EXPECT_EQ(encoded, 103); // every request layout without an attribute field
    EXPECT_EQ(decoded, 22);
}

// A short event list (body 0x0a) with one event of `code` and zeros behind it.
TrovResult decodeOneEvent(uint16_t code) {
    std::vector<uint8_t> body = {0, 0, 0, 1, 1, uint8_t(code >> 8), uint8_t(code), 0};
    body.resize(body.size() + 600, 0);
    DecodeResult result{nullptr, nullptr, 0};
    const TrovResult r = decodeReply(0x0a, body, result);
    if (r == 0) {
        if (result.buffer != nullptr) trovFree(result.buffer->data);
        trovFree(result.record);
    }
    return r;
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

// A member of a public record as the description must give it, in wire order.
struct Member {
    const char *name;
    uint8_t kindId;
    size_t offset;
};

struct FrameCase {
    const char *name;
    uint16_t code;
    int request;
    uint8_t form;
    const char *record;
    size_t recordBytes;
    uint16_t wireFixed; // the shortest body that decodes
    std::vector<Member> fields;
    const char *picker;       // the field whose code picks the events' or parameters' record
    std::vector<Member> entry; // events only: an entry's members, then its event
    size_t entryBytes;
    uint16_t entryWire; // an event's head
};

#define AT(R, m) offsetof(R, m)
const std::vector<Member> kMethodMembers = {
    {"value0", TROV_KIND_U32, AT(MethodBody, value0)}, {"method", TROV_KIND_U16, AT(MethodBody, method)},
    {"params", TROV_KIND_PARAMS, AT(MethodBody, params)}, {"buffer", TROV_KIND_BUFFER, AT(MethodBody, buffer)}};
const FrameCase kFrames[] = {
    {"LongEventList", 0x4d, 0, TROV_LAYOUT_EVENT_LIST, "EventListBody", sizeof(EventListBody), 12,
     {{"value0", TROV_KIND_U32, AT(EventListBody, value0)}, {"value1", TROV_KIND_U8, AT(EventListBody, value1)},
      {"value2", TROV_KIND_U16, AT(EventListBody, value2)}, {"value3", TROV_KIND_U16, AT(EventListBody, value3)},
      {"value4", TROV_KIND_U8, AT(EventListBody, value4)}, {"count", TROV_KIND_COUNT, AT(EventListBody, count)},
      {"entries", TROV_KIND_EVENTS, AT(EventListBody, entries)}, {"buffer", TROV_KIND_BUFFER, AT(EventListBody, buffer)}},
     "eventCode",
     {{"field1", TROV_KIND_U16, AT(EventEntry, field1)}, {"field2", TROV_KIND_U32, AT(EventEntry, field2)},
      {"field3", TROV_KIND_U32, AT(EventEntry, field3)}, {"field4", TROV_KIND_U8, AT(EventEntry, field4)},
      {"eventCode", TROV_KIND_U16, AT(EventEntry, eventCode)}, {"body", TROV_KIND_EVENT, AT(EventEntry, body)}},
     sizeof(EventEntry), 13},
    {"ShortEventList", 0x0a, 0, TROV_LAYOUT_EVENT_LIST, "ShortEventListBody", sizeof(ShortEventListBody), 5,
     {{"value0", TROV_KIND_U32, AT(ShortEventListBody, value0)}, {"count", TROV_KIND_COUNT, AT(ShortEventListBody, count)},
      {"entries", TROV_KIND_EVENTS, AT(ShortEventListBody, entries)},
      {"buffer", TROV_KIND_BUFFER, AT(ShortEventListBody, buffer)}},
     "eventCode",
     {{"eventCode", TROV_KIND_U16, AT(EventBriefEntry, eventCode)}, {"field2", TROV_KIND_U8, AT(EventBriefEntry, field2)},
      {"body", TROV_KIND_EVENT, AT(EventBriefEntry, body)}},
     sizeof(EventBriefEntry), 3},
    {"MethodRequest", 0x1d, 1, TROV_LAYOUT_METHOD_CALL, "MethodBody", sizeof(MethodBody), 6, kMethodMembers,
     "method", {}, 0, 0},
    {"MethodReply", 0x1d, 0, TROV_LAYOUT_METHOD_CALL, "MethodBody", sizeof(MethodBody), 6, kMethodMembers,
     "method", {}, 0, 0},
};
#undef AT

void expectMembers(const TrovLayoutInfo &l, const std::vector<Member> &members, const std::string &what) {
    ASSERT_EQ(l.fieldCount, members.size()) << what;
    for (size_t i = 0; i < members.size(); ++i) {
        const TrovFieldInfo &f = l.fields[i];
        EXPECT_STREQ(f.name, members[i].name) << what << " field " << i;
        EXPECT_EQ(f.kindId, members[i].kindId) << what << " " << members[i].name;
        EXPECT_EQ(f.offset, members[i].offset) << what << " " << members[i].name;
    }
}

const TrovFieldInfo *kindIn(const TrovLayoutInfo &l, uint8_t kindId) {
    for (uint16_t i = 0; i < l.fieldCount; ++i)
        if (l.fields[i].kindId == kindId) return &l.fields[i];
    return nullptr;
}

class Frames : public testing::TestWithParam<FrameCase> {
protected:
    void SetUp() override { ASSERT_EQ(TROV_InitCoder(), 1); }
};

// The description is the public record, member by member in wire order, with
// the counts and codes where the record keeps them. (That the decoders fill
// those records, and the shortest bodies that decode: EventListInternalTest,
// CppLayerTest, GuardPageTest and the extent sweep.)
TEST_P(Frames, DescribedAsThePublicRecord) {
    const FrameCase &c = GetParam();
    TrovLayoutInfo l{};
    ASSERT_EQ(TROV_DescribeBody(c.code, TROV_PROTOCOL_VERSION, c.request, &l), 0u);
    EXPECT_EQ(l.form, c.form);
    EXPECT_STREQ(l.record, c.record);
    EXPECT_EQ(l.recordBytes, c.recordBytes);
    EXPECT_EQ(l.wireFixed, c.wireFixed);
    expectWellFormed(l, c.name);
    expectMembers(l, c.fields, c.name);
    if (c.form == TROV_LAYOUT_METHOD_CALL) {
        const TrovFieldInfo *params = kindIn(l, TROV_KIND_PARAMS);
        ASSERT_NE(params, nullptr);
        EXPECT_STREQ(l.fields[params->countField].name, c.picker);
        EXPECT_EQ(params->dataOffset, offsetof(MethodBody, params));
        EXPECT_EQ(params->offset + params->width, offsetof(MethodBody, paramsLength) + 2); // the length with it
        return;
    }
    const TrovFieldInfo *events = kindIn(l, TROV_KIND_EVENTS);
    ASSERT_NE(events, nullptr);
    EXPECT_STREQ(l.fields[events->countField].name, "count");
    EXPECT_EQ(events->dataOffset, events->offset);
    TrovLayoutInfo entry{};
    ASSERT_EQ(TROV_DescribeNested(events, &entry), 0u);
    EXPECT_EQ(entry.recordBytes, c.entryBytes);
    expectWellFormed(entry, std::string(c.name) + " entry");
    expectMembers(entry, c.entry, std::string(c.name) + " entry");
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
