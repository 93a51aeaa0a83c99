// The sources iter_decode() reads, as the tool's packet input (PacketInput.h):
// a path (read by the tool itself, raw bytes or any hex text it reads), an
// object with the buffer protocol (bytes, bytearray, memoryview: read in
// place), or a binary file object (its read() called a chunk at a time). The
// tool frames the packets, so memory stays bounded by one packet and a chunk.
#pragma once

#include <Python.h>

#include <istream>
#include <memory>
#include <streambuf>
#include <string>

#include "PacketInput.h"

namespace trov::python {

// One source and the framer over it. Owns what it reads: the buffer export
// of a bytes-like object, or a reference to the file object.
class PythonSource {
public:
    virtual ~PythonSource();

    // Opens `source` as described above, or throws a Python exception
    // (pybind11): TypeError for an object of no such kind, OSError for a path
    // that cannot be opened (a directory, a missing file).
    static std::unique_ptr<PythonSource> open(PyObject *source, InputFormat format);

    PacketInput &input() { return *input_; }

    // The Python exception a file object raised while being read (a new
    // reference, the error cleared from the source), or nullptr.
    virtual PyObject *takeReadError() { return nullptr; }

protected:
    std::unique_ptr<PacketInput> input_;
};

} // namespace trov::python
