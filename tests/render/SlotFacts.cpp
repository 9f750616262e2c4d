// What kernels find of the colours of a primitive's vertices: which channels lie in 0 to 1, which
// are the same at all vertices, and which of those have one byte at every pixel.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include <ZxCore3D/render/kernels/SpanJob.h>

namespace {

using Zx3D::TPrimitive;
using Zx3D::TSlotFacts;

using TVec4 = vec_t_<double, 4>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();

// 255 c + 0.5 lies on an integer, within a millionth of one and not at all near, for some c.
const double kChannels[] = {0.0,
                            -0.0,
                            1.0,
                            0.5,
                            0.1,
                            1.0 / 3.0,
                            0.7,
                            64.0 / 255.0,
                            64.5 / 255.0,
                            64.5000005 / 255.0,
                            64.499999 / 255.0,
                            64.49 / 255.0,
                            kLeast,
                            -kLeast,
                            -0.25,
                            1.5,
                            std::nextafter(1.0, 0.0),
                            std::nextafter(1.0, 2.0),
                            1e300,
                            kInf,
                            -kInf,
                            kNan};

class SlotFacts : public testing::Test {
protected:
  static constexpr int kSlot = 3;

  ~SlotFacts() override { Zx3D::LimitSpanLevel(nullptr); }

  // Three vertices whose channels are the same in two of three cases.
  void MakeVertices(const std::array<double, 3>& w) {
    for (std::size_t i = 0; i < 3; ++i) {
      Slots[i][0].w = w[i];
    }
    for (std::size_t c = 0; c < 4; ++c) {
      const bool same = m_Random() % 3 != 0;
      for (std::size_t i = 0; i < 3; ++i) {
        Slots[i][kSlot][c] = same && i > 0 ? Slots[0][kSlot][c] : Any();
      }
    }
    for (std::size_t i = 0; i < 3; ++i) {
      Primitive.Vertex[i] = Slots[i];
    }
  }

  double Any() { return kChannels[m_Random() % std::size(kChannels)]; }

  // By the definitions, channel by channel.
  TSlotFacts Expected() const {
    TSlotFacts facts = {};
    const double r = Slots[0][0].w;
    const bool isFlat = !Primitive.Perspective || (Slots[1][0].w == r && Slots[2][0].w == r);
    for (std::size_t c = 0; c < 4; ++c) {
      const auto at = [&](std::size_t i) { return Slots[i][kSlot][c]; };
      const std::uint32_t bit = 1u << c;
      const bool unit =
          at(0) >= 0 && at(0) <= 1 && at(1) >= 0 && at(1) <= 1 && at(2) >= 0 && at(2) <= 1;
      const bool same = at(0) == at(1) && at(0) == at(2);
      facts.Unit |= unit ? bit : 0;
      facts.Same |= same ? bit : 0;
      if (!unit || !same) {
        continue;
      }
      double channel = at(0);
      if (Primitive.Perspective && isFlat) { // what each pixel computes
        channel = std::min(channel * r * (1.0 / r), 1.0);
      }
      const double value = channel * 255.0 + 0.5;
      if (isFlat || std::fabs(value - std::nearbyint(value)) > 1e-6) {
        facts.Sure |= bit;
        facts.Bytes |= static_cast<std::uint32_t>(value) << (8 * c);
      }
    }
    return facts;
  }

  void ExpectThem(bool perspective, const std::array<double, 3>& w) {
    Primitive.Perspective = perspective;
    ForEachLevel([&](const Zx3D::TSpanKernels& kernels) {
      for (int i = 0; i < 2000; ++i) {
        MakeVertices(w);
        const TSlotFacts expected = Expected();
        TSlotFacts found = {~0u, ~0u, ~0u, ~0u};
        kernels.FindFacts(Primitive, kSlot, &found);
        ASSERT_EQ(found.Unit, expected.Unit);
        ASSERT_EQ(found.Same, expected.Same);
        ASSERT_EQ(found.Sure, expected.Sure);
        ASSERT_EQ(found.Bytes, expected.Bytes);
      }
    });
  }

  template <class TCheck> static void ForEachLevel(const TCheck& check) {
    int levels = 0;
    for (const char* const level : Zx3D::kSpanLevels) {
      if (Zx3D::LimitSpanLevel(level)) {
        SCOPED_TRACE(level);
        check(*Zx3D::GetSpanKernels());
        ++levels;
      }
    }
    EXPECT_GT(levels, 0);
  }

  TVec4 Slots[3][kSlot + 1] = {};
  TPrimitive Primitive;

private:
  std::mt19937 m_Random{11};
};

TEST_F(SlotFacts, WithoutPerspective) {
  ExpectThem(false, {1.0, 1.0, 1.0});
  ExpectThem(false, {0.25, 3.0, 1.0}); // they take no part
}

TEST_F(SlotFacts, WithOneW) {
  ExpectThem(true, {0.37, 0.37, 0.37});
  ExpectThem(true, {3.0, 3.0, 3.0});
  ExpectThem(true, {1e-7, 1e-7, 1e-7});
}

TEST_F(SlotFacts, WhereWVaries) {
  ExpectThem(true, {0.5, 0.5, 0.25});
  ExpectThem(true, {0.5, 1.25, 0.5});
}

} // namespace
