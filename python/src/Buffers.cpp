#include "HeldBuffer.h"

#include <algorithm>
#include <limits>

#include "Pins.h"

namespace zxpy {

std::string TypeName(const py::handle& object) {
  return py::str(py::type::handle_of(object).attr("__name__"));
}

std::shared_ptr<THeldBuffer> Hold(const py::object& object, const char* operation,
                                  const char* takes) {
  if (PyObject_CheckBuffer(object.ptr()) == 0) {
    throw py::type_error(std::string(operation) + " takes " + takes + ", not " + TypeName(object));
  }
  try {
    return std::make_shared<THeldBuffer>(object, PyBUF_RECORDS_RO);
  } catch (py::error_already_set& error) {
    // Such as a format that has no buffer form.
    throw py::type_error(std::string(operation) + " takes " + takes + ": " + error.what());
  }
}

TRenderCPU::TBuffer* BufferNamed(TRenderCPU& gl, unsigned int id) {
  return id != 0 && id <= gl.m_Buffers.size() ? gl.m_Buffers[id - 1] : nullptr;
}

namespace {

using T = TRenderCPU;
using TPointer = T::TVertexAttribPointer;
using py::arg;

// --- Vertex array objects

void DeleteVertexArrays(TContext& self, const std::vector<unsigned int>& ids) {
  self.CheckIdle("DeleteVertexArrays");
  for (const unsigned int id : ids) {
    if (id != 0 && id <= self.GL.m_VertexArrays.size() && self.GL.m_VertexArrays[id - 1]) {
      for (const TPointer& p : self.GL.m_VertexArrays[id - 1]->Attribs) {
        self.Arrays.erase(&p);
      }
      // Bound or not by its name, it is never left as the current one.
      if (self.GL.m_VertexArray == self.GL.m_VertexArrays[id - 1]) {
        self.GL.BindVertexArray(0);
      }
    }
  }
  std::vector<unsigned int> names = ids;
  self.Run("DeleteVertexArrays",
           [&] { self.GL.DeleteVertexArrays(static_cast<int>(names.size()), names.data()); });
}

template <class F>
std::vector<unsigned int> Names(TContext& self, const char* operation, int n, F&& make) {
  if (n > 0x1000000) {
    throw py::value_error(std::string(operation) + ": that many names are not given out at once");
  }
  std::vector<unsigned int> ids(static_cast<std::size_t>(std::max(n, 0)));
  if (n > 0) {
    self.Run(operation, [&] { make(n, ids.data()); });
  }
  return ids;
}

void PushClientAttrib(TContext& self, unsigned int mask) {
  self.Run("PushClientAttrib", [&] { self.GL.PushClientAttrib(mask); });
  if (self.GL.m_ClientAttribStack.size() == self.ArrayStack.size()) {
    return; // without a table nothing is saved
  }
  std::array<TArraySource, 8> sources;
  for (std::size_t i = 0; i < 8; ++i) {
    const auto found = self.Arrays.find(&self.GL.m_VertexArray->Attribs[i]);
    if (found != self.Arrays.end()) {
      sources[i] = found->second;
    }
  }
  self.ArrayStack.push_back(sources);
}

void PopClientAttrib(TContext& self) {
  self.Run("PopClientAttrib", [&] { self.GL.PopClientAttrib(); });
  if (self.GL.m_ClientAttribStack.size() == self.ArrayStack.size()) {
    return;
  }
  for (std::size_t i = 0; i < 8; ++i) {
    self.Arrays[&self.GL.m_VertexArray->Attribs[i]] = self.ArrayStack.back()[i];
  }
  self.ArrayStack.pop_back();
}

void BindVertexArrays(TContextClass& c) {
  c.def(
      "GenVertexArrays",
      [](TContext& self, int n) {
        return Names(self, "GenVertexArrays", n,
                     [&](int count, unsigned int* ids) { self.GL.GenVertexArrays(count, ids); });
      },
      "Gives out the `n` lowest free names from 1 on, as a list.", arg("n"));
  Def(c, "BindVertexArray", &T::BindVertexArray, arg("id"));
  c.def("DeleteVertexArrays", DeleteVertexArrays,
        "Frees vertex array objects; the current one gives way to the default one.", arg("ids"));
  c.def("PushClientAttrib", PushClientAttrib, Doc("TRenderCPU::PushClientAttrib"), arg("mask"));
  c.def("PopClientAttrib", PopClientAttrib, Doc("TRenderCPU::PopClientAttrib"));
  Def(c, "EnableClientState", &T::EnableClientState, arg("array"));
  Def(c, "DisableClientState", &T::DisableClientState, arg("array"));
  Def(c, "EnableVertexAttribArray", &T::EnableVertexAttribArray, arg("index"));
  Def(c, "DisableVertexAttribArray", &T::DisableVertexAttribArray, arg("index"));
  c.def(
      "GetVertexAttrib",
      [](TContext& self, unsigned int index, unsigned int pname) -> py::object {
        constexpr int kNone = -0x7FFFFFF1;
        int out = kNone;
        self.Read("GetVertexAttrib", [&] { self.GL.GetVertexAttrib(index, pname, &out); });
        return out == kNone ? py::object(py::none()) : py::object(py::int_(out));
      },
      "One integer of a generic array's state; None where an error is reported.", arg("index"),
      arg("pname"));
}

// --- Buffer objects

// The bytes of a buffer of any type, in rows.
std::shared_ptr<THeldBuffer> HoldBytes(const py::object& data, const char* operation) {
  auto held = Hold(data, operation, "a contiguous buffer");
  if (!IsContiguous(held->View)) {
    throw py::type_error(std::string(operation) + " takes a contiguous buffer");
  }
  return held;
}

// `size` of None is all that `data` has.
void SetBufferData(TContext& self, unsigned int id, const py::object& sizeOrNone,
                   const py::object& data, const char* operation,
                   const std::function<void(long, const void*)>& set) {
  self.CheckIdle(operation);
  std::shared_ptr<THeldBuffer> held;
  if (!data.is_none()) {
    held = HoldBytes(data, operation);
  } else if (sizeOrNone.is_none()) {
    throw py::type_error(std::string(operation) + " wants a size or data");
  }
  const long size = sizeOrNone.is_none() ? held->View.len : sizeOrNone.cast<long>();
  if (held != nullptr && size > held->View.len) {
    throw py::value_error(std::string(operation) + ": the data has fewer bytes than the size");
  }
  const T::TBuffer* const buffer = BufferNamed(self.GL, id);
  if (buffer != nullptr && size > static_cast<long>(buffer->Data.capacity())) {
    self.SaveBuffer(id, true); // the bytes are about to move
  }
  self.Run(operation, [&] { set(size, held != nullptr ? held->View.buf : nullptr); });
}

int BindingIndex(unsigned int target) {
  static constexpr unsigned int kTargets[] = {GL_ARRAY_BUFFER,          GL_ELEMENT_ARRAY_BUFFER,
                                              GL_PIXEL_PACK_BUFFER,     GL_PIXEL_UNPACK_BUFFER,
                                              GL_ATOMIC_COUNTER_BUFFER, GL_SHADER_STORAGE_BUFFER};
  const auto* const found = std::find(std::begin(kTargets), std::end(kTargets), target);
  return found != std::end(kTargets) ? static_cast<int>(found - kTargets) : -1;
}

unsigned int BoundTo(const T& gl, unsigned int target) {
  const int index = BindingIndex(target);
  return index < 0 ? 0 : gl.m_BufferBindings[index];
}

void BindBufferData(TContextClass& c) {
  c.def(
      "BufferData",
      [](TContext& self, unsigned int target, const py::object& size, const py::object& data,
         unsigned int usage) {
        SetBufferData(
            self, BoundTo(self.GL, target), size, data, "BufferData",
            [&](long bytes, const void* from) { self.GL.BufferData(target, bytes, from, usage); });
      },
      "Sizes the bound buffer to `size` bytes (None: those of `data`), new ones 0, and copies "
      "`data` if not None. Arrays that read from the buffer keep the old bytes where these have to "
      "move. `GL_INVALID_OPERATION` for an unknown target or an empty binding, "
      "`GL_INVALID_VALUE` for a negative size.",
      arg("target"), arg("size").none(true), arg("data").none(true), arg("usage"));
  c.def(
      "NamedBufferData",
      [](TContext& self, unsigned int id, const py::object& size, const py::object& data,
         unsigned int usage) {
        SetBufferData(self, id, size, data, "NamedBufferData", [&](long bytes, const void* from) {
          if (bytes > std::numeric_limits<int>::max()) {
            throw py::value_error("NamedBufferData: the size is one of 32 bits");
          }
          self.GL.NamedBufferData(id, static_cast<int>(bytes), from, usage);
        });
      },
      "`BufferData` by name.", arg("id"), arg("size").none(true), arg("data").none(true),
      arg("usage"));
  c.def(
      "BufferSubData",
      [](TContext& self, unsigned int target, long offset, const py::object& data) {
        const auto held = HoldBytes(data, "BufferSubData");
        self.Run("BufferSubData",
                 [&] { self.GL.BufferSubData(target, offset, held->View.len, held->View.buf); });
      },
      "Replaces bytes from `offset` by those of `data`; `GL_INVALID_VALUE` outside the buffer.",
      arg("target"), arg("offset"), arg("data"));
  c.def(
      "MapBuffer",
      [](TContext& self, unsigned int target, unsigned int access) -> py::object {
        void* const data = self.Run("MapBuffer", [&] { return self.GL.MapBuffer(target, access); });
        const T::TBuffer* const buffer = BufferNamed(self.GL, BoundTo(self.GL, target));
        return buffer != nullptr ? py::object(BytesOf(data, buffer->Data.size())) : py::none();
      },
      "The buffer's own bytes as a writable array; None on failure. Mapping forbids nothing, and "
      "the array stays valid whatever becomes of the buffer.",
      arg("target"), arg("access"));
  Def(c, "UnmapBuffer", &T::UnmapBuffer, arg("target"));
}

void BindBuffers(TContextClass& c) {
  c.def(
      "GenBuffers",
      [](TContext& self, int n) {
        return Names(self, "GenBuffers", n,
                     [&](int count, unsigned int* ids) { self.GL.GenBuffers(count, ids); });
      },
      "Gives out the `n` lowest free names from 1 on, as a list.", arg("n"));
  c.def(
      "DeleteBuffers",
      [](TContext& self, std::vector<unsigned int> ids) {
        self.CheckIdle("DeleteBuffers");
        for (const unsigned int id : ids) {
          self.SaveBuffer(id, false);
        }
        self.Run("DeleteBuffers",
                 [&] { self.GL.DeleteBuffers(static_cast<int>(ids.size()), ids.data()); });
      },
      "Frees buffers and clears the binding points that hold them. Arrays that read from them keep "
      "the bytes.",
      arg("ids"));
  Def(c, "BindBuffer", &T::BindBuffer, arg("target"), arg("id"));
  Def(c, "BindBufferBase", &T::BindBufferBase, arg("target"), arg("index"), arg("id"));
  BindBufferData(c);
  c.def(
      "GetBufferParameter",
      [](TContext& self, unsigned int target, unsigned int pname) -> py::object {
        constexpr int kNone = -0x7FFFFFF1;
        int out = kNone;
        self.Read("GetBufferParameter", [&] { self.GL.GetBufferParameter(target, pname, &out); });
        return out == kNone ? py::object(py::none()) : py::object(py::int_(out));
      },
      "Size, usage, access or the mapped flag; None where an error is reported.", arg("target"),
      arg("pname"));
}

} // namespace

void BindBufferObjects(TContextClass& c) {
  BindVertexArrays(c);
  BindBuffers(c);
}

} // namespace zxpy
