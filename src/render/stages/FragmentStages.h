// Tested by: tests/render/FragmentOps.cpp (ColorWrite.*, StencilTest.*, DepthTest.*),
// tests/render/CalcDepth.cpp (CalcDepth.*)

#pragma once

#include <cstdint>
#include <cstring>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Channels.h>
#include <ZxCore3D/render/common/Conversions.h>

namespace Zx3D {

// --- The stages one by one. A null address is a target that is not there.

inline void RunStencil(const TRenderCPU& gl, TRenderCPU::TStencilFunction operation,
                       unsigned char* stencil) {
  if (stencil != nullptr && operation != KeepM_1u8) {
    operation(stencil, static_cast<unsigned char>(gl.m_StencilRef),
              static_cast<unsigned char>(gl.m_StencilWriteMask));
  }
}

inline bool PassesStencil(const TRenderCPU& gl, unsigned char* stencil) {
  if (!gl.m_StencilTest) [[likely]] {
    return true;
  }
  const unsigned char value = stencil != nullptr ? *stencil : 0;
  if (gl.m_StencilCompare == AlwaysM_1u8 ||
      gl.m_StencilCompare(static_cast<unsigned char>(gl.m_StencilRef), value,
                          static_cast<unsigned char>(gl.m_StencilValueMask))) {
    return true;
  }
  RunStencil(gl, gl.m_StencilFailOp, stencil);
  return false;
}

/// The two most common comparisons need no call.
inline bool CompareDepth(TRenderCPU::TDepthCompare compare, float fragment, float stored) {
  return compare == Less1f     ? fragment < stored
         : compare == Lequal1f ? fragment <= stored
                               : compare(fragment, stored);
}

inline bool PassesDepth(const TRenderCPU& gl, const unsigned char* depth, float fragment,
                        unsigned char* stencil) {
  if (depth != nullptr && gl.m_DepthTest &&
      !CompareDepth(gl.m_DepthCompare, fragment, LoadFloat(depth))) {
    RunStencil(gl, gl.m_StencilZFailOp, stencil);
    return false;
  }
  return true;
}

/// Source over destination in bytes, truncating: (dst (255 - alpha) + src alpha) / 255.
///
/// All channels at once, each in 16 bits of a word: the sum v is at most 255^2. Its quotient k is
/// the upper byte of v + 1 + (v >> 8). For with v = 255 k + r, v >> 8 is k if r >= k, else k - 1,
/// so that the sum is 256 k + r + 1, where r + 1 < 256, or 256 k + r.
[[gnu::always_inline]] inline std::uint32_t Blended(std::uint32_t src, std::uint32_t dst) {
  constexpr std::uint64_t kBytes = 0x00FF00FF00FF00FF;
  const auto spread = [](std::uint64_t word) { return (word | word << 24) & kBytes; };
  const std::uint64_t alpha = src >> 24;
  const std::uint64_t v = spread(dst) * (255 - alpha) + spread(src) * alpha;
  const std::uint64_t quotients = ((v + 0x0001000100010001 + (v >> 8 & kBytes)) >> 8) & kBytes;
  return static_cast<std::uint32_t>(quotients | quotients >> 24);
}

/// Whether colours are written as they are, without mask and blending.
inline bool IsCopy(const TRenderCPU& gl) {
  return gl.m_ColorMask == kAllChannels && gl.m_BlendFunc == nullptr;
}

/// Writes a colour of four bytes to the colour surface, through mask and blending. Callers that
/// have asked `IsCopy` before cannot know: a function of a host's own may switch blending off.
inline void WriteBytes(const TRenderCPU& gl, unsigned char* to, const unsigned char* bytes) {
  const unsigned int mask = gl.m_ColorMask;
  if (mask == kAllChannels) {
    if (gl.m_BlendFunc != nullptr) {
      gl.m_BlendFunc(bytes, to);
    } else {
      std::memcpy(to, bytes, kPixelBytes);
    }
    return;
  }
  if (mask != 0 && gl.m_BlendFuncM != nullptr) {
    gl.m_BlendFuncM(bytes, to, gl.m_ColorMask);
    return;
  }
  for (unsigned int i = 0; i < 4; ++i) {
    if ((mask >> i & 1) != 0) {
      to[i] = bytes[i];
    }
  }
}

/// Writes any colour, as bytes in a word, the lowest being red. A word goes from register to
/// memory: bytes stored one by one would have to reach memory before the word could be loaded.
[[gnu::always_inline]] inline void WritePacked(const TRenderCPU& gl, unsigned char* to,
                                               std::uint32_t packed) {
  if (IsCopy(gl)) [[likely]] {
    std::memcpy(to, &packed, kPixelBytes);
    return;
  }
  if (gl.m_ColorMask == kAllChannels && gl.m_BlendFunc == TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub) {
    std::uint32_t stored;
    std::memcpy(&stored, to, kPixelBytes);
    stored = Blended(packed, stored);
    std::memcpy(to, &stored, kPixelBytes);
    return;
  }
  unsigned char bytes[kPixelBytes];
  std::memcpy(bytes, &packed, sizeof bytes);
  WriteBytes(gl, to, bytes);
}

/// A colour as bytes in a word, whatever its channels are.
inline std::uint32_t PackedBytesOfAny(const vec_t_<double, 4>& color) {
  return ByteOf(color.x) | static_cast<std::uint32_t>(ByteOf(color.y)) << 8 |
         static_cast<std::uint32_t>(ByteOf(color.z)) << 16 |
         static_cast<std::uint32_t>(ByteOf(color.w)) << 24;
}

/// Writes a fragment's colour to the draw buffer if there is one, otherwise to the colour surface.
inline void WriteColor(const TRenderCPU& gl, unsigned char* to, const vec_t_<double, 4>& color) {
  if (gl.m_PixelWrite != nullptr) {
    gl.m_PixelWrite(to, color);
    return;
  }
  WritePacked(gl, to, PackedBytesOfAny(color));
}

/// The depth of a triangle's pixel at t of its span.
inline float SpanDepth(const TRenderCPU& gl, const TRenderCPU::EDGE& span, double t) {
  float depth = static_cast<float>(span.Delta.Slots[0].z * t + span.Begin->Slots[0].z);
  if (gl.m_PolygonOffsetFill) [[unlikely]] {
    depth += gl.m_PolygonOffsetFactor;
  }
  return depth;
}

// --- All of them

/// The stages before shading; false if the fragment goes no further.
template <class TFragment>
inline bool PassesBeforeShading(const TRenderCPU& gl, const unsigned char* depth,
                                unsigned char* stencil, TFragment&& fragment) {
  if (!PassesStencil(gl, stencil)) {
    return false;
  }
  if (gl.m_CalcDepth) [[unlikely]] {
    return true;
  }
  fragment.SetDepth();
  return PassesDepth(gl, depth, fragment.Depth(), stencil);
}

/// Those between shading and the colour write.
template <class TFragment>
inline bool PassesAfterShading(const TRenderCPU& gl, unsigned char* depth, unsigned char* stencil,
                               const TFragment& fragment) {
  if (gl.m_CalcDepth && !PassesDepth(gl, depth, fragment.Depth(), stencil)) [[unlikely]] {
    return false;
  }
  if (depth != nullptr && gl.m_DepthMask) {
    StoreFloat(depth, fragment.Depth());
  }
  RunStencil(gl, gl.m_StencilZPassOp, stencil);
  return true;
}

/// The stages of a fragment once its pixel is known, in their order:
///
///     stencil test - depth test - shading - depth write - stencil write - colour write
///
/// Where the shader computes the depth, the depth test follows shading. A fragment that fails a
/// stage goes no further.
///
/// What spans, points and lines do each in their own manner is the fragment's:
///
///     void SetDepth()       puts the interpolated depth into the record
///     float Depth() const   the depth in the record
///     bool Shade()          computes the colour; false discards the fragment
///     void WriteColor()     writes the colour to the pixel, if there is one
template <class TFragment>
inline void RunFragment(const TRenderCPU& gl, unsigned char* depth, unsigned char* stencil,
                        TFragment&& fragment) {
  if (PassesBeforeShading(gl, depth, stencil, fragment) && fragment.Shade() &&
      PassesAfterShading(gl, depth, stencil, fragment)) {
    fragment.WriteColor();
  }
}

} // namespace Zx3D
