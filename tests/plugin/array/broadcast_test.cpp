// array/broadcast_test.cpp: the walk over two shapes against the broadcasting rule, written plainly

#include "array/broadcast.hpp"

#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace arrayfold {
namespace {

using Extents = std::vector<std::size_t>;
using Counts = std::pair<std::size_t, std::size_t>;
using Offsets = std::vector<std::pair<std::size_t, std::size_t>>;

Shape shape_of(const Extents& extents) { return Shape(extents.begin(), extents.end()); }
Extents extents_of(const Shape& shape) { return {shape.begin(), shape.end()}; }

/// The offsets of both operands for every element of the result, in its order.
Offsets walked(const Extents& left, const Extents& right) {
  Offsets offsets;
  BroadcastWalk(shape_of(left), shape_of(right)).for_each_rows([&](const BroadcastRows& rows) {
    EXPECT_LE(rows.left_step, 1u);
    EXPECT_LE(rows.right_step, 1u);
    EXPECT_GT(rows.length, 0u);
    EXPECT_GT(rows.count, 0u);
    for (std::size_t row = 0; row < rows.count; ++row)
      for (std::size_t i = 0; i < rows.length; ++i)
        offsets.emplace_back(rows.left + row * rows.left_stride + i * rows.left_step,
                             rows.right + row * rows.right_stride + i * rows.right_step);
  });
  return offsets;
}

/// How many rows there are, and in how many visits.
Counts rows_of(const Extents& left, const Extents& right) {
  std::size_t count = 0, visits = 0;
  BroadcastWalk(shape_of(left), shape_of(right)).for_each_rows([&](const BroadcastRows& rows) {
    count += rows.count;
    ++visits;
  });
  return {count, visits};
}

Extents extents_of_walk(const Extents& left, const Extents& right) {
  return extents_of(BroadcastWalk(shape_of(left), shape_of(right)).extents());
}

// ---- The rule, an element at a time

/// `extents` with ones in front, up to `rank`.
Extents filled_up(Extents extents, std::size_t rank) {
  extents.insert(extents.begin(), rank - extents.size(), 1);
  return extents;
}

std::size_t offset_at(const Extents& index, const Extents& extents) {
  std::size_t offset = 0;
  for (std::size_t axis = 0; axis < extents.size(); ++axis)
    offset = offset * extents[axis] + (extents[axis] == 1 ? 0 : index[axis]);
  return offset;
}

Offsets by_the_rule(const Extents& left, const Extents& right) {
  const std::size_t rank = std::max(left.size(), right.size());
  const Extents filled_left = filled_up(left, rank), filled_right = filled_up(right, rank);
  Extents extents(rank);
  std::size_t size = 1;
  for (std::size_t axis = 0; axis < rank; ++axis)
    size *= extents[axis] = filled_left[axis] == 1 ? filled_right[axis] : filled_left[axis];
  EXPECT_EQ(extents_of_walk(left, right), extents);
  Offsets offsets;
  Extents index(rank, 0);
  for (std::size_t at = 0; at < size; ++at) {
    offsets.emplace_back(offset_at(index, filled_left), offset_at(index, filled_right));
    for (std::size_t axis = rank; axis-- > 0;) {
      if (++index[axis] < extents[axis]) break;
      index[axis] = 0;
    }
  }
  return offsets;
}

TEST(Broadcast, OfRandomShapes_VisitsWhatTheRuleSays) {
  std::mt19937_64 engine(17);
  const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(engine() % limit); };
  for (int round = 0; round < 4000; ++round) {
    Extents common(below(10));
    for (std::size_t& extent : common) extent = below(40) == 0 ? 0 : 1 + below(common.size() > 6 ? 2 : 4);
    Extents operands[2] = {common, common};
    for (Extents& operand : operands) {
      for (std::size_t& extent : operand)
        if (below(3) == 0) extent = 1;
      operand.erase(operand.begin(), operand.begin() + static_cast<std::ptrdiff_t>(below(operand.size() + 1)));
    }
    const auto& [left, right] = operands;
    EXPECT_EQ(walked(left, right), by_the_rule(left, right)) << "round " << round;
  }
}

TEST(Broadcast, OfRankNine_VisitsWhatTheRuleSays) {
  const Extents left = {2, 1, 3, 1, 2, 1, 1, 2, 3}, right = {3, 1, 2, 2, 1, 5, 1, 3};
  EXPECT_EQ(walked(left, right), by_the_rule(left, right));
  EXPECT_EQ(walked(right, left), by_the_rule(right, left));
}

TEST(Broadcast, ZeroDimensional_RepeatsItsElement) {
  EXPECT_EQ(walked({}, {}), (Offsets{{0, 0}}));
  EXPECT_EQ(walked({}, {3}), (Offsets{{0, 0}, {0, 1}, {0, 2}}));
  EXPECT_EQ(walked({1, 1}, {}), (Offsets{{0, 0}}));
  EXPECT_EQ(extents_of_walk({1, 1}, {}), (Extents{1, 1}));
}

TEST(Broadcast, OfAnExtentOfZero_HasNoRow) {
  const Counts none = {0, 0};
  EXPECT_EQ(rows_of({0}, {1}), none);
  EXPECT_EQ(extents_of_walk({0}, {1}), (Extents{0}));
  EXPECT_EQ(rows_of({3, 1}, {0}), none);
  EXPECT_EQ(extents_of_walk({3, 1}, {0}), (Extents{3, 0}));
  EXPECT_EQ(rows_of({0, 5}, {5}), none);
  EXPECT_EQ(extents_of_walk({}, {2, 0}), (Extents{2, 0}));
}

TEST(Broadcast, JoinsDimensionsThatGoOnWhereTheLastEnds) {
  EXPECT_EQ(rows_of({4, 5, 6}, {4, 5, 6}), (Counts{1, 1}));
  EXPECT_EQ(rows_of({4, 5, 6}, {5, 6}), (Counts{4, 1}));
  EXPECT_EQ(rows_of({4, 5, 6}, {}), (Counts{1, 1}));
  EXPECT_EQ(rows_of({4, 5, 6}, {4, 1, 1}), (Counts{4, 1}));
  EXPECT_EQ(rows_of({4, 1, 6}, {4, 1, 6}), (Counts{1, 1}));
  EXPECT_EQ(rows_of({4, 5, 6}, {1, 5, 1}), (Counts{20, 4}));
  EXPECT_EQ(rows_of({4, 5, 6}, {4, 1, 6}), (Counts{20, 4}));
}

TEST(Broadcast, OfShapesThatDoNotFit_ThrowsTheLibrarysError) {
  const std::pair<Extents, Extents> misfits[] = {{{2}, {3}},
                                                 {{0}, {3}},
                                                 {{3}, {0}},
                                                 {{2, 3}, {3, 2}},
                                                 {{2, 3}, {2}},
                                                 {
                                                     {4, 1, 3},
                                                     {2, 3, 1},
                                                 },
                                                 {{2}, {2, 3, 1, 3}}};
  for (const auto& [left, right] : misfits) {
    try {
      BroadcastWalk walk(shape_of(left), shape_of(right));
      ADD_FAILURE() << "no error";
    } catch (const xt::broadcast_error& error) {
      EXPECT_STREQ(error.what(), "Incompatible dimension of arrays, compile in DEBUG for more info");
    }
  }
}

}  // namespace
}  // namespace arrayfold
