// Request bodies read back into records: the walk of the request layout over
// the wire, the mirror of what the encoder writes.
//
// Every read is checked against the bytes left before it happens, and every
// count against the bytes its elements need before anything is allocated, so
// a hostile body costs at most memory in proportion to its own size. Records
// take the form the builder gives them (RecordBuild.cpp): scalars at their
// offsets in host order, counted fields as head plus elements, values as an
// element record (scalar form) or an AttributeArrayHeader (array form),
// structured records with their nested records in place and their arrays,
// options and attribute entries behind pointers.
#include "RequestReader.h"

#include <cstring>

#include "BuildStore.h"

namespace trov {

namespace {

class Reader {
public:
    Reader(uint8_t version, const uint8_t *body, size_t size, RecordArena &arena)
        : version_(version), body_(body), size_(size), arena_(arena) {}

    TrovResult top(const TrovLayoutInfo &layout, const void *&record) {
        uint8_t *out = nullptr;
        TrovResult result = TROV_RESULT_OK;
        if (layout.form == TROV_LAYOUT_METHOD_CALL) {
            result = methodCall(out);
        } else if (layout.form == TROV_LAYOUT_FIELDS || layout.form == TROV_LAYOUT_NONE) {
            out = allocate(layout.recordBytes);
            result = fields(layout, out);
        } else {
            return stop(TROV_RESULT_BAD_VALUE);
        }
        if (result != TROV_RESULT_OK) return result;
        // Bytes the layout does not account for cannot be kept in the record.
        if (position_ != size_) return stop(TROV_RESULT_SHORT_INPUT);
        record = out;
        return TROV_RESULT_OK;
    }

    size_t stoppedAt() const { return stoppedAt_; }

private:
    uint8_t *allocate(size_t bytes) { return static_cast<uint8_t *>(arena_.allocate(bytes == 0 ? 1 : bytes)); }

    TrovResult stop(TrovResult result) {
        stoppedAt_ = position_;
        return result;
    }

    bool has(size_t bytes) const { return size_ - position_ >= bytes; }

    uint64_t take(unsigned bytes) {
        uint64_t value = 0;
        for (unsigned i = 0; i < bytes; ++i) value = value << 8 | body_[position_ + i];
        position_ += bytes;
        return value;
    }

    // Reads a big-endian unsigned of `bytes` bytes; false when the body is short.
    bool read(unsigned bytes, uint64_t &value) {
        if (!has(bytes)) return false;
        value = take(bytes);
        return true;
    }

    TrovResult fields(const TrovLayoutInfo &layout, uint8_t *record) {
        // The counts read so far by count fields, by field index.
        uint64_t counts[64] = {};
        for (uint16_t i = 0; i < layout.fieldCount; ++i) {
            const TrovFieldInfo &field = layout.fields[i];
            const size_t start = position_;
            const TrovResult result = fieldOf(layout, field, record, counts, i);
            if (result != TROV_RESULT_OK) {
                if (stoppedAt_ == kUnset) stoppedAt_ = start;
                return result;
            }
        }
        return TROV_RESULT_OK;
    }

    TrovResult fieldOf(const TrovLayoutInfo &layout, const TrovFieldInfo &field, uint8_t *record, uint64_t *counts,
                       uint16_t index) {
        uint8_t *at = record + field.offset;
        uint64_t value = 0;
        switch (field.kindId) {
        case TROV_KIND_U8:
        case TROV_KIND_U16:
        case TROV_KIND_U32: {
            const unsigned width = scalarBytes(field.kindId);
            if (!read(width, value)) return TROV_RESULT_SHORT_INPUT;
            storeUnsigned(at, value, width);
            return TROV_RESULT_OK;
        }
        case TROV_KIND_COUNT:
            if (!read(field.countBytes, value)) return TROV_RESULT_SHORT_INPUT;
            storeUnsigned(at, value, field.countBytes);
            // A structure's count may count by the field's first bytes only.
            if (field.countRecordBytes == 1) value = at[0];
            if (field.countRecordBytes == 2) value = loadU16(at);
            if (index < 64) counts[index] = value;
            return TROV_RESULT_OK;
        case TROV_KIND_RESERVED:
        case TROV_KIND_BUFFER:
            return TROV_RESULT_OK;
        case TROV_KIND_BYTES:
        case TROV_KIND_BYTES12: {
            const size_t width = field.kindId == TROV_KIND_BYTES12 ? 12 : field.width;
            if (!has(width)) return TROV_RESULT_SHORT_INPUT;
            std::memcpy(at, body_ + position_, width);
            position_ += width;
            return TROV_RESULT_OK;
        }
        case TROV_KIND_REST: {
            const size_t count = size_ - position_;
            if (count > 0xFFFF) return TROV_RESULT_SHORT_INPUT;
            uint8_t *data = count ? allocate(count) : nullptr;
            if (count) std::memcpy(data, body_ + position_, count);
            position_ += count;
            head(field, record, count, data);
            return TROV_RESULT_OK;
        }
        case TROV_KIND_OCTETS:
        case TROV_KIND_CHARS:
        case TROV_KIND_U16S:
        case TROV_KIND_U32S:
        case TROV_KIND_WIDE_U32S:
        case TROV_KIND_U8U32_ITEMS:
        case TROV_KIND_U32U8_ITEMS:
        case TROV_KIND_BYTE_PAIRS:
            return counted(layout, field, record, counts);
        case TROV_KIND_ATTRIBUTE:
        case TROV_KIND_VALUE:
        case TROV_KIND_RESERVED_VALUE: {
            const bool attribute = field.kindId == TROV_KIND_ATTRIBUTE;
            if (!read(2, value)) return TROV_RESULT_SHORT_INPUT;
            const void *data = nullptr;
            const TrovResult result = valueOf(attribute, static_cast<uint16_t>(value), version_, data);
            if (result != TROV_RESULT_OK) return result;
            storeUnsigned(at, value, 2);
            if (field.dataOffset != TROV_NO_DATA) storePointer(record + field.dataOffset, data);
            return TROV_RESULT_OK;
        }
        case TROV_KIND_OPTION:
            return option(at);
        case TROV_KIND_ATTRIBUTES:
        case TROV_KIND_EVENT_ATTRIBUTES:
            return attributeList(field, record);
        case TROV_KIND_RECORD: {
            TrovLayoutInfo nested{};
            if (TROV_DescribeNested(&field, &nested) != TROV_RESULT_OK) return stop(TROV_RESULT_BAD_VALUE);
            return nestedFields(nested, at);
        }
        case TROV_KIND_RECORDS:
            return records(layout, field, record, counts);
        case TROV_KIND_OPTIONS: {
            // A TrovOptionList: the u8 count, then the options, 16 bytes each;
            // every option takes at least its kind and length bytes.
            if (!read(1, value)) return TROV_RESULT_SHORT_INPUT;
            if ((size_ - position_) / 2 < value) return TROV_RESULT_SHORT_INPUT;
            uint8_t *options = value ? allocate(value * 16) : nullptr;
            for (uint64_t i = 0; i < value; ++i)
                if (const TrovResult result = option(options + 16 * i); result != TROV_RESULT_OK) return result;
            at[0] = static_cast<uint8_t>(value);
            storePointer(record + field.dataOffset, options);
            return TROV_RESULT_OK;
        }
        case TROV_KIND_ENTRY:
            // Entries of a structure are coded by the attribute rows of version 0.
            return entry(at, 0);
        default:
            return stop(TROV_RESULT_BAD_VALUE);
        }
    }

    static uint16_t loadU16(const uint8_t *at) {
        uint16_t v;
        std::memcpy(&v, at, 2);
        return v;
    }

    // One option: u8 kind, u8 length and the value, held as the
    // option-parameter decoder leaves it; the pointer at +8.
    TrovResult option(uint8_t *at) {
        uint64_t kind = 0, length = 0;
        if (!read(1, kind) || !read(1, length)) return TROV_RESULT_SHORT_INPUT;
        PacketCursor cursor{const_cast<uint8_t *>(body_ + position_), static_cast<uint32_t>(size_ - position_)};
        const uint32_t room = trovDecCalc_OptionParam(static_cast<uint8_t>(kind), static_cast<uint8_t>(length));
        uint8_t *data = allocate(room < 8 ? 8 : room);
        if (!trovDecode_OptionParam(static_cast<uint8_t>(kind), static_cast<uint8_t>(length), data, &cursor))
            return TROV_RESULT_SHORT_INPUT;
        position_ = static_cast<size_t>(cursor.position - body_);
        at[0] = static_cast<uint8_t>(kind);
        at[1] = static_cast<uint8_t>(length);
        storePointer(at + 8, kind == 0 || room == 0 ? nullptr : data);
        return TROV_RESULT_OK;
    }

    // A nested record's fields, its counts its own; nesting is bounded with
    // the values'.
    TrovResult nestedFields(const TrovLayoutInfo &nested, uint8_t *at) {
        if (depth_ >= kMaxValueDepth) return stop(TROV_RESULT_SHORT_INPUT);
        ++depth_;
        const TrovResult result = fields(nested, at);
        --depth_;
        return result;
    }

    // Counted nested records, one element record apart.
    TrovResult records(const TrovLayoutInfo &layout, const TrovFieldInfo &field, uint8_t *record,
                       const uint64_t *counts) {
        TrovLayoutInfo element{};
        if (TROV_DescribeNested(&field, &element) != TROV_RESULT_OK) return stop(TROV_RESULT_BAD_VALUE);
        const bool counted = field.countField >= 0 && field.countField < layout.fieldCount && field.countField < 64;
        const uint64_t count = counted ? counts[field.countField] : 0;
        if ((size_ - position_) / (element.wireFixed ? element.wireFixed : 1) < count) return TROV_RESULT_SHORT_INPUT;
        uint8_t *data = count ? allocate(count * element.recordBytes) : nullptr;
        for (uint64_t i = 0; i < count; ++i)
            if (const TrovResult result = nestedFields(element, data + i * element.recordBytes);
                result != TROV_RESULT_OK)
                return result;
        // Without elements the pointer's slot is the field's offset, and the
        // arena's memory is already zero there.
        if (count) storePointer(record + field.dataOffset, data);
        return TROV_RESULT_OK;
    }

    static void head(const TrovFieldInfo &field, uint8_t *record, size_t count, const void *data) {
        if (field.countRecordBytes != 0) storeUnsigned(record + field.offset, count, field.countRecordBytes);
        if (field.dataOffset != TROV_NO_DATA) storePointer(record + field.dataOffset, data);
    }

    TrovResult counted(const TrovLayoutInfo &layout, const TrovFieldInfo &field, uint8_t *record,
                       const uint64_t *counts) {
        uint64_t count = 0;
        if (field.countField >= 0 && field.countField < layout.fieldCount && field.countField < 64) {
            count = counts[field.countField];
        } else if (!read(field.countBytes, count)) {
            return TROV_RESULT_SHORT_INPUT;
        }
        const unsigned wire = wireElementBytes(field.kindId), stride = recordElementBytes(field.kindId);
        if ((size_ - position_) / wire < count) return TROV_RESULT_SHORT_INPUT;
        // Characters keep one spare byte behind non-empty data.
        const unsigned room = field.kindId == TROV_KIND_WIDE_U32S ? 8 : stride;
        uint8_t *data = count ? allocate(count * room + 1) : nullptr;
        for (uint64_t i = 0; i < count; ++i) {
            uint8_t *element = data + i * stride;
            switch (field.kindId) {
            case TROV_KIND_U16S:
                storeUnsigned(element, take(2), 2);
                break;
            case TROV_KIND_U32S:
            case TROV_KIND_WIDE_U32S:
                storeUnsigned(element, take(4), 4);
                break;
            case TROV_KIND_U8U32_ITEMS:
                storeUnsigned(element, take(1), 1);
                storeUnsigned(element + 4, take(4), 4);
                break;
            case TROV_KIND_U32U8_ITEMS:
                storeUnsigned(element, take(4), 4);
                storeUnsigned(element + 4, take(1), 1);
                break;
            case TROV_KIND_BYTE_PAIRS:
                element[0] = static_cast<uint8_t>(take(1));
                element[1] = static_cast<uint8_t>(take(1));
                break;
            default:
                element[0] = static_cast<uint8_t>(take(1));
                break;
            }
        }
        head(field, record, count, data);
        return TROV_RESULT_OK;
    }

    // One record of a value's element layout; a selector value's variant is
    // the one its first byte picks.
    TrovResult element(const TrovLayoutInfo &layout, uint8_t *record) {
        if (layout.form != TROV_LAYOUT_SELECTOR) return fields(layout, record);
        TrovLayoutInfo variant{};
        if (!has(1)) return stop(TROV_RESULT_SHORT_INPUT);
        if (TROV_DescribeVariant(&layout, body_[position_], &variant) != TROV_RESULT_OK)
            return stop(TROV_RESULT_BAD_VALUE);
        return fields(variant, record);
    }

    // The value of attribute (or data type) `code` at the current position,
    // in array form when its layout has a count prefix; the rows of `version`
    // code it.
    TrovResult valueOf(bool attribute, uint16_t code, uint8_t version, const void *&data) {
        TrovLayoutInfo element{};
        const TrovResult found = attribute ? TROV_DescribeAttribute(code, version, &element)
                                           : TROV_DescribeDataType(code, version, &element);
        if (found != TROV_RESULT_OK) {
            position_ -= 2; // stop at the identifier
            return stop(found);
        }
        if (element.form != TROV_LAYOUT_FIELDS && element.form != TROV_LAYOUT_STRUCTURE &&
            element.form != TROV_LAYOUT_SELECTOR)
            return stop(TROV_RESULT_BAD_VALUE);
        if (depth_ >= kMaxValueDepth) return stop(TROV_RESULT_SHORT_INPUT);
        ++depth_;
        TrovResult result = TROV_RESULT_OK;
        if (element.arrayCountBytes == 0) {
            uint8_t *record = allocate(element.recordBytes);
            result = this->element(element, record);
            data = record;
        } else {
            uint64_t count = 0;
            const size_t minimum = element.wireFixed ? element.wireFixed : 1;
            if (!read(element.arrayCountBytes, count) || (size_ - position_) / minimum < count) {
                result = TROV_RESULT_SHORT_INPUT;
            } else {
                uint8_t *header = allocate(16);
                uint8_t *elements = count ? allocate(count * element.recordBytes) : nullptr;
                for (uint64_t i = 0; i < count && result == TROV_RESULT_OK; ++i)
                    result = this->element(element, elements + i * element.recordBytes);
                storeUnsigned(header, count, element.arrayCountBytes);
                storePointer(header + 8, elements);
                data = header;
            }
        }
        --depth_;
        return result;
    }

    // u16 count, then per attribute u16 identifier, u16 length and the value,
    // which must fill exactly its length.
    TrovResult attributeList(const TrovFieldInfo &field, uint8_t *record) {
        uint64_t count = 0;
        if (!read(2, count)) return TROV_RESULT_SHORT_INPUT;
        // Every entry takes at least its 4-byte head.
        if ((size_ - position_) / 4 < count) return TROV_RESULT_SHORT_INPUT;
        uint8_t *entries = count ? allocate(count * sizeof(AttributeEntry)) : nullptr;
        for (uint64_t i = 0; i < count; ++i)
            if (const TrovResult result = entry(entries + i * sizeof(AttributeEntry), version_);
                result != TROV_RESULT_OK)
                return result;
        storeUnsigned(record + field.offset, count, field.countRecordBytes ? field.countRecordBytes : 2);
        storePointer(record + (field.dataOffset != TROV_NO_DATA ? field.dataOffset : field.offset + 8), entries);
        return TROV_RESULT_OK;
    }

    // An AttributeEntry: u16 identifier, u16 length, and the value, which must
    // fill exactly its length; the length kept is 0, as the encoder computes it.
    TrovResult entry(uint8_t *at, uint8_t version) {
        uint64_t id = 0, length = 0;
        if (!read(2, id) || !read(2, length)) return stop(TROV_RESULT_SHORT_INPUT);
        if (!has(length)) return stop(TROV_RESULT_SHORT_INPUT);
        const size_t end = position_ + length, savedSize = size_;
        size_ = end; // the value may not read past its announced length
        const void *data = nullptr;
        TrovResult result = valueOf(true, static_cast<uint16_t>(id), version, data);
        if (result == TROV_RESULT_OK && position_ != end) result = stop(TROV_RESULT_SHORT_INPUT);
        size_ = savedSize;
        if (result != TROV_RESULT_OK) return result;
        storeUnsigned(at + offsetof(AttributeEntry, id), id, 2);
        storePointer(at + offsetof(AttributeEntry, value), data);
        return TROV_RESULT_OK;
    }

    // Body 0x1d: u32, u16 method code, then the method's request parameters.
    TrovResult methodCall(uint8_t *&out) {
        auto *body = reinterpret_cast<MethodBody *>(allocate(sizeof(MethodBody)));
        uint64_t value0 = 0, method = 0;
        if (!read(4, value0) || !read(2, method)) return stop(TROV_RESULT_SHORT_INPUT);
        body->value0 = static_cast<uint32_t>(value0);
        body->method = static_cast<uint16_t>(method);
        TrovLayoutInfo params{};
        const TrovResult found = TROV_DescribeMethod(body->method, version_, 1, &params);
        if (found != TROV_RESULT_OK) {
            position_ -= 2;
            return stop(found);
        }
        const size_t start = position_;
        if (params.form == TROV_LAYOUT_RAW) {
            const size_t count = size_ - position_;
            if (count > 0xFFFF) return stop(TROV_RESULT_SHORT_INPUT);
            uint8_t *data = allocate(count);
            if (count) std::memcpy(data, body_ + position_, count);
            position_ = size_;
            body->params = data;
        } else if (params.form == TROV_LAYOUT_FIELDS || params.form == TROV_LAYOUT_NONE) {
            uint8_t *record = allocate(params.recordBytes);
            const TrovResult result = fields(params, record);
            if (result != TROV_RESULT_OK) return result;
            body->params = record;
        } else {
            return stop(TROV_RESULT_BAD_VALUE);
        }
        body->paramsLength = static_cast<uint16_t>(position_ - start);
        out = reinterpret_cast<uint8_t *>(body);
        return TROV_RESULT_OK;
    }

    static constexpr size_t kUnset = ~size_t{0};

    uint8_t version_;
    const uint8_t *body_;
    size_t size_;
    RecordArena &arena_;
    size_t position_ = 0;
    size_t stoppedAt_ = kUnset;
    int depth_ = 0;
};

} // namespace

TrovResult readRequestBody(const TrovLayoutInfo &layout, uint8_t version, const uint8_t *body, size_t size,
                           RecordArena &arena, const void *&record, size_t &stoppedAt) {
    stoppedAt = 0;
    if (body == nullptr && size != 0) return TROV_RESULT_NULL_ARGUMENT;
    Reader reader(version, body, size, arena);
    const TrovResult result = reader.top(layout, record);
    if (result != TROV_RESULT_OK) stoppedAt = reader.stoppedAt() == ~size_t{0} ? 0 : reader.stoppedAt();
    return result;
}

} // namespace trov
