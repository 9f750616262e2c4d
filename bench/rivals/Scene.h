#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Meshes.h"

/// What workloads are written with. `TGl` offers the calls of an OpenGL 1.x context as members;
/// beside it stand the functions `Switch(gl, cap, on)` and `WriteDepth(gl, on)`.
namespace rivals {

enum class TSubmission { Immediate, Arrays, Elements };

/// What a texture shows: any bytes; any with an alpha of 1 throughout, as most pictures have;
/// squares of black and white.
enum class TTexelKind { Noise, Opaque, Checkers };

/// One of the ways in which a family is drawn.
struct TVariant {
  std::string Family;
  std::string Name;
  std::function<void()> SetUp; ///< run once, in a new context
  std::function<void()> Frame; ///< what is timed; leaves the same picture each time
  std::string Unit = "-";      ///< "pixels" or "vertices" where there is no rival to compare with
};

template <class TGl> class TScene {
public:
  explicit TScene(TGl& gl) : Gl(gl) {}

  /// Adds a variant that is drawn by `Frame`.
  void Add(const char* family, const char* name, std::function<void()> setUp) {
    Add(family, name, std::move(setUp), [this] { Frame(); });
  }
  void Add(const char* family, const char* name, std::function<void()> setUp,
           std::function<void()> frame) {
    Variants.push_back({family, name, std::move(setUp), std::move(frame)});
  }

  // --- State

  void Start() {
    Gl.ClearColor(0.1f, 0.1f, 0.1f, 1.0f);
    Gl.ClearStencil(0);
    Gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    Gl.Hint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    Gl.Color4f(0.7f, 0.4f, 0.2f, 1.0f);
    WriteDepth(Gl, false);
  }

  void Depth(unsigned int func) {
    Switch(Gl, GL_DEPTH_TEST, true);
    Gl.DepthFunc(func);
    WriteDepth(Gl, true);
    ClearEach |= GL_DEPTH_BUFFER_BIT;
  }

  void Stencil(unsigned int func, int ref, unsigned int zfail, unsigned int zpass) {
    Switch(Gl, GL_STENCIL_TEST, true);
    Gl.StencilFunc(func, ref, 0xFF);
    Gl.StencilOp(GL_KEEP, zfail, zpass);
    ClearEach |= GL_STENCIL_BUFFER_BIT;
  }

  void Blend() {
    Switch(Gl, GL_BLEND, true);
    Gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    ClearEach |= GL_COLOR_BUFFER_BIT; // it adds up otherwise
  }

  void Cull(unsigned int face) {
    Switch(Gl, GL_CULL_FACE, true);
    Gl.CullFace(face);
  }

  void Perspective() {
    Gl.MatrixMode(GL_PROJECTION);
    Gl.LoadIdentity();
    Gl.Frustum(-1, 1, -1, 1, 1, 100);
    Gl.MatrixMode(GL_MODELVIEW);
    Gl.LoadIdentity();
  }

  /// The same seen in parallel: what is one away is as large.
  void Flat() {
    Gl.MatrixMode(GL_PROJECTION);
    Gl.LoadIdentity();
    Gl.Ortho(-1, 1, -1, 1, -1, 10);
    Gl.MatrixMode(GL_MODELVIEW);
  }

  void Rotate(float degrees) {
    Gl.MatrixMode(GL_MODELVIEW);
    Gl.Rotatef(degrees, 0, 0, 1);
  }

  /// Random texels, modulated by the colour unless told otherwise. Rows are a multiple of four
  /// bytes.
  void Texture(unsigned int filter, unsigned int wrap = GL_REPEAT, int width = 256,
               int height = 256, unsigned int mode = GL_MODULATE, unsigned int format = GL_RGBA,
               TTexelKind kind = TTexelKind::Noise) {
    const int channels = format == GL_LUMINANCE ? 1 : format == GL_RGB ? 3 : 4;
    std::vector<unsigned char> texels(static_cast<std::size_t>(channels * width * height));
    TRandom random;
    for (int i = 0; i < channels * width * height; ++i) {
      const bool isAlpha = i % channels == 3;
      const int texel = i / channels;
      const bool isWhite = (texel % width / 16 + texel / width / 16) % 2 == 0;
      unsigned char& byte = texels[static_cast<std::size_t>(i)];
      byte = static_cast<unsigned char>(random.Next(0, 255.9f));
      if (kind != TTexelKind::Noise && (isAlpha || kind == TTexelKind::Checkers)) {
        byte = isAlpha || isWhite ? 255 : 0;
      }
    }
    unsigned int id = 0;
    Gl.GenTextures(1, &id);
    Gl.BindTexture(GL_TEXTURE_2D, id);
    for (const unsigned int name : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER}) {
      Gl.TexParameteri(GL_TEXTURE_2D, name, static_cast<int>(filter));
    }
    for (const unsigned int name : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T}) {
      Gl.TexParameteri(GL_TEXTURE_2D, name, static_cast<int>(wrap));
    }
    Gl.TexImage2D(GL_TEXTURE_2D, 0, static_cast<int>(format), width, height, 0, format,
                  GL_UNSIGNED_BYTE, texels.data());
    Gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, static_cast<int>(mode));
    Switch(Gl, GL_TEXTURE_2D, true);
  }

  /// Lights above and around the picture; with `shininess` above 0 they have a highlight.
  void Lights(int lights, bool positional, float shininess = 0) {
    Switch(Gl, GL_LIGHTING, true);
    for (int i = 0; i < lights; ++i) {
      const unsigned int light = GL_LIGHT0 + static_cast<unsigned int>(i);
      const float position[4] = {1.0f - static_cast<float>(i), 1.0f, 2.0f,
                                 positional ? 1.0f : 0.0f};
      const float diffuse[4] = {0.7f, 0.6f, 0.5f, 1.0f};
      const float specular[4] = {0.6f, 0.8f, 0.7f, 1.0f};
      Gl.Lightfv(light, GL_POSITION, position);
      Gl.Lightfv(light, GL_DIFFUSE, diffuse);
      Gl.Lightfv(light, GL_SPECULAR, specular);
      Switch(Gl, light, true);
    }
    if (shininess > 0) {
      const float white[4] = {1.0f, 0.9f, 0.8f, 1.0f};
      Gl.Materialfv(GL_FRONT_AND_BACK, GL_SPECULAR, white);
      Gl.Materialf(GL_FRONT_AND_BACK, GL_SHININESS, shininess);
      // The specular part is added to a texel, not multiplied with it.
      Gl.LightModeli(GL_LIGHT_MODEL_COLOR_CONTROL, GL_SEPARATE_SPECULAR_COLOR);
    }
  }

  // --- Drawing

  /// What `Frame` draws.
  void Use(TMesh mesh, unsigned int mode, TSubmission by = TSubmission::Arrays) {
    Mesh = by == TSubmission::Elements || mesh.Indices.empty() ? std::move(mesh) : Flattened(mesh);
    if (by == TSubmission::Elements && Mesh.Indices.empty()) {
      Number(&Mesh);
    }
    Mode = mode;
    By = by;
    if (by == TSubmission::Immediate) {
      return;
    }
    Gl.EnableClientState(GL_VERTEX_ARRAY);
    Gl.VertexPointer(3, GL_FLOAT, 0, Mesh.Positions.data());
    if (!Mesh.Normals.empty()) {
      Gl.EnableClientState(GL_NORMAL_ARRAY);
      Gl.NormalPointer(GL_FLOAT, 0, Mesh.Normals.data());
    }
    if (!Mesh.Colors.empty()) {
      Gl.EnableClientState(GL_COLOR_ARRAY);
      Gl.ColorPointer(4, GL_FLOAT, 0, Mesh.Colors.data());
    }
    if (!Mesh.TexCoords.empty()) {
      Gl.EnableClientState(GL_TEXTURE_COORD_ARRAY);
      Gl.TexCoordPointer(2, GL_FLOAT, 0, Mesh.TexCoords.data());
    }
  }

  /// As `Use`, in one colour.
  void UseConstant(TMesh mesh, unsigned int mode, TSubmission by = TSubmission::Arrays,
                   float alpha = 1) {
    mesh.Colors.clear();
    Gl.Color4f(0.7f, 0.4f, 0.2f, alpha);
    Use(std::move(mesh), mode, by);
  }

  void Draw() {
    const int all =
        By == TSubmission::Elements ? static_cast<int>(Mesh.Indices.size()) : Mesh.Vertices();
    const int run = Mesh.Run != 0 ? Mesh.Run : all;
    for (int first = 0; first < all; first += run) {
      switch (By) {
      case TSubmission::Immediate:
        Submit(first, run);
        break;
      case TSubmission::Arrays:
        Gl.DrawArrays(Mode, first, run);
        break;
      case TSubmission::Elements:
        Gl.DrawElements(Mode, run, GL_UNSIGNED_INT, Mesh.Indices.data() + first);
        break;
      }
    }
  }

  void Frame() {
    if (ClearEach != 0) {
      Gl.Clear(ClearEach);
    }
    Draw();
  }

  TGl& Gl;
  TMesh Mesh;
  unsigned int Mode = 0;
  TSubmission By = TSubmission::Arrays;
  unsigned int ClearEach = 0; ///< what `Frame` clears first
  std::vector<unsigned char> Pixels = std::vector<unsigned char>(4 * kSize * kSize, 120);
  double Items = 0; ///< pixels or vertices of a frame; set by variants that have a unit
  std::vector<TVariant> Variants;

private:
  void Submit(int first, int count) {
    const bool normals = !Mesh.Normals.empty();
    const bool colors = !Mesh.Colors.empty();
    const bool coordinates = !Mesh.TexCoords.empty();
    Gl.Begin(Mode);
    for (auto i = static_cast<std::size_t>(first); i < static_cast<std::size_t>(first + count);
         ++i) {
      if (normals) {
        Gl.Normal3fv(&Mesh.Normals[3 * i]);
      }
      if (colors) {
        Gl.Color4fv(&Mesh.Colors[4 * i]);
      }
      if (coordinates) {
        Gl.TexCoord2fv(&Mesh.TexCoords[2 * i]);
      }
      Gl.Vertex3fv(&Mesh.Positions[3 * i]);
    }
    Gl.End();
  }
};

} // namespace rivals
