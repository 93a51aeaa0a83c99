// The attribute table against its reference: docs/attributes.md lists every
// row with its identifiers, its wire element, its count prefix and its record
// figure, and the table must hold exactly that. The identifier index must
// answer as the plain scan does.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
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

std::string trimmed(const std::string &s) {
    const size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
    return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

std::map<int, DocumentedRow> documentedRows(FILE *f) {
    std::map<int, DocumentedRow> rows;
    char line[8192];
    bool inRows = false;
    while (std::fgets(line, sizeof line, f) != nullptr) {
        const std::string s(line);
        if (s.rfind("## The rows", 0) == 0) inRows = true;
        if (!inRows || s.size() < 4 || s[0] != '|' || s[2] < '0' || s[2] > '9') continue;
        std::vector<std::string> cells;
        for (size_t at = 1, next; (next = s.find('|', at)) != std::string::npos; at = next + 1)
            cells.push_back(trimmed(s.substr(at, next - at)));
        DocumentedRow &row = rows[std::atoi(cells.at(0).c_str())];
        for (size_t at = cells.at(1).find("0x"); at != std::string::npos; at = cells[1].find("0x", at + 2))
            row.ids.push_back(uint16_t(std::strtoul(cells[1].c_str() + at, nullptr, 16)));
        row.wire = cells.at(2);
        row.prefix = cells.at(3);
        row.record = cells.at(4);
    }
    return rows;
}

// The number in `text` right before `suffix` ("(6 bytes)"), or after
// `prefix` ("reports 16"); -1 if absent.
int numberBefore(const std::string &text, const std::string &suffix) {
    const size_t at = text.rfind(suffix);
    if (at == std::string::npos) return -1;
    size_t b = at;
    while (b > 0 && text[b - 1] >= '0' && text[b - 1] <= '9') --b;
    return b == at ? -1 : std::atoi(text.c_str() + b);
}
int numberAfter(const std::string &text, const std::string &prefix) {
    const size_t at = text.rfind(prefix);
    return at == std::string::npos ? -1 : std::atoi(text.c_str() + at + prefix.size());
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
        EXPECT_EQ(rows.at(n).ids, ids) << "row " << n;
    }
    EXPECT_EQ(n - 1, 282) << "table rows";

    // Fixed-size types: W, P and M (scalar-only types: the size reported).
    for (const FixedValueType &t : kFixedValueTypes) {
        SCOPED_TRACE(testing::Message() << "row " << t.row);
        const DocumentedRow &row = rows.at(t.row);
        EXPECT_EQ(numberBefore(row.wire, " bytes)"), t.wireBytes);
        EXPECT_EQ(prefixOf(row), t.prefixBytes);
        EXPECT_EQ(t.prefixBytes == 0 ? numberAfter(row.record, "reports ") : numberBefore(row.record, " bytes"),
                  t.recordBytes);
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
