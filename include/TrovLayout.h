/*
 * TrovLayout.h - a read-only description of every record the library codes.
 *
 * For a body, an event, a method's parameters, an attribute value or a typed
 * value, the functions below answer with the layout of the record the codec
 * reads or writes: the record's size and, field by field in wire order, each
 * field's name, its kind, where it sits in the record and how it travels.
 * The answers come from the same tables the codecs run on, so a description
 * never disagrees with what an encoder writes or a decoder fills.
 *
 * Ownership: every TrovLayoutInfo the functions fill points at constant data
 * of the library (the field array and every string). It lives as long as the
 * library is loaded, is never freed and must not be written to.
 *
 * The codec tables are only usable after TROV_InitCoder; before it, every
 * lookup answers that there is no codec, as the codecs themselves do.
 *
 * Plain C; usable from C and C++.
 */
#ifndef TROVLAYOUT_H
#define TROVLAYOUT_H

#include <stdint.h>

#include "TrovCodec.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Field kinds (TrovFieldInfo.kindId). Wire forms are big-endian. */
enum {
    TROV_KIND_U8 = 1,          /* "u8": one byte */
    TROV_KIND_U16 = 2,         /* "u16": two bytes */
    TROV_KIND_U32 = 3,         /* "u32": four bytes */
    TROV_KIND_RESERVED = 4,    /* "reserved": a u8 of the record that no wire byte fills */
    TROV_KIND_BYTES = 5,       /* "bytes": `width` bytes as they stand */
    TROV_KIND_BYTES12 = 6,     /* "bytes": 12 bytes as they stand, in a 16-byte slot */
    TROV_KIND_OCTETS = 7,      /* "octets": counted bytes */
    TROV_KIND_CHARS = 8,       /* "chars": counted characters (or bytes) with one spare
                                  byte kept behind non-empty data */
    TROV_KIND_U16S = 9,        /* "u16s": counted u16, stored in host order */
    TROV_KIND_U32S = 10,       /* "u32s": counted u32, stored in host order, 4 bytes each */
    TROV_KIND_WIDE_U32S = 11,  /* "u32s": counted u32, stored in host order 4 bytes apart,
                                  with 8 bytes of room each */
    TROV_KIND_U8U32_ITEMS = 12, /* "u8u32items": counted (u8, u32) items, 8-byte elements */
    TROV_KIND_U32U8_ITEMS = 13, /* "u32u8items": counted (u32, u8) items, 8-byte elements */
    TROV_KIND_BYTE_PAIRS = 14, /* "bytepairs": counted byte pairs */
    TROV_KIND_REST = 15,       /* "rest": the bytes up to the end of the body, no count */
    TROV_KIND_COUNT = 16,      /* "count": the count of the next field, kept in a field
                                  of its own (countBytes wide on the wire and in the record) */
    TROV_KIND_ATTRIBUTE = 17,  /* "attribute": u16 attribute identifier, then the value
                                  as that attribute's codec writes it (array form) */
    TROV_KIND_VALUE = 18,      /* "value": u16 data type, then the value of that type */
    TROV_KIND_RESERVED_VALUE = 19, /* "value": as TROV_KIND_VALUE, with the room the type reserves */
    TROV_KIND_OPTION = 20,     /* "option": u8 kind, u8 length, the value */
    TROV_KIND_ATTRIBUTES = 21, /* "attributes": u16 count, then (u16 id, u16 length, value) */
    TROV_KIND_EVENT_ATTRIBUTES = 22, /* "attributes": as TROV_KIND_ATTRIBUTES, in an event */
    TROV_KIND_BUFFER = 23,     /* "buffer": record only, the BufferDesc of decoded data */
    /* Kinds of structured records (TROV_LAYOUT_STRUCTURE) only: */
    TROV_KIND_RECORD = 24,     /* "record": a nested record of `width` bytes at `offset`, its
                                  fields one after another on the wire; TROV_DescribeNested
                                  gives its layout */
    TROV_KIND_RECORDS = 25,    /* "records": counted nested records: the count in countField,
                                  the elements one record apart (TROV_DescribeNested gives the
                                  element's layout and its recordBytes the stride). With a
                                  count above 0 the pointer to them is at dataOffset; with a
                                  count of 0 the decoder stores a null pointer at `offset`,
                                  right behind what came before, and `width` covers both */
    TROV_KIND_OPTIONS = 26,    /* "options": a TrovOptionList (u8 count, the options' pointer
                                  at dataOffset), on the wire the u8 count, then per option
                                  u8 kind, u8 length and the value (trovEncode_OptionParam) */
    TROV_KIND_ENTRY = 27,      /* "entry": an AttributeEntry: u16 identifier, u16 length, the
                                  value's pointer at dataOffset; on the wire u16 identifier,
                                  u16 length and the value as the codec of that attribute at
                                  version 0 writes it in array form (a decoded entry with
                                  such a codec keeps length 0), or, without a codec, `length`
                                  bytes as they stand */
    /* Kinds of the event lists and the method invocation (TROV_LAYOUT_EVENT_LIST,
       TROV_LAYOUT_METHOD_CALL) only: */
    TROV_KIND_EVENTS = 28,     /* "events": counted event entries: the count in countField, the
                                  entries' pointer at dataOffset (= offset), the entries one
                                  entry apart. TROV_DescribeNested gives the entry's layout
                                  (EventEntry or EventBriefEntry; its recordBytes the stride):
                                  the event's head in wire order, then its TROV_KIND_EVENT
                                  field. On the wire the entries follow each other, each its
                                  head and the event's body */
    TROV_KIND_EVENT = 29,      /* "event": in an entry, the pointer at dataOffset (= offset) to
                                  the decoded event, the record TROV_DescribeEvent gives for
                                  the event code held by field countField; on the wire the
                                  event's body, behind the entry's head */
    TROV_KIND_PARAMS = 30      /* "params": a method's parameters, up to the end of the body:
                                  the record TROV_DescribeMethod gives for the method code
                                  held by field countField (the request's side on a request,
                                  the reply's on a reply), or the bytes as they stand for a
                                  raw method. In the record the pointer at dataOffset
                                  (= offset) and, 8 bytes behind it, the u16 parameter
                                  length (MethodBody.paramsLength: what the method's codec
                                  takes on encoding and reports on decoding; the byte count
                                  of raw parameters); `width` covers both */
};

/* What a layout is (TrovLayoutInfo.form). */
enum {
    TROV_LAYOUT_FIELDS = 0,        /* the fields below are the whole record */
    TROV_LAYOUT_NONE = 1,          /* nothing travels: a body without a reply */
    TROV_LAYOUT_EVENT_LIST = 2,    /* an event list: EventListBody or ShortEventListBody:
                                      the body head (its event count a TROV_KIND_COUNT
                                      field), the entries (TROV_KIND_EVENTS) and the
                                      buffer; a reply only (TrovReplyEncode.h writes
                                      it back) */
    TROV_LAYOUT_METHOD_CALL = 3,   /* a method invocation: MethodBody: the u32 and the
                                      method code, the parameters (TROV_KIND_PARAMS) and
                                      the buffer */
    TROV_LAYOUT_STRUCTURE = 4,     /* a structured record: scalars at their natural
                                      alignment, nested records, and counted data whose
                                      count is the count field named by countField; the
                                      fields follow each other on the wire with no padding
                                      (see the TROV_KIND_RECORD to TROV_KIND_ENTRY kinds) */
    TROV_LAYOUT_SELECTOR = 5,      /* a u8 selector (the one field), then the selected
                                      variant's record at offset 8: TROV_DescribeVariant */
    TROV_LAYOUT_RAW = 6            /* opaque bytes, as many as the body carries */
};

/* The record offset value that means "no pointer". */
#define TROV_NO_DATA 0xFFFFu

/* One field of a layout, in wire order. */
typedef struct TrovFieldInfo {
    /* The field's name: the public record's member name where the record is a
     * public type; otherwise value<i> (scalars and typed values), string<i>
     * (counted bytes and characters), bytes<i> (byte blocks), array<i>
     * (counted numbers and items), count<i>, reserved<i>, option<i>,
     * attributes<i>, where i is the field's index in the layout. */
    const char *name;
    /* The kind's name (several kinds share a name, kindId tells them apart). */
    const char *kind;
    uint8_t kindId;           /* TROV_KIND_* */
    uint8_t countBytes;       /* wire width of the count prefix (1 or 2); 0 without one,
                                 or when a count field holds it; for TROV_KIND_COUNT the
                                 count's width */
    uint8_t countRecordBytes; /* record width of the count at the start of a counted
                                 field's 16-byte head (may be wider than countBytes);
                                 0 when the field has no head count. For TROV_KIND_COUNT
                                 in a structure, the bytes at the field's start that the
                                 count is read from (1 or 2: counts are at most 16 bits,
                                 so a 4-byte count field counts by its first two bytes
                                 in memory); 0 elsewhere: the whole field */
    uint8_t reserved;         /* 0 */
    uint16_t offset;          /* record offset of the field (of its head, of an identifier
                                 or data type) */
    uint16_t width;           /* record bytes of the field; the block length for bytes */
    uint16_t dataOffset;      /* record offset of the data pointer; TROV_NO_DATA for none */
    int16_t countField;       /* index of the field holding this field's count, or -1;
                                 for TROV_KIND_EVENT and TROV_KIND_PARAMS the index of
                                 the u16 field holding the code that picks the record */
} TrovFieldInfo;

/* A layout: the record and its fields. */
typedef struct TrovLayoutInfo {
    const char *record;          /* the public record type's name: a body record's
                                    (TrovCodec.h), a structured record's (TrovRecords.h);
                                    NULL for the others */
    uint16_t recordBytes;        /* the record's size (its fixed part; decoded variable
                                    data follows it or goes to its buffer) */
    uint16_t fieldCount;
    const TrovFieldInfo *fields; /* fieldCount fields; NULL when fieldCount is 0 */
    uint8_t form;                /* TROV_LAYOUT_* */
    uint8_t arrayCountBytes;     /* attribute and typed values: the count prefix of the
                                    array form (1 or 2), whose elements are each one record
                                    of this layout; 0: scalar form only. 0 elsewhere. */
    uint16_t wireFixed;          /* wire bytes of the fields with every count 0 and no
                                    values: for an event list its head, for a method
                                    invocation the bytes ahead of the parameters (0 for
                                    NONE and RAW) */
} TrovLayoutInfo;

/* Results of every function: 0 found (out filled); 1 out NULL; the "no codec"
 * result of the family for codes the codec tables do not know (and for every
 * code before TROV_InitCoder). out is left alone unless the result is 0. */

/* The request (request non-zero) or reply record of function-unit body
 * `code`. No request layout for a decode-only body: 9. */
TROV_API TrovResult TROV_DescribeBody(uint16_t code, uint8_t version, int request,
                                      TrovLayoutInfo *out);

/* The record of function-unit event `code`. Unknown: 12. */
TROV_API TrovResult TROV_DescribeEvent(uint16_t code, uint8_t version, TrovLayoutInfo *out);

/* The parameter record of method `code` on a request (request non-zero) or a
 * reply. Codes of 0x2000 and above without a method of their own are raw
 * bytes (TROV_LAYOUT_RAW). Unknown: 11. */
TROV_API TrovResult TROV_DescribeMethod(uint16_t code, uint8_t version, int request,
                                        TrovLayoutInfo *out);

/* One element of the value of attribute `id`. Unknown: 10. */
TROV_API TrovResult TROV_DescribeAttribute(uint16_t id, uint8_t version, TrovLayoutInfo *out);

/* One element of a value of data type `code`. Unknown: 13. */
TROV_API TrovResult TROV_DescribeDataType(uint16_t code, uint8_t version, TrovLayoutInfo *out);

/* The record inside a TROV_KIND_RECORD or TROV_KIND_RECORDS field, or the
 * entry of a TROV_KIND_EVENTS field. `field`
 * must point into the fields of a description the functions above (or this
 * one) gave; the nested layout's recordBytes is the room the field gives the
 * record (the stride of an array's elements). 1: a null argument; 4: not such
 * a field of this library. */
TROV_API TrovResult TROV_DescribeNested(const TrovFieldInfo *field, TrovLayoutInfo *out);

/* The whole record of a TROV_LAYOUT_SELECTOR value whose selector byte is
 * `selector`: the selector field at offset 0, then the variant's fields at
 * their record offsets (from 8 on); on the wire the selector byte and the
 * variant's fields. `layout` is a selector description the functions above
 * gave. 1: a null argument; 4: not a selector layout of this library, or a
 * selector the value type does not have (it has 1 to 4). */
TROV_API TrovResult TROV_DescribeVariant(const TrovLayoutInfo *layout, uint8_t selector,
                                         TrovLayoutInfo *out);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVLAYOUT_H */
