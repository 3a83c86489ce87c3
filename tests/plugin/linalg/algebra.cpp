// linalg/algebra.cpp: operands, results and the ways that calls end

#include "algebra.hpp"

#include <stdexcept>
#include <typeinfo>

#include <xtensor/xexception.hpp>

namespace arrayfold::test {

std::ostream& operator<<(std::ostream& out, const Contents& contents) {
  out << '(';
  for (const std::size_t extent : contents.extents) out << extent << ',';
  out << ") [" << std::hexfloat;
  for (std::size_t i = 0; i < std::min<std::size_t>(contents.elements.size(), 40); ++i)
    out << contents.elements[i] << ", ";
  return out << std::defaultfloat << ']';
}

TestArray result_of(const Value& value, Kind kind) {
  if (type_of(value) != type_name_of(kind))
    throw std::invalid_argument("expected " + std::string(type_name_of(kind)) + ", got " + type_of(value));
  return kind == Kind::float32 ? FloatNameRegistered::contents(value) : from_host(value);
}

Contents contents_of(const Value& value, Kind kind) {
  const TestArray found = result_of(value, kind);
  return {found.extents(), found.as<double>()};
}

TestArray AlgebraTest::array(Kind kind, const std::string& name, const std::vector<Value>& args) const {
  const Answer answer = call(name, args);
  EXPECT_EQ(answer.returned, 1) << name;
  return result_of(answer.result, kind);
}

Contents AlgebraTest::doubles_of(Kind kind, const std::string& name, const std::vector<Value>& args) const {
  const Answer answer = call(name, args);
  EXPECT_EQ(answer.returned, 1) << name;
  return contents_of(answer.result, kind);
}

Number AlgebraTest::scalar(Kind kind, const std::string& name, const std::vector<Value>& args) const {
  const TestArray found = array(kind, name, args);
  EXPECT_EQ(found.extents(), Extents{}) << name;
  return found[0];
}

std::vector<Value> AlgebraTest::table(const std::string& name, const std::vector<Value>& args) const {
  const Answer answer = call(name, args);
  EXPECT_EQ(answer.returned, 1) << name;
  return values_of(answer.result);
}

std::vector<Value> AlgebraTest::values_of(const Value& result) {
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

std::string AlgebraTest::ending(const std::string& name, const std::vector<Value>& args) const {
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

Value AlgebraTest::with_wrong_shape(int first, int second) {
  Value six = doubles({6}, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(method(six, "reshape", {Value(first), Value(second)}).returned, 1);
  return six;
}

TestArray drawn(Kind kind, const Extents& extents, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  Numbers numbers;
  for (std::size_t i = 0; i < size_of(extents); ++i) {
    if (is_integer(kind))
      numbers.push_back(static_cast<int>(engine() % 2001) - 1000);
    else
      numbers.push_back(normal(engine));
  }
  return TestArray(kind, extents, numbers);
}

Doubles random_doubles(std::size_t count, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  Doubles drawn(count);
  for (double& x : drawn) x = normal(engine);
  return drawn;
}

Doubles multiplied(const Doubles& a, const Doubles& b, std::size_t rows, std::size_t inner, std::size_t columns) {
  Doubles product(rows * columns);
  for (std::size_t i = 0; i < rows; ++i)
    for (std::size_t k = 0; k < inner; ++k)
      for (std::size_t j = 0; j < columns; ++j) product[i * columns + j] += a[i * inner + k] * b[k * columns + j];
  return product;
}

Doubles transposed(const Doubles& a, std::size_t rows, std::size_t columns) {
  Doubles turned(a.size());
  for (std::size_t i = 0; i < rows; ++i)
    for (std::size_t j = 0; j < columns; ++j) turned[j * rows + i] = a[i * columns + j];
  return turned;
}

Doubles identity(std::size_t n) {
  Doubles ones(n * n);
  for (std::size_t i = 0; i < n; ++i) ones[i * (n + 1)] = 1;
  return ones;
}

double distance(const Doubles& a, const Doubles& b) {
  if (a.size() != b.size()) return infinity;
  double largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double apart = std::abs(a[i] - b[i]);
    if (!(apart <= largest)) largest = std::isnan(apart) ? infinity : apart;
  }
  return largest;
}

Doubles positive_definite(std::size_t n, unsigned seed) {
  const Doubles a = random_doubles(n * n, seed);
  Doubles product = multiplied(a, transposed(a, n, n), n, n, n);
  for (std::size_t i = 0; i < n; ++i) product[i * (n + 1)] += 1;
  return product;
}

Doubles with_nonsense_above(Doubles a, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j) a[i * n + j] = i + j == n - 1 ? not_a_number : 1e300 * (i + 1.0);
  return a;
}

Doubles rounded(Kind kind, const Doubles& numbers) { return TestArray(kind, {numbers.size()}, numbers).as_doubles(); }

}  // namespace arrayfold::test
