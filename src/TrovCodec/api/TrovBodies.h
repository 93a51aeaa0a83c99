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

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVBODIES_H */
