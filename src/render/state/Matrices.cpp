#include <ZxCore3D/render/TRenderCPU.h>

#include <cmath>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/state/CurrentObjects.h>

namespace Zx3D {

static constexpr MAT4<double> E4d = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

static MAT4<double> Widened(const float* m) {
  MAT4<double> wide;
  for (std::size_t i = 0; i < 16; ++i) {
    wide[i] = m[i];
  }
  return wide;
}

// --- The target

namespace {

/// The matrix that `MatrixMode` names, and its stack.
struct TMatrixTarget {
  MAT4<double>* Matrix;
  std::vector<MAT4<double>>* Stack;
  bool Transform; ///< modelview or projection: the product depends on it
};

} // namespace

// False, with an error reported, if the mode names no matrix.
static bool MatrixTarget(TRenderCPU& gl, TMatrixTarget* out) {
  switch (gl.m_MatrixMode) {
  case GL_TEXTURE: {
    TRenderCPU::TTexUnit* const unit = ActiveTexUnit(gl);
    if (unit == nullptr) {
      return false;
    }
    *out = {&unit->TexMatrix, &unit->TexMatrixStack, false};
    return true;
  }
  case GL_PROJECTION:
    *out = {&gl.m_Projection, &gl.m_ProjectionStack, true};
    return true;
  case GL_MODELVIEW:
    *out = {&gl.m_ModelView, &gl.m_ModelViewStack, true};
    return true;
  default:
    gl._SetError(GL_INVALID_OPERATION);
    return false;
  }
}

static void RefreshModelViewProjection(TRenderCPU& gl) {
  Mat4_Mul_Mat4(gl.m_ModelView.m, gl.m_Projection.m, gl.m_ModelViewProjection.m);
}

void TRenderCPU::MatrixMode(unsigned int mode) { m_MatrixMode = mode; }

// --- Stacks

void TRenderCPU::PushMatrix() {
  TMatrixTarget target;
  if (MatrixTarget(*this, &target)) {
    target.Stack->push_back(*target.Matrix);
  }
}

void TRenderCPU::PopMatrix() {
  TMatrixTarget target;
  if (!MatrixTarget(*this, &target) || target.Stack->empty()) {
    return;
  }
  *target.Matrix = target.Stack->back();
  target.Stack->pop_back();
  if (target.Transform) {
    RefreshModelViewProjection(*this);
  }
}

// --- Load and multiply

void TRenderCPU::LoadMatrix(const MAT4<double>& m) {
  TMatrixTarget target;
  if (!MatrixTarget(*this, &target)) {
    return;
  }
  *target.Matrix = m;
  if (target.Transform) {
    RefreshModelViewProjection(*this);
  }
}

void TRenderCPU::LoadMatrix(const MAT4<float>& m) { LoadMatrix(Widened(m.m)); }

void TRenderCPU::LoadMatrixd(const double* m) {
  LoadMatrix(*reinterpret_cast<const MAT4<double>*>(m));
}

void TRenderCPU::LoadMatrixf(const float* m) { LoadMatrix(Widened(m)); }

void TRenderCPU::LoadIdentity() { LoadMatrix(E4d); }

void TRenderCPU::MultMatrix(const MAT4<double>& m) {
  TMatrixTarget target;
  if (!MatrixTarget(*this, &target)) {
    return;
  }
  const MAT4<double> factor = m; // may be the target itself
  const MAT4<double> before = *target.Matrix;
  Mat4_Mul_Mat4(factor.m, before.m, target.Matrix->m);
  if (target.Transform) {
    RefreshModelViewProjection(*this);
  }
}

void TRenderCPU::MultMatrix(const MAT4<float>& m) { MultMatrix(Widened(m.m)); }

void TRenderCPU::MultMatrixd(const double* m) {
  MultMatrix(*reinterpret_cast<const MAT4<double>*>(m));
}

void TRenderCPU::MultMatrixf(const float* m) { MultMatrix(Widened(m)); }

// --- Projections

void TRenderCPU::Frustum(double left, double right, double bottom, double top, double zNear,
                         double zFar) {
  MAT4<double> m = {};
  m[0] = (zNear + zNear) / (right - left);
  m[5] = (zNear + zNear) / (top - bottom);
  m[8] = (left + right) / (right - left);
  m[9] = (bottom + top) / (top - bottom);
  m[10] = -(zNear + zFar) / (zFar - zNear);
  m[11] = -1.0;
  m[14] = zFar * -2.0 * zNear / (zFar - zNear);
  MultMatrix(m);
}

void TRenderCPU::Ortho(double left, double right, double bottom, double top, double zNear,
                       double zFar) {
  const double p = 1.0 / (right - left);
  const double q = 1.0 / (top - bottom);
  const double s = 1.0 / (zNear - zFar);
  MAT4<double> m = {};
  m[0] = p + p;
  m[5] = q + q;
  m[10] = s + s;
  m[12] = -((left + right) * p);
  m[13] = -((bottom + top) * q);
  m[14] = (zNear + zFar) * s;
  m[15] = 1.0;
  MultMatrix(m);
}

// --- Rotation, scale, translation

// All of these multiply by the virtual `MultMatrix` alone, so that a derived context sees each
// change once.

static MAT4<double> Rotation(double angle, double x, double y, double z) {
  const double s = x * x + y * y + z * z;
  double qx = 0.0;
  double qy = 0.0;
  double qz = 0.0;
  double w = 1.0;
  if (s != 0.0) {
    const double h = angle * 3.141592653589793 / 180.0 * 0.5;
    w = std::cos(h);
    const double scale = std::sin(h) / std::sqrt(s);
    qx = x * scale;
    qy = y * scale;
    qz = z * scale;
  }
  MAT4<double> m = E4d;
  const double len = std::sqrt(qx * qx + qy * qy + qz * qz + w * w);
  if (len != 0.0) {
    const double k = 2.0 / len;
    m[0] = 1.0 - (k * qy * qy + k * qz * qz);
    m[1] = k * qx * qy + k * qz * w;
    m[2] = k * qx * qz - k * qy * w;
    m[4] = k * qx * qy - k * qz * w;
    m[5] = 1.0 - (k * qx * qx + k * qz * qz);
    m[6] = k * qy * qz + k * qx * w;
    m[8] = k * qx * qz + k * qy * w;
    m[9] = k * qy * qz - k * qx * w;
    m[10] = 1.0 - (k * qx * qx + k * qy * qy);
  }
  return m;
}

void TRenderCPU::Rotated(double angle, double x, double y, double z) {
  MultMatrix(Rotation(angle, x, y, z));
}

void TRenderCPU::Rotatef(float angle, float x, float y, float z) {
  MultMatrix(Rotation(angle, x, y, z));
}

static MAT4<double> Scale(double x, double y, double z) {
  MAT4<double> m = {};
  m[0] = x;
  m[5] = y;
  m[10] = z;
  m[15] = 1.0;
  return m;
}

void TRenderCPU::Scaled(double x, double y, double z) { MultMatrix(Scale(x, y, z)); }

void TRenderCPU::Scalef(float x, float y, float z) { MultMatrix(Scale(x, y, z)); }

static MAT4<double> Translation(double x, double y, double z) {
  MAT4<double> m = E4d;
  m[12] = x;
  m[13] = y;
  m[14] = z;
  return m;
}

void TRenderCPU::Translated(double x, double y, double z) { MultMatrix(Translation(x, y, z)); }

void TRenderCPU::Translatef(float x, float y, float z) { MultMatrix(Translation(x, y, z)); }

} // namespace Zx3D
