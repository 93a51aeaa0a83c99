// Feeds arbitrary bytes to every attribute and data-type codec. The first
// input byte picks the row (and data-type rows above 282), the second the
// array flag; the rest is the value's wire form. A value that sizes must
// decode inside a block of its reported extent and encode again; nothing may
// read or write outside the input and the block.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "api/Dispatch.h"
#include "engine/Cursor.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2) return 0;
    TROV_InitCoder();
    const trov::ValueCodecOps *ops = nullptr;
    const uint32_t pick = (uint32_t{data[0]} << 8 | data[1]) % (282 + 15);
    if (pick < 282) ops = &trov::AttributeCodecTable[pick].ops;
    else ops = &trov::DataTypeCodecTable[pick - 282].ops;
    const uint8_t isArray = size > 2 ? data[2] % 3 : 0;

    std::vector<uint8_t> wire(data + (size > 2 ? 3 : 2), data + size);
    PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
    if (wire.empty()) c.position = reinterpret_cast<uint8_t *>(&c);
    trov::RecordSize need{};
    if (ops->decCalc(&c, isArray, &need, 0x10) != TROV_RESULT_OK) return 0;

    const uint32_t room = need.extent > need.bytes ? need.extent : need.bytes;
    auto block = std::make_unique<uint64_t[]>(room / 8 + 1);
    std::memset(block.get(), 0, (room / 8 + 1) * 8);
    PacketCursor d{wire.empty() ? c.position : wire.data(), static_cast<uint32_t>(wire.size())};
    ops->decode(block.get(), &d, isArray, 0x10);

    // A decoded value re-encodes into exactly the bytes its size pass states.
    trov::WireSize packet;
    if (ops->encCalc(block.get(), isArray, &packet, 0x10) == TROV_RESULT_OK && !packet.nullData &&
        packet.extent <= 0xFFFF) {
        std::vector<uint8_t> out(packet.extent + size_t{1}); // never empty: data() is not null
        PacketCursor e{out.data(), packet.extent};
        ops->encode(&e, block.get(), isArray, 0x10);
        if (trov::overrun(e) || e.remaining != 0) __builtin_trap();
    }
    return 0;
}
