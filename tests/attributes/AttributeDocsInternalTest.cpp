// docs/attributes.md lists every row of the attribute table with its
// identifiers; the reference must say what the table holds.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "api/Dispatch.h"

namespace trov {
namespace {

// Rows of the reference's row table: "| row | 0x0001, 0x0002 | ...".
std::map<int, std::vector<uint16_t>> documentedRows(FILE *f) {
    std::map<int, std::vector<uint16_t>> rows;
    char line[8192];
    bool inRows = false;
    while (std::fgets(line, sizeof line, f) != nullptr) {
        const std::string s(line);
        if (s.rfind("## The rows", 0) == 0) inRows = true;
        if (!inRows || s.size() < 4 || s[0] != '|' || s[2] < '0' || s[2] > '9') continue;
        const size_t second = s.find('|', 1), third = s.find('|', second + 1);
        std::vector<uint16_t> ids;
        for (size_t at = s.find("0x", second); at != std::string::npos && at < third; at = s.find("0x", at + 2))
            ids.push_back(uint16_t(std::strtoul(s.c_str() + at, nullptr, 16)));
        rows[std::atoi(s.c_str() + 1)] = ids;
    }
    return rows;
}

TEST(AttributeDocs, ListEveryRowWithTheTablesIdentifiers) {
    FILE *f = std::fopen(TROV_SOURCE_DIR "/docs/attributes.md", "r");
    if (f == nullptr) GTEST_SKIP() << "the reference is not reachable from here";
    const auto rows = documentedRows(f);
    std::fclose(f);
    ASSERT_EQ(rows.size(), 282u);
    int n = 1;
    for (const AttributeCodecRow *r = AttributeCodecTable; r->identifiers != nullptr; ++r, ++n) {
        std::vector<uint16_t> ids;
        for (const uint16_t *p = r->identifiers; *p != 0; ++p) ids.push_back(*p);
        ASSERT_EQ(rows.count(n), 1u) << n;
        EXPECT_EQ(rows.at(n), ids) << "row " << n;
    }
}

} // namespace
} // namespace trov
