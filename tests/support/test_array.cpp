// support/test_array.cpp: arrays of any kind as values

#include "support/test_array.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

#include "support/elements.hpp"

namespace arrayfold::test {
namespace {

template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), sizeof(T) * a.size()) == 0);
}
bool same_bits(const std::vector<bool>& a, const std::vector<bool>& b) { return a == b; }

template <class T>
bool same_bits(T a, T b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

std::size_t size_of(const Extents& extents) {
  std::size_t size = 1;
  for (const std::size_t extent : extents) size *= extent;
  return size;
}

std::size_t last_stride(const Extents& extents) { return extents.empty() || extents.back() == 1 ? 0 : 1; }

const char* dtype_of(Kind kind) {
  return with_row(all_kinds{}, kind, [](auto row) -> const char* { return decltype(row)::dtype; });
}

const char* type_name_of(Kind kind) {
  return with_row(all_kinds{}, kind, [](auto row) -> const char* { return decltype(row)::type_name; });
}

double rounding_of(Kind kind) {
  return with_element(kind,
                      [](auto zero) { return static_cast<double>(std::numeric_limits<decltype(zero)>::epsilon()); });
}

std::ostream& operator<<(std::ostream& out, const KindPair& pair) {
  return out << dtype_of(pair.first) << ' ' << dtype_of(pair.second);
}

std::vector<KindPair> pairs_of(const std::vector<Kind>& firsts, const std::vector<Kind>& seconds) {
  std::vector<KindPair> pairs;
  for (const Kind first : firsts)
    for (const Kind second : seconds) pairs.push_back({first, second});
  return pairs;
}

bool operator==(const Number& a, const Number& b) {
  if (a.is_integer && b.is_integer) return a.integer == b.integer;
  return a.as<double>() == b.as<double>();
}

std::ostream& operator<<(std::ostream& out, const Number& x) {
  if (x.is_integer) return out << x.integer;
  std::ostringstream text;  // with a precision of its own
  text.precision(17);
  text << x.real;
  return out << text.str();
}

TestArray::TestArray(Kind kind, Extents extents, const Numbers& numbers) : extents_(std::move(extents)), kind_(kind) {
  with_row(all_kinds{}, kind, [&](auto row) {
    using T = typename decltype(row)::element;
    std::vector<T> elements;
    elements.reserve(numbers.size());
    for (const Number& x : numbers) elements.push_back(x.as<T>());
    elements_ = std::move(elements);
  });
}

std::size_t TestArray::size() const {
  return std::visit([](const auto& elements) { return elements.size(); }, elements_);
}

Number TestArray::operator[](std::size_t i) const {
  return std::visit(
      [i](const auto& elements) -> Number {
        const typename std::decay_t<decltype(elements)>::value_type x = elements.at(i);
        return x;
      },
      elements_);
}

void TestArray::set(std::size_t i, Number x) {
  std::visit([&](auto& elements) { elements.at(i) = x.as<typename std::decay_t<decltype(elements)>::value_type>(); },
             elements_);
}

std::vector<double> TestArray::as_doubles() const {
  return std::visit(
      [](const auto& elements) {
        std::vector<double> doubles;
        for (const auto x : elements) doubles.push_back(static_cast<double>(x));
        return doubles;
      },
      elements_);
}

TestArray TestArray::converted(Kind kind) const {
  return std::visit([&](const auto& elements) { return TestArray(kind, extents_, Numbers(elements)); }, elements_);
}

TestArray TestArray::with_extents(Extents extents) const {
  TestArray array = *this;
  array.extents_ = std::move(extents);
  return array;
}

TestArray TestArray::with_one_nan() const {
  TestArray array = *this;
  std::visit(
      [](auto& elements) {
        using T = typename std::decay_t<decltype(elements)>::value_type;
        if constexpr (std::is_floating_point_v<T>)
          for (T& x : elements)
            if (std::isnan(x)) x = std::numeric_limits<T>::quiet_NaN();
      },
      array.elements_);
  return array;
}

bool operator==(const TestArray& a, const TestArray& b) {
  if (a.kind_ != b.kind_ || a.extents_ != b.extents_) return false;
  return std::visit(
      [&](const auto& elements) {
        return same_bits(elements, std::get<std::decay_t<decltype(elements)>>(b.elements_));
      },
      a.elements_);
}

std::ostream& operator<<(std::ostream& out, const TestArray& array) {
  out << dtype_of(array.kind_) << ::testing::PrintToString(array.extents_) << " [";
  for (std::size_t i = 0; i < std::min<std::size_t>(array.size(), 40); ++i) out << (i == 0 ? "" : ", ") << array[i];
  return out << (array.size() > 40 ? ", ...]" : "]");
}

bool has_nan(const TestArray& array) {
  for (std::size_t i = 0; i < array.size(); ++i)
    if (is_nan(array[i])) return true;
  return false;
}

std::string difference(const TestArray& found, const TestArray& expected) {
  if (found == expected) return "";
  if (found.kind() != expected.kind())
    return std::string(dtype_of(found.kind())) + ", not " + dtype_of(expected.kind());
  if (found.extents() != expected.extents())
    return "extents " + ::testing::PrintToString(found.extents()) + ", not " +
           ::testing::PrintToString(expected.extents());
  if (found.size() != expected.size()) return "another number of elements";
  std::size_t i = 0;
  const auto equal_at = [&](auto zero) {
    using T = decltype(zero);
    return same_bits(found[i].as<T>(), expected[i].as<T>());
  };
  while (with_element(found.kind(), equal_at)) ++i;
  std::ostringstream words;
  words << "element " << i << " of " << ::testing::PrintToString(found.extents()) << " is " << found[i] << ", not "
        << expected[i];
  return words.str();
}

TestArray random_array(Kind kind, const Extents& extents, unsigned seed) {
  return with_element(
      kind, [&](auto zero) { return TestArray(extents, random_elements<decltype(zero)>(size_of(extents), seed)); });
}

}  // namespace arrayfold::test
