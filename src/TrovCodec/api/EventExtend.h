// Extended event data: the typed items inside an event's byte string. The
// exported TROV_DecodeEventExtend and TROV_EncodeEventExtend call these.
#pragma once

#include "TrovCodec.h"

namespace trov {

TrovResult decodeEventExtend(EventExtendList *list, const OctetString *data, uint16_t eventCode,
                             const EventExtendSchema *schema, uint8_t version, BufferDesc *buffer);
TrovResult encodeEventExtend(const EventExtendList *list, OctetString *data, uint16_t eventCode,
                             const EventExtendSchema *schema, uint8_t version, BufferDesc *buffer);

} // namespace trov
