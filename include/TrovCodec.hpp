/*
 * TrovCodec.hpp - a header-only C++ layer over the C interface (C++17 and
 * later; nothing beyond the standard library and the library's C headers).
 *
 *   trov::decode(bytes)               decodes one packet; the result owns the
 *                                     body record and its managed block
 *   trov::decodeInto(bytes, record, storage, capacity)
 *                                     decodes into the caller's record and
 *                                     buffer, allocating nothing
 *   trov::encode(header, record)      encodes a request; the result owns the
 *   trov::encode<Code>(header, record)  packet. The typed form does not compile
 *                                     for a record that is not Code's
 *   trov::events(list)                the events of an event-list body, each
 *                                     with its code and typed record
 *   trov::split(bytes)                frames a byte stream into packets by the
 *                                     headers' body lengths
 *
 * Nothing here throws: every operation reports a trov::Result. Where the host
 * builds with exceptions, trov::throwing holds the same operations throwing
 * trov::Error instead. Whatever the library allocates is held by a
 * std::unique_ptr that releases it with trovFree (trov::Owned).
 *
 * Call TROV_InitCoder (or trov::init) once before decoding or encoding.
 */
#ifndef TROVCODEC_HPP
#define TROVCODEC_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#if __cplusplus >= 202002L
#include <version>
#if defined(__cpp_lib_span)
#include <span>
#endif
#endif

#if defined(__cpp_exceptions) || defined(_CPPUNWIND)
#define TROV_CPP_EXCEPTIONS 1
#include <exception>
#endif

#include "TrovCodec.h"
#include "TrovRecords.h"
#include "TrovTypes.hpp"
#include "TrovVersion.h"

namespace trov {

// ------------------------------------------------------------------ results

// The library's result codes, and one of this layer's own: WrongRecord, for a
// record whose type is not the one the packet's or header's body code takes
// (the library is not called then, since it would read or write the record
// as another type).
enum class Result : std::uint32_t {
    Ok = TROV_RESULT_OK,
    NullArgument = TROV_RESULT_NULL_ARGUMENT,
    BadPacket = TROV_RESULT_BAD_PACKET,
    BadFieldIndex = TROV_RESULT_BAD_FIELD_INDEX,
    BadValue = TROV_RESULT_BAD_VALUE,
    ShortInput = TROV_RESULT_SHORT_INPUT,
    NoMemory = TROV_RESULT_NO_MEMORY,
    BufferTooSmall = TROV_RESULT_BUFFER_TOO_SMALL,
    NoHeaderCodec = TROV_RESULT_NO_HEADER_CODEC,
    NoBodyCodec = TROV_RESULT_NO_BODY_CODEC,
    NoAttributeCodec = TROV_RESULT_NO_ATTRIBUTE_CODEC,
    NoMethodCodec = TROV_RESULT_NO_METHOD_CODEC,
    NoEventCodec = TROV_RESULT_NO_EVENT_CODEC,
    NoDataTypeCodec = TROV_RESULT_NO_DATA_TYPE_CODEC,
    WrongRecord = 0x100
};

// "SHORT_INPUT" and so on (TROV_ResultName), "WRONG_RECORD"; static strings.
inline const char *name(Result r) noexcept {
    return r == Result::WrongRecord ? "WRONG_RECORD" : TROV_ResultName(static_cast<TrovResult>(r));
}

// The result's meaning in one line (TROV_ResultMeaning); a static string.
inline const char *meaning(Result r) noexcept {
    return r == Result::WrongRecord ? "the record's type is not the one the body code takes"
                                    : TROV_ResultMeaning(static_cast<TrovResult>(r));
}

// Points the library at its codec tables (TROV_InitCoder): once, before the
// library is shared between threads.
inline void init() noexcept { TROV_InitCoder(); }

// --------------------------------------------------------------- ownership

// Releases what the library allocated.
struct Free {
    void operator()(void *p) const noexcept { trovFree(p); }
};
template <class T>
using Owned = std::unique_ptr<T, Free>;

// ----------------------------------------------------------------- bytes

// A read-only view of bytes: a pointer and a size, from whatever holds them
// (the view does not keep them alive).
class Bytes {
public:
    constexpr Bytes() noexcept = default;
    constexpr Bytes(const std::uint8_t *data, std::size_t size) noexcept : data_(data), size_(size) {}
    template <std::size_t N>
    constexpr Bytes(const std::uint8_t (&bytes)[N]) noexcept : data_(bytes), size_(N) {}
    template <std::size_t N>
    constexpr Bytes(const std::array<std::uint8_t, N> &bytes) noexcept : data_(bytes.data()), size_(N) {}
    template <class Allocator>
    Bytes(const std::vector<std::uint8_t, Allocator> &bytes) noexcept : data_(bytes.data()), size_(bytes.size()) {}
#if defined(__cpp_lib_span)
    template <class T, std::size_t Extent,
              class = std::enable_if_t<std::is_same<std::remove_const_t<T>, std::uint8_t>::value>>
    constexpr Bytes(std::span<T, Extent> bytes) noexcept : data_(bytes.data()), size_(bytes.size()) {}
#endif

    constexpr const std::uint8_t *data() const noexcept { return data_; }
    constexpr std::size_t size() const noexcept { return size_; }
    constexpr bool empty() const noexcept { return size_ == 0; }
    constexpr const std::uint8_t *begin() const noexcept { return data_; }
    constexpr const std::uint8_t *end() const noexcept { return data_ + size_; }
    constexpr std::uint8_t operator[](std::size_t i) const noexcept { return data_[i]; }
    // The bytes from `offset` on, at most `count` of them (clamped to the view).
    constexpr Bytes sub(std::size_t offset, std::size_t count = SIZE_MAX) const noexcept {
        if (offset > size_) offset = size_;
        if (count > size_ - offset) count = size_ - offset;
        return Bytes(data_ + offset, count);
    }

private:
    const std::uint8_t *data_ = nullptr;
    std::size_t size_ = 0;
};

// -------------------------------------------------------- records by code

// Whether T is the request record of body `code`, its reply record, or the
// record of event `code` (TrovTypes.hpp). Records that several codes share
// are one type, so these answer for every code that has it.
namespace detail {
template <template <std::uint16_t> class Map, class T, std::uint16_t... Codes>
constexpr bool recordIs(std::uint16_t code, std::integer_sequence<std::uint16_t, Codes...>) noexcept {
    return ((code == Codes && std::is_same<typename Map<Codes>::type, T>::value) || ...);
}
template <std::uint16_t... Codes>
constexpr bool listed(std::uint16_t code, std::integer_sequence<std::uint16_t, Codes...>) noexcept {
    return ((code == Codes) || ...);
}
template <class Map, class = void>
struct HasType : std::false_type {};
template <class Map>
struct HasType<Map, std::void_t<typename Map::type>> : std::true_type {};
template <class Record, class = void>
struct HasBuffer : std::false_type {};
template <class Record>
struct HasBuffer<Record, std::void_t<decltype(std::declval<Record &>().buffer)>>
    : std::is_same<decltype(std::declval<Record &>().buffer), BufferDesc> {};
} // namespace detail

template <class T>
constexpr bool requestRecordIs(std::uint16_t code) noexcept {
    return detail::recordIs<RequestRecord, T>(code, RequestCodes{});
}
template <class T>
constexpr bool replyRecordIs(std::uint16_t code) noexcept {
    return detail::recordIs<ReplyRecord, T>(code, ReplyCodes{});
}
template <class T>
constexpr bool eventRecordIs(std::uint16_t code) noexcept {
    return detail::recordIs<EventRecord, T>(code, EventCodes{});
}

// A request header: the protocol mark and version, the body code, and the
// unit type in the 16-bit extension (flags bit 0).
inline HeaderInfo makeHeader(std::uint16_t code = 0, std::uint16_t unitType = 0) noexcept {
    HeaderInfo h{};
    h.mark = TROV_PROTOCOL_MARK;
    h.version = TROV_PROTOCOL_VERSION;
    h.flags = TROV_FLAG_EXTENSION16;
    h.code = code;
    h.extension = unitType;
    return h;
}

// ---------------------------------------------------------------- encoding

// An encoded packet, allocated by the library and released with it.
class Packet {
public:
    Packet() noexcept = default;
    Packet(Owned<std::uint8_t> data, std::uint32_t size) noexcept : data_(std::move(data)), size_(size) {}

    const std::uint8_t *data() const noexcept { return data_.get(); }
    std::uint32_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    Bytes bytes() const noexcept { return Bytes(data_.get(), size_); }
    operator Bytes() const noexcept { return bytes(); }
    // Hands the packet to the caller, who then releases it with trovFree.
    std::uint8_t *release() noexcept {
        size_ = 0;
        return data_.release();
    }

private:
    Owned<std::uint8_t> data_;
    std::uint32_t size_ = 0;
};

// What an encode gives: its result, the header as encoded (bodyLength set,
// even when a later step failed) and, on success, the packet.
struct Encoded {
    Result result = Result::NullArgument;
    HeaderInfo header{};
    Packet packet;
    explicit operator bool() const noexcept { return result == Result::Ok; }
};

namespace detail {
inline Encoded encodeUnchecked(const HeaderInfo &header, const void *record) noexcept {
    Encoded e;
    e.header = header;
    EncodeOutput out{nullptr, 0};
    e.result = static_cast<Result>(TROV_EncodeFU(&e.header, record, &out));
    // A failed encode has released the packet it allocated.
    if (e.result == Result::Ok) e.packet = Packet(Owned<std::uint8_t>(out.data), out.length);
    return e;
}
} // namespace detail

// Encodes a request of body header.code from `record`. Results: those of
// TROV_EncodeFU; WrongRecord, with nothing called, when header.code is a body
// code whose request record is another type or that has none (a code the
// tables do not know is left to the library: NoBodyCodec).
template <class Record>
Encoded encode(const HeaderInfo &header, const Record &record) noexcept {
    static_assert(!std::is_pointer<Record>::value, "pass the record itself, not a pointer to it");
    const bool known = detail::listed(header.code, RequestCodes{}) || detail::listed(header.code, ReplyCodes{});
    if (known && !requestRecordIs<Record>(header.code)) {
        Encoded e;
        e.result = Result::WrongRecord;
        e.header = header;
        return e;
    }
    return detail::encodeUnchecked(header, &record);
}

// Encodes a request of body Code (header.code is set to it). A record of
// another type than Code's request record does not compile.
template <std::uint16_t Code, class Record>
Encoded encode(HeaderInfo header, const Record &record) noexcept {
    static_assert(detail::HasType<RequestRecord<Code>>::value, "this body code has no request record");
    using Expected = typename std::conditional_t<detail::HasType<RequestRecord<Code>>::value, RequestRecord<Code>,
                                                 std::common_type<Record>>::type;
    static_assert(std::is_same<Record, Expected>::value, "not the request record of this body code");
    header.code = Code;
    return detail::encodeUnchecked(header, &record);
}

// ------------------------------------------------------------------ events

// One decoded event: its code, its record, and the head it came with.
class Event {
public:
    explicit Event(const EventEntry *entry) noexcept
        : code_(entry->eventCode), record_(entry->body), entry_(entry) {}
    explicit Event(const EventBriefEntry *entry) noexcept
        : code_(entry->eventCode), record_(entry->body), brief_(entry) {}

    std::uint16_t code() const noexcept { return code_; }
    const void *record() const noexcept { return record_; }
    // The long framing's head (field1 to field4), or null.
    const EventEntry *entry() const noexcept { return entry_; }
    // The short framing's head (field2), or null.
    const EventBriefEntry *briefEntry() const noexcept { return brief_; }

    // The record as T, or null when T is not the record of this event's code.
    template <class T>
    const T *as() const noexcept {
        return eventRecordIs<T>(code_) ? static_cast<const T *>(record_) : nullptr;
    }
    // The record of event Code, or null when this event has another code.
    template <std::uint16_t Code>
    const typename EventRecord<Code>::type *as() const noexcept {
        return code_ == Code ? static_cast<const typename EventRecord<Code>::type *>(record_) : nullptr;
    }

private:
    std::uint16_t code_;
    const void *record_;
    const EventEntry *entry_ = nullptr;
    const EventBriefEntry *brief_ = nullptr;
};

// The events of an event-list body in either framing, as a range of Event.
// It points into the body's block: keep the body alive while using it.
class Events {
public:
    class iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Event;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Event;

        iterator() noexcept = default;
        iterator(const EventEntry *entries, const EventBriefEntry *brief, std::size_t at) noexcept
            : entries_(entries), brief_(brief), at_(at) {}
        Event operator*() const noexcept { return entries_ != nullptr ? Event(entries_ + at_) : Event(brief_ + at_); }
        iterator &operator++() noexcept {
            ++at_;
            return *this;
        }
        iterator operator++(int) noexcept {
            iterator before = *this;
            ++at_;
            return before;
        }
        friend bool operator==(const iterator &a, const iterator &b) noexcept { return a.at_ == b.at_; }
        friend bool operator!=(const iterator &a, const iterator &b) noexcept { return a.at_ != b.at_; }

    private:
        const EventEntry *entries_ = nullptr;
        const EventBriefEntry *brief_ = nullptr;
        std::size_t at_ = 0;
    };

    Events() noexcept = default;
    explicit Events(const EventListBody &body) noexcept
        : entries_(body.count != 0 ? body.entries : nullptr), count_(entries_ != nullptr ? body.count : 0) {}
    explicit Events(const ShortEventListBody &body) noexcept
        : brief_(body.count != 0 ? body.entries : nullptr), count_(brief_ != nullptr ? body.count : 0) {}

    std::size_t size() const noexcept { return count_; }
    bool empty() const noexcept { return count_ == 0; }
    // Event i, for i below size().
    Event operator[](std::size_t i) const noexcept { return *iterator(entries_, brief_, i); }
    iterator begin() const noexcept { return iterator(entries_, brief_, 0); }
    iterator end() const noexcept { return iterator(entries_, brief_, count_); }

private:
    const EventEntry *entries_ = nullptr;
    const EventBriefEntry *brief_ = nullptr;
    std::size_t count_ = 0;
};

inline Events events(const EventListBody &body) noexcept { return Events(body); }
inline Events events(const ShortEventListBody &body) noexcept { return Events(body); }

// ---------------------------------------------------------------- decoding

namespace detail {
inline PacketCursor cursorOver(Bytes packet) noexcept {
    // The decoders take a cursor over non-const bytes but only read through it.
    return PacketCursor{const_cast<std::uint8_t *>(packet.data()),
                        packet.size() > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(packet.size())};
}
// A non-null address for a buffer of capacity 0, which the library never
// writes to.
inline std::uint8_t *noStorage() noexcept {
    static std::uint8_t none;
    return &none;
}
} // namespace detail

class Decoded;
// Decodes one packet (TROV_DecodeFU); `context` goes to the body codec.
// Results: TROV_DecodeFU's. A failed decode has released everything.
Decoded decode(Bytes packet, void *context = nullptr) noexcept;

// A decoded packet: its result, header and unit type, and the body record
// with the block of its variable data, both owned and released together.
class Decoded {
public:
    Decoded() noexcept = default;

    Result result() const noexcept { return result_; }
    explicit operator bool() const noexcept { return result_ == Result::Ok; }
    const HeaderInfo &header() const noexcept { return header_; }
    std::uint16_t code() const noexcept { return header_.code; }
    // The unit type (header extension); 6 after a failed body decode.
    std::uint16_t unitType() const noexcept { return unitType_; }
    // The body record: null after a failure, for a body the unit type's rules
    // skip, and for a body without a reply record. What this and the
    // accessors below return lives as long as this object; they are refused
    // on a temporary, which would free the record at the end of the statement.
    const void *record() const &noexcept { return record_.get(); }
    const void *record() const && = delete;

    // The record as T, or null when T is not the reply record of the code.
    template <class T>
    const T *as() const &noexcept {
        return replyRecordIs<T>(header_.code) ? static_cast<const T *>(record_.get()) : nullptr;
    }
    template <class T>
    const T *as() const && = delete;
    // The reply record of body Code, or null when the packet has another code.
    template <std::uint16_t Code>
    const typename ReplyRecord<Code>::type *as() const &noexcept {
        static_assert(!std::is_void<typename ReplyRecord<Code>::type>::value, "this body code has no reply record");
        return header_.code == Code ? static_cast<const typename ReplyRecord<Code>::type *>(record_.get()) : nullptr;
    }
    template <std::uint16_t Code>
    const typename ReplyRecord<Code>::type *as() const && = delete;
    // The events of an event-list body; empty for any other body.
    Events events() const &noexcept {
        if (const auto *list = as<EventListBody>()) return Events(*list);
        if (const auto *list = as<ShortEventListBody>()) return Events(*list);
        return Events();
    }
    Events events() const && = delete;

private:
    friend Decoded decode(Bytes packet, void *context) noexcept;

    Result result_ = Result::NullArgument;
    HeaderInfo header_{};
    std::uint16_t unitType_ = 0;
    Owned<void> block_;  // the record's managed buffer, when the decode allocated one
    Owned<void> record_;
};

inline Decoded decode(Bytes packet, void *context) noexcept {
    Decoded d;
    DecodeResult r{nullptr, nullptr, 0};
    const PacketCursor cursor = detail::cursorOver(packet);
    d.result_ = static_cast<Result>(TROV_DecodeFU(&d.header_, &r, &cursor, context));
    d.unitType_ = r.type;
    if (d.result_ == Result::Ok) {
        // The buffer descriptor lies inside the record: take its block first.
        if (r.buffer != nullptr) d.block_.reset(r.buffer->data);
        d.record_.reset(r.record);
    }
    return d;
}

// What a decode into the caller's record reports.
struct DecodeReport {
    Result result = Result::NullArgument;
    HeaderInfo header{};
    std::uint16_t unitType = 0;
    explicit operator bool() const noexcept { return result == Result::Ok; }
};

// Decodes one packet into `record`, which is overwritten, and the variable
// data into `storage` (`capacity` bytes, at most 65535 used), allocating
// nothing: too little storage gives BufferTooSmall. The record's pointers
// then point into `storage`. Results: TROV_DecodeFU's; WrongRecord when the
// packet's body code takes a record of another type, before anything is
// written. A body that the unit type's rules skip gives Ok and leaves the
// record zeroed.
template <class Record>
DecodeReport decodeInto(Bytes packet, Record &record, void *storage = nullptr, std::size_t capacity = 0,
                        void *context = nullptr) noexcept {
    static_assert(std::is_trivially_copyable<Record>::value && !std::is_pointer<Record>::value,
                  "pass a body record");
    DecodeReport report;
    // The body code through the library's own header reader (a packet it
    // cannot read is left for the decode to refuse).
    std::uint16_t code = 0;
    const PacketCursor header = detail::cursorOver(packet);
    if (TROV_GetFromPacket(TROV_FIELD_CODE, &header, &code) == TROV_RESULT_OK &&
        detail::listed(code, ReplyCodes{}) && !replyRecordIs<Record>(code)) {
        report.result = Result::WrongRecord;
        return report;
    }
    std::memset(static_cast<void *>(&record), 0, sizeof record);
    if constexpr (detail::HasBuffer<Record>::value) {
        // Without storage, a buffer of capacity 0 at a non-null address
        // refuses any variable data (BufferTooSmall) where a null one would
        // be allocated.
        record.buffer.data = storage != nullptr ? storage : detail::noStorage();
        record.buffer.capacity = storage == nullptr ? std::uint16_t{0}
                                 : capacity < 0xFFFF ? static_cast<std::uint16_t>(capacity)
                                                     : std::uint16_t{0xFFFF};
    }
    DecodeResult r{&record, nullptr, 0};
    const PacketCursor cursor = detail::cursorOver(packet);
    report.result = static_cast<Result>(TROV_DecodeFU(&report.header, &r, &cursor, context));
    report.unitType = r.type;
    if constexpr (detail::HasBuffer<Record>::value) {
        if (record.buffer.data == detail::noStorage()) record.buffer.data = nullptr;
    }
    return report;
}

// --------------------------------------------------------------- streams

// Packets back to back: each is a 20-byte header whose bytes 8-9 hold the
// body's length (big-endian), then that many body bytes. Framing reads
// nothing else, so a packet with a wrong mark or version is framed all the
// same and left for the decoder to report.
struct Frame {
    std::size_t offset = 0; // where the packet starts in the stream
    Bytes bytes;            // the whole packet
    operator Bytes() const noexcept { return bytes; }
};

class Frames {
public:
    class iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Frame;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Frame;

        iterator() noexcept = default;
        iterator(Bytes stream, std::size_t at) noexcept : stream_(stream), at_(at) {}
        Frame operator*() const noexcept { return Frame{at_, stream_.sub(at_, packetLength(stream_.data() + at_))}; }
        iterator &operator++() noexcept {
            at_ += packetLength(stream_.data() + at_);
            return *this;
        }
        iterator operator++(int) noexcept {
            iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const iterator &a, const iterator &b) noexcept { return a.at_ == b.at_; }
        friend bool operator!=(const iterator &a, const iterator &b) noexcept { return a.at_ != b.at_; }

    private:
        Bytes stream_;
        std::size_t at_ = 0;
    };

    // Walks the headers once to find where the complete packets end.
    explicit Frames(Bytes stream) noexcept : stream_(stream) {
        while (stream_.size() - end_ >= TROV_HEADER_LENGTH &&
               stream_.size() - end_ >= packetLength(stream_.data() + end_))
            end_ += packetLength(stream_.data() + end_);
    }

    iterator begin() const noexcept { return iterator(stream_, 0); }
    iterator end() const noexcept { return iterator(stream_, end_); }
    // The bytes the complete packets take: the incomplete tail starts here.
    std::size_t consumed() const noexcept { return end_; }
    // The start of a packet still to come (empty when the stream ends on a
    // packet boundary).
    Bytes tail() const noexcept { return stream_.sub(end_); }

    // The length of the packet whose header starts at `header`.
    static std::size_t packetLength(const std::uint8_t *header) noexcept {
        return TROV_HEADER_LENGTH + (std::size_t{header[8]} << 8 | header[9]);
    }

private:
    Bytes stream_;
    std::size_t end_ = 0;
};

inline Frames split(Bytes stream) noexcept { return Frames(stream); }

// ----------------------------------------------------- the throwing set

#if defined(TROV_CPP_EXCEPTIONS)
// A result other than Ok, thrown by trov::throwing.
class Error : public std::exception {
public:
    explicit Error(Result result) noexcept : result_(result) {}
    Result result() const noexcept { return result_; }
    const char *what() const noexcept override { return meaning(result_); }

private:
    Result result_;
};

// The same operations, throwing Error where the main set returns a result
// other than Ok.
namespace throwing {

inline Decoded decode(Bytes packet, void *context = nullptr) {
    Decoded d = trov::decode(packet, context);
    if (!d) throw Error(d.result());
    return d;
}

template <class Record>
DecodeReport decodeInto(Bytes packet, Record &record, void *storage = nullptr, std::size_t capacity = 0,
                        void *context = nullptr) {
    DecodeReport report = trov::decodeInto(packet, record, storage, capacity, context);
    if (!report) throw Error(report.result);
    return report;
}

template <class Record>
Packet encode(const HeaderInfo &header, const Record &record) {
    Encoded e = trov::encode(header, record);
    if (!e) throw Error(e.result);
    return std::move(e.packet);
}

template <std::uint16_t Code, class Record>
Packet encode(const HeaderInfo &header, const Record &record) {
    Encoded e = trov::encode<Code>(header, record);
    if (!e) throw Error(e.result);
    return std::move(e.packet);
}

} // namespace throwing
#endif

} // namespace trov

#endif /* TROVCODEC_HPP */
