// Records built from JSON, and packets encoded from them.
//
// The record is laid out by the walk over described records (RecordWalk.h);
// the builder here answers each of its questions from the JSON member of the
// same name, in the shape the printer (RecordJson.cpp) gives it: numbers,
// hex strings, characters, arrays, and the objects of typed values, entries
// and options. Counts are always taken from the data, so the printed ones
// are ignored.
#include "RecordBuild.h"

#include <cstring>

#include "TrovReplyEncode.h"
#include "TrovVersion.h"

namespace trov {

void *RecordArena::allocate(size_t bytes) {
    blocks_.push_back(std::make_unique<std::byte[]>(bytes + 16));
    auto address = reinterpret_cast<uintptr_t>(blocks_.back().get());
    return blocks_.back().get() + ((16 - address % 16) % 16);
}

void *RecordArena::place(size_t bytes, describe::Block block) {
    const bool always = block == describe::Block::Record || block == describe::Block::Header;
    return bytes == 0 && !always ? nullptr : allocate(bytes == 0 ? 1 : bytes);
}

namespace {

std::string hex16(unsigned value) {
    static const char digits[] = "0123456789abcdef";
    std::string text = "0x0000";
    for (int i = 0; i < 4; ++i) text[5 - i] = digits[(value >> (4 * i)) & 0xF];
    return text;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// An integer 0..max: a JSON number, or a string in decimal or "0x" hex.
bool jsonInteger(const Json &value, const std::string &path, uint64_t max, uint64_t &out, JsonError &error) {
    bool ok = false;
    if (value.is_number_unsigned()) {
        out = value.get<uint64_t>();
        ok = true;
    } else if (value.is_number_integer()) {
        const auto signedValue = value.get<int64_t>();
        ok = signedValue >= 0;
        out = static_cast<uint64_t>(signedValue);
    } else if (value.is_string()) {
        const auto &text = value.get_ref<const std::string &>();
        const bool isHex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
        const size_t start = isHex ? 2 : 0;
        const uint64_t base = isHex ? 16 : 10;
        ok = text.size() > start && text.size() - start <= (isHex ? 16u : 19u);
        out = 0;
        for (size_t i = start; ok && i < text.size(); ++i) {
            const int digit = hexDigit(text[i]);
            ok = digit >= 0 && static_cast<uint64_t>(digit) < base;
            out = out * base + static_cast<uint64_t>(digit);
        }
    }
    if (ok && out <= max) return true;
    error = {path, "expected an integer 0.." + std::to_string(max)};
    return false;
}

// A hex string's bytes, at most `max`.
bool hexBytes(const Json &value, const std::string &path, size_t max, std::vector<uint8_t> &out, JsonError &error) {
    auto fail = [&](std::string message) { return error = {path, std::move(message)}, false; };
    if (!value.is_string()) return fail("expected a hex string");
    const auto &text = value.get_ref<const std::string &>();
    if (text.size() % 2 != 0) return fail("expected a hex string of even length");
    if (text.size() / 2 > max)
        return fail("expected at most " + std::to_string(max) + " bytes, got " + std::to_string(text.size() / 2));
    out.resize(text.size() / 2);
    for (size_t i = 0; i < out.size(); ++i) {
        const int high = hexDigit(text[2 * i]), low = hexDigit(text[2 * i + 1]);
        if (high < 0 || low < 0) return fail("expected a hex string, found '" + text.substr(2 * i, 2) + "'");
        out[i] = static_cast<uint8_t>(high << 4 | low);
    }
    return true;
}

// Characters: a plain string, or {"hex": "..."} for bytes that are not all
// printable.
bool chars(const Json &value, const std::string &path, size_t max, std::vector<uint8_t> &out, JsonError &error) {
    if (value.is_object()) {
        const auto hex = value.find("hex");
        if (hex != value.end() && value.size() == 1) return hexBytes(*hex, path + "/hex", max, out, error);
    }
    if (!value.is_string()) return error = {path, "expected a string or {\"hex\": \"...\"}"}, false;
    const auto &text = value.get_ref<const std::string &>();
    if (text.size() > max)
        return error = {path, "expected at most " + std::to_string(max) + " characters, got " +
                                  std::to_string(text.size())},
               false;
    out.assign(text.begin(), text.end());
    return true;
}

// "U32Body (value0)", or the field names alone for records without a
// public type.
std::string layoutName(const TrovLayoutInfo &layout) {
    std::string names;
    for (uint16_t i = 0; i < layout.fieldCount; ++i) {
        const uint8_t kind = layout.fields[i].kindId;
        if (kind == TROV_KIND_BUFFER || kind == TROV_KIND_COUNT || kind == TROV_KIND_RESERVED) continue;
        if (const char *length = describe::lengthMember(layout.fields[i]))
            names += (names.empty() ? "" : ", ") + std::string(length);
        names += (names.empty() ? "" : ", ") + std::string(describe::memberName(layout, layout.fields[i]));
    }
    if (names.empty()) names = "no fields";
    return layout.record ? std::string(layout.record) + " (" + names + ")" : "this record (" + names + ")";
}

using describe::Frame;

// The JSON side of the walk: every value the walk asks for is the member of
// the same name (or the list item) of the JSON it has reached. Counts come
// with their data; the printed ones are not read.
class JsonBuilder final : public describe::RecordBuilder {
public:
    JsonBuilder(const Json &fields, const std::string &path, RecordArena &arena, JsonError &error)
        : arena_(arena), error_(error) {
        places_.push_back({&fields, path});
    }

    void *allocate(size_t bytes, describe::Block block) override { return arena_.place(bytes, block); }

    bool beginRecord(const TrovLayoutInfo &layout, Frame frame) override {
        const Place &at = places_.back();
        const bool own = frame == Frame::Typed || frame == Frame::Entry || frame == Frame::Option;
        if (!at.node->is_object())
            return fail(at.path, !own ? "expected an object"
                                      : "expected {\"" + std::string(layout.fields[0].name) + "\": " +
                                            (frame == Frame::Option ? "k, \"value\": \"hex\"}" : "N, \"value\": ...}"));
        for (auto member = at.node->begin(); member != at.node->end(); ++member) {
            bool known = false;
            for (uint16_t i = 0; i < layout.fieldCount && !known; ++i) {
                const char *length = describe::lengthMember(layout.fields[i]);
                known = member.key() == describe::memberName(layout, layout.fields[i]) ||
                        (length != nullptr && member.key() == length);
            }
            if (!known)
                return fail(at.path + "/" + member.key(),
                            own ? "no such member" : "no such field in " + layoutName(layout));
        }
        frames_.push_back(frame);
        return true;
    }
    bool endRecord() override {
        frames_.pop_back();
        return true;
    }

    bool beginField(const TrovFieldInfo &field) override {
        const Place &at = places_.back();
        if (!at.node->is_object()) return fail(at.path, "expected an object");
        const std::string path = at.path + "/" + field.name;
        const auto member = at.node->find(field.name);
        if (member != at.node->end()) return places_.push_back({&*member, path}), true;
        // An option without "value" has none.
        static const Json none = "";
        if (!frames_.empty() && frames_.back() == Frame::Option && std::strcmp(field.name, "value") == 0)
            return places_.push_back({&none, path}), true;
        return fail(path, "missing");
    }
    void endField() override { places_.pop_back(); }
    bool beginItem(uint32_t index) override {
        const Place &at = places_.back();
        places_.push_back({&(*at.node)[index], at.path + "/" + std::to_string(index)});
        return true;
    }
    void endItem() override { places_.pop_back(); }

    bool code(const describe::Code &code, uint32_t &value) override {
        const bool byte = code.of == describe::Code::Of::Option || code.of == describe::Code::Of::Selector;
        uint64_t number = 0;
        if (!integer(byte ? 0xFF : 0xFFFF, number)) return false;
        code_ = code.of;
        value = code_value_ = static_cast<uint32_t>(number);
        return true;
    }

    bool scalar(const TrovFieldInfo &, unsigned width, uint32_t &value) override {
        uint64_t number = 0;
        if (!integer((uint64_t{1} << (8 * width)) - 1, number)) return false;
        value = static_cast<uint32_t>(number);
        return true;
    }

    bool count(const describe::Count &count, uint32_t &value) override {
        using Of = describe::Count::Of;
        const Place &at = places_.back();
        size_t n = 0;
        switch (count.of) {
        case Of::CountField: value = describe::kLater; return true;
        case Of::Option:
            if (!hexBytes(*at.node, at.path, 0xFF, stash_, error_)) return false;
            n = stash_.size();
            stashedFor_ = count.field;
            // Kinds 1 to 5 carry numbers of a fixed size.
            if (static const uint8_t fixed[] = {0, 4, 4, 2, 2, 6}; code_value_ <= 5 && n != fixed[code_value_])
                return fail(at.path, "expected " + std::to_string(fixed[code_value_]) + " bytes for option kind " +
                                         std::to_string(code_value_));
            break;
        case Of::Unparsed: { // the value's wire bytes, {"hex": "..."}
            const auto hex = at.node->is_object() ? at.node->find("hex") : at.node->end();
            if (hex == at.node->end() || at.node->size() != 1)
                return fail(at.path, "expected {\"hex\": \"...\"} for an attribute without a codec");
            if (!hexBytes(*hex, at.path + "/hex", count.limit, stash_, error_)) return false;
            n = stash_.size();
            stashedFor_ = count.field;
            break;
        }
        case Of::Data:
        case Of::Rest:
            if (count.parts == 0) {
                if (!(count.text == describe::Text::Chars ? chars(*at.node, at.path, count.limit, stash_, error_)
                                                          : hexBytes(*at.node, at.path, count.limit, stash_, error_)))
                    return false;
                n = stash_.size();
                stashedFor_ = count.field;
                break;
            }
            [[fallthrough]];
        default:
            if (!at.node->is_array()) return fail(at.path, "expected an array" + arrayOf(count.of));
            n = at.node->size();
            if (n > count.limit)
                return fail(at.path, "expected at most " + std::to_string(count.limit) + " elements, got " +
                                         std::to_string(n));
            break;
        }
        value = static_cast<uint32_t>(n);
        return true;
    }

    bool bytes(const TrovFieldInfo &field, describe::Text, uint8_t *out, size_t size) override {
        if (stashedFor_ != &field) { // a block: as many bytes as given, up to its size
            const Place &at = places_.back();
            if (!hexBytes(*at.node, at.path, size, stash_, error_)) return false;
            size = stash_.size();
        }
        stashedFor_ = nullptr;
        if (size != 0) std::memcpy(out, stash_.data(), size);
        return true;
    }

    bool element(const describe::Numbers &numbers, uint32_t index, uint32_t (&parts)[2]) override {
        const Place &list = places_.back();
        const Json &item = (*list.node)[index];
        const std::string path = list.path + "/" + std::to_string(index);
        if (numbers.parts == 2 && (!item.is_array() || item.size() != 2)) return fail(path, "expected a pair [a, b]");
        for (unsigned p = 0; p < numbers.parts; ++p) {
            const bool pair = numbers.parts == 2;
            uint64_t number = 0;
            if (!jsonInteger(pair ? item[p] : item, pair ? path + "/" + std::to_string(p) : path,
                             (uint64_t{1} << (8 * numbers.partBytes(p))) - 1, number, error_))
                return false;
            parts[p] = static_cast<uint32_t>(number);
        }
        return true;
    }

    describe::Answer missing(const describe::Miss &miss, void *&) override {
        using Of = describe::Miss::Of;
        const std::string &path = places_.back().path;
        switch (miss.of) {
        case Of::Code: {
            // An event's attribute without a codec travels as its bytes, {"hex": "..."}.
            if (miss.codeOf == describe::Code::Of::Entry && miss.field != nullptr &&
                miss.field->kindId == TROV_KIND_EVENT_ATTRIBUTES)
                return describe::Answer::Unparsed;
            const bool method = miss.codeOf == describe::Code::Of::Method;
            const bool type = miss.codeOf == describe::Code::Of::DataType;
            const bool event = miss.codeOf == describe::Code::Of::Event;
            const std::string what = method ? "method " : type ? "data type " : event ? "event " : "attribute ";
            fail(path + (method ? "/method" : type ? "/type" : event ? "/code" : "/id"),
                 "unknown " + what + hex16(miss.code) + (miss.version == 0 && !method && !event ? " at version 0" : "") +
                     " (" + TROV_ResultName(miss.result) + ")");
            error_.result = miss.result;
            break;
        }
        case Of::Variant: fail(path + "/selector", "no variant has selector " + std::to_string(miss.code)); break;
        case Of::Depth: fail(path, "nested deeper than " + std::to_string(describe::kMaxDepth) + " levels"); break;
        case Of::Layout:
            if (miss.field != nullptr)
                fail(path, std::string("fields of kind ") + miss.field->kind + " (" + miss.field->name +
                               ") cannot be encoded");
            else
                fail(path, "the layout description does not spell this record (" +
                               std::string(miss.layout->record ? miss.layout->record : "a structure") +
                               "); it cannot be encoded");
            break;
        }
        return describe::Answer::Stop;
    }

private:
    struct Place {
        const Json *node;
        std::string path;
    };

    bool fail(const std::string &path, std::string message) {
        error_ = {path, std::move(message)};
        return false;
    }

    bool integer(uint64_t max, uint64_t &out) {
        return jsonInteger(*places_.back().node, places_.back().path, max, out, error_);
    }

    std::string arrayOf(describe::Count::Of of) const {
        using Of = describe::Count::Of;
        switch (of) {
        case Of::Records: return " of objects";
        case Of::Options: return " of {\"kind\": k, \"value\": \"hex\"}";
        case Of::Entries: return " of {\"id\": N, \"value\": ...}";
        case Of::Events: return " of {\"code\": N, ..., \"fields\": {...}}";
        case Of::Elements:
            return std::string(" of ") + (code_ == describe::Code::Of::DataType ? "data type " : "attribute ") +
                   hex16(code_value_) + " elements";
        default: return "";
        }
    }

    RecordArena &arena_;
    JsonError &error_;
    std::vector<Place> places_;
    std::vector<Frame> frames_;
    // The last code given, for what follows it (an option's value, a value's elements).
    describe::Code::Of code_ = describe::Code::Of::Attribute;
    uint32_t code_value_ = 0;
    // Bytes read with their count, handed over with the data of that field.
    std::vector<uint8_t> stash_;
    const TrovFieldInfo *stashedFor_ = nullptr;
};

// One header member: absent keeps `fallback`.
bool headerMember(const Json &header, const char *key, const std::string &path, uint64_t max, uint64_t fallback,
                  uint64_t &out, JsonError &error) {
    out = fallback;
    const auto member = header.find(key);
    return member == header.end() || jsonInteger(*member, path + "/" + key, max, out, error);
}

} // namespace

const void *jsonToRecord(const Json &fields, const TrovLayoutInfo &layout, uint8_t version, bool request,
                         RecordArena &arena, const std::string &path, JsonError &error) {
    JsonBuilder builder(fields, path, arena, error);
    return describe::buildRecord(layout, version, request, builder);
}

bool jsonToHeader(const Json &header, const std::string &path, HeaderInfo &info, JsonError &error) {
    if (!header.is_object()) {
        error = {path, "expected an object"};
        return false;
    }
    static const char *const known[] = {"mark",   "version", "flags",  "code",      "value4",
                                        "value6", "value7",  "bodyLength", "extension"};
    for (auto member = header.begin(); member != header.end(); ++member) {
        bool found = false;
        for (const char *key : known) found = found || member.key() == key;
        if (!found) {
            error = {path + "/" + member.key(), "no such header field"};
            return false;
        }
    }
    if (!header.contains("code")) {
        error = {path + "/code", "missing"};
        return false;
    }
    uint64_t mark, version, flags, code, value4, value6, value7, extension;
    if (!headerMember(header, "mark", path, 0xFFFF, TROV_PROTOCOL_MARK, mark, error) ||
        !headerMember(header, "version", path, 0xFF, TROV_PROTOCOL_VERSION, version, error) ||
        !headerMember(header, "flags", path, 0xFF, 0, flags, error) ||
        !headerMember(header, "code", path, 0xFFFF, 0, code, error) ||
        !headerMember(header, "value4", path, 0xFFFF, 0, value4, error) ||
        !headerMember(header, "value6", path, 0xFFFFFFFFu, 0, value6, error) ||
        !headerMember(header, "value7", path, 0xFFFFFFFFu, 0, value7, error) ||
        !headerMember(header, "extension", path, 0xFFFF, 0, extension, error))
        return false;
    info = HeaderInfo{};
    info.mark = static_cast<uint16_t>(mark);
    info.version = static_cast<uint16_t>(version);
    info.flags = static_cast<uint16_t>(flags);
    info.code = static_cast<uint16_t>(code);
    info.value4 = static_cast<uint16_t>(value4);
    info.value6 = static_cast<uint32_t>(value6);
    info.value7 = static_cast<uint32_t>(value7);
    info.extension = static_cast<uint16_t>(extension);
    return true;
}

bool skippedEmptyBody(const Json &packet) {
    const auto body = packet.find("body");
    const auto header = packet.find("header");
    if (body == packet.end() || header == packet.end() || !body->is_object() || !header->is_object()) return false;
    const auto status = body->find("status");
    const auto length = header->find("bodyLength");
    return status != body->end() && *status == "skipped" && length != header->end() && length->is_number() &&
           *length == 0;
}

bool jsonToDirection(const Json &packet, const std::string &path, bool &request, JsonError &error) {
    request = true;
    const auto direction = packet.find("direction");
    if (direction == packet.end()) return true;
    if (direction->is_string() && (*direction == "request" || *direction == "reply")) {
        request = *direction == "request";
        return true;
    }
    error = {path + "/direction", "expected \"request\" or \"reply\""};
    return false;
}

bool encodePacket(const Json &packet, const std::string &path, std::vector<uint8_t> &bytes, JsonError &error) {
    if (!packet.is_object()) {
        error = {path, "expected a packet object"};
        return false;
    }
    const auto header = packet.find("header");
    if (header == packet.end()) {
        error = {path + "/header", "missing"};
        return false;
    }
    HeaderInfo info{};
    if (!jsonToHeader(*header, path + "/header", info, error)) return false;
    bool request = true;
    if (!jsonToDirection(packet, path, request, error)) return false;

    if (skippedEmptyBody(packet)) {
        bytes.assign(TROV_HEADER_LENGTH, 0);
        const PacketCursor cursor{bytes.data(), TROV_HEADER_LENGTH};
        info.bodyLength = 0;
        if (const TrovResult r = TROV_EncodeHeader(&info, &cursor)) {
            error = {path + "/header", std::string("encoding failed: ") + TROV_ResultName(r), r};
            return false;
        }
        return true;
    }

    const auto version = static_cast<uint8_t>(info.version);
    TrovLayoutInfo layout{};
    const TrovResult described = TROV_DescribeBody(info.code, version, request ? 1 : 0, &layout);
    if (described != TROV_RESULT_OK) {
        error = {path + "/header/code", std::string("no ") + (request ? "request" : "reply") +
                                            " layout for body code " + hex16(info.code) + " at version " +
                                            std::to_string(version) + " (" + TROV_ResultName(described) + ")",
                 described};
        return false;
    }
    const auto body = packet.find("body");
    if (body == packet.end()) {
        error = {path + "/body", "missing"};
        return false;
    }
    if (!body->is_object()) {
        error = {path + "/body", "expected an object"};
        return false;
    }
    const auto fields = body->find("fields");
    const Json empty = Json::object();
    RecordArena arena;
    const void *record = jsonToRecord(fields != body->end() ? *fields : empty, layout, version, request, arena,
                                      path + "/body/fields", error);
    if (!record) return false;

    EncodeOutput output{nullptr, 0};
    const TrovResult result =
        request ? TROV_EncodeFU(&info, record, &output) : TROV_EncodeReply(&info, record, &output);
    if (result != TROV_RESULT_OK) {
        error = {path + "/body", std::string("encoding failed: ") + TROV_ResultName(result) + " (" +
                                     TROV_ResultMeaning(result) + ")",
                 result};
        return false;
    }
    bytes.assign(output.data, output.data + output.length);
    trovFree(output.data);
    return true;
}

} // namespace trov
