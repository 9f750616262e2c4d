#include "Scene.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>

#include "Samples.h"
#include "Shaders.h"

namespace zx_scene {

namespace {

using TEdge = std::pair<std::uint32_t, std::uint32_t>;

// Each edge of the triangles once.
std::vector<std::uint32_t> _Edges(const TMesh& mesh) {
  std::vector<TEdge> edges;
  edges.reserve(mesh.Indices.size());
  for (std::size_t i = 0; i + 2 < mesh.Indices.size(); i += 3) {
    for (std::size_t c = 0; c < 3; ++c) {
      edges.push_back(std::minmax({mesh.Indices[i + c], mesh.Indices[i + (c + 1) % 3]}));
    }
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  std::vector<std::uint32_t> indices;
  indices.reserve(2 * edges.size());
  for (const TEdge& edge : edges) {
    indices.push_back(edge.first);
    indices.push_back(edge.second);
  }
  return indices;
}

const void* _Offset(std::size_t offset) { return reinterpret_cast<const void*>(offset); }

// A colour for lines that shows on a background.
TColor _Contrast(const TColor& background) {
  const float light = 0.3f * background[0] + 0.6f * background[1] + 0.1f * background[2];
  return light * background[3] > 0.5f ? TColor{0.1f, 0.13f, 0.2f, 1} : TColor{0.9f, 0.92f, 1, 1};
}

// The name of the error of OpenGL with that number.
std::string _ErrorText(unsigned int code) {
  switch (code) {
  case GL_INVALID_ENUM:
    return "the context reports GL_INVALID_ENUM";
  case GL_INVALID_VALUE:
    return "the context reports GL_INVALID_VALUE";
  case GL_INVALID_OPERATION:
    return "the context reports GL_INVALID_OPERATION";
  default:
    return "the context reports the error " + std::to_string(code);
  }
}

std::string _NoMemory(int width, int height) {
  return "no memory for surfaces of " + std::to_string(width) + " by " + std::to_string(height) +
         " pixels";
}

// A program of a pair of shaders, either of which may be null; they belong to it alone.
Zx3D::TProgramCPU* _MakeProgram(Zx3D::TVertexShaderCPU* vertex,
                                Zx3D::TFragmentShaderCPU* fragment) {
  auto* program = new Zx3D::TProgramCPU;
  program->SetShaderV(vertex);
  program->SetShaderF(fragment);
  if (vertex != nullptr) {
    vertex->Release();
  }
  fragment->Release();
  return program;
}

} // namespace

bool TScene::Create(const TModel& model, int width, int height, const TStyle& style,
                    std::string* error, bool zUp) {
  m_Model = &model;
  m_Style = style;
  m_ZUp = zUp;
  m_Width = width;
  m_Height = height;
  m_Side = style.Samples >= 16 ? 4 : style.Samples >= 4 ? 2 : 1;
  if (!m_GL.Create(m_Side * width, m_Side * height, nullptr)) {
    *error = _NoMemory(m_Side * width, m_Side * height);
    return false;
  }
  m_Cutout.reset(_MakeProgram(nullptr, new TCutoutShader));
  m_Layers.reset(_MakeProgram(new TLayerVertexShader, new TLayerFragmentShader));
  _MakeTextures();
  for (const TMesh& mesh : model.Meshes) {
    _MakePart(mesh);
  }
  m_GL.EnableDepthTest(true);
  m_GL.Enable(GL_NORMALIZE);
  m_GL.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  m_GL.ClearColor(style.Background[0], style.Background[1], style.Background[2],
                  style.Background[3]);
  _SetLights();
  if (const unsigned int code = m_GL.GetError(); code != 0) {
    *error = _ErrorText(code);
    return false;
  }
  return true;
}

void TScene::_MakeTextures() {
  m_Textures.resize(m_Model->Textures.size());
  m_GL.GenTextures(static_cast<int>(m_Textures.size()), m_Textures.data());
  for (std::size_t i = 0; i < m_Textures.size(); ++i) {
    const TDataSurface& image = m_Model->Textures[i].Image;
    m_GL.BindTexture(GL_TEXTURE_2D, m_Textures[i]);
    m_GL.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image.Width, image.Height, 0, GL_RGBA,
                    GL_UNSIGNED_BYTE, image.Data);
  }
  const unsigned int filter = m_Style.Linear ? GL_LINEAR : GL_NEAREST;
  m_GL.TexFilter2D(filter, filter);
  m_GL.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
}

void TScene::_MakePart(const TMesh& mesh) {
  const bool wire = m_Style.Wire && mesh.Corners == 3;
  std::vector<std::uint32_t> edges;
  if (wire) {
    edges = _Edges(mesh);
  }
  const std::vector<std::uint32_t>& indices = wire ? edges : mesh.Indices;
  TPart part;
  part.Mesh = &mesh;
  part.Mode = wire || mesh.Corners == 2 ? GL_LINES : mesh.Corners == 1 ? GL_POINTS : GL_TRIANGLES;
  part.Count = static_cast<int>(indices.size());
  for (const std::uint32_t index : mesh.Indices) {
    for (std::size_t c = 0; c < 3; ++c) {
      part.Center[c] += mesh.Vertices[index].Position[c];
    }
  }
  for (double& c : part.Center) {
    c /= static_cast<double>(mesh.Indices.size());
  }
  m_GL.GenBuffers(1, &part.Vertices);
  m_GL.BindBuffer(GL_ARRAY_BUFFER, part.Vertices);
  m_GL.BufferData(GL_ARRAY_BUFFER, static_cast<long>(mesh.Vertices.size() * sizeof(TVertex)),
                  mesh.Vertices.data(), GL_STATIC_DRAW);
  m_GL.GenBuffers(1, &part.Indices);
  m_GL.BindBuffer(GL_ELEMENT_ARRAY_BUFFER, part.Indices);
  m_GL.BufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<long>(indices.size() * sizeof(indices[0])),
                  indices.data(), GL_STATIC_DRAW);
  m_Parts.push_back(part);
}

// The matrices are the identity here, so the lights stand with the camera: one above on the left
// that makes the forms, one on the right that opens the shadows. A fixed key light is moved with
// each camera.
void TScene::_SetLights() {
  const float ambient[] = {0.22f, 0.22f, 0.24f, 1};
  const float black[] = {0, 0, 0, 1};
  const float key[] = {0.78f, 0.77f, 0.74f, 1};
  const float keyFrom[] = {-0.45f, 0.6f, 0.7f, 0};
  const float fill[] = {0.22f, 0.23f, 0.27f, 1};
  const float fillFrom[] = {0.8f, 0.05f, 0.5f, 0};
  m_GL.LightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
  m_GL.Lightfv(GL_LIGHT0, GL_AMBIENT, black);
  m_GL.Lightfv(GL_LIGHT0, GL_DIFFUSE, key);
  m_GL.Lightfv(GL_LIGHT0, GL_SPECULAR, key);
  m_GL.Lightfv(GL_LIGHT0, GL_POSITION, keyFrom);
  m_GL.Lightfv(GL_LIGHT1, GL_AMBIENT, black);
  m_GL.Lightfv(GL_LIGHT1, GL_DIFFUSE, fill);
  m_GL.Lightfv(GL_LIGHT1, GL_SPECULAR, black);
  m_GL.Lightfv(GL_LIGHT1, GL_POSITION, fillFrom);
  m_GL.EnableLight(0, true);
  m_GL.EnableLight(1, true);
}

void TScene::_SetMaterial(const TMaterial& material, bool hasColors) {
  // One call for both faces would change the front alone.
  static constexpr unsigned int kFaces[] = {GL_FRONT, GL_BACK};
  for (const unsigned int face : kFaces) {
    m_GL.Materialfv(face, GL_AMBIENT, material.Diffuse.data());
    m_GL.Materialfv(face, GL_DIFFUSE, material.Diffuse.data());
    m_GL.Materialfv(face, GL_SPECULAR, material.Specular.data());
    m_GL.Materialfv(face, GL_EMISSION, material.Emission.data());
    m_GL.Materialf(face, GL_SHININESS, material.Shininess);
  }
  m_GL.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, material.TwoSided ? 1 : 0);
  m_GL.EnableCullFace(material.CullBack);
  if (hasColors) {
    m_GL.Enable(GL_COLOR_MATERIAL);
  } else {
    m_GL.Disable(GL_COLOR_MATERIAL);
  }
}

// Everything of a part but its colours.
void TScene::_BindPart(const TPart& part) {
  const TMaterial& material = m_Model->Materials[static_cast<std::size_t>(part.Mesh->Material)];
  if (part.Mode == GL_TRIANGLES && material.Texture >= 0) {
    m_GL.BindTexture(GL_TEXTURE_2D, m_Textures[static_cast<std::size_t>(material.Texture)]);
    m_GL.TexWrap2D(material.WrapS, material.WrapT);
    m_GL.Enable(GL_TEXTURE_2D);
  } else {
    m_GL.Disable(GL_TEXTURE_2D);
  }
  m_GL.BindBuffer(GL_ARRAY_BUFFER, part.Vertices);
  m_GL.BindBuffer(GL_ELEMENT_ARRAY_BUFFER, part.Indices);
  const int stride = static_cast<int>(sizeof(TVertex));
  m_GL.VertexPointer(3, GL_FLOAT, stride, _Offset(offsetof(TVertex, Position)));
  m_GL.NormalPointer(GL_FLOAT, stride, _Offset(offsetof(TVertex, Normal)));
  m_GL.TexCoordPointer(2, GL_FLOAT, stride, _Offset(offsetof(TVertex, TexCoord)));
  m_GL.ColorPointer(4, GL_UNSIGNED_BYTE, stride, _Offset(offsetof(TVertex, Color)));
  m_GL.EnableClientState(GL_VERTEX_ARRAY);
  m_GL.EnableClientState(GL_NORMAL_ARRAY);
  m_GL.EnableClientState(GL_TEXTURE_COORD_ARRAY);
  if (part.Mesh->HasColors && !m_Style.Wire) {
    m_GL.EnableClientState(GL_COLOR_ARRAY);
  } else {
    m_GL.DisableClientState(GL_COLOR_ARRAY);
  }
}

void TScene::_DrawPart(const TPart& part, const TCamera& camera) {
  const TMesh& mesh = *part.Mesh;
  const TMaterial& material = m_Model->Materials[static_cast<std::size_t>(mesh.Material)];
  const bool filled = part.Mode == GL_TRIANGLES;
  _SetMaterial(material, mesh.HasColors);
  m_GL.EnableLighting(filled && m_Style.Light != TLight::None);
  m_GL.Color4fv(m_Style.Wire ? _Contrast(m_Style.Background).data() : material.Diffuse.data());
  _BindPart(part);
  if (filled) {
    const bool cutout = material.Cutoff > 0;
    if (cutout) {
      m_GL.SetProgram(m_Cutout.get());
      m_GL.Uniform(kCutoffCell, double{material.Cutoff});
    }
    m_GL.DrawElements(part.Mode, part.Count, GL_UNSIGNED_INT, nullptr);
    if (cutout) {
      m_GL.SetProgram(nullptr);
    }
    return;
  }
  // A line of one sample would fade: it is drawn so often, side by side, that it fills a pixel.
  for (int i = 0; i < m_Side * m_Side; ++i) {
    const int row = i / m_Side;
    _SetCamera(camera, i % m_Side, row);
    m_GL.DrawElements(part.Mode, part.Count, GL_UNSIGNED_INT, nullptr);
  }
  _SetCamera(camera, 0, 0);
}

// Opaque parts first; then the blended ones from the farthest to the nearest, which leave the depth
// as it is.
void TScene::_DrawParts(const TCamera& camera) {
  std::vector<std::pair<double, const TPart*>> blended;
  m_GL.EnableBlend(false);
  for (const TPart& part : m_Parts) {
    if (!m_Model->Materials[static_cast<std::size_t>(part.Mesh->Material)].Blended) {
      _DrawPart(part, camera);
      continue;
    }
    const double z = camera.View[2] * part.Center[0] + camera.View[6] * part.Center[1] +
                     camera.View[10] * part.Center[2];
    blended.emplace_back(z, &part);
  }
  std::sort(blended.begin(), blended.end()); // equally far ones in the order of the model
  m_GL.EnableBlend(true);
  m_GL.DepthMask(0);
  // What is blended over an opaque picture leaves it opaque.
  m_GL.ColorMask(1, 1, 1, m_Style.Background[3] < 1 ? 1 : 0);
  for (const auto& entry : blended) {
    _DrawPart(*entry.second, camera);
  }
  m_GL.ColorMask(1, 1, 1, 1);
  m_GL.DepthMask(1);
  m_GL.EnableBlend(false);
}

// The shifts are in samples.
void TScene::_SetCamera(const TCamera& camera, double shiftX, double shiftY) {
  m_GL.MatrixMode(GL_PROJECTION);
  m_GL.LoadIdentity();
  if (shiftX != 0 || shiftY != 0) {
    m_GL.Translated(2 * shiftX / (m_Side * m_Width), 2 * shiftY / (m_Side * m_Height), 0);
  }
  const double scale = camera.Orthographic ? 1 : camera.Near;
  const double right = camera.HalfWidth * scale;
  const double top = camera.HalfHeight * scale;
  if (camera.Orthographic) {
    m_GL.Ortho(-right, right, -top, top, camera.Near, camera.Far);
  } else {
    m_GL.Frustum(-right, right, -top, top, camera.Near, camera.Far);
  }
  m_GL.MatrixMode(GL_MODELVIEW);
  m_GL.LoadMatrixd(camera.View);
}

bool TScene::_SetSize(int width, int height, std::string* error) {
  const TDataSurface* surface = m_GL.GetColorSurface();
  if ((surface == nullptr || surface->Width != width || surface->Height != height) &&
      !m_GL.SetSize(width, height)) {
    *error = _NoMemory(width, height);
    return false;
  }
  return true;
}

bool TScene::Draw(const TCamera& camera, std::string* error) {
  if (!_SetSize(m_Side * m_Width, m_Side * m_Height, error)) {
    return false;
  }
  m_GL.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  _SetCamera(camera, 0, 0);
  if (m_Style.Light == TLight::Fixed) {
    const TPoint from = DirectionOf(m_Style.LightAzimuth, m_Style.LightElevation, m_ZUp);
    const float position[] = {static_cast<float>(from[0]), static_cast<float>(from[1]),
                              static_cast<float>(from[2]), 0};
    m_GL.Lightfv(GL_LIGHT0, GL_POSITION, position);
  }
  _DrawParts(camera);
  if (const unsigned int code = m_GL.GetError(); code != 0) {
    *error = _ErrorText(code);
    return false;
  }
  return true;
}

void TScene::_DrawLayer(const TCamera& camera, bool ids) {
  m_GL.Clear(GL_DEPTH_BUFFER_BIT);
  _SetCamera(camera, 0, 0);
  m_GL.EnableLighting(false);
  m_GL.EnableCullFace(false);
  m_GL.Disable(GL_COLOR_MATERIAL);
  m_GL.SetProgram(m_Layers.get());
  for (const TPart& part : m_Parts) {
    const TMaterial& material = m_Model->Materials[static_cast<std::size_t>(part.Mesh->Material)];
    const double id = static_cast<double>(part.Mesh - m_Model->Meshes.data()) + 1;
    m_GL.Uniform(kCutoffCell, material.Blended ? 0.5 : double{material.Cutoff});
    m_GL.Uniform(kIdCell, ids ? id : 0.0);
    m_GL.EnableCullFace(material.CullBack);
    m_GL.Color4fv(material.Diffuse.data());
    _BindPart(part);
    m_GL.DrawElements(part.Mode, part.Count, GL_UNSIGNED_INT, nullptr);
  }
  m_GL.SetProgram(nullptr);
}

bool TScene::DrawLayers(const TCamera& camera, TLayers* out, std::string* error) {
  TDataSurface values;
  if (!_SetSize(m_Width, m_Height, error)) {
    return false;
  }
  if (!values.Create(m_Width, m_Height, DATA_FORMAT_RGBA, DATA_TYPE_DOUBLE, 4)) {
    *error = _NoMemory(m_Width, m_Height);
    return false;
  }
  const auto count = static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height);
  out->Width = m_Width;
  out->Height = m_Height;
  constexpr double kNothing[4] = {std::numeric_limits<double>::infinity(), 0, 0, 0};
  ds::Fill(values, kNothing, sizeof kNothing);
  m_GL.SetDrawBuffer(&values);
  _DrawLayer(camera, false);
  out->Depth.resize(count);
  out->Normals.resize(3 * count);
  const auto* pixel = reinterpret_cast<const double*>(values.Data);
  for (std::size_t i = 0; i < count; ++i, pixel += 4) {
    out->Depth[i] = static_cast<float>(pixel[0]);
    for (std::size_t c = 0; c < 3; ++c) {
      out->Normals[3 * i + c] = static_cast<float>(pixel[1 + c]);
    }
  }
  constexpr double kZero[4] = {};
  ds::Fill(values, kZero, sizeof kZero);
  _DrawLayer(camera, true);
  m_GL.SetDrawBuffer(nullptr);
  out->Ids.resize(count);
  pixel = reinterpret_cast<const double*>(values.Data);
  for (std::size_t i = 0; i < count; ++i, pixel += 4) {
    out->Ids[i] = static_cast<std::uint32_t>(pixel[0]);
  }
  if (const unsigned int code = m_GL.GetError(); code != 0) {
    *error = _ErrorText(code);
    return false;
  }
  return true;
}

const std::vector<std::uint8_t>& TScene::ReadPicture() {
  m_Picture.resize(static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height) * 4);
  AverageSamples(*m_GL.GetColorSurface(), m_Side, m_Picture.data());
  return m_Picture;
}

DATASURFACE TScene::Picture() const {
  DATASURFACE picture = {};
  if (!m_Picture.empty() &&
      ds::Set(&picture, m_Width, m_Height, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4,
              m_Picture.data()) &&
      m_Style.Background[3] >= 1) {
    picture.Format = DATA_FORMAT_RGB;
    picture.Channels = 3; // the pixels keep their distance of four bytes
  }
  return picture;
}

bool TScene::Save(const std::string& name) const { return SaveImage(name, nullptr, Picture()); }

std::size_t TScene::CountCovered() {
  const TDataSurface* depth = m_GL.GetDepthSurface();
  const int side = depth->Width / m_Width; // layers have one sample a pixel
  std::vector<bool> covered(static_cast<std::size_t>(m_Width));
  std::size_t count = 0;
  for (int y = 0; y < depth->Height; ++y) {
    const auto* row = reinterpret_cast<const float*>(depth->Data + static_cast<std::ptrdiff_t>(y) *
                                                                       depth->RowStride);
    for (int x = 0; x < depth->Width; ++x) {
      if (row[x] < 1) {
        covered[static_cast<std::size_t>(x / side)] = true;
      }
    }
    if ((y + 1) % side == 0) {
      count += static_cast<std::size_t>(std::count(covered.begin(), covered.end(), true));
      covered.assign(covered.size(), false);
    }
  }
  return count;
}

} // namespace zx_scene
