#pragma once

#include <cstdint>

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// \name Depth comparisons: IEEE comparisons of the fragment's depth with the stored one. With a
/// NaN only `NotEqual1f` and `Always1f` are true.
/// \{
ZX_CORE3D_API bool Never1f(float fragment, float stored);
ZX_CORE3D_API bool Less1f(float fragment, float stored);
ZX_CORE3D_API bool Equal1f(float fragment, float stored);
ZX_CORE3D_API bool Lequal1f(float fragment, float stored);
ZX_CORE3D_API bool Greater1f(float fragment, float stored);
ZX_CORE3D_API bool NotEqual1f(float fragment, float stored);
ZX_CORE3D_API bool Gequal1f(float fragment, float stored);
ZX_CORE3D_API bool Always1f(float fragment, float stored);
/// \}

/// \name Stencil comparisons: `(ref & mask)` stands on the left.
/// \{
ZX_CORE3D_API bool NeverM_1u8(unsigned char ref, unsigned char value, unsigned char mask);
ZX_CORE3D_API bool LessM_1u8(unsigned char ref, unsigned char value, unsigned char mask);
ZX_CORE3D_API bool EqualM_1u8(unsigned char ref, unsigned char value, unsigned char mask);
ZX_CORE3D_API bool LequalM_1u8(unsigned char ref, unsigned char value, unsigned char mask);
ZX_CORE3D_API bool GreaterM_1u8(unsigned char ref, unsigned char value, unsigned char mask);
ZX_CORE3D_API bool NotEqualM_1u8(unsigned char ref, unsigned char value, unsigned char mask);
ZX_CORE3D_API bool GequalM_1u8(unsigned char ref, unsigned char value, unsigned char mask);
ZX_CORE3D_API bool AlwaysM_1u8(unsigned char ref, unsigned char value, unsigned char mask);
/// \}

/// \name Stencil operations within a write mask. `IncrM_1u8` saturates at 255 before masking, and
/// `DecrWrapM_1u8` stops at 0 as `DecrM_1u8` does.
/// \{
ZX_CORE3D_API void KeepM_1u8(unsigned char* s, unsigned char ref, unsigned char mask);
ZX_CORE3D_API void ZeroM_1u8(unsigned char* s, unsigned char ref, unsigned char mask);
ZX_CORE3D_API void ReplaceM_1u8(unsigned char* s, unsigned char ref, unsigned char mask);
ZX_CORE3D_API void IncrM_1u8(unsigned char* s, unsigned char ref, unsigned char mask);
ZX_CORE3D_API void IncrWrapM_1u8(unsigned char* s, unsigned char ref, unsigned char mask);
ZX_CORE3D_API void DecrM_1u8(unsigned char* s, unsigned char ref, unsigned char mask);
ZX_CORE3D_API void DecrWrapM_1u8(unsigned char* s, unsigned char ref, unsigned char mask);
ZX_CORE3D_API void InvertM_1u8(unsigned char* s, unsigned char ref, unsigned char mask);
/// \}

/// \name Writers of a draw buffer: red alone, or all four components, as floats or doubles. Nothing
/// is clamped.
/// \{
ZX_CORE3D_API void SetValue1f(void* dst, const vec_t_<double, 4>& color);
ZX_CORE3D_API void SetValue1d(void* dst, const vec_t_<double, 4>& color);
ZX_CORE3D_API void SetValue4f(void* dst, const vec_t_<double, 4>& color);
ZX_CORE3D_API void SetValue4d(void* dst, const vec_t_<double, 4>& color);
/// \}

} // namespace Zx3D
