// What the vertices of a primitive prove of a slot. Included once for each instruction set.
//
// Tested by: tests/render/SlotFacts.cpp (SlotFacts.*), tests/render/SpanBytes.cpp (SpanBytes.*)

#if defined(ZX_RENDER_SLOTFACTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SLOTFACTS_INL_H_
#undef ZX_RENDER_SLOTFACTS_INL_H_
#else
#define ZX_RENDER_SLOTFACTS_INL_H_
#endif

#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/kernels/SpanLanes-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// A constant byte is proven by two bounds: kMaxSteadyRatio of the 1/w of a triangle, and
// kByteMargin of the distance of 255 c + 0.5 from an integer. Interpolation loses a few units of
// the last place times that ratio, far below the margin. With one w for all vertices the
// differences are zeros, and every pixel computes the same value.
inline HWY_ATTR void FindFacts(const TPrimitive& primitive, int slot, TSlotFacts* out) {
  const D4 d;
  const hn::Rebind<std::int32_t, D4> di;
  const hn::Rebind<std::uint8_t, D4> db;
  const auto& v = primitive.Vertex;
  const double r = v[0][0].w;
  const bool oneW = !primitive.Perspective || (v[1][0].w == r && v[2][0].w == r);
  const V4 zero = hn::Zero(d);
  const V4 one = hn::Set(d, 1.0);
  *out = {};
  for (int i = 0; i < 4; i += kLanes4) {
    const V4 a = hn::LoadU(d, &v[0][slot].x + i);
    const V4 b = hn::LoadU(d, &v[1][slot].x + i);
    const V4 c = hn::LoadU(d, &v[2][slot].x + i);
    const auto isUnit = [&](V4 x) HWY_ATTR { return hn::And(hn::Ge(x, zero), hn::Le(x, one)); };
    const auto unit = hn::And(isUnit(a), hn::And(isUnit(b), isUnit(c)));
    const auto same = hn::And(hn::Eq(a, b), hn::Eq(a, c));
    auto sure = hn::And(unit, same);
    V4 value = hn::IfThenElseZero(sure, a);
    if (primitive.Perspective && oneW && r > kMinSteadyW && r < kMaxSteadyW) {
      value = hn::Mul(hn::Mul(value, hn::Set(d, r)), hn::Set(d, 1.0 / r));
      value = hn::Min(value, one);
    }
    value = hn::Add(hn::Mul(value, hn::Set(d, 255.0)), hn::Set(d, 0.5));
    if (!oneW) {
      const V4 apart = hn::Abs(hn::Sub(value, hn::Round(value)));
      sure = hn::And(sure, hn::Gt(apart, hn::Set(d, kByteMargin)));
    }
    const auto bytes = hn::DemoteTo(db, hn::DemoteTo(di, hn::IfThenElseZero(sure, value)));
    out->Unit |= static_cast<std::uint32_t>(BitsOfMask(d, unit)) << i;
    out->Same |= static_cast<std::uint32_t>(BitsOfMask(d, same)) << i;
    out->Sure |= static_cast<std::uint32_t>(BitsOfMask(d, sure)) << i;
    hn::StoreU(bytes, db, reinterpret_cast<unsigned char*>(&out->Bytes) + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
