/*
 * TrovInspect.h - where the decoding of a function-unit reply stops, and
 * what it kept.
 *
 * TROV_DecodeFU answers a packet with one result code. TROV_InspectFU decodes
 * the packet the same way and also reports the item of the body the decoding
 * stopped at: the event of an event list (its index and code), the attribute
 * of an attribute field (its identifier), the method of a method invocation
 * (its code) or another field, with the packet offset where that item
 * starts. For a body that decoded it reports how many body bytes the decoder
 * read, so that bytes the header frames but no field takes can be told.
 *
 * An event list whose event fails keeps the events before it: the record
 * holds them (its count says how many) and the result is still the failure.
 *
 * Plain C; usable from C and C++.
 */
#ifndef TROVINSPECT_H
#define TROVINSPECT_H

#include <stdint.h>

#include "TrovCodec.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What a report's item is (TrovInspectReport.item). */
enum {
    TROV_ITEM_NONE = 0,      /* nothing failed: the body decoded, or the decoder skips it */
    TROV_ITEM_HEADER = 1,    /* the packet's header: not the protocol mark, an unknown
                                version, fewer bytes than a header (offset 0) */
    TROV_ITEM_BODY = 2,      /* the body as a whole: no body codec for its code, shorter
                                than its fixed part, or memory (offset: the body's start) */
    TROV_ITEM_FIELD = 3,     /* a field of the body: index is its index in the layout
                                TROV_DescribeBody gives for the reply */
    TROV_ITEM_ATTRIBUTE = 4, /* an attribute field: index as for a field; code the
                                attribute identifier (0 when the body ends inside it) */
    TROV_ITEM_METHOD = 5,    /* the parameters of a method invocation: code the method
                                code; offset the code's when it has no codec, else the
                                parameters' */
    TROV_ITEM_EVENT = 6      /* an event of an event list: index its place in the list
                                (from 0), code its event code (0 when the body ends
                                inside the event's head), offset its head's */
};

/* What TROV_InspectFU found. 24 bytes. */
typedef struct TrovInspectReport {
    uint32_t bodyLength; /* body bytes the decoder was given (the header's bodyLength, or
                            the rest of the packet for body 0x31, never more than the
                            cursor holds); 0 when the header failed or the body is
                            skipped */
    uint32_t bodyRead;   /* body bytes a decoded body read: bodyLength - bodyRead bytes
                            behind them were not read. 0 for a skipped or failed body */
    uint32_t offset;     /* the packet offset where the item starts; 0 for none */
    uint32_t index;      /* the event's or field's index; 0 for other items */
    uint32_t kept;       /* events the kept record holds (partial is 1) */
    uint16_t code;       /* the event code, attribute identifier or method code; else 0 */
    uint8_t item;        /* TROV_ITEM_* */
    uint8_t partial;     /* 1: the decoding failed inside an event list and result->record
                            holds the list up to the failing event (free it as after a
                            success); 0 otherwise */
} TrovInspectReport;

/* Decodes the packet at `cursor` as TROV_DecodeFU does, with the same
 * arguments, results and ownership, and fills `report`. Where TROV_DecodeFU
 * succeeds, so does this call, with the same record. Where it fails inside
 * an event list after the list's head, this call returns the same result
 * but keeps the head and the events before the failing one in the record,
 * with result->type 6 and report->partial 1 (the caller frees the record and
 * its buffer as after a success).
 * Results: those of TROV_DecodeFU; 1 also when report is NULL (nothing is
 * decoded then). A report that is not NULL is always filled; for result 1
 * its item is TROV_ITEM_NONE. */
TROV_API TrovResult TROV_InspectFU(HeaderInfo *info, DecodeResult *result, const PacketCursor *cursor,
                                   void *context, TrovInspectReport *report);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVINSPECT_H */
