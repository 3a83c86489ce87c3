// refhost/kernel/kernel_records_test.cpp: records on the heap, their owners, and the copying rules

#include <cstring>
#include <memory>

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

using KernelRecords = KernelTest;

TEST_F(KernelRecords, NewObject_IsNil) {
  HostValue* record = HVM_NewObject();
  EXPECT_EQ(record->tag, ValueTag::nil);
  EXPECT_EQ(load<std::uint64_t>(record->payload), 0u);
  EXPECT_EQ(counts().records, before_.records + 1);
  HVM_FreeObj(ctx(), record);
}

TEST_F(KernelRecords, NewObjects_AreNilAndEighteenBytesApart) {
  HostValue* records = HVM_NewObjects(3);
  for (int n = 0; n < 3; ++n) {
    const auto* bytes = static_cast<const std::byte*>(static_cast<const void*>(records)) + 18 * n;
    EXPECT_EQ(std::to_integer<int>(*bytes), 10);
    EXPECT_EQ(static_cast<const void*>(records + n), bytes);
  }
  EXPECT_EQ(counts().records, before_.records + 3);
  HVM_FreeObjs(ctx(), records, 3);
}

TEST_F(KernelRecords, NewObjects_OfImpossibleCount_AreNull) {
  EXPECT_EQ(HVM_NewObjects(-1), nullptr);
  EXPECT_EQ(HVM_NewObjects(std::int64_t{1} << 61), nullptr);
  HostValue* none = HVM_NewObjects(0);
  EXPECT_NE(none, nullptr);
  HVM_FreeObjs(ctx(), none, 0);
}

TEST_F(KernelRecords, FreeObj_ReleasesTheContentToo) {
  HostValue* record = HVM_NewObject();
  HVM_SetString(ctx(), record, "text");
  HVM_FreeObj(ctx(), record);
  EXPECT_EQ(counts(), before_);
  HVM_FreeObj(ctx(), nullptr);
}

TEST_F(KernelRecords, FreeObjs_ReleasesTheContentOfAll) {
  HostValue* records = HVM_NewObjects(3);
  HVM_SetString(ctx(), records, "text");
  HVM_ForceTable(ctx(), records + 1, 4);
  HVM_SetTypeAny(ctx(), records + 2, HVM_NewAny(ctx(), Toy::name, 0, 0));
  HVM_FreeObjs(ctx(), records, 3);
  EXPECT_EQ(Toy::live, 0);
  EXPECT_EQ(counts(), before_);
  HVM_FreeObjs(ctx(), nullptr, 5);
}

TEST_F(KernelRecords, FreeObjs_OfAWrongCount_ShowsInTheCounts) {
  HVM_FreeObjs(ctx(), HVM_NewObjects(3), 2);
  EXPECT_EQ(counts().records, before_.records + 1);
  HVM_FreeObjs(ctx(), HVM_NewObjects(0), 1);
}

TEST_F(KernelRecords, FreeObjectContent_LeavesNil) {
  for (Value value : {Value("text"), Value::table(), new_toy(), Value(5), Value()}) {
    HVM_FreeObjectContent(ctx(), value.address());
    EXPECT_TRUE(value.is_nil());
    HVM_FreeObjectContent(ctx(), value.address());
  }
  HVM_FreeObjectContent(ctx(), nullptr);
}

TEST_F(KernelRecords, FreeObjectContent_OfAMovedRecord_LeavesTheContentToItsNewOwner) {
  Value value("text");
  HostValue moved = value.record();
  moved.lifetime = Lifetime::none;
  HVM_FreeObjectContent(ctx(), &moved);
  EXPECT_EQ(text_of(value.record()), "text");
}

TEST_F(KernelRecords, NilRecord_OwnsWhatIsWrittenIntoIt) {
  HostValue* record = HVM_NewObject();
  HostHash* table = HVM_NewHash(ctx(), 4);
  record->tag = ValueTag::table;
  store<HostHash*>(record->payload, table);
  HVM_FreeObj(ctx(), record);
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelRecords, DupObject_OfPlainValues_CopiesThem) {
  Value copy("held before");
  HVM_DupObject(ctx(), copy.address(), Value(5).address(), 1);
  EXPECT_EQ(HVM_AsInt(copy.address()), 5);
  HVM_DupObject(ctx(), copy.address(), Value(2.5).address(), 1);
  EXPECT_EQ(HVM_AsDouble(copy.address()), 2.5);
  HVM_DupObject(ctx(), copy.address(), nullptr, 1);
  EXPECT_TRUE(copy.is_nil());
  HVM_DupObject(ctx(), nullptr, copy.address(), 1);
}

TEST_F(KernelRecords, DupObject_OfTwoWords_CopiesSixteenBytes) {
  HostValue source = tagged(25);
  store<std::uint64_t>(source.payload, 0x1122334455667788);
  source.owned = 0x99AABBCC;
  store<std::uint32_t>(source.rest, 0xDDEEFF00);
  Value copy;
  HVM_DupObject(ctx(), copy.address(), &source, 1);
  EXPECT_EQ(std::memcmp(copy.address(), &source, 17), 0);
}

TEST_F(KernelRecords, DupObject_OfAnObject_SharesIt) {
  Value toy = new_toy();
  Value copy;
  HVM_DupObject(ctx(), copy.address(), toy.address(), 1);
  EXPECT_EQ(object_of(copy.record()), object_of(toy.record()));
  toy = Value();
  EXPECT_EQ(Toy::live, 1);
}

TEST_F(KernelRecords, DupObject_FromInsideTheDestination_IsSafe) {
  Value outer = Value::table_of({Value::table_of({Value("deep")})});
  HVM_DupObject(ctx(), outer.address(), find(table_of(outer.record()), 0), 1);
  EXPECT_EQ(text_of(*find(table_of(outer.record()), 0)), "deep");
}

TEST_F(KernelRecords, DupObject_OntoItself_KeepsTheValue) {
  Value value("text");
  HVM_DupObject(ctx(), value.address(), value.address(), 1);
  EXPECT_EQ(text_of(value.record()), "text");
}

TEST_F(KernelRecords, Values_MoveCopyAndAssign) {
  Value a("text");
  Value b = a;
  Value c = std::move(a);
  EXPECT_TRUE(a.is_nil());
  EXPECT_EQ(text_of(b.record()), text_of(c.record()));
  b = std::move(c);
  b = *&b;
  EXPECT_EQ(text_of(b.record()), "text");
  c = Value(3);
  EXPECT_EQ(HVM_AsInt(c.address()), 3);
  EXPECT_EQ(counts().strings, before_.strings + 1);
}

TEST_F(KernelRecords, Values_AssignedFromInsideThemselves_AreSafe) {
  Value outer = Value::table_of({Value::table_of({Value("deep")})});
  assign(outer.record(), *find(table_of(outer.record()), 0));
  EXPECT_EQ(text_of(*find(table_of(outer.record()), 0)), "deep");
}

TEST_F(KernelRecords, Values_GiveUpAndTakeTheirContent) {
  Value value("text");
  HostValue record = value.give_up();
  EXPECT_TRUE(value.is_nil());
  Value taken = Value::taking(record);
  EXPECT_EQ(record.tag, ValueTag::nil);
  EXPECT_EQ(text_of(taken.record()), "text");
}

TEST_F(KernelRecords, Values_FormAnArgumentList) {
  std::vector<Value> none;
  EXPECT_EQ(records_of(none), nullptr);
  std::vector<Value> list = {Value(1), Value(2), Value(3)};
  HostValue* records = records_of(list);
  for (int n = 0; n < 3; ++n) EXPECT_EQ(HVM_AsInt(records + n), n + 1);
}

TEST_F(KernelRecords, Matrices_AndStreams_AreNotTouched) {
  int anything = 5;
  HVM_FreeMatrix(&anything);
  HVM_DelStrm(&anything);
  HVM_FreeMatrix(nullptr);
  HVM_DelStrm(nullptr);
  EXPECT_EQ(anything, 5);
}

TEST_F(KernelRecords, GlobalNil_IsOneRecord) {
  EXPECT_EQ(HVM_GetGlobalNilObj(), HVM_GetGlobalNilObj());
  EXPECT_EQ(HVM_GetGlobalNilObj()->tag, ValueTag::nil);
}

TEST_F(KernelRecords, Contexts_StartWithoutAnInterpreter) {
  HostFrame* frame = context_.frame();
  EXPECT_EQ(frame->slot_base, 0u);
  EXPECT_EQ(frame->copy_strings, 0u);
  EXPECT_EQ(ctx()->call_function.get()(nullptr, ctx(), nullptr, 0, nullptr), 0);
  EXPECT_EQ(ctx()->read_slot.get()(ctx(), 3)->tag, ValueTag::nil);
  EXPECT_EQ(user_of(ctx()), nullptr);
  EXPECT_EQ(user_of(nullptr), nullptr);
}

TEST_F(KernelRecords, Contexts_CarryWhatTheInterpreterGave) {
  HostFrame frame{};
  frame.slot_base = 12;
  int user = 0;
  context_.use_frame(&frame);
  context_.carry(&user);
  context_.call_through([](const void*, HostContext, HostValue*, int nargs, HostValue*) { return nargs; });
  context_.read_through([](HostContext c, int) { return static_cast<HostValue*>(user_of(c)); });
  const auto* bytes = static_cast<const std::byte*>(static_cast<const void*>(ctx()));
  EXPECT_EQ(load<HostFrame*>(bytes + 56), &frame);
  EXPECT_EQ(load<HostContextRecord::CallFunction>(bytes + 72)(nullptr, ctx(), nullptr, 4, nullptr), 4);
  EXPECT_EQ(static_cast<void*>(load<HostContextRecord::ReadSlot>(bytes + 80)(ctx(), 0)), &user);
  context_.use_frame(nullptr);
  EXPECT_EQ(context_.frame()->slot_base, 0u);
}

TEST_F(KernelRecords, Contexts_EndInAnyOrder) {
  auto first = std::make_unique<Context>();
  auto second = std::make_unique<Context>();
  EXPECT_EQ(youngest_context(), second->handle());
  first.reset();
  EXPECT_EQ(youngest_context(), second->handle());
  second.reset();
  EXPECT_EQ(youngest_context(), ctx());
}

}  // namespace
}  // namespace hvm::testing
