#pragma once

namespace zx_scene {

/// Sine, cosine and tangent in IEEE operations of a fixed order: the C library's may differ in
/// their last bit from one system, and one processor, to the next, and a camera would see it.
/// Within two units of the last place; exact at multiples of 90 degrees.
double SinOfDegrees(double degrees);
double CosOfDegrees(double degrees);

/// For 0 to a right angle, both excluded.
double TanOfRadians(double radians);

} // namespace zx_scene
