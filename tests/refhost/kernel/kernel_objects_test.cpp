// refhost/kernel/kernel_objects_test.cpp: objects count their references, and types are known by name

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

using KernelObjects = KernelTest;

TEST_F(KernelObjects, NewAny_CallsCreateAndKeepsItsContent) {
  HostAny* any = HVM_NewAny(ctx(), Toy::name, 0, 0);
  ASSERT_NE(any, nullptr);
  EXPECT_EQ(*static_cast<int*>(any->content.get()), 7);
  EXPECT_EQ(any->manager.get(), type_named(Toy::name));
  EXPECT_EQ(references(any), 0u);
  Value::object(any);
}

TEST_F(KernelObjects, NewAny_OfAnEqualNameElsewhere_FindsTheType) {
  const std::string name = Toy::name;
  Value value = Value::object(ctx(), name.c_str());
  EXPECT_TRUE(value.is_object());
}

TEST_F(KernelObjects, NewAny_OfAnUnknownName_IsNull) {
  EXPECT_EQ(HVM_NewAny(ctx(), "$unknown", 0, 0), nullptr);
  EXPECT_EQ(HVM_NewAny(ctx(), nullptr, 0, 0), nullptr);
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelObjects, NewAny_WithoutContent_IsNull) {
  Toy::is_out_of_memory = true;
  EXPECT_EQ(HVM_NewAny(ctx(), Toy::name, 0, 0), nullptr);
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelObjects, NewAny_Withheld_IsNull) {
  withhold_objects(true);
  EXPECT_EQ(HVM_NewAny(ctx(), Toy::name, 0, 0), nullptr);
  EXPECT_TRUE(new_toy().is_nil());
  EXPECT_EQ(Toy::live, 0);
  withhold_objects(false);
  EXPECT_TRUE(new_toy().is_object());
}

TEST_F(KernelObjects, NewAny_NeedsOneAllocation) {
  const std::int64_t before = allocation_count();
  Value toy = new_toy();
  EXPECT_EQ(allocation_count() - before, 1);
}

TEST_F(KernelObjects, SetTypeAny_MakesTheRecordTheOwner) {
  Value value("held before");
  HostAny* any = HVM_NewAny(ctx(), Toy::name, 0, 0);
  HVM_SetTypeAny(ctx(), value.address(), any);
  EXPECT_EQ(value.tag(), ValueTag::object);
  EXPECT_EQ(HVM_GetAny(value.address()), any);
  EXPECT_EQ(references(any), 1u);
  EXPECT_EQ(counts().strings, before_.strings);
  value = Value();
  EXPECT_EQ(Toy::live, 0);
}

TEST_F(KernelObjects, SetTypeAny_OfNull_GivesNil) {
  Value value = new_toy();
  HVM_SetTypeAny(ctx(), value.address(), nullptr);
  EXPECT_TRUE(value.is_nil());
  EXPECT_EQ(Toy::live, 0);
}

TEST_F(KernelObjects, SetTypeAny_OfWhatTheRecordHolds_KeepsIt) {
  Value value = new_toy();
  HVM_SetTypeAny(ctx(), value.address(), HVM_GetAny(value.address()));
  EXPECT_EQ(Toy::live, 1);
  EXPECT_EQ(references(object_of(value.record())), 1u);
}

TEST_F(KernelObjects, SetTypeAny_OfNullRecord_EndsTheObject) {
  HVM_SetTypeAny(ctx(), nullptr, HVM_NewAny(ctx(), Toy::name, 0, 0));
  HVM_SetTypeAny(ctx(), nullptr, nullptr);
  EXPECT_EQ(Toy::live, 0);
}

TEST_F(KernelObjects, Checks_TakeObjectsAlone) {
  Value toy = new_toy(), number(5), table = Value::table();
  HostValue without_object = tagged(16);
  EXPECT_TRUE(HVM_AnyCheck(toy.address()));
  for (HostValue* value : {number.address(), table.address(), &without_object, static_cast<HostValue*>(nullptr)}) {
    EXPECT_FALSE(HVM_AnyCheck(value));
    EXPECT_EQ(HVM_GetAny(value), nullptr);
  }
}

TEST_F(KernelObjects, Objects_DieWithTheirLastReference) {
  Value a = new_toy();
  Value b = a;
  Value table = Value::table_of({a, b});
  EXPECT_EQ(references(object_of(a.record())), 4u);
  a = Value();
  b = Value();
  EXPECT_EQ(Toy::live, 1);
  table = Value();
  EXPECT_EQ(Toy::live, 0);
}

TEST_F(KernelObjects, Destroy_GetsTheContextOfTheRelease) {
  Context other;
  Value value = new_toy();
  HVM_FreeObjectContent(ctx(), value.address());
  EXPECT_EQ(Toy::last_context, ctx());
  value = new_toy();
  value = Value();
  EXPECT_EQ(Toy::last_context, other.handle());
}

TEST_F(KernelObjects, State_IsTheModulesToWrite) {
  Value value = new_toy();
  object_of(value.record())->state = 200;
  Value other = value;
  EXPECT_EQ(object_of(other.record())->state, 200u);
  EXPECT_EQ(references(object_of(other.record())), 2u);
}

TEST_F(KernelObjects, Managers_KeepTheNamePointerAndTheCallbacks) {
  const AnyMan* man = type_named(Toy::name);
  EXPECT_EQ(man->name.get(), static_cast<const char*>(Toy::name));
  EXPECT_STREQ(type_name_of(man), Toy::name);
  EXPECT_EQ(callbacks_of(man).create, &Toy::create);
  EXPECT_EQ(callbacks_of(man).destroy, &Toy::destroy);
  Value value = new_toy();
  EXPECT_EQ(callbacks_of(object_of(value.record())).method, &Toy::method);
  EXPECT_EQ(callbacks_of(object_of(value.record())).op, &Toy::op);
  EXPECT_STREQ(type_name_of(object_of(value.record())), Toy::name);
}

TEST_F(KernelObjects, Types_OfNothing_HaveNoNameAndNoCallbacks) {
  EXPECT_STREQ(type_name_of(static_cast<const HostAny*>(nullptr)), "");
  EXPECT_EQ(callbacks_of(static_cast<const AnyMan*>(nullptr)).method, nullptr);
  EXPECT_EQ(type_named("$unknown"), nullptr);
  EXPECT_EQ(type_named(nullptr), nullptr);
  HVM_RegisterAnyMan(nullptr, type_named(Toy::name));
  HVM_RegisterAnyMan("$nothing", nullptr);
  EXPECT_EQ(type_named("$nothing"), nullptr);
}

std::vector<std::string> type_names() {
  std::vector<std::string> names;
  for (const RegisteredType& type : registered_types()) names.push_back(type.name);
  return names;
}

TEST_F(KernelObjects, Types_AreListedInTheOrderOfRegistration) {
  for (const char* name : {"$b", "$c", "$a"}) HVM_RegisterAnyMan(name, Toy::make_manager());
  EXPECT_EQ(type_names(), (std::vector<std::string>{Toy::name, "$b", "$c", "$a"}));
  forget_type("$c");
  forget_type("$unknown");
  EXPECT_EQ(type_names(), (std::vector<std::string>{Toy::name, "$b", "$a"}));
  forget_type("$a");
  forget_type("$b");
}

TEST_F(KernelObjects, Registration_OfAKnownName_ReplacesTheManagerInItsPlace) {
  HVM_RegisterAnyMan("$later", Toy::make_manager());
  Value old_object = new_toy();
  AnyMan* newer = Toy::make_manager();
  HVM_RegisterAnyMan(Toy::name, newer);
  EXPECT_EQ(type_named(Toy::name), newer);
  EXPECT_NE(object_of(old_object.record())->manager.get(), newer);
  EXPECT_EQ(type_names(), (std::vector<std::string>{Toy::name, "$later"}));
  forget_type("$later");
}

TEST_F(KernelObjects, Destroy_OfAnObjectInADyingTable_MayCallTheHost) {
  const auto destroy_with_host = [](HostContext ctx, void* content) {
    HostValue* record = HVM_NewObject();
    HVM_ForceTable(ctx, record, 4);
    HVM_SetString(ctx, HVM_HashSetInt(ctx, table_of(*record), 0), "text");
    HVM_FreeObj(ctx, record);
    Toy::destroy(ctx, content);
  };
  HVM_RegisterAnyMan("$busy", HVM_NewAnyMan("$busy", Toy::create, destroy_with_host, nullptr, nullptr, nullptr));
  {
    const Value busy[2] = {Value::object(ctx(), "$busy"), Value::object(ctx(), "$busy")};
    Value::table_of({Value::table_of({busy[0]}), busy[1], Value::table_of({Value("text")})});
  }
  EXPECT_EQ(Toy::live, 0);
  forget_type("$busy");
}

TEST_F(KernelObjects, Types_WithoutCallbacks_AreNoObjects) {
  HVM_RegisterAnyMan("$bare", HVM_NewAnyMan("$bare", nullptr, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(HVM_NewAny(ctx(), "$bare", 0, 0), nullptr);
  forget_type("$bare");
}

}  // namespace
}  // namespace hvm::testing
