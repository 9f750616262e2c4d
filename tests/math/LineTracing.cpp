#include <ZxCore3D/math/LineTracing.h>

#include <cstdlib>
#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using TCell = vec_t_<int, 3>;
using TCells = std::vector<TCell>;

TCells Line(const TCell& from, const TCell& to) {
  TCells out;
  DrawLine3d(from, to, out);
  return out;
}

TCells Thick(const TCell& from, const TCell& to, int thickness) {
  TCells out;
  DrawLine3d(from, to, thickness, out);
  return out;
}

std::size_t DominantAxis(const TCell& d) {
  // The first axis with the greatest difference.
  std::size_t axis = 0;
  for (std::size_t i = 1; i < 3; ++i) {
    if (std::abs(d[i]) > std::abs(d[axis])) {
      axis = i;
    }
  }
  return axis;
}

/// The definition in closed form: after k steps of the dominant axis a follower has moved
/// floor((2 k |d| + a) / (2 a)) cells, that is k |d| / a rounded with halves forward.
TCells Definition(const TCell& from, const TCell& to) {
  const TCell d = to - from;
  const std::size_t axis = DominantAxis(d);
  const long long a = std::abs(d[axis]);
  TCells cells = {from};
  for (long long k = 1; k <= a; ++k) {
    TCell cell = from;
    for (std::size_t i = 0; i < 3; ++i) {
      const long long moved = (2 * k * std::abs(d[i]) + a) / (2 * a);
      cell[i] += static_cast<int>(d[i] < 0 ? -moved : moved);
    }
    cells.push_back(cell);
  }
  return cells;
}

TEST(LineTracing, APointIsOneCellOrOneBlock) {
  EXPECT_EQ(Line({3, 4, 5}, {3, 4, 5}), (TCells{{3, 4, 5}}));
  // No difference at all makes x the dominant axis: the block lies in y and z.
  EXPECT_EQ(Thick({3, 4, 5}, {3, 4, 5}, 2), (TCells{{3, 3, 4},
                                                    {3, 3, 5},
                                                    {3, 3, 6},
                                                    {3, 4, 4},
                                                    {3, 4, 5},
                                                    {3, 4, 6},
                                                    {3, 5, 4},
                                                    {3, 5, 5},
                                                    {3, 5, 6}}));
}

TEST(LineTracing, AFlatLine) {
  EXPECT_EQ(Line({0, 0, 0}, {3, 1, 0}), (TCells{{0, 0, 0}, {1, 0, 0}, {2, 1, 0}, {3, 1, 0}}));
  EXPECT_EQ(Line({0, 0, 0}, {-3, 0, -1}),
            (TCells{{0, 0, 0}, {-1, 0, 0}, {-2, 0, -1}, {-3, 0, -1}}));
}

TEST(LineTracing, APureDiagonal) {
  EXPECT_EQ(Line({1, 1, 1}, {4, -2, 4}), (TCells{{1, 1, 1}, {2, 0, 2}, {3, -1, 3}, {4, -2, 4}}));
}

TEST(LineTracing, HalvesStepForward) {
  // y is half a cell at x = 1 and at x = -1: forward both times, so the way back is another.
  EXPECT_EQ(Line({0, 0, 0}, {2, 1, 0}), (TCells{{0, 0, 0}, {1, 1, 0}, {2, 1, 0}}));
  EXPECT_EQ(Line({2, 1, 0}, {0, 0, 0}), (TCells{{2, 1, 0}, {1, 0, 0}, {0, 0, 0}}));
}

TEST(LineTracing, TiesGoToXThenY) {
  // The block shows the dominant axis, whose coordinate it does not change.
  const auto fixed = [](const TCell& to) {
    const TCells cells = Thick({0, 0, 0}, to, 2);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      bool isFixed = true;
      for (std::size_t i = 1; i < 9; ++i) {
        isFixed = isFixed && cells[i][axis] == cells[0][axis];
      }
      if (isFixed) {
        return axis;
      }
    }
    return std::size_t{3};
  };
  EXPECT_EQ(fixed({2, 2, 2}), 0u);
  EXPECT_EQ(fixed({-2, 2, 1}), 0u);
  EXPECT_EQ(fixed({2, 1, 2}), 0u);
  EXPECT_EQ(fixed({1, 2, -2}), 1u);
  EXPECT_EQ(fixed({1, 2, 1}), 1u);
  EXPECT_EQ(fixed({1, 2, 3}), 2u);
  EXPECT_EQ(fixed({2, 1, 3}), 2u);
  EXPECT_EQ(fixed({3, 2, 1}), 0u);
}

TEST(LineTracing, EveryLineInASmallCubeFollowsTheDefinition) {
  for (int x = -6; x <= 6; ++x) {
    for (int y = -6; y <= 6; ++y) {
      for (int z = -6; z <= 6; ++z) {
        const TCell from = {5, -7, 100};
        const TCell to = from + TCell{x, y, z};
        ASSERT_EQ(Line(from, to), Definition(from, to)) << x << ' ' << y << ' ' << z;
      }
    }
  }
}

TEST(LineTracing, LongLinesFollowTheDefinition) {
  std::mt19937 random(31);
  std::uniform_int_distribution<int> coordinate(-3000, 3000);
  for (int i = 0; i < 200; ++i) {
    const TCell from = {coordinate(random), coordinate(random), coordinate(random)};
    const TCell to = {coordinate(random), coordinate(random), coordinate(random)};
    const TCells cells = Line(from, to);
    ASSERT_EQ(cells, Definition(from, to));
    EXPECT_EQ(cells.front(), from);
    EXPECT_EQ(cells.back(), to);
    const TCell d = to - from;
    EXPECT_EQ(cells.size(), static_cast<std::size_t>(std::abs(d[DominantAxis(d)])) + 1);
  }
}

TEST(LineTracing, ThicknessIsHalvedDown) {
  const TCell from = {0, 0, 0};
  const TCell to = {5, 2, 1};
  EXPECT_EQ(Thick(from, to, 0), Line(from, to));
  EXPECT_EQ(Thick(from, to, 1), Line(from, to));
  EXPECT_EQ(Thick(from, to, 2).size(), 6u * 9);
  EXPECT_EQ(Thick(from, to, 3), Thick(from, to, 2));
  EXPECT_EQ(Thick(from, to, 4).size(), 6u * 25);
  EXPECT_EQ(Thick(from, to, 5).size(), 6u * 25);
  EXPECT_TRUE(Thick(from, to, -1).empty());
  EXPECT_TRUE(Thick(from, to, -2).empty());
  EXPECT_TRUE(Thick(from, to, std::numeric_limits<int>::min()).empty());
}

TEST(LineTracing, ThicknessTwoAlongX) {
  const TCells cells = Thick({0, 0, 0}, {1, 0, 0}, 2);
  TCells expected;
  for (int x = 0; x <= 1; ++x) {
    for (int y = -1; y <= 1; ++y) {
      for (int z = -1; z <= 1; ++z) {
        expected.push_back({x, y, z});
      }
    }
  }
  ASSERT_EQ(expected.size(), 18u);
  EXPECT_EQ(cells, expected);
}

/// The blocks of the definition's cells, with the loops of the table.
TCells Blocks(const TCell& from, const TCell& to, int h) {
  const std::size_t axis = DominantAxis(to - from);
  const std::size_t outer = axis == 0 ? 1 : 0;
  const std::size_t inner = axis == 2 ? 1 : 2;
  TCells cells;
  for (const TCell& cell : Definition(from, to)) {
    for (int i = -h; i <= h; ++i) {
      for (int j = -h; j <= h; ++j) {
        TCell moved = cell;
        moved[outer] += i;
        moved[inner] += j;
        cells.push_back(moved);
      }
    }
  }
  return cells;
}

TEST(LineTracing, BlocksLieAcrossTheDominantAxisAndAreNotMerged) {
  for (const TCell& to : {TCell{4, 3, 2}, TCell{3, -4, 2}, TCell{1, 2, -5}, TCell{0, 0, 3}}) {
    EXPECT_EQ(Thick({1, 1, 1}, to + TCell{1, 1, 1}, 2), Blocks({1, 1, 1}, to + TCell{1, 1, 1}, 1));
    EXPECT_EQ(Thick({1, 1, 1}, to + TCell{1, 1, 1}, 4), Blocks({1, 1, 1}, to + TCell{1, 1, 1}, 2));
  }
}

TEST(LineTracing, ExistingContentStays) {
  TCells out = {{9, 9, 9}};
  DrawLine3d({0, 0, 0}, {1, 0, 0}, out);
  DrawLine3d({0, 0, 0}, {0, 1, 0}, 1, out);
  EXPECT_EQ(out, (TCells{{9, 9, 9}, {0, 0, 0}, {1, 0, 0}, {0, 0, 0}, {0, 1, 0}}));
}

TEST(LineTracing, CoordinatesAtTheEndsOfTheRange) {
  const int max = std::numeric_limits<int>::max();
  const int min = std::numeric_limits<int>::min();
  EXPECT_EQ(Line({max - 1, min, 0}, {max, min + 1, 0}),
            (TCells{{max - 1, min, 0}, {max, min + 1, 0}}));
  EXPECT_EQ(Thick({0, max, min}, {0, max, min}, 2).size(), 9u);
  // The difference wraps to -1.
  EXPECT_EQ(Line({min, 0, 0}, {max, 0, 0}), (TCells{{min, 0, 0}, {max, 0, 0}}));
}

} // namespace
