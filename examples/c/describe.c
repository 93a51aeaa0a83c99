/* Decodes a reply of body 0x0b (a u32) and prints every field of the record
 * through the layout description. */
#include <stdio.h>
#include <string.h>

#include "TrovLayout.h"

static void printField(const unsigned char *record, const TrovFieldInfo *f) {
    const unsigned char *at = record + f->offset;
    if (f->kindId == TROV_KIND_U8) {
        printf("%s (%s) = %u\n", f->name, f->kind, (unsigned)at[0]);
    } else if (f->kindId == TROV_KIND_U16) {
        uint16_t v;
        memcpy(&v, at, sizeof v);
        printf("%s (%s) = %u\n", f->name, f->kind, (unsigned)v);
    } else if (f->kindId == TROV_KIND_U32) {
        uint32_t v;
        memcpy(&v, at, sizeof v);
        printf("%s (%s) = %lu\n", f->name, f->kind, (unsigned long)v);
    } else {
        printf("%s (%s) at offset %u, %u bytes\n", f->name, f->kind, (unsigned)f->offset,
               (unsigned)f->width);
    }
}

int main(void) {
    /* Header: mark, version 0x10, flags 0x01, body code 0x000b, body length 4,
     * unit type 1; then the body. */
    unsigned char packet[24] = {0xA7, 0xE5, 0x10, 0x01, 0x00, 0x0B, 0, 0, 0, 4,
                                0,    0,    0,    0,    0,    0,    0, 0, 0, 1,
                                0x00, 0x01, 0xE2, 0x40};
    PacketCursor cursor;
    HeaderInfo info;
    DecodeResult result;
    TrovLayoutInfo layout;
    uint16_t i;

    TROV_InitCoder();
    cursor.position = packet;
    cursor.remaining = sizeof packet;
    result.record = NULL;
    result.buffer = NULL;
    result.type = 0;
    if (TROV_DecodeFU(&info, &result, &cursor, NULL) != 0) return 1;
    if (TROV_DescribeBody(info.code, (uint8_t)info.version, 0, &layout) != 0) return 1;

    printf("%s, %u bytes\n", layout.record ? layout.record : "(record)", (unsigned)layout.recordBytes);
    for (i = 0; i < layout.fieldCount; ++i) printField((const unsigned char *)result.record, &layout.fields[i]);
    if (result.buffer != NULL) trovFree(result.buffer->data);
    trovFree(result.record);
    return 0;
}
