// faults/reduce_faults_test.cpp: every allocation of the folds, the medians and the shuffles fails once
//
// A fold into a number takes little memory or none, and none of the host's. Each run ends with the number that it has
// with memory, or with std::bad_alloc and the result record as it was; nothing leaks.

#include <cmath>
#include <cstring>

#include "support/allocations.hpp"
#include "support/hand_made.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

using Extents = std::vector<std::size_t>;

class ReduceFaults : public ModuleTest {
 protected:
  /// Runs a call with each allocation failing. Returns how many did.
  int failures_survived(const std::string& name, const Value& operand) const {
    const EntryFunction function = Module::loaded().entry(name);
    const Value expected = call(name, {operand}).result;
    std::vector<Value> args = {operand};
    const auto action = [&] {
      Value result(sentinel);
      const HostValue before = result.record();
      try {
        EXPECT_EQ(function(ctx(), hvm::records_of(args), 1, result.address()), 1) << name;
        EXPECT_EQ(std::memcmp(expected.record().payload, result.record().payload, 8), 0) << name;
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(std::memcmp(&before, result.address(), sizeof before), 0) << name;
        throw;
      }
    };
    EXPECT_EQ(fail_each_host_allocation(action), 0) << name;
    return fail_each_allocation(action);
  }

  /// Ones of a kind; their extents are two in each dimension.
  int of_rank(Kind kind, const std::string& name, std::size_t rank) const {
    Operand operand(ctx(), kind, Extents(rank, 2), Numbers(std::size_t{1} << rank, 1));
    return failures_survived(name, operand.value());
  }
};

constexpr const char* without_memory[] = {"xsum",           "xamin",    "xamax",       "xtrapz",
                                          "xcount_nonzero", "xshuffle", "xpermutation"};
constexpr const char* ordered[] = {"xprod", "xmean", "xvariance", "xstddev"};

TEST_F(ReduceFaults, ScansAndShufflesOfEveryKindAndRank_NeedNone) {
  for (const char* name : without_memory)
    for (std::size_t rank = 0; rank <= 6; ++rank) {
      EXPECT_EQ(of_rank(Kind::float64, name, rank), 0) << name;
      EXPECT_EQ(of_rank(Kind::float32, name, rank), 0) << name;
      EXPECT_EQ(of_rank(Kind::int32, name, rank), 0) << name;
      EXPECT_EQ(of_rank(Kind::int64, name, rank), 0) << name;
    }
}

TEST_F(ReduceFaults, OrderedFoldsOfEveryKindAndRank_SurviveEachFailure) {
  for (const char* name : ordered)
    for (std::size_t rank = 0; rank <= 6; ++rank) {
      // Floating-point arrays of more than a row keep what each dimension has so far; a few need no memory for it.
      const int minimum = rank < 6 ? 0 : 1;
      EXPECT_GE(of_rank(Kind::float64, name, rank), minimum) << name << rank;
      EXPECT_GE(of_rank(Kind::float32, name, rank), minimum) << name << rank;
      of_rank(Kind::int32, name, rank);
      of_rank(Kind::int64, name, rank);
    }
}

TEST_F(ReduceFaults, MediansOfEveryKindAndRank_SurviveEachFailure) {
  for (std::size_t rank = 0; rank <= 6; ++rank) {
    EXPECT_GE(of_rank(Kind::float64, "xmedian", rank), 1) << rank;
    EXPECT_GE(of_rank(Kind::float32, "xmedian", rank), 1) << rank;
    EXPECT_GE(of_rank(Kind::int32, "xmedian", rank), 1) << rank;
    EXPECT_GE(of_rank(Kind::int64, "xmedian", rank), 1) << rank;
  }
}

TEST_F(ReduceFaults, MediansOfLongArrays_WithASampleAndWithoutItsHelp_SurviveEachFailure) {
  std::vector<double> x(5000);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<double>(i * 7919 % 5003);
  EXPECT_GE(failures_survived("xmedian", array_of<XTDouble>(ctx(), {5000}, x)), 2);
  EXPECT_GE(failures_survived("xmedian", array_of<XTDouble>(ctx(), {50, 100}, x)), 2);
  x[1] = NAN;  // the whole is partitioned after all
  EXPECT_GE(failures_survived("xmedian", array_of<XTDouble>(ctx(), {5000}, x)), 3);
}

TEST_F(ReduceFaults, NothingAndBoolsAndStubs_NeedNone) {
  for (const char* name : {"xsum", "xprod", "xamin", "xamax", "xmean", "xvariance", "xstddev", "xmedian", "xtrapz",
                           "xcount_nonzero", "xshuffle", "xpermutation", "xrandint", "xchoice"})
    EXPECT_EQ(failures_survived(name, array_of<XTBool>(ctx(), {2, 2}, std::vector<bool>(4))), 0) << name;
  for (const char* name : {"xsum", "xprod", "xamin", "xamax", "xmean", "xvariance", "xstddev", "xmedian", "xtrapz"})
    EXPECT_EQ(failures_survived(name, array_of<XTInt>(ctx(), {0, 2, 2, 2, 2, 2}, {})), 0) << name;
}

}  // namespace
}  // namespace arrayfold::test
