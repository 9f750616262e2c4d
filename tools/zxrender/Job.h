#pragma once

#include <cstddef>
#include <string>

#include "Names.h"
#include "Options.h"

/// All that one call of the program is to do.
struct CALL {
  OPTIONS Options;      ///< its models, those of the list among them
  std::string Input;    ///< what stood on standard input, if it is a model
  std::size_t Pictures; ///< in all parts
};

/// The names of the files of one picture; empty for what was not asked for.
struct PICTURE_NAMES {
  std::string Output;
  std::string Depth;
  std::string Normals;
  std::string Ids;
  std::string Check;
  std::string Difference;
  std::string Label; ///< what to call the picture
};

/// The names of a picture of a task.
PICTURE_NAMES NamesOf(const CALL& call, const TASK& task, int frame);

/// Reads and draws the pictures of a task, and writes what becomes of it to the file descriptor
/// `pipe`: lines of JSON, each an object with "event" and
///
///     "warning"   "text"
///     "picture"   "frame", "record": what --json prints
///     "failed"    "status" and "reason" as in --json, "blamed": the file that it is about
///
/// Pictures named "-" go to the file descriptor `standardOutput`.
void RunTask(const CALL& call, const TASK& task, int pipe, int standardOutput);
