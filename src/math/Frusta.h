#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/TFrustum_T.h>
#include <ZxCore3D/types/TZx3DTransform.h>
#include <ZxCore3D/types/UPLAIN.h>
#include <ZxCore3D/types/VBOX.h>
#include <ZxCore3D/types/VSPHERE.h>
#include <ZxCore3D/types/vec_t_.h>

// The corners of a frustum come from `TFrustum_T::GetCone`.

/// The point common to three planes, by Cramer's rule: `(-a.d (nb x nc) - b.d (nc x na) -
/// c.d (na x nb)) / dot(na, nb x nc)`, summed left to right. For `T` = double.
///
/// False, with `out` untouched, when the determinant is exactly 0. There is no tolerance: planes
/// that are parallel but for rounding give a point far away.
template <class T>
bool CrossPlains(const UPLAIN<T>& a, const UPLAIN<T>& b, const UPLAIN<T>& c, vec_t_<T, 3>* out);

template <>
ZX_CORE3D_API bool CrossPlains<double>(const UPLAIN<double>& a, const UPLAIN<double>& b,
                                       const UPLAIN<double>& c, vec_t_<double, 3>* out);

/// Sets the six planes of `f` from eight corners in the order of `GetCone`; the flags stay. Each
/// plane is the one through three corners: 045, 125, 014, 236, 031, 457. Corners on a line give
/// non-finite planes.
///
/// Corner 5 does not lie on plane 0 in the sense of `GetCone`: plane 0 comes out as the plane of
/// corners 0, 1, 4, 5, which is plane 2 with the opposite normal. Set from corners, a frustum is
/// therefore open on that side, and `GetCone` does not give corners 0, 3, 4 and 7 back.
ZX_CORE3D_API void SetCone(TFrustum_T<double>& f, const vec_t_<double, 3>* corners);

/// Maps a frustum by its eight corners. `out`, which may be `f`, gets the flags of `f` with bit
/// 0x40 set, and planes as `SetCone` gives them: plane 0 lies on plane 2, so a result can not be
/// mapped a second time.
ZX_CORE3D_API void Transform(const TFrustum_T<double>& f, const TZx3DTransform& t,
                             TFrustum_T<double>* out);

/// The box around the eight mapped corners of `b`; empty, without a call of `t`, when `b` is empty.
/// Where the map is not affine the image of the box can reach beyond. The flag byte of `out` stays.
/// `out` may be `b`.
ZX_CORE3D_API void Transform(const VBOX<double>& b, const TZx3DTransform& t, VBOX<double>* out);

/// A sphere around mapped samples of `s`; empty, without a call of `t`, when `s` is empty. `steps`,
/// at least 8, is the number of samples on a ring of latitude: `m` steps make `r = (m + 2) / 4`
/// rings on either side and `(2 r - 1) m + 2` samples, that is 26 for 8. The result is the sphere
/// around the centre of the samples' box, not the smallest one, and holds the samples only: the
/// image of the sphere can bulge out between them.
///
/// Throws `std::bad_alloc` when there is no room for the samples, of 24 bytes each. `out` may be
/// `s`.
ZX_CORE3D_API void Transform(const VSPHERE<double>& s, unsigned long steps, const TZx3DTransform& t,
                             VSPHERE<double>* out);
