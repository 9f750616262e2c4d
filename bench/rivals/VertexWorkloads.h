#pragma once

#include "Scene.h"

// Shapes that the planes or the face mode take out, and shapes that planes cut.
namespace rivals {

/// Shapes around places within -3 to 3 of each axis, those that might be seen left out: each lies
/// beyond at least one plane, and an earlier plane may cut it.
inline TMesh MakeOutside(int count, int corners, float size) {
  TMesh mesh;
  TRandom random;
  for (int i = 0; i < count;) {
    float at[4][3];
    float center[3];
    for (float& c : center) {
      c = random.Next(-3, 3);
    }
    bool outside = false;
    for (int axis = 0; axis < 3; ++axis) {
      float least = 9;
      float most = -9;
      for (int k = 0; k < corners; ++k) {
        at[k][axis] = center[axis] + random.Next(-size, size);
        least = std::fmin(least, at[k][axis]);
        most = std::fmax(most, at[k][axis]);
      }
      outside = outside || least > 1.02f || most < -1.02f;
    }
    if (!outside) {
      continue;
    }
    ++i;
    for (int k = 0; k < corners; ++k) {
      mesh.Positions.insert(mesh.Positions.end(), at[k], at[k] + 3);
    }
  }
  Paint(&mesh);
  return mesh;
}

/// Shapes that lie beyond one plane each and within all others, the planes in turn.
inline TMesh MakeBesidePlanes(int count, int corners, float pixels) {
  TMesh mesh = MakeShapes({count, corners, pixels, true, 0.9f});
  TRandom random;
  for (int i = 0; i < count; ++i) {
    const auto axis = static_cast<std::size_t>(random.Below(3));
    const float side = random.Next(-1, 1) < 0 ? -1.0f : 1.0f;
    const float by = side * random.Next(2, 4);
    for (int k = 0; k < corners; ++k) {
      mesh.Positions[static_cast<std::size_t>(3 * (i * corners + k)) + axis] += by;
    }
  }
  return mesh;
}

/// Shapes across one plane's edge, all of them beyond another that comes later.
inline TMesh MakeCutFirst(int count, int corners, float pixels) {
  TMesh mesh = MakeShapes({count, corners, pixels, true, 0.02f});
  Shift(&mesh, 0, -1);
  for (int i = 0; i < count; ++i) {
    for (int k = 0; k < corners; ++k) {
      mesh.Positions[static_cast<std::size_t>(3 * (i * corners + k)) + 1] +=
          i % 2 == 0 ? 2.0f : -2.0f;
    }
  }
  return mesh;
}

template <class TGl> void ListOutside(TScene<TGl>& scene) {
  const auto add = [&scene](const char* name, const std::function<void()>& setUp) {
    scene.Add("vertices_outside", name, setUp);
  };
  constexpr int kCount = 60000;
  add("one_plane", [&scene] {
    TMesh mesh = MakeShapes({kCount, 3});
    Shift(&mesh, 0, 5);
    scene.Use(mesh, GL_TRIANGLES);
  });
  add("single_planes_mixed",
      [&scene] { scene.Use(MakeBesidePlanes(kCount, 3, 10), GL_TRIANGLES); });
  add("around_small", [&scene] { scene.Use(MakeOutside(kCount, 3, 0.02f), GL_TRIANGLES); });
  add("around_large", [&scene] { scene.Use(MakeOutside(kCount, 3, 0.6f), GL_TRIANGLES); });
  add("cut_first", [&scene] { scene.Use(MakeCutFirst(kCount, 3, 4000), GL_TRIANGLES); });
  add("around_quads", [&scene] { scene.Use(MakeOutside(kCount, 4, 0.2f), GL_QUADS); });
  add("around_lines", [&scene] { scene.Use(MakeOutside(kCount, 2, 0.3f), GL_LINES); });
  add("around_immediate",
      [&scene] { scene.Use(MakeOutside(kCount, 3, 0.2f), GL_TRIANGLES, TSubmission::Immediate); });
  add("around_elements",
      [&scene] { scene.Use(MakeOutside(kCount, 3, 0.2f), GL_TRIANGLES, TSubmission::Elements); });
  add("strips", [&scene] {
    TMesh mesh = MakeStrips(1800, 32, 10);
    Shift(&mesh, 1, 3);
    scene.Use(mesh, GL_TRIANGLE_STRIP);
  });
  add("around_perspective", [&scene] {
    scene.Perspective();
    TMesh mesh = MakeOutside(kCount, 3, 0.2f);
    Shift(&mesh, 2, 4); // all behind the viewer
    scene.Use(mesh, GL_TRIANGLES);
  });
  add("around_textured", [&scene] {
    scene.Texture(GL_LINEAR);
    TMesh mesh = MakeOutside(kCount, 3, 0.2f);
    mesh.TexCoords.assign(static_cast<std::size_t>(2 * mesh.Vertices()), 0.5f);
    scene.Use(mesh, GL_TRIANGLES);
  });
}

template <class TGl> void ListCulled(TScene<TGl>& scene) {
  const auto add = [&scene](const char* name, unsigned int face,
                            const std::function<void()>& setUp) {
    scene.Add("vertices_culled", name, [&scene, face, setUp] {
      scene.Cull(face);
      setUp();
    });
  };
  constexpr int kCount = 60000;
  const auto shapes = [&scene](int corners, unsigned int mode,
                               TSubmission by = TSubmission::Arrays) {
    scene.Use(MakeShapes({kCount, corners, 10, true, 0.98f}), mode, by);
  };
  add("front", GL_FRONT, [=] { shapes(3, GL_TRIANGLES); });
  add("front_and_back", GL_FRONT_AND_BACK, [=] { shapes(3, GL_TRIANGLES); });
  add("front_quads", GL_FRONT, [=] { shapes(4, GL_QUADS); });
  add("front_immediate", GL_FRONT, [=] { shapes(3, GL_TRIANGLES, TSubmission::Immediate); });
  add("front_elements", GL_FRONT, [=] { shapes(3, GL_TRIANGLES, TSubmission::Elements); });
  add("back_perspective", GL_BACK, [=, &scene] {
    scene.Perspective();
    scene.Gl.Translatef(0, 0, -2.5f);
    scene.Gl.Rotatef(180, 0, 1, 0);
    shapes(3, GL_TRIANGLES);
  });
  add("front_strips", GL_FRONT_AND_BACK,
      [&scene] { scene.Use(MakeStrips(1800, 32, 10), GL_TRIANGLE_STRIP); });
  add("front_300px_lit", GL_FRONT, [=, &scene] {
    scene.Lights(1, false);
    scene.Use(MakeShapes({kCount, 3, 300, true, 0.9f}), GL_TRIANGLES);
  });
}

template <class TGl> void ListClipped(TScene<TGl>& scene) {
  const auto add = [&scene](const char* name, const std::function<void()>& setUp) {
    scene.Add("triangles_clipped", name, setUp);
  };
  // Each crosses the near plane and the left side.
  const auto nearAndLeft = [](int count) {
    TMesh mesh;
    for (int i = 0; i < count; ++i) {
      const float y = -0.9f + 1.8f * static_cast<float>(i) / static_cast<float>(count);
      mesh.Positions.insert(mesh.Positions.end(), {-1.03f, y, -1.02f, -0.97f, y + 0.01f, -1.02f,
                                                   -0.985f, y + 0.02f, -0.98f});
    }
    Paint(&mesh);
    return mesh;
  };
  // Across the border of the picture, all round.
  const auto border = [](int count, int corners, float pixels) {
    TMesh mesh = MakeShapes({count, corners, pixels, true, 0.005f});
    TRandom random;
    for (int i = 0; i < count; ++i) {
      const auto axis = static_cast<std::size_t>(random.Below(2));
      const float side = random.Next(-1, 1) < 0 ? -1.0f : 1.0f;
      const float along = random.Next(-1, 1);
      for (int k = 0; k < corners; ++k) {
        float* const at = &mesh.Positions[static_cast<std::size_t>(3 * (i * corners + k))];
        at[axis] += side;
        at[1 - axis] += along;
      }
    }
    return mesh;
  };
  constexpr int kCount = 6000;
  const auto depth = [&scene] {
    scene.Perspective();
    scene.Depth(GL_LEQUAL);
  };
  add("near_and_left_immediate", [=, &scene] {
    depth();
    scene.Use(nearAndLeft(kCount), GL_TRIANGLES, TSubmission::Immediate);
  });
  add("near_and_left_arrays", [=, &scene] {
    depth();
    scene.Use(nearAndLeft(kCount), GL_TRIANGLES);
  });
  add("near_and_left_constant", [=, &scene] {
    scene.Perspective();
    scene.UseConstant(nearAndLeft(kCount), GL_TRIANGLES, TSubmission::Immediate, 0.9f);
  });
  add("border_40px", [=, &scene] { scene.Use(border(kCount, 3, 40), GL_TRIANGLES); });
  add("border_300px_depth", [=, &scene] {
    scene.Depth(GL_LESS);
    scene.Use(border(kCount, 3, 300), GL_TRIANGLES);
  });
  add("border_40px_elements",
      [=, &scene] { scene.Use(border(kCount, 3, 40), GL_TRIANGLES, TSubmission::Elements); });
  add("border_quads_textured", [=, &scene] {
    scene.Texture(GL_LINEAR);
    TMesh mesh = border(kCount, 4, 80);
    for (int i = 0; i < mesh.Vertices(); ++i) {
      mesh.TexCoords.push_back(i % 4 == 1 || i % 4 == 2 ? 0.3f : 0.1f);
      mesh.TexCoords.push_back(i % 4 >= 2 ? 0.3f : 0.1f);
    }
    scene.Use(mesh, GL_QUADS);
  });
  add("far_plane_2000px", [=, &scene] {
    TMesh mesh = MakeShapes({600, 3, 2000, true, 0.9f});
    for (std::size_t i = 0; i < mesh.Positions.size(); i += 9) {
      mesh.Positions[i + 2] = 1.4f;
    }
    scene.Use(mesh, GL_TRIANGLES);
  });
  add("strips_across", [&scene] {
    TMesh mesh = MakeStrips(300, 16, 40);
    for (std::size_t i = 0; i < mesh.Positions.size(); i += 3) {
      mesh.Positions[i] += mesh.Positions[i] < 0 ? -0.5f : 0.5f;
    }
    scene.Use(mesh, GL_TRIANGLE_STRIP);
  });
}

} // namespace rivals
