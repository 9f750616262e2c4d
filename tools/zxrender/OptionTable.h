#pragma once

#include <vector>

/// The codes of options without a letter; the others have their letter.
enum TOptionCode : int {
  kOptionSamples = 256,
  kOptionFov,
  kOptionUp,
  kOptionLight,
  kOptionDepth,
  kOptionDepthStep,
  kOptionNormals,
  kOptionIds,
  kOptionDigest,
  kOptionCheck,
  kOptionDifference,
  kOptionList,
  kOptionPart,
  kOptionTimeout,
  kOptionMemory,
  kOptionFormat,
  kOptionJson,
  kOptionStats,
  kOptionManual,
  kOptionCompletion,
};

/// One option of the command line. The parser, --help, the manual page and the completion are all
/// generated from these rows.
struct TOptionRow {
  int Code;             ///< the letter, or an OPTION_CODE
  const char* Name;     ///< without the hyphens
  const char* Argument; ///< placeholder of the argument; null for none, "[...]" if optional
  const char* Words;    ///< for completion: words, or "@..." for file names
  bool Common;          ///< on the first screen of --help
  const char* Brief;    ///< at most 52 characters
  const char* Text;     ///< full description for the manual
};

/// Options that belong together.
struct TOptionGroup {
  const char* Name;  ///< the word after --help=
  const char* Title; ///< a heading
  std::vector<TOptionRow> Rows;
};

const std::vector<TOptionGroup>& OptionGroups();

/// The row of a code; null if there is none.
const TOptionRow* FindOption(int code);
