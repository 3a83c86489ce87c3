// object/type_callbacks_test.cpp: create, destroy, and how method and operator find their array

#include "support/allocations.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

constexpr const char* type_names[] = {"$xboolarray", "$xintarray", "$xint64array", "$xdoublearray"};

class TypeCallbacks : public ModuleTest {
 protected:
  static hvm::TypeCallbacks of(const char* type) { return hvm::callbacks_of(hvm::type_named(type)); }

  bool shape_of(HostValue* self) const {
    Value result;
    return of("$xintarray").method(ctx(), self, "shape", nullptr, 0, result.address(), 0) != 0;
  }
};

TEST_F(TypeCallbacks, Create_MakesAnObjectWithoutArray) {
  for (const char* type : type_names) {
    void* content = of(type).create();
    ASSERT_NE(content, nullptr) << type;
    // The four instantiations are alike in size: a virtual table and the owner of the array.
    EXPECT_EQ(static_cast<XTObject<ArrayOf<XTInt>>*>(content)->array.get(), nullptr);
    of(type).destroy(ctx(), content);
  }
}

TEST_F(TypeCallbacks, Destroy_OfNull_DoesNothing) {
  for (const char* type : type_names) {
    of(type).destroy(ctx(), nullptr);
    of(type).destroy(nullptr, nullptr);
  }
}

TEST_F(TypeCallbacks, Destroy_IgnoresTheContext) { of("$xintarray").destroy(nullptr, of("$xintarray").create()); }

TEST_F(TypeCallbacks, Destroy_EndsTheChainOfOwners) {
  std::weak_ptr<xarray_of<int>> container;
  {
    const Value value = array_of<XTInt>(ctx(), {1}, {1});
    container = unbox_array<XTInt>(hvm::object_of(value.record()))->array;
    EXPECT_FALSE(container.expired());
  }
  EXPECT_TRUE(container.expired());
}

TEST_F(TypeCallbacks, Method_ServesAnObjectOnly) {
  Value array = array_of<XTInt>(ctx(), {1}, {1});
  EXPECT_TRUE(shape_of(array.address()));
  EXPECT_FALSE(shape_of(nullptr));
  Value others[] = {Value(1), Value(2.5), Value("text"), Value::table(), Value(), raw(ValueTag::matrix)};
  for (Value& other : others) EXPECT_FALSE(shape_of(other.address()));
}

TEST_F(TypeCallbacks, Method_OfAnObjectWithoutContent_IsDeclined) {
  HostAny any{};
  Value value = raw(ValueTag::object);
  EXPECT_FALSE(shape_of(value.address()));  // not even an object behind the tag
  store<HostAny*>(value.record().payload, &any);
  EXPECT_FALSE(shape_of(value.address()));
  XTObject<ArrayOf<XTInt>> unfilled;
  any.content = &unfilled;
  EXPECT_FALSE(shape_of(value.address()));
}

TEST_F(TypeCallbacks, Operator_WithoutAnArrayOnEitherSide_IsDeclined) {
  Value number(1), nil;
  HostValue* const operands[] = {nullptr, number.address(), nil.address()};
  for (const char* type : type_names)
    for (HostValue* left : operands)
      for (HostValue* right : operands) {
        const Answer answer = apply(type, 95, left, right);
        EXPECT_EQ(answer.returned, 0);
        EXPECT_TRUE(answer.untouched);
        EXPECT_TRUE(answer.operations.empty());
      }
}

TEST_F(TypeCallbacks, Create_OutOfMemory_IsNull) {
  for (const char* type : type_names) {
    fail_allocation(1);
    void* content = of(type).create();
    const bool failed = allocation_has_failed();
    fail_allocation(0);
    EXPECT_TRUE(failed);
    EXPECT_EQ(content, nullptr) << type;
  }
}

}  // namespace
}  // namespace arrayfold::test
