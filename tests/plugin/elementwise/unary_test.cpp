// elementwise/unary_test.cpp: kinds, results, failures and shapes of the 26 functions of one array

#include <cmath>
#include <limits>

#include "functions.hpp"

namespace arrayfold::test {
namespace {

using Extents64 = std::vector<std::int64_t>;

constexpr auto smallest = std::numeric_limits<std::int32_t>::min();
constexpr auto smallest64 = std::numeric_limits<std::int64_t>::min();

class Unary : public ModuleTest {
 protected:
  /// The elements of a result that is a double array, and of no other type.
  std::vector<double> doubles(const std::string& name, const Value& operand) const {
    const Answer answer = call(name, {operand});
    EXPECT_EQ(answer.returned, 1) << name;
    EXPECT_EQ(type_of(answer.result), "$xdoublearray") << name;
    return elements_of<XTDouble>(answer.result);
  }

  /// An integer operand of `Kind` gives what converting, wrapping, keeping or knowing gives.
  template <class Kind>
  void expect_integers(const Function& function, const std::vector<typename Kind::element>& elements) const;

  /// An operand of each extent list, elements counted up from 1.
  Value counted(const std::vector<std::size_t>& extents) const {
    std::size_t count = 1;
    for (const std::size_t extent : extents) count *= extent;
    std::vector<double> elements(count);
    for (std::size_t i = 0; i < count; ++i) elements[i] = 1 + static_cast<double>(i) / 16;
    return array_of<XTDouble>(ctx(), extents, elements);
  }
};

template <class Kind>
void Unary::expect_integers(const Function& function, const std::vector<typename Kind::element>& elements) const {
  using Unsigned = std::make_unsigned_t<typename Kind::element>;
  const Value operand = array_of<Kind>(ctx(), {elements.size()}, elements);
  if (function.integers == Integers::no_value)
    return expect_no_result(call(function.name, {operand}), 1, function.name);
  if (function.integers == Integers::kept) {
    const Answer answer = call(function.name, {operand});
    EXPECT_EQ(type_of(answer.result), Kind::type_name);
    const auto kept = elements_of<Kind>(answer.result);
    for (std::size_t i = 0; i < kept.size(); ++i)
      EXPECT_EQ(kept[i], elements[i] == std::numeric_limits<typename Kind::element>::min() ? elements[i]
                                                                                           : std::abs(elements[i]));
    return;
  }
  const auto values = doubles(function.name, operand);
  ASSERT_EQ(values.size(), elements.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto x = static_cast<double>(elements[i]);
    const auto bits = static_cast<Unsigned>(elements[i]);
    const auto wrapped = static_cast<typename Kind::element>(
        std::string(function.name) == "xcube" ? static_cast<Unsigned>(bits * bits * bits) : bits * bits);
    if (function.integers == Integers::own_width)
      EXPECT_EQ(values[i], static_cast<double>(wrapped)) << function.name << " " << elements[i];
    else if (function.closeness == Closeness::same)
      EXPECT_TRUE(same(values[i], function.of_double(x))) << function.name << " " << elements[i];
    else
      EXPECT_LE(steps_between(values[i], function.of_double(x)), 4u) << function.name << " " << elements[i];
  }
}

TEST_F(Unary, Table_NamesAllFunctionsOfOneArray) {
  EXPECT_EQ(functions().size(), 26u);
  for (const auto& function : functions()) EXPECT_NE(Module::loaded().entry(function.name), nullptr);
}

// ---- Kinds

TEST_F(Unary, Doubles_GiveDoubles) {
  for (const auto& function : functions()) {
    const auto values = doubles(function.name, array_of<XTDouble>(ctx(), {3}, {0.25, -0.5, 2}));
    for (std::size_t i = 0; i < 3; ++i)
      EXPECT_LE(steps_between(values[i], function.of_double(std::vector{0.25, -0.5, 2.0}[i])), 4u) << function.name;
  }
}

TEST_F(Unary, Integers_AreConvertedFirstButWhereTheirWidthCounts) {
  for (const auto& function : functions())
    expect_integers<XTInt>(function, {0, 1, -1, 2, -7, 20, 100, 170, 1000, 46340, 46341, -46341, 1290, 1291, 2097151,
                                      smallest, smallest + 1, std::numeric_limits<std::int32_t>::max()});
}

TEST_F(Unary, Integers64_AreConvertedFirstButWhereTheirWidthCounts) {
  for (const auto& function : functions())
    expect_integers<XTInt64>(
        function, {0, 1, -1, 2, -7, 171, 2097151, 2097152, 3037000499, 3037000500, -3037000500, 9007199254740993,
                   smallest64, smallest64 + 1, std::numeric_limits<std::int64_t>::max()});
}

TEST_F(Unary, Integers_InLongArrays_EqualTheSameDoubles) {
  std::vector<std::int32_t> ints(1500);
  std::vector<double> reals(1500);
  for (int i = 0; i < 1500; ++i) reals[static_cast<std::size_t>(i)] = ints[static_cast<std::size_t>(i)] = i - 700;
  const std::vector<std::int64_t> int64s(ints.begin(), ints.end());
  for (const auto& function : functions()) {
    if (function.integers != Integers::converted) continue;
    const auto expected = doubles(function.name, array_of<XTDouble>(ctx(), {1500}, reals));
    const auto of_ints = doubles(function.name, array_of<XTInt>(ctx(), {1500}, ints));
    const auto of_int64s = doubles(function.name, array_of<XTInt64>(ctx(), {1500}, int64s));
    for (std::size_t i = 0; i < 1500; ++i) {
      EXPECT_TRUE(same(of_ints[i], expected[i])) << function.name << reals[i];
      EXPECT_TRUE(same(of_int64s[i], expected[i])) << function.name << reals[i];
    }
  }
}

TEST_F(Unary, Required_XsquareOf46341_WrapsIn32Bits) {
  EXPECT_EQ(doubles("xsquare", array_of<XTInt>(ctx(), {2}, {46340, 46341})),
            (std::vector<double>{2147395600.0, -2147479015.0}));
  EXPECT_EQ(doubles("xsquare", array_of<XTInt64>(ctx(), {1}, {46341})), std::vector<double>{2147488281.0});
}

TEST_F(Unary, Required_XabsOfTheSmallestInteger_IsItself) {
  for (const std::size_t count : {1u, 7u, 8u, 33u}) {
    const Answer ints = call("xabs", {array_of<XTInt>(ctx(), {count}, std::vector<std::int32_t>(count, smallest))});
    EXPECT_EQ(type_of(ints.result), "$xintarray");
    EXPECT_EQ(elements_of<XTInt>(ints.result), std::vector<std::int32_t>(count, smallest));
    const Answer longs =
        call("xabs", {array_of<XTInt64>(ctx(), {count}, std::vector<std::int64_t>(count, smallest64))});
    EXPECT_EQ(type_of(longs.result), "$xint64array");
    EXPECT_EQ(elements_of<XTInt64>(longs.result), std::vector<std::int64_t>(count, smallest64));
  }
}

TEST_F(Unary, Required_XsignOfIntegers_IsHandledWithoutResult) {
  expect_no_result(call("xsign", {array_of<XTInt>(ctx(), {2}, {1, -1})}), 1, "int");
  expect_no_result(call("xsign", {array_of<XTInt64>(ctx(), {2}, {1, -1})}), 1, "int64");
}

TEST_F(Unary, Required_Classifiers_ReadNoInteger) {
  for (const auto& [name, known] : {std::pair{"xisnan", 0.0}, {"xisinf", 0.0}, {"xisfinite", 1.0}}) {
    Value ints = array_of<XTInt>(ctx(), {2, 3}, {1, 2, 3, 4, 5, 6});
    const Answer answer = call(name, {ints});
    EXPECT_EQ(elements_of<XTDouble>(answer.result), std::vector<double>(6, known)) << name;
    EXPECT_EQ(type_of(answer.result), "$xdoublearray");
  }
}

TEST_F(Unary, Required_Bools_AreHandledWithoutResult) {
  for (const auto& function : functions())
    expect_no_result(call(function.name, {array_of<XTBool>(ctx(), {2}, {true, false})}), 1, function.name);
}

TEST_F(Unary, Required_ForeignObjects_AreHandledWithoutResult) {
  ForeignObject foreign;
  for (const auto& function : functions()) expect_no_result(call(function.name, {foreign.value()}), 1, function.name);
}

TEST_F(Unary, Required_Floats_AreComputedIn32BitsAndGiveDoubles) {
  std::vector<float> floats = {0.1f,   -0.1f, 1.5f, 2.75f, 10.f, -10.f,    88.f,
                               1e-40f, 1e30f, -0.f, 0.f,   NAN,  INFINITY, -INFINITY};
  for (int i = 0; i < 50; ++i) floats.push_back(static_cast<float>(i) * 0.37f - 9);
  FloatObject operand({2, floats.size() / 2}, floats);
  for (const auto& function : functions()) {
    if (function.integers == Integers::kept || function.integers == Integers::no_value) continue;
    const auto values = doubles(function.name, operand.value());
    ASSERT_EQ(values.size(), floats.size());
    for (std::size_t i = 0; i < floats.size(); ++i)
      EXPECT_TRUE(same(values[i], function.of_float(floats[i]))) << function.name << " of " << floats[i];
  }
}

TEST_F(Unary, Required_XabsAndXsignOfFloats_GiveDoublesUnderTheFloatName) {
  const std::vector<float> floats = {-0.1f, 0.1f, -0.f, 0.f, NAN, INFINITY, -INFINITY, -1e-40f, -3e38f};
  FloatObject operand({floats.size()}, floats);
  const FloatNameRegistered registered;
  for (const auto& function : {functions()[0], functions()[1]}) {
    const Answer answer = call(function.name, {operand.value()});
    EXPECT_EQ(answer.returned, 1);
    const auto values = FloatNameRegistered::elements(answer.result);
    ASSERT_EQ(values.size(), floats.size());
    for (std::size_t i = 0; i < floats.size(); ++i)
      EXPECT_TRUE(same(values[i], function.of_float(floats[i]))) << function.name << " of " << floats[i];
  }
}

TEST_F(Unary, Required_XabsAndXsignOfFloats_TellTheHostOfNullWhereItKnowsNoSuchName) {
  FloatObject operand({2}, {-1.f, 2.f});
  for (const char* name : {"xabs", "xsign"}) {
    const Answer answer = call(name, {operand.value()});
    EXPECT_EQ(answer.returned, 1) << name;
    EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0", "NewAny", "SetTypeAny result"})) << name;
    EXPECT_EQ(type_of(answer.result), "") << name;
  }
}

// ---- Failures, and what the host is asked

TEST_F(Unary, WithoutArguments_AllFail) {
  for (const auto& function : functions())
    for (const int nargs : {0, -1}) {
      const Answer answer = call_with_count(function.name, {counted({2})}, nargs);
      expect_no_result(answer, 0, function.name);
      EXPECT_EQ(answer.operations, Words{});
    }
}

TEST_F(Unary, OfValuesOfEveryOtherTag_AllFail) {
  for (const auto& function : functions())
    for (int tag = 0; tag < 256; ++tag) {
      if (tag == static_cast<int>(ValueTag::object)) continue;
      const Answer answer = call(function.name, {raw(static_cast<ValueTag>(tag))});
      expect_no_result(answer, 0, function.name + std::string(" of tag ") + std::to_string(tag));
      EXPECT_EQ(answer.operations, Words{"AnyCheck 0"});
    }
}

TEST_F(Unary, FurtherArguments_AreNotReadAndNotChecked) {
  for (const auto& function : functions()) {
    const Answer answer = call(function.name, {counted({2}), raw(static_cast<ValueTag>(77)), Value("text")});
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0", "NewAny", "SetTypeAny result"})) << function.name;
  }
}

TEST_F(Unary, HostOperations_StandInOrderForEveryKind) {
  const Words given = {"AnyCheck 0", "GetAny 0", "NewAny", "SetTypeAny result"};
  const Words unserved = {"AnyCheck 0", "GetAny 0"};
  for (const auto& function : functions()) {
    const bool integers = function.integers != Integers::no_value;
    EXPECT_EQ(call(function.name, {counted({3})}).operations, given) << function.name;
    EXPECT_EQ(call(function.name, {array_of<XTInt>(ctx(), {1}, {1})}).operations, integers ? given : unserved);
    EXPECT_EQ(call(function.name, {array_of<XTInt64>(ctx(), {1}, {1})}).operations, integers ? given : unserved);
    EXPECT_EQ(call(function.name, {array_of<XTBool>(ctx(), {1}, {true})}).operations, unserved);
  }
}

TEST_F(Unary, WhenTheHostHasNoObject_ItGetsNullAndNothingLeaks) {
  const Value operand = counted({5});
  for (const auto& function : functions()) {
    hvm::withhold_objects(true);
    const Answer answer = call(function.name, {operand});
    hvm::withhold_objects(false);
    EXPECT_EQ(answer.returned, 1) << function.name;
    EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0", "NewAny", "SetTypeAny result"})) << function.name;
    EXPECT_EQ(type_of(answer.result), "") << function.name;
  }
}

TEST_F(Unary, Results_AreInTheState200) {
  for (const auto& function : functions()) {
    const Answer answer = call(function.name, {counted({2})});
    EXPECT_EQ(hvm::object_of(answer.result.record())->state, 200u) << function.name;
  }
}

TEST_F(Unary, IntoTheOperandsOwnRecord_TheResultReplacesIt) {
  for (const auto& function : functions()) {
    Value operand = counted({3});
    const Value kept = operand;
    EXPECT_EQ(Module::loaded().entry(function.name)(ctx(), operand.address(), 1, operand.address()), 1);
    EXPECT_NE(hvm::object_of(operand.record()), hvm::object_of(kept.record())) << function.name;
    EXPECT_LE(steps_between(elements_of<XTDouble>(operand)[0], function.of_double(1)), 4u);
  }
}

// ---- Shapes

TEST_F(Unary, EveryShape_IsTheResults) {
  const std::vector<std::vector<std::size_t>> shapes = {{},
                                                        {1},
                                                        {0},
                                                        {7},
                                                        {0, 3},
                                                        {3, 0, 2},
                                                        {1, 5},
                                                        {5, 1},
                                                        {2, 3, 4},
                                                        {2, 1, 2, 1, 2, 1, 2, 1, 2},
                                                        {1, 1, 1, 1, 1, 1, 1, 1, 1}};
  for (const auto& function : functions())
    for (const auto& extents : shapes) {
      const Value operand = counted(extents);
      const auto before = elements_of<XTDouble>(operand);
      const Answer answer = call(function.name, {operand});
      ASSERT_EQ(type_of(answer.result), "$xdoublearray") << function.name;
      EXPECT_EQ(from_host(answer.result).extents(), extents) << function.name;
      EXPECT_EQ(strides_of(answer.result), strides_of(operand)) << function.name;
      const auto values = elements_of<XTDouble>(answer.result);
      ASSERT_EQ(values.size(), before.size());
      for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_LE(steps_between(values[i], function.of_double(before[i])), 4u) << function.name;
      EXPECT_EQ(elements_of<XTDouble>(operand), before) << function.name << " changed its operand";
    }
}

TEST_F(Unary, ExtentsBeyondTheStorage_AreOutOfMemory) {
  for (const auto& function : functions())
    for (Value wrong : {counted({6}), array_of<XTInt>(ctx(), {6}, {1, 2, 3, 4, 5, 6}),
                        array_of<XTInt64>(ctx(), {6}, {1, 2, 3, 4, 5, 6})}) {
      if (function.integers == Integers::no_value && type_of(wrong) != "$xdoublearray") continue;
      ASSERT_EQ(method(wrong, "reshape", {Value(-2), Value(-3)}).returned, 1);
      EXPECT_THROW(call(function.name, {wrong}), std::bad_alloc) << function.name << " of " << type_of(wrong);
    }
}

using UnaryDeathTest = Unary;

TEST_F(UnaryDeathTest, AnObjectWithoutAnArray_EndsTheProcess) {
  ::testing::FLAGS_gtest_death_test_style = "fast";
  const Value empty = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  ASSERT_EQ(type_of(empty), "$xdoublearray");
  for (const auto& function : functions()) EXPECT_DEATH(call(function.name, {empty}), "") << function.name;
}

}  // namespace
}  // namespace arrayfold::test
