#include <ZxPixelKit/TDataSurface.h>

#include <utility>

#include <ZxPixelKit/Surface.h>

TDataSurface::TDataSurface() noexcept : DATASURFACE{}, m_Owner(false) {}

TDataSurface::~TDataSurface() { Destroy(); }

bool TDataSurface::Create(int width, int height, DATA_FORMAT format, DATA_TYPE type, int components,
                          void* external) {
  Destroy();
  DATASURFACE made;
  if (!ds::Set(&made, width, height, format, type, components, external)) {
    return false;
  }
  if (external == nullptr) {
    made.Data = AllocateSurfaceBlock(made.DataSize, static_cast<std::uint64_t>(made.RowStride),
                                     static_cast<std::uint64_t>(made.PixelStride));
    if (made.Data == nullptr) {
      return false;
    }
  }
  static_cast<DATASURFACE&>(*this) = made;
  m_Owner = external == nullptr;
  return true;
}

void TDataSurface::Destroy() noexcept {
  if (!m_Owner) {
    Data = nullptr;
  }
  FreeDataSurfaceData(*this);
  m_Owner = false;
}

void TDataSurface::Swap(TDataSurface& other) noexcept {
  std::swap(static_cast<DATASURFACE&>(*this), static_cast<DATASURFACE&>(other));
  std::swap(m_Owner, other.m_Owner);
}

void TDataSurface::Adopt(DATASURFACE& record) noexcept {
  Destroy();
  static_cast<DATASURFACE&>(*this) = record;
  m_Owner = record.Data != nullptr;
  record = DATASURFACE{};
}
