#include <algorithm>
#include <cmath>
#include <set>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

using TTexSampler = TRenderCPU::TTexSampler;

constexpr unsigned int kFilters[2] = {9728, 9729};
constexpr unsigned int kWraps[4] = {10497, 10496, 33069, 33071};
constexpr DATA_TYPE kTypes[3] = {DATA_TYPE(3), DATA_TYPE(10), DATA_TYPE(11)};
constexpr V4 kBorder = {0.2, 0.4, 0.6, 0.8};

/// A surface with gaps between pixels and between rows, so that strides matter, with a row and a
/// pixel more than it says. Every component has a value of its own.
class TImage {
public:
  TImage(int width, int height, DATA_TYPE type, int channels) {
    m_ComponentSize = type == 3 ? 1 : type == 10 ? 4 : 8;
    m_Surface = {};
    m_Surface.Width = width;
    m_Surface.Height = height;
    m_Surface.Depth = 1;
    m_Surface.PixelStride = static_cast<int>(m_ComponentSize) * (channels + 1);
    m_Surface.RowStride = m_Surface.PixelStride * (width + 2);
    m_Surface.Type = type;
    m_Surface.Channels = static_cast<std::uint8_t>(channels);
    const std::size_t size =
        static_cast<std::size_t>(m_Surface.RowStride) * static_cast<std::size_t>(height + 1) +
        static_cast<std::size_t>(m_Surface.PixelStride);
    m_Bytes.assign(size, 0);
    TRandom random(static_cast<std::uint64_t>(width * 100 + height * 10 + channels));
    for (std::size_t at = 0; at + m_ComponentSize <= size; at += m_ComponentSize) {
      if (type == 3) {
        m_Bytes[at] = static_cast<std::uint8_t>(random.Below(256));
      } else if (type == 10) {
        const float v = static_cast<float>(random.Between(-2, 2));
        std::memcpy(&m_Bytes[at], &v, 4);
      } else {
        const double v = random.Between(-2, 2);
        std::memcpy(&m_Bytes[at], &v, 8);
      }
    }
    m_Surface.Data = m_Bytes.data();
    m_Surface.DataSize = size;
  }

  DATASURFACE* Get() { return &m_Surface; }

  double Component(int i, int j, int c) const {
    const std::uint8_t* p = m_Bytes.data() + i * m_Surface.PixelStride + j * m_Surface.RowStride +
                            c * static_cast<int>(m_ComponentSize);
    if (m_Surface.Type == 3) {
      return *p * 0.00392156862745098;
    }
    if (m_Surface.Type == 10) {
      float v;
      std::memcpy(&v, p, 4);
      return static_cast<double>(v);
    }
    double v;
    std::memcpy(&v, p, 8);
    return v;
  }

  V4 Texel(int i, int j) const {
    const double c0 = Component(i, j, 0);
    switch (m_Surface.Channels) {
    case 1:
      return {c0, c0, c0, 1};
    case 2:
      return {c0, c0, c0, Component(i, j, 1)};
    case 3:
      return {c0, Component(i, j, 1), Component(i, j, 2), 1};
    default:
      return {c0, Component(i, j, 1), Component(i, j, 2), Component(i, j, 3)};
    }
  }

  int Width() const { return m_Surface.Width; }
  int Height() const { return m_Surface.Height; }
  int Channels() const { return m_Surface.Channels; }

private:
  std::size_t m_ComponentSize;
  DATASURFACE m_Surface;
  std::vector<std::uint8_t> m_Bytes;
};

/// An index by its wrap mode; false if it lies outside and the border is meant.
bool Wrapped(unsigned int wrap, int n, int* i) {
  if (wrap == GL_REPEAT) {
    *i = *i < 0 ? *i % n + n : *i >= n ? *i % n : *i;
    return true;
  }
  if (wrap == GL_CLAMP_TO_EDGE) {
    *i = std::clamp(*i, 0, n - 1);
    return true;
  }
  return *i >= 0 && *i < n;
}

V4 Nearest(const TImage& image, unsigned int wrapS, unsigned int wrapT, double s, double t) {
  int i = static_cast<int>(s * image.Width()) - (s < 0 ? 1 : 0);
  int j = static_cast<int>(t * image.Height()) - (t < 0 ? 1 : 0);
  if (!Wrapped(wrapS, image.Width(), &i) || !Wrapped(wrapT, image.Height(), &j)) {
    return kBorder;
  }
  return image.Texel(i, j);
}

V4 Linear(const TImage& image, unsigned int wrapS, unsigned int wrapT, double s, double t) {
  const double u = s * image.Width() - 0.5, v = t * image.Height() - 0.5;
  const int x0 = static_cast<int>(u) - (u < 0 ? 1 : 0), y0 = static_cast<int>(v) - (v < 0 ? 1 : 0);
  const double fu = u - x0, fv = v - y0;
  const auto tap = [&](int i, int j) {
    return Wrapped(wrapS, image.Width(), &i) && Wrapped(wrapT, image.Height(), &j)
               ? image.Texel(i, j)
               : kBorder;
  };
  const V4 c00 = tap(x0, y0), c10 = tap(x0 + 1, y0), c01 = tap(x0, y0 + 1),
           c11 = tap(x0 + 1, y0 + 1);
  V4 m;
  for (std::size_t c = 0; c < 4; ++c) {
    const double a = (c10[c] - c00[c]) * fu + c00[c], b = (c11[c] - c01[c]) * fu + c01[c];
    m[c] = (b - a) * fv + a;
  }
  switch (image.Channels()) {
  case 1:
    return {m.x, m.x, m.x, 1};
  case 2:
    return {m.x, m.x, m.x, m.w};
  case 3:
    return {m.x, m.y, m.z, 1};
  default:
    return m;
  }
}

V4 Sampled(TTexSampler& sampler, double s, double t) {
  V4 out = {-9, -9, -9, -9};
  sampler.GetValue(V4{s, t, 55, 66}, &out);
  return out;
}

/// Coordinates in and around 0 to 1, the borders of texels included.
std::vector<double> Coordinates(int size, TRandom& random) {
  std::vector<double> all = {0,
                             -0.0,
                             1,
                             -1,
                             2,
                             -2,
                             0.5,
                             -0.5,
                             1e-300,
                             -1e-300,
                             std::nextafter(1.0, 0.0),
                             std::nextafter(1.0, 2.0)};
  for (int i = -2 * size; i <= 2 * size; ++i) {
    all.push_back(static_cast<double>(i) / size);
    all.push_back((i + 0.5) / size);
    all.push_back((i + 0.25) / size);
  }
  for (int i = 0; i < 20; ++i) {
    all.push_back(random.Between(-3, 3));
  }
  return all;
}

/// Width 4, height 2, one double a pixel: 10 * column + row, with the column past the end 40.
class TFourByTwo {
public:
  TFourByTwo() {
    m_Surface.Create(4, 2, DATA_FORMAT_LUMINANCE, DATA_TYPE_DOUBLE, 1);
    double values[8];
    for (int j = 0; j < 2; ++j) {
      for (int i = 0; i < 4; ++i) {
        values[4 * j + i] = 10 * i + j;
      }
    }
    std::memcpy(m_Surface.Data, values, sizeof(values));
    Sampler.SetSurface(&m_Surface);
  }
  double At(double s, double t = 0) { return Sampled(Sampler, s, t).x; }

  TTexSampler Sampler;

private:
  TDataSurface m_Surface;
};

} // namespace

TEST(TexSampler, Defaults) {
  TTexSampler sampler;
  EXPECT_EQ(nullptr, sampler.m_Surface);
  EXPECT_EQ(nullptr, sampler.GetSurface());
  EXPECT_TRUE(sampler.m_GetValue == &TTexSampler::GetValueBorder);
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, sampler.m_BorderColor));
  EXPECT_EQ(0, sampler.m_SurfaceWidth);
  EXPECT_EQ(0, sampler.m_SurfaceHeight);
  EXPECT_EQ(9728u, sampler.m_FilterMin);
  EXPECT_EQ(9728u, sampler.m_FilterMag);
  EXPECT_EQ(10497u, sampler.m_WrapS);
  EXPECT_EQ(10497u, sampler.m_WrapT);
  THeld<TRenderCPU> r;
  for (const TRenderCPU::TTexUnit& unit : r->m_TexUnits) {
    EXPECT_FALSE(unit.TexEnabled);
    EXPECT_EQ(8448u, unit.TexEnvMode);
    EXPECT_EQ(nullptr, unit.Sampler.m_Surface);
  }
}

TEST(TexSampler, EveryCombinationChoosesItsTableEntryAndNoTwoAreTheSame) {
  ASSERT_EQ(384u, TTexSampler::s_GetValueFuncs.size());
  std::size_t index = 0;
  for (const unsigned int filter : kFilters) {
    for (const unsigned int s : kWraps) {
      for (const unsigned int t : kWraps) {
        for (const DATA_TYPE type : kTypes) {
          for (int channels = 1; channels <= 4; ++channels, ++index) {
            TImage image(2, 2, type, channels);
            TTexSampler sampler;
            EXPECT_TRUE(sampler.SetFilter(filter, filter));
            EXPECT_TRUE(sampler.SetWrap(s, t));
            EXPECT_TRUE(sampler.SetSurface(image.Get()));
            EXPECT_TRUE(sampler.m_GetValue == TTexSampler::s_GetValueFuncs[index]) << index;
            EXPECT_EQ(2, sampler.m_SurfaceWidth);
            EXPECT_EQ(2, sampler.m_SurfaceHeight);
          }
        }
      }
    }
  }
  EXPECT_EQ(384u, index);
  for (std::size_t i = 0; i < 384; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      EXPECT_FALSE(TTexSampler::s_GetValueFuncs[i] == TTexSampler::s_GetValueFuncs[j])
          << i << " " << j;
    }
  }
}

TEST(TexSampler, AllFunctionsToTheLastBit) {
  TRandom random(41);
  const int sizes[3][2] = {{4, 3}, {1, 1}, {5, 2}};
  for (const auto& size : sizes) {
    const std::vector<double> ss = Coordinates(size[0], random), ts = Coordinates(size[1], random);
    for (const DATA_TYPE type : kTypes) {
      for (int channels = 1; channels <= 4; ++channels) {
        TImage image(size[0], size[1], type, channels);
        TTexSampler sampler;
        sampler.SetBorderColor(kBorder);
        sampler.SetSurface(image.Get());
        for (const unsigned int s : kWraps) {
          for (const unsigned int t : kWraps) {
            sampler.SetWrap(s, t);
            for (std::size_t i = 0; i < 2 * (ss.size() + ts.size()); ++i) {
              const double at[2] = {
                  ss[static_cast<std::size_t>(random.Below(static_cast<int>(ss.size())))],
                  ts[i % ts.size()]};
              sampler.SetFilter(GL_NEAREST, GL_NEAREST);
              ASSERT_TRUE(
                  SameVec(Nearest(image, s, t, at[0], at[1]), Sampled(sampler, at[0], at[1])))
                  << s << " " << t << " " << type << " " << channels << " at " << at[0] << ", "
                  << at[1];
              sampler.SetFilter(GL_LINEAR, GL_LINEAR);
              ASSERT_TRUE(
                  SameVec(Linear(image, s, t, at[0], at[1]), Sampled(sampler, at[0], at[1])))
                  << s << " " << t << " " << type << " " << channels << " at " << at[0] << ", "
                  << at[1];
            }
          }
        }
      }
    }
  }
}

TEST(TexSampler, NearestRepeatBelowZero) {
  TFourByTwo f;
  EXPECT_EQ(20, f.At(-0.25)); // trunc(-1) - 1 = -2
  EXPECT_EQ(10, f.At(-0.5));  // trunc(-2) - 1 = -3
  EXPECT_EQ(30, f.At(-0.1));  // trunc(-0.4) - 1 = -1
  EXPECT_EQ(30, f.At(-1e-300)) << "the sign of s decides, though the product truncates to 0";
  EXPECT_EQ(0, f.At(1.0));
  EXPECT_EQ(10, f.At(2.25));
  EXPECT_EQ(0, f.At(-0.0)) << "-0.0 is not below 0";
}

TEST(TexSampler, ANegativeMultipleReadsOnePastTheEnd) {
  TFourByTwo f;
  EXPECT_EQ(1, f.At(-0.75)) << "column 4 of row 0 is column 0 of row 1";
  EXPECT_EQ(0, f.At(-0.75, 0.5)) << "column 4 of row 1 is the slack behind the pixels";
  EXPECT_EQ(0, f.At(0.5, -0.5)) << "row 2, trunc(-1) - 1 = -2: the slack";
  EXPECT_EQ(0, f.At(-0.75, -0.5)) << "column 4 of row 2";
}

TEST(TexSampler, ExactlyOneIsTheColumnPastTheEnd) {
  TFourByTwo f;
  f.Sampler.SetBorderColor(V4{77, 78, 79, 80});
  EXPECT_EQ(0, f.At(1));
  f.Sampler.SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE);
  EXPECT_EQ(30, f.At(1));
  EXPECT_EQ(0, f.At(-5));
  f.Sampler.SetWrap(GL_CLAMP, GL_CLAMP);
  EXPECT_EQ(77, f.At(1));
  f.Sampler.SetWrap(GL_CLAMP_TO_BORDER, GL_CLAMP_TO_BORDER);
  EXPECT_EQ(77, f.At(1));
  EXPECT_EQ(77, f.At(0.5, 1));
}

TEST(TexSampler, ABorderModeGivesTheWholeBorderColourInNearest) {
  TFourByTwo f;
  f.Sampler.SetBorderColor(V4{0.1, 0.2, 0.3, 0.4});
  f.Sampler.SetWrap(GL_CLAMP_TO_BORDER, GL_CLAMP_TO_BORDER);
  EXPECT_TRUE(SameVec(V4{0.1, 0.2, 0.3, 0.4}, Sampled(f.Sampler, 2, 0)));
  f.Sampler.SetFilter(GL_LINEAR, GL_LINEAR);
  EXPECT_TRUE(SameVec(V4{0.1, 0.1, 0.1, 1}, Sampled(f.Sampler, 2, 0))) << "red alone is mixed";
}

TEST(TexSampler, LinearByHand) {
  TDataSurface surface;
  surface.Create(2, 1, DATA_FORMAT_LUMINANCE, DATA_TYPE_DOUBLE, 1);
  const double texels[2] = {3, 7};
  std::memcpy(surface.Data, texels, sizeof(texels));
  TTexSampler sampler;
  sampler.SetSurface(&surface);
  sampler.SetFilter(GL_LINEAR, GL_LINEAR);
  sampler.SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE);
  EXPECT_EQ(5, Sampled(sampler, 0.5, 0.5).x); // u = 0.5: an even mix
  EXPECT_EQ(4, Sampled(sampler, 0.375, 0.5).x);
  sampler.SetWrap(GL_CLAMP, GL_CLAMP_TO_EDGE);
  sampler.SetBorderColor(V4{1, 0, 0, 0});
  EXPECT_EQ(2, Sampled(sampler, 0, 0.5).x) << "u = -0.5: half border, half first texel";
}

TEST(TexSampler, WhatTheTableDoesNotHaveReadsAsTheBorder) {
  for (unsigned int type = 0; type < 18; ++type) {
    for (int channels = 0; channels < 7; ++channels) {
      std::vector<std::uint8_t> bytes(4096, 200);
      DATASURFACE surface = {};
      surface.Width = surface.Height = 2;
      surface.Type = DATA_TYPE(type);
      surface.PixelStride = 128;
      surface.RowStride = 256;
      surface.Channels = static_cast<std::uint8_t>(channels);
      surface.Data = bytes.data();
      surface.DataSize = bytes.size();
      TTexSampler sampler;
      sampler.SetBorderColor(kBorder);
      const bool known = (type == 3 || type == 10 || type == 11) && channels >= 1 && channels <= 4;
      EXPECT_EQ(known, sampler.SetSurface(&surface)) << type << " " << channels;
      EXPECT_EQ(!known, sampler.m_GetValue == &TTexSampler::GetValueBorder);
      if (!known) {
        EXPECT_TRUE(SameVec(kBorder, Sampled(sampler, 0.25, 0.25)));
        EXPECT_FALSE(sampler.UpdateGetValueFunc());
      }
      EXPECT_EQ(&surface, sampler.GetSurface());
      EXPECT_EQ(2, sampler.m_SurfaceWidth);
    }
  }
}

TEST(TexSampler, NoSurfaceIsTheBorderAndNoFailure) {
  TFourByTwo f;
  f.Sampler.SetBorderColor(kBorder);
  EXPECT_TRUE(f.Sampler.SetSurface(nullptr));
  EXPECT_EQ(0, f.Sampler.m_SurfaceWidth);
  EXPECT_EQ(0, f.Sampler.m_SurfaceHeight);
  EXPECT_TRUE(f.Sampler.m_GetValue == &TTexSampler::GetValueBorder);
  EXPECT_TRUE(f.Sampler.UpdateGetValueFunc());
  EXPECT_TRUE(SameVec(kBorder, Sampled(f.Sampler, 0.5, 0.5)));
}

TEST(TexSampler, SetFilterTakesTwoEqualKnownValues) {
  TFourByTwo f;
  const auto nearest = f.Sampler.m_GetValue;
  const unsigned int refused[][2] = {{9728, 9729}, {9729, 9728}, {9727, 9727}, {9730, 9730},
                                     {9984, 9984}, {9987, 9987}, {0, 0},       {9729, 9987}};
  for (const auto& pair : refused) {
    EXPECT_FALSE(f.Sampler.SetFilter(pair[0], pair[1]));
    EXPECT_EQ(9728u, f.Sampler.m_FilterMin);
    EXPECT_EQ(9728u, f.Sampler.m_FilterMag);
    EXPECT_TRUE(f.Sampler.m_GetValue == nearest);
  }
  EXPECT_TRUE(f.Sampler.SetFilter(9728, 9728));
  EXPECT_TRUE(f.Sampler.SetFilter(9729, 9729));
  EXPECT_EQ(9729u, f.Sampler.m_FilterMin);
  EXPECT_EQ(9729u, f.Sampler.m_FilterMag);
  EXPECT_FALSE(f.Sampler.m_GetValue == nearest);
}

TEST(TexSampler, SettersThatRepeatTheStoredValueDoNotChooseAgain) {
  TFourByTwo f;
  f.Sampler.m_GetValue = &TTexSampler::GetValueBorder; // as no choice would make it
  EXPECT_TRUE(f.Sampler.SetFilter(9728, 9728));
  EXPECT_TRUE(f.Sampler.SetWrap(10497, 10497));
  EXPECT_TRUE(f.Sampler.m_GetValue == &TTexSampler::GetValueBorder);
  EXPECT_TRUE(f.Sampler.SetWrap(10497, 10496));
  EXPECT_FALSE(f.Sampler.m_GetValue == &TTexSampler::GetValueBorder);
}

TEST(TexSampler, SetWrapTakesTwoKnownValues) {
  TFourByTwo f;
  for (const unsigned int bad : {0u, 10495u, 10498u, 33068u, 33070u, 33072u, 33648u}) {
    for (const unsigned int good : kWraps) {
      EXPECT_FALSE(f.Sampler.SetWrap(bad, good));
      EXPECT_FALSE(f.Sampler.SetWrap(good, bad));
      EXPECT_EQ(10497u, f.Sampler.m_WrapS);
      EXPECT_EQ(10497u, f.Sampler.m_WrapT);
    }
  }
  EXPECT_TRUE(f.Sampler.SetWrap(33069, 33071));
  EXPECT_EQ(33069u, f.Sampler.m_WrapS);
  EXPECT_EQ(33071u, f.Sampler.m_WrapT);
}

TEST(TexSampler, SettersWithoutASurfaceStoreAndChooseLater) {
  TTexSampler sampler;
  EXPECT_TRUE(sampler.SetFilter(9729, 9729));
  EXPECT_TRUE(sampler.SetWrap(10496, 33071));
  EXPECT_TRUE(sampler.m_GetValue == &TTexSampler::GetValueBorder);
  TImage image(2, 2, DATA_TYPE_FLOAT, 3);
  EXPECT_TRUE(sampler.SetSurface(image.Get()));
  // linear; clamp 1; edge 3; float 1; three components 2
  const std::size_t index = (((1 * 4 + 1) * 4 + 3) * 3 + 1) * 4 + 2;
  EXPECT_TRUE(sampler.m_GetValue == TTexSampler::s_GetValueFuncs[index]);
}

TEST(TexSampler, TheBorderColourIsWidenedOrCopiedAndChoosesNothing) {
  TFourByTwo f;
  const auto before = f.Sampler.m_GetValue;
  const float floats[4] = {0.1f, -2.5f, 3, 4};
  f.Sampler.SetBorderColor(floats);
  EXPECT_TRUE(SameVec(V4{static_cast<double>(0.1f), -2.5, 3, 4}, f.Sampler.m_BorderColor));
  f.Sampler.SetBorderColor(V4{0.1, 0.2, 0.3, 0.4});
  EXPECT_TRUE(SameVec(V4{0.1, 0.2, 0.3, 0.4}, f.Sampler.m_BorderColor));
  EXPECT_TRUE(f.Sampler.m_GetValue == before);
}

namespace {

/// What the sampler was asked for.
V4 s_Asked;

class TAsking : public TTexSampler {
public:
  void Remember(const V4& st, V4* out) {
    s_Asked = st;
    *out = {out->x + 1, 2, 3, 4};
  }
};

} // namespace

TEST(TexSampler, TheShortFormsFillInTheCoordinateAndCutTheResult) {
  TAsking sampler;
  sampler.m_GetValue = static_cast<TTexSampler::TGetValueFunc>(&TAsking::Remember);
  V4 four = {10, 0, 0, 0};
  sampler.GetValue(V4{5, 6, 7, 8}, &four);
  EXPECT_TRUE(SameVec(V4{5, 6, 7, 8}, s_Asked));
  EXPECT_TRUE(SameVec(V4{11, 2, 3, 4}, four)) << "called directly";
  four = {20, 0, 0, 0};
  sampler.GetValue(V2{0.25, 0.5}, &four);
  EXPECT_TRUE(SameVec(V4{0.25, 0.5, 0, 1}, s_Asked));
  EXPECT_TRUE(SameVec(V4{21, 2, 3, 4}, four)) << "straight into the result";
  V3 three = {30, 0, 0};
  sampler.GetValue(V2{0.125, 0.5}, &three);
  EXPECT_TRUE(SameVec(V4{0.125, 0.5, 0, 1}, s_Asked));
  EXPECT_TRUE(SameVec(V3{1, 2, 3}, three)) << "by way of a zeroed result";
  V2 two = {40, 0};
  sampler.GetValue(V2{0.0625, 0.5}, &two);
  EXPECT_TRUE(SameVec(V4{0.0625, 0.5, 0, 1}, s_Asked));
  EXPECT_TRUE(SameVec(V2{1, 2}, two));
  double one = 50;
  sampler.GetValue(V2{0.75, 0.5}, &one);
  EXPECT_TRUE(SameVec(V4{0.75, 0.5, 0, 1}, s_Asked));
  EXPECT_EQ(1, one);
}

TEST(TexSampler, TheOlderFunctionsRoundByAHalf) {
  TRandom random(43);
  TImage bytes(4, 3, DATA_TYPE_UINT8, 4), floats(4, 3, DATA_TYPE_FLOAT, 1);
  TTexSampler b, f;
  b.SetBorderColor(kBorder);
  f.SetBorderColor(kBorder);
  ASSERT_TRUE(b.SetSurface(bytes.Get()));
  ASSERT_TRUE(f.SetSurface(floats.Get()));
  std::vector<double> coordinates = Coordinates(4, random);
  for (const double s : coordinates) {
    for (const double t : {0.0, 0.2, 0.5, 0.9, 1.0, -0.3, 1.2, -1.0}) {
      const double u = s * 4 + 0.5, v = t * 3 + 0.5;
      const int i = static_cast<int>(u) - (u < 0), j = static_cast<int>(v) - (v < 0);
      const bool inside = i >= 0 && i < 4 && j >= 0 && j < 3;
      const int ei = std::clamp(static_cast<int>(u), 0, 3),
                ej = std::clamp(static_cast<int>(v), 0, 2);
      const V4 st = {s, t, 0, 1};
      V4 out;
      b.GetValueClampToBorderNearest4ub2D(st, &out);
      EXPECT_TRUE(SameVec(inside ? bytes.Texel(i, j) : kBorder, out)) << s << " " << t;
      b.GetValueClampToEdgeNearest4ub2D(st, &out);
      EXPECT_TRUE(SameVec(bytes.Texel(ei, ej), out)) << s << " " << t;
      f.GetValueClampToBorderNearest1f2D(st, &out);
      const double in = inside ? floats.Component(i, j, 0) : 0;
      EXPECT_TRUE(SameVec(inside ? V4{in, in, in, in} : kBorder, out)) << s << " " << t;
      f.GetValueClampToEdgeNearest1f2D(st, &out);
      const double edge = floats.Component(ei, ej, 0);
      EXPECT_TRUE(SameVec(V4{edge, edge, edge, edge}, out)) << s << " " << t;
    }
  }
  const std::set<std::uint64_t> distinct = {Bits(bytes.Texel(0, 0).x), Bits(bytes.Texel(1, 0).x),
                                            Bits(bytes.Texel(2, 0).x)};
  EXPECT_EQ(3u, distinct.size());
}

TEST(TexSampler, WildCoordinatesStayInsideTheBlock) {
  for (const unsigned int filter : kFilters) {
    for (const unsigned int wrap : kWraps) {
      TDataSurface surface;
      surface.Create(3, 5, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
      TTexSampler sampler;
      sampler.SetSurface(&surface);
      sampler.SetFilter(filter, filter);
      sampler.SetWrap(wrap, wrap);
      const double inf = HUGE_VAL, wild[] = {inf,
                                             -inf,
                                             inf - inf,
                                             1e300,
                                             -1e300,
                                             7.2e8,
                                             -7.2e8,
                                             4e9,
                                             -4e9,
                                             2147483647.0 / 3,
                                             -2147483648.0 / 3,
                                             -2147483648.0 / 5};
      for (const double s : wild) {
        for (const double t : wild) {
          Sampled(sampler, s, 0.5);
          Sampled(sampler, 0.5, t);
          Sampled(sampler, s, t); // the sanitizers look on
          V4 out;
          sampler.GetValueClampToEdgeNearest4ub2D(V4{s, t, 0, 1}, &out);
          sampler.GetValueClampToBorderNearest4ub2D(V4{s, t, 0, 1}, &out);
        }
      }
    }
  }
}
