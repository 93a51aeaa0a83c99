// TROV_EncodeReply at the exported interface: the results of the errors,
// and the reads that cannot come back as they were. (Every reply layout,
// method reply and event built from its description, encoded and decoded
// back: RecordWalkTest; every reply decoded at counts 0 to 256 encoded back
// to its packet, allocated, into a buffer of exactly its length and refused
// one byte short: the extent sweep.)
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TrovCodec.h"
#include "TrovRecords.h"
#include "TrovReplyEncode.h"
#include "TrovVersion.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"

namespace {

using Bytes = std::vector<uint8_t>;
constexpr uint8_t kVersion = TROV_PROTOCOL_VERSION;

Bytes encodeReply(HeaderInfo info, const void *record, TrovResult expected = 0) {
    EncodeOutput out{nullptr, 0};
    const TrovResult r = TROV_EncodeReply(&info, record, &out);
    EXPECT_EQ(r, expected) << TROV_ResultName(r);
    Bytes bytes(out.data, out.data + (r == 0 ? out.length : 0));
    trovFree(out.data);
    return bytes;
}

// ---------------------------------------------------------------- results

TEST(ReplyEncode, Results) {
    U32Body u32{7};
    HeaderInfo info{TROV_PROTOCOL_MARK, kVersion, 1, 0x0b, 0, 0, 0, 0, 1};
    EncodeOutput out{nullptr, 0};
    EXPECT_EQ(TROV_EncodeReply(nullptr, &u32, &out), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_EncodeReply(&info, nullptr, &out), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_EncodeReply(&info, &u32, nullptr), TROV_RESULT_NULL_ARGUMENT);
    HeaderInfo wrongVersion = info;
    wrongVersion.version = 0x11;
    EXPECT_EQ(TROV_EncodeReply(&wrongVersion, &u32, &out), TROV_RESULT_NO_HEADER_CODEC);
    HeaderInfo noBody = info;
    noBody.code = 0x1e; // no row
    EXPECT_EQ(TROV_EncodeReply(&noBody, &u32, &out), TROV_RESULT_NO_BODY_CODEC);
    EXPECT_EQ(out.data, nullptr);

    // Body 0x0a, which no request encodes, is a reply: u32 and a u8 count.
    HeaderInfo shortList = info;
    shortList.code = 0x0a;
    const ShortEventListBody empty{0x01020304, 0, nullptr, {nullptr, 0, 0}};
    EXPECT_EQ(encodeReply(shortList, &empty), replyPacket(0x0a, {1, 2, 3, 4, 0}));

    // Entries missing behind a count, an event record missing, an unknown event code.
    EventBriefEntry unknown{0x01, 0, &u32};
    const ShortEventListBody missingEntries{0, 1, nullptr, {nullptr, 0, 0}};
    encodeReply(shortList, &missingEntries, TROV_RESULT_NULL_ARGUMENT);
    EventBriefEntry noRecord{0x13, 0, nullptr};
    const ShortEventListBody missingRecord{0, 1, &noRecord, {nullptr, 0, 0}};
    encodeReply(shortList, &missingRecord, TROV_RESULT_NULL_ARGUMENT);
    const ShortEventListBody unknownCode{0, 1, &unknown, {nullptr, 0, 0}};
    encodeReply(shortList, &unknownCode, TROV_RESULT_NO_EVENT_CODEC);
    // Event 0xC4's structure: a name counted but missing (1), more items
    // than a 16-bit size can state (5).
    static TrovEvent00C4Item items[0xFFFF];
    TrovEvent00C4 c4{};
    c4.body = &c4.data;
    c4.data.nameLength = 3;
    EventBriefEntry structure{0xC4, 0, &c4};
    const ShortEventListBody withStructure{0, 1, &structure, {nullptr, 0, 0}};
    encodeReply(shortList, &withStructure, TROV_RESULT_NULL_ARGUMENT);
    c4.data.nameLength = 0;
    c4.data.itemCount = 0xFFFF;
    c4.data.items = items;
    encodeReply(shortList, &withStructure, TROV_RESULT_SHORT_INPUT);

    // A method without a codec, and raw parameters of a method from 0x2000.
    HeaderInfo method = info;
    method.code = 0x1d;
    uint8_t raw[] = {9, 8, 7};
    const MethodBody unknownMethod{1, 0x0001, nullptr, 0, {nullptr, 0, 0}};
    encodeReply(method, &unknownMethod, TROV_RESULT_NO_METHOD_CODEC);
    const MethodBody rawMethod{1, 0x2000, raw, 3, {nullptr, 0, 0}};
    EXPECT_EQ(encodeReply(method, &rawMethod), replyPacket(0x1d, {0, 0, 0, 1, 0x20, 0x00, 9, 8, 7}));

    // A body the header cannot frame: 5, bodyLength holds the figure modulo 65536.
    static uint8_t big[0x10000];
    HeaderInfo block = info;
    block.code = 0x6d; // ByteBlockBody: u8, then the rest of the body
    const ByteBlockBody tooLong{1, {0xFFFF, big}, {nullptr, 0, 0}};
    encodeReply(block, &tooLong, TROV_RESULT_SHORT_INPUT);
}

// ---------------------------------------------------------------- what cannot come back

struct Quirk {
    const char *what;
    uint16_t code;
    Bytes body;
    Bytes again; // the body the decoded record encodes to
    TrovResult result = TROV_RESULT_OK;
};

std::vector<Quirk> quirks() {
    // Event 0x30 in a short list: 87 bytes of fields and a u16-counted
    // string, tested against 71; a body 16 bytes short reads the rest as 0.
    Bytes short30 = {0, 0, 0, 1, 1, 0x00, 0x30, 0x07};
    short30.insert(short30.end(), 71, 0x11);
    Bytes full30 = short30;
    full30.insert(full30.end(), 16, 0);
    // Event 0xB1 (u32, then an attribute list): attribute 0x00CB (a u8)
    // whose length field says 9 bytes is read by its codec; the encoder
    // writes the length of what it writes.
    const Bytes b1 = hexBytes("00000007 01 00B1 00 00000005 0001 00CB 0009 2A");
    const Bytes b1Again = hexBytes("00000007 01 00B1 00 00000005 0001 00CB 0001 2A");
    return {
        {"event0x30_short", 0x0a, short30, full30},
        {"event_attribute_length", 0x0a, b1, b1Again},
        // Bytes behind the layout are not read, so they are not written.
        {"trailing_bytes", 0x0b, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4}},
        // A body without a reply is the header alone, whatever the record
        // (none here) and whatever bodyLength says.
        {"no_reply_body", 0x55, {1, 2, 3}, {}},
        // Event 0x78 keeps a typed value only where its data type reserves
        // room (types 16, 17, 19, 20); any other type is read over and its
        // pointer left null, so the record has nothing to write back: 1. Here
        // u32, u16, data type 0x15 with one u16 element, a u8 string.
        {"reserved_value_read_over", 0x0a, hexBytes("00000001 01 0078 00 01020304 A001 0015 0001 1234 00"), {},
         TROV_RESULT_NULL_ARGUMENT},
    };
}

class ReplyQuirks : public testing::TestWithParam<Quirk> {};

TEST_P(ReplyQuirks, EncodeWhatWasRead) {
    const Quirk &q = GetParam();
    Bytes packet = replyPacket(q.code, q.body);
    Decoded d(packet);
    ASSERT_EQ(d.result, 0u) << TROV_ResultName(d.result);
    const Bytes again = encodeReply(d.info, d.out.record ? d.out.record : &d.info, q.result);
    EXPECT_EQ(again, q.result == 0 ? replyPacket(q.code, q.again) : Bytes());
}

INSTANTIATE_TEST_SUITE_P(Table, ReplyQuirks, testing::ValuesIn(quirks()),
                         [](const testing::TestParamInfo<Quirk> &info) { return std::string(info.param.what); });

} // namespace
