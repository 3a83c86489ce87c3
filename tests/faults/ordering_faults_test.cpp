// faults/ordering_faults_test.cpp: every allocation of the sorts, the sets and the bins fails once
//
// Each run ends with the array that it has with memory, or with std::bad_alloc and the result record as it was; where
// the host has no object the array is lost, and the call counts as handled. Nothing leaks. Arrays of more than four
// dimensions keep their extents in memory of their own, and long rows are sorted by way of a temporary buffer.

#include <cmath>
#include <cstring>
#include <limits>

#include "support/allocations.hpp"
#include "support/array_results.hpp"

namespace arrayfold::test {
namespace {

class OrderingFaults : public ArrayResultTest {
 protected:
  /// Runs a call with each allocation failing: `minimum` or more of the module's, and the object of the host.
  void expect_survival(const std::string& name, std::vector<Value> args, int minimum = 3) const {
    const EntryFunction function = Module::loaded().entry(name);
    const TestArray expected = from_host(call(name, args).result);
    const auto action = [&] {
      Value result(sentinel);
      const HostValue before = result.record();
      try {
        EXPECT_EQ(function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address()), 1) << name;
        // Also the host's object may come from the module, which returns null.
        const bool lost = allocation_has_failed() || hvm::allocation_has_failed();
        EXPECT_TRUE(lost ? !result.is_object() || hvm::object_of(result.record()) == nullptr : holds(result, expected))
            << name;
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(std::memcmp(&before, result.address(), sizeof before), 0) << name;
        throw;
      }
    };
    EXPECT_GE(fail_each_allocation(action), minimum) << name;
    EXPECT_EQ(fail_each_host_allocation(action), 1) << name;
  }

  /// Without an array there is nothing to fail.
  void expect_no_allocation(const std::string& name, std::vector<Value> args) const {
    const EntryFunction function = Module::loaded().entry(name);
    const auto action = [&] {
      Value result;
      function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address());
    };
    EXPECT_EQ(fail_each_allocation(action), 0) << name;
    EXPECT_EQ(fail_each_host_allocation(action), 0) << name;
  }

  /// Elements in no order, small and not negative, some of them equal.
  static TestArray mixed(Kind kind, const Extents& extents) {
    Numbers x;
    for (std::size_t i = 0; i < size_of(extents); ++i) x.push_back(i * 7919 % 103);
    return TestArray(kind, extents, x);
  }

  void expect_orderings_survive(Kind kind, const Extents& extents, int minimum) const {
    Operand operand(ctx(), mixed(kind, extents));
    const Value value = operand.value();
    for (const char* name : {"xsort", "xargsort", "xdiff"}) expect_survival(name, {value}, minimum);
    for (const char* name : {"xunique", "xargmin", "xargmax"}) expect_survival(name, {value});
    for (const char* name : {"xpartition", "xargpartition"})
      for (const int rank : {0, 1, 200, -1}) expect_survival(name, {value, Value(rank)}, minimum);
  }
  void expect_all_orderings_survive(const Extents& extents, int minimum = 3) const {
    for (const Kind kind : numeric_kinds) expect_orderings_survive(kind, extents, minimum);
  }

  void expect_binnings_survive(Kind kind, const Extents& extents, int minimum) const {
    Operand operand(ctx(), mixed(kind, extents));
    const Value value = operand.value();
    if (is_integer(kind)) {
      expect_survival("xbincount", {value});
    } else {
      FloatObject floats({2, 2}, {1, 20, 3, 4});
      expect_survival("xhistogram", {value});
      expect_survival("xhistogram", {value, Value(1000)});
      for (const Value& edges : {twos({2, 2, 2, 2, 2, 2}), floats.value(), twos(Kind::int32), twos(Kind::int64)}) {
        expect_survival("xhistogram_bin_edges", {value, edges});
        expect_survival("xdigitize", {value, edges}, minimum);
      }
    }
  }
  void expect_all_binnings_survive(const Extents& extents, int minimum = 3) const {
    for (const Kind kind : numeric_kinds) expect_binnings_survive(kind, extents, minimum);
  }

  FloatKindRegistered registered_;
};

TEST_F(OrderingFaults, OrderingsOfEveryKindAndRank_SurviveEachFailure) {
  for (std::size_t rank = 0; rank <= 6; ++rank) expect_all_orderings_survive(Extents(rank, 2), rank <= 4 ? 3 : 6);
}

TEST_F(OrderingFaults, OrderingsOfShortAndLongRows_SurviveEachFailure) {
  for (const Extents& extents : {Extents{0}, Extents{10}, Extents{255}, Extents{256}, Extents{1000}, Extents{3, 300},
                                 Extents{1, 2, 1, 2, 1, 300}, Extents{0, 2, 2, 2, 2, 2}})
    expect_all_orderings_survive(extents);
}

TEST_F(OrderingFaults, OrderingsOfLongRowsWithNaNAndNegativeZero_SurviveEachFailure) {
  for (const double odd : {std::nan(""), -0.0}) {
    TestArray x = mixed(Kind::float64, {1000});
    x.set(500, odd);
    const Value value = to_host(ctx(), x);
    for (const char* name : {"xsort", "xargsort", "xunique", "xdiff", "xargmin", "xargmax"})
      expect_survival(name, {value});
  }
}

// The temporary buffer comes on top of what a short row takes.
TEST_F(OrderingFaults, LongRowsOfIntsAndPositions_AreAmongThem) {
  const auto failures = [&](const char* name, const Value& operand) {
    const EntryFunction function = Module::loaded().entry(name);
    std::vector<Value> args = {operand};
    return fail_each_allocation([&] {
      Value result;
      function(ctx(), hvm::records_of(args), 1, result.address());
    });
  };
  const auto unsorted = [&](Kind kind, std::size_t length) {
    TestArray x(kind, {length}, Numbers(length, 2));
    x.set(0, 3);
    return to_host(ctx(), x);
  };
  for (const char* name : {"xsort", "xargsort"}) {
    EXPECT_EQ(failures(name, unsorted(Kind::int32, 256)), failures(name, unsorted(Kind::int32, 255)) + 1) << name;
    EXPECT_EQ(failures(name, twos(Kind::int32, {256})), failures(name, twos(Kind::int32, {255})))
        << name << " in order";
  }
  EXPECT_EQ(failures("xargsort", unsorted(Kind::float64, 256)), failures("xargsort", unsorted(Kind::float64, 255)) + 1);
  EXPECT_EQ(failures("xsort", unsorted(Kind::float64, 256)), failures("xsort", unsorted(Kind::float64, 255)));
  // Many elements that differ in their lower bits alone, between the ends of the range: positions take one block more.
  std::vector<std::int64_t> descending(1000);
  for (std::size_t i = 0; i < descending.size(); ++i) descending[i] = 1000 - static_cast<std::int64_t>(i);
  descending.front() = std::numeric_limits<std::int64_t>::min();
  descending.back() = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(failures("xargsort", array_of<XTInt64>(ctx(), {1000}, descending)),
            failures("xargsort", unsorted(Kind::int64, 1000)) + 1);
}

TEST_F(OrderingFaults, BinningsOfEveryKindAndRank_SurviveEachFailure) {
  for (std::size_t rank = 0; rank <= 6; ++rank) expect_all_binnings_survive(Extents(rank, 2), rank <= 4 ? 3 : 6);
}

TEST_F(OrderingFaults, BinningsOfFewAndManyElements_SurviveEachFailure) {
  for (const Extents& extents : {Extents{10}, Extents{255}, Extents{256}, Extents{1000}, Extents{300, 1}})
    expect_all_binnings_survive(extents);
  expect_binnings_survive(Kind::float64, {0}, 3);
}

TEST_F(OrderingFaults, WhatGivesNoArray_NeedsNone) {
  for (const char* name : {"xsort", "xargsort", "xunique", "xdiff", "xargmin", "xargmax", "xhistogram", "xbincount"})
    expect_no_allocation(name, {twos(Kind::boolean, {2, 2, 2, 2, 2, 2})});
  for (const char* name : {"xpartition", "xargpartition", "xhistogram_bin_edges", "xdigitize", "xsetdiff1d"})
    expect_no_allocation(name, {twos(Kind::boolean, {2, 2, 2, 2, 2, 2}), twos()});
  expect_no_allocation("xbincount", {twos({2, 2, 2, 2, 2, 2})});
  for (const char* name : {"xsetdiff1d", "xsearchsorted", "xhistogram_bin_edges", "xdigitize"})
    expect_no_allocation(name, {twos(Kind::int32, {2, 2, 2, 2, 2, 2}), twos()});
}

}  // namespace
}  // namespace arrayfold::test
