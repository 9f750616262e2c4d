#pragma once

#include <cstddef>
#include <string>

#include "Names.h"
#include "Options.h"

/// Everything that one invocation is to do.
struct TCall {
  TOptions Options;     ///< with the models of the list appended
  std::string Input;    ///< the model on standard input, if there is one
  std::size_t Pictures; ///< in all parts
};

/// The files of one picture; empty for those not asked for.
struct TPictureNames {
  std::string Output;
  std::string Depth;
  std::string Normals;
  std::string Ids;
  std::string Check;
  std::string Difference;
  std::string Label; ///< the picture's name in reports
};

/// The names of a picture of a task.
TPictureNames NamesOf(const TCall& call, const TTask& task, int frame);

/// Loads the model of a task and draws its pictures. Reports to the file descriptor `pipe` by lines
/// of JSON, each an object with "event" and
///
///     "warning"   "text"
///     "picture"   "frame", "record": what --json prints
///     "failed"    "status" and "reason" as in --json, "blamed": the file that it is about
///
/// Pictures named "-" go to the file descriptor `standardOutput`.
void RunTask(const TCall& call, const TTask& task, int pipe, int standardOutput);
