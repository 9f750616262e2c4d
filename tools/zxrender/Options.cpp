#include "Options.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <getopt.h>

namespace {

constexpr char kHelp[] =
    R"(Usage: zxrender [options] MODEL

Draws a model file (COLLADA, glTF, OBJ, PLY, STL, 3DS and the rest that Assimp reads) into a PNG.

Options:
  -o, --output FILE        the picture; by default the model's name with .png, in this directory
  -s, --size WxH           size in pixels (800x600)
  -b, --background COLOR   #rgb, #rrggbb, #rrggbbaa, white, black or transparent (#dbe0e8)
  -c, --camera AZ,EL       where the camera stands, in degrees round the vertical axis and above the
                           ground (30,20); the distance is such that the whole model is seen
      --fov DEGREES        field of view of the shorter side (35)
      --up y|z             the model's vertical axis (y)
  -t, --turntable N        N pictures from all round: FILE with _000, _001, ... before its ending
  -w, --wire               draw the edges of the triangles
  -f, --filter KIND        nearest or linear: how textures are filtered (linear)
      --stats              print triangles, vertices, pixels and times
  -h, --help               print this help
  -V, --version            print the version

Exit status: 0 if all pictures were written, 1 if the model could not be read or a picture not be
written, 2 if the command line makes no sense. A texture that is missing only warns.
)";

enum { kFov = 256, kUp, kStats };

constexpr option kOptions[] = {
    {"output", required_argument, nullptr, 'o'},
    {"size", required_argument, nullptr, 's'},
    {"background", required_argument, nullptr, 'b'},
    {"camera", required_argument, nullptr, 'c'},
    {"fov", required_argument, nullptr, kFov},
    {"up", required_argument, nullptr, kUp},
    {"turntable", required_argument, nullptr, 't'},
    {"wire", no_argument, nullptr, 'w'},
    {"filter", required_argument, nullptr, 'f'},
    {"stats", no_argument, nullptr, kStats},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'V'},
    {nullptr, 0, nullptr, 0},
};

// The whole of a text as a number.
template <class T> bool _ToNumber(const std::string& text, T* out) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, *out);
  return result.ec == std::errc() && result.ptr == end;
}

// Two numbers with a mark between them.
template <class T> bool _ToPair(const std::string& text, char mark, T* first, T* second) {
  const std::size_t at = text.find(mark);
  return at != std::string::npos && _ToNumber(text.substr(0, at), first) &&
         _ToNumber(text.substr(at + 1), second);
}

bool _ToSize(const std::string& text, int* width, int* height) {
  constexpr int kMost = 32768;
  return _ToPair(text, 'x', width, height) && *width >= 1 && *height >= 1 && *width <= kMost &&
         *height <= kMost;
}

bool _ToColor(const std::string& text, zx_scene::TColor* out) {
  static constexpr struct {
    const char* Name;
    const char* Digits;
  } kNames[] = {{"white", "#ffffff"}, {"black", "#000000"}, {"transparent", "#00000000"}};
  for (const auto& name : kNames) {
    if (text == name.Name) {
      return _ToColor(name.Digits, out);
    }
  }
  const bool isShort = text.size() == 4;
  const std::size_t digits = isShort ? 1 : 2;
  if (text.empty() || text[0] != '#' || (!isShort && text.size() != 7 && text.size() != 9)) {
    return false;
  }
  *out = {0, 0, 0, 1};
  for (std::size_t i = 1, c = 0; i < text.size(); i += digits, ++c) {
    unsigned int value = 0;
    const char* end = text.data() + i + digits;
    const auto result = std::from_chars(text.data() + i, end, value, 16);
    if (result.ec != std::errc() || result.ptr != end) {
      return false;
    }
    (*out)[c] = static_cast<float>(isShort ? value * 17 : value) / 255;
  }
  return true;
}

bool _Take(int option, const std::string& value, OPTIONS* out) {
  switch (option) {
  case 'o':
    out->Output = value;
    return !value.empty();
  case 's':
    return _ToSize(value, &out->View.Width, &out->View.Height);
  case 'b':
    return _ToColor(value, &out->Style.Background);
  case 'c':
    return _ToPair(value, ',', &out->View.Azimuth, &out->View.Elevation) &&
           std::abs(out->View.Azimuth) <= 1e6 && std::abs(out->View.Elevation) <= 90;
  case kFov:
    return _ToNumber(value, &out->View.FieldOfView) && out->View.FieldOfView >= 1 &&
           out->View.FieldOfView <= 150;
  case kUp:
    out->View.ZUp = value == "z";
    return value == "y" || value == "z";
  case 't':
    return _ToNumber(value, &out->Frames) && out->Frames >= 1 && out->Frames <= 100000;
  case 'w':
    out->Style.Wire = true;
    return true;
  case 'f':
    out->Style.Linear = value == "linear";
    return value == "nearest" || value == "linear";
  default:
    out->Stats = true;
    return true;
  }
}

COMMAND _Wrong(const std::string& reason) {
  std::fprintf(stderr, "zxrender: %s\nTry 'zxrender --help'.\n", reason.c_str());
  return COMMAND::Wrong;
}

std::string _OptionName(int option) {
  const auto* found = std::find_if(std::begin(kOptions), std::end(kOptions) - 1,
                                   [&](const auto& known) { return known.val == option; });
  return std::string("--") + found->name;
}

// What getopt stumbled over: a letter, or the word that it took last.
std::string _Culprit(char** argv) {
  return optopt > 0 && optopt < 256 ? std::string("-") + static_cast<char>(optopt)
                                    : std::string(argv[optind - 1]);
}

} // namespace

COMMAND ReadOptions(int argc, char** argv, OPTIONS* out) {
  opterr = 0;
  optind = 0; // from the start, also when it was called before
  for (;;) {
    const int option = getopt_long(argc, argv, ":o:s:b:c:t:wf:hV", kOptions, nullptr);
    if (option == -1) {
      break;
    }
    switch (option) {
    case 'h':
      std::fputs(kHelp, stdout);
      return COMMAND::Done;
    case 'V':
      std::puts("zxrender " ZX_RENDER_VERSION);
      return COMMAND::Done;
    case ':':
      return _Wrong("option '" + _Culprit(argv) + "' needs a value");
    case '?':
      return _Wrong("unknown option '" + _Culprit(argv) + "'");
    default:
      break;
    }
    const std::string value = optarg != nullptr ? optarg : "";
    if (!_Take(option, value, out)) {
      return _Wrong("'" + value + "' is no value for " + _OptionName(option));
    }
  }
  if (optind + 1 != argc) {
    return _Wrong(optind >= argc ? "no model file given" : "more than one model file given");
  }
  out->Model = argv[optind];
  if (out->Output.empty()) {
    out->Output = std::filesystem::path(out->Model).stem().string() + ".png";
  }
  return COMMAND::Render;
}

std::string FrameName(const std::string& output, int frame, int frames) {
  const int digits = std::max<int>(3, static_cast<int>(std::to_string(frames - 1).size()));
  std::string number = std::to_string(frame);
  number.insert(0, static_cast<std::size_t>(digits) - number.size(), '0');
  const std::filesystem::path path(output);
  const std::string name = path.stem().string() + "_" + number + path.extension().string();
  return (path.parent_path() / name).string();
}
