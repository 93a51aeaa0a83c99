// `trov encode`: packet objects (the shape `trov decode` prints) read as one
// JSON value, an array of them, or one per line, and written as packets.
#include "EncodeCommand.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "DecodeCommand.h"
#include "JsonErrors.h"
#include "RecordBuild.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace trov {

namespace {

// Hex text: lowercase, 16 bytes to a line.
void writeHex(const std::vector<uint8_t> &bytes, std::ostream &out) {
    static const char digits[] = "0123456789abcdef";
    std::string line;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i % 16 != 0) line += ' ';
        line += digits[bytes[i] >> 4];
        line += digits[bytes[i] & 0xF];
        if (i % 16 == 15 || i + 1 == bytes.size()) {
            out << line << '\n';
            line.clear();
        }
    }
}

class Encoder {
public:
    Encoder(bool raw, std::ostream &out, std::ostream &err) : raw_(raw), out_(out), err_(err) {}

    // One packet object; false after an error (reported).
    bool packet(const Json &packet, const std::string &where, const std::string &path) {
        const std::string reason = undecodedReason(packet);
        if (!reason.empty()) {
            err_ << "trov encode: " << where << (path.empty() ? "/" : path) << ": skipped: " << reason << '\n';
            return true;
        }
        std::vector<uint8_t> bytes;
        JsonError error;
        if (!encodePacket(packet, path, bytes, error)) {
            err_ << "trov encode: " << where << (error.path.empty() ? "/" : error.path) << ": " << error.message
                 << '\n';
            return false;
        }
        if (raw_) {
            out_.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        } else {
            if (written_ != 0) out_ << '\n';
            writeHex(bytes, out_);
        }
        ++written_;
        return static_cast<bool>(out_);
    }

    // A whole JSON value: a packet object or an array of them.
    bool value(const Json &value, const std::string &where) {
        if (value.is_array()) {
            for (size_t i = 0; i < value.size(); ++i)
                if (!packet(value[i], where, "/" + std::to_string(i))) return false;
            return true;
        }
        return packet(value, where, "");
    }

private:
    bool raw_;
    std::ostream &out_;
    std::ostream &err_;
    size_t written_ = 0;
};

// The first line that is not blank, and whether more follow it.
bool looksLikeLines(const std::string &text) {
    std::istringstream lines(text);
    std::string line;
    int filled = 0;
    bool firstParses = false;
    while (filled < 2 && std::getline(lines, line)) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        if (++filled == 1) firstParses = Json::accept(line);
    }
    return filled == 2 && firstParses;
}

int encodeText(const std::string &text, const std::string &name, Encoder &encoder, std::ostream &err) {
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
        err << "trov encode: " << name << ": no JSON in the input\n";
        return 2;
    }
    if (looksLikeLines(text)) {
        std::istringstream lines(text);
        std::string line;
        for (size_t number = 1; std::getline(lines, line); ++number) {
            if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
            const std::string where = name + ":" + std::to_string(number) + ": ";
            Json value;
            try {
                value = Json::parse(line);
            } catch (const Json::parse_error &e) {
                err << "trov encode: " << jsonSyntaxError(e, name, number) << '\n';
                return 2;
            }
            if (!encoder.value(value, where)) return 2;
        }
        return 0;
    }
    Json value;
    try {
        value = Json::parse(text);
    } catch (const Json::parse_error &e) {
        err << "trov encode: " << jsonSyntaxError(e, name, 1) << '\n';
        return 2;
    }
    if (!value.is_object() && !value.is_array()) {
        err << "trov encode: " << name << ": expected a packet object, an array of them, or one per line\n";
        return 2;
    }
    return encoder.value(value, name + ": ") ? 0 : 2;
}

} // namespace

std::string undecodedReason(const Json &packet) {
    if (!packet.is_object()) return {};
    if (packet.contains("trailing")) return "trailing bytes, not a packet";
    if (packet.contains("skipped")) return "skipped bytes, not a packet";
    if (packet.contains("gap")) return "bytes lost from the stream, not a packet";
    const auto body = packet.find("body");
    if (body == packet.end() || !body->is_object()) return {};
    const auto status = body->find("status");
    if (status == body->end() || (status->is_string() && *status == "decoded")) return {};
    if (!status->is_string()) return "its body's status is not a string";
    if (*status == "skipped" && skippedEmptyBody(packet)) return {}; // the header is the packet
    return "its body was not decoded (status \"" + status->get<std::string>() + "\")";
}

int encodeJsonText(const std::string &text, const std::string &name, bool raw, std::ostream &out,
                   std::ostream &err) {
    try {
        Encoder encoder(raw, out, err);
        const int code = encodeText(text, name, encoder, err);
        // A failed write (a full disk, a closed output) shows here at the latest.
        if (!out.flush()) {
            err << "trov encode: the output cannot be written\n";
            return kExitInputError;
        }
        return code;
    } catch (const std::exception &e) {
        err << "trov encode: " << name << ": " << e.what() << '\n';
        return 2;
    } catch (...) {
        err << "trov encode: " << name << ": unexpected failure\n";
        return 2;
    }
}

int runEncode(const std::string &path, bool raw, std::ostream &out, std::ostream &err) {
    try {
        std::string text;
        std::string name = path;
        if (path == "-") {
            name = "<stdin>";
            text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
        } else {
            std::error_code code;
            if (std::filesystem::is_directory(path, code)) {
                err << "trov encode: " << path << ": is a directory\n";
                return 2;
            }
            std::ifstream in(path, std::ios::binary);
            if (!in) {
                err << "trov encode: " << path << ": cannot open\n";
                return 2;
            }
            text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
            if (in.bad()) {
                err << "trov encode: " << path << ": read error\n";
                return 2;
            }
        }
#ifdef _WIN32
        // Raw packets go to standard output byte for byte, never with line ends
        // translated.
        if (raw && &out == &std::cout) {
            std::cout.flush();
            _setmode(_fileno(stdout), _O_BINARY);
        }
#endif
        return encodeJsonText(text, name, raw, out, err);
    } catch (const std::exception &e) {
        err << "trov encode: " << e.what() << '\n';
        return 2;
    } catch (...) {
        err << "trov encode: unexpected failure\n";
        return 2;
    }
}

} // namespace trov
