#include <ZxCore3D/object/TCreator.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

#include <ZxCore3D/object/private/NullName.h>

namespace Zx3D {

namespace {

// Set when the registry has been destroyed at exit. Constant-initialised and trivial, so that it
// can still be read then.
bool s_RegistryGone = false;

class TRegistry : public std::map<std::string, const TCreator*> {
public:
  TRegistry() = default;
  ~TRegistry() { s_RegistryGone = true; }
};

} // namespace

// The library's only static initialiser: this creator first, then the empty registry.
TSelfCreatingRef::TSelfCreator TSelfCreatingRef::s_Creator(nullptr);
static TRegistry s_Creators;

TCreator::TCreator(const char* name, TCreator* parent) : m_Parent(parent), m_ClassName() {
  if (name != nullptr) {
    std::memcpy(m_ClassName, name, strnlen(name, sizeof m_ClassName - 1));
  }
}

bool TCreator::DescendOf(const TCreator* creator) const {
  if (creator == nullptr) {
    return false;
  }
  // Parents in a ring would be walked for ever: every 1, 2, 4, ... steps the place is marked, and
  // coming back to the mark means that the ring has been seen whole (Brent, "An improved Monte
  // Carlo factorization algorithm", 1980).
  const TCreator* mark = nullptr;
  unsigned long steps = 0;
  unsigned long lap = 1;
  for (const TCreator* at = this; at != nullptr; at = at->m_Parent) {
    if (at == creator) {
      return true;
    }
    if (at == mark) {
      return false;
    }
    if (++steps == lap) {
      mark = at;
      steps = 0;
      lap *= 2;
    }
  }
  return false;
}

TSelfCreatingRef::TSelfCreator::TSelfCreator(TCreator* parent)
    : TCreator("TSelfCreatingRef", parent) {}

TSelfCreatingRef* TSelfCreatingRef::TSelfCreator::CreateInstance() const {
  return new TSelfCreatingRef;
}

TSelfCreatingRef::~TSelfCreatingRef() = default;

const TCreator* TSelfCreatingRef::GetCreator() const { return &s_Creator; }

const char* TSelfCreatingRef::GetClassName() const { return s_Creator.GetClassName(); }

bool RegisterCreator(const TCreator* creator) {
  if (creator == nullptr || s_RegistryGone) {
    return false;
  }
  return s_Creators.try_emplace(creator->GetClassName(), creator).second;
}

bool UnregisterCreator(const TCreator* creator) {
  return creator != nullptr && !s_RegistryGone && s_Creators.erase(creator->GetClassName()) != 0;
}

const TCreator* GetCreatorByClassName(const char* name) {
  CheckNameE(name);
  if (s_RegistryGone) {
    return nullptr;
  }
  const auto found = s_Creators.find(name);
  return found != s_Creators.end() ? found->second : nullptr;
}

zx::TRef* CreateByClassName(const char* name) {
  const TCreator* creator = GetCreatorByClassName(name);
  return creator != nullptr ? creator->CreateInstance() : nullptr;
}

} // namespace Zx3D
