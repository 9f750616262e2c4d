#include <ZxCore3D/math/Frusta.h>

#include <cmath>
#include <new>
#include <vector>

#include <ZxCore3D/math/private/BoundingSphere.h>
#include <ZxCore3D/types/private/VectorForms.h>

using TPoint = vec_t_<double, 3>;

static constexpr int kCorners = 8;

static constexpr unsigned char kCornerPlains[kCorners][3] = {
    {0, 2, 4}, {1, 2, 4}, {1, 3, 4}, {0, 3, 4}, {0, 2, 5}, {1, 2, 5}, {1, 3, 5}, {0, 3, 5}};

static constexpr unsigned char kPlainCorners[6][3] = {{0, 4, 5}, {1, 2, 5}, {0, 1, 4},
                                                      {2, 3, 6}, {0, 3, 1}, {4, 5, 7}};

static constexpr unsigned char kTransformed = 0x40;

static constexpr unsigned long kMinSteps = 8;
// With more steps the samples would not fit an address space; their number must not wrap.
static constexpr unsigned long kMaxSteps = 1ul << 28;

template <>
bool CrossPlains<double>(const UPLAIN<double>& a, const UPLAIN<double>& b, const UPLAIN<double>& c,
                         TPoint* out) {
  const TPoint na = {a.a, a.b, a.c};
  const TPoint nb = {b.a, b.b, b.c};
  const TPoint nc = {c.a, c.b, c.c};
  const TPoint bc = cross(nb, nc);
  const double determinant = dot(na, bc);
  if (determinant == 0.0) {
    return false;
  }
  const TPoint sum = bc * -a.d + cross(nc, na) * -b.d + cross(na, nb) * -c.d;
  *out = {sum.x / determinant, sum.y / determinant, sum.z / determinant};
  return true;
}

template <> void TFrustum_T<double>::GetCone(TPoint* corners) const {
  for (int i = 0; i < kCorners; ++i) {
    corners[i] = {0.0, 0.0, 0.0};
  }
  for (int i = 0; i < kCorners; ++i) {
    const unsigned char* plains = kCornerPlains[i];
    CrossPlains(Plains[plains[0]], Plains[plains[1]], Plains[plains[2]], &corners[i]);
  }
}

void SetCone(TFrustum_T<double>& f, const TPoint* corners) {
  for (int i = 0; i < 6; ++i) {
    const unsigned char* triple = kPlainCorners[i];
    f.Plains[i] = PlainThrough(corners[triple[0]], corners[triple[1]], corners[triple[2]]);
  }
}

void Transform(const TFrustum_T<double>& f, const TZx3DTransform& t, TFrustum_T<double>* out) {
  TPoint corners[kCorners];
  f.GetCone(corners);
  for (TPoint& corner : corners) {
    corner = t.TransformPoint(corner);
  }
  out->Flags = static_cast<unsigned char>(f.Flags | kTransformed);
  SetCone(*out, corners);
}

void Transform(const VBOX<double>& b, const TZx3DTransform& t, VBOX<double>* out) {
  const VBOX<double> box = b;
  out->SetEmpty();
  if (box.IsEmpty()) {
    return;
  }
  for (unsigned int i = 0; i < kCorners; ++i) {
    const TPoint corner = {(i & 1) != 0 ? box.Max.x : box.Min.x,
                           (i & 2) != 0 ? box.Max.y : box.Min.y,
                           (i & 4) != 0 ? box.Max.z : box.Min.z};
    out->Expand(t.TransformPoint(corner));
  }
}

void Transform(const VSPHERE<double>& s, unsigned long steps, const TZx3DTransform& t,
               VSPHERE<double>* out) {
  if (s.IsEmpty()) {
    out->SetEmpty();
    return;
  }
  const unsigned long m = steps < kMinSteps ? kMinSteps : steps;
  if (m > kMaxSteps) {
    throw std::bad_alloc();
  }
  const unsigned long rings = (m + 2) / 4;
  std::vector<TPoint> samples;
  samples.reserve((2 * rings - 1) * m + 2);

  const TPoint center = s.Center;
  const double radius = s.Radius;
  const double longitudeStep = 6.283185307179586 / static_cast<double>(m);
  const double latitudeStep = 3.141592653589793 / static_cast<double>(2 * rings);
  for (unsigned long i = 0; i < rings; ++i) {
    const double latitude = static_cast<double>(i) * latitudeStep;
    const double ringRadius = std::cos(latitude) * radius;
    const double height = std::sin(latitude) * radius;
    for (unsigned long j = 0; j < m; ++j) {
      const double longitude = static_cast<double>(j) * longitudeStep;
      const double x = center.x + std::cos(longitude) * ringRadius;
      const double y = center.y + std::sin(longitude) * ringRadius;
      samples.push_back(t.TransformPoint({x, y, center.z - height}));
      if (i != 0) {
        samples.push_back(t.TransformPoint({x, y, center.z + height}));
      }
    }
  }
  samples.push_back(t.TransformPoint({center.x, center.y, center.z - radius}));
  samples.push_back(t.TransformPoint({center.x, center.y, center.z + radius}));
  GetBoundingSphere(samples.data(), sizeof(TPoint), samples.size(), out);
}
