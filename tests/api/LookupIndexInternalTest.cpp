// The compile-time row indexes against the first-match rule written out
// here: for every family's built-in table, and for hand-made tables with rows
// of one version, duplicates and rows that can never be reached (which the
// built-in tables lack), every code is looked up at every version byte.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <ostream>

#include "api/Dispatch.h"

namespace trov {
namespace {

constexpr int kNone = -1; // no row
constexpr int kRaw = -2;  // the raw-method row

// A code's answer at each of the 256 version bytes: a row number, kNone or kRaw.
using Answers = std::array<int, 256>;

// The first-match rule, for all version bytes at once: a row claims the
// version bytes it serves that no earlier row has claimed.
void claim(Answers &a, int row, uint8_t rowVersion) {
    for (int v = 0; v < 256; ++v)
        if (a[v] == kNone && (rowVersion == 0 || rowVersion == v)) a[v] = row;
}

template <class Row>
Answers scanCodes(const Row *table, uint16_t code) {
    Answers a;
    a.fill(kNone);
    for (const Row *r = table; r->code != 0; ++r)
        if (r->code == code) claim(a, int(r - table), r->version);
    return a;
}

Answers scanIdentifiers(const AttributeCodecRow *table, uint16_t id) {
    Answers a;
    a.fill(kNone);
    for (const AttributeCodecRow *r = table; r->identifiers != nullptr; ++r)
        for (const uint16_t *p = r->identifiers; *p != 0; ++p)
            if (*p == id) claim(a, int(r - table), r->version);
    return a;
}

template <class Row>
int rowIn(const Row *table, const Row *row) {
    return row == nullptr ? kNone : int(row - table);
}

// Hand-made tables. Code 0x0001: a one-version row before the every-version
// row, and a row the latter hides; 0x0002: duplicates; 0x000F/0x0010: only
// one-version rows, on both sides of a page boundary; 0x8000 and 0xFFFF: the
// top of the code space; a row past the end row is never reached.
constexpr BodyCodecRow kHandRows[] = {
    {0x0001, 0x10, nullptr, nullptr}, {0x0001, 0, nullptr, nullptr},    {0x0001, 0x20, nullptr, nullptr},
    {0x0002, 0, nullptr, nullptr},    {0x0002, 0, nullptr, nullptr},    {0x0002, 0x10, nullptr, nullptr},
    {0x000F, 0x11, nullptr, nullptr}, {0x0010, 0x12, nullptr, nullptr}, {0x0010, 0x11, nullptr, nullptr},
    {0x0010, 0x12, nullptr, nullptr}, {0x8000, 0, nullptr, nullptr},    {0x7FFF, 0x01, nullptr, nullptr},
    {0xFFFF, 0xFF, nullptr, nullptr}, {0xFFFF, 0, nullptr, nullptr},    {0x1234, 0x00, nullptr, nullptr},
    {0, 0, nullptr, nullptr},         {0x4321, 0, nullptr, nullptr},
};

// An identifier listed twice in its row, in a one-version row and again in
// later rows, and an empty list.
constexpr uint16_t kListA[] = {0x0101, 0x0102, 0x0101, 0};
constexpr uint16_t kListB[] = {0x0102, 0x0103, 0xFFFF, 0};
constexpr uint16_t kListEmpty[] = {0};
constexpr AttributeCodecRow kHandAttributes[] = {
    {kListA, 0x10, {}}, {kListB, 0x20, {}}, {kListEmpty, 0, {}}, {kListA, 0, {}}, {kListB, 0, {}},
    {nullptr, 0, {}},
};

constexpr auto kHandRowsIndex = buildRowIndex<rowIndexShape(kHandRows)>(kHandRows);
constexpr auto kHandAttributesIndex = buildRowIndex<rowIndexShape(kHandAttributes)>(kHandAttributes);

struct Family {
    const char *name;
    Answers (*reference)(uint16_t code);
    int (*lookup)(uint16_t code, uint8_t version);
};

const Family kFamilies[] = {
    {"Attribute", [](uint16_t c) { return scanIdentifiers(AttributeCodecTable, c); },
     [](uint16_t c, uint8_t v) {
         return rowIn(AttributeCodecTable, findAttributeRow(builtinTables(), c, v));
     }},
    {"DataType", [](uint16_t c) { return scanCodes(DataTypeCodecTable, c); },
     [](uint16_t c, uint8_t v) { return rowIn(DataTypeCodecTable, findRow(builtinTables().dataTypes, c, v, builtinTables().dataTypeIndex)); }},
    {"FUBody", [](uint16_t c) { return scanCodes(FUCodecTable, c); },
     [](uint16_t c, uint8_t v) { return rowIn(FUCodecTable, findBodyRow(builtinTables(), c, v, 1)); }},
    {"FPBody", [](uint16_t c) { return scanCodes(FPCodecTable, c); },
     [](uint16_t c, uint8_t v) { return rowIn(FPCodecTable, findBodyRow(builtinTables(), c, v, 2)); }},
    {"FUEvent", [](uint16_t c) { return scanCodes(FUEventCodecTable, c); },
     [](uint16_t c, uint8_t v) { return rowIn(FUEventCodecTable, findEventRow(builtinTables(), c, v, 1)); }},
    {"FPEvent", [](uint16_t c) { return scanCodes(FPEventCodecTable, c); },
     [](uint16_t c, uint8_t v) { return rowIn(FPEventCodecTable, findEventRow(builtinTables(), c, v, 0)); }},
    {"FUMethod",
     [](uint16_t c) {
         Answers a = scanCodes(FUMethodCodecTable, c);
         for (int &row : a)
             if (row == kNone && c >= 0x2000) row = kRaw;
         return a;
     },
     [](uint16_t c, uint8_t v) {
         const MethodCodecRow *row = findMethodRow(builtinTables(), c, v);
         return row == &RawMethodCodecRow ? kRaw : rowIn(FUMethodCodecTable, row);
     }},
    {"FPMethod", [](uint16_t c) { return scanCodes(FPMethodCodecTable, c); },
     [](uint16_t c, uint8_t v) { return rowIn(FPMethodCodecTable, findRow(builtinTables().fpMethods, c, v, builtinTables().fpMethodIndex)); }},
    // The hand-made tables through the index builder, and through the scans
    // the library keeps for tables that are not its own.
    {"HandRowsIndexed", [](uint16_t c) { return scanCodes(kHandRows, c); },
     [](uint16_t c, uint8_t v) { return int(kHandRowsIndex.view().find(c, v)) - 1; }},
    {"HandRowsScanned", [](uint16_t c) { return scanCodes(kHandRows, c); },
     [](uint16_t c, uint8_t v) { return rowIn(kHandRows, findRow(kHandRows, c, v)); }},
    {"HandAttributesIndexed", [](uint16_t c) { return scanIdentifiers(kHandAttributes, c); },
     [](uint16_t c, uint8_t v) { return int(kHandAttributesIndex.view().find(c, v)) - 1; }},
    {"HandAttributesScanned", [](uint16_t c) { return scanIdentifiers(kHandAttributes, c); },
     [](uint16_t c, uint8_t v) { return rowIn(kHandAttributes, findAttributeRow(Tables{kHandAttributes}, c, v)); }},
};

void PrintTo(const Family &f, std::ostream *os) { *os << f.name; }

class LookupIndex : public testing::TestWithParam<Family> {};

TEST_P(LookupIndex, AnswersAsTheFirstMatchRuleForEveryCodeAndVersion) {
    const Family &f = GetParam();
    for (uint32_t code = 0; code <= 0xFFFF; ++code) {
        const Answers want = f.reference(uint16_t(code));
        for (int v = 0; v < 256; ++v) {
            const int got = f.lookup(uint16_t(code), uint8_t(v));
            if (got != want[v]) {
                FAIL() << "code 0x" << std::hex << code << " version 0x" << v << std::dec << ": row "
                       << got << ", the rule gives " << want[v];
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Tables, LookupIndex, testing::ValuesIn(kFamilies),
                         [](const testing::TestParamInfo<Family> &p) { return p.param.name; });

} // namespace
} // namespace trov
