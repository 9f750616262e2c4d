#pragma once

#include "Scene.h"

// Many small triangles: lit spheres, and shapes scattered over the picture.
namespace rivals {

template <class TGl> void ListSpheres(TScene<TGl>& scene) {
  const auto add = [&scene](const char* name, const std::function<void()>& setUp) {
    scene.Add("sphere", name, [&scene, setUp] {
      scene.Depth(GL_LESS);
      scene.ClearEach |= GL_COLOR_BUFFER_BIT;
      scene.Gl.MatrixMode(GL_PROJECTION);
      scene.Gl.Ortho(-1, 1, -1, 1, -1, 1);
      scene.Gl.MatrixMode(GL_MODELVIEW);
      setUp();
    });
  };
  const auto sphere = [&scene](int rings, TSubmission by = TSubmission::Elements) {
    scene.Use(MakeSphere(rings), GL_TRIANGLES, by);
  };
  add("directional_10px", [&scene, sphere] {
    scene.Lights(1, false);
    sphere(158); // 99,856 triangles
  });
  add("specular_10px", [&scene, sphere] {
    scene.Lights(1, false, 20);
    sphere(158);
  });
  add("3_positional_10px", [&scene, sphere] {
    scene.Lights(3, true);
    sphere(158);
  });
  add("3_directional_specular_40px", [&scene, sphere] {
    scene.Lights(3, false, 20);
    sphere(79);
  });
  add("specular_300px", [&scene, sphere] {
    scene.Lights(1, false, 20);
    sphere(29);
  });
  add("directional_300px", [&scene, sphere] {
    scene.Lights(1, false);
    sphere(29);
  });
  add("two_sided_specular_40px", [&scene, sphere] {
    scene.Lights(1, false, 20);
    scene.Gl.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
    sphere(79);
  });
  add("specular_40px_arrays", [&scene, sphere] {
    scene.Lights(1, false, 20);
    sphere(79, TSubmission::Arrays);
  });
  add("directional_40px_immediate", [&scene, sphere] {
    scene.Lights(1, false);
    sphere(79, TSubmission::Immediate);
  });
  add("specular_40px_strips", [&scene] {
    scene.Lights(1, false, 20);
    scene.Use(MakeStripSphere(79), GL_TRIANGLE_STRIP);
  });
  add("culled_specular_10px", [&scene, sphere] {
    scene.Cull(GL_BACK);
    scene.Lights(1, false, 20);
    sphere(158);
  });
  const auto painted = [&scene](TSubmission by) {
    scene.Lights(1, false);
    scene.Gl.ColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    Switch(scene.Gl, GL_COLOR_MATERIAL, true);
    Switch(scene.Gl, GL_NORMALIZE, true);
    TMesh mesh = MakeSphere(79);
    Paint(&mesh);
    scene.Use(mesh, GL_TRIANGLES, by);
  };
  add("color_material_40px", [=] { painted(TSubmission::Elements); });
  add("color_material_40px_arrays", [=] { painted(TSubmission::Arrays); });
  add("positional_40px_immediate", [&scene, sphere] {
    scene.Lights(1, true);
    sphere(79, TSubmission::Immediate);
  });
  add("turned_perspective_40px", [&scene, sphere] {
    scene.Perspective();
    scene.Gl.Translatef(0, 0, -2);
    scene.Gl.Rotatef(30, 1, 1, 0);
    scene.Lights(1, false, 20);
    sphere(79);
  });
}

/// What differs between immediate triangles and those of arrays is the submission alone.
template <class TGl> void ListTriangles(TScene<TGl>& scene, const char* family, TSubmission by) {
  const auto add = [&scene, family](const char* name, const std::function<void()>& setUp) {
    scene.Add(family, name, setUp);
  };
  const auto shapes = [&scene, by](int count, float pixels, bool turned = true) {
    scene.Use(MakeShapes({count, 3, pixels, turned}), GL_TRIANGLES, by);
  };
  add("2px", [=] { shapes(50000, 2); });
  add("10px", [=] { shapes(50000, 10); });
  add("10px_aligned", [=] { shapes(50000, 10, false); });
  add("40px", [=] { shapes(20000, 40); });
  add("300px", [=] { shapes(5000, 300); });
  add("10px_constant_alpha_09", [&scene, by] {
    scene.UseConstant(MakeShapes({50000, 3, 10, true}), GL_TRIANGLES, by, 0.9f);
  });
  add("40px_depth", [=, &scene] {
    scene.Depth(GL_LESS);
    shapes(20000, 40);
  });
  add("10px_depth_stencil", [=, &scene] {
    scene.Depth(GL_LEQUAL);
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    shapes(50000, 10);
  });
  add("40px_alpha_05_blended", [&scene, by] {
    scene.Blend();
    TMesh mesh = MakeShapes({20000, 3, 40, true});
    Paint(&mesh, 0.5f);
    scene.Use(mesh, GL_TRIANGLES, by);
  });
  add("40px_textured", [&scene, by] {
    scene.Texture(GL_LINEAR);
    TMesh mesh = MakeShapes({20000, 3, 40, true});
    for (int i = 0; i < mesh.Vertices(); ++i) {
      mesh.TexCoords.push_back(i % 3 == 1 ? 0.3f : 0.1f);
      mesh.TexCoords.push_back(i % 3 == 2 ? 0.3f : 0.1f);
    }
    scene.Use(mesh, GL_TRIANGLES, by);
  });
  add("10px_perspective", [=, &scene] {
    scene.Perspective();
    scene.Gl.Translatef(0, 0, -2);
    shapes(50000, 20);
  });
  add("10px_strips", [&scene, by] { scene.Use(MakeStrips(1500, 32, 10), GL_TRIANGLE_STRIP, by); });
  add("10px_fans", [&scene, by] { scene.Use(MakeFans(3000, 16, 10), GL_TRIANGLE_FAN, by); });
  add("20px_quads", [&scene, by] { scene.Use(MakeShapes({25000, 4, 20, true}), GL_QUADS, by); });
}

template <class TGl> void ListMeshes(TScene<TGl>& scene) {
  ListSpheres(scene);
  ListTriangles(scene, "triangles_immediate", TSubmission::Immediate);
  ListTriangles(scene, "triangles_arrays", TSubmission::Arrays);
  const char* const family = "triangles_arrays";
  scene.Add(family, "10px_elements", [&scene] {
    scene.Use(MakeShapes({50000, 3, 10, true}), GL_TRIANGLES, TSubmission::Elements);
  });
  scene.Add(family, "10px_elements_shared", [&scene] {
    TMesh mesh = MakeSphere(110);
    mesh.Normals.clear();
    Paint(&mesh);
    scene.Use(mesh, GL_TRIANGLES, TSubmission::Elements);
  });
  scene.Add(family, "10px_strips_elements", [&scene] {
    scene.Use(MakeStrips(1500, 32, 10), GL_TRIANGLE_STRIP, TSubmission::Elements);
  });
}

} // namespace rivals
