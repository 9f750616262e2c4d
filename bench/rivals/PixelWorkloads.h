#pragma once

#include "Scene.h"

// Pixels from and to memory.
namespace rivals {

template <class TGl> void ListDrawPixels(TScene<TGl>& scene) {
  TGl& gl = scene.Gl;
  const auto add = [&scene](const char* name, std::function<void()> setUp,
                            std::function<void()> frame) {
    scene.Add("draw_pixels", name, std::move(setUp), std::move(frame));
  };
  const auto draw = [&scene](int x, int y, int width, int height) {
    scene.Gl.WindowPos2i(x, y);
    scene.Gl.DrawPixels(width, height, GL_RGBA, GL_UNSIGNED_BYTE, scene.Pixels.data());
  };
  const auto nothing = [] {};
  add("window", nothing, [=] { draw(0, 0, kSize, kSize); });
  add("inside_777x555", nothing, [=] { draw(101, 203, 777, 555); });
  add("tiles_64", nothing, [=] {
    for (int i = 0; i < 256; ++i) {
      draw(64 * (i % 16), 64 * (i / 16), 64, 64);
    }
  });
  add("rows", nothing, [=] {
    for (int y = 0; y < 256; ++y) {
      draw(0, y, kSize, 1);
    }
  });
  add(
      "row_length_1000", [&gl] { gl.PixelStorei(GL_UNPACK_ROW_LENGTH, 1000); },
      [=] { draw(13, 7, 500, 1000); });
  add(
      "masked", [&gl] { gl.ColorMask(1, 0, 1, 1); }, [=] { draw(0, 0, kSize, kSize); });
  add(
      "blended", [&scene] { scene.Blend(); },
      [=, &gl] {
        gl.Clear(GL_COLOR_BUFFER_BIT);
        draw(0, 0, kSize, kSize);
      });
}

template <class TGl> void ListReadPixels(TScene<TGl>& scene) {
  TGl& gl = scene.Gl;
  const auto add = [&scene](const char* name, std::function<void()> setUp,
                            std::function<void()> frame) {
    scene.Add(
        "read_pixels", name,
        [&scene, setUp] {
          // A picture that is worth reading.
          scene.Use(MakeGrid(64), GL_QUADS, TSubmission::Immediate);
          scene.Draw();
          setUp();
        },
        std::move(frame));
  };
  const auto read = [&scene](int x, int y, int width, int height, std::size_t at = 0) {
    scene.Gl.ReadPixels(x, y, width, height, GL_RGBA, GL_UNSIGNED_BYTE, scene.Pixels.data() + at);
  };
  const auto nothing = [] {};
  constexpr std::size_t kRow = 4 * kSize;
  add("window", nothing, [=] { read(0, 0, kSize, kSize); });
  add("upper_half", nothing, [=] { read(0, kSize / 2, kSize, kSize / 2); });
  add("bands_of_64_rows", nothing, [=] {
    for (int y = 0; y < kSize; y += 64) {
      read(0, y, kSize, 64, static_cast<std::size_t>(y) * kRow);
    }
  });
  add("rows", nothing, [=] {
    for (int y = 0; y < kSize; ++y) {
      read(0, y, kSize, 1, static_cast<std::size_t>(y) * kRow);
    }
  });
  // With the window's row length both sides read what OpenGL says.
  const auto windowRows = [&gl] { gl.PixelStorei(GL_PACK_ROW_LENGTH, kSize); };
  add("left_half", windowRows, [=] { read(0, 0, kSize / 2, kSize); });
  add("inside_701x600", windowRows, [=] { read(101, 203, 701, 600); });
  add("tiles_64", windowRows, [=] {
    for (int i = 0; i < 256; ++i) {
      read(64 * (i % 16), 64 * (i / 16), 64, 64);
    }
  });
}

} // namespace rivals
