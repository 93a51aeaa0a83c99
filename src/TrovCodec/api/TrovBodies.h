/*
 * TrovBodies.h - the body records of the function-unit bodies: what a host
 * fills to encode a request and reads after decoding a reply. Included by
 * TrovCodec.h; plain C. Multi-byte fields hold host-order values; the wire
 * carries them big-endian.
 */
#ifndef TROVBODIES_H
#define TROVBODIES_H

#ifndef TROVCODEC_H
#error "include TrovCodec.h, which includes this header"
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Body 0x1d, a method invocation: a u32, the u16 method code and the
 * method's parameters. On encoding `params` points at the method's parameter
 * record and `paramsLength` is handed to the method's codec (for raw methods,
 * 0x2000 and above without a codec of their own, it is the byte count). On
 * decoding `params` points into `buffer` and `paramsLength` is what the
 * method's codec reported. */
typedef struct MethodBody {
    uint32_t value0;
    uint16_t method;
    void *params;
    uint16_t paramsLength;
    BufferDesc buffer;
} MethodBody;

/* ------------------------------------------------ field-list body records
 *
 * The bodies below are sequences of big-endian fields. A record holds them in
 * wire order at their natural alignment and is named after its fields: Byte
 * u8, U16, U32, BytesN a block of N raw bytes, String a byte string with a u8
 * length, LongString one with a u16 length, Block the bytes up to the end of
 * the body (no length on the wire), Attribute a u16 attribute identifier and
 * the value (array form) that its codec writes; Pair, Triple and Quad repeat
 * the field before. Strings and blocks are OctetString values (a u8-counted
 * string uses only the first byte of `length` when encoding); an attribute is
 * `id` and a pointer `value` to the value's record. On decoding, all variable
 * data lands in the record's `buffer`, one item after another at multiples
 * of 8, and the pointers point into it. docs/bodies.md lists which body code
 * uses which record. */

/* A body without fields: nothing is read from it. */
typedef struct EmptyBody {
    uint8_t reserved;
} EmptyBody;

/* Request of 0x12, 0x15, 0x18, 0x32; reply of 0x12, 0x15, 0x18, 0x32: u16 attribute id + value. */
typedef struct AttributeBody {
    uint16_t id;
    void *value;
    BufferDesc buffer;
} AttributeBody;

/* Request of 0x01: bytes to the end of the body. */
typedef struct BlockBody {
    OctetString block;
    BufferDesc buffer;
} BlockBody;

/* Reply of 0x6c, 0x6e: u16 length + bytes. */
typedef struct LongStringBody {
    OctetString string0;
    BufferDesc buffer;
} LongStringBody;

/* Request of 0x1a; reply of 0x1b: u8 length + bytes. */
typedef struct StringBody {
    OctetString string0;
    BufferDesc buffer;
} StringBody;

/* Request of 0x2e; reply of 0x66: u16. */
typedef struct U16Body {
    uint16_t value0;
} U16Body;

/* Request of 0x0b, 0x14, 0x17, 0x1f, 0x20, 0x21, 0x23, 0x24, 0x26, 0x27, 0x28, 0x29, 0x30, 0x31, 0x4e, 0x4f, 0x51, 0x7b; reply of 0x0b, 0x0d, 0x0e, 0x14, 0x16, 0x17, 0x19, 0x1f, 0x20, 0x21, 0x23, 0x26, 0x27, 0x28, 0x29, 0x2e, 0x30, 0x33, 0x40, 0x4e, 0x4f, 0x51, 0x5c, 0x74, 0x7b, 0x82, 0x84: u32. */
typedef struct U32Body {
    uint32_t value0;
} U32Body;

/* Request of 0x13; reply of 0x01: u8. */
typedef struct ByteBody {
    uint8_t value0;
} ByteBody;

/* Request of 0x08; reply of 0x35: u16, u16 attribute id + value. */
typedef struct U16AttributeBody {
    uint16_t value0;
    uint16_t id;
    void *value;
    BufferDesc buffer;
} U16AttributeBody;

/* Request of 0x52: u16, 12 bytes. */
typedef struct U16Bytes12Body {
    uint16_t value0;
    uint8_t bytes1[12];
} U16Bytes12Body;

/* Request of 0x72: u16, 16 bytes. */
typedef struct U16Bytes16Body {
    uint16_t value0;
    uint8_t bytes1[16];
} U16Bytes16Body;

/* Request of 0x54; reply of 0x2b: u16, u16 length + bytes. */
typedef struct U16LongStringBody {
    uint16_t value0;
    OctetString string1;
    BufferDesc buffer;
} U16LongStringBody;

/* Request of 0x1b: u16, u8 length + bytes. */
typedef struct U16StringBody {
    uint16_t value0;
    OctetString string1;
    BufferDesc buffer;
} U16StringBody;

/* Reply of 0x11: u16, u16. */
typedef struct U16PairBody {
    uint16_t value0;
    uint16_t value1;
} U16PairBody;

/* Request of 0x2b: u16, u32. */
typedef struct U16U32Body {
    uint16_t value0;
    uint32_t value1;
} U16U32Body;

/* Reply of 0x65: u16, u8. */
typedef struct U16ByteBody {
    uint16_t value0;
    uint8_t value1;
} U16ByteBody;

/* Request of 0x03; reply of 0x03, 0x04, 0x56, 0x57, 0x69: u32, u16 attribute id + value. */
typedef struct U32AttributeBody {
    uint32_t value0;
    uint16_t id;
    void *value;
    BufferDesc buffer;
} U32AttributeBody;

/* Reply of 0x31: u32, bytes to the end of the body. */
typedef struct U32BlockBody {
    uint32_t value0;
    OctetString block;
    BufferDesc buffer;
} U32BlockBody;

/* Request of 0x09: u32, u16 length + bytes. */
typedef struct U32LongStringBody {
    uint32_t value0;
    OctetString string1;
    BufferDesc buffer;
} U32LongStringBody;

/* Request of 0x06: u32, u8 length + bytes. */
typedef struct U32StringBody {
    uint32_t value0;
    OctetString string1;
    BufferDesc buffer;
} U32StringBody;

/* Request of 0x04: u32, u16. */
typedef struct U32U16Body {
    uint32_t value0;
    uint16_t value1;
} U32U16Body;

/* Request of 0x0d, 0x22, 0x46, 0x50, 0x5c, 0x82, 0x85; reply of 0x22, 0x24, 0x25, 0x4c, 0x71, 0x75, 0x85: u32, u32. */
typedef struct U32PairBody {
    uint32_t value0;
    uint32_t value1;
} U32PairBody;

/* Request of 0x25, 0x2a, 0x77, 0x7a; reply of 0x0c, 0x2a, 0x46, 0x47, 0x77, 0x7a: u32, u8. */
typedef struct U32ByteBody {
    uint32_t value0;
    uint8_t value1;
} U32ByteBody;

/* Request of 0x3f: u8, u16 attribute id + value. */
typedef struct ByteAttributeBody {
    uint8_t value0;
    uint16_t id;
    void *value;
    BufferDesc buffer;
} ByteAttributeBody;

/* Reply of 0x6d: u8, bytes to the end of the body. */
typedef struct ByteBlockBody {
    uint8_t value0;
    OctetString block;
    BufferDesc buffer;
} ByteBlockBody;

/* Request of 0x5f; reply of 0x3f: u8, u16 length + bytes. */
typedef struct ByteLongStringBody {
    uint8_t value0;
    OctetString string1;
    BufferDesc buffer;
} ByteLongStringBody;

/* Request of 0x3a; reply of 0x76: u8, u8 length + bytes. */
typedef struct ByteStringBody {
    uint8_t value0;
    OctetString string1;
    BufferDesc buffer;
} ByteStringBody;

/* Reply of 0x13, 0x4a: u8, u32. */
typedef struct ByteU32Body {
    uint8_t value0;
    uint32_t value1;
} ByteU32Body;

/* Request of 0x6e: u16, u16 length + bytes, u8. */
typedef struct U16LongStringByteBody {
    uint16_t value0;
    OctetString string1;
    uint8_t value2;
    BufferDesc buffer;
} U16LongStringByteBody;

/* Request of 0x6a: u16, u16, u16 attribute id + value. */
typedef struct U16PairAttributeBody {
    uint16_t value0;
    uint16_t value1;
    uint16_t id;
    void *value;
    BufferDesc buffer;
} U16PairAttributeBody;

/* Request of 0x68, 0x73: u16, u16, u16 length + bytes. */
typedef struct U16PairLongStringBody {
    uint16_t value0;
    uint16_t value1;
    OctetString string2;
    BufferDesc buffer;
} U16PairLongStringBody;

/* Request of 0x44: u16, u16, u8 length + bytes. */
typedef struct U16PairStringBody {
    uint16_t value0;
    uint16_t value1;
    OctetString string2;
    BufferDesc buffer;
} U16PairStringBody;

/* Reply of 0x62: u16, u16, u32. */
typedef struct U16PairU32Body {
    uint16_t value0;
    uint16_t value1;
    uint32_t value2;
} U16PairU32Body;

/* Request of 0x7d: u16, u32, u16 attribute id + value. */
typedef struct U16U32AttributeBody {
    uint16_t value0;
    uint32_t value1;
    uint16_t id;
    void *value;
    BufferDesc buffer;
} U16U32AttributeBody;

/* Request of 0x5d: u16, u32, u8 length + bytes. */
typedef struct U16U32StringBody {
    uint16_t value0;
    uint32_t value1;
    OctetString string2;
    BufferDesc buffer;
} U16U32StringBody;

/* Reply of 0x49: u16, u32, u32. */
typedef struct U16U32PairBody {
    uint16_t value0;
    uint32_t value1;
    uint32_t value2;
} U16U32PairBody;

/* Request of 0x66: u16, u8, u8 length + bytes. */
typedef struct U16ByteStringBody {
    uint16_t value0;
    uint8_t value1;
    OctetString string2;
    BufferDesc buffer;
} U16ByteStringBody;

/* Reply of 0x68, 0x73: u16, u8, u8. */
typedef struct U16BytePairBody {
    uint16_t value0;
    uint8_t value1;
    uint8_t value2;
} U16BytePairBody;

/* Request of 0x75: u32, u16 length + bytes, u16 length + bytes. */
typedef struct U32LongStringPairBody {
    uint32_t value0;
    OctetString string1;
    OctetString string2;
    BufferDesc buffer;
} U32LongStringPairBody;

/* Request of 0x39: u32, u16 length + bytes, u8. */
typedef struct U32LongStringByteBody {
    uint32_t value0;
    OctetString string1;
    uint8_t value2;
    BufferDesc buffer;
} U32LongStringByteBody;

/* Request of 0x40, 0x84; reply of 0x6f: u32, u8 length + bytes, u8 length + bytes. */
typedef struct U32StringPairBody {
    uint32_t value0;
    OctetString string1;
    OctetString string2;
    BufferDesc buffer;
} U32StringPairBody;

/* Request of 0x6c: u32, u8 length + bytes, u16. */
typedef struct U32StringU16Body {
    uint32_t value0;
    OctetString string1;
    uint16_t value2;
    BufferDesc buffer;
} U32StringU16Body;

/* Request of 0x37: u32, u8 length + bytes, u8. */
typedef struct U32StringByteBody {
    uint32_t value0;
    OctetString string1;
    uint8_t value2;
    BufferDesc buffer;
} U32StringByteBody;

/* Request of 0x35: u32, u16, u16 attribute id + value. */
typedef struct U32U16AttributeBody {
    uint32_t value0;
    uint16_t value1;
    uint16_t id;
    void *value;
    BufferDesc buffer;
} U32U16AttributeBody;

/* Request of 0x53; reply of 0x5d, 0x5e, 0x61: u32, u16, u16 length + bytes. */
typedef struct U32U16LongStringBody {
    uint32_t value0;
    uint16_t value1;
    OctetString string2;
    BufferDesc buffer;
} U32U16LongStringBody;

/* Request of 0x74: u32, u16, u8 length + bytes. */
typedef struct U32U16StringBody {
    uint32_t value0;
    uint16_t value1;
    OctetString string2;
    BufferDesc buffer;
} U32U16StringBody;

/* Request of 0x02; reply of 0x08, 0x09, 0x6a: u32, u16, u16. */
typedef struct U32U16PairBody {
    uint32_t value0;
    uint16_t value1;
    uint16_t value2;
} U32U16PairBody;

/* Request of 0x3c, 0x57; reply of 0x36, 0x37: u32, u16, u32. */
typedef struct U32U16U32Body {
    uint32_t value0;
    uint16_t value1;
    uint32_t value2;
} U32U16U32Body;

/* Request of 0x3b, 0x56: u32, u32, u16 attribute id + value. */
typedef struct U32PairAttributeBody {
    uint32_t value0;
    uint32_t value1;
    uint16_t id;
    void *value;
    BufferDesc buffer;
} U32PairAttributeBody;

/* Request of 0x38; reply of 0x50: u32, u32, u16 length + bytes. */
typedef struct U32PairLongStringBody {
    uint32_t value0;
    uint32_t value1;
    OctetString string2;
    BufferDesc buffer;
} U32PairLongStringBody;

/* Request of 0x5e, 0x61; reply of 0x39, 0x3a: u32, u32, u8 length + bytes. */
typedef struct U32PairStringBody {
    uint32_t value0;
    uint32_t value1;
    OctetString string2;
    BufferDesc buffer;
} U32PairStringBody;

/* Request of 0x49, 0x4c: u32, u32, u16. */
typedef struct U32PairU16Body {
    uint32_t value0;
    uint32_t value1;
    uint16_t value2;
} U32PairU16Body;

/* Request of 0x0e: u32, u32, u32. */
typedef struct U32TripleBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
} U32TripleBody;

/* Request of 0x07; reply of 0x02: u32, u32, u8. */
typedef struct U32PairByteBody {
    uint32_t value0;
    uint32_t value1;
    uint8_t value2;
} U32PairByteBody;

/* Request of 0x69: u32, u8, u16 attribute id + value. */
typedef struct U32ByteAttributeBody {
    uint32_t value0;
    uint8_t value1;
    uint16_t id;
    void *value;
    BufferDesc buffer;
} U32ByteAttributeBody;

/* Request of 0x62: u32, u8, u16 length + bytes. */
typedef struct U32ByteLongStringBody {
    uint32_t value0;
    uint8_t value1;
    OctetString string2;
    BufferDesc buffer;
} U32ByteLongStringBody;

/* Request of 0x36: u32, u8, u8 length + bytes. */
typedef struct U32ByteStringBody {
    uint32_t value0;
    uint8_t value1;
    OctetString string2;
    BufferDesc buffer;
} U32ByteStringBody;

/* Request of 0x4a; reply of 0x2c: u32, u8, u32. */
typedef struct U32ByteU32Body {
    uint32_t value0;
    uint8_t value1;
    uint32_t value2;
} U32ByteU32Body;

/* Request of 0x6d: u8, u16, u8 length + bytes. */
typedef struct ByteU16StringBody {
    uint8_t value0;
    uint16_t value1;
    OctetString string2;
    BufferDesc buffer;
} ByteU16StringBody;

/* Request of 0x79: u8, u32, u16 length + bytes. */
typedef struct ByteU32LongStringBody {
    uint8_t value0;
    uint32_t value1;
    OctetString string2;
    BufferDesc buffer;
} ByteU32LongStringBody;

/* Request of 0x0c; reply of 0x06: u8, u32, u32. */
typedef struct ByteU32PairBody {
    uint8_t value0;
    uint32_t value1;
    uint32_t value2;
} ByteU32PairBody;

/* Reply of 0x5f: u8, u8, u16 length + bytes. */
typedef struct BytePairLongStringBody {
    uint8_t value0;
    uint8_t value1;
    OctetString string2;
    BufferDesc buffer;
} BytePairLongStringBody;

/* Request of 0x6b: u8, u8, u8 length + bytes. */
typedef struct BytePairStringBody {
    uint8_t value0;
    uint8_t value1;
    OctetString string2;
    BufferDesc buffer;
} BytePairStringBody;

/* Reply of 0x54: u8, u8, u16. */
typedef struct BytePairU16Body {
    uint8_t value0;
    uint8_t value1;
    uint16_t value2;
} BytePairU16Body;

/* Request of 0x7f: u16, u16, u16, u8 length + bytes. */
typedef struct U16TripleStringBody {
    uint16_t value0;
    uint16_t value1;
    uint16_t value2;
    OctetString string3;
    BufferDesc buffer;
} U16TripleStringBody;

/* Reply of 0x83: u16, u32, u16, u8. */
typedef struct U16U32U16ByteBody {
    uint16_t value0;
    uint32_t value1;
    uint16_t value2;
    uint8_t value3;
} U16U32U16ByteBody;

/* Request of 0x70: u32, u16, u16, u8 length + bytes. */
typedef struct U32U16PairStringBody {
    uint32_t value0;
    uint16_t value1;
    uint16_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32U16PairStringBody;

/* Request of 0x78: u32, u16, u8, u8 length + bytes. */
typedef struct U32U16ByteStringBody {
    uint32_t value0;
    uint16_t value1;
    uint8_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32U16ByteStringBody;

/* Request of 0x7c: u32, u32, u16 length + bytes, u16 length + bytes. */
typedef struct U32PairLongStringPairBody {
    uint32_t value0;
    uint32_t value1;
    OctetString string2;
    OctetString string3;
    BufferDesc buffer;
} U32PairLongStringPairBody;

/* Request of 0x67: u32, u32, u8 length + bytes, u8. */
typedef struct U32PairStringByteBody {
    uint32_t value0;
    uint32_t value1;
    OctetString string2;
    uint8_t value3;
    BufferDesc buffer;
} U32PairStringByteBody;

/* Request of 0x80: u32, u32, u16, u16 length + bytes. */
typedef struct U32PairU16LongStringBody {
    uint32_t value0;
    uint32_t value1;
    uint16_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32PairU16LongStringBody;

/* Reply of 0x3b, 0x3c: u32, u32, u16, u8. */
typedef struct U32PairU16ByteBody {
    uint32_t value0;
    uint32_t value1;
    uint16_t value2;
    uint8_t value3;
} U32PairU16ByteBody;

/* Request of 0x81: u32, u32, u32, u16 length + bytes. */
typedef struct U32TripleLongStringBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32TripleLongStringBody;

/* Request of 0x6f: u32, u32, u32, u8 length + bytes. */
typedef struct U32TripleStringBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32TripleStringBody;

/* Reply of 0x52: u32, u32, u32, u32. */
typedef struct U32QuadBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint32_t value3;
} U32QuadBody;

/* Request of 0x05; reply of 0x44: u32, u32, u32, u8. */
typedef struct U32TripleByteBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint8_t value3;
} U32TripleByteBody;

/* Reply of 0x7c, 0x7d: u32, u32, u8, u16 length + bytes. */
typedef struct U32PairByteLongStringBody {
    uint32_t value0;
    uint32_t value1;
    uint8_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32PairByteLongStringBody;

/* Request of 0x71: u32, u32, u8, u8 length + bytes. */
typedef struct U32PairByteStringBody {
    uint32_t value0;
    uint32_t value1;
    uint8_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32PairByteStringBody;

/* Reply of 0x07: u32, u32, u8, u16. */
typedef struct U32PairByteU16Body {
    uint32_t value0;
    uint32_t value1;
    uint8_t value2;
    uint16_t value3;
} U32PairByteU16Body;

/* Request of 0x0f; reply of 0x0f, 0x10: u32, u32, u8, u8. */
typedef struct U32PairBytePairBody {
    uint32_t value0;
    uint32_t value1;
    uint8_t value2;
    uint8_t value3;
} U32PairBytePairBody;

/* Reply of 0x48, 0x60: u32, u8, u16, u32. */
typedef struct U32ByteU16U32Body {
    uint32_t value0;
    uint8_t value1;
    uint16_t value2;
    uint32_t value3;
} U32ByteU16U32Body;

/* Request of 0x58: u32, u8, u32, u32. */
typedef struct U32ByteU32PairBody {
    uint32_t value0;
    uint8_t value1;
    uint32_t value2;
    uint32_t value3;
} U32ByteU32PairBody;

/* Reply of 0x78, 0x79: u32, u8, u8, u16 length + bytes. */
typedef struct U32BytePairLongStringBody {
    uint32_t value0;
    uint8_t value1;
    uint8_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32BytePairLongStringBody;

/* Request of 0x7e: u32, u8, u8, u8 length + bytes. */
typedef struct U32BytePairStringBody {
    uint32_t value0;
    uint8_t value1;
    uint8_t value2;
    OctetString string3;
    BufferDesc buffer;
} U32BytePairStringBody;

/* Reply of 0x70: u8, u16, u16, u32. */
typedef struct ByteU16PairU32Body {
    uint8_t value0;
    uint16_t value1;
    uint16_t value2;
    uint32_t value3;
} ByteU16PairU32Body;

/* Request of 0x11; reply of 0x53: u8, u32, u32, u32. */
typedef struct ByteU32TripleBody {
    uint8_t value0;
    uint32_t value1;
    uint32_t value2;
    uint32_t value3;
} ByteU32TripleBody;

/* Reply of 0x7f: u8, u8, u16, u32. */
typedef struct BytePairU16U32Body {
    uint8_t value0;
    uint8_t value1;
    uint16_t value2;
    uint32_t value3;
} BytePairU16U32Body;

/* Reply of 0x6b: u8, u8, u32, u32. */
typedef struct BytePairU32PairBody {
    uint8_t value0;
    uint8_t value1;
    uint32_t value2;
    uint32_t value3;
} BytePairU32PairBody;

/* Request of 0x83: u32, u16, u16, u8, u16 length + bytes. */
typedef struct U32U16PairByteLongStringBody {
    uint32_t value0;
    uint16_t value1;
    uint16_t value2;
    uint8_t value3;
    OctetString string4;
    BufferDesc buffer;
} U32U16PairByteLongStringBody;

/* Reply of 0x45: u32, u16, u32, u32, u8. */
typedef struct U32U16U32PairByteBody {
    uint32_t value0;
    uint16_t value1;
    uint32_t value2;
    uint32_t value3;
    uint8_t value4;
} U32U16U32PairByteBody;

/* Reply of 0x72: u32, u32, u16, u16, u32. */
typedef struct U32PairU16PairU32Body {
    uint32_t value0;
    uint32_t value1;
    uint16_t value2;
    uint16_t value3;
    uint32_t value4;
} U32PairU16PairU32Body;

/* Reply of 0x05, 0x67: u32, u32, u32, u16, u8. */
typedef struct U32TripleU16ByteBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint16_t value3;
    uint8_t value4;
} U32TripleU16ByteBody;

/* Reply of 0x81: u32, u32, u32, u32, u16 length + bytes. */
typedef struct U32QuadLongStringBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint32_t value3;
    OctetString string4;
    BufferDesc buffer;
} U32QuadLongStringBody;

/* Reply of 0x80: u32, u32, u32, u32, u8 length + bytes. */
typedef struct U32QuadStringBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint32_t value3;
    OctetString string4;
    BufferDesc buffer;
} U32QuadStringBody;

/* Reply of 0x38: u32, u32, u32, u32, u16. */
typedef struct U32QuadU16Body {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint32_t value3;
    uint16_t value4;
} U32QuadU16Body;

/* Request of 0x2c, 0x48, 0x60; reply of 0x7e: u32, u32, u32, u32, u8. */
typedef struct U32QuadByteBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint32_t value3;
    uint8_t value4;
} U32QuadByteBody;

/* Reply of 0x58: u32, u32, u32, u8, u16. */
typedef struct U32TripleByteU16Body {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint8_t value3;
    uint16_t value4;
} U32TripleByteU16Body;

/* Request of 0x76: u32, u8, u32, u32, u32. */
typedef struct U32ByteU32TripleBody {
    uint32_t value0;
    uint8_t value1;
    uint32_t value2;
    uint32_t value3;
    uint32_t value4;
} U32ByteU32TripleBody;

/* Request of 0x45: u8, u32, u32, u32, u32. */
typedef struct ByteU32QuadBody {
    uint8_t value0;
    uint32_t value1;
    uint32_t value2;
    uint32_t value3;
    uint32_t value4;
} ByteU32QuadBody;

/* Request of 0x47: u32, u32, u32, u16, u16, u8. */
typedef struct U32TripleU16PairByteBody {
    uint32_t value0;
    uint32_t value1;
    uint32_t value2;
    uint16_t value3;
    uint16_t value4;
    uint8_t value5;
} U32TripleU16PairByteBody;

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVBODIES_H */
