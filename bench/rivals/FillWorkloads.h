#pragma once

#include "Scene.h"

// Surfaces and large shapes without texture: clears, fills, colours that vary, depth, stencil.
namespace rivals {

template <class TGl> void ListClears(TScene<TGl>& scene) {
  const auto add = [&scene](const char* name, unsigned int mask, float alpha = 1.0f) {
    scene.Add(
        "clear", name, [&scene] { WriteDepth(scene.Gl, true); },
        [&scene, mask, alpha] {
          scene.Gl.ClearColor(0.2f, 0.4f, 0.6f, alpha);
          scene.Gl.Clear(mask);
        });
  };
  add("all", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  add("color", GL_COLOR_BUFFER_BIT);
  add("color_alpha_09", GL_COLOR_BUFFER_BIT, 0.9f);
  add("depth", GL_DEPTH_BUFFER_BIT);
  add("stencil", GL_STENCIL_BUFFER_BIT);
  add("color_depth", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  add("depth_stencil", GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  scene.Add(
      "clear", "color_without_alpha", [&scene] { scene.Gl.ColorMask(1, 1, 1, 0); },
      [&scene] { scene.Gl.Clear(GL_COLOR_BUFFER_BIT); });
}

/// Constant colours that cover much, without tests.
template <class TGl> void ListFlatQuads(TScene<TGl>& scene) {
  const char* const family = "flat_quads";
  const auto colors = [&scene](float alpha) {
    scene.Add(
        "flat_quads",
        alpha == 1.0f   ? "window"
        : alpha == 0.9f ? "alpha_09"
                        : "alpha_05",
        [] {},
        [&scene, alpha] {
          for (int i = 0; i < 16; ++i) {
            scene.Gl.Color4f(static_cast<float>(i) / 32.0f, 0.5f, 0.25f, alpha);
            scene.Gl.Begin(GL_QUADS);
            scene.Gl.Vertex2f(-1, -1);
            scene.Gl.Vertex2f(1, -1);
            scene.Gl.Vertex2f(1, 1);
            scene.Gl.Vertex2f(-1, 1);
            scene.Gl.End();
          }
        });
  };
  colors(1.0f);
  colors(0.9f);
  colors(0.5f);
  scene.Add(family, "perspective", [&scene] {
    scene.Perspective();
    scene.UseConstant(MakeQuads({16, 2, 1}), GL_QUADS, TSubmission::Immediate);
  });
  scene.Add(family, "rotated_30", [&scene] {
    scene.UseConstant(MakeShapes({32, 4, 160000, false, 0.5f, 30}), GL_QUADS);
  });
  scene.Add(family, "turned_triangles_arrays", [&scene] {
    scene.UseConstant(MakeShapes({64, 3, 60000, true, 0.5f}), GL_TRIANGLES, TSubmission::Arrays,
                      0.9f);
  });
  scene.Add(family, "elements_128px", [&scene] {
    TMesh mesh = MakeGrid(128);
    SplitQuads(&mesh);
    scene.UseConstant(mesh, GL_TRIANGLES, TSubmission::Elements);
  });
  scene.Add(family, "strips_256px",
            [&scene] { scene.UseConstant(MakeStrips(12, 4, 32768), GL_TRIANGLE_STRIP); });
}

/// Colours that vary, with or without a depth test that is passed.
template <class TGl> void ListGouraud(TScene<TGl>& scene) {
  const char* const family = "gouraud";
  scene.Add(family, "perspective_depth", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LEQUAL);
    scene.Use(MakeQuads({8, 16, -1}), GL_QUADS, TSubmission::Immediate);
  });
  scene.Add(family, "perspective", [&scene] {
    scene.Perspective();
    scene.Use(MakeQuads({8, 16, -1}), GL_QUADS);
  });
  scene.Add(family, "facing_depth_less", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LESS);
    scene.Use(MakeQuads({8, 16, -1, 1}), GL_QUADS);
  });
  scene.Add(family, "facing_alpha_09", [&scene] {
    scene.Perspective();
    scene.Use(MakeQuads({8, 2, 0, 1, 1, 0, true, 0.9f}), GL_QUADS);
  });
  scene.Add(family, "alpha_05_blended", [&scene] {
    scene.Perspective();
    scene.Blend();
    scene.Use(MakeQuads({8, 2, 0, 3, 1, 0, true, 0.5f}), GL_QUADS);
  });
  scene.Add(family, "rotated_30_depth_less", [&scene] {
    scene.Perspective();
    scene.Rotate(30);
    scene.Depth(GL_LESS);
    scene.Use(MakeQuads({8, 16, -1, 2, 1, 0, true, 0.9f, 0, 0.7f}), GL_QUADS);
  });
  scene.Add(family, "lit_secondary_depth", [&scene] {
    scene.Depth(GL_LEQUAL);
    scene.Lights(1, false, 8);
    TMesh mesh = MakeGrid(128);
    TRandom random;
    for (int i = 0; i < mesh.Vertices(); ++i) {
      const float x = random.Next(-0.6f, 0.6f);
      mesh.Normals.insert(mesh.Normals.end(), {x, 0.0f, std::sqrt(1 - x * x)});
    }
    scene.Use(mesh, GL_QUADS);
  });
  scene.Add(family, "triangles_300px_depth", [&scene] {
    scene.Depth(GL_LEQUAL);
    scene.Use(MakeShapes({6000, 3, 300, true}), GL_TRIANGLES);
  });
  scene.Add(family, "elements_1000px_perspective", [&scene] {
    scene.Perspective();
    scene.Gl.Translatef(0, 0, -2);
    scene.Use(MakeShapes({8000, 3, 1000, true}), GL_TRIANGLES, TSubmission::Elements);
  });
}

/// Depth tests that most pixels fail.
template <class TGl> void ListDepthFail(TScene<TGl>& scene) {
  const char* const family = "depth_fail";
  scene.Add(family, "perspective_less", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LESS);
    scene.Use(MakeQuads({8, 2, 1}), GL_QUADS, TSubmission::Immediate);
  });
  scene.Add(family, "facing_lequal", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LEQUAL);
    scene.Use(MakeQuads({8, 2, 1, 1}), GL_QUADS);
  });
  scene.Add(family, "constant_color_less", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LESS);
    scene.UseConstant(MakeQuads({8, 2, 1}), GL_QUADS, TSubmission::Arrays, 0.9f);
  });
  scene.Add(family, "rotated_30_less", [&scene] {
    scene.Perspective();
    scene.Rotate(30);
    scene.Depth(GL_LESS);
    scene.Use(MakeQuads({8, 2, 1, 2, 1, 0, true, 1, 0, 0.7f}), GL_QUADS);
  });
  scene.Add(family, "textured_less", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LESS);
    scene.Texture(GL_LINEAR);
    scene.Use(MakeQuads({8, 2, 1, 3, 8}), GL_QUADS);
  });
  scene.Add(family, "greater", [&scene] {
    scene.Perspective();
    scene.Depth(GL_GREATER); // than 1, which the depths were cleared to
    scene.Use(MakeQuads({8, 2, 1}), GL_QUADS);
  });
  scene.Add(family, "stencil_kept", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LESS);
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    scene.Use(MakeQuads({8, 2, 1}), GL_QUADS);
  });
  scene.Add(family, "triangles_300px_elements", [&scene] {
    scene.Depth(GL_LESS);
    TMesh mesh = MakeQuads({1, 1, 0, 1});
    TMesh behind = MakeShapes({8000, 3, 300, true, 0.9f});
    for (std::size_t i = 2; i < behind.Positions.size(); i += 3) {
      behind.Positions[i] = 0.5f + 0.4f * behind.Positions[i];
    }
    mesh.Positions.insert(mesh.Positions.end(), behind.Positions.begin(), behind.Positions.end());
    mesh.TexCoords.clear();
    Paint(&mesh);
    SplitQuads(&mesh);
    mesh.Indices.resize(6); // the quad; the triangles after it follow by their numbers
    for (int i = 4; i < mesh.Vertices(); ++i) {
      mesh.Indices.push_back(static_cast<std::uint32_t>(i));
    }
    scene.Use(mesh, GL_TRIANGLES, TSubmission::Elements);
  });
}

template <class TGl> void ListStencil(TScene<TGl>& scene) {
  const char* const family = "stencil";
  scene.Add(family, "incr_depth", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LEQUAL);
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    scene.Use(MakeQuads({8, 16, -1}), GL_QUADS, TSubmission::Immediate);
  });
  scene.Add(family, "replace_only", [&scene] {
    scene.Perspective();
    scene.Stencil(GL_ALWAYS, 5, GL_KEEP, GL_REPLACE);
    scene.Use(MakeQuads({8, 2}), GL_QUADS);
  });
  scene.Add(family, "constant_color_incr", [&scene] {
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    scene.UseConstant(MakeShapes({64, 4, 120000, true, 0.7f}), GL_QUADS, TSubmission::Arrays, 0.9f);
  });
  scene.Add(family, "equal_fails", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LEQUAL);
    scene.Stencil(GL_EQUAL, 0, GL_KEEP, GL_INCR); // the first quad alone passes
    scene.Use(MakeQuads({8, 16, -1}), GL_QUADS);
  });
  scene.Add(family, "zfail_decr", [&scene] {
    scene.Perspective();
    scene.Depth(GL_LESS);
    scene.Stencil(GL_ALWAYS, 0, GL_INVERT, GL_INCR);
    scene.Use(MakeQuads({8, 2, 1, 1}), GL_QUADS);
  });
  scene.Add(family, "textured_blended", [&scene] {
    scene.Perspective();
    scene.Stencil(GL_LEQUAL, 0, GL_KEEP, GL_INCR);
    scene.Texture(GL_LINEAR);
    scene.Blend();
    scene.Use(MakeQuads({4, 2, 0, 3, 8, 30, true, 0.5f}), GL_QUADS);
  });
  scene.Add(family, "rotated_30_depth", [&scene] {
    scene.Perspective();
    scene.Rotate(30);
    scene.Depth(GL_LESS);
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    scene.Use(MakeQuads({8, 16, -1, 2, 1, 0, true, 0.9f, 0, 0.7f}), GL_QUADS);
  });
  scene.Add(family, "triangles_300px_depth", [&scene] {
    scene.Depth(GL_LESS);
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    scene.Use(MakeShapes({6000, 3, 300, true}), GL_TRIANGLES, TSubmission::Elements);
  });
}

} // namespace rivals
