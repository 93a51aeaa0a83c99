// Data types whose layouts vary the pattern, with golden vectors worked out
// by hand: the strings' spare byte. (Every type's round trip, truncations and
// extent: ExtentBoundaryInternalTest; the string arrays' rounded element data
// in the blocks they decode to: DifferentialCorpusInternalTest.)
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "api/Dispatch.h"
#include "api/Initialised.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

constexpr uint8_t kVersion = 0x10;
using Bytes = std::vector<uint8_t>;

class DataType : public testing::Test {
protected:
    static const ValueCodecOps &ops(uint16_t code) { return lookupDataType(code, kVersion)->ops; }
};

// Code 0x08: u8 length; code 0x09: u16 length. Record: the length, then a
// pointer to the characters behind the 16-byte head, and one spare byte
// after them that is reserved and left alone. (Encoding: the extent sweep's
// round trips.)
TEST_F(DataType, StringsReserveASpareByteAndIgnoreTheArrayFlag) {
    struct StringCase {
        uint16_t code;
        uint32_t length;
        uint16_t recordBytes;
    };
    const StringCase cases[] = {{0x08, 0, 16}, {0x08, 7, 24}, {0x08, 8, 32}, {0x08, 255, 16 + 256},
                                {0x09, 0, 16}, {0x09, 7, 24}, {0x09, 8, 32}, {0x09, 300, 16 + 304}};
    for (const StringCase &s : cases)
        for (uint8_t isArray : {0, 1}) {
            SCOPED_TRACE(testing::Message() << "code " << s.code << " length " << s.length << " isArray "
                                            << int{isArray});
            const uint32_t prefix = s.code == 0x08 ? 1 : 2;
            const Bytes text(s.length, 'q');
            Bytes wire = prefix == 1 ? Bytes{} : Bytes{static_cast<uint8_t>(s.length >> 8)};
            wire.push_back(static_cast<uint8_t>(s.length));
            wire.insert(wire.end(), text.begin(), text.end());
            const auto n = static_cast<uint32_t>(wire.size());

            PacketCursor c{wire.data(), n};
            RecordSize r{};
            ASSERT_EQ(ops(s.code).decCalc(&c, isArray, &r, kVersion), 0u);
            EXPECT_EQ(r.bytes, s.recordBytes);
            std::unique_ptr<uint8_t[]> record(new uint8_t[r.extent]);
            std::memset(record.get(), 0xEE, r.extent);
            PacketCursor d{wire.data(), n};
            EXPECT_EQ(ops(s.code).decode(record.get(), &d, isArray, kVersion), record.get() + s.recordBytes);
            EXPECT_EQ(prefix == 1 ? record[0] : loadField<uint16_t>(record.get(), 0), s.length);
            const auto *data = loadField<uint8_t *>(record.get(), 8);
            EXPECT_EQ(data, s.length == 0 ? nullptr : record.get() + 16);
            if (s.length != 0) {
                EXPECT_EQ(Bytes(data, data + s.length), text);
                EXPECT_EQ(data[s.length], 0xEE) << "the spare byte is not written";
            }
        }
}

} // namespace
} // namespace trov
