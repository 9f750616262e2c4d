// Tested by: tests/render/TexSampler.cpp (TexSampler.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <cstring>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Conversions.h>

namespace Zx3D {

using TTexSampler = TRenderCPU::TTexSampler;
using TVec4 = vec_t_<double, 4>;

namespace {

// --- Indices

// Truncation, less one for a negative value: cheap, and one below the floor for a negative integer.
std::int32_t Fl(double u) {
  const std::int32_t i = TruncI32(u);
  return u < 0.0 ? WrapAdd(i, -1) : i;
}

constexpr bool IsBorderMode(unsigned int wrap) {
  return wrap == GL_CLAMP || wrap == GL_CLAMP_TO_BORDER;
}

// An index by its wrap mode; a border mode leaves it as it is. A negative multiple of n repeats to
// n itself, one past the end.
template <unsigned int Wrap> std::int32_t Wrapped(std::int32_t i, std::int32_t n) {
  if constexpr (Wrap == GL_REPEAT) {
    return i < 0 ? i % n + n : i >= n ? i % n : i;
  } else if constexpr (Wrap == GL_CLAMP_TO_EDGE) {
    return i < 0 ? 0 : i >= n ? n - 1 : i;
  } else {
    return i;
  }
}

template <unsigned int Wrap> bool IsOutside(std::int32_t i, std::int32_t n) {
  return IsBorderMode(Wrap) && (i < 0 || i >= n);
}

// --- Texels

template <DATA_TYPE Type> double Component(const unsigned char* texel, int c) {
  if constexpr (Type == DATA_TYPE_UINT8) {
    return texel[c] * 0.00392156862745098;
  } else if constexpr (Type == DATA_TYPE_FLOAT) {
    float value;
    std::memcpy(&value, texel + 4 * c, sizeof value);
    return value;
  } else {
    double value;
    std::memcpy(&value, texel + 8 * c, sizeof value);
    return value;
  }
}

template <DATA_TYPE Type, int Components>
TVec4 Texel(const DATASURFACE& surface, std::int32_t i, std::int32_t j) {
  const unsigned char* const texel = surface.Data + std::ptrdiff_t{i} * surface.PixelStride +
                                     std::ptrdiff_t{j} * surface.RowStride;
  const double c0 = Component<Type>(texel, 0);
  if constexpr (Components == 1) {
    return {c0, c0, c0, 1.0};
  } else if constexpr (Components == 2) {
    return {c0, c0, c0, Component<Type>(texel, 1)};
  } else if constexpr (Components == 3) {
    return {c0, Component<Type>(texel, 1), Component<Type>(texel, 2), 1.0};
  } else {
    return {c0, Component<Type>(texel, 1), Component<Type>(texel, 2), Component<Type>(texel, 3)};
  }
}

double MixTaps(double c00, double c10, double c01, double c11, double fu, double fv) {
  const double a = (c10 - c00) * fu + c00;
  const double b = (c11 - c01) * fu + c01;
  return (b - a) * fv + a;
}

} // namespace

// --- The templates

void TTexSampler::GetValueBorder(const TVec4&, TVec4* out) { *out = m_BorderColor; }

template <unsigned int WrapS, unsigned int WrapT, DATA_TYPE Type, int Components>
void TTexSampler::GetValueWrapNearest2D(const TVec4& st, TVec4* out) {
  const std::int32_t width = TruncI32(m_SurfaceWidth);
  const std::int32_t height = TruncI32(m_SurfaceHeight);
  std::int32_t i = TruncI32(st.x * m_SurfaceWidth);
  if (st.x < 0.0) { // the sign of the coordinate decides, not that of the product
    i = WrapAdd(i, -1);
  }
  if (IsOutside<WrapS>(i, width)) {
    *out = m_BorderColor;
    return;
  }
  i = Wrapped<WrapS>(i, width);
  std::int32_t j = TruncI32(st.y * m_SurfaceHeight);
  if (st.y < 0.0) {
    j = WrapAdd(j, -1);
  }
  if (IsOutside<WrapT>(j, height)) {
    *out = m_BorderColor;
    return;
  }
  j = Wrapped<WrapT>(j, height);
  *out = Texel<Type, Components>(*m_Surface, i, j);
}

template <unsigned int WrapS, unsigned int WrapT, DATA_TYPE Type, int Components>
void TTexSampler::GetValueWrapLinear2D(const TVec4& st, TVec4* out) {
  const std::int32_t width = TruncI32(m_SurfaceWidth);
  const std::int32_t height = TruncI32(m_SurfaceHeight);
  const double u = st.x * m_SurfaceWidth - 0.5;
  const double v = st.y * m_SurfaceHeight - 0.5;
  const std::int32_t left = Fl(u);
  const std::int32_t bottom = Fl(v);
  const double fu = u - left;
  const double fv = v - bottom;
  const std::int32_t x0 = Wrapped<WrapS>(left, width);
  const std::int32_t x1 = Wrapped<WrapS>(WrapAdd(left, 1), width);
  const std::int32_t y0 = Wrapped<WrapT>(bottom, height);
  const std::int32_t y1 = Wrapped<WrapT>(WrapAdd(bottom, 1), height);

  const auto tap = [this, width, height](std::int32_t i, std::int32_t j) {
    return IsOutside<WrapS>(i, width) || IsOutside<WrapT>(j, height)
               ? m_BorderColor
               : Texel<Type, Components>(*m_Surface, i, j);
  };
  const TVec4 c00 = tap(x0, y0);
  const TVec4 c10 = tap(x1, y0);
  const TVec4 c01 = tap(x0, y1);
  const TVec4 c11 = tap(x1, y1);

  // Only the components that the texture has are mixed, so that a border brings in no others.
  const double red = MixTaps(c00.x, c10.x, c01.x, c11.x, fu, fv);
  if constexpr (Components == 1) {
    *out = {red, red, red, 1.0};
  } else if constexpr (Components == 2) {
    *out = {red, red, red, MixTaps(c00.w, c10.w, c01.w, c11.w, fu, fv)};
  } else {
    const double green = MixTaps(c00.y, c10.y, c01.y, c11.y, fu, fv);
    const double blue = MixTaps(c00.z, c10.z, c01.z, c11.z, fu, fv);
    const double alpha = Components == 3 ? 1.0 : MixTaps(c00.w, c10.w, c01.w, c11.w, fu, fv);
    *out = {red, green, blue, alpha};
  }
}

// --- The table

#define ZX_COMPONENTS(GET, S, T, TYPE)                                                             \
  &TTexSampler::GET<S, T, TYPE, 1>, &TTexSampler::GET<S, T, TYPE, 2>,                              \
      &TTexSampler::GET<S, T, TYPE, 3>, &TTexSampler::GET<S, T, TYPE, 4>
#define ZX_TYPES(GET, S, T)                                                                        \
  ZX_COMPONENTS(GET, S, T, DATA_TYPE_UINT8), ZX_COMPONENTS(GET, S, T, DATA_TYPE_FLOAT),            \
      ZX_COMPONENTS(GET, S, T, DATA_TYPE_DOUBLE)
#define ZX_WRAPS_T(GET, S)                                                                         \
  ZX_TYPES(GET, S, GL_REPEAT), ZX_TYPES(GET, S, GL_CLAMP), ZX_TYPES(GET, S, GL_CLAMP_TO_BORDER),   \
      ZX_TYPES(GET, S, GL_CLAMP_TO_EDGE)
#define ZX_WRAPS_S(GET)                                                                            \
  ZX_WRAPS_T(GET, GL_REPEAT), ZX_WRAPS_T(GET, GL_CLAMP), ZX_WRAPS_T(GET, GL_CLAMP_TO_BORDER),      \
      ZX_WRAPS_T(GET, GL_CLAMP_TO_EDGE)

constinit const std::array<TTexSampler::TGetValueFunc, 384> TTexSampler::s_GetValueFuncs = {
    ZX_WRAPS_S(GetValueWrapNearest2D),
    ZX_WRAPS_S(GetValueWrapLinear2D),
};

#undef ZX_WRAPS_S
#undef ZX_WRAPS_T
#undef ZX_TYPES
#undef ZX_COMPONENTS

// --- Choosing

namespace {

// The place of a value in a list of the table's indices; -1 if it isn't there.
template <std::size_t N> int IndexIn(const std::uint32_t (&list)[N], std::uint32_t value) {
  for (std::size_t i = 0; i < N; ++i) {
    if (list[i] == value) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

constexpr std::uint32_t kFilters[] = {GL_NEAREST, GL_LINEAR};
constexpr std::uint32_t kWraps[] = {GL_REPEAT, GL_CLAMP, GL_CLAMP_TO_BORDER, GL_CLAMP_TO_EDGE};
constexpr std::uint32_t kTypes[] = {DATA_TYPE_UINT8, DATA_TYPE_FLOAT, DATA_TYPE_DOUBLE};

} // namespace

bool TTexSampler::UpdateGetValueFunc() {
  m_GetValue = &TTexSampler::GetValueBorder;
  if (m_Surface == nullptr) {
    return true;
  }
  const int filter = IndexIn(kFilters, m_FilterMin);
  const int wrapS = IndexIn(kWraps, m_WrapS);
  const int wrapT = IndexIn(kWraps, m_WrapT);
  const int type = IndexIn(kTypes, m_Surface->Type);
  const int components = m_Surface->Channels;
  if (filter < 0 || wrapS < 0 || wrapT < 0 || type < 0 || components < 1 || components > 4 ||
      m_Surface->Data == nullptr || m_Surface->Width < 1 || m_Surface->Height < 1) {
    return false;
  }
  const int index = (((filter * 4 + wrapS) * 4 + wrapT) * 3 + type) * 4 + components - 1;
  m_GetValue = s_GetValueFuncs[static_cast<std::size_t>(index)];
  return true;
}

bool TTexSampler::SetSurface(DATASURFACE* surface) {
  m_Surface = surface;
  m_SurfaceWidth = surface != nullptr ? surface->Width : 0;
  m_SurfaceHeight = surface != nullptr ? surface->Height : 0;
  return UpdateGetValueFunc();
}

bool TTexSampler::SetFilter(unsigned int min, unsigned int mag) {
  if (min != mag || IndexIn(kFilters, min) < 0) {
    return false;
  }
  if (m_FilterMin != min) {
    m_FilterMin = min;
    m_FilterMag = mag;
    if (m_Surface != nullptr) {
      UpdateGetValueFunc();
    }
  }
  return true;
}

bool TTexSampler::SetWrap(unsigned int s, unsigned int t) {
  if (IndexIn(kWraps, s) < 0 || IndexIn(kWraps, t) < 0) {
    return false;
  }
  if (m_WrapS != s || m_WrapT != t) {
    m_WrapS = s;
    m_WrapT = t;
    if (m_Surface != nullptr) {
      UpdateGetValueFunc();
    }
  }
  return true;
}

void TTexSampler::SetBorderColor(const float* color) {
  m_BorderColor = {color[0], color[1], color[2], color[3]};
}

// --- Forms with fewer components

void TTexSampler::GetValue(const vec_t_<double, 2>& st, TVec4* out) {
  GetValue(TVec4{st.x, st.y, 0.0, 1.0}, out);
}

void TTexSampler::GetValue(const vec_t_<double, 2>& st, vec_t_<double, 3>* out) {
  TVec4 value = {0, 0, 0, 0};
  GetValue(st, &value);
  *out = {value.x, value.y, value.z};
}

void TTexSampler::GetValue(const vec_t_<double, 2>& st, vec_t_<double, 2>* out) {
  TVec4 value = {0, 0, 0, 0};
  GetValue(st, &value);
  *out = {value.x, value.y};
}

void TTexSampler::GetValue(const vec_t_<double, 2>& st, double* out) {
  TVec4 value = {0, 0, 0, 0};
  GetValue(st, &value);
  *out = value.x;
}

// --- The older nearest path

namespace {

// Reads four bytes, or one float into all components.
template <bool IsFloat> TVec4 OldTexel(const DATASURFACE& surface, std::int32_t i, std::int32_t j) {
  if constexpr (IsFloat) {
    const double value = Texel<DATA_TYPE_FLOAT, 1>(surface, i, j).x;
    return {value, value, value, value};
  } else {
    return Texel<DATA_TYPE_UINT8, 4>(surface, i, j);
  }
}

// Whether the surface's own fields hold a pixel of that size.
bool HasOldTexels(const DATASURFACE* surface) {
  return surface != nullptr && surface->Data != nullptr && surface->PixelStride >= 4;
}

template <bool IsFloat>
void OldClampToBorder(const TTexSampler& sampler, const TVec4& st, TVec4* out) {
  *out = sampler.m_BorderColor;
  if (!HasOldTexels(sampler.m_Surface)) {
    return;
  }
  const DATASURFACE& surface = *sampler.m_Surface;
  const std::int32_t i = Fl(st.x * surface.Width + 0.5);
  const std::int32_t j = Fl(st.y * surface.Height + 0.5);
  if (i >= 0 && i < surface.Width && j >= 0 && j < surface.Height) {
    *out = OldTexel<IsFloat>(surface, i, j);
  }
}

std::int32_t OldClamped(double coordinate, double size) {
  const std::int32_t i = TruncI32(coordinate * size + 0.5);
  return i < 0 ? 0 : i >= size ? TruncI32(size - 1.0) : i;
}

template <bool IsFloat>
void OldClampToEdge(const TTexSampler& sampler, const TVec4& st, TVec4* out) {
  if (!HasOldTexels(sampler.m_Surface) || !(sampler.m_SurfaceWidth >= 1.0) ||
      !(sampler.m_SurfaceHeight >= 1.0)) {
    *out = sampler.m_BorderColor;
    return;
  }
  *out = OldTexel<IsFloat>(*sampler.m_Surface, OldClamped(st.x, sampler.m_SurfaceWidth),
                           OldClamped(st.y, sampler.m_SurfaceHeight));
}

} // namespace

void TTexSampler::GetValueClampToBorderNearest4ub2D(const TVec4& st, TVec4* out) {
  OldClampToBorder<false>(*this, st, out);
}

void TTexSampler::GetValueClampToEdgeNearest4ub2D(const TVec4& st, TVec4* out) {
  OldClampToEdge<false>(*this, st, out);
}

void TTexSampler::GetValueClampToBorderNearest1f2D(const TVec4& st, TVec4* out) {
  OldClampToBorder<true>(*this, st, out);
}

void TTexSampler::GetValueClampToEdgeNearest1f2D(const TVec4& st, TVec4* out) {
  OldClampToEdge<true>(*this, st, out);
}

} // namespace Zx3D
