// trov_gen_records: writes the public C declarations of the records the
// library takes and hands out (TrovRecords.h, and the body records of
// TrovBodies.h), the named codes (TrovCodes.h), the test's check list
// (PublicRecordsChecks.inc), the typed encode front doors (TrovEncode.h) and
// the code-to-record maps of the C++ layer (TrovTypes.hpp), so that none of
// them is kept by hand.
//
//   trov_gen_records records|bodies|codes|checks|encode|types   prints that file on stdout
//
// Flat layouts (events, method parameters, attribute and typed values) come
// from the library's own layout descriptions (TrovLayout.h): a member per
// described field, named as the field, at the described offset. Structured
// records come from the structure codec's descriptors, named as the layout
// description names them, at the codec's own placement (with an array's
// elements: the slot a count of 0 keeps is noted in a comment). The attribute table gives the rows (identifier
// lists in row order). Body records come from the body layouts
// (units/FunctionUnitBodies.h), in their order, each commented with the body
// codes whose request or reply it is (from the body table's rows). Whatever
// the emitted C would not reproduce (an offset natural alignment cannot
// reach, a field kind without a C form) stops the generator with an error
// rather than a wrong header.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "TrovLayout.h"
#include "api/Dispatch.h"
#include "units/BodyDescription.h"
#include "api/StructureDescription.h"
#include "attributes/StructureValueTypes.h"
#include "events/AttributeEvents.h"
#include "units/FunctionUnitBodies.h"
#include "units/MethodCodecs.h"

namespace {

[[noreturn]] void fail(const std::string &what) {
    std::fprintf(stderr, "trov_gen_records: %s\n", what.c_str());
    std::exit(1);
}

std::string hex4(unsigned v) {
    char b[8];
    std::snprintf(b, sizeof b, "%04X", v & 0xFFFFu);
    return b;
}
std::string hexCode(unsigned v) {
    char b[12];
    std::snprintf(b, sizeof b, v > 0xFF ? "0x%04X" : "0x%02X", v);
    return b;
}

// ---- C members ------------------------------------------------------------------

struct Member {
    std::string type;     // C type
    std::string name;     // member name
    std::string suffix;   // array suffix, "[12]"
    unsigned offset;      // where the record has it
    unsigned size, align; // the C type's
    std::string comment;
};

// A declared struct: its members in record order and the size the record has.
struct Record {
    std::string name;
    std::vector<std::string> comment;
    std::vector<Member> members;
    unsigned bytes = 0;
};

// A counted field's 16-byte head: the C type for (kind, record count width).
struct Head {
    uint8_t kind, countWidth;
    const char *type;
};
constexpr Head kHeads[] = {
    {TROV_KIND_OCTETS, 1, "TrovBytes8"},      {TROV_KIND_OCTETS, 2, "OctetString"},
    {TROV_KIND_CHARS, 1, "TrovBytes8"},       {TROV_KIND_CHARS, 2, "OctetString"},
    {TROV_KIND_REST, 2, "OctetString"},       {TROV_KIND_U16S, 1, "TrovU16List8"},
    {TROV_KIND_U16S, 2, "TrovU16List16"},     {TROV_KIND_U32S, 1, "TrovU32List8"},
    {TROV_KIND_U32S, 2, "TrovU32List16"},     {TROV_KIND_WIDE_U32S, 1, "TrovWideU32List8"},
    {TROV_KIND_U8U32_ITEMS, 1, "TrovU8U32List8"}, {TROV_KIND_ATTRIBUTES, 2, "AttributeList"},
    {TROV_KIND_EVENT_ATTRIBUTES, 2, "AttributeList"},
};

// The element pointer of a counted field whose count stands in a field of its own.
const char *pointerType(uint8_t kind) {
    switch (kind) {
    case TROV_KIND_OCTETS:
    case TROV_KIND_CHARS: return "uint8_t *";
    case TROV_KIND_U16S: return "uint16_t *";
    case TROV_KIND_U32S: return "uint32_t *";
    case TROV_KIND_WIDE_U32S: return "uint32_t *";
    case TROV_KIND_U8U32_ITEMS: return "TrovU8U32Item *";
    case TROV_KIND_U32U8_ITEMS: return "TrovU32U8Item *";
    case TROV_KIND_BYTE_PAIRS: return "TrovBytePair *";
    default: return nullptr;
    }
}

Member scalar(unsigned width, std::string name, unsigned offset, std::string comment = {}) {
    const char *t = width == 1 ? "uint8_t" : width == 2 ? "uint16_t" : "uint32_t";
    return {t, std::move(name), {}, offset, width, width, std::move(comment)};
}
Member pointer(std::string type, std::string name, unsigned offset, std::string comment = {}) {
    return {std::move(type), std::move(name), {}, offset, 8, 8, std::move(comment)};
}

// Members of one described field (one, or two for an identifier or data type
// and its value pointer).
void membersOf(const TrovFieldInfo &f, std::vector<Member> &out, const std::string &where) {
    const std::string name = f.name;
    switch (f.kindId) {
    case TROV_KIND_U8:
    case TROV_KIND_U16:
    case TROV_KIND_U32: out.push_back(scalar(f.width, name, f.offset)); return;
    case TROV_KIND_RESERVED: out.push_back(scalar(1, name, f.offset, "no wire byte fills it")); return;
    case TROV_KIND_COUNT:
        out.push_back(scalar(f.width, name, f.offset, "the count of the next field"));
        return;
    case TROV_KIND_BYTES:
        out.push_back({"uint8_t", name, "[" + std::to_string(f.width) + "]", f.offset, f.width, 1, {}});
        return;
    case TROV_KIND_BYTES12:
        out.push_back({"uint8_t", name, "[16]", f.offset, 16, 1, "12 bytes on the wire, in an 8-aligned slot"});
        return;
    case TROV_KIND_OPTION:
        if (f.dataOffset != f.offset + 8) fail(where + ": an option's value pointer moved");
        out.push_back({"TrovOption", name, {}, f.offset, 16, 8, {}});
        return;
    case TROV_KIND_ATTRIBUTE:
    case TROV_KIND_VALUE:
    case TROV_KIND_RESERVED_VALUE: {
        const bool attribute = f.kindId == TROV_KIND_ATTRIBUTE;
        out.push_back(scalar(2, name, f.offset, attribute ? "attribute identifier" : "data type"));
        out.push_back(pointer("void *", name + "Data", f.dataOffset,
                              attribute ? "the value's record (array form)" : "the value's record"));
        return;
    }
    default: break;
    }
    if (f.countField >= 0) { // the count stands in a field of its own
        const char *t = pointerType(f.kindId);
        if (t == nullptr || f.dataOffset != f.offset) fail(where + ": a counted field without a C form");
        out.push_back(pointer(t, name, f.offset, "null when the count is 0"));
        return;
    }
    for (const Head &h : kHeads)
        if (h.kind == f.kindId && h.countWidth == f.countRecordBytes) {
            if (f.width != 16 || f.dataOffset != f.offset + 8) fail(where + ": a head that is not 16 bytes");
            out.push_back({h.type, name, {}, f.offset, 16, 8, {}});
            return;
        }
    fail(where + ": field " + name + " of kind " + std::to_string(f.kindId) + " has no C form");
}

// Rounds up to a multiple of a.
unsigned roundUp(unsigned v, unsigned a) { return (v + a - 1) / a * a; }

// The C layout of the members, checked against their offsets and the record
// size; explicit padding where natural alignment leaves the record short.
void layOut(Record &r) {
    unsigned at = 0, align = 1;
    std::vector<Member> out;
    int pad = 0;
    for (Member &m : r.members) {
        const unsigned natural = roundUp(at, m.align);
        if (m.offset < natural) fail(r.name + "." + m.name + ": offset below natural alignment");
        if (m.offset > natural)
            out.push_back({"uint8_t", "padding" + std::to_string(pad++),
                           "[" + std::to_string(m.offset - at) + "]", at, m.offset - at, 1, {}});
        out.push_back(m);
        at = m.offset + m.size;
        if (m.align > align) align = m.align;
    }
    unsigned size = roundUp(at, align);
    if (size > r.bytes) fail(r.name + ": members reach past the record size");
    if (size < r.bytes) {
        const unsigned end = r.bytes - at;
        out.push_back({"uint8_t", "padding" + std::to_string(pad), "[" + std::to_string(end) + "]", at, end, 1,
                       "room the record keeps"});
        at += end;
        size = roundUp(at, align);
        if (size != r.bytes) fail(r.name + ": no padding reaches the record size");
    }
    r.members = std::move(out);
}

// Comment lines, wrapped to fit 100 columns.
std::vector<std::string> wrap(const std::vector<std::string> &text) {
    std::vector<std::string> lines;
    for (const std::string &t : text) {
        std::string line;
        size_t at = 0;
        while (at < t.size()) {
            size_t end = t.find(' ', at);
            if (end == std::string::npos) end = t.size();
            const std::string word = t.substr(at, end - at);
            if (!line.empty() && line.size() + 1 + word.size() > 92) {
                lines.push_back(line);
                line.clear();
            }
            line += (line.empty() ? "" : " ") + word;
            at = end + 1;
        }
        lines.push_back(line);
    }
    return lines;
}

std::string declaration(const Record &r) {
    std::string s;
    const std::vector<std::string> comment = wrap(r.comment);
    for (size_t i = 0; i < comment.size(); ++i)
        s += (i == 0 ? "/* " : " * ") + comment[i] + (i + 1 == comment.size() ? " */\n" : "\n");
    s += "typedef struct " + r.name + " {\n";
    for (const Member &m : r.members) {
        std::string line = "    " + m.type + (m.type.back() == '*' ? "" : " ") + m.name + m.suffix + ";";
        if (!m.comment.empty()) line += " /* " + m.comment + " */";
        s += line + "\n";
    }
    s += "} " + r.name + ";\n";
    return s;
}

// ---- what the library describes ----------------------------------------------------

constexpr uint8_t kProtocolVersion = TROV_PROTOCOL_VERSION;

enum Family { kEvent, kMethodRequest, kMethodReply, kAttribute, kDataType, kFixed };
const char *familyName(Family f) {
    static const char *const names[] = {"Event", "MethodRequest", "MethodReply", "Attribute", "DataType", "Fixed"};
    return names[f];
}

bool describe(Family f, unsigned code, TrovLayoutInfo &out) {
    switch (f) {
    case kEvent: return TROV_DescribeEvent(uint16_t(code), kProtocolVersion, &out) == 0;
    case kMethodRequest: return TROV_DescribeMethod(uint16_t(code), kProtocolVersion, 1, &out) == 0;
    case kMethodReply: return TROV_DescribeMethod(uint16_t(code), kProtocolVersion, 0, &out) == 0;
    case kAttribute: return TROV_DescribeAttribute(uint16_t(code), kProtocolVersion, &out) == 0;
    case kDataType: return TROV_DescribeDataType(uint16_t(code), kProtocolVersion, &out) == 0;
    default: return false;
    }
}

// A value that is one scalar needs no record of its own.
bool plainScalar(const TrovLayoutInfo &l) {
    return l.form == TROV_LAYOUT_FIELDS && l.fieldCount == 1 && l.fields[0].offset == 0 &&
           (l.fields[0].kindId == TROV_KIND_U8 || l.fields[0].kindId == TROV_KIND_U16 ||
            l.fields[0].kindId == TROV_KIND_U32);
}
const char *scalarType(const TrovLayoutInfo &l) {
    const unsigned w = l.fields[0].width;
    return w == 1 ? "uint8_t" : w == 2 ? "uint16_t" : "uint32_t";
}

// A layout's shape, to share one struct among layouts that are the same.
std::string shapeOf(const TrovLayoutInfo &l) {
    std::string s = std::to_string(l.recordBytes) + "/" + std::to_string(l.form) + "/" +
                    std::to_string(l.arrayCountBytes);
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        const TrovFieldInfo &f = l.fields[i];
        s += ";" + std::string(f.name) + ":" + std::to_string(f.kindId) + "@" + std::to_string(f.offset) + "w" +
             std::to_string(f.width) + "d" + std::to_string(f.dataOffset) + "c" + std::to_string(f.countRecordBytes) +
             "/" + std::to_string(f.countBytes);
    }
    return s;
}

std::string wireSummary(const TrovLayoutInfo &l) {
    std::string s;
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        const TrovFieldInfo &f = l.fields[i];
        if (f.kindId == TROV_KIND_RESERVED) continue;
        if (!s.empty()) s += " ";
        std::string k = f.kind;
        if (f.countBytes != 0 && f.kindId != TROV_KIND_COUNT) k += f.countBytes == 1 ? "/u8" : "/u16";
        if (f.kindId == TROV_KIND_BYTES) k += std::to_string(f.width);
        if (f.kindId == TROV_KIND_BYTES12) k += "12";
        s += k;
    }
    return s;
}

// A check of one member: its name in the description (or the codec's), where
// the C record has it and, for described fields, where it has the field's
// data pointer. `expected`: the codec's offset for structured records.
struct Check {
    std::string name, offsetExpr, dataExpr;
    int expected = -1;
};

struct Declared {
    Family family;
    unsigned code;    // the first code that uses the layout
    std::string type; // the declared type
    std::string primary; // the struct it is, for checks shared with it
    int expectedSize = -1;
};

struct Output {
    std::string records;                      // struct declarations and typedefs
    std::map<std::string, std::vector<Check>> checks; // by struct name
    std::vector<Declared> declared;
};

std::vector<Check> checksOf(const std::string &type, const TrovLayoutInfo &l, const Record &r) {
    std::vector<Check> out;
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        const TrovFieldInfo &f = l.fields[i];
        const std::string name = f.name;
        Check c{name, "offsetof(" + type + ", " + name + ")", "TROV_NO_DATA", -1};
        if (f.kindId == TROV_KIND_ATTRIBUTE || f.kindId == TROV_KIND_VALUE || f.kindId == TROV_KIND_RESERVED_VALUE)
            c.dataExpr = "offsetof(" + type + ", " + name + "Data)";
        else if (f.dataOffset != TROV_NO_DATA) {
            std::string head;
            for (const Member &m : r.members)
                if (m.name == name && m.type.back() != '*') head = m.type;
            c.dataExpr = head.empty() ? c.offsetExpr
                         : head == "TrovOption" ? c.offsetExpr + " + offsetof(TrovOption, value)"
                         : head == "AttributeList" ? c.offsetExpr + " + offsetof(AttributeList, entries)"
                         : c.offsetExpr + " + offsetof(" + head + ", data)";
        }
        out.push_back(c);
    }
    return out;
}

// Declares the layouts of `items` (family and code), one struct per shape,
// named after the first item that has it and followed by a typedef for
// every other item that shares it.
using NameOf = std::string (*)(Family, unsigned);
void declareFlat(Output &o, const std::vector<std::pair<Family, unsigned>> &items, NameOf nameOf, NameOf titleOf,
                 std::map<std::string, std::string> &shapes) {
    std::vector<std::string> order;
    std::map<std::string, std::vector<std::pair<Family, unsigned>>> groups;
    for (const auto &item : items) {
        TrovLayoutInfo l{};
        if (!describe(item.first, item.second, l)) fail("no description for " + hexCode(item.second));
        if (l.form != TROV_LAYOUT_FIELDS || plainScalar(l)) continue;
        const std::string shape = shapeOf(l);
        if (groups.count(shape) == 0) order.push_back(shape);
        groups[shape].push_back(item);
    }
    for (const std::string &shape : order) {
        const auto &group = groups[shape];
        std::string primary;
        size_t first = 0;
        if (auto it = shapes.find(shape); it != shapes.end()) {
            primary = it->second; // declared with an earlier family
        } else {
            const auto [family, code] = group[0];
            TrovLayoutInfo l{};
            describe(family, code, l);
            primary = nameOf(family, code);
            shapes.emplace(shape, primary);
            std::string titles;
            for (const auto &[f, c] : group) titles += (titles.empty() ? "" : ", ") + titleOf(f, c);
            Record r;
            r.name = primary;
            r.bytes = l.recordBytes;
            r.comment.push_back(titles + ": " + wireSummary(l) + "; " + std::to_string(l.recordBytes) +
                                " record bytes" +
                                (l.arrayCountBytes != 0 ? std::string(", array form with a u") +
                                                              (l.arrayCountBytes == 1 ? "8" : "16") + " count"
                                                        : std::string()) +
                                ".");
            for (uint16_t i = 0; i < l.fieldCount; ++i) membersOf(l.fields[i], r.members, primary);
            layOut(r);
            o.records += "\n" + declaration(r);
            o.checks[primary] = checksOf(primary, l, r);
            o.declared.push_back({family, code, primary, primary});
            first = 1;
        }
        for (size_t i = first; i < group.size(); ++i) {
            const std::string type = nameOf(group[i].first, group[i].second);
            o.records += "typedef " + primary + " " + type + ";\n";
            o.declared.push_back({group[i].first, group[i].second, type, primary});
        }
    }
}

// ---- structured records -------------------------------------------------------------

// The public type of a structured record: the library's own name for it,
// which its layout description gives out.
const char *typeOf(const trov::Plan *p) {
    for (const trov::StructureName &n : trov::kStructureNames)
        if (n.plan == p) return n.record;
    fail("a structured record without a name");
}

// Declares one structured record from its plan: members at the plan's
// placement (arrays with elements), named as the plan names them.
Record structRecord(const trov::Plan &plan, std::vector<Check> &checks, std::vector<std::string> comment) {
    Record r;
    r.name = typeOf(&plan);
    r.comment = std::move(comment);
    r.bytes = plan.record;
    bool arrayAfterCount = false;
    for (uint8_t i = 0; i < plan.count; ++i) {
        const trov::Field &f = plan.fields[i];
        const std::string name = f.name;
        const uint16_t at = f.kind == trov::FieldKind::Records ? f.data : f.offset;
        Member m;
        switch (f.kind) {
        case trov::FieldKind::Octets: m = pointer("uint8_t *", name, at, "null when the count is 0"); break;
        case trov::FieldKind::Chars:
            m = pointer("char *", name, at, "zero-terminated when decoded; null when the count is 0");
            break;
        case trov::FieldKind::Record: m = {typeOf(f.nested), name, {}, at, f.size, f.nested->align, {}}; break;
        case trov::FieldKind::Options: m = {"TrovOptionList", name, {}, at, 16, 8, {}}; break;
        case trov::FieldKind::Entry: m = {"AttributeEntry", name, {}, at, 16, 8, {}}; break;
        case trov::FieldKind::Records:
            m = pointer(std::string(typeOf(f.nested)) + " *", name, at, "read only when the count is above 0 (see above)");
            arrayAfterCount = true;
            break;
        case trov::FieldKind::Count:
            m = scalar(f.prefix, name, at, "the count of the next counted field");
            break;
        case trov::FieldKind::U8:
        case trov::FieldKind::U16:
        case trov::FieldKind::U32: m = scalar(trov::kindInfo(f.kind).wire, name, at, ""); break;
        default: fail(r.name + ": an unknown structure field");
        }
        r.members.push_back(m);
        checks.push_back({name, "offsetof(" + r.name + ", " + name + ")", "TROV_NO_DATA", int(at)});
    }
    if (arrayAfterCount && !r.comment.empty())
        r.comment.push_back("A counted array's pointer is at the offset shown when its count is above 0; with a "
                            "count of 0 the codec keeps its slot right behind the count instead.");
    layOut(r);
    return r;
}

void declareStruct(Output &o, const trov::Plan &plan, std::vector<std::string> comment,
                   std::set<const trov::Plan *> &done) {
    if (done.count(&plan) != 0) return;
    for (uint8_t i = 0; i < plan.count; ++i)
        if (plan.fields[i].nested != nullptr && plan.fields[i].nested != &plan)
            declareStruct(o, *plan.fields[i].nested, {}, done);
    done.insert(&plan);
    if (comment.empty()) comment.push_back("Nested in structured records.");
    std::vector<Check> checks;
    Record r = structRecord(plan, checks, std::move(comment));
    o.records += "\n" + declaration(r);
    o.checks[r.name] = checks;
    o.declared.push_back({kFixed, 0, r.name, r.name, int(r.bytes)});
}

// ---- codes --------------------------------------------------------------------------

std::string eventName(Family, unsigned code) { return "TrovEvent" + hex4(code); }
std::string eventTitle(Family, unsigned code) { return "Event " + hexCode(code); }
std::string methodName(Family f, unsigned code) {
    return "TrovMethod" + hex4(code) + (f == kMethodRequest ? "Request" : "Reply");
}
std::string methodTitle(Family f, unsigned code) {
    return std::string("Method ") + hexCode(code) + (f == kMethodRequest ? " request" : " reply");
}
std::string attributeName(Family, unsigned id) { return "TrovAttribute" + hex4(id) + "Value"; }
std::string attributeTitle(Family, unsigned id) { return "Row of attribute " + hexCode(id); }
std::string dataTypeName(Family, unsigned code) { return "TrovDataType" + hex4(code) + "Value"; }
std::string dataTypeTitle(Family, unsigned code) { return "Data type " + hexCode(code); }

std::vector<unsigned> known(Family f, unsigned limit = 0x10000) {
    std::vector<unsigned> out;
    TrovLayoutInfo l{};
    for (unsigned c = 1; c < limit; ++c)
        if (describe(f, c, l)) out.push_back(c);
    return out;
}

// The attribute table's rows: each row's identifiers in list order, once each.
std::vector<std::vector<unsigned>> attributeRows() {
    std::vector<std::vector<unsigned>> rows;
    for (const trov::AttributeCodecRow *r = trov::AttributeCodecTable; r->identifiers != nullptr; ++r) {
        std::vector<unsigned> ids;
        for (const uint16_t *p = r->identifiers; *p != 0; ++p)
            if (std::find(ids.begin(), ids.end(), *p) == ids.end()) ids.push_back(*p);
        rows.push_back(ids);
    }
    if (rows.size() != 282) fail("the attribute table no longer has 282 rows");
    return rows;
}

// The method codes with a row of their own (codes of 0x2000 and above
// without one are raw bytes).
std::vector<unsigned> methodCodes() {
    std::vector<unsigned> out;
    TrovLayoutInfo l{};
    for (unsigned c = 1; c < 0x10000; ++c)
        if (TROV_DescribeMethod(uint16_t(c), kProtocolVersion, 1, &l) == 0 && l.form != TROV_LAYOUT_RAW) out.push_back(c);
    return out;
}

// The structure-form event: the record is a 16-byte head pointing at the
// structure, which follows at offset 16.
const char *const kStructureEventHead = R"(
/* Events 0xC4, 0xC5: a 16-byte head whose pointer points at `data`, the
 * structure behind it. */
typedef struct TrovEvent00C4 {
    TrovEvent00C4Body *body; /* points at data */
    uint8_t reserved[8];
    TrovEvent00C4Body data;
} TrovEvent00C4;
typedef TrovEvent00C4 TrovEvent00C5; /* Event 0xC5 */
)";

// The selector type: a u8 selector at 0, the variant it names at 8.
const char *const kSelectorValue = R"(
/* Attribute 0x013C: a u8 selector 1 to 4 on the wire, then the variant it
 * names: 1 u32; 2 u16, u16, chars/u8; 3 octets/u8; 4 u32, u32, u32s/u8.
 * Scalar form only. */
typedef struct TrovAttribute013CVariant2 {
    uint16_t value0;
    uint16_t value1;
    TrovBytes8 string2;
} TrovAttribute013CVariant2;
typedef struct TrovAttribute013CVariant4 {
    uint32_t value0;
    uint32_t value1;
    TrovWideU32List8 array2;
} TrovAttribute013CVariant4;
typedef struct TrovAttribute013CValue {
    uint8_t selector;
    union {
        uint32_t variant1;
        TrovAttribute013CVariant2 variant2;
        TrovBytes8 variant3;
        TrovAttribute013CVariant4 variant4;
    } variant;
} TrovAttribute013CValue;
)";

const char *const kRecordsHead = R"(/*
 * TrovRecords.h - C declarations of the records behind events, method
 * parameters, attribute values and typed values: what a host reads after
 * decoding and fills before encoding. Plain C; usable from C and C++.
 *
 * Generated by tools/gen-records (trov_gen_records records) from the layout
 * descriptions the codecs run on (TrovLayout.h) and the structure codec's
 * descriptors; do not edit. A test checks every size and offset below
 * against the library's own description.
 *
 * Member names are the field names of the layout description (value0,
 * string1, array2, ...), so a host can go from TROV_Describe* to the
 * declaration. A field holding an attribute identifier or a data type is
 * followed by its value pointer, named after it with "Data". Multi-byte
 * members hold host-order values; the wire carries them big-endian.
 *
 * Decoded records lie in a block the library allocated, each one's variable
 * data behind its fixed part. Pointers are null when their count is 0.
 *
 * Names: a struct is declared once per distinct layout and named after the
 * first code that has it; every other code that shares the layout gets a
 * typedef. Events are TrovEventXXXX, method parameters
 * TrovMethodXXXXRequest / TrovMethodXXXXReply, attribute values
 * TrovAttributeXXXXValue (after the first identifier of the row; TrovCodes.h
 * lists every identifier under its row), typed values TrovDataTypeXXXXValue,
 * with XXXX the code in hexadecimal. Values that are one scalar (uint8_t,
 * uint16_t, uint32_t) and method sides without parameters have no record.
 */
#ifndef TROVRECORDS_H
#define TROVRECORDS_H

#include <stdint.h>

#include "TrovCodec.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------ counted data
 *
 * A counted field is a 16-byte head: the count at offset 0 (at the width the
 * record keeps for it) and a pointer to the data at offset 8. A u16-counted
 * byte or character string is an OctetString, a list of attributes an
 * AttributeList (TrovCodec.h). A character string keeps one spare byte behind
 * decoded data, not written. Where a count stands in a field of its own, the
 * field after it is the bare pointer. */

/* Bytes or characters with a u8 length. */
typedef struct TrovBytes8 {
    uint8_t length;
    uint8_t *data;
} TrovBytes8;

/* u16 values in host order, with a u8 or u16 count. */
typedef struct TrovU16List8 {
    uint8_t count;
    uint16_t *data;
} TrovU16List8;
typedef struct TrovU16List16 {
    uint16_t count;
    uint16_t *data;
} TrovU16List16;

/* u32 values in host order, 4 bytes each, with a u8 or u16 count. */
typedef struct TrovU32List8 {
    uint8_t count;
    uint32_t *data;
} TrovU32List8;
typedef struct TrovU32List16 {
    uint16_t count;
    uint32_t *data;
} TrovU32List16;

/* u32 values in host order, 4 bytes apart like the list above, in a block
 * that keeps 8 bytes of room per value (the back half of the block unused). */
typedef struct TrovWideU32List8 {
    uint8_t count;
    uint32_t *data;
} TrovWideU32List8;

/* Items of a u8 and a u32 (5 bytes on the wire, 8 in the record). */
typedef struct TrovU8U32Item {
    uint8_t first;
    uint32_t second;
} TrovU8U32Item;
typedef struct TrovU8U32List8 {
    uint8_t count;
    TrovU8U32Item *data;
} TrovU8U32List8;

/* Items of a u32 and a u8 (5 bytes on the wire, 8 in the record). */
typedef struct TrovU32U8Item {
    uint32_t first;
    uint8_t second;
} TrovU32U8Item;

/* Two bytes as they stand. */
typedef struct TrovBytePair {
    uint8_t first;
    uint8_t second;
} TrovBytePair;

/* An option parameter: u8 kind, u8 length, the value (kinds 1 to 5: the
 * kind's fixed value; others: `length` bytes). */
typedef struct TrovOption {
    uint8_t kind;
    uint8_t length;
    void *value; /* null when the value has no bytes */
} TrovOption;

/* A list of options: a u8 count, then the options. */
typedef struct TrovOptionList {
    uint8_t count;
    TrovOption *options; /* null when count is 0 */
} TrovOptionList;
)";

const char *const kRecordsTail = R"(
#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVRECORDS_H */
)";

Output build() {
    TROV_InitCoder();
    Output o;
    std::set<const trov::Plan *> done;

    // Structured records first: flat records do not use them, method and
    // attribute records below refer to them by typedef.
    o.records += "\n/* ------------------------------------------------------ structured records\n"
                 " *\n * Records of the structure codec: fields at their natural alignment,\n"
                 " * variable data behind the outermost record. */\n";
    const trov::StructureValueType *structures = trov::kStructureValueTypes;
    const auto rows = attributeRows();
    for (size_t i = 0; i < std::size(trov::kStructureValueTypes); ++i) {
        const auto &t = structures[i];
        std::string ids;
        for (unsigned id : rows[t.row - 1]) ids += (ids.empty() ? "" : ", ") + hexCode(id);
        declareStruct(o, *t.plan, {"The value of attribute " + ids + ".", "Scalar form only."}, done);
    }
    declareStruct(o, trov::kMethodReplyBB, {"Method 0xBB reply."}, done);
    declareStruct(o, trov::kMethodReplyBC, {"Method 0xBC reply."}, done);
    declareStruct(o, trov::kMethodReplyC0, {"Method 0xC0 reply."}, done);
    declareStruct(o, trov::structure_event::kBody, {"Events 0xC4, 0xC5: the structure behind the head."}, done);
    o.records += kStructureEventHead;
    o.checks["TrovEvent00C4"] = {{"body", "offsetof(TrovEvent00C4, body)", "TROV_NO_DATA", 0},
                                 {"data", "offsetof(TrovEvent00C4, data)", "TROV_NO_DATA",
                                  int(trov::structure_event::kHeadBytes)}};

    // Events.
    o.records += "\n/* ------------------------------------------------------------------ events */\n";
    std::map<std::string, std::string> shapes;
    std::vector<unsigned> events = known(kEvent);
    for (unsigned c : events) {
        TrovLayoutInfo l{};
        describe(kEvent, c, l);
        if (l.form == TROV_LAYOUT_STRUCTURE) o.declared.push_back({kEvent, c, eventName(kEvent, c), "TrovEvent00C4"});
    }
    std::vector<std::pair<Family, unsigned>> items;
    for (unsigned c : events) items.emplace_back(kEvent, c);
    declareFlat(o, items, eventName, eventTitle, shapes);

    // Method parameters: for each method its request, then its reply.
    o.records += "\n/* ------------------------------------------------------- method parameters */\n";
    shapes.clear();
    items.clear();
    for (unsigned c : methodCodes()) {
        items.emplace_back(kMethodRequest, c);
        TrovLayoutInfo l{};
        describe(kMethodReply, c, l);
        if (l.form == TROV_LAYOUT_STRUCTURE)
            o.declared.push_back({kMethodReply, c, methodName(kMethodReply, c), methodName(kMethodReply, c)});
        else items.emplace_back(kMethodReply, c);
    }
    declareFlat(o, items, methodName, methodTitle, shapes);

    // Attribute values, row by row, each named after the row's first identifier.
    o.records += "\n/* -------------------------------------------------------- attribute values */\n";
    shapes.clear();
    o.records += kSelectorValue;
    items.clear();
    for (const auto &ids : rows) {
        if (ids.empty()) continue;
        TrovLayoutInfo l{};
        if (!describe(kAttribute, ids[0], l)) fail("no description for attribute " + hexCode(ids[0]));
        if (l.form == TROV_LAYOUT_STRUCTURE) {
            for (size_t i = 0; i < std::size(trov::kStructureValueTypes); ++i)
                if (rows[structures[i].row - 1] == ids) {
                    const std::string t = attributeName(kAttribute, ids[0]);
                    const std::string s = typeOf(structures[i].plan);
                    o.records += "typedef " + s + " " + t + "; /* Attribute " + hexCode(ids[0]) + " */\n";
                    o.declared.push_back({kAttribute, ids[0], t, s});
                }
        } else if (l.form == TROV_LAYOUT_SELECTOR) {
            o.declared.push_back({kAttribute, ids[0], "TrovAttribute013CValue", "TrovAttribute013CValue"});
        } else {
            items.emplace_back(kAttribute, ids[0]);
        }
    }
    declareFlat(o, items, attributeName, attributeTitle, shapes);
    o.checks["TrovAttribute013CValue"] = {{"selector", "offsetof(TrovAttribute013CValue, selector)", "TROV_NO_DATA",
                                           -1},
                                          {"variant", "offsetof(TrovAttribute013CValue, variant)", "TROV_NO_DATA", 8}};

    // Typed values: those a data type shares with an attribute row are that
    // row's records.
    o.records += "\n/* ------------------------------------------------------------ typed values */\n";
    items.clear();
    for (unsigned c : known(kDataType)) {
        TrovLayoutInfo l{}, a{};
        describe(kDataType, c, l);
        if (plainScalar(l)) continue;
        std::string same;
        for (const auto &ids : rows)
            if (!ids.empty() && describe(kAttribute, ids[0], a) && a.fields == l.fields) {
                for (const Declared &d : o.declared)
                    if (d.family == kAttribute && d.code == ids[0]) same = d.type;
                break;
            }
        if (same.empty()) {
            items.emplace_back(kDataType, c);
        } else {
            const std::string t = dataTypeName(kDataType, c);
            o.records += "typedef " + same + " " + t + "; /* Data type " + hexCode(c) + " */\n";
            std::string primary = same;
            for (const Declared &d : o.declared)
                if (d.type == same) primary = d.primary;
            o.declared.push_back({kDataType, c, t, primary});
        }
    }
    declareFlat(o, items, dataTypeName, dataTypeTitle, shapes);
    return o;
}

std::string records(const Output &o) { return kRecordsHead + o.records + kRecordsTail; }

std::string checks(const Output &o) {
    std::string s = "// Generated by tools/gen-records (trov_gen_records checks); do not edit.\n"
                     "// Every declared record of TrovRecords.h: the code whose description it\n"
                     "// follows, its size and, per member, where the C record has it.\n";
    for (const auto &[type, list] : o.checks) {
        s += "static const MemberCheck k" + type + "Members[] = {\n";
        for (const Check &c : list)
            s += "    {\"" + c.name + "\", " + c.offsetExpr + ", " + c.dataExpr + ", " + std::to_string(c.expected) +
                 "},\n";
        s += "};\n";
    }
    s += "static const RecordCheck kRecordChecks[] = {\n";
    for (const Declared &d : o.declared) {
        const bool members = o.checks.count(d.primary) != 0;
        s += std::string("    {Family::") + familyName(d.family) + ", " + hexCode(d.code) + ", \"" + d.type +
             "\", sizeof(" + d.type + "), " + std::to_string(d.expectedSize) + ", " +
             (members ? "k" + d.primary + "Members, std::size(k" + d.primary + "Members)" : "nullptr, 0") + "},\n";
    }
    s += "};\n";
    return s;
}

// ---- TrovCodes.h -----------------------------------------------------------------------

const char *const kCodesHead = R"(/*
 * TrovCodes.h - named constants for the codes the library knows: function-
 * unit body codes, event codes, method codes, data types and attribute
 * identifiers. Plain C; usable from C and C++.
 *
 * Generated by tools/gen-records (trov_gen_records codes) from the codec
 * tables; do not edit.
 *
 * The protocol numbers these codes and gives them no names, so each constant
 * is named by its number (TROV_EVENT_0038 is event 0x38), and its comment
 * names the record it travels with (TrovBodies.h, TrovRecords.h). Attribute
 * identifiers get one constant each, grouped by the table row they share:
 * the group's comment names the value record of every identifier in it and
 * its forms, so a host looking up an identifier finds its value's type
 * where the identifier stands.
 */
#ifndef TROVCODES_H
#define TROVCODES_H
)";

std::string valueSummary(const TrovLayoutInfo &l, const std::string &type) {
    std::string s = plainScalar(l) ? std::string(scalarType(l)) : type;
    if (l.arrayCountBytes != 0)
        s += std::string(l.arrayCountBytes == 1 ? "; array form with a u8 count" : "; array form with a u16 count");
    else s += "; scalar form only";
    return s;
}

std::string codes(const Output &o) {
    std::string s = kCodesHead;
    auto declaredType = [&](Family f, unsigned code) -> std::string {
        for (const Declared &d : o.declared)
            if (d.family == f && d.code == code) return d.type;
        return {};
    };

    s += "\n/* Function-unit body codes (header field 3): request record / reply record. */\nenum {\n";
    for (unsigned c = 1; c < 0x10000; ++c) {
        TrovLayoutInfo rq{}, rp{};
        const bool hasRq = TROV_DescribeBody(uint16_t(c), kProtocolVersion, 1, &rq) == 0;
        const bool hasRp = TROV_DescribeBody(uint16_t(c), kProtocolVersion, 0, &rp) == 0;
        if (!hasRq && !hasRp) continue;
        auto side = [](bool has, const TrovLayoutInfo &l, const char *none) {
            if (!has) return std::string(none);
            if (l.form == TROV_LAYOUT_NONE) return std::string("no reply");
            return std::string(l.record != nullptr ? l.record : "-");
        };
        s += "    TROV_BODY_" + hex4(c) + " = " + hexCode(c) + ", /* " + side(hasRq, rq, "decode only") + " / " +
             side(hasRp, rp, "-") + " */\n";
    }
    s += "};\n";

    s += "\n/* Event codes: the record of each. */\nenum {\n";
    for (unsigned c : known(kEvent)) s += "    TROV_EVENT_" + hex4(c) + " = " + hexCode(c) + ", /* " + declaredType(kEvent, c) + " */\n";
    s += "};\n";

    s += "\n/* Method codes (body 0x1D): request parameters / reply parameters. Codes of\n"
         " * TROV_METHOD_RAW_FIRST and above without a row of their own carry raw bytes. */\n"
         "enum {\n";
    for (unsigned c : methodCodes()) {
        auto side = [&](Family f) {
            TrovLayoutInfo l{};
            describe(f, c, l);
            if (l.form == TROV_LAYOUT_NONE) return std::string("none");
            const std::string t = declaredType(f, c);
            return t.empty() ? std::string(scalarType(l)) : t;
        };
        s += "    TROV_METHOD_" + hex4(c) + " = " + hexCode(c) + ", /* " + side(kMethodRequest) + " / " +
             side(kMethodReply) + " */\n";
    }
    s += "    TROV_METHOD_RAW_FIRST = 0x2000\n};\n";

    s += "\n/* Data types: the value of each. */\nenum {\n";
    for (unsigned c : known(kDataType)) {
        TrovLayoutInfo l{};
        describe(kDataType, c, l);
        s += "    TROV_DATA_TYPE_" + hex4(c) + " = " + hexCode(c) + ", /* " + valueSummary(l, declaredType(kDataType, c)) +
             " */\n";
    }
    s += "};\n";

    s += "\n/* Attribute identifiers, by table row. */\nenum {\n";
    const auto rows = attributeRows();
    for (size_t r = 0; r < rows.size(); ++r) {
        if (rows[r].empty()) continue;
        TrovLayoutInfo l{};
        describe(kAttribute, rows[r][0], l);
        s += "    /* row " + std::to_string(r + 1) + ": " + valueSummary(l, declaredType(kAttribute, rows[r][0])) +
             " */\n";
        for (unsigned id : rows[r]) s += "    TROV_ATTRIBUTE_" + hex4(id) + " = " + hexCode(id) + ",\n";
    }
    s += "};\n";
    s += "\n#endif /* TROVCODES_H */\n";
    return s;
}

// Typed front doors to TROV_EncodeFU: one per body code with a request
// record, taking that record's type, so that a compiler refuses another.
std::string encoders() {
    std::string s = R"(/*
 * TrovEncode.h - a typed front door to TROV_EncodeFU for every body code that
 * has a request record: TROV_EncodeBody_XXXX(info, record, output) sets
 * info->code to XXXX and encodes `record`, whose type is that code's request
 * record. TROV_EncodeFU takes the record as `const void *`, so a record of
 * the wrong type goes unnoticed; through these a C compiler warns
 * (-Wincompatible-pointer-types) and a C++ compiler refuses. Results are
 * TROV_EncodeFU's own.
 *
 * Generated by tools/gen-records (trov_gen_records encode) from the layout
 * descriptions; do not edit. Plain C; usable from C and C++.
 */
#ifndef TROVENCODE_H
#define TROVENCODE_H

#include "TrovCodec.h"

#ifdef __cplusplus
extern "C" {
#endif
)";
    for (unsigned c = 1; c < 0x10000; ++c) {
        TrovLayoutInfo rq{};
        if (TROV_DescribeBody(uint16_t(c), kProtocolVersion, 1, &rq) != 0 || rq.record == nullptr) continue;
        const std::string code = hex4(c);
        s += "\nstatic inline TrovResult TROV_EncodeBody_" + code + "(HeaderInfo *info, const " + rq.record +
             " *record, EncodeOutput *output) {\n"
             "    if (info) info->code = 0x" + code + ";\n"
             "    return TROV_EncodeFU(info, record, output);\n"
             "}\n";
    }
    s += "\n#ifdef __cplusplus\n} /* extern \"C\" */\n#endif\n\n#endif /* TROVENCODE_H */\n";
    return s;
}

// Compile-time maps from codes to their records, for the C++ layer: the
// request and reply record of every body code and the record of every event
// code, and the codes each map holds (to look a code up at run time).
std::string types(const Output &o) {
    std::string s = R"(/*
 * TrovTypes.hpp - the record each code travels with, as types, for the C++
 * layer (TrovCodec.hpp):
 *   trov::RequestRecord<Code>::type  the request record of body code Code
 *   trov::ReplyRecord<Code>::type    its reply record (void: no reply body)
 *   trov::EventRecord<Code>::type    the record of event code Code
 * A code without such a record has no `type` member. RequestCodes, ReplyCodes
 * and EventCodes list the codes each map holds, so that a code read at run
 * time can be matched against a record type.
 *
 * Generated by tools/gen-records (trov_gen_records types) from the layout
 * descriptions; do not edit. C++17 and later.
 */
#ifndef TROVTYPES_HPP
#define TROVTYPES_HPP

#include <cstdint>
#include <utility>

#include "TrovCodec.h"
#include "TrovRecords.h"

namespace trov {

template <std::uint16_t Code> struct RequestRecord {};
template <std::uint16_t Code> struct ReplyRecord {};
template <std::uint16_t Code> struct EventRecord {};
)";
    // One specialisation a line, then the codes as an integer sequence.
    auto map = [&s](const char *tmpl, const char *sequence, const std::vector<std::pair<unsigned, std::string>> &rows) {
        s += "\n";
        for (const auto &[code, type] : rows)
            s += std::string("template <> struct ") + tmpl + "<0x" + hex4(code) + "> { using type = " + type + "; };\n";
        s += std::string("\nusing ") + sequence + " = std::integer_sequence<std::uint16_t,";
        std::string line = "   ";
        for (size_t i = 0; i < rows.size(); ++i) {
            const std::string item = " 0x" + hex4(rows[i].first) + (i + 1 == rows.size() ? ">;" : ",");
            if (line.size() + item.size() > 100) {
                s += "\n" + line;
                line = "   ";
            }
            line += item;
        }
        s += "\n" + line + "\n";
    };

    std::vector<std::pair<unsigned, std::string>> requests, replies, events;
    for (unsigned c = 1; c < 0x10000; ++c) {
        TrovLayoutInfo l{};
        if (TROV_DescribeBody(uint16_t(c), kProtocolVersion, 1, &l) == 0 && l.record != nullptr)
            requests.emplace_back(c, l.record);
        if (TROV_DescribeBody(uint16_t(c), kProtocolVersion, 0, &l) == 0) {
            if (l.form == TROV_LAYOUT_NONE) replies.emplace_back(c, "void");
            else if (l.record != nullptr) replies.emplace_back(c, l.record);
        }
    }
    for (unsigned c : known(kEvent)) {
        std::string type;
        for (const Declared &d : o.declared)
            if (d.family == kEvent && d.code == c) type = d.type;
        TrovLayoutInfo l{};
        describe(kEvent, c, l);
        if (type.empty() && plainScalar(l)) type = std::string("std::") + scalarType(l);
        if (type.empty()) fail("event " + hexCode(c) + " has no record type");
        events.emplace_back(c, type);
    }
    if (requests.empty() || replies.empty() || events.empty()) fail("a code map came out empty");
    map("RequestRecord", "RequestCodes", requests);
    map("ReplyRecord", "ReplyCodes", replies);
    map("EventRecord", "EventCodes", events);
    s += "\n} // namespace trov\n\n#endif /* TROVTYPES_HPP */\n";
    return s;
}

// ---- TrovBodies.h ------------------------------------------------------------------------

const char *const kBodiesHead = R"(/*
 * TrovBodies.h - the records of the function-unit bodies: what a host fills
 * to encode a request and reads after decoding a reply. Included by
 * TrovCodec.h; plain C. Multi-byte fields hold host-order values; the wire
 * carries them big-endian.
 *
 * Generated by tools/gen-records (trov_gen_records bodies) from the body
 * layouts the codecs run on and the body table's rows; do not edit. The
 * library is compiled against this header and checks every record's size
 * and offsets against its layout.
 */
#ifndef TROVBODIES_H
#define TROVBODIES_H

#ifndef TROVCODEC_H
#error "include TrovCodec.h, which includes this header"
#endif

#ifdef __cplusplus
extern "C" {
#endif
)";

// Body 0x1d carries another codec's record; its record is not a field list.
const char *const kMethodCall =
    "a method invocation: a u32, the u16 method code and the method's parameters. On encoding `params` points "
    "at the method's parameter record and `paramsLength` is handed to the method's codec (for raw methods, "
    "0x2000 and above without a codec of their own, it is the byte count). On decoding `params` points into "
    "`buffer` and `paramsLength` is what the method's codec reported.";
const char *const kMethodBody = R"(typedef struct MethodBody {
    uint32_t value0;
    uint16_t method;
    void *params;
    uint16_t paramsLength;
    BufferDesc buffer;
} MethodBody;
)";

const char *const kFieldListSection = R"(
/* ------------------------------------------------ field-list body records
 *
 * The bodies below are sequences of big-endian fields. A record holds them in
 * wire order at their natural alignment and is named after its fields: Byte
 * u8, U16, U32, BytesN a block of N raw bytes, String a byte string with a u8
 * length, LongString one with a u16 length, Block the bytes up to the end of
 * the body (no length on the wire), Attribute a u16 attribute identifier and
 * the value (array form) that its codec writes; Pair, Triple and Quad repeat
 * the field before. Strings and blocks are OctetString values (a u8-counted
 * string uses only the first byte of `length` when encoding); an attribute is
 * `id` and a pointer `value` to the value's record. On decoding, all variable
 * data lands in the record's `buffer`, one item after another at multiples
 * of 8, and the pointers point into it. Each record's comment names the body
 * codes whose request or reply it is, and its fields on the wire. */
)";

const char *const kBodiesTail = R"(
#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVBODIES_H */
)";

// Body codes as the body table and its reference page write them: 0x0b.
std::string bodyCode(unsigned c) {
    char b[8];
    std::snprintf(b, sizeof b, "0x%02x", c);
    return b;
}

// The body codes whose request or reply is a record.
struct BodyUses {
    std::vector<unsigned> request, reply;
};

// "Request of 0x03; reply of 0x03, 0x04", or "Request and reply of 0x12".
std::string usesOf(const BodyUses &u) {
    auto list = [](const std::vector<unsigned> &codes) {
        std::string s;
        for (unsigned c : codes) s += (s.empty() ? "" : ", ") + bodyCode(c);
        return s;
    };
    if (!u.request.empty() && u.request == u.reply) return "Request and reply of " + list(u.request);
    std::string s;
    if (!u.request.empty()) s = "Request of " + list(u.request);
    if (!u.reply.empty()) s += (s.empty() ? "Reply of " : "; reply of ") + list(u.reply);
    return s;
}

// The members of one body field, and what the field is on the wire in the
// words of the body reference ("u16 length + bytes"; empty for the buffer,
// which is the record's only). `valueMember` names an attribute's value
// pointer. Only types TrovCodec.h declares are at hand.
std::string bodyMembersOf(const TrovFieldInfo &f, const char *valueMember, std::vector<Member> &out,
                          const std::string &where) {
    const std::string name = f.name;
    switch (f.kindId) {
    case TROV_KIND_U8:
    case TROV_KIND_U16:
    case TROV_KIND_U32: out.push_back(scalar(f.width, name, f.offset)); return f.kind;
    case TROV_KIND_BYTES:
        out.push_back({"uint8_t", name, "[" + std::to_string(f.width) + "]", f.offset, f.width, 1, {}});
        return std::to_string(f.width) + " bytes";
    case TROV_KIND_OCTETS:
    case TROV_KIND_REST:
        if (f.countRecordBytes != 2 || f.width != 16 || f.dataOffset != f.offset + 8)
            fail(where + ": " + name + " is not an OctetString");
        out.push_back({"OctetString", name, {}, f.offset, 16, 8, {}});
        if (f.kindId == TROV_KIND_REST) return "bytes to the end of the body";
        if (f.countBytes == 1) return "u8 length + bytes";
        if (f.countBytes == 2) return "u16 length + bytes";
        fail(where + ": " + name + " has a length of " + std::to_string(f.countBytes) + " bytes");
    case TROV_KIND_ATTRIBUTE:
        if (valueMember == nullptr) fail(where + ": attribute " + name + " without a member for its value");
        out.push_back(scalar(2, name, f.offset));
        out.push_back(pointer("void *", valueMember, f.dataOffset));
        return "u16 attribute id + value";
    case TROV_KIND_BUFFER: out.push_back({"BufferDesc", name, {}, f.offset, 16, 8, {}}); return {};
    default: break;
    }
    fail(where + ": field " + name + " of kind " + f.kind + " has no C form among the body records");
}

// The record of one body layout: its members at the offsets the layout's
// plan gives them, checked to be what C's natural alignment makes of them.
Record bodyRecord(const trov::BodyLayout &l, const BodyUses &uses) {
    const std::string where = l.name != nullptr ? l.name : "a body layout";
    if (l.kind != trov::BodyKind::Fields || l.plan == nullptr || l.name == nullptr || !l.plan->valid)
        fail(where + ": not a field list with a record name");
    if (uses.request.empty() && uses.reply.empty()) fail(where + ": no body code uses it");
    const trov::FieldList fields = trov::describePlan(*l.plan);
    Record r;
    r.name = l.name;
    r.bytes = l.recordBytes;
    std::string wire;
    for (uint16_t i = 0; i < fields.count; ++i) {
        const char *value = l.pointers != nullptr ? l.pointers[i] : nullptr;
        const std::string w = bodyMembersOf(fields.at[i], value, r.members, where);
        if (!w.empty()) wire += (wire.empty() ? "" : ", ") + w;
    }
    if (r.members.empty()) { // C has no empty struct
        r.members.push_back(scalar(1, "reserved", 0));
        r.comment.push_back(usesOf(uses) + ": no fields, nothing travels. The one member only gives the struct "
                                           "a size.");
    } else {
        r.comment.push_back(usesOf(uses) + ": " + wire + ".");
    }
    const size_t members = r.members.size();
    layOut(r);
    if (r.members.size() != members) fail(where + ": natural alignment would not place the members");
    return r;
}

std::string bodies() {
    // Which codes use each layout, from the body table's rows.
    std::map<const trov::BodyLayout *, BodyUses> uses;
    BodyUses methodCall;
    for (const trov::BodyCodecRow *row = trov::FUCodecTable; row->code != 0; ++row) {
        const trov::BodyDescriptions *d = trov::bodyDescriptionsOf(row);
        if (d == nullptr) fail("body " + bodyCode(row->code) + " has no layout");
        if (d->request != nullptr && d->request->form == TROV_LAYOUT_METHOD_CALL)
            methodCall.request.push_back(row->code);
        if (d->reply != nullptr && d->reply->form == TROV_LAYOUT_METHOD_CALL) methodCall.reply.push_back(row->code);
        if (d->requestLayout != nullptr) uses[d->requestLayout].request.push_back(row->code);
        if (d->replyLayout != nullptr) uses[d->replyLayout].reply.push_back(row->code);
    }
    if (methodCall.request.empty() || methodCall.reply.empty()) fail("no body code is a method invocation");

    std::string s = kBodiesHead;
    s += "\n";
    const std::vector<std::string> comment = wrap({usesOf(methodCall) + ", " + kMethodCall});
    for (size_t i = 0; i < comment.size(); ++i)
        s += (i == 0 ? "/* " : " * ") + comment[i] + (i + 1 == comment.size() ? " */\n" : "\n");
    s += kMethodBody;
    s += kFieldListSection;
    std::set<std::string> names;
    for (const trov::BodyLayout *l : trov::kBodyRecordLayouts) {
        const Record r = bodyRecord(*l, uses[l]);
        if (!names.insert(r.name).second) fail(r.name + ": declared twice");
        s += "\n" + declaration(r);
    }
    return s + kBodiesTail;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2) fail("usage: trov_gen_records records|bodies|codes|checks|encode|types");
    const Output o = build();
    std::string text;
    if (std::strcmp(argv[1], "records") == 0) text = records(o);
    else if (std::strcmp(argv[1], "bodies") == 0) text = bodies();
    else if (std::strcmp(argv[1], "codes") == 0) text = codes(o);
    else if (std::strcmp(argv[1], "checks") == 0) text = checks(o);
    else if (std::strcmp(argv[1], "encode") == 0) text = encoders();
    else if (std::strcmp(argv[1], "types") == 0) text = types(o);
    else fail("usage: trov_gen_records records|bodies|codes|checks|encode|types");
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}
