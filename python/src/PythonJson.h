// The one conversion between the trov tool's JSON values (RecordJson.h) and
// Python objects, and the Python back end of its record printer. The tool's core prints packets, layouts and tables as JSON
// values and builds packets from them; the extension hands those values to
// Python and takes them back through this file alone, so a packet in Python
// is the object `trov decode --ndjson` prints, and what `trov encode` reads.
//
//   JSON            Python
//   object          dict (members in the tool's order)
//   array           list (tuples are taken too)
//   unsigned/int    int
//   string          str
//   true/false      bool
//   null            None
//   float           float (never printed; taken so that the builder names it)
//
// Nothing else converts: bytes and other objects are refused with the path
// of the value. Both directions bound the nesting depth, so neither a deep
// nor a self-containing Python value can exhaust the stack.
#pragma once

#include <Python.h>

#include <stdexcept>
#include <string>

#include "RecordJson.h"

namespace trov::python {

// The deepest value either direction converts. Packets nest far less (the
// record walk stops at 32 records, a few JSON levels each).
inline constexpr int kMaxJsonDepth = 200;

// A Python value that has no JSON form: `path` is the JSON pointer of the
// value ("/body/fields/value0"), `what()` says why.
class ConvertError : public std::runtime_error {
public:
    ConvertError(std::string path, const std::string &message)
        : std::runtime_error(message), path_(std::move(path)) {}
    const std::string &path() const { return path_; }

private:
    std::string path_;
};

// A new reference to the Python form of `value`; nullptr with a Python
// exception set when Python cannot allocate.
PyObject *toPython(const Json &value);

// A new reference to the "fields" of a decoded record, made straight from the
// record by the tool's record printer (RecordPrinter.h): equal to
// toPython(recordToJson(...)) without the JSON in between. nullptr with a
// Python exception set when Python cannot allocate.
PyObject *recordToPython(const TrovLayoutInfo &layout, const void *record, uint8_t version, bool request);

// The JSON form of `object`, the root at JSON pointer `path`. Throws
// ConvertError for a value without one; error_already_set-style failures of
// Python itself (a dict changed while read) throw ConvertError too.
Json fromPython(PyObject *object, const std::string &path);

} // namespace trov::python
