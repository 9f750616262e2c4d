#pragma once

#include <map>

#include <ZxCore3D/object/TCreator.h>
#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// Numbers a set of creators, from 1 on. It owns none of them and has no lock.
class ZX_CORE3D_API TZxClassFactory {
public:
  TZxClassFactory();

  /// Gives `creator` the next id. False for null and for a creator that has one.
  bool AddCreator(TCreator* creator);

  /// Takes `creator` out; false if it isn't in. Its id is never given again: the table by id keeps
  /// it, and a creator that is added anew gets a new one.
  bool RemoveCreator(TCreator* creator);

private:
  unsigned long m_NextId;
  std::map<TCreator*, unsigned long> m_ByCreator;
  std::map<unsigned long, TCreator*> m_ById;
};

} // namespace Zx3D
