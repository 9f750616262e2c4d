#pragma once

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// \name What a number of the state stands for; null if it stands for nothing. No error is
/// reported.
/// \{

/// The unit of `ActiveTexture`.
TRenderCPU::TTexUnit* ActiveTexUnit(TRenderCPU& gl);
/// The buffer of a name.
TRenderCPU::TBuffer* BufferNamed(TRenderCPU& gl, unsigned int id);
/// The classic array of an enum from `GL_VERTEX_ARRAY` on.
TRenderCPU::TVertexAttribPointer* ClassicArray(TRenderCPU& gl, unsigned int array);
/// \}

} // namespace Zx3D
