#include "Report.h"

#include <algorithm>
#include <cmath>

namespace rivals {

namespace {

// What the worst variant of a family is to reach: the ratio to the rival's speed, or millions of
// items a second.
constexpr struct {
  const char* Family;
  double Aim;
} kAims[] = {
    {"clear", 2.5},
    {"flat_quads", 10},
    {"gouraud", 1.8},
    {"depth_fail", 4},
    {"nearest", 1.3},
    {"bilinear", 1.5},
    {"nearest_blend", 1.3},
    {"bilinear_blend", 1.5},
    {"sphere", 2.2},
    {"triangles_immediate", 2.6},
    {"triangles_arrays", 2.3},
    {"lines", 8.5},
    {"points", 15},
    {"vertices_outside", 1.8},
    {"vertices_culled", 2.7},
    {"triangles_clipped", 3.4},
    {"stencil", 2.5},
    {"draw_pixels", 15},
    {"read_pixels", 1.1},
    {"shader_fragment", 200},
    {"shader_fragment_depth", 150},
    {"shader_fragment_perspective", 120},
};

// Single against double precision, and truncation against rounding, move bytes by one or two.
constexpr double kMostApart = 2.0;
// Above this share of the pixels, a fallback is a finding.
constexpr double kFallbackLimit = 0.03;

// The kernel that drew most, with its share of the pixels.
std::string BusiestKernel(const TResult& result) {
  const auto busiest = std::max_element(
      result.Kernels.begin(), result.Kernels.end(),
      [](const TKernelCount& a, const TKernelCount& b) { return a.Pixels < b.Pixels; });
  if (busiest == result.Kernels.end()) {
    return "-";
  }
  double all = 0;
  for (const TKernelCount& kernel : result.Kernels) {
    all += kernel.Pixels;
  }
  char text[160];
  std::snprintf(text, sizeof text, "%s %.0f%%", busiest->Name.c_str(),
                all > 0 ? 100 * busiest->Pixels / all : 0.0);
  return text;
}

// The share of pixels that fell back, and the commonest reason.
std::string FallbackText(const TResult& result) {
  const double share = result.FallbackShare();
  if (share < 0) {
    return "-";
  }
  char number[32];
  std::snprintf(number, sizeof number, "%.1f%%", 100 * share);
  std::string text = number;
  const auto commonest = std::max_element(
      result.Fallbacks.begin(), result.Fallbacks.end(),
      [](const TFallbackCount& a, const TFallbackCount& b) { return a.Pixels < b.Pixels; });
  if (commonest != result.Fallbacks.end()) {
    text += (share > kFallbackLimit ? " ! " : " ") + commonest->Reason;
  }
  return text;
}

// Text from the programs is plain but for what an error may hold.
std::string Quoted(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
    }
    out += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
  }
  return out + "\"";
}

void WriteResult(FILE* file, const TResult& r) {
  std::fprintf(file, "    {\"family\": %s, \"variant\": %s, \"unit\": %s", Quoted(r.Family).c_str(),
               Quoted(r.Variant).c_str(),
               Quoted(r.HasRival() ? "ratio" : "M" + r.Unit + "/s").c_str());
  if (!r.Problem.empty()) {
    std::fprintf(file, ", \"problem\": %s}", Quoted(r.Problem).c_str());
    return;
  }
  std::fprintf(file, ", \"figure\": %.4f, \"zxcore3d_ns\": %.0f", r.Figure(), r.Best[0]);
  if (r.HasRival()) {
    std::fprintf(file, ", \"osmesa_ns\": %.0f, \"same_picture\": %s", r.Best[1],
                 r.SamePicture() ? "true" : "false");
  }
  for (int side = 0; side < (r.HasRival() ? 2 : 1); ++side) {
    std::fprintf(file, ", \"%s_mean\": [%.3f, %.3f, %.3f]", side == 0 ? "zxcore3d" : "osmesa",
                 r.Mean[side][0], r.Mean[side][1], r.Mean[side][2]);
  }
  std::fprintf(file, ", \"kernels\": [");
  const char* between = "";
  for (const TKernelCount& k : r.Kernels) {
    std::fprintf(file, "%s{\"name\": %s, \"triangles\": %.0f, \"rows\": %.0f, \"pixels\": %.0f}",
                 between, Quoted(k.Name).c_str(), k.Triangles, k.Rows, k.Pixels);
    between = ", ";
  }
  std::fprintf(file, "], \"fallbacks\": [");
  between = "";
  for (const TFallbackCount& f : r.Fallbacks) {
    std::fprintf(file, "%s{\"reason\": %s, \"pixels\": %.0f}", between, Quoted(f.Reason).c_str(),
                 f.Pixels);
    between = ", ";
  }
  std::fprintf(file, "]}");
}

} // namespace

double TResult::Figure() const { return HasRival() ? Best[1] / Best[0] : 1e3 * Items / Best[0]; }

bool TResult::SamePicture() const {
  for (int i = 0; i < 3 && HasRival(); ++i) {
    if (!(std::fabs(Mean[0][i] - Mean[1][i]) < kMostApart)) {
      return false;
    }
  }
  return true;
}

double TResult::FallbackShare() const {
  double pixels = 0;
  double fallbacks = 0;
  for (const TKernelCount& kernel : Kernels) {
    pixels += kernel.Pixels;
  }
  for (const TFallbackCount& fallback : Fallbacks) {
    fallbacks += fallback.Pixels;
  }
  if (pixels == 0 && fallbacks == 0) {
    return -1;
  }
  return fallbacks / std::max(pixels, fallbacks);
}

double AimOf(const std::string& family) {
  for (const auto& entry : kAims) {
    if (family == entry.Family) {
      return entry.Aim;
    }
  }
  return 0;
}

std::vector<TFamily> FamiliesOf(const std::vector<TResult>& results) {
  std::vector<TFamily> families;
  std::vector<std::vector<double>> figures;
  for (const TResult& r : results) {
    auto at = std::find_if(families.begin(), families.end(),
                           [&r](const TFamily& family) { return family.Name == r.Family; });
    if (at == families.end()) {
      families.push_back({r.Family, 0, 0, 0, "", 0, AimOf(r.Family)});
      figures.emplace_back();
      at = families.end() - 1;
    }
    ++at->Variants;
    if (!r.Problem.empty() || !r.SamePicture()) {
      ++at->Failed;
    }
    if (!r.Problem.empty()) {
      continue;
    }
    auto& own = figures[static_cast<std::size_t>(at - families.begin())];
    if (own.empty() || r.Figure() < at->Worst) {
      at->Worst = r.Figure();
      at->WorstVariant = r.Variant;
    }
    own.push_back(r.Figure());
  }
  for (std::size_t i = 0; i < families.size(); ++i) {
    std::vector<double>& own = figures[i];
    std::sort(own.begin(), own.end());
    if (!own.empty()) {
      families[i].Median = (own[(own.size() - 1) / 2] + own[own.size() / 2]) / 2;
    }
  }
  return families;
}

void PrintHeader() {
  std::printf("%-28s %-30s %12s %12s %9s  %-8s %-24s %s\n", "family", "variant", "ZxCore3D us",
              "OSMesa us", "ratio", "picture", "kernel", "fallback");
}

void PrintRow(const TResult& r) {
  std::printf("%-28s %-30s ", r.Family.c_str(), r.Variant.c_str());
  if (!r.Problem.empty()) {
    std::printf("%s\n", r.Problem.c_str());
    return;
  }
  std::printf("%12.1f ", r.Best[0] / 1e3);
  if (r.HasRival()) {
    std::printf("%12.1f %9.2f  %-8s ", r.Best[1] / 1e3, r.Figure(),
                r.SamePicture() ? "same" : "DIFFERS");
  } else {
    const std::string unit = "M" + r.Unit + "/s";
    std::printf("%12s %9.1f  %-8s ", unit.c_str(), r.Figure(), "-");
  }
  std::printf("%-24s %s\n", BusiestKernel(r).c_str(), FallbackText(r).c_str());
  if (!r.SamePicture()) {
    std::printf("    mean colours: %.1f %.1f %.1f, OSMesa's %.1f %.1f %.1f\n", r.Mean[0][0],
                r.Mean[0][1], r.Mean[0][2], r.Mean[1][0], r.Mean[1][1], r.Mean[1][2]);
  }
}

void PrintFamilies(const std::vector<TFamily>& families) {
  std::printf("\n%-28s %8s %8s %8s %8s %8s  %s\n", "family", "variants", "worst", "median", "aim",
              "", "worst variant");
  for (const TFamily& f : families) {
    char aim[32] = "-";
    if (f.Aim > 0) {
      std::snprintf(aim, sizeof aim, "%.1f", f.Aim);
    }
    const char* const verdict = f.Failed > 0       ? "failed"
                                : f.Aim == 0       ? ""
                                : f.Worst >= f.Aim ? "ok"
                                                   : "missed";
    if (f.WorstVariant.empty()) { // nothing of it ran
      std::printf("%-28s %8d %8s %8s %8s %8s\n", f.Name.c_str(), f.Variants, "-", "-", aim,
                  verdict);
      continue;
    }
    std::printf("%-28s %8d %8.2f %8.2f %8s %8s  %s\n", f.Name.c_str(), f.Variants, f.Worst,
                f.Median, aim, verdict, f.WorstVariant.c_str());
  }
}

bool WriteJson(const std::string& name, double seconds, const std::vector<TResult>& results) {
  FILE* const file = std::fopen(name.c_str(), "w");
  if (file == nullptr) {
    return false;
  }
  std::fprintf(file, "{\n  \"seconds\": %g,\n  \"variants\": [\n", seconds);
  for (std::size_t i = 0; i < results.size(); ++i) {
    WriteResult(file, results[i]);
    std::fprintf(file, i + 1 < results.size() ? ",\n" : "\n");
  }
  std::fprintf(file, "  ],\n  \"families\": [\n");
  const std::vector<TFamily> families = FamiliesOf(results);
  for (std::size_t i = 0; i < families.size(); ++i) {
    const TFamily& f = families[i];
    std::fprintf(file,
                 "    {\"family\": %s, \"worst\": %.4f, \"worst_variant\": %s, \"median\": %.4f, "
                 "\"aim\": %g, \"failed\": %d}%s\n",
                 Quoted(f.Name).c_str(), f.Worst, Quoted(f.WorstVariant).c_str(), f.Median, f.Aim,
                 f.Failed, i + 1 < families.size() ? "," : "");
  }
  std::fprintf(file, "  ]\n}\n");
  const bool written = std::ferror(file) == 0;
  return std::fclose(file) == 0 && written;
}

} // namespace rivals
