// Allocation failures in the function-unit body codecs: every allocation a
// request or reply makes is failed in turn; the call must return 6 (type 6
// on decoding) and release whatever it had allocated (the sanitizer build's
// leak check sees any block left behind), keeping a caller's record.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "TrovCodec.h"
#include "api/Memory.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes reply(uint16_t code, const Bytes &body) {
    const auto n = uint16_t(body.size());
    const uint8_t head[20] = {0xA7, 0xE5, 0x10, 0x01, uint8_t(code >> 8), uint8_t(code), 0, 0,
                              uint8_t(n >> 8), uint8_t(n), 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    Bytes p(20 + body.size());
    for (size_t i = 0; i < 20; ++i) p[i] = head[i];
    for (size_t i = 0; i < body.size(); ++i) p[20 + i] = body[i];
    return p;
}

class BodiesAllocation : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(TROV_InitCoder(), 1); }
    void TearDown() override { trov::failAllocationAt(0); }
};

// Replies with a record and a managed buffer (a string, an attribute value)
// and one without a buffer.
struct ReplyCase {
    uint16_t code;
    Bytes body;
    size_t bufferOffset; // 0: no managed buffer
    uint32_t allocations;
};

const ReplyCase kReplies[] = {
    {0x0b, {0, 0, 0, 1}, 0, 1},
    {0x3a, {0, 0, 0, 1, 0, 0, 0, 2, 3, 'a', 'b', 'c'}, offsetof(U32PairStringBody, buffer), 2},
    {0x56, {0, 0, 0, 1, 0x08, 0xD5, 0, 0, 0, 2}, offsetof(U32AttributeBody, buffer), 2},
};

TEST_F(BodiesAllocation, EveryReplyAllocationFailureReleasesTheRest) {
    for (const ReplyCase &c : kReplies) {
        SCOPED_TRACE(testing::Message() << "code 0x" << std::hex << c.code);
        Bytes p = reply(c.code, c.body);
        const PacketCursor cursor{p.data(), uint32_t(p.size())};
        HeaderInfo h{};
        for (uint32_t nth = 1; nth <= c.allocations; ++nth) {
            SCOPED_TRACE(nth);
            trov::failAllocationAt(nth);
            DecodeResult result{nullptr, nullptr, 0};
            EXPECT_EQ(TROV_DecodeFU(&h, &result, &cursor, nullptr), 6u);
            EXPECT_EQ(result.type, 6);
            EXPECT_EQ(result.record, nullptr);
            EXPECT_EQ(result.buffer, nullptr);
        }
        // One more allocation than the call makes: it succeeds.
        trov::failAllocationAt(c.allocations + 1);
        DecodeResult result{nullptr, nullptr, 0};
        ASSERT_EQ(TROV_DecodeFU(&h, &result, &cursor, nullptr), 0u);
        EXPECT_EQ(trov::allocationsSinceArmed(), c.allocations);
        if (c.bufferOffset != 0) {
            BufferDesc b;
            std::memcpy(&b, static_cast<uint8_t *>(result.record) + c.bufferOffset, sizeof b);
            trovFree(b.data);
        }
        trovFree(result.record);
    }
}

TEST_F(BodiesAllocation, ABufferFailureKeepsTheCallersRecord) {
    Bytes p = reply(0x3a, {0, 0, 0, 1, 0, 0, 0, 2, 3, 'a', 'b', 'c'});
    const PacketCursor cursor{p.data(), uint32_t(p.size())};
    HeaderInfo h{};
    U32PairStringBody record{};
    DecodeResult result{&record, nullptr, 0};
    trov::failAllocationAt(1);
    EXPECT_EQ(TROV_DecodeFU(&h, &result, &cursor, nullptr), 6u);
    EXPECT_EQ(result.record, &record);
    EXPECT_EQ(result.type, 6);
    EXPECT_EQ(record.buffer.data, nullptr);
}

TEST_F(BodiesAllocation, ARequestWhosePacketCannotBeAllocatedGives6) {
    uint32_t value = 7;
    const U32Body u32{1};
    const AttributeBody attribute{0x08D5, &value, {}};
    const struct {
        uint16_t code;
        const void *record;
    } cases[] = {{0x0b, &u32}, {0x12, &attribute}};
    for (const auto &c : cases) {
        HeaderInfo h{};
        h.mark = 0xA7E5;
        h.version = 0x10;
        h.code = c.code;
        EncodeOutput out{nullptr, 0};
        trov::failAllocationAt(1);
        EXPECT_EQ(TROV_EncodeFU(&h, c.record, &out), 6u);
        EXPECT_EQ(out.data, nullptr);
        EXPECT_EQ(trov::allocationsSinceArmed(), 1u);
    }
}

} // namespace
