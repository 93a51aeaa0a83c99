// The walk over described records (tools/describe/RecordWalk.h): what the
// build walk lays out is what the read walk finds, for every layout the
// library describes, wherever the records sit, also after a reply record's
// trip through the encoder and the decoder (so each reply, method reply and
// event is coded as described); and at the codec boundary the records it
// builds encode to bytes worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "RecordSampler.h"
#include "TrovCodec.h"
#include "TrovLayout.h"
#include "TrovReplyEncode.h"
#include "TrovVersion.h"
#include "api/Initialised.h"

namespace {

using namespace walktest;

constexpr uint8_t kVersion = TROV_PROTOCOL_VERSION;

// Notes every leaf the read walk finds, but counts, reserved bytes and
// empty byte runs, which no builder gives.
class Recorder : public describe::RecordReader {
public:
    Leaves found;
    int tooDeep = 0;
    int records = 0;

    void beginRecord(const TrovLayoutInfo &) override { ++records; }
    void member(const TrovFieldInfo &field) override {
        skip_ = field.kindId == TROV_KIND_COUNT || field.kindId == TROV_KIND_RESERVED;
    }
    void endRecord() override {}
    void beginList(uint32_t) override {}
    void endList() override {}
    void number(uint32_t value) override {
        if (!skip_) found.push_back(walktest::number(value));
    }
    void bytes(const uint8_t *data, size_t size, describe::Text) override {
        if (size != 0) found.push_back(walktest::bytes(data, size));
    }
    void numbers(const describe::Numbers &numbers) override {
        for (uint32_t i = 0; i < numbers.count; ++i)
            for (unsigned p = 0; p < numbers.parts; ++p) found.push_back(walktest::number(numbers.at(i, p)));
    }
    void absent() override { found.push_back("absent"); }
    void unread(describe::Unread why) override {
        tooDeep += why == describe::Unread::TooDeep;
        found.push_back("unread");
    }

private:
    bool skip_ = false;
};

// ---------------------------------------------------------------- every layout

struct Case {
    std::string name;
    Code::Of of; // Attribute, DataType: a value; Method: any other record
    uint16_t code;
    TrovLayoutInfo layout;
    bool request;
    uint8_t selector;
};

// Every layout of a family the library describes, each once.
enum class Family { Bodies, Methods, Events, Attributes, DataTypes };

std::vector<Case> layoutsOf(Family family) {
    std::vector<Case> cases;
    std::set<const TrovFieldInfo *> seen;
    auto add = [&](Code::Of of, unsigned code, const TrovLayoutInfo &l, bool request) {
        if (l.fieldCount == 0 || !seen.insert(l.fields).second) return;
        for (uint8_t selector = 1; selector <= (l.form == TROV_LAYOUT_SELECTOR ? 4 : 1); ++selector) {
            char name[48];
            std::snprintf(name, sizeof name, "code 0x%04x%s selector %u", code, request ? " request" : "", selector);
            cases.push_back({name, of, static_cast<uint16_t>(code), l, request, selector});
        }
    };
    for (unsigned code = 0; code < 0x10000; ++code) {
        const auto key = static_cast<uint16_t>(code);
        TrovLayoutInfo l{};
        for (int request = 0; request < 2; ++request) {
            if (family == Family::Bodies && TROV_DescribeBody(key, kVersion, request, &l) == 0 &&
                l.form == TROV_LAYOUT_FIELDS)
                add(Code::Of::Method, code, l, request);
            if (family == Family::Methods && TROV_DescribeMethod(key, kVersion, request, &l) == 0 &&
                l.form != TROV_LAYOUT_RAW)
                add(Code::Of::Method, code, l, request);
        }
        if (family == Family::Events && TROV_DescribeEvent(key, kVersion, &l) == 0)
            add(Code::Of::Method, code, l, false);
        if (family == Family::Attributes && TROV_DescribeAttribute(key, kVersion, &l) == 0)
            add(Code::Of::Attribute, code, l, false);
        if (family == Family::DataTypes && TROV_DescribeDataType(key, kVersion, &l) == 0)
            add(Code::Of::DataType, code, l, false);
    }
    return cases;
}

// A reply record (a body's, a method's parameters inside body 0x1d, an
// event inside a short list) encoded and decoded again: the decoded record,
// null when either step fails.
struct ThroughTheCodec {
    DecodeResult decoded{nullptr, nullptr, 0};
    const void *record = nullptr;

    ThroughTheCodec(Family family, uint16_t code, const void *built) {
        EventBriefEntry entry{code, 0, const_cast<void *>(built)};
        const ShortEventListBody list{1, 1, &entry, {}};
        const MethodBody method{1, code, const_cast<void *>(built), 0, {}};
        HeaderInfo info{TROV_PROTOCOL_MARK, kVersion, 1, family == Family::Bodies ? code : family == Family::Events ? uint16_t{0x0a} : uint16_t{0x1d}, 0, 0, 0, 0, 1};
        const void *body = family == Family::Bodies ? built : family == Family::Events ? static_cast<const void *>(&list) : &method;
        EncodeOutput out{nullptr, 0};
        if (TROV_EncodeReply(&info, body, &out) != 0) return;
        const PacketCursor c{out.data, out.length};
        const TrovResult r = TROV_DecodeFU(&info, &decoded, &c, nullptr);
        trovFree(out.data);
        if (r != 0 || decoded.record == nullptr) return;
        record = family == Family::Bodies  ? decoded.record
                 : family == Family::Events ? static_cast<ShortEventListBody *>(decoded.record)->entries[0].body
                                            : static_cast<MethodBody *>(decoded.record)->params;
    }
    ~ThroughTheCodec() {
        if (decoded.buffer != nullptr) trovFree(decoded.buffer->data);
        trovFree(decoded.record);
    }
};

class EveryLayout : public testing::TestWithParam<Family> {};

// Counts given at their count fields or with their data, elements or none,
// records at aligned or odd addresses: the walk reads back every value it
// was given, in order, and nothing else.
TEST_P(EveryLayout, ReadsBackWhatItBuilt) {
    struct Way {
        uint32_t elements;
        bool later, misaligned;
    };
    const std::vector<Case> cases = layoutsOf(GetParam());
    EXPECT_FALSE(cases.empty());
    for (const Case &c : cases)
        for (const Way way : {Way{2, false, false}, Way{2, true, true}, Way{0, false, true}, Way{0, true, false}}) {
            SCOPED_TRACE(c.name + ", " + std::to_string(way.elements) + " elements, counts " +
                         (way.later ? "later" : "now"));
            Sampler sampler(way.elements, way.later, way.misaligned, c.selector);
            // A typed value in a reserved slot comes back only when its type
            // reserves room, as 0x14 does (others: ReplyEncodeTest).
            if (std::any_of(c.layout.fields, c.layout.fields + c.layout.fieldCount,
                            [](const TrovFieldInfo &f) { return f.kindId == TROV_KIND_RESERVED_VALUE; }))
                sampler.dataType = 0x14;
            Recorder recorder;
            const Code code{c.of, nullptr, kVersion};
            if (c.of == Code::Of::Method) {
                const void *record = describe::buildRecord(c.layout, kVersion, c.request, sampler);
                ASSERT_NE(record, nullptr) << testing::PrintToString(sampler.given);
                describe::readRecord(c.layout, record, kVersion, c.request, recorder);
                // (The library takes records at their own alignment only.)
                if (!c.request && !way.misaligned && (GetParam() != Family::Bodies || c.layout.form == TROV_LAYOUT_FIELDS)) {
                    const ThroughTheCodec back(GetParam(), c.code, record);
                    ASSERT_NE(back.record, nullptr) << "the reply does not come back";
                    Recorder decoded;
                    describe::readRecord(c.layout, back.record, kVersion, false, decoded);
                    EXPECT_EQ(decoded.found, sampler.given) << "after the codec";
                }
            } else {
                const void *value = describe::buildValue(code, c.code, sampler);
                ASSERT_NE(value, nullptr) << testing::PrintToString(sampler.given);
                describe::readValue(code, c.code, value, recorder);
            }
            EXPECT_EQ(recorder.found, sampler.given);
        }
}

std::string familyName(const testing::TestParamInfo<Family> &info) {
    static const char *const names[] = {"Bodies", "Methods", "Events", "Attributes", "DataTypes"};
    return names[static_cast<int>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(Described, EveryLayout,
                         testing::Values(Family::Bodies, Family::Methods, Family::Events, Family::Attributes,
                                         Family::DataTypes),
                         familyName);

// ---------------------------------------------------------------- bounds

// A value whose attribute list holds the value itself is read to the bound.
// (Building stops at it too: EncodeRoundTripTest's nested_too_deep.)
TEST(RecordWalkBounds, ReadingACycleStopsAtTheDepthBound) {
    Sampler sampler(1, false, false, 1);
    auto *value = static_cast<AttributeArrayHeader *>(
        describe::buildValue({Code::Of::Attribute, nullptr, kVersion}, 0x08CC, sampler));
    ASSERT_NE(value, nullptr);
    const auto *list = static_cast<const AttributeList *>(value->elements);
    ASSERT_EQ(list->count, 1);
    list->entries[0].id = 0x08CC;
    list->entries[0].value = value;
    Recorder recorder;
    describe::readValue({Code::Of::Attribute, nullptr, kVersion}, 0x08CC, value, recorder);
    EXPECT_EQ(recorder.tooDeep, 1);
    EXPECT_EQ(recorder.records, 2 * describe::kMaxDepth); // each level: the element and its entry
}

// ---------------------------------------------------------------- at the codec

// Gives the values of one record from a list, in the order the walk asks.
class Given : public Sampler {
public:
    explicit Given(std::vector<uint32_t> values, std::vector<std::vector<uint8_t>> runs = {})
        : Sampler(0, false, false, 1), values_(std::move(values)), runs_(std::move(runs)) {}
    bool code(const Code &, uint32_t &value) override { return next(value); }
    bool scalar(const TrovFieldInfo &, unsigned, uint32_t &value) override { return next(value); }
    bool count(const Count &count, uint32_t &value) override { return count.announced || next(value); }
    bool bytes(const TrovFieldInfo &, describe::Text, uint8_t *out, size_t size) override {
        if (runs_.empty() || runs_.front().size() != size) return false;
        std::memcpy(out, runs_.front().data(), size);
        runs_.erase(runs_.begin());
        return true;
    }

private:
    bool next(uint32_t &value) {
        if (values_.empty()) return false;
        value = values_.front();
        values_.erase(values_.begin());
        return true;
    }
    std::vector<uint32_t> values_;
    std::vector<std::vector<uint8_t>> runs_;
};

// Records built from given values encode to bytes worked out by hand.
TEST(RecordWalkAtTheCodec, BuiltRecordsEncodeAsGiven) {
    using Bytes = std::vector<uint8_t>;
    const struct {
        const char *what;
        uint16_t code;
        std::vector<uint32_t> values;
        std::vector<Bytes> runs;
        Bytes body;
    } cases[] = {
        // Body 0x1a keeps its u8-counted string's length in two bytes: what
        // lies above the wire's byte is not part of the count.
        {"count", 0x1a, {0xEE03}, {{'a', 'b', 'c'}}, {0x03, 'a', 'b', 'c'}},
        // Attribute 0x2CED (TrovOptionSet) in body 0x12: id, setId, count, then
        // kind and length per option (kind 0: no value), held as the library's
        // option decoder holds them.
        {"options", 0x12, {0x2CED, 0x5A, 5, 1, 4, 3, 2, 5, 6, 7, 2, 0, 0},
         {{1, 2, 3, 4}, {0x0A, 0x0B}, {0x11, 0x12, 0x13, 0x14, 0x15, 0x16}, {0xAA, 0xBB}},
         {0x2C, 0xED, 0x5A, 0x05, 0x01, 0x04, 1, 2, 3, 4, 0x03, 0x02, 0x0A, 0x0B, 0x05, 0x06, 0x11, 0x12, 0x13, 0x14,
          0x15, 0x16, 0x07, 0x02, 0xAA, 0xBB, 0x00, 0x00}},
        // Attribute 0x32CB (TrovRoute) without hops: the count 0 alone travels.
        {"empty array", 0x12, {0x32CB, 0}, {}, {0x32, 0xCB, 0x00}},
        // Body 0x1d: the method code picks the parameters, raw bytes for
        // 0x2000 (their count kept behind the pointer), a one-byte record for 0x67.
        {"raw parameters", 0x1d, {0x81A2C3E4u, 0x2000, 3}, {{0xAA, 0xBB, 0xCC}},
         {0x81, 0xA2, 0xC3, 0xE4, 0x20, 0x00, 0xAA, 0xBB, 0xCC}},
        {"method record", 0x1d, {5, 0x67, 0x5A}, {}, {0, 0, 0, 5, 0x00, 0x67, 0x5A}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Given given(c.values, c.runs);
        TrovLayoutInfo layout{};
        ASSERT_EQ(TROV_DescribeBody(c.code, kVersion, 1, &layout), 0u);
        const void *record = describe::buildRecord(layout, kVersion, true, given);
        ASSERT_NE(record, nullptr);
        HeaderInfo info{TROV_PROTOCOL_MARK, kVersion, TROV_FLAG_EXTENSION16, c.code, 0, 0, 0, 0, 1};
        EncodeOutput out{nullptr, 0};
        ASSERT_EQ(TROV_EncodeFU(&info, record, &out), 0u);
        EXPECT_EQ(Bytes(out.data + TROV_HEADER_LENGTH, out.data + out.length), c.body);
        trovFree(out.data);
    }
}

} // namespace
