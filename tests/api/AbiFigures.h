/* The public records' sizes and offsets, in a fixed order: one list that a
 * C and a C++ translation unit both expand, so that a host compiled as C
 * sees the layout the library was compiled with. Plain C. */
#define TROV_ABI_FIGURES \
    sizeof(PacketCursor), offsetof(PacketCursor, position), offsetof(PacketCursor, remaining), \
    sizeof(HeaderInfo), offsetof(HeaderInfo, mark), offsetof(HeaderInfo, version), \
    offsetof(HeaderInfo, flags), offsetof(HeaderInfo, code), offsetof(HeaderInfo, value4), \
    offsetof(HeaderInfo, bodyLength), offsetof(HeaderInfo, value6), \
    offsetof(HeaderInfo, value7), offsetof(HeaderInfo, extension), \
    sizeof(BufferDesc), offsetof(BufferDesc, data), offsetof(BufferDesc, capacity), \
    offsetof(BufferDesc, flags), \
    sizeof(DecodeResult), offsetof(DecodeResult, record), offsetof(DecodeResult, buffer), \
    offsetof(DecodeResult, type), \
    sizeof(EncodeOutput), offsetof(EncodeOutput, data), offsetof(EncodeOutput, length), \
    sizeof(OctetString), offsetof(OctetString, data), \
    sizeof(AttributeArrayHeader), offsetof(AttributeArrayHeader, elements), \
    sizeof(AttributeList), offsetof(AttributeList, entries), \
    sizeof(AttributeEntry), offsetof(AttributeEntry, length), offsetof(AttributeEntry, value), \
    sizeof(AttributeBody), offsetof(AttributeBody, value), offsetof(AttributeBody, buffer), \
    sizeof(MethodBody), offsetof(MethodBody, method), offsetof(MethodBody, params), \
    offsetof(MethodBody, paramsLength), offsetof(MethodBody, buffer), \
    sizeof(EventListBody), offsetof(EventListBody, count), offsetof(EventListBody, entries), \
    offsetof(EventListBody, buffer), \
    sizeof(EventEntry), offsetof(EventEntry, eventCode), offsetof(EventEntry, body), \
    sizeof(TrovFieldInfo), offsetof(TrovFieldInfo, kindId), offsetof(TrovFieldInfo, offset), \
    offsetof(TrovFieldInfo, countField), \
    sizeof(TrovLayoutInfo), offsetof(TrovLayoutInfo, recordBytes), offsetof(TrovLayoutInfo, fields), \
    offsetof(TrovLayoutInfo, form), offsetof(TrovLayoutInfo, wireFixed), \
    sizeof(TrovInspectReport), offsetof(TrovInspectReport, bodyRead), offsetof(TrovInspectReport, kept), \
    offsetof(TrovInspectReport, code), offsetof(TrovInspectReport, partial),
