// kernels/transposition_test.cpp: matrices by columns and by rows

#include "kernels/transposition.hpp"

#include "memory.hpp"

namespace arrayfold::test {
namespace {

TEST(Transposition, OfEveryShape_PutsEachElementInItsPlace) {
  for (const std::size_t rows : {0u, 1u, 2u, 15u, 16u, 17u, 33u, 70u})
    for (const std::size_t columns : {0u, 1u, 3u, 16u, 17u, 31u, 48u}) {
      SCOPED_TRACE(testing::Message() << rows << " by " << columns);
      const auto by_columns = mixed_values<double>(rows * columns, 1);
      std::vector<double> expected(by_columns.size());
      for (std::size_t i = 0; i < rows; ++i)
        for (std::size_t j = 0; j < columns; ++j) expected[i * columns + j] = by_columns[j * rows + i];
      Memory<double> from(by_columns, 1), to(by_columns.size(), 2);
      transpose(from.data(), rows, columns, to.data());
      EXPECT_TRUE(same_bits(to.values(), expected));
      EXPECT_TRUE(to.is_intact());
    }
}

TEST(Transposition, ToAnotherType_ConvertsEachElement) {
  const std::vector<std::int64_t> by_columns = {1, 2, 3, std::int64_t{1} << 53, 5, -6};
  Memory<std::int64_t> from(by_columns);
  Memory<double> to(6);
  transpose(from.data(), 2, 3, to.data());
  EXPECT_EQ(to.values(), (std::vector<double>{1, 3, 5, 2, 9007199254740992.0, -6}));
}

}  // namespace
}  // namespace arrayfold::test
