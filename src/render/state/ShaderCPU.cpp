#include <ZxCore3D/render/ShaderCPU.h>

namespace Zx3D {

TShaderCPU::~TShaderCPU() = default;

TVertexShaderCPU::~TVertexShaderCPU() = default;

TFragmentShaderCPU::~TFragmentShaderCPU() = default;

} // namespace Zx3D
