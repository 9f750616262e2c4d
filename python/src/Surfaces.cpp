#include "Surfaces.h"

#include <algorithm>

#include <pybind11/stl/filesystem.h>

#include "Context.h"
#include "Pins.h"
#include "Shaders.h"

namespace zxpy {

// --- The surface as an object

namespace {

// Surfaces that samplers still read although Python has let them go.
std::vector<std::unique_ptr<TDataSurface>>& Lingering() {
  static auto* const surfaces = new std::vector<std::unique_ptr<TDataSurface>>;
  return *surfaces;
}

void FreeLingering() {
  auto& all = Lingering();
  for (auto it = all.begin(); it != all.end();) {
    if (TContext::IsInUse(it->get())) {
      ++it;
    } else {
      SaveBlock(it->get(), false);
      it = all.erase(it);
    }
  }
}

} // namespace

TSurface::~TSurface() {
  FreeLingering();
  if (TContext::IsInUse(m_Own.get())) {
    Lingering().push_back(std::move(m_Own));
  } else {
    SaveBlock(m_Own.get(), false);
  }
}

TDataSurface* TSurface::GetToChange(const char* operation) const {
  if (m_Surface != m_Own.get() || TContext::IsInUse(m_Surface)) {
    throw std::runtime_error(std::string(operation) +
                             ": a context draws into this surface or samples it");
  }
  return m_Surface;
}

void TSurface::TakeOver() {
  m_Own->Swap(*m_Surface);
  TContext::Redirect(m_Surface, m_Own.get());
  m_Surface = m_Own.get();
}

DATASURFACE* RecordOf(const py::handle& object) {
  if (py::isinstance<TSurface>(object)) {
    return object.cast<TSurface&>().Get();
  }
  if (py::isinstance<Zx3D::TImageSurface>(object)) {
    return &object.cast<Zx3D::TImageSurface&>().m_Surface;
  }
  throw py::type_error("expected a TDataSurface or a TImageSurface, not " +
                       TextOf(py::type::handle_of(object).attr("__name__")));
}

namespace {

py::array ArrayOf(const py::object& self, const py::object& dtype, const py::object& copy) {
  py::array pixels = PixelsOf(*RecordOf(self));
  if (dtype.is_none() || pixels.dtype().is(py::dtype::from_args(dtype))) {
    const bool wanted = !copy.is_none() && copy.cast<bool>();
    return wanted ? py::array(pixels.attr("copy")()) : pixels;
  }
  return pixels.attr("astype")(dtype);
}

template <class TClass> void DefFields(TClass& c) {
  const auto field = [&c](const char* name, auto get, const char* doc) {
    c.def_property_readonly(
        name, [get](const py::object& self) { return get(*RecordOf(self)); }, doc);
  };
  field(
      "Width", [](const DATASURFACE& s) { return s.Width; }, "Columns.");
  field(
      "Height", [](const DATASURFACE& s) { return s.Height; }, "Rows.");
  field(
      "Depth", [](const DATASURFACE& s) { return s.Depth; }, "Slices, 1 for an image.");
  field(
      "PixelStride", [](const DATASURFACE& s) { return s.PixelStride; },
      "Bytes from one pixel to the next.");
  field(
      "RowStride", [](const DATASURFACE& s) { return s.RowStride; },
      "Bytes from one row to the next.");
  field(
      "SliceStride", [](const DATASURFACE& s) { return s.SliceStride; },
      "Bytes from one slice to the next.");
  field(
      "Format", [](const DATASURFACE& s) { return s.Format; }, "What the components mean.");
  field(
      "Type", [](const DATASURFACE& s) { return s.Type; }, "The type of a component.");
  field(
      "Channels", [](const DATASURFACE& s) { return int{s.Channels}; }, "Components of a pixel.");
  field(
      "DataSize", [](const DATASURFACE& s) { return s.DataSize; },
      "Bytes that belong to the pixels.");
  field(
      "Data", [](const DATASURFACE& s) { return PixelsOf(s); },
      "The pixels as a writable array without a copy: rows from the bottom of the picture up, "
      "columns, and channels where there is more than one.\n\nThe array stays valid whatever "
      "becomes of the surface: pixels that the surface loses by a resize, `Create` or `Destroy` "
      "belong to the arrays that look at them from then on.");
  c.def("__array__", ArrayOf, py::arg("dtype") = py::none(), py::arg("copy") = py::none(),
        "The same array, for `numpy.asarray(surface)`.");
}

// A record over an array of (rows, columns) or (rows, columns, channels), for as long as the array
// is held.
struct TArrayRecord {
  py::array Pixels;
  DATASURFACE Record = {};
};

DATA_TYPE TypeOfArray(const py::array& array) {
  for (unsigned int code = DATA_TYPE_BOOL; code <= DATA_TYPE_DOUBLE; ++code) {
    const auto type = static_cast<DATA_TYPE>(code);
    if (array.dtype().equal(TypeOf(type))) {
      return type;
    }
  }
  throw py::type_error("an array of " + TextOf(array.dtype()) + " has no surface form");
}

const DATASURFACE& SurfaceForReading(const py::object& surface, TArrayRecord* holder) {
  if (!py::isinstance<py::array>(surface)) {
    return *RecordOf(surface);
  }
  auto array = py::reinterpret_borrow<py::array>(surface);
  if (array.ndim() != 2 && array.ndim() != 3) {
    throw py::value_error("an array of pixels has the shape (rows, columns) or (rows, columns, "
                          "channels)");
  }
  static constexpr DATA_FORMAT kFormats[] = {DATA_FORMAT_LUMINANCE, DATA_FORMAT_LUMINANCE_ALPHA,
                                             DATA_FORMAT_RGB, DATA_FORMAT_RGBA};
  const py::ssize_t channels = array.ndim() == 3 ? array.shape(2) : 1;
  if (channels < 1 || channels > 4) {
    throw py::value_error("a pixel has 1 to 4 channels");
  }
  holder->Pixels = py::array::ensure(array, py::array::c_style);
  const DATA_TYPE type = TypeOfArray(holder->Pixels);
  if (!ds::Set(&holder->Record, static_cast<int>(array.shape(1)), static_cast<int>(array.shape(0)),
               kFormats[channels - 1], type, static_cast<int>(channels), holder->Pixels.data())) {
    throw py::value_error("an array of pixels may not be empty");
  }
  return holder->Record;
}

// --- Image files

// Why an operation failed, thrown where the caller wants exceptions; `name` is empty for a stream.
void RaiseReason(bool raises, const std::string& name, const TZxMessage& reason) {
  if (raises) {
    throw name.empty() ? reason : TZxMessage("%1%: %2%") << name << reason.GetText();
  }
}

bool Save(const std::filesystem::path& name, TSaveImageHint* hint, const py::object& surface,
          bool raises) {
  TArrayRecord holder;
  const DATASURFACE& record = SurfaceForReading(surface, &holder);
  TZxMessage reason;
  bool saved = false;
  {
    const py::gil_scoped_release release;
    saved = SaveImage(name.string(), hint, record, &reason);
  }
  if (!saved) {
    RaiseReason(raises, name.string(), reason);
  }
  return saved;
}

std::shared_ptr<TSurface> Adopted(DATASURFACE* record) {
  auto surface = std::make_shared<TSurface>();
  surface->Get()->Adopt(*record);
  return surface;
}

std::shared_ptr<TSurface> LoadFile(const std::filesystem::path& name, bool raises) {
  DATASURFACE record = {};
  TZxMessage reason;
  bool loaded = false;
  {
    const py::gil_scoped_release release;
    loaded = LoadImage(name.string(), nullptr, &record, &reason);
  }
  if (!loaded) {
    RaiseReason(raises, name.string(), reason);
    return nullptr;
  }
  return Adopted(&record);
}

std::shared_ptr<TSurface> LoadStream(Zx3D::TStream& stream, bool raises) {
  Zx3D::TStdStream wrapped(&stream);
  DATASURFACE record = {};
  TZxMessage reason;
  if (!LoadImage(&wrapped, nullptr, &record, &reason)) {
    RaiseReason(raises, "", reason);
    return nullptr;
  }
  return Adopted(&record);
}

using TImage = Zx3D::TImageSurface;

// Arrays may look at the pixels of an image that goes.
class TPyImage : public TImage {
public:
  ~TPyImage() override { SaveBlock(&m_Surface, false); }
};

// The pixels of `loaded`, which is let go, as an object that arrays may look at.
py::object ImageObject(TImage* loaded) {
  auto* const image = new TPyImage;
  image->AttachDataSurface(loaded->m_Surface);
  loaded->m_Surface = {};
  loaded->Release();
  return py::cast(TRefPtr<TImage>(image));
}

py::object LoadObject(const std::filesystem::path& name, bool raises) {
  TImage* image = nullptr;
  TZxMessage reason;
  bool loaded = false;
  {
    const py::gil_scoped_release release;
    loaded = Zx3D::LoadImage(name.string(), nullptr, &image, &reason);
  }
  if (!loaded) {
    RaiseReason(raises, name.string(), reason);
    return py::none();
  }
  return ImageObject(image);
}

py::object LoadObjectFromStream(Zx3D::TStream& stream, bool raises) {
  Zx3D::TStdStream wrapped(&stream);
  TImage* image = nullptr;
  TZxMessage reason;
  if (!Zx3D::LoadImage(&wrapped, nullptr, &image, &reason)) {
    RaiseReason(raises, "", reason);
    return py::none();
  }
  return ImageObject(image);
}

bool SetImage2D(TImage& self, unsigned long width, unsigned long height, unsigned int format,
                unsigned int type, int channels, const py::object& data) {
  TypeOf(static_cast<DATA_TYPE>(type)); // refuses what has no size
  py::array pixels;                     // held while its memory is read
  py::buffer_info info;
  void* bytes = nullptr;
  if (!data.is_none()) {
    pixels = PixelArray(data, "SetImage2D");
    info = pixels.request();
    const unsigned __int128 wanted = static_cast<unsigned __int128>(width) * height *
                                     static_cast<unsigned int>(channels) *
                                     GetTypeSize(static_cast<DATA_TYPE>(type));
    if (static_cast<unsigned __int128>(info.size) * static_cast<std::uint64_t>(info.itemsize) !=
        wanted) {
      throw py::value_error("SetImage2D: the array is not as large as the image");
    }
    bytes = info.ptr;
  }
  if (channels < 1 || channels > 255 || width > 0x7FFFFFFF || height > 0x7FFFFFFF) {
    throw py::value_error("SetImage2D: sizes are 32 bits, channels 1 to 255");
  }
  SaveBlock(&self.m_Surface, true);
  return self.SetImage2D(width, height, static_cast<DATA_FORMAT>(format),
                         static_cast<DATA_TYPE>(type), channels, bytes);
}

void BindImages(py::module_& m) {
  py::class_<TSaveImageHint>(m, "TSaveImageHint", Doc("TSaveImageHint"))
      .def(py::init<>())
      .def_readwrite("Compression", &TSaveImageHint::Compression,
                     "PNG compression effort, 0 (none) to 9 (smallest); -1 leaves it to the "
                     "library.")
      .def_readwrite(
          "Quality", &TSaveImageHint::Quality,
          "JPEG quality, 1 (smallest) to 100 (nearly exact); any other number stands for "
          "95.");
  const char* const save =
      "Saves pixels, row 0 as the bottom row of the picture, as the kind that the name's ending "
      "tells: .png (1 to 4 components of uint8 or uint16), .jpg, .bmp, .tga (uint8), .hdr "
      "(float32). "
      "They are a `TDataSurface`, a `TImageSurface` or an array of (rows, columns) or (rows, "
      "columns, channels). False when they can't be stored so or the file can't be written; with "
      "`RaiseErrors` a `TZxMessage` says why instead.";
  m.def("SaveImage", Save, save, py::arg("name"), py::arg("hint").none(true), py::arg("surface"),
        py::arg("RaiseErrors") = false);
  m.def(
      "SaveImage",
      [](const std::filesystem::path& name, const py::object& surface, bool raises) {
        return Save(name, nullptr, surface, raises);
      },
      save, py::arg("name"), py::arg("surface"), py::arg("RaiseErrors") = false);
  const char* const load =
      "Loads an image file (PNG, JPEG, BMP, TGA, PBM, PGM, PPM, Radiance HDR, told by its "
      "contents), "
      "or what a stream holds from its position on, row 0 being the bottom row. None when it can't "
      "be read or is no sound image; with `RaiseErrors` a `TZxMessage` says why instead.";
  m.def("LoadImage", LoadFile, load, py::arg("name"), py::arg("RaiseErrors") = false);
  m.def("LoadImage", LoadStream, load, py::arg("stream"), py::arg("RaiseErrors") = false);

  py::class_<TImage, TRefPtr<TImage>> image(m, "TImageSurface", Doc("TImageSurface"));
  image.def(py::init([] { return TRefPtr<TImage>(new TPyImage); }), "An empty image.");
  DefFields(image);
  image.def("SetImage2D", SetImage2D, py::arg("w"), py::arg("h"), py::arg("f"), py::arg("t"),
            py::arg("channels"), py::arg("data") = py::none(),
            "Makes an image of `w` by `h` pixels with tight rows, from `data` or zeroed where the "
            "block is new. False when memory is exhausted.");
  py::module_ names = m.def_submodule("Zx3D", "What has another meaning in the namespace Zx3D.");
  const char* const loadObject = "`LoadImage` into a `TImageSurface`.";
  names.def("LoadImage", LoadObject, loadObject, py::arg("name"), py::arg("RaiseErrors") = false);
  names.def("LoadImage", LoadObjectFromStream, loadObject, py::arg("stream"),
            py::arg("RaiseErrors") = false);
}

// --- Surfaces

bool FillSurface(const py::object& surface, const py::object& value) {
  const py::array bytes = PixelArray(value, "Fill");
  return ds::Fill(*RecordOf(surface), bytes.data(), static_cast<unsigned long>(bytes.nbytes()));
}

bool CopySurface(const py::object& from, const py::object& to) {
  TArrayRecord holder;
  return ds::Copy(SurfaceForReading(from, &holder), *RecordOf(to));
}

void BindFunctions(py::module_& m) {
  py::module_ functions = m.def_submodule("ds", "Operations on surfaces.");
  functions.def("Fill", FillSurface, py::arg("surface"), py::arg("value"),
                "Sets every pixel to the bytes of `value`, which are those of one pixel. False, "
                "with nothing written, when they are not or the surface has no pixels.");
  functions.def("Copy", CopySurface, py::arg("source"), py::arg("to"),
                "Copies the pixels that both surfaces have, from (0, 0) on. `source` may be an "
                "array. False, with nothing copied, when type or channel count differ.");
  m.def(
      "GetTypeSize",
      [](unsigned int type) {
        return type <= 15 ? GetTypeSize(static_cast<DATA_TYPE>(type)) : GetTypeSize(type);
      },
      py::arg("type"), "Bytes of one component of a `DATA_TYPE` or of an OpenGL type; 0 for none.");
  m.def("DataTypeFromGL", DataTypeFromGL, py::arg("glType"), Doc("DataTypeFromGL"));
  m.def("DataFormatFromGL", DataFormatFromGL, py::arg("glFormat"), Doc("DataFormatFromGL"));
  m.def("GetFormatComponents", GetFormatComponents, py::arg("glFormat"),
        Doc("GetFormatComponents"));
}

} // namespace

void BindSurfaces(py::module_& m) {
  py::class_<TSurface, std::shared_ptr<TSurface>> c(m, "TDataSurface", Doc("TDataSurface"));
  c.def(py::init<>(), "An empty surface.");
  DefFields(c);
  c.def(
      "Create",
      [](TSurface& self, int width, int height, unsigned int format, unsigned int type,
         int components) {
        TDataSurface* const surface = self.GetToChange("Create");
        SaveBlock(surface, false);
        return surface->Create(width, height, static_cast<DATA_FORMAT>(format),
                               static_cast<DATA_TYPE>(type), components);
      },
      py::arg("width"), py::arg("height"), py::arg("format"), py::arg("type"),
      py::arg("components"),
      "Makes a surface of `width` by `height` pixels with tight rows, all bytes 0, in the place of "
      "what was there. False, leaving the surface empty, for sizes, components or a type that "
      "can't be, and when memory is exhausted. Raises `RuntimeError` while a context draws into "
      "the surface or samples it.");
  c.def(
      "Destroy",
      [](TSurface& self) {
        TDataSurface* const surface = self.GetToChange("Destroy");
        SaveBlock(surface, false);
        surface->Destroy();
      },
      "Empties the surface. Arrays that look at its pixels keep them.");
  c.def(
      "Swap",
      [](TSurface& self, TSurface& other) {
        TDataSurface* const surface = self.GetToChange("Swap");
        surface->Swap(*other.GetToChange("Swap"));
      },
      py::arg("other"), "Exchanges pixels and fields; arrays stay with their pixels.");
  c.def(
      "IsOwner", [](const TSurface& self) { return self.Get()->IsOwner(); },
      "Whether the surface owns its pixels.");
  BindFunctions(m);
  BindImages(m);
}

} // namespace zxpy
