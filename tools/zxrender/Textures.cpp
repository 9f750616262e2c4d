#include "Textures.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <utility>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/object/TMemoryStream.h>
#include <ZxCore3D/object/TStdStream.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>
#include <assimp/scene.h>

namespace fs = std::filesystem;

namespace zx_scene {

namespace {

bool _SameText(const std::string& left, const std::string& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  });
}

// Model files carry paths of the machine they were made on: the path as it is, beside the model,
// its last part beside the model, and that in any case of letters.
std::string _FindFile(const std::string& modelName, std::string name) {
  std::replace(name.begin(), name.end(), '\\', '/');
  const fs::path directory = fs::path(modelName).parent_path();
  const fs::path path(name);
  std::error_code error;
  // A path from the root replaces the directory in the first, and is appended in the second.
  for (const fs::path& tried :
       {directory / path, directory / path.relative_path(), directory / path.filename()}) {
    if (fs::is_regular_file(tried, error)) {
      return tried.string();
    }
  }
  fs::directory_iterator entries(directory.empty() ? fs::path(".") : directory, error);
  for (const fs::directory_iterator end; !error && entries != end; entries.increment(error)) {
    if (_SameText(entries->path().filename().string(), path.filename().string()) &&
        entries->is_regular_file(error)) {
      return entries->path().string();
    }
  }
  return std::string();
}

// One component of any kind, brought to 8 bits.
std::uint8_t _To8(const std::uint8_t* from, DATA_TYPE type) {
  if (type == DATA_TYPE_UINT16) {
    std::uint16_t value;
    std::memcpy(&value, from, sizeof value);
    return static_cast<std::uint8_t>((value * 255u + 32767u) / 65535u);
  }
  if (type == DATA_TYPE_FLOAT) {
    float value;
    std::memcpy(&value, from, sizeof value);
    // A comparison that a NaN does not pass.
    return value > 0 ? static_cast<std::uint8_t>(std::min(value, 1.0f) * 255 + 0.5f)
                     : std::uint8_t{0};
  }
  return *from;
}

bool _ToRGBA(const DATASURFACE& from, bool opaque, TDataSurface* out) {
  if (!out->Create(from.Width, from.Height, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4)) {
    return false;
  }
  const int channels = from.Channels;
  const auto step = static_cast<int>(GetTypeSize(from.Type));
  for (int y = 0; y < from.Height; ++y) {
    const std::uint8_t* source = from.Data + static_cast<std::ptrdiff_t>(y) * from.RowStride;
    std::uint8_t* target = out->Data + static_cast<std::ptrdiff_t>(y) * out->RowStride;
    for (int x = 0; x < from.Width; ++x, source += from.PixelStride, target += 4) {
      for (int c = 0; c < 3; ++c) {
        target[c] = _To8(source + (channels >= 3 ? c * step : 0), from.Type);
      }
      const bool alpha = !opaque && (channels == 2 || channels == 4);
      target[3] = alpha ? _To8(source + (channels - 1) * step, from.Type) : std::uint8_t{255};
    }
  }
  return true;
}

// Texels that stand in the model file plainly, the top row first.
bool _FromTexels(const aiTexture& texture, DATASURFACE* out) {
  constexpr unsigned int kMost = 1 << 15;
  DATASURFACE made;
  if (texture.mWidth > kMost || texture.mHeight > kMost ||
      !ds::Set(&made, static_cast<int>(texture.mWidth), static_cast<int>(texture.mHeight),
               DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, nullptr)) {
    return false;
  }
  made.Data = AllocateSurfaceBlock(made.DataSize, static_cast<std::uint64_t>(made.RowStride), 4);
  if (made.Data == nullptr) {
    return false;
  }
  std::uint8_t* target = made.Data;
  for (unsigned int y = texture.mHeight; y-- > 0;) {
    const aiTexel* source = texture.pcData + std::size_t{y} * texture.mWidth;
    for (unsigned int x = 0; x < texture.mWidth; ++x, ++source, target += 4) {
      const std::uint8_t rgba[] = {source->r, source->g, source->b, source->a};
      std::memcpy(target, rgba, 4);
    }
  }
  *out = made;
  return true;
}

} // namespace

TTextureLoader::TTextureLoader(const aiScene& scene, std::string modelName, TModel* out,
                               std::vector<std::string>* warnings)
    : m_Scene(scene), m_ModelName(std::move(modelName)), m_Model(out), m_Warnings(warnings) {}

bool TTextureLoader::_Load(const std::string& name, DATASURFACE* out, std::string* reason) const {
  TZxMessage message;
  if (const aiTexture* embedded = m_Scene.GetEmbeddedTexture(name.c_str())) {
    if (embedded->mHeight != 0) {
      *reason = "its texels in the model file make no image";
      return _FromTexels(*embedded, out);
    }
    Zx3D::TMemoryStream bytes(embedded->pcData, embedded->mWidth, false);
    Zx3D::TStdStream stream(&bytes);
    const bool loaded = LoadImage(&stream, nullptr, out, &message);
    *reason = std::string("the image in the model file: ") + message.what();
    return loaded;
  }
  const std::string file = _FindFile(m_ModelName, name);
  if (file.empty()) {
    *reason = "not found";
    return false;
  }
  const bool loaded = LoadImage(file, nullptr, out, &message);
  *reason = message.what();
  return loaded;
}

int TTextureLoader::Get(const std::string& name, bool opaque) {
  const auto key = std::make_pair(name, opaque);
  if (const auto known = m_Known.find(key); known != m_Known.end()) {
    return known->second;
  }
  int index = -1;
  DATASURFACE image = {};
  std::string reason;
  if (_Load(name, &image, &reason)) {
    TTexture& texture = m_Model->Textures.emplace_back();
    texture.Name = name;
    if (_ToRGBA(image, opaque, &texture.Image)) {
      index = static_cast<int>(m_Model->Textures.size()) - 1;
    } else {
      m_Model->Textures.pop_back();
      reason = "not enough memory";
    }
    FreeDataSurfaceData(image);
  }
  if (index < 0) {
    m_Warnings->push_back("texture '" + name + "': " + reason + "; drawn without it");
  }
  m_Known[key] = index;
  return index;
}

} // namespace zx_scene
