// faults/linalg_faults_test.cpp: every allocation of linear algebra fails once
//
// Each run ends as it does with memory, or with std::bad_alloc; nothing leaks. Where the module's memory is short, the
// result record is as it was. Where the host's is, a table may be there, with some of its values. What the BLAS
// routines claim for themselves is not among the allocations.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <list>
#include <type_traits>

#include "support/allocations.hpp"
#include "support/hand_made.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

using Extents = std::vector<std::size_t>;

constexpr const char* products[] = {"xdot", "xvdot", "xouter", "xkron"};
constexpr const char* of_one_matrix[] = {"xcholesky",    "xqr",       "xsvd",   "xeig",  "xeigvals",
                                         "xeigh",        "xeigvalsh", "xnorm",  "xcond", "xdet",
                                         "xmatrix_rank", "xslogdet",  "xtrace", "xinv",  "xpinv"};
constexpr const char* of_two_matrices[] = {"xsolve", "xlstsq"};
constexpr const char* with_tables[] = {"xqr", "xsvd", "xeig", "xeigh", "xslogdet", "xlstsq"};

bool gives_table(const std::string& name) {
  for (const char* other : with_tables)
    if (name == other) return true;
  return false;
}

class LinalgFaults : public ModuleTest {
 protected:
  /// How a call ends, with memory or without: its answer, or -1 with words.
  struct Ending {
    int returned = -1;
    std::string words;
  };

  Ending ending(EntryFunction function, std::vector<Value>& args, Value& result) const {
    try {
      return {function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address()), ""};
    } catch (const std::runtime_error& error) {
      return {-1, error.what()};
    }
  }

  /// Runs a call with each allocation failing, then with each of the host's. The answer is how many of the former did.
  int failures_survived(const char* name, std::vector<Value> args) const {
    const EntryFunction function = Module::loaded().entry(name);
    Value warm;
    const Ending expected = ending(function, args, warm);
    bool may_leave_table = gives_table(name);
    const auto action = [&] {
      Value result(sentinel);
      const HostValue before = result.record();
      try {
        const Ending found = ending(function, args, result);
        EXPECT_EQ(found.returned, expected.returned) << name;
        EXPECT_EQ(found.words, expected.words) << name;
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(may_leave_table || std::memcmp(&before, result.address(), sizeof before) == 0) << name;
        throw;
      }
    };
    fail_each_host_allocation(action);
    may_leave_table = false;
    return fail_each_allocation(action);
  }

  template <class Kind>
  Value filled(const Extents& extents) {
    std::size_t size = 1;
    for (const std::size_t extent : extents) size *= extent;
    std::vector<typename Kind::element> elements(size, 1);
    // Positive definite where it is a square.
    if (extents.size() == 2)
      for (std::size_t i = 0; i < std::min(extents[0], extents[1]); ++i) elements[i * (extents[1] + 1)] = 9;
    if constexpr (std::is_same_v<Kind, XTFloat>)
      return floats_.emplace_back(extents, elements).value();
    else
      return array_of<Kind>(ctx(), extents, elements);
  }

 private:
  FloatNameRegistered registered_;
  std::list<FloatObject> floats_;
};

TEST_F(LinalgFaults, ProductsOfEveryRank) {
  for (const char* name : products)
    for (std::size_t left = 0; left <= 6; ++left)
      for (std::size_t right = 0; right <= 6; ++right) {
        const Extents a(left, 2), b(right, 2);
        const int failed = failures_survived(name, {filled<XTDouble>(a), filled<XTDouble>(b)});
        const bool refused = std::strcmp(name, "xvdot") == 0 && left > 0 && right == 0;
        EXPECT_GE(failed, refused ? 0 : 3) << name << left;
        failures_survived(name, {filled<XTInt>(a), filled<XTInt64>(b)});
        failures_survived(name, {filled<XTFloat>(a), filled<XTInt>(b)});
        failures_survived(name, {filled<XTInt>(a), filled<XTFloat>(b)});
      }
}

TEST_F(LinalgFaults, ProductsOfEveryPairOfKinds) {
  const auto of_kinds = [&](const Value& a, const Value& b) {
    for (const char* name : products) EXPECT_GE(failures_survived(name, {a, b}), 3) << name;
  };
  const Value values[] = {filled<XTInt>({3, 3}), filled<XTInt64>({3, 3}), filled<XTFloat>({3, 3}),
                          filled<XTDouble>({3, 3})};
  for (const Value& a : values)
    for (const Value& b : values) of_kinds(a, b);
}

TEST_F(LinalgFaults, MatricesOfEverySize) {
  for (const char* name : of_one_matrix)
    for (const Extents& extents : {Extents{3, 3}, {1, 1}, {0, 0}, {40, 40}, {2, 5}, {5, 2}, {0, 3}}) {
      const int least = extents[0] == extents[1] && extents[0] > 0 ? 2 : 0;
      EXPECT_GE(failures_survived(name, {filled<XTDouble>(extents)}), least) << name;
      EXPECT_GE(failures_survived(name, {filled<XTFloat>(extents)}), least) << name;
    }
}

TEST_F(LinalgFaults, OperandsThatAreNoMatrix) {
  for (const char* name : of_one_matrix)
    for (std::size_t rank = 0; rank <= 6; ++rank) {
      failures_survived(name, {filled<XTDouble>(Extents(rank, 2))});
      failures_survived(name, {filled<XTFloat>(Extents(rank, 2))});
    }
}

TEST_F(LinalgFaults, TracesOfEveryRankAndKind) {
  for (std::size_t rank = 2; rank <= 6; ++rank) {
    const Extents extents(rank, 2);
    EXPECT_GE(failures_survived("xtrace", {filled<XTDouble>(extents)}), 3);
    EXPECT_GE(failures_survived("xtrace", {filled<XTFloat>(extents)}), 3);
    EXPECT_GE(failures_survived("xtrace", {filled<XTInt>(extents)}), 3);
    EXPECT_GE(failures_survived("xtrace", {filled<XTInt64>(extents)}), 3);
  }
}

TEST_F(LinalgFaults, SolversOfSidesOfEveryRank) {
  for (const char* name : of_two_matrices)
    for (std::size_t rank = 0; rank <= 6; ++rank) {
      const Extents sides(rank, 3);
      failures_survived(name, {filled<XTFloat>({3, 3}), filled<XTFloat>(sides)});
      const int failed = failures_survived(name, {filled<XTDouble>({3, 3}), filled<XTDouble>(sides)});
      EXPECT_GE(failed, rank == 0 ? 1 : 2) << name << rank;
    }
}

TEST_F(LinalgFaults, LeastSquaresOfEveryForm) {
  for (const Extents& a : {Extents{5, 2}, {2, 5}, {1, 1}, {4, 1}, {0, 3}, {3, 0}, {40, 20}})
    for (const Extents& b : {Extents{a[0]}, Extents{a[0], 3}}) {
      EXPECT_GE(failures_survived("xlstsq", {filled<XTDouble>(a), filled<XTDouble>(b)}), 8);
      EXPECT_GE(failures_survived("xlstsq", {filled<XTFloat>(a), filled<XTDouble>(b)}), 8);
      EXPECT_GE(failures_survived("xlstsq", {filled<XTDouble>(a), filled<XTFloat>(b)}), 8);
    }
}

TEST_F(LinalgFaults, NaNWhereItIsAnsweredWithoutTheRoutines) {
  const Value nans = array_of<XTDouble>(ctx(), {3, 3}, std::vector<double>(9, NAN));
  for (const char* name : {"xsvd", "xpinv", "xmatrix_rank", "xeig", "xeigvals"}) failures_survived(name, {nans});
  EXPECT_GE(failures_survived("xlstsq", {nans, filled<XTDouble>({3})}), 8);
}

TEST_F(LinalgFaults, RefusalsAndTheStub_NeedNoMemory) {
  const Value ints = filled<XTInt>({2, 2}), bools = array_of<XTBool>(ctx(), {2, 2}, std::vector<bool>(4));
  for (const char* name : of_one_matrix) {
    EXPECT_EQ(failures_survived(name, {bools}), 0) << name;
    if (std::strcmp(name, "xtrace") == 0) continue;
    EXPECT_EQ(failures_survived(name, {ints}), 0) << name;
  }
  for (const char* name : of_two_matrices) EXPECT_EQ(failures_survived(name, {ints, ints}), 0) << name;
  for (const char* name : products) EXPECT_EQ(failures_survived(name, {ints, bools}), 0) << name;
  EXPECT_EQ(failures_survived("xmatrix_power", {ints}), 0);
}

}  // namespace
}  // namespace arrayfold::test
