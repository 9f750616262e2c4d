#include <algorithm>
#include <limits>

#include "Context.h"
#include "HeldBuffer.h"

namespace zxpy {

namespace {

using T = TRenderCPU;
using TPointer = T::TVertexAttribPointer;
using py::arg;

// --- Buffers of Python's

// The OpenGL type of a buffer's elements by its format; 0 for none.
unsigned int FormatType(const Py_buffer& view) {
  const std::string format = view.format != nullptr ? view.format : "B";
  const std::size_t at = format.find_first_of("@=<") == 0 ? 1 : 0;
  if (format.size() != at + 1) {
    return 0;
  }
  switch (format[at]) {
  case 'B':
    return GL_UNSIGNED_BYTE;
  case 'H':
    return view.itemsize == 2 ? GL_UNSIGNED_SHORT : 0;
  case 'I':
  case 'L':
    return view.itemsize == 4 ? GL_UNSIGNED_INT : 0;
  case 'f':
    return GL_FLOAT;
  case 'd':
    return GL_DOUBLE;
  default:
    return 0;
  }
}

std::string FormatName(const Py_buffer& view) {
  const std::string format = view.format != nullptr ? view.format : "B";
  try {
    return py::str(py::dtype(format));
  } catch (const py::error_already_set&) {
    return "format '" + format + "'";
  }
}

// --- Arrays of vertices

constexpr const char* kVertexTypes = "a buffer of float32, float64 or uint8";

// A buffer as an array of vertices.
struct TVertices {
  int Size;
  unsigned int Type;
  int Stride; ///< as the drawing interface is given it
  std::int64_t Count;
};

int CheckedStride(std::int64_t stride, const char* operation) {
  if (stride != static_cast<int>(stride)) {
    throw py::type_error(std::string(operation) + ": the stride does not fit 32 bits");
  }
  return static_cast<int>(stride);
}

unsigned int VertexType(const Py_buffer& view, const char* operation) {
  const unsigned int type = FormatType(view);
  if (type != GL_FLOAT && type != GL_DOUBLE && type != GL_UNSIGNED_BYTE) {
    throw py::type_error(std::string(operation) + " takes " + kVertexTypes + ", not of " +
                         FormatName(view));
  }
  return type;
}

// Vertices by the buffer's own shape: (vertices,) or (vertices, components).
TVertices ByShape(const Py_buffer& view, const char* operation) {
  TVertices v;
  v.Type = VertexType(view, operation);
  if (view.ndim != 1 && view.ndim != 2) {
    throw py::type_error(std::string(operation) +
                         " takes a buffer of the shape (vertices, components), not of " +
                         std::to_string(view.ndim) + " dimensions");
  }
  const py::ssize_t size = view.ndim == 2 ? view.shape[1] : 1;
  if (size > 4 || size < 1) {
    throw py::type_error(std::string(operation) + ": a vertex has 1 to 4 components, not " +
                         std::to_string(size));
  }
  if (size > 1 && view.strides[1] != view.itemsize) {
    throw py::type_error(std::string(operation) + ": a vertex's components must lie side by side");
  }
  v.Size = static_cast<int>(size);
  v.Count = view.shape[0];
  v.Stride = CheckedStride(view.strides[0], operation);
  if (v.Stride == 0 && v.Count > 1) {
    throw py::type_error(std::string(operation) +
                         ": the vertices of a broadcast array lie on each other");
  }
  return v;
}

int TypeBytes(unsigned int type) { return type == GL_DOUBLE ? 8 : type == GL_FLOAT ? 4 : 1; }

// Vertices as a size, a type and a stride tell them apart in the buffer's memory.
TVertices ByArguments(const Py_buffer& view, int size, unsigned int type, int stride,
                      const char* operation) {
  const unsigned int held = VertexType(view, operation);
  if (held != type) {
    throw py::type_error(std::string(operation) + ": the buffer is of " + FormatName(view) +
                         ", which is not the type given");
  }
  if (stride == 0 && view.ndim == 2 && view.shape[1] == size) {
    return ByShape(view, operation);
  }
  if (!IsContiguous(view)) {
    throw py::type_error(std::string(operation) + ": with a stride, or with vertices of another "
                                                  "size than its rows, the buffer must be "
                                                  "contiguous");
  }
  if (stride < 0) {
    throw py::type_error(std::string(operation) + ": a stride may not be negative");
  }
  const std::int64_t element = std::int64_t{size} * TypeBytes(type);
  const std::int64_t step = stride != 0 ? stride : element;
  const std::int64_t count = view.len >= element ? (view.len - element) / step + 1 : 0;
  return {size, type, stride, count};
}

// What an operation on one array calls in the end.
using TSet = std::function<void(int size, unsigned int type, int stride, const void* pointer)>;

// An array of the buffer object that is bound, from an offset on.
void SetFromBuffer(TContext& self, TPointer* place, const char* operation, int size,
                   unsigned int type, int stride, const py::object& offset, const TSet& set) {
  if (PyLong_Check(offset.ptr()) == 0) {
    throw py::type_error(std::string(operation) +
                         ": a buffer object is bound to GL_ARRAY_BUFFER, so that an offset is "
                         "wanted, not " +
                         TypeName(offset));
  }
  const unsigned int id = self.GL.m_BufferBindings[0];
  const T::TBuffer* const buffer = BufferNamed(self.GL, id);
  const auto start = offset.cast<std::int64_t>();
  if (start < 0 || stride < 0) {
    throw py::value_error(std::string(operation) + ": neither offset nor stride may be negative");
  }
  const std::int64_t element = std::int64_t{size} * TypeBytes(type);
  const std::int64_t step = stride != 0 ? stride : element;
  const std::int64_t bytes =
      (buffer != nullptr ? static_cast<std::int64_t>(buffer->Data.size()) : 0) - start;
  const bool sound = size >= 1 && size <= 4 && buffer != nullptr && bytes >= element;
  TArraySource source;
  source.Buffer = id;
  source.Count = sound ? (bytes - element) / step + 1 : 0;
  const void* const before = place->Data;
  set(size, type, stride, reinterpret_cast<const void*>(start));
  if (size >= 1 && size <= 4 &&
      (type == GL_FLOAT || type == GL_DOUBLE || type == GL_UNSIGNED_BYTE)) {
    self.Arrays[place] = source;
  } else if (place->Data != before) {
    self.Arrays.erase(place);
  }
}

// Sets an array, and what it keeps alive, from the arguments of the full form.
void SetFull(TContext& self, TPointer* place, const char* operation, int size, unsigned int type,
             int stride, const py::object& pointer, const TSet& set) {
  if (self.GL.m_BufferBindings[0] != 0) {
    SetFromBuffer(self, place, operation, size, type, stride, pointer, set);
    return;
  }
  const bool known =
      (type == GL_FLOAT || type == GL_DOUBLE || type == GL_UNSIGNED_BYTE) && size >= 1 && size <= 4;
  if (pointer.is_none() || !known) {
    if (!pointer.is_none()) {
      const auto held = Hold(pointer, operation, kVertexTypes);
      VertexType(held->View, operation);
    }
    set(size, type, stride, nullptr); // reports what is wrong, or takes the array away
    if (known) {
      self.Arrays.erase(place);
    }
    return;
  }
  const auto held = Hold(pointer, operation, kVertexTypes);
  const TVertices v = ByArguments(held->View, size, type, stride, operation);
  set(size, type, v.Stride, held->View.buf);
  self.Arrays[place] = {held, 0, v.Count};
}

// The same from a buffer that tells all by itself. Rows of one vertex need no stride.
void SetShort(TContext& self, TPointer* place, const char* operation, const py::object& pointer,
              int wanted, const TSet& set) {
  if (self.GL.m_BufferBindings[0] != 0) {
    throw py::type_error(std::string(operation) +
                         ": a buffer object is bound to GL_ARRAY_BUFFER, so that size, type, "
                         "stride and offset are wanted");
  }
  const auto held = Hold(pointer, operation, kVertexTypes);
  const TVertices v = ByShape(held->View, operation);
  if (wanted != 0 && v.Size != wanted) {
    throw py::type_error(std::string(operation) + " takes vertices of " + std::to_string(wanted) +
                         " components, not " + std::to_string(v.Size));
  }
  set(v.Size, v.Type, v.Stride, held->View.buf);
  self.Arrays[place] = {held, 0, v.Count};
}

void DefPointer(TContextClass& c, const char* name, TPointer T::*place,
                void (T::*method)(int, unsigned int, int, const void*)) {
  const auto setter = [name, method](TContext& self) -> TSet {
    return [&self, name, method](int size, unsigned int type, int stride, const void* pointer) {
      self.Run(name, [&] { (self.GL.*method)(size, type, stride, pointer); });
    };
  };
  const std::string doc =
      std::string("Sets a classic array: `size` components of `type`, `stride` bytes apart (0: as "
                  "the buffer has them). `pointer` is any buffer of float32, float64 or uint8 (") +
      "anything else raises `TypeError`), an offset if a buffer object is bound to "
      "`GL_ARRAY_BUFFER`, or None. The array reads the buffer's memory, which it keeps alive until "
      "it is set again. Unsigned bytes are normalised to 0 to 1. `GL_INVALID_VALUE` for another "
      "size or type.\n\nAlone, `pointer` has the shape (vertices, components) and tells the rest.";
  c.def(
      name,
      [name, place, setter](TContext& self, int size, unsigned int type, int stride,
                            const py::object& pointer) {
        SetFull(self, &(self.GL.*place), name, size, type, stride, pointer, setter(self));
      },
      doc.c_str(), arg("size"), arg("type"), arg("stride"), arg("pointer").none(true));
  c.def(
      name,
      [name, place, setter](TContext& self, const py::object& pointer) {
        SetShort(self, &(self.GL.*place), name, pointer, 0, setter(self));
      },
      doc.c_str(), arg("pointer"));
}

TSet NormalSetter(TContext& self) {
  return [&self](int, unsigned int type, int stride, const void* pointer) {
    self.Run("NormalPointer", [&] { self.GL.NormalPointer(type, stride, pointer); });
  };
}

TSet GenericSetter(TContext& self, unsigned int index, unsigned char normalized) {
  return [&self, index, normalized](int size, unsigned int type, int stride, const void* pointer) {
    self.Run("VertexAttribPointer",
             [&] { self.GL.VertexAttribPointer(index, size, type, normalized, stride, pointer); });
  };
}

void BindPointers(TContextClass& c) {
  DefPointer(c, "VertexPointer", &T::m_VertexPointer, &T::VertexPointer);
  DefPointer(c, "ColorPointer", &T::m_ColorPointer, &T::ColorPointer);
  DefPointer(c, "TexCoordPointer", &T::m_TexCoordPointer, &T::TexCoordPointer);
  const char* const normal = "`VertexPointer` for normals, which have three components.";
  c.def(
      "NormalPointer",
      [](TContext& self, unsigned int type, int stride, const py::object& pointer) {
        SetFull(self, &self.GL.m_NormalPointer, "NormalPointer", 3, type, stride, pointer,
                NormalSetter(self));
      },
      normal, arg("type"), arg("stride"), arg("pointer").none(true));
  c.def(
      "NormalPointer",
      [](TContext& self, const py::object& pointer) {
        SetShort(self, &self.GL.m_NormalPointer, "NormalPointer", pointer, 3, NormalSetter(self));
      },
      normal, arg("pointer"));
  const char* const generic =
      "`VertexPointer` for generic array 0 to 7 of the current vertex array object; another index "
      "reports 0xFFFFFFFF. Unsigned bytes are read as they are unless `normalized`.";
  const auto place = [](TContext& self, unsigned int index) {
    return index < 8 && self.GL.m_VertexArray != nullptr ? &self.GL.m_VertexArray->Attribs[index]
                                                         : nullptr;
  };
  c.def(
      "VertexAttribPointer",
      [place](TContext& self, unsigned int index, int size, unsigned int type,
              unsigned char normalized, int stride, const py::object& pointer) {
        const TSet set = GenericSetter(self, index, normalized);
        if (TPointer* const p = place(self, index)) {
          SetFull(self, p, "VertexAttribPointer", size, type, stride, pointer, set);
        } else {
          set(size, type, stride, nullptr);
        }
      },
      generic, arg("index"), arg("size"), arg("type"), arg("normalized"), arg("stride"),
      arg("pointer").none(true));
  c.def(
      "VertexAttribPointer",
      [place](TContext& self, unsigned int index, const py::object& pointer, bool normalized) {
        const TSet set = GenericSetter(self, index, normalized ? 1 : 0);
        if (TPointer* const p = place(self, index)) {
          SetShort(self, p, "VertexAttribPointer", pointer, 0, set);
        } else {
          set(1, GL_FLOAT, 0, nullptr);
        }
      },
      generic, arg("index"), arg("pointer"), arg("normalized") = false);
}

// --- Drawing

// Raises `IndexError` unless all enabled arrays have the elements up to `last`.
void CheckRange(TContext& self, const char* operation, std::int64_t first, std::int64_t last) {
  T::TAttrValue values[12];
  const unsigned long count = self.GL._PrepareAttrValues(values, 12);
  for (unsigned long i = 0; i < count; ++i) {
    const auto found = self.Arrays.find(values[i].Pointer);
    const std::int64_t has = found != self.Arrays.end() ? found->second.Count : 0;
    if (first < 0 || last >= has) {
      throw py::index_error(std::string(operation) + ": element " +
                            std::to_string(first < 0 ? first : last) +
                            " is wanted of an enabled array of " + std::to_string(has));
    }
  }
}

// Draws; where a shader raises, the primitive mode is closed all the same.
template <class F> void DrawWhole(TContext& self, const char* operation, F&& draw) {
  const bool inside = self.GL.m_InBeginEnd;
  try {
    self.Draw(operation, draw);
  } catch (...) {
    if (self.GL.m_InBeginEnd && !inside) {
      const std::exception_ptr first = std::current_exception();
      self.GL.m_Pending = 0;
      try {
        self.GL.End();
      } catch (...) { // the first one counts
      }
      std::rethrow_exception(first);
    }
    throw;
  }
}

void DrawArrays(TContext& self, unsigned int mode, int first, int count) {
  if (count > 0) {
    CheckRange(self, "DrawArrays", first, std::int64_t{first} + count - 1);
  }
  if (count < 0) {
    throw py::value_error("DrawArrays: the count is negative");
  }
  DrawWhole(self, "DrawArrays", [&] { self.GL.DrawArrays(mode, first, count); });
}

template <class TIndex> std::int64_t Greatest(const void* indices, std::int64_t count) {
  const auto* const bytes = static_cast<const unsigned char*>(indices);
  TIndex greatest = 0;
  for (std::int64_t i = 0; i < count; ++i) {
    TIndex index;
    std::memcpy(&index, bytes + i * static_cast<std::int64_t>(sizeof index), sizeof index);
    greatest = std::max(greatest, index);
  }
  return static_cast<std::int64_t>(greatest);
}

int IndexBytes(unsigned int type) {
  return type == GL_UNSIGNED_BYTE    ? 1
         : type == GL_UNSIGNED_SHORT ? 2
         : type == GL_UNSIGNED_INT   ? 4
                                     : 0;
}

void DrawIndexed(TContext& self, unsigned int mode, int count, unsigned int type,
                 const void* memory, const void* argument) {
  const std::int64_t last = type == GL_UNSIGNED_BYTE    ? Greatest<std::uint8_t>(memory, count)
                            : type == GL_UNSIGNED_SHORT ? Greatest<std::uint16_t>(memory, count)
                                                        : Greatest<std::uint32_t>(memory, count);
  CheckRange(self, "DrawElements", 0, last);
  DrawWhole(self, "DrawElements", [&] { self.GL.DrawElements(mode, count, type, argument); });
}

constexpr const char* kIndexTypes = "a contiguous buffer of uint8, uint16 or uint32";

std::shared_ptr<THeldBuffer> HoldIndices(const py::object& indices) {
  auto held = Hold(indices, "DrawElements", kIndexTypes);
  if (IndexBytes(FormatType(held->View)) == 0) {
    throw py::type_error(std::string("DrawElements takes ") + kIndexTypes + ", not of " +
                         FormatName(held->View));
  }
  if (!IsContiguous(held->View)) {
    throw py::type_error("DrawElements takes a contiguous buffer");
  }
  return held;
}

void DrawElements(TContext& self, unsigned int mode, int count, unsigned int type,
                  const py::object& indices) {
  if (count < 0) {
    throw py::value_error("DrawElements: the count is negative");
  }
  const std::int64_t bytes = std::int64_t{count} * IndexBytes(type);
  const unsigned int element = self.GL.m_BufferBindings[1];
  if (element != 0) {
    if (PyLong_Check(indices.ptr()) == 0) {
      throw py::type_error("DrawElements: a buffer object is bound to GL_ELEMENT_ARRAY_BUFFER, so "
                           "that an offset is wanted, not " +
                           TypeName(indices));
    }
    const auto offset = indices.cast<std::int64_t>();
    const T::TBuffer* const buffer = BufferNamed(self.GL, element);
    const std::int64_t size =
        buffer != nullptr ? static_cast<std::int64_t>(buffer->Data.size()) : 0;
    if (offset < 0 || offset > size || bytes > size - offset) {
      throw py::index_error("DrawElements: the buffer object has fewer indices");
    }
    if (bytes > 0) {
      DrawIndexed(self, mode, count, type, buffer->Data.data() + offset,
                  reinterpret_cast<const void*>(offset));
      return;
    }
  } else if (!indices.is_none()) {
    const auto held = HoldIndices(indices);
    if (IndexBytes(type) != 0 && FormatType(held->View) != type) {
      throw py::type_error("DrawElements: the buffer is of " + FormatName(held->View) +
                           ", which is not the type given");
    }
    if (bytes > held->View.len) {
      throw py::index_error("DrawElements: the buffer has fewer indices");
    }
    if (bytes > 0) {
      DrawIndexed(self, mode, count, type, held->View.buf, held->View.buf);
      return;
    }
  }
  // Nothing to read: the count is 0, the type is none, or there is no buffer.
  static constexpr unsigned char kNoIndex[4] = {};
  const bool none = element == 0 && indices.is_none();
  if (IndexBytes(type) == 0 || count == 0 || none) {
    self.Run("DrawElements", [&] {
      self.GL.DrawElements(mode, count, type, none || element != 0 ? nullptr : kNoIndex);
    });
  }
}

void DrawAllElements(TContext& self, unsigned int mode, const py::object& indices) {
  if (self.GL.m_BufferBindings[1] != 0) {
    throw py::type_error("DrawElements: a buffer object is bound to GL_ELEMENT_ARRAY_BUFFER, so "
                         "that count, type and offset are wanted");
  }
  const auto held = HoldIndices(indices);
  const py::ssize_t count = held->View.len / held->View.itemsize;
  if (count > std::numeric_limits<int>::max()) {
    throw py::value_error("DrawElements: more indices than 32 bits count");
  }
  if (count > 0) {
    DrawIndexed(self, mode, static_cast<int>(count), FormatType(held->View), held->View.buf,
                held->View.buf);
  }
}

// --- Outlines

using TPoints = std::vector<vec_t_<double, 2>>;

TPoints PointsFrom(const py::handle& object) {
  const TAnyDoubles values = TAnyDoubles::ensure(object);
  if (!values) {
    PyErr_Clear();
  }
  if (!values || values.ndim() != 2 || values.shape(1) != 2) {
    throw py::type_error("expected points of the shape (points, 2)");
  }
  const auto* const first = reinterpret_cast<const vec_t_<double, 2>*>(values.data());
  return {first, first + values.shape(0)};
}

// The operation leaves its points set as the vertex array, so they have to stay.
void Outline(TContext& self, const py::handle& points, const std::array<double, 3>& color,
             double width, const std::array<double, 3>& fill, double fillWidth) {
  if (self.GL.m_BufferBindings[0] != 0) {
    throw py::value_error("Polygon: no buffer object may be bound to GL_ARRAY_BUFFER");
  }
  self.CheckIdle("Polygon");
  const auto held = std::make_shared<TPoints>(PointsFrom(points));
  const auto count = static_cast<std::int64_t>(held->size());
  const bool enabled = self.GL.m_VertexPointer.Enabled;
  self.GL.m_VertexPointer.Enabled = false; // its points are replaced before they are read
  try {
    CheckRange(self, "Polygon", 0, count - 1);
  } catch (...) {
    self.GL.m_VertexPointer.Enabled = enabled;
    throw;
  }
  self.GL.m_VertexPointer.Enabled = enabled;
  self.Arrays[&self.GL.m_VertexPointer] = {held, 0, count};
  DrawWhole(self, "Polygon", [&] {
    self.GL.Polygon(*held, {color[0], color[1], color[2]}, width, {fill[0], fill[1], fill[2]},
                    fillWidth);
  });
}

void BindOutlines(TContextClass& c) {
  c.def("Polygon", Outline, Doc("TRenderCPU::Polygon"), arg("points"), arg("color"), arg("width"),
        arg("fill"), arg("fillWidth"));
  c.def(
      "Domain",
      [](TContext& self, const py::sequence& contours, const std::array<double, 3>& color,
         double width, const std::array<double, 3>& fill, double fillWidth) {
        for (const py::handle& contour : contours) {
          Outline(self, contour, color, width, fill, fillWidth);
        }
      },
      Doc("TRenderCPU::Domain"), arg("contours"), arg("color"), arg("width"), arg("fill"),
      arg("fillWidth"));
}

} // namespace

void BindArrays(TContextClass& c) {
  BindPointers(c);
  c.def("DrawArrays", DrawArrays,
        "Draws `count` elements of the enabled arrays from `first` on; nothing happens without an "
        "enabled array. Raises `IndexError` for elements that an array does not have.",
        arg("mode"), arg("first"), arg("count"));
  const char* const elements =
      "Draws the elements of the enabled arrays by a contiguous buffer of uint8, uint16 or uint32 "
      "indices, or from an offset into the buffer object bound to `GL_ELEMENT_ARRAY_BUFFER`. "
      "`GL_INVALID_VALUE` for another type, or None without a buffer object. Raises `TypeError` "
      "for a buffer of another type and `IndexError` for elements that an array does not have.";
  c.def("DrawElements", DrawElements, elements, arg("mode"), arg("count"), arg("type"),
        arg("indices").none(true));
  c.def("DrawElements", DrawAllElements, elements, arg("mode"), arg("indices"));
  BindOutlines(c);
}

} // namespace zxpy
