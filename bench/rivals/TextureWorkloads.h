#pragma once

#include "Scene.h"

// Large textured shapes: nearest and linear filters, and linear with blending.
namespace rivals {

/// `blend` gives the alpha of the colours that are blended; below 0 nothing is.
template <class TGl>
void ListFilter(TScene<TGl>& scene, const char* family, unsigned int filter, bool blend) {
  const float alpha = blend ? 0.5f : 1.0f;
  const auto add = [&scene, family, blend](const char* name, std::function<void()> setUp) {
    scene.Add(family, name, [&scene, blend, setUp] {
      scene.Perspective();
      if (blend) {
        scene.Blend();
      }
      setUp();
    });
  };
  const auto quads = [&scene](const TQuads& what) {
    scene.Use(MakeQuads(what), GL_QUADS, TSubmission::Immediate);
  };
  add("tilted", [=, &scene] {
    scene.Texture(filter);
    quads({1, 2, 0, 3, 8, 0, true, alpha});
  });
  add("constant_alpha_09", [=, &scene] {
    scene.Texture(filter);
    quads({1, 2, 0, 3, 8, 0, true, 0.9f});
  });
  add("constant_color", [=, &scene] {
    scene.Texture(filter);
    scene.UseConstant(MakeQuads({1, 2, 0, 3, 8}), GL_QUADS, TSubmission::Immediate,
                      blend ? 0.5f : 0.9f);
  });
  add("white_facing", [=, &scene] {
    scene.Texture(filter);
    TMesh mesh = MakeQuads({1, 2, 0, 1, 3});
    mesh.Colors.assign(16, 1.0f);
    scene.Use(mesh, GL_QUADS);
  });
  add("rotated_30", [=, &scene] {
    scene.Texture(filter);
    quads({1, 2, 0, 3, 8, 30, true, alpha});
  });
  add("minified_rotated_30", [=, &scene] {
    scene.Texture(filter);
    quads({1, 2, 0, 1, 12, 30, true, alpha});
  });
  add("magnified_clamp_to_edge", [=, &scene] {
    scene.Texture(filter, GL_CLAMP_TO_EDGE);
    quads({1, 2, 0, 3, 1.5f, 0, true, alpha, -0.25f});
  });
  add("clamp_to_border_inside", [=, &scene] {
    scene.Texture(filter, GL_CLAMP);
    quads({1, 2, 0, 3, 0.98f, 0, true, alpha, 0.01f});
  });
  add("not_power_of_two_repeat", [=, &scene] {
    scene.Texture(filter, GL_REPEAT, 250, 190);
    quads({1, 2, 0, 3, 8, 0, true, alpha});
  });
  add("not_power_of_two_clamp", [=, &scene] {
    scene.Texture(filter, GL_CLAMP_TO_EDGE, 301, 199);
    quads({1, 2, 0, 2, 1.2f, 30, true, alpha});
  });
  add("rgb_rotated_30", [=, &scene] {
    scene.Texture(filter, GL_REPEAT, 256, 256, GL_MODULATE, GL_RGB);
    quads({1, 2, 0, 3, 8, 30, true, alpha});
  });
  add("luminance_clamp_to_edge", [=, &scene] {
    scene.Texture(filter, GL_CLAMP_TO_EDGE, 300, 200, GL_MODULATE, GL_LUMINANCE);
    quads({1, 2, 0, 2, 1.2f, 0, true, alpha});
  });
  add("replace", [=, &scene] {
    scene.Texture(filter, GL_REPEAT, 256, 256, GL_REPLACE);
    quads({1, 2, 0, 3, 8, 0, true, alpha});
  });
  add("opaque_rotated_30", [=, &scene] {
    scene.Texture(filter, GL_REPEAT, 256, 256, GL_MODULATE, GL_RGBA, TTexelKind::Opaque);
    quads({1, 2, 0, 3, 8, 30, true, alpha});
  });
  add("checkers_gray", [=, &scene] {
    scene.Texture(filter, GL_REPEAT, 256, 256, GL_MODULATE, GL_RGBA, TTexelKind::Checkers);
    TMesh mesh = MakeQuads({1, 2, 0, 3, 8, 30});
    mesh.Colors.assign(16, 0.5f);
    scene.Use(mesh, GL_QUADS);
  });
  add("flat_rotated_30", [=, &scene] {
    scene.Flat();
    scene.Texture(filter);
    quads({1, 1, 0, 1, 3, 30, true, alpha});
  });
  add("flat_opaque_constant", [=, &scene] {
    scene.Flat();
    scene.Texture(filter, GL_REPEAT, 256, 256, GL_MODULATE, GL_RGBA, TTexelKind::Opaque);
    scene.UseConstant(MakeQuads({1, 1, 0, 1, 3, 30}), GL_QUADS, TSubmission::Immediate,
                      blend ? 0.5f : 0.9f);
  });
  add("depth", [=, &scene] {
    scene.Depth(GL_LESS);
    scene.Texture(filter);
    quads({2, 3, -1, 3, 8, 30, true, alpha});
  });
  add("grid_64px_lit_secondary", [=, &scene] {
    scene.Flat();
    scene.Lights(1, false, 8);
    scene.Texture(filter);
    TMesh mesh = MakeGrid(64);
    TRandom random;
    for (int i = 0; i < mesh.Vertices(); ++i) {
      const float x = random.Next(-0.6f, 0.6f);
      mesh.Normals.insert(mesh.Normals.end(), {x, 0.0f, std::sqrt(1 - x * x)});
    }
    SplitQuads(&mesh);
    scene.Use(mesh, GL_TRIANGLES, TSubmission::Elements);
  });
}

template <class TGl> void ListTextures(TScene<TGl>& scene) {
  ListFilter(scene, "nearest", GL_NEAREST, false);
  ListFilter(scene, "nearest_blend", GL_NEAREST, true);
  ListFilter(scene, "bilinear", GL_LINEAR, false);
  ListFilter(scene, "bilinear_blend", GL_LINEAR, true);
}

} // namespace rivals
