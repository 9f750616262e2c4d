#pragma once

#include <cstdio>
#include <string>
#include <vector>

/// What bench_rivals found out, and how it is shown.
namespace rivals {

/// What a kernel of the library drew in one frame.
struct TKernelCount {
  std::string Name;
  double Triangles = 0;
  double Rows = 0;
  double Pixels = 0;
};

struct TFallbackCount {
  std::string Reason;
  double Pixels = 0;
};

struct TResult {
  std::string Family;
  std::string Variant;
  std::string Unit;        ///< "-" if there is a rival, else what `Items` counts
  double Items = 0;        ///< of a frame
  double Best[2] = {0, 0}; ///< nanoseconds of the best frame: the library's, the rival's
  int Frames[2] = {0, 0};
  double Mean[2][3] = {}; ///< of red, green and blue over the picture
  std::string Problem;    ///< why there are no figures
  std::vector<TKernelCount> Kernels;
  std::vector<TFallbackCount> Fallbacks;

  bool HasRival() const { return Unit == "-"; }
  /// The ratio of speeds, or millions of items a second without a rival. Above is better.
  double Figure() const;
  bool SamePicture() const;
  /// Pixels that fell back, of those that were drawn; below 0 if none were counted.
  double FallbackShare() const;
};

struct TFamily {
  std::string Name;
  int Variants = 0;
  int Failed = 0; ///< variants without figures, or with another picture
  double Worst = 0;
  std::string WorstVariant;
  double Median = 0;
  double Aim = 0; ///< of the worst variant; 0 if there is none
};

/// The aim of a family; 0 if it has none.
double AimOf(const std::string& family);

/// The families of the results, in their order.
std::vector<TFamily> FamiliesOf(const std::vector<TResult>& results);

void PrintHeader();
void PrintRow(const TResult& result);
void PrintFamilies(const std::vector<TFamily>& families);

/// False if the file cannot be written.
bool WriteJson(const std::string& file, double seconds, const std::vector<TResult>& results);

} // namespace rivals
