// Routing of packets to body codecs and the two size queries, through the
// exported interface and the built-in tables: the order of the checks before
// a body codec is reached, the skip rules of the function-unit decoder, the
// codes without a body codec, and that failures leave the caller's records
// alone. (The body codecs themselves are tested with their layouts.)
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "TrovCodec.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"

namespace {

// A version 0x10 header without a body: flags, code, extension bytes 18-19.
std::vector<uint8_t> packet(uint16_t code, uint8_t flags, uint8_t b18, uint8_t b19) {
    std::vector<uint8_t> p = replyPacket(code, {}, uint16_t(b18 << 8 | b19));
    p[3] = flags;
    return p;
}

constexpr HeaderInfo kSentinelInfo{0x5A5A, 0x5A, 0x5A, 0x5A5A, 0x5A5A, 0x5A5A, 0x5A5A5A5A, 0x5A5A5A5A, 0x5A5A};
constexpr uint16_t kSentinelType = 0xEEEE;

class BodyOperations : public ::testing::Test {
protected:
    HeaderInfo info = kSentinelInfo;
    DecodeResult result{nullptr, nullptr, kSentinelType};
};

// The unit type is the decoded extension: without flags bit 0 the bytes come
// in wire order, so 04 00 is unit type 4 and with bit 0 it is 0x0400.
TEST_F(BodyOperations, DecodeFUTakesTheUnitTypeFromTheDecodedExtension) {
    const struct { uint8_t flags, b18, b19; uint16_t code; TrovResult expected; uint16_t type; } cases[] = {
        {0x00, 0x04, 0x00, 10, 0, 4},      {0x08, 0x04, 0x00, 10, 0, 4},
        {0x01, 0x04, 0x00, 10, 5, 6},      {0x00, 0x01, 0x00, 0x31, 5, 6},
        {0x01, 0x01, 0x00, 5, 0, 0x0100},  {0x00, 0x00, 0x00, 5, 0, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "flags " << int(c.flags) << " code " << c.code);
        std::vector<uint8_t> p = packet(c.code, c.flags, c.b18, c.b19);
        const PacketCursor cursor{p.data(), uint32_t(p.size())};
        result.type = kSentinelType;
        EXPECT_EQ(TROV_DecodeFU(&info, &result, &cursor, nullptr), c.expected);
        EXPECT_EQ(result.type, c.type);
    }
}

// The checks before the body table, in order: arguments, mark, header codec,
// header length. None of them touches the caller's records.
TEST_F(BodyOperations, DecodersCheckArgumentsMarkVersionAndLengthInOrder) {
    std::vector<uint8_t> good = packet(5, 0x01, 0, 1); // unit type 1 in the 16-bit extension
    std::vector<uint8_t> wrongMark = good, v11 = good, wrongMarkV11 = good;
    wrongMark[1] = 0xE6;
    v11[2] = 0x11;
    wrongMarkV11[1] = 0xE6;
    wrongMarkV11[2] = 0x11;
    const PacketCursor nowhere{nullptr, 20};
    const PacketCursor goodCursor{good.data(), 20};

    using Decoder = TrovResult (*)(HeaderInfo *, DecodeResult *, const PacketCursor *);
    const Decoder decoders[] = {
        [](HeaderInfo *i, DecodeResult *r, const PacketCursor *c) { return TROV_DecodeFU(i, r, c, nullptr); },
        [](HeaderInfo *i, DecodeResult *r, const PacketCursor *c) { return TROV_DecodeFP(i, r, c); },
    };
    for (Decoder decode : decoders) {
        EXPECT_EQ(decode(nullptr, &result, &goodCursor), TROV_RESULT_NULL_ARGUMENT);
        EXPECT_EQ(decode(&info, nullptr, &goodCursor), TROV_RESULT_NULL_ARGUMENT);
        EXPECT_EQ(decode(&info, &result, nullptr), TROV_RESULT_NULL_ARGUMENT);
        EXPECT_EQ(decode(&info, &result, &nowhere), TROV_RESULT_NULL_ARGUMENT);

        const struct { std::vector<uint8_t> *bytes; uint32_t remaining; TrovResult expected; } cases[] = {
            {&wrongMark, 20, TROV_RESULT_BAD_PACKET},
            {&wrongMarkV11, 20, TROV_RESULT_BAD_PACKET}, // the mark is checked first
            {&v11, 20, TROV_RESULT_NO_HEADER_CODEC},
            {&v11, 19, TROV_RESULT_NO_HEADER_CODEC},
            {&good, 19, TROV_RESULT_BAD_PACKET}, // (every shorter packet: GuardedDecode)
        };
        for (const auto &c : cases) {
            SCOPED_TRACE(c.remaining);
            // Exactly the cursor's bytes on the heap, so a sanitizer sees any over-read.
            std::vector<uint8_t> bytes(c.bytes->begin(), c.bytes->begin() + c.remaining);
            const PacketCursor cursor{bytes.data(), c.remaining};
            EXPECT_EQ(decode(&info, &result, &cursor), c.expected);
        }
        EXPECT_EQ(headerFields(info), headerFields(kSentinelInfo));
        EXPECT_EQ(result.type, kSentinelType);
        EXPECT_EQ(result.record, nullptr);
    }
}

TEST_F(BodyOperations, EncodersCheckArgumentsThenVersionThenBodyTable) {
    const uint8_t record[16] = {};
    std::array<uint8_t, 32> buf;
    buf.fill(0xCC);
    const std::array<uint8_t, 32> before = buf;
    for (bool fp : {false, true}) {
        SCOPED_TRACE(fp ? "FP" : "FU");
        auto encode = [fp](HeaderInfo *i, const void *r, EncodeOutput *o) {
            return fp ? TROV_EncodeFP(i, r, o, nullptr) : TROV_EncodeFU(i, r, o);
        };
        EncodeOutput allocate{nullptr, 0};
        EncodeOutput given{buf.data(), uint32_t(buf.size())};
        HeaderInfo h{0xA7E5, 0x10, 0, 5, 0, 0x1234, 0, 0, 1};
        EXPECT_EQ(encode(nullptr, record, &allocate), TROV_RESULT_NULL_ARGUMENT);
        EXPECT_EQ(encode(&h, nullptr, &allocate), TROV_RESULT_NULL_ARGUMENT);
        EXPECT_EQ(encode(&h, record, nullptr), TROV_RESULT_NULL_ARGUMENT);
        // Every code without an FU row: the 15 gaps among 0x01 to 0x85 (the
        // table's other 118 codes there are checked at compile time) and beyond.
        for (uint16_t code : {0x00, 0x1E, 0x2D, 0x2F, 0x34, 0x3D, 0x3E, 0x41, 0x42, 0x43, 0x4B, 0x59, 0x5A, 0x5B,
                              0x63, 0x64, 0x86, 0xFFFF}) {
            h.code = code;
            EXPECT_EQ(encode(&h, record, &allocate), TROV_RESULT_NO_BODY_CODEC);
            EXPECT_EQ(encode(&h, record, &given), TROV_RESULT_NO_BODY_CODEC);
        }
        h.version = 0x11;
        EXPECT_EQ(encode(&h, record, &given), TROV_RESULT_NO_HEADER_CODEC);
        // Nothing was allocated, written or sized.
        EXPECT_EQ(allocate.data, nullptr);
        EXPECT_EQ(allocate.length, 0u);
        EXPECT_EQ(given.length, 32u);
        EXPECT_EQ(buf, before);
        EXPECT_EQ(h.bodyLength, 0x1234);
    }
    int context = 0;
    EXPECT_EQ(TROV_EncodeFP(&info, record, nullptr, &context), TROV_RESULT_NULL_ARGUMENT);
}

TEST_F(BodyOperations, SizeQueriesRefuseUnknownCodesAndLeaveTheSizeAlone) {
    const HeaderInfo h{0xA7E5, 0x10, 0, 0, 0, 0, 0, 0, 0};
    const uint8_t value[16] = {};
    uint16_t size = 0xEEEE;
    EXPECT_EQ(TROV_GetAttributePacketSize(nullptr, 1, value, 0, &size), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_GetAttributePacketSize(&h, 1, nullptr, 0, &size), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_GetAttributePacketSize(&h, 1, value, 0, nullptr), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_GetEventPacketSize(nullptr, 2, value, &size), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_GetEventPacketSize(&h, 2, nullptr, &size), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_GetEventPacketSize(&h, 2, value, nullptr), TROV_RESULT_NULL_ARGUMENT);
    // Identifiers outside every list: 0x0001 and 0x0005 fall in gaps of the
    // served ranges, 0x36BA is past the last one.
    for (uint16_t id : {0x0000, 0x0001, 0x0005, 0x0011, 0x36BA, 0xFFFF}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(TROV_GetAttributePacketSize(&h, id, value, 0, &size), TROV_RESULT_NO_ATTRIBUTE_CODEC);
        EXPECT_EQ(TROV_GetAttributePacketSize(&h, id, value, 1, &size), TROV_RESULT_NO_ATTRIBUTE_CODEC);
        // The event query searches the FP event table alone, which is empty.
        EXPECT_EQ(TROV_GetEventPacketSize(&h, id, value, &size), TROV_RESULT_NO_EVENT_CODEC);
    }
    EXPECT_EQ(TROV_GetEventPacketSize(&h, 0x136, value, &size), TROV_RESULT_NO_EVENT_CODEC);
    EXPECT_EQ(size, 0xEEEE);
}

} // namespace
