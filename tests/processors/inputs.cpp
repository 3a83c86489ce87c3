// processors/inputs.cpp: fixed arrays

#include "processors/inputs.hpp"

#include <limits>
#include <random>

#include "support/elements.hpp"

namespace arrayfold::test {
namespace {

template <class T>
std::vector<T> special_elements() {
  using Limits = std::numeric_limits<T>;
  if constexpr (std::is_integral_v<T>)
    return {0, 1, T(-1), Limits::max(), Limits::min(), T(Limits::max() - 1), T(Limits::min() + 1), 2, T(-2), 1 << 24};
  else
    return {Limits::quiet_NaN(),
            -Limits::quiet_NaN(),
            Limits::infinity(),
            -Limits::infinity(),
            T(0),
            T(-0.0),
            Limits::denorm_min(),
            -Limits::min(),
            Limits::max(),
            Limits::lowest(),
            T(1),
            T(-1),
            T(0.5),
            T(-2.5),
            Limits::epsilon(),
            T(2147483648.0),
            T(-2147483649.0),
            T(9.2e18),
            T(-9.3e18),
            T(1) / Limits::max()};
}

template <class T>
std::vector<T> elements_of(std::size_t count, Content content, unsigned seed) {
  std::vector<T> elements = random_elements<T>(count, seed);
  std::mt19937_64 engine(seed + 1000);
  if (content == Content::special) {
    const std::vector<T> special = special_elements<T>();
    for (std::size_t i = 0; i < count; ++i)
      if (engine() % 3 == 0) elements[i] = special[engine() % special.size()];
  }
  if (content == Content::few)
    for (T& x : elements) {
      const auto whole = static_cast<int>(engine() % 8) - 4;
      x = whole == -4 ? static_cast<T>(-0.0) : static_cast<T>(whole);
    }
  return elements;
}

}  // namespace

TestArray fixed_array(Kind kind, const Extents& extents, Content content, unsigned seed) {
  const std::size_t count = size_of(extents);
  if (kind == Kind::boolean) return TestArray(kind, extents, Numbers(elements_of<std::int32_t>(count, content, seed)));
  return with_element(kind,
                      [&](auto zero) { return TestArray(extents, elements_of<decltype(zero)>(count, content, seed)); });
}

const std::vector<std::size_t>& lengths() {
  static const std::vector<std::size_t> all = [] {
    std::vector<std::size_t> made;
    for (std::size_t n = 0; n <= 70; ++n) made.push_back(n);
    for (const std::size_t block : {128, 256, 512, 1024, 2048, 4096})
      made.insert(made.end(), {block - 1, block, block + 1});
    made.insert(made.end(), {100, 1000, 5000, 70001});
    return made;
  }();
  return all;
}

const std::vector<Extents>& shapes() {
  static const std::vector<Extents> all = [] {
    std::vector<Extents> made;
    for (const std::size_t n : lengths()) made.push_back({n});
    made.insert(made.end(), {{},
                             {0, 3},
                             {3, 0},
                             {1, 1},
                             {1, 37},
                             {37, 1},
                             {2, 2},
                             {5, 7},
                             {7, 64},
                             {65, 3},
                             {33, 129},
                             {3, 300},
                             {2, 3, 4},
                             {5, 1, 9},
                             {3, 17, 1},
                             {4, 3, 2, 33},
                             {2, 2, 2, 5, 3},
                             {2, 1, 3, 2, 2, 19}});
    return made;
  }();
  return all;
}

const std::vector<std::pair<Extents, Extents>>& broadcast_shapes() {
  static const std::vector<std::pair<Extents, Extents>> all = {{{5, 7}, {7}},
                                                               {{7}, {5, 7}},
                                                               {{5, 1}, {7}},
                                                               {{1}, {33}},
                                                               {{33}, {1}},
                                                               {{}, {19}},
                                                               {{19}, {}},
                                                               {{}, {}},
                                                               {{65, 3}, {65, 1}},
                                                               {{17, 1}, {17, 70}},
                                                               {{17, 70}, {17, 1}},
                                                               {{1, 300}, {9, 300}},
                                                               {{9, 300}, {1, 300}},
                                                               {{3, 1, 5}, {4, 1}},
                                                               {{0, 3}, {3}},
                                                               {{4, 1, 2, 9}, {3, 1, 9}},
                                                               {{2, 3, 4, 5, 2, 3}, {3}},
                                                               {{2, 1, 2, 1, 2, 1}, {1, 3, 1, 3, 1, 3}},
                                                               {{3}, {4}},
                                                               {{2, 3}, {3, 2}}};
  return all;
}

}  // namespace arrayfold::test
