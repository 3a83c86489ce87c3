// array/storage_test.cpp: extents that can be and cannot be, and what is made of them

#include "array/storage.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace arrayfold {
namespace {

const auto minus_one = static_cast<std::size_t>(-1);

TEST(CheckedSize, OfExtentsThatFit_IsTheirProduct) {
  EXPECT_EQ(checked_size(Shape{}, 8), 1u);
  EXPECT_EQ(checked_size(Shape{0}, 8), 0u);
  EXPECT_EQ(checked_size(Shape{2, 3, 4}, 8), 24u);
  EXPECT_EQ(checked_size(Shape{0, 4611686018427387904u}, 8), 0u);
  EXPECT_EQ(checked_size(Shape{1152921504606846975u}, 8), 1152921504606846975u);
}

TEST(CheckedSize, OfImpossibleExtents_Throws) {
  const Shape impossible[] = {Shape{minus_one},
                              Shape{minus_one, minus_one},  // wraps to one element
                              Shape{static_cast<std::size_t>(-2), static_cast<std::size_t>(-3)},
                              Shape{0, minus_one},
                              Shape{minus_one, 0},
                              Shape{65536, 65536, 65536, 65536},      // wraps to none
                              Shape{1u << 30, std::size_t{1} << 31},  // fits, its bytes wrap to none
                              Shape{1152921504606846976u}};
  for (const Shape& extents : impossible) EXPECT_THROW(checked_size(extents, 8), std::bad_alloc);
}

TEST(CheckedSize, CountsTheBytesOfTheElement) {
  EXPECT_EQ(checked_size(Shape{1152921504606846976u}, 4), 1152921504606846976u);
  EXPECT_THROW(checked_size(Shape{static_cast<std::size_t>(PTRDIFF_MAX) / 4 + 1}, 4), std::bad_alloc);
}

TEST(ExtentsCover, TellsWhetherTheProductIsTheCount) {
  EXPECT_TRUE(extents_cover(Shape{}, 1));
  EXPECT_TRUE(extents_cover(Shape{2, 3}, 6));
  EXPECT_FALSE(extents_cover(Shape{2, 3}, 5));
  EXPECT_TRUE(extents_cover(Shape{minus_one, 0}, 0));
  EXPECT_FALSE(extents_cover(Shape{0}, 1));
  EXPECT_FALSE(extents_cover(Shape{minus_one, minus_one}, 1));
  EXPECT_FALSE(extents_cover(Shape{static_cast<std::size_t>(-2), static_cast<std::size_t>(-3)}, 6));
}

TEST(ExtentOf, ANegativeNumber_IsFarTooLarge) {
  EXPECT_EQ(extent_of(7), 7u);
  EXPECT_EQ(extent_of(-1), minus_one);
  EXPECT_EQ(extent_of(INT32_MIN), minus_one - INT32_MAX);
}

TEST(MakeArray, GivesTheExtentsStridesAndAlignedStorage) {
  const auto array = make_array<XTDouble>(Shape{2, 1, 3});
  const auto& container = *array->array;
  EXPECT_EQ(container.shape(), (Shape{2, 1, 3}));
  EXPECT_EQ(container.strides()[0], 3);
  EXPECT_EQ(container.strides()[1], 0);
  EXPECT_EQ(container.strides()[2], 1);
  EXPECT_EQ(container.storage().size(), 6u);
  EXPECT_TRUE(array->data.empty());
  void* first = array->array->storage().data();
  std::size_t space = 64;
  EXPECT_EQ(std::align(32, 8, first, space), array->array->storage().data());
}

TEST(MakeArray, ZeroDimensional_HasOneElement) {
  const auto array = make_array<XTInt>(Shape{});
  EXPECT_EQ(array->array->dimension(), 0u);
  EXPECT_EQ(array->array->storage().size(), 1u);
}

TEST(MakeArray, OfImpossibleExtents_Throws) {
  EXPECT_THROW(make_array<XTDouble>(Shape{minus_one}), std::bad_alloc);
  EXPECT_THROW(make_array<XTBool>(Shape{65536, 65536, 65536, 65536}), std::bad_alloc);
}

TEST(CheckExtents, OfAnArrayReshapedBeyondItsStorage_Throws) {
  const auto array = make_array<XTInt>(Shape{6});
  EXPECT_NO_THROW(check_extents(*array->array));
  array->array->reshape(Shape{static_cast<std::size_t>(-2), static_cast<std::size_t>(-3)});
  EXPECT_THROW(check_extents(*array->array), std::bad_alloc);
}

/// True when the mapping around `address` is marked for huge pages ("hg" among its flags).
bool asks_for_huge_pages(const void* address) {
  const auto wanted = reinterpret_cast<unsigned long>(address);
  std::ifstream maps("/proc/self/smaps");
  bool inside = false;
  for (std::string line; std::getline(maps, line);) {
    unsigned long first = 0, last = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx ", &first, &last) == 2)
      inside = first <= wanted && wanted < last;
    else if (inside && line.compare(0, 8, "VmFlags:") == 0)
      return line.find(" hg") != std::string::npos;
  }
  return false;
}

TEST(MakeArray, OfFourMebibytes_AsksForHugePages) {
  const auto probe = mmap(nullptr, 8 << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  const bool offered = madvise(probe, 8 << 20, MADV_HUGEPAGE) == 0;
  munmap(probe, 8 << 20);
  const auto big = make_array<XTDouble>(Shape{524288});
  const auto small = make_array<XTDouble>(Shape{524287});
  EXPECT_EQ(asks_for_huge_pages(big->array->storage().data() + 262144), offered);
  EXPECT_FALSE(asks_for_huge_pages(small->array->storage().data() + 262144));
}

}  // namespace
}  // namespace arrayfold
