// The version a host compiled against is the one it loaded, and every result
// code has its own name and meaning.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "TrovVersion.h"

namespace {

TEST(Version, TheLoadedLibraryIsTheOneCompiledAgainst) {
    EXPECT_EQ(TROV_GetVersion(), static_cast<uint32_t>(TROV_VERSION));
    EXPECT_EQ(std::to_string(TROV_VERSION_MAJOR) + "." + std::to_string(TROV_VERSION_MINOR) + "." +
                  std::to_string(TROV_VERSION_PATCH),
              TROV_VERSION_STRING);
}

TEST(ResultNames, EveryCodeHasItsOwnNameAndMeaning) {
    const struct {
        TrovResult code;
        const char *name;
    } named[] = {{TROV_RESULT_OK, "OK"}, {TROV_RESULT_SHORT_INPUT, "SHORT_INPUT"},
                 {TROV_RESULT_NO_DATA_TYPE_CODEC, "NO_DATA_TYPE_CODEC"}};
    for (const auto &n : named) EXPECT_STREQ(TROV_ResultName(n.code), n.name);
    std::set<std::string> names, meanings;
    for (TrovResult r = 0; r <= TROV_RESULT_NO_DATA_TYPE_CODEC; ++r) {
        names.insert(TROV_ResultName(r));
        meanings.insert(TROV_ResultMeaning(r));
    }
    EXPECT_EQ(names.size(), 14u);
    EXPECT_EQ(meanings.size(), 14u);
    for (TrovResult r : {14u, 0xFFFFFFFFu}) {
        EXPECT_STREQ(TROV_ResultName(r), "UNKNOWN");
        EXPECT_FALSE(names.count(TROV_ResultMeaning(r)));
    }
}

} // namespace
