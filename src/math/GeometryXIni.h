#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/MAT4.h>
#include <ZxCore3D/types/VBOX.h>
#include <ZxCore3D/types/VRECT.h>
#include <ZxCore3D/types/vec_t_.h>

class TZxXIniReader;
class TZxXIniWriter;

// Geometry in the family's text format. A failed write goes to the writer's `RaiseErrorE`; a
// missing key or a value that is no number raises the reader's error. When a load of a box or
// rectangle raises, the target is untouched, and the reader may still be inside one of its
// sections.
//
// `vec_t_<double, 3>::SaveSE` writes a point as a compact section.

/// Writes the sixteen elements into the current section, row by row: "m00", "m01" to "m33". The key
/// "m" with r and c holds row r, column c: "m03" is the x translation, element 12.
ZX_CORE3D_API void XIniSaveE(TZxXIniWriter* w, const MAT4<double>& m);

/// Reads the sixteen keys of the current section. Elements before the one that raises are set.
ZX_CORE3D_API void XIniLoadE(TZxXIniReader* r, MAT4<double>& m);

/// Writes the compact sections `zx::s_min` and `zx::s_max` with the coordinates of each axis in
/// order. An empty rectangle is written with the values that it happens to hold, and never marked
/// empty: what loads then is its second corner.
ZX_CORE3D_API void XIniSaveE(TZxXIniWriter* w, const VRECT<double>& b);

/// Reads a rectangle from the current section and puts its corners in order; the flag byte stays.
/// Where the key `zx::s_empty` stands, whatever else does, the target is marked empty and keeps its
/// other values. A first corner whose x is the mark of an empty rectangle gives the second corner
/// alone.
ZX_CORE3D_API void XIniLoadE(TZxXIniReader* r, VRECT<double>& b);

/// The same for a box.
ZX_CORE3D_API void XIniSaveE(TZxXIniWriter* w, const VBOX<double>& b);
ZX_CORE3D_API void XIniLoadE(TZxXIniReader* r, VBOX<double>& b);
