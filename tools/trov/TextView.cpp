// The text view: the same content as the JSON packet object, one line per
// scalar field, nested values indented under their name.
#include <cstdio>
#include <string>

#include "TextView.h"

namespace trov {
namespace {

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

void writeValue(const std::string &name, const Json &v, int indent, std::ostream &out) {
    const std::string pad(static_cast<size_t>(indent), ' ');
    if (isFlat(v)) {
        out << pad << name << ": " << (isScalar(v) ? scalar(v) : v.dump()) << '\n';
        return;
    }
    out << pad << name << ":\n";
    if (v.is_object()) {
        for (const auto &[key, member] : v.items()) writeValue(key, member, indent + 2, out);
    } else {
        size_t i = 0;
        for (const Json &e : v) writeValue("[" + std::to_string(i++) + "]", e, indent + 2, out);
    }
}

std::string hexNumber(const Json &v, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*llx", digits, static_cast<unsigned long long>(v.get<uint64_t>()));
    return text;
}

// Where an error stopped, as the error object names it: ", event 1 (code
// 0x0004)", ", attribute 0x0090 (field id)", ", method 0x0096", ", field value1".
std::string location(const Json &e) {
    std::string at;
    if (e.contains("event")) at = ", event " + e["event"].dump() + " (code " + hexNumber(e["code"], 4) + ")";
    else if (e.contains("attribute")) at = ", attribute " + hexNumber(e["attribute"], 4);
    else if (e.contains("method")) at = ", method " + hexNumber(e["method"], 4);
    if (e.contains("field")) at += (at.empty() ? ", field " : " (field ") + e["field"].get<std::string>() + (at.empty() ? "" : ")");
    return at;
}

} // namespace

void writeText(const Json &packet, std::ostream &out) {
    if (packet.contains("file")) out << packet["file"].get<std::string>() << ", ";
    out << "packet at offset " << packet.value("offset", uint64_t{0});
    if (packet.contains("trailing")) {
        out << ": " << packet["trailing"].get<uint64_t>() << " trailing bytes\n";
    } else if (packet.contains("skipped") || packet.contains("gap")) { // not packets: no body
        const bool gap = packet.contains("gap");
        out << ": " << packet[gap ? "gap" : "skipped"].get<uint64_t>() << (gap ? " bytes lost\n" : " bytes skipped\n");
        return;
    } else {
        out << ", " << packet.value("length", uint64_t{0}) << " bytes\n";
    }
    if (packet.contains("header")) {
        const Json &h = packet["header"];
        out << "  header: mark " << hexNumber(h["mark"], 4) << ", version " << hexNumber(h["version"], 2)
            << ", flags " << hexNumber(h["flags"], 2) << ", code " << hexNumber(h["code"], 4) << ", value4 "
            << hexNumber(h["value4"], 4) << ", bodyLength " << h["bodyLength"].get<uint64_t>() << ", value6 "
            << hexNumber(h["value6"], 8) << ", value7 " << hexNumber(h["value7"], 8) << ", extension "
            << hexNumber(h["extension"], 4) << '\n';
    }
    if (packet.contains("unitType")) out << "  unit type " << packet["unitType"].get<uint64_t>() << '\n';
    const Json &body = packet["body"];
    const std::string status = body.value("status", "");
    if (status == "decoded") {
        out << "  body: " << body.value("layout", "");
        if (body.contains("unread")) out << ", " << body["unread"].get<uint64_t>() << " bytes unread";
        out << '\n';
        for (const auto &[key, member] : body["fields"].items()) writeValue(key, member, 4, out);
    } else if (status == "skipped") {
        out << "  body: skipped, " << body.value("reason", "") << '\n';
    } else if (body.contains("error")) {
        const Json &e = body["error"];
        out << "  body: " << (status == "partial" ? body.value("layout", "") + ", partial: stopped" : "failed")
            << " at offset " << e["offset"].get<uint64_t>() << location(e) << ": " << e["name"].get<std::string>()
            << " (" << e["result"].get<uint64_t>() << "), " << e["meaning"].get<std::string>() << '\n';
        if (body.contains("fields"))
            for (const auto &[key, member] : body["fields"].items()) writeValue(key, member, 4, out);
    }
}

} // namespace trov
