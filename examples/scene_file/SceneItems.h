#pragma once

#include <string>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>

#include "Model.h"

namespace scene_file {

/// What a scene file holds: a counted object that can name its class, with a name, an id, and
/// everything else as attributes.
class TSceneItem : public Zx3D::TSelfCreatingRef,
                   public Zx3D::TAttributable,
                   public Zx3D::TZxNamed {
public:
  unsigned long Id = 0;

  /// The kind under which others ask for it.
  virtual unsigned long GetKind() const = 0;

  /// Follows the ids in the attributes through `reader`, and adds what the item stands for to
  /// `model`. Throws a `TZxMessage` where the attributes make no sense.
  virtual void AddTo(zx_scene::TModel* model, Zx3D::TObjectReader* reader) = 0;

protected:
  /// \name Attributes that have to be there; a `TZxMessage` is thrown if they aren't.
  /// \{
  const Zx3D::TVariant& _Get(const char* name) const { return *FindAttributeE(name); }
  void _GetFloats(const char* name, float* out, unsigned long count) const;
  const void* _GetArray(const char* name, DATA_TYPE type, unsigned long* count) const;
  /// \}

  void _SetFloats(const char* name, const float* values, unsigned long count);
  void _SetArray(const char* name, DATA_TYPE type, unsigned long count, const void* values,
                 unsigned long bytes);
  template <class T> void _Set(const char* name, T value) {
    Zx3D::TVariant variant;
    variant.Set(value);
    SetAttribute(name, variant);
  }
};

/// An image: "Width", "Height", and "Pixels", RGBA by rows from the bottom.
class TTextureItem : public TSceneItem {
public:
  int Index = -1; ///< in the model, once added

  void TakeFrom(const zx_scene::TTexture& texture);
  const Zx3D::TCreator* GetCreator() const override;
  const char* GetClassName() const override { return GetCreator()->GetClassName(); }
  unsigned long GetKind() const override { return Zx3D::ITEM_TEXTURE; }
  void AddTo(zx_scene::TModel* model, Zx3D::TObjectReader* reader) override;
};

/// Colours, and by "Texture" the id of an image, 0 for none.
class TMaterialItem : public TSceneItem {
public:
  int Index = -1;

  void TakeFrom(const zx_scene::TMaterial& material, unsigned long texture);
  const Zx3D::TCreator* GetCreator() const override;
  const char* GetClassName() const override { return GetCreator()->GetClassName(); }
  unsigned long GetKind() const override { return Zx3D::ITEM_MATERIAL; }
  void AddTo(zx_scene::TModel* model, Zx3D::TObjectReader* reader) override;
};

/// Vertices as arrays, one for each of their parts, indices into them, and by "Material" the id of
/// a material.
class TMeshItem : public TSceneItem {
public:
  void TakeFrom(const zx_scene::TMesh& mesh, unsigned long material);
  const Zx3D::TCreator* GetCreator() const override;
  const char* GetClassName() const override { return GetCreator()->GetClassName(); }
  unsigned long GetKind() const override { return Zx3D::ITEM_GEOMETRY; }
  void AddTo(zx_scene::TModel* model, Zx3D::TObjectReader* reader) override;
};

/// Enters the three classes in the registry, and takes them out.
void RegisterItems();
void UnregisterItems();

} // namespace scene_file
