#include <ZxBaseKit/TRef.h>

namespace zx {

TRef::~TRef() = default;

unsigned int TRef::AddRef() { return m_RefCount.fetch_add(1, std::memory_order_relaxed) + 1; }

unsigned int TRef::Release() {
  const std::uint32_t before = m_RefCount.fetch_sub(1, std::memory_order_acq_rel);
  if (before == 1) {
    delete this;
  }
  return before - 1;
}

bool TRef::QueryInterface(const boost::uuids::uuid&, void** out) {
  if (out != nullptr) {
    *out = nullptr;
  }
  return false;
}

} // namespace zx
