#include <ZxCore3D/render/TRenderCPU.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Scene.h"
#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/kernels/SpanJob.h>

// Copies, clipping, edges and interpolation touch the live slots alone: what a caller keeps in the
// others of the public records stays.

namespace {

using Zx3D::TRenderCPU;

constexpr int kLive = 3;
constexpr double kKept = -1234.5;

std::vector<TRenderCPU::VAR_DATA*> RecordsOf(TRenderCPU& gl) {
  std::vector<TRenderCPU::VAR_DATA*> records = {&gl.m_VarEdgeA, &gl.m_VarEdgeB, &gl.m_VarFragment};
  for (TRenderCPU::VAR_DATA& record : gl.m_VarSaved) {
    records.push_back(&record);
  }
  for (TRenderCPU::VAR_DATA& record : gl.m_VarCur) {
    records.push_back(&record);
  }
  for (TRenderCPU::EDGE& edge : gl.m_Edges) {
    records.push_back(&edge.Delta);
  }
  return records;
}

void Fill(TRenderCPU& gl) {
  for (TRenderCPU::VAR_DATA* const record : RecordsOf(gl)) {
    for (std::size_t i = kLive; i < 8; ++i) {
      record->Slots[i] = {kKept, kKept, kKept, kKept};
    }
  }
}

void ExpectKept(TRenderCPU& gl, const std::string& what) {
  std::size_t number = 0;
  for (const TRenderCPU::VAR_DATA* const record : RecordsOf(gl)) {
    for (std::size_t i = kLive; i < 8; ++i) {
      for (std::size_t c = 0; c < 4; ++c) {
        ASSERT_EQ(record->Slots[i][c], kKept) << what << ", record " << number << ", slot " << i;
      }
    }
    ++number;
  }
}

class DeadSlots : public testing::Test {
protected:
  ~DeadSlots() override { Zx3D::LimitSpanLevel(nullptr); }

  static void Draw(TRenderCPU& gl, unsigned int mode, bool clipped) {
    const double far = clipped ? 3.0 : 0.9;
    gl.Begin(mode);
    gl.Color4d(1, 0, 0.5, 1), gl.Vertex4d(-0.9, -0.8, 0.1, 1);
    gl.Color4d(0, 1, 0.5, 1), gl.Vertex4d(far * 2, -0.7, 0.2, 2);
    gl.Color4d(0.3, 0, 1, 1), gl.Vertex4d(0.8, far, clipped ? -2 : 0.3, 1);
    gl.Color4d(0.6, 0.9, 0, 1), gl.Vertex4d(-0.7, 0.9, 0.3, 1.5);
    gl.End();
  }
};

TEST_F(DeadSlots, StayAtEveryLevel) {
  for (const char* const level : Zx3D::kSpanPaths) {
    if (!Zx3D::LimitSpanLevel(level)) {
      continue;
    }
    for (const bool own : {false, true}) { // fragment by fragment, or by the standard shader
      const zx_test::TScene scene(40, 24);
      TRenderCPU& gl = *scene;
      auto* const vertex = new zx_test::TPassVertexShader(kLive);
      gl._SetVertexShader(vertex);
      vertex->Release();
      if (own) {
        auto* const fragment = new zx_test::TSeeingFragmentShader;
        gl._SetFragmentShader(fragment);
        fragment->Release();
      }
      for (const unsigned int hint : {GL_FASTEST, GL_NICEST}) {
        gl.Hint(GL_PERSPECTIVE_CORRECTION_HINT, hint);
        for (const unsigned int mode : {GL_POINTS, GL_LINES, GL_LINE_LOOP, GL_TRIANGLES,
                                        GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_QUADS}) {
          for (const bool clipped : {false, true}) {
            Fill(gl);
            Draw(gl, mode, clipped);
            ExpectKept(gl, std::string(level) + (own ? ", own shader" : "") + ", hint " +
                               std::to_string(hint) + ", mode " + std::to_string(mode) +
                               (clipped ? ", clipped" : ""));
            if (HasFatalFailure()) {
              return;
            }
          }
        }
      }
    }
  }
}

} // namespace
