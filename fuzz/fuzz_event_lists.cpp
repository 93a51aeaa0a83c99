// Feeds arbitrary bytes to the event-list decoder, both framings, with the
// built-in event table: every event layout's size and decode passes run on
// hostile input, and the decoded block must hold everything written to it.
//
// The size pass alone (sizeEventList, which TROV_InspectFU locates failures
// with) must agree with the decoder: the same result, the same bytes read on
// success, and where it stops, the events before that point must decode on
// their own.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "api/Dispatch.h"
#include "events/EventList.h"

namespace {

void release(DecodeResult &result) {
    if (result.record == nullptr) return;
    if (result.buffer != nullptr) trovFree(result.buffer->data);
    trovFree(result.record);
    result = DecodeResult{};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    TROV_InitCoder();
    const trov::Tables tables = trov::builtinTables();
    for (trov::EventFraming framing : {trov::EventFraming::Long, trov::EventFraming::Short}) {
        std::vector<uint8_t> body(data, data + size);
        PacketCursor cursor{body.data(), static_cast<uint32_t>(body.size())};
        if (body.empty()) cursor.position = reinterpret_cast<uint8_t *>(&cursor);
        DecodeResult result{};
        uint32_t read = 0;
        const TrovResult decoded =
            trov::decodeEventList(framing, tables, 0x10, &result, &cursor, trov::kEveryEvent, &read);
        release(result);

        trov::EventListStop stop;
        const TrovResult sized = trov::sizeEventList(framing, tables, 0x10, &cursor, stop);
        if (decoded != TROV_RESULT_NO_MEMORY && sized != decoded) __builtin_trap();
        if (sized == TROV_RESULT_OK && (stop.sized != stop.count || (decoded == TROV_RESULT_OK && stop.at != read)))
            __builtin_trap();
        if (sized != TROV_RESULT_OK && cursor.remaining >= trov::eventFrame(framing).head.wireFixed) {
            if (stop.sized >= stop.count || stop.at > cursor.remaining) __builtin_trap();
            const TrovResult kept =
                trov::decodeEventList(framing, tables, 0x10, &result, &cursor, stop.sized, &read);
            if (kept != TROV_RESULT_OK && kept != TROV_RESULT_NO_MEMORY) __builtin_trap();
            if (kept == TROV_RESULT_OK && read != stop.at) __builtin_trap();
            release(result);
        }
    }
    return 0;
}
