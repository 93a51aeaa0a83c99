// The library's tables, initialised once before any test of the executable
// runs, so that the suites which include this need no set-up of their own.
#pragma once

#include <gtest/gtest.h>

#include "TrovCodec.h"

struct InitialisedCoder : testing::Environment {
    void SetUp() override { ASSERT_EQ(TROV_InitCoder(), 1); }
};

inline testing::Environment *const kInitialisedCoder = testing::AddGlobalTestEnvironment(new InitialisedCoder);
