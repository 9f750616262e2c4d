#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

/// The meshes that workloads draw. Everything random comes from one generator of fixed seed, so
/// that both sides draw the same.
namespace rivals {

inline constexpr int kSize = 1024; ///< width and height of the picture

struct TMesh {
  std::vector<float> Positions; ///< x, y, z
  std::vector<float> Normals;   ///< as many as positions, or none
  std::vector<float> Colors;    ///< r, g, b, a; or none
  std::vector<float> TexCoords; ///< s, t; or none
  std::vector<std::uint32_t> Indices;
  /// Vertices (or indices) of one primitive where each takes a draw of its own, as strips and fans
  /// do; 0 if one draw takes all.
  int Run = 0;

  int Vertices() const { return static_cast<int>(Positions.size() / 3); }
};

class TRandom {
public:
  float Next(float low, float high) {
    m_State = m_State * 6364136223846793005ull + 1442695040888963407ull;
    return low + (high - low) * static_cast<float>(m_State >> 40) / 16777216.0f;
  }
  int Below(int end) { return static_cast<int>(Next(0, 0.999f * static_cast<float>(end))); }

private:
  std::uint64_t m_State = 1;
};

/// Gives each vertex a colour of its own; a negative alpha stands for a random one.
inline void Paint(TMesh* mesh, float alpha = 1.0f) {
  TRandom random;
  mesh->Colors.clear();
  for (int i = 0; i < mesh->Vertices(); ++i) {
    const float a = alpha < 0 ? random.Next(0, 1) : alpha;
    mesh->Colors.insert(mesh->Colors.end(),
                        {random.Next(0, 1), random.Next(0, 1), random.Next(0, 1), a});
  }
}

/// Numbers the vertices, for a draw by elements.
inline void Number(TMesh* mesh) {
  for (int i = 0; i < mesh->Vertices(); ++i) {
    mesh->Indices.push_back(static_cast<std::uint32_t>(i));
  }
}

/// Puts two triangles, by their indices, in the place of each quad.
inline void SplitQuads(TMesh* mesh) {
  for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(mesh->Vertices()); i += 4) {
    for (const std::uint32_t corner : {0u, 1u, 2u, 0u, 2u, 3u}) {
      mesh->Indices.push_back(i + corner);
    }
  }
}

/// The mesh with its vertices in the order of its indices.
inline TMesh Flattened(const TMesh& mesh) {
  TMesh flat;
  flat.Run = mesh.Run;
  const auto copy = [](const std::vector<float>& from, std::uint32_t index, std::size_t size,
                       std::vector<float>* to) {
    if (!from.empty()) {
      const auto begin = from.begin() + static_cast<std::ptrdiff_t>(index * size);
      to->insert(to->end(), begin, begin + static_cast<std::ptrdiff_t>(size));
    }
  };
  for (const std::uint32_t index : mesh.Indices) {
    copy(mesh.Positions, index, 3, &flat.Positions);
    copy(mesh.Normals, index, 3, &flat.Normals);
    copy(mesh.Colors, index, 4, &flat.Colors);
    copy(mesh.TexCoords, index, 2, &flat.TexCoords);
  }
  return flat;
}

// --- Shapes scattered over the picture

struct TShapes {
  int Count;
  int Corners;         ///< 2 to 4: lines, triangles, quads; 1 for points
  float Pixels = 10;   ///< area; length of a line
  bool Turned = false; ///< by a random angle each; otherwise a leg lies along a row
  float Spread = 1;    ///< places lie within -Spread to Spread
  float Angle = 0;     ///< in degrees, added to all
};

/// Each shape has a depth of its own.
inline TMesh MakeShapes(const TShapes& shapes) {
  TMesh mesh;
  TRandom random;
  const int corners = shapes.Corners;
  const float side = corners == 3   ? std::sqrt(2 * shapes.Pixels)
                     : corners == 4 ? std::sqrt(shapes.Pixels)
                                    : shapes.Pixels;
  const float size = 2 * side / kSize;
  const float offsets[4][2] = {{0, 0}, {size, 0}, {corners == 3 ? 0 : size, size}, {0, size}};
  const float degree = 3.14159265f / 180;
  for (int i = 0; i < shapes.Count; ++i) {
    const float x = random.Next(-shapes.Spread, shapes.Spread);
    const float y = random.Next(-shapes.Spread, shapes.Spread);
    const float z = random.Next(-0.9f, 0.9f);
    const float angle = degree * (shapes.Angle + (shapes.Turned ? random.Next(0, 360) : 0));
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    for (int k = 0; k < corners; ++k) {
      const float u = offsets[k][0];
      const float v = offsets[k][1];
      mesh.Positions.insert(mesh.Positions.end(), {x + c * u - s * v, y + s * u + c * v, z});
    }
  }
  Paint(&mesh);
  return mesh;
}

/// Gives all vertices the same depth, in place.
inline void Flatten(TMesh* mesh) {
  for (std::size_t i = 2; i < mesh->Positions.size(); i += 3) {
    mesh->Positions[i] = 0;
  }
}

/// Moves the vertices by one of the axes; a whole mesh beside a plane, say.
inline void Shift(TMesh* mesh, int axis, float by) {
  for (std::size_t i = static_cast<std::size_t>(axis); i < mesh->Positions.size(); i += 3) {
    mesh->Positions[i] += by;
  }
}

/// Strips of `triangles` triangles, two to a square of twice their area, along random directions.
inline TMesh MakeStrips(int strips, int triangles, float pixels) {
  TMesh mesh;
  TRandom random;
  const float size = 2 * std::sqrt(2 * pixels) / kSize;
  mesh.Run = triangles + 2;
  for (int i = 0; i < strips; ++i) {
    const float x = random.Next(-0.8f, 0.8f);
    const float y = random.Next(-0.8f, 0.8f);
    const float angle = random.Next(0, 6.2831853f);
    const float c = size * std::cos(angle);
    const float s = size * std::sin(angle);
    for (int k = 0; k < mesh.Run; ++k) {
      const auto along = static_cast<float>(k / 2);
      const auto aside = static_cast<float>(k % 2);
      mesh.Positions.insert(mesh.Positions.end(),
                            {x + along * c - aside * s, y + along * s + aside * c, 0.0f});
    }
  }
  Paint(&mesh);
  return mesh;
}

/// Fans of `triangles` triangles that make up a disc, with the area of one given.
inline TMesh MakeFans(int fans, int triangles, float pixels) {
  TMesh mesh;
  TRandom random;
  const float turn = 6.2831853f / static_cast<float>(triangles);
  const float radius = 2 * std::sqrt(2 * pixels / std::sin(turn)) / kSize;
  mesh.Run = triangles + 2;
  for (int i = 0; i < fans; ++i) {
    const float x = random.Next(-0.9f, 0.9f);
    const float y = random.Next(-0.9f, 0.9f);
    mesh.Positions.insert(mesh.Positions.end(), {x, y, 0.0f});
    for (int k = 0; k <= triangles; ++k) {
      const float a = turn * static_cast<float>(k);
      mesh.Positions.insert(mesh.Positions.end(),
                            {x + radius * std::cos(a), y + radius * std::sin(a), 0.0f});
    }
  }
  Paint(&mesh);
  return mesh;
}

/// Paths of `segments` joined lines of `pixels` each, that turn at random.
inline TMesh MakePaths(int paths, int segments, float pixels) {
  TMesh mesh;
  TRandom random;
  const float size = 2 * pixels / kSize;
  mesh.Run = segments + 1;
  for (int i = 0; i < paths; ++i) {
    float x = random.Next(-0.6f, 0.6f);
    float y = random.Next(-0.6f, 0.6f);
    for (int k = 0; k <= segments; ++k) {
      mesh.Positions.insert(mesh.Positions.end(), {x, y, 0.0f});
      const float angle = random.Next(0, 6.2831853f);
      const float u = x + size * std::cos(angle);
      const float v = y + size * std::sin(angle);
      x = std::fabs(u) < 0.95f ? u : x - size * std::cos(angle);
      y = std::fabs(v) < 0.95f ? v : y - size * std::sin(angle);
    }
  }
  Paint(&mesh);
  return mesh;
}

// --- Quads that fill the picture

struct TQuads {
  int Count;
  float Near = 1;     ///< how far away the lower edge of the first is
  float Step = 0;     ///< added for each further one
  float Tilt = 3;     ///< how many times as far away the upper edge is
  float Repeats = 1;  ///< of the texture
  float Degrees = 0;  ///< by which the texture is turned
  bool Varies = true; ///< whether corners have colours of their own
  float Alpha = 1;    ///< of these
  float TexBegin = 0; ///< s and t of the first corner
  float Scale = 1;    ///< below 1 for quads that leave a border
};

/// Seen by `TScene::Perspective`, each fills the picture.
inline TMesh MakeQuads(const TQuads& quads) {
  static constexpr float kColors[4][3] = {
      {1, 0.2f, 0.1f}, {0.1f, 1, 0.3f}, {0.2f, 0.1f, 1}, {0.9f, 0.8f, 0.1f}};
  TMesh mesh;
  const float angle = quads.Degrees * 3.14159265f / 180;
  for (int i = 0; i < quads.Count; ++i) {
    const float near = quads.Near + static_cast<float>(i) * quads.Step;
    for (int k = 0; k < 4; ++k) {
      const float x = k == 1 || k == 2 ? 1 : -1;
      const float y = k >= 2 ? 1 : -1;
      const float far = k >= 2 ? quads.Tilt * near : near;
      mesh.Positions.insert(mesh.Positions.end(),
                            {quads.Scale * x * far, quads.Scale * y * far, -far});
      if (quads.Varies) {
        mesh.Colors.insert(mesh.Colors.end(),
                           {kColors[k][0], kColors[k][1], kColors[k][2], quads.Alpha});
      }
      const float s = quads.Repeats * (0.5f * x + 0.5f);
      const float t = quads.Repeats * (0.5f * y + 0.5f);
      mesh.TexCoords.insert(mesh.TexCoords.end(),
                            {quads.TexBegin + std::cos(angle) * s - std::sin(angle) * t,
                             quads.TexBegin + std::sin(angle) * s + std::cos(angle) * t});
    }
  }
  return mesh;
}

/// The picture as a grid of quads, each of one depth and `pixels` wide and high.
inline TMesh MakeGrid(int pixels) {
  TMesh mesh;
  const int count = kSize / pixels;
  const float size = 2.0f / static_cast<float>(count);
  for (int i = 0; i < count * count; ++i) {
    const float x = -1 + size * static_cast<float>(i % count);
    const float y = -1 + size * static_cast<float>(i / count);
    for (int k = 0; k < 4; ++k) {
      mesh.Positions.insert(mesh.Positions.end(),
                            {k == 1 || k == 2 ? x + size : x, k >= 2 ? y + size : y, 0.0f});
      mesh.TexCoords.insert(mesh.TexCoords.end(),
                            {k == 1 || k == 2 ? 1.0f : 0.0f, k >= 2 ? 1.0f : 0.0f});
    }
  }
  Paint(&mesh);
  return mesh;
}

// --- Spheres

/// A sphere of `rings` by `2 rings` quads, each two triangles, with indices.
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

/// The same sphere with a strip a ring in the place of its indices.
inline TMesh MakeStripSphere(int rings) {
  TMesh mesh = MakeSphere(rings);
  const int columns = 2 * rings;
  mesh.Indices.clear();
  mesh.Run = 2 * (columns + 1);
  for (int i = 0; i < rings; ++i) {
    for (int j = 0; j <= columns; ++j) {
      mesh.Indices.push_back(static_cast<std::uint32_t>((i + 1) * (columns + 1) + j));
      mesh.Indices.push_back(static_cast<std::uint32_t>(i * (columns + 1) + j));
    }
  }
  return mesh;
}

} // namespace rivals
