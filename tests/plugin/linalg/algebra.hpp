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
#include <type_traits>
#include <typeinfo>
#include <vector>

#include <xtensor/xexception.hpp>

#include "support/elements.hpp"
#include "support/hand_made.hpp"
#include "support/module_test.hpp"
#include "support/reals.hpp"

namespace arrayfold::test {

using Reals = std::vector<double>;

inline constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

inline constexpr const char* products[] = {"xdot", "xvdot", "xouter", "xkron"};

/// One array of a matrix or a few of them, for float and double operands.
inline constexpr const char* of_one_matrix[] = {"xcholesky", "xqr",       "xsvd",  "xeig",  "xeigvals",
                                                "xeigh",     "xeigvalsh", "xnorm", "xcond", "xmatrix_rank",
                                                "xdet",      "xslogdet",  "xinv",  "xpinv"};
/// Those of them that compare the last two extents.
inline constexpr const char* of_squares[] = {"xcholesky", "xeig", "xeigvals", "xeigh", "xeigvalsh",
                                             "xcond",     "xdet", "xslogdet", "xinv"};
/// Those that take any matrix.
inline constexpr const char* of_any_matrix[] = {"xqr", "xsvd", "xpinv", "xmatrix_rank"};
inline constexpr const char* solvers[] = {"xsolve", "xlstsq"};

inline constexpr char square_words[] = "runtime_error: Last 2 dimensions of the array must be square.";
inline constexpr char shape_words[] =
    "broadcast_error: Incompatible dimension of arrays, compile in DEBUG for more info";
inline constexpr char unsolved_words[] = "runtime_error: The solution could not be computed";

/// The type of the elements of a result of this kind.
template <class Kind>
using ResultElement = std::conditional_t<std::is_same_v<Kind, XTFloat>, double, typename Kind::element>;

/// A result.
template <class T>
struct Contents {
  Extents extents;
  std::vector<T> elements;

  /// To the bit, but for NaN.
  friend bool operator==(const Contents& a, const Contents& b) {
    return a.extents == b.extents && a.elements.size() == b.elements.size() &&
           std::equal(a.elements.begin(), a.elements.end(), b.elements.begin(), same<T>);
  }
  friend std::ostream& operator<<(std::ostream& out, const Contents& contents) {
    out << '(';
    for (const std::size_t extent : contents.extents) out << extent << ',';
    out << ") [" << std::hexfloat;
    for (std::size_t i = 0; i < std::min<std::size_t>(contents.elements.size(), 40); ++i)
      out << contents.elements[i] << ", ";
    return out << std::defaultfloat << ']';
  }
};

/// The array in a value under the name of `Kind`. Throws std::invalid_argument when there is none.
template <class Kind>
Contents<ResultElement<Kind>> contents_of(const Value& value) {
  using Array = XTArray<ResultElement<Kind>, std::conditional_t<std::is_same_v<Kind, XTFloat>, XTDouble, Kind>>;
  if (type_of(value) != Kind::type_name)
    throw std::invalid_argument("expected " + std::string(Kind::type_name) + ", got " + type_of(value));
  void* content = hvm::object_of(value.record())->content.get();
  const auto& container = *static_cast<XTObject<Array>*>(content)->array->array;
  return {Extents(container.shape().begin(), container.shape().end()),
          std::vector<ResultElement<Kind>>(container.storage().begin(), container.storage().end())};
}

class AlgebraTest : public ModuleTest {
 protected:
  /// An operand of any kind; those of the float kind live as long as the test.
  template <class Kind>
  Value made(const Extents& extents, const std::vector<typename Kind::element>& elements) {
    if constexpr (std::is_same_v<Kind, XTFloat>)
      return floats_.emplace_back(extents, elements).value();
    else
      return array_of<Kind>(ctx(), extents, elements);
  }
  /// The same of numbers of another type.
  template <class Kind, class T>
  Value made_of(const Extents& extents, const std::vector<T>& numbers) {
    return made<Kind>(extents, {numbers.begin(), numbers.end()});
  }
  Value doubles(const Extents& extents, const Reals& elements) { return made<XTDouble>(extents, elements); }
  Value ones(const Extents& extents) { return doubles(extents, Reals(size_of(extents), 1.0)); }

  /// A result of one array.
  template <class Kind>
  Contents<ResultElement<Kind>> array(const std::string& name, const std::vector<Value>& args) const {
    const Answer answer = call(name, args);
    EXPECT_EQ(answer.returned, 1) << name;
    return contents_of<Kind>(answer.result);
  }
  /// A result of one number in an array of no dimension.
  template <class Kind>
  ResultElement<Kind> scalar(const std::string& name, const std::vector<Value>& args) const {
    const auto found = array<Kind>(name, args);
    EXPECT_EQ(found.extents, Extents{}) << name;
    return found.elements.at(0);
  }
  /// The values of a table that has them under 0, 1, 2, ... and nothing else.
  std::vector<Value> table(const std::string& name, const std::vector<Value>& args) const {
    const Answer answer = call(name, args);
    EXPECT_EQ(answer.returned, 1) << name;
    return values_of(answer.result);
  }
  static std::vector<Value> values_of(const Value& result) {
    if (!result.is_table()) throw std::invalid_argument("no table");
    const HostHash* hash = hvm::table_of(result.record());
    std::vector<Value> values;
    for (int key = 0; key < hvm::entry_count(hash); ++key) {
      const HostValue* value = hvm::find(hash, key);
      if (value == nullptr) throw std::invalid_argument("a key is missing");
      values.push_back(Value::sharing(*value));
    }
    return values;
  }

  void expect_nothing(const Answer& answer, int returned, const std::string& what) const {
    EXPECT_EQ(answer.returned, returned) << what;
    EXPECT_TRUE(answer.untouched) << what;
  }

  /// How a call ends: "0", "1", or the exception with its words. That the result record is as it was after an exception
  /// is looked at by `call`.
  std::string ending(const std::string& name, const std::vector<Value>& args) const {
    try {
      const Answer answer = call(name, args);
      EXPECT_TRUE(answer.returned == 1 || answer.untouched) << name;
      return std::to_string(answer.returned);
    } catch (const xt::broadcast_error& error) {
      return std::string("broadcast_error: ") + error.what();
    } catch (const std::bad_alloc& error) {
      return typeid(error) == typeid(std::bad_alloc) ? "bad_alloc" : typeid(error).name();
    } catch (const std::exception& error) {
      const bool plain = typeid(error) == typeid(std::runtime_error);
      return (plain ? "runtime_error" : typeid(error).name()) + std::string(": ") + error.what();
    }
  }

  /// Extents that claim other elements than the six that there are.
  Value claiming(int first, int second) {
    Value six = doubles({6}, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(method(six, "reshape", {Value(first), Value(second)}).returned, 1);
    return six;
  }

 private:
  FloatNameRegistered registered_;
  std::list<FloatObject> floats_;
};

// ---- Matrices by rows

inline Reals random_reals(std::size_t count, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  Reals drawn(count);
  for (double& x : drawn) x = normal(engine);
  return drawn;
}

/// The product of a matrix of `rows` rows and one of `inner` rows.
inline Reals multiplied(const Reals& a, const Reals& b, std::size_t rows, std::size_t inner, std::size_t columns) {
  Reals product(rows * columns);
  for (std::size_t i = 0; i < rows; ++i)
    for (std::size_t k = 0; k < inner; ++k)
      for (std::size_t j = 0; j < columns; ++j) product[i * columns + j] += a[i * inner + k] * b[k * columns + j];
  return product;
}

inline Reals transposed(const Reals& a, std::size_t rows, std::size_t columns) {
  Reals turned(a.size());
  for (std::size_t i = 0; i < rows; ++i)
    for (std::size_t j = 0; j < columns; ++j) turned[j * rows + i] = a[i * columns + j];
  return turned;
}

inline Reals identity(std::size_t n) {
  Reals ones(n * n);
  for (std::size_t i = 0; i < n; ++i) ones[i * (n + 1)] = 1;
  return ones;
}

/// The largest distance of two elements; infinite where the sizes differ or one is NaN.
inline double distance(const Reals& a, const Reals& b) {
  if (a.size() != b.size()) return infinity;
  double largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double apart = std::abs(a[i] - b[i]);
    if (!(apart <= largest)) largest = std::isnan(apart) ? infinity : apart;
  }
  return largest;
}

/// A symmetric matrix whose eigenvalues lie above 0.
inline Reals positive_definite(std::size_t n, unsigned seed) {
  const Reals a = random_reals(n * n, seed);
  Reals product = multiplied(a, transposed(a, n, n), n, n, n);
  for (std::size_t i = 0; i < n; ++i) product[i * (n + 1)] += 1;
  return product;
}

/// Nonsense above the diagonal.
inline Reals with_nonsense_above(Reals a, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j) a[i * n + j] = i + j == n - 1 ? not_a_number : 1e300 * (i + 1.0);
  return a;
}

/// Rounding of a kind's elements.
template <class Kind>
constexpr double rounding_of = std::numeric_limits<typename Kind::element>::epsilon();

}  // namespace arrayfold::test
