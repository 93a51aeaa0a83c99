// Builds hostile but memory-valid records from fuzz input, for the encode
// fuzz targets.
//
// The input is read front to back as a stream of decisions: which code, how
// many elements, whether a pointer stays null, which attribute identifier.
// An exhausted input reads as zeros, and a zero always makes the plain
// choice (a small count, a pointer that is set, a known identifier), so every
// input ends in a small record.
//
// Records are laid out by the walk over described records (RecordWalk.h),
// the one the trov tool builds its records with; the builder is its visitor
// and answers each question from the input. Each non-null pointer points at
// a separate heap block of exactly what its count claims, so
// AddressSanitizer sees an encoder that reads one byte too far; counts reach
// 0xFFFF and the values that put a total just around 0xFFFF. Memory and work
// per input are bounded: a count that would pass the budget becomes 0.
//
// The builder also notes what the record promises: whether an encoder must
// refuse it (a null pointer behind a count it follows, an identifier or data
// type without a codec, a selector outside its set) and whether an encoding
// that succeeds must come back byte for byte through decode and re-encode.
// Those promises rest on the library's own tables (value families, the
// nesting flags values are coded at).
//
// Decisions, for writing seeds by hand (every multi-byte value big-endian):
//   hostility  the first byte: bits 0-1 how often a pointer stays null
//              (1 in 8, never, 1 in 32, 1 in 2); bit 2 junk in the unused
//              high byte of one-byte counts kept in two bytes
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
//   option     one byte b: below 0xC0 kind b % 6; else kind 6 + b % 250;
//              then the length (kinds from 6 a count, else a byte) and the
//              value's bytes as they travel
//   method     one byte b: below 0xC0 kMethods[b % 87]; else the next two bytes
//   event      one byte b: below 0xF0 FUEventCodecTable[b % 120]; else the next
//              two bytes
// Scalars and byte blocks take up to 16 bytes of input and repeat them, a
// fixed-size value's element (or all its elements) at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "RecordWalk.h"
#include "TrovCodec.h"
#include "TrovLayout.h"
#include "api/Dispatch.h"

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
    // Copies up to n bytes of input; how many there were.
    size_t take(uint8_t *dst, size_t n);

private:
    const uint8_t *data_;
    size_t size_;
    size_t at_ = 0;
};

// What a value of an attribute row or a data type is, as far as the
// builder's promises go: whether a codec reads it, and whether it is a
// fixed-size one (whose null value only the write pass would copy).
struct ValueType {
    enum class Family : uint8_t { None, Fixed, Record, Selector, Structure };
    Family family = Family::None;
    uint8_t prefixBytes = 0; // the array form's count prefix; 0 scalar only
};

// The value type of the attribute codec row the library finds for an
// identifier; Family::None when it finds none.
const ValueType &attributeType(uint16_t id);
// The value type of a data-type code; Family::None for a code without a codec.
const ValueType &dataType(uint16_t code);

class RecordBuilder final : public trov::describe::RecordBuilder {
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
    // A request body (a method invocation included) or an event record.
    void *record(const TrovLayoutInfo &layout);
    // Events 0xC4 and 0xC5 (`event` their layout): a head whose first 8 bytes
    // point at the structure.
    void *structureEvent(const TrovLayoutInfo &event);

    // ---- the walk's questions ----
    void *allocate(size_t bytes, trov::describe::Block block) override;
    bool beginRecord(const TrovLayoutInfo &layout, trov::describe::Frame frame) override;
    bool endRecord() override;
    bool beginValue(const TrovLayoutInfo &element) override;
    void endValue() override;
    bool code(const trov::describe::Code &code, uint32_t &value) override;
    bool scalar(const TrovFieldInfo &field, unsigned width, uint32_t &value) override;
    bool count(const trov::describe::Count &count, uint32_t &value) override;
    bool bytes(const TrovFieldInfo &field, trov::describe::Text text, uint8_t *out, size_t size) override;
    bool element(const trov::describe::Numbers &numbers, uint32_t index, uint32_t (&parts)[2]) override;
    bool filler(trov::describe::Filler what, uint32_t &value) override;
    trov::describe::Answer missing(const trov::describe::Miss &miss, void *&standIn) override;
    void *pointer(const TrovFieldInfo *field, void *value) override;

private:
    static constexpr size_t kMaxBytes = size_t{8} << 20;
    static constexpr uint32_t kMaxElements = 1u << 14;
    // Values nest at most this deep; past it identifiers name a plain byte.
    // It leaves the walk's own bound room for what nests below a last value
    // (a structure's records, the value of a plain byte).
    static constexpr int kMaxDepth = trov::describe::kMaxDepth - 8;
    // Deeper than this the library's nesting bounds may refuse a value, and
    // the structure codec then drops it, so no round trip is promised. The
    // library's nesting flag grows by up to two per level (a value in the
    // attribute list of a record value), and structures stop at 16.
    static constexpr int kFaithfulDepth = 7;

    // A record being built, with the nesting it is coded at: the array flag
    // of the value holding it (its attribute lists' values are nested below
    // it), or a structure's level.
    struct Open {
        trov::describe::Frame frame;
        uint32_t nesting;
    };
    // A value being built: its type and the flag the library codes it with.
    struct Value {
        ValueType type;
        uint32_t flag;
        size_t fixedBytes; // a fixed-size element's bytes, filled at once
    };
    // The value the next beginValue() opens, and what the entry or typed
    // value holding it is.
    struct Pending {
        ValueType type;
        uint16_t code = 0;
        uint8_t ownerKind = 0; // the field's kind: typed value, list or entry
        bool known = false;
        bool savedMustFail = false, savedNullData = false;
    };

    // One level of nesting per nested record or value.
    void enter();
    void leave() { --depth_; }
    bool inFixedValue() const;
    uint32_t recordNesting() const;

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

    std::vector<Open> open_;
    std::vector<Value> values_;
    std::vector<Pending> pending_; // per typed value or entry being built
    uint8_t optionKind_ = 0;
    // Counted numbers come from one fill of their block: its first bytes.
    uint8_t pattern_[16] = {};
    size_t patternBytes_ = 0;
    // A method's parameters: none (a stand-in block points at nothing
    // read), and the length the record claims.
    bool noParams_ = false;
    bool paramsKnown_ = false;
    uint16_t paramsLength_ = 0;
};

} // namespace trovfuzz
