#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Picture.h"
#include "Scene.h"

enum class UP_AXIS { Auto, Y, Z };

/// Seconds for a file, and for each further picture of a turntable.
constexpr double kDefaultTimeout = 120;

/// The command line, parsed.
struct OPTIONS {
  std::vector<std::string> Models; ///< "-" is standard input
  std::string List;                ///< a file of further models; empty for none
  std::string Output;              ///< a name pattern, like those below; empty for no picture
  std::string Depth;
  std::string Normals;
  std::string Ids;
  std::string Check;
  std::string Difference;
  IMAGE_KIND Kind = IMAGE_KIND::Unknown; ///< of the picture, if --format gives it
  std::string ModelFormat;               ///< of a model from standard input
  zx_scene::VIEW View;
  zx_scene::STYLE Style;
  UP_AXIS Up = UP_AXIS::Auto;
  bool FromFileCamera = false;
  std::string FileCamera; ///< its name; empty for the first
  int Frames = 0;         ///< of a turntable; 0 for one picture
  double DepthStep = 0;   ///< 0 for one that fits
  int Jobs = 0;           ///< 0 for as many as processors
  int Part = 1;
  int Parts = 1;
  double Timeout = -1;                           ///< seconds; 0 for never, below 0 for the default
  std::uint64_t Memory = std::uint64_t{4} << 30; ///< bytes; 0 for no limit
  bool Digest = false;
  bool Json = false;
  bool Stats = false;
};

enum class COMMAND {
  Render,
  Done, ///< help or version were asked for and are printed
  Wrong ///< usage error; the reason is printed
};

/// Reads the command line.
COMMAND ReadOptions(int argc, char** argv, OPTIONS* out);

/// The kind of the picture.
IMAGE_KIND OutputKind(const OPTIONS& options);

/// Reports a usage error on standard error.
COMMAND RefuseCommandLine(const std::string& reason);
