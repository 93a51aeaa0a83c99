/*
 * TrovCodec.h - the exported interface of the TROV codec library.
 *
 * TROV is a big-endian binary request/reply and event protocol. Every packet
 * is a 20-byte header followed by a body whose layout the header's 16-bit body
 * code selects. This library converts between in-memory records and those
 * packets. It performs no I/O, starts no threads and keeps no state beyond the
 * dispatch-table pointers that TROV_InitCoder sets.
 *
 * Plain C; usable from C and C++. All records use fixed-width types and
 * natural alignment, so their layout is identical on 64-bit Linux and 64-bit
 * Windows.
 *
 * Memory: whatever the library allocates into a place the caller can see (a
 * packet, a body record, a block of decoded items) belongs to the caller, who
 * releases it with trovFree. A call that fails releases what it allocated.
 *
 * Threads: call TROV_InitCoder once before sharing the library between
 * threads; afterwards every function may be called concurrently.
 */
#ifndef TROVCODEC_H
#define TROVCODEC_H

#include <stdint.h>

#if defined(_WIN32)
#  if defined(TROV_STATIC)
#    define TROV_API
#  elif defined(TROV_BUILDING)
#    define TROV_API __declspec(dllexport)
#  else
#    define TROV_API __declspec(dllimport)
#  endif
#else
#  if defined(TROV_STATIC)
#    define TROV_API
#  else
#    define TROV_API __attribute__((visibility("default")))
#  endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------- results */

/* Every operation returns one of these as a uint32_t; 0 is success. A codec
 * that calls another passes a non-zero inner result upward unchanged. */
typedef uint32_t TrovResult;

enum {
    TROV_RESULT_OK = 0,                /* success (also: a body the decoder skips) */
    TROV_RESULT_NULL_ARGUMENT = 1,     /* null pointer, null buffer, or a required count/flag of 0;
                                          on encoding, also a selector byte outside 1 to 4 */
    TROV_RESULT_BAD_PACKET = 2,        /* fewer bytes than a header, or not the protocol mark */
    TROV_RESULT_BAD_FIELD_INDEX = 3,   /* header field index outside 0..9 */
    TROV_RESULT_BAD_VALUE = 4,         /* a type or selector value read from a packet outside its
                                          defined set */
    TROV_RESULT_SHORT_INPUT = 5,       /* the packet ends before the item, or a length disagrees */
    TROV_RESULT_NO_MEMORY = 6,         /* an allocation or reallocation failed */
    TROV_RESULT_BUFFER_TOO_SMALL = 7,  /* the caller's output buffer is too small and may not grow */
    TROV_RESULT_NO_HEADER_CODEC = 8,   /* no header codec for the packet's version byte */
    TROV_RESULT_NO_BODY_CODEC = 9,     /* no body codec for the body code and version */
    TROV_RESULT_NO_ATTRIBUTE_CODEC = 10, /* no attribute codec for an identifier and version */
    TROV_RESULT_NO_METHOD_CODEC = 11,  /* no method codec and the method code is below 0x2000 */
    TROV_RESULT_NO_EVENT_CODEC = 12,   /* no event codec for an event code and version */
    TROV_RESULT_NO_DATA_TYPE_CODEC = 13 /* no data-type codec for a data-type code and version */
};

/* ---------------------------------------------------------------- records */

/* The protocol mark that opens every packet the body decoders accept. */
#define TROV_PROTOCOL_MARK 0xA7E5u
/* The protocol version of the built-in tables, and the header length. */
#define TROV_PROTOCOL_VERSION 0x10u
#define TROV_HEADER_LENGTH 20u

/* Header flag bits (byte 3 of the header). */
#define TROV_FLAG_EXTENSION16 0x01u /* bytes 18-19 carry a 16-bit extension */
#define TROV_FLAG_EXTENSION8 0x08u  /* byte 18 carries an 8-bit extension (bit 0 clear) */

/* A position in a packet buffer and the number of bytes from there to the
 * buffer's end. The library copies cursors it is given and never advances a
 * caller's cursor unless a function says so. */
typedef struct PacketCursor {
    uint8_t *position;
    uint32_t remaining;
} PacketCursor;

/* The decoded 20-byte packet header. version and flags occupy 16-bit slots of
 * which only the low byte is read and written, so that code is the record's
 * fourth 16-bit slot. Field indices (for the Get/Set functions) are given on
 * the right; index 9 is the low byte of extension. */
typedef struct HeaderInfo {
    uint16_t mark;       /* 0: protocol mark, bytes 0-1 */
    uint16_t version;    /* 1: protocol version, byte 2 (low byte used) */
    uint16_t flags;      /* 2: flags, byte 3 (low byte used) */
    uint16_t code;       /* 3: body code, bytes 4-5 */
    uint16_t value4;     /* 4: carried unchanged, bytes 6-7 */
    uint16_t bodyLength; /* 5: body bytes after the header, bytes 8-9 */
    uint32_t value6;     /* 6: carried unchanged, bytes 10-13 */
    uint32_t value7;     /* 7: carried unchanged, bytes 14-17 */
    uint16_t extension;  /* 8: bytes 18-19 (the body decoder's unit type); 9: byte 18 */
} HeaderInfo;

/* Header field indices. */
enum {
    TROV_FIELD_MARK = 0,
    TROV_FIELD_VERSION = 1,
    TROV_FIELD_FLAGS = 2,
    TROV_FIELD_CODE = 3,
    TROV_FIELD_VALUE4 = 4,
    TROV_FIELD_BODY_LENGTH = 5,
    TROV_FIELD_VALUE6 = 6,
    TROV_FIELD_VALUE7 = 7,
    TROV_FIELD_EXTENSION = 8,
    TROV_FIELD_EXTENSION_BYTE = 9
};

/* Buffer flag bits. */
#define TROV_BUFFER_GROWABLE 0x02u /* the library may grow the buffer (it must come from trovMalloc) */
#define TROV_BUFFER_GROWN 0x04u    /* set by the library when it grew the buffer */
#define TROV_BUFFER_ALLOCATED 0x0Bu /* the flags of a buffer that the library allocated */

/* A caller's description of an output buffer for decoded variable data. */
typedef struct BufferDesc {
    void *data;        /* the buffer, or NULL to let the library allocate it */
    uint16_t capacity; /* its size in bytes; must be 0 when data is NULL */
    uint8_t flags;     /* TROV_BUFFER_* bits */
} BufferDesc;

/* What a body decode fills. Set record to NULL to have the library allocate
 * the body record (the caller then frees it with trovFree), or point it at a
 * zeroed record of the body's type. buffer names the managed buffer that the
 * library allocated during the call, if any. type receives the packet's unit
 * type (header extension) and is set to 6 when decoding fails. */
typedef struct DecodeResult {
    void *record;
    BufferDesc *buffer;
    uint16_t type;
} DecodeResult;

/* The output area of an encode: set data to NULL to have the library allocate
 * the packet (freed by the caller with trovFree), or give a buffer and its
 * capacity in length. On success length holds the packet's total length. */
typedef struct EncodeOutput {
    uint8_t *data;
    uint32_t length;
} EncodeOutput;

/* ------------------------------------------------------- attribute values */

/* Attribute values pass in one of two forms, chosen by an isArray flag:
 * scalar form (the value's record at the given address) or array form (the
 * address holds an AttributeArrayHeader and a count prefix precedes the
 * elements on the wire). Types with a one-byte count prefix use only the
 * first byte of `count` (its low byte on these little-endian hosts). */
typedef struct AttributeArrayHeader {
    uint16_t count;
    void *elements; /* the first element record; NULL when count is 0 */
} AttributeArrayHeader;

/* A counted byte or character string in a decoded record. Strings with a
 * one-byte length use only the first byte of `length`. Decoded data is not
 * terminated, but one spare byte follows character strings. */
typedef struct OctetString {
    uint16_t length;
    uint8_t *data; /* NULL when length is 0 */
} OctetString;

/* One attribute of an attribute list: the identifier, the value's length on
 * the wire (0 when a codec decoded the value; ignored on encoding) and the
 * value's record. */
typedef struct AttributeEntry {
    uint16_t id;
    uint16_t length;
    void *value;
} AttributeEntry;

/* A list of attributes: a u16 count on the wire, then identifier, length and
 * value per attribute. */
typedef struct AttributeList {
    uint16_t count;
    AttributeEntry *entries; /* NULL when count is 0 */
} AttributeList;

/* ------------------------------------------------------------------ events */

/* One event of a body with the long event framing: the event's 13-byte head
 * and its decoded record. */
typedef struct EventEntry {
    uint16_t field1;
    uint32_t field2;
    uint32_t field3;
    uint8_t field4;
    uint16_t eventCode;
    void *body; /* the decoded event record */
} EventEntry;

/* One event of a body with the short event framing. */
typedef struct EventBriefEntry {
    uint16_t eventCode;
    uint8_t field2;
    void *body;
} EventBriefEntry;

/* A body carrying events in the long framing: its leading fields, the event
 * count, the entries (then the event records) in one managed block. */
typedef struct EventListBody {
    uint32_t value0;
    uint8_t value1;
    uint16_t value2;
    uint16_t value3;
    uint8_t value4;
    uint16_t count;
    EventEntry *entries; /* NULL when count is 0 */
    BufferDesc buffer;   /* the block holding entries and event records */
} EventListBody;

/* A body carrying events in the short framing. */
typedef struct ShortEventListBody {
    uint32_t value0;
    uint8_t count;
    EventBriefEntry *entries; /* NULL when count is 0 */
    BufferDesc buffer;
} ShortEventListBody;

/* The body records of the function-unit bodies. */
#ifdef __cplusplus
} /* extern "C" */
#endif
#include "TrovBodies.h"
#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------- initialisation */

/* Points the library's dispatch tables at the built-in codec tables. Call it
 * once before any body, attribute, event, method or data-type operation;
 * header operations work without it. May be called any number of times.
 * Returns 1. */
TROV_API int32_t TROV_InitCoder(void);

/* ------------------------------------------------------------------ header */

/* Copies header field `index` of `info` into `out` (field width: u16 for 0, 3,
 * 4, 5, 8; u8 for 1, 2, 9; u32 for 6, 7). Indices 0 and 1 need no header
 * codec. Results: 0; 1 info or out NULL; 8 no header codec for info->version;
 * 3 index above 9. */
TROV_API TrovResult TROV_GetFromInfo(uint32_t index, const HeaderInfo *info, void *out);

/* Stores `value` (the field's width, as above) into header field `index` of
 * `info`. Index 9 sets extension to the byte value (high byte 0). Results as
 * TROV_GetFromInfo. */
TROV_API TrovResult TROV_SetToInfo(uint32_t index, HeaderInfo *info, const void *value);

/* Reads header field `index` straight from the packet at cursor->position
 * (big-endian). The cursor is not advanced; the header codec is chosen by the
 * packet's byte 2. Results: 0; 1 cursor, its position or out NULL; 8 no
 * header codec for byte 2; 3 index above 9; 2 the cursor holds fewer bytes
 * than the field's end (the library never reads past the cursor). */
TROV_API TrovResult TROV_GetFromPacket(uint32_t index, const PacketCursor *cursor, void *out);

/* Writes header field `index` into the packet at cursor->position. Index 9
 * writes byte 18 only. Write the version (index 1) first: the header codec is
 * chosen by byte 2. Results as TROV_GetFromPacket, but 7 instead of 2 when
 * the cursor holds fewer bytes than the field's end. */
TROV_API TrovResult TROV_SetToPacket(uint32_t index, const PacketCursor *cursor, const void *value);

/* Writes the 20-byte header at cursor->position; the cursor is not advanced.
 * Bytes 18-19: extension big-endian when flags bit 0 is set; else, with bit 3,
 * its low byte then 0; else zeros. Results: 0; 1 NULL argument or position;
 * 8 no header codec for info->version; 7 fewer than 20 bytes remain. */
TROV_API TrovResult TROV_EncodeHeader(const HeaderInfo *info, const PacketCursor *cursor);

/* Fills `info` from the 20 bytes at cursor->position; the cursor is not
 * advanced and the mark is not checked. When flags bit 0 is clear, bytes
 * 18-19 are taken in wire order as a little-endian value (so a byte-form
 * extension reads back as the byte). Results: 0; 1 NULL argument or position;
 * 2 fewer than 3 bytes; 8 no header codec for byte 2; 2 fewer than 20 bytes. */
TROV_API TrovResult TROV_DecodeHeader(HeaderInfo *info, const PacketCursor *cursor);

/* ------------------------------------------------------------------ bodies */

/* Builds a function-unit request packet: header from `info` (its bodyLength is
 * set by the library, and keeps the value even if a later step fails) and
 * body from `record`, the body record of info->code, into `output`. Nothing
 * is ever written past the packet the library allocates or the `length`
 * bytes of a caller's buffer, whatever the record holds.
 * Results: 0; 1 NULL argument, or a NULL pointer in the record behind a
 * non-zero count or length; 5 a body longer than 65535 bytes, which the
 * header's 16-bit bodyLength cannot frame (info->bodyLength then holds the
 * protocol's 16-bit figure, the true length modulo 65536, and nothing is
 * written or allocated); 8 no header codec; 9 no body codec for
 * the code and version; otherwise the body codec's result (6 allocation
 * failed, 7 caller's buffer shorter than the packet, 10 or 11 no attribute
 * or method codec, ...). */
TROV_API TrovResult TROV_EncodeFU(HeaderInfo *info, const void *record, EncodeOutput *output);

/* Decodes the function-unit packet at `cursor` (not advanced) into `info` and
 * `result`. The packet must start with the protocol mark. result->type gets
 * the unit type (header extension); bodies of unit types and codes that the
 * decoder does not handle are skipped with result 0. The body never extends
 * past the bytes the cursor holds. `context` is passed to the body codec.
 * Results: 0; 1 NULL argument or position; 2 not the protocol mark or fewer
 * than 20 bytes; 8 no header codec; 9 no body codec; otherwise the body
 * codec's result, with result->type set to 6 and its allocations released. */
TROV_API TrovResult TROV_DecodeFU(HeaderInfo *info, DecodeResult *result,
                                  const PacketCursor *cursor, void *context);

/* As TROV_EncodeFU for the FP body family (which has no codecs: 9). */
TROV_API TrovResult TROV_EncodeFP(HeaderInfo *info, const void *record, EncodeOutput *output,
                                  void *context);

/* As TROV_DecodeFU for the FP body family, without skip rules (9 for every
 * well-formed packet: the family has no codecs). */
TROV_API TrovResult TROV_DecodeFP(HeaderInfo *info, DecodeResult *result,
                                  const PacketCursor *cursor);

/* Stores in *size the packet bytes that attribute `attributeId` with value
 * `value` takes (isArray non-zero: the value is an array header and a count
 * prefix is counted). The codec is chosen by info->version. The size is the
 * protocol's 16-bit figure: a value longer than 65535 bytes wraps (the
 * encoders refuse such a value; lists and arrays in it are sized only until
 * it passes 65535 bytes, so the figure is then that of the part sized,
 * however often the record reuses a value). Pointers the size does not depend on are
 * not followed. Results: 0; 1 NULL argument, or a NULL pointer the size
 * depends on; 10 no attribute codec; otherwise the codec's result. */
TROV_API TrovResult TROV_GetAttributePacketSize(const HeaderInfo *info, uint16_t attributeId,
                                                const void *value, uint8_t isArray,
                                                uint16_t *size);

/* Size query for FP events. The FP family has no event codecs, so every
 * well-formed call returns 12. Results: 1 NULL argument; 12. */
TROV_API TrovResult TROV_GetEventPacketSize(const HeaderInfo *info, uint16_t eventCode,
                                            const void *event, uint16_t *size);

/* ---------------------------------------------------- extended event data */

/* Some events carry, in their byte string, a list of typed items: the
 * extended event data. Without a schema the data describes itself: a u8 item
 * count, then per item a u16 attribute identifier, a u8 length and the value
 * as the attribute's codec writes it (array form). With a schema the data is
 * the values alone, one after another, as the schema's row for the event code
 * lists them. */

/* One item of a schema row: kind 99 names a data-type code; any other kind
 * names an attribute identifier. */
#define TROV_EXTEND_KIND_DATA_TYPE 99u
typedef struct EventExtendItemSpec {
    uint16_t kind;
    uint16_t identifier;
} EventExtendItemSpec;

typedef struct EventExtendSchemaRow {
    uint16_t eventCode;
    uint8_t itemCount;
    const EventExtendItemSpec *items;
} EventExtendSchemaRow;

typedef struct EventExtendSchema {
    uint16_t count;
    const EventExtendSchemaRow *rows;
} EventExtendSchema;

/* One decoded item: the schema's kind (0 without a schema), the identifier
 * (0 for a raw item) and the decoded value's record. */
typedef struct EventExtendEntry {
    uint16_t kind;
    uint16_t identifier;
    void *value;
} EventExtendEntry;

typedef struct EventExtendList {
    uint8_t count;
    EventExtendEntry *entries; /* NULL until decoding succeeds, and when count is 0 */
} EventExtendList;

/* An item without a schema whose identifier has no attribute codec is kept
 * raw: this record, with the bytes at its offset 24. */
typedef struct EventExtendRawItem {
    uint16_t identifier;
    uint8_t length;
    uint8_t *data;
    uint8_t reserved[8];
} EventExtendRawItem;

/* Decodes the items in `data` (its length is a u16 for event code 0x30, its
 * first byte otherwise) into `list`, their records in the memory of `buffer`
 * (prepared as for any managed buffer: allocated when its data is NULL, and
 * then owned by the caller). The first schema row for `eventCode` applies;
 * with none (or no schema) the data describes itself. Results: 0; 1 a NULL
 * argument or data pointer, a zero version or event code, or a schema with
 * rows or items missing; 5 empty self-describing data or an item head cut
 * short; 6 allocation failed; 10, 13 an identifier or data type without a
 * codec in a schema; a value codec's or the buffer's result. */
TROV_API TrovResult TROV_DecodeEventExtend(EventExtendList *list, const OctetString *data,
                                           uint16_t eventCode, const EventExtendSchema *schema,
                                           uint8_t version, BufferDesc *buffer);

/* Encodes `list` into `data`, whose bytes lie in the memory of `buffer`. With
 * a schema, its row for `eventCode` must match the list item by item.
 * Sizes are the true ones: nothing is written past the buffer.
 * Results: 0; 1 a NULL argument, a zero version or event code, a list or
 * schema that does not match, a NULL value or a NULL pointer inside a value
 * behind a non-zero count or length; 5 a value above 255 bytes, or data
 * above 255 bytes for any event code but 0x30 (above 65535 for 0x30; where
 * the protocol's 16-bit total wraps, data->length keeps that figure and
 * nothing is written); 6
 * allocation failed; 10, 13 an identifier or data type without a codec (raw
 * items cannot be encoded); a value codec's or the buffer's result. */
TROV_API TrovResult TROV_EncodeEventExtend(const EventExtendList *list, OctetString *data,
                                           uint16_t eventCode, const EventExtendSchema *schema,
                                           uint8_t version, BufferDesc *buffer);

/* ------------------------------------------------------- option parameters */

/* An option parameter on the wire: u8 kind, u8 length, value. Kinds: 0 no
 * value; 1, 2 u32; 3, 4 u16; 5 u32 then u16; 6..255 raw bytes. */

/* Writes kind, length and value at the cursor and advances it; kinds above 5
 * write the kind byte alone. Writes nothing when the cursor or its position is
 * NULL, a value is needed and `value` is NULL, or fewer bytes remain than the
 * option needs. */
TROV_API void trovEncode_OptionParam(PacketCursor *cursor, uint8_t kind, const void *value);

/* Stores in *size the value bytes of `kind` (0, 4, 2 or 6; without the kind
 * and length bytes) and returns 0; kinds above 5: size 0, returns 1. The
 * second argument is ignored. Returns 1 when size is NULL. */
TROV_API TrovResult trovEncCalc_OptionParam(uint8_t kind, const void *unused, uint8_t *size);

/* Reads the value of an option whose kind and length the caller has read;
 * the cursor stands on the value and is advanced. Kinds 0 to 5 read the
 * kind's fixed size whatever `length` says; other kinds copy `length` bytes.
 * Returns the address after the value rounded up to a multiple of 8, or NULL
 * when the cursor or its position is NULL or fewer bytes remain than the
 * value (nothing is read then). */
TROV_API void *trovDecode_OptionParam(uint8_t kind, uint8_t length, void *destination,
                                      PacketCursor *cursor);

/* The record bytes the value of an option needs: 0 for kind 0, 8 for kinds
 * 1 to 5, `length` for other kinds. */
TROV_API uint32_t trovDecCalc_OptionParam(uint8_t kind, uint8_t length);

/* ------------------------------------------------------------------ memory */

/* Allocates `size` bytes (not zeroed) from the library's heap; NULL on
 * failure. Use it for buffers the library may grow. */
TROV_API void *trovMalloc(uint32_t size);

/* Releases memory that the library or trovMalloc allocated. Returns NULL on
 * success (also for NULL), or `p` itself when the heap refuses it. */
TROV_API void *trovFree(void *p);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVCODEC_H */
