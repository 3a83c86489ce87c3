// faults/linalg_faults_test.cpp: every allocation of linear algebra fails once
//
// Each run ends as it does with memory, or with std::bad_alloc; nothing leaks. Where the module's memory is short, the
// result record is as it was. Where the host's is, a table may be there, with some of its values. What BLAS
// and LAPACK allocate for themselves is not among the allocations.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <list>
#include <type_traits>

#include "plugin/linalg/names.hpp"
#include "support/allocations.hpp"
#include "support/hand_made.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

const Names of_matrices = joined({of_one_matrix, traces});
/// All whose values go into a table.
const Names with_tables = {"xqr", "xsvd", "xeig", "xeigh", "xslogdet", "xlstsq"};

class LinalgFaults : public ModuleTest {
 protected:
  /// How a call ends, with memory or without: its answer, or -1 with a message.
  struct Ending {
    int returned = -1;
    std::string message;
  };

  Ending ending(EntryFunction function, std::vector<Value>& args, Value& result) const {
    try {
      return {function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address()), ""};
    } catch (const std::runtime_error& error) {
      return {-1, error.what()};
    }
  }

  /// Runs a call with each allocation failing, then with each of the host's. Returns how many of the former did.
  int failures_survived(const std::string& name, std::vector<Value> args) const {
    const EntryFunction function = Module::loaded().entry(name);
    Value warm;
    const Ending expected = ending(function, args, warm);
    bool may_leave_table = contains(with_tables, name);
    const auto action = [&] {
      Value result(sentinel);
      const HostValue before = result.record();
      try {
        const Ending found = ending(function, args, result);
        EXPECT_EQ(found.returned, expected.returned) << name;
        EXPECT_EQ(found.message, expected.message) << name;
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(may_leave_table || std::memcmp(&before, result.address(), sizeof before) == 0) << name;
        throw;
      }
    };
    fail_each_host_allocation(action);
    may_leave_table = false;
    return fail_each_allocation(action);
  }

  Value filled(Kind kind, const Extents& extents) {
    TestArray array(kind, extents, Numbers(size_of(extents), 1));
    // Positive definite where it is a square.
    if (extents.size() == 2)
      for (std::size_t i = 0; i < std::min(extents[0], extents[1]); ++i) array.set(i * (extents[1] + 1), 9);
    return kind == Kind::float32 ? floats_.emplace_back(ctx(), array).value() : to_host(ctx(), array);
  }

 private:
  FloatNameRegistered registered_;
  std::list<Operand> floats_;
};

TEST_F(LinalgFaults, ProductsOfEveryRank_SurviveEachFailure) {
  for (const std::string& name : products)
    for (std::size_t left = 0; left <= 6; ++left)
      for (std::size_t right = 0; right <= 6; ++right) {
        const Extents a(left, 2), b(right, 2);
        const int failed = failures_survived(name, {filled(Kind::float64, a), filled(Kind::float64, b)});
        const bool fails = name == "xvdot" && left > 0 && right == 0;
        EXPECT_GE(failed, fails ? 0 : 3) << name << left;
        failures_survived(name, {filled(Kind::int32, a), filled(Kind::int64, b)});
        failures_survived(name, {filled(Kind::float32, a), filled(Kind::int32, b)});
        failures_survived(name, {filled(Kind::int32, a), filled(Kind::float32, b)});
      }
}

TEST_F(LinalgFaults, ProductsOfEveryPairOfKinds_SurviveEachFailure) {
  const auto of_kinds = [&](const Value& a, const Value& b) {
    for (const std::string& name : products) EXPECT_GE(failures_survived(name, {a, b}), 3) << name;
  };
  const Value values[] = {filled(Kind::int32, {3, 3}), filled(Kind::int64, {3, 3}), filled(Kind::float32, {3, 3}),
                          filled(Kind::float64, {3, 3})};
  for (const Value& a : values)
    for (const Value& b : values) of_kinds(a, b);
}

TEST_F(LinalgFaults, MatricesOfEverySize_SurviveEachFailure) {
  for (const std::string& name : of_matrices)
    for (const Extents& extents : {Extents{3, 3}, {1, 1}, {0, 0}, {40, 40}, {2, 5}, {5, 2}, {0, 3}}) {
      const int minimum = extents[0] == extents[1] && extents[0] > 0 ? 2 : 0;
      EXPECT_GE(failures_survived(name, {filled(Kind::float64, extents)}), minimum) << name;
      EXPECT_GE(failures_survived(name, {filled(Kind::float32, extents)}), minimum) << name;
    }
}

TEST_F(LinalgFaults, OperandsThatAreNoMatrix_SurviveEachFailure) {
  for (const std::string& name : of_matrices)
    for (std::size_t rank = 0; rank <= 6; ++rank) {
      failures_survived(name, {filled(Kind::float64, Extents(rank, 2))});
      failures_survived(name, {filled(Kind::float32, Extents(rank, 2))});
    }
}

TEST_F(LinalgFaults, TracesOfEveryRankAndKind_SurviveEachFailure) {
  for (std::size_t rank = 2; rank <= 6; ++rank) {
    const Extents extents(rank, 2);
    EXPECT_GE(failures_survived("xtrace", {filled(Kind::float64, extents)}), 3);
    EXPECT_GE(failures_survived("xtrace", {filled(Kind::float32, extents)}), 3);
    EXPECT_GE(failures_survived("xtrace", {filled(Kind::int32, extents)}), 3);
    EXPECT_GE(failures_survived("xtrace", {filled(Kind::int64, extents)}), 3);
  }
}

TEST_F(LinalgFaults, SolversOfRightHandSidesOfEveryRank_SurviveEachFailure) {
  for (const std::string& name : solvers)
    for (std::size_t rank = 0; rank <= 6; ++rank) {
      const Extents rhs(rank, 3);
      failures_survived(name, {filled(Kind::float32, {3, 3}), filled(Kind::float32, rhs)});
      const int failed = failures_survived(name, {filled(Kind::float64, {3, 3}), filled(Kind::float64, rhs)});
      EXPECT_GE(failed, rank == 0 ? 1 : 2) << name << rank;
    }
}

TEST_F(LinalgFaults, LeastSquaresOfEveryForm_SurviveEachFailure) {
  for (const Extents& a : {Extents{5, 2}, {2, 5}, {1, 1}, {4, 1}, {0, 3}, {3, 0}, {40, 20}})
    for (const Extents& b : {Extents{a[0]}, Extents{a[0], 3}}) {
      EXPECT_GE(failures_survived("xlstsq", {filled(Kind::float64, a), filled(Kind::float64, b)}), 8);
      EXPECT_GE(failures_survived("xlstsq", {filled(Kind::float32, a), filled(Kind::float64, b)}), 8);
      EXPECT_GE(failures_survived("xlstsq", {filled(Kind::float64, a), filled(Kind::float32, b)}), 8);
    }
}

TEST_F(LinalgFaults, NaN_WhereItIsAnsweredWithoutLapack_SurvivesEachFailure) {
  const Value nans = array_of<XTDouble>(ctx(), {3, 3}, std::vector<double>(9, NAN));
  for (const char* name : {"xsvd", "xpinv", "xmatrix_rank", "xeig", "xeigvals"}) failures_survived(name, {nans});
  EXPECT_GE(failures_survived("xlstsq", {nans, filled(Kind::float64, {3})}), 8);
}

TEST_F(LinalgFaults, FailuresAndTheStub_NeedNoMemory) {
  const Value ints = filled(Kind::int32, {2, 2}), bools = array_of<XTBool>(ctx(), {2, 2}, std::vector<bool>(4));
  for (const std::string& name : of_matrices) {
    EXPECT_EQ(failures_survived(name, {bools}), 0) << name;
    if (contains(traces, name)) continue;
    EXPECT_EQ(failures_survived(name, {ints}), 0) << name;
  }
  for (const std::string& name : solvers) EXPECT_EQ(failures_survived(name, {ints, ints}), 0) << name;
  for (const std::string& name : products) EXPECT_EQ(failures_survived(name, {ints, bools}), 0) << name;
  for (const std::string& name : stubs) EXPECT_EQ(failures_survived(name, {ints}), 0) << name;
}

}  // namespace
}  // namespace arrayfold::test
