#include <algorithm>
#include <cstring>

#include <pybind11/stl/filesystem.h>

#include "Common.h"

namespace zxpy {

namespace {

using py::arg;
using Zx3D::TFileStream;
using Zx3D::TMemoryStream;
using Zx3D::TObjectReader;
using Zx3D::TObjectWriter;
using Zx3D::TStream;

constexpr unsigned long kFailed = ~0UL;

// The bytes of a buffer, for as long as this is held.
class TBytes {
public:
  explicit TBytes(const py::handle& object, int flags = PyBUF_SIMPLE) {
    if (PyObject_GetBuffer(object.ptr(), &m_View, flags) != 0) {
      throw py::error_already_set();
    }
  }
  ~TBytes() { PyBuffer_Release(&m_View); }
  TBytes(const TBytes&) = delete;
  TBytes& operator=(const TBytes&) = delete;
  void* Data() const { return m_View.buf; }
  unsigned long Size() const { return static_cast<unsigned long>(m_View.len); }

private:
  Py_buffer m_View = {};
};

// --- Streams that are written in Python

class TPyStream : public TStream {
public:
  bool IsEOS() override { PYBIND11_OVERRIDE_PURE(bool, TStream, IsEOS); }
  bool SetEOS() override { PYBIND11_OVERRIDE_PURE(bool, TStream, SetEOS); }
  long GetPos() const override { PYBIND11_OVERRIDE_PURE(long, TStream, GetPos); }
  bool SetPos(long position) override { PYBIND11_OVERRIDE_PURE(bool, TStream, SetPos, position); }
  long GetSize() const override { PYBIND11_OVERRIDE_PURE(long, TStream, GetSize); }
  bool SetSize(long size) override { PYBIND11_OVERRIDE_PURE(bool, TStream, SetSize, size); }
  bool Skip(unsigned long size) override { PYBIND11_OVERRIDE_PURE(bool, TStream, Skip, size); }

  unsigned long _Read(void* data, unsigned long size) override {
    const py::gil_scoped_acquire lock;
    const py::object read = Override("_Read")(size);
    const TBytes bytes(read);
    if (bytes.Size() > size) {
      throw py::value_error("_Read gave more bytes than were asked for");
    }
    std::memcpy(data, bytes.Data(), bytes.Size());
    return bytes.Size();
  }

  unsigned long _Write(const void* data, unsigned long size) override {
    const py::gil_scoped_acquire lock;
    const auto written =
        Override("_Write")(py::bytes(static_cast<const char*>(data), size)).cast<unsigned long>();
    if (written > size) {
      throw py::value_error("_Write tells of more bytes than it was given");
    }
    return written;
  }

private:
  py::function Override(const char* name) const {
    py::function f = py::get_override(static_cast<const TStream*>(this), name);
    if (!f) {
      throw py::type_error(std::string("the stream has no ") + name);
    }
    return f;
  }
};

// --- What all streams do

// What can still come, so that no size that is asked for makes memory by itself.
unsigned long Available(TStream& self, unsigned long size) {
  const long left = self.GetSize() - self.GetPos();
  return std::min(size, static_cast<unsigned long>(std::max(left, 0L)));
}

py::object ReadOnce(TStream& self, unsigned long size) {
  std::string bytes(Available(self, size), '\0');
  const unsigned long read = self._Read(bytes.data(), bytes.size());
  return read == kFailed ? py::object(py::none()) : py::bytes(bytes.data(), read);
}

py::object ReadAll(TStream& self, unsigned long size) {
  if (Available(self, size) < size) { // to fail as it does, with what there is read
    std::string rest(Available(self, size), '\0');
    self.ReadAll(rest.data(), rest.size());
    return py::none();
  }
  std::string bytes(size, '\0');
  return self.ReadAll(bytes.data(), size) ? py::object(py::bytes(bytes)) : py::none();
}

py::bytes ReadAllE(TStream& self, unsigned long size) {
  const py::object bytes = ReadAll(self, size);
  if (bytes.is_none()) {
    throw TZxMessage("TStream::ReadAll failed!");
  }
  return bytes;
}

py::object ReadLine(TStream& self, unsigned long bufferSize) {
  constexpr unsigned long kMost = 1UL << 26;
  std::string line(std::min(bufferSize, kMost), '\0');
  unsigned long length = 0;
  return self.ReadLine(line.data(), line.size(), &length)
             ? py::object(py::bytes(line.data(), length))
             : py::none();
}

void BindBase(py::module_& m) {
  py::class_<TStream, TPyStream>(
      m, "TStream",
      "A stream of bytes with a position. One stream belongs to one thread at a time. Failures are "
      "results; the operations that end in `E` raise `TZxMessage` instead.\n\nDerive from it and "
      "give `IsEOS`, `SetEOS`, `GetPos`, `SetPos`, `GetSize`, `SetSize`, `Skip`, `_Read(size)`, "
      "which returns up to `size` bytes, and `_Write(data)`, which returns how many it took.")
      .def(py::init_alias<>())
      .def("IsEOS", &TStream::IsEOS, Doc("TStream::IsEOS"))
      .def("SetEOS", &TStream::SetEOS, Doc("TStream::SetEOS"))
      .def("GetPos", &TStream::GetPos, "The position, in bytes from the beginning.")
      .def("GetPosE", &TStream::GetPosE, Doc("TStream::GetPosE"))
      .def("SetPos", &TStream::SetPos, arg("position"), Doc("TStream::SetPos"))
      .def("SetPosE", &TStream::SetPosE, arg("position"), Doc("TStream::SetPosE"))
      .def("GetSize", &TStream::GetSize, "The length in bytes.")
      .def("SetSize", &TStream::SetSize, arg("size"), Doc("TStream::SetSize"))
      .def("Skip", &TStream::Skip, arg("size"), Doc("TStream::Skip"))
      .def("SupportMap", &TStream::SupportMap, Doc("TStream::SupportMap"))
      .def("_Read", ReadOnce, arg("size"),
           "One read of up to `size` bytes; empty at the end, None when the device fails.")
      .def(
          "_Write",
          [](TStream& self, const py::buffer& data) {
            const TBytes bytes(data);
            return self._Write(bytes.Data(), bytes.Size());
          },
          arg("data"), "One write: the count that was written.")
      .def("ReadAll", ReadAll, arg("size"),
           "Exactly `size` bytes, or None when the stream ends before; what was read stays read.")
      .def("ReadAllE", ReadAllE, arg("size"), "The same; raises `TZxMessage` where that is None.")
      .def(
          "WriteAll",
          [](TStream& self, const py::buffer& data) {
            const TBytes bytes(data);
            return self.WriteAll(bytes.Data(), bytes.Size());
          },
          arg("data"), "Writes all bytes of a buffer; False when the stream takes no more.")
      .def("ReadLine", ReadLine, arg("bufferSize") = 4096,
           "A line without its end, of at most `bufferSize - 1` bytes; None at the end of the "
           "stream and for a stream that knows no lines.");
}

// --- Streams over memory and files

// A stream that works in a buffer of Python's keeps it.
class TPyMemoryStream : public TMemoryStream {
public:
  TPyMemoryStream() = default;
  explicit TPyMemoryStream(std::shared_ptr<TBytes> block)
      : TMemoryStream(block->Data(), block->Size(), false), Block(std::move(block)) {}

  std::shared_ptr<TBytes> Block;
};

void BindMemory(py::module_& m) {
  py::class_<TPyMemoryStream, TStream> c(
      m, "TMemoryStream",
      "A stream over a block of memory: its own, which grows, or "
      "a writable buffer that it is given and keeps, within whose "
      "size it stays.");
  c.attr("s_EOL") = py::bytes(TMemoryStream::s_EOL, 2);
  c.def(py::init<>(), "An empty stream, which allocates with its first write.")
      .def(py::init([](const py::buffer& data) {
             return std::make_unique<TPyMemoryStream>(
                 std::make_shared<TBytes>(data, PyBUF_WRITABLE));
           }),
           arg("data"), "A stream of the bytes of a writable buffer.")
      .def(
          "Close",
          [](TPyMemoryStream& self) {
            self.Close();
            self.Block.reset();
          },
          "Lets the block go: the stream is empty then.")
      .def("Reserve", &TMemoryStream::Reserve, arg("capacity"), Doc("TMemoryStream::Reserve"))
      .def("GetCapacity", &TMemoryStream::GetCapacity, "The bytes that the block has room for.")
      .def_static("CalcCapacity", &TMemoryStream::CalcCapacity, arg("size"),
                  Doc("TMemoryStream::CalcCapacity"))
      .def(
          "LoadFromFile",
          [](TPyMemoryStream& self, const std::filesystem::path& name) {
            return self.LoadFromFile(name.string());
          },
          arg("name"), Doc("TMemoryStream::LoadFromFile"))
      .def(
          "SaveToFile",
          [](TPyMemoryStream& self, const std::filesystem::path& name) {
            return self.SaveToFile(name.string());
          },
          arg("name"), Doc("TMemoryStream::SaveToFile"))
      .def(
          "WriteString",
          [](TPyMemoryStream& self, const std::string& text) {
            return self.WriteString(text.data(), text.size());
          },
          arg("text"), "Writes the characters of a text as UTF-8, without a terminator.")
      .def("WriteEOL", &TMemoryStream::WriteEOL, "Writes `s_EOL`.")
      .def(
          "Swap",
          [](TPyMemoryStream& self, TPyMemoryStream& other) {
            self.Swap(other);
            std::swap(self.Block, other.Block);
          },
          arg("other"), "Exchanges everything.");
}

void BindFiles(py::module_& m) {
  py::class_<TFileStream, TStream>(m, "TFileStream", Doc("TFileStream"))
      .def(py::init<>(), "A closed stream.")
      .def(
          "Open",
          [](TFileStream& self, const std::filesystem::path& name) {
            return self.Open(name.string());
          },
          arg("name"), Doc("TFileStream::Open"))
      .def(
          "Create",
          [](TFileStream& self, const std::filesystem::path& name) {
            return self.Create(name.string());
          },
          arg("name"), Doc("TFileStream::Create"))
      .def("Close", &TFileStream::Close, Doc("TFileStream::Close"));
}

// --- The persistent format

// Keeps the Python object of its stream.
template <class TBase> class TWithStream : public TBase {
public:
  void Set(const py::object& stream) {
    this->SetStream(stream.is_none() ? nullptr : stream.cast<TStream*>(), false);
    m_Stream = stream;
  }

private:
  py::object m_Stream;
};

using TWriter = TWithStream<TObjectWriter>;
using TReader = TWithStream<TObjectReader>;

template <class T> std::unique_ptr<T> Made(const py::object& stream) {
  auto made = std::make_unique<T>();
  made->Set(stream);
  return made;
}

void BindWriter(py::module_& m) {
  py::class_<Zx3D::STORE_BLOCK>(m, "STORE_BLOCK", Doc("STORE_BLOCK"))
      .def(py::init<>())
      .def_readonly("Pos", &Zx3D::STORE_BLOCK::Pos,
                    "Stream position directly behind the block's size field.")
      .def_readonly("Size", &Zx3D::STORE_BLOCK::Size, "Bytes of payload; 0 until the block ends.");
  py::class_<TWriter>(m, "TObjectWriter", Doc("TObjectWriter"))
      .def(py::init([](const py::object& stream) { return Made<TWriter>(stream); }),
           arg("stream") = py::none(), "A writer onto `stream`, which it keeps alive.")
      .def("SetStream", &TWriter::Set, arg("stream").none(true), "Goes over to `stream`.")
      .def("WriteBlockBegin", &TObjectWriter::WriteBlockBegin, arg("block"),
           Doc("TObjectWriter::WriteBlockBegin"))
      .def("WriteBlockEnd", &TObjectWriter::WriteBlockEnd, arg("block"),
           Doc("TObjectWriter::WriteBlockEnd"))
      .def("WriteBlockBeginE", &TObjectWriter::WriteBlockBeginE, arg("block"),
           "The same; raises `RuntimeError` where that is False.")
      .def("WriteBlockEndE", &TObjectWriter::WriteBlockEndE, arg("block"),
           "The same; raises `RuntimeError` where that is False.")
      .def(
          "WriteString",
          [](TWriter& self, const std::string& text) { return self.WriteString(text); },
          arg("text"), "Writes length, bytes (UTF-8 of a text) and padding.");
}

std::optional<py::bytes> ReadString(TReader& self) {
  std::string text;
  if (!self.ReadString(&text)) {
    return std::nullopt;
  }
  return py::bytes(text);
}

void BindReader(py::module_& m) {
  py::class_<TReader>(m, "TObjectReader", Doc("TObjectReader"))
      .def(py::init([](const py::object& stream) { return Made<TReader>(stream); }),
           arg("stream") = py::none(), "A reader of `stream`, which it keeps alive.")
      .def("SetStream", &TReader::Set, arg("stream").none(true), "Goes over to `stream`.")
      .def("ReadString", ReadString,
           "The bytes of a stored string up to its first zero byte; None when the read fails.");
}

// A value that failed to load is not one.
py::object LoadVariant(TReader& reader) {
  Zx3D::TVariant value;
  return Zx3D::LoadVariant(&reader, value) ? py::cast(std::move(value)) : py::none();
}

py::object LoadAttribute(TReader& reader) {
  std::string name;
  Zx3D::TVariant value;
  if (!Zx3D::LoadAttribute(&reader, name, value)) {
    return py::none();
  }
  return py::make_tuple(py::bytes(name).attr("decode")("utf-8", "surrogateescape"), value);
}

} // namespace

void BindStreams(py::module_& m) {
  BindBase(m);
  BindMemory(m);
  BindFiles(m);
  BindWriter(m);
  BindReader(m);
  m.def(
      "SaveVariant",
      [](TWriter& writer, const Zx3D::TVariant& value) {
        return Zx3D::SaveVariant(&writer, value);
      },
      arg("writer"), arg("value"), Doc("SaveVariant"));
  m.def(
      "SaveAttribute",
      [](TWriter& writer, const std::string& name, const Zx3D::TVariant& value) {
        return Zx3D::SaveAttribute(&writer, name, value);
      },
      arg("writer"), arg("name"), arg("value"), Doc("SaveAttribute"));
  m.def("LoadVariant", LoadVariant, arg("reader"), "Reads a variant; None when that fails.");
  m.def("LoadAttribute", LoadAttribute, arg("reader"),
        "Reads an attribute as a pair of name and `TVariant`; None when that fails.");
}

} // namespace zxpy
