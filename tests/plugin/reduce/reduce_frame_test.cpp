// reduce/reduce_frame_test.cpp: what the ten functions ask of the host, what they accept, and what they leave alone

#include <algorithm>

#include "reductions.hpp"
#include "support/allocations.hpp"

namespace arrayfold::test {
namespace {

class ReduceFrame : public ReductionTest {
 protected:
  Value doubles(const Extents& extents = {3}) const {
    return array_of<XTDouble>(ctx(), extents, std::vector<double>(size_of(extents), 2.0));
  }
};

const Words looked_at = {"AnyCheck 0", "GetAny 0"};

/// How a function sets the number that it makes of each kind: by the kind's own operation or by one for all.
struct Setters {
  const char* name;
  const char* of_double;
  const char* of_float;
  const char* of_int;
  const char* of_int64;
};
constexpr const char *real = "SetReal result", *int32 = "SetInt result", *int64 = "SetInt64 result";
constexpr Setters setters[] = {
    {"xsum", real, real, int32, int64},  {"xprod", real, real, int32, int64},
    {"xamin", real, real, int32, int64}, {"xamax", real, real, int32, int64},
    {"xmean", real, real, real, real},   {"xvariance", real, real, real, real},
    {"xstddev", real, real, real, real}, {"xmedian", real, real, int32, int64},
    {"xtrapz", real, real, real, real},  {"xcount_nonzero", int64, int64, int64, int64},
};

TEST_F(ReduceFrame, EachKind_IsSetByOneOperation) {
  ASSERT_EQ(std::size(setters), reductions.size());
  for (const Extents& extents : {Extents{2}, Extents{}, Extents{0}, Extents{2, 3}}) {
    const std::size_t size = size_of(extents);
    FloatObject floats(extents, std::vector<float>(size, 2));
    for (const Setters& row : setters) {
      const auto expect_set = [&](const Value& operand, const char* by) {
        const Answer answer = call(row.name, {operand});
        EXPECT_EQ(answer.returned, 1) << row.name;
        EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0", by})) << row.name;
      };
      expect_set(doubles(extents), row.of_double);
      expect_set(floats.value(), row.of_float);
      expect_set(array_of<XTInt>(ctx(), extents, std::vector<std::int32_t>(size, 2)), row.of_int);
      expect_set(array_of<XTInt64>(ctx(), extents, std::vector<std::int64_t>(size, 2)), row.of_int64);
    }
  }
}

TEST_F(ReduceFrame, WithoutArguments_Fail) {
  for (const std::string& name : reductions)
    for (const int nargs : {0, -1}) expect_no_result(call_with_count(name, {doubles()}, nargs), 0, {}, name);
}

TEST_F(ReduceFrame, OfValuesOfEveryOtherTag_Fail) {
  for (const std::string& name : reductions)
    for (int tag = 0; tag < 256; ++tag)
      if (tag != static_cast<int>(ValueTag::object))
        expect_no_result(call(name, {raw(static_cast<ValueTag>(tag))}), 0, {"AnyCheck 0"},
                         name + " of tag " + std::to_string(tag));
}

TEST_F(ReduceFrame, OfNumbersStringsAndTables_Fail) {
  for (const std::string& name : reductions)
    for (const Value& operand : {Value(3), Value(2.5), Value(std::int64_t{3}), Value("text"), Value(u"text"),
                                 Value::table_of({Value(1), Value(2)}), Value()})
      expect_no_result(call(name, {operand, doubles()}), 0, {"AnyCheck 0"}, name);
}

TEST_F(ReduceFrame, Required_Bools_AreHandledWithoutResult) {
  for (const std::string& name : reductions) {
    expect_no_result(call(name, {array_of<XTBool>(ctx(), {2}, {true, false})}), 1, looked_at, name);
    expect_no_result(call(name, {array_of<XTBool>(ctx(), {0}, {})}), 1, looked_at, name);
    expect_no_result(call(name, {array_of<XTBool>(ctx(), {}, {true})}), 1, looked_at, name);
  }
}

TEST_F(ReduceFrame, Required_ForeignObjects_AreHandledWithoutResult) {
  for (const char* type_name : {"$foreign", "", "$xdoublearra", "$xdoublearrays", "$XDOUBLEARRAY"}) {
    ForeignObject foreign(type_name);
    for (const std::string& name : reductions) expect_no_result(call(name, {foreign.value()}), 1, looked_at, name);
  }
  ForeignObject nameless(nullptr);
  for (const std::string& name : reductions) expect_no_result(call(name, {nameless.value()}), 1, looked_at, name);
}

TEST_F(ReduceFrame, ObjectsThatTheHostMadeAlone_AreHandledWithoutResult) {
  for (const char* type_name : {"$xdoublearray", "$xintarray", "$xint64array", "$xboolarray"}) {
    const Value bare = Value::object(ctx(), type_name);
    ASSERT_EQ(type_of(bare), type_name);
    for (const std::string& name : reductions) expect_no_result(call(name, {bare}), 1, looked_at, name);
  }
}

using ReduceFrameDeathTest = ReduceFrame;

TEST_F(ReduceFrameDeathTest, ArraysWithoutAContainer_EndTheProcess) {
  ::testing::FLAGS_gtest_death_test_style = "fast";
  const Value empty = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  ASSERT_EQ(type_of(empty), "$xdoublearray");
  for (const std::string& name : reductions) EXPECT_DEATH(call(name, {empty}), "") << name;
}

TEST_F(ReduceFrame, FurtherArguments_AreNotReadAndNotChecked) {
  for (const std::string& name : reductions) {
    const Answer alone = call(name, {doubles({2, 3})});
    for (const Value& further :
         {Value(0), Value(1), Value("text"), Value(), raw(static_cast<ValueTag>(77)), doubles()}) {
      const Answer answer = call(name, {doubles({2, 3}), further, Value(2)});
      EXPECT_EQ(answer.returned, 1) << name;
      EXPECT_EQ(answer.operations, alone.operations) << name;
      EXPECT_EQ(std::memcmp(answer.result.record().payload, alone.result.record().payload, 8), 0) << name;
    }
  }
}

TEST_F(ReduceFrame, Operands_StayAsTheyWere) {
  const Extents shapes[] = {{}, {0}, {7}, {3, 5}, {5, 1}, {2, 1, 2, 1, 2, 1}};
  for (const std::string& name : reductions)
    for (const Extents& extents : shapes) {
      const TestArray array = random_array(Kind::float64, extents, 3);
      const Value operand = to_host(ctx(), array);
      const void* container = container_address(operand);
      call(name, {operand});
      EXPECT_EQ(from_host(operand), array) << name;
      EXPECT_EQ(container_address(operand), container) << name;
      EXPECT_EQ(hvm::references(hvm::object_of(operand.record())), 1u) << name;
    }
}

TEST_F(ReduceFrame, IntoTheOperandsOwnRecord_TheNumberReplacesTheArray) {
  for (const std::string& name : reductions) {
    Value operand = doubles({5});
    const Value expected = call(name, {operand}).result;
    EXPECT_EQ(Module::loaded().entry(name)(ctx(), operand.address(), 1, operand.address()), 1);
    EXPECT_EQ(operand.tag(), expected.tag()) << name;
    EXPECT_EQ(std::memcmp(operand.record().payload, expected.record().payload, 8), 0) << name;
  }
}

// ---- Shapes whose product is not the number of stored elements

TEST_F(ReduceFrame, ExtentsBeyondTheStorage_AreOutOfMemoryWhereTheyAreFollowed) {
  for (const char* name : {"xprod", "xmean", "xvariance", "xstddev", "xtrapz", "xcount_nonzero"})
    for (const auto& [first, second] : {std::pair{-2, -3}, {-1, -6}, {-6, -1}}) {
      Value wrong = doubles({6});
      ASSERT_EQ(method(wrong, "reshape", {Value(first), Value(second)}).returned, 1);
      EXPECT_THROW(call(name, {wrong}), std::bad_alloc) << name;
    }
}

TEST_F(ReduceFrame, ExtentsBeyondTheStorage_DoNotMatterWhereTheStorageIsRead) {
  Value wrong = array_of<XTDouble>(ctx(), {6}, {1, 2, 3, 4, 5, 9});
  ASSERT_EQ(method(wrong, "reshape", {Value(-2), Value(-3)}).returned, 1);
  EXPECT_EQ(number<double>("xsum", wrong), 24.0);
  EXPECT_EQ(number<double>("xamin", wrong), 1.0);
  EXPECT_EQ(number<double>("xamax", wrong), 9.0);
  EXPECT_EQ(number<double>("xmedian", wrong), 3.5);
}

TEST_F(ReduceFrame, ExtentsOverAnEmptyStorage_GiveTheEmptyAnswers) {
  // 65536 to the fourth wraps to 0.
  Value wrong = array_of<XTDouble>(ctx(), {0}, {});
  ASSERT_EQ(method(wrong, "reshape", {Value(65536), Value(65536), Value(65536), Value(65536)}).returned, 1);
  EXPECT_EQ(number<double>("xsum", wrong), 0.0);
  EXPECT_EQ(number<double>("xprod", wrong), 1.0);
  EXPECT_EQ(number<double>("xamin", wrong), std::numeric_limits<double>::max());
  EXPECT_EQ(number<double>("xamax", wrong), std::numeric_limits<double>::min());
  for (const char* name : {"xmean", "xvariance", "xstddev", "xmedian"})
    EXPECT_TRUE(std::isnan(number<double>(name, wrong))) << name;
  EXPECT_EQ(number<double>("xtrapz", wrong), 0.0);
  EXPECT_EQ(number<std::int64_t>("xcount_nonzero", wrong), 0);
}

// ---- Memory

/// The C++ allocations of one call.
class Cost : public ReduceFrame {
 protected:
  std::int64_t cost(const char* name, const Value& operand) const {
    const EntryFunction function = Module::loaded().entry(name);
    std::vector<Value> args = {operand};
    Value result;
    const auto before = allocations();
    const auto host = hvm::allocation_count();
    EXPECT_EQ(function(ctx(), hvm::records_of(args), 1, result.address()), 1);
    EXPECT_EQ(allocations().alive, before.alive) << name;
    EXPECT_EQ(hvm::allocation_count(), host) << name;
    return allocations().made - before.made;
  }
};

TEST_F(Cost, OfAScan_IsNone) {
  for (const Extents& extents : {Extents{10}, Extents{100000}, Extents{5, 1}, Extents{2, 2, 2, 2, 2, 2}, Extents{0}})
    for (const char* name : {"xsum", "xamin", "xamax", "xtrapz", "xcount_nonzero"})
      EXPECT_EQ(cost(name, doubles(extents)), 0) << name;
}

TEST_F(Cost, OfAnOrderedFold_DoesNotGrowWithTheElements) {
  for (const char* name : {"xprod", "xmean", "xvariance", "xstddev"}) {
    EXPECT_EQ(cost(name, doubles({100000})), 0) << name;
    EXPECT_LE(cost(name, doubles({2, 2, 2, 2})), 6) << name;
    EXPECT_EQ(cost(name, doubles({100, 20, 10, 5})), cost(name, doubles({2, 2, 2, 2}))) << name;
  }
}

TEST_F(Cost, OfAMedian_IsACopyOrLess) {
  for (const Extents& extents : {Extents{10}, Extents{100, 101}, Extents{100000}})
    EXPECT_LE(cost("xmedian", doubles(extents)), 5);
}

}  // namespace
}  // namespace arrayfold::test
