#include "SceneItems.h"

#include <cstring>

#include <ZxBaseKit/TZxMessage.h>

namespace scene_file {

namespace {

/// How an item of class `T` is made. Creators have to outlive their registration.
template <class T> class TItemCreator final : public Zx3D::TCreator {
public:
  explicit TItemCreator(const char* name) : TCreator(name, &Zx3D::TSelfCreatingRef::s_Creator) {}
  zx::TRef* CreateInstance() const override { return new T; }
};

const Zx3D::TCreator* TextureCreator() {
  static const TItemCreator<TTextureItem> s_creator("Texture");
  return &s_creator;
}

const Zx3D::TCreator* MaterialCreator() {
  static const TItemCreator<TMaterialItem> s_creator("Material");
  return &s_creator;
}

const Zx3D::TCreator* MeshCreator() {
  static const TItemCreator<TMeshItem> s_creator("Mesh");
  return &s_creator;
}

[[noreturn]] void Fail(const char* text, const char* name) { throw TZxMessage(text) << name; }

/// The item that the reader's host finds, as its answer to a search is meant here.
template <class T> T* ItemOf(unsigned long answer) {
  return dynamic_cast<T*>(reinterpret_cast<TSceneItem*>(answer));
}

} // namespace

void RegisterItems() {
  RegisterCreator(TextureCreator());
  RegisterCreator(MaterialCreator());
  RegisterCreator(MeshCreator());
}

void UnregisterItems() {
  UnregisterCreator(TextureCreator());
  UnregisterCreator(MaterialCreator());
  UnregisterCreator(MeshCreator());
}

// --- Attributes

void TSceneItem::_GetFloats(const char* name, float* out, unsigned long count) const {
  if (_Get(name).GetArrayDataSize() != count * sizeof(float) || !_Get(name).GetArray(out, count)) {
    Fail("\"%1%\" is no array of the right size", name);
  }
}

const void* TSceneItem::_GetArray(const char* name, DATA_TYPE type, unsigned long* count) const {
  const Zx3D::TVariant& value = _Get(name);
  if (value.Type != (type | Zx3D::TVariant::s_ArrayFlag)) {
    Fail("\"%1%\" is no array of the right type", name);
  }
  *count = value.Count;
  return value.GetArrayData(nullptr);
}

void TSceneItem::_SetFloats(const char* name, const float* values, unsigned long count) {
  _SetArray(name, DATA_TYPE_FLOAT, count, values, count * sizeof(float));
}

void TSceneItem::_SetArray(const char* name, DATA_TYPE type, unsigned long count,
                           const void* values, unsigned long bytes) {
  Zx3D::TVariant variant;
  if (!variant.SetArray(type, count, values, bytes)) {
    Fail("\"%1%\" would be an empty array, or memory is exhausted", name);
  }
  SetAttribute(name, variant);
}

// --- Texture

const Zx3D::TCreator* TTextureItem::GetCreator() const { return TextureCreator(); }

void TTextureItem::TakeFrom(const zx_scene::TTexture& texture) {
  const TDataSurface& image = texture.Image;
  const unsigned long bytes =
      static_cast<unsigned long>(image.Width) * static_cast<unsigned long>(image.Height) * 4;
  _Set("Width", image.Width);
  _Set("Height", image.Height);
  _SetArray("Pixels", DATA_TYPE_UINT8, bytes, image.Data, image.DataSize);
}

void TTextureItem::AddTo(zx_scene::TModel* model, Zx3D::TObjectReader*) {
  unsigned long count = 0;
  const void* const pixels = _GetArray("Pixels", DATA_TYPE_UINT8, &count);
  const int width = _Get("Width").Get<int>();
  const int height = _Get("Height").Get<int>();
  // The sides are held against bytes that did come before they size anything.
  if (width < 1 || height < 1 || count % 4 != 0 ||
      count / 4 / static_cast<unsigned long>(width) != static_cast<unsigned long>(height) ||
      count / 4 % static_cast<unsigned long>(width) != 0) {
    Fail("\"%1%\" don't fit the size", "Pixels");
  }
  zx_scene::TTexture& texture = model->Textures.emplace_back();
  texture.Name = GetName();
  if (!texture.Image.Create(width, height, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4)) {
    Fail("\"%1%\": memory is exhausted", "Pixels");
  }
  std::memcpy(texture.Image.Data, pixels, count);
  Index = static_cast<int>(model->Textures.size()) - 1;
}

// --- Material

const Zx3D::TCreator* TMaterialItem::GetCreator() const { return MaterialCreator(); }

void TMaterialItem::TakeFrom(const zx_scene::TMaterial& material, unsigned long texture) {
  _SetFloats("Diffuse", material.Diffuse.data(), 4);
  _SetFloats("Specular", material.Specular.data(), 4);
  _SetFloats("Emission", material.Emission.data(), 4);
  _Set("Shininess", material.Shininess);
  _Set("Texture", texture);
  _Set("WrapS", material.WrapS);
  _Set("WrapT", material.WrapT);
  _Set("TwoSided", material.TwoSided);
  _Set("CullBack", material.CullBack);
  _Set("Blended", material.Blended);
  _Set("Cutoff", material.Cutoff);
}

void TMaterialItem::AddTo(zx_scene::TModel* model, Zx3D::TObjectReader* reader) {
  zx_scene::TMaterial material;
  material.Name = GetName();
  _GetFloats("Diffuse", material.Diffuse.data(), 4);
  _GetFloats("Specular", material.Specular.data(), 4);
  _GetFloats("Emission", material.Emission.data(), 4);
  material.Shininess = _Get("Shininess").Get<float>();
  material.WrapS = _Get("WrapS").Get<unsigned int>();
  material.WrapT = _Get("WrapT").Get<unsigned int>();
  material.TwoSided = _Get("TwoSided").Get<bool>();
  material.CullBack = _Get("CullBack").Get<bool>();
  material.Blended = _Get("Blended").Get<bool>();
  // Files of before this attribute have none.
  if (const Zx3D::TVariant* cutoff = FindAttribute("Cutoff")) {
    material.Cutoff = cutoff->Get<float>();
  }
  if (const unsigned long id = _Get("Texture").Get<unsigned long>(); id != 0) {
    const TTextureItem* const texture = ItemOf<TTextureItem>(reader->FindTextureByID(id));
    if (texture == nullptr) {
      Fail("\"%1%\" names nothing that came before", "Texture");
    }
    material.Texture = texture->Index;
  }
  model->Materials.push_back(material);
  Index = static_cast<int>(model->Materials.size()) - 1;
}

// --- Mesh

const Zx3D::TCreator* TMeshItem::GetCreator() const { return MeshCreator(); }

void TMeshItem::TakeFrom(const zx_scene::TMesh& mesh, unsigned long material) {
  std::vector<float> positions, normals, coords;
  std::vector<std::uint8_t> colors;
  for (const zx_scene::TVertex& vertex : mesh.Vertices) {
    positions.insert(positions.end(), vertex.Position, vertex.Position + 3);
    normals.insert(normals.end(), vertex.Normal, vertex.Normal + 3);
    coords.insert(coords.end(), vertex.TexCoord, vertex.TexCoord + 2);
    colors.insert(colors.end(), vertex.Color, vertex.Color + 4);
  }
  _SetFloats("Positions", positions.data(), positions.size());
  _SetFloats("Normals", normals.data(), normals.size());
  _SetFloats("TexCoords", coords.data(), coords.size());
  _SetArray("Colors", DATA_TYPE_UINT8, colors.size(), colors.data(), colors.size());
  _SetArray("Indices", DATA_TYPE_UINT32, mesh.Indices.size(), mesh.Indices.data(),
            mesh.Indices.size() * sizeof(std::uint32_t));
  _Set("Corners", mesh.Corners);
  _Set("HasColors", mesh.HasColors);
  _Set("Material", material);
}

void TMeshItem::AddTo(zx_scene::TModel* model, Zx3D::TObjectReader* reader) {
  zx_scene::TMesh mesh;
  mesh.Corners = _Get("Corners").Get<int>();
  mesh.HasColors = _Get("HasColors").Get<bool>();
  if (mesh.Corners < 1 || mesh.Corners > 3) {
    Fail("\"%1%\" are 1, 2 or 3", "Corners");
  }
  const TMaterialItem* const material =
      ItemOf<TMaterialItem>(reader->FindMaterialByID(_Get("Material").Get<unsigned long>()));
  if (material == nullptr) {
    Fail("\"%1%\" names nothing that came before", "Material");
  }
  mesh.Material = material->Index;

  unsigned long floats = 0;
  const float* const positions =
      static_cast<const float*>(_GetArray("Positions", DATA_TYPE_FLOAT, &floats));
  const unsigned long count = floats / 3;
  if (floats % 3 != 0) {
    Fail("\"%1%\" are not three for each vertex", "Positions");
  }
  std::vector<float> normals(3 * count), coords(2 * count);
  _GetFloats("Normals", normals.data(), normals.size());
  _GetFloats("TexCoords", coords.data(), coords.size());
  unsigned long bytes = 0;
  const std::uint8_t* const colors =
      static_cast<const std::uint8_t*>(_GetArray("Colors", DATA_TYPE_UINT8, &bytes));
  if (bytes != 4 * count) {
    Fail("\"%1%\" are not four for each vertex", "Colors");
  }
  mesh.Vertices.resize(count);
  for (unsigned long i = 0; i < count; ++i) {
    zx_scene::TVertex& vertex = mesh.Vertices[i];
    std::memcpy(vertex.Position, positions + 3 * i, sizeof vertex.Position);
    std::memcpy(vertex.Normal, &normals[3 * i], sizeof vertex.Normal);
    std::memcpy(vertex.TexCoord, &coords[2 * i], sizeof vertex.TexCoord);
    std::memcpy(vertex.Color, colors + 4 * i, sizeof vertex.Color);
  }

  unsigned long indices = 0;
  const std::uint32_t* const first =
      static_cast<const std::uint32_t*>(_GetArray("Indices", DATA_TYPE_UINT32, &indices));
  mesh.Indices.assign(first, first + indices);
  for (const std::uint32_t index : mesh.Indices) {
    if (index >= count) {
      Fail("\"%1%\" run past the vertices", "Indices");
    }
  }
  model->Meshes.push_back(std::move(mesh));
}

} // namespace scene_file
