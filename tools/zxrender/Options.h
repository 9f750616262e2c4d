#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Picture.h"
#include "Scene.h"

enum class TUpAxis { Auto, Y, Z };

/// Seconds for a file, and for each further picture of a turntable.
constexpr double kDefaultTimeout = 120;

/// The command line, parsed.
struct TOptions {
  std::vector<std::string> Models; ///< "-" is standard input
  std::string List;                ///< a file of further models; empty for none
  std::string Output;              ///< a name pattern, like those below; empty for no picture
  std::string Depth;
  std::string Normals;
  std::string Ids;
  std::string Check;
  std::string Difference;
  TImageKind Kind = TImageKind::Unknown; ///< of the picture, if --format gives it
  std::string ModelFormat;               ///< of a model from standard input
  zx_scene::TView View;
  zx_scene::TStyle Style;
  TUpAxis Up = TUpAxis::Auto;
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

enum class TCommand {
  Render,
  Done, ///< help or version were asked for and are printed
  Wrong ///< usage error; the reason is printed
};

/// Reads the command line.
TCommand ReadOptions(int argc, char** argv, TOptions* out);

/// The kind of the picture.
TImageKind OutputKind(const TOptions& options);

/// Reports a usage error on standard error.
TCommand RefuseCommandLine(const std::string& reason);
