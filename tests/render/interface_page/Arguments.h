#pragma once

#include <vector>

#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/TRenderCPU.h>

// What the calls of the page point to.

namespace interface_page {

using V3 = vec_t_<double, 3>;

inline const float f4[4] = {1, 1, 1, 1};
inline const double d4[4] = {1, 1, 1, 1};
inline const int n4[4] = {1, 1, 1, 1};
inline const unsigned char b4[4] = {1, 1, 1, 1};
inline const double d16[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
inline const float f16[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
inline int n16[16];
inline float fout16[16];
inline double dout16[16];
inline unsigned char out16[16];
inline unsigned int ids[4];
inline vec_t_<int, 2> size;
inline TDataSurface surface;
inline const std::vector<vec_t_<double, 2>> points = {{-0.5, -0.5}, {0.5, -0.5}, {0, 0.5}};

/// A program that is none of this renderer's.
class TOtherProgram : public Zx3D::TProgram {
public:
  unsigned int GetAttribLocation(const char*) const override { return 0; }
  unsigned int GetUniformLocation(const char*) const override { return 0; }
  unsigned int GetSubroutineIndex(unsigned int, const char*) const override { return 0; }
};
inline TOtherProgram other;

} // namespace interface_page
