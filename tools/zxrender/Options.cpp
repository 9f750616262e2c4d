#include "Options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include <getopt.h>
#include <unistd.h>

#include "Manual.h"
#include "OptionTable.h"

namespace {

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

// Degrees round and above.
bool _ToAngles(const std::string& text, double* azimuth, double* elevation) {
  return _ToPair(text, ',', azimuth, elevation) && std::abs(*azimuth) <= 1e6 &&
         std::abs(*elevation) <= 90;
}

bool _ToCamera(const std::string& text, TOptions* out) {
  out->FromFileCamera = text == "file" || text.rfind("file:", 0) == 0;
  if (out->FromFileCamera) {
    out->FileCamera = text.size() > 5 ? text.substr(5) : "";
    return text != "file:";
  }
  return _ToAngles(text, &out->View.Azimuth, &out->View.Elevation);
}

bool _ToLight(const std::string& text, zx_scene::TStyle* out) {
  using zx_scene::TLight;
  out->Light = text == "camera" ? TLight::WithCamera
               : text == "none" ? TLight::None
                                : TLight::Fixed;
  return out->Light != TLight::Fixed || _ToAngles(text, &out->LightAzimuth, &out->LightElevation);
}

bool _ToUp(const std::string& text, TUpAxis* out) {
  *out = text == "y" ? TUpAxis::Y : text == "z" ? TUpAxis::Z : TUpAxis::Auto;
  return *out != TUpAxis::Auto || text == "auto";
}

// Bytes, with K, M, G or T for powers of 1024.
bool _ToBytes(std::string text, std::uint64_t* out) {
  static constexpr char kUnits[] = "KMGT";
  int shift = 0;
  if (!text.empty()) {
    const char* unit = std::strchr(kUnits, std::toupper(static_cast<unsigned char>(text.back())));
    if (unit != nullptr && *unit != 0) {
      shift = 10 * (static_cast<int>(unit - kUnits) + 1);
      text.pop_back();
    }
  }
  if (!_ToNumber(text, out) || *out > std::numeric_limits<std::uint64_t>::max() >> shift) {
    return false;
  }
  *out <<= shift;
  return true;
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

// An ending, with or without its dot: that of a picture, or else of a model.
bool _ToFormat(std::string text, TOptions* out) {
  text.erase(0, text.rfind('.', 0) == 0 ? 1 : 0);
  if (text.empty() || text.find_first_of("./") != std::string::npos) {
    return false;
  }
  const TImageKind kind = KindOfName("." + text);
  if (kind == TImageKind::Png || kind == TImageKind::Jpeg) {
    out->Kind = kind;
  } else {
    out->ModelFormat = text;
  }
  return true;
}

bool _ToText(const std::string& value, std::string* out) {
  *out = value;
  return !value.empty();
}

// Options that say something of the picture.
bool _TakePicture(int option, const std::string& value, TOptions* out) {
  switch (option) {
  case 'o':
    return _ToText(value, &out->Output);
  case 's':
    return _ToSize(value, &out->View.Width, &out->View.Height);
  case kOptionSamples:
    return _ToNumber(value, &out->Style.Samples) &&
           (out->Style.Samples == 1 || out->Style.Samples == 4 || out->Style.Samples == 16);
  case 'b':
    return _ToColor(value, &out->Style.Background);
  case 'w':
    out->Style.Wire = true;
    return true;
  case 'f':
    out->Style.Linear = value == "linear";
    return value == "nearest" || value == "linear";
  case 'c':
    return _ToCamera(value, out);
  case kOptionFov:
    return _ToNumber(value, &out->View.FieldOfView) && out->View.FieldOfView >= 1 &&
           out->View.FieldOfView <= 150;
  case kOptionUp:
    return _ToUp(value, &out->Up);
  case kOptionLight:
    return _ToLight(value, &out->Style);
  default: // 't'
    return _ToNumber(value, &out->Frames) && out->Frames >= 1 && out->Frames <= 100000;
  }
}

bool _Take(int option, const std::string& value, TOptions* out) {
  switch (option) {
  case kOptionFormat:
    return _ToFormat(value, out);
  case kOptionDepth:
    return _ToText(value, &out->Depth);
  case kOptionDepthStep:
    return _ToNumber(value, &out->DepthStep) && out->DepthStep > 0 && out->DepthStep < 1e30;
  case kOptionNormals:
    return _ToText(value, &out->Normals);
  case kOptionIds:
    return _ToText(value, &out->Ids);
  case kOptionDigest:
    out->Digest = true;
    return true;
  case kOptionCheck:
    return _ToText(value, &out->Check);
  case kOptionDifference:
    return _ToText(value, &out->Difference);
  case kOptionList:
    return _ToText(value, &out->List);
  case 'j':
    return _ToNumber(value, &out->Jobs) && out->Jobs >= 1 && out->Jobs <= 4096;
  case kOptionPart:
    return _ToPair(value, '/', &out->Part, &out->Parts) && out->Part >= 1 &&
           out->Part <= out->Parts;
  case kOptionTimeout:
    return _ToNumber(value, &out->Timeout) && out->Timeout >= 0 && out->Timeout <= 1e9;
  case kOptionMemory:
    return _ToBytes(value, &out->Memory);
  case kOptionJson:
    out->Json = true;
    return true;
  case kOptionStats:
    out->Stats = true;
    return true;
  default:
    return _TakePicture(option, value, out);
  }
}

// What getopt stumbled over: a letter, or the word that it took last.
std::string _Culprit(char** argv) {
  return optopt > 0 && optopt < 256 ? std::string("-") + static_cast<char>(optopt)
                                    : std::string(argv[optind - 1]);
}

struct TGetoptTables {
  std::string Letters = ":";
  std::vector<option> Names;
};

TGetoptTables _MakeTables() {
  TGetoptTables tables;
  for (const TOptionGroup& group : OptionGroups()) {
    for (const TOptionRow& row : group.Rows) {
      const bool optional = row.Argument != nullptr && row.Argument[0] == '[';
      const int argument = row.Argument == nullptr ? no_argument
                           : optional              ? optional_argument
                                                   : required_argument;
      tables.Names.push_back({row.Name, argument, nullptr, row.Code});
      if (row.Code < 256) {
        tables.Letters += static_cast<char>(row.Code);
        tables.Letters += argument == required_argument ? ":" : "";
      }
    }
  }
  // For the build alone.
  tables.Names.push_back({"print-manual", no_argument, nullptr, kOptionManual});
  tables.Names.push_back({"print-completion", no_argument, nullptr, kOptionCompletion});
  tables.Names.push_back({nullptr, 0, nullptr, 0});
  return tables;
}

TCommand _Print(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  return TCommand::Done;
}

TCommand _PrintHelp(const std::string& group) {
  const std::string text = HelpText(group);
  return text.empty() ? RefuseCommandLine("'" + group + "' is no group of options") : _Print(text);
}

// The first thing that does not go together; empty if all does.
std::string _FindConflict(const TOptions& options) {
  const auto count = std::count(options.Models.begin(), options.Models.end(), "-");
  if (options.Models.empty() && options.List.empty()) {
    return "no model file given";
  }
  if (count + (options.List == "-" ? 1 : 0) > 1) {
    return "standard input can be read once only";
  }
  if (options.FromFileCamera && options.Frames > 0) {
    return "a turntable has a camera of its own: --camera=file does not go with --turntable";
  }
  if (!options.Difference.empty() && options.Check.empty()) {
    return "--difference goes with --check only";
  }
  if (options.DepthStep > 0 && options.Depth.empty()) {
    return "--depth-step goes with --depth only";
  }
  return "";
}

std::string _WrongEnding(const std::string& name, const char* endings) {
  return "'" + name + "' must end with " + endings;
}

std::string _FindWrongKind(const TOptions& options) {
  const bool hasAlpha = options.Style.Background[3] < 1;
  if (!options.Output.empty()) {
    const TImageKind kind = OutputKind(options);
    if (kind != TImageKind::Png && kind != TImageKind::Jpeg) {
      return _WrongEnding(options.Output, ".png, .jpg or .jpeg, or --format say so");
    }
    if (kind == TImageKind::Jpeg && hasAlpha) {
      return "JPEG has no transparency: choose PNG or another background";
    }
  }
  for (const std::string* name : {&options.Depth, &options.Normals}) {
    const TImageKind kind = KindOfName(*name);
    if (!name->empty() && kind != TImageKind::Png && kind != TImageKind::Pfm) {
      return _WrongEnding(*name, ".png or .pfm");
    }
  }
  for (const std::string* name : {&options.Ids, &options.Difference}) {
    if (!name->empty() && KindOfName(*name) != TImageKind::Png) {
      return _WrongEnding(*name, ".png");
    }
  }
  return "";
}

// Standard output takes one thing.
std::string _FindOutputConflict(const TOptions& options) {
  if (options.Json && options.Stats) {
    return "--json has the statistics in it: leave out --stats";
  }
  if (options.Output != "-") {
    return "";
  }
  if (options.Json || options.Stats || options.Digest) {
    return "the picture goes to standard output, where --json, --stats and --digest print: give "
           "another --output";
  }
  return isatty(STDOUT_FILENO) != 0 ? "no picture is written to a terminal: give --output" : "";
}

TCommand _Complete(TOptions* out) {
  if (out->Output.empty() && out->Check.empty() && !out->Digest) {
    const bool piped = out->List.empty() && out->Models == std::vector<std::string>{"-"};
    out->Output = piped ? "-" : out->Kind == TImageKind::Jpeg ? "{name}.jpg" : "{name}.png";
  }
  for (const auto& find : {_FindConflict, _FindWrongKind, _FindOutputConflict}) {
    if (const std::string reason = find(*out); !reason.empty()) {
      return RefuseCommandLine(reason);
    }
  }
  return TCommand::Render;
}

} // namespace

TImageKind OutputKind(const TOptions& options) {
  return options.Kind != TImageKind::Unknown ? options.Kind
         : options.Output == "-"             ? TImageKind::Png
                                             : KindOfName(options.Output);
}

TCommand RefuseCommandLine(const std::string& reason) {
  std::fprintf(stderr, "zxrender: %s\nTry 'zxrender --help'.\n", reason.c_str());
  return TCommand::Wrong;
}

TCommand ReadOptions(int argc, char** argv, TOptions* out) {
  const TGetoptTables tables = _MakeTables();
  opterr = 0;
  optind = 0; // from the start, also when it was called before
  for (;;) {
    const int code = getopt_long(argc, argv, tables.Letters.c_str(), tables.Names.data(), nullptr);
    if (code == -1) {
      break;
    }
    const std::string value = optarg != nullptr ? optarg : "";
    switch (code) {
    case 'h':
      return _PrintHelp(value);
    case 'V':
      return _Print("zxrender " ZX_RENDER_VERSION "\n");
    case kOptionManual:
      return _Print(ManualPage());
    case kOptionCompletion:
      return _Print(BashCompletion());
    case ':':
      return RefuseCommandLine("option '" + _Culprit(argv) + "' needs a value");
    case '?':
      return RefuseCommandLine("unknown option '" + _Culprit(argv) + "'");
    default:
      break;
    }
    if (!_Take(code, value, out)) {
      return RefuseCommandLine("'" + value + "' is no value for --" + FindOption(code)->Name);
    }
  }
  out->Models.assign(argv + optind, argv + argc);
  return _Complete(out);
}
