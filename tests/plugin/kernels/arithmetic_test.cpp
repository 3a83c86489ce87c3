// kernels/arithmetic_test.cpp: operations on two elements, on every target, against their formulas

#include "kernels/arithmetic.hpp"

#include <csignal>
#include <functional>
#include <limits>

#include <sys/mman.h>

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

template <class T, class R>
struct Case {
  const char* name;
  Operation<T, R> Arithmetic<T>::*operation;
  std::function<R(T, T)> formula;
};

/// Integers wrap, in the tests as in the kernels.
template <class T>
std::vector<Case<T, T>> results_in_kind() {
  std::vector<Case<T, T>> cases = {
      {"sum", &Arithmetic<T>::sum, [](T a, T b) { return static_cast<T>(a + b); }},
      {"difference", &Arithmetic<T>::difference, [](T a, T b) { return static_cast<T>(a - b); }},
      {"product", &Arithmetic<T>::product, [](T a, T b) { return static_cast<T>(a * b); }}};
  if constexpr (std::is_floating_point_v<T>)
    cases.push_back({"quotient", &Arithmetic<T>::quotient, [](T a, T b) { return a / b; }});
  return cases;
}

template <class T>
std::vector<Case<T, bool>> truths() {
  return {{"less or equal", &Arithmetic<T>::less_equal, [](T a, T b) { return a <= b; }},
          {"greater or equal", &Arithmetic<T>::greater_equal, [](T a, T b) { return a >= b; }},
          {"less", &Arithmetic<T>::less, [](T a, T b) { return a < b; }},
          {"greater", &Arithmetic<T>::greater, [](T a, T b) { return a > b; }}};
}

template <class T>
std::vector<Case<T, double>> choices() {
  return {{"minimum", &Arithmetic<T>::minimum, [](T a, T b) { return static_cast<double>(a < b ? a : b); }},
          {"maximum", &Arithmetic<T>::maximum, [](T a, T b) { return static_cast<double>(b < a ? a : b); }}};
}

template <class T, class R>
std::vector<R> applied(const Case<T, R>& by, const std::vector<T>& left, const std::vector<T>& right) {
  std::vector<R> results(left.size());
  for (std::size_t i = 0; i < left.size(); ++i) results[i] = by.formula(left[i], right[i]);
  return results;
}

// std::vector<bool> holds bits, and the kernels write bytes.
template <class R>
using Stored = std::conditional_t<std::is_same_v<R, bool>, unsigned char, R>;

template <class R>
R* results_in(Memory<Stored<R>>& memory) {
  return static_cast<R*>(static_cast<void*>(memory.data()));
}

template <class R>
std::vector<Stored<R>> stored(const std::vector<R>& values) {
  return {values.begin(), values.end()};
}

/// Every way to walk one row, into other memory.
template <class T, class R>
void expect_rows_of(const Case<T, R>& by, std::size_t length) {
  SCOPED_TRACE(testing::Message() << by.name << " of " << length);
  const auto& loops = arithmetic<T>().*by.operation;
  const auto left = mixed_values<T>(length, 1), right = mixed_values<T>(length, 2);
  const std::vector<T> number = {T{3}};
  Memory<T> a(left, 1), b(right, 2), repeated(number, 3);
  const auto expect = [&](auto loop, const T* x, const T* y, const std::vector<R>& expected) {
    Memory<Stored<R>> out(length, 1);
    loop(x, y, results_in<R>(out), length);
    EXPECT_TRUE(same_bits(out.values(), stored<R>(expected)));
    EXPECT_TRUE(out.is_intact());
  };
  const std::vector<T> threes(length, T{3});
  expect(loops.both_advance, a.data(), b.data(), applied(by, left, right));
  expect(loops.both_advance, a.data(), a.data(), applied(by, left, left));
  expect(loops.left_advances, a.data(), repeated.data(), applied(by, left, threes));
  expect(loops.right_advances, repeated.data(), b.data(), applied(by, threes, right));
}

template <class T>
void expect_rows() {
  for (const std::size_t length : lengths()) {
    for (const auto& by : results_in_kind<T>()) expect_rows_of(by, length);
    for (const auto& by : truths<T>()) expect_rows_of(by, length);
    for (const auto& by : choices<T>()) expect_rows_of(by, length);
  }
}

TEST(Arithmetic, OfEveryLength_IsThatOfItsFormula) {
  on_each_target([] {
    expect_rows<double>();
    expect_rows<float>();
    expect_rows<std::int32_t>();
    expect_rows<std::int64_t>();
  });
}

template <class T>
void expect_in_place() {
  for (const std::size_t length : lengths())
    for (const auto& by : results_in_kind<T>()) {
      SCOPED_TRACE(testing::Message() << by.name << " of " << length);
      const auto& loops = arithmetic<T>().*by.operation;
      const auto left = mixed_values<T>(length, 1), right = mixed_values<T>(length, 2);
      const std::vector<T> threes(length, T{3});
      Memory<T> a(left), b(right, 1), itself(left, 2), by_number(left, 3), of_number(right);
      const T three = 3;
      loops.both_advance(a.data(), b.data(), a.data(), length);
      EXPECT_TRUE(same_bits(a.values(), applied(by, left, right)));
      EXPECT_TRUE(a.is_intact());
      loops.both_advance(itself.data(), itself.data(), itself.data(), length);
      EXPECT_TRUE(same_bits(itself.values(), applied(by, left, left)));
      loops.left_advances(by_number.data(), &three, by_number.data(), length);
      EXPECT_TRUE(same_bits(by_number.values(), applied(by, left, threes)));
      loops.right_advances(&three, of_number.data(), of_number.data(), length);
      EXPECT_TRUE(same_bits(of_number.values(), applied(by, threes, right)));
      EXPECT_TRUE(itself.is_intact() && by_number.is_intact() && of_number.is_intact());
    }
}

TEST(Arithmetic, InPlace_IsThatOfItsFormula) {
  on_each_target([] {
    expect_in_place<double>();
    expect_in_place<float>();
    expect_in_place<std::int32_t>();
    expect_in_place<std::int64_t>();
  });
}

// ---- Division of integers

/// Divisors that do not fault: neither 0, nor -1 under the smallest integer.
template <class T>
std::vector<T> divisors(const std::vector<T>& dividends) {
  auto values = mixed_values<T>(dividends.size(), 3);
  for (std::size_t i = 0; i < values.size(); ++i)
    if (values[i] == 0 || (values[i] == -1 && dividends[i] == std::numeric_limits<T>::min())) values[i] = 7;
  return values;
}

template <class T>
void expect_divisions() {
  for (const std::size_t length : lengths()) {
    SCOPED_TRACE(length);
    const auto left = mixed_values<T>(length, 1), right = divisors(left);
    Memory<T> a(left, 1), b(right, 2), quotients(length, 1), remainders(length);
    std::vector<T> quotient(length), remainder(length);
    for (std::size_t i = 0; i < length; ++i) quotient[i] = left[i] / right[i], remainder[i] = left[i] % right[i];
    arithmetic<T>().quotient.both_advance(a.data(), b.data(), quotients.data(), length);
    arithmetic<T>().remainder.both_advance(a.data(), b.data(), remainders.data(), length);
    EXPECT_TRUE(same_bits(quotients.values(), quotient));
    EXPECT_TRUE(same_bits(remainders.values(), remainder));
    EXPECT_TRUE(quotients.is_intact() && remainders.is_intact());
    Memory<T> in_place(left, 2);
    arithmetic<T>().remainder.both_advance(in_place.data(), b.data(), in_place.data(), length);
    EXPECT_TRUE(same_bits(in_place.values(), remainder));
    Memory<T> over_divisors(right, 3);
    arithmetic<T>().quotient.both_advance(a.data(), over_divisors.data(), over_divisors.data(), length);
    EXPECT_TRUE(same_bits(over_divisors.values(), quotient));
    EXPECT_TRUE(in_place.is_intact() && over_divisors.is_intact());
  }
}

template <class T>
void expect_divisions_by(T divisor) {
  SCOPED_TRACE(divisor);
  auto left = mixed_values<T>(1030, 5);
  left.insert(left.end(), {std::numeric_limits<T>::min() + 1, std::numeric_limits<T>::max() - 1});
  for (T& x : left) x = divisor == -1 && x == std::numeric_limits<T>::min() ? 0 : x;
  Memory<T> a(left, 1), number(std::vector<T>{divisor}), quotients(left.size(), 1), remainders(left.size());
  const std::size_t length = left.size();
  std::vector<T> quotient(left.size()), remainder(left.size());
  for (std::size_t i = 0; i < left.size(); ++i) quotient[i] = left[i] / divisor, remainder[i] = left[i] % divisor;
  arithmetic<T>().quotient.left_advances(a.data(), number.data(), quotients.data(), length);
  arithmetic<T>().remainder.left_advances(a.data(), number.data(), remainders.data(), length);
  EXPECT_TRUE(same_bits(quotients.values(), quotient));
  EXPECT_TRUE(same_bits(remainders.values(), remainder));
}

TEST(IntegerDivision, TruncatesLikeTheProcessor) {
  on_each_target([] {
    expect_divisions<std::int32_t>();
    expect_divisions<std::int64_t>();
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t divisor : {1, -1, 2, -2, 3, 7, -10, 641, 65537, Limits::max(), Limits::min()}) {
      expect_divisions_by(divisor);
      expect_divisions_by(std::int64_t{divisor});
    }
  });
}

template <class T>
void expect_divisions_of(T dividend) {
  const auto right = divisors(std::vector<T>(600, dividend));
  Memory<T> number(std::vector<T>{dividend}), b(right, 1), quotients(right.size()), remainders(right.size());
  arithmetic<T>().quotient.right_advances(number.data(), b.data(), quotients.data(), right.size());
  arithmetic<T>().remainder.right_advances(number.data(), b.data(), remainders.data(), right.size());
  std::vector<T> quotient(right.size()), remainder(right.size());
  for (std::size_t i = 0; i < right.size(); ++i) quotient[i] = dividend / right[i], remainder[i] = dividend % right[i];
  EXPECT_TRUE(same_bits(quotients.values(), quotient));
  EXPECT_TRUE(same_bits(remainders.values(), remainder));
}

TEST(IntegerDivision, OfANumberByElements_Truncates) {
  on_each_target([] {
    expect_divisions_of<std::int32_t>(1000);
    expect_divisions_of<std::int64_t>(1000);
  });
}

TEST(IntegerDivisionDeathTest, ByZeroOrBeyondTheRange_FaultsOnEveryTarget) {
  on_each_target([] {
    constexpr auto smallest = std::numeric_limits<std::int32_t>::min();
    for (const auto& [dividend, divisor] : {std::pair{5, 0}, std::pair{smallest, -1}}) {
      const std::size_t length = 70;
      std::vector<std::int32_t> left(length, 12), right(length, 3), out(length);
      left[65] = dividend, right[65] = divisor;
      EXPECT_EXIT(arithmetic<std::int32_t>().quotient.both_advance(left.data(), right.data(), out.data(), length),
                  testing::KilledBySignal(SIGFPE), "");
      EXPECT_EXIT(arithmetic<std::int32_t>().remainder.left_advances(left.data(), &right[65], out.data(), length),
                  testing::KilledBySignal(SIGFPE), "");
    }
  });
}

/// A page of numbers behind a page that nothing may touch.
class GuardedPage {
 public:
  GuardedPage() : pages_(mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    mprotect(pages_, size, PROT_NONE);
  }
  ~GuardedPage() { munmap(pages_, 2 * size); }
  GuardedPage(const GuardedPage&) = delete;
  GuardedPage& operator=(const GuardedPage&) = delete;

  std::int32_t* first() { return static_cast<std::int32_t*>(pages_) + length; }

  static constexpr std::size_t size = 4096, length = size / sizeof(std::int32_t);

 private:
  void* pages_;
};

TEST(IntegerDivisionDeathTest, InALaterBlock_WritesNothingElsewhereBeforeItFaults) {
  GuardedPage out;
  const std::size_t length = GuardedPage::length;
  std::vector<std::int32_t> left(length, 12), right(length, 3);
  right[length - 1] = 0;
  on_each_target([&] {
    EXPECT_EXIT(arithmetic<std::int32_t>().quotient.both_advance(left.data(), right.data(), out.first(), length),
                testing::KilledBySignal(SIGFPE), "");
  });
}

// ---- Equality

template <class T>
void expect_equality() {
  for (const std::size_t length : lengths()) {
    SCOPED_TRACE(length);
    const std::vector<T> values(length, T{1.5});
    Memory<T> a(values, 1), b(values, 2);
    EXPECT_TRUE(arithmetic<T>().are_equal(a.data(), b.data(), length));
    for (const std::size_t at : {std::size_t{0}, length / 2, length - 1}) {
      if (length == 0) break;
      b.data()[at] = T{2};
      EXPECT_FALSE(arithmetic<T>().are_equal(a.data(), b.data(), length)) << at;
      b.data()[at] = std::numeric_limits<T>::quiet_NaN();
      EXPECT_FALSE(arithmetic<T>().are_equal(b.data(), b.data(), length)) << at;
      a.data()[at] = T{0}, b.data()[at] = -T{0};
      EXPECT_TRUE(arithmetic<T>().are_equal(a.data(), b.data(), length)) << at;
      a.data()[at] = b.data()[at] = T{1.5};
    }
  }
}

template <class T>
void expect_equality_of_integers() {
  for (const std::size_t length : lengths()) {
    const std::vector<T> values(length, T{7});
    Memory<T> a(values, 1), b(values, 2);
    EXPECT_TRUE(arithmetic<T>().are_equal(a.data(), b.data(), length)) << length;
    for (std::size_t at = 0; at < length; at += length / 7 + 1) {
      b.data()[at] = 8;
      EXPECT_FALSE(arithmetic<T>().are_equal(a.data(), b.data(), length)) << at << " of " << length;
      b.data()[at] = 7;
    }
  }
}

TEST(Equality, TellsOneElementThatDiffers) {
  on_each_target([] {
    expect_equality<double>();
    expect_equality<float>();
    expect_equality_of_integers<std::int32_t>();
    expect_equality_of_integers<std::int64_t>();
  });
}

}  // namespace
}  // namespace arrayfold::test
