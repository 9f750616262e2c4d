#pragma once

#include <string>

#include "Scene.h"

/// What the command line says.
struct OPTIONS {
  std::string Model;
  std::string Output; ///< the model's name with .png in the present directory if not given
  zx_scene::VIEW View;
  zx_scene::STYLE Style;
  int Frames = 0; ///< of a turntable; 0 for one picture
  bool Stats = false;
};

enum class COMMAND {
  Render,
  Done, ///< help or version were asked for and are printed
  Wrong ///< the command line makes no sense; the reason is printed
};

/// Reads the command line.
COMMAND ReadOptions(int argc, char** argv, OPTIONS* out);

/// The name of one frame: "duck.png" gives "duck_007.png", with as many digits as the last needs
/// and three at the least.
std::string FrameName(const std::string& output, int frame, int frames);
