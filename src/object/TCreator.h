#pragma once

#include <ZxBaseKit/TRef.h>

#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// Stands for one class: its name, its parent's creator, and how to make an instance. Nothing owns
/// a creator: those that are registered have to outlive their registration, and so are static in
/// practice.
class ZX_CORE3D_API TCreator {
public:
  /// Makes an instance with a count of 1, which the caller ends with `Release`.
  virtual zx::TRef* CreateInstance() const = 0;

  /// True if `creator` is this one or one of its parents; false for null.
  bool DescendOf(const TCreator* creator) const;

  /// The creator of the class that this one's derives from, or null.
  TCreator* GetParent() const { return m_Parent; }

  /// The key in the registry, terminated, inside the record.
  const char* GetClassName() const { return m_ClassName; }

protected:
  /// `name` is cut at 63 characters, and a null one is empty; `parent` may be null.
  TCreator(const char* name, TCreator* parent);
  /// Copies both; the copy is another creator.
  TCreator(const TCreator&) = default;
  TCreator& operator=(const TCreator&) = default;
  ~TCreator() = default;

private:
  TCreator* m_Parent;
  char m_ClassName[64];
};

/// A counted object that can name its creator.
class ZX_CORE3D_API TSelfCreatingRef : public zx::TRef {
public:
  /// The creator of `TSelfCreatingRef`.
  class ZX_CORE3D_API TSelfCreator : public TCreator {
  public:
    /// Named "TSelfCreatingRef".
    explicit TSelfCreator(TCreator* parent);
    TSelfCreatingRef* CreateInstance() const override;
  };

  /// The one creator of this class, without a parent. It is not registered unless somebody does.
  static TSelfCreator s_Creator;

  ~TSelfCreatingRef() override;

  /// The creator of the object's class.
  virtual const TCreator* GetCreator() const;

  /// The name inside that creator.
  virtual const char* GetClassName() const;
};

/// Enters `creator` under its class name. False for null and when the name is taken, also by the
/// same creator: the first registration stays. The registry has no lock.
ZX_CORE3D_API bool RegisterCreator(const TCreator* creator);

/// Removes the entry with the class name of `creator`, whichever creator it holds. False for null,
/// when there is none, and after the registry's end at exit.
ZX_CORE3D_API bool UnregisterCreator(const TCreator* creator);

/// The creator that is registered under `name`, or null. A null name raises `std::logic_error`.
ZX_CORE3D_API const TCreator* GetCreatorByClassName(const char* name);

/// An instance of the class that is registered under `name`, with a count of 1 for the caller, or
/// null. A null name raises `std::logic_error`.
ZX_CORE3D_API zx::TRef* CreateByClassName(const char* name);

} // namespace Zx3D
