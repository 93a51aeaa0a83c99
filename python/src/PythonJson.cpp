// JSON values to Python objects and back, and the Python values the tool's
// record printer makes decoded records of (see PythonJson.h). Written against
// the C API: decoding a packet list makes tens of thousands of small
// objects, and the member names of records repeat, so each name becomes one
// interned str that every dict shares.
#include "PythonJson.h"

#include <cstring>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "RecordPrinter.h"

namespace trov::python {
namespace {

// Interned member names. Keys come from the layout description and the
// packet object's own members, a few thousand at most; the cache stops
// growing at kMaxKeys and further names are made each time.
class KeyCache {
public:
    PyObject *get(const std::string &key) {
        const auto found = keys_.find(key);
        if (found != keys_.end()) {
            Py_INCREF(found->second);
            return found->second;
        }
        PyObject *text = PyUnicode_DecodeUTF8(key.data(), static_cast<Py_ssize_t>(key.size()), "replace");
        if (text == nullptr) return nullptr;
        PyUnicode_InternInPlace(&text);
        if (keys_.size() < kMaxKeys) {
            Py_INCREF(text); // the cache's reference, kept for the life of the process
            keys_.emplace(key, text);
        }
        return text;
    }

private:
    static constexpr size_t kMaxKeys = 16384;
    std::unordered_map<std::string, PyObject *> keys_;
};

KeyCache &keyCache() {
    static KeyCache *cache = new KeyCache; // never destroyed: its strings outlive any interpreter teardown order
    return *cache;
}

// The record printer's member names are the description's own strings,
// constant for the life of the library: cached by address.
PyObject *memberName(const char *name) {
    static auto *names = new std::unordered_map<const char *, PyObject *>;
    const auto found = names->find(name);
    if (found != names->end()) {
        Py_INCREF(found->second);
        return found->second;
    }
    PyObject *text = keyCache().get(name);
    if (text != nullptr && names->size() < 16384) {
        Py_INCREF(text);
        names->emplace(name, text);
    }
    return text;
}

// One owned reference, moved around by the printer; null after a failed
// allocation (the Python error stays set).
class Ref {
public:
    Ref() = default;
    explicit Ref(PyObject *object) : object_(object) {}
    Ref(Ref &&other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref &operator=(Ref &&other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() { Py_XDECREF(object_); }
    PyObject *get() const { return object_; }
    PyObject *release() { return std::exchange(object_, nullptr); }

private:
    PyObject *object_ = nullptr;
};

// Python values for the record printer. A failed allocation leaves a null
// Ref, which every later step passes over; failed() tells at the end.
class PythonValues {
public:
    Ref object() { return check(PyDict_New()); }
    Ref array() { return check(PyList_New(0)); }
    Ref number(uint32_t value) { return check(PyLong_FromUnsignedLong(value)); }
    Ref null() {
        Py_INCREF(Py_None);
        return Ref(Py_None);
    }
    Ref text(const char *data, size_t size) {
        PyObject *s = PyUnicode_New(static_cast<Py_ssize_t>(size), 127);
        if (s != nullptr) std::memcpy(PyUnicode_1BYTE_DATA(s), data, size);
        return check(s);
    }
    Ref hex(const uint8_t *data, size_t size) {
        static const char digits[] = "0123456789abcdef";
        PyObject *s = PyUnicode_New(static_cast<Py_ssize_t>(2 * size), 127);
        if (s != nullptr) {
            Py_UCS1 *out = PyUnicode_1BYTE_DATA(s);
            for (size_t i = 0; i < size; ++i) {
                out[2 * i] = static_cast<Py_UCS1>(digits[data[i] >> 4]);
                out[2 * i + 1] = static_cast<Py_UCS1>(digits[data[i] & 15]);
            }
        }
        return check(s);
    }
    void set(Ref &object, const char *key, Ref &&value) {
        if (object.get() == nullptr || value.get() == nullptr) return;
        PyObject *k = memberName(key);
        if (k == nullptr || PyDict_SetItem(object.get(), k, value.get()) != 0) failed_ = true;
        Py_XDECREF(k);
    }
    void append(Ref &array, Ref &&value) {
        if (array.get() == nullptr || value.get() == nullptr) return;
        if (PyList_Append(array.get(), value.get()) != 0) failed_ = true;
    }
    bool failed() const { return failed_; }

private:
    Ref check(PyObject *object) {
        if (object == nullptr) failed_ = true;
        return Ref(object);
    }
    bool failed_ = false;
};

PyObject *toPythonAt(const Json &value, int depth) {
    if (depth > kMaxJsonDepth) {
        PyErr_SetString(PyExc_RecursionError, "JSON value nested too deep");
        return nullptr;
    }
    switch (value.type()) {
    case Json::value_t::object: {
        PyObject *dict = PyDict_New();
        if (dict == nullptr) return nullptr;
        for (const auto &[key, member] : value.items()) {
            PyObject *k = keyCache().get(key);
            PyObject *v = k != nullptr ? toPythonAt(member, depth + 1) : nullptr;
            const int failed = v == nullptr || PyDict_SetItem(dict, k, v) != 0;
            Py_XDECREF(k);
            Py_XDECREF(v);
            if (failed) {
                Py_DECREF(dict);
                return nullptr;
            }
        }
        return dict;
    }
    case Json::value_t::array: {
        PyObject *list = PyList_New(static_cast<Py_ssize_t>(value.size()));
        if (list == nullptr) return nullptr;
        Py_ssize_t i = 0;
        for (const Json &item : value) {
            PyObject *v = toPythonAt(item, depth + 1);
            if (v == nullptr) {
                Py_DECREF(list);
                return nullptr;
            }
            PyList_SET_ITEM(list, i++, v); // steals v
        }
        return list;
    }
    case Json::value_t::string: {
        const auto &s = value.get_ref<const std::string &>();
        // As the tool prints it: bytes that are not UTF-8 become U+FFFD.
        return PyUnicode_DecodeUTF8(s.data(), static_cast<Py_ssize_t>(s.size()), "replace");
    }
    case Json::value_t::number_unsigned: return PyLong_FromUnsignedLongLong(value.get<uint64_t>());
    case Json::value_t::number_integer: return PyLong_FromLongLong(value.get<int64_t>());
    case Json::value_t::number_float: return PyFloat_FromDouble(value.get<double>());
    case Json::value_t::boolean: return PyBool_FromLong(value.get<bool>());
    case Json::value_t::null:
    case Json::value_t::discarded:
    case Json::value_t::binary: Py_RETURN_NONE;
    }
    Py_RETURN_NONE;
}

const char *typeName(PyObject *object) { return Py_TYPE(object)->tp_name; }

Json fromPythonAt(PyObject *object, std::string &path, int depth) {
    if (depth > kMaxJsonDepth)
        throw ConvertError(path, "nested deeper than " + std::to_string(kMaxJsonDepth) + " levels");
    if (PyBool_Check(object)) return Json(object == Py_True);
    if (PyLong_Check(object)) {
        int overflow = 0;
        const long long n = PyLong_AsLongLongAndOverflow(object, &overflow);
        if (overflow == 0) {
            if (n == -1 && PyErr_Occurred()) PyErr_Clear();
            else return n >= 0 ? Json(static_cast<uint64_t>(n)) : Json(static_cast<int64_t>(n));
        }
        if (overflow > 0) {
            const unsigned long long u = PyLong_AsUnsignedLongLong(object);
            if (!PyErr_Occurred()) return Json(static_cast<uint64_t>(u));
            PyErr_Clear();
        }
        // Too big for any field: a number the builder refuses by its range.
        return Json(overflow > 0 ? 1e300 : -1e300);
    }
    if (PyUnicode_Check(object)) {
        Py_ssize_t size = 0;
        const char *text = PyUnicode_AsUTF8AndSize(object, &size);
        if (text == nullptr) {
            PyErr_Clear();
            throw ConvertError(path, "a string that is not valid Unicode");
        }
        return Json(std::string(text, static_cast<size_t>(size)));
    }
    if (PyDict_Check(object)) {
        Json result = Json::object();
        PyObject *key = nullptr, *value = nullptr;
        Py_ssize_t pos = 0;
        const size_t base = path.size();
        while (PyDict_Next(object, &pos, &key, &value)) {
            if (!PyUnicode_Check(key)) throw ConvertError(path, std::string("a member name of type ") + typeName(key) + ", not str");
            Py_ssize_t size = 0;
            const char *name = PyUnicode_AsUTF8AndSize(key, &size);
            if (name == nullptr) {
                PyErr_Clear();
                throw ConvertError(path, "a member name that is not valid Unicode");
            }
            std::string member(name, static_cast<size_t>(size));
            // Hold the value: converting it runs no Python code, but stay safe
            // against a dict that a __del__ elsewhere could change.
            Py_INCREF(value);
            path += '/';
            path += member;
            try {
                Json converted = fromPythonAt(value, path, depth + 1);
                Py_DECREF(value);
                result[member] = std::move(converted);
            } catch (...) {
                Py_DECREF(value);
                throw;
            }
            path.resize(base);
        }
        return result;
    }
    if (PyList_Check(object) || PyTuple_Check(object)) {
        Json result = Json::array();
        const size_t base = path.size();
        // A list may be changed by nothing here, but read its size each time.
        for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(object); ++i) {
            PyObject *item = PySequence_Fast_GET_ITEM(object, i);
            Py_INCREF(item);
            path += '/';
            path += std::to_string(i);
            try {
                Json converted = fromPythonAt(item, path, depth + 1);
                Py_DECREF(item);
                result.push_back(std::move(converted));
            } catch (...) {
                Py_DECREF(item);
                throw;
            }
            path.resize(base);
        }
        return result;
    }
    if (object == Py_None) return Json(nullptr);
    if (PyFloat_Check(object)) return Json(PyFloat_AS_DOUBLE(object));
    if (PyBytes_Check(object) || PyByteArray_Check(object) || PyMemoryView_Check(object))
        throw ConvertError(path, "bytes are given as a hex string (data.hex())");
    throw ConvertError(path, std::string("a value of type ") + typeName(object) + " has no JSON form");
}

} // namespace

PyObject *toPython(const Json &value) { return toPythonAt(value, 0); }

PyObject *recordToPython(const TrovLayoutInfo &layout, const void *record, uint8_t version, bool request) {
    PythonValues values;
    RecordPrinter<PythonValues> printer(values);
    describe::readRecord(layout, record, version, request, printer);
    Ref fields = printer.take();
    if (values.failed() || fields.get() == nullptr) {
        if (!PyErr_Occurred()) PyErr_NoMemory();
        return nullptr;
    }
    // As the tool prints it: a record that printed as nothing is {}.
    if (fields.get() == Py_None) return PyDict_New();
    return fields.release();
}

Json fromPython(PyObject *object, const std::string &path) {
    std::string at = path;
    return fromPythonAt(object, at, 0);
}

} // namespace trov::python
