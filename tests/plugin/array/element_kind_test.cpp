// array/element_kind_test.cpp: the rows of the kinds and the table of dtype names

#include "array/element_kind.hpp"

#include <type_traits>

#include <gtest/gtest.h>

namespace arrayfold {
namespace {

template <class Kind, class Element>
void expect_row(int code, const char* dtype, const char* type_name) {
  EXPECT_TRUE((std::is_same_v<typename Kind::element, Element>)) << dtype;
  EXPECT_TRUE(std::is_empty_v<Kind>);
  EXPECT_EQ(static_cast<int>(Kind::code), code);
  EXPECT_STREQ(Kind::dtype, dtype);
  EXPECT_STREQ(Kind::type_name, type_name);
}

TEST(ElementKinds, HaveTheirCodesNamesAndElements) {
  expect_row<XTBool, bool>(1, "bool", "$xboolarray");
  expect_row<XTInt, std::int32_t>(2, "int", "$xintarray");
  expect_row<XTInt64, std::int64_t>(3, "int64", "$xint64array");
  expect_row<XTFloat, float>(4, "float", "$xfloatarray");
  expect_row<XTDouble, double>(5, "double", "$xdoublearray");
}

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
}  // namespace arrayfold
