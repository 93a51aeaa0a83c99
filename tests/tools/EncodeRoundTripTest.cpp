// `trov encode` and the request reader, driven by the layout description:
// every request layout gets a sample record built by the walk, which must
// encode; the reader must find the values built in the bytes (so the
// encoder wrote each where the layout says) and the JSON printer and
// builder must give the same bytes again. (Replies: every layout and event
// built by the walk and through the codecs, RecordWalkTest; encoded back at
// every count, the extent sweep; as JSON, the examples decoded and encoded back.)
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "DecodeCommand.h"
#include "RecordSampler.h"
#include "EncodeCommand.h"
#include "PacketInput.h"
#include "RecordBuild.h"
#include "RecordJson.h"
#include "RequestReader.h"
#include "TrovLayout.h"
#include "TrovVersion.h"
#include "api/Initialised.h"

namespace {

using trov::Json;

constexpr uint8_t kVersion = TROV_PROTOCOL_VERSION;

struct Case {
    uint16_t code;
    int method;       // inside body 0x1d, or -1
    int attribute;    // the attribute body's identifier, or -1
    int selector = 0; // a selector value's variant
};

std::string caseName(const testing::TestParamInfo<Case> &info) {
    char name[48];
    std::snprintf(name, sizeof name, "body%04x", info.param.code);
    std::string s = name;
    if (info.param.method >= 0) s += "_method" + std::to_string(info.param.method);
    if (info.param.attribute >= 0) s += "_attribute" + std::to_string(info.param.attribute);
    if (info.param.selector > 0) s += "_selector" + std::to_string(info.param.selector);
    return s;
}

bool hasKind(const TrovLayoutInfo &l, uint8_t kind) {
    for (uint16_t i = 0; i < l.fieldCount; ++i)
        if (l.fields[i].kindId == kind) return true;
    return false;
}

// Representative attributes: the first identifier for every element kind in
// each value form (scalar form only, array form), of every structured record
// and of the selector type.
std::vector<uint16_t> representativeAttributes() {
    std::vector<uint16_t> ids;
    bool seen[2][32] = {};
    std::set<const TrovFieldInfo *> structures;
    for (unsigned id = 0; id < 0x10000; ++id) {
        TrovLayoutInfo l{};
        if (TROV_DescribeAttribute(static_cast<uint16_t>(id), kVersion, &l) != 0) continue;
        if (l.form == TROV_LAYOUT_STRUCTURE || l.form == TROV_LAYOUT_SELECTOR) {
            if (structures.insert(l.fields).second) ids.push_back(static_cast<uint16_t>(id));
            continue;
        }
        bool fresh = false;
        for (uint16_t i = 0; i < l.fieldCount; ++i) {
            bool &s = seen[l.arrayCountBytes != 0][l.fields[i].kindId & 31];
            fresh = fresh || !s;
            s = true;
        }
        if (fresh) ids.push_back(static_cast<uint16_t>(id));
    }
    return ids;
}

std::vector<Case> allCases() {
    TROV_InitCoder();
    std::vector<Case> cases;
    std::vector<uint16_t> attributeBodies;
    for (unsigned code = 0; code < 0x10000; ++code) {
        TrovLayoutInfo l{};
        if (TROV_DescribeBody(static_cast<uint16_t>(code), kVersion, 1, &l) != 0) continue;
        if (l.form == TROV_LAYOUT_METHOD_CALL) {
            for (unsigned m = 0; m <= 0x2000; ++m) {
                TrovLayoutInfo p{};
                if (TROV_DescribeMethod(static_cast<uint16_t>(m), kVersion, 1, &p) == 0)
                    cases.push_back({static_cast<uint16_t>(code), static_cast<int>(m), -1});
            }
        } else if (hasKind(l, TROV_KIND_ATTRIBUTE)) {
            cases.push_back({static_cast<uint16_t>(code), -1, plainAttribute()});
            attributeBodies.push_back(static_cast<uint16_t>(code));
        } else {
            cases.push_back({static_cast<uint16_t>(code), -1, -1});
        }
    }
    if (!attributeBodies.empty())
        for (uint16_t id : representativeAttributes()) {
            TrovLayoutInfo l{};
            TROV_DescribeAttribute(id, kVersion, &l);
            if (l.form == TROV_LAYOUT_SELECTOR) {
                for (int selector = 1; selector <= 4; ++selector)
                    cases.push_back({attributeBodies.front(), -1, id, selector});
            } else if (id != plainAttribute()) {
                cases.push_back({attributeBodies.front(), -1, id});
            }
        }
    return cases;
}

Json header(uint16_t code) {
    return {{"mark", TROV_PROTOCOL_MARK}, {"version", kVersion}, {"flags", 1},     {"code", code},
            {"value4", 0xBEEF},           {"value6", 0x01020304},  {"value7", 0xF0E0D0C0u}, {"extension", 1}};
}

std::vector<uint8_t> encodeRecord(const Json &head, const void *record) {
    HeaderInfo info{};
    trov::JsonError error;
    EXPECT_TRUE(trov::jsonToHeader(head, "/header", info, error)) << error.message;
    EncodeOutput output{nullptr, 0};
    const TrovResult result = TROV_EncodeFU(&info, record, &output);
    EXPECT_EQ(result, 0u) << TROV_ResultName(result);
    std::vector<uint8_t> bytes(output.data, output.data + (result == 0 ? output.length : 0));
    trovFree(output.data);
    return bytes;
}

class EncodeRoundTrip : public testing::TestWithParam<Case> {};

TEST_P(EncodeRoundTrip, EncodesReadsBackAndReencodes) {
    const Case c = GetParam();
    TrovLayoutInfo layout{}, params{};
    ASSERT_EQ(TROV_DescribeBody(c.code, kVersion, 1, &layout), 0u);
    if (c.method >= 0) {
        ASSERT_EQ(TROV_DescribeMethod(static_cast<uint16_t>(c.method), kVersion, 1, &params), 0u);
    }
    walktest::Sampler sampler(2, false, false, static_cast<uint8_t>(c.selector));
    sampler.method = static_cast<uint16_t>(c.method < 0 ? 0 : c.method);
    sampler.attribute = static_cast<uint16_t>(c.attribute < 0 ? 0 : c.attribute);
    const void *built = trov::describe::buildRecord(layout, kVersion, true, sampler);
    ASSERT_NE(built, nullptr) << testing::PrintToString(sampler.given);
    const Json head = header(c.code);
    std::vector<uint8_t> bytes1 = encodeRecord(head, built);
    ASSERT_GE(bytes1.size(), TROV_HEADER_LENGTH);
    const size_t bodySize = bytes1.size() - TROV_HEADER_LENGTH;
    EXPECT_EQ(size_t{bytes1[8]} << 8 | bytes1[9], bodySize);
    const uint8_t *body = bytes1.data() + TROV_HEADER_LENGTH;

    // Read back by the layout alone: the values built, which encode to the
    // same bytes. (paramsLength is the reader's own figure; the encoder
    // ignores it.)
    trov::RecordArena arena;
    const void *record = nullptr;
    size_t stoppedAt = 0;
    ASSERT_EQ(trov::readRequestBody(layout, kVersion, body, bodySize, arena, record, stoppedAt), 0u)
        << "stopped at " << stoppedAt;
    Json printed = trov::recordToJson(layout, record, kVersion, true), given = trov::recordToJson(layout, built, kVersion, true);
    printed.erase("paramsLength");
    given.erase("paramsLength");
    EXPECT_EQ(printed, given);
    EXPECT_EQ(encodeRecord(head, record), bytes1);

    // Every shorter body fails cleanly, where the layout has an end of its
    // own (a trailing block or raw parameters take whatever is there), and
    // any extra byte is refused.
    const bool open = hasKind(layout, TROV_KIND_REST) || (c.method >= 0 && params.form == TROV_LAYOUT_RAW);
    if (!open) {
        for (size_t cut = 0; cut < bodySize; ++cut) {
            const void *untouched = &cut;
            const void *out = untouched;
            EXPECT_NE(trov::readRequestBody(layout, kVersion, body, cut, arena, out, stoppedAt), 0u) << cut;
            EXPECT_EQ(out, untouched);
            EXPECT_LE(stoppedAt, cut);
        }
        std::vector<uint8_t> longer(body, body + bodySize);
        longer.push_back(0);
        const void *out = nullptr;
        EXPECT_EQ(trov::readRequestBody(layout, kVersion, longer.data(), longer.size(), arena, out, stoppedAt),
                  TROV_RESULT_SHORT_INPUT);
        EXPECT_EQ(stoppedAt, bodySize);
    }

    // As JSON, built again: the same bytes.
    std::vector<uint8_t> bytes2;
    trov::JsonError error;
    ASSERT_TRUE(trov::encodePacket({{"header", head}, {"body", {{"fields", printed}}}}, "", bytes2, error))
        << error.path << ": " << error.message << "\n"
        << printed.dump();
    EXPECT_EQ(bytes2, bytes1);
}

INSTANTIATE_TEST_SUITE_P(EveryRequestLayout, EncodeRoundTrip, testing::ValuesIn(allCases()), caseName);

// The bytes of an example file, as the tool's hex reader finds them.
std::string exampleBytes(const std::filesystem::path &file) {
    std::string error, bytes;
    const auto input = trov::PacketInput::open(file.string(), trov::InputFormat::Detect, error);
    for (auto item = input->next(); item.kind != trov::PacketItem::Kind::End; item = input->next())
        bytes.append(item.bytes.begin(), item.bytes.end());
    return bytes;
}

// `trov decode X.hex | trov encode` gives X back for every example whose
// packets all decode (with the options it is decoded with) and leave no body
// bytes unread (no field holds those).
TEST(ExampleRoundTrip, DecodeThenEncodeGivesTheExample) {
    int checked = 0;
    for (const auto &entry : std::filesystem::directory_iterator(std::filesystem::path(TROV_SOURCE_DIR) / "examples")) {
        if (entry.path().extension() != ".hex") continue;
        std::string options;
        std::getline(std::ifstream(entry.path()), options);
        trov::DecodeOptions decode;
        decode.request = options.rfind("# trov decode --request", 0) == 0;
        decode.style = trov::OutputStyle::Ndjson;
        std::istringstream none;
        std::ostringstream json, hex, err;
        if (trov::runDecode({entry.path().string()}, decode, none, json, err) != 0) continue; // not every packet decodes
        if (json.str().find("\"unread\":") != std::string::npos) continue;
        ASSERT_EQ(trov::encodeJsonText(json.str(), "t", true, hex, err), 0) << entry.path() << ": " << err.str();
        EXPECT_EQ(hex.str(), exampleBytes(entry.path())) << entry.path();
        ++checked;
    }
    EXPECT_GE(checked, 10);
}

// ---------------------------------------------------------------- errors

struct ErrorCase {
    const char *what; // the test's name
    std::string input;
    int exit;
    std::string message; // part of what stderr says
};

std::string big(size_t bytes) { return std::string(2 * bytes, 'a'); }

// Attribute 0x08cc's value is a list of attributes; `levels` of them inside
// each other.
std::string nested(int levels) {
    std::string value = "[]";
    for (int i = 0; i < levels; ++i) value = R"([{"attributes0":[{"id":2252,"value":)" + value + "}]}]";
    return R"({"header":{"code":18},"body":{"fields":{"id":{"id":2252,"value":)" + value + "}}}}";
}

// Where the innermost value of nested(levels) lies.
std::string nestedPath(int levels) {
    std::string path = "t: /body/fields/id/value";
    for (int i = 0; i < levels; ++i) path += "/0/attributes0/0/value";
    return path;
}

std::vector<ErrorCase> errorCases() {
    const std::string u32 = R"({"header":{"code":11},"body":{"fields":{"value0":)";
    return {
        {"syntax", R"({"header": {"code": 11},)", 2, "t:1:25: syntax error: unexpected end of input; expected string literal"},
        {"not_a_packet", "42", 2, "expected a packet object"},
        {"missing_header", R"({"body":{"fields":{}}})", 2, "t: /header: missing"},
        {"missing_code", R"({"header":{},"body":{}})", 2, "t: /header/code: missing"},
        {"unknown_header_field", R"({"header":{"code":11,"colour":1},"body":{}})", 2, "/header/colour: no such header field"},
        {"unknown_code", R"({"header":{"code":10},"body":{}})", 2, "t: /header/code: no request layout for body code 0x000a at version 16 (NO_BODY_CODEC)"},
        {"bad_direction", R"({"direction":"sideways","header":{"code":11},"body":{}})", 2, "t: /direction: expected \"request\" or \"reply\""},
        {"unknown_event", R"({"direction":"reply","header":{"code":10},"body":{"fields":{"value0":1,"events":[{"code":1,"field2":0,"fields":{}}]}}})", 2, "/body/fields/events/0/code: unknown event 0x0001 (NO_EVENT_CODEC)"},
        {"events_not_a_list", R"({"direction":"reply","header":{"code":10},"body":{"fields":{"value0":1,"events":{}}}})", 2, "/body/fields/events: expected an array of {\"code\": N"},
        {"wrong_type", u32 + R"("abc"}}})", 2, "t: /body/fields/value0: expected an integer 0..4294967295"},
        {"negative", u32 + "-1}}}", 2, "/body/fields/value0: expected an integer 0..4294967295"},
        {"fraction", u32 + "1.5}}}", 2, "/body/fields/value0: expected an integer 0..4294967295"},
        {"too_large", u32 + "4294967296}}}", 2, "/body/fields/value0: expected an integer 0..4294967295"},
        {"u8_range", R"({"header":{"code":19},"body":{"fields":{"value0":256}}})", 2, "/body/fields/value0: expected an integer 0..255"},
        {"header_range", R"({"header":{"code":11,"version":"0x100"},"body":{}})", 2, "/header/version: expected an integer 0..255"},
        {"missing_field", R"({"header":{"code":11},"body":{"fields":{}}})", 2, "/body/fields/value0: missing"},
        {"unknown_field", u32 + R"(1,"value9":2}}})", 2, "/body/fields/value9: no such field in U32Body (value0)"},
        {"odd_hex", R"({"header":{"code":26},"body":{"fields":{"string0":"abc"}}})", 2, "/body/fields/string0: expected a hex string of even length"},
        {"not_hex", R"({"header":{"code":26},"body":{"fields":{"string0":"zz"}}})", 2, "/body/fields/string0: expected a hex string, found 'zz'"},
        {"block_too_wide", R"({"header":{"code":82},"body":{"fields":{"value0":1,"bytes1":")" + big(13) + R"("}}})", 2, "/body/fields/bytes1: expected at most 12 bytes, got 13"},
        {"string_too_long", R"({"header":{"code":26},"body":{"fields":{"string0":")" + big(256) + R"("}}})", 2, "/body/fields/string0: expected at most 255 bytes, got 256"},
        {"array_too_long", R"({"header":{"code":29},"body":{"fields":{"value0":1,"method":133,"params":{"value0":1,"array1":[)" + [] { std::string s = "1"; for (int i = 0; i < 255; ++i) s += ",1"; return s; }() + "]}}}}", 2, "/body/fields/params/array1: expected at most 255 elements, got 256"},
        {"unknown_method", R"({"header":{"code":29},"body":{"fields":{"value0":1,"method":1,"params":{}}}})", 2, "/body/fields/method: unknown method 0x0001 (NO_METHOD_CODEC)"},
        {"unknown_attribute", R"({"header":{"code":18},"body":{"fields":{"id":{"id":1,"value":[]}}}})", 2, "/body/fields/id/id: unknown attribute 0x0001 (NO_ATTRIBUTE_CODEC)"},
        {"structure_member", R"({"header":{"code":18},"body":{"fields":{"id":{"id":"0x36b2","value":{"profileId":1,"name":"p","version":{"major":1},"ranges":[]}}}}})", 2, "/body/fields/id/value/version/minor: missing"},
        {"structure_array", R"({"header":{"code":18},"body":{"fields":{"id":{"id":"0x32cb","value":{"hops":[{"kind":1,"node":2,"name":"x","colour":3}]}}}}})", 2, "/body/fields/id/value/hops/0/colour: no such field"},
        {"structure_entry", R"({"header":{"code":18},"body":{"fields":{"id":{"id":"0x2cf1","value":{"tag":1,"attribute":{"id":1,"value":[]}}}}}})", 2, "/body/fields/id/value/attribute/id: unknown attribute 0x0001 at version 0 (NO_ATTRIBUTE_CODEC)"},
        {"selector_value", R"({"header":{"code":18},"body":{"fields":{"id":{"id":"0x013c","value":{"selector":5}}}}})", 2, "/body/fields/id/value/selector: no variant has selector 5"},
        // The build walk stops at its depth bound: the innermost of 32 levels.
        {"nested_too_deep", nested(32), 2, nestedPath(32) + ": nested deeper than 32 levels"},
        {"body_too_long", R"({"header":{"code":117},"body":{"fields":{"value0":1,"string1":")" + big(40000) + R"(","string2":")" + big(30000) + R"("}}})", 2, "/body: encoding failed: SHORT_INPUT"},
        {"second_of_an_array", "[" + u32 + "1}}}," + R"({"header":{"code":10}}])", 2, "t: /1/header/code: no request layout"},
        {"second_line", u32 + "1}}}\n" + u32 + "true}}}\n", 2, "t:2: /body/fields/value0: expected an integer"},
        {"bad_line", u32 + "1}}}\n{\"header\n", 2, "t:2:9: syntax error: invalid string: missing closing quote near '\"header'"},
        {"empty", " \n", 2, "t: no JSON in the input"},
        {"not_decoded", R"([{"offset":0,"trailing":3,"body":{"status":"failed"}},{"offset":0,"body":{"status":"skipped","reason":"x"}}])", 0, "t: /1: skipped: its body was not decoded (status \"skipped\")"},
    };
}

class EncodeErrors : public testing::TestWithParam<ErrorCase> {};

TEST_P(EncodeErrors, NameThePathAndExit) {
    const ErrorCase &c = GetParam();
    std::ostringstream out, err;
    EXPECT_EQ(trov::encodeJsonText(c.input, "t", false, out, err), c.exit) << err.str();
    EXPECT_NE(err.str().find(c.message), std::string::npos) << err.str();
}

INSTANTIATE_TEST_SUITE_P(Table, EncodeErrors, testing::ValuesIn(errorCases()),
                         [](const testing::TestParamInfo<ErrorCase> &info) { return std::string(info.param.what); });

// A packet worked out by hand: body 0x0b's u32 123456 behind a header with a
// 16-bit extension, given with "0x" strings, as hex text. (Raw bytes: the
// examples' round trip above.)
TEST(EncodeOutput, HexLines) {
    const std::string input = R"({"header":{"mark":"0xa7e5","version":16,"flags":1,"code":"0x0b","value4":0,)"
                              R"("bodyLength":999,"value6":0,"value7":0,"extension":1},"unitType":1,)"
                              R"("body":{"status":"decoded","layout":"U32Body","fields":{"value0":123456}}})";
    std::ostringstream hex, err;
    ASSERT_EQ(trov::encodeJsonText(input + "\n" + input + "\n", "t", false, hex, err), 0) << err.str();
    const std::string packet = "a7 e5 10 01 00 0b 00 00 00 04 00 00 00 00 00 00\n00 00 00 01 00 01 e2 40\n";
    EXPECT_EQ(hex.str(), packet + "\n" + packet);
}

// A reply's event attribute without a codec travels as the bytes given:
// event 0x12C, attribute 0x0001 (no codec at version 0), worked out by hand.
TEST(EncodeOutput, EventAttributeWithoutACodecIsItsBytes) {
    const std::string input = R"({"direction":"reply","header":{"code":10},"body":{"fields":{"value0":1,"events":[)"
                              R"({"code":300,"field2":7,"fields":{"attributes0":[{"id":1,"value":{"hex":"0a0b"}}]}}]}}})";
    std::ostringstream raw, err;
    ASSERT_EQ(trov::encodeJsonText(input, "t", true, raw, err), 0) << err.str();
    const unsigned char body[] = {0, 0, 0, 1, 1, 0x01, 0x2C, 7, 0, 1, 0, 1, 0, 2, 0x0A, 0x0B};
    ASSERT_EQ(raw.str().size(), TROV_HEADER_LENGTH + sizeof body);
    EXPECT_EQ(raw.str().substr(TROV_HEADER_LENGTH), std::string(reinterpret_cast<const char *>(body), sizeof body));
}

TEST(EncodeOutput, UnreadableInputs) {
    std::ostringstream out, err;
    EXPECT_EQ(trov::runEncode("/nonexistent/trov-input.json", false, out, err), 2);
    EXPECT_NE(err.str().find("cannot open"), std::string::npos);
    EXPECT_EQ(trov::runEncode(std::filesystem::temp_directory_path().string(), false, out, err), 2);
    EXPECT_NE(err.str().find("is a directory"), std::string::npos);
}

// Request bodies the reader refuses, each with where it stops.
TEST(RequestReader, RefusesWhatTheLayoutCannotHold) {
    struct Bad {
        uint16_t code;
        std::vector<uint8_t> body;
        TrovResult result;
        size_t stoppedAt;
    };
    const Bad cases[] = {
        {0x12, {0x00, 0x01, 0x00}, TROV_RESULT_NO_ATTRIBUTE_CODEC, 0},       // unknown identifier
        {0x12, {0x29, 0x72, 0x01, 0x00, 0x02, 0x05, 'a'}, TROV_RESULT_SHORT_INPUT, 6}, // structure's octets cut
        {0x12, {0x32, 0xCB, 0x02, 0x01, 0x00, 0x02, 0x00}, TROV_RESULT_SHORT_INPUT, 3}, // second hop missing
        {0x12, {0x01, 0x3C, 0x09}, TROV_RESULT_BAD_VALUE, 2},                // no variant 9
        {0x1d, {0, 0, 0, 1, 0x00, 0x01}, TROV_RESULT_NO_METHOD_CODEC, 4},    // unknown method
        {0x1a, {0x05, 'a', 'b'}, TROV_RESULT_SHORT_INPUT, 0},                // string past the end
        {0x1d, {0, 0, 0, 1, 0x00, 0x85, 0, 7, 0x03, 0, 1}, TROV_RESULT_SHORT_INPUT, 8}, // u16s past the end
    };
    for (const Bad &c : cases) {
        TrovLayoutInfo layout{};
        ASSERT_EQ(TROV_DescribeBody(c.code, kVersion, 1, &layout), 0u);
        trov::RecordArena arena;
        const void *record = nullptr;
        size_t stoppedAt = 99;
        EXPECT_EQ(trov::readRequestBody(layout, kVersion, c.body.data(), c.body.size(), arena, record, stoppedAt),
                  c.result)
            << std::hex << c.code;
        EXPECT_EQ(stoppedAt, c.stoppedAt) << std::hex << c.code;
        EXPECT_EQ(record, nullptr);
    }
}

} // namespace
