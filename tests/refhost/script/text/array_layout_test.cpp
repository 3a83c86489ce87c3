// refhost/script/text/array_layout_test.cpp: arrays in columns

#include "script/text/array_layout.hpp"

#include <gtest/gtest.h>

namespace hvm::testing {
namespace {

/// An array that counts from 0.
std::string in_columns(const Extents& extents, std::size_t width, std::int64_t edge = 0) {
  const ElementText element = [&](const Extents& position) {
    std::int64_t offset = 0;
    for (std::size_t i = 0; i < extents.size(); ++i) offset = offset * extents[i] + position[i];
    return std::to_string(offset);
  };
  return aligned(extents, edge, element, 10, width);
}

TEST(Extents, HaveACountOfElements) {
  constexpr std::int64_t large = std::int64_t{1} << 32;
  EXPECT_EQ(element_count({}), 1);
  EXPECT_EQ(element_count({2, 3}), 6);
  EXPECT_EQ(element_count({2, 0, 3}), 0);
  EXPECT_EQ(element_count({large, large / 4}), large * (large / 4));
  EXPECT_EQ(element_count({large, large}), 0) << "it has no place in 63 bits";
  EXPECT_EQ(element_count({-2, -3}), 0);
  EXPECT_EQ(element_count({2, -3}), 0);
}

TEST(Extents, AreShownInParentheses) {
  EXPECT_EQ(in_parentheses({}), "()");
  EXPECT_EQ(in_parentheses({2, 3}), "(2, 3)");
}

TEST(AlignedArray, OfOneRow_StandsInALineWhereItFits) {
  EXPECT_EQ(in_columns({3}, 80), "[0, 1, 2]");
  EXPECT_EQ(in_columns({1, 3}, 80), "[[0, 1, 2]]");
  EXPECT_EQ(in_columns({}, 80), "0");
  EXPECT_EQ(in_columns({3}, 15), "\n[0, 1, 2]");
}

TEST(AlignedArray, HasItsColumnsBelowEachOther) {
  EXPECT_EQ(in_columns({3, 4}, 80), "\n[[0, 1,  2,  3],\n [4, 5,  6,  7],\n [8, 9, 10, 11]]");
  EXPECT_EQ(in_columns({2, 2, 2}, 80), "\n[[[0, 1],\n  [2, 3]],\n [[4, 5],\n  [6, 7]]]");
}

TEST(AlignedArray, WrapsRowsThatAreTooWide) {
  EXPECT_EQ(in_columns({11}, 16), "\n[ 0,  1,  2,  3,\n  4,  5,  6,  7,\n  8,  9, 10]");
  EXPECT_EQ(in_columns({2, 3}, 10), "\n[[0, 1,\n  2],\n [3, 4,\n  5]]");
  for (const std::size_t width : {0u, 1u, 2u}) EXPECT_EQ(in_columns({3}, width), "\n[0,\n 1,\n 2]") << width;
}

TEST(AlignedArray, FitsItsWidth) {
  for (std::size_t width = 12; width < 60; ++width) {
    const std::string text = in_columns({7, 13}, width);
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
      end = text.find('\n', begin);
      EXPECT_LE((end == std::string::npos ? text.size() : end) - begin, width) << text;
    }
  }
}

TEST(AlignedArray, WithoutElements_ShowsItsBrackets) {
  EXPECT_EQ(in_columns({0}, 80), "[]");
  EXPECT_EQ(in_columns({0, 3}, 80), "[]");
  EXPECT_EQ(in_columns({2, 0}, 80), "\n[[],\n []]");
  EXPECT_LT(in_columns({1000000, 0}, 80).size(), 60u);
}

TEST(AlignedArray, ShowsHeadAndTail) {
  EXPECT_EQ(in_columns({100}, 80, 2), "[0, 1, ..., 98, 99]");
  EXPECT_EQ(in_columns({9, 9}, 80, 1), "\n[[ 0, ...,  8],\n ...,\n [72, ..., 80]]");
}

}  // namespace
}  // namespace hvm::testing
