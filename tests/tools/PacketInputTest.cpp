// The trov tool's input: hex text in the forms people paste, raw bytes, and
// framing by bodyLength, through PacketInput's interface.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "PacketInput.h"
#include "StreamFramer.h"
#include "api/ReplyPacket.h"

namespace {

using trov::InputFormat;
using trov::PacketInput;
using Kind = trov::PacketItem::Kind;
using Bytes = std::vector<uint8_t>;

std::string toHex(const Bytes &bytes) {
    std::string s;
    for (uint8_t c : bytes) s += {"0123456789abcdef"[c >> 4], "0123456789abcdef"[c & 15]};
    return s;
}

// An item as "P<offset>+<size>" (packet), "T<offset>+<size>" (trailing),
// "S<offset>+<count>" (skipped), "G<offset>+<count>" (gap) or "E<error>".
std::string describe(const trov::PacketItem &item) {
    if (item.kind == Kind::Error) return "E" + item.error;
    const bool run = item.kind == Kind::Skipped || item.kind == Kind::Gap;
    const char *letter = item.kind == Kind::Packet ? "P" : item.kind == Kind::Skipped ? "S" : run ? "G" : "T";
    return letter + std::to_string(item.offset) + "+" + std::to_string(run ? item.count : item.bytes.size());
}

// What a reader yields: its items, and the bytes of all of them.
struct Drained {
    std::string items;
    Bytes bytes;
    bool hex = false;
};

Drained drain(PacketInput &input) {
    Drained d;
    for (auto item = input.next(); item.kind != Kind::End; item = input.next()) {
        if (!d.items.empty()) d.items += ' ';
        d.items += describe(item);
        d.bytes.insert(d.bytes.end(), item.bytes.begin(), item.bytes.end());
    }
    EXPECT_EQ(input.next().kind, Kind::End) << "after the last item";
    d.hex = input.isHex();
    return d;
}

Drained drain(const std::string &text, InputFormat format) {
    std::istringstream in(text);
    return drain(*PacketInput::fromStream(in, "t", format));
}

// Two packets back to back: bodyLength 44 (twelve 00000001 words, the last
// three dump lines alike), then bodyLength 5 holding "ab cd", which the dumps'
// ASCII columns show and which must not be read as bytes.
const Bytes kStream = hexBytes("a7e51001000b0000002c0000000000000000000100000001000000010000"
                              "000100000001000000010000000100000001000000010000000100000001"
                              "00000001a7e51000000500000005000000000000000000006162206364");

// `text` as UTF-16 with its byte-order mark, as PowerShell's '>' writes it
// (little-endian) or big-endian.
std::string utf16(const std::string &text, bool little) {
    std::string out = little ? "\xff\xfe" : "\xfe\xff";
    for (char c : text) out += little ? std::string{c, '\0'} : std::string{'\0', c};
    return out;
}

// xxd's dump of kStream, with Windows line ends.
const std::string kXxd = "00000000: a7e5 1001 000b 0000 002c 0000 0000 0000  .........,......\r\n"
                         "00000010: 0000 0001 0000 0001 0000 0001 0000 0001  ................\r\n"
                         "00000020: 0000 0001 0000 0001 0000 0001 0000 0001  ................\r\n"
                         "00000030: 0000 0001 0000 0001 0000 0001 0000 0001  ................\r\n"
                         "00000040: a7e5 1000 0005 0000 0005 0000 0000 0000  ................\r\n"
                         "00000050: 0000 0000 6162 2063 64                   ....ab cd\r\n";

const std::string kHexdump = "00000000  a7 e5 10 01 00 0b 00 00  00 2c 00 00 00 00 00 00  |.........,......|\n"
                             "00000010  00 00 00 01 00 00 00 01  00 00 00 01 00 00 00 01  |................|\n"
                             "*\n"
                             "00000040  a7 e5 10 00 00 05 00 00  00 05 00 00 00 00 00 00  |................|\n"
                             "00000050  00 00 00 00 61 62 20 63  64                       |....ab cd|\n"
                             "00000059\n";

struct FormatCase {
    const char *name;
    InputFormat format;
    std::string text;
};

class Formats : public testing::TestWithParam<FormatCase> {};

TEST_P(Formats, YieldTheSamePackets) {
    const Drained d = drain(GetParam().text, GetParam().format);
    EXPECT_EQ(d.items, "P0+64 P64+25");
    EXPECT_EQ(toHex(d.bytes), toHex(kStream));
    EXPECT_EQ(d.hex, GetParam().text[0] != '\xa7');
}

INSTANTIATE_TEST_SUITE_P(
    PacketInput, Formats,
    testing::Values(
        FormatCase{"raw", InputFormat::Detect, std::string(kStream.begin(), kStream.end())},
        FormatCase{"raw_forced", InputFormat::Raw, std::string(kStream.begin(), kStream.end())},
        FormatCase{"plain", InputFormat::Detect,
                   "# two packets\r\nA7E5 10 01 000B 0000 002C 00000000 00000000 0001  # header\r\n"
                   "\t00000001 00000001 00000001 00000001 00000001 00000001\n"
                   "00000001 00000001 00000001 00000001 00000001\n"
                   "a7e5 10 00 0005 0000 0005 00000000 00000000 0000 6162206364"},
        FormatCase{"prefixed", InputFormat::Hex,
                   "0xa7e5 0x10 0x01 0X000b 0x0000 0x002c 0x00000000 0x00000000 0x0001\n"
                   "0x0000000100000001000000010000000100000001000000010000000100000001000000010000000100000001\n"
                   "0xa7 0xe5 0x10 0x00 0x00 0x05 0x00 0x00 0x00 0x05 0x0000000000000000 0x0000 0x61 0x62 0x20 0x63 0x64"},
        FormatCase{"xxd", InputFormat::Detect, std::regex_replace(kXxd, std::regex("\r"), "")},
        FormatCase{"xxd_plain", InputFormat::Detect,
                   "a7e51001000b0000002c0000000000000000000100000001000000010000\n"
                   "000100000001000000010000000100000001000000010000000100000001\n"
                   "00000001a7e51000000500000005000000000000000000006162206364\n"},
        FormatCase{"hexdump", InputFormat::Detect, kHexdump},
        FormatCase{"od", InputFormat::Detect,
                   "000000 a7 e5 10 01 00 0b 00 00 00 2c 00 00 00 00 00 00\n"
                   "000010 00 00 00 01 00 00 00 01 00 00 00 01 00 00 00 01\n"
                   "000020 00 00 00 01 00 00 00 01 00 00 00 01 00 00 00 01\n"
                   "000030 00 00 00 01 00 00 00 01 00 00 00 01 00 00 00 01\n"
                   "000040 a7 e5 10 00 00 05 00 00 00 05 00 00 00 00 00 00\n"
                   "000050 00 00 00 00 61 62 20 63 64\n"
                   "000059\n"},
        // `xxd -i`, edited: comments, decimal, octal and a suffix; the length
        // variable after the array is not read.
        FormatCase{"c_array", InputFormat::Detect,
                   "/* two packets\n   from a capture */\n"
                   "unsigned char stream_bin[] = { // the first\n"
                   "  0xa7, 0xe5, 0x10, 0x01, 0x00, 0x0b, 0x00, 0x00, 0x00, 44, 0x00, 0x00,\n"
                   "  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01,\n"
                   "  0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01,\n"
                   "  0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01,\n"
                   "  0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01,\n"
                   "  0x00, 0x00, 0x00, 0x01, /* the second */ 0xA7,0xE5,020,0,0,5,0,0,0,5,0,0,0,0,\n"
                   "  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x61, 0x62, 0x20u, 0x63, 0x64\n"
                   "};\n"
                   "unsigned int stream_bin_len = 89;\n"},
        FormatCase{"colons", InputFormat::Detect,
                   "a7:e5:10:01:00:0b:00:00:00:2c:00:00:00:00:00:00\n"
                   "00:00:00:01:00:00:00:01:00:00:00:01:00:00:00:01:00:00:00:01:00:00:00:01:00:00:00:01\n"
                   "00:00:00:01:00:00:00:01:00:00:00:01:00:00:00:01:00:00:00:01\n"
                   "a7:e5:10:00:00:05:00:00:00:05:00:00:00:00:00:00:00:00:00:00:61:62:20:63:64\n"},
        FormatCase{"dashes", InputFormat::Detect,
                   "A7-E5-10-01-00-0B-00-00-00-2C-00-00-00-00-00-00-00-00-00-01-00-00-00-01-00-00-00-01-00-00\n"
                   "00-01-00-00-00-01-00-00-00-01-00-00-00-01-00-00-00-01-00-00-00-01-00-00-00-01-00-00-00-01\n"
                   "00-00-00-01-A7-E5-10-00-00-05-00-00-00-05-00-00-00-00-00-00-00-00-00-00-61-62-20-63-64"},
        // Python's repr of the bytes, split over lines: printable bytes stand
        // for themselves (',' 'a' 'b' ' ' 'c' 'd').
        FormatCase{"python_bytes", InputFormat::Detect,
                   "# from a capture\n"
                   "packet = (b'\\xa7\\xe5\\x10\\x01\\x00\\x0b\\x00\\x00\\x00,\\x00\\x00\\x00\\x00\\x00\\x00'  # header\n"
                   "          b'\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01'\n"
                   "          b'\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01'\n"
                   "          b'\\x00\\x00\\x00\\x01\\x00\\x00\\x00\\x01'\n"
                   "          b'\\xa7\\xe5\\x10\\x00\\x00\\x05\\x00\\x00\\x00\\x05\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00ab cd')\n"},
        // A C string: octal escapes, a line joined by a backslash, and a
        // quote escaped.
        FormatCase{"c_string", InputFormat::Detect,
                   "const char p[] = \"\\xA7\\xE5\\x10\\x01\\0\\13\\0\\0\\0\\x2c\\0\\0\\0\\0\\0\\0\" /* header */\n"
                   "    \"\\0\\0\\0\\1\\0\\0\\0\\1\\0\\0\\0\\1\\0\\0\\0\\1\\0\\0\\0\\1\\0\\0\\0\\1\\\n"
                   "\\0\\0\\0\\1\\0\\0\\0\\1\\0\\0\\0\\1\\0\\0\\0\\1\\0\\0\\0\\1\\0\\0\\0\\1\"\n"
                   "    \"\\xa7\\xe5\\x10\\x00\\x00\\x05\\x00\\x00\\x00\\x05\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\"\n"
                   "    \"ab \\x63\\144\";\n"},
        FormatCase{"utf8_bom", InputFormat::Detect, "\xef\xbb\xbf" + kXxd},
        FormatCase{"utf16le_bom", InputFormat::Detect, utf16(kXxd, true)},
        FormatCase{"utf16be_bom", InputFormat::Hex, utf16(kHexdump, false)}),
    [](const auto &info) { return std::string(info.param.name); });

struct HexErrorCase {
    const char *name;
    std::string text;
    std::string items; // what comes out, the error up to its column
};

class HexErrors : public testing::TestWithParam<HexErrorCase> {};

TEST_P(HexErrors, NameLineAndColumn) {
    const std::string items = drain(GetParam().text, InputFormat::Hex).items;
    EXPECT_EQ(items.substr(0, GetParam().items.size() + 1), GetParam().items + " ") << items;
}

INSTANTIATE_TEST_SUITE_P(
    PacketInput, HexErrors,
    testing::Values(
        HexErrorCase{"not_hex", "a7 e5 1g", "Et:1:8:"},
        HexErrorCase{"odd_token", "a7e5\n# A7 E5 would be wrong\nA7E 5", "Et:3:1:"},
        HexErrorCase{"bare_prefix", "a7e5 0x", "Et:1:6:"},
        HexErrorCase{"control_byte", "a7\x01", "Et:1:3:"},
        HexErrorCase{"after_a_packet", "a7e510000000000000010000000000000000000000 a7e5 zz", "P0+21 Et:1:49:"},
        HexErrorCase{"xxd_offset", "00000000: a7e5 1001\n00000008: 0000", "Et:2:1:"},
        HexErrorCase{"xxd_odd_group", "00000000: a7e5 100 1111  ....", "Et:1:16:"},
        HexErrorCase{"xxd_not_a_line", "00000000: a7e5\na7e5", "Et:2:1:"},
        HexErrorCase{"hexdump_bad_byte", "00000000  a7 zz  |..|", "Et:1:14:"},
        HexErrorCase{"hexdump_repeat_unended", "00000000  a7 e5 10  |...|\n*\n", "Et:2:1:"},
        HexErrorCase{"od_repeat_uneven", "000000 a7 e5 10\n*\n000004\n", "Et:3:1:"},
        // One '*' may stand for 16 MiB: a dump cannot make the tool expand 2^64 bytes.
        HexErrorCase{"repeat_without_end", "00000000  00  |.|\n*\nfffffffffffffff0\n", "Et:3:1:"},
        HexErrorCase{"repeat_over_the_cap", "000000 00 00 00 00 00 00 00 00\n*\n1000010\n", "Et:3:1:"},
        HexErrorCase{"lone_slash", "a7 e5 / 10", "Et:1:7:"},
        HexErrorCase{"comment_not_closed_is_fine_but_slash_at_end", "a7 /* e5 */ 10/", "Et:1:15:"},
        HexErrorCase{"c_element_too_big", "{0xa7, 0x1ff}", "Et:1:8:"},
        HexErrorCase{"c_element_not_a_number", "p = {\n0xa7, 09 }", "Et:2:7:"},
        HexErrorCase{"c_brace_not_closed", "uint8_t p[] = {0xa7, 0xe5,\n", "Et:1:15:"},
        HexErrorCase{"c_brace_not_opened", "p[] = {0xa7}}", "Et:1:13:"},
        HexErrorCase{"escape_one_digit", "\"\\xa7\\xe\"", "Et:1:6:"},
        HexErrorCase{"escape_unknown", "\"\\xa7\\q\"", "Et:1:6:"},
        HexErrorCase{"string_not_closed", "b'\\xa7\\xe5\n'", "Et:1:2:"},
        HexErrorCase{"utf16_beyond_ascii", utf16("a7 e\xe9", true), "Et:1:5:"},
        HexErrorCase{"utf16_half_a_character", utf16("a7e5", false) + "\x0a", "Et:1:5:"}),
    [](const auto &info) { return std::string(info.param.name); });

// A packet of `code` (0x0b: a u32 reply), cut short to `size`.
Bytes packet(uint16_t bodyLength, uint8_t fill = 0, size_t size = SIZE_MAX, uint16_t code = 0x0b) {
    Bytes p(std::max<size_t>(10, std::min(20 + size_t{bodyLength}, size)), fill);
    p[0] = 0xa7, p[1] = 0xe5, p[2] = 0x10, p[4] = uint8_t(code >> 8), p[5] = uint8_t(code);
    p[8] = static_cast<uint8_t>(bodyLength >> 8);
    p[9] = static_cast<uint8_t>(bodyLength);
    p.resize(std::min(p.size(), size));
    return p;
}

// Framing, with the input as raw bytes and as one line of hex (one token
// longer than a read chunk).
struct FramingCase {
    const char *name;
    Bytes input;
    std::string items;
};

class Framing : public testing::TestWithParam<FramingCase> {};

TEST_P(Framing, ByBodyLength) {
    const FramingCase &c = GetParam();
    const Drained raw = drain(std::string(c.input.begin(), c.input.end()), InputFormat::Raw);
    const Drained hex = drain(toHex(c.input), InputFormat::Hex);
    EXPECT_EQ(raw.items, c.items);
    EXPECT_EQ(hex.items, c.items);
    EXPECT_TRUE(raw.bytes == c.input && hex.bytes == c.input);
}

INSTANTIATE_TEST_SUITE_P(PacketInput, Framing,
                         testing::Values(FramingCase{"empty", {}, ""}, FramingCase{"body_0", packet(0), "P0+20"},
                                         FramingCase{"trailing", concat({packet(3, 0xa7), packet(4, 0, 5)}), "P0+23 T23+5"},
                                         FramingCase{"short_header", packet(4, 0, 19), "T0+19"},
                                         FramingCase{"short_body", packet(100, 0, 90), "T0+90"},
                                         FramingCase{"body_65535", concat({packet(65535, 0xff), packet(1)}), "P0+65555 P65555+21"},
                                         // Framed at the mark even when the body is too short for its code.
                                         FramingCase{"short_for_its_code", concat({packet(2), packet(4)}), "P0+22 P22+24"},
                                         // Bytes without the mark are skipped up to the next packet.
                                         FramingCase{"garbage_between", concat({packet(4), {1, 2, 3}, packet(4)}), "P0+24 S24+3 P27+24"},
                                         FramingCase{"garbage_first", concat({{0xa7, 0xa7, 0xe6}, packet(4)}), "S0+3 P3+24"},
                                         // After skipped bytes a header must be plausible: a known
                                         // version and room for its code's fixed part (0x0b: 4).
                                         FramingCase{"short_after_skip", concat({{9}, packet(2), packet(4)}), "S0+23 P23+24"},
                                         FramingCase{"unknown_version_after_skip",
                                                     concat({{9}, hexBytes("A7E5 77 00 000B 0000 0004 00000000 00000000 0000 00000000"), packet(4)}),
                                                     "S0+25 P25+24"},
                                         FramingCase{"garbage_last", concat({packet(0), Bytes(300, 0x55)}), "P0+20 S20+300"}),
                         [](const auto &info) { return std::string(info.param.name); });

// Bytes pushed in pieces of any size, with bytes lost in between: what was
// held of a packet is skipped, the gap reported, and framing resumes at the
// next plausible header. Of a long skipped run only the first bytes are kept.
TEST(StreamFramer, GapsAndPiecesOfAnySize) {
    const Bytes before = concat({packet(4), packet(8, 0x11, 15)}); // a packet, and one cut by the loss
    const Bytes after = concat({Bytes(5000, 0), packet(2), packet(4)});
    for (size_t piece : {size_t{1}, size_t{7}, size_t{4096}}) {
        SCOPED_TRACE(piece);
        trov::StreamFramer framer(false);
        std::string items;
        auto feed = [&](const Bytes &b) {
            for (size_t at = 0; at < b.size(); at += piece)
                framer.push(b.data() + at, std::min(piece, b.size() - at));
        };
        feed(before);
        framer.gap(100);
        feed(after);
        framer.finish();
        std::vector<trov::PacketItem> all;
        for (trov::PacketItem item; framer.next(item);) {
            items += (items.empty() ? "" : " ") + describe(item);
            all.push_back(item);
        }
        EXPECT_EQ(items, "P0+24 S24+15 G39+100 S139+5022 P5161+24");
        ASSERT_EQ(all.size(), 5u);
        EXPECT_EQ(all[3].bytes.size(), trov::StreamFramer::kKeptSkipped);
    }
}

TEST(PacketInput, HexdumpRepeatLongerThanAChunk) {
    const Drained d = drain("00000000  a7 e5 10 00 00 00 00 00  ff ff 00 00 00 00 00 00  |................|\n"
                            "00000010  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00  |................|\n"
                            "*\n"
                            "00010010  00 00 00                                          |...|\n"
                            "00010013\n",
                            InputFormat::Detect);
    EXPECT_EQ(d.items, "P0+65555");
    EXPECT_EQ(std::count(d.bytes.begin(), d.bytes.end(), 0), 65535 + 15);
}

TEST(PacketInput, ReadErrorsAreItems) {
    struct Failing : std::streambuf {
        int_type underflow() override { throw std::runtime_error("device gone"); }
    } failing;
    std::istream in(&failing);
    EXPECT_EQ(drain(*PacketInput::fromStream(in, "dev", InputFormat::Detect)).items, "Ecannot read dev: read error");
}

// (A missing file or a directory: DecodeCommandTest; standard input through
// its descriptor: check-big-stream.)
TEST(PacketInput, File) {
    const std::string path = testing::TempDir() + "PacketInputTest.bin";
    const Bytes bytes = concat({packet(2, 0x0d), {0xa7}}); // CR in the body, unchanged by binary reads on Windows
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char *>(bytes.data()), std::ssize(bytes));

    std::string error;
    auto file = PacketInput::open(path, InputFormat::Detect, error);
    ASSERT_NE(file, nullptr) << error;
    EXPECT_EQ(drain(*file).items, "P0+22 T22+1");
    std::remove(path.c_str());
}

} // namespace
