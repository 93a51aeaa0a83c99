// Records built from JSON through the layout description, and packets
// encoded from them.
//
// One walk serves every layout: each TrovFieldInfo is filled from the member
// of the same name, by its kind. Scalars go to their offsets; a counted field
// gets its 16-byte head (the count at its start, as wide as the record keeps
// it, and the data pointer at dataOffset) and its elements in the arena; an
// attribute or typed value gets its identifier and a pointer to the value,
// which is one element record (scalar form) or an AttributeArrayHeader with
// its elements (array form, when the element layout has a count prefix: the
// form request bodies and attribute lists carry). Structured records nest
// records in place and count arrays of records, option lists and attribute
// entries; a selector value takes the layout its "selector" member picks.
// Counts are always recomputed from the data, so the printed ones are ignored.
#include "RecordBuild.h"

#include <cstring>

#include "BuildStore.h"
#include "TrovVersion.h"

namespace trov {

void *RecordArena::allocate(size_t bytes) {
    blocks_.push_back(std::make_unique<std::byte[]>(bytes + 16));
    auto address = reinterpret_cast<uintptr_t>(blocks_.back().get());
    return blocks_.back().get() + ((16 - address % 16) % 16);
}

namespace {

std::string hex16(unsigned value) {
    static const char digits[] = "0123456789abcdef";
    std::string text = "0x0000";
    for (int i = 0; i < 4; ++i) text[5 - i] = digits[(value >> (4 * i)) & 0xF];
    return text;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// An integer 0..max: a JSON number, or a string in decimal or "0x" hex.
bool jsonInteger(const Json &value, const std::string &path, uint64_t max, uint64_t &out, JsonError &error) {
    bool ok = false;
    if (value.is_number_unsigned()) {
        out = value.get<uint64_t>();
        ok = true;
    } else if (value.is_number_integer()) {
        const auto signedValue = value.get<int64_t>();
        ok = signedValue >= 0;
        out = static_cast<uint64_t>(signedValue);
    } else if (value.is_string()) {
        const auto &text = value.get_ref<const std::string &>();
        const bool isHex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
        const size_t start = isHex ? 2 : 0;
        const uint64_t base = isHex ? 16 : 10;
        ok = text.size() > start && text.size() - start <= (isHex ? 16u : 19u);
        out = 0;
        for (size_t i = start; ok && i < text.size(); ++i) {
            const int digit = hexDigit(text[i]);
            ok = digit >= 0 && static_cast<uint64_t>(digit) < base;
            out = out * base + static_cast<uint64_t>(digit);
        }
    }
    if (ok && out <= max) return true;
    error = {path, "expected an integer 0.." + std::to_string(max)};
    return false;
}

class Builder {
public:
    Builder(uint8_t version, bool request, RecordArena &arena, JsonError &error)
        : version_(version), request_(request), arena_(arena), error_(error) {}

    // The record of `layout` at `path`; nullptr after an error.
    uint8_t *record(const Json &fields, const TrovLayoutInfo &layout, const std::string &path) {
        switch (layout.form) {
        case TROV_LAYOUT_FIELDS:
        case TROV_LAYOUT_NONE:
        case TROV_LAYOUT_STRUCTURE:
        case TROV_LAYOUT_SELECTOR: {
            auto *record = allocate(layout.recordBytes);
            if (!fillRecord(fields, layout, record, path)) return nullptr;
            return record;
        }
        case TROV_LAYOUT_METHOD_CALL:
            return methodCall(fields, path);
        case TROV_LAYOUT_EVENT_LIST:
            fail(path, "an event list is decoded only; no request carries one");
            return nullptr;
        default:
            fail(path, "the layout description does not spell this record (" +
                           std::string(layout.record ? layout.record : "a structure") + "); it cannot be encoded");
            return nullptr;
        }
    }

private:
    uint8_t *allocate(size_t bytes) { return static_cast<uint8_t *>(arena_.allocate(bytes == 0 ? 1 : bytes)); }

    bool fail(const std::string &path, std::string message) {
        error_ = {path, std::move(message)};
        return false;
    }

    // Fails unless `count` elements fit a count of at most `limit`.
    bool fits(size_t count, size_t limit, const std::string &path) {
        if (count <= limit) return true;
        return fail(path, "expected at most " + std::to_string(limit) + " elements, got " + std::to_string(count));
    }

    bool integer(const Json &value, const std::string &path, uint64_t max, uint64_t &out) {
        return jsonInteger(value, path, max, out, error_);
    }

    // A hex string's bytes; at most `max`.
    bool hexBytes(const Json &value, const std::string &path, size_t max, std::vector<uint8_t> &out) {
        if (!value.is_string()) return fail(path, "expected a hex string");
        const auto &text = value.get_ref<const std::string &>();
        if (text.size() % 2 != 0) return fail(path, "expected a hex string of even length");
        if (text.size() / 2 > max)
            return fail(path, "expected at most " + std::to_string(max) + " bytes, got " +
                                  std::to_string(text.size() / 2));
        out.resize(text.size() / 2);
        for (size_t i = 0; i < out.size(); ++i) {
            const int high = hexDigit(text[2 * i]), low = hexDigit(text[2 * i + 1]);
            if (high < 0 || low < 0) return fail(path, "expected a hex string, found '" + text.substr(2 * i, 2) + "'");
            out[i] = static_cast<uint8_t>(high << 4 | low);
        }
        return true;
    }

    // Characters: a plain string, or {"hex": "..."} for bytes that are not
    // all printable.
    bool chars(const Json &value, const std::string &path, size_t max, std::vector<uint8_t> &out) {
        if (value.is_object()) {
            const auto hex = value.find("hex");
            if (hex == value.end() || value.size() != 1) return fail(path, "expected a string or {\"hex\": \"...\"}");
            return hexBytes(*hex, path + "/hex", max, out);
        }
        if (!value.is_string()) return fail(path, "expected a string or {\"hex\": \"...\"}");
        const auto &text = value.get_ref<const std::string &>();
        if (text.size() > max)
            return fail(path, "expected at most " + std::to_string(max) + " characters, got " +
                                  std::to_string(text.size()));
        out.assign(text.begin(), text.end());
        return true;
    }

    // The largest count `field` may carry: its own prefix's, or its count field's.
    uint32_t limitOf(const TrovLayoutInfo &layout, const TrovFieldInfo &field) {
        if (field.countField >= 0 && field.countField < layout.fieldCount) {
            const TrovFieldInfo &count = layout.fields[field.countField];
            return countLimit(count.countRecordBytes != 0 ? count.countRecordBytes : count.countBytes);
        }
        if (field.countBytes != 0) return countLimit(field.countBytes);
        return 0xFFFF;
    }

    // A record of any described form; a selector value takes the variant its
    // "selector" member picks.
    bool fillRecord(const Json &fields, const TrovLayoutInfo &layout, uint8_t *record, const std::string &path) {
        if (layout.form != TROV_LAYOUT_SELECTOR) return fill(fields, layout, record, path);
        if (!fields.is_object()) return fail(path, "expected an object");
        const auto given = fields.find("selector");
        if (given == fields.end()) return fail(path + "/selector", "missing");
        uint64_t selector = 0;
        if (!integer(*given, path + "/selector", 0xFF, selector)) return false;
        TrovLayoutInfo variant{};
        if (TROV_DescribeVariant(&layout, static_cast<uint8_t>(selector), &variant) != TROV_RESULT_OK)
            return fail(path + "/selector", "no variant has selector " + std::to_string(selector));
        return fill(fields, variant, record, path);
    }

    bool fill(const Json &fields, const TrovLayoutInfo &layout, uint8_t *record, const std::string &path) {
        if (!fields.is_object()) return fail(path, "expected an object");
        for (auto member = fields.begin(); member != fields.end(); ++member) {
            bool known = false;
            for (uint16_t i = 0; i < layout.fieldCount && !known; ++i) known = member.key() == layout.fields[i].name;
            if (!known) return fail(path + "/" + member.key(), "no such field in " + layoutName(layout));
        }
        for (uint16_t i = 0; i < layout.fieldCount; ++i) {
            const TrovFieldInfo &field = layout.fields[i];
            const std::string at = path + "/" + field.name;
            const auto member = fields.find(field.name);
            // Counts are recomputed from their data, reserved bytes stay 0, and
            // the managed buffer only ever holds decoded data.
            if (field.kindId == TROV_KIND_COUNT || field.kindId == TROV_KIND_BUFFER ||
                field.kindId == TROV_KIND_RESERVED)
                continue;
            if (member == fields.end()) return fail(at, "missing");
            if (!fillField(*member, layout, field, record, at)) return false;
        }
        return true;
    }

    // "U32Body (value0)", or the field names alone for records without a
    // public type.
    static std::string layoutName(const TrovLayoutInfo &layout) {
        std::string names;
        for (uint16_t i = 0; i < layout.fieldCount; ++i) {
            const uint8_t kind = layout.fields[i].kindId;
            if (kind == TROV_KIND_BUFFER || kind == TROV_KIND_COUNT || kind == TROV_KIND_RESERVED) continue;
            names += (names.empty() ? "" : ", ") + std::string(layout.fields[i].name);
        }
        if (names.empty()) names = "no fields";
        return layout.record ? std::string(layout.record) + " (" + names + ")" : "this record (" + names + ")";
    }

    bool fillField(const Json &value, const TrovLayoutInfo &layout, const TrovFieldInfo &field, uint8_t *record,
                   const std::string &path) {
        uint8_t *at = record + field.offset;
        uint64_t number = 0;
        switch (field.kindId) {
        case TROV_KIND_U8:
        case TROV_KIND_U16:
        case TROV_KIND_U32: {
            const unsigned width = scalarBytes(field.kindId);
            if (!integer(value, path, (uint64_t{1} << (8 * width)) - 1, number)) return false;
            storeUnsigned(at, number, width);
            return true;
        }
        case TROV_KIND_BYTES:
        case TROV_KIND_BYTES12: {
            std::vector<uint8_t> bytes;
            const size_t width = field.kindId == TROV_KIND_BYTES12 ? 12 : field.width;
            if (!hexBytes(value, path, width, bytes)) return false;
            if (!bytes.empty()) std::memcpy(at, bytes.data(), bytes.size());
            return true;
        }
        case TROV_KIND_OCTETS:
        case TROV_KIND_CHARS:
        case TROV_KIND_REST: {
            std::vector<uint8_t> bytes;
            const size_t limit = limitOf(layout, field);
            if (field.kindId == TROV_KIND_CHARS ? !chars(value, path, limit, bytes)
                                                : !hexBytes(value, path, limit, bytes))
                return false;
            // Characters keep one spare byte behind non-empty data.
            uint8_t *data = bytes.empty() ? nullptr : allocate(bytes.size() + 1);
            if (data) std::memcpy(data, bytes.data(), bytes.size());
            counted(layout, field, record, bytes.size(), data);
            return true;
        }
        case TROV_KIND_U16S:
        case TROV_KIND_U32S:
        case TROV_KIND_WIDE_U32S:
        case TROV_KIND_U8U32_ITEMS:
        case TROV_KIND_U32U8_ITEMS:
        case TROV_KIND_BYTE_PAIRS:
            return numbers(value, layout, field, record, path);
        case TROV_KIND_ATTRIBUTE:
        case TROV_KIND_VALUE:
        case TROV_KIND_RESERVED_VALUE:
            return identified(value, field, record, path);
        case TROV_KIND_OPTION:
            return option(value, at, path);
        case TROV_KIND_ATTRIBUTES:
        case TROV_KIND_EVENT_ATTRIBUTES:
            return attributeList(value, field, record, path);
        case TROV_KIND_RECORD: {
            TrovLayoutInfo nested{};
            if (TROV_DescribeNested(&field, &nested) != TROV_RESULT_OK) return fail(path, "no nested layout");
            return fill(value, nested, at, path);
        }
        case TROV_KIND_RECORDS:
            return records(value, layout, field, record, path);
        case TROV_KIND_OPTIONS:
            return optionList(value, field, record, path);
        case TROV_KIND_ENTRY: {
            // Entries of a structure are coded by the attribute rows of version 0.
            TrovFieldInfo entryField = field;
            entryField.kindId = TROV_KIND_ATTRIBUTE;
            return identified(value, entryField, record, path, 0);
        }
        default:
            return fail(path, std::string("fields of kind ") + field.kind + " cannot be encoded");
        }
    }

    // The head of a counted field (and its count field, if it has one).
    static void counted(const TrovLayoutInfo &layout, const TrovFieldInfo &field, uint8_t *record, size_t count,
                        const void *data) {
        if (field.countRecordBytes != 0) storeUnsigned(record + field.offset, count, field.countRecordBytes);
        if (field.countField >= 0 && field.countField < layout.fieldCount) {
            const TrovFieldInfo &countField = layout.fields[field.countField];
            storeUnsigned(record + countField.offset, count, countField.countBytes);
        }
        if (field.dataOffset != TROV_NO_DATA) storePointer(record + field.dataOffset, data);
    }

    bool numbers(const Json &value, const TrovLayoutInfo &layout, const TrovFieldInfo &field, uint8_t *record,
                 const std::string &path) {
        if (!value.is_array()) return fail(path, "expected an array");
        if (!fits(value.size(), limitOf(layout, field), path)) return false;
        const bool pairs = field.kindId == TROV_KIND_U8U32_ITEMS || field.kindId == TROV_KIND_U32U8_ITEMS ||
                           field.kindId == TROV_KIND_BYTE_PAIRS;
        const unsigned stride = recordElementBytes(field.kindId);
        const unsigned room = field.kindId == TROV_KIND_WIDE_U32S ? 8 : stride;
        uint8_t *data = value.empty() ? nullptr : allocate(value.size() * room);
        for (size_t i = 0; i < value.size(); ++i) {
            const std::string at = path + "/" + std::to_string(i);
            uint8_t *element = data + i * stride;
            uint64_t first = 0, second = 0;
            if (!pairs) {
                const unsigned width = field.kindId == TROV_KIND_U16S ? 2 : 4;
                if (!integer(value[i], at, (uint64_t{1} << (8 * width)) - 1, first)) return false;
                storeUnsigned(element, first, width);
                continue;
            }
            if (!value[i].is_array() || value[i].size() != 2) return fail(at, "expected a pair [a, b]");
            const uint64_t maxFirst = field.kindId == TROV_KIND_U32U8_ITEMS ? 0xFFFFFFFFu : 0xFFu;
            const uint64_t maxSecond = field.kindId == TROV_KIND_U8U32_ITEMS ? 0xFFFFFFFFu : 0xFFu;
            if (!integer(value[i][0], at + "/0", maxFirst, first) || !integer(value[i][1], at + "/1", maxSecond, second))
                return false;
            if (field.kindId == TROV_KIND_BYTE_PAIRS) {
                element[0] = static_cast<uint8_t>(first);
                element[1] = static_cast<uint8_t>(second);
            } else if (field.kindId == TROV_KIND_U8U32_ITEMS) {
                storeUnsigned(element, first, 1);
                storeUnsigned(element + 4, second, 4);
            } else {
                storeUnsigned(element, first, 4);
                storeUnsigned(element + 4, second, 1);
            }
        }
        counted(layout, field, record, value.size(), data);
        return true;
    }

    // Counted nested records, each filled from its JSON object, one element
    // record (the stride TROV_DescribeNested gives) apart.
    bool records(const Json &value, const TrovLayoutInfo &layout, const TrovFieldInfo &field, uint8_t *record,
                 const std::string &path) {
        if (!value.is_array()) return fail(path, "expected an array of objects");
        if (!fits(value.size(), limitOf(layout, field), path)) return false;
        TrovLayoutInfo element{};
        if (TROV_DescribeNested(&field, &element) != TROV_RESULT_OK) return fail(path, "no element layout");
        uint8_t *data = value.empty() ? nullptr : allocate(value.size() * element.recordBytes);
        for (size_t i = 0; i < value.size(); ++i)
            if (!fill(value[i], element, data + i * element.recordBytes, path + "/" + std::to_string(i)))
                return false;
        counted(layout, field, record, value.size(), data);
        return true;
    }

    // A TrovOptionList: the u8 count, then the options, 16 bytes each.
    bool optionList(const Json &value, const TrovFieldInfo &field, uint8_t *record, const std::string &path) {
        if (!value.is_array()) return fail(path, "expected an array of {\"kind\": k, \"value\": \"hex\"}");
        if (!fits(value.size(), 0xFF, path)) return false;
        uint8_t *options = value.empty() ? nullptr : allocate(value.size() * 16);
        for (size_t i = 0; i < value.size(); ++i)
            if (!option(value[i], options + 16 * i, path + "/" + std::to_string(i))) return false;
        storeUnsigned(record + field.offset, value.size(), 1);
        storePointer(record + field.dataOffset, options);
        return true;
    }

    // {"id": N, "value": V} or {"type": N, "value": V}: the identifier at the
    // field's offset and the value's pointer at its dataOffset; values are
    // those of the rows of `version`.
    bool identified(const Json &value, const TrovFieldInfo &field, uint8_t *record, const std::string &path) {
        return identified(value, field, record, path, version_);
    }
    bool identified(const Json &value, const TrovFieldInfo &field, uint8_t *record, const std::string &path,
                    uint8_t version) {
        const bool attribute = field.kindId == TROV_KIND_ATTRIBUTE;
        const char *key = attribute ? "id" : "type";
        if (!value.is_object()) return fail(path, std::string("expected {\"") + key + "\": N, \"value\": ...}");
        for (auto member = value.begin(); member != value.end(); ++member)
            if (member.key() != key && member.key() != "value") return fail(path + "/" + member.key(), "no such member");
        const auto id = value.find(key);
        const auto inner = value.find("value");
        if (id == value.end()) return fail(path + "/" + key, "missing");
        if (inner == value.end()) return fail(path + "/value", "missing");
        uint64_t code = 0;
        if (!integer(*id, path + "/" + key, 0xFFFF, code)) return false;
        const void *data =
            valueOf(*inner, attribute, static_cast<uint16_t>(code), version, path + "/" + key, path + "/value");
        if (!data) return false;
        storeUnsigned(record + field.offset, code, 2);
        if (field.dataOffset != TROV_NO_DATA) storePointer(record + field.dataOffset, data);
        return true;
    }

    // The value of attribute (or data type) `code`, in the form its layout
    // gives it: array form when the element layout has a count prefix.
    const void *valueOf(const Json &value, bool attribute, uint16_t code, uint8_t version,
                        const std::string &codePath, const std::string &path) {
        TrovLayoutInfo element{};
        const TrovResult found = attribute ? TROV_DescribeAttribute(code, version, &element)
                                           : TROV_DescribeDataType(code, version, &element);
        const std::string what = (attribute ? "attribute " : "data type ") + hex16(code);
        if (found != TROV_RESULT_OK) {
            fail(codePath, "unknown " + what + (version == 0 ? " at version 0" : "") + " (" +
                               TROV_ResultName(found) + ")");
            return nullptr;
        }
        if (depth_ >= kMaxValueDepth) {
            fail(path, "values nest deeper than " + std::to_string(kMaxValueDepth) + " levels");
            return nullptr;
        }
        ++depth_;
        const void *result = nullptr;
        if (element.arrayCountBytes == 0) {
            result = record(value, element, path);
        } else if (!value.is_array()) {
            fail(path, "expected an array of " + what + " elements");
        } else if (fits(value.size(), countLimit(element.arrayCountBytes), path)) {
            // AttributeArrayHeader: the count (as wide as the wire prefix) at 0,
            // the element records one after another from the pointer at 8.
            uint8_t *header = allocate(16);
            uint8_t *elements = value.empty() ? nullptr : allocate(value.size() * element.recordBytes);
            bool ok = true;
            for (size_t i = 0; ok && i < value.size(); ++i)
                ok = fillRecord(value[i], element, elements + i * element.recordBytes,
                                path + "/" + std::to_string(i));
            if (ok) {
                storeUnsigned(header, value.size(), element.arrayCountBytes);
                storePointer(header + 8, elements);
                result = header;
            }
        }
        --depth_;
        return result;
    }

    // An AttributeList: the count, then per entry the identifier, a length of
    // 0 (the encoder computes it) and the value in array form.
    bool attributeList(const Json &value, const TrovFieldInfo &field, uint8_t *record, const std::string &path) {
        if (!value.is_array()) return fail(path, "expected an array of {\"id\": N, \"value\": ...}");
        if (!fits(value.size(), 0xFFFF, path)) return false;
        uint8_t *entries = value.empty() ? nullptr : allocate(value.size() * sizeof(AttributeEntry));
        TrovFieldInfo entryField{};
        entryField.kindId = TROV_KIND_ATTRIBUTE;
        entryField.offset = offsetof(AttributeEntry, id);
        entryField.dataOffset = offsetof(AttributeEntry, value);
        for (size_t i = 0; i < value.size(); ++i)
            if (!identified(value[i], entryField, entries + i * sizeof(AttributeEntry), path + "/" + std::to_string(i)))
                return false;
        storeUnsigned(record + field.offset, value.size(), field.countRecordBytes ? field.countRecordBytes : 2);
        storePointer(record + (field.dataOffset != TROV_NO_DATA ? field.dataOffset : field.offset + 8), entries);
        return true;
    }

    // {"kind": k, "value": "hex"}: kind and length bytes, the value's pointer
    // at +8. Kinds 1 to 5 carry numbers, given as their wire bytes and kept
    // in host order (u32, u16, or u32 then u16 at +4); other kinds the bytes.
    bool option(const Json &value, uint8_t *at, const std::string &path) {
        if (!value.is_object()) return fail(path, "expected {\"kind\": k, \"value\": \"hex\"}");
        for (auto member = value.begin(); member != value.end(); ++member)
            if (member.key() != "kind" && member.key() != "value") return fail(path + "/" + member.key(), "no such member");
        const auto kind = value.find("kind");
        if (kind == value.end()) return fail(path + "/kind", "missing");
        uint64_t k = 0;
        if (!integer(*kind, path + "/kind", 0xFF, k)) return false;
        std::vector<uint8_t> bytes;
        const auto inner = value.find("value");
        if (inner != value.end() && !hexBytes(*inner, path + "/value", 0xFF, bytes)) return false;
        static const uint8_t fixedSizes[] = {0, 4, 4, 2, 2, 6};
        if (k <= 5 && bytes.size() != fixedSizes[k])
            return fail(path + "/value", "expected " + std::to_string(fixedSizes[k]) + " bytes for option kind " +
                                             std::to_string(k));
        uint8_t *data = nullptr;
        if (!bytes.empty()) {
            data = allocate(bytes.size() < 8 ? 8 : bytes.size());
            auto be = [&](size_t from, size_t n) {
                uint64_t v = 0;
                for (size_t i = 0; i < n; ++i) v = v << 8 | bytes[from + i];
                return v;
            };
            if (k == 1 || k == 2) storeUnsigned(data, be(0, 4), 4);
            else if (k == 3 || k == 4) storeUnsigned(data, be(0, 2), 2);
            else if (k == 5) {
                storeUnsigned(data, be(0, 4), 4);
                storeUnsigned(data + 4, be(4, 2), 2);
            } else std::memcpy(data, bytes.data(), bytes.size());
        }
        at[0] = static_cast<uint8_t>(k);
        at[1] = static_cast<uint8_t>(bytes.size());
        storePointer(at + 8, data);
        return true;
    }

    // Body 0x1d: MethodBody's members and the parameters, whose record
    // TROV_DescribeMethod gives (raw bytes for a method without its own).
    uint8_t *methodCall(const Json &fields, const std::string &path) {
        if (!fields.is_object()) return fail(path, "expected an object"), nullptr;
        for (auto member = fields.begin(); member != fields.end(); ++member) {
            const std::string &key = member.key();
            if (key != "value0" && key != "method" && key != "params" && key != "paramsLength")
                return fail(path + "/" + key, "no such field in MethodBody"), nullptr;
        }
        for (const char *key : {"value0", "method", "params"})
            if (!fields.contains(key)) return fail(path + "/" + key, "missing"), nullptr;
        uint64_t value0 = 0, method = 0;
        if (!integer(fields["value0"], path + "/value0", 0xFFFFFFFFu, value0) ||
            !integer(fields["method"], path + "/method", 0xFFFF, method))
            return nullptr;
        TrovLayoutInfo params{};
        const TrovResult found = TROV_DescribeMethod(static_cast<uint16_t>(method), version_, request_ ? 1 : 0, &params);
        if (found != TROV_RESULT_OK)
            return fail(path + "/method", "unknown method " + hex16(static_cast<unsigned>(method)) + " (" +
                                              TROV_ResultName(found) + ")"),
                   nullptr;
        const Json &given = fields["params"];
        auto *body = reinterpret_cast<MethodBody *>(allocate(sizeof(MethodBody)));
        body->value0 = static_cast<uint32_t>(value0);
        body->method = static_cast<uint16_t>(method);
        if (params.form == TROV_LAYOUT_RAW) {
            std::vector<uint8_t> bytes;
            if (!hexBytes(given, path + "/params", 0xFFFF, bytes)) return nullptr;
            uint8_t *data = allocate(bytes.size());
            if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
            body->params = data;
            body->paramsLength = static_cast<uint16_t>(bytes.size());
            return reinterpret_cast<uint8_t *>(body);
        }
        uint8_t *record = this->record(given, params, path + "/params");
        if (!record) return nullptr;
        body->params = record;
        return reinterpret_cast<uint8_t *>(body);
    }

    uint8_t version_;
    bool request_;
    RecordArena &arena_;
    JsonError &error_;
    int depth_ = 0;
};

// One header member: absent keeps `fallback`.
bool headerMember(const Json &header, const char *key, const std::string &path, uint64_t max, uint64_t fallback,
                  uint64_t &out, JsonError &error) {
    out = fallback;
    const auto member = header.find(key);
    return member == header.end() || jsonInteger(*member, path + "/" + key, max, out, error);
}

} // namespace

const void *jsonToRecord(const Json &fields, const TrovLayoutInfo &layout, uint8_t version, bool request,
                         RecordArena &arena, const std::string &path, JsonError &error) {
    Builder builder(version, request, arena, error);
    return builder.record(fields, layout, path);
}

bool jsonToHeader(const Json &header, const std::string &path, HeaderInfo &info, JsonError &error) {
    if (!header.is_object()) {
        error = {path, "expected an object"};
        return false;
    }
    static const char *const known[] = {"mark",   "version", "flags",  "code",      "value4",
                                        "value6", "value7",  "bodyLength", "extension"};
    for (auto member = header.begin(); member != header.end(); ++member) {
        bool found = false;
        for (const char *key : known) found = found || member.key() == key;
        if (!found) {
            error = {path + "/" + member.key(), "no such header field"};
            return false;
        }
    }
    if (!header.contains("code")) {
        error = {path + "/code", "missing"};
        return false;
    }
    uint64_t mark, version, flags, code, value4, value6, value7, extension;
    if (!headerMember(header, "mark", path, 0xFFFF, TROV_PROTOCOL_MARK, mark, error) ||
        !headerMember(header, "version", path, 0xFF, TROV_PROTOCOL_VERSION, version, error) ||
        !headerMember(header, "flags", path, 0xFF, 0, flags, error) ||
        !headerMember(header, "code", path, 0xFFFF, 0, code, error) ||
        !headerMember(header, "value4", path, 0xFFFF, 0, value4, error) ||
        !headerMember(header, "value6", path, 0xFFFFFFFFu, 0, value6, error) ||
        !headerMember(header, "value7", path, 0xFFFFFFFFu, 0, value7, error) ||
        !headerMember(header, "extension", path, 0xFFFF, 0, extension, error))
        return false;
    info = HeaderInfo{};
    info.mark = static_cast<uint16_t>(mark);
    info.version = static_cast<uint16_t>(version);
    info.flags = static_cast<uint16_t>(flags);
    info.code = static_cast<uint16_t>(code);
    info.value4 = static_cast<uint16_t>(value4);
    info.value6 = static_cast<uint32_t>(value6);
    info.value7 = static_cast<uint32_t>(value7);
    info.extension = static_cast<uint16_t>(extension);
    return true;
}

bool encodePacket(const Json &packet, const std::string &path, std::vector<uint8_t> &bytes, JsonError &error) {
    if (!packet.is_object()) {
        error = {path, "expected a packet object"};
        return false;
    }
    const auto header = packet.find("header");
    if (header == packet.end()) {
        error = {path + "/header", "missing"};
        return false;
    }
    HeaderInfo info{};
    if (!jsonToHeader(*header, path + "/header", info, error)) return false;

    const auto version = static_cast<uint8_t>(info.version);
    TrovLayoutInfo layout{};
    const TrovResult described = TROV_DescribeBody(info.code, version, 1, &layout);
    if (described != TROV_RESULT_OK) {
        error = {path + "/header/code", "no request layout for body code " + hex16(info.code) + " at version " +
                                            std::to_string(version) + " (" + TROV_ResultName(described) + ")"};
        return false;
    }
    const auto body = packet.find("body");
    if (body == packet.end()) {
        error = {path + "/body", "missing"};
        return false;
    }
    if (!body->is_object()) {
        error = {path + "/body", "expected an object"};
        return false;
    }
    const auto fields = body->find("fields");
    const Json empty = Json::object();
    RecordArena arena;
    const void *record = jsonToRecord(fields != body->end() ? *fields : empty, layout, version, true, arena,
                                      path + "/body/fields", error);
    if (!record) return false;

    EncodeOutput output{nullptr, 0};
    const TrovResult result = TROV_EncodeFU(&info, record, &output);
    if (result != TROV_RESULT_OK) {
        error = {path + "/body", std::string("encoding failed: ") + TROV_ResultName(result) + " (" +
                                     TROV_ResultMeaning(result) + ")"};
        return false;
    }
    bytes.assign(output.data, output.data + output.length);
    trovFree(output.data);
    return true;
}

} // namespace trov
