// faults/faults_test.cpp: every allocation of every function and method fails once
//
// The n-th allocation fails, for n from 1 until a run needs no more: each run ends regularly or with std::bad_alloc,
// nothing leaks, and the process goes on. The module's allocations and the host's are made to fail in turn.

#include <cstring>

#include "support/allocations.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

class Faults : public ModuleTest {
 protected:
  /// Runs `action` on a result record; when it throws, the record is byte for byte what it was.
  template <class Action>
  static void keeping_result(Action action) {
    Value result(sentinel);
    const HostValue before = result.record();
    try {
      action(result.address());
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(std::memcmp(&before, result.address(), sizeof before), 0);
      throw;
    }
  }

  /// Runs a call with each allocation failing. `least` is how many there are at the least: a loop that meets none
  /// proves nothing.
  void expect_survival(const char* name, std::vector<Value> args, int least = 5) const {
    const EntryFunction function = Module::loaded().entry(name);
    const auto action = [&] {
      keeping_result(
          [&](HostValue* result) { function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result); });
    };
    EXPECT_GE(fail_each_allocation(action), least) << name;
    EXPECT_GE(fail_each_host_allocation(action), 1) << name;
  }

  void expect_method_survival(Value& self, const char* name, std::vector<Value> args, int least, int least_host) const {
    const auto callback = hvm::callbacks_of(hvm::object_of(self.record())).method;
    std::vector<HostValue*> pointers;
    for (Value& arg : args) pointers.push_back(arg.address());
    const auto action = [&] {
      keeping_result([&](HostValue* result) {
        callback(ctx(), self.address(), name, pointers.data(), static_cast<int>(pointers.size()), result, 0);
      });
    };
    EXPECT_GE(fail_each_allocation(action), least) << name;
    EXPECT_GE(fail_each_host_allocation(action), least_host) << name;
  }
};

/// Ranks 1 to 6: beyond four dimensions shapes take memory, too.
std::vector<Value> extents(int rank) { return std::vector<Value>(static_cast<std::size_t>(rank), Value(2)); }

TEST_F(Faults, ByExtents_OfEveryRank) {
  for (const char* name : {"xzeros", "xones", "xempty"})
    for (int rank = 1; rank <= 6; ++rank) expect_survival(name, extents(rank), rank <= 4 ? 5 : 8);
}

TEST_F(Faults, RangesAndEye) {
  expect_survival("xeye", {Value(3), Value(4)});
  expect_survival("xarange", {Value(10)});
  expect_survival("xarange", {Value(1), Value(2), Value(3), Value(4)}, 2);
  for (const Value& start : {Value(0), Value(0.0), Value(std::int64_t{0})}) {
    expect_survival("xlinspace", {start, Value(5), Value(9)});
    expect_survival("xlogspace", {start, Value(5), Value(9)});
  }
}

/// The functions of one array.
constexpr const char* unary[] = {"xabs",    "xsign",   "xrad2deg", "xdegrees", "xdeg2rad", "xradians", "xexp",
                                 "xexpm1",  "xlog",    "xlog1p",   "xsqrt",    "xsquare",  "xcube",    "xcbrt",
                                 "xsin",    "xcos",    "xtan",     "xsinh",    "xcosh",    "xtanh",    "xerf",
                                 "xtgamma", "xlgamma", "xisnan",   "xisinf",   "xisfinite"};

TEST_F(Faults, Unary_OfEveryKindAndRank) {
  for (const char* name : unary)
    for (std::size_t rank = 0; rank <= 6; ++rank) {
      const std::vector<std::size_t> shape(rank, 2);
      const std::size_t count = std::size_t{1} << rank;
      const int least = rank <= 4 ? 5 : 8;
      expect_survival(name, {array_of<XTDouble>(ctx(), shape, std::vector<double>(count, 0.5))}, least);
      if (name == std::string("xsign")) continue;  // serves no integers
      expect_survival(name, {array_of<XTInt>(ctx(), shape, std::vector<std::int32_t>(count, 3))}, least);
      expect_survival(name, {array_of<XTInt64>(ctx(), shape, std::vector<std::int64_t>(count, 3))}, least);
    }
}

TEST_F(Faults, Methods_OfEveryRank) {
  for (int rank = 1; rank <= 6; ++rank) {
    Value array = call("xzeros", extents(rank)).result;
    expect_method_survival(array, "dump", {}, 1, 1);
    expect_method_survival(array, "dump", {Value(2)}, 1, 1);
    expect_method_survival(array, "shape", {}, rank <= 4 ? 0 : 1, 1);
    expect_method_survival(array, "reshape", extents(rank), rank <= 4 ? 0 : 2, 0);
    EXPECT_EQ(shape(array), std::vector<std::int64_t>(static_cast<std::size_t>(rank), 2));
  }
}

}  // namespace
}  // namespace arrayfold::test
