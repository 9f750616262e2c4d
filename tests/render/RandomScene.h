#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <ZxCore3D/render/TRenderCPU.h>

namespace zx_test {

/// A sequence of drawing calls made from a seed: modes, tests, masks, blending, textures of every
/// kind, lights, hints and custom shaders, mixed; in every fourth scene targets and textures share
/// memory too. The same seed and length make the same calls.
class TRandomScene {
public:
  explicit TRandomScene(std::uint32_t seed) : m_Seed(seed) {}

  /// Runs the first `calls` calls on a fresh context and returns everything that they left.
  std::vector<unsigned char> Run(int calls) const;

  /// The same with one NaN in place of every other: sign and payload are the processor's choice.
  std::vector<unsigned char> RunForAnyProcessor(int calls) const;

  /// What the call number `index` was, in words.
  std::string Describe(int index) const;

  static constexpr int kCalls = 120;

private:
  std::uint32_t m_Seed;
};

} // namespace zx_test
