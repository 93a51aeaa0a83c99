// The two walks over described records (RecordWalk.h).
//
// Both run on one table of what each kind is (kKinds): its shape (how the
// walks treat it) and, for scalars and counted elements, its widths. A kind
// the description gains is a row of that table, and a switch case here only
// when it brings a shape of its own.
#include "RecordWalk.h"

#include <cstring>
#include <iterator>

namespace trov::describe {
namespace {

// ---- kinds --------------------------------------------------------------------------

enum class Shape : uint8_t {
    None,     // nothing to walk (a body's managed buffer)
    Scalar,   // a number of `width` bytes
    Reserved, // a u8 no wire byte fills
    Count,    // a count field
    Block,    // bytes in place: `width` of them (0: the field's width)
    Data,     // counted bytes (parts 0) or numbers (parts 1, 2) behind a pointer
    Typed,    // an identifier or data type and a pointer to its value
    Option,   // an option: kind, length, pointer to the value
    Entries,  // an AttributeList
    Record,   // a nested record in place
    Records,  // counted nested records behind a pointer
    Options,  // a TrovOptionList
    Entry,    // an AttributeEntry in place
    Events,   // counted event entries behind a pointer
    Event,    // an entry's event record behind a pointer
    Params,   // a method's parameters behind a pointer, their length behind it
};

struct Kind {
    Shape shape;
    uint8_t width;  // Scalar, Block: bytes
    uint8_t wire;   // Data: wire bytes of an element
    uint8_t stride; // Data: record bytes from one element to the next
    uint8_t parts;  // Data: 0 bytes; 1 or 2 numbers of partWidth at partOffset
    uint8_t partWidth[2];
    uint8_t partOffset[2];
    Text text;      // Data with parts 0
};

// Indexed by TROV_KIND_*. Wide u32s keep their values 4 bytes apart (their
// 8 bytes of room each are the decoder's business); items are 8-byte
// elements, their u32 at +4.
constexpr Kind kKinds[] = {
    {Shape::None, 0, 0, 0, 0, {}, {}, Text::Bytes},                    // 0: none
    {Shape::Scalar, 1, 0, 0, 0, {}, {}, Text::Bytes},                  // U8
    {Shape::Scalar, 2, 0, 0, 0, {}, {}, Text::Bytes},                  // U16
    {Shape::Scalar, 4, 0, 0, 0, {}, {}, Text::Bytes},                  // U32
    {Shape::Reserved, 1, 0, 0, 0, {}, {}, Text::Bytes},                // RESERVED
    {Shape::Block, 0, 0, 0, 0, {}, {}, Text::Bytes},                   // BYTES
    {Shape::Block, 12, 0, 0, 0, {}, {}, Text::Bytes},                  // BYTES12
    {Shape::Data, 0, 1, 1, 0, {}, {}, Text::Bytes},                    // OCTETS
    {Shape::Data, 0, 1, 1, 0, {}, {}, Text::Chars},                    // CHARS
    {Shape::Data, 0, 2, 2, 1, {2, 0}, {0, 0}, Text::Bytes},            // U16S
    {Shape::Data, 0, 4, 4, 1, {4, 0}, {0, 0}, Text::Bytes},            // U32S
    {Shape::Data, 0, 4, 4, 1, {4, 0}, {0, 0}, Text::Bytes},            // WIDE_U32S
    {Shape::Data, 0, 5, 8, 2, {1, 4}, {0, 4}, Text::Bytes},            // U8U32_ITEMS
    {Shape::Data, 0, 5, 8, 2, {4, 1}, {0, 4}, Text::Bytes},            // U32U8_ITEMS
    {Shape::Data, 0, 2, 2, 2, {1, 1}, {0, 1}, Text::Bytes},            // BYTE_PAIRS
    {Shape::Data, 0, 1, 1, 0, {}, {}, Text::Bytes},                    // REST
    {Shape::Count, 0, 0, 0, 0, {}, {}, Text::Bytes},                   // COUNT
    {Shape::Typed, 0, 0, 0, 0, {}, {}, Text::Bytes},                   // ATTRIBUTE
    {Shape::Typed, 0, 0, 0, 0, {}, {}, Text::Bytes},                   // VALUE
    {Shape::Typed, 0, 0, 0, 0, {}, {}, Text::Bytes},                   // RESERVED_VALUE
    {Shape::Option, 0, 0, 0, 0, {}, {}, Text::Bytes},                  // OPTION
    {Shape::Entries, 0, 0, 0, 0, {}, {}, Text::Bytes},                 // ATTRIBUTES
    {Shape::Entries, 0, 0, 0, 0, {}, {}, Text::Bytes},                 // EVENT_ATTRIBUTES
    {Shape::None, 0, 0, 0, 0, {}, {}, Text::Bytes},                    // BUFFER
    {Shape::Record, 0, 0, 0, 0, {}, {}, Text::Bytes},                  // RECORD
    {Shape::Records, 0, 0, 0, 0, {}, {}, Text::Bytes},                 // RECORDS
    {Shape::Options, 0, 0, 0, 0, {}, {}, Text::Bytes},                 // OPTIONS
    {Shape::Entry, 0, 0, 0, 0, {}, {}, Text::Bytes},                   // ENTRY
    {Shape::Events, 0, 0, 0, 0, {}, {}, Text::Bytes},                  // EVENTS
    {Shape::Event, 0, 0, 0, 0, {}, {}, Text::Bytes},                   // EVENT
    {Shape::Params, 0, 0, 0, 0, {}, {}, Text::Bytes},                  // PARAMS
};
static_assert(std::size(kKinds) == TROV_KIND_PARAMS + 1, "a row for every kind");
static_assert(TROV_KIND_U32S == 10 && TROV_KIND_BYTE_PAIRS == 14 && TROV_KIND_BUFFER == 23,
              "kKinds is indexed by kind");

// Kinds the table does not know walk as nothing (reading) or stop a build.
constexpr Kind kUnknownKind{Shape::None, 0, 0, 0, 0, {}, {}, Text::Bytes};
const Kind &kindOf(uint8_t kindId) { return kindId < std::size(kKinds) ? kKinds[kindId] : kUnknownKind; }
bool known(uint8_t kindId) { return kindId < std::size(kKinds) && kindId != 0; }

// ---- the walk's own records ------------------------------------------------------------

// A member: a scalar of kind U8, U16 or U32, or (kind 0) a pointer.
constexpr TrovFieldInfo member(const char *name, uint8_t kindId, uint16_t offset) {
    constexpr const char *kinds[] = {"member", "u8", "u16", "u32"};
    constexpr uint16_t widths[] = {8, 1, 2, 4};
    return TrovFieldInfo{name, kinds[kindId], kindId, 0, 0, 0, offset, widths[kindId], TROV_NO_DATA, -1};
}

template <size_t N>
constexpr TrovLayoutInfo own(const char *record, uint16_t bytes, const TrovFieldInfo (&fields)[N]) {
    return TrovLayoutInfo{record, bytes, static_cast<uint16_t>(N), fields, TROV_LAYOUT_FIELDS, 0, 0};
}

// An attribute value or entry: the identifier at the field's offset (0 in
// an AttributeEntry), the value behind the pointer.
constexpr TrovFieldInfo kIdFields[] = {member("id", TROV_KIND_U16, 0), member("value", 0, 8)};
constexpr TrovFieldInfo kTypeFields[] = {member("type", TROV_KIND_U16, 0), member("value", 0, 8)};
constexpr TrovLayoutInfo kAttributeValue = own(nullptr, 16, kIdFields);
constexpr TrovLayoutInfo kDataTypeValue = own(nullptr, 16, kTypeFields);
// TrovOption: u8 kind, u8 length, the value's pointer at 8.
constexpr TrovFieldInfo kOptionFields[] = {member("kind", TROV_KIND_U8, 0), member("value", 0, 8)};
constexpr TrovLayoutInfo kOption = own("TrovOption", 16, kOptionFields);
constexpr uint16_t kOptionValue = 8;

// The members the walk presents in place of the frames' own fields: a
// params field reads as its length, then the parameters; an event list's
// entries as "events", each entry as its code first, its other members, and
// the event record as "fields".
constexpr TrovFieldInfo kParamsLength = member("paramsLength", TROV_KIND_U16, 0);
constexpr uint16_t kParamsLengthAt = 8; // behind the parameters' pointer
constexpr TrovFieldInfo kEvents = member("events", 0, 0);
constexpr TrovFieldInfo kEventFields = member("fields", 0, 0);
constexpr const char *kEventCode = "code";

// ---- memory -----------------------------------------------------------------------

template <typename T> T load(const uint8_t *at) {
    T v;
    std::memcpy(&v, at, sizeof v);
    return v;
}
template <typename T> void store(uint8_t *at, T v) { std::memcpy(at, &v, sizeof v); }

uint8_t *loadPointer(const uint8_t *at) { return static_cast<uint8_t *>(load<void *>(at)); }
void storePointer(uint8_t *at, const void *p) { store(at, p); }

// An unsigned number of 1, 2 or 4 bytes in host order (other widths: 0).
uint32_t loadWidth(const uint8_t *at, unsigned width) {
    switch (width) {
    case 1: return at[0];
    case 2: return load<uint16_t>(at);
    case 4: return load<uint32_t>(at);
    default: return 0;
    }
}
void storeWidth(uint8_t *at, uint32_t value, unsigned width) {
    switch (width) {
    case 1: at[0] = static_cast<uint8_t>(value); break;
    case 2: store(at, static_cast<uint16_t>(value)); break;
    case 4: store(at, value); break;
    default: break;
    }
}

const uint8_t *dataOf(const TrovFieldInfo &f, const uint8_t *rec) {
    return f.dataOffset == TROV_NO_DATA ? nullptr : loadPointer(rec + f.dataOffset);
}

// The count field of `f`, if it has one; of an event or params field, the
// field holding its code.
const TrovFieldInfo *countFieldOf(const TrovLayoutInfo &layout, const TrovFieldInfo &f) {
    return f.countField >= 0 && f.countField < layout.fieldCount ? &layout.fields[f.countField] : nullptr;
}
// The bytes a count field counts by: a structure's by its first one or two.
unsigned countBytesOf(const TrovFieldInfo &count) {
    return count.countRecordBytes != 0 ? count.countRecordBytes : count.countBytes;
}
uint32_t limitOf(unsigned bytes) { return bytes == 1 ? 0xFFu : 0xFFFFu; }

// The element count of a counted field as the record holds it.
uint32_t countOf(const TrovLayoutInfo &layout, const TrovFieldInfo &f, const uint8_t *rec) {
    if (const TrovFieldInfo *c = countFieldOf(layout, f)) return loadWidth(rec + c->offset, countBytesOf(*c));
    if (f.kindId == TROV_KIND_REST) return load<uint16_t>(rec + f.offset);
    return loadWidth(rec + f.offset, f.countRecordBytes);
}

// Kinds 0 to 5 of an option have values of a fixed size whatever the length
// byte says: nothing, u32, u32, u16, u16, u32 then u16; they travel
// big-endian and sit in the record in host order, at the same places.
constexpr uint8_t kOptionBytes[] = {0, 4, 4, 2, 2, 6};
bool fixedOption(uint8_t kind) { return kind < std::size(kOptionBytes); }
// The width of the number at byte `at` of a fixed-size option value.
unsigned optionPart(uint8_t kind, size_t at) { return kind == 5 ? (at == 0 ? 4 : 2) : kOptionBytes[kind]; }

// Converts an option's value between its wire bytes and its record (the
// same bytes for kinds from 6); `toWire` picks the direction.
void convertOption(uint8_t kind, const uint8_t *from, uint8_t *to, size_t size, bool toWire) {
    if (!fixedOption(kind)) {
        std::memcpy(to, from, size);
        return;
    }
    for (size_t at = 0; at < size;) {
        const unsigned width = optionPart(kind, at);
        if (toWire) {
            const uint32_t v = loadWidth(from + at, width);
            for (unsigned b = 0; b < width; ++b) to[at + b] = static_cast<uint8_t>(v >> (8 * (width - 1 - b)));
        } else {
            uint32_t v = 0;
            for (unsigned b = 0; b < width; ++b) v = v << 8 | from[at + b];
            storeWidth(to + at, v, width);
        }
        at += width;
    }
}

TrovResult describeCode(Code::Of of, uint16_t code, uint8_t version, TrovLayoutInfo &out) {
    return of == Code::Of::DataType ? TROV_DescribeDataType(code, version, &out)
                                    : TROV_DescribeAttribute(code, version, &out);
}

// ---- reading --------------------------------------------------------------------------

class ReadWalk {
public:
    ReadWalk(RecordReader &reader, uint8_t version, bool request)
        : r_(reader), version_(version), request_(request) {}

    void valueOf(Code::Of of, uint16_t key, const uint8_t *data) {
        TrovLayoutInfo element{};
        if (describeCode(of, key, version_, element) == TROV_RESULT_OK) value(element, data, 0);
        else r_.absent();
    }

    void record(const TrovLayoutInfo &layout, const uint8_t *rec, int depth) {
        if (rec == nullptr) return r_.absent();
        if (depth > kMaxDepth) return r_.unread(Unread::TooDeep);
        switch (layout.form) {
        case TROV_LAYOUT_RAW: return r_.unread(Unread::RawBytes);
        case TROV_LAYOUT_SELECTOR: {
            // A selector the type does not have reads as the selector alone.
            TrovLayoutInfo variant{};
            if (TROV_DescribeVariant(&layout, rec[0], &variant) == TROV_RESULT_OK) return fields(variant, rec, depth);
            return fields(layout, rec, depth);
        }
        default: return fields(layout, rec, depth);
        }
    }

private:
    void fields(const TrovLayoutInfo &layout, const uint8_t *rec, int depth) {
        r_.beginRecord(layout);
        for (uint16_t i = 0; i < layout.fieldCount; ++i) {
            const TrovFieldInfo &f = layout.fields[i];
            if (f.kindId != TROV_KIND_BUFFER) field(layout, f, rec, depth);
        }
        r_.endRecord();
    }

    // A field's member (or members) and value.
    void field(const TrovLayoutInfo &layout, const TrovFieldInfo &f, const uint8_t *rec, int depth) {
        const uint8_t *at = rec + f.offset;
        const Kind &k = kindOf(f.kindId);
        switch (k.shape) {
        case Shape::Params: return params(layout, f, rec, depth);
        case Shape::Events: r_.member(kEvents); return events(layout, f, rec, depth);
        default: r_.member(f); break;
        }
        switch (k.shape) {
        case Shape::Scalar:
        case Shape::Reserved: return r_.number(loadWidth(at, k.width));
        case Shape::Count: return r_.number(loadWidth(at, f.countBytes));
        case Shape::Block: return r_.bytes(at, k.width != 0 ? k.width : f.width, Text::Bytes);
        case Shape::Option: return option(at, dataOf(f, rec));
        case Shape::Typed: {
            const Code::Of of = f.kindId == TROV_KIND_ATTRIBUTE ? Code::Of::Attribute : Code::Of::DataType;
            const uint16_t code = load<uint16_t>(at);
            r_.beginRecord(of == Code::Of::Attribute ? kAttributeValue : kDataTypeValue);
            r_.member(of == Code::Of::Attribute ? kIdFields[0] : kTypeFields[0]);
            r_.number(code);
            r_.member(kIdFields[1]);
            TrovLayoutInfo element{};
            if (describeCode(of, code, version_, element) == TROV_RESULT_OK) value(element, dataOf(f, rec), depth);
            else r_.absent();
            return r_.endRecord();
        }
        case Shape::Entries: {
            const auto count = load<uint16_t>(at + offsetof(AttributeList, count));
            const uint8_t *entries = loadPointer(at + offsetof(AttributeList, entries));
            r_.beginList(entries != nullptr ? count : 0);
            for (uint32_t i = 0; entries != nullptr && i < count; ++i)
                entry(entries + i * sizeof(AttributeEntry), version_, depth);
            return r_.endList();
        }
        case Shape::Record: {
            TrovLayoutInfo nested{};
            if (TROV_DescribeNested(&f, &nested) != TROV_RESULT_OK) return r_.absent();
            return record(nested, at, depth + 1);
        }
        case Shape::Options: {
            const uint8_t *options = dataOf(f, rec);
            const uint32_t n = options != nullptr ? at[0] : 0;
            r_.beginList(n);
            for (uint32_t i = 0; i < n; ++i) option(options + 16 * i, loadPointer(options + 16 * i + kOptionValue));
            return r_.endList();
        }
        // A structure's entries are coded by the attribute rows of version 0.
        case Shape::Entry: return entry(at, 0, depth);
        case Shape::Data:
        case Shape::Records: break;
        case Shape::None:
        case Shape::Event: // read with its entry
        case Shape::Events:
        case Shape::Params: return r_.absent();
        }
        // Counted data: absent where the pointer is null behind a count.
        const uint32_t n = countOf(layout, f, rec);
        const uint8_t *data = dataOf(f, rec);
        if (data == nullptr && n != 0) return r_.absent();
        if (k.shape == Shape::Records) {
            TrovLayoutInfo element{};
            const bool walk = n != 0 && TROV_DescribeNested(&f, &element) == TROV_RESULT_OK;
            r_.beginList(walk ? n : 0);
            for (uint32_t i = 0; walk && i < n; ++i) record(element, data + size_t{i} * element.recordBytes, depth + 1);
            return r_.endList();
        }
        if (k.parts == 0) return r_.bytes(data, n, k.text);
        r_.numbers(Numbers{f.kindId, k.parts, k.stride, n, data});
    }

    // An option: kind @0, length @1, the value's bytes as they travel.
    void option(const uint8_t *at, const uint8_t *value) {
        const uint8_t kind = at[0];
        uint8_t wire[255];
        size_t size = 0;
        if (value != nullptr) {
            size = fixedOption(kind) ? kOptionBytes[kind] : at[1];
            convertOption(kind, value, wire, size, true);
        }
        r_.beginRecord(kOption);
        r_.member(kOptionFields[0]);
        r_.number(kind);
        r_.member(kOptionFields[1]);
        r_.bytes(wire, size, Text::Bytes);
        r_.endRecord();
    }

    // A typed value: one element, or an AttributeArrayHeader and its elements.
    void value(const TrovLayoutInfo &element, const uint8_t *value, int depth) {
        if (value == nullptr) return r_.absent();
        if (element.arrayCountBytes == 0) return record(element, value, depth + 1);
        const uint32_t n = element.arrayCountBytes == 1 ? value[0] : load<uint16_t>(value);
        const uint8_t *elements = loadPointer(value + offsetof(AttributeArrayHeader, elements));
        r_.beginList(elements != nullptr ? n : 0);
        for (uint32_t i = 0; elements != nullptr && i < n; ++i)
            record(element, elements + size_t{i} * element.recordBytes, depth + 1);
        r_.endList();
    }

    // An AttributeEntry whose value the rows of `version` code; a value with a
    // length of its own (no codec decoded it) is its bytes.
    void entry(const uint8_t *at, uint8_t version, int depth) {
        const auto e = load<AttributeEntry>(at);
        const auto *data = static_cast<const uint8_t *>(e.value);
        r_.beginRecord(kAttributeValue);
        r_.member(kIdFields[0]);
        r_.number(e.id);
        r_.member(kIdFields[1]);
        TrovLayoutInfo element{};
        if (e.length != 0 || TROV_DescribeAttribute(e.id, version, &element) != TROV_RESULT_OK)
            r_.bytes(data, data != nullptr ? e.length : 0, Text::Unparsed);
        else
            value(element, data, depth);
        r_.endRecord();
    }

    // The entries of an event list, one entry record apart.
    void events(const TrovLayoutInfo &layout, const TrovFieldInfo &f, const uint8_t *rec, int depth) {
        const uint32_t n = countOf(layout, f, rec);
        const uint8_t *entries = dataOf(f, rec);
        TrovLayoutInfo entry{};
        const bool walk = entries != nullptr && TROV_DescribeNested(&f, &entry) == TROV_RESULT_OK;
        r_.beginList(walk ? n : 0);
        for (uint32_t i = 0; walk && i < n; ++i) eventEntry(entry, entries + size_t{i} * entry.recordBytes, depth);
        r_.endList();
    }

    // An entry: the event code, the entry's other members, then the event
    // record the code picks.
    void eventEntry(const TrovLayoutInfo &entry, const uint8_t *e, int depth) {
        const TrovFieldInfo *event = nullptr;
        for (uint16_t i = 0; i < entry.fieldCount && event == nullptr; ++i)
            if (entry.fields[i].kindId == TROV_KIND_EVENT) event = &entry.fields[i];
        const TrovFieldInfo *code = event != nullptr ? countFieldOf(entry, *event) : nullptr;
        r_.beginRecord(entry);
        if (code != nullptr) {
            TrovFieldInfo named = *code;
            named.name = kEventCode;
            r_.member(named);
            r_.number(load<uint16_t>(e + code->offset));
        }
        for (uint16_t i = 0; i < entry.fieldCount; ++i)
            if (&entry.fields[i] != code && &entry.fields[i] != event) field(entry, entry.fields[i], e, depth);
        if (event != nullptr) {
            r_.member(kEventFields);
            TrovLayoutInfo found{};
            if (code != nullptr &&
                TROV_DescribeEvent(load<uint16_t>(e + code->offset), version_, &found) == TROV_RESULT_OK)
                record(found, loadPointer(e + event->dataOffset), depth + 1);
            else
                r_.absent();
        }
        r_.endRecord();
    }

    // A method's parameters: their length, then the record the method code
    // picks (raw bytes for a raw method).
    void params(const TrovLayoutInfo &layout, const TrovFieldInfo &f, const uint8_t *rec, int depth) {
        const TrovFieldInfo *code = countFieldOf(layout, f);
        const auto length = load<uint16_t>(rec + f.dataOffset + kParamsLengthAt);
        const uint8_t *p = dataOf(f, rec);
        r_.member(kParamsLength);
        r_.number(length);
        r_.member(f);
        TrovLayoutInfo params{};
        if (code == nullptr ||
            TROV_DescribeMethod(load<uint16_t>(rec + code->offset), version_, request_ ? 1 : 0, &params) !=
                TROV_RESULT_OK) {
            r_.absent();
        } else if (params.form == TROV_LAYOUT_RAW) {
            r_.bytes(p, p != nullptr ? length : 0, Text::Bytes);
        } else if (params.form == TROV_LAYOUT_NONE || p == nullptr) {
            r_.beginRecord(params); // no parameters: an empty record
            r_.endRecord();
        } else {
            record(params, p, depth + 1);
        }
    }

    RecordReader &r_;
    uint8_t version_;
    bool request_;
};

} // namespace

const char *lengthMember(const TrovFieldInfo &field) {
    return field.kindId == TROV_KIND_PARAMS ? kParamsLength.name : nullptr;
}

const char *memberName(const TrovLayoutInfo &layout, const TrovFieldInfo &field) {
    if (field.kindId == TROV_KIND_EVENTS) return kEvents.name;
    if (field.kindId == TROV_KIND_EVENT) return kEventFields.name;
    for (uint16_t i = 0; i < layout.fieldCount; ++i)
        if (layout.fields[i].kindId == TROV_KIND_EVENT && countFieldOf(layout, layout.fields[i]) == &field)
            return kEventCode;
    return field.name;
}

uint32_t Numbers::at(uint32_t index, unsigned part) const {
    const Kind &k = kindOf(kindId);
    return loadWidth(data + size_t{index} * stride + k.partOffset[part], k.partWidth[part]);
}

unsigned Numbers::partBytes(unsigned part) const { return kindOf(kindId).partWidth[part]; }
unsigned Numbers::partOffset(unsigned part) const { return kindOf(kindId).partOffset[part]; }

void readRecord(const TrovLayoutInfo &layout, const void *record, uint8_t version, bool request,
                RecordReader &reader) {
    ReadWalk(reader, version, request).record(layout, static_cast<const uint8_t *>(record), 0);
}

void readValue(const Code &code, uint16_t key, const void *value, RecordReader &reader) {
    ReadWalk(reader, code.version, true).valueOf(code.of, key, static_cast<const uint8_t *>(value));
}

// ---- building -------------------------------------------------------------------------

namespace {

class BuildWalk {
public:
    BuildWalk(RecordBuilder &builder, uint8_t version, bool request)
        : b_(builder), version_(version), request_(request) {}

    // A typed value on its own.
    void *valueAlone(const Code &code, uint16_t key) {
        TrovLayoutInfo element{};
        const TrovResult found = describeCode(code.of, key, code.version, element);
        if (found == TROV_RESULT_OK) return value(element);
        void *standIn = nullptr;
        const Miss miss{Miss::Of::Code, code.of, key, code.version, found, nullptr, code.field};
        return b_.missing(miss, standIn) == Answer::StandIn ? standIn : nullptr;
    }

    void *top(const TrovLayoutInfo &layout) {
        switch (layout.form) {
        case TROV_LAYOUT_FIELDS:
        case TROV_LAYOUT_NONE:
        case TROV_LAYOUT_STRUCTURE:
        case TROV_LAYOUT_SELECTOR:
        case TROV_LAYOUT_METHOD_CALL:
        case TROV_LAYOUT_EVENT_LIST: return record(layout, Frame::Top, nullptr);
        default: return cannot(&layout, nullptr), nullptr; // raw bytes: no record
        }
    }

private:
    // A miss nothing stands in for: the build ends.
    bool stop(const Miss &miss) {
        void *ignored = nullptr;
        b_.missing(miss, ignored);
        return false;
    }
    // A form (of `layout`) or kind (of `field`) the walk cannot build.
    bool cannot(const TrovLayoutInfo *layout, const TrovFieldInfo *field) {
        return stop(Miss{Miss::Of::Layout, {}, 0, version_, 0, layout, field});
    }

    // One level deeper, within the bound.
    bool enter() {
        if (depth_ >= kMaxDepth) return stop(Miss{Miss::Of::Depth, {}, 0, version_, 0, nullptr, nullptr});
        ++depth_;
        return true;
    }

    uint8_t *allocate(size_t bytes, Block block) { return static_cast<uint8_t *>(b_.allocate(bytes, block)); }

    // A record of `layout`: at `in`, or in memory of its own (the size of the
    // variant a selector picks). Null when the build stops.
    uint8_t *record(const TrovLayoutInfo &layout, Frame frame, uint8_t *in) {
        const TrovLayoutInfo *walk = &layout;
        TrovLayoutInfo variant{};
        uint32_t selector = 0;
        size_t bytes = layout.recordBytes;
        const bool selected = layout.form == TROV_LAYOUT_SELECTOR && layout.fieldCount > 0;
        if (selected) {
            const Code code{Code::Of::Selector, layout.fields, version_};
            if (!b_.beginField(layout.fields[0]) || !b_.code(code, selector)) return nullptr;
            b_.endField();
            selector &= 0xFF;
            if (TROV_DescribeVariant(&layout, static_cast<uint8_t>(selector), &variant) == TROV_RESULT_OK) {
                walk = &variant;
                bytes = variant.recordBytes;
            } else {
                void *ignored = nullptr;
                if (b_.missing(Miss{Miss::Of::Variant, Code::Of::Selector, selector, version_, TROV_RESULT_BAD_VALUE,
                                    &layout, layout.fields},
                               ignored) != Answer::StandIn)
                    return nullptr;
                walk = nullptr; // the selector byte alone
                bytes = 1;
            }
        }
        uint8_t *rec = in != nullptr ? in : allocate(bytes, Block::Record);
        if (rec == nullptr) return nullptr;
        if (selected) rec[0] = static_cast<uint8_t>(selector);
        if (walk != nullptr && !fields(*walk, rec, frame, selected)) return nullptr;
        return rec;
    }

    bool fields(const TrovLayoutInfo &layout, uint8_t *rec, Frame frame, bool selected) {
        if (!b_.beginRecord(layout, frame)) return false;
        // Count fields whose count comes with the data (bit per field index).
        uint64_t later = 0;
        for (uint16_t i = selected ? 1 : 0; i < layout.fieldCount; ++i)
            if (!field(layout, i, rec, later)) return false;
        return b_.endRecord();
    }

    bool field(const TrovLayoutInfo &layout, uint16_t i, uint8_t *rec, uint64_t &later) {
        const TrovFieldInfo &f = layout.fields[i];
        uint8_t *at = rec + f.offset;
        const Kind &k = kindOf(f.kindId);
        switch (k.shape) {
        case Shape::None:
            if (f.kindId == TROV_KIND_BUFFER) return true; // decoded data only
            break;
        case Shape::Reserved: {
            uint32_t value = at[0];
            if (!b_.filler(Filler::Reserved, value)) return false;
            at[0] = static_cast<uint8_t>(value);
            return true;
        }
        case Shape::Count: return countField(layout, i, rec, later);
        case Shape::Params: return params(layout, f, rec);
        case Shape::Events: {
            if (!b_.beginField(kEvents) || !events(layout, f, rec, later)) return false;
            b_.endField();
            return true;
        }
        case Shape::Event: return cannot(&layout, &f); // built with its entry
        default: break;
        }
        if (!known(f.kindId) || !b_.beginField(f)) {
            if (!known(f.kindId)) cannot(&layout, &f);
            return false;
        }
        bool ok = false;
        switch (k.shape) {
        case Shape::Scalar: {
            uint32_t value = loadWidth(at, k.width);
            ok = picksParams(layout, i) ? b_.code(Code{Code::Of::Method, nullptr, version_}, value)
                                        : b_.scalar(f, k.width, value);
            storeWidth(at, value, k.width);
            break;
        }
        case Shape::Block: ok = b_.bytes(f, Text::Bytes, at, k.width != 0 ? k.width : f.width); break;
        case Shape::Data: ok = data(layout, f, rec, later); break;
        case Shape::Typed: ok = typed(f, rec); break;
        case Shape::Option:
            ok = option(at, rec + (f.dataOffset != TROV_NO_DATA ? f.dataOffset : f.offset + kOptionValue));
            break;
        case Shape::Entries: ok = entries(f, rec); break;
        case Shape::Record: {
            TrovLayoutInfo nested{};
            if (TROV_DescribeNested(&f, &nested) != TROV_RESULT_OK)
                return cannot(&layout, &f);
            ok = enter() && record(nested, Frame::Nested, at) != nullptr;
            if (ok) --depth_;
            break;
        }
        case Shape::Records: ok = records(layout, f, rec, later); break;
        case Shape::Options: ok = options(f, rec); break;
        // A structure's entries are coded by the attribute rows of version 0.
        case Shape::Entry: ok = entry(f, at, 0); break;
        default: break;
        }
        if (ok) b_.endField();
        return ok;
    }

    // A count field: its count now, or (kLater) with the data it counts.
    bool countField(const TrovLayoutInfo &layout, uint16_t i, uint8_t *rec, uint64_t &later) {
        const TrovFieldInfo &f = layout.fields[i];
        const TrovFieldInfo *counted = nullptr;
        for (uint16_t j = i + 1; j < layout.fieldCount && counted == nullptr; ++j)
            if (layout.fields[j].countField == i) counted = &layout.fields[j];
        Count c{Count::Of::CountField, &f, counted, Text::Bytes, 0, f.countBytes, 1, 1, limitOf(countBytesOf(f)),
                false};
        if (counted != nullptr) {
            const Kind &k = kindOf(counted->kindId);
            c.text = k.text;
            c.parts = k.parts;
            c.elementWire = k.wire;
            c.elementBytes = k.stride;
            TrovLayoutInfo nested{};
            if ((counted->kindId == TROV_KIND_RECORDS || counted->kindId == TROV_KIND_EVENTS) &&
                TROV_DescribeNested(counted, &nested) == TROV_RESULT_OK) {
                c.elementWire = nested.wireFixed;
                c.elementBytes = nested.recordBytes;
            }
        }
        uint32_t value = 0;
        if (!b_.count(c, value)) return false;
        if (value == kLater) {
            if (i >= 64) return cannot(&layout, &f);
            later |= uint64_t{1} << i;
            return true;
        }
        storeWidth(rec + f.offset, value, f.countBytes);
        return true;
    }

    // The count of a counted field: announced by its count field, or given
    // now (the record keeps it in the field's head or, later, in the count
    // field).
    bool countFor(const TrovLayoutInfo &layout, const TrovFieldInfo &f, const uint8_t *rec, uint64_t later,
                  Count &c, uint32_t &value, uint32_t &n) {
        const TrovFieldInfo *counter = countFieldOf(layout, f);
        c.limit = limitOf(counter != nullptr ? countBytesOf(*counter) : f.countBytes != 0 ? f.countBytes : 2);
        value = 0;
        if (counter != nullptr && (f.countField >= 64 || (later >> f.countField & 1) == 0)) {
            c.announced = true;
            value = loadWidth(rec + counter->offset, countBytesOf(*counter));
        }
        if (!b_.count(c, value)) return false;
        n = c.announced ? value : value & c.limit;
        return true;
    }

    // Stores what countFor() decided: the head's count, or the count field's.
    static void storeCount(const TrovLayoutInfo &layout, const TrovFieldInfo &f, uint8_t *rec, const Count &c,
                           uint32_t value, uint32_t n) {
        const TrovFieldInfo *counter = countFieldOf(layout, f);
        if (counter == nullptr && f.countRecordBytes != 0) storeWidth(rec + f.offset, value, f.countRecordBytes);
        if (counter != nullptr && !c.announced) storeWidth(rec + counter->offset, n, counter->countBytes);
    }

    bool data(const TrovLayoutInfo &layout, const TrovFieldInfo &f, uint8_t *rec, uint64_t later) {
        const Kind &k = kindOf(f.kindId);
        const bool rest = f.kindId == TROV_KIND_REST;
        Count c{rest ? Count::Of::Rest : Count::Of::Data, &f, nullptr, k.text, k.parts,
                static_cast<uint8_t>(rest || f.countField >= 0 ? 0 : f.countBytes), k.wire, k.stride, 0, false};
        uint32_t value = 0, n = 0;
        if (!countFor(layout, f, rec, later, c, value, n)) return false;
        uint8_t *data = allocate(size_t{n} * k.stride, Block::Data);
        if (data != nullptr && n != 0) {
            if (k.parts == 0) {
                if (!b_.bytes(f, k.text, data, n)) return false;
            } else {
                const Numbers numbers{f.kindId, k.parts, k.stride, n, data};
                for (uint32_t i = 0; i < n; ++i) {
                    uint8_t *e = data + size_t{i} * k.stride;
                    uint32_t parts[2] = {numbers.at(i, 0), k.parts > 1 ? numbers.at(i, 1) : 0};
                    if (!b_.element(numbers, i, parts)) return false;
                    for (unsigned p = 0; p < k.parts; ++p) storeWidth(e + k.partOffset[p], parts[p], k.partWidth[p]);
                }
            }
        }
        storeCount(layout, f, rec, c, value, n);
        if (f.dataOffset != TROV_NO_DATA) storePointer(rec + f.dataOffset, data);
        return true;
    }

    // Counted nested records, one element record apart. Without elements the
    // pointer's slot is the field's offset, right behind the field before.
    bool records(const TrovLayoutInfo &layout, const TrovFieldInfo &f, uint8_t *rec, uint64_t later) {
        TrovLayoutInfo element{};
        if (TROV_DescribeNested(&f, &element) != TROV_RESULT_OK)
            return cannot(&layout, &f);
        Count c{Count::Of::Records, &f, nullptr, Text::Bytes, 0, 0, element.wireFixed, element.recordBytes, 0, false};
        uint32_t value = 0, n = 0;
        if (!countFor(layout, f, rec, later, c, value, n)) return false;
        uint8_t *elements = allocate(size_t{n} * element.recordBytes, Block::Elements);
        for (uint32_t i = 0; elements != nullptr && i < n; ++i) {
            if (!b_.beginItem(i) || !enter() ||
                record(element, Frame::Item, elements + size_t{i} * element.recordBytes) == nullptr)
                return false;
            --depth_;
            b_.endItem();
        }
        storeCount(layout, f, rec, c, value, n);
        storePointer(rec + (n != 0 ? f.dataOffset : f.offset), elements);
        return true;
    }

    // The entries of an event list, one entry record apart, counted by the
    // list's count field.
    bool events(const TrovLayoutInfo &layout, const TrovFieldInfo &f, uint8_t *rec, uint64_t later) {
        TrovLayoutInfo entry{};
        if (TROV_DescribeNested(&f, &entry) != TROV_RESULT_OK) return cannot(&layout, &f);
        Count c{Count::Of::Events, &f, nullptr, Text::Bytes, 0, 0, entry.wireFixed, entry.recordBytes, 0, false};
        uint32_t value = 0, n = 0;
        if (!countFor(layout, f, rec, later, c, value, n)) return false;
        uint8_t *entries = allocate(size_t{n} * entry.recordBytes, Block::Elements);
        for (uint32_t i = 0; entries != nullptr && i < n; ++i) {
            if (!b_.beginItem(i) || !enter() || !eventEntry(entry, entries + size_t{i} * entry.recordBytes))
                return false;
            --depth_;
            b_.endItem();
        }
        storeCount(layout, f, rec, c, value, n);
        storePointer(rec + f.dataOffset, entries);
        return true;
    }

    // An entry: its event code first (it picks the event's layout), the
    // entry's other members, then the event record.
    bool eventEntry(const TrovLayoutInfo &entry, uint8_t *e) {
        const TrovFieldInfo *event = nullptr;
        for (uint16_t i = 0; i < entry.fieldCount && event == nullptr; ++i)
            if (entry.fields[i].kindId == TROV_KIND_EVENT) event = &entry.fields[i];
        const TrovFieldInfo *code = event != nullptr ? countFieldOf(entry, *event) : nullptr;
        if (code == nullptr) return cannot(&entry, event);
        if (!b_.beginRecord(entry, Frame::EventEntry)) return false;
        TrovFieldInfo named = *code;
        named.name = kEventCode;
        uint32_t value = 0;
        if (!b_.beginField(named) || !b_.code(Code{Code::Of::Event, code, version_}, value)) return false;
        b_.endField();
        storeWidth(e + code->offset, value, 2);
        uint64_t later = 0;
        for (uint16_t i = 0; i < entry.fieldCount; ++i)
            if (&entry.fields[i] != code && &entry.fields[i] != event && !field(entry, i, e, later)) return false;
        void *record = nullptr;
        TrovLayoutInfo found{};
        const auto eventCode = static_cast<uint16_t>(value);
        const TrovResult result = TROV_DescribeEvent(eventCode, version_, &found);
        if (result != TROV_RESULT_OK) {
            if (b_.missing(Miss{Miss::Of::Code, Code::Of::Event, eventCode, version_, result, nullptr, code}, record) !=
                Answer::StandIn)
                return false;
        } else {
            if (!b_.beginField(kEventFields) || !enter() || (record = this->record(found, Frame::Event, nullptr)) == nullptr)
                return false;
            --depth_;
            b_.endField();
        }
        storePointer(e + event->dataOffset, record);
        return b_.endRecord();
    }

    // A TrovOptionList: the u8 count, the options 16 bytes apart.
    bool options(const TrovFieldInfo &f, uint8_t *rec) {
        Count c{Count::Of::Options, &f, nullptr, Text::Bytes, 0, 1, 2, 16, 0xFF, false};
        uint32_t value = 0;
        if (!b_.count(c, value)) return false;
        const uint32_t n = value & 0xFF;
        uint8_t *options = allocate(size_t{n} * 16, Block::Elements);
        for (uint32_t i = 0; options != nullptr && i < n; ++i) {
            if (!b_.beginItem(i) || !option(options + 16 * i, options + 16 * i + kOptionValue)) return false;
            b_.endItem();
        }
        rec[f.offset] = static_cast<uint8_t>(n);
        storePointer(rec + (f.dataOffset != TROV_NO_DATA ? f.dataOffset : f.offset + 8), options);
        return true;
    }

    // An option: kind and length bytes at `at`, the value's pointer at `slot`.
    bool option(uint8_t *at, uint8_t *slot) {
        uint32_t kind = 0, length = 0;
        if (!b_.beginRecord(kOption, Frame::Option) || !b_.beginField(kOptionFields[0]) ||
            !b_.code(Code{Code::Of::Option, kOptionFields, version_}, kind))
            return false;
        kind &= 0xFF;
        b_.endField();
        Count c{Count::Of::Option, &kOptionFields[1], nullptr, Text::Bytes, 0, 1, 1, 1, 0xFF, false};
        if (!b_.beginField(kOptionFields[1]) || !b_.count(c, length)) return false;
        length &= 0xFF;
        const size_t size = fixedOption(static_cast<uint8_t>(kind)) ? kOptionBytes[kind] : length;
        uint8_t *value = allocate(size, Block::Data);
        if (value != nullptr && size != 0) {
            uint8_t wire[255] = {};
            if (!b_.bytes(kOptionFields[1], Text::Bytes, wire, size)) return false;
            convertOption(static_cast<uint8_t>(kind), wire, value, size, false);
        }
        b_.endField();
        at[0] = static_cast<uint8_t>(kind);
        at[1] = static_cast<uint8_t>(length);
        storePointer(slot, value);
        return b_.endRecord();
    }

    // The value of a typed value or entry whose element `layout` describes: one
    // element record, or an AttributeArrayHeader and its elements.
    void *value(const TrovLayoutInfo &element) {
        if (!enter() || !b_.beginValue(element)) return nullptr;
        void *result = nullptr;
        if (element.arrayCountBytes == 0) {
            result = record(element, Frame::Value, nullptr);
        } else if (uint8_t *header = allocate(sizeof(AttributeArrayHeader), Block::Header)) {
            Count c{Count::Of::Elements, nullptr, nullptr, Text::Bytes, 0, element.arrayCountBytes,
                    static_cast<uint16_t>(element.wireFixed != 0 ? element.wireFixed : 1), element.recordBytes,
                    limitOf(element.arrayCountBytes), false};
            uint32_t value = 0;
            if (!b_.count(c, value)) return nullptr;
            const uint32_t n = value & c.limit;
            uint8_t *elements = allocate(size_t{n} * element.recordBytes, Block::Elements);
            bool ok = true;
            for (uint32_t i = 0; ok && elements != nullptr && i < n; ++i) {
                ok = b_.beginItem(i) &&
                     record(element, Frame::Value, elements + size_t{i} * element.recordBytes) != nullptr;
                if (ok) b_.endItem();
            }
            if (!ok) return nullptr;
            // The count as wide as the header's member; a one-byte prefix counts by its low byte.
            store(header + offsetof(AttributeArrayHeader, count), static_cast<uint16_t>(value));
            storePointer(header + offsetof(AttributeArrayHeader, elements), elements);
            result = header;
        }
        if (result == nullptr) return nullptr;
        --depth_;
        b_.endValue();
        return result;
    }

    // An identifier or data type at the field's offset, the value's pointer
    // at its dataOffset; values are those of the rows of the header's version.
    bool typed(const TrovFieldInfo &f, uint8_t *rec) {
        const bool attribute = f.kindId == TROV_KIND_ATTRIBUTE;
        const TrovLayoutInfo &layout = attribute ? kAttributeValue : kDataTypeValue;
        const Code code{attribute ? Code::Of::Attribute : Code::Of::DataType, &f, version_};
        uint32_t key = 0;
        if (!b_.beginRecord(layout, Frame::Typed) || !b_.beginField(layout.fields[0]) || !b_.code(code, key))
            return false;
        b_.endField();
        storeWidth(rec + f.offset, key, 2);
        void *data = nullptr;
        if (!valueOf(code, layout, static_cast<uint16_t>(key), data, nullptr)) return false;
        data = b_.pointer(&f, data);
        if (f.dataOffset != TROV_NO_DATA) storePointer(rec + f.dataOffset, data);
        return b_.endRecord();
    }

    // The value `code` names: built, or what the builder stands in for it.
    // `length` (an entry's) is set for bytes kept as they stand.
    bool valueOf(const Code &code, const TrovLayoutInfo &layout, uint16_t key, void *&data, uint32_t *length) {
        TrovLayoutInfo element{};
        const TrovResult found = describeCode(code.of, key, code.version, element);
        if (found == TROV_RESULT_OK) {
            if (!b_.beginField(layout.fields[1])) return false;
            data = value(element);
            if (data == nullptr) return false;
            return b_.endField(), true;
        }
        const Answer answer =
            b_.missing(Miss{Miss::Of::Code, code.of, key, code.version, found, nullptr, code.field}, data);
        if (answer == Answer::StandIn) return true;
        if (answer != Answer::Unparsed || length == nullptr) return false;
        // The value's wire bytes, as many as the builder says.
        Count c{Count::Of::Unparsed, &layout.fields[1], nullptr, Text::Unparsed, 0, 2, 1, 1, 0xFFFF, false};
        uint32_t n = 0;
        if (!b_.beginField(layout.fields[1]) || !b_.count(c, n)) return false;
        n &= 0xFFFF;
        auto *bytes = allocate(n, Block::Data);
        if (bytes != nullptr && n != 0 && !b_.bytes(layout.fields[1], Text::Unparsed, bytes, n)) return false;
        b_.endField();
        *length = n;
        data = bytes;
        return true;
    }

    // An AttributeEntry at `at`: identifier, length (0: the encoder computes
    // it) and the value's pointer; `owner` is the list or entry field.
    bool entry(const TrovFieldInfo &owner, uint8_t *at, uint8_t version) {
        const Code code{Code::Of::Entry, &owner, version};
        uint32_t id = 0, length = 0;
        if (!b_.beginRecord(kAttributeValue, Frame::Entry) || !b_.beginField(kIdFields[0]) || !b_.code(code, id))
            return false;
        b_.endField();
        if (!b_.filler(Filler::EntryLength, length)) return false;
        void *data = nullptr;
        if (!valueOf(code, kAttributeValue, static_cast<uint16_t>(id), data, &length)) return false;
        data = b_.pointer(&owner, data);
        storeWidth(at + offsetof(AttributeEntry, id), id, 2);
        storeWidth(at + offsetof(AttributeEntry, length), length, 2);
        storePointer(at + offsetof(AttributeEntry, value), data);
        return b_.endRecord();
    }

    // An AttributeList: the u16 count, the entries 16 bytes apart.
    bool entries(const TrovFieldInfo &f, uint8_t *rec) {
        Count c{Count::Of::Entries, &f, nullptr, Text::Bytes, 0, 2, 4, sizeof(AttributeEntry), 0xFFFF, false};
        uint32_t value = 0;
        if (!b_.count(c, value)) return false;
        const uint32_t n = value & 0xFFFF;
        uint8_t *list = allocate(size_t{n} * sizeof(AttributeEntry), Block::Elements);
        for (uint32_t i = 0; list != nullptr && i < n; ++i) {
            if (!b_.beginItem(i) || !entry(f, list + size_t{i} * sizeof(AttributeEntry), version_)) return false;
            b_.endItem();
        }
        storeWidth(rec + f.offset, n, f.countRecordBytes != 0 ? f.countRecordBytes : 2);
        storePointer(rec + (f.dataOffset != TROV_NO_DATA ? f.dataOffset : f.offset + 8), list);
        return true;
    }

    // Whether field `i` holds the method code of a params field.
    static bool picksParams(const TrovLayoutInfo &layout, uint16_t i) {
        for (uint16_t j = i + 1; j < layout.fieldCount; ++j)
            if (layout.fields[j].kindId == TROV_KIND_PARAMS && layout.fields[j].countField == i) return true;
        return false;
    }

    // A method's parameters, whose record TROV_DescribeMethod gives for the
    // code already in the record (raw bytes for a method without its own),
    // then their length.
    bool params(const TrovLayoutInfo &layout, const TrovFieldInfo &f, uint8_t *rec) {
        const TrovFieldInfo *code = countFieldOf(layout, f);
        if (code == nullptr) return cannot(&layout, &f);
        const auto method = load<uint16_t>(rec + code->offset);
        void *params = nullptr;
        uint32_t length = 0;
        bool filled = true; // the length is the builder's unless the bytes are raw
        TrovLayoutInfo found{};
        const TrovResult result = TROV_DescribeMethod(method, version_, request_ ? 1 : 0, &found);
        if (result != TROV_RESULT_OK) {
            if (b_.missing(Miss{Miss::Of::Code, Code::Of::Method, method, version_, result, nullptr, nullptr},
                           params) != Answer::StandIn)
                return false;
        } else {
            if (!b_.beginField(f)) return false;
            if (found.form == TROV_LAYOUT_RAW) {
                Count c{Count::Of::Rest, &f, nullptr, Text::Bytes, 0, 0, 1, 1, 0xFFFF, false};
                if (!b_.count(c, length)) return false;
                length &= 0xFFFF;
                auto *bytes = allocate(length, Block::Data);
                if (bytes != nullptr && length != 0 && !b_.bytes(f, Text::Bytes, bytes, length)) return false;
                params = bytes;
                filled = false;
            } else if (found.form == TROV_LAYOUT_FIELDS || found.form == TROV_LAYOUT_NONE ||
                       found.form == TROV_LAYOUT_STRUCTURE) { // a structure: the structured replies
                if (!enter() || (params = record(found, Frame::Params, nullptr)) == nullptr) return false;
                --depth_;
                params = b_.pointer(nullptr, params);
            } else {
                return cannot(&found, nullptr);
            }
            b_.endField();
        }
        if (filled && !b_.filler(Filler::ParamsLength, length)) return false;
        storePointer(rec + f.dataOffset, params);
        store(rec + f.dataOffset + kParamsLengthAt, static_cast<uint16_t>(length));
        return true;
    }

    RecordBuilder &b_;
    uint8_t version_;
    bool request_;
    int depth_ = 0;
};

} // namespace

void *buildRecord(const TrovLayoutInfo &layout, uint8_t version, bool request, RecordBuilder &builder) {
    return BuildWalk(builder, version, request).top(layout);
}

void *buildValue(const Code &code, uint16_t key, RecordBuilder &builder) {
    return BuildWalk(builder, code.version, true).valueAlone(code, key);
}

} // namespace trov::describe
