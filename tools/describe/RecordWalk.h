// One walk over the records the library describes (TrovLayout.h).
//
// The layout description says, field by field, where every part of a record
// sits and how it travels. This walk is the one reading of it outside the
// library: readRecord() walks a record in memory and hands a RecordReader
// every value it finds; buildRecord() lays a record out and asks a
// RecordBuilder for every value it needs. Whatever prints, builds or reads
// records (the trov tool, the fuzz targets, language bindings) is a visitor
// of one of the two, so a new kind of field is handled here and nowhere else.
// It uses the library's public headers only.
//
// What the walk adds to the description, in both directions:
//   - a typed value (attribute, data type) is a small record of its own: the
//     identifier ("id", or "type") and "value", one element record (scalar
//     form) or a list of them (array form, an AttributeArrayHeader in memory);
//   - an attribute entry (of an attribute list, or a structure's "entry") is
//     "id" and "value", the value coded at the list's version (a structure's
//     entries at version 0); without a codec its bytes as they stand;
//   - an option is "kind" and "value" (the value's bytes as they travel;
//     kinds 1 to 5 hold host-order numbers in memory);
//   - a params field (MethodBody's) is two members: "paramsLength", the
//     length kept behind the parameters' pointer, then the field itself, the
//     parameter record TROV_DescribeMethod gives for the side walked (raw
//     bytes for a raw method); building, the field holding its method code
//     is asked as a Code;
//   - an events field (EventListBody's, ShortEventListBody's) is "events",
//     a list of its entries, each entry its event code as "code", its other
//     members, and as "fields" the record TROV_DescribeEvent gives; building,
//     the code is asked as a Code and the event list's count field counts
//     the entries built;
//   - a selector value is the record of the variant its first byte picks.
// Members that are not fields of the description ("value", "events",
// "fields") come with kindId 0 and the kind name "member"; "paramsLength"
// and an entry's "code" come as u16.
//
// Records nest (values in attribute lists, nested and counted records,
// events in a list, parameters in a method body) at most kMaxDepth levels
// deep, one level per record walked inside another, in both directions.
// Records are read and written with memcpy, so they may sit at any alignment.
#pragma once

#include <cstddef>
#include <cstdint>

#include "TrovLayout.h"

namespace trov::describe {

// The nesting bound of both walks. What the library decodes nests less deep
// (structures stop at 16 levels, and attribute lists at a nesting flag of 32
// that each list adds two to), so the bound only stops records made by hand.
inline constexpr int kMaxDepth = 32;

// A code that names a layout: the walk looks the layout up (building, the
// builder gives the code).
struct Code {
    enum class Of : uint8_t {
        Attribute, // an attribute identifier (TROV_KIND_ATTRIBUTE), u16
        DataType,  // a data type (TROV_KIND_VALUE, TROV_KIND_RESERVED_VALUE), u16
        Entry,     // an attribute entry's identifier, u16: `field` is the list
                   // (TROV_KIND_ATTRIBUTES, _EVENT_ATTRIBUTES) or TROV_KIND_ENTRY
        Method,    // a method code, u16
        Option,    // an option's kind, u8
        Selector,  // a selector value's first byte, u8
        Event,     // an event list entry's event code, u16 (`field`: the entry's code field)
    } of;
    const TrovFieldInfo *field; // the field the code belongs to (null for a method)
    uint8_t version;            // the version the code is looked up at
};

// ---- reading ---------------------------------------------------------------------

// What a run of bytes is.
enum class Text : uint8_t {
    Bytes,    // bytes as they stand: blocks, octets, the rest of a body, raw
              // parameters, an option's value (as it travels)
    Chars,    // counted characters
    Unparsed, // an attribute value kept as its wire bytes: no codec reads it
};

// Counted numbers as a record holds them (u16s, u32s, items, byte pairs):
// `count` elements of one or two parts.
struct Numbers {
    uint8_t kindId; // TROV_KIND_*
    uint8_t parts;  // 1, or 2 for items and byte pairs
    uint8_t stride; // record bytes from one element to the next
    uint32_t count;
    const uint8_t *data;
    // Part `part` (0 or 1) of element `index`.
    uint32_t at(uint32_t index, unsigned part) const;
    // Record bytes of each part (1, 2 or 4), and where in an element it sits.
    unsigned partBytes(unsigned part) const;
    unsigned partOffset(unsigned part) const;
};

// Why a record is not walked: nested deeper than kMaxDepth, or opaque bytes
// that no layout spells.
enum class Unread : uint8_t { TooDeep, RawBytes };

// Receives a record as readRecord() finds it. Every value arrives as one of:
// a record (beginRecord, then per member member() and its value, endRecord),
// a list (beginList, its values, endList), number(), bytes(), numbers(),
// absent() (a pointer the record leaves null although it counts data behind
// it, or a code without a layout) or unread().
class RecordReader {
public:
    virtual ~RecordReader() = default;
    virtual void beginRecord(const TrovLayoutInfo &layout) = 0;
    virtual void member(const TrovFieldInfo &field) = 0;
    virtual void endRecord() = 0;
    virtual void beginList(uint32_t count) = 0;
    virtual void endList() = 0;
    virtual void number(uint32_t value) = 0;
    virtual void bytes(const uint8_t *data, size_t size, Text text) = 0;
    virtual void numbers(const Numbers &numbers) = 0;
    virtual void absent() = 0;
    virtual void unread(Unread why) = 0;
};

// Walks `record` (of `layout`; null reads as absent). `version` is the
// header's version byte, which nested layouts are looked up with; `request`
// says which side of a method's parameters a method body holds.
void readRecord(const TrovLayoutInfo &layout, const void *record, uint8_t version, bool request,
                RecordReader &reader);

// Walks what a typed value of attribute or data type `key` points at
// (`code.of` Attribute or DataType, looked up at `code.version`): absent
// without a layout or a value, else its element record or its elements.
void readValue(const Code &code, uint16_t key, const void *value, RecordReader &reader);

// ---- building --------------------------------------------------------------------

// What the walk asks memory for.
enum class Block : uint8_t {
    Record,   // a record it fills: the top record, a value's element in scalar
              // form, a method's parameters
    Header,   // an AttributeArrayHeader (16 bytes)
    Elements, // elements it fills one by one: records, options, attribute entries
    Data,     // counted bytes or numbers, an option's value, raw bytes
};

// Where a record being built sits in the walk.
enum class Frame : uint8_t {
    Top,     // the record buildRecord() was asked for
    Params,  // a method's parameters
    Value,   // an element of a typed value or an attribute entry's value
    Nested,  // a structure's nested record (TROV_KIND_RECORD)
    Item,    // one of a structure's counted records (TROV_KIND_RECORDS)
    Typed,   // the walk's own records: a typed value, an attribute entry
    Entry,   //   and an option (see above)
    Option,
    EventEntry, // an entry of an event list (its members named as memberName gives them)
    Event,      // the event record behind an entry
};

// A count the builder gives or checks.
struct Count {
    enum class Of : uint8_t {
        CountField, // a count field (`field`): the count of `counted`, which
                    // follows; kLater gives it with the data instead
        Data,       // counted bytes, characters or numbers of `field`
        Rest,       // the bytes of `field` up to the end of the body, or raw
                    // method parameters: no count travels
        Records,    // a structure's counted records (`field`)
        Options,    // the options of an option list (`field`)
        Entries,    // the entries of an attribute list (`field`)
        Elements,   // the elements of a typed value in array form
        Events,     // the entries of an event list (`field`)
        Option,     // an option's length byte (`field`: its "value"); for kinds
                    // from 6 the value's byte count
        Unparsed,   // the wire bytes of an attribute value without a codec
    } of;
    const TrovFieldInfo *field;
    const TrovFieldInfo *counted; // CountField: the field it counts, null if none
    Text text;                    // Data, Rest: what the bytes are
    uint8_t parts;                // Data: 0 bytes; 1 or 2 numbers (Numbers.parts)
    uint8_t prefixBytes;          // wire bytes of the count in front of the elements
                                  // (0: a count field or the body's end gives it)
    uint16_t elementWire;         // least wire bytes of one element
    uint32_t elementBytes;        // record bytes of one element
    uint32_t limit;               // the largest count the record can keep
    bool announced;               // a count field gave the count: `value` holds it
};

// Given for a count field whose count the builder only knows with the data.
inline constexpr uint32_t kLater = 0xFFFFFFFFu;

// Record bytes no value fills: the walk leaves them 0 unless the builder says.
enum class Filler : uint8_t {
    Reserved,     // a TROV_KIND_RESERVED byte
    EntryLength,  // an AttributeEntry's length (the encoder computes it)
    ParamsLength, // the length behind a params field of a method with a parameter record
};

// The member a field brings besides its own: "paramsLength" for a params
// field (read before it, given through Filler::ParamsLength); null for any
// other field.
const char *lengthMember(const TrovFieldInfo &field);

// The name both walks present field `field` of `layout` by: "events" for an
// event list's entries, and in an entry "code" for the event code and
// "fields" for the event record; the field's own name otherwise.
const char *memberName(const TrovLayoutInfo &layout, const TrovFieldInfo &field);

// Something the description does not give, or a bound the walk keeps.
struct Miss {
    enum class Of : uint8_t {
        Code,    // no layout for `code` (Code::Of `codeOf`): `result` is the lookup's
        Variant, // no variant for selector `code` of `layout`
        Depth,   // a record nested deeper than kMaxDepth
        Layout,  // a form (of `layout`) or kind (of `field`) the walk cannot build
    } of;
    Code::Of codeOf;
    uint32_t code;
    uint8_t version;
    TrovResult result;
    const TrovLayoutInfo *layout;
    const TrovFieldInfo *field;
};

// What a builder answers to a Miss.
enum class Answer : uint8_t {
    Stop,     // the build fails
    StandIn,  // go on: a code's value pointer is the one given (a method's
              // parameters too); a variant's record is its selector byte alone
    Unparsed, // an attribute entry's value is its wire bytes (Count::Of::Unparsed)
};

// Gives buildRecord() every value and the memory to lay records out in. Any
// `false` (or Answer::Stop) ends the build; the builder keeps its reason.
// Values arrive in wire order; begin and end calls bracket records, fields
// and the items of lists, so a builder can keep its place.
class RecordBuilder {
public:
    virtual ~RecordBuilder() = default;

    // `bytes` of zeroed memory that stays as long as the record; null for
    // none. The walk skips the values of elements and data left null.
    virtual void *allocate(size_t bytes, Block block) = 0;

    virtual bool beginRecord(const TrovLayoutInfo &, Frame) { return true; }
    virtual bool endRecord() { return true; }
    virtual bool beginField(const TrovFieldInfo &) { return true; }
    virtual void endField() {}
    virtual bool beginItem(uint32_t) { return true; }
    virtual void endItem() {}
    // The value of a typed value or attribute entry, of element `layout`.
    virtual bool beginValue(const TrovLayoutInfo &) { return true; }
    virtual void endValue() {}

    virtual bool code(const Code &code, uint32_t &value) = 0;
    // A u8, u16 or u32 field (`width` bytes); `value` holds what the record has.
    virtual bool scalar(const TrovFieldInfo &field, unsigned width, uint32_t &value) = 0;
    // The count's value as the record keeps it: bytes above the wire count's
    // width may carry anything, the count is its low bytes.
    virtual bool count(const Count &count, uint32_t &value) = 0;
    // `size` bytes into `out`: a block in place (fewer may be given), counted
    // bytes, an option's value or raw bytes (as they travel).
    virtual bool bytes(const TrovFieldInfo &field, Text text, uint8_t *out, size_t size) = 0;
    // Element `index` of counted numbers; `parts` hold what the record has.
    virtual bool element(const Numbers &numbers, uint32_t index, uint32_t (&parts)[2]) = 0;

    virtual bool filler(Filler, uint32_t &) { return true; }
    virtual Answer missing(const Miss &, void *&) { return Answer::Stop; }
    // The pointer to a value or parameter record about to be stored (`field`:
    // the typed value's or entry's field, null for parameters); the builder
    // may store another.
    virtual void *pointer(const TrovFieldInfo *, void *value) { return value; }
};

// The record of `layout` built through `builder`; null when the builder
// stopped. `version` and `request` as for readRecord().
void *buildRecord(const TrovLayoutInfo &layout, uint8_t version, bool request, RecordBuilder &builder);

// The value of attribute or data type `key` (`code.of` Attribute or
// DataType, looked up at `code.version`) as a typed value points at it: one
// element record, or an AttributeArrayHeader and its elements. The builder
// is asked no code; a key without a layout goes to missing(). Null when the
// builder stopped (or stood in null).
void *buildValue(const Code &code, uint16_t key, RecordBuilder &builder);

} // namespace trov::describe
