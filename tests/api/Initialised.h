// The library's tables, initialised once before any test of the executable
// runs, so that the suites which include this need no set-up of their own.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

#include "TrovCodec.h"

struct InitialisedCoder : testing::Environment {
    // A failed assertion here would only skip the tests, which ctest counts
    // as passed: the run stops instead.
    void SetUp() override {
        if (TROV_InitCoder() != 1) std::abort();
    }
};

inline testing::Environment *const kInitialisedCoder = testing::AddGlobalTestEnvironment(new InitialisedCoder);
