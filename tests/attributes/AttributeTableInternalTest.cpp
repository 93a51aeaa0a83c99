// The attribute table against its reference: docs/attributes.md lists every
// row with its identifiers, its wire element, its count prefix and its record
// figure, and the table must hold exactly that. The identifier index must
// answer as the plain scan does.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "api/Dispatch.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueTypes.h"

namespace trov {
namespace {

// A row of the reference's row table: "| row | ids | wire | P | record |".
struct DocumentedRow {
    std::vector<uint16_t> ids;
    std::string wire, prefix, record;
};

std::map<int, DocumentedRow> documentedRows(std::istream &in) {
    const std::regex cells(R"(\| (\d+) \| (.*) \| (.*) \| (.*) \| (.*) \|\s*)");
    std::map<int, DocumentedRow> rows;
    bool inRows = false;
    std::smatch m;
    for (std::string s; std::getline(in, s);) {
        if (s.rfind("## The rows", 0) == 0) inRows = true;
        if (!inRows || !std::regex_match(s, m, cells)) continue;
        DocumentedRow &row = rows[std::stoi(m[1])];
        const std::string ids = m[2];
        for (size_t at = ids.find("0x"); at != std::string::npos; at = ids.find("0x", at + 2))
            row.ids.push_back(uint16_t(std::strtoul(ids.c_str() + at, nullptr, 16)));
        row.wire = m[3];
        row.prefix = m[4];
        row.record = m[5];
    }
    return rows;
}

// The number `pattern` captures in `text` ("(\d+) bytes" in "8 bytes"); -1 if absent.
int numberIn(const std::string &text, const char *pattern) {
    std::smatch m;
    return std::regex_search(text, m, std::regex(pattern)) ? std::stoi(m[1]) : -1;
}
int prefixOf(const DocumentedRow &row) { return row.prefix == "none" ? 0 : std::atoi(row.prefix.c_str()); }

// A field list in the reference's notation, e.g. "u8 c8 l32".
std::string notation(const ValueFields &fields) {
    std::string out;
    for (const Field &f : fields) {
        if (f.kind == FieldKind::End) break;
        const bool wide = f.prefix == 2;
        std::string token;
        switch (f.kind) {
        case FieldKind::Octets: token = wide ? "o16" : "o8"; break;
        case FieldKind::Chars: token = wide ? "c16" : "c8"; break;
        case FieldKind::WideU32s: token = "l32"; break;
        case FieldKind::Bytes12: token = "b12"; break;
        case FieldKind::Attributes: token = "attrs"; break;
        default: token = kindInfo(f.kind).name; break;
        }
        out += (out.empty() ? "" : " ") + token;
    }
    return out;
}

TEST(AttributeTable, HoldsWhatTheReferenceLists) {
    std::ifstream f(TROV_SOURCE_DIR "/docs/attributes.md");
    if (!f) GTEST_SKIP() << "the reference is not reachable from here";
    const auto rows = documentedRows(f);
    ASSERT_EQ(rows.size(), 282u);
    int n = 1;
    for (const AttributeCodecRow *r = AttributeCodecTable; r->identifiers != nullptr; ++r, ++n) {
        std::vector<uint16_t> ids;
        for (const uint16_t *p = r->identifiers; *p != 0; ++p) ids.push_back(*p);
        ASSERT_EQ(rows.count(n), 1u) << n;
        EXPECT_EQ(rows.at(n).ids, ids) << "row " << n;
    }
    EXPECT_EQ(n - 1, 282) << "table rows";

    // Fixed-size types: W, P and M (scalar-only types: the size reported).
    for (const FixedValueType &t : kFixedValueTypes) {
        SCOPED_TRACE(testing::Message() << "row " << t.row);
        const DocumentedRow &row = rows.at(t.row);
        EXPECT_EQ(numberIn(row.wire, R"((\d+) bytes\))"), t.wireBytes);
        EXPECT_EQ(prefixOf(row), t.prefixBytes);
        EXPECT_EQ(numberIn(row.record, t.prefixBytes == 0 ? R"(reports (\d+))" : R"((\d+) bytes)"), t.recordBytes);
    }
    // Record types: P and the field string.
    for (const RecordValueType &t : kRecordValueTypes) {
        SCOPED_TRACE(testing::Message() << "row " << t.row);
        const DocumentedRow &row = rows.at(t.row);
        EXPECT_EQ(prefixOf(row), t.prefixBytes);
        if (t.variants == nullptr) {
            EXPECT_EQ(row.wire, "`" + notation(t.fields) + "`");
        }
    }
}

} // namespace
} // namespace trov
