// `trov decode` run in-process: what each kind of bad input is reported as,
// and with which exit code; and the printer's guarantee of unique JSON keys
// over every layout the library describes. (Whole outputs, a truncated
// header, a wrong mark, a partial list, a body failed at its field, unread
// bytes and a stream among them: the golden examples.)
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DecodeCommand.h"
#include "OutputFile.h"
#include "RecordJson.h"
#include "Tables.h"
#include "TrovCodec.h"
#include "TrovLayout.h"

#ifndef _WIN32
#include <unistd.h>
#endif

namespace {

using trov::DecodeOptions;
using trov::InputFormat;
using trov::Json;
using trov::OutputStyle;

// A reply of body 0x0b (a u32) on unit type 1, and a skipped one (body 0x0a on
// unit type 4), as hex text.
const std::string kU32Reply = "A7E5 1001 000B 0000 0004 00000000 00000000 0001 0001E240\n";
const std::string kSkipped = "A7E5 1001 000A 0000 0000 00000000 00000000 0004\n";
// A short event list (body 0x0a) of two events: 0x04 (a u8, "hi"), then 0x0001,
// which no event has.
const std::string kPartialList = "A7E5 1001 000A 0000 0010 00000000 00000000 0001 00000001 02 0004 07 09 02 6869 0001 07 AA\n";

struct Case {
    const char *name;
    std::string input;                // standard input
    std::vector<std::string> files;   // "-" when empty
    InputFormat format;
    OutputStyle style;
    int exitCode;
    std::vector<std::string> outHas;  // pieces the output must contain
    std::string errHas;               // a piece of the error output ("" none expected)
    bool request = false;             // --request
    uint64_t count = 0, skip = 0;     // -c, --skip
    bool progress = false;            // a progress line (shown at once, on every packet)
};

std::string sourcePath(const char *relative) { return std::string(TROV_SOURCE_DIR) + "/" + relative; }

std::vector<Case> cases() {
    const std::string examples = sourcePath("examples");
    return {
        {"EmptyInputIsAnEmptyArray", "", {}, InputFormat::Raw, OutputStyle::JsonArray, 0, {"[\n]\n"}, ""},
        // A header with the mark is that packet's, even if the decoder refuses it.
        {"UnknownVersionFailsTheHeader", "A7E5 77 00 0005 0000 0000 0000 0000 0000 0000 0000", {}, InputFormat::Hex,
         OutputStyle::Ndjson, 1, {"\"name\":\"NO_HEADER_CODEC\",", "\"offset\":0}}"}, ""},
        {"UnknownAttributeIsNamed", "A7E5 1001 0012 0000 0003 00000000 00000000 0001 0001 00", {}, InputFormat::Hex,
         OutputStyle::Ndjson, 1, {"\"name\":\"NO_ATTRIBUTE_CODEC\"", "\"offset\":20,\"attribute\":1,\"field\":\"id\"}"},
         ""},
        {"UnknownMethodIsNamed", "A7E5 1001 001D 0000 0006 00000000 00000000 0001 00000001 0001", {}, InputFormat::Hex,
         OutputStyle::Ndjson, 1, {"\"name\":\"NO_METHOD_CODEC\"", "\"offset\":24,\"method\":1}"}, ""},
        // An event list keeps the events before the failing one (the JSON:
        // examples/partial-event-list).
        {"TextViewShowsWhereAListStopped", kPartialList, {}, InputFormat::Hex, OutputStyle::Text, 1,
         {"  body: ShortEventListBody, partial: stopped at offset 32, event 1 (code 0x0001): NO_EVENT_CODEC", "    count: 1\n"},
         ""},
        {"TrailingPartialPacketAfterAGoodOne", kU32Reply + "A7E5 1001 000B", {}, InputFormat::Hex,
         OutputStyle::Ndjson, 1,
         {"\"fields\":{\"value0\":123456}", "{\"offset\":24,\"trailing\":6,", "\"offset\":24}},\"hex\":\"a7e51001000b\"}"},
         ""},
        // Codes and identifiers in hex: the header's body code, event codes,
        // attribute identifiers, data types.
        {"TextViewShowsCodesInHex", "", {examples + "/event-kinds-reply.hex", examples + "/short-event-list-reply.hex"},
         InputFormat::Detect, OutputStyle::Text, 0,
         {"event-kinds-reply.hex, packet at offset 0", ", code 0x000a,", "        code: 0x009a\n", "id: 0x00cb\n",
          "type: 0x15\n"},
         ""},
        // Items that are not packets have a line of their own.
        {"TextViewShowsSkippedAndTrailingBytes", "0102 03" + kU32Reply + "A7E5 1001", {}, InputFormat::Hex,
         OutputStyle::Text, 1,
         {"bytes at offset 0: 3 bytes skipped, no packet starts there\n  hex: 010203\n",
          "packet at offset 3, 24 bytes\n", "  body: U32Body\n    value0: 123456\n",
          "packet at offset 27: 4 trailing bytes\n  body: failed at offset 27: SHORT_INPUT"},
         ""},
        {"BadHexNamesLineAndColumn", "A7E5\nA7zz\n", {}, InputFormat::Hex, OutputStyle::Ndjson, 2, {}, "-:2:3"},
        {"MissingFileIsAnInputError", "", {examples + "/no-such-file.hex"}, InputFormat::Detect,
         OutputStyle::JsonArray, 2, {"[\n]\n"}, "trov decode: cannot open " + examples + "/no-such-file.hex: "},
        {"DirectoryIsAnInputError", "", {examples}, InputFormat::Detect, OutputStyle::JsonArray, 2, {}, "trov decode: " + examples + " is a directory\n"},
        // Requests: a body code without a request layout, and a list whose
        // count (u8 3 at body offset 7) promises more u16 than follow.
        {"RequestOfADecodeOnlyBody", "A7E5 1001 000A 0000 0000 00000000 00000000 0001", {}, InputFormat::Hex,
         OutputStyle::Ndjson, 1, {"\"name\":\"NO_BODY_CODEC\"", "\"offset\":20}"}, "", true},
        {"ShortRequestStopsAtTheItem", "A7E5 1001 001D 0000 000A 00000000 00000000 0001 00000011 0095 05 03 0001", {},
         InputFormat::Hex, OutputStyle::Ndjson, 1, {"\"name\":\"SHORT_INPUT\"", "\"offset\":27}"}, "", true},
        {"SeveralFilesNameEachPacket", kU32Reply, {"-", examples + "/wrong-mark.hex"}, InputFormat::Detect,
         OutputStyle::Ndjson, 1, {"{\"file\":\"-\",\"offset\":0,", "wrong-mark.hex\",\"offset\":0,"}, ""},
        // -c and --skip count objects, failed ones too; what is skipped is
        // not decoded and does not count towards the exit code.
        {"CountStopsAfterNPackets", kU32Reply + kU32Reply + "A7", {}, InputFormat::Hex, OutputStyle::Ndjson, 0,
         {"{\"offset\":24,"}, "", false, 2},
        {"SkipDropsTheFirstPackets", "A7E6 1001" + kU32Reply + kSkipped, {}, InputFormat::Hex, OutputStyle::Ndjson, 0,
         {"{\"offset\":28,\"length\":20,"}, "", false, 0, 2},
        {"ProgressLineIsErasedAtTheEnd", kU32Reply + kU32Reply, {}, InputFormat::Hex, OutputStyle::Ndjson, 0, {},
         "\rtrov decode: 48 bytes read, 2 packets", false, 0, 0, true},
    };
}

class DecodeCommandTest : public testing::TestWithParam<Case> {};

TEST_P(DecodeCommandTest, ReportsAndExits) {
    const Case &c = GetParam();
    std::istringstream in(c.input);
    std::ostringstream out, err;
    DecodeOptions options;
    options.format = c.format;
    options.style = c.style;
    options.request = c.request;
    options.count = c.count;
    options.skip = c.skip;
    options.progress = c.progress;
    options.progressAfter = options.progressEvery = std::chrono::milliseconds(0);
    const int code = trov::runDecode(c.files, options, in, out, err);
    EXPECT_EQ(code, c.exitCode) << out.str() << err.str();
    for (const std::string &piece : c.outHas)
        EXPECT_NE(out.str().find(piece), std::string::npos) << piece << "\n" << out.str();
    if (c.errHas.empty()) {
        EXPECT_EQ(err.str(), "");
    } else {
        EXPECT_NE(err.str().find(c.errHas), std::string::npos) << err.str();
    }
    if (c.progress) {
        const std::string e = err.str();
        EXPECT_EQ(e.substr(e.size() - 1), "\r") << e; // the line is erased
    }
    if (c.count != 0) {
        EXPECT_EQ(out.str().find("\"offset\":" + std::to_string(24 * c.count)), std::string::npos) << out.str();
    }
    // Every line of NDJSON is one whole packet object.
    if (c.style == OutputStyle::Ndjson) {
        std::istringstream lines(out.str());
        for (std::string line; std::getline(lines, line);) EXPECT_TRUE(Json::accept(line)) << line;
    }
    if (c.style == OutputStyle::JsonArray && c.exitCode != 2) {
        EXPECT_TRUE(Json::accept(out.str())) << out.str();
    }
}

INSTANTIATE_TEST_SUITE_P(Inputs, DecodeCommandTest, testing::ValuesIn(cases()),
                         [](const testing::TestParamInfo<Case> &info) { return std::string(info.param.name); });

// -o: the file is written as bytes (no line-end translation), and one that
// cannot be opened is refused with the reason.
TEST(DecodeCommand, OutputFile) {
    const std::string path = testing::TempDir() + "trov-output-file-test";
    std::string error;
    {
        auto file = trov::openOutput(path, error);
        ASSERT_NE(file, nullptr) << error;
        *file << "a\nb";
    }
    std::ifstream back(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(back), {}), "a\nb");
    std::remove(path.c_str());
    EXPECT_EQ(trov::openOutput(sourcePath("examples"), error), nullptr);
    EXPECT_NE(error.find("cannot write"), std::string::npos) << error;
}

#ifndef _WIN32
// Standard input that cannot be read (a directory, or closed: main holds a
// closed descriptor 0 open for writing only) is an input error, as the same
// source named as a FILE is, not an empty input.
TEST(DecodeCommand, UnreadableStandardInputIsAnInputError) {
    for (const char *source : {"/", "/dev/null"}) {
        SCOPED_TRACE(source);
        const int fd = ::open(source, std::string(source) == "/" ? O_RDONLY : O_WRONLY);
        ASSERT_GE(fd, 0);
        const int saved = dup(0);
        dup2(fd, 0);
        close(fd);
        std::ostringstream out, err;
        const int code = trov::runDecode({}, DecodeOptions{}, std::cin, out, err);
        dup2(saved, 0);
        close(saved);
        EXPECT_EQ(code, trov::kExitInputError);
        EXPECT_EQ(err.str().rfind("trov decode: cannot read -: ", 0), 0u) << err.str();
    }
}
#endif

// ordered_json keeps the last of two equal keys without a word, so a record
// printed from a layout with a repeated name would lose a field. Every
// described layout is checked, with the records it nests and, for a selector
// value, each variant's whole record, as `trov tables` lists them.
void expectUniqueNames(const Json &fields, const std::string &where) {
    std::set<std::string> names;
    for (const Json &f : fields) {
        EXPECT_TRUE(names.insert(f["name"].get<std::string>()).second) << where << " " << f["name"];
        if (f.contains("fields")) expectUniqueNames(f["fields"], where + "/" + f["name"].get<std::string>());
    }
}

TEST(RecordJson, EveryLayoutHasUniqueFieldNames) {
    const Json tables = trov::tablesJson();
    size_t layouts = 0, nested = 0, variants = 0;
    for (const char *family : {"bodies", "events", "methods", "attributes", "dataTypes"}) {
        for (const Json &row : tables[family]) {
            const std::string where = std::string(family) + " " + row["code"].dump();
            expectUniqueNames(row["fields"], where);
            for (const Json &f : row["fields"]) nested += f.contains("fields") ? 1 : 0;
            if (row.contains("variants"))
                for (const Json &v : row["variants"]) expectUniqueNames(v["fields"], where), ++variants;
            ++layouts;
        }
    }
    EXPECT_GT(layouts, 1000u);
    EXPECT_GT(nested, 0u);         // structured records list what they nest
    EXPECT_GE(variants, 4u);       // the selector value's four variants
}

// A record whose pointers are null behind zero counts prints empty values,
// and one with a null value pointer prints null, without reading through it.
TEST(RecordJson, NullPointersBehindEmptyCounts) {
    TROV_InitCoder();
    TrovLayoutInfo layout{};
    ASSERT_EQ(TROV_DescribeAttribute(0x0157, TROV_PROTOCOL_VERSION, &layout), 0u);
    alignas(16) uint8_t record[64] = {};
    record[0] = 7;
    const Json j = trov::recordToJson(layout, record, TROV_PROTOCOL_VERSION, false);
    EXPECT_EQ(j.dump(), R"({"value0":7,"value1":0,"string2":"","array3":[]})");

    ASSERT_EQ(TROV_DescribeBody(0x12, TROV_PROTOCOL_VERSION, 0, &layout), 0u);
    AttributeBody body{};
    body.id = 0x0090;
    EXPECT_EQ(trov::recordToJson(layout, &body, TROV_PROTOCOL_VERSION, false).dump(),
              R"({"id":{"id":144,"value":null}})");
}

} // namespace
