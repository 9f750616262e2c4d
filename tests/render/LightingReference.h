#pragma once

#include <cmath>

#include "StateChecks.h"

// The lighting of one vertex, written down a second time.

namespace zx_test {

inline V3 Xyz(const V4& v) { return {v.x, v.y, v.z}; }

inline double Dot(const V3& a, const V3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline double Length(const V3& v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

inline V3 Over(const V3& v, double divisor) {
  return {v.x / divisor, v.y / divisor, v.z / divisor};
}

inline V4 Applied(const M4& m, const V3& v) {
  V4 out;
  for (std::size_t i = 0; i < 4; ++i) {
    out[i] = m[i] * v.x + m[4 + i] * v.y + m[8 + i] * v.z + m[12 + i];
  }
  return out;
}

/// The lit colours of one vertex, written down a second time: face by face.
struct TLit {
  V4 Front, FrontSpecular, Back, BackSpecular;
};

/// Computes it from a context's present state.
class TLightingReference {
public:
  explicit TLightingReference(const Zx3D::TRenderCPU& r) : m_R(r) {
    const V3 vertex = Xyz(r.m_CurVertex);
    m_E = Xyz(Applied(r.m_ModelView, vertex));
    const M4& m = r.m_ModelView;
    const V4& n = r.m_CurNormal;
    for (std::size_t i = 0; i < 3; ++i) {
      m_N[i] = m[i] * n.x + m[4 + i] * n.y + m[8 + i] * n.z;
    }
    if (r.m_Normalize && Length(m_N) != 0) {
      m_N = Over(m_N, Length(m_N));
    }
    m_Lit.Front = Base(r.m_MaterialFront);
    m_Lit.FrontSpecular = V4{0, 0, 0, 0};
    m_Lit.Back = r.m_LightModelTwoSide ? Base(r.m_MaterialBack) : V4{0, 0, 0, 0};
    m_Lit.BackSpecular = V4{0, 0, 0, 0};
    for (const Zx3D::TRenderCPU::TLight& light : r.m_Lights) {
      if (light.Enabled) {
        Add(light);
      }
    }
  }

  const TLit& Lit() const { return m_Lit; }

private:
  V4 Base(const Zx3D::TRenderCPU::TMaterial& material) const {
    V4 c;
    for (std::size_t i = 0; i < 3; ++i) {
      c[i] = material.Ambient[i] * m_R.m_LightModelAmbient[i] + material.Emission[i];
    }
    c.w = material.Diffuse.w;
    return c;
  }

  V3 Half(const Zx3D::TRenderCPU::TLight& light) const {
    V3 h;
    if (m_R.m_LightModelLocalViewer) {
      const double len = Length(m_E);
      const V3 u = len != 0 ? Over(m_E, len) : m_E;
      h = {light.Position.x - u.x, light.Position.y - u.y, light.Position.z - u.z};
    } else {
      h = {light.Position.x, light.Position.y, light.Position.z + 1};
    }
    return Length(h) != 0 ? Over(h, Length(h)) : h;
  }

  void Add(const Zx3D::TRenderCPU::TLight& light) {
    if (light.Position.w == 0) {
      Directional(light);
    } else if (!light.Spot) {
      Positional(light);
    } else {
      SpotLight(light);
    }
  }

  void Directional(const Zx3D::TRenderCPU::TLight& light) {
    const bool two = m_R.m_LightModelTwoSide;
    const Zx3D::TRenderCPU::TMaterial &front = m_R.m_MaterialFront, &back = m_R.m_MaterialBack;
    const double d = Dot({-light.Position.x, -light.Position.y, -light.Position.z}, m_N);
    const double t = Dot(Half(light), m_N);
    for (std::size_t i = 0; i < 3; ++i) {
      m_Lit.Front[i] += front.Ambient[i] * light.Ambient[i];
      if (two) {
        m_Lit.Back[i] += back.Ambient[i] * light.Ambient[i];
      }
      if (d < 0) {
        m_Lit.Front[i] += front.Diffuse[i] * light.Diffuse[i] * -d;
        if (t > 0) {
          m_Lit.FrontSpecular[i] +=
              front.Specular[i] * light.Specular[i] * std::pow(t, front.Shininess);
        }
      } else if (two) {
        m_Lit.Back[i] += back.Diffuse[i] * light.Diffuse[i] * d;
        if (t < 0) {
          m_Lit.BackSpecular[i] +=
              back.Specular[i] * light.Specular[i] * std::pow(-t, back.Shininess);
        }
      }
    }
  }

  double Attenuation(const Zx3D::TRenderCPU::TLight& light, double r) const {
    return 1 / ((light.QuadraticAttenuation * r + light.LinearAttenuation) * r +
                light.ConstantAttenuation);
  }

  void Positional(const Zx3D::TRenderCPU::TLight& light) {
    const bool two = m_R.m_LightModelTwoSide;
    const Zx3D::TRenderCPU::TMaterial &front = m_R.m_MaterialFront, &back = m_R.m_MaterialBack;
    V3 ray = m_E - Xyz(light.Position);
    const double r = Length(ray);
    double a = 1;
    if (r > 0) {
      ray = Over(ray, r);
      a = Attenuation(light, r);
    }
    const double d = Dot(ray, m_N), t = Dot(Half(light), m_N);
    for (std::size_t i = 0; i < 3; ++i) {
      double toFront = front.Ambient[i] * light.Ambient[i];
      double toBack = back.Ambient[i] * light.Ambient[i];
      if (d < 0) {
        toFront += front.Diffuse[i] * light.Diffuse[i] * -d;
        if (t > 0) {
          m_Lit.FrontSpecular[i] +=
              front.Specular[i] * light.Specular[i] * std::pow(t, front.Shininess);
        }
      } else if (two) {
        toBack += back.Diffuse[i] * light.Diffuse[i] * d;
        if (t < 0) {
          m_Lit.BackSpecular[i] +=
              back.Specular[i] * light.Specular[i] * std::pow(-t, back.Shininess);
        }
      }
      m_Lit.Front[i] += toFront * a;
      if (two) {
        m_Lit.Back[i] += toBack * a;
      }
    }
  }

  void SpotLight(const Zx3D::TRenderCPU::TLight& light) {
    V3 ray = m_E - Xyz(light.Position);
    const double r = Length(ray);
    if (!(r > 0)) {
      return;
    }
    ray = Over(ray, r);
    const double d = Dot(ray, m_N);
    const bool isFront = d < 0;
    if (!isFront && !m_R.m_LightModelTwoSide) {
      return;
    }
    const double c = Dot(ray, light.SpotDirection);
    if (!(c > 0) || !(light.SpotCutoffRad > std::acos(c))) {
      return;
    }
    const double f = Attenuation(light, r) * std::pow(c, light.SpotExponent);
    const double t = Dot(Half(light), m_N);
    const Zx3D::TRenderCPU::TMaterial& m = isFront ? m_R.m_MaterialFront : m_R.m_MaterialBack;
    V4& color = isFront ? m_Lit.Front : m_Lit.Back;
    V4& specular = isFront ? m_Lit.FrontSpecular : m_Lit.BackSpecular;
    for (std::size_t i = 0; i < 3; ++i) {
      if (isFront ? t > 0 : t < 0) {
        specular[i] +=
            m.Specular[i] * light.Specular[i] * (std::pow(isFront ? t : -t, m.Shininess) * f);
      }
      color[i] += f * (m.Ambient[i] * light.Ambient[i] +
                       m.Diffuse[i] * light.Diffuse[i] * (isFront ? -d : d));
    }
  }

  const Zx3D::TRenderCPU& m_R;
  V3 m_E, m_N;
  TLit m_Lit;
};

} // namespace zx_test
