// zxrender: draws model files into pictures.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include "Batch.h"
#include "Job.h"
#include "Names.h"
#include "Options.h"

namespace {

// Processors that this process may use.
int _CountProcessors() {
  cpu_set_t set;
  return sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
}

// A closed standard descriptor would be the next one that is opened, a pipe to a child for
// instance. In its place goes one that can't be used either.
void _OccupyStandardDescriptors() {
  for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(file, F_GETFD) < 0 && errno == EBADF) {
      open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY); // the lowest free one
    }
  }
}

bool _ReadInput(std::string* out) {
  char part[1 << 16];
  for (;;) {
    const ssize_t count = read(STDIN_FILENO, part, sizeof part);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      return count == 0;
    }
    out->append(part, static_cast<std::size_t>(count));
  }
}

std::string _DuplicateText(const std::string& name) {
  return name == "-"
             ? "standard output takes one picture only"
             : "more than one picture would go into '" + name + "': {n} in a name keeps them apart";
}

// No two pictures may go into one file. False with `*error` as the reason.
bool _CheckNames(const TCall& call, const std::vector<TTask>& tasks, std::string* error) {
  const TOptions& options = call.Options;
  for (const std::string* pattern : {&options.Output, &options.Depth, &options.Normals,
                                     &options.Ids, &options.Check, &options.Difference}) {
    if (!CheckPattern(*pattern, error)) {
      return false;
    }
  }
  std::set<std::string> known;
  for (const TTask& task : tasks) {
    for (int frame = task.FirstFrame; frame < task.EndFrame; ++frame) {
      const TPictureNames names = NamesOf(call, task, frame);
      for (const std::string* name :
           {&names.Output, &names.Depth, &names.Normals, &names.Ids, &names.Difference}) {
        if (!name->empty() && !known.insert(*name).second) {
          *error = _DuplicateText(*name);
          return false;
        }
      }
    }
  }
  return true;
}

int _Fail(const std::string& reason) {
  std::fprintf(stderr, "zxrender: %s\n", reason.c_str());
  return 1;
}

int _Run(const TOptions& options) {
  TCall call = {options, "", 0};
  std::vector<std::string>& models = call.Options.Models;
  std::string error;
  if (!options.List.empty() && !ReadList(options.List, &models, &error)) {
    return _Fail((options.List == "-" ? "standard input" : options.List) + ": " + error);
  }
  bool hasInput = false;
  for (const std::string& model : models) {
    if (model == "-") {
      if (hasInput || options.List == "-") {
        RefuseCommandLine("standard input can be read once only");
        return 2;
      }
      hasInput = true;
    }
  }
  if (hasInput && !_ReadInput(&call.Input)) {
    return _Fail(std::string("standard input: ") + std::strerror(errno));
  }
  const int frames = options.Frames > 0 ? options.Frames : 1;
  call.Pictures = models.size() * static_cast<std::size_t>(frames);
  const int jobs = options.Jobs > 0 ? options.Jobs : _CountProcessors();
  // All names are checked, also those of other parts: parts run side by side.
  if (!_CheckNames(call, MakeTasks(models.size(), frames, 1, 1, 1), &error)) {
    RefuseCommandLine(error);
    return 2;
  }
  const std::vector<TTask> tasks =
      MakeTasks(models.size(), frames, options.Part, options.Parts, jobs);
  return tasks.empty() ? 0 : TBatch(call, tasks, jobs).Run();
}

} // namespace

int main(int argc, char** argv) {
  _OccupyStandardDescriptors();
  TOptions options;
  switch (ReadOptions(argc, argv, &options)) {
  case TCommand::Done:
    return 0;
  case TCommand::Wrong:
    return 2;
  case TCommand::Render:
    break;
  }
  int status = 1;
  try {
    status = _Run(options);
  } catch (const std::bad_alloc&) {
    _Fail("not enough memory");
  } catch (const std::exception& error) {
    _Fail(error.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    return _Fail("standard output can't be written to");
  }
  return status;
}
