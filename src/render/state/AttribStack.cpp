#include <ZxCore3D/render/TRenderCPU.h>

#include <bit>

#include <ZxCore3D/render/GLEnums.h>

namespace Zx3D {

namespace {

using TAttribData = TRenderCPU::TAttribData;
using TVec4 = vec_t_<double, 4>;

TAttribData OfVector(const TVec4& v) {
  TAttribData data = {};
  for (std::size_t i = 0; i < 4; ++i) {
    data.Doubles[i] = v[i];
  }
  return data;
}

TVec4 ToVector(const TAttribData& data) {
  return {data.Doubles[0], data.Doubles[1], data.Doubles[2], data.Doubles[3]};
}

template <class... TValues> TAttribData OfWords(TValues... values) {
  static_assert(sizeof...(values) <= 8);
  TAttribData data = {};
  std::size_t i = 0;
  ((data.Words[i++] = static_cast<std::uint32_t>(values)), ...);
  return data;
}

} // namespace

void TRenderCPU::PushAttrib(unsigned int mask) {
  if (m_InBeginEnd) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  TAttribItem item = {mask, {}};
  std::vector<TAttribData>& data = item.Data;
  if ((mask & GL_CURRENT_BIT) != 0) {
    data.push_back(OfVector(m_CurColor));
    data.push_back(OfVector(m_CurNormal));
    data.push_back(OfVector(m_CurTexCoord));
  }
  if ((mask & GL_POLYGON_BIT) != 0) {
    data.push_back(OfWords(m_CullFaceEnabled, m_CullFaceMode, m_FrontFaceCCW, m_PolygonOffsetFill));
    data.push_back(OfVector({m_PolygonOffsetFactor, m_PolygonOffsetUnits, 0, 0}));
  }
  if ((mask & GL_LIGHTING_BIT) != 0) {
    data.push_back(OfWords(m_ColorMaterial, m_ColorMaterialFace, m_LightModelTwoSide));
  }
  if ((mask & GL_DEPTH_BUFFER_BIT) != 0) {
    data.push_back(
        OfWords(m_DepthTest, m_DepthFunc, m_DepthMask, std::bit_cast<std::uint32_t>(m_ClearDepth)));
  }
  if ((mask & GL_STENCIL_BUFFER_BIT) != 0) {
    data.push_back(OfWords(m_StencilTest, m_StencilFunc, m_StencilRef, m_StencilValueMask,
                           m_StencilFail, m_StencilZFail, m_StencilZPass, m_ClearStencil));
    data.push_back(OfWords(m_StencilWriteMask));
  }
  if ((mask & GL_VIEWPORT_BIT) != 0) {
    data.push_back(OfWords(0, 0, m_Width, m_Height));
  }
  if ((mask & GL_ENABLE_BIT) != 0) {
    data.push_back(
        OfWords(m_BlendEnabled, m_ColorMaterial, m_CullFaceEnabled, m_ReservedFlag, m_Normalize));
  }
  if ((mask & GL_COLOR_BUFFER_BIT) != 0) {
    data.push_back(OfWords(m_BlendEnabled, m_BlendSrc, m_BlendDst));
    data.push_back(OfWords(m_ColorMask));
  }
  if ((mask & GL_HINT_BIT) != 0) {
    data.push_back(OfWords(m_PerspectiveHint));
  }
  m_AttribStack.push_back(std::move(item));
}

void TRenderCPU::PopAttrib() {
  if (m_InBeginEnd || m_AttribStack.empty()) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  // Off the stack first: the virtual operations below may be a caller's.
  const TAttribItem item = std::move(m_AttribStack.back());
  m_AttribStack.pop_back();
  const unsigned int mask = item.Mask;
  const TAttribData* data = item.Data.data();
  if ((mask & GL_CURRENT_BIT) != 0) {
    m_CurColor = ToVector(*data++);
    m_CurNormal = ToVector(*data++);
    m_CurTexCoord = ToVector(*data++);
  }
  if ((mask & GL_POLYGON_BIT) != 0) {
    m_CullFaceEnabled = data->Words[0] != 0;
    m_CullFaceMode = data->Words[1];
    m_FrontFaceCCW = data->Words[2] != 0;
    m_PolygonOffsetFill = data->Words[3] != 0;
    ++data;
    m_PolygonOffsetFactor = static_cast<float>(data->Doubles[0]);
    m_PolygonOffsetUnits = static_cast<float>(data->Doubles[1]);
    ++data;
  }
  if ((mask & GL_LIGHTING_BIT) != 0) {
    m_ColorMaterial = data->Words[0] != 0;
    m_ColorMaterialFace = data->Words[1];
    m_LightModelTwoSide = data->Words[2] != 0;
    ++data;
  }
  if ((mask & GL_DEPTH_BUFFER_BIT) != 0) {
    m_DepthTest = data->Words[0] != 0;
    DepthFunc(data->Words[1]);
    m_DepthMask = data->Words[2] != 0;
    m_ClearDepth = std::bit_cast<float>(data->Words[3]);
    ++data;
  }
  if ((mask & GL_STENCIL_BUFFER_BIT) != 0) {
    m_StencilTest = data->Words[0] != 0;
    StencilFunc(data->Words[1], static_cast<int>(data->Words[2]), data->Words[3]);
    StencilOp(data->Words[4], data->Words[5], data->Words[6]);
    m_ClearStencil = static_cast<unsigned char>(data->Words[7]);
    ++data;
    m_StencilWriteMask = data->Words[0];
    ++data;
  }
  if ((mask & GL_VIEWPORT_BIT) != 0) {
    ++data; // the viewport is always the whole surface
  }
  if ((mask & GL_ENABLE_BIT) != 0) {
    m_BlendEnabled = data->Words[0] != 0;
    _UpdateBlendFunc();
    m_ColorMaterial = data->Words[1] != 0;
    m_CullFaceEnabled = data->Words[2] != 0;
    m_ReservedFlag = data->Words[3] != 0;
    m_Normalize = data->Words[4] != 0;
    ++data;
  }
  if ((mask & GL_COLOR_BUFFER_BIT) != 0) {
    // The routines follow the factors from before the saved ones come back: callers rely on it.
    m_BlendEnabled = data->Words[0] != 0;
    _UpdateBlendFunc();
    m_BlendSrc = data->Words[1];
    m_BlendDst = data->Words[2];
    ++data;
    m_ColorMask = static_cast<std::uint8_t>(data->Words[0]);
    ++data;
  }
  if ((mask & GL_HINT_BIT) != 0) {
    m_PerspectiveHint = data->Words[0];
  }
}

} // namespace Zx3D
