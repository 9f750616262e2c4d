#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

/// The workloads that both sides run, written once. `TGl` offers the calls of an OpenGL 1.x context
/// as members; beside it stand the functions `Switch(gl, cap, on)` and `WriteDepth(gl, on)`.
namespace rivals {

inline constexpr int kSize = 1024;

struct TMesh {
  std::vector<float> Positions; ///< x, y, z
  std::vector<float> Normals;
  std::vector<float> Colors; ///< r, g, b, a
  std::vector<std::uint32_t> Indices;
};

/// A sphere of `rings` by `2 rings` quads, each two triangles.
inline TMesh MakeSphere(int rings) {
  TMesh mesh;
  const int columns = 2 * rings;
  for (int i = 0; i <= rings; ++i) {
    for (int j = 0; j <= columns; ++j) {
      const double a = M_PI * i / rings;
      const double b = 2 * M_PI * j / columns;
      const double p[3] = {std::sin(a) * std::cos(b), std::cos(a), std::sin(a) * std::sin(b)};
      for (const double v : p) {
        mesh.Positions.push_back(static_cast<float>(0.9 * v));
        mesh.Normals.push_back(static_cast<float>(v));
      }
    }
  }
  const auto at = [columns](int i, int j) {
    return static_cast<std::uint32_t>(i * (columns + 1) + j);
  };
  for (int i = 0; i < rings; ++i) {
    for (int j = 0; j < columns; ++j) {
      for (const std::uint32_t index :
           {at(i, j), at(i, j + 1), at(i + 1, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j)}) {
        mesh.Indices.push_back(index);
      }
    }
  }
  return mesh;
}

class TRandom {
public:
  float Next(float low, float high) {
    m_State = m_State * 6364136223846793005ull + 1442695040888963407ull;
    return low + (high - low) * static_cast<float>(m_State >> 40) / 16777216.0f;
  }

private:
  std::uint64_t m_State = 1;
};

/// `count` shapes of `corners` corners within a square of `side` pixels at random places, each
/// corner with a colour of its own.
inline TMesh MakeShapes(int count, int corners, float side, float spread = 1.0f) {
  TMesh mesh;
  TRandom random;
  const float size = 2.0f * side / kSize;
  for (int i = 0; i < count; ++i) {
    const float x = random.Next(-spread, spread);
    const float y = random.Next(-spread, spread);
    const float offsets[3][2] = {{0, 0}, {size, 0}, {0, size}};
    for (int k = 0; k < corners; ++k) {
      mesh.Positions.insert(mesh.Positions.end(), {x + offsets[k][0], y + offsets[k][1], 0.0f});
      mesh.Colors.insert(mesh.Colors.end(),
                         {random.Next(0, 1), random.Next(0, 1), random.Next(0, 1), 1});
    }
  }
  return mesh;
}

template <class TGl> class TWorkloads {
public:
  struct TEntry {
    const char* Name;
    std::function<void()> SetUp;
    std::function<void()> Frame;
  };

  explicit TWorkloads(TGl& gl) : m_Gl(gl) { List(); }

  const std::vector<TEntry>& Entries() const { return m_Entries; }

  void Start() {
    m_Gl.ClearColor(0.1f, 0.1f, 0.1f, 1.0f);
    m_Gl.ClearStencil(0);
    m_Gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    m_Gl.Hint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    WriteDepth(m_Gl, false);
  }

private:
  void DepthTest(unsigned int func) {
    Switch(m_Gl, GL_DEPTH_TEST, true);
    m_Gl.DepthFunc(func);
    WriteDepth(m_Gl, true);
  }

  void Perspective() {
    m_Gl.MatrixMode(GL_PROJECTION);
    m_Gl.LoadIdentity();
    m_Gl.Frustum(-1, 1, -1, 1, 1, 100);
    m_Gl.MatrixMode(GL_MODELVIEW);
    m_Gl.LoadIdentity();
  }

  // A quad that fills the picture, its upper edge three times as far away as its lower one.
  void TiltedQuad(float depth, float repeats, float alpha) {
    const float near = depth;
    const float far = 3.0f * depth;
    m_Gl.Begin(GL_QUADS);
    m_Gl.Color4f(1, 0.2f, 0.1f, alpha);
    m_Gl.TexCoord2f(0, 0);
    m_Gl.Vertex3f(-near, -near, -near);
    m_Gl.Color4f(0.1f, 1, 0.3f, alpha);
    m_Gl.TexCoord2f(repeats, 0);
    m_Gl.Vertex3f(near, -near, -near);
    m_Gl.Color4f(0.2f, 0.1f, 1, alpha);
    m_Gl.TexCoord2f(repeats, repeats);
    m_Gl.Vertex3f(far, far, -far);
    m_Gl.Color4f(0.9f, 0.8f, 0.1f, alpha);
    m_Gl.TexCoord2f(0, repeats);
    m_Gl.Vertex3f(-far, far, -far);
    m_Gl.End();
  }

  void Texture(unsigned int filter) {
    Perspective();
    std::vector<unsigned char> texels(256 * 256 * 4);
    TRandom random;
    for (unsigned char& byte : texels) {
      byte = static_cast<unsigned char>(random.Next(0, 255.9f));
    }
    unsigned int id = 0;
    m_Gl.GenTextures(1, &id);
    m_Gl.BindTexture(GL_TEXTURE_2D, id);
    for (const unsigned int name : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER}) {
      m_Gl.TexParameteri(GL_TEXTURE_2D, name, static_cast<int>(filter));
    }
    m_Gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 256, 256, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                    texels.data());
    m_Gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    Switch(m_Gl, GL_TEXTURE_2D, true);
  }

  void Sphere(int lights, bool positional) {
    m_Mesh = MakeSphere(158); // 158 * 316 * 2 = 99,856 triangles
    m_Gl.MatrixMode(GL_PROJECTION);
    m_Gl.LoadIdentity();
    m_Gl.Ortho(-1, 1, -1, 1, -1, 1);
    m_Gl.MatrixMode(GL_MODELVIEW);
    DepthTest(GL_LESS);
    Switch(m_Gl, GL_LIGHTING, true);
    for (int i = 0; i < lights; ++i) {
      const unsigned int light = GL_LIGHT0 + static_cast<unsigned int>(i);
      const float position[4] = {1.0f - i, 1.0f, 2.0f, positional ? 1.0f : 0.0f};
      const float white[4] = {0.7f, 0.6f, 0.5f, 1.0f};
      m_Gl.Lightfv(light, GL_POSITION, position);
      m_Gl.Lightfv(light, GL_DIFFUSE, white);
      Switch(m_Gl, light, true);
    }
    m_Gl.EnableClientState(GL_VERTEX_ARRAY);
    m_Gl.EnableClientState(GL_NORMAL_ARRAY);
    m_Gl.VertexPointer(3, GL_FLOAT, 0, m_Mesh.Positions.data());
    m_Gl.NormalPointer(GL_FLOAT, 0, m_Mesh.Normals.data());
  }

  void DrawSphere() {
    m_Gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    m_Gl.DrawElements(GL_TRIANGLES, static_cast<int>(m_Mesh.Indices.size()), GL_UNSIGNED_INT,
                      m_Mesh.Indices.data());
  }

  void Immediate(unsigned int mode) {
    m_Gl.Begin(mode);
    for (std::size_t i = 0; i < m_Mesh.Positions.size() / 3; ++i) {
      m_Gl.Color4fv(&m_Mesh.Colors[4 * i]);
      m_Gl.Vertex3fv(&m_Mesh.Positions[3 * i]);
    }
    m_Gl.End();
  }

  void Arrays() {
    m_Gl.EnableClientState(GL_VERTEX_ARRAY);
    m_Gl.EnableClientState(GL_COLOR_ARRAY);
    m_Gl.VertexPointer(3, GL_FLOAT, 0, m_Mesh.Positions.data());
    m_Gl.ColorPointer(4, GL_FLOAT, 0, m_Mesh.Colors.data());
  }

  void DrawMesh(unsigned int mode) {
    m_Gl.DrawArrays(mode, 0, static_cast<int>(m_Mesh.Positions.size() / 3));
  }

  void List();

  TGl& m_Gl;
  TMesh m_Mesh;
  std::vector<unsigned char> m_Pixels = std::vector<unsigned char>(4 * kSize * kSize, 120);
  std::vector<TEntry> m_Entries;
};

template <class TGl> void TWorkloads<TGl>::List() {
  TGl& gl = m_Gl;
  const auto nothing = [] {};
  m_Entries.push_back({"clear", nothing, [&gl] {
                         WriteDepth(gl, true);
                         gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT |
                                  GL_STENCIL_BUFFER_BIT);
                       }});
  m_Entries.push_back({"flat_quads_32", nothing, [&gl] {
                         for (int i = 0; i < 32; ++i) {
                           gl.Color4f(i / 32.0f, 0.5f, 0.25f, 1.0f);
                           gl.Begin(GL_QUADS);
                           gl.Vertex2f(-1, -1);
                           gl.Vertex2f(1, -1);
                           gl.Vertex2f(1, 1);
                           gl.Vertex2f(-1, 1);
                           gl.End();
                         }
                       }});
  m_Entries.push_back({"gouraud_depth_pass",
                       [this] {
                         Perspective();
                         DepthTest(GL_LEQUAL);
                       },
                       [this] {
                         for (int i = 0; i < 8; ++i) {
                           TiltedQuad(16.0f - i, 1, 1);
                         }
                         m_Gl.Clear(GL_DEPTH_BUFFER_BIT);
                       }});
  m_Entries.push_back({"gouraud_depth_fail",
                       [this] {
                         Perspective();
                         DepthTest(GL_LESS);
                       },
                       [this] {
                         m_Gl.Clear(GL_DEPTH_BUFFER_BIT);
                         for (int i = 0; i < 8; ++i) {
                           TiltedQuad(2.0f + i, 1, 1);
                         }
                       }});
  m_Entries.push_back(
      {"nearest_modulate", [this] { Texture(GL_NEAREST); }, [this] { TiltedQuad(2, 8, 1); }});
  m_Entries.push_back(
      {"bilinear_modulate", [this] { Texture(GL_LINEAR); }, [this] { TiltedQuad(2, 8, 1); }});
  m_Entries.push_back({"bilinear_blend",
                       [this] {
                         Texture(GL_LINEAR);
                         Switch(m_Gl, GL_BLEND, true);
                         m_Gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
                       },
                       [this] {
                         m_Gl.Clear(GL_COLOR_BUFFER_BIT); // blending adds up otherwise
                         TiltedQuad(2, 8, 0.5f);
                       }});
  m_Entries.push_back(
      {"sphere_directional", [this] { Sphere(1, false); }, [this] { DrawSphere(); }});
  m_Entries.push_back(
      {"sphere_3_positional", [this] { Sphere(3, true); }, [this] { DrawSphere(); }});
  m_Entries.push_back({"triangles_10px_immediate", [this] { m_Mesh = MakeShapes(100000, 3, 4.5f); },
                       [this] { Immediate(GL_TRIANGLES); }});
  m_Entries.push_back({"triangles_10px_arrays",
                       [this] {
                         m_Mesh = MakeShapes(100000, 3, 4.5f);
                         Arrays();
                       },
                       [this] { DrawMesh(GL_TRIANGLES); }});
  m_Entries.push_back({"lines_50px",
                       [this] {
                         m_Mesh = MakeShapes(20000, 2, 50.0f, 0.9f);
                         Arrays();
                       },
                       [this] { DrawMesh(GL_LINES); }});
  m_Entries.push_back({"points",
                       [this] {
                         m_Mesh = MakeShapes(200000, 1, 1.0f);
                         Arrays();
                       },
                       [this] { DrawMesh(GL_POINTS); }});
  m_Entries.push_back({"vertices_outside",
                       [this] {
                         m_Mesh = MakeShapes(100000, 3, 4.5f);
                         Arrays();
                         m_Gl.MatrixMode(GL_MODELVIEW);
                         m_Gl.Translatef(5, 0, 0);
                       },
                       [this] { DrawMesh(GL_TRIANGLES); }});
  m_Entries.push_back({"vertices_culled",
                       [this] {
                         m_Mesh = MakeShapes(100000, 3, 4.5f);
                         Arrays();
                         Switch(m_Gl, GL_CULL_FACE, true);
                         m_Gl.CullFace(GL_FRONT);
                       },
                       [this] { DrawMesh(GL_TRIANGLES); }});
  m_Entries.push_back({"stencil_incr_depth",
                       [this] {
                         Perspective();
                         DepthTest(GL_LEQUAL);
                         Switch(m_Gl, GL_STENCIL_TEST, true);
                         m_Gl.StencilFunc(GL_ALWAYS, 0, 0xFF);
                         m_Gl.StencilOp(GL_KEEP, GL_KEEP, GL_INCR);
                       },
                       [this] {
                         for (int i = 0; i < 8; ++i) {
                           TiltedQuad(16.0f - i, 1, 1);
                         }
                         m_Gl.Clear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
                       }});
  m_Entries.push_back({"draw_pixels", nothing, [this] {
                         m_Gl.DrawPixels(kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, m_Pixels.data());
                       }});
  m_Entries.push_back({"read_pixels", nothing, [this] {
                         m_Gl.ReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE,
                                         m_Pixels.data());
                       }});
  m_Entries.push_back({"triangles_clipped",
                       [this] {
                         Perspective();
                         DepthTest(GL_LEQUAL);
                       },
                       [this] {
                         // Each crosses the near plane and the left side.
                         m_Gl.Begin(GL_TRIANGLES);
                         for (int i = 0; i < 20000; ++i) {
                           const float x = -1.0f;
                           const float y = -0.9f + 0.00009f * i;
                           m_Gl.Color4f(1, 0.00005f * i, 0, 1);
                           m_Gl.Vertex3f(x - 0.03f, y, -1.02f);
                           m_Gl.Color4f(0, 1, 0, 1);
                           m_Gl.Vertex3f(x + 0.03f, y + 0.01f, -1.02f);
                           m_Gl.Color4f(0, 0, 1, 1);
                           m_Gl.Vertex3f(x + 0.015f, y + 0.02f, -0.98f);
                         }
                         m_Gl.End();
                         m_Gl.Clear(GL_DEPTH_BUFFER_BIT);
                       }});
}

inline double Now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// What each side's program does: `PROGRAM list`, or `PROGRAM WORKLOAD SECONDS`, which prints the
/// best time of a frame in nanoseconds and the picture's mean red, green, blue.
template <class TGl> int RunSide(TGl& gl, int argc, char** argv) {
  TWorkloads<TGl> workloads(gl);
  if (argc < 3) {
    for (const auto& entry : workloads.Entries()) {
      std::printf("%s\n", entry.Name);
    }
    return 0;
  }
  for (const auto& entry : workloads.Entries()) {
    if (std::strcmp(entry.Name, argv[1]) != 0) {
      continue;
    }
    workloads.Start();
    entry.SetUp();
    entry.Frame();
    gl.Finish();
    const double end = Now() + std::atof(argv[2]);
    double best = 1e9;
    do {
      const double start = Now();
      entry.Frame();
      gl.Finish();
      best = std::min(best, Now() - start);
    } while (Now() < end);
    std::vector<unsigned char> pixels(4 * kSize * kSize);
    gl.ReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    double mean[3] = {};
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      if (i % 4 < 3) {
        mean[i % 4] += pixels[i] / static_cast<double>(kSize * kSize);
      }
    }
    std::printf("%.0f %.3f %.3f %.3f\n", best * 1e9, mean[0], mean[1], mean[2]);
    return 0;
  }
  std::fprintf(stderr, "no workload %s\n", argv[1]);
  return 2;
}

} // namespace rivals
