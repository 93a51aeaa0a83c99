// The shared lookup rule, on tables of the test's own.
#include <gtest/gtest.h>

#include "api/Dispatch.h"

namespace trov {
namespace {

TEST(Lookup, PlaceholderUntilFullSuite) {
    EXPECT_EQ(findRow<BodyCodecRow>(nullptr, 1, 0x10), nullptr);
}

}  // namespace
}  // namespace trov
