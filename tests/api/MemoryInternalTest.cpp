// Encode-buffer reservation and the decode-side memory helpers. (Every
// allocation of the exported calls failing in turn: AllocationFailure;
// callers' output buffers of every size: GuardPageTest.)
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "api/Memory.h"
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

// The packet is allocated with the header in place; a body the 16-bit length
// cannot frame, or an unknown version, is refused before the record or the
// output changes; after the writes, an overrun body releases the packet and
// an underfilled one is zeroed.
TEST_F(Memory, ReserveAllocatesRefusesAndFinishChecksTheWrites) {
    HeaderInfo info = header();
    EncodeOutput out{nullptr, 0};
    PacketCursor body{nullptr, 0};
    bool allocated = true;
    EXPECT_EQ(reserveEncodeBuffer(&info, 0x10000, &out, &body, &allocated), 5u);
    EXPECT_FALSE(allocated);
    HeaderInfo v11 = header(0x11);
    EXPECT_EQ(reserveEncodeBuffer(&v11, 4, &out, &body), 8u);
    EXPECT_EQ(v11.bodyLength, 0x7777);
    EXPECT_EQ(info.bodyLength, 0x7777);
    EXPECT_EQ(out.data, nullptr);

    ASSERT_EQ(reserveEncodeBuffer(&info, 12, &out, &body), 0u);
    EXPECT_EQ(out.length, 32u);
    EXPECT_EQ(info.bodyLength, 12);
    EXPECT_EQ(body.position, out.data + 20);
    EXPECT_EQ(body.remaining, 12u);
    const uint8_t expected[20] = {0xA7, 0xE5, 0x10, 0x01, 0x01, 0x02, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0, 3, 4};
    EXPECT_EQ(std::memcmp(out.data, expected, 20), 0);
    trovFree(out.data);

    out = EncodeOutput{nullptr, 0};
    ASSERT_EQ(reserveEncodeBuffer(&info, 0xFFFF, &out, &body, &allocated), 0u);
    EXPECT_TRUE(allocated);
    putU8(body, 1);
    EXPECT_EQ(finishEncodeBuffer(&out, body, allocated), 0u);
    EXPECT_TRUE(allBytes(out.data + 21, 0xFFFE, 0)); // never stale heap bytes
    trovFree(out.data);

    out = EncodeOutput{nullptr, 0};
    ASSERT_EQ(reserveEncodeBuffer(&info, 2, &out, &body, &allocated), 0u);
    putU32(body, 1); // more than the size pass reserved
    EXPECT_EQ(finishEncodeBuffer(&out, body, allocated), 5u);
    EXPECT_EQ(out.data, nullptr); // released: LeakSanitizer would see it otherwise
}

TEST_F(Memory, ReserveUsesAnExactCallerBufferWithoutAllocating) {
    uint8_t buffer[40];
    std::memset(buffer, 0xCC, sizeof buffer);
    HeaderInfo info = header();
    EncodeOutput out{buffer, 26};
    PacketCursor body{nullptr, 0};
    failAllocationAt(1);
    EXPECT_EQ(reserveEncodeBuffer(&info, 7, &out, &body), 7u);
    EXPECT_EQ(info.bodyLength, 7); // kept although the call failed
    out.length = 27;
    ASSERT_EQ(reserveEncodeBuffer(&info, 7, &out, &body), 0u);
    EXPECT_EQ(allocationsSinceArmed(), 0u);
    EXPECT_EQ(out.data, buffer);
    EXPECT_EQ(body.position, buffer + 20);
    EXPECT_EQ(buffer[9], 7);
    EXPECT_TRUE(allBytes(buffer + 20, sizeof buffer - 20, 0xCC)); // the body is not touched
}

TEST_F(Memory, AllocateRecordChecksTheInputThenUsesOrZeroes) {
    uint8_t input[8] = {};
    const PacketCursor in{input, 8};
    uint8_t mine[16];
    std::memset(mine, 0xCC, sizeof mine);
    bool allocated = true;
    DecodeResult r{mine, nullptr, 0x22};
    EXPECT_EQ(allocateRecord(&r, &in, 9, 16, &allocated), 5u); // checked before the record
    EXPECT_EQ(r.type, 6);
    EXPECT_FALSE(allocated);
    r.type = 0x22;
    failAllocationAt(1);
    EXPECT_EQ(allocateRecord(&r, &in, 8, 16, &allocated), 0u);
    EXPECT_EQ(r.record, mine);
    EXPECT_EQ(r.type, 0x22);
    EXPECT_TRUE(allBytes(mine, sizeof mine, 0xCC)); // the caller's record is used as it is
    EXPECT_EQ(allocationsSinceArmed(), 0u);
    failAllocationAt(0);

    void *dirty = trovMalloc(24); // a reused block likely to hold garbage
    std::memset(dirty, 0xAB, 24);
    trovFree(dirty);
    r = DecodeResult{nullptr, nullptr, 0x22};
    ASSERT_EQ(allocateRecord(&r, &in, 4, 24, &allocated), 0u);
    EXPECT_TRUE(allocated);
    EXPECT_EQ(r.type, 0x22);
    EXPECT_TRUE(allBytes(r.record, 24, 0));
    trovFree(r.record);
}

TEST_F(Memory, PrepareBufferTakesOverChecksUsesAllocatesAndGrows) {
    BufferDesc tracked{trovMalloc(32), 32, 0x0B};
    std::memset(tracked.data, 0xAB, 32);
    BufferDesc target{nullptr, 0, 0};
    DecodeResult r{nullptr, &tracked, 0};
    bool allocated = true;
    EXPECT_EQ(prepareBuffer(&r, &target, 0, &allocated), 0u); // size 0: takeover only
    EXPECT_EQ(target.data, tracked.data);
    EXPECT_EQ(target.capacity, 32);
    EXPECT_EQ(target.flags, 0x0B);
    EXPECT_EQ(r.buffer, nullptr);
    EXPECT_FALSE(allocated);
    r.buffer = &target; // the tracked descriptor is the one given
    EXPECT_EQ(prepareBuffer(&r, &target, 16, &allocated), 0u);
    EXPECT_EQ(r.buffer, nullptr);
    EXPECT_TRUE(allBytes(target.data, 16, 0));
    EXPECT_TRUE(allBytes(static_cast<uint8_t *>(target.data) + 16, 16, 0xAB));
    trovFree(target.data);

    BufferDesc bad{nullptr, 5, 0x02};
    EXPECT_EQ(prepareBuffer(&r, &bad, 0, &allocated), 0u); // size 0 before any check
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

    BufferDesc fresh{nullptr, 0, 0x02};
    ASSERT_EQ(prepareBuffer(&r, &fresh, 24, &allocated), 0u);
    EXPECT_TRUE(allocated);
    EXPECT_EQ(r.buffer, &fresh);
    EXPECT_EQ(fresh.flags, 0x0B);
    EXPECT_EQ(fresh.capacity, 24);
    EXPECT_TRUE(allBytes(fresh.data, 24, 0));
    trovFree(fresh.data);

    r.buffer = nullptr;
    auto *block = static_cast<uint8_t *>(trovMalloc(4096)); // larger than declared: grows in place
    std::memset(block, 0xAB, 4096);
    BufferDesc growable{block, 8, 0x03};
    ASSERT_EQ(prepareBuffer(&r, &growable, 200, &allocated), 0u);
    EXPECT_EQ(growable.flags, 0x07);
    EXPECT_EQ(growable.capacity, 200);
    EXPECT_FALSE(allocated);
    EXPECT_EQ(r.buffer, nullptr);
    EXPECT_TRUE(allBytes(growable.data, 200, 0));
    trovFree(growable.data);

    block = static_cast<uint8_t *>(trovMalloc(4096));
    BufferDesc failing{block, 8, 0x02};
    failAllocationAt(1);
    EXPECT_EQ(prepareBuffer(&r, &failing, 200, &allocated), 6u);
    EXPECT_EQ(failing.data, nullptr); // the old pointer is lost
    EXPECT_EQ(failing.flags, 0x02);
    trovFree(block);
}

// A decode whose reported size is short of what it writes (the extent): the
// capacity records the reported size, the memory holds the extent, and a
// caller's buffer that cannot hold the extent is grown or refused.
TEST_F(Memory, PrepareBufferMakesRoomForTheExtentWithTheReportedCapacity) {
    DecodeResult r{};
    BufferDesc allocated{};
    bool made = false;
    ASSERT_EQ(prepareBuffer(&r, &allocated, 16, &made, 40), 0u);
    EXPECT_TRUE(made);
    EXPECT_EQ(allocated.capacity, 16);
    std::memset(allocated.data, 0x5A, 40); // AddressSanitizer: all 40 bytes are ours
    trovFree(allocated.data);

    uint8_t mine[16];
    DecodeResult callers{};
    BufferDesc fixed{mine, 16, 0};
    EXPECT_EQ(prepareBuffer(&callers, &fixed, 16, &made, 40), TROV_RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(fixed.data, mine);

    BufferDesc growable{trovMalloc(16), 16, TROV_BUFFER_GROWABLE};
#if defined(_WIN32)
    void *old = growable.data; // the local heap grows in place or not at all
#endif
    const TrovResult grown = prepareBuffer(&callers, &growable, 16, &made, 40);
#if defined(_WIN32)
    if (grown == TROV_RESULT_NO_MEMORY) {
        trovFree(old);
        return;
    }
#endif
    ASSERT_EQ(grown, 0u);
    EXPECT_EQ(growable.flags & TROV_BUFFER_GROWN, TROV_BUFFER_GROWN);
    std::memset(growable.data, 0x5A, 40);
    trovFree(growable.data);
}

TEST_F(Memory, ReleaseOnFailureFreesOnlyWhatTheFlagsSay) {
    for (int mask = 0; mask < 4; ++mask) {
        const bool freeRecord = (mask & 1) != 0, freeBuffer = (mask & 2) != 0;
        SCOPED_TRACE(mask);
        void *record = trovMalloc(16), *data = trovMalloc(16);
        BufferDesc desc{data, 16, 0x0B};
        DecodeResult r{record, &desc, 3};
        releaseOnFailure(&r, freeRecord, freeBuffer);
        EXPECT_EQ(r.type, 6);
        EXPECT_EQ(r.record, freeRecord ? nullptr : record);
        EXPECT_EQ(r.buffer, freeBuffer ? nullptr : &desc);
        EXPECT_EQ(desc.data, freeBuffer ? nullptr : data);
        if (!freeRecord) trovFree(record);
        if (!freeBuffer) trovFree(data);
    }
    DecodeResult none{nullptr, nullptr, 0};
    releaseOnFailure(&none, true, true);
    EXPECT_EQ(none.type, 6);
}

} // namespace
} // namespace trov
