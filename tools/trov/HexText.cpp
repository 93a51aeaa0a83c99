// Chunked reading of one input, and hex text to bytes (see HexText.h for the
// forms of text accepted).
//
// The text is scanned a character at a time, so a line of plain hex may be of
// any length; dump lines are collected whole (they are short) and parsed as
// lines. Until the first line that holds data, lines are collected too, to
// tell which form the text is in.
#include "HexText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace trov {

namespace {

// Dump lines are short (xxd -c 256 is under 1 KiB); a longer line in a dump
// is an error, a longer first line is plain hex.
constexpr size_t kMaxDumpLine = 16 * 1024;

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

constexpr char kDigits[] = "0123456789abcdef";

std::string notHex(char c) {
    const auto u = static_cast<unsigned char>(c);
    if (u >= 0x20 && u < 0x7f) return std::string("'") + c + "' is not a hex digit";
    return std::string("byte 0x") + kDigits[u >> 4] + kDigits[u & 15] + " is not a hex digit";
}

// The byte of a one-letter escape (\n, \", ...), or -1.
int namedEscape(char c) {
    switch (c) {
    case 'n': return '\n';
    case 't': return '\t';
    case 'r': return '\r';
    case 'a': return '\a';
    case 'b': return '\b';
    case 'f': return '\f';
    case 'v': return '\v';
    case '\\': case '\'': case '"': case '?': return c;
    default: return -1;
    }
}

std::string hex64(uint64_t v) {
    std::string s;
    do {
        s.insert(s.begin(), kDigits[v & 15]);
        v >>= 4;
    } while (v != 0);
    return "0x" + s;
}

size_t skipBlanks(const std::string &s, size_t p) {
    while (p < s.size() && isBlank(s[p])) ++p;
    return p;
}

size_t skipHex(const std::string &s, size_t p) {
    while (p < s.size() && hexValue(s[p]) >= 0) ++p;
    return p;
}

// The line with its comments blanked out ('#' and "//" to its end, "/* */"
// anywhere), `block` carrying a "/*" left open from one line to the next.
std::string withoutComments(const std::string &s, bool &block) {
    std::string d = s;
    for (size_t i = 0; i < d.size(); ++i) {
        if (block) {
            block = !(d[i] == '*' && i + 1 < d.size() && d[i + 1] == '/');
            if (!block) d[i + 1] = ' ';
            d[i] = ' ';
        } else if (d[i] == '#' || (d[i] == '/' && i + 1 < d.size() && d[i + 1] == '/')) {
            d.resize(i);
        } else if (d[i] == '/' && i + 1 < d.size() && d[i + 1] == '*') {
            block = true;
            d[i] = ' ';
            d[++i] = ' ';
        }
    }
    return d;
}

} // namespace

// ---------------------------------------------------------------- reading

ChunkReader::ChunkReader(std::istream &in, std::string name)
    : in_(&in), name_(std::move(name)), buffer_(kChunk) {}

ChunkReader::ChunkReader(int fd, bool owned, std::string name)
    : fd_(fd), owned_(owned), name_(std::move(name)), buffer_(kChunk) {}

ChunkReader::~ChunkReader() {
#ifdef _WIN32
    if (owned_) _close(fd_);
#else
    if (owned_) ::close(fd_);
#endif
}

bool ChunkReader::ensure() {
    if (pos_ < length_) return true;
    if (end_) return false;
    pos_ = length_ = 0;
    if (in_ != nullptr) {
        // A stream may be set to throw; its failure is a read error all the same.
        try {
            in_->read(reinterpret_cast<char *>(buffer_.data()), static_cast<std::streamsize>(buffer_.size()));
            length_ = static_cast<size_t>(in_->gcount());
            if (in_->bad()) error_ = "cannot read " + name_ + ": read error";
        } catch (const std::exception &e) {
            // A stream set to throw at its end is not in error there.
            length_ = static_cast<size_t>(in_->gcount());
            if (!in_->eof()) error_ = "cannot read " + name_ + ": " + e.what();
        }
        if (length_ == 0 || !*in_) end_ = true;
    } else {
        for (;;) {
#ifdef _WIN32
            const int n = _read(fd_, buffer_.data(), static_cast<unsigned>(buffer_.size()));
#else
            const ssize_t n = ::read(fd_, buffer_.data(), buffer_.size());
#endif
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) error_ = "cannot read " + name_ + ": " + std::strerror(errno);
            else length_ = static_cast<size_t>(n);
            end_ = n <= 0;
            break;
        }
    }
    // What was read before an error is kept; the error ends the input.
    if (!error_.empty()) end_ = true;
    return length_ > 0;
}

size_t ChunkReader::read(uint8_t *dst, size_t n) {
    size_t got = 0;
    while (got < n && ensure()) {
        const size_t k = std::min(n - got, size());
        std::memcpy(dst + got, data(), k);
        consume(k);
        got += k;
    }
    return got;
}

// ---------------------------------------------------------------- hex text

HexText::HexText(ChunkReader &text) : text_(text) {}

size_t HexText::read(uint8_t *dst, size_t n) {
    size_t got = 0;
    while (got < n) {
        if (readPos_ == committed_ && !produce()) break;
        const size_t k = std::min(n - got, committed_ - readPos_);
        std::memcpy(dst + got, out_.data() + readPos_, k);
        readPos_ += k;
        got += k;
    }
    return got;
}

// Makes more bytes available; false when there are no more.
bool HexText::produce() {
    out_.erase(out_.begin(), out_.begin() + static_cast<std::ptrdiff_t>(readPos_));
    committed_ -= readPos_;
    readPos_ = 0;
    while (committed_ == 0) {
        if (repeatLeft_ > 0) {
            // Whole copies of the repeated line, about a chunk at a time.
            const uint64_t copies =
                std::min<uint64_t>(repeatLeft_ / lastLine_.size(), std::max<size_t>(1, ChunkReader::kChunk / lastLine_.size()));
            const size_t at = out_.size(), total = static_cast<size_t>(copies) * lastLine_.size();
            append(lastLine_.data(), lastLine_.size());
            out_.resize(at + total);
            // Each copy doubles what is there.
            for (size_t filled = lastLine_.size(); filled < total; filled *= 2)
                std::memcpy(out_.data() + at + filled, out_.data() + at, std::min(filled, total - filled));
            repeatLeft_ -= total;
            committed_ = out_.size();
        } else if (holding_) {
            holding_ = false;
            append(held_.data(), held_.size());
            lastLine_.swap(held_);
            committed_ = out_.size();
        } else if (done_) {
            return false;
        } else if (charPos_ < chars_.size() || fill()) {
            scan();
        } else if (!text_.error().empty()) {
            out_.resize(committed_);
            error_ = text_.error();
            done_ = true;
        } else {
            finish();
        }
    }
    return true;
}

// The next chunk of the text as characters; false at its end (or a read error).
bool HexText::fill() {
    chars_.clear();
    charPos_ = 0;
    if (encoding_ == Encoding::Unknown) {
        // A byte-order mark says how the text is written; without one it is ASCII.
        uint8_t head[3];
        const size_t n = text_.read(head, sizeof head);
        size_t mark = 0;
        encoding_ = Encoding::Ascii;
        if (n == 3 && head[0] == 0xef && head[1] == 0xbb && head[2] == 0xbf) {
            mark = 3;
        } else if (n >= 2 && head[0] == 0xff && head[1] == 0xfe) {
            encoding_ = Encoding::Utf16LE, mark = 2;
        } else if (n >= 2 && head[0] == 0xfe && head[1] == 0xff) {
            encoding_ = Encoding::Utf16BE, mark = 2;
        }
        decode(head + mark, n - mark);
    }
    while (chars_.empty() && text_.ensure()) {
        decode(text_.data(), text_.size());
        text_.consume(text_.size());
    }
    return !chars_.empty();
}

// Appends the characters of `n` bytes of text to chars_.
void HexText::decode(const uint8_t *bytes, size_t n) {
    if (encoding_ == Encoding::Ascii) {
        chars_.append(reinterpret_cast<const char *>(bytes), n);
        return;
    }
    const bool little = encoding_ == Encoding::Utf16LE;
    for (size_t i = 0; i < n; ++i) {
        if (!halfUnit_) {
            firstByte_ = bytes[i];
            halfUnit_ = true;
            continue;
        }
        halfUnit_ = false;
        const unsigned unit = little ? unsigned{bytes[i]} << 8 | firstByte_ : unsigned{firstByte_} << 8 | bytes[i];
        // Beyond ASCII only strings could hold a character, and they hold
        // ASCII: 0xff stands for any of them, for the error to name.
        chars_.push_back(unit < 0x80 ? static_cast<char>(unit) : '\xff');
    }
}

// Reads the characters of the current chunk, up to a pause for a repetition.
void HexText::scan() {
    stop_ = false;
    const size_t n = chars_.size();
    size_t i = charPos_;
    while (i < n && !stop_ && !done_) {
        const char c = chars_[i++];
        if (c == '\n') {
            endLine();
            ++line_;
            column_ = 0;
            continue;
        }
        ++column_;
        if (tokenMode()) {
            tokenChar(c, column_);
        } else if (lineText_.size() < kMaxDumpLine) {
            lineText_.push_back(c);
        } else if (mode_ == Mode::Unknown) {
            // Far too long for a dump: plain hex, read on as it streams.
            mode_ = Mode::Plain;
            comment_ = blockAtLineStart_ ? Comment::Block : Comment::None;
            for (size_t k = 0; k < lineText_.size() && !done_; ++k) plainChar(lineText_[k], k + 1);
            lineText_.clear();
            plainChar(c, column_);
        } else {
            fail(line_, column_, "line too long for a dump");
        }
    }
    charPos_ = i;
    // A plain token longer than a chunk is handed out as it goes, rather than
    // held back whole.
    if (out_.size() - committed_ >= ChunkReader::kChunk) committed_ = out_.size();
}

void HexText::finish() {
    if (halfUnit_) fail(line_, column_ + 1, "the UTF-16 text ends in the middle of a character");
    if (!done_ && !lineText_.empty()) endLine();
    if (!done_ && tokenMode()) {
        tokenLineEnd();
        if (!done_ && mode_ == Mode::CArray && depth_ > 0) fail(braceLine_, braceColumn_, "'{' is not closed");
    }
    if (!done_ && repeatPending_) fail(repeatLine_, 1, "'*' is not followed by the offset where the repetition ends");
    done_ = true;
}

void HexText::endLine() {
    if (mode_ == Mode::Unknown) classify();
    if (tokenMode()) return tokenLineEnd();
    if (mode_ != Mode::Unknown) dumpLine(lineText_);
    lineText_.clear();
}

// Tells the form from the first line that holds data (lines of comments
// before it are dropped), then reads that line in it.
void HexText::classify() {
    bool block = blockAtLineStart_;
    const std::string s = lineText_;
    const std::string d = withoutComments(s, block);
    const size_t p = skipBlanks(d, 0);
    if (p == d.size()) {
        blockAtLineStart_ = block;
        lineText_.clear();
        return;
    }
    const size_t q = skipHex(d, p);
    // A '#' inside a string literal reads as a comment here: a quote left
    // before it with "\x" in the whole line is a string too.
    if (d.find("\\x") != std::string::npos ||
        (s.find("\\x") != std::string::npos && d.find_first_of("\"'") != std::string::npos)) {
        mode_ = Mode::Escapes;
    } else if (d.find_first_of("{=[") != std::string::npos) {
        mode_ = Mode::CArray;
    } else if (q - p >= 4 && q < d.size() && d[q] == ':' && (q + 1 == d.size() || isBlank(d[q + 1]))) {
        mode_ = Mode::Xxd;
    } else if (q - p >= 6 && q < d.size() && isBlank(d[q]) && std::all_of(d.begin() + p, d.begin() + q, [](char c) { return c == '0'; })) {
        // An offset of zero, then hexdump's "|ascii|" or od's bytes, each
        // two digits. Plain hex starting with three zero bytes written as
        // one token, then single bytes, reads as od: an accepted ambiguity.
        bool bytes = d.find('|', q) != std::string::npos;
        for (size_t t = skipBlanks(d, q); !bytes && t < d.size();) {
            const size_t e = skipHex(d, t);
            if (e - t != 2 || (e < d.size() && !isBlank(d[e]))) break;
            t = skipBlanks(d, e);
            bytes = t == d.size();
        }
        mode_ = bytes ? Mode::OffsetDump : Mode::Plain;
    } else {
        mode_ = Mode::Plain;
    }
    if (tokenMode()) {
        comment_ = blockAtLineStart_ ? Comment::Block : Comment::None;
        lineText_.clear();
        for (size_t k = 0; k < s.size() && !done_; ++k) tokenChar(s[k], k + 1);
    }
}

// ---------------------------------------------------------------- token forms

void HexText::tokenChar(char c, uint64_t column) {
    switch (mode_) {
    case Mode::Plain: return plainChar(c, column);
    case Mode::CArray: return arrayChar(c, column);
    default: return escapeChar(c, column);
    }
}

void HexText::tokenLineEnd() {
    if (done_) return;
    if (slash_ && (mode_ == Mode::Plain || (mode_ == Mode::CArray && depth_ > 0))) return fail(line_, slashColumn_, notHex('/'));
    slash_ = false;
    if (comment_ == Comment::Line) comment_ = Comment::None;
    star_ = false;
    switch (mode_) {
    case Mode::Plain: return plainEndToken();
    case Mode::CArray: return arrayEndToken();
    default:
        if (escape_ == Escape::Start) {
            escape_ = Escape::None; // a backslash before the line break joins the lines
            return;
        }
        if (escape_ == Escape::Hex) {
            return fail(line_, escapeColumn_, "\"\\x\" needs two hex digits");
        } else if (escape_ == Escape::Octal) {
            escape_ = Escape::None;
            commitByte(static_cast<uint8_t>(escapeValue_));
        }
        if (quote_ != 0) return fail(quoteLine_, quoteColumn_, "the string is not closed on its line");
    }
}

// Comments: '#' and "//" to the end of the line, "/* */" anywhere. True when
// `c` belongs to one (or is a '/' that may start one). A '/' that starts none
// is an error where `slashIsError`, else skipped.
bool HexText::comment(char c, uint64_t column, bool slashIsError) {
    if (comment_ == Comment::Line) return true;
    if (comment_ == Comment::Block) {
        if (star_ && c == '/') comment_ = Comment::None;
        star_ = c == '*';
        return true;
    }
    if (slash_) {
        slash_ = false;
        if (c == '/' || c == '*') {
            comment_ = c == '/' ? Comment::Line : Comment::Block;
            star_ = false;
            return true;
        }
        if (slashIsError) {
            fail(line_, slashColumn_, notHex('/'));
            return true;
        }
    }
    if (c == '/') {
        slash_ = true;
        slashColumn_ = column;
        return true;
    }
    if (c == '#') {
        comment_ = Comment::Line;
        return true;
    }
    return false;
}

// Plain hex: tokens of digits pairs, separated by blanks, ',', ':' or '-'.
void HexText::plainChar(char c, uint64_t column) {
    if (done_) return;
    if (comment_ == Comment::None && (c == '#' || c == '/')) plainEndToken();
    if (comment(c, column, true) || done_) return;
    if (isBlank(c) || c == ',' || c == ':' || c == '-') return plainEndToken();
    if (!inToken_) {
        inToken_ = true;
        tokenColumn_ = column;
        tokenChars_ = tokenDigits_ = 0;
    }
    ++tokenChars_;
    // "0x": the '0' already read is the prefix, not a digit.
    if ((c == 'x' || c == 'X') && tokenChars_ == 2 && tokenDigits_ == 1 && high_ == 0) {
        tokenDigits_ = 0;
        return;
    }
    const int v = hexValue(c);
    if (v < 0) return fail(line_, column, notHex(c));
    if (tokenDigits_++ % 2 == 0) {
        high_ = v;
    } else {
        const auto byte = static_cast<uint8_t>(high_ << 4 | v);
        append(&byte, 1);
    }
}

void HexText::plainEndToken() {
    if (!inToken_ || done_) return;
    inToken_ = false;
    if (tokenDigits_ == 0) return fail(line_, tokenColumn_, "\"0x\" without hex digits");
    if (tokenDigits_ % 2 != 0) return fail(line_, tokenColumn_, "odd number of hex digits in a token");
    committed_ = out_.size();
}

// A C array: outside braces (the declaration, ';', a length variable)
// nothing is read; inside, elements separated by ',' and blanks.
void HexText::arrayChar(char c, uint64_t column) {
    if (done_) return;
    if (comment_ == Comment::None && (c == '#' || c == '/')) arrayEndToken();
    if (comment(c, column, depth_ > 0) || done_) return;
    if (c == '{') {
        arrayEndToken();
        if (depth_++ == 0) braceLine_ = line_, braceColumn_ = column;
    } else if (c == '}') {
        arrayEndToken();
        if (depth_ == 0) return fail(line_, column, "'}' without '{'");
        --depth_;
    } else if (depth_ == 0) {
        return;
    } else if (isBlank(c) || c == ',') {
        arrayEndToken();
    } else {
        if (token_.empty()) tokenColumn_ = column;
        if (token_.size() == 32) return fail(line_, tokenColumn_, "'" + token_ + "...' is not a byte value");
        token_.push_back(c);
    }
}

// An element: a C integer literal (0x hex, 0 octal, decimal, a u or l
// suffix) of one byte.
void HexText::arrayEndToken() {
    if (token_.empty() || done_) return;
    const std::string element = std::move(token_);
    token_.clear();
    std::string t = element;
    while (!t.empty() && (t.back() == 'u' || t.back() == 'U' || t.back() == 'l' || t.back() == 'L')) t.pop_back();
    unsigned base = 10;
    size_t i = 0;
    if (t.size() > 1 && t[0] == '0' && (t[1] == 'x' || t[1] == 'X')) base = 16, i = 2;
    else if (t.size() > 1 && t[0] == '0') base = 8, i = 1;
    uint32_t value = 0;
    bool ok = i < t.size();
    for (; ok && i < t.size(); ++i) {
        const int d = hexValue(t[i]);
        ok = d >= 0 && static_cast<unsigned>(d) < base;
        value = std::min<uint32_t>(value * base + static_cast<unsigned>(d), 0x10000);
    }
    if (!ok) return fail(line_, tokenColumn_, "'" + element + "' is not a byte value");
    if (value > 0xff) return fail(line_, tokenColumn_, "'" + element + "' does not fit in a byte");
    commitByte(static_cast<uint8_t>(value));
}

// String literals: inside quotes a printable character is its own byte;
// escapes anywhere give theirs; outside quotes nothing else is read.
void HexText::escapeChar(char c, uint64_t column) {
    if (done_) return;
    if (escape_ != Escape::None) return escapeNext(c, column);
    if (quote_ == 0) {
        if (comment(c, column, false)) return;
        if (c == '"' || c == '\'') quote_ = c, quoteLine_ = line_, quoteColumn_ = column;
        else if (c == '\\') escape_ = Escape::Start, escapeColumn_ = column;
        return;
    }
    const auto u = static_cast<unsigned char>(c);
    if (c == quote_) quote_ = 0;
    else if (c == '\\') escape_ = Escape::Start, escapeColumn_ = column;
    else if ((u >= 0x20 && u < 0x7f) || c == '\t') commitByte(u);
    else fail(line_, column, std::string("byte 0x") + kDigits[u >> 4] + kDigits[u & 15] + " in a string (write it as an escape)");
}

void HexText::escapeNext(char c, uint64_t column) {
    const int d = hexValue(c);
    switch (escape_) {
    case Escape::Start:
        escape_ = Escape::None;
        if (c == 'x') {
            escape_ = Escape::Hex, escapeDigits_ = escapeValue_ = 0;
        } else if (c >= '0' && c <= '7') {
            escape_ = Escape::Octal, escapeDigits_ = 1, escapeValue_ = static_cast<unsigned>(d);
        } else if (const int named = namedEscape(c); named >= 0) {
            commitByte(static_cast<uint8_t>(named));
        } else {
            fail(line_, escapeColumn_, std::string("unknown escape '\\") + c + "'");
        }
        return;
    case Escape::Hex:
        if (d < 0) return fail(line_, escapeColumn_, "\"\\x\" needs two hex digits");
        escapeValue_ = escapeValue_ << 4 | static_cast<unsigned>(d);
        if (++escapeDigits_ == 2) {
            escape_ = Escape::None;
            commitByte(static_cast<uint8_t>(escapeValue_));
        }
        return;
    default: // octal: up to three digits
        if (c >= '0' && c <= '7' && escapeDigits_ < 3) {
            escapeValue_ = escapeValue_ << 3 | static_cast<unsigned>(d);
            if (++escapeDigits_ < 3) return;
            if (escapeValue_ > 0xff) return fail(line_, escapeColumn_, "octal escape beyond 0377");
            escape_ = Escape::None;
            return commitByte(static_cast<uint8_t>(escapeValue_));
        }
        escape_ = Escape::None;
        commitByte(static_cast<uint8_t>(escapeValue_));
        return escapeChar(c, column);
    }
}

// ---------------------------------------------------------------- dumps

void HexText::dumpLine(const std::string &s) {
    const size_t p = skipBlanks(s, 0);
    if (p == s.size() || s[p] == '#') return;
    if (s[p] == '*' && skipBlanks(s, p + 1) == s.size()) {
        if (lastLine_.empty()) return fail(line_, p + 1, "'*' repeats the previous line, but there is none");
        repeatPending_ = true;
        repeatLine_ = line_;
        return;
    }
    const bool xxd = mode_ == Mode::Xxd;
    const size_t q = skipHex(s, p);
    if (q == p || (xxd && (q == s.size() || s[q] != ':')) || (!xxd && q - p < 6))
        return fail(line_, p + 1, xxd ? "expected an xxd line: an offset, ':' and the bytes"
                                      : "expected a dump line: an offset and the bytes");
    if (q - p > 16) return fail(line_, p + 1, "offset too large");
    uint64_t offset = 0;
    for (size_t k = p; k < q; ++k) offset = offset << 4 | static_cast<uint64_t>(hexValue(s[k]));

    // The bytes stand between the offset and the ASCII column: xxd's follows
    // two spaces (its groups are one space apart), hexdump's is "|...|".
    size_t begin = q, end = s.size();
    if (xxd) {
        begin = q + 1;
        end = std::min(end, s.find("  ", begin));
    } else {
        if (q < s.size() && !isBlank(s[q]) && s[q] != '|') return fail(line_, q + 1, notHex(s[q]));
        end = std::min(end, s.find('|', begin));
    }
    end = std::min(end, s.find('#', begin));

    lineBytes_.clear();
    for (size_t t = skipBlanks(s, begin); t < end; t = skipBlanks(s, t)) {
        size_t e = t;
        while (e < end && !isBlank(s[e])) {
            if (hexValue(s[e]) < 0) return fail(line_, e + 1, notHex(s[e]));
            ++e;
        }
        if ((e - t) % 2 != 0) return fail(line_, t + 1, "odd number of hex digits in a token");
        for (size_t k = t; k < e; k += 2)
            lineBytes_.push_back(static_cast<uint8_t>(hexValue(s[k]) << 4 | hexValue(s[k + 1])));
        t = e;
    }

    uint64_t repeat = 0;
    if (repeatPending_) {
        const uint64_t size = lastLine_.size();
        if (offset < dumpOffset_ || (offset - dumpOffset_) % size != 0)
            return fail(line_, p + 1, "offset " + hex64(offset) + " does not end a repetition of the " +
                                          std::to_string(size) + "-byte line before the '*' at byte " +
                                          hex64(dumpOffset_));
        repeat = offset - dumpOffset_;
        repeatPending_ = false;
        // A dump of a few lines may claim any length; what one '*' stands
        // for is bounded, so a bad offset cannot make the tool write for ever.
        if (repeat > kMaxRepeat)
            return fail(line_, p + 1, "offset " + hex64(offset) + " would repeat the line before the '*' for " +
                                          std::to_string(repeat) + " bytes, more than the 16 MiB one '*' may stand for");
    } else if (offset != dumpOffset_) {
        return fail(line_, p + 1, "offset " + hex64(offset) + " disagrees with the " + std::to_string(dumpOffset_) +
                                      " bytes before it");
    }
    dumpOffset_ = offset + lineBytes_.size();
    if (repeat > 0) {
        // The repetition is handed out before this line's bytes; scanning
        // pauses until both are gone.
        repeatLeft_ = repeat;
        held_ = lineBytes_;
        holding_ = !held_.empty();
        stop_ = true;
    } else if (!lineBytes_.empty()) {
        append(lineBytes_.data(), lineBytes_.size());
        committed_ = out_.size();
        lastLine_ = lineBytes_;
    }
}

void HexText::append(const uint8_t *bytes, size_t n) { out_.insert(out_.end(), bytes, bytes + n); }

void HexText::commitByte(uint8_t byte) {
    out_.push_back(byte);
    committed_ = out_.size();
}

void HexText::fail(uint64_t line, uint64_t column, const std::string &what) {
    if (done_) return;
    out_.resize(committed_);
    error_ = text_.name() + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + what;
    done_ = true;
    repeatLeft_ = 0;
    holding_ = false;
}

} // namespace trov
