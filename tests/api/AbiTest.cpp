// The public records have the same layout in C as in C++, where the library
// checks every figure at compile time, on 64-bit Linux and Windows.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "TrovCodec.h"
#include "TrovInspect.h"
#include "TrovLayout.h"
#include "api/AbiFigures.h"

extern "C" size_t trovTestCLayout(size_t *out, size_t capacity);

namespace {

TEST(Abi, RecordLayoutsAreTheSameInC) {
    const std::vector<size_t> cpp = {
        TROV_ABI_FIGURES
    };
    std::vector<size_t> c(128);
    c.resize(trovTestCLayout(c.data(), c.size()));
    EXPECT_EQ(c, cpp);
}

}  // namespace
