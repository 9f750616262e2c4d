// What drawing reads that follows from state: where the pixels of the targets lie, and which
// textures are bound. Others may change both at any time: an owner may exchange the pixels of a
// surface, a context may change or delete a texture that another one has bound. So nothing is
// pushed here when state is set; everything is compared here, before anything is drawn.

#include <ZxCore3D/render/common/Engine.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <ZxPixelKit/Surface.h>

#include <ZxCore3D/render/FragmentOps.h>

#include <ZxCore3D/render/common/Channels.h>
#include <ZxCore3D/render/common/SurfaceBlock.h>

namespace Zx3D {

// --- Targets

namespace {

// Whether all pixels are addresses of 32-bit words.
bool IsAligned(const DATASURFACE& surface) {
  return reinterpret_cast<std::uintptr_t>(surface.Data) % 4 == 0 && surface.RowStride % 4 == 0;
}

// Bytes that a draw buffer's writer touches: its surface may have been exchanged since it was
// chosen.
std::ptrdiff_t WriteSizeOf(const DATASURFACE& surface, TRenderCPU::TPixelWrite write) {
  const std::ptrdiff_t pixel =
      surface.Channels * static_cast<std::ptrdiff_t>(GetTypeSize(surface.Type));
  const std::ptrdiff_t written = write == &SetValue4d   ? 32
                                 : write == &SetValue4f ? 16
                                 : write == &SetValue1d ? 8
                                                        : 4;
  return std::max(pixel, written);
}

// A target whose pixels are `stride` bytes apart, as drawing takes them, and `step` within a span.
TTarget MeasureTarget(const TTargetSource& source, const DATASURFACE& record, std::ptrdiff_t size,
                      std::ptrdiff_t step, std::ptrdiff_t stride) {
  if (record.Data == nullptr) {
    return {};
  }
  return {record.Data,
          stride,
          record.RowStride,
          step,
          size,
          BlockSize(record),
          record.Width >= source.Width && record.Height >= source.Height &&
              record.PixelStride >= size};
}

TTargets Measure(const TTargetSource& source) {
  TTargets t = {};
  t.Source = source;
  for (std::size_t i = 0; i < std::size(source.Surfaces); ++i) {
    if (source.Surfaces[i] != nullptr) { // with the bytes between its fields
      std::memcpy(&t.Records[i], source.Surfaces[i], sizeof t.Records[i]);
    }
  }
  const DATASURFACE& color = t.Records[0];
  const std::ptrdiff_t stride = color.PixelStride;
  t.Color = source.DrawBuffer
                ? MeasureTarget(source, color, WriteSizeOf(color, source.Write), stride, stride)
                : MeasureTarget(source, color, kPixelBytes, kPixelBytes, stride);
  t.Depth = MeasureTarget(source, t.Records[1], sizeof(float), sizeof(float), sizeof(float));
  t.Stencil = MeasureTarget(source, t.Records[2], 1, 1, 1);
  t.Fit = t.Color.Fits && t.Depth.Fits && t.Stencil.Fits;
  if (t.Fit && IsAligned(t.Records[0]) && IsAligned(t.Records[1])) {
    const TBlock blocks[] = {BlockOf(t.Records[0]), BlockOf(t.Records[1]), BlockOf(t.Records[2])};
    t.Kernels = !blocks[0].Overlaps(blocks[1]) && !blocks[0].Overlaps(blocks[2]) &&
                !blocks[1].Overlaps(blocks[2]);
  }
  return t;
}

} // namespace

[[gnu::noinline]] void TRenderEngine::MeasureTargets() {
  Targets = Measure(TTargetSource::Of(gl));
  DrawJob = nullptr; // it holds addresses of the old ones
}

bool TRenderEngine::UpdateTargets() {
  if (AreCurrent(gl, Targets)) {
    return false;
  }
  MeasureTargets();
  return true;
}

// Whether texels share memory with what is drawn into. A texture repeats to a column and a row past
// its end.
bool SharesMemory(const DATASURFACE& texture, const TTargets& targets) {
  const std::ptrdiff_t slack = std::abs(std::ptrdiff_t{texture.RowStride}) + texture.PixelStride;
  const TBlock texels = BlockOf(texture, slack);
  return std::any_of(
      std::begin(targets.Records), std::end(targets.Records),
      [&texels](const DATASURFACE& target) { return texels.Overlaps(BlockOf(target)); });
}

bool TRenderEngine::TextureIsTarget() const {
  const DATASURFACE* const texture = gl.m_TexUnits[0].Sampler.m_Surface;
  return gl.m_TexUnits[0].TexEnabled && texture != nullptr && SharesMemory(*texture, Targets);
}

// --- Textures

// Whether drawing may read the unit's sampler.
static bool MayRead(const TRenderCPU& gl, unsigned int unit) {
  return gl.m_FragmentShader != gl.m_StdFragmentShader ||
         gl.m_VertexShader != gl.m_StdVertexShader || (unit == 0 && gl.m_TexUnits[0].TexEnabled);
}

// Applies to the samplers what others did to the textures that are bound here. Only a sampler whose
// texture is gone or has another shape is touched, so that a surface or a function that a caller
// installed stays. Who remakes a detached texture tells nobody, so that it is looked at each time,
// but only where drawing may: its owner may have deleted it, and have switched texturing off. True
// if anything in the table changed.
bool TRenderEngine::UpdateTextures() {
  const std::uint64_t changes = gl.m_Textures != nullptr
                                    ? gl.m_Textures->Changes.load(std::memory_order_acquire)
                                    : TextureChanges;
  bool changed = changes != TextureChanges;
  if (!changed && !DetachedIsBound) {
    return false;
  }
  TextureChanges = changes;
  DetachedIsBound = false;
  for (unsigned int i = 0; i < kTexUnits; ++i) {
    TTextureBinding& binding = TextureBindings[i];
    if (binding.Hold == nullptr) {
      continue;
    }
    TTexSampler& sampler = gl.m_TexUnits[i].Sampler;
    TDataSurface* const surface = binding.Hold->Surface.load(std::memory_order_relaxed);
    const std::uint8_t fate = binding.Hold->Fate.load(std::memory_order_acquire);
    const bool bound = sampler.m_Surface == surface;
    const bool detached = bound && fate == TTextureHold::kDetached;
    DetachedIsBound = DetachedIsBound || detached;
    if (fate == TTextureHold::kDeleted) {
      if (bound) {
        sampler.SetSurface(nullptr);
      }
      DropBinding(i);
    } else if (bound && (!detached || MayRead(gl, i)) && !binding.Describes(*surface)) {
      sampler.SetSurface(surface);
      binding.Note(*surface);
      changed = true;
    }
  }
  if (changed) {
    DrawJob = nullptr; // it may hold texels that are gone
  }
  return changed;
}

// --- Both

bool TRenderEngine::UpdateDerivedState() {
  const bool targets = UpdateTargets();
  const bool mayDiffer =
      DetachedIsBound || (gl.m_Textures != nullptr &&
                          gl.m_Textures->Changes.load(std::memory_order_acquire) != TextureChanges);
  const bool textures = mayDiffer && UpdateTextures();
  return targets || textures;
}

} // namespace Zx3D
