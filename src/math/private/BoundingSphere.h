#pragma once

#include <ZxCore3D/types/VSPHERE.h>
#include <ZxCore3D/types/vec_t_.h>

// Internal to the library: not installed, not exported.

/// The sphere around `n` points with the centre of their box as its centre; `stride` is the
/// distance between points in bytes. No points make it empty. A stride of 0 reads the first point
/// `n` times.
template <class T>
void GetBoundingSphere(const vec_t_<T, 3>* p, unsigned long stride, unsigned long n,
                       VSPHERE<T>* out);

template <>
void GetBoundingSphere<double>(const vec_t_<double, 3>* p, unsigned long stride, unsigned long n,
                               VSPHERE<double>* out);
