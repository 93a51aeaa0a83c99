// The big-endian writers and readers of the packet cursor.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "engine/Cursor.h"

namespace trov {
namespace {

TEST(Cursor, WritersAreBigEndianAndAdvance) {
    uint8_t out[24];
    std::memset(out, 0xCC, sizeof out);
    PacketCursor c{out, sizeof out};
    const uint8_t v8 = 0x5A;
    const uint16_t v16 = 0xA1B2;
    const uint32_t v32 = 0xC1D2E3F4;
    putU8(c, 0x01);
    putU16(c, 0x0203);
    putU32(c, 0x8485'8687);
    putValue(c, &v8, 1);
    putValue(c, &v16, 2);
    putValue(c, &v32, 4);
    putValue(c, &v32, 3); // any other width: nothing
    putValue(c, &v32, 8);
    const uint8_t bytes[] = {0xDE, 0xAD};
    putBytes(&c, bytes, 2);
    putBytes(&c, bytes, 0);
    putBytes(nullptr, bytes, 2);
    PacketCursor nowhere{nullptr, 4};
    putBytes(&nowhere, bytes, 2);
    EXPECT_EQ(nowhere.remaining, 4u);
    const uint8_t expected[] = {0x01, 0x02, 0x03, 0x84, 0x85, 0x86, 0x87, 0x5A, 0xA1, 0xB2,
                                0xC1, 0xD2, 0xE3, 0xF4, 0xDE, 0xAD, 0xCC};
    EXPECT_EQ(std::memcmp(out, expected, sizeof expected), 0);
    EXPECT_EQ(c.position, out + 16);
    EXPECT_EQ(c.remaining, 8u);

    uint16_t total = 0xFFFE;
    skipCounted(c, 4, total); // the running total is 16 bits and wraps
    EXPECT_EQ(total, 2);
    EXPECT_EQ(c.remaining, 4u);
}

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

TEST(Cursor, ReadersAreBigEndianAndAdvance) {
    uint8_t in[] = {0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x01, 0x02, 0x03, 0x04,
                    0x05, 0x06, 0xA0, 0xA1, 0xA2, 0xA3, 0xB0, 0xB1, 0xB2, 0xB3, 0xEE};
    PacketCursor c{in, sizeof in};
    EXPECT_EQ(getU8(c), 0x81);
    EXPECT_EQ(peekU16(c), 0x8283);
    EXPECT_EQ(c.position, in + 1);
    uint16_t total = 0xFFFF;
    EXPECT_EQ(getU16Counted(c, total), 0x8283);
    EXPECT_EQ(total, 1);
    EXPECT_EQ(getU8Counted(c, total), 0x84);
    EXPECT_EQ(total, 2);
    EXPECT_EQ(getU16(c), 0x8586);
    uint8_t tail[4] = {};
    EXPECT_EQ(getBytes(c, tail, 0), tail);
    EXPECT_EQ(getBytes(c, nullptr, 2), nullptr);
    EXPECT_EQ(c.position, in + 6);
    EXPECT_EQ(getBytes(c, tail, 1), tail + 1);
    EXPECT_EQ(tail[0], 0x87);

    uint16_t u16s[3] = {};
    EXPECT_EQ(getU16Array(c, u16s, 3), reinterpret_cast<uint8_t *>(u16s) + 6);
    EXPECT_EQ(u16s[0], 0x0102);
    EXPECT_EQ(u16s[2], 0x0506);
    uint32_t u32s[2] = {};
    EXPECT_EQ(getU32Array(c, u32s, 2), reinterpret_cast<uint8_t *>(u32s) + 8);
    EXPECT_EQ(u32s[0], 0xA0A1A2A3u);
    EXPECT_EQ(u32s[1], 0xB0B1B2B3u);
    EXPECT_EQ(c.position, in + 21);
    EXPECT_EQ(c.remaining, 1u);
}

} // namespace
} // namespace trov
