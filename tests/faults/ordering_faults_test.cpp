// faults/ordering_faults_test.cpp: every allocation of the sorts, the sets and the bins fails once
//
// Each run ends with the array that it has with memory, or with std::bad_alloc and the result record as it was; where
// the host has no object the array is lost, and the call counts as handled. Nothing leaks. Arrays of more than four
// dimensions keep their extents in memory of their own, and long runs are sorted by a detour over other memory.

#include <cmath>
#include <cstring>
#include <limits>

#include "support/allocations.hpp"
#include "support/array_results.hpp"

namespace arrayfold::test {
namespace {

/// Both are arrays of `Kind` with the same extents and bits. Takes no memory.
template <class Kind>
bool are_one(const Value& left, const Value& right) {
  const auto *a = container_of<Kind>(left), *b = container_of<Kind>(right);
  if (a == nullptr || b == nullptr || a->shape() != b->shape()) return false;
  const auto &x = a->storage(), &y = b->storage();
  return x.size() == y.size() &&
         (x.empty() || std::memcmp(x.data(), y.data(), x.size() * sizeof(typename Kind::element)) == 0);
}
bool are_one_of_any_kind(const Value& left, const Value& right) {
  return are_one<XTDouble>(left, right) || are_one<XTFloat>(left, right) || are_one<XTInt>(left, right) ||
         are_one<XTInt64>(left, right);
}

class OrderingFaults : public ArrayResultTest {
 protected:
  /// Runs a call with each allocation failing: `least` or more of the module's, and the object of the host.
  void expect_survival(const std::string& name, std::vector<Value> args, int least = 4) const {
    const EntryFunction function = Module::loaded().entry(name);
    const Value expected = call(name, args).result;
    const auto action = [&] {
      Value result(sentinel);
      const HostValue before = result.record();
      try {
        EXPECT_EQ(function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address()), 1) << name;
        // Also the host's object may come from the module, which answers null.
        const bool lost = allocation_has_failed() || hvm::allocation_has_failed();
        EXPECT_TRUE(lost ? !result.is_object() || hvm::object_of(result.record()) == nullptr
                         : are_one_of_any_kind(result, expected))
            << name;
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(std::memcmp(&before, result.address(), sizeof before), 0) << name;
        throw;
      }
    };
    EXPECT_GE(fail_each_allocation(action), least) << name;
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
  template <class Kind>
  static std::vector<typename Kind::element> mixed(std::size_t count) {
    std::vector<typename Kind::element> x(count);
    for (std::size_t i = 0; i < count; ++i) x[i] = static_cast<typename Kind::element>(i * 7919 % 103);
    return x;
  }

  template <class Kind>
  void expect_orderings_survive(const Extents& extents, int least) const {
    Operand<Kind> operand(ctx(), extents, mixed<Kind>(size_of(extents)));
    const Value value = operand.value();
    for (const char* name : {"xsort", "xargsort", "xdiff"}) expect_survival(name, {value}, least);
    for (const char* name : {"xunique", "xargmin", "xargmax"}) expect_survival(name, {value});
    for (const char* name : {"xpartition", "xargpartition"})
      for (const int rank : {0, 1, 200, -1}) expect_survival(name, {value, Value(rank)}, least);
  }
  void expect_all_orderings_survive(const Extents& extents, int least = 4) const {
    expect_orderings_survive<XTDouble>(extents, least);
    expect_orderings_survive<XTFloat>(extents, least);
    expect_orderings_survive<XTInt>(extents, least);
    expect_orderings_survive<XTInt64>(extents, least);
  }

  template <class Kind>
  void expect_binnings_survive(const Extents& extents, int least) const {
    Operand<Kind> operand(ctx(), extents, mixed<Kind>(size_of(extents)));
    const Value value = operand.value();
    if constexpr (std::is_integral_v<typename Kind::element>) {
      expect_survival("xbincount", {value});
    } else {
      FloatObject floats({2, 2}, {1, 20, 3, 4});
      expect_survival("xhistogram", {value});
      expect_survival("xhistogram", {value, Value(1000)});
      for (const Value& edges : {twos<XTDouble>({2, 2, 2, 2, 2, 2}), floats.value(), twos<XTInt>(), twos<XTInt64>()}) {
        expect_survival("xhistogram_bin_edges", {value, edges});
        expect_survival("xdigitize", {value, edges}, least);
      }
    }
  }
  void expect_all_binnings_survive(const Extents& extents, int least = 4) const {
    expect_binnings_survive<XTDouble>(extents, least);
    expect_binnings_survive<XTFloat>(extents, least);
    expect_binnings_survive<XTInt>(extents, least);
    expect_binnings_survive<XTInt64>(extents, least);
  }

  FloatKindRegistered registered_;
};

TEST_F(OrderingFaults, OrderingsOfEveryKindAndRank) {
  for (std::size_t rank = 0; rank <= 6; ++rank) expect_all_orderings_survive(Extents(rank, 2), rank <= 4 ? 4 : 6);
}

TEST_F(OrderingFaults, OrderingsOfShortAndLongRuns) {
  for (const Extents& extents : {Extents{0}, Extents{10}, Extents{255}, Extents{256}, Extents{1000}, Extents{3, 300},
                                 Extents{1, 2, 1, 2, 1, 300}, Extents{0, 2, 2, 2, 2, 2}})
    expect_all_orderings_survive(extents);
}

TEST_F(OrderingFaults, OrderingsOfLongRunsWithNaNAndNegativeZero) {
  for (const double odd : {std::nan(""), -0.0}) {
    auto x = mixed<XTDouble>(1000);
    x[500] = odd;
    const Value value = array_of<XTDouble>(ctx(), {1000}, x);
    for (const char* name : {"xsort", "xargsort", "xunique", "xdiff", "xargmin", "xargmax"})
      expect_survival(name, {value});
  }
}

// The memory of the detour comes on top of what a short run takes.
TEST_F(OrderingFaults, LongRunsOfIntsAndPositions_AreAmongThem) {
  const auto failures = [&](const char* name, const Value& operand) {
    const EntryFunction function = Module::loaded().entry(name);
    std::vector<Value> args = {operand};
    return fail_each_allocation([&] {
      Value result;
      function(ctx(), hvm::records_of(args), 1, result.address());
    });
  };
  for (const char* name : {"xsort", "xargsort"})
    EXPECT_EQ(failures(name, twos<XTInt>({256})), failures(name, twos<XTInt>({255})) + 1) << name;
  EXPECT_EQ(failures("xargsort", twos({256})), failures("xargsort", twos({255})) + 1);
  EXPECT_EQ(failures("xsort", twos({256})), failures("xsort", twos({255})));
  // Many elements that differ in their lower bits alone, between the ends of the range: positions take one block more.
  std::vector<std::int64_t> descending(1000);
  for (std::size_t i = 0; i < descending.size(); ++i) descending[i] = 1000 - static_cast<std::int64_t>(i);
  descending.front() = std::numeric_limits<std::int64_t>::min();
  descending.back() = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(failures("xargsort", array_of<XTInt64>(ctx(), {1000}, descending)),
            failures("xargsort", twos<XTInt64>({1000})) + 1);
}

TEST_F(OrderingFaults, BinningsOfEveryKindAndRank) {
  for (std::size_t rank = 0; rank <= 6; ++rank) expect_all_binnings_survive(Extents(rank, 2), rank <= 4 ? 4 : 6);
}

TEST_F(OrderingFaults, BinningsOfFewAndManyElements) {
  for (const Extents& extents : {Extents{10}, Extents{255}, Extents{256}, Extents{1000}, Extents{300, 1}})
    expect_all_binnings_survive(extents);
  expect_binnings_survive<XTDouble>({0}, 4);
}

TEST_F(OrderingFaults, WhatGivesNoArray_NeedsNone) {
  for (const char* name : {"xsort", "xargsort", "xunique", "xdiff", "xargmin", "xargmax", "xhistogram", "xbincount"})
    expect_no_allocation(name, {twos<XTBool>({2, 2, 2, 2, 2, 2})});
  for (const char* name : {"xpartition", "xargpartition", "xhistogram_bin_edges", "xdigitize", "xsetdiff1d"})
    expect_no_allocation(name, {twos<XTBool>({2, 2, 2, 2, 2, 2}), twos()});
  expect_no_allocation("xbincount", {twos({2, 2, 2, 2, 2, 2})});
  for (const char* name : {"xsetdiff1d", "xsearchsorted", "xhistogram_bin_edges", "xdigitize"})
    expect_no_allocation(name, {twos<XTInt>({2, 2, 2, 2, 2, 2}), twos()});
}

}  // namespace
}  // namespace arrayfold::test
