// The packet cursor's writers at the end of their room, and the u32 array
// writer around its four-at-a-time steps. (Their byte order: every golden
// vector and the differential corpus.)
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "engine/Cursor.h"

namespace trov {
namespace {

// The writers never pass `remaining`: a write that does not fit writes
// nothing and leaves the cursor overrun, so every later write is refused too.
TEST(Cursor, WritersRefuseWhatDoesNotFitAndStayRefused) {
    const uint8_t bytes[4] = {1, 2, 3, 4};
    using Write = void (*)(PacketCursor &, const uint8_t *);
    struct Case {
        const char *name;
        uint32_t width;
        Write write;
    } const cases[] = {
        {"u8", 1, [](PacketCursor &c, const uint8_t *) { putU8(c, 0x11); }},
        {"u16", 2, [](PacketCursor &c, const uint8_t *) { putU16(c, 0x1122); }},
        {"u32", 4, [](PacketCursor &c, const uint8_t *) { putU32(c, 0x11223344); }},
        {"value", 4, [](PacketCursor &c, const uint8_t *b) { putValue(c, b, 4); }},
        {"bytes", 3, [](PacketCursor &c, const uint8_t *b) { putBytes(&c, b, 3); }},
        {"bytes from null", 1, [](PacketCursor &c, const uint8_t *) { putBytes(&c, nullptr, 1); }},
    };
    for (const Case &k : cases) {
        SCOPED_TRACE(k.name);
        uint8_t out[8];
        std::memset(out, 0xCC, sizeof out);
        PacketCursor c{out, k.width - 1};
        k.write(c, bytes);
        EXPECT_TRUE(overrun(c));
        EXPECT_EQ(c.remaining, 0u);
        putU8(c, 0x22);
        EXPECT_TRUE(overrun(c));
        for (uint8_t b : out) EXPECT_EQ(b, 0xCC);
    }
}

// Counts on either side of each step (4 and 8 u32 at a time, 8 and 16 u16),
// at odd addresses, with bytes that tell every position apart; nothing is
// written past the array.
template <unsigned W>
void checkArraysGoOutBigEndian() {
    for (uint32_t n : {0u, 1u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 33u, 255u}) {
        SCOPED_TRACE(testing::Message() << W << " bytes, " << n);
        alignas(32) uint8_t in[4 * 255 + 1], out[4 * 255 + 2];
        for (uint32_t i = 0; i < sizeof in; ++i) in[i] = static_cast<uint8_t>(i * 7 + 1);
        std::memset(out, 0xCC, sizeof out);
        storeSwapped<W>(out + 1, in + 1, n);
        for (uint32_t i = 0; i < W * n; ++i)
            ASSERT_EQ(out[1 + i], in[1 + i - i % W + (W - 1 - i % W)]) << "byte " << i;
        EXPECT_EQ(out[0], 0xCC);
        EXPECT_EQ(out[1 + W * n], 0xCC);
    }
}
TEST(Cursor, ArraysGoOutBigEndianWholeAndNoFurther) {
    checkArraysGoOutBigEndian<2>();
    checkArraysGoOutBigEndian<4>();
}

} // namespace
} // namespace trov
