/*
 * TrovReplyEncode.h - building reply packets: the records TROV_DecodeFU
 * fills, written back as packets.
 *
 * A host that handles replies and events needs packets to test its handlers
 * with. TROV_EncodeReply takes the reply record of a body code, in the form
 * TROV_DecodeFU hands it over, and writes the packet it was decoded from:
 * bodies of fields, the method invocation with the reply side of the
 * method's parameters, and the two event lists with every event layout in
 * them. It runs the same layouts and walkers as the decoder and the request
 * encoders, so a record decoded from a body encodes back to that body.
 *
 * What cannot come back. The decoder reads what a body's layout names and
 * never looks past it, so bytes behind that (and the whole body of the codes
 * that have no reply, TROV_LAYOUT_NONE) are not in the record, and the packet
 * built from it leaves them out. A few reads make up bytes the body does not
 * hold: event 0x30 accepts a body up to 16 bytes short and reads what is
 * missing as 0, and the last raw value of an event's attribute list may claim
 * more bytes than remain (also read as 0); their records encode the bytes
 * as read, zeros included. An attribute entry (of an event's attribute list,
 * or of a structure) whose identifier has a codec is read by that codec
 * whatever its length field says; the encoder writes the length of the value
 * it writes. A structure's entry whose identifier has no codec at version 0
 * is kept as its bytes but is not written (the structure codec leaves such
 * entries out). Event 0x78 keeps its typed value only
 * where the data type reserves room for it (types 16, 17, 19 and 20); with
 * any other type the value is read over, its pointer stays NULL, and the
 * record is refused (1). The header is written as TROV_EncodeHeader writes
 * it: its bodyLength is always the true one (body 0x31, which the decoder
 * reads to the packet's end whatever the header says, included), and bytes
 * 18-19 are the extension only where flags bit 0 says so.
 *
 * Anything here is an addition of this library: it changes no result or
 * byte of the functions of TrovCodec.h.
 *
 * Plain C; usable from C and C++.
 */
#ifndef TROVREPLYENCODE_H
#define TROVREPLYENCODE_H

#include "TrovCodec.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Builds the reply packet of function-unit body info->code: the header from
 * `info` (its bodyLength is set by the library, as TROV_EncodeFU sets it) and
 * the body from `record`, the reply record TROV_DecodeFU gives for that code
 * (its layout: TROV_DescribeBody(code, version, 0, ...)), into `output` with
 * TROV_EncodeFU's conventions: output->data NULL asks the library to
 * allocate the packet (freed by the caller with trovFree), otherwise
 * output->length is the capacity of the caller's buffer, which is never
 * written past; on success output->length is the packet's length.
 *
 * The record, by the layout's form:
 *  - fields: every field as the decoder fills it; counted data through its
 *    pointer, attribute values through their identifier's codec. Counts and
 *    lengths are the record's; the managed buffer is not read.
 *  - none (codes whose reply has no body): a header-only packet; `record`
 *    must still be non-NULL and is not read.
 *  - method invocation (0x1d): MethodBody; the parameters are the reply
 *    side of the method's record (TROV_DescribeMethod(code, version, 0,
 *    ...)) and paramsLength is not read, except for the raw bytes of methods
 *    from 0x2000 without a codec of their own, which are paramsLength bytes.
 *  - event lists (0x4d EventListBody, 0x0a ShortEventListBody): the head,
 *    then `count` entries, each its event head and the event record behind
 *    `body` (TROV_DescribeEvent gives its layout). Events 0xC4 and 0xC5 write
 *    the structure their record's head points at; a head left NULL stands
 *    for the structure right behind it (the record's `data`), so a record
 *    built from its description needs no pointer of its own.
 *
 * Results: 0; 1 a NULL argument, or a NULL pointer in the record behind a
 * non-zero count or length (event entries and event records included); 5 a
 * body longer than 65535 bytes (info->bodyLength then holds its figure modulo
 * 65536, and nothing is written or allocated), or an event longer than 65535
 * bytes; 8 no header codec; 9 no body codec for the code and version (also
 * before TROV_InitCoder); 10, 11, 12, 13 an attribute identifier, method
 * code, event code or data type without a codec; 6 allocation failed; 7 the
 * caller's buffer is shorter than the packet (nothing written to it). */
TROV_API TrovResult TROV_EncodeReply(HeaderInfo *info, const void *record, EncodeOutput *output);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVREPLYENCODE_H */
