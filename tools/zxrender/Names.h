#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The values of the placeholders of a pattern.
struct TNameValues {
  std::string Name;       ///< {name}
  std::size_t Number;     ///< {n}: of the picture in the whole call
  std::size_t Numbers;    ///< how many pictures there are
  std::size_t Model;      ///< {model}
  std::size_t Models;     ///< how many models there are
  std::size_t Frame = 0;  ///< {frame}
  std::size_t Frames = 0; ///< of the turntable; 0 for none
};

/// False, with the offending placeholder in `*error`, if a pattern is malformed.
bool CheckPattern(const std::string& pattern, std::string* error);

/// Replaces the placeholders {name}, {n}, {model} and {frame}; {{ and }} stand for braces. Numbers
/// have as many digits as the greatest needs, but at least three. On a turntable, a pattern with
/// neither {n} nor {frame} gets the frame's number before its ending: "duck_007.png".
std::string FillPattern(const std::string& pattern, const TNameValues& values);

/// The file name of a model without directory and ending; "stdin" for "-".
std::string StemOf(const std::string& model);

/// A run of consecutive pictures of one model: what one process does.
struct TTask {
  std::size_t Model; ///< index in the list
  int FirstFrame;
  int EndFrame;
  std::size_t FirstNumber; ///< of the first picture, as {n} counts
};

/// The tasks of part `part`, counted from 1, of `parts`. Each part is a run of consecutive pictures
/// of the whole call. A turntable is split into several tasks if there are fewer models than
/// `jobs`.
std::vector<TTask> MakeTasks(std::size_t models, int frames, int part, int parts, int jobs);

/// Appends the lines of a list of models, skipping empty ones and those that begin with #. "-" is
/// standard input. False with `*error` as the reason.
bool ReadList(const std::string& name, std::vector<std::string>* out, std::string* error);
