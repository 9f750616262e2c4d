#include <ZxCore3D/render/RowShaderCPU.h>

#include <boost/uuid/uuid.hpp>

namespace Zx3D {

TRowFragmentShaderCPU::~TRowFragmentShaderCPU() = default;

constinit const boost::uuids::uuid TRowFragmentShaderCPU::s_Interface = {
    {0x5c, 0x2e, 0x91, 0x0b, 0x7d, 0x34, 0x4f, 0x6a, 0xa8, 0x13, 0xe0, 0x57, 0xc9, 0x26, 0xbf,
     0x48}};

bool TRowFragmentShaderCPU::QueryInterface(const boost::uuids::uuid& id, void** out) {
  if (out == nullptr || !(id == s_Interface)) {
    return TFragmentShaderCPU::QueryInterface(id, out);
  }
  AddRef();
  *out = this;
  return true;
}

} // namespace Zx3D
