#pragma once

#include <memory>

#include "Common.h"

namespace zxpy {

/// What Python calls `TDataSurface`: a surface of its own, or one of a context's as long as the
/// context has it. When the context lets it go the pixels come over into the object.
class TSurface : public std::enable_shared_from_this<TSurface> {
public:
  TSurface() : m_Own(new TDataSurface), m_Surface(m_Own.get()) {}
  /// Over a surface that a context owns.
  explicit TSurface(TDataSurface* theirs) : m_Own(new TDataSurface), m_Surface(theirs) {}
  /// Over a surface made by `new`, which the object takes.
  explicit TSurface(std::unique_ptr<TDataSurface> surface)
      : m_Own(std::move(surface)), m_Surface(m_Own.get()) {}
  ~TSurface();
  TSurface(const TSurface&) = delete;
  TSurface& operator=(const TSurface&) = delete;

  TDataSurface* Get() const { return m_Surface; }

  /// For an operation that gives the surface other pixels. Raises `RuntimeError` while a context
  /// draws into it or samples it.
  TDataSurface* GetToChange(const char* operation) const;

  /// Takes the pixels over from the context.
  void TakeOver();

private:
  std::unique_ptr<TDataSurface> m_Own; ///< empty while the surface is a context's
  TDataSurface* m_Surface;
};

/// The record behind a `TDataSurface` or a `TImageSurface`. Raises `TypeError` for anything else.
DATASURFACE* RecordOf(const py::handle& object);

} // namespace zxpy
