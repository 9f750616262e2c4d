#pragma once

#include "Scene.h"

// Lines and points.
namespace rivals {

template <class TGl> void ListLines(TScene<TGl>& scene) {
  const auto add = [&scene](const char* name, const std::function<void()>& setUp) {
    scene.Add("lines", name, setUp);
  };
  const auto lines = [&scene](int count, float pixels, bool turned, float degrees = 0,
                              TSubmission by = TSubmission::Arrays) {
    scene.Use(MakeShapes({count, 2, pixels, turned, 0.8f, degrees}), GL_LINES, by);
  };
  add("50px_random", [=] { lines(20000, 50, true); });
  add("50px_along_rows", [=] { lines(20000, 50, false); });
  add("50px_upright", [=] { lines(20000, 50, false, 90); });
  add("50px_60_degrees", [=] { lines(20000, 50, false, 60); });
  add("5px_random", [=] { lines(40000, 5, true); });
  add("300px_random", [=] { lines(4000, 300, true); });
  add("20px_random_immediate", [=] { lines(20000, 20, true, 0, TSubmission::Immediate); });
  add("20px_random_elements", [=] { lines(20000, 20, true, 0, TSubmission::Elements); });
  add("50px_constant_alpha_09", [&scene] {
    scene.UseConstant(MakeShapes({20000, 2, 50, true, 0.8f}), GL_LINES, TSubmission::Arrays, 0.9f);
  });
  add("50px_depth", [=, &scene] {
    scene.Depth(GL_LESS);
    lines(20000, 50, true);
  });
  add("50px_alpha_05_blended", [&scene] {
    scene.Blend();
    TMesh mesh = MakeShapes({20000, 2, 50, true, 0.8f});
    Paint(&mesh, 0.5f);
    scene.Use(mesh, GL_LINES);
  });
  add("30px_strips", [&scene] { scene.Use(MakePaths(400, 50, 30), GL_LINE_STRIP); });
  add("30px_loops", [&scene] { scene.Use(MakePaths(2000, 5, 30), GL_LINE_LOOP); });
  add("50px_perspective_stencil", [=, &scene] {
    scene.Perspective();
    scene.Gl.Translatef(0, 0, -2.5f);
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    lines(20000, 120, true);
  });
}

template <class TGl> void ListPoints(TScene<TGl>& scene) {
  const auto add = [&scene](const char* name, const std::function<void()>& setUp) {
    scene.Add("points", name, setUp);
  };
  const auto points = [&scene](int count, float spread = 1, TSubmission by = TSubmission::Arrays) {
    scene.Use(MakeShapes({count, 1, 1, false, spread}), GL_POINTS, by);
  };
  add("scattered", [=] { points(100000); });
  add("dense", [=] { points(100000, 0.1f); });
  add("half_outside", [=] { points(100000, 1.4f); });
  add("constant_alpha_09", [&scene] {
    scene.UseConstant(MakeShapes({100000, 1}), GL_POINTS, TSubmission::Arrays, 0.9f);
  });
  add("immediate", [=] { points(50000, 1, TSubmission::Immediate); });
  add("elements", [=] { points(50000, 1, TSubmission::Elements); });
  add("depth", [=, &scene] {
    scene.Depth(GL_LESS);
    points(100000);
  });
  add("depth_stencil", [=, &scene] {
    scene.Depth(GL_LESS);
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    points(100000);
  });
  add("alpha_05_blended", [&scene] {
    scene.Blend();
    TMesh mesh = MakeShapes({100000, 1});
    Paint(&mesh, 0.5f);
    scene.Use(mesh, GL_POINTS);
  });
  add("perspective", [=, &scene] {
    scene.Perspective();
    scene.Gl.Translatef(0, 0, -2);
    points(100000);
  });
}

} // namespace rivals
