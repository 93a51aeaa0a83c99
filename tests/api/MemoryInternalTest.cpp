// Encode-buffer reservation and the decode-side memory helpers. (Every
// allocation of the exported calls failing in turn: AllocationFailure;
// callers' output buffers of every size: GuardPageTest.)
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "engine/Memory.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

class Memory : public testing::Test {
protected:
    void TearDown() override { failAllocationAt(0); }
    static HeaderInfo header(uint16_t version = 0x10) { return HeaderInfo{0xA7E5, version, 0x01, 0x0102, 0, 0x7777, 0, 0, 0x0304}; }
};

bool allBytes(const void *p, size_t n, uint8_t v) {
    return std::all_of(static_cast<const uint8_t *>(p), static_cast<const uint8_t *>(p) + n, [v](uint8_t b) { return b == v; });
}

// An unknown version is refused before the record changes, and a body the
// 16-bit length cannot frame once its 16-bit figure is stored, before the
// output changes; after the writes, an overrun body releases the packet.
// (Packets allocated with the header in place, up to a 65535-byte body:
// every encode through the exports, GuardPageTest's longest raw method.)
TEST_F(Memory, ReserveAllocatesRefusesAndFinishChecksTheWrites) {
    HeaderInfo info = header();
    EncodeOutput out{nullptr, 0};
    PacketCursor body{nullptr, 0};
    bool allocated = true;
    HeaderInfo v11 = header(0x11);
    EXPECT_EQ(reserveEncodeBuffer(&v11, WireSize::of(4), &out, &body), 8u);
    EXPECT_EQ(v11.bodyLength, 0x7777);
    EXPECT_EQ(reserveEncodeBuffer(&info, WireSize::of(0x10005), &out, &body, &allocated), 5u);
    EXPECT_FALSE(allocated);
    EXPECT_EQ(info.bodyLength, 5);
    EXPECT_EQ(out.data, nullptr);

    ASSERT_EQ(reserveEncodeBuffer(&info, WireSize::of(12), &out, &body), 0u); // no flag asked for
    trovFree(out.data);
    out = EncodeOutput{nullptr, 0};
    ASSERT_EQ(reserveEncodeBuffer(&info, WireSize::of(2), &out, &body, &allocated), 0u);
    EXPECT_TRUE(allocated);
    putU32(body, 1); // more than the size pass reserved
    EXPECT_EQ(finishEncodeBuffer(&out, body, allocated), 5u);
    EXPECT_EQ(out.data, nullptr); // released: LeakSanitizer would see it otherwise
}

// A caller's descriptor: a null block behind a capacity is refused (after
// the size-0 takeover, which checks nothing); a fixed block too small is
// refused untouched; one large enough is used and zeroed only as far as the
// size. (Library-allocated, exact, short and growable buffers through the
// exported decoders: the differential corpus; failing allocations:
// AllocationFailure.)
TEST_F(Memory, PrepareBufferChecksTheCallersDescriptor) {
    DecodeResult r{};
    bool allocated = true;
    BufferDesc bad{nullptr, 5, 0x02};
    EXPECT_EQ(prepareBuffer(&r, &bad, 0, &allocated), 0u);
    EXPECT_EQ(prepareBuffer(&r, &bad, 8, &allocated), 1u);
    uint8_t mine[16];
    std::memset(mine, 0xCC, sizeof mine);
    BufferDesc fixed{mine, 4, 0x01};
    EXPECT_EQ(prepareBuffer(&r, &fixed, 8, &allocated), 7u);
    EXPECT_TRUE(allBytes(mine, sizeof mine, 0xCC));
    fixed.capacity = 8;
    EXPECT_EQ(prepareBuffer(&r, &fixed, 8, &allocated), 0u);
    EXPECT_EQ(fixed.data, mine);
    EXPECT_EQ(fixed.flags, 0x01);
    EXPECT_TRUE(allBytes(mine, 8, 0));
    EXPECT_TRUE(allBytes(mine + 8, 8, 0xCC));
    EXPECT_FALSE(allocated);
}

} // namespace
} // namespace trov
