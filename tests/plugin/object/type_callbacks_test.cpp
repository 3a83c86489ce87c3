// object/type_callbacks_test.cpp: create, destroy, and how method and operator find their array

#include "support/allocations.hpp"
#include "support/containers.hpp"

namespace arrayfold::test {
namespace {

constexpr const char* registered_names[] = {"$xboolarray", "$xintarray", "$xint64array", "$xdoublearray"};

class TypeCallbacks : public ModuleTest {
 protected:
  static hvm::TypeCallbacks of(const char* type) { return hvm::callbacks_of(hvm::type_named(type)); }

  bool shape_of(HostValue* self) const {
    Value result;
    return of("$xintarray").method(ctx(), self, "shape", nullptr, 0, result.address(), 0) != 0;
  }
};

TEST_F(TypeCallbacks, Create_MakesAnObjectWithoutArray) {
  for (const char* type : registered_names) {
    void* content = of(type).create();
    ASSERT_NE(content, nullptr) << type;
    // The four instantiations are alike in size: a virtual table and the owner of the array.
    EXPECT_EQ(static_cast<XTObject<ArrayOf<XTInt>>*>(content)->array.get(), nullptr);
    of(type).destroy(ctx(), content);
  }
}

TEST_F(TypeCallbacks, Destroy_OfNull_DoesNothing) {
  for (const char* type : registered_names) {
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

TEST_F(TypeCallbacks, Method_OfAnObjectWithoutContent_ReturnsFalse) {
  HostAny any{};
  Value value = raw(ValueTag::object);
  EXPECT_FALSE(shape_of(value.address()));  // not even an object behind the tag
  store<HostAny*>(value.record().payload, &any);
  EXPECT_FALSE(shape_of(value.address()));
  XTObject<ArrayOf<XTInt>> unfilled;
  any.content = &unfilled;
  EXPECT_FALSE(shape_of(value.address()));
}

TEST_F(TypeCallbacks, Operator_WithoutAnArray_ReturnsFalse) {
  Value number(1), nil;
  HostValue* const operands[] = {nullptr, number.address(), nil.address()};
  for (const char* type : registered_names)
    for (HostValue* left : operands)
      for (HostValue* right : operands) {
        const Answer answer = apply(type, 95, left, right);
        EXPECT_EQ(answer.returned, 0);
        EXPECT_TRUE(answer.untouched);
        EXPECT_TRUE(answer.operations.empty());
      }
}

TEST_F(TypeCallbacks, Operator_WithoutAnArrayOnTheLeft_TakesTheRightOne) {
  Value array = array_of<XTInt>(ctx(), {2}, {7, 8}), number(5);
  const Answer answer = apply("$xintarray", 96, number.address(), array.address());
  EXPECT_EQ(answer.returned, 1);
  EXPECT_EQ(elements_of<XTInt>(answer.result), (std::vector<int>{2, 3}));
  for (const int opcode : {81, 83, 86, 95, 99, 101}) {
    expect_no_result(apply("$xintarray", opcode, nullptr, array.address()), 0);
  }
}

TEST_F(TypeCallbacks, Operator_OfTwoKinds_IsTheLeftOnes) {
  // The remainder of doubles and any numeric array returns no value; that of integers and doubles returns false.
  Value doubles = array_of<XTDouble>(ctx(), {1}, {1.0}), integers = array_of<XTInt>(ctx(), {1}, {1});
  EXPECT_EQ(apply("$xdoublearray", 99, doubles.address(), integers.address()).returned, 1);
  EXPECT_EQ(apply("$xintarray", 99, integers.address(), doubles.address()).returned, 0);
}

TEST_F(TypeCallbacks, Operator_WithAnEmptyObjectOnTheLeft_TakesTheRightOneAndReturnsFalse) {
  HostAny any{};
  for (const char* type : registered_names) {
    any.manager = hvm::type_named(type);
    Value empty = raw(ValueTag::object), without_object = raw(ValueTag::object);
    store<HostAny*>(empty.record().payload, &any);
    Value rights[] = {array_of<XTBool>(ctx(), {1}, {true}), array_of<XTInt>(ctx(), {1}, {1}),
                      array_of<XTInt64>(ctx(), {1}, {1}), array_of<XTDouble>(ctx(), {1}, {1.0})};
    for (Value& right : rights)
      for (HostValue* left : {empty.address(), without_object.address()})
        for (const int opcode : {81, 83, 86, 95, 96, 97, 98, 99, 101, 36865, 36866}) {
          const Answer answer = apply(type_of(right).c_str(), opcode, left, right.address());
          EXPECT_EQ(answer.returned, 0) << opcode;
          EXPECT_TRUE(answer.untouched) << opcode;
          EXPECT_EQ(apply_into(right.address(), type_of(right).c_str(), opcode, left, right.address()).returned, 0);
        }
    EXPECT_EQ(apply("$xintarray", 95, empty.address(), rights[1].address()).operations,
              (std::vector<std::string>{"GetAny left"}));
  }
}

TEST_F(TypeCallbacks, Operator_WithAnUnfilledObjectOnTheLeft_ReturnsFalse) {
  HostAny any{};
  XTObject<ArrayOf<XTInt>> unfilled;
  any.manager = hvm::type_named("$xintarray");
  any.content = &unfilled;
  Value left = raw(ValueTag::object), right = array_of<XTInt>(ctx(), {1}, {1});
  store<HostAny*>(left.record().payload, &any);
  for (const int opcode : {81, 86, 95, 99, 101}) {
    EXPECT_EQ(apply("$xintarray", opcode, left.address(), right.address()).returned, 0);
    EXPECT_EQ(apply("$xintarray", opcode, right.address(), left.address()).returned, 0);
  }
}

TEST_F(TypeCallbacks, Create_OutOfMemory_IsNull) {
  for (const char* type : registered_names) {
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
