#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What stands for the braces of a pattern.
struct NAME_VALUES {
  std::string Name;       ///< {name}
  std::size_t Number;     ///< {n}: of the picture in the whole call
  std::size_t Numbers;    ///< how many pictures there are
  std::size_t Model;      ///< {model}
  std::size_t Models;     ///< how many models there are
  std::size_t Frame = 0;  ///< {frame}
  std::size_t Frames = 0; ///< of the turntable; 0 for none
};

/// Says in `*error` which brace of a pattern makes no sense; false then.
bool CheckPattern(const std::string& pattern, std::string* error);

/// A pattern with its braces replaced: {name}, {n}, {model}, {frame}, and {{ and }} for braces.
/// Numbers have as many digits as the last needs and three at the least. On a turntable, a pattern
/// with neither {n} nor {frame} gets the frame's number before its ending: "duck_007.png".
std::string FillPattern(const std::string& pattern, const NAME_VALUES& values);

/// The name of a model without directory and ending; "stdin" for "-".
std::string StemOf(const std::string& model);

/// The pictures of one model, or a run of them.
struct TASK {
  std::size_t Model; ///< index in the list
  int FirstFrame;
  int EndFrame;
  std::size_t FirstNumber; ///< of the first picture, as {n} counts
};

/// The tasks of part `part`, from 1, of `parts`: each part takes a run of pictures of the whole
/// call. A model is cut into several tasks when there are fewer models than `jobs`.
std::vector<TASK> MakeTasks(std::size_t models, int frames, int part, int parts, int jobs);

/// The lines of a list of models, without empty ones and those that begin with #. "-" is standard
/// input. False with `*error` as the reason.
bool ReadList(const std::string& name, std::vector<std::string>* out, std::string* error);
