// trovcodec._trovcodec: the TROV codec for Python, through the trov tool's
// core. Packets are decoded, encoded and described by the same functions
// that `trov decode`, `trov encode` and `trov tables` run; PythonJson.h
// turns their JSON values into Python objects and back. The pure-Python
// package (trovcodec/__init__.py) is the public face with the docstrings.
//
// Failures of the codec are raised as the package's TrovError, registered by
// it at import: TrovError(result, name, meaning, path_or_offset, message).
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <pybind11/pybind11.h>

#include "DecodeCommand.h"
#include "EncodeCommand.h"
#include "PythonInput.h"
#include "PythonJson.h"
#include "RecordBuild.h"
#include "Tables.h"
#include "TrovCodec.h"
#include "TrovVersion.h"

namespace py = pybind11;
using trov::Json;

namespace {

// The package's TrovError class (set by trovcodec/__init__.py).
py::object &errorClass() {
    static py::object *cls = new py::object(); // outlives the interpreter's teardown
    return *cls;
}

// Raises TrovError(result, name, meaning, where, message).
[[noreturn]] void raiseTrovError(TrovResult result, py::object where, const std::string &message) {
    py::object cls = errorClass() ? errorClass() : py::reinterpret_borrow<py::object>(PyExc_ValueError);
    py::object error = cls(result, TROV_ResultName(result), TROV_ResultMeaning(result), where,
                           message.empty() ? py::object(py::none()) : py::object(py::str(message)));
    PyErr_SetObject(cls.ptr(), error.ptr());
    throw py::error_already_set();
}

py::object toPython(const Json &value) {
    PyObject *object = trov::python::toPython(value);
    if (object == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::object>(object);
}

trov::InputFormat inputFormat(const std::string &name) {
    if (name == "detect") return trov::InputFormat::Detect;
    if (name == "raw") return trov::InputFormat::Raw;
    if (name == "hex") return trov::InputFormat::Hex;
    throw py::value_error("format is 'detect', 'raw' or 'hex', not '" + name + "'");
}

// ---- decoding --------------------------------------------------------------------

// The packets of one source, one packet object at a time.
class Decoder {
public:
    Decoder(py::object source, bool request, bool strict, const std::string &format)
        : source_(trov::python::PythonSource::open(source.ptr(), inputFormat(format))), request_(request),
          strict_(strict) {}

    // The next packet object, or a null object at the end.
    py::object next() {
        if (busy_) throw py::value_error("iter_decode: the iterator is already running in another thread");
        if (done_) return py::object();
        busy_ = true;
        struct Release {
            bool &flag;
            ~Release() { flag = false; }
        } release{busy_};
        const trov::PacketItem item = source_->input().next();
        switch (item.kind) {
        case trov::PacketItem::Kind::End: done_ = true; return py::object();
        case trov::PacketItem::Kind::Error: {
            done_ = true;
            if (PyObject *error = source_->takeReadError()) {
                PyErr_SetObject(reinterpret_cast<PyObject *>(Py_TYPE(error)), error);
                Py_DECREF(error);
                throw py::error_already_set();
            }
            // Hex text the tool cannot read, or a file read error.
            if (source_->input().isHex() && item.error.rfind("cannot read ", 0) != 0) throw py::value_error(item.error);
            PyErr_SetString(PyExc_OSError, item.error.c_str());
            throw py::error_already_set();
        }
        default: break;
        }
        // The record's fields go straight to Python objects through the tool's
        // record printer; the rest of the packet object is the tool's JSON.
        PyObject *fields = nullptr;
        bool printed = false;
        const trov::FieldsHook hook = [&](const TrovLayoutInfo &layout, const void *record, uint8_t version,
                                          bool request) {
            fields = trov::python::recordToPython(layout, record, version, request);
            printed = true;
        };
        bool failed = false;
        const Json packet = trov::decodeItem(item, request_, failed, &hook);
        py::object owned = py::reinterpret_steal<py::object>(fields);
        if (printed && !owned) throw py::error_already_set();
        if (failed && strict_) {
            done_ = true;
            if (const auto body = packet.find("body"); body != packet.end()) {
                const Json &error = (*body)["error"];
                raiseTrovError(static_cast<TrovResult>(error["result"].get<uint32_t>()),
                               py::int_(error["offset"].get<uint64_t>()), "");
            }
            // Bytes that are not a packet (skipped) or missing (a gap).
            raiseTrovError(TROV_RESULT_BAD_PACKET, py::int_(packet["offset"].get<uint64_t>()), "not a packet");
        }
        py::object object = toPython(packet);
        if (printed) object["body"]["fields"] = owned;
        return object;
    }

private:
    std::unique_ptr<trov::python::PythonSource> source_;
    bool request_, strict_;
    bool done_ = false, busy_ = false;
};

// Holds the cyclic garbage collector off while packet objects are made:
// they are trees of dicts, lists, ints and strs that cannot form cycles, and
// a long list of them would otherwise be traversed by collection after
// collection as it grows. The collector runs again as before afterwards.
class CollectorPause {
public:
    CollectorPause() : was_(PyGC_Disable()) {}
    ~CollectorPause() {
        if (was_) PyGC_Enable();
    }
    CollectorPause(const CollectorPause &) = delete;
    CollectorPause &operator=(const CollectorPause &) = delete;

private:
    int was_;
};

py::list decodeAll(py::object source, bool request, bool strict, const std::string &format) {
    Decoder decoder(std::move(source), request, strict, format);
    py::list packets;
    CollectorPause pause;
    for (py::object packet = decoder.next(); packet; packet = decoder.next()) packets.append(packet);
    return packets;
}

// ---- encoding --------------------------------------------------------------------

// Appends the packet of one packet object (at JSON pointer `path`).
void encodeInto(py::handle packet, const std::string &path, std::string &out) {
    Json json;
    try {
        json = trov::python::fromPython(packet.ptr(), path);
    } catch (const trov::python::ConvertError &e) {
        raiseTrovError(TROV_RESULT_BAD_VALUE, py::str(e.path()), e.what());
    }
    if (const std::string reason = trov::undecodedReason(json); !reason.empty())
        raiseTrovError(TROV_RESULT_BAD_VALUE, py::str(path + (json.contains("trailing") ? "" : "/body/status")),
                       "nothing to encode: " + reason);
    std::vector<uint8_t> bytes;
    trov::JsonError error;
    if (!trov::encodePacket(json, path, bytes, error))
        raiseTrovError(error.result, py::str(error.path), error.message);
    out.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

py::bytes encode(py::handle packet) {
    std::string out;
    encodeInto(packet, "", out);
    return py::bytes(out);
}

py::bytes encodeAll(py::iterable packets) {
    std::string out;
    size_t index = 0;
    for (py::handle packet : packets) encodeInto(packet, "/" + std::to_string(index++), out);
    return py::bytes(out);
}

// ---- the layout description ------------------------------------------------------

py::object describe(const std::string &kind, int64_t code, int64_t version, bool request) {
    using trov::LayoutFamily;
    LayoutFamily family;
    if (kind == "body") family = LayoutFamily::Body;
    else if (kind == "event") family = LayoutFamily::Event;
    else if (kind == "method") family = LayoutFamily::Method;
    else if (kind == "attribute") family = LayoutFamily::Attribute;
    else if (kind == "data_type" || kind == "dataType") family = LayoutFamily::DataType;
    else
        raiseTrovError(TROV_RESULT_BAD_VALUE, py::str("kind"),
                       "kind is 'body', 'event', 'method', 'attribute' or 'data_type', not '" + kind + "'");
    if (code < 0 || code > 0xFFFF) raiseTrovError(TROV_RESULT_BAD_VALUE, py::str("code"), "expected a code 0..65535");
    if (version < 0 || version > 0xFF)
        raiseTrovError(TROV_RESULT_BAD_VALUE, py::str("version"), "expected a version 0..255");
    Json layout;
    const TrovResult r =
        trov::describeLayout(family, static_cast<uint16_t>(code), static_cast<uint8_t>(version), request, layout);
    if (r != TROV_RESULT_OK) {
        char what[96];
        std::snprintf(what, sizeof what, "no %s layout for code 0x%04x at version %u", kind.c_str(),
                      static_cast<unsigned>(code), static_cast<unsigned>(version));
        raiseTrovError(r, py::none(), what);
    }
    return toPython(layout);
}

// The description's own numbers (wire widths, count fields), for the suites'
// packet writer: what the tool's description leaves to the library.
py::dict wireFields(const TrovLayoutInfo &layout, int depth);

py::dict wireField(const TrovFieldInfo &f, int depth) {
    py::dict d;
    d["name"] = f.name, d["kind"] = f.kind, d["kindId"] = f.kindId, d["countBytes"] = f.countBytes;
    d["width"] = f.width, d["countField"] = f.countField;
    TrovLayoutInfo nested{};
    if (depth < 8 && (f.kindId == TROV_KIND_RECORD || f.kindId == TROV_KIND_RECORDS) &&
        TROV_DescribeNested(&f, &nested) == TROV_RESULT_OK)
        d["nested"] = wireFields(nested, depth + 1);
    return d;
}

py::dict wireFields(const TrovLayoutInfo &layout, int depth) {
    py::list fields;
    for (uint16_t i = 0; i < layout.fieldCount; ++i) fields.append(wireField(layout.fields[i], depth));
    py::dict d;
    d["form"] = layout.form, d["arrayCountBytes"] = layout.arrayCountBytes, d["fields"] = fields;
    py::dict variants;
    TrovLayoutInfo variant{};
    for (unsigned selector = 1; layout.form == TROV_LAYOUT_SELECTOR && selector <= 0xFF; ++selector)
        if (TROV_DescribeVariant(&layout, static_cast<uint8_t>(selector), &variant) == TROV_RESULT_OK)
            variants[py::int_(selector)] = wireFields(variant, depth + 1);
    d["variants"] = variants;
    return d;
}

py::object wireLayout(const std::string &kind, uint16_t code, uint8_t version, bool request) {
    TrovLayoutInfo layout{};
    TrovResult r = TROV_RESULT_BAD_VALUE;
    if (kind == "body") r = TROV_DescribeBody(code, version, request, &layout);
    else if (kind == "event") r = TROV_DescribeEvent(code, version, &layout);
    else if (kind == "method") r = TROV_DescribeMethod(code, version, request, &layout);
    else if (kind == "attribute") r = TROV_DescribeAttribute(code, version, &layout);
    else if (kind == "data_type") r = TROV_DescribeDataType(code, version, &layout);
    if (r != TROV_RESULT_OK) raiseTrovError(r, py::none(), "");
    return wireFields(layout, 0);
}

py::object tables() {
    static const Json *all = new Json(trov::tablesJson()); // walked once, kept for the process
    return toPython(*all);
}

std::string version() {
    const uint32_t v = TROV_GetVersion();
    return std::to_string(v >> 16 & 0xFF) + "." + std::to_string(v >> 8 & 0xFF) + "." + std::to_string(v & 0xFF);
}

} // namespace

PYBIND11_MODULE(_trovcodec, m) {
    m.doc() = "The TROV codec through the trov tool's core (use the trovcodec package).";
    TROV_InitCoder();

    m.def("_set_error_class", [](py::object cls) { errorClass() = std::move(cls); });

    py::class_<Decoder>(m, "Decoder")
        .def(py::init<py::object, bool, bool, const std::string &>(), py::arg("source"), py::arg("request"),
             py::arg("strict"), py::arg("format"))
        .def("__iter__", [](py::object self) { return self; })
        .def("__next__", [](Decoder &d) {
            py::object packet;
            {
                CollectorPause pause;
                packet = d.next();
            }
            if (!packet) throw py::stop_iteration();
            return packet;
        });

    m.def("decode", &decodeAll, py::arg("source"), py::arg("request"), py::arg("strict"), py::arg("format"));
    m.def("encode", &encode, py::arg("packet"));
    m.def("encode_all", &encodeAll, py::arg("packets"));
    m.def("describe", &describe, py::arg("kind"), py::arg("code"), py::arg("version"), py::arg("request"));
    m.def("tables", &tables);
    m.def("_wire_layout", &wireLayout, py::arg("kind"), py::arg("code"), py::arg("version"), py::arg("request"));
    m.def("library_version", &version);
    m.attr("BUILT_WITH_VERSION") = TROV_VERSION_STRING;
}
