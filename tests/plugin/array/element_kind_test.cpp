// array/element_kind_test.cpp: the rows of the kinds and the table of dtype names

#include "array/element_kind.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/module_test.hpp"
#include "support/same.hpp"

namespace arrayfold::test {
namespace {

template <class Row, class Element>
void expect_row(int code, const char* dtype, const char* type_name) {
  EXPECT_TRUE((std::is_same_v<typename Row::element, Element>)) << dtype;
  EXPECT_TRUE(std::is_empty_v<Row>);
  EXPECT_EQ(static_cast<int>(Row::code), code);
  EXPECT_STREQ(Row::dtype, dtype);
  EXPECT_STREQ(Row::type_name, type_name);
}

TEST(ElementKinds, HaveTheirCodesNamesAndElements) {
  expect_row<XTBool, bool>(1, "bool", "$xboolarray");
  expect_row<XTInt, std::int32_t>(2, "int", "$xintarray");
  expect_row<XTInt64, std::int64_t>(3, "int64", "$xint64array");
  expect_row<XTFloat, float>(4, "float", "$xfloatarray");
  expect_row<XTDouble, double>(5, "double", "$xdoublearray");
}

template <class Row, class Stored, class Literal>
void expect_storage() {
  EXPECT_TRUE((std::is_same_v<typename Row::stored, Stored>)) << Row::dtype;
  EXPECT_TRUE((std::is_same_v<StoredElement<Row>, typename Stored::element>)) << Row::dtype;
  EXPECT_TRUE((std::is_same_v<typename Row::literal, Literal>)) << Row::dtype;
}

TEST(ElementKinds, Required_FloatsAreStoredAndWrittenAsDoubles_AndOthersAsThemselves) {
  expect_storage<XTBool, XTBool, bool>();
  expect_storage<XTInt, XTInt, std::int32_t>();
  expect_storage<XTInt64, XTInt64, std::int64_t>();
  expect_storage<XTFloat, XTDouble, double>();
  expect_storage<XTDouble, XTDouble, double>();
}

TEST(ElementKinds, HaveTheirMessages) {
  EXPECT_STREQ(XTBool::message, "初始化数组类型不对，必须是bool类型");
  EXPECT_STREQ(XTInt::message, "初始化数据数组不对，必须是int类型");
  EXPECT_STREQ(XTInt64::message, "初始化数据数组不对，必须是int64类型");
  EXPECT_STREQ(XTFloat::message, "初始化数据数组不对，必须是float类型");
  EXPECT_STREQ(XTDouble::message, "初始化数据数组不对，必须是double类型");
}

TEST(ElementKinds, ThatHaveNoRow_AreTakenForNoOtherKind) {
  for (const int code : {0, 6, -1}) {
    const auto kind = static_cast<ElementKind>(code);
    EXPECT_THROW(dtype_of(kind), std::invalid_argument) << code;
    EXPECT_THROW(type_name_of(kind), std::invalid_argument) << code;
    EXPECT_THROW(TestArray(kind, {1}, {1}), std::invalid_argument) << code;
    EXPECT_THROW(rounding_of(kind), std::invalid_argument) << code;
  }
  EXPECT_THROW(rounding_of(ElementKind::boolean), std::invalid_argument);
}

// ---- Elements and numbers of the host

class ElementsOfTheHost : public ModuleTest {
 protected:
  /// The element that a kind reads in a number, by the one operation named.
  template <class Row>
  typename Row::element read(Value number, const std::string& operation) const {
    hvm::record_calls(true);
    const auto element = Row::read(number.address());
    hvm::record_calls(false);
    EXPECT_EQ(described(hvm::recorded_calls(), number.address(), 1, nullptr), Words{operation + " 0"}) << Row::dtype;
    return element;
  }

  /// The number that an element is given as, by the one operation named.
  template <class Row>
  Value given(const typename Row::element& element, const std::string& operation) const {
    Value number;
    hvm::record_calls(true);
    Row::give(ctx(), number.address(), &element);
    hvm::record_calls(false);
    EXPECT_EQ(described(hvm::recorded_calls(), nullptr, 0, number.address()), Words{operation + " result"})
        << Row::dtype;
    return number;
  }

  /// The tag and the payload are those of the other number.
  static void expect_number(const Value& found, const Value& expected) {
    EXPECT_EQ(found.tag(), expected.tag());
    EXPECT_EQ(std::memcmp(found.record().payload, expected.record().payload, 8), 0);
  }
};

TEST_F(ElementsOfTheHost, AreReadByTheOperationOfTheirKind) {
  EXPECT_TRUE(read<XTBool>(Value(2), "AsBool"));
  EXPECT_TRUE(read<XTBool>(Value(0.5), "AsBool"));
  EXPECT_FALSE(read<XTBool>(Value(0), "AsBool"));
  EXPECT_EQ(read<XTInt>(Value(-7), "AsInt"), -7);
  EXPECT_EQ(read<XTInt>(Value(2.9), "AsInt"), 2);
  EXPECT_EQ(read<XTInt64>(Value(std::int64_t{1} << 40 | 1), "AsInt64"), std::int64_t{1} << 40 | 1);
  EXPECT_EQ(read<XTInt64>(Value(-2.9), "AsInt64"), -2);
  EXPECT_EQ(read<XTFloat>(Value(0.1), "AsDouble"), 0.1f);
  EXPECT_EQ(read<XTFloat>(Value(16777217), "AsDouble"), 16777216.0f);
  EXPECT_EQ(read<XTDouble>(Value(0.1), "AsDouble"), 0.1);
  EXPECT_EQ(read<XTDouble>(Value(16777217), "AsDouble"), 16777217.0);
}

TEST_F(ElementsOfTheHost, AreGivenByTheOperationOfTheirKind) {
  expect_number(given<XTBool>(true, "SetInt"), Value(1));
  expect_number(given<XTBool>(false, "SetInt"), Value(0));
  expect_number(given<XTInt>(INT32_MIN, "SetInt"), Value(INT32_MIN));
  expect_number(given<XTInt64>(INT64_MIN, "SetInt64"), Value(std::int64_t{INT64_MIN}));
  expect_number(given<XTFloat>(0.1f, "SetReal"), Value(static_cast<double>(0.1f)));
  expect_number(given<XTDouble>(0.1, "SetReal"), Value(0.1));
}

TEST_F(ElementsOfTheHost, Required_ATruthValue_IsGivenAsItsStoredByte) {
  bool truth = false;
  store<std::uint8_t>(&truth, 200);
  expect_number(given<XTBool>(truth, "SetInt"), Value(200));
}

// ---- Elements from floating-point numbers

TEST(ElementKinds, MakeElementsOfFloatingPointNumbers) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN(), infinity = std::numeric_limits<double>::infinity();
  for (const double x : {1.0, -0.25, 5e-324, infinity, nan}) EXPECT_TRUE(XTBool::from_double(x)) << x;
  for (const double zero : {0.0, -0.0}) EXPECT_FALSE(XTBool::from_double(zero)) << zero;

  EXPECT_EQ(XTInt::from_double(2147483647.9), INT32_MAX);
  EXPECT_EQ(XTInt::from_double(-2.9), -2);
  for (const double x : {2147483648.0, -2147483649.0, infinity, -infinity, nan})
    EXPECT_EQ(XTInt::from_double(x), INT32_MIN) << x;

  EXPECT_EQ(XTInt64::from_double(4503599627370495.5), 4503599627370495);
  EXPECT_EQ(XTInt64::from_double(-2.9), -2);
  for (const double x : {0x1p63, -0x1p64, infinity, -infinity, nan}) EXPECT_EQ(XTInt64::from_double(x), INT64_MIN) << x;

  EXPECT_EQ(XTFloat::from_double(0.1), 0.1f);
  EXPECT_EQ(XTFloat::from_double(1e300), std::numeric_limits<float>::infinity());
  EXPECT_TRUE(same(XTFloat::from_double(-1e-300), -0.0f));
  EXPECT_TRUE(std::isnan(XTFloat::from_double(nan)));

  for (const double x : {0.1, -0.0, 5e-324, 1e300, -infinity, nan}) EXPECT_TRUE(same(XTDouble::from_double(x), x)) << x;
}

// ---- The names of the kinds

TEST(DtypeTable, HasTheFiveNamesAndTheirCodes) {
  EXPECT_EQ(dtype_table.size(), 5u);
  EXPECT_EQ(dtype_table.at("bool"), ElementKind::boolean);
  EXPECT_EQ(dtype_table.at("int"), ElementKind::int32);
  EXPECT_EQ(dtype_table.at("int64"), ElementKind::int64);
  EXPECT_EQ(dtype_table.at("float"), ElementKind::float32);
  EXPECT_EQ(dtype_table.at("double"), ElementKind::float64);
  EXPECT_EQ(dtype_table.max_load_factor(), 1.0f);
}

TEST(DtypeTable, LooksUpExactNames) {
  for (const char* name : {"", "Double", "DOUBLE", "double ", "doubl", "complex", "@", "@@", "int32", "float64"})
    EXPECT_EQ(dtype_table.count(name), 0u) << name;
}

}  // namespace
}  // namespace arrayfold::test
