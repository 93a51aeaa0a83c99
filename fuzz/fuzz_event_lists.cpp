// Feeds arbitrary bytes to the event-list decoder, both framings, with the
// built-in event table: every event layout's size and decode passes run on
// hostile input, and the decoded block must hold everything written to it.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "api/Dispatch.h"
#include "events/EventList.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    TROV_InitCoder();
    const trov::Tables tables = trov::builtinTables();
    for (trov::EventFraming framing : {trov::EventFraming::Long, trov::EventFraming::Short}) {
        std::vector<uint8_t> body(data, data + size);
        PacketCursor cursor{body.data(), static_cast<uint32_t>(body.size())};
        if (body.empty()) cursor.position = reinterpret_cast<uint8_t *>(&cursor);
        DecodeResult result{};
        if (trov::decodeEventList(framing, tables, 0x10, &result, &cursor) == TROV_RESULT_OK &&
            result.record != nullptr) {
            if (result.buffer != nullptr) trovFree(result.buffer->data);
            trovFree(result.record);
        }
    }
    return 0;
}
