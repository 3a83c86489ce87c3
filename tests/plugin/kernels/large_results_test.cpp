// kernels/large_results_test.cpp: results that are written past the caches, on every target, and which ones are

#include "kernels/large_results.hpp"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>

#include "kernels/arithmetic.hpp"
#include "kernels/differences.hpp"
#include "kernels/maps.hpp"
#include "memory.hpp"
#include "support/targets.hpp"

namespace {

bool answer_is_refused = false;
int questions = 0;
const void* last_page = nullptr;

}  // namespace

/// The system's function, which tests can let fail. They count its calls and know the last page that it was asked for.
extern "C" int mincore(void* start, std::size_t size, unsigned char* states) noexcept {
  ++questions;
  last_page = start;
  if (!answer_is_refused) return static_cast<int>(syscall(SYS_mincore, start, size, states));
  errno = EAGAIN;
  return -1;
}

namespace arrayfold::test {
namespace {

/// Memory as the system gives it: no page is used.
class NewPages {
 public:
  explicit NewPages(std::size_t bytes)
      : bytes_(bytes), start_(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    madvise(start_, bytes_, MADV_NOHUGEPAGE);
  }
  ~NewPages() { munmap(start_, bytes_); }
  NewPages(const NewPages&) = delete;
  NewPages& operator=(const NewPages&) = delete;

  unsigned char* data() const { return static_cast<unsigned char*>(start_); }

 private:
  std::size_t bytes_;
  void* start_;
};

TEST(LargeResults, AreAsLargeAsTheCaches) {
  EXPECT_TRUE(is_large<double>(least_large_result / sizeof(double)));
  EXPECT_FALSE(is_large<double>(least_large_result / sizeof(double) - 1));
  EXPECT_TRUE(is_large<std::int32_t>(least_large_result / sizeof(std::int32_t)));
}

TEST(UsedPages, AreThoseThatWereWritten) {
  constexpr std::size_t size = std::size_t{1} << 20;
  const NewPages pages(size), without_end(size);
  EXPECT_FALSE(has_used_pages(pages.data(), size)) << "no page is used";
  pages.data()[size - 1] = 1;
  EXPECT_FALSE(has_used_pages(pages.data(), size)) << "the end alone is used";
  std::memset(pages.data(), 1, size / 2);
  EXPECT_FALSE(has_used_pages(pages.data(), size)) << "the middle is not used";
  std::memset(pages.data(), 1, size / 2 + 1);
  EXPECT_TRUE(has_used_pages(pages.data(), size));
  std::memset(without_end.data(), 1, size / 2 + 1);
  EXPECT_FALSE(has_used_pages(without_end.data(), size)) << "the end is not used";
  answer_is_refused = true;
  EXPECT_FALSE(has_used_pages(pages.data(), size)) << "the system does not say";
  answer_is_refused = false;
}

TEST(UsedPages, OfAResultBesideALineOfTheCache_AreNotAskedFor) {
  Memory<double> memory(1000, 1);
  EXPECT_FALSE(has_used_pages(memory.data(), 800));
  EXPECT_TRUE(has_used_pages(memory.data() + 7, 800));
}

/// Runs a kernel for a result in used pages. `run(out)` writes as many elements as are expected.
template <class R, class Run>
void expect_past_caches(const char* name, const std::vector<R>& expected, Run run) {
  SCOPED_TRACE(name);
  Memory<R> out(expected.size());
  questions = 0;
  run(out.data());
  EXPECT_EQ(questions, 2) << "in the middle and at the end";
  const auto* const page = static_cast<const unsigned char*>(last_page);
  const auto* const last = reinterpret_cast<const unsigned char*>(out.data() + expected.size()) - 1;
  EXPECT_TRUE(page <= last && last < page + 4096) << "the page of the last element";
  EXPECT_EQ(std::memcmp(out.data(), expected.data(), expected.size() * sizeof(R)), 0);
  EXPECT_TRUE(out.is_intact());
}

template <class T, class R, class Formula>
std::vector<R> each(const std::vector<T>& left, const std::vector<T>& right, Formula formula) {
  std::vector<R> results(left.size());
  for (std::size_t i = 0; i < left.size(); ++i) results[i] = static_cast<R>(formula(left[i], right[i]));
  return results;
}

/// Numbers small enough for every type, in no period that registers have.
template <class T>
std::vector<T> numbers(std::size_t count, unsigned period) {
  std::vector<T> all(count);
  for (std::size_t i = 0; i < count; ++i) all[i] = static_cast<T>(i % period) - static_cast<T>(period / 3);
  return all;
}

template <class T>
void expect_large_results() {
  // Behind the last whole register there are elements of every narrower one.
  constexpr std::size_t of_own_type = least_large_result / sizeof(T) + 15;
  constexpr std::size_t of_doubles = least_large_result / sizeof(double) + 15;
  const auto a = numbers<T>(of_own_type, 1009), b = numbers<T>(of_own_type, 997);
  const std::vector<T> first(a.begin(), a.begin() + of_doubles), second(b.begin(), b.begin() + of_doubles);
  const std::vector<T> threes(of_own_type, T{3});
  const auto plus = [](T x, T y) { return x + y; };
  const auto sums = each<T, T>(a, b, plus), sums_by_number = each<T, T>(a, threes, plus);
  const auto least = each<T, double>(first, second, [](T x, T y) { return x < y ? x : y; });
  const auto squares = each<T, double>(first, first, [](T x, T y) { return x * y; });
  const auto roots = each<T, double>(first, first, [](T x, T) {
    return std::is_same_v<T, float> ? std::sqrt(static_cast<float>(x * x)) : std::sqrt(static_cast<double>(x * x));
  });
  std::vector<T> steps(of_own_type - 1);
  for (std::size_t i = 0; i < steps.size(); ++i) steps[i] = a[i + 1] - a[i];

  on_each_target([&] {
    const auto& operations = arithmetic<T>();
    expect_past_caches("sum", sums, [&](T* out) { operations.sum.both_advance(a.data(), b.data(), out, a.size()); });
    expect_past_caches("sum of a number", sums_by_number,
                       [&](T* out) { operations.sum.left_advances(a.data(), threes.data(), out, a.size()); });
    expect_past_caches("minimum", least, [&](double* out) {
      operations.minimum.both_advance(first.data(), second.data(), out, first.size());
    });
    expect_past_caches("square", squares, [&](double* out) { maps<T>().square(first.data(), out, first.size()); });
    expect_past_caches("differences", steps, [&](T* out) { differences<T>().of_rows(a.data(), out, a.size(), 1); });
    std::vector<T> places(roots.size());
    for (std::size_t i = 0; i < places.size(); ++i) places[i] = static_cast<T>(first[i] * first[i]);
    expect_past_caches("root", roots, [&](double* out) { maps<T>().square_root(places.data(), out, places.size()); });
  });
}

TEST(LargeResults, OfKernels_AreThoseOfTheFormulas) {
  expect_large_results<double>();
  expect_large_results<float>();
  expect_large_results<std::int32_t>();
  expect_large_results<std::int64_t>();
}

TEST(LargeResults, OfSums_GoPastTheCaches) {
  const auto elements = numbers<double>(least_large_result / sizeof(double), 1009);
  const auto doubled = each<double, double>(elements, elements, [](double x, double y) { return x + y; });
  expect_past_caches("sum", doubled, [&](double* out) {
    arithmetic<double>().sum.both_advance(elements.data(), elements.data(), out, elements.size());
  });
}

TEST(LargeResults, OverAnOperand_GoIntoTheCaches) {
  const auto elements = numbers<double>(least_large_result / sizeof(double), 1009);
  const auto doubled = each<double, double>(elements, elements, [](double x, double y) { return x + y; });
  Memory<double> memory(elements);
  questions = 0;
  arithmetic<double>().sum.both_advance(memory.data(), memory.data(), memory.data(), elements.size());
  EXPECT_EQ(questions, 0);
  EXPECT_TRUE(same_bits(memory.values(), doubled));
}

}  // namespace
}  // namespace arrayfold::test
