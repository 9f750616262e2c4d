#include "Pins.h"

#include <cstring>
#include <new>
#include <unordered_map>

namespace zxpy {

namespace {

// Never destroyed: arrays may outlive the module.
std::unordered_map<const void*, std::weak_ptr<TPin>>& Pins() {
  static auto* const pins = new std::unordered_map<const void*, std::weak_ptr<TPin>>;
  return *pins;
}

// What an array has as its base.
py::capsule BaseOf(std::shared_ptr<TPin> pin) {
  return py::capsule(new std::shared_ptr<TPin>(std::move(pin)),
                     [](void* p) { delete static_cast<std::shared_ptr<TPin>*>(p); });
}

void CopyBlock(const DATASURFACE& from, TDataSurface* to) {
  DATASURFACE record = from;
  record.Data = AllocateSurfaceBlock(from.DataSize, static_cast<std::uint64_t>(from.RowStride),
                                     static_cast<std::uint64_t>(from.PixelStride));
  if (record.Data == nullptr) {
    throw std::bad_alloc();
  }
  std::memcpy(record.Data, from.Data, from.DataSize);
  to->Adopt(record);
}

} // namespace

TPin::~TPin() { Pins().erase(m_Block); }

std::shared_ptr<TPin> FindPin(const void* block) {
  const auto found = Pins().find(block);
  return found == Pins().end() ? nullptr : found->second.lock();
}

std::shared_ptr<TPin> PinOf(const void* block) {
  std::shared_ptr<TPin> pin = FindPin(block);
  if (pin == nullptr) {
    pin = std::make_shared<TPin>(block);
    Pins()[block] = pin;
  }
  return pin;
}

void SaveBlock(TDataSurface* surface, bool copy) {
  const std::shared_ptr<TPin> pin =
      surface->Data != nullptr ? FindPin(surface->Data) : std::shared_ptr<TPin>();
  if (pin == nullptr) {
    return;
  }
  TDataSurface left;
  if (copy) {
    CopyBlock(*surface, &left);
  }
  surface->Swap(left);
  pin->Surface.Swap(left);
}

void SaveBlock(DATASURFACE* record, bool copy) {
  const std::shared_ptr<TPin> pin =
      record->Data != nullptr ? FindPin(record->Data) : std::shared_ptr<TPin>();
  if (pin == nullptr) {
    return;
  }
  DATASURFACE left = {};
  if (copy) {
    left = *record;
    left.Data = static_cast<std::uint8_t*>(std::malloc(record->DataSize));
    if (left.Data == nullptr) {
      throw std::bad_alloc();
    }
    std::memcpy(left.Data, record->Data, record->DataSize);
  }
  pin->Surface.Adopt(*record);
  *record = left;
}

void SaveBlock(std::vector<unsigned char>* bytes) {
  if (const std::shared_ptr<TPin> pin = FindPin(bytes->data())) {
    std::vector<unsigned char> copy = *bytes;
    pin->Bytes = std::move(*bytes);
    *bytes = std::move(copy);
  }
}

py::dtype TypeOf(DATA_TYPE type) {
  switch (type) {
  case DATA_TYPE_BOOL:
    return py::dtype::of<bool>();
  case DATA_TYPE_INT8:
    return py::dtype::of<std::int8_t>();
  case DATA_TYPE_UINT8:
    return py::dtype::of<std::uint8_t>();
  case DATA_TYPE_INT16:
    return py::dtype::of<std::int16_t>();
  case DATA_TYPE_UINT16:
    return py::dtype::of<std::uint16_t>();
  case DATA_TYPE_INT32:
    return py::dtype::of<std::int32_t>();
  case DATA_TYPE_UINT32:
    return py::dtype::of<std::uint32_t>();
  case DATA_TYPE_INT64:
    return py::dtype::of<std::int64_t>();
  case DATA_TYPE_UINT64:
    return py::dtype::of<std::uint64_t>();
  case DATA_TYPE_FLOAT:
    return py::dtype::of<float>();
  case DATA_TYPE_DOUBLE:
    return py::dtype::of<double>();
  default:
    throw py::type_error("data type " + std::to_string(static_cast<unsigned int>(type)) +
                         " has no array form");
  }
}

py::array PixelArray(const py::object& object, const char* operation) {
  if (PyObject_CheckBuffer(object.ptr()) == 0) {
    throw py::type_error(std::string(operation) + " takes a buffer of pixels, not " +
                         TextOf(py::type::handle_of(object).attr("__name__")));
  }
  // By its memory: NumPy would take bytes for a text.
  const py::object view =
      py::isinstance<py::array>(object)
          ? object
          : py::module_::import("numpy").attr("asarray")(
                py::reinterpret_steal<py::object>(PyMemoryView_FromObject(object.ptr())));
  py::array array = py::array::ensure(view, py::array::c_style);
  if (!array) {
    PyErr_Clear();
    throw py::type_error(std::string(operation) + " takes a buffer of pixels");
  }
  return array;
}

py::array PixelsOf(const DATASURFACE& surface) {
  const py::dtype type = TypeOf(surface.Data != nullptr ? surface.Type : DATA_TYPE_UINT8);
  if (surface.Data == nullptr) {
    return py::array(type, std::vector<py::ssize_t>{0, 0});
  }
  std::vector<py::ssize_t> shape = {surface.Height, surface.Width};
  std::vector<py::ssize_t> strides = {surface.RowStride, surface.PixelStride};
  if (surface.Channels != 1) {
    shape.push_back(surface.Channels);
    strides.push_back(type.itemsize());
  }
  // A record that promises more than its block holds gets no view.
  const auto last = (surface.Height - std::int64_t{1}) * surface.RowStride +
                    (surface.Width - std::int64_t{1}) * surface.PixelStride +
                    surface.Channels * type.itemsize();
  if (surface.Height < 1 || surface.Width < 1 || surface.RowStride < 0 || surface.PixelStride < 0 ||
      last > static_cast<std::int64_t>(surface.DataSize)) {
    throw py::value_error("the surface's strides lead out of its data");
  }
  return py::array(type, shape, strides, surface.Data, BaseOf(PinOf(surface.Data)));
}

py::array BytesOf(void* block, std::size_t size) {
  if (size == 0) {
    return py::array(py::dtype::of<std::uint8_t>(), std::vector<py::ssize_t>{0});
  }
  return py::array(py::dtype::of<std::uint8_t>(),
                   std::vector<py::ssize_t>{static_cast<py::ssize_t>(size)}, {}, block,
                   BaseOf(PinOf(block)));
}

} // namespace zxpy
