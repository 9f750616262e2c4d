#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/vec_t_.h>

/// Whether the closed polygon of the `n` vertices `p` (the last joins the first) crosses, touches
/// or folds back on itself, or has an edge shorter than 1e-8. All pairs of edges are compared.
///
/// `n` below 2 gives false, 2 gives true. Neighbouring edges answer only when one folds back on the
/// other. Edges that are parallel (sine of the angle at most 1e-8) and not neighbours never answer,
/// so an overlap of two far edges on one line is not detected in itself, only through their
/// neighbours. A vertex on another edge counts by
/// exact comparison with the ends of the edge: where the edge is slanted, rounding misses about one
/// such vertex in ten. Distances are absolute: a polygon a few 1e-8 across always answers true.
///
/// Allocates nothing for up to 8 vertices and one block of 24 bytes a vertex above; may throw
/// `std::bad_alloc` then.
ZX_CORE3D_API bool IsSelfIntersected(const vec_t_<double, 2>* p, unsigned long n);
