#include "Names.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

enum class TPiece { Text, Name, Number, Model, Frame, Wrong };

// The piece of a pattern that begins at `*at`, which is moved behind it; `*text` is what it says.
TPiece _NextPiece(const std::string& pattern, std::size_t* at, std::string* text) {
  const char first = pattern[*at];
  if (first != '{' && first != '}') {
    const std::size_t end = std::min(pattern.find_first_of("{}", *at), pattern.size());
    *text = pattern.substr(*at, end - *at);
    *at = end;
    return TPiece::Text;
  }
  if (*at + 1 < pattern.size() && pattern[*at + 1] == first) {
    *text = std::string(1, first);
    *at += 2;
    return TPiece::Text;
  }
  const std::size_t end = first == '{' ? pattern.find('}', *at) : std::string::npos;
  *text = pattern.substr(*at, end == std::string::npos ? 1 : end + 1 - *at);
  *at += text->size();
  return *text == "{name}"    ? TPiece::Name
         : *text == "{n}"     ? TPiece::Number
         : *text == "{model}" ? TPiece::Model
         : *text == "{frame}" ? TPiece::Frame
                              : TPiece::Wrong;
}

std::string _UnknownText(const std::string& piece, const std::string& pattern) {
  return "'" + piece + "' in '" + pattern +
         "' is none of {name}, {n}, {model} and {frame}; {{ and }} are braces";
}

std::string _Padded(std::size_t number, std::size_t count) {
  const std::size_t digits =
      std::max<std::size_t>(3, std::to_string(count > 0 ? count - 1 : 0).size());
  std::string text = std::to_string(number);
  text.insert(0, digits > text.size() ? digits - text.size() : 0, '0');
  return text;
}

std::string _FrameName(const std::string& name, const std::string& number) {
  const std::filesystem::path path(name);
  const std::string file = path.stem().string() + "_" + number + path.extension().string();
  return (path.parent_path() / file).string();
}

} // namespace

bool CheckPattern(const std::string& pattern, std::string* error) {
  for (std::size_t at = 0; at < pattern.size();) {
    std::string text;
    if (_NextPiece(pattern, &at, &text) == TPiece::Wrong) {
      *error = _UnknownText(text, pattern);
      return false;
    }
  }
  return true;
}

std::string FillPattern(const std::string& pattern, const TNameValues& values) {
  std::string name;
  bool isNumbered = values.Frames == 0;
  for (std::size_t at = 0; at < pattern.size();) {
    std::string text;
    switch (_NextPiece(pattern, &at, &text)) {
    case TPiece::Name:
      name += values.Name;
      break;
    case TPiece::Number:
      name += _Padded(values.Number, values.Numbers);
      isNumbered = true;
      break;
    case TPiece::Model:
      name += _Padded(values.Model, values.Models);
      break;
    case TPiece::Frame:
      name += _Padded(values.Frame, values.Frames);
      isNumbered = true;
      break;
    default:
      name += text;
    }
  }
  return isNumbered || name.empty() ? name : _FrameName(name, _Padded(values.Frame, values.Frames));
}

std::string StemOf(const std::string& model) {
  return model == "-" ? "stdin" : std::filesystem::path(model).stem().string();
}

std::vector<TTask> MakeTasks(std::size_t models, int frames, int part, int parts, int jobs) {
  const auto perModel = static_cast<std::uint64_t>(std::max(frames, 1));
  const std::uint64_t pictures = models * perModel;
  const auto bound = [&](int i) {
    const auto n = static_cast<std::uint64_t>(parts);
    const auto k = static_cast<std::uint64_t>(i);
    // pictures * k / n without the product, which may not fit.
    return pictures / n * k + pictures % n * k / n;
  };
  const std::uint64_t first = bound(part - 1);
  const std::uint64_t end = bound(part);
  const std::uint64_t jobsOfModel = (static_cast<std::uint64_t>(std::max(jobs, 1)) + models - 1) /
                                    std::max<std::uint64_t>(models, 1);
  const std::uint64_t run = (perModel + jobsOfModel - 1) / std::max<std::uint64_t>(jobsOfModel, 1);
  std::vector<TTask> tasks;
  for (std::uint64_t number = first; number < end;) {
    const std::uint64_t model = number / perModel;
    const std::uint64_t frame = number % perModel;
    const std::uint64_t count = std::min({run, perModel - frame, end - number});
    tasks.push_back({static_cast<std::size_t>(model), static_cast<int>(frame),
                     static_cast<int>(frame + count), static_cast<std::size_t>(number)});
    number += count;
  }
  return tasks;
}

bool ReadList(const std::string& name, std::vector<std::string>* out, std::string* error) {
  std::ifstream file;
  if (name != "-") {
    errno = 0;
    file.open(name, std::ios::binary);
    if (!file) {
      *error = errno != 0 ? std::strerror(errno) : "can't be read";
      return false;
    }
  }
  std::istream& lines = name == "-" ? std::cin : file;
  std::string line;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    if (!line.empty() && line[0] != '#') {
      out->push_back(line);
    }
  }
  if (lines.bad()) {
    *error = "can't be read";
    return false;
  }
  return true;
}
