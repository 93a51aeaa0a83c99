// `trov tables`: walks every code of each family through the layout
// description and lists what the library knows.
#include <cstdio>
#include <string>

#include "Tables.h"
#include "TrovCodec.h"
#include "TrovLayout.h"

namespace trov {
namespace {

constexpr uint8_t kVersion = TROV_PROTOCOL_VERSION;

const char *formName(uint8_t form) {
    switch (form) {
    case TROV_LAYOUT_FIELDS: return "fields";
    case TROV_LAYOUT_NONE: return "none";
    case TROV_LAYOUT_EVENT_LIST: return "event list";
    case TROV_LAYOUT_METHOD_CALL: return "method call";
    case TROV_LAYOUT_STRUCTURE: return "structure";
    case TROV_LAYOUT_SELECTOR: return "selector";
    case TROV_LAYOUT_RAW: return "raw";
    default: return "unknown";
    }
}

std::string hex16(uint64_t v) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%04llx", static_cast<unsigned long long>(v));
    return text;
}

// Name and kind of each field; a nested record's (or an event entry's) fields under it.
Json fieldsJson(const TrovLayoutInfo &layout) {
    Json fields = Json::array();
    for (uint16_t i = 0; i < layout.fieldCount; ++i) {
        const TrovFieldInfo &f = layout.fields[i];
        Json field{{"name", f.name}, {"kind", f.kind}};
        TrovLayoutInfo nested{};
        if ((f.kindId == TROV_KIND_RECORD || f.kindId == TROV_KIND_RECORDS || f.kindId == TROV_KIND_EVENTS) &&
            TROV_DescribeNested(&f, &nested) == TROV_RESULT_OK) {
            field["record"] = nested.record != nullptr ? nested.record : "";
            field["fields"] = fieldsJson(nested);
        }
        fields.push_back(std::move(field));
    }
    return fields;
}

// "name kind", with a nested record's fields in braces.
std::string fieldsText(const Json &fields) {
    std::string text;
    for (const Json &f : fields) {
        text += (text.empty() ? "" : ", ") + f["name"].get<std::string>() + ' ' + f["kind"].get<std::string>();
        if (f.contains("fields")) text += " {" + fieldsText(f["fields"]) + "}";
    }
    return text;
}

// The record's public type, or a name made of what the layout describes
// ("method 0x0095 request"), as `trov decode` names layouts.
Json layoutJson(const char *family, uint32_t code, const char *side, const TrovLayoutInfo &layout) {
    Json j = Json::object();
    j["code"] = code;
    if (side != nullptr) j["side"] = side;
    std::string name = std::string(family) + " " + hex16(code) + (side != nullptr ? std::string(" ") + side : "");
    j["layout"] = layout.record != nullptr ? std::string(layout.record) : name;
    j["form"] = formName(layout.form);
    j["recordBytes"] = layout.recordBytes;
    if (layout.arrayCountBytes != 0) j["arrayCountBytes"] = layout.arrayCountBytes;
    j["fields"] = fieldsJson(layout);
    // A selector value: per selector byte, the variant's whole record.
    TrovLayoutInfo variant{};
    for (unsigned selector = 1; layout.form == TROV_LAYOUT_SELECTOR && selector <= 0xFF; ++selector)
        if (TROV_DescribeVariant(&layout, static_cast<uint8_t>(selector), &variant) == TROV_RESULT_OK)
            j["variants"].push_back(Json{{"selector", selector}, {"fields", fieldsJson(variant)}});
    return j;
}

// Walks the 65,536 codes of one family.
template <typename Describe> Json family(const char *name, Describe describe) {
    Json rows = Json::array();
    for (uint32_t code = 0; code <= 0xFFFF; ++code) {
        TrovLayoutInfo layout{};
        if (describe(static_cast<uint16_t>(code), layout)) rows.push_back(layoutJson(name, code, nullptr, layout));
    }
    return rows;
}

void writeRows(const char *title, const Json &rows, std::ostream &out) {
    out << title << " (" << rows.size() << ")\n";
    for (const Json &row : rows) {
        out << "  " << hex16(row["code"].get<uint64_t>());
        if (row.contains("side")) out << ' ' << row["side"].get<std::string>();
        // Generated names repeat the code; only public record types are shown.
        const std::string layout = row["layout"].get<std::string>();
        if (layout.find(hex16(row["code"].get<uint64_t>())) == std::string::npos) out << "  " << layout;
        out << " ["
            << row["form"].get<std::string>();
        if (row.contains("arrayCountBytes")) out << ", array form";
        out << "]";
        if (!row["fields"].empty()) out << ": " << fieldsText(row["fields"]);
        if (row.contains("variants"))
            for (const Json &v : row["variants"])
                out << "; selector " << v["selector"].get<unsigned>() << ": " << fieldsText(v["fields"]);
        out << '\n';
    }
}

} // namespace

TrovResult describeLayout(LayoutFamily family, uint16_t code, uint8_t version, bool request, Json &out) {
    TrovLayoutInfo layout{};
    TrovResult r = TROV_RESULT_OK;
    const char *name = "body";
    const char *side = request ? "request" : "reply";
    switch (family) {
    case LayoutFamily::Body: r = TROV_DescribeBody(code, version, request, &layout); break;
    case LayoutFamily::Method:
        name = "method";
        r = TROV_DescribeMethod(code, version, request, &layout);
        break;
    case LayoutFamily::Event:
        name = "event", side = nullptr;
        r = TROV_DescribeEvent(code, version, &layout);
        break;
    case LayoutFamily::Attribute:
        name = "attribute", side = nullptr;
        r = TROV_DescribeAttribute(code, version, &layout);
        break;
    case LayoutFamily::DataType:
        name = "data type", side = nullptr;
        r = TROV_DescribeDataType(code, version, &layout);
        break;
    }
    if (r == TROV_RESULT_OK) out = layoutJson(name, code, side, layout);
    return r;
}

Json tablesJson() {
    TROV_InitCoder();
    Json bodies = Json::array();
    for (uint32_t code = 0; code <= 0xFFFF; ++code) {
        for (int request = 1; request >= 0; --request) {
            TrovLayoutInfo layout{};
            if (TROV_DescribeBody(static_cast<uint16_t>(code), kVersion, request, &layout) == TROV_RESULT_OK)
                bodies.push_back(layoutJson("body", code, request ? "request" : "reply", layout));
        }
    }
    Json methods = Json::array();
    for (uint32_t code = 0; code <= 0xFFFF; ++code) {
        for (int request = 1; request >= 0; --request) {
            TrovLayoutInfo layout{};
            // Codes of 0x2000 and above without a method of their own are
            // all raw bytes; only the real methods are listed.
            if (TROV_DescribeMethod(static_cast<uint16_t>(code), kVersion, request, &layout) == TROV_RESULT_OK &&
                !(code >= 0x2000 && layout.form == TROV_LAYOUT_RAW))
                methods.push_back(layoutJson("method", code, request ? "request" : "reply", layout));
        }
    }
    Json j = Json::object();
    j["version"] = kVersion;
    j["bodies"] = std::move(bodies);
    j["events"] = family("event", [](uint16_t code, TrovLayoutInfo &layout) {
        return TROV_DescribeEvent(code, kVersion, &layout) == TROV_RESULT_OK;
    });
    j["methods"] = std::move(methods);
    j["attributes"] = family("attribute", [](uint16_t code, TrovLayoutInfo &layout) {
        return TROV_DescribeAttribute(code, kVersion, &layout) == TROV_RESULT_OK;
    });
    j["dataTypes"] = family("data type", [](uint16_t code, TrovLayoutInfo &layout) {
        return TROV_DescribeDataType(code, kVersion, &layout) == TROV_RESULT_OK;
    });
    return j;
}

int runTables(bool json, std::ostream &out) {
    const Json tables = tablesJson();
    if (json) {
        out << tables.dump(1) << '\n';
    } else {
        writeRows("body codes", tables["bodies"], out);
        writeRows("event codes", tables["events"], out);
        writeRows("method codes", tables["methods"], out);
        out << "(method codes from 0x2000 up without a method of their own carry raw bytes)\n";
        writeRows("attribute identifiers", tables["attributes"], out);
        writeRows("data types", tables["dataTypes"], out);
    }
    out.flush();
    return out ? 0 : 2;
}

} // namespace trov
