// The structured-record descriptions against the structure codec, through the
// exported interface only. For every structured attribute value, the 0xC4 and
// 0xC5 events, the structured method replies and the variants of attribute
// 0x013C, a record is generated from its description alone (every count 2,
// then every count 0) together with the wire bytes the description predicts:
// fields back to back, big-endian, no padding. The record must encode to
// those bytes, and the bytes must decode to a record that, read back through
// the description alone, gives the same bytes again.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "TrovLayout.h"
#include "TrovRecords.h"
#include "api/ReplyPacket.h"

namespace {

using Bytes = std::vector<uint8_t>;

template <class T> void putPointer(uint8_t *at, T *p) { std::memcpy(at, &p, sizeof p); }
template <class T> T *getPointer(const uint8_t *at) { T *p; std::memcpy(&p, at, sizeof p); return p; }

// Counted data whose count is in the field's own head (the flat variants).
bool headCount(const TrovFieldInfo &f) {
    return f.countField < 0 && f.countBytes != 0 && f.kindId != TROV_KIND_COUNT && f.kindId != TROV_KIND_OPTIONS;
}

TrovLayoutInfo nestedOf(const TrovFieldInfo &f) {
    TrovLayoutInfo n{};
    EXPECT_EQ(TROV_DescribeNested(&f, &n), 0u) << f.name;
    return n; // its recordBytes: the room the field gives it (an array's stride)
}

// An attribute whose value is a single u32 in array form at version 0: the
// value of the generated attribute entries.
uint16_t entryAttribute() {
    static const uint16_t found = [] {
        for (uint32_t id = 1; id <= 0xFFFF; ++id) {
            TrovLayoutInfo l;
            if (TROV_DescribeAttribute(uint16_t(id), 0, &l) == 0 && l.form == TROV_LAYOUT_FIELDS && l.fieldCount == 1 &&
                l.fields[0].kindId == TROV_KIND_U32 && l.arrayCountBytes != 0)
                return uint16_t(id);
        }
        return uint16_t{0};
    }();
    return found;
}

// Stores v in a record (host order, `host` bytes) and on the wire (big-endian, `wire` bytes).
void put(uint8_t *at, Bytes &w, uint32_t v, unsigned host, unsigned wire) {
    putHost(at, v, host);
    putWire(w, v, wire);
}

// Builds a record from a description and, alongside, its predicted wire bytes.
struct Generator {
    unsigned count;    // every count, option list and entry array this long
    uint16_t entryId;  // the attribute of every entry
    uint32_t next = 0; // distinct scalar values
    size_t entryValueBytes = 0;
    std::vector<std::unique_ptr<uint64_t[]>> blocks{};

    uint8_t *alloc(size_t n) {
        blocks.emplace_back(new uint64_t[n / 8 + 1]());
        return reinterpret_cast<uint8_t *>(blocks.back().get());
    }
    uint32_t value() { return 0x91A2B3C4u + 0x01030507u * ++next; }

    void fill(const TrovLayoutInfo &l, uint8_t *rec, Bytes &w) {
        for (uint16_t i = 0; i < l.fieldCount; ++i) {
            const TrovFieldInfo &f = l.fields[i];
            uint8_t *at = rec + f.offset;
            if (headCount(f)) put(at, w, count, f.countRecordBytes, f.countBytes);
            switch (f.kindId) {
            case TROV_KIND_U8: case TROV_KIND_U16: case TROV_KIND_U32: put(at, w, value(), f.width, f.width); break;
            case TROV_KIND_COUNT: put(at, w, count, f.width, f.countBytes); break;
            case TROV_KIND_OCTETS: case TROV_KIND_CHARS: case TROV_KIND_WIDE_U32S: {
                const bool numbers = f.kindId == TROV_KIND_WIDE_U32S;
                uint8_t *d = count ? alloc(8 * count) : nullptr;
                for (unsigned k = 0; k < count; ++k) {
                    if (numbers) put(d + 4 * k, w, value(), 4, 4);
                    else w.push_back(d[k] = uint8_t('a' + next++ % 26));
                }
                putPointer(rec + f.dataOffset, d);
                break;
            }
            case TROV_KIND_RECORD: fill(nestedOf(f), at, w); break;
            case TROV_KIND_RECORDS: {
                const TrovLayoutInfo e = nestedOf(f);
                uint8_t *elements = count ? alloc(size_t{count} * e.recordBytes) : nullptr;
                for (unsigned k = 0; k < count; ++k) fill(e, elements + k * e.recordBytes, w);
                if (count) putPointer(rec + f.dataOffset, elements);
                break;
            }
            case TROV_KIND_OPTIONS: { // a u32 option (kind 1), then a u16 option (kind 3)
                auto *options = count ? reinterpret_cast<TrovOption *>(alloc(count * sizeof(TrovOption))) : nullptr;
                put(at, w, count, 1, 1);
                for (unsigned k = 0; k < count; ++k) {
                    const uint8_t kind = k % 2 ? 3 : 1, bytes = kind == 1 ? 4 : 2;
                    options[k] = {kind, bytes, alloc(8)};
                    w.insert(w.end(), {kind, bytes});
                    put(static_cast<uint8_t *>(options[k].value), w, value(), bytes, bytes);
                }
                putPointer(rec + f.dataOffset, options);
                break;
            }
            case TROV_KIND_ENTRY: { // u16 id, u16 length, the value in array form (count prefix, elements)
                TrovLayoutInfo e{};
                EXPECT_EQ(TROV_DescribeAttribute(entryId, 0, &e), 0u);
                auto *array = reinterpret_cast<AttributeArrayHeader *>(alloc(sizeof(AttributeArrayHeader)));
                uint8_t *elements = count ? alloc(size_t{count} * e.recordBytes) : nullptr;
                Bytes v;
                putWire(v, count, e.arrayCountBytes);
                for (unsigned k = 0; k < count; ++k) fill(e, elements + k * e.recordBytes, v);
                *array = {uint16_t(count), elements};
                putPointer(rec + f.dataOffset, array);
                put(at, w, entryId, 2, 2);
                putWire(w, uint32_t(v.size()), 2);
                w.insert(w.end(), v.begin(), v.end());
                entryValueBytes += v.size();
                break;
            }
            default: ADD_FAILURE() << l.record << " " << f.name << ": kind " << int(f.kindId) << " not generated";
            }
        }
    }
};

// Reads a decoded record through its description alone and gives the wire
// bytes it stands for; checks the decoded conventions on the way (null
// pointers for empty data, the spare zero behind characters, entry lengths 0).
void readBack(const TrovLayoutInfo &l, const uint8_t *rec, Bytes &w) {
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        const TrovFieldInfo &f = l.fields[i];
        const uint8_t *at = rec + f.offset;
        const std::string what = std::string(l.record ? l.record : "fields") + "." + f.name;
        const uint32_t counted =
            f.countField >= 0 ? getHost(rec + l.fields[f.countField].offset, l.fields[f.countField].countRecordBytes)
                              : getHost(at, f.countRecordBytes);
        if (headCount(f)) putWire(w, counted, f.countBytes);
        switch (f.kindId) {
        case TROV_KIND_U8: case TROV_KIND_U16: case TROV_KIND_U32: putWire(w, getHost(at, f.width), f.width); break;
        case TROV_KIND_COUNT: putWire(w, getHost(at, f.width), f.countBytes); break;
        case TROV_KIND_OCTETS: case TROV_KIND_CHARS: case TROV_KIND_WIDE_U32S: {
            const auto *d = getPointer<const uint8_t>(rec + f.dataOffset);
            if (counted == 0) { EXPECT_EQ(d, nullptr) << what; break; }
            ASSERT_NE(d, nullptr) << what;
            if (f.kindId != TROV_KIND_WIDE_U32S) w.insert(w.end(), d, d + counted);
            else for (uint32_t k = 0; k < counted; ++k) putWire(w, getHost(d + 4 * k, 4), 4);
            if (f.kindId == TROV_KIND_CHARS) { EXPECT_EQ(d[counted], 0) << what; }
            break;
        }
        case TROV_KIND_RECORD: readBack(nestedOf(f), at, w); break;
        case TROV_KIND_RECORDS: {
            const TrovLayoutInfo e = nestedOf(f);
            if (counted == 0) { EXPECT_EQ(getPointer<const uint8_t>(at), nullptr) << what; break; }
            const auto *elements = getPointer<const uint8_t>(rec + f.dataOffset);
            ASSERT_NE(elements, nullptr) << what;
            for (uint32_t k = 0; k < counted; ++k) readBack(e, elements + k * e.recordBytes, w);
            break;
        }
        case TROV_KIND_OPTIONS: {
            w.push_back(*at);
            const auto *options = getPointer<const TrovOption>(rec + f.dataOffset);
            if (*at == 0) { EXPECT_EQ(options, nullptr) << what; break; }
            ASSERT_NE(options, nullptr) << what;
            for (unsigned k = 0; k < *at; ++k) {
                const TrovOption &o = options[k];
                w.insert(w.end(), {o.kind, o.length});
                ASSERT_TRUE(o.value != nullptr && o.length == (o.kind == 1 ? 4 : o.kind == 3 ? 2 : 0)) << what << k;
                putWire(w, getHost(static_cast<const uint8_t *>(o.value), o.length), o.length);
            }
            break;
        }
        case TROV_KIND_ENTRY: {
            const auto id = uint16_t(getHost(at, 2));
            EXPECT_EQ(getHost(at + 2, 2), 0u) << what << ": a codec decoded the value";
            TrovLayoutInfo e{};
            ASSERT_EQ(TROV_DescribeAttribute(id, 0, &e), 0u) << what;
            const auto *array = getPointer<const AttributeArrayHeader>(rec + f.dataOffset);
            ASSERT_NE(array, nullptr) << what;
            const uint32_t n = getHost(reinterpret_cast<const uint8_t *>(array), e.arrayCountBytes);
            Bytes v;
            putWire(v, n, e.arrayCountBytes);
            for (uint32_t k = 0; k < n; ++k)
                readBack(e, static_cast<const uint8_t *>(array->elements) + k * e.recordBytes, v);
            putWire(w, id, 2);
            putWire(w, uint32_t(v.size()), 2);
            w.insert(w.end(), v.begin(), v.end());
            break;
        }
        default: ADD_FAILURE() << what << ": kind " << int(f.kindId) << " not read";
        }
    }
}

enum class Source { Attribute, Event, Method, Variant };
struct Case {
    Source source;
    uint16_t code; // attribute identifier, event or method code, selector
    unsigned count;
};

std::string caseName(const testing::TestParamInfo<Case> &p) {
    static const char *const prefix[] = {"Attribute", "Event", "Method", "Selector013CVariant"};
    char code[8];
    std::snprintf(code, sizeof code, "%04X", p.param.code);
    return prefix[int(p.param.source)] + std::string(code) + "Count" + std::to_string(p.param.count);
}

std::vector<Case> cases() {
    std::vector<Case> out;
    const std::pair<Source, std::vector<uint16_t>> codes[] = {
        {Source::Attribute,
         {0x2972, 0x2992, 0x2993, 0x2AF9, 0x2AFD, 0x2CED, 0x2CF1, 0x2D06, 0x32CB, 0x36B1, 0x36B2, 0x36B5, 0x36B9}},
        {Source::Event, {0xC4, 0xC5}},
        {Source::Method, {0xBB, 0xBC, 0xC0}},
        {Source::Variant, {1, 2, 3, 4}}};
    for (unsigned count : {2u, 0u})
        for (const auto &[source, list] : codes)
            for (uint16_t code : list) out.push_back({source, code, count});
    return out;
}

void PrintTo(const Case &c, std::ostream *os) { *os << int(c.source) << ":" << c.code << "/" << c.count; }

// Decodes a reply of body `code` into the caller's body record and buffer.
template <class Body>
bool decodeInto(uint16_t code, const Bytes &body, Body &record, std::vector<uint64_t> &area) {
    area.assign(1024, 0);
    record = Body{};
    record.buffer = {area.data(), uint16_t(area.size() * 8), 0};
    DecodeResult result{&record, nullptr, 0};
    const TrovResult r = decodeReply(code, body, result);
    EXPECT_EQ(r, 0u) << "decoding body " << code;
    return r == 0 && result.record == &record;
}

class StructureDescription : public testing::TestWithParam<Case> {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(TROV_InitCoder(), 1); }
};

TEST_P(StructureDescription, EncodesAndDecodesAsDescribed) {
    const Case c = GetParam();
    const uint8_t v = TROV_PROTOCOL_VERSION;
    TrovLayoutInfo l{}, selector{};
    switch (c.source) {
    case Source::Attribute: ASSERT_EQ(TROV_DescribeAttribute(c.code, v, &l), 0u); break;
    case Source::Event: ASSERT_EQ(TROV_DescribeEvent(c.code, v, &l), 0u); break;
    case Source::Method: ASSERT_EQ(TROV_DescribeMethod(c.code, v, 0, &l), 0u); break;
    case Source::Variant: // the whole record: the selector u8 at 0, then the variant's fields
        ASSERT_EQ(TROV_DescribeAttribute(0x013C, v, &selector), 0u);
        ASSERT_EQ(selector.form, TROV_LAYOUT_SELECTOR);
        ASSERT_EQ(TROV_DescribeVariant(&selector, uint8_t(c.code), &l), 0u);
        ASSERT_TRUE(l.fieldCount > 1 && l.fields[0].kindId == TROV_KIND_U8 && l.fields[0].offset == 0);
        break;
    }
    EXPECT_EQ(l.form, c.source == Source::Variant ? TROV_LAYOUT_FIELDS : TROV_LAYOUT_STRUCTURE);
    EXPECT_EQ(l.arrayCountBytes, 0);
    Generator g{c.count, entryAttribute()};
    ASSERT_NE(g.entryId, 0);
    uint8_t *record = g.alloc(l.recordBytes);
    Bytes wire, back;
    std::vector<uint64_t> area;
    g.fill(l, record, wire);
    if (c.source == Source::Variant) record[0] = wire[0] = uint8_t(c.code);
    if (c.count == 0) { EXPECT_EQ(wire.size() - g.entryValueBytes, l.wireFixed) << "wire: every count 0, no values"; }

    if (c.source == Source::Attribute || c.source == Source::Variant) { // body 0x12 both ways
        const uint16_t id = c.source == Source::Variant ? 0x013C : c.code;
        Bytes body = {uint8_t(id >> 8), uint8_t(id)};
        body.insert(body.end(), wire.begin(), wire.end());
        HeaderInfo info{TROV_PROTOCOL_MARK, v, 0, 0x12, 0, 0, 0, 0, 0};
        AttributeBody request{id, record, {}};
        EncodeOutput out{nullptr, 0};
        ASSERT_EQ(TROV_EncodeFU(&info, &request, &out), 0u);
        EXPECT_EQ(Bytes(out.data + TROV_HEADER_LENGTH, out.data + out.length), body) << "encoded";
        trovFree(out.data);
        AttributeBody decoded;
        ASSERT_TRUE(decodeInto(0x12, body, decoded, area));
        readBack(l, static_cast<const uint8_t *>(decoded.value), back);
    } else if (c.source == Source::Event) { // a short event list (0x0A) with the one event
        Bytes body = {0, 0, 0, 1, 1, uint8_t(c.code >> 8), uint8_t(c.code), 0};
        body.insert(body.end(), wire.begin(), wire.end());
        ShortEventListBody list;
        ASSERT_TRUE(decodeInto(0x0A, body, list, area));
        ASSERT_EQ(list.count, 1);
        EXPECT_EQ(list.entries[0].eventCode, c.code);
        readBack(l, static_cast<const uint8_t *>(list.entries[0].body), back);
    } else { // a method reply (0x1D): u32, the method code, the reply
        Bytes body = {0, 0, 0, 1, uint8_t(c.code >> 8), uint8_t(c.code)};
        body.insert(body.end(), wire.begin(), wire.end());
        MethodBody method;
        ASSERT_TRUE(decodeInto(0x1D, body, method, area));
        ASSERT_NE(method.params, nullptr);
        readBack(l, static_cast<const uint8_t *>(method.params), back);
    }
    EXPECT_EQ(back, wire) << "decoded";
}

INSTANTIATE_TEST_SUITE_P(Rows, StructureDescription, testing::ValuesIn(cases()), caseName);

// The two lookups refuse what is not theirs.
TEST(StructureDescriptionLookups, RefuseForeignFieldsLayoutsAndSelectors) {
    ASSERT_EQ(TROV_InitCoder(), 1);
    TrovLayoutInfo selector{}, structure{}, flat{}, out{};
    ASSERT_EQ(TROV_DescribeAttribute(0x013C, TROV_PROTOCOL_VERSION, &selector), 0u);
    ASSERT_EQ(TROV_DescribeAttribute(0x2AF9, TROV_PROTOCOL_VERSION, &structure), 0u); // version, build
    ASSERT_EQ(structure.fields[0].kindId, TROV_KIND_RECORD);
    ASSERT_EQ(TROV_DescribeAttribute(0x177C, TROV_PROTOCOL_VERSION, &flat), 0u);
    for (uint8_t s : {0, 5, 255}) EXPECT_EQ(TROV_DescribeVariant(&selector, s, &out), 4u) << int(s);
    EXPECT_EQ(TROV_DescribeVariant(&structure, 1, &out), 4u);
    TrovLayoutInfo forged = structure; // a selector form over another layout's fields
    forged.form = TROV_LAYOUT_SELECTOR;
    EXPECT_EQ(TROV_DescribeVariant(&forged, 1, &out), 4u);
    EXPECT_EQ(TROV_DescribeVariant(nullptr, 1, &out), 1u);
    EXPECT_EQ(TROV_DescribeVariant(&selector, 1, nullptr), 1u);

    EXPECT_EQ(TROV_DescribeNested(&structure.fields[1], &out), 4u); // u32 build
    EXPECT_EQ(TROV_DescribeNested(&flat.fields[0], &out), 4u);
    EXPECT_EQ(TROV_DescribeNested(&selector.fields[0], &out), 4u);
    const TrovFieldInfo copy = structure.fields[0]; // the same field, not the library's
    EXPECT_EQ(TROV_DescribeNested(&copy, &out), 4u);
    // A pointer into the middle of one of the library's fields is no field.
    const auto *start = reinterpret_cast<const unsigned char *>(&structure.fields[0]);
    for (size_t shift = 1; shift < sizeof(TrovFieldInfo); ++shift)
        EXPECT_EQ(TROV_DescribeNested(reinterpret_cast<const TrovFieldInfo *>(start + shift), &out), 4u) << shift;
    EXPECT_EQ(TROV_DescribeNested(nullptr, &out), 1u);
    EXPECT_EQ(TROV_DescribeNested(&structure.fields[0], nullptr), 1u);
    ASSERT_EQ(TROV_DescribeNested(&structure.fields[0], &out), 0u);
    EXPECT_EQ(out.recordBytes, structure.fields[0].width);
}

} // namespace
