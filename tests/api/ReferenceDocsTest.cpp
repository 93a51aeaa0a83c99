// The reference pages docs/bodies.md and docs/methods.md against the layout
// descriptions of the shipped library: every documented body and method side
// names the record, field kinds and wire sizes the library reports, and every
// code the library describes is documented. A wrong row fails here.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "TrovLayout.h"
#include "api/Initialised.h"

namespace {

std::string readDoc(const char *name) {
    std::ifstream in(std::string(TROV_SOURCE_DIR) + "/docs/" + name);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The pieces of `text` between the matches of `sep`.
std::vector<std::string> split(const std::string &text, const char *sep) {
    const std::regex re(sep);
    return {std::sregex_token_iterator(text.begin(), text.end(), re, -1), std::sregex_token_iterator()};
}

// What a documented side says: the form, the record, the fields (kind name and
// wire count width) in wire order, the wire bytes with every count 0 and, for
// bodies, whether the length is a minimum.
struct Side {
    uint8_t form = TROV_LAYOUT_FIELDS;
    std::string record;
    std::vector<std::pair<std::string, int>> fields;
    int wireBytes = -1, recordBytes = -1;
    bool noCodec = false;
};

// One field of the documents' notation as the kind name the library reports.
// Bodies: "u8 length + bytes", "bytes to the end of the body", "12 bytes", ...
// Methods: "u8 N1" (a count, joined to the next field), "N1 × octet", "bytes[2]".
bool addField(Side &s, const std::string &token, int &pendingCount) {
    static const std::map<std::string, std::pair<std::string, int>> plain = {
        {"u8", {"u8", 0}}, {"u16", {"u16", 0}}, {"u32", {"u32", 0}},
        {"u8 length + bytes", {"octets", 1}}, {"u16 length + bytes", {"octets", 2}},
        {"bytes to the end of the body", {"rest", 0}},
        {"u16 attribute id + value", {"attribute", 0}}};
    static const std::map<std::string, std::string> elements = {
        {"octet", "octets"}, {"char", "chars"}, {"u16", "u16s"}, {"u32", "u32s"}};
    std::smatch m;
    if (const auto it = plain.find(token); it != plain.end()) {
        s.fields.push_back(it->second);
    } else if (std::regex_match(token, m, std::regex(R"(u(8|16) N\d)"))) {
        pendingCount = m[1] == "8" ? 1 : 2;
    } else if (std::regex_match(token, m, std::regex(R"(N\d × (\w+))")) && pendingCount &&
               elements.count(m[1])) {
        s.fields.emplace_back(elements.at(m[1]), pendingCount);
        pendingCount = 0;
    } else if (std::regex_match(token, m, std::regex(R"((?:bytes\[(\d+)\]|(\d+) bytes))"))) {
        s.fields.emplace_back("bytes", 0);
    } else {
        return false;
    }
    return true;
}

void expectSide(const Side &doc, TrovResult r, const TrovLayoutInfo &l, const std::string &what) {
    if (doc.noCodec) {
        EXPECT_NE(r, 0u) << what << ": documented without a codec";
        return;
    }
    ASSERT_EQ(r, 0u) << what << ": documented, but the library has no layout";
    EXPECT_EQ(l.form, doc.form) << what;
    // Structured records are named after their public type; the page does not list those.
    if (l.form != TROV_LAYOUT_STRUCTURE) {
        EXPECT_EQ(l.record ? l.record : "", doc.record) << what;
    }
    if (doc.recordBytes >= 0) {
        EXPECT_EQ(l.recordBytes, doc.recordBytes) << what;
    }
    if (l.form != TROV_LAYOUT_FIELDS) return;
    std::vector<std::pair<std::string, int>> lib;
    bool attribute = false;
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        if (l.fields[i].kindId == TROV_KIND_BUFFER) continue; // record only
        attribute |= l.fields[i].kindId == TROV_KIND_ATTRIBUTE;
        lib.emplace_back(l.fields[i].kind, l.fields[i].countBytes);
    }
    EXPECT_EQ(lib, doc.fields) << what << ": field kinds and count widths";
    // A body's documented minimum holds one byte of an attribute's value.
    if (doc.wireBytes >= 0) {
        EXPECT_EQ(l.wireFixed + (attribute ? 1 : 0), doc.wireBytes) << what;
    }
}

TEST(ReferenceDocs, BodiesMatchTheLibrary) {
    const std::string page = readDoc("bodies.md");
    if (page.empty()) GTEST_SKIP() << "docs/bodies.md cannot be read here";
    const std::regex row(R"(\| 0x([0-9a-f]+) \| (.+) \| (.+) \|)");
    const std::regex named(R"(`(\w+)`: (.+?)(?: \((\d+) bytes( or more)?\))?)");
    std::map<unsigned, int> documented;
    const std::string codes = page.substr(page.find("## Codes"));
    for (std::sregex_iterator it(codes.begin(), codes.end(), row), end; it != end; ++it) {
        const unsigned code = std::stoul((*it)[1], nullptr, 16);
        ++documented[code];
        for (int request = 1; request >= 0; --request) {
            const std::string cell = (*it)[request ? 2 : 3];
            const std::string what = "body " + std::string((*it)[1]) + (request ? " request" : " reply");
            Side doc;
            std::smatch m;
            if (cell.rfind("none (no encoder", 0) == 0) {
                doc.noCodec = true;
            } else if (cell.rfind("none: nothing is read", 0) == 0) {
                doc.form = TROV_LAYOUT_NONE;
            } else {
                ASSERT_TRUE(std::regex_match(cell, m, named)) << what << ": " << cell;
                doc.record = m[1];
                if (m[3].matched) doc.wireBytes = std::stoi(m[3]);
                int pending = 0;
                for (const std::string &token : split(m[2], ", ")) {
                    if (token.find("events in the") == 0) {
                        doc.form = TROV_LAYOUT_EVENT_LIST;
                    } else if (token == "the method's parameters") {
                        doc.form = TROV_LAYOUT_METHOD_CALL;
                    } else if (token != "nothing" && token.find(" count") == std::string::npos &&
                               token != "u16 method code") {
                        EXPECT_TRUE(addField(doc, token, pending)) << what << ": " << token;
                    }
                }
            }
            TrovLayoutInfo l{};
            expectSide(doc, TROV_DescribeBody(uint16_t(code), TROV_PROTOCOL_VERSION, request, &l), l, what);
        }
    }
    // Both directions: every code the library describes has exactly one row.
    for (unsigned code = 0; code <= 0xFFFF; ++code) {
        TrovLayoutInfo l{};
        const bool known = TROV_DescribeBody(uint16_t(code), TROV_PROTOCOL_VERSION, 0, &l) == 0 ||
                           TROV_DescribeBody(uint16_t(code), TROV_PROTOCOL_VERSION, 1, &l) == 0;
        EXPECT_EQ(documented.count(code) ? documented[code] : 0, known ? 1 : 0) << "body 0x" << std::hex << code;
    }
}

TEST(ReferenceDocs, MethodsMatchTheLibrary) {
    const std::string page = readDoc("methods.md");
    if (page.empty()) GTEST_SKIP() << "docs/methods.md cannot be read here";
    const std::regex side(R"(- (Request|Reply)\b[^:]*: (.*))");
    const std::regex wire(R"(`([^`]*)`, (\d+)(?: \+ [^,]*)? bytes on the wire)");
    const std::regex size(R"((?:Record \(?|size )(\d+))");
    std::map<unsigned, int> documented;
    const std::string methods = page.substr(page.find("## Methods by code"));
    for (const std::string &section : split(methods, "\n### 0x")) {
        if (section.rfind("## ", 0) == 0) continue;
        const unsigned code = std::stoul(section.substr(0, section.find('\n')), nullptr, 16);
        ++documented[code];
        for (std::sregex_iterator it(section.begin(), section.end(), side), end; it != end; ++it) {
            const bool request = (*it)[1] == "Request";
            const std::string text = (*it)[2];
            std::ostringstream what;
            what << "method 0x" << std::hex << code << ((*it)[1] == "Request" ? " request" : " reply");
            Side doc;
            std::smatch m;
            if (text.rfind("none", 0) == 0 || text.rfind("no parameters", 0) == 0) {
                doc.form = TROV_LAYOUT_NONE;
            } else if (text.rfind("structured", 0) == 0) {
                doc.form = TROV_LAYOUT_STRUCTURE;
            } else {
                const bool one = text.rfind("one byte: `u8`", 0) == 0;
                ASSERT_TRUE(one || std::regex_search(text, m, wire)) << what.str() << ": " << text;
                doc.wireBytes = one ? 1 : std::stoi(m[2]);
                int pending = 0;
                for (const std::string &token : split(one ? "u8" : m[1].str(), ", "))
                    EXPECT_TRUE(addField(doc, token, pending)) << what.str() << ": " << token;
                EXPECT_EQ(pending, 0) << what.str() << ": a count without elements";
                ASSERT_TRUE(std::regex_search(text, m, size)) << what.str() << ": " << text;
                doc.recordBytes = std::stoi(m[1]);
            }
            TrovLayoutInfo l{};
            expectSide(doc, TROV_DescribeMethod(uint16_t(code), TROV_PROTOCOL_VERSION, request, &l), l,
                       what.str());
        }
    }
    // Codes of 0x2000 and above without a method of their own are raw bytes.
    for (unsigned code = 0; code < 0x2000; ++code) {
        TrovLayoutInfo l{};
        const bool known = TROV_DescribeMethod(uint16_t(code), TROV_PROTOCOL_VERSION, 1, &l) == 0;
        EXPECT_EQ(documented.count(code) ? documented[code] : 0, known ? 1 : 0) << "method 0x" << std::hex << code;
    }
}

} // namespace
