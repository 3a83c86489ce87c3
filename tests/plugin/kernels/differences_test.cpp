// kernels/differences_test.cpp: elements minus their neighbours, on every target, against the formula

#include "kernels/differences.hpp"

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

template <class T>
void expect_differences(std::size_t length, std::size_t count) {
  SCOPED_TRACE(testing::Message() << count << " rows of " << length);
  const auto elements = mixed_values<T>(length * count, static_cast<unsigned>(length));
  Memory<T> rows(elements, length % 4), out((length - 1) * count, count % 4);
  differences<T>().of_rows(rows.data(), out.data(), length, count);
  std::vector<T> expected;
  for (std::size_t i = 0; i < elements.size(); ++i)
    if (i % length != 0) expected.push_back(static_cast<T>(elements[i] - elements[i - 1]));
  EXPECT_TRUE(same_bits(out.values(), expected));
  EXPECT_TRUE(out.is_intact());
}

template <class T>
void expect_differences() {
  for (const std::size_t length : lengths())
    for (const std::size_t count : {1u, 2u, 3u, 9u, 40u})
      if (length > 0 && length * count < 10'000) expect_differences<T>(length, count);
}

TEST(Differences, OfRowsOfEveryLength_AreThoseOfTheFormula) {
  on_each_target([] {
    expect_differences<double>();
    expect_differences<float>();
    expect_differences<std::int32_t>();
    expect_differences<std::int64_t>();
  });
}

}  // namespace
}  // namespace arrayfold::test
