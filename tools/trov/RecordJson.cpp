// Records as JSON through the library's layout description.
//
// One printer walks any layout: each TrovFieldInfo names a field, its kind and
// where it sits in the record, so no body, event or method has a printer of its
// own. Records are read with memcpy at the described offsets, so a field at
// any offset is read without an unaligned access. Variable data hangs off
// pointers in the record:
//   - a counted field keeps its count either in the first bytes of its 16-byte
//     head (countRecordBytes wide) or in a count field of its own
//     (countField), and its data pointer at dataOffset;
//   - attribute and typed values keep a pointer at dataOffset to the value:
//     one element record of the value's layout, or, for types with an array
//     form, an AttributeArrayHeader (count, pointer to the elements);
//   - attribute lists are an AttributeList of AttributeEntry rows.
//   - structured records nest records in place (TROV_DescribeNested), count
//     arrays of them, option lists and attribute entries;
//   - a selector value's record is described per selector byte
//     (TROV_DescribeVariant).
// Event lists and method invocations are the two record types whose contents
// are described one level further down (per event code, per method code).
#include <cstddef>
#include <cstring>
#include <string>

#include "RecordJson.h"
#include "TrovCodec.h"

namespace trov {
namespace {

// Attribute lists nest inside attribute values; the decoder bounds the depth,
// the printer bounds it again so that a record never drives it deeper.
constexpr int kMaxDepth = 40;

template <typename T> T load(const uint8_t *at) {
    T v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

const uint8_t *loadPointer(const uint8_t *at) { return static_cast<const uint8_t *>(load<const void *>(at)); }

uint32_t loadWidth(const uint8_t *at, unsigned width) {
    switch (width) {
    case 1: return at[0];
    case 2: return load<uint16_t>(at);
    case 4: return load<uint32_t>(at);
    default: return 0;
    }
}

// A record the printer does not go into, and why.
Json unprinted(const char *why) { return Json{{"unprinted", why}}; }

class Printer {
public:
    Printer(uint8_t version, bool request) : version_(version), request_(request) {}

    Json record(const TrovLayoutInfo &layout, const uint8_t *rec, int depth) const {
        if (rec == nullptr) return nullptr;
        if (depth > kMaxDepth) return unprinted("nested too deep");
        switch (layout.form) {
        case TROV_LAYOUT_NONE: return Json::object();
        case TROV_LAYOUT_EVENT_LIST: return eventList(layout, rec, depth);
        case TROV_LAYOUT_METHOD_CALL: return methodCall(rec, depth);
        case TROV_LAYOUT_SELECTOR: {
            // The selector byte picks the variant, whose layout spells the
            // whole record; a selector the type does not have prints alone.
            TrovLayoutInfo variant{};
            if (TROV_DescribeVariant(&layout, rec[0], &variant) != TROV_RESULT_OK) return fields(layout, rec, depth);
            return fields(variant, rec, depth);
        }
        case TROV_LAYOUT_RAW: return unprinted("raw bytes");
        default: return fields(layout, rec, depth);
        }
    }

private:
    Json fields(const TrovLayoutInfo &layout, const uint8_t *rec, int depth) const {
        Json j = Json::object();
        for (uint16_t i = 0; i < layout.fieldCount; ++i) {
            const TrovFieldInfo &f = layout.fields[i];
            if (f.kindId == TROV_KIND_BUFFER) continue;
            j[f.name] = field(layout, f, rec, depth);
        }
        return j;
    }

    // The element count of a counted field. A structure's count field may
    // count by its first bytes only (countRecordBytes).
    static uint32_t countOf(const TrovLayoutInfo &layout, const TrovFieldInfo &f, const uint8_t *rec) {
        if (f.countField >= 0 && f.countField < layout.fieldCount) {
            const TrovFieldInfo &c = layout.fields[f.countField];
            return loadWidth(rec + c.offset, c.countRecordBytes != 0 ? c.countRecordBytes : c.countBytes);
        }
        if (f.kindId == TROV_KIND_REST) return load<uint16_t>(rec + f.offset);
        return loadWidth(rec + f.offset, f.countRecordBytes);
    }

    static const uint8_t *dataOf(const TrovFieldInfo &f, const uint8_t *rec) {
        return f.dataOffset == TROV_NO_DATA ? nullptr : loadPointer(rec + f.dataOffset);
    }

    Json field(const TrovLayoutInfo &layout, const TrovFieldInfo &f, const uint8_t *rec, int depth) const {
        const uint8_t *at = rec + f.offset;
        switch (f.kindId) {
        case TROV_KIND_U8:
        case TROV_KIND_RESERVED: return at[0];
        case TROV_KIND_U16: return load<uint16_t>(at);
        case TROV_KIND_U32: return load<uint32_t>(at);
        case TROV_KIND_COUNT: return loadWidth(at, f.countBytes);
        case TROV_KIND_BYTES: return hexString(at, f.width);
        case TROV_KIND_BYTES12: return hexString(at, 12);
        case TROV_KIND_OPTION: return option(at, dataOf(f, rec));
        case TROV_KIND_ATTRIBUTE:
        case TROV_KIND_VALUE:
        case TROV_KIND_RESERVED_VALUE: {
            // The identifier or data type, then the value its layout describes.
            const bool attribute = f.kindId == TROV_KIND_ATTRIBUTE;
            const uint16_t code = load<uint16_t>(at);
            TrovLayoutInfo element{};
            const TrovResult found = attribute ? TROV_DescribeAttribute(code, version_, &element)
                                               : TROV_DescribeDataType(code, version_, &element);
            return Json{{attribute ? "id" : "type", code},
                        {"value", found == TROV_RESULT_OK ? typedValue(element, dataOf(f, rec), depth) : Json()}};
        }
        case TROV_KIND_ATTRIBUTES:
        case TROV_KIND_EVENT_ATTRIBUTES: return attributeList(at, depth);
        case TROV_KIND_RECORD: {
            TrovLayoutInfo nested{};
            if (TROV_DescribeNested(&f, &nested) != TROV_RESULT_OK) return nullptr;
            return record(nested, at, depth + 1);
        }
        case TROV_KIND_OPTIONS: {
            // TrovOptionList: the u8 count, the 16-byte options behind the pointer.
            const uint8_t *options = dataOf(f, rec);
            Json a = Json::array();
            for (unsigned i = 0; options != nullptr && i < at[0]; ++i)
                a.push_back(option(options + 16 * i, loadPointer(options + 16 * i + 8)));
            return a;
        }
        // Entries of a structure are coded by the attribute rows of version 0.
        case TROV_KIND_ENTRY: return entry(at, 0, depth);
        default: break;
        }
        // Counted kinds.
        const uint32_t n = countOf(layout, f, rec);
        const uint8_t *data = dataOf(f, rec);
        if (data == nullptr && n != 0) return nullptr;
        switch (f.kindId) {
        case TROV_KIND_OCTETS:
        case TROV_KIND_REST: return hexString(data, n);
        case TROV_KIND_CHARS: return chars(data, n);
        case TROV_KIND_U16S: {
            Json a = Json::array();
            for (uint32_t i = 0; i < n; ++i) a.push_back(load<uint16_t>(data + 2 * i));
            return a;
        }
        case TROV_KIND_U32S:
        case TROV_KIND_WIDE_U32S: {
            // Both keep the values 4 bytes apart; the wide kind only reserves
            // 8 bytes of room per value.
            Json a = Json::array();
            for (uint32_t i = 0; i < n; ++i) a.push_back(load<uint32_t>(data + 4 * i));
            return a;
        }
        case TROV_KIND_U8U32_ITEMS: {
            Json a = Json::array();
            for (uint32_t i = 0; i < n; ++i)
                a.push_back(Json::array({data[8 * i], load<uint32_t>(data + 8 * i + 4)}));
            return a;
        }
        case TROV_KIND_U32U8_ITEMS: {
            Json a = Json::array();
            for (uint32_t i = 0; i < n; ++i)
                a.push_back(Json::array({load<uint32_t>(data + 8 * i), data[8 * i + 4]}));
            return a;
        }
        case TROV_KIND_BYTE_PAIRS: {
            Json a = Json::array();
            for (uint32_t i = 0; i < n; ++i) a.push_back(Json::array({data[2 * i], data[2 * i + 1]}));
            return a;
        }
        case TROV_KIND_RECORDS: {
            TrovLayoutInfo element{};
            Json a = Json::array();
            if (n == 0 || TROV_DescribeNested(&f, &element) != TROV_RESULT_OK) return a;
            for (uint32_t i = 0; i < n; ++i)
                a.push_back(record(element, data + size_t{i} * element.recordBytes, depth + 1));
            return a;
        }
        default: return nullptr;
        }
    }

    // An option: u8 kind @0, u8 length @1, the value behind the pointer. Kinds
    // 1 to 5 hold host-order numbers; the JSON gives the value's wire bytes.
    static Json option(const uint8_t *at, const uint8_t *value) {
        const uint8_t kind = at[0];
        const uint8_t length = at[1];
        std::string hex;
        if (value != nullptr) {
            uint8_t wire[6];
            size_t size = 0;
            auto put = [&](uint32_t v, unsigned bytes) {
                for (unsigned b = bytes; b-- > 0;) wire[size++] = static_cast<uint8_t>(v >> (8 * b));
            };
            switch (kind) {
            case 0: break;
            case 1:
            case 2: put(load<uint32_t>(value), 4); break;
            case 3:
            case 4: put(load<uint16_t>(value), 2); break;
            case 5:
                put(load<uint32_t>(value), 4);
                put(load<uint16_t>(value + 4), 2);
                break;
            default: return Json{{"kind", kind}, {"value", hexString(value, length)}};
            }
            hex = hexString(wire, size);
        }
        return Json{{"kind", kind}, {"value", hex}};
    }

    // An attribute or typed value: one element, or an array of elements.
    Json typedValue(const TrovLayoutInfo &element, const uint8_t *value, int depth) const {
        if (value == nullptr) return nullptr;
        if (element.arrayCountBytes == 0) return record(element, value, depth + 1);
        // AttributeArrayHeader: the count (only its first byte for a one-byte
        // prefix), the elements one record apart.
        const uint32_t n = element.arrayCountBytes == 1 ? value[0] : load<uint16_t>(value);
        const uint8_t *elements = loadPointer(value + offsetof(AttributeArrayHeader, elements));
        Json a = Json::array();
        if (elements == nullptr) return a;
        for (uint32_t i = 0; i < n; ++i)
            a.push_back(record(element, elements + size_t{i} * element.recordBytes, depth + 1));
        return a;
    }

    Json attributeList(const uint8_t *at, int depth) const {
        const auto list = load<AttributeList>(at);
        Json a = Json::array();
        if (list.entries == nullptr) return a;
        for (uint16_t i = 0; i < list.count; ++i)
            a.push_back(entry(reinterpret_cast<const uint8_t *>(list.entries) + i * sizeof(AttributeEntry), version_,
                              depth));
        return a;
    }

    // An AttributeEntry whose value the rows of `version` code.
    Json entry(const uint8_t *raw, uint8_t version, int depth) const {
        const auto entry = load<AttributeEntry>(raw);
        const auto *value = static_cast<const uint8_t *>(entry.value);
        Json j = Json::object();
        j["id"] = entry.id;
        TrovLayoutInfo element{};
        // A value without a codec is kept as its wire bytes, length kept.
        if (entry.length != 0 || TROV_DescribeAttribute(entry.id, version, &element) != TROV_RESULT_OK)
            j["value"] = Json{{"hex", hexString(value, value != nullptr ? entry.length : 0)}};
        else
            j["value"] = typedValue(element, value, depth);
        return j;
    }

    Json event(uint16_t code, const void *body, int depth) const {
        TrovLayoutInfo layout{};
        if (TROV_DescribeEvent(code, version_, &layout) != TROV_RESULT_OK) return nullptr;
        return record(layout, static_cast<const uint8_t *>(body), depth + 1);
    }

    Json eventList(const TrovLayoutInfo &layout, const uint8_t *rec, int depth) const {
        Json j = Json::object();
        Json events = Json::array();
        if (layout.record != nullptr && std::strcmp(layout.record, "ShortEventListBody") == 0) {
            const auto body = load<ShortEventListBody>(rec);
            j["value0"] = body.value0;
            j["count"] = body.count;
            for (unsigned i = 0; body.entries != nullptr && i < body.count; ++i) {
                const EventBriefEntry &e = body.entries[i];
                events.push_back(
                    Json{{"code", e.eventCode}, {"field2", e.field2}, {"fields", event(e.eventCode, e.body, depth)}});
            }
        } else {
            const auto body = load<EventListBody>(rec);
            j["value0"] = body.value0;
            j["value1"] = body.value1;
            j["value2"] = body.value2;
            j["value3"] = body.value3;
            j["value4"] = body.value4;
            j["count"] = body.count;
            for (unsigned i = 0; body.entries != nullptr && i < body.count; ++i) {
                const EventEntry &e = body.entries[i];
                events.push_back(Json{{"code", e.eventCode},
                                      {"field1", e.field1},
                                      {"field2", e.field2},
                                      {"field3", e.field3},
                                      {"field4", e.field4},
                                      {"fields", event(e.eventCode, e.body, depth)}});
            }
        }
        j["events"] = std::move(events);
        return j;
    }

    Json methodCall(const uint8_t *rec, int depth) const {
        const auto body = load<MethodBody>(rec);
        Json j = Json::object();
        j["value0"] = body.value0;
        j["method"] = body.method;
        j["paramsLength"] = body.paramsLength;
        TrovLayoutInfo params{};
        const auto *p = static_cast<const uint8_t *>(body.params);
        if (TROV_DescribeMethod(body.method, version_, request_ ? 1 : 0, &params) != TROV_RESULT_OK)
            j["params"] = nullptr;
        else if (params.form == TROV_LAYOUT_RAW)
            j["params"] = hexString(p, p != nullptr ? body.paramsLength : 0);
        else if (params.form == TROV_LAYOUT_NONE || p == nullptr)
            j["params"] = Json::object();
        else
            j["params"] = record(params, p, depth + 1);
        return j;
    }

    static Json chars(const uint8_t *data, uint32_t n) {
        for (uint32_t i = 0; i < n; ++i)
            if (data[i] < 0x20 || data[i] > 0x7e) return Json{{"hex", hexString(data, n)}};
        return n == 0 ? std::string() : std::string(reinterpret_cast<const char *>(data), n);
    }

    uint8_t version_;
    bool request_;
};

} // namespace

std::string hexString(const uint8_t *data, size_t size) {
    static const char digits[] = "0123456789abcdef";
    std::string s;
    s.reserve(2 * size);
    for (size_t i = 0; i < size; ++i) {
        s += digits[data[i] >> 4];
        s += digits[data[i] & 15];
    }
    return s;
}

Json recordToJson(const TrovLayoutInfo &layout, const void *record, uint8_t version, bool request) {
    const Json j = Printer(version, request).record(layout, static_cast<const uint8_t *>(record), 0);
    return j.is_null() ? Json::object() : j;
}

} // namespace trov
