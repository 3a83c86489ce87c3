// kernels/brackets_test.cpp: elements inside and around a bracket, on every target, against plain loops

#include "kernels/brackets.hpp"

#include <limits>

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

template <class T>
void expect_counts(const std::vector<T>& x, const Bracket<T>& bracket) {
  SCOPED_TRACE(testing::Message() << x.size() << " elements around " << bracket.low << " and " << bracket.high);
  BracketCounts expected{1, 2, 0, 4, false}, counts = expected;
  std::vector<T> inside;
  for (const T element : x) {
    expected.below += element < bracket.low;
    expected.at_most_low += element <= bracket.low;
    expected.at_most_high += element <= bracket.high;
    expected.any_nan |= element != element;
    if (bracket.low < element && element < bracket.high) inside.push_back(element);
  }
  Memory<T> elements(x, 1), gathered(x.size(), 1);
  bracket_loops<T>().count(elements.data(), x.size(), bracket, counts, gathered.data());
  EXPECT_EQ(counts.below, expected.below);
  EXPECT_EQ(counts.at_most_low, expected.at_most_low);
  EXPECT_EQ(counts.at_most_high, expected.at_most_high);
  EXPECT_EQ(counts.any_nan, expected.any_nan);
  EXPECT_EQ(counts.inside, inside.size());
  auto copied = gathered.values();
  copied.resize(inside.size());
  EXPECT_TRUE(same_bits(copied, inside));
  EXPECT_TRUE(gathered.is_intact());
}

template <class T>
void expect_counts_of_every_length() {
  using Limits = std::numeric_limits<T>;
  for (const std::size_t length : lengths()) {
    const auto x = mixed_values<T>(length, 1);
    for (const auto& bracket : {Bracket<T>{static_cast<T>(-20), T{20}}, Bracket<T>{T{0}, T{0}}, Bracket<T>{T{0}, T{2}},
                                Bracket<T>{Limits::lowest(), Limits::max()}})
      expect_counts(x, bracket);
    expect_counts(std::vector<T>(length, T{1}), {T{0}, T{2}});
    expect_counts(std::vector<T>(length, T{1}), {T{1}, T{2}});
    expect_counts(std::vector<T>(length, T{1}), {T{0}, T{1}});
  }
}

TEST(Brackets, OfEveryLength_CountAndGatherAsALoopDoes) {
  on_each_target([] {
    expect_counts_of_every_length<double>();
    expect_counts_of_every_length<float>();
    expect_counts_of_every_length<std::int32_t>();
    expect_counts_of_every_length<std::int64_t>();
  });
}

template <class T>
void expect_negative_zeros() {
  for (const std::size_t length : lengths()) {
    auto x = mixed_values<T>(length, 2);
    for (T& element : x) element = element == 0 ? T{0} : element;
    Memory<T> elements(x, 1);
    EXPECT_FALSE(bracket_loops<T>().any_negative_zero(elements.data(), length)) << length;
    for (std::size_t at = 0; at<length; at += length> 70 ? 61 : 1) {
      elements.data()[at] = -T{0};
      EXPECT_TRUE(bracket_loops<T>().any_negative_zero(elements.data(), length)) << at << " of " << length;
      elements.data()[at] = x[at];
    }
  }
}

TEST(NegativeZeros, AreFoundAtEachPlace) {
  on_each_target([] {
    expect_negative_zeros<double>();
    expect_negative_zeros<float>();
  });
}

}  // namespace
}  // namespace arrayfold::test
