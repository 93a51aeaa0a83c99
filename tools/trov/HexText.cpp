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

std::string notHex(char c) {
    const auto u = static_cast<unsigned char>(c);
    if (u >= 0x20 && u < 0x7f) return std::string("'") + c + "' is not a hex digit";
    static const char digits[] = "0123456789abcdef";
    return std::string("byte 0x") + digits[u >> 4] + digits[u & 15] + " is not a hex digit";
}

std::string hex64(uint64_t v) {
    static const char digits[] = "0123456789abcdef";
    std::string s;
    do {
        s.insert(s.begin(), digits[v & 15]);
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
        } else if (text_.ensure()) {
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

// Reads the characters of the current chunk, up to a pause for a repetition.
void HexText::scan() {
    stop_ = false;
    const auto *chars = reinterpret_cast<const char *>(text_.data());
    const size_t n = text_.size();
    size_t i = 0;
    while (i < n && !stop_ && !done_) {
        const char c = chars[i++];
        if (c == '\n') {
            endLine();
            ++line_;
            column_ = 0;
            continue;
        }
        ++column_;
        if (mode_ == Mode::Plain) {
            plainChar(c, column_);
        } else if (lineText_.size() < kMaxDumpLine) {
            lineText_.push_back(c);
        } else if (mode_ == Mode::Unknown) {
            // Far too long for a dump: plain hex, read on as it streams.
            mode_ = Mode::Plain;
            for (size_t k = 0; k < lineText_.size() && !done_; ++k) plainChar(lineText_[k], k + 1);
            lineText_.clear();
            plainChar(c, column_);
        } else {
            fail(line_, column_, "line too long for a dump");
        }
    }
    text_.consume(i);
    // A plain token longer than a chunk is handed out as it goes, rather than
    // held back whole.
    if (out_.size() - committed_ >= ChunkReader::kChunk) committed_ = out_.size();
}

void HexText::finish() {
    if (mode_ == Mode::Plain) plainEndToken();
    else if (!lineText_.empty()) endLine();
    if (!done_ && repeatPending_) fail(repeatLine_, 1, "'*' is not followed by the offset where the repetition ends");
    done_ = true;
}

void HexText::endLine() {
    if (mode_ == Mode::Plain) {
        plainEndToken();
        inComment_ = false;
        return;
    }
    if (mode_ == Mode::Unknown) {
        const std::string &s = lineText_;
        const size_t p = skipBlanks(s, 0);
        if (p == s.size() || s[p] == '#') {
            lineText_.clear();
            return;
        }
        const size_t q = skipHex(s, p);
        if (q > p && q < s.size() && s[q] == ':') {
            mode_ = Mode::Xxd;
        } else if (q - p >= 6 && q < s.size() && isBlank(s[q]) && std::all_of(s.begin() + p, s.begin() + q, [](char c) { return c == '0'; })) {
            // An offset of zero, then hexdump's "|ascii|" or od's bytes, each
            // two digits. Plain hex starting with three zero bytes written as
            // one token, then single bytes, reads as od: an accepted ambiguity.
            bool bytes = s.find('|', q) != std::string::npos;
            for (size_t t = skipBlanks(s, q); !bytes && t < s.size();) {
                const size_t e = skipHex(s, t);
                if (e - t != 2 || (e < s.size() && !isBlank(s[e]))) break;
                t = skipBlanks(s, e);
                bytes = t == s.size();
            }
            mode_ = bytes ? Mode::OffsetDump : Mode::Plain;
        } else {
            mode_ = Mode::Plain;
        }
        if (mode_ == Mode::Plain) {
            for (size_t k = 0; k < s.size() && !done_; ++k) plainChar(s[k], k + 1);
            lineText_.clear();
            plainEndToken();
            inComment_ = false;
            return;
        }
    }
    dumpLine(lineText_);
    lineText_.clear();
}

// ---------------------------------------------------------------- plain hex

void HexText::plainChar(char c, uint64_t column) {
    if (inComment_ || done_) return;
    if (isBlank(c)) return plainEndToken();
    if (c == '#') {
        plainEndToken();
        inComment_ = true;
        return;
    }
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

void HexText::fail(uint64_t line, uint64_t column, const std::string &what) {
    if (done_) return;
    out_.resize(committed_);
    error_ = text_.name() + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + what;
    done_ = true;
    repeatLeft_ = 0;
    holding_ = false;
}

} // namespace trov
