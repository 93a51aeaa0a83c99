/* A C translation unit's view of the public records: the figures a C host
 * compiles against. AbiTest.cpp compares them with what the C++ library sees. */
#include <stddef.h>

#include "TrovCodec.h"

/* Sizes and offsets, in a fixed order, as a C compiler lays them out. */
size_t trovTestCLayout(size_t *out, size_t capacity) {
    const size_t figures[] = {
        sizeof(PacketCursor), offsetof(PacketCursor, position), offsetof(PacketCursor, remaining),
        sizeof(HeaderInfo), offsetof(HeaderInfo, mark), offsetof(HeaderInfo, version),
        offsetof(HeaderInfo, flags), offsetof(HeaderInfo, code), offsetof(HeaderInfo, value4),
        offsetof(HeaderInfo, bodyLength), offsetof(HeaderInfo, value6),
        offsetof(HeaderInfo, value7), offsetof(HeaderInfo, extension),
        sizeof(BufferDesc), offsetof(BufferDesc, data), offsetof(BufferDesc, capacity),
        offsetof(BufferDesc, flags),
        sizeof(DecodeResult), offsetof(DecodeResult, record), offsetof(DecodeResult, buffer),
        offsetof(DecodeResult, type),
        sizeof(EncodeOutput), offsetof(EncodeOutput, data), offsetof(EncodeOutput, length),
        sizeof(OctetString), offsetof(OctetString, data),
        sizeof(AttributeArrayHeader), offsetof(AttributeArrayHeader, elements),
        sizeof(AttributeList), offsetof(AttributeList, entries),
        sizeof(AttributeEntry), offsetof(AttributeEntry, length), offsetof(AttributeEntry, value),
        sizeof(AttributeBody), offsetof(AttributeBody, value), offsetof(AttributeBody, buffer),
        sizeof(MethodBody), offsetof(MethodBody, method), offsetof(MethodBody, params),
        offsetof(MethodBody, paramsLength), offsetof(MethodBody, buffer),
        sizeof(EventListBody), offsetof(EventListBody, count), offsetof(EventListBody, entries),
        offsetof(EventListBody, buffer),
        sizeof(EventEntry), offsetof(EventEntry, eventCode), offsetof(EventEntry, body),
    };
    size_t n = sizeof figures / sizeof figures[0];
    for (size_t i = 0; i < n && i < capacity; ++i) out[i] = figures[i];
    return n;
}
