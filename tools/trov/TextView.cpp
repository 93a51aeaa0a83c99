// The text view: the same content as the JSON packet object, one line per
// scalar field, nested values indented under their name. Colour, when asked
// for, marks the kinds of line: the packet's place, the layout, codes, and
// what went wrong.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "TextView.h"

#ifdef _WIN32
#include <io.h>
#define TROV_ISATTY(fd) _isatty(fd)
#else
#include <unistd.h>
#define TROV_ISATTY(fd) isatty(fd)
#endif

namespace trov {
namespace {

// The stream's slot for the colour switch.
int colourSlot() {
    static const int slot = std::ios_base::xalloc();
    return slot;
}

// SGR sequences of the kinds of text.
enum class Paint { Place, Layout, Code, Problem, Note };

class Painter {
public:
    explicit Painter(std::ostream &out) : on_(out.iword(colourSlot()) != 0) {}

    std::string operator()(Paint paint, const std::string &text) const {
        if (!on_) return text;
        static const char *const codes[] = {"1", "1;32", "36", "1;31", "33"};
        return std::string("\x1b[") + codes[static_cast<int>(paint)] + "m" + text + "\x1b[0m";
    }

private:
    bool on_;
};

std::string hexNumber(uint64_t v, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%0*llx", digits, static_cast<unsigned long long>(v));
    return text;
}

std::string hexNumber(const Json &v, int digits) { return hexNumber(v.get<uint64_t>(), digits); }

// Members that hold a code or an identifier, and the hex digits they show.
int codeDigits(const std::string &name) {
    if (name == "code" || name == "id" || name == "method") return 4;
    if (name == "type") return 2;
    return 0;
}

std::string scalar(const Json &v) {
    if (v.is_string()) return v.get<std::string>();
    return v.dump();
}

bool isScalar(const Json &v) { return !v.is_object() && !v.is_array(); }

// An array of scalars (or of short scalar arrays) fits on one line.
bool isFlat(const Json &v) {
    if (isScalar(v)) return true;
    if (v.is_object()) return false;
    for (const Json &e : v)
        if (!isScalar(e) && !(e.is_array() && e.size() <= 2 && isFlat(e))) return false;
    return true;
}

void writeValue(const std::string &name, const Json &v, int indent, std::ostream &out, const Painter &paint) {
    const std::string pad(static_cast<size_t>(indent), ' ');
    if (const int digits = codeDigits(name); digits != 0 && v.is_number_unsigned()) {
        out << pad << name << ": " << paint(Paint::Code, hexNumber(v, digits)) << '\n';
        return;
    }
    if (isFlat(v)) {
        out << pad << name << ": " << (isScalar(v) ? scalar(v) : v.dump()) << '\n';
        return;
    }
    out << pad << name << ":\n";
    if (v.is_object()) {
        for (const auto &[key, member] : v.items()) writeValue(key, member, indent + 2, out, paint);
    } else {
        size_t i = 0;
        for (const Json &e : v) writeValue("[" + std::to_string(i++) + "]", e, indent + 2, out, paint);
    }
}

uint64_t count(const Json &object, const char *key) {
    const auto it = object.find(key);
    return it != object.end() && it->is_number_unsigned() ? it->get<uint64_t>() : 0;
}

// Where an error stopped, as the error object names it: ", event 1 (code
// 0x0004)", ", attribute 0x0090 (field id)", ", method 0x0096", ", field value1".
std::string location(const Json &e) {
    std::string at;
    if (e.contains("event")) at = ", event " + std::to_string(count(e, "event")) + " (code " + hexNumber(count(e, "code"), 4) + ")";
    else if (e.contains("attribute")) at = ", attribute " + hexNumber(count(e, "attribute"), 4);
    else if (e.contains("method")) at = ", method " + hexNumber(count(e, "method"), 4);
    const std::string field = e.value("field", "");
    if (!field.empty()) at += at.empty() ? ", field " + field : " (field " + field + ")";
    return at;
}

} // namespace

void setTextColour(std::ostream &out, bool colour) { out.iword(colourSlot()) = colour ? 1 : 0; }

bool colourWanted(const std::string &when) {
    if (when == "always") return true;
    if (when != "auto") return false;
    const char *noColour = std::getenv("NO_COLOR");
    return (noColour == nullptr || *noColour == '\0') && TROV_ISATTY(1) != 0;
}

void writeText(const Json &packet, std::ostream &out) {
    const Painter paint(out);
    std::string place;
    if (packet.contains("file") && packet["file"].is_string()) place = packet["file"].get<std::string>() + ", ";
    const uint64_t offset = count(packet, "offset");
    // The items that are not packets: one line each, and the bytes' hex.
    if (packet.contains("skipped")) {
        out << paint(Paint::Place, place + "bytes at offset " + std::to_string(offset)) << ": "
            << paint(Paint::Problem, std::to_string(count(packet, "skipped")) + " bytes skipped, no packet starts there")
            << '\n';
        if (packet.contains("hex")) writeValue("hex", packet["hex"], 2, out, paint);
        return;
    }
    if (packet.contains("gap")) {
        out << paint(Paint::Place, place + "bytes at offset " + std::to_string(offset)) << ": "
            << paint(Paint::Problem, std::to_string(count(packet, "gap")) + " bytes lost from the stream") << '\n';
        return;
    }
    out << paint(Paint::Place, place + "packet at offset " + std::to_string(offset));
    if (packet.contains("trailing"))
        out << ": " << paint(Paint::Problem, std::to_string(count(packet, "trailing")) + " trailing bytes") << '\n';
    else
        out << ", " << count(packet, "length") << " bytes\n";
    if (packet.contains("capture")) { // captured: frame, time, flow, sender -> receiver, direction
        const Json &c = packet["capture"];
        out << "  capture: frame " << c["frame"].get<uint64_t>() << ", " << c["time"].get<std::string>() << ", flow "
            << c["flow"].get<uint64_t>() << ", " << c["src"].get<std::string>() << " -> "
            << c["dst"].get<std::string>() << ", " << c["direction"].get<std::string>() << '\n';
    }
    if (packet.contains("header")) {
        const Json &h = packet["header"];
        out << "  header: mark " << hexNumber(h["mark"], 4) << ", version " << hexNumber(h["version"], 2)
            << ", flags " << hexNumber(h["flags"], 2) << ", code " << paint(Paint::Code, hexNumber(h["code"], 4))
            << ", value4 " << hexNumber(h["value4"], 4) << ", bodyLength " << h["bodyLength"].get<uint64_t>()
            << ", value6 " << hexNumber(h["value6"], 8) << ", value7 " << hexNumber(h["value7"], 8)
            << ", extension " << hexNumber(h["extension"], 4) << '\n';
    }
    if (packet.contains("unitType")) out << "  unit type " << count(packet, "unitType") << '\n';
    const auto body = packet.find("body");
    if (body != packet.end() && body->is_object()) {
        const std::string status = body->value("status", "");
        const auto fields = body->find("fields");
        const bool hasFields = fields != body->end() && fields->is_object();
        if (status == "decoded") {
            out << "  body: " << paint(Paint::Layout, body->value("layout", ""));
            if (body->contains("unread"))
                out << ", " << paint(Paint::Problem, std::to_string(count(*body, "unread")) + " bytes unread");
            out << '\n';
        } else if (status == "skipped") {
            out << "  body: " << paint(Paint::Note, "skipped, " + body->value("reason", "")) << '\n';
        } else if (body->contains("error")) {
            // A failed body, or a partial one (its layout, then the fields it kept).
            const Json &e = (*body)["error"];
            out << "  body: ";
            if (status == "partial") out << paint(Paint::Layout, body->value("layout", "")) << ", ";
            out << paint(Paint::Problem, (status == "partial" ? "partial: stopped at offset " : "failed at offset ") +
                                             std::to_string(count(e, "offset")) + location(e) + ": " +
                                             e.value("name", "") + " (" + std::to_string(count(e, "result")) +
                                             "), " + e.value("meaning", ""))
                << '\n';
        }
        if (hasFields && (status == "decoded" || status == "partial"))
            for (const auto &[key, member] : fields->items()) writeValue(key, member, 4, out, paint);
    }
    // Trailing bytes, and packets not decoded cleanly, show their bytes.
    if (packet.contains("hex")) writeValue("hex", packet["hex"], 2, out, paint);
}

} // namespace trov
