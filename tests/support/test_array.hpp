// support/test_array.hpp: arrays of any kind as values, for tests over kinds
//
//     const TestArray a(Kind::int64, {2, 2}, {1, 2, 3, 4});
//     EXPECT_EQ(from_host(call("xsort", {to_host(ctx(), a)}).result), a);
//
// A kind is a value here, so that a test over kinds is compiled once. What differs from kind to kind is compiled once
// for all test programs, in test_array.cpp and module_test.cpp.

#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "array/element_kind.hpp"

namespace arrayfold::test {

using Words = std::vector<std::string>;
using Extents = std::vector<std::size_t>;

std::size_t size_of(const Extents& extents);
/// The stride of the last dimension: 0 where its extent is 1.
std::size_t last_stride(const Extents& extents);

// ---- Kinds

using Kind = ElementKind;

/// The kinds that functions of numbers know, and the two halves of them.
inline const std::vector<Kind> numeric_kinds = {Kind::float64, Kind::float32, Kind::int32, Kind::int64};
inline const std::vector<Kind> floating_kinds = {Kind::float64, Kind::float32};
inline const std::vector<Kind> integer_kinds = {Kind::int32, Kind::int64};

const char* dtype_of(Kind kind);
const char* type_name_of(Kind kind);
inline bool is_integer(Kind kind) { return kind == Kind::int32 || kind == Kind::int64; }
/// The distance from 1 to the next element; 0 for integers.
double rounding_of(Kind kind);

/// Calls `use(row)` with the row of a kind. Throws std::invalid_argument where no row has its code.
template <class First, class... Row, class Use>
auto with_row(kinds<First, Row...>, Kind kind, Use use) {
  using Result = decltype(use(First{}));
  const auto is_kind = [kind](auto row) { return decltype(row)::code == kind; };
  if constexpr (std::is_void_v<Result>) {
    const auto try_as = [&](auto row) { return is_kind(row) && (use(row), true); };
    if (!(try_as(First{}) || ... || try_as(Row{}))) throw std::invalid_argument("no row of this kind");
  } else {
    std::optional<Result> result;
    const auto try_as = [&](auto row) { return is_kind(row) && (result.emplace(use(row)), true); };
    if (!(try_as(First{}) || ... || try_as(Row{}))) throw std::invalid_argument("no row of this kind");
    return *std::move(result);
  }
}

namespace detail {

template <class T, class... Row>
constexpr Kind code_of_element(kinds<Row...>) {
  static_assert((std::is_same_v<T, typename Row::element> + ...) == 1, "the element of one kind");
  Kind kind{};
  ((std::is_same_v<T, typename Row::element> ? void(kind = Row::code) : void()), ...);
  return kind;
}

}  // namespace detail

/// The kind of an element type.
template <class T>
constexpr Kind kind_of = detail::code_of_element<T>(all_kinds{});

/// Calls `use(T{})` with a zero of the element type of a kind of numbers, for code that is compiled once: a reference,
/// a generator. Throws std::invalid_argument for any other kind.
template <class Use>
auto with_element(Kind kind, Use use) {
  return with_row(double_first{}, kind, [&](auto row) { return use(typename decltype(row)::element{}); });
}

/// A test over kinds: `class Sorts : public OverKinds<OrderingTest>`, then
/// `INSTANTIATE_TEST_SUITE_P(Kinds, Sorts, ::testing::ValuesIn(numeric_kinds), KindName());`
template <class Fixture>
class OverKinds : public Fixture, public ::testing::WithParamInterface<Kind> {
 protected:
  static Kind kind() { return ::testing::WithParamInterface<Kind>::GetParam(); }
};
struct KindName {
  std::string operator()(const ::testing::TestParamInfo<Kind>& kind) const { return dtype_of(kind.param); }
};

/// The same over pairs of kinds.
struct KindPair {
  Kind first;
  Kind second;
};
std::ostream& operator<<(std::ostream& out, const KindPair& pair);
template <class Fixture>
class OverPairs : public Fixture, public ::testing::WithParamInterface<KindPair> {
 protected:
  static Kind first() { return ::testing::WithParamInterface<KindPair>::GetParam().first; }
  static Kind second() { return ::testing::WithParamInterface<KindPair>::GetParam().second; }
};
struct PairName {
  std::string operator()(const ::testing::TestParamInfo<KindPair>& pair) const {
    return std::string(dtype_of(pair.param.first)) + "_" + dtype_of(pair.param.second);
  }
};
/// All pairs of a kind of `firsts` and one of `seconds`.
std::vector<KindPair> pairs_of(const std::vector<Kind>& firsts, const std::vector<Kind>& seconds);

// ---- Elements

/// An element of any kind, exactly.
struct Number {
  template <class T, class = std::enable_if_t<std::is_arithmetic_v<T>>>
  Number(T x) : is_integer(std::is_integral_v<T>) {  // implicit: {1, 2.5, 3}
    if constexpr (std::is_integral_v<T>)
      integer = static_cast<std::int64_t>(x);
    else
      real = static_cast<double>(x);
  }

  /// The number as an element type has it, converted as C++ does.
  template <class T>
  T as() const {
    return is_integer ? static_cast<T>(integer) : static_cast<T>(real);
  }

  bool is_integer;
  std::int64_t integer = 0;
  double real = 0;
};
/// By value, integers exactly. NaN equals nothing.
bool operator==(const Number& a, const Number& b);
inline bool is_nan(const Number& x) { return x.real != x.real; }
std::ostream& operator<<(std::ostream& out, const Number& x);

class Numbers : public std::vector<Number> {
 public:
  Numbers() = default;
  Numbers(std::initializer_list<Number> numbers) : vector(numbers) {}
  Numbers(std::size_t count, Number number) : vector(count, number) {}
  template <class T>
  Numbers(const std::vector<T>& elements) {  // implicit: elements of any type
    reserve(elements.size());
    for (const T x : elements) push_back(x);
  }
};

class TestArray {
 public:
  TestArray() : TestArray(Extents{0}, std::vector<double>{}) {}
  /// The numbers as elements of the kind. Their count is not looked at: some tests want another.
  TestArray(Kind kind, Extents extents, const Numbers& numbers);
  /// Elements of their own type's kind.
  template <class T>
  TestArray(Extents extents, std::vector<T> elements)
      : extents_(std::move(extents)), elements_(std::move(elements)), kind_(kind_of<T>) {}

  Kind kind() const { return kind_; }
  const Extents& extents() const { return extents_; }
  std::size_t size() const;
  /// The elements; the kind is known to be that of T.
  template <class T>
  const std::vector<T>& as() const {
    return std::get<std::vector<T>>(elements_);
  }
  Number operator[](std::size_t i) const;
  void set(std::size_t i, Number x);
  /// The elements of any kind as doubles.
  std::vector<double> as_doubles() const;
  /// The array with each element converted as C++ does.
  TestArray converted(Kind kind) const;
  TestArray with_extents(Extents extents) const;
  /// The array with one NaN for all NaN, for results of which the compiler chooses the NaN.
  TestArray with_one_nan() const;

  /// The kinds and extents are equal, and the elements bit for bit.
  friend bool operator==(const TestArray& a, const TestArray& b);
  friend bool operator!=(const TestArray& a, const TestArray& b) { return !(a == b); }
  /// Shows the kind, the extents and the first elements.
  friend std::ostream& operator<<(std::ostream& out, const TestArray& array);

 private:
  Extents extents_;
  std::variant<std::vector<bool>, std::vector<std::int32_t>, std::vector<std::int64_t>, std::vector<float>,
               std::vector<double>>
      elements_;
  Kind kind_;
};

bool has_nan(const TestArray& array);

/// The first place where two differ, for long arrays; nothing where they are equal.
std::string difference(const TestArray& found, const TestArray& expected);

/// Floating-point numbers of either sign over forty binary orders of magnitude: each order of additions rounds in its
/// own way. Integers of all sizes.
TestArray random_array(Kind kind, const Extents& extents, unsigned seed);

}  // namespace arrayfold::test
