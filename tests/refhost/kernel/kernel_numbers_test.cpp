// refhost/kernel/kernel_numbers_test.cpp: numbers are read and written as the host promises

#include <cmath>
#include <limits>
#include <set>

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr auto least_int = std::numeric_limits<int>::min();
constexpr auto most_int = std::numeric_limits<int>::max();
constexpr auto least_int64 = std::numeric_limits<std::int64_t>::min();
constexpr auto most_int64 = std::numeric_limits<std::int64_t>::max();

using KernelNumbers = KernelTest;

TEST_F(KernelNumbers, NumberCheck_TakesTheThreeNumericTagsAlone) {
  const std::set<int> numeric = {0, 1, 20};
  for (int tag = 0; tag < 256; ++tag) {
    HostValue record = tagged(tag);
    EXPECT_EQ(HVM_NumberCheck(&record) != 0, numeric.count(tag) == 1) << "tag " << tag;
  }
  EXPECT_FALSE(HVM_NumberCheck(nullptr));
}

TEST_F(KernelNumbers, AsInt_OfReal_TruncatesSaturatesAndTakesNanAsZero) {
  const std::pair<double, int> rows[] = {{2.9, 2},
                                         {-2.9, -2},
                                         {-0.5, 0},
                                         {2147483647.9, most_int},
                                         {2147483648.0, most_int},
                                         {-2147483648.9, least_int},
                                         {-2147483649.0, least_int},
                                         {1e300, most_int},
                                         {infinity, most_int},
                                         {-infinity, least_int},
                                         {not_a_number, 0}};
  for (const auto& [x, expected] : rows) EXPECT_EQ(HVM_AsInt(Value(x).address()), expected) << x;
}

TEST_F(KernelNumbers, AsInt64_OfReal_TruncatesSaturatesAndTakesNanAsZero) {
  const std::pair<double, std::int64_t> rows[] = {{-2.9, -2},
                                                  {9007199254740993.0, 9007199254740992},
                                                  {9223372036854774784.0, 9223372036854774784},
                                                  {9223372036854775808.0, most_int64},
                                                  {-9223372036854775808.0, least_int64},
                                                  {-infinity, least_int64},
                                                  {infinity, most_int64},
                                                  {not_a_number, 0}};
  for (const auto& [x, expected] : rows) EXPECT_EQ(HVM_AsInt64(Value(x).address()), expected) << x;
}

TEST_F(KernelNumbers, AsInt_OfInteger64_TakesTheLowHalf) {
  EXPECT_EQ(HVM_AsInt(Value((std::int64_t{5} << 32) + 9).address()), 9);
  EXPECT_EQ(HVM_AsInt(Value(std::int64_t{0xFFFFFFFF}).address()), -1);
  EXPECT_EQ(HVM_AsInt(Value(most_int64).address()), -1);
}

TEST_F(KernelNumbers, Readings_OfIntegers_KeepTheValue) {
  for (const int x : {0, 1, -1, least_int, most_int}) {
    Value value(x);
    EXPECT_EQ(HVM_AsInt(value.address()), x);
    EXPECT_EQ(HVM_AsInt64(value.address()), x);
    EXPECT_EQ(HVM_AsDouble(value.address()), x);
  }
  EXPECT_EQ(HVM_AsInt64(Value(least_int64).address()), least_int64);
  EXPECT_EQ(HVM_AsDouble(Value(std::int64_t{1} << 60).address()), std::ldexp(1.0, 60));
}

TEST_F(KernelNumbers, AsDouble_OfReal_KeepsEveryBit) {
  EXPECT_EQ(HVM_AsDouble(Value(0.1).address()), 0.1);
  EXPECT_TRUE(std::signbit(HVM_AsDouble(Value(-0.0).address())));
  EXPECT_TRUE(std::isnan(HVM_AsDouble(Value(not_a_number).address())));
}

TEST_F(KernelNumbers, AsBool_IsTrueForAllButZero) {
  EXPECT_FALSE(HVM_AsBool(Value(0).address()));
  EXPECT_FALSE(HVM_AsBool(Value(0.0).address()));
  EXPECT_FALSE(HVM_AsBool(Value(-0.0).address()));
  EXPECT_FALSE(HVM_AsBool(Value(std::int64_t{0}).address()));
  EXPECT_TRUE(HVM_AsBool(Value(-1).address()));
  EXPECT_TRUE(HVM_AsBool(Value(0.25).address()));
  EXPECT_TRUE(HVM_AsBool(Value(not_a_number).address()));
  EXPECT_TRUE(HVM_AsBool(Value(std::int64_t{1} << 32).address()));
}

TEST_F(KernelNumbers, Readings_OfWhatIsNoNumber_GiveZero) {
  Value text("12"), table = Value::table(), nil;
  for (HostValue* value : {text.address(), table.address(), nil.address(), static_cast<HostValue*>(nullptr)}) {
    EXPECT_EQ(HVM_AsInt(value), 0);
    EXPECT_EQ(HVM_AsInt64(value), 0);
    EXPECT_EQ(HVM_AsDouble(value), 0.0);
    EXPECT_FALSE(HVM_AsBool(value));
  }
}

TEST_F(KernelNumbers, Setters_WriteTagAndPayload) {
  Value value;
  HVM_SetInt(ctx(), value.address(), -7);
  EXPECT_EQ(value.tag(), ValueTag::integer);
  EXPECT_EQ(load<std::int32_t>(value.record().payload), -7);
  HVM_SetInt64(ctx(), value.address(), least_int64);
  EXPECT_EQ(value.tag(), ValueTag::integer64);
  EXPECT_EQ(load<std::int64_t>(value.record().payload), least_int64);
  HVM_SetReal(ctx(), value.address(), 1.5);
  EXPECT_EQ(value.tag(), ValueTag::real);
  EXPECT_EQ(load<double>(value.record().payload), 1.5);
}

TEST_F(KernelNumbers, Setters_ReleaseWhatTheRecordHeld) {
  Value value("text");
  HVM_SetInt(ctx(), value.address(), 1);
  EXPECT_EQ(counts().strings, before_.strings);
  value = new_toy();
  HVM_SetReal(ctx(), value.address(), 1);
  EXPECT_EQ(Toy::live, 0);
  value = Value::table();
  HVM_SetInt64(ctx(), value.address(), 1);
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelNumbers, Setters_LeaveContentThatIsNotTheRecordsOwn) {
  Value owner("text");
  for (const Lifetime lifetime : {Lifetime::none, Lifetime::plain}) {
    HostValue borrowed = owner.record();
    borrowed.lifetime = lifetime;
    HVM_SetInt(ctx(), &borrowed, 1);
    EXPECT_EQ(HVM_AsInt(&borrowed), 1);
  }
  EXPECT_EQ(text_of(owner.record()), "text");
}

TEST_F(KernelNumbers, Setters_OfNull_DoNothing) {
  HVM_SetInt(ctx(), nullptr, 1);
  HVM_SetInt64(ctx(), nullptr, 1);
  HVM_SetReal(ctx(), nullptr, 1);
  EXPECT_EQ(counts(), before_);
}

}  // namespace
}  // namespace hvm::testing
