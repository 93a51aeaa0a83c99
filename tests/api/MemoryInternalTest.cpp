// Encode-buffer reservation and the decode-side memory helpers. (Every
// allocation of the exported calls failing in turn: AllocationFailure.)
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "api/Memory.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

class Memory : public testing::Test {
protected:
    void TearDown() override { failAllocationAt(0); }
};

HeaderInfo header(uint16_t version = 0x10) {
    HeaderInfo h{};
    h.mark = 0xA7E5;
    h.version = version;
    h.flags = 0x01;
    h.code = 0x0102;
    h.bodyLength = 0x7777;
    h.extension = 0x0304;
    return h;
}

bool allBytes(const uint8_t *p, size_t n, uint8_t v) {
    for (size_t i = 0; i < n; ++i)
        if (p[i] != v) return false;
    return true;
}

TEST_F(Memory, ReserveAllocatesThePacketAndPlacesTheHeader) {
    HeaderInfo info = header();
    EncodeOutput out{nullptr, 0};
    PacketCursor body{nullptr, 0};
    ASSERT_EQ(reserveEncodeBuffer(&info, 12, &out, &body), 0u);
    ASSERT_NE(out.data, nullptr);
    EXPECT_EQ(out.length, 32u);
    EXPECT_EQ(info.bodyLength, 12);
    EXPECT_EQ(body.position, out.data + 20);
    EXPECT_EQ(body.remaining, 12u);
    const uint8_t expected[20] = {0xA7, 0xE5, 0x10, 0x01, 0x01, 0x02, 0, 0, 0, 12,
                                  0,    0,    0,    0,    0,    0,    0, 0, 3, 4};
    EXPECT_EQ(std::memcmp(out.data, expected, 20), 0);
    trovFree(out.data);
}

// A body the header's 16-bit length cannot frame is refused before the
// record or the output changes; after the writes, an overrun body releases
// the packet the encode allocated and an underfilled one is zeroed.
TEST_F(Memory, ReserveRefusesUnframeableBodiesAndFinishChecksTheWrites) {
    HeaderInfo info = header();
    EncodeOutput out{nullptr, 0};
    PacketCursor body{nullptr, 0};
    bool allocated = true;
    EXPECT_EQ(reserveEncodeBuffer(&info, 0x10000, &out, &body, &allocated), 5u);
    EXPECT_EQ(info.bodyLength, 0x7777);
    EXPECT_EQ(out.data, nullptr);
    EXPECT_FALSE(allocated);

    ASSERT_EQ(reserveEncodeBuffer(&info, 0xFFFF, &out, &body, &allocated), 0u);
    EXPECT_TRUE(allocated);
    EXPECT_EQ(out.length, 20u + 0xFFFF);
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

TEST_F(Memory, ReserveUsesAnExactCallerBufferAndRefusesOneByteLess) {
    uint8_t buffer[40];
    std::memset(buffer, 0xCC, sizeof buffer);
    HeaderInfo info = header();
    EncodeOutput out{buffer, 26};
    PacketCursor body{nullptr, 0};
    failAllocationAt(1);
    EXPECT_EQ(reserveEncodeBuffer(&info, 7, &out, &body), 7u);
    EXPECT_EQ(info.bodyLength, 7); // kept although the call failed
    EXPECT_EQ(out.data, buffer);
    EXPECT_EQ(out.length, 26u);
    EXPECT_TRUE(allBytes(buffer, sizeof buffer, 0xCC));

    out.length = 27;
    ASSERT_EQ(reserveEncodeBuffer(&info, 7, &out, &body), 0u);
    EXPECT_EQ(allocationsSinceArmed(), 0u);
    EXPECT_EQ(out.data, buffer);
    EXPECT_EQ(out.length, 27u);
    EXPECT_EQ(body.position, buffer + 20);
    EXPECT_EQ(body.remaining, 7u);
    EXPECT_EQ(buffer[9], 7);
    EXPECT_TRUE(allBytes(buffer + 20, sizeof buffer - 20, 0xCC)); // the body is not touched
}

TEST_F(Memory, ReserveFailsOnUnknownVersionAndOnAllocation) {
    HeaderInfo info = header(0x11);
    EncodeOutput out{nullptr, 0};
    PacketCursor body{nullptr, 0};
    EXPECT_EQ(reserveEncodeBuffer(&info, 4, &out, &body), 8u);
    EXPECT_EQ(info.bodyLength, 0x7777); // the version is checked first
    info = header();
    failAllocationAt(1);
    EXPECT_EQ(reserveEncodeBuffer(&info, 4, &out, &body), 6u);
    EXPECT_EQ(info.bodyLength, 4);
    EXPECT_EQ(out.data, nullptr);
}

TEST_F(Memory, AllocateRecord) {
    uint8_t input[8] = {};
    const PacketCursor in{input, 8};
    uint8_t mine[16];
    std::memset(mine, 0xCC, sizeof mine);
    bool allocated = true;

    failAllocationAt(1);
    DecodeResult r{mine, nullptr, 0x22};
    EXPECT_EQ(allocateRecord(&r, &in, 9, 16, &allocated), 5u); // checked before the record
    EXPECT_EQ(r.type, 6);
    EXPECT_FALSE(allocated);
    r.type = 0x22;
    EXPECT_EQ(allocateRecord(&r, &in, 8, 16, &allocated), 0u);
    EXPECT_EQ(r.record, mine);
    EXPECT_EQ(r.type, 0x22);
    EXPECT_TRUE(allBytes(mine, sizeof mine, 0xCC)); // the caller's record is used as it is
    EXPECT_EQ(allocationsSinceArmed(), 0u);

    r = DecodeResult{nullptr, nullptr, 0x22};
    allocated = true;
    EXPECT_EQ(allocateRecord(&r, &in, 4, 24, &allocated), 6u);
    EXPECT_EQ(r.type, 6);
    EXPECT_EQ(r.record, nullptr);
    EXPECT_FALSE(allocated);

    // Make a reused heap block likely to hold garbage before the zeroing.
    void *dirty = trovMalloc(24);
    std::memset(dirty, 0xAB, 24);
    trovFree(dirty);
    r.type = 0x22;
    ASSERT_EQ(allocateRecord(&r, &in, 4, 24, &allocated), 0u);
    ASSERT_NE(r.record, nullptr);
    EXPECT_TRUE(allocated);
    EXPECT_EQ(r.type, 0x22);
    EXPECT_TRUE(allBytes(static_cast<uint8_t *>(r.record), 24, 0));
    trovFree(r.record);
}

TEST_F(Memory, PrepareBufferTakesOverTheTrackedBuffer) {
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
    EXPECT_TRUE(allBytes(static_cast<uint8_t *>(target.data), 32, 0xAB));

    r.buffer = &target; // tracked descriptor is the one given
    EXPECT_EQ(prepareBuffer(&r, &target, 16, &allocated), 0u);
    EXPECT_EQ(r.buffer, nullptr);
    EXPECT_TRUE(allBytes(static_cast<uint8_t *>(target.data), 16, 0));
    EXPECT_TRUE(allBytes(static_cast<uint8_t *>(target.data) + 16, 16, 0xAB));
    trovFree(target.data);
}

TEST_F(Memory, PrepareBufferAllocatesChecksAndUsesTheCallersBuffer) {
    DecodeResult r{nullptr, nullptr, 0};
    bool allocated = true;
    BufferDesc bad{nullptr, 5, 0x02};
    failAllocationAt(1);
    EXPECT_EQ(prepareBuffer(&r, &bad, 0, &allocated), 0u); // size 0 before any check
    EXPECT_EQ(prepareBuffer(&r, &bad, 8, &allocated), 1u);
    EXPECT_EQ(bad.data, nullptr);
    EXPECT_EQ(allocationsSinceArmed(), 0u);

    uint8_t mine[16];
    std::memset(mine, 0xCC, sizeof mine);
    BufferDesc fixed{mine, 4, 0x01};
    EXPECT_EQ(prepareBuffer(&r, &fixed, 8, &allocated), 7u);
    EXPECT_EQ(fixed.data, mine);
    EXPECT_EQ(fixed.capacity, 4);
    EXPECT_TRUE(allBytes(mine, sizeof mine, 0xCC));
    fixed.capacity = 8;
    EXPECT_EQ(prepareBuffer(&r, &fixed, 8, &allocated), 0u);
    EXPECT_EQ(fixed.flags, 0x01);
    EXPECT_TRUE(allBytes(mine, 8, 0));
    EXPECT_TRUE(allBytes(mine + 8, 8, 0xCC));
    EXPECT_EQ(r.buffer, nullptr);
    EXPECT_FALSE(allocated);

    failAllocationAt(0);
    BufferDesc fresh{nullptr, 0, 0x02};
    ASSERT_EQ(prepareBuffer(&r, &fresh, 24, &allocated), 0u);
    EXPECT_TRUE(allocated);
    EXPECT_EQ(r.buffer, &fresh);
    EXPECT_EQ(fresh.flags, 0x0B);
    EXPECT_EQ(fresh.capacity, 24);
    EXPECT_TRUE(allBytes(static_cast<uint8_t *>(fresh.data), 24, 0));
    trovFree(fresh.data);
}

TEST_F(Memory, PrepareBufferGrowsAGrowableBuffer) {
    // A block larger than declared, so that an in-place grow always succeeds.
    auto *block = static_cast<uint8_t *>(trovMalloc(4096));
    std::memset(block, 0xAB, 4096);
    BufferDesc desc{block, 8, 0x03};
    DecodeResult r{nullptr, nullptr, 0};
    bool allocated = true;
    ASSERT_EQ(prepareBuffer(&r, &desc, 200, &allocated), 0u);
    ASSERT_NE(desc.data, nullptr);
    EXPECT_EQ(desc.flags, 0x07);
    EXPECT_EQ(desc.capacity, 200);
    EXPECT_FALSE(allocated);
    EXPECT_EQ(r.buffer, nullptr);
    EXPECT_TRUE(allBytes(static_cast<uint8_t *>(desc.data), 200, 0));
    trovFree(desc.data);

    block = static_cast<uint8_t *>(trovMalloc(4096));
    desc = BufferDesc{block, 8, 0x02};
    failAllocationAt(1);
    EXPECT_EQ(prepareBuffer(&r, &desc, 200, &allocated), 6u);
    EXPECT_EQ(desc.data, nullptr); // the old pointer is lost
    EXPECT_EQ(desc.flags, 0x02);
    EXPECT_FALSE(allocated);
    trovFree(block);
}

TEST_F(Memory, ReleaseOnFailureFreesOnlyWhatTheFlagsSay) {
    for (int mask = 0; mask < 4; ++mask) {
        const bool freeRecord = (mask & 1) != 0, freeBuffer = (mask & 2) != 0;
        SCOPED_TRACE(testing::Message() << "record " << freeRecord << " buffer " << freeBuffer);
        void *record = trovMalloc(16);
        void *data = trovMalloc(16);
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

namespace trov {
namespace {

// A decode whose reported size is short of what it writes (the extent): the
// capacity records the reported size, the memory holds the extent, and a
// caller's buffer that cannot hold the extent is grown or refused.
TEST(MemoryExtent, RoomForTheExtentWithTheReportedCapacity) {
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

} // namespace
} // namespace trov
