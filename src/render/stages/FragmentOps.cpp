// Tested by: tests/render/FragmentOps.cpp (ColorWrite.*, StencilTest.*, StencilOperation.*)

#include <ZxCore3D/render/FragmentOps.h>

#include <cstring>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Channels.h>
#include <ZxCore3D/render/common/FragmentTables.h>

namespace Zx3D {

using TByte = unsigned char;

// --- Depth

bool Never1f(float, float) { return false; }
bool Less1f(float fragment, float stored) { return fragment < stored; }
bool Equal1f(float fragment, float stored) { return fragment == stored; }
bool Lequal1f(float fragment, float stored) { return fragment <= stored; }
bool Greater1f(float fragment, float stored) { return fragment > stored; }
bool NotEqual1f(float fragment, float stored) { return fragment != stored; }
bool Gequal1f(float fragment, float stored) { return fragment >= stored; }
bool Always1f(float, float) { return true; }

void TRenderCPU::DepthFunc(unsigned int func) {
  if (func == m_DepthFunc) {
    return;
  }
  m_DepthFunc = func;
  if (func < GL_NEVER || func > GL_ALWAYS) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  m_DepthCompare = kDepthCompares[func - GL_NEVER];
}

void TRenderCPU::EnableDepthTest(bool on) { m_DepthTest = on; }

// --- Stencil

bool NeverM_1u8(TByte, TByte, TByte) { return false; }
bool LessM_1u8(TByte ref, TByte value, TByte mask) { return (ref & mask) < (value & mask); }
bool EqualM_1u8(TByte ref, TByte value, TByte mask) { return ((ref ^ value) & mask) == 0; }
bool LequalM_1u8(TByte ref, TByte value, TByte mask) { return (ref & mask) <= (value & mask); }
bool GreaterM_1u8(TByte ref, TByte value, TByte mask) { return (ref & mask) > (value & mask); }
bool NotEqualM_1u8(TByte ref, TByte value, TByte mask) { return ((ref ^ value) & mask) != 0; }
bool GequalM_1u8(TByte ref, TByte value, TByte mask) { return (ref & mask) >= (value & mask); }
bool AlwaysM_1u8(TByte, TByte, TByte) { return true; }

// Bits under the mask come from `value`; the others stay.
static void StoreMasked(TByte* s, int value, TByte mask) {
  *s = static_cast<TByte>((value & mask) | (*s & ~mask));
}

void KeepM_1u8(TByte*, TByte, TByte) {}

void ZeroM_1u8(TByte* s, TByte, TByte mask) { StoreMasked(s, 0, mask); }

void ReplaceM_1u8(TByte* s, TByte ref, TByte mask) { StoreMasked(s, ref, mask); }

void IncrM_1u8(TByte* s, TByte, TByte mask) {
  const int next = (*s & mask) + 1;
  StoreMasked(s, next > 255 ? 255 : next, mask);
}

void IncrWrapM_1u8(TByte* s, TByte, TByte mask) { StoreMasked(s, (*s & mask) + 1, mask); }

void DecrM_1u8(TByte* s, TByte, TByte mask) {
  const int next = (*s & mask) - 1;
  StoreMasked(s, next < 0 ? 0 : next, mask);
}

void DecrWrapM_1u8(TByte* s, TByte ref, TByte mask) { DecrM_1u8(s, ref, mask); }

void InvertM_1u8(TByte* s, TByte, TByte mask) { *s = static_cast<TByte>(*s ^ mask); }

static TRenderCPU::TStencilFunction StencilOperation(unsigned int op) {
  switch (op) {
  case GL_KEEP:
    return KeepM_1u8;
  case GL_ZERO:
    return ZeroM_1u8;
  case GL_REPLACE:
    return ReplaceM_1u8;
  case GL_INCR:
    return IncrM_1u8;
  case GL_INCR_WRAP:
    return IncrWrapM_1u8;
  case GL_DECR:
    return DecrM_1u8;
  case GL_DECR_WRAP:
    return DecrWrapM_1u8;
  case GL_INVERT:
    return InvertM_1u8;
  default:
    return nullptr;
  }
}

void TRenderCPU::StencilFunc(unsigned int func, int ref, unsigned int mask) {
  if (func < GL_NEVER || func > GL_ALWAYS) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  m_StencilFunc = func;
  m_StencilRef = ref;
  m_StencilValueMask = mask;
  m_StencilCompare = kStencilCompares[func - GL_NEVER];
}

void TRenderCPU::StencilOp(unsigned int fail, unsigned int zfail, unsigned int zpass) {
  const TStencilFunction failOp = StencilOperation(fail);
  const TStencilFunction zfailOp = StencilOperation(zfail);
  const TStencilFunction zpassOp = StencilOperation(zpass);
  if (failOp == nullptr || zfailOp == nullptr || zpassOp == nullptr) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  m_StencilFail = fail;
  m_StencilZFail = zfail;
  m_StencilZPass = zpass;
  m_StencilFailOp = failOp;
  m_StencilZFailOp = zfailOp;
  m_StencilZPassOp = zpassOp;
}

// --- Blending

// Source over destination in bytes, truncating.
static TByte BlendByte(int src, int dst, int alpha) {
  return static_cast<TByte>((dst * (255 - alpha) + src * alpha) / 255);
}

void TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub(const void* src, void* dst) {
  _BlendM_SrcA_1_SrcA_RGBAub(src, dst, kAllChannels);
}

void TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub(const void* src, void* dst, unsigned char mask) {
  const auto* const from = static_cast<const TByte*>(src);
  auto* const to = static_cast<TByte*>(dst);
  const int alpha = from[3];
  for (int i = 0; i < 4; ++i) {
    if ((mask >> i & 1) != 0) {
      to[i] = BlendByte(from[i], to[i], alpha);
    }
  }
}

void TRenderCPU::_UpdateBlendFunc() {
  const bool blends =
      m_BlendEnabled && m_BlendSrc == GL_SRC_ALPHA && m_BlendDst == GL_ONE_MINUS_SRC_ALPHA;
  m_BlendFunc = blends ? &_Blend_SrcA_1_SrcA_RGBAub : nullptr;
  m_BlendFuncM = blends ? &_BlendM_SrcA_1_SrcA_RGBAub : nullptr;
}

void TRenderCPU::BlendFunc(unsigned int src, unsigned int dst) {
  if (src == m_BlendSrc && dst == m_BlendDst) {
    return;
  }
  m_BlendSrc = src;
  m_BlendDst = dst;
  _UpdateBlendFunc();
}

void TRenderCPU::EnableBlend(bool on) {
  m_BlendEnabled = on;
  _UpdateBlendFunc();
}

// --- Writers of a draw buffer

void SetValue1f(void* dst, const vec_t_<double, 4>& color) {
  const auto red = static_cast<float>(color.x);
  std::memcpy(dst, &red, sizeof red);
}

void SetValue1d(void* dst, const vec_t_<double, 4>& color) {
  std::memcpy(dst, &color.x, sizeof color.x);
}

void SetValue4f(void* dst, const vec_t_<double, 4>& color) {
  const float values[4] = {static_cast<float>(color.x), static_cast<float>(color.y),
                           static_cast<float>(color.z), static_cast<float>(color.w)};
  std::memcpy(dst, values, sizeof values);
}

void SetValue4d(void* dst, const vec_t_<double, 4>& color) {
  std::memcpy(dst, &color, sizeof color);
}

} // namespace Zx3D
