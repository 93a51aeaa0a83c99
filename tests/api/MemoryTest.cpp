// The host's allocation functions: memory from trovMalloc is writable, 8-byte
// aligned for the records placed in it, and released with trovFree.
#include <gtest/gtest.h>

#include <cstdint>

#include "TrovCodec.h"

namespace {

TEST(Memory, AllocateWriteAndFree) {
    for (uint32_t size : {1u, 8u, 20u, 0xFFFFu, 0x100000u}) {
        SCOPED_TRACE(size);
        auto *p = static_cast<uint8_t *>(trovMalloc(size));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 8, 0u);
        for (uint32_t i = 0; i < size; ++i) p[i] = uint8_t(i * 7);
        EXPECT_EQ(p[0], 0);
        EXPECT_EQ(p[size - 1], uint8_t((size - 1) * 7));
        EXPECT_EQ(trovFree(p), nullptr);
    }
}

TEST(Memory, FreeOfNullAndOfAZeroSizeAllocation) {
    EXPECT_EQ(trovFree(nullptr), nullptr);
    void *p = trovMalloc(0);
    EXPECT_EQ(trovFree(p), nullptr);
}

} // namespace
