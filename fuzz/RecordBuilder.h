// Builds hostile but memory-valid records from fuzz input, for the encode
// fuzz targets.
//
// The input is read front to back as a stream of decisions: which code, how
// many elements, whether a pointer stays null, which attribute identifier.
// An exhausted input reads as zeros, and a zero always makes the plain
// choice (a small count, a pointer that is set, a known identifier), so every
// input ends in a small record.
//
// Records are laid out from the library's own descriptions: body field
// lists, method plans, the value types of the attribute table, structure
// descriptors and event plans. Each non-null pointer points at a separate
// heap block of exactly what its count claims, so AddressSanitizer sees an
// encoder that reads one byte too far; counts reach 0xFFFF and the values
// that put a total just around 0xFFFF. Memory and work per input are bounded:
// a count that would pass the budget becomes 0.
//
// The builder also notes what the record promises: whether an encoder must
// refuse it (a null pointer behind a count it follows, an identifier or data
// type without a codec, a selector outside its set) and whether an encoding
// that succeeds must come back byte for byte through decode and re-encode.
//
// Decisions, for writing seeds by hand (every multi-byte value big-endian):
//   hostility  the first byte: bits 0-1 how often a pointer stays null
//              (1 in 8, never, 1 in 32, 1 in 2); bit 2 junk in the unused
//              high byte of one-byte counts
//   count      one byte b: below 0xA0 b % 10; below 0xF0 interesting value
//              (b - 0xA0) % 20: 0, 1, 2, 7, 8, 0xFF, 0x100, 0x101, 0xFFF8 to
//              0xFFFF, then the four counts around the 16-bit boundary of the
//              item; else the next two bytes. A one-byte count keeps the low
//              byte.
//   pointer    one byte: null when b >= 256 - the hostility's rate
//   identifier one byte b: below 0xE0 the first identifier of
//              AttributeCodecTable[(next two bytes) % 282] (of the next row
//              for a row without identifiers); else the next two bytes as
//              they stand; nested past kMaxDepth, a plain byte's identifier
//   data type  one byte b: below 0xF0 the (b % 15)th of 0x02 to 0x09, 0x15,
//              0x14, 0x17, 0x16, 0x18, 0x19, 0x1A; else the next two bytes
//   selector   one byte b: below 0xF0 1 + b % 4; else outside 1 to 4
//   option     one byte b: below 0xC0 kind b % 6; else kind 6 + b % 250
//   method     one byte b: below 0xC0 kMethods[b % 87]; else the next two bytes
// Scalars and byte blocks take up to 16 bytes of input and repeat them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "TrovCodec.h"
#include "api/Dispatch.h"
#include "attributes/FixedValueType.h"
#include "attributes/RecordValueType.h"
#include "engine/StructureCodec.h"
#include "events/AttributeEvents.h"
#include "events/StringEvents.h"
#include "units/BodyLayout.h"
#include "units/MethodCodecs.h"

namespace trovfuzz {

// Reports a broken invariant and stops, so that libFuzzer records the input.
[[noreturn]] void fail(const char *what);
inline void check(bool ok, const char *what) {
    if (!ok) fail(what);
}

// The decision stream.
class FuzzInput {
public:
    FuzzInput(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    uint8_t u8() { return at_ < size_ ? data_[at_++] : 0; }
    uint16_t u16() {
        const uint16_t hi = u8();
        return static_cast<uint16_t>(hi << 8 | u8());
    }
    uint32_t u32() {
        const uint32_t hi = u16();
        return hi << 16 | u16();
    }
    // Fills n bytes with up to 16 bytes of input, repeated.
    void fill(uint8_t *dst, size_t n);

private:
    const uint8_t *data_;
    size_t size_;
    size_t at_ = 0;
};

// What a value of an attribute row or a data type looks like in memory.
struct ValueType {
    enum class Family : uint8_t { None, Fixed, Record, Selector, Structure };
    Family family = Family::None;
    uint8_t prefixBytes = 0;                      // the array form's count prefix; 0 scalar only
    const trov::FixedValueType *fixed = nullptr;  // Fixed
    const trov::Plan *layout = nullptr;            // Record: the element; Selector: variants 1 to 4
    const trov::StructField *structure = nullptr; // Structure
};

// The value type of the attribute codec row the library finds for an
// identifier; Family::None when it finds none.
const ValueType &attributeType(uint16_t id);
// The value type of a data-type code; Family::None for a code without a codec.
const ValueType &dataType(uint16_t code);

// Which layout a function-unit row encodes requests with and decodes replies
// with: found by matching the row's operations against those of every
// layout of the body table. Null for the method invocation (0x1d), and for
// the request of a row without an encoder.
const trov::BodyLayout *requestLayout(const trov::BodyCodecRow &row);
const trov::BodyLayout *replyLayout(const trov::BodyCodecRow &row);

// The kMethods row of a method code; null for codes without one.
const trov::MethodInfo *methodInfo(uint16_t code);
const trov::MethodPlans *methodPlans(uint16_t code);


class RecordBuilder {
public:
    // Reads the hostility byte.
    RecordBuilder(const uint8_t *data, size_t size);

    FuzzInput &input() { return in_; }

    // ---- what the record promises ----
    // An encoder must refuse the record.
    bool mustFail() const { return mustFail_ || nullData_; }
    // A successful encoding must decode and encode again to the same bytes.
    bool faithful() const { return faithful_ && deepest_ <= kFaithfulDepth; }
    // Nested past the library's bounds: a structure that deep encodes as
    // nothing, so a null pointer inside it is never looked at and the record
    // need not be refused.
    bool deep() const { return deepest_ > kFaithfulDepth; }
    // For the callers' own decisions (a zero version, a schema that does not
    // match the list, ...).
    void refuse() { mustFail_ = true; }
    void lossy() { faithful_ = false; }

    // ---- memory ----
    // A zeroed block of exactly n bytes, owned by the builder.
    uint8_t *block(size_t n);
    // Raw data: a block of n bytes filled from the input, or null when the
    // input says so. `followed`: the encoder copies the bytes (their count is
    // not 0), so that a null pointer must be refused. Sizes do not depend on
    // such bytes: the size passes flag them rather than fail.
    uint8_t *bytes(size_t n, bool followed);
    // Elements that a size pass walks, zeroed for the caller to build, or
    // null: a null pointer behind a count fails the size pass.
    uint8_t *zeroed(size_t n, bool followed);
    // Whether the input leaves this pointer null.
    bool nullPointer();

    // ---- decisions ----
    // A count for a wire prefix of 1 or 2 bytes, with wireEach bytes per
    // element on the wire and recordEach in memory; elements that are built
    // one by one (built) also spend the element budget. 0 when the budget
    // cannot hold it.
    uint16_t count(uint8_t prefixBytes, uint32_t wireEach, uint32_t recordEach, bool built = false);
    // The high byte of a u16 slot that holds a one-byte count.
    uint8_t unusedHighByte();
    uint16_t attributeId();
    uint16_t dataTypeCode();
    uint16_t methodCode();

    // ---- values (the form nested values travel in: array form) ----
    void *attributeValue(uint16_t id);
    void *dataTypeValue(uint16_t code);

    // ---- records ----
    void *bodyRecord(const trov::BodyLayout &layout);
    MethodBody *methodBody();
    void *event(const trov::Plan &plan) { return planRecord(plan, plan.record); }
    void *structureEvent(); // 0xC4, 0xC5

private:
    // Where an attribute entry is encoded: a list refuses what it cannot
    // code; an event list writes an identifier without a codec raw; a
    // structure drops an attribute its codec refuses.
    enum class EntryContext : uint8_t { List, Event, Structure };

    static constexpr size_t kMaxBytes = size_t{8} << 20;
    static constexpr uint32_t kMaxElements = 1u << 14;
    // Values nest at most this deep; past it identifiers name a plain byte.
    static constexpr int kMaxDepth = 40;
    // Deeper than this the library's nesting bounds may refuse a value, and
    // the structure codec then drops it, so no round trip is promised. The
    // library's nesting flag grows by up to two per level (a value in the
    // attribute list of a record value), and structures stop at 16.
    static constexpr int kFaithfulDepth = 7;

    void *value(const ValueType &type);
    void *fixedValue(const trov::FixedValueType &type);
    void *recordValue(const ValueType &type);
    void fillFields(const trov::Plan &plan, uint8_t *record);
    // An AttributeEntry at `entry`: identifier, length, value.
    void attributeEntry(uint8_t *entry, EntryContext context);
    // The record of descriptor d at `record` (structRecordSize(d) zeroed
    // bytes), laid out as the structure codec's walk places its fields.
    void structure(const trov::StructField *d, uint8_t *record);
    // An option parameter: its kind, its length and its value pointer.
    void option(uint8_t *kind, uint8_t *length, uint8_t *valueSlot);
    void methodParams(const trov::Plan &plan, MethodBody &body);
    uint8_t *planRecord(const trov::Plan &plan, size_t recordBytes);
    // One level of nesting per nested record or value.
    void enter();
    void leave() { --depth_; }

    FuzzInput in_;
    uint8_t nullRate_ = 0;
    bool junkHighBytes_ = false;
    // Two kinds of refusal, which differ only inside a structure: a null
    // pointer a size pass must follow, or an identifier without a codec,
    // makes the codec fail, and a structure drops such an attribute; null
    // bytes that only the write pass would copy are flagged (nullData) and
    // refused wherever they sit, unless the attribute around them is dropped.
    bool mustFail_ = false;
    bool nullData_ = false;
    bool faithful_ = true;
    int depth_ = 0;
    int deepest_ = 0;
    size_t bytesLeft_ = kMaxBytes;
    uint32_t elementsLeft_ = kMaxElements;
    std::vector<std::unique_ptr<uint8_t[]>> blocks_;
    uint8_t *empty_ = nullptr;
};

// Stores a value of `width` bytes (1, 2, 4) at p in host order.
void storeWidth(uint8_t *p, uint32_t width, uint32_t value);

} // namespace trovfuzz
