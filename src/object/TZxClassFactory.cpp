#include <ZxCore3D/object/TZxClassFactory.h>

namespace Zx3D {

TZxClassFactory::TZxClassFactory() : m_NextId(1) {}

bool TZxClassFactory::AddCreator(TCreator* creator) {
  if (creator == nullptr) {
    return false;
  }
  unsigned long& id = m_ByCreator[creator];
  if (id != 0) {
    return false;
  }
  try {
    m_ById.emplace(m_NextId, creator);
  } catch (...) {
    m_ByCreator.erase(creator);
    throw;
  }
  id = m_NextId++;
  return true;
}

bool TZxClassFactory::RemoveCreator(TCreator* creator) { return m_ByCreator.erase(creator) != 0; }

} // namespace Zx3D
