// Feeds arbitrary bytes to every exported entry point that reads a packet:
// header decode, field reads, the body decoders and the option-parameter
// decoder. Any out-of-bounds access or leak is a finding.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "TrovCodec.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    TROV_InitCoder();
    // A private copy sized exactly, so any read past the end is caught.
    std::vector<uint8_t> packet(data, data + size);
    PacketCursor cursor{packet.data(), static_cast<uint32_t>(packet.size())};
    if (packet.empty()) cursor.position = reinterpret_cast<uint8_t *>(&cursor);

    HeaderInfo info{};
    TROV_DecodeHeader(&info, &cursor);
    for (uint32_t index = 0; index < 11; ++index) {
        uint32_t out = 0;
        TROV_GetFromPacket(index, &cursor, &out);
    }

    // What a successful decode hands over: the body record and the managed
    // buffer the call allocated for it.
    DecodeResult result{};
    TROV_DecodeFU(&info, &result, &cursor, nullptr);
    if (result.buffer != nullptr) trovFree(result.buffer->data);
    trovFree(result.record);
    DecodeResult fp{};
    TROV_DecodeFP(&info, &fp, &cursor);
    if (fp.buffer != nullptr) trovFree(fp.buffer->data);
    trovFree(fp.record);

    // Option parameters back to back: kind, length, value.
    alignas(8) uint8_t record[264];
    PacketCursor options = cursor;
    while (options.remaining >= 2) {
        const uint8_t kind = options.position[0];
        const uint8_t length = options.position[1];
        options.position += 2;
        options.remaining -= 2;
        if (trovDecCalc_OptionParam(kind, length) > sizeof record) break;
        if (trovDecode_OptionParam(kind, length, record, &options) == nullptr) break;
    }
    return 0;
}
