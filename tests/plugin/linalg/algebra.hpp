// linalg/algebra.hpp: the functions of linear algebra, their operands and their results
//
// Results of float operands are doubles under the float name. The host of these tests knows that name, so that they can
// be read.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <list>
#include <random>
#include <stdexcept>
#include <vector>

#include "plugin/linalg/names.hpp"
#include "support/hand_made.hpp"
#include "support/module_test.hpp"
#include "support/same.hpp"

namespace arrayfold::test {

using Doubles = std::vector<double>;

inline constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

inline constexpr char square_message[] = "runtime_error: Last 2 dimensions of the array must be square.";
inline constexpr char shape_message[] =
    "broadcast_error: Incompatible dimension of arrays, compile in DEBUG for more info";
inline constexpr char unsolved_message[] = "runtime_error: The solution could not be computed";

/// A result that holds doubles, as all do of floating-point operands. The kind is that of its name.
struct Contents {
  Extents extents;
  Doubles elements;

  /// To the bit, but for NaN.
  friend bool operator==(const Contents& a, const Contents& b) {
    return a.extents == b.extents && a.elements.size() == b.elements.size() &&
           std::equal(a.elements.begin(), a.elements.end(), b.elements.begin(), same<double>);
  }
  friend std::ostream& operator<<(std::ostream& out, const Contents& contents);
};

/// The kind of the elements in a result under the name of a kind.
inline Kind result_kind(Kind kind) { return kind == Kind::float32 ? Kind::float64 : kind; }
/// The array in a value under the name of a kind, and one of doubles. Throw std::invalid_argument when there is none.
TestArray result_of(const Value& value, Kind kind);
Contents contents_of(const Value& value, Kind kind);

class AlgebraTest : public ModuleTest {
 protected:
  /// An operand of any kind; those of the float kind live as long as the test.
  Value made(const TestArray& array) {
    return array.kind() == Kind::float32 ? floats_.emplace_back(ctx(), array).value() : to_host(ctx(), array);
  }
  Value made(Kind kind, const Extents& extents, const Numbers& numbers) {
    return made(TestArray(kind, extents, numbers));
  }
  Value doubles(const Extents& extents, const Numbers& numbers) { return made(Kind::float64, extents, numbers); }
  Value floats(const Extents& extents, const Numbers& numbers) { return made(Kind::float32, extents, numbers); }
  Value ints(const Extents& extents, const Numbers& numbers) { return made(Kind::int32, extents, numbers); }
  Value longs(const Extents& extents, const Numbers& numbers) { return made(Kind::int64, extents, numbers); }
  Value ones(const Extents& extents) { return doubles(extents, Numbers(size_of(extents), 1)); }

  /// A result of one array under the name of a kind.
  TestArray array(Kind kind, const std::string& name, const std::vector<Value>& args) const;
  /// The same of doubles.
  Contents doubles_of(Kind kind, const std::string& name, const std::vector<Value>& args) const;
  /// A result of one number in a zero-dimensional array.
  Number scalar(Kind kind, const std::string& name, const std::vector<Value>& args) const;
  /// The values of a table that has them under 0, 1, 2, ... and nothing else.
  std::vector<Value> table(const std::string& name, const std::vector<Value>& args) const;
  static std::vector<Value> values_of(const Value& result);

  /// How a call ends: "0", "1", or the exception with its message. `call` asserts that an exception leaves the result
  /// record as it was.
  std::string ending(const std::string& name, const std::vector<Value>& args) const;

  /// Six elements under a shape whose product is not six.
  Value with_wrong_shape(int first, int second);

 private:
  FloatNameRegistered registered_;
  std::list<Operand> floats_;
};

// ---- Matrices by rows

/// Elements that give sums of every rounding; integers small enough for the sums of any kind.
TestArray drawn(Kind kind, const Extents& extents, unsigned seed);

Doubles random_doubles(std::size_t count, unsigned seed);
/// The product of a matrix of `rows` rows and one of `inner` rows.
Doubles multiplied(const Doubles& a, const Doubles& b, std::size_t rows, std::size_t inner, std::size_t columns);
Doubles transposed(const Doubles& a, std::size_t rows, std::size_t columns);
Doubles identity(std::size_t n);
/// The largest distance of two elements; infinite where the sizes differ or one is NaN.
double distance(const Doubles& a, const Doubles& b);
/// A symmetric matrix whose eigenvalues lie above 0.
Doubles positive_definite(std::size_t n, unsigned seed);
/// Nonsense above the diagonal.
Doubles with_nonsense_above(Doubles a, std::size_t n);
/// The numbers as the kind has them.
Doubles rounded(Kind kind, const Doubles& numbers);

}  // namespace arrayfold::test
