// The input's bytes, read in chunks, and pasted hexadecimal text turned back
// into bytes as it streams past.
//
// Hex text is what people paste, in one of these forms, which the first line
// holding data tells apart:
// - plain hex digits with any spacing and line breaks, tokens with a 0x
//   prefix, bytes separated by ':' '-' or ',' ("a7:e5:10"), with '#', "//"
//   and "/* */" comments (plain `xxd -p` output is plain hex too);
// - a C array, "uint8_t p[] = { 0xa7, 0xe5, ... };" (`xxd -i`): only what
//   stands between braces is read, each element a C integer literal of one
//   byte; a first data line holding '{', '=' or '[' is one;
// - string literals with escapes, "\xa7\xe5" (C, Python's b'...', split over
//   lines with quotes): inside quotes a character is its own byte, escapes
//   (\xHH, octal, \n and the like) give theirs; outside quotes only bare
//   escapes are read. A first data line holding "\x" is one;
// - the dumps of `xxd`, `hexdump -C` and `od -Ax -tx1`: "OFFSET: ..." is xxd
//   (an offset of four or more digits, ':' and a space); an offset of six or
//   more zero digits followed by bytes is hexdump or od. In a dump only the
//   bytes count: the offsets are checked against the bytes so far, the ASCII
//   columns are never read, and a '*' line (the previous line repeats up to
//   the next offset) is expanded, up to kMaxRepeat bytes a '*'.
//
// The text is ASCII, or UTF-8 after a byte-order mark (EF BB BF), or UTF-16
// after its mark (FF FE little-endian, as PowerShell's '>' writes it; FE FF
// big-endian), decoded a chunk at a time; a character beyond ASCII is never a
// digit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace trov {

// Reads one input, a file descriptor or a std::istream, a chunk at a time.
class ChunkReader {
public:
    static constexpr size_t kChunk = 64 * 1024;

    ChunkReader(std::istream &in, std::string name);
    // Takes ownership of `fd` when `owned`.
    ChunkReader(int fd, bool owned, std::string name);
    ~ChunkReader();
    ChunkReader(const ChunkReader &) = delete;
    ChunkReader &operator=(const ChunkReader &) = delete;

    // Whether unread bytes are available, reading the next chunk when none
    // are; false at the end of the input or after a read error (error()).
    bool ensure();
    const uint8_t *data() const { return buffer_.data() + pos_; }
    size_t size() const { return length_ - pos_; }
    void consume(size_t n) { pos_ += n; }
    // Up to n bytes into dst, fewer only at the end or on an error.
    size_t read(uint8_t *dst, size_t n);

    const std::string &name() const { return name_; }
    // "cannot read NAME: reason" after a read error, else empty.
    const std::string &error() const { return error_; }

private:
    std::istream *in_ = nullptr;
    int fd_ = -1;
    bool owned_ = false;
    std::string name_;
    std::vector<uint8_t> buffer_;
    size_t pos_ = 0;
    size_t length_ = 0;
    bool end_ = false;
    std::string error_;
};

// Hex text from a ChunkReader as bytes. Bytes are handed out only once the
// token or dump line they come from has been read whole, so a bad token never
// yields part of itself (a plain token longer than a chunk is the exception).
class HexText {
public:
    // The most bytes one '*' line of a dump may stand for (16 MiB); a dump
    // whose next offset lies further is refused rather than expanded.
    static constexpr uint64_t kMaxRepeat = uint64_t{16} << 20;

    explicit HexText(ChunkReader &text);

    // Up to n bytes into dst, fewer only at the end of the text or on an
    // error, after which error() is "NAME:LINE:COLUMN: what is wrong" (or the
    // reader's error) and nothing more is read.
    size_t read(uint8_t *dst, size_t n);
    const std::string &error() const { return error_; }

private:
    enum class Mode { Unknown, Plain, CArray, Escapes, Xxd, OffsetDump };
    enum class Encoding { Unknown, Ascii, Utf16LE, Utf16BE };
    enum class Comment { None, Line, Block };

    bool produce();
    bool fill();
    void decode(const uint8_t *bytes, size_t n);
    void scan();
    void finish();
    void endLine();
    void classify();
    bool tokenMode() const { return mode_ == Mode::Plain || mode_ == Mode::CArray || mode_ == Mode::Escapes; }
    void tokenChar(char c, uint64_t column);
    void tokenLineEnd();
    bool comment(char c, uint64_t column, bool slashIsError);
    void plainChar(char c, uint64_t column);
    void plainEndToken();
    void arrayChar(char c, uint64_t column);
    void arrayEndToken();
    void escapeChar(char c, uint64_t column);
    void escapeNext(char c, uint64_t column);
    void dumpLine(const std::string &line);
    void append(const uint8_t *bytes, size_t n);
    void commitByte(uint8_t byte);
    void fail(uint64_t line, uint64_t column, const std::string &what);

    ChunkReader &text_;
    Mode mode_ = Mode::Unknown;
    uint64_t line_ = 1;
    uint64_t column_ = 0;    // of the last character read on line_
    std::string lineText_;   // the line so far, until the form is known and in dumps

    // The text as characters, a chunk at a time.
    Encoding encoding_ = Encoding::Unknown;
    std::string chars_;
    size_t charPos_ = 0;
    bool halfUnit_ = false;  // UTF-16: the first byte of a unit read, the second not yet
    uint8_t firstByte_ = 0;

    // Comments in the token forms.
    Comment comment_ = Comment::None;
    bool blockAtLineStart_ = false; // a "/*" left open by the lines before
    bool slash_ = false;            // a '/' that may start a comment
    bool star_ = false;             // a '*' in a block comment that may end it
    uint64_t slashColumn_ = 0;

    // The token being read.
    bool inToken_ = false;
    uint64_t tokenColumn_ = 0;
    uint64_t tokenChars_ = 0;
    uint64_t tokenDigits_ = 0;
    int high_ = 0;
    std::string token_;      // a C array's element

    // C arrays: how deep in braces, and where the outermost opened.
    uint64_t depth_ = 0;
    uint64_t braceLine_ = 0, braceColumn_ = 0;

    // String literals: the open quote (0 outside), and the escape being read.
    enum class Escape { None, Start, Hex, Octal } escape_ = Escape::None;
    char quote_ = 0;
    uint64_t quoteLine_ = 0, quoteColumn_ = 0, escapeColumn_ = 0;
    unsigned escapeDigits_ = 0, escapeValue_ = 0;

    // Decoded bytes: [readPos_, committed_) can be handed out; the rest
    // belongs to a token not yet ended.
    std::vector<uint8_t> out_;
    size_t readPos_ = 0;
    size_t committed_ = 0;

    // Dumps.
    uint64_t dumpOffset_ = 0;        // where the next dump line must start
    std::vector<uint8_t> lastLine_;  // the bytes of the last dump line, for '*'
    std::vector<uint8_t> lineBytes_;
    bool repeatPending_ = false;     // a '*' line waits for the offset that ends it
    uint64_t repeatLine_ = 0;
    uint64_t repeatLeft_ = 0;        // bytes of repetition still to hand out
    std::vector<uint8_t> held_;      // the line after the repetition
    bool holding_ = false;
    bool stop_ = false;              // scanning pauses while a repetition drains

    bool done_ = false;
    std::string error_;
};

} // namespace trov
