#pragma once

#include <vector>

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/vec_t_.h>

/// Appends the cells of the straight line from `from` to `to`, both included, to `out`, which is
/// never cleared. A three-dimensional form of Bresenham's line (Bresenham, "Algorithm for computer
/// control of a digital plotter", 1965): the axis with the greatest difference moves one cell a
/// step, with ties going to x before y and z and to y before z, and the others follow by integer
/// error terms. There are as many cells as that difference and one more.
///
/// A follower that lies exactly half-way steps forward, so the line back is not always the same set
/// of cells. Differences are taken in 32 bits and wrap beyond.
ZX_CORE3D_API void DrawLine3d(vec_t_<int, 3> from, vec_t_<int, 3> to,
                              std::vector<vec_t_<int, 3>>& out);

/// The same with a square cross-section: in place of each cell a block of `2 h + 1` by `2 h + 1`
/// cells across the dominant axis, where `h` is `thickness` shifted right by one bit. Thickness 0
/// and 1 give single cells, 2 and 3 a width of 3. A negative `thickness` appends nothing.
///
/// Blocks of neighbouring cells are not merged: where the line steps sideways, cells occur several
/// times. The offsets ascend, the first of the two other axes outermost.
ZX_CORE3D_API void DrawLine3d(vec_t_<int, 3> from, vec_t_<int, 3> to, int thickness,
                              std::vector<vec_t_<int, 3>>& out);
