// faults/faults_test.cpp: every allocation of every function and method fails once
//
// The n-th allocation fails, for n from 1 until a run needs no more: each run ends regularly or with std::bad_alloc,
// nothing leaks, and the process goes on. The module's allocations and the host's are made to fail in turn.

#include <cstring>

#include "support/allocations.hpp"
#include "support/functions.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

class Faults : public ModuleTest {
 protected:
  /// What may be in the result record of a call that throws.
  enum class Left { nothing, nil_or_table };

  /// Runs `action` on a result record; when it throws, the record is byte for byte what it was, unless nil or a
  /// table may be left there.
  template <class Action>
  static void keeping_result(Action action, Left left = Left::nothing) {
    Value result(sentinel);
    const HostValue before = result.record();
    try {
      action(result.address());
    } catch (const std::bad_alloc&) {
      const bool untouched = std::memcmp(&before, result.address(), sizeof before) == 0;
      const ValueTag tag = result.record().tag;
      EXPECT_TRUE(untouched || (left == Left::nil_or_table && (tag == ValueTag::nil || tag == ValueTag::table)));
      throw;
    }
  }

  /// Runs a call with each allocation failing. `minimum` is how many there are at least: a loop that meets none proves
  /// nothing.
  void expect_survival(const std::string& name, std::vector<Value> args, int minimum = 4) const {
    const EntryFunction function = Module::loaded().entry(name);
    const auto action = [&] {
      keeping_result(
          [&](HostValue* result) { function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result); });
    };
    EXPECT_GE(fail_each_allocation(action), minimum) << name;
    EXPECT_GE(fail_each_host_allocation(action), 1) << name;
  }

  /// Where the host makes no table or slot, the table of `shape` is left unfinished.
  void expect_method_survival(Value& self, const char* name, std::vector<Value> args, int minimum, int minimum_host,
                              Left left_by_host = Left::nothing) const {
    const auto callback = hvm::callbacks_of(hvm::object_of(self.record())).method;
    std::vector<HostValue*> pointers;
    for (Value& arg : args) pointers.push_back(arg.address());
    const auto call_into = [&](HostValue* result) {
      callback(ctx(), self.address(), name, pointers.data(), static_cast<int>(pointers.size()), result, 0);
    };
    EXPECT_GE(fail_each_allocation([&] { keeping_result(call_into); }), minimum) << name;
    EXPECT_GE(fail_each_host_allocation([&] { keeping_result(call_into, left_by_host); }), minimum_host) << name;
  }

  /// An operator with a result of its own.
  void expect_operator_survival(Opcode opcode, Value left, Value right, int minimum) const {
    const auto callback = hvm::callbacks_of(hvm::object_of((left.is_object() ? left : right).record())).op;
    const auto action = [&] {
      keeping_result([&](HostValue* result) {
        EXPECT_EQ(callback(ctx(), static_cast<int>(opcode), left.address(), right.address(), result), 1);
      });
    };
    EXPECT_GE(fail_each_allocation(action), minimum) << static_cast<int>(opcode);
    EXPECT_EQ(fail_each_host_allocation(action), 1) << static_cast<int>(opcode);
  }

  /// An operator that changes an array: until it succeeds, both operands are what they were. Returns the number
  /// of allocations that failed.
  template <class Kind>
  int changes_survived(Opcode opcode, Value array, Value right) const {
    const auto callback = hvm::callbacks_of(hvm::object_of(array.record())).op;
    const Operands before(array, right);
    // Only the runs that fail are weighed: the one that succeeds may leave a larger array behind.
    int failed = 0;
    for (bool done = false; !done; ++failed) {
      const auto alive = allocations().alive;
      fail_allocation(failed + 1);
      try {
        EXPECT_EQ(callback(ctx(), static_cast<int>(opcode), array.address(), right.address(), array.address()), 1);
        done = true;
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(allocations().alive, alive);
        before.expect_kept(array, right);
      }
      fail_allocation(0);
    }
    return failed - 1;
  }

 private:
  /// The container, extents and elements behind a record; nothing of a number.
  struct Contents {
    explicit Contents(const Value& value) {
      if (!holds_array(value)) return;
      container = container_address(value);
      array = from_host(value);
    }
    bool operator==(const Contents& other) const { return container == other.container && array == other.array; }

    const void* container = nullptr;
    TestArray array;
  };

  /// Both operands as they are at one moment: their records, and what is behind them.
  struct Operands {
    Operands(const Value& left_value, const Value& right_value)
        : records{left_value.record(), right_value.record()}, left(left_value), right(right_value) {}

    void expect_kept(const Value& left_value, const Value& right_value) const {
      const HostValue now[] = {left_value.record(), right_value.record()};
      EXPECT_EQ(std::memcmp(records, now, sizeof now), 0);
      EXPECT_TRUE(left == Contents(left_value));
      EXPECT_TRUE(right == Contents(right_value));
    }

    HostValue records[2];
    Contents left, right;
  };
};

/// Ranks 1 to 6: beyond four dimensions shapes take memory, too.
std::vector<Value> extents(int rank) { return std::vector<Value>(static_cast<std::size_t>(rank), Value(2)); }

TEST_F(Faults, ByExtents_OfEveryRank_SurviveEachFailure) {
  for (const char* name : {"xzeros", "xones", "xempty", "xrand", "xrandn"})
    for (int rank = 1; rank <= 6; ++rank) expect_survival(name, extents(rank), rank <= 4 ? 4 : 7);
}

/// Large blocks of zeros come from the C library.
TEST_F(Faults, ManyZeros_SurviveEachFailure) {
  const std::vector<Value> extents = {Value(200), Value(200)};
  expect_survival("xzeros", extents, 4);
  expect_survival("xeye", extents, 4);
  expect_survival("xisnan", {call("xlinspace", {Value(1), Value(40000), Value(40000)}).result}, 4);
}

TEST_F(Faults, RangesAndEye_SurviveEachFailure) {
  expect_survival("xeye", {Value(3), Value(4)});
  expect_survival("xarange", {Value(10)});
  expect_survival("xarange", {Value(1), Value(2), Value(3), Value(4)}, 2);
  for (const Value& start : {Value(0), Value(0.0), Value(std::int64_t{0})}) {
    expect_survival("xlinspace", {start, Value(5), Value(9)});
    expect_survival("xlogspace", {start, Value(5), Value(9)});
  }
}

/// Elementwise functions of two arrays; the stubs look at their arguments and compute nothing.
const std::vector<std::string> binary = {"xminimum", "xmaximum"};
const std::vector<std::string> elementwise_stubs = {"xremainder", "xclip", "xfma", "xinterp", "xpow"};
/// Those of one array.
const std::vector<std::string> unary = without(functions_of("elementwise"), {binary, elementwise_stubs});

TEST_F(Faults, Binary_OfEveryKindAndRank_SurviveEachFailure) {
  for (const std::string& name : binary)
    for (std::size_t rank = 0; rank <= 6; ++rank)
      for (const Kind kind : {Kind::float64, Kind::int32, Kind::int64}) {
        const Value array = to_host(ctx(), TestArray(kind, Extents(rank, 2), Numbers(std::size_t{1} << rank, 3)));
        expect_survival(name, {array, array}, rank <= 4 ? 4 : 7);
      }
}

TEST_F(Faults, StubsOfElements_NeedNone) {
  EXPECT_EQ(elementwise_stubs.size(), stubs_of("elementwise").size());
  for (const std::string& name : elementwise_stubs) {
    std::vector<Value> args(3, array_of<XTDouble>(ctx(), {2}, {1, 2}));
    const EntryFunction function = Module::loaded().entry(name);
    const auto action = [&] {
      Value result;
      EXPECT_EQ(function(ctx(), hvm::records_of(args), 3, result.address()), 1) << name;
    };
    EXPECT_EQ(fail_each_allocation(action), 0) << name;
    EXPECT_EQ(fail_each_host_allocation(action), 0) << name;
  }
}

TEST_F(Faults, Unary_OfEveryKindAndRank_SurviveEachFailure) {
  for (const std::string& name : unary)
    for (std::size_t rank = 0; rank <= 6; ++rank) {
      const std::vector<std::size_t> shape(rank, 2);
      const std::size_t count = std::size_t{1} << rank;
      const int minimum = rank <= 4 ? 4 : 7;
      expect_survival(name, {array_of<XTDouble>(ctx(), shape, std::vector<double>(count, 0.5))}, minimum);
      if (name == "xsign") continue;  // serves no integers
      expect_survival(name, {array_of<XTInt>(ctx(), shape, std::vector<std::int32_t>(count, 3))}, minimum);
      expect_survival(name, {array_of<XTInt64>(ctx(), shape, std::vector<std::int64_t>(count, 3))}, minimum);
    }
}

TEST_F(Faults, Methods_OfEveryRank_SurviveEachFailure) {
  for (int rank = 1; rank <= 6; ++rank) {
    Value array = call("xzeros", extents(rank)).result;
    expect_method_survival(array, "dump", {}, 1, 1);
    expect_method_survival(array, "dump", {Value(2)}, 1, 1);
    expect_method_survival(array, "shape", {}, rank <= 4 ? 0 : 1, 1, Left::nil_or_table);
    expect_method_survival(array, "reshape", extents(rank), rank <= 4 ? 0 : 2, 0);
    EXPECT_EQ(shape(array), std::vector<std::int64_t>(static_cast<std::size_t>(rank), 2));
  }
}

/// Ones of a kind under 2, 1, 2, 1, ... or 1, 2, 1, 2, ...: two such arrays broadcast in every dimension.
template <class Kind>
Value alternating(HostContext ctx, int rank, bool begin_with_two) {
  std::vector<std::size_t> alternate;
  std::size_t size = 1;
  for (int axis = 0; axis < rank; ++axis) {
    alternate.push_back((axis % 2 == 0) == begin_with_two ? 2 : 1);
    size *= alternate.back();
  }
  return array_of<Kind>(ctx, alternate, std::vector<typename Kind::element>(size, 1));
}

TEST_F(Faults, Operators_OfEveryRank_SurviveEachFailure) {
  for (int rank = 1; rank <= 6; ++rank) {
    const int minimum = rank <= 4 ? 4 : 7;
    const Value arrays[] = {alternating<XTInt>(ctx(), rank, true), alternating<XTInt64>(ctx(), rank, true),
                            alternating<XTDouble>(ctx(), rank, true)};
    const Value others[] = {alternating<XTInt>(ctx(), rank, false), alternating<XTInt64>(ctx(), rank, false),
                            alternating<XTDouble>(ctx(), rank, false)};
    for (int kind = 0; kind < 3; ++kind)
      for (const Opcode opcode : {Opcode::add, Opcode::divide, Opcode::less}) {
        expect_operator_survival(opcode, arrays[kind], Value(2), minimum);
        expect_operator_survival(opcode, Value(2), arrays[kind], minimum);
        expect_operator_survival(opcode, arrays[kind], arrays[kind], minimum);
        expect_operator_survival(opcode, arrays[kind], others[kind], minimum);
      }
  }
}

TEST_F(Faults, OperatorsInPlace_OfEveryKindAndRank_SurviveEachFailure) {
  const auto for_kind = [&](auto kind) {
    using Kind = decltype(kind);
    for (int rank = 1; rank <= 6; ++rank)
      for (const Opcode opcode : {Opcode::add, Opcode::subtract, Opcode::multiply, Opcode::divide, Opcode::remainder}) {
        // There is no remainder of doubles.
        if (opcode == Opcode::remainder && std::is_same_v<Kind, XTDouble>) continue;
        const auto array = [&] { return alternating<Kind>(ctx(), rank, true); };
        // A number and an equal shape need no memory, a shape that grows needs a new array.
        EXPECT_EQ(changes_survived<Kind>(opcode, array(), Value(2)), 0);
        EXPECT_EQ(changes_survived<Kind>(opcode, array(), array()), 0);
        EXPECT_GE(changes_survived<Kind>(opcode, array(), alternating<Kind>(ctx(), rank, false)), rank <= 4 ? 3 : 7);
      }
  };
  const auto for_all = [&](auto... kind) { (for_kind(kind), ...); };
  for_kinds(kinds<XTInt, XTInt64, XTDouble>{}, for_all);
}

}  // namespace
}  // namespace arrayfold::test
