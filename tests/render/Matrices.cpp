#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

/// Sees every change of the current matrix.
class TMatrixSpy : public TRenderCPU {
public:
  using TRenderCPU::LoadMatrix;
  using TRenderCPU::MultMatrix;

  void LoadMatrix(const MAT4<double>& m) override {
    Loaded.push_back(m);
    TRenderCPU::LoadMatrix(m);
  }
  void MultMatrix(const MAT4<double>& m) override {
    Multiplied.push_back(m);
    TRenderCPU::MultMatrix(m);
  }

  std::vector<MAT4<double>> Loaded;
  std::vector<MAT4<double>> Multiplied;
};

/// The matrix product a * b of column-stored matrices, summed over the inner index upwards.
M4 Product(const M4& a, const M4& b) {
  M4 product;
  for (std::size_t column = 0; column < 4; ++column) {
    for (std::size_t row = 0; row < 4; ++row) {
      double sum = b[4 * column] * a[row];
      for (std::size_t k = 1; k < 4; ++k) {
        sum += b[4 * column + k] * a[4 * k + row];
      }
      product[4 * column + row] = sum;
    }
  }
  return product;
}

M4 Numbered(double first) {
  M4 m;
  for (std::size_t i = 0; i < 16; ++i) {
    m[i] = first + static_cast<double>(i);
  }
  return m;
}

/// By the quaternion of the rotation.
M4 Rotation(double angle, double x, double y, double z) {
  double q[4] = {0, 0, 0, 1};
  const double s = x * x + y * y + z * z;
  if (s != 0) {
    const double h = angle * 3.141592653589793 / 180.0 * 0.5;
    const double f = std::sin(h) / std::sqrt(s);
    q[0] = x * f;
    q[1] = y * f;
    q[2] = z * f;
    q[3] = std::cos(h);
  }
  const double len = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  if (len == 0) {
    return kIdentity;
  }
  const double k = 2.0 / len;
  const double qx = q[0], qy = q[1], qz = q[2], w = q[3];
  return {{1 - (k * qy * qy + k * qz * qz), k * qx * qy + k * qz * w, k * qx * qz - k * qy * w, 0,
           k * qx * qy - k * qz * w, 1 - (k * qx * qx + k * qz * qz), k * qy * qz + k * qx * w, 0,
           k * qx * qz + k * qy * w, k * qy * qz - k * qx * w, 1 - (k * qx * qx + k * qy * qy), 0,
           0, 0, 0, 1}};
}

constexpr unsigned int kNoMatrixModes[] = {0, 0x16FF, 0x1703, 0x1800, 0xFFFFFFFF};

} // namespace

TEST(Matrices, StartAsIdentitiesWithEmptyStacks) {
  THeld<TRenderCPU> r;
  EXPECT_EQ(0x1700u, r->m_MatrixMode);
  EXPECT_TRUE(SameMatrix(kIdentity, r->m_ModelView));
  EXPECT_TRUE(SameMatrix(kIdentity, r->m_Projection));
  EXPECT_TRUE(SameMatrix(kIdentity, r->m_ModelViewProjection));
  EXPECT_TRUE(r->m_ModelViewStack.empty());
  EXPECT_TRUE(r->m_ProjectionStack.empty());
  for (const TRenderCPU::TTexUnit& unit : r->m_TexUnits) {
    EXPECT_TRUE(SameMatrix(kIdentity, unit.TexMatrix));
    EXPECT_TRUE(unit.TexMatrixStack.empty());
  }
}

TEST(Matrices, TheExportedIdentitiesHoldTheIdentity) {
  for (std::size_t i = 0; i < 16; ++i) {
    EXPECT_EQ(i % 5 == 0 ? 1.0 : 0.0, g_M4Ed[i]);
    EXPECT_EQ(i % 5 == 0 ? 1.0f : 0.0f, g_M4Ef[i]);
  }
}

TEST(Matrices, TheProductOfArraysIsRowByColumnSummedLeftToRight) {
  TRandom random(5);
  for (int round = 0; round < 50; ++round) {
    const M4 a = random.Matrix(-3, 3);
    const M4 b = random.Matrix(-3, 3);
    M4 out;
    Mat4_Mul_Mat4<double>(a.m, b.m, out.m);
    for (std::size_t i = 0; i < 4; ++i) {
      for (std::size_t j = 0; j < 4; ++j) {
        const double sum = ((a[4 * i] * b[j] + a[4 * i + 1] * b[4 + j]) + a[4 * i + 2] * b[8 + j]) +
                           a[4 * i + 3] * b[12 + j];
        EXPECT_SAME_BITS(sum, out[4 * i + j]);
      }
    }
  }
}

TEST(Matrices, AnOrderThatShowsIsKeptInTheProduct) {
  M4 a{}, b{};
  a[0] = 1e16, a[1] = 1, a[2] = -1e16, a[3] = 0.5;
  b[0] = b[4] = b[8] = b[12] = 1;
  M4 out;
  Mat4_Mul_Mat4<double>(a.m, b.m, out.m);
  EXPECT_EQ(0.5, out[0]); // (1e16 + 1) is 1e16 again
}

TEST(Matrices, TheModeIsStoredUncheckedAndSurfacesAtTheNextMatrixOperation) {
  const float ones[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  const double doubles[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  const MAT4<float> mf = {{2}};
  const M4 md = {{2}};
  const std::vector<std::function<void(TRenderCPU&)>> operations = {
      [](TRenderCPU& r) { r.PushMatrix(); },
      [](TRenderCPU& r) { r.PopMatrix(); },
      [](TRenderCPU& r) { r.LoadIdentity(); },
      [&](TRenderCPU& r) { r.LoadMatrixf(ones); },
      [&](TRenderCPU& r) { r.LoadMatrixd(doubles); },
      [&](TRenderCPU& r) { r.LoadMatrix(mf); },
      [&](TRenderCPU& r) { r.LoadMatrix(md); },
      [&](TRenderCPU& r) { r.MultMatrixf(ones); },
      [&](TRenderCPU& r) { r.MultMatrixd(doubles); },
      [&](TRenderCPU& r) { r.MultMatrix(mf); },
      [&](TRenderCPU& r) { r.MultMatrix(md); },
      [](TRenderCPU& r) { r.Frustum(-1, 1, -1, 1, 1, 2); },
      [](TRenderCPU& r) { r.Ortho(-1, 1, -1, 1, 1, 2); },
      [](TRenderCPU& r) { r.Rotatef(30, 1, 0, 0); },
      [](TRenderCPU& r) { r.Rotated(30, 1, 0, 0); },
      [](TRenderCPU& r) { r.Scalef(2, 2, 2); },
      [](TRenderCPU& r) { r.Scaled(2, 2, 2); },
      [](TRenderCPU& r) { r.Translatef(1, 2, 3); },
      [](TRenderCPU& r) { r.Translated(1, 2, 3); }};
  for (const unsigned int mode : kNoMatrixModes) {
    THeld<TRenderCPU> r;
    const M4 view = Numbered(1), projection = Numbered(40), texture = Numbered(80);
    r->LoadMatrix(view);
    r->PushMatrix();
    r->MatrixMode(GL_PROJECTION);
    r->LoadMatrix(projection);
    r->PushMatrix();
    r->MatrixMode(GL_TEXTURE);
    r->LoadMatrix(texture);
    r->PushMatrix();
    r->MatrixMode(mode);
    EXPECT_EQ(mode, r->m_MatrixMode);
    EXPECT_EQ(0u, r->GetError());
    const M4 product = r->m_ModelViewProjection;
    for (std::size_t i = 0; i < operations.size(); ++i) {
      operations[i](*r);
      EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError())
          << "operation " << i << " in mode " << mode;
      EXPECT_TRUE(SameMatrix(view, r->m_ModelView));
      EXPECT_TRUE(SameMatrix(projection, r->m_Projection));
      EXPECT_TRUE(SameMatrix(texture, r->m_TexUnits[0].TexMatrix));
      EXPECT_TRUE(SameMatrix(product, r->m_ModelViewProjection));
      EXPECT_EQ(1u, r->m_ModelViewStack.size());
      EXPECT_EQ(1u, r->m_ProjectionStack.size());
      EXPECT_EQ(1u, r->m_TexUnits[0].TexMatrixStack.size());
    }
  }
}

TEST(Matrices, TheModeSelectsWhatIsLoaded) {
  THeld<TRenderCPU> r;
  r->LoadMatrix(Numbered(1));
  r->MatrixMode(GL_PROJECTION);
  r->LoadMatrixd(Numbered(20).m);
  r->MatrixMode(GL_TEXTURE);
  r->LoadMatrix(Numbered(40));
  EXPECT_TRUE(SameMatrix(Numbered(1), r->m_ModelView));
  EXPECT_TRUE(SameMatrix(Numbered(20), r->m_Projection));
  EXPECT_TRUE(SameMatrix(Numbered(40), r->m_TexUnits[0].TexMatrix));
  EXPECT_EQ(0u, r->GetError());
}

TEST(Matrices, FloatsAreWidenedExactlyAndReadBackSo) {
  THeld<TRenderCPU> r;
  MAT4<float> m;
  for (std::size_t i = 0; i < 16; ++i) {
    m[i] = 0.1f * static_cast<float>(i + 1);
  }
  const auto check = [&](const double* actual) {
    for (std::size_t i = 0; i < 16; ++i) {
      EXPECT_SAME_BITS(static_cast<double>(m[i]), actual[i]);
    }
  };
  r->LoadMatrixf(m.m);
  double out[16];
  r->GetDoublev(GL_MODELVIEW_MATRIX, out);
  check(out);
  r->LoadIdentity();
  r->LoadMatrix(m);
  check(r->m_ModelView.m);

  r->LoadIdentity();
  r->MultMatrixf(m.m); // sums with products by 0 are exact
  check(r->m_ModelView.m);
  r->LoadIdentity();
  r->MultMatrix(m);
  check(r->m_ModelView.m);
}

TEST(Matrices, MultMatrixIsTheCurrentMatrixTimesTheNewOne) {
  TRandom random(7);
  const unsigned int modes[] = {GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE};
  for (const unsigned int mode : modes) {
    THeld<TRenderCPU> r;
    r->MatrixMode(mode);
    M4& target = mode == GL_MODELVIEW    ? r->m_ModelView
                 : mode == GL_PROJECTION ? r->m_Projection
                                         : r->m_TexUnits[0].TexMatrix;
    M4 expected = random.Matrix(-2, 2);
    r->LoadMatrix(expected);
    for (int i = 0; i < 5; ++i) {
      const M4 m = random.Matrix(-2, 2);
      expected = Product(expected, m);
      if (i % 2 == 0) {
        r->MultMatrix(m);
      } else {
        r->MultMatrixd(m.m);
      }
      EXPECT_TRUE(SameMatrix(expected, target)) << "mode " << mode;
    }
  }
}

TEST(Matrices, TheCachedProductFollowsEachChangeOfItsFactors) {
  TRandom random(9);
  THeld<TRenderCPU> r;
  const auto check = [&] {
    EXPECT_TRUE(SameMatrix(Product(r->m_Projection, r->m_ModelView), r->m_ModelViewProjection));
  };
  r->LoadMatrix(random.Matrix(-2, 2));
  check();
  r->MatrixMode(GL_PROJECTION);
  r->LoadMatrix(random.Matrix(-2, 2));
  check();
  r->PushMatrix();
  r->MultMatrix(random.Matrix(-2, 2));
  check();
  r->PopMatrix();
  check();
  r->MatrixMode(GL_MODELVIEW);
  r->PushMatrix();
  r->MultMatrix(random.Matrix(-2, 2));
  check();
  r->PopMatrix();
  check();
}

TEST(Matrices, PushesAndTextureMatricesLeaveTheCachedProductAlone) {
  THeld<TRenderCPU> r;
  const M4 mark = Numbered(100);
  r->m_ModelViewProjection = mark; // as no refresh would make it
  r->PushMatrix();
  r->MatrixMode(GL_PROJECTION);
  r->PushMatrix();
  r->MatrixMode(GL_TEXTURE);
  r->PushMatrix();
  r->LoadMatrix(Numbered(3));
  r->MultMatrix(Numbered(4));
  r->PopMatrix();
  EXPECT_TRUE(SameMatrix(mark, r->m_ModelViewProjection));
}

TEST(Matrices, APopAfterATranslationRestoresMatrixAndProduct) {
  THeld<TRenderCPU> r;
  r->MatrixMode(GL_PROJECTION);
  r->Ortho(-2, 3, -4, 5, -6, 7);
  r->MatrixMode(GL_MODELVIEW);
  r->Rotated(30, 1, 2, 3);
  const M4 view = r->m_ModelView, product = r->m_ModelViewProjection;
  r->PushMatrix();
  r->Translated(1, 0, 0);
  EXPECT_FALSE(SameMatrix(product, r->m_ModelViewProjection));
  r->PopMatrix();
  EXPECT_TRUE(SameMatrix(view, r->m_ModelView));
  EXPECT_TRUE(SameMatrix(product, r->m_ModelViewProjection));
  EXPECT_TRUE(SameMatrix(Product(r->m_Projection, r->m_ModelView), r->m_ModelViewProjection));
}

TEST(Matrices, AHundredThousandPushesComeBackInTurn) {
  const unsigned int modes[] = {GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE};
  for (const unsigned int mode : modes) {
    THeld<TRenderCPU> r;
    r->MatrixMode(mode);
    M4& target = mode == GL_MODELVIEW    ? r->m_ModelView
                 : mode == GL_PROJECTION ? r->m_Projection
                                         : r->m_TexUnits[0].TexMatrix;
    for (int i = 0; i < 100000; ++i) {
      r->LoadMatrix(Numbered(i));
      r->PushMatrix();
    }
    EXPECT_TRUE(SameMatrix(Numbered(99999), target)) << "a push copies and changes nothing";
    r->LoadMatrix(Numbered(-50));
    for (int i = 99999; i >= 0; --i) {
      r->PopMatrix();
      ASSERT_EQ(static_cast<double>(i), target[0]);
      ASSERT_EQ(i + 15.0, target[15]);
    }
    EXPECT_EQ(0u, r->GetError());
  }
}

TEST(Matrices, APopOfAnEmptyStackDoesNothing) {
  const unsigned int modes[] = {GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE};
  for (const unsigned int mode : modes) {
    THeld<TRenderCPU> r;
    r->MatrixMode(mode);
    r->LoadMatrix(Numbered(2));
    r->PopMatrix();
    EXPECT_EQ(0u, r->GetError()) << "underflow is not reported";
    EXPECT_TRUE(SameMatrix(mode == GL_MODELVIEW ? Numbered(2) : kIdentity, r->m_ModelView));
    EXPECT_TRUE(SameMatrix(mode == GL_PROJECTION ? Numbered(2) : kIdentity, r->m_Projection));
    EXPECT_TRUE(
        SameMatrix(mode == GL_TEXTURE ? Numbered(2) : kIdentity, r->m_TexUnits[0].TexMatrix));
  }
}

TEST(Matrices, TheActiveUnitIsTheOneWhoseTextureMatrixChanges) {
  THeld<TRenderCPU> r;
  r->MatrixMode(GL_TEXTURE);
  for (unsigned int unit = 0; unit < 8; ++unit) {
    r->ActiveTexture(GL_TEXTURE0 + unit);
    r->LoadMatrix(Numbered(unit * 16));
    for (unsigned int i = 0; i <= unit; ++i) {
      r->PushMatrix();
    }
  }
  for (unsigned int unit = 0; unit < 8; ++unit) {
    EXPECT_TRUE(SameMatrix(Numbered(unit * 16), r->m_TexUnits[unit].TexMatrix));
    EXPECT_EQ(unit + 1, r->m_TexUnits[unit].TexMatrixStack.size());
  }
  EXPECT_TRUE(SameMatrix(kIdentity, r->m_ModelView));
  EXPECT_TRUE(SameMatrix(kIdentity, r->m_ModelViewProjection));
}

TEST(Matrices, AUnitThatDoesNotExistHasNoMatrix) {
  for (const unsigned int texture : {GL_TEXTURE0 - 1u, GL_TEXTURE0 + 8u, 0u, 0xFFFFFFFFu}) {
    THeld<TRenderCPU> r;
    r->MatrixMode(GL_TEXTURE);
    r->ActiveTexture(texture);
    EXPECT_EQ(static_cast<std::int32_t>(texture - 33984u), r->m_ActiveTexture);
    r->LoadMatrix(Numbered(3));
    r->MultMatrix(Numbered(3));
    r->PushMatrix();
    r->PopMatrix();
    for (const TRenderCPU::TTexUnit& unit : r->m_TexUnits) {
      EXPECT_TRUE(SameMatrix(kIdentity, unit.TexMatrix));
      EXPECT_TRUE(unit.TexMatrixStack.empty());
    }
    EXPECT_TRUE(SameMatrix(kIdentity, r->m_ModelView));
    EXPECT_TRUE(SameMatrix(kIdentity, r->m_Projection));
  }
}

TEST(Matrices, EveryConvenienceGoesThroughTheTwoVirtualOperations) {
  THeld<TMatrixSpy> r;
  const M4 d = Numbered(1);
  MAT4<float> f;
  for (std::size_t i = 0; i < 16; ++i) {
    f[i] = static_cast<float>(i);
  }
  r->LoadIdentity();
  r->LoadMatrixd(d.m);
  r->LoadMatrixf(f.m);
  r->LoadMatrix(f);
  ASSERT_EQ(4u, r->Loaded.size());
  EXPECT_TRUE(SameMatrix(kIdentity, r->Loaded[0]));
  EXPECT_TRUE(SameMatrix(d, r->Loaded[1]));
  EXPECT_TRUE(SameMatrix(Numbered(0), r->Loaded[2]));
  EXPECT_TRUE(SameMatrix(Numbered(0), r->Loaded[3]));
  EXPECT_TRUE(r->Multiplied.empty());

  r->MultMatrixd(d.m);
  r->MultMatrixf(f.m);
  r->MultMatrix(f);
  ASSERT_EQ(3u, r->Multiplied.size());
  EXPECT_TRUE(SameMatrix(d, r->Multiplied[0]));
  EXPECT_TRUE(SameMatrix(Numbered(0), r->Multiplied[1]));
  EXPECT_TRUE(SameMatrix(Numbered(0), r->Multiplied[2]));
  EXPECT_EQ(4u, r->Loaded.size());
}

TEST(Matrices, FrustumElements) {
  THeld<TMatrixSpy> r;
  const double l = -0.3, right = 0.7, b = -0.9, t = 0.4, n = 0.1, f = 123.4;
  r->Frustum(l, right, b, t, n, f);
  M4 expected{};
  expected[0] = (n + n) / (right - l);
  expected[5] = (n + n) / (t - b);
  expected[8] = (l + right) / (right - l);
  expected[9] = (b + t) / (t - b);
  expected[10] = -(n + f) / (f - n);
  expected[11] = -1;
  expected[14] = f * (-2) * n / (f - n);
  ASSERT_EQ(1u, r->Multiplied.size());
  EXPECT_TRUE(SameMatrix(expected, r->Multiplied[0]));

  r->Frustum(-1, 1, -2, 2, 1, 3); // by hand
  const M4 plain = {{1, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0}};
  EXPECT_TRUE(SameMatrix(plain, r->Multiplied[1]));
}

TEST(Matrices, OrthoElements) {
  THeld<TMatrixSpy> r;
  const double l = -0.3, right = 0.7, b = -0.9, t = 0.4, n = 0.1, f = 123.4;
  r->Ortho(l, right, b, t, n, f);
  const double p = 1 / (right - l), q = 1 / (t - b), s = 1 / (n - f);
  M4 expected{};
  expected[0] = p + p;
  expected[5] = q + q;
  expected[10] = s + s;
  expected[12] = -((l + right) * p);
  expected[13] = -((b + t) * q);
  expected[14] = (n + f) * s;
  expected[15] = 1;
  ASSERT_EQ(1u, r->Multiplied.size());
  EXPECT_TRUE(SameMatrix(expected, r->Multiplied[0]));

  r->Ortho(0, 4, 0, 8, -1, 1); // by hand
  const M4 plain = {{0.5, 0, 0, 0, 0, 0.25, 0, 0, 0, 0, -1, 0, -1, -1, -0.0, 1}};
  EXPECT_TRUE(SameMatrix(plain, r->Multiplied[1]));
}

TEST(Matrices, DegenerateProjectionsGiveInfinitiesAndNoError) {
  THeld<TMatrixSpy> r;
  r->Ortho(1, 1, 0, 1, 0, 1);
  r->Ortho(0, 1, 2, 2, 3, 3);
  r->Frustum(1, 1, 0, 1, 1, 2);
  r->Frustum(0, 1, 0, 1, 2, 2);
  ASSERT_EQ(4u, r->Multiplied.size());
  EXPECT_EQ(std::numeric_limits<double>::infinity(), r->Multiplied[0][0]);
  EXPECT_EQ(std::numeric_limits<double>::infinity(), r->Multiplied[1][5]);
  EXPECT_EQ(std::numeric_limits<double>::infinity(), r->Multiplied[1][10]);
  EXPECT_EQ(std::numeric_limits<double>::infinity(), r->Multiplied[2][0]);
  EXPECT_EQ(-std::numeric_limits<double>::infinity(), r->Multiplied[3][10]);
  EXPECT_EQ(0u, r->GetError());
}

TEST(Matrices, RotationByItsQuaternion) {
  THeld<TMatrixSpy> r;
  TRandom random(11);
  for (std::size_t i = 0; i < 200; ++i) {
    const double angle = random.Between(-720, 720);
    const double x = random.Between(-5, 5), y = random.Between(-5, 5), z = random.Between(-5, 5);
    r->Rotated(angle, x, y, z);
    EXPECT_TRUE(SameMatrix(Rotation(angle, x, y, z), r->Multiplied.back()));

    // The axis-angle formula of the textbooks, within rounding.
    const double len = std::sqrt(x * x + y * y + z * z), a = angle * std::acos(-1.0) / 180;
    const double c = std::cos(a), s = std::sin(a), ux = x / len, uy = y / len, uz = z / len;
    EXPECT_NEAR(ux * uy * (1 - c) + uz * s, r->Multiplied.back()[1], 1e-14);
    EXPECT_NEAR(uz * uz * (1 - c) + c, r->Multiplied.back()[10], 1e-14);
    EXPECT_NEAR(ux * uz * (1 - c) + uy * s, r->Multiplied.back()[8], 1e-14);
  }
}

TEST(Matrices, AFullTurnIsByTheAngleAsItIs) {
  THeld<TMatrixSpy> r;
  r->Rotated(-90, 0, 0, 1); // the sign is kept: x goes to -y
  EXPECT_NEAR(-1, r->Multiplied.back()[1], 1e-15);
  r->Rotated(90, 0, 0, 1);
  EXPECT_NEAR(1, r->Multiplied.back()[1], 1e-15);
}

TEST(Matrices, ARotationAboutNothingMultipliesByTheIdentity) {
  THeld<TMatrixSpy> r;
  r->Rotated(90, 0, 0, 0);
  r->Rotatef(90, 0, 0, 0);
  r->Rotated(90, 1e-200, 0, 0); // whose square is 0
  ASSERT_EQ(3u, r->Multiplied.size()) << "also for the identity";
  for (const M4& m : r->Multiplied) {
    EXPECT_TRUE(SameMatrix(kIdentity, m));
  }
  EXPECT_EQ(0u, r->GetError());
}

TEST(Matrices, TheAxisIsNormalised) {
  THeld<TMatrixSpy> r;
  r->Rotated(90, 0, 0, 5);
  r->Rotated(90, 0, 0, 1);
  EXPECT_TRUE(SameMatrix(r->Multiplied[0], r->Multiplied[1]));
}

TEST(Matrices, AnAxisThatIsNoNumberFlowsThrough) {
  THeld<TMatrixSpy> r;
  r->Rotated(90, std::numeric_limits<double>::quiet_NaN(), 0, 0);
  ASSERT_EQ(1u, r->Multiplied.size());
  EXPECT_TRUE(std::isnan(r->Multiplied[0][0]));
  EXPECT_TRUE(std::isnan(r->Multiplied[0][5]));
  EXPECT_TRUE(std::isnan(r->Multiplied[0][10]));
  EXPECT_EQ(1, r->Multiplied[0][15]);
  EXPECT_EQ(0, r->Multiplied[0][3]);
  EXPECT_EQ(0u, r->GetError());
}

TEST(Matrices, RotatefWidensFirst) {
  THeld<TMatrixSpy> r;
  const float angle = 33.3f, x = 0.1f, y = 0.7f, z = -0.9f;
  r->Rotatef(angle, x, y, z);
  EXPECT_TRUE(SameMatrix(Rotation(static_cast<double>(angle), static_cast<double>(x),
                                  static_cast<double>(y), static_cast<double>(z)),
                         r->Multiplied[0]));
}

TEST(Matrices, ScaleAndTranslationElements) {
  THeld<TMatrixSpy> r;
  r->Scaled(0.1, 0.2, 0.3);
  r->Scalef(0.1f, 0.2f, 0.3f);
  r->Translated(0.1, 0.2, 0.3);
  r->Translatef(0.1f, 0.2f, 0.3f);
  ASSERT_EQ(4u, r->Multiplied.size());
  const double fx = static_cast<double>(0.1f), fy = static_cast<double>(0.2f),
               fz = static_cast<double>(0.3f);
  const M4 expected[4] = {{{0.1, 0, 0, 0, 0, 0.2, 0, 0, 0, 0, 0.3, 0, 0, 0, 0, 1}},
                          {{fx, 0, 0, 0, 0, fy, 0, 0, 0, 0, fz, 0, 0, 0, 0, 1}},
                          {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.1, 0.2, 0.3, 1}},
                          {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, fx, fy, fz, 1}}};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_TRUE(SameMatrix(expected[i], r->Multiplied[i])) << i;
  }
}

TEST(Matrices, OutliveDestroyAndNeedNoSurfaces) {
  TScene s(4, 4);
  s->LoadMatrix(Numbered(1));
  s->PushMatrix();
  s->Destroy();
  EXPECT_TRUE(SameMatrix(Numbered(1), s->m_ModelView));
  s->LoadIdentity();
  s->PopMatrix();
  EXPECT_TRUE(SameMatrix(Numbered(1), s->m_ModelView));
}
