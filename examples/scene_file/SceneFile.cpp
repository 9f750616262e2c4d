#include "SceneFile.h"

#include <map>
#include <memory>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/ZxCore3D.h>

#include "SceneItems.h"

namespace scene_file {

namespace {

using Zx3D::STORE_BLOCK;
using Zx3D::TFileStream;
using Zx3D::TObjectReader;
using Zx3D::TObjectWriter;
using Zx3D::TVariant;

constexpr char kMark[] = "ZxScene";
constexpr unsigned int kVersion = 1;

struct TRelease {
  void operator()(zx::TRef* object) const { object->Release(); }
};
template <class T> using THold = std::unique_ptr<T, TRelease>;

// --- Writing

void Check(bool written) {
  if (!written) {
    throw TZxMessage("can't be written");
  }
}

void WriteNumber(TObjectWriter* writer, DATA_TYPE type, unsigned long number) {
  TVariant value;
  value.Set(number);
  Check(SaveVariantData(writer, type, value));
}

void WriteItem(TObjectWriter* writer, TSceneItem* item) {
  STORE_BLOCK block;
  writer->WriteBlockBeginE(&block);
  Check(writer->WriteString(item->GetClassName(), ~0ul));
  WriteNumber(writer, DATA_TYPE_UINT64, item->Id);
  Check(writer->WriteString(item->GetName()));
  const Zx3D::TAttributes& attributes = *item->QueryAttributes();
  WriteNumber(writer, DATA_TYPE_UINT32, attributes.GetCount());
  for (const auto& [name, value] : attributes.GetValues()) {
    Check(SaveAttribute(writer, name, value));
  }
  writer->WriteBlockEndE(&block);
}

/// What the model's texture, material or mesh is in the file. Names of more than 31 characters are
/// cut: here they serve nobody but readers.
template <class T>
THold<T> MakeItem(const char* className, unsigned long id, const std::string& name) {
  THold<T> item(dynamic_cast<T*>(Zx3D::CreateByClassName(className)));
  item->Id = id;
  item->SetName(name.substr(0, 31));
  return item;
}

void WriteScene(TObjectWriter* writer, const zx_scene::TModel& model) {
  Check(writer->WriteString(kMark, ~0ul));
  WriteNumber(writer, DATA_TYPE_UINT32, kVersion);
  STORE_BLOCK scene;
  writer->WriteBlockBeginE(&scene);
  // Ids count from 1: textures, then materials, then meshes, so that what is named comes first.
  const unsigned long textures = model.Textures.size();
  const unsigned long materials = model.Materials.size();
  for (unsigned long i = 0; i < textures; ++i) {
    const auto item = MakeItem<TTextureItem>("Texture", 1 + i, model.Textures[i].Name);
    item->TakeFrom(model.Textures[i]);
    WriteItem(writer, item.get());
  }
  for (unsigned long i = 0; i < materials; ++i) {
    const zx_scene::TMaterial& material = model.Materials[i];
    const auto item = MakeItem<TMaterialItem>("Material", 1 + textures + i, material.Name);
    item->TakeFrom(material,
                   material.Texture < 0 ? 0 : 1 + static_cast<unsigned long>(material.Texture));
    WriteItem(writer, item.get());
  }
  for (unsigned long i = 0; i < model.Meshes.size(); ++i) {
    const zx_scene::TMesh& mesh = model.Meshes[i];
    const auto item = MakeItem<TMeshItem>("Mesh", 1 + textures + materials + i, "");
    item->TakeFrom(mesh, 1 + textures + static_cast<unsigned long>(mesh.Material));
    WriteItem(writer, item.get());
  }
  writer->WriteBlockEndE(&scene);
}

// --- Reading

/// The items so far, by kind and id: what answers the reader's queries.
using TItems = std::map<std::pair<unsigned long, unsigned long>, THold<TSceneItem>>;

unsigned long FindItem(void* context, Zx3D::QUERYHDR* query) {
  const TItems& items = *static_cast<const TItems*>(context);
  const auto found = items.find({query->Kind, query->Id});
  return query->Code != Zx3D::QUERY_FIND_ITEM || found == items.end()
             ? 0
             : reinterpret_cast<unsigned long>(found->second.get());
}

void Need(bool holds) {
  if (!holds) {
    throw TZxMessage("is damaged");
  }
}

unsigned long ReadNumber(TObjectReader* reader, DATA_TYPE type) {
  TVariant value;
  Need(LoadVariantData(reader, type, value));
  return value.Get<unsigned long>();
}

/// The position behind a block that has to end by `limit`.
long ReadBlockEnd(TFileStream* stream, long limit) {
  unsigned long size = 0;
  Need(stream->ReadAll(&size, sizeof size));
  Need(stream->GetPos() <= limit && size <= static_cast<unsigned long>(limit - stream->GetPos()));
  return stream->GetPos() + static_cast<long>(size);
}

/// Null for a class that is not known, which a later version may have: the block's size leads past
/// it.
THold<TSceneItem> ReadItem(TFileStream* stream, TObjectReader* reader, long end) {
  std::string text;
  Need(reader->ReadString(&text));
  zx::TRef* const object = Zx3D::CreateByClassName(text.c_str());
  THold<TSceneItem> item(dynamic_cast<TSceneItem*>(object));
  if (item == nullptr) {
    if (object != nullptr) {
      object->Release();
    }
    Need(stream->SetPos(end));
    return nullptr;
  }
  item->Id = ReadNumber(reader, DATA_TYPE_UINT64);
  Need(reader->ReadString(&text) && item->SetName(text));
  for (unsigned long count = ReadNumber(reader, DATA_TYPE_UINT32); count > 0; --count) {
    TVariant value;
    Need(LoadAttribute(reader, text, value));
    item->SetAttribute(text, value);
  }
  Need(stream->GetPos() == end);
  return item;
}

void ReadScene(TFileStream* stream, zx_scene::TModel* model) {
  TItems items;
  TObjectReader reader(stream, false);
  reader.SetQueryFunc(&FindItem, &items);
  char mark[sizeof kMark];
  if (!reader.ReadString(mark, sizeof mark) || std::string(mark) != kMark) {
    throw TZxMessage("is no scene file");
  }
  if (const unsigned long version = ReadNumber(&reader, DATA_TYPE_UINT32); version != kVersion) {
    throw TZxMessage("has version %1%, which is not known here") << version;
  }
  const long end = ReadBlockEnd(stream, stream->GetSize());
  while (stream->GetPos() < end) {
    const long itemEnd = ReadBlockEnd(stream, end);
    THold<TSceneItem> item = ReadItem(stream, &reader, itemEnd);
    if (item != nullptr) {
      item->AddTo(model, &reader);
      const std::pair<unsigned long, unsigned long> key(item->GetKind(), item->Id);
      Need(items.emplace(key, std::move(item)).second);
    }
  }
}

} // namespace

bool SaveScene(const std::string& name, const zx_scene::TModel& model, std::string* error) {
  TFileStream stream;
  if (!stream.Create(name)) {
    *error = "can't be made";
    return false;
  }
  TObjectWriter writer(&stream, false);
  try {
    WriteScene(&writer, model);
    Check(stream.Close());
    return true;
  } catch (const TZxMessage& message) {
    *error = message.what();
  } catch (const std::exception&) { // a block could not be begun or ended
    *error = "can't be written";
  }
  return false;
}

bool LoadScene(const std::string& name, zx_scene::TModel* model, std::string* error) {
  TFileStream stream;
  if (!stream.Open(name)) {
    *error = "can't be opened";
    return false;
  }
  try {
    ReadScene(&stream, model);
    return true;
  } catch (const std::exception& message) {
    *error = message.what();
  }
  return false;
}

} // namespace scene_file
