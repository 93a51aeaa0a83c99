// Allocation failures in the function-unit body codecs with a caller's
// record: a failing buffer allocation leaves the record with the caller.
// (Every allocation of the exported calls failing in turn is the
// AllocationFailure suite.)
#include <gtest/gtest.h>

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

} // namespace
