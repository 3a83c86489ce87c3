// array/boxing_test.cpp: boxing into host objects, and telling them apart

#include "array/boxing.hpp"

#include <cstring>

#include "support/hand_made.hpp"

namespace arrayfold::test {
namespace {

class Boxing : public ModuleTest {
 protected:
  template <class Kind>
  std::unique_ptr<ArrayOf<Kind>> new_array() const {
    auto array = std::make_unique<ArrayOf<Kind>>();
    array->array = std::make_shared<xarray_of<typename Kind::element>>(Shape{2});
    return array;
  }
};

TEST_F(Boxing, BoxArray_MovesTheArrayInAndWritesTheState) {
  auto array = new_array<XTInt>();
  const auto* inner = array.get();
  Value value = Value::object(box_array<XTInt>(ctx(), array));
  ASSERT_EQ(type_of(value), "$xintarray");
  EXPECT_EQ(array, nullptr);
  const HostAny* any = hvm::object_of(value.record());
  EXPECT_EQ(any->state, 200u);
  EXPECT_EQ(unbox_array<XTInt>(any), inner);
}

TEST_F(Boxing, BoxArray_OfEveryRegisteredKind_TakesItsType) {
  auto bools = new_array<XTBool>();
  auto int64s = new_array<XTInt64>();
  auto doubles = new_array<XTDouble>();
  EXPECT_EQ(type_of(Value::object(box_array<XTBool>(ctx(), bools))), "$xboolarray");
  EXPECT_EQ(type_of(Value::object(box_array<XTInt64>(ctx(), int64s))), "$xint64array");
  EXPECT_EQ(type_of(Value::object(box_array<XTDouble>(ctx(), doubles))), "$xdoublearray");
}

TEST_F(Boxing, BoxArray_WhenTheHostHasNoObject_LeavesTheArrayWithTheCaller) {
  auto array = new_array<XTInt>();
  hvm::withhold_objects(true);
  EXPECT_EQ(box_array<XTInt>(ctx(), array), nullptr);
  hvm::withhold_objects(false);
  EXPECT_NE(array, nullptr);
}

TEST_F(Boxing, Required_UnderTheFloatName_TheHostHasNoObject) {
  auto array = new_array<XTDouble>();
  EXPECT_EQ((box_array<XTFloat>(ctx(), array)), nullptr);
  EXPECT_NE(array, nullptr);
}

TEST_F(Boxing, HandOver_WithoutAnObject_PassesNullToTheHost) {
  Value result(5);
  hvm::record_calls(true);
  hand_over(XTFloat{}, ctx(), result.address(), new_array<XTDouble>());
  hvm::record_calls(false);
  const auto operations = described(hvm::recorded_calls(), nullptr, 0, result.address());
  EXPECT_EQ(operations, (std::vector<std::string>{"NewAny", "SetTypeAny result"}));
  EXPECT_TRUE(result.is_nil());
}

TEST_F(Boxing, UnboxArray_OfAnotherKind_IsNull) {
  const Value value = array_of<XTInt>(ctx(), {1}, {1});
  const HostAny* any = hvm::object_of(value.record());
  EXPECT_NE(unbox_array<XTInt>(any), nullptr);
  EXPECT_EQ(unbox_array<XTBool>(any), nullptr);
  EXPECT_EQ(unbox_array<XTInt64>(any), nullptr);
  EXPECT_EQ(unbox_array<XTFloat>(any), nullptr);
  EXPECT_EQ(unbox_array<XTDouble>(any), nullptr);
}

TEST_F(Boxing, UnboxArray_WithAnotherCopyOfTheName_MatchesByContent) {
  XTObject<ArrayOf<XTDouble>> content;
  content.array = new_array<XTDouble>();
  std::string copy = "$xdoublearray";
  const ForeignObject object(copy.c_str(), &content);
  ASSERT_NE(static_cast<const void*>(copy.c_str()), static_cast<const void*>(XTDouble::type_name));
  EXPECT_EQ(unbox_array<XTDouble>(object.object()), content.array.get());
}

TEST_F(Boxing, UnboxArray_OfNamesThatOnlyBeginAlike_IsNull) {
  XTObject<ArrayOf<XTInt>> content;
  content.array = new_array<XTInt>();
  for (const char* name : {"", "$", "$xint", "$xintarra", "$xintarray2", "$xintarray ", "$Xintarray", "xintarray"})
    EXPECT_EQ(unbox_array<XTInt>(ForeignObject(name, &content).object()), nullptr) << name;
}

TEST_F(Boxing, UnboxArray_OfAnObjectWithoutContent_IsNull) {
  EXPECT_EQ(unbox_array<XTInt>(ForeignObject("$xintarray", nullptr).object()), nullptr);
  XTObject<ArrayOf<XTInt>> empty;
  EXPECT_EQ(unbox_array<XTInt>(ForeignObject("$xintarray", &empty).object()), nullptr);
}

TEST_F(Boxing, UnboxNumeric_HoldsTheKindAtItsPlace) {
  const auto index_of = [](const Value& value) {
    const auto array = unbox_numeric(hvm::object_of(value.record()));
    return array ? static_cast<int>(array->index()) : -1;
  };
  EXPECT_EQ(index_of(array_of<XTInt>(ctx(), {1}, {1})), 0);
  EXPECT_EQ(index_of(array_of<XTInt64>(ctx(), {1}, {1})), 1);
  EXPECT_EQ(index_of(array_of<XTDouble>(ctx(), {1}, {1})), 3);
  EXPECT_EQ(index_of(array_of<XTBool>(ctx(), {1}, {true})), -1);

  const FloatObject floats({2}, {1, 2});
  const auto array = unbox_numeric(floats.object());
  ASSERT_TRUE(array.has_value());
  EXPECT_EQ(array->index(), 2u);
  EXPECT_FALSE(unbox_numeric(ForeignObject("$foreign", floats.object()->content).object()).has_value());
}

TEST_F(Boxing, ArrayRef_Valueless_ThrowsBadVariantAccess) {
  // An alternative of the same variant template whose making throws leaves it valueless.
  struct Throws {
    operator int() const { throw 1; }
  };
  xtl::variant<int, std::string> value = std::string("text");
  EXPECT_THROW(value.emplace<0>(Throws{}), int);
  try {
    xtl::visit([](const auto&) {}, value);
    FAIL() << "a valueless variant was visited";
  } catch (const mpark::bad_variant_access& error) {
    EXPECT_STREQ(error.what(), "bad_variant_access");
  }
}

TEST_F(Boxing, TheArrayIsSharedByTheStandardCount) {
  const Value value = array_of<XTInt>(ctx(), {1}, {1});
  EXPECT_EQ(unbox_array<XTInt>(hvm::object_of(value.record()))->array.use_count(), 1);
}

}  // namespace
}  // namespace arrayfold::test
