// `trov decode`: frames each input into packets, decodes every packet through
// the library (TROV_DecodeHeader, then TROV_DecodeFU for replies, or the
// tool's request reader with --request) and prints its packet object at once.
//
// A packet object: offset and length in its input, the header's fields, the
// unit type and the body: "decoded" with the layout's name and its fields
// (and "unread", the body bytes behind them that no field took), "skipped"
// with the reason, "failed" with the library's result and where decoding
// stopped (TROV_InspectFU: the input offset, and the event, attribute,
// method or field there), or "partial": an event list decoded up to the
// failing event, with its error. A packet that is not decoded cleanly
// carries its bytes as "hex".
#include <cstdio>
#include <iostream>
#include <memory>

#include "DecodeCommand.h"
#include "Progress.h"
#include "RequestReader.h"
#include "TextView.h"
#include "TrovCodec.h"
#include "TrovInspect.h"
#include "TrovLayout.h"
#include "TrovVersion.h"

namespace trov {
namespace {

Json headerJson(const HeaderInfo &h) {
    return Json{{"mark", h.mark},           {"version", h.version & 0xFF}, {"flags", h.flags & 0xFF},
                {"code", h.code},           {"value4", h.value4},          {"bodyLength", h.bodyLength},
                {"value6", h.value6},       {"value7", h.value7},          {"extension", h.extension}};
}

Json errorJson(TrovResult result, uint64_t offset) {
    return Json{{"result", result},
                {"name", TROV_ResultName(result)},
                {"meaning", TROV_ResultMeaning(result)},
                {"offset", offset}};
}

Json failedBody(TrovResult result, uint64_t offset) {
    return Json{{"status", "failed"}, {"error", errorJson(result, offset)}};
}

std::string hexOf(const std::vector<uint8_t> &bytes) { return hexString(bytes.data(), bytes.size()); }

// The error of a reply TROV_InspectFU located: the input offset of the item,
// and what the item is: "event" (its index) and "code", "attribute" (the
// identifier) and the "field" holding it, "method", or another "field".
Json locatedError(TrovResult result, uint64_t packetOffset, const TrovInspectReport &report, const HeaderInfo &info) {
    Json error = errorJson(result, packetOffset + report.offset);
    TrovLayoutInfo layout{};
    const bool described = TROV_DescribeBody(info.code, static_cast<uint8_t>(info.version), 0, &layout) == 0;
    const char *field = described && report.index < layout.fieldCount ? layout.fields[report.index].name : nullptr;
    switch (report.item) {
    case TROV_ITEM_EVENT:
        error["event"] = report.index;
        error["code"] = report.code;
        break;
    case TROV_ITEM_ATTRIBUTE:
        error["attribute"] = report.code;
        if (field != nullptr) error["field"] = field;
        break;
    case TROV_ITEM_METHOD: error["method"] = report.code; break;
    case TROV_ITEM_FIELD:
        if (field != nullptr) error["field"] = field;
        break;
    default: break;
    }
    return error;
}

std::string hex16(uint16_t v) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%04x", static_cast<unsigned>(v));
    return text;
}

// The layout's record name, or one made of what it describes.
std::string layoutName(const TrovLayoutInfo &layout, uint16_t code, bool request) {
    if (layout.record != nullptr) return layout.record;
    return "body " + hex16(code) + (request ? " request" : " reply");
}

Json decodedBody(const TrovLayoutInfo &layout, uint16_t code, const void *record, uint8_t version, bool request,
                 const FieldsHook *hook) {
    Json fields;
    if (hook != nullptr) (*hook)(layout, record, version, request);
    else fields = recordToJson(layout, record, version, request);
    return Json{{"status", "decoded"}, {"layout", layoutName(layout, code, request)}, {"fields", std::move(fields)}};
}

// `body` with `key` set to `value` ahead of its "fields".
Json beforeFields(Json body, const char *key, Json value) {
    Json out = Json::object();
    for (auto it = body.begin(); it != body.end(); ++it) {
        if (it.key() == "fields") out[key] = std::move(value);
        out[it.key()] = std::move(it.value());
    }
    return out;
}

// Frees what an allocating TROV_DecodeFU handed over.
struct DecodeResultOwner {
    DecodeResult result{nullptr, nullptr, 0};
    ~DecodeResultOwner() {
        if (result.buffer != nullptr) trovFree(result.buffer->data);
        trovFree(result.record);
    }
};

void decodeReply(Json &packet, const HeaderInfo &header, std::vector<uint8_t> &bytes, uint64_t offset,
                 bool &failed, const FieldsHook *hook) {
    PacketCursor cursor{bytes.data(), static_cast<uint32_t>(bytes.size())};
    HeaderInfo info{};
    DecodeResultOwner owner;
    TrovInspectReport report{};
    const TrovResult r = TROV_InspectFU(&info, &owner.result, &cursor, nullptr, &report);
    TrovLayoutInfo layout{};
    const bool described = TROV_DescribeBody(info.code, static_cast<uint8_t>(info.version), 0, &layout) == 0;
    const auto version = static_cast<uint8_t>(info.version);
    if (r != TROV_RESULT_OK) {
        failed = true;
        packet["unitType"] = header.extension;
        if (report.partial == 1 && described) {
            Json body = decodedBody(layout, info.code, owner.result.record, version, false, hook);
            body["status"] = "partial";
            packet["body"] = beforeFields(std::move(body), "error", locatedError(r, offset, report, info));
        } else {
            packet["body"] = Json{{"status", "failed"}, {"error", locatedError(r, offset, report, info)}};
        }
        packet["hex"] = hexOf(bytes);
        return;
    }
    packet["unitType"] = owner.result.type;
    if (owner.result.record == nullptr && !(described && layout.form == TROV_LAYOUT_NONE)) {
        packet["body"] = Json{{"status", "skipped"},
                              {"reason", "unit type " + std::to_string(owner.result.type) +
                                             " is not decoded for body code " + hex16(info.code)}};
        return;
    }
    if (!described) layout = TrovLayoutInfo{nullptr, 0, 0, nullptr, TROV_LAYOUT_NONE, 0, 0};
    Json body = decodedBody(layout, info.code, owner.result.record, version, false, hook);
    // Bytes the header frames behind those the body's fields took: the
    // packet decoded, as the library decodes it, so they are no failure.
    if (report.bodyRead < report.bodyLength) {
        packet["body"] = beforeFields(std::move(body), "unread", Json(report.bodyLength - report.bodyRead));
        packet["hex"] = hexOf(bytes);
        return;
    }
    packet["body"] = std::move(body);
}

void decodeRequest(Json &packet, const HeaderInfo &header, const std::vector<uint8_t> &bytes, uint64_t offset,
                   bool &failed, const FieldsHook *hook) {
    packet["unitType"] = header.extension;
    const auto version = static_cast<uint8_t>(header.version);
    if (header.mark != TROV_PROTOCOL_MARK) {
        failed = true;
        packet["body"] = failedBody(TROV_RESULT_BAD_PACKET, offset);
        packet["hex"] = hexOf(bytes);
        return;
    }
    TrovLayoutInfo layout{};
    const TrovResult described = TROV_DescribeBody(header.code, version, 1, &layout);
    if (described != TROV_RESULT_OK) {
        failed = true;
        packet["body"] = failedBody(described, offset + TROV_HEADER_LENGTH);
        packet["hex"] = hexOf(bytes);
        return;
    }
    RecordArena arena;
    const void *record = nullptr;
    size_t stoppedAt = 0;
    const TrovResult r = readRequestBody(layout, version, bytes.data() + TROV_HEADER_LENGTH,
                                         bytes.size() - TROV_HEADER_LENGTH, arena, record, stoppedAt);
    if (r != TROV_RESULT_OK) {
        failed = true;
        packet["body"] = failedBody(r, offset + TROV_HEADER_LENGTH + stoppedAt);
        packet["hex"] = hexOf(bytes);
        return;
    }
    packet["body"] = decodedBody(layout, header.code, record, version, true, hook);
}

// One input, to `out` in `style`; `first` tracks the JSON array's separators.
class Writer {
public:
    Writer(std::ostream &out, OutputStyle style) : out_(out), style_(style) {}

    void begin() {
        if (style_ == OutputStyle::JsonArray) out_ << "[\n";
    }
    void write(const Json &packet) {
        switch (style_) {
        case OutputStyle::JsonArray:
            if (!first_) out_ << ",\n";
            out_ << packet.dump(2, ' ', false, Json::error_handler_t::replace);
            break;
        case OutputStyle::Ndjson:
            out_ << packet.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
            out_.flush();
            break;
        case OutputStyle::Text:
            if (!first_) out_ << '\n';
            writeText(packet, out_);
            break;
        }
        first_ = false;
    }
    void end() {
        if (style_ == OutputStyle::JsonArray) out_ << (first_ ? "]\n" : "\n]\n");
        out_.flush();
    }

private:
    std::ostream &out_;
    OutputStyle style_;
    bool first_ = true;
};

} // namespace

Json decodePacket(const std::vector<uint8_t> &bytes, uint64_t offset, bool request, bool &failed,
                  const FieldsHook *fields) {
    Json packet = Json::object();
    packet["offset"] = offset;
    packet["length"] = bytes.size();
    packet["direction"] = request ? "request" : "reply";
    std::vector<uint8_t> copy(bytes); // the library's cursor is not const
    PacketCursor cursor{copy.data(), static_cast<uint32_t>(copy.size())};
    HeaderInfo header{};
    const TrovResult r = TROV_DecodeHeader(&header, &cursor);
    if (r != TROV_RESULT_OK) {
        failed = true;
        packet["body"] = failedBody(r, offset);
        packet["hex"] = hexOf(bytes);
        return packet;
    }
    packet["header"] = headerJson(header);
    if (request)
        decodeRequest(packet, header, copy, offset, failed, fields);
    else
        decodeReply(packet, header, copy, offset, failed, fields);
    return packet;
}

Json decodeItem(const PacketItem &item, bool request, bool &failed, const FieldsHook *fields) {
    if (item.kind == PacketItem::Kind::Packet) return decodePacket(item.bytes, item.offset, request, failed, fields);
    failed = true;
    Json packet = Json::object();
    packet["offset"] = item.offset;
    switch (item.kind) {
    case PacketItem::Kind::Skipped:
        packet["skipped"] = item.count;
        packet["hex"] = hexOf(item.bytes);
        if (item.bytes.size() < item.count) packet["hexBytes"] = item.bytes.size(); // only the first are kept
        break;
    case PacketItem::Kind::Gap:
        packet["gap"] = item.count;
        break;
    default: // a packet cut short by the end of the input
        packet["trailing"] = item.bytes.size();
        packet["body"] = failedBody(TROV_RESULT_SHORT_INPUT, item.offset);
        packet["hex"] = hexOf(item.bytes);
        break;
    }
    return packet;
}

Json captureJson(const CaptureInfo &c) {
    return Json{{"frame", c.frame}, {"time", c.time}, {"flow", c.flow},
                {"src", c.src},     {"dst", c.dst},   {"direction", c.request ? "request" : "reply"}};
}

namespace {

// The stream bytes an item covers.
uint64_t itemBytes(const PacketItem &item) {
    return item.kind == PacketItem::Kind::Packet || item.kind == PacketItem::Kind::Trailing ? item.bytes.size()
                                                                                             : item.count;
}

} // namespace

int runDecode(const std::vector<std::string> &files, const DecodeOptions &options, std::istream &in,
              std::ostream &out, std::ostream &err) {
    TROV_InitCoder();
    const std::vector<std::string> inputs = files.empty() ? std::vector<std::string>{"-"} : files;
    const bool named = inputs.size() > 1;
    int status = kExitOk;
    Writer writer(out, options.style);
    ProgressLine progress(options.progress ? &err : nullptr, "trov decode", options.progressAfter,
                          options.progressEvery);
    uint64_t framed = 0, printed = 0, bytesBefore = 0; // bytesBefore: of the inputs done
    writer.begin();
    // Captures: flows left out or ended early are remarked on `err`.
    const CaptureOptions capture{options.port, [&err](const std::string &note) { err << "trov decode: " << note << '\n'; }};
    for (const std::string &name : inputs) {
        if (options.count != 0 && printed == options.count) break;
        std::unique_ptr<PacketInput> input;
        std::string error;
        if (name == "-" && &in == &std::cin) {
            // Standard input is read through its descriptor: as it arrives,
            // so a live capture pipe prints each packet at once, and with its
            // read errors (a closed or unreadable input), which std::cin hides.
            input = PacketInput::open("-", options.format, error, options.request, capture);
        } else if (name == "-") {
            input = PacketInput::fromStream(in, "-", options.format, options.request, capture);
        } else {
            input = PacketInput::open(name, options.format, error, options.request, capture);
        }
        if (input == nullptr) {
            progress.finish();
            err << "trov decode: " << (error.empty() ? name + ": cannot be read" : error) << '\n';
            status = kExitInputError;
            continue;
        }
        uint64_t end = 0; // of this input's items so far
        for (PacketItem item = input->next(); item.kind != PacketItem::Kind::End; item = input->next()) {
            if (item.kind == PacketItem::Kind::Error) {
                progress.finish();
                err << "trov decode: " << item.error << '\n';
                status = kExitInputError;
                break;
            }
            end = item.offset + itemBytes(item);
            progress.update(bytesBefore + end, ++framed);
            if (framed <= options.skip) continue;
            Json packet = Json::object();
            bool failed = false;
            if (named) packet["file"] = name;
            if (item.capture) packet["capture"] = captureJson(*item.capture);
            packet.update(decodeItem(item, item.capture ? item.capture->request : options.request, failed));
            if (failed && status == kExitOk) status = kExitPacketFailed;
            writer.write(packet);
            if (!out) return kExitInputError; // the reader went away
            if (options.count != 0 && ++printed == options.count) break;
        }
        bytesBefore += end;
    }
    progress.finish();
    writer.end();
    return out ? status : kExitInputError;
}

} // namespace trov
