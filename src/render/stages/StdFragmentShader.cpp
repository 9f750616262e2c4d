// Tested by: tests/render/StdFragmentShader.cpp (StdFragmentShader.*)

#include <ZxCore3D/render/StdFragmentShader.h>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/stages/FragmentShading.h>

namespace Zx3D {

TStdFragmentShaderCPU::~TStdFragmentShaderCPU() = default;

unsigned int TStdFragmentShaderCPU::GetUniformLocation(const char*) const { return 0xFFFFFFFF; }

void TStdFragmentShaderCPU::Begin() {}

void TStdFragmentShaderCPU::End() {}

bool TStdFragmentShaderCPU::IsCalcDepth() const { return false; }

// With P the primary colour, S the secondary one where lighting is on, T the texel, by channel:
//
//     without a texture  P + S
//     GL_MODULATE        P T + S
//     GL_REPLACE         T
//
// each limited to 0 to 1; S is not added to alpha. In another mode the colour stays as it came.
bool TStdFragmentShaderCPU::Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) {
  const TRenderCPU& gl = *m_Render;
  const TColorSlots slots = ColorSlotsOf(gl, f->FrontFacing);
  const vec_t_<double, 4>& primary = SlotOf(*v, slots.Primary);
  const vec_t_<double, 4>& secondary = SlotOf(*v, slots.Secondary);

  bool addSecondary = gl.m_Lighting;
  const TRenderCPU::TTexUnit& unit = gl.m_TexUnits[0];
  if (!unit.TexEnabled) {
    f->Color = primary;
  } else {
    vec_t_<double, 4> texel = {0, 0, 0, 0};
    auto& sampler = const_cast<TRenderCPU::TTexSampler&>(unit.Sampler);
    sampler.GetValue(SlotOf(*v, gl.m_VarTexCoord), &texel);
    if (unit.TexEnvMode == GL_MODULATE) {
      f->Color = {primary.x * texel.x, primary.y * texel.y, primary.z * texel.z,
                  primary.w * texel.w};
    } else {
      if (unit.TexEnvMode == GL_REPLACE) {
        f->Color = texel;
      }
      addSecondary = false;
    }
  }
  if (addSecondary) {
    f->Color.x = f->Color.x + secondary.x;
    f->Color.y = f->Color.y + secondary.y;
    f->Color.z = f->Color.z + secondary.z;
  }
  f->Color = Clamped01(f->Color);
  return true;
}

} // namespace Zx3D
