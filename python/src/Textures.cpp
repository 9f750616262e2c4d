#include "Context.h"
#include "Pins.h"

namespace zxpy {

namespace {

using T = TRenderCPU;
using py::arg;

// --- Pixels that are handed in

// The OpenGL type of an array's elements; 0 for none.
unsigned int ElementType(const py::array& array) {
  static constexpr unsigned int kTypes[] = {GL_UNSIGNED_BYTE,  GL_BYTE,  GL_SHORT,
                                            GL_UNSIGNED_SHORT, GL_INT,   GL_UNSIGNED_INT,
                                            GL_FLOAT,          GL_DOUBLE};
  for (const unsigned int type : kTypes) {
    if (array.dtype().equal(TypeOf(DataTypeFromGL(type)))) {
      return type;
    }
  }
  return 0;
}

void CheckElementType(const py::array& array, unsigned int type, const char* operation) {
  if (DataTypeFromGL(type) != DATA_TYPE_NONE && ElementType(array) != type) {
    throw py::type_error(std::string(operation) + ": the pixels are of " + TextOf(array.dtype()) +
                         ", which is not the type given");
  }
}

// Raises `ValueError` unless the array has the pixels of a rectangle.
void CheckPixels(const py::array& array, int width, int height, unsigned int format,
                 const char* operation) {
  if (width < 1 || height < 1) {
    return; // reported by the operation itself
  }
  const std::int64_t wanted = std::int64_t{width} * height;
  const int components = GetFormatComponents(format);
  if (components > 0 && array.size() / components < wanted) {
    throw py::value_error(std::string(operation) + ": " + std::to_string(array.size()) +
                          " values are too few for " + std::to_string(width) + " by " +
                          std::to_string(height) + " pixels");
  }
}

// The surface bound to the active unit; null if there is none.
TDataSurface* BoundTexture(const T& gl) {
  const auto unit = static_cast<unsigned int>(gl.m_ActiveTexture);
  return unit < 8 ? static_cast<TDataSurface*>(gl.m_TexUnits[unit].Sampler.m_Surface) : nullptr;
}

// --- Images

void TexImage2D(TContext& self, unsigned int target, int level, int internalformat, int width,
                int height, int border, unsigned int format, unsigned int type,
                const py::object& pixels) {
  self.CheckTextures("TexImage2D");
  py::array array;
  const void* from = nullptr;
  if (!pixels.is_none()) {
    array = PixelArray(pixels, "TexImage2D");
    CheckElementType(array, type, "TexImage2D");
    CheckPixels(array, width, height, format, "TexImage2D");
    from = array.data();
  }
  self.CheckIdle("TexImage2D");
  if (TDataSurface* const bound = BoundTexture(self.GL)) {
    SaveBlock(bound, true);
  }
  self.Run("TexImage2D", [&] {
    self.GL.TexImage2D(target, level, internalformat, width, height, border, format, type, from);
  });
}

// The form that an array tells by itself.
void TexImageOf(TContext& self, unsigned int target, const py::object& pixels) {
  const py::array array = PixelArray(pixels, "TexImage2D");
  static constexpr unsigned int kFormats[] = {GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};
  const py::ssize_t channels = array.ndim() == 3 ? array.shape(2) : 1;
  if ((array.ndim() != 2 && array.ndim() != 3) || channels < 1 || channels > 4) {
    throw py::type_error(
        "TexImage2D takes pixels of the shape (rows, columns) or (rows, columns, 1 "
        "to 4 channels)");
  }
  const unsigned int type = ElementType(array);
  if (type == 0) {
    throw py::type_error("TexImage2D takes pixels of 8 to 32 bits or of floats, not of " +
                         TextOf(array.dtype()));
  }
  const unsigned int format = kFormats[channels - 1];
  TexImage2D(self, target, 0, static_cast<int>(format), static_cast<int>(array.shape(1)),
             static_cast<int>(array.shape(0)), 0, format, type, pixels);
}

void TexSubImage2D(TContext& self, unsigned int target, int level, int xoffset, int yoffset,
                   int width, int height, unsigned int format, unsigned int type,
                   const py::object& pixels) {
  self.CheckTextures("TexSubImage2D");
  const py::array array = PixelArray(pixels, "TexSubImage2D");
  CheckElementType(array, type, "TexSubImage2D");
  CheckPixels(array, width, height, format, "TexSubImage2D");
  self.Run("TexSubImage2D", [&] {
    self.GL.TexSubImage2D(target, level, xoffset, yoffset, width, height, format, type,
                          array.data());
  });
}

bool MoveTexImage2D(TContext& self, unsigned int target, int level, TSurface& surface) {
  self.CheckTextures("MoveTexImage2D");
  TDataSurface* const given = surface.GetToChange("MoveTexImage2D");
  return self.Run("MoveTexImage2D", [&] { return self.GL.MoveTexImage2D(target, level, given); });
}

void BindImages(TContextClass& c) {
  c.def("TexImage2D", TexImage2D,
        "Makes the bound texture anew from a buffer of pixels in rows from the bottom up, of "
        "`type` (anything else raises `TypeError`); None leaves it zeroed. The pixels are copied. "
        "`internalformat` must equal `format`, `level` and `border` be 0. `GL_INVALID_VALUE` if "
        "not, `GL_INVALID_OPERATION` between `Begin` and `End` or for a format or type without a "
        "mapping.",
        arg("target"), arg("level"), arg("internalformat"), arg("width"), arg("height"),
        arg("border"), arg("format"), arg("type"), arg("pixels").none(true));
  c.def("TexImage2D", TexImageOf,
        "The same from an array of (rows, columns) or (rows, columns, channels), which tells all "
        "the rest: luminance, luminance and alpha, RGB or RGBA.",
        arg("target"), arg("pixels"));
  c.def("TexSubImage2D", TexSubImage2D,
        "Replaces a part of the bound texture by a buffer of pixels; type and format must be those "
        "of the texture. What lies outside it is cut.",
        arg("target"), arg("level"), arg("xoffset"), arg("yoffset"), arg("width"), arg("height"),
        arg("format"), arg("type"), arg("pixels"));
  c.def("MoveTexImage2D", MoveTexImage2D,
        "Exchanges the bound texture's pixels with those of `surface`, copying none; arrays stay "
        "with the pixels they look at. Another target or level raises `TZxMessage`; without a "
        "bound texture `GL_INVALID_OPERATION` and False.",
        arg("target"), arg("level"), arg("surface"));
  Def(c, "CopyTexImage2D", &T::CopyTexImage2D, arg("target"), arg("level"), arg("internalformat"),
      arg("x"), arg("y"), arg("width"), arg("height"), arg("border"));
}

// --- Texture objects

std::vector<unsigned int> GenTextures(TContext& self, int n) {
  self.CheckTextures("GenTextures");
  if (n > 0x1000000) {
    throw py::value_error("GenTextures: that many names are not given out at once");
  }
  std::vector<unsigned int> ids(static_cast<std::size_t>(std::max(n, 0)));
  self.Run("GenTextures", [&] { self.GL.GenTextures(n, ids.data()); });
  return ids;
}

TDataSurface* TextureOf(const T& gl, unsigned int id) {
  return gl.m_Textures != nullptr && id < gl.m_Textures->Surfaces.size()
             ? gl.m_Textures->Surfaces[id]
             : nullptr;
}

void DeleteTextures(TContext& self, const std::vector<unsigned int>& ids) {
  self.CheckTextures("DeleteTextures");
  self.CheckIdle("DeleteTextures");
  for (const unsigned int id : ids) {
    if (TDataSurface* const surface = TextureOf(self.GL, id)) {
      SaveBlock(surface, false);
    }
  }
  self.Run("DeleteTextures",
           [&] { self.GL.DeleteTextures(static_cast<int>(ids.size()), ids.data()); });
}

unsigned int AttachTexture(TContext& self, TSurface& surface) {
  self.CheckTextures("AttachTexture");
  TDataSurface* const given = surface.GetToChange("AttachTexture");
  auto taken = std::make_unique<TDataSurface>();
  const unsigned int id =
      self.Run("AttachTexture", [&] { return self.GL.AttachTexture(taken.get()); });
  if (id != 0) {
    taken.release()->Swap(*given);
  }
  return id;
}

std::shared_ptr<TSurface> DetachTexture(TContext& self, unsigned int id) {
  self.CheckTextures("DetachTexture");
  TDataSurface* const surface =
      self.Run("DetachTexture", [&] { return self.GL.DetachTexture(id); });
  return surface != nullptr ? std::make_shared<TSurface>(std::unique_ptr<TDataSurface>(surface))
                            : nullptr;
}

void BindObjects(TContextClass& c) {
  c.def("GenTextures", GenTextures,
        "Gives out the `n` lowest free names from 1 on, as a list, each with an empty surface.",
        arg("n"));
  c.def("DeleteTextures", DeleteTextures, Doc("TRenderCPU::DeleteTextures"), arg("ids"));
  DefRead(c, "IsTexture", &T::IsTexture, arg("id"));
  Def(c, "BindTexture", &T::BindTexture, arg("target"), arg("id"));
  c.def("AttachTexture", AttachTexture,
        "Hands the pixels of `surface`, which is empty then, to a new texture, copying none; "
        "returns its name, or 0. Arrays stay with the pixels they look at.",
        arg("surface"));
  c.def("DetachTexture", DetachTexture,
        "Takes a texture out of the table, as a surface; None for an unknown name. Samplers that "
        "have it bound go on reading it until the next bind, and until then it can't be given "
        "other pixels.",
        arg("id"));
}

// --- Units

void BindUnits(TContextClass& c) {
  Def(c, "ActiveTexture", &T::ActiveTexture, arg("texture"));
  Def(c, "TexParameteri", &T::TexParameteri, arg("target"), arg("pname"), arg("v"));
  Def(c, "TexParameterf", &T::TexParameterf, arg("target"), arg("pname"), arg("v"));
  c.def(
      "TexParameterfv",
      [](TContext& self, unsigned int target, unsigned int pname, const std::vector<float>& v) {
        const std::size_t wanted = pname == GL_TEXTURE_BORDER_COLOR ? 4 : 1;
        if (v.size() < wanted) {
          throw py::value_error("TexParameterfv reads " + std::to_string(wanted) +
                                " values for this name");
        }
        self.Run("TexParameterfv", [&] { self.GL.TexParameterfv(target, pname, v.data()); });
      },
      Doc("TRenderCPU::TexParameteri"), arg("target"), arg("pname"), arg("v"));
  Def(c, "TexEnvi", &T::TexEnvi, arg("target"), arg("pname"), arg("v"));
  Def(c, "TexEnvf", &T::TexEnvf, arg("target"), arg("pname"), arg("v"));
  Def(c, "TexGeni", &T::TexGeni, arg("coord"), arg("pname"), arg("v"));
  Def(c, "TexGenf", &T::TexGenf, arg("coord"), arg("pname"), arg("v"));
  Def(c, "TexGend", &T::TexGend, arg("coord"), arg("pname"), arg("v"));
  Def(c, "TexFilter2D", &T::TexFilter2D, arg("min"), arg("mag"));
  Def(c, "TexWrap2D", &T::TexWrap2D, arg("s"), arg("t"));
}

// --- Pixel transfer

// The bytes from the caller's pointer on that a transfer touches, as first and one past the last.
struct TExtent {
  std::int64_t First = 0;
  std::int64_t Last = 0;

  // `count` steps of `step` bytes.
  void Add(std::int64_t step, std::int64_t count) {
    (step < 0 ? First : Last) += step * (count - 1);
  }
  void Move(std::int64_t by) {
    First += by;
    Last += by;
  }
};

struct TTransfer {
  std::int64_t Pixel = 0;
  std::int64_t Row = 0;
  std::int64_t Start = 0;
};

// The caller's steps by the pixel store; pixel by pixel the alignment applies.
TTransfer StepsOf(const T::TPixelStore& store, int width) {
  TTransfer steps;
  if (store.Alignment >= 1) {
    steps.Pixel =
        std::int64_t{store.Alignment} * ((3 + std::int64_t{store.Alignment}) / store.Alignment);
    steps.Row = steps.Pixel * (store.RowLength != 0 ? store.RowLength : width);
    steps.Start = steps.Row * store.SkipRows;
    steps.Start += store.SkipPixels != 0 ? store.SkipRows * steps.Pixel : 0;
  }
  return steps;
}

bool IsOutside(std::int64_t x, std::int64_t y, int width, int height, const T& gl) {
  return width < 1 || height < 1 || x + width <= 0 || y + height <= 0 || x >= gl.m_Width ||
         y >= gl.m_Height;
}

void CheckExtent(const TExtent& extent, std::int64_t bytes, const char* operation) {
  if (extent.First < 0 || extent.Last > bytes) {
    throw py::value_error(std::string(operation) + ": the transfer touches bytes " +
                          std::to_string(extent.First) + " to " + std::to_string(extent.Last) +
                          " of a buffer of " + std::to_string(bytes));
  }
}

void DrawPixels(TContext& self, int width, int height, unsigned int format, unsigned int type,
                const py::object& pixels) {
  const T& gl = self.GL;
  const py::array array = PixelArray(pixels, "DrawPixels");
  CheckElementType(array, type, "DrawPixels");
  const std::int64_t x = gl.m_WindowPos.x;
  const std::int64_t y = gl.m_WindowPos.y;
  if (!IsOutside(x, y, width, height, gl)) {
    const TTransfer steps = StepsOf(gl.m_PixelUnpack, width);
    TExtent extent = {0, 4};
    extent.Move(steps.Start + (x < 0 ? -x * steps.Pixel : 0) + (y < 0 ? -y * steps.Row : 0));
    extent.Add(steps.Pixel,
               std::min<std::int64_t>(width + std::min<std::int64_t>(x, 0), gl.m_Width));
    extent.Add(steps.Row,
               std::min<std::int64_t>(height + std::min<std::int64_t>(y, 0), gl.m_Height));
    CheckExtent(extent, array.nbytes(), "DrawPixels");
  }
  self.Draw("DrawPixels", [&] { self.GL.DrawPixels(width, height, format, type, array.data()); });
}

void ReadPixels(TContext& self, int x, int y, int width, int height, unsigned int format,
                unsigned int type, const py::buffer& pixels) {
  const py::buffer_info info = pixels.request(true);
  if (PyBuffer_IsContiguous(info.view(), 'C') == 0 || info.format != "B") {
    throw py::type_error("ReadPixels takes a contiguous buffer of uint8");
  }
  const T& gl = self.GL;
  const TDataSurface* const surface = gl.m_ColorSurface;
  if (!IsOutside(x, y, width, height, gl) && surface != nullptr) {
    const TTransfer steps = StepsOf(gl.m_PixelPack, width);
    TExtent extent = {0, 4};
    extent.Move(steps.Start + (x < 0 ? -std::int64_t{x} * surface->PixelStride : 0) +
                (y < 0 ? -std::int64_t{y} * surface->RowStride : 0));
    extent.Add(surface->PixelStride,
               std::min<std::int64_t>(width + std::min(x, 0), gl.m_Width - std::max(x, 0)));
    extent.Add(surface->RowStride,
               std::min<std::int64_t>(height + std::min(y, 0), gl.m_Height - std::max(y, 0)));
    CheckExtent(extent, info.size, "ReadPixels");
  }
  self.Draw("ReadPixels", [&] { self.GL.ReadPixels(x, y, width, height, format, type, info.ptr); });
}

void BindTransfer(TContextClass& c) {
  const std::string draw =
      std::string(Doc("TRenderCPU::DrawPixels")) +
      "\n\n`pixels` is a buffer; `ValueError` if it is smaller than what the transfer reads.";
  c.def("DrawPixels", DrawPixels, draw.c_str(), arg("width"), arg("height"), arg("format"),
        arg("type"), arg("pixels"));
  const std::string read =
      std::string(Doc("TRenderCPU::ReadPixels")) +
      "\n\n`pixels` is a writable buffer of uint8; `ValueError` if it is smaller than what the "
      "transfer writes. `GetColorSurface().Data` is the simple way.";
  c.def("ReadPixels", ReadPixels, read.c_str(), arg("x"), arg("y"), arg("width"), arg("height"),
        arg("format"), arg("type"), arg("pixels"));
  Def(c, "PixelStorei", &T::PixelStorei, arg("pname"), arg("v"));
  Def(c, "WindowPos2i", &T::WindowPos2i, arg("x"), arg("y"));
  Def(c, "PixelZoom", &T::PixelZoom, arg("x"), arg("y"));
  Def(c, "RasterPos2i", &T::RasterPos2i, arg("x"), arg("y"));
  Def(c, "RasterPos2f", &T::RasterPos2f, arg("x"), arg("y"));
  Def(c, "RasterPos2d", &T::RasterPos2d, arg("x"), arg("y"));
  Def(c, "RasterPos3i", &T::RasterPos3i, arg("x"), arg("y"), arg("z"));
  Def(c, "RasterPos3f", &T::RasterPos3f, arg("x"), arg("y"), arg("z"));
  Def(c, "RasterPos3d", &T::RasterPos3d, arg("x"), arg("y"), arg("z"));
}

} // namespace

void BindTextures(TContextClass& c) {
  BindObjects(c);
  BindUnits(c);
  BindImages(c);
  BindTransfer(c);
}

} // namespace zxpy
