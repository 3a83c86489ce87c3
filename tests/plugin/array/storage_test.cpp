// array/storage_test.cpp: extents that can be and cannot be, and what is made of them

#include "array/storage.hpp"

#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

bool advice_is_refused = false;
std::size_t advised_bytes = 0;

}  // namespace

/// The system's function, which tests can let fail and which counts the bytes it is called for.
extern "C" int madvise(void* memory, std::size_t size, int advice) noexcept {
  advised_bytes += size;
  if (!advice_is_refused) return static_cast<int>(syscall(SYS_madvise, memory, size, advice));
  errno = ENOMEM;
  return -1;
}

namespace arrayfold {
namespace {

const auto minus_one = static_cast<std::size_t>(-1);

TEST(Strides, Resized_KeepTheirEntriesAndGetZeros) {
  using Strides = xarray_of<double>::strides_type;
  for (const std::size_t before : {0u, 1u, 3u, 4u, 6u})
    for (const std::size_t after : {0u, 1u, 2u, 4u, 5u, 9u}) {
      Strides strides(before, 7);
      strides.resize(after);
      ASSERT_EQ(strides.size(), after);
      for (std::size_t i = 0; i < after; ++i) EXPECT_EQ(strides[i], i < before ? 7 : 0) << before << " to " << after;
    }
}

TEST(CheckedSize, OfExtentsThatFit_IsTheirProduct) {
  EXPECT_EQ(checked_size(Shape{}, 8), 1u);
  EXPECT_EQ(checked_size(Shape{0}, 8), 0u);
  EXPECT_EQ(checked_size(Shape{2, 3, 4}, 8), 24u);
  EXPECT_EQ(checked_size(Shape{0, 4611686018427387904u}, 8), 0u);
  EXPECT_EQ(checked_size(Shape{4611686018427387904u, 6, 0}, 8), 0u);
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

TEST(ReserveElements, OfFourMebibytes_AsksForHugePagesOnce) {
  std::vector<double> big, small;
  const std::size_t before = advised_bytes;
  reserve_elements(small, 524287);
  EXPECT_EQ(advised_bytes, before);
  reserve_elements(big, 524288);
  EXPECT_GT(advised_bytes, before + (std::size_t{3} << 20));
  const std::size_t after = advised_bytes;
  reserve_elements(big, 524288);
  EXPECT_EQ(advised_bytes, after);
}

TEST(MakeArray, WhereAdviceIsRefused_IsTheSame) {
  advice_is_refused = true;
  const auto array = make_array<XTDouble>(Shape{1 << 20});
  const auto zeros = make_zeros<double>(Shape{1 << 20});
  advice_is_refused = false;
  array->array->storage()[0] = array->array->storage()[(1 << 20) - 1] = 1.5;
  EXPECT_EQ(array->array->storage().size(), std::size_t{1} << 20);
  EXPECT_EQ(std::count(zeros->storage().begin(), zeros->storage().end(), 0.0), 1 << 20);
}

// ---- Zeros

template <class T>
void expect_zeros(const Shape& extents) {
  const std::size_t count = checked_size(extents, sizeof(T));
  SCOPED_TRACE(testing::Message() << count << " elements of " << sizeof(T) << " bytes");
  // Memory that is free again is not zero.
  if (auto used = make_container<T>(extents); count > 0)
    std::memset(static_cast<void*>(used->storage().data()), 0xff, count * sizeof(T));
  const auto zeros = make_zeros<T>(extents);
  EXPECT_EQ(zeros->shape(), extents);
  ASSERT_EQ(zeros->storage().size(), count);
  const auto* bytes = reinterpret_cast<const unsigned char*>(zeros->storage().data());
  EXPECT_TRUE(std::all_of(bytes, bytes + count * sizeof(T), [](unsigned char byte) { return byte == 0; }));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % (count > 0 ? 64 : 1), 0u);
  if (count > 0) std::memset(static_cast<void*>(zeros->storage().data()), 0xff, count * sizeof(T));
}

TEST(MakeZeros, OfEachSize_GivesZerosAndTheExtents) {
  for (const std::size_t count : {0, 1, 10, 16383, 16384, 16385, 32768, 131071, 131072, 1 << 20}) {
    expect_zeros<double>(Shape{count});
    expect_zeros<std::int32_t>(Shape{count});
    expect_zeros<bool>(Shape{count});
  }
  expect_zeros<double>(Shape{});
  expect_zeros<double>(Shape{3, 0, 70000});
  expect_zeros<std::int64_t>(Shape{16, 2, 16, 1, 8, 16});
}

TEST(MakeZeros, HaveTheStridesOfAnyArray) {
  const auto zeros = make_zeros<double>(Shape{200, 1, 300});
  const auto other = make_container<double>(Shape{200, 1, 300});
  EXPECT_EQ(zeros->strides(), other->strides());
  EXPECT_EQ(zeros->backstrides(), other->backstrides());
}

TEST(MakeZeros, OfImpossibleExtents_Throw) { EXPECT_THROW(make_zeros<double>(Shape{minus_one}), std::bad_alloc); }

TEST(MakeZeros, ACopyOfTheContainer_IsAnyArray) {
  const auto zeros = make_zeros<double>(Shape{1 << 20});
  xarray_of<double> copy(*zeros);
  copy.storage()[5] = 2.5;
  EXPECT_EQ(zeros->storage()[5], 0.0);
  EXPECT_EQ(copy.storage().size(), zeros->storage().size());
}

// Under the address sanitizer zeros are written, and a process that asks for too much ends.
#ifndef ARRAYFOLD_ADDRESS_SANITIZER

TEST(MakeZeros, WithoutMemory_Throw) { EXPECT_THROW(make_zeros<double>(Shape{std::size_t{1} << 44}), std::bad_alloc); }

/// The memory that the process has in use, in bytes.
std::size_t memory_in_use() {
  std::size_t pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(MakeZeros, ManyOfThem_TakeNoMemoryUntilTheyAreTouched) {
  const std::size_t before = memory_in_use();
  const auto zeros = make_zeros<double>(Shape{std::size_t{64} << 20});
  EXPECT_LT(memory_in_use(), before + (std::size_t{16} << 20));
  EXPECT_EQ(zeros->storage()[std::size_t{63} << 20], 0.0);
}

TEST(MakeZeros, Released_GoBackToTheSystem) {
  const std::size_t before = mallinfo2().hblkhd + mallinfo2().uordblks;
  for (int i = 0; i < 100; ++i) make_zeros<double>(Shape{std::size_t{1} << 20})->storage()[i] = 1;
  EXPECT_LE(mallinfo2().hblkhd + mallinfo2().uordblks, before + 4096);
}

/// Ends the process; its status tells whether std::bad_alloc came.
[[noreturn]] void make_zeros_within_64_mebibytes() {
  rlimit limit{std::size_t{64} << 20, std::size_t{64} << 20};
  setrlimit(RLIMIT_AS, &limit);
  try {
    make_zeros<double>(Shape{std::size_t{64} << 20});
  } catch (const std::bad_alloc&) {
    std::_Exit(7);
  }
  std::_Exit(0);
}

TEST(MakeZerosDeathTest, BeyondTheLimitOfTheProcess_Throws) {
  EXPECT_EXIT(make_zeros_within_64_mebibytes(), testing::ExitedWithCode(7), "");
}

#endif

}  // namespace
}  // namespace arrayfold
