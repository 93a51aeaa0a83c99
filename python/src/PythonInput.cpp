// Python sources as the tool's packet input: paths go to the tool's own
// reader; bytes-like objects and file objects become a std::streambuf that
// the tool's stream reader takes chunks from.
#include "PythonInput.h"

#include <cerrno>
#include <cstring>

#include <pybind11/pybind11.h>

namespace py = pybind11;

namespace trov::python {
namespace {

constexpr size_t kChunk = 64 * 1024; // what a file object is asked for at a time

// A bytes-like object read in place. The buffer export keeps the object alive
// and its memory where it is (a bytearray cannot be resized meanwhile).
class BufferSource final : public PythonSource {
public:
    explicit BufferSource(PyObject *object, InputFormat format) {
        if (PyObject_GetBuffer(object, &view_, PyBUF_SIMPLE) != 0) throw py::error_already_set();
        char *begin = static_cast<char *>(view_.buf);
        buffer_.set(begin, begin + view_.len);
        input_ = PacketInput::fromStream(stream_, "<bytes>", format);
    }
    ~BufferSource() override {
        input_.reset();
        PyBuffer_Release(&view_);
    }

private:
    struct Memory : std::streambuf {
        void set(char *begin, char *end) { setg(begin, begin, end); }
    };
    Py_buffer view_{};
    Memory buffer_;
    std::istream stream_{&buffer_};
};

// A binary file object: read(kChunk) per refill, with the GIL held (the
// caller holds it). An exception of read() ends the input as a read error
// and is kept, to be raised in its place.
class FileSource final : public PythonSource {
public:
    FileSource(PyObject *file, InputFormat format) : file_(py::reinterpret_borrow<py::object>(file)) {
        read_ = file_.attr("read");
        input_ = PacketInput::fromStream(stream_, "<file>", format);
    }
    ~FileSource() override { input_.reset(); }

    PyObject *takeReadError() override {
        if (!error_) return nullptr;
        return error_.release().ptr();
    }

private:
    class Reader : public std::streambuf {
    public:
        explicit Reader(FileSource &owner) : owner_(owner) {}

    protected:
        int_type underflow() override {
            if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
            if (!owner_.refill()) return traits_type::eof();
            char *data = owner_.chunkData();
            setg(data, data, data + owner_.chunkSize());
            return traits_type::to_int_type(*gptr());
        }

    private:
        FileSource &owner_;
    };

    // The next chunk from read(); false at the end or after an error.
    bool refill() {
        if (done_) return false;
        try {
            py::object got = read_(kChunk);
            if (got.is_none()) throw py::value_error("the file object returned None: a non-blocking file has no data");
            if (!PyBytes_Check(got.ptr()))
                throw py::type_error(std::string("read() returned ") + Py_TYPE(got.ptr())->tp_name +
                                     ", not bytes: open the file in binary mode ('rb')");
            chunk_ = got;
        } catch (py::error_already_set &e) {
            e.restore();
            keepError();
            return false;
        } catch (py::builtin_exception &e) {
            e.set_error();
            keepError();
            return false;
        }
        if (PyBytes_GET_SIZE(chunk_.ptr()) == 0) done_ = true;
        return !done_;
    }
    char *chunkData() { return PyBytes_AS_STRING(chunk_.ptr()); }
    size_t chunkSize() const { return static_cast<size_t>(PyBytes_GET_SIZE(chunk_.ptr())); }

    void keepError() {
        PyObject *type = nullptr, *value = nullptr, *trace = nullptr;
        PyErr_Fetch(&type, &value, &trace);
        PyErr_NormalizeException(&type, &value, &trace);
        if (trace != nullptr && value != nullptr) PyException_SetTraceback(value, trace);
        Py_XDECREF(type);
        Py_XDECREF(trace);
        error_ = py::reinterpret_steal<py::object>(value);
        done_ = true;
        // The tool's reader sees a failed stream: the input ends as a read error.
        stream_.setstate(std::ios::badbit);
    }

    py::object file_, read_, chunk_, error_;
    bool done_ = false;
    Reader reader_{*this};
    std::istream stream_{&reader_};
};

// A path, read by the tool's own file reader.
class PathSource final : public PythonSource {
public:
    PathSource(PyObject *path, InputFormat format) {
        std::string error;
        errno = 0;
        input_ = PacketInput::open(py::str(path).cast<std::string>(), format, error);
        if (input_ == nullptr) {
            // The reader refuses a directory itself; else open() set errno.
            const int code = error.find(" is a directory") != std::string::npos ? EISDIR : errno != 0 ? errno : EIO;
            PyErr_SetObject(PyExc_OSError, py::make_tuple(code, std::strerror(code), py::handle(path)).ptr());
            throw py::error_already_set();
        }
    }
};

} // namespace

PythonSource::~PythonSource() = default;

std::unique_ptr<PythonSource> PythonSource::open(PyObject *source, InputFormat format) {
    if (PyUnicode_Check(source) || PyObject_HasAttrString(source, "__fspath__")) {
        py::object path = py::reinterpret_steal<py::object>(PyOS_FSPath(source));
        if (!path) throw py::error_already_set();
        if (!PyUnicode_Check(path.ptr())) throw py::type_error("a path is given as str or os.PathLike of str");
        return std::make_unique<PathSource>(path.ptr(), format);
    }
    if (PyObject_CheckBuffer(source)) return std::make_unique<BufferSource>(source, format);
    if (PyObject_HasAttrString(source, "read")) return std::make_unique<FileSource>(source, format);
    throw py::type_error(std::string("cannot read packets from ") + Py_TYPE(source)->tp_name +
                         ": give bytes, a path or a binary file object");
}

} // namespace trov::python
