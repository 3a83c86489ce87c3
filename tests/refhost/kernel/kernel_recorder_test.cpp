// refhost/kernel/kernel_recorder_test.cpp: every operation leaves its name, subject and number, and only while
// asked to

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

using KernelRecorder = KernelTest;

std::vector<std::string> recorded_names() {
  std::vector<std::string> names;
  for (const RecordedCall& call : recorded_calls()) names.push_back(call.operation);
  return names;
}

TEST_F(KernelRecorder, Calls_AreRecordedInTheirOrder) {
  Value value;
  record_calls(true);
  HVM_SetInt(ctx(), value.address(), 5);
  HVM_NumberCheck(value.address());
  HVM_AsInt(value.address());
  record_calls(false);
  EXPECT_EQ(recorded_names(), (std::vector<std::string>{"HVM_SetInt", "HVM_NumberCheck", "HVM_AsInt"}));
  for (const RecordedCall& call : recorded_calls()) EXPECT_EQ(call.subject, value.address());
  EXPECT_EQ(recorded_calls()[0].number, 5);
}

TEST_F(KernelRecorder, Calls_AreNotRecordedWhenItIsOff) {
  Value value;
  record_calls(true);
  record_calls(false);
  HVM_SetInt(ctx(), value.address(), 5);
  EXPECT_TRUE(recorded_calls().empty());
}

TEST_F(KernelRecorder, Start_ForgetsWhatWasRecorded) {
  record_calls(true);
  HVM_GetGlobalNilObj();
  record_calls(true);
  EXPECT_TRUE(recorded_calls().empty());
}

TEST_F(KernelRecorder, Record_GrowsAsNeeded) {
  record_calls(true);
  for (int n = 0; n < 10000; ++n) HVM_SetInt(ctx(), nullptr, n);
  const auto calls = recorded_calls();
  ASSERT_EQ(calls.size(), 10000u);
  for (int n = 0; n < 10000; ++n) EXPECT_EQ(calls[static_cast<std::size_t>(n)].number, n);
}

TEST_F(KernelRecorder, TheHostsOwnWork_IsNotRecorded) {
  record_calls(true);
  Value table = Value::table_of({Value("text"), new_toy()});
  table = Value();
  ctx()->read_slot.get()(ctx(), 0);
  EXPECT_TRUE(recorded_calls().empty());
  HVM_ForceTable(ctx(), table.address(), 4);
  EXPECT_EQ(recorded_names(), std::vector<std::string>{"HVM_ForceTable"});
}

// Calls all 44 on harmless subjects.
TEST_F(KernelRecorder, EveryOperation_IsRecordedUnderItsName) {
  Value value, table = Value::table();
  HostValue* v = value.address();
  HostHash* h = table_of(table.record());
  int low, high;
  record_calls(true);
  HVM_AnyCheck(v), HVM_GetAny(v), HVM_SetTypeAny(ctx(), v, HVM_NewAny(ctx(), Toy::name, 0, 0));
  HVM_RegisterAnyMan(Toy::name, HVM_NewAnyMan(Toy::name, Toy::create, Toy::destroy, nullptr, nullptr, nullptr));
  HVM_NumberCheck(v), HVM_AsInt(v), HVM_AsInt64(v), HVM_AsDouble(v), HVM_AsBool(v);
  HVM_AsString(v), HVM_StringCheckAll(v), HVM_StringLen(v);
  HVM_SetInt(ctx(), v, 1), HVM_SetInt64(ctx(), v, 1), HVM_SetReal(ctx(), v, 1);
  HVM_SetString(ctx(), v, "a"), HVM_SetStringEx(ctx(), v, "a", 1);
  HVM_SetWString(ctx(), v, u"a"), HVM_SetWStringEx(ctx(), v, u"a", 1);
  HVM_SetConstStringEx(nullptr, v, "a", 1), HVM_SetConstWStringEx(nullptr, v, u"a", 1);
  HVM_ForceTable(ctx(), v, 4), HVM_GCFreeTable(HVM_NewHash(ctx(), 4));
  HVM_HashSetInt(ctx(), h, 3), HVM_HashSet(ctx(), h, v), HVM_HashGetInt(h, 3), HVM_HashGet(nullptr, h, v);
  HVM_HashGetBounds(h, &low, &high), HVM_GetGlobalNilObj();
  HVM_FreeObj(ctx(), HVM_NewObject()), HVM_FreeObjs(ctx(), HVM_NewObjects(2), 2);
  HVM_FreeObjectContent(ctx(), v), HVM_DupObject(ctx(), v, v, 1);
  HVM_Free(HVM_ReallocNoLeak(HVM_Realloc2(HVM_Malloc(8), 16, 8), 24));
  HVM_FreeMatrix(nullptr), HVM_DelStrm(nullptr);
  record_calls(false);
  const std::vector<std::string> expected = {"HVM_AnyCheck",
                                             "HVM_GetAny",
                                             "HVM_NewAny",
                                             "HVM_SetTypeAny",
                                             "HVM_NewAnyMan",
                                             "HVM_RegisterAnyMan",
                                             "HVM_NumberCheck",
                                             "HVM_AsInt",
                                             "HVM_AsInt64",
                                             "HVM_AsDouble",
                                             "HVM_AsBool",
                                             "HVM_AsString",
                                             "HVM_StringCheckAll",
                                             "HVM_StringLen",
                                             "HVM_SetInt",
                                             "HVM_SetInt64",
                                             "HVM_SetReal",
                                             "HVM_SetString",
                                             "HVM_SetStringEx",
                                             "HVM_SetWString",
                                             "HVM_SetWStringEx",
                                             "HVM_SetConstStringEx",
                                             "HVM_SetConstWStringEx",
                                             "HVM_ForceTable",
                                             "HVM_NewHash",
                                             "HVM_GCFreeTable",
                                             "HVM_HashSetInt",
                                             "HVM_HashSet",
                                             "HVM_HashGetInt",
                                             "HVM_HashGet",
                                             "HVM_HashGetBounds",
                                             "HVM_GetGlobalNilObj",
                                             "HVM_NewObject",
                                             "HVM_FreeObj",
                                             "HVM_NewObjects",
                                             "HVM_FreeObjs",
                                             "HVM_FreeObjectContent",
                                             "HVM_DupObject",
                                             "HVM_Malloc",
                                             "HVM_Realloc2",
                                             "HVM_ReallocNoLeak",
                                             "HVM_Free",
                                             "HVM_FreeMatrix",
                                             "HVM_DelStrm"};
  ASSERT_EQ(expected.size(), 44u);
  EXPECT_EQ(recorded_names(), expected);
}

TEST_F(KernelRecorder, Subjects_AndNumbers_AreWhatTheOperationIsAbout) {
  Value value, table = Value::table();
  HostHash* hash = table_of(table.record());
  record_calls(true);
  HVM_HashSetInt(ctx(), hash, 9);
  HVM_ForceTable(ctx(), value.address(), 6);
  HVM_NewAny(ctx(), "$unknown", 0, 0);
  HVM_FreeObjs(ctx(), nullptr, 0);
  HVM_GCFreeTable(HVM_NewHash(ctx(), -2));
  const auto calls = recorded_calls();
  record_calls(false);
  EXPECT_EQ(calls[0].subject, hash);
  EXPECT_EQ(calls[0].number, 9);
  EXPECT_EQ(calls[1].subject, value.address());
  EXPECT_EQ(calls[1].number, 6);
  EXPECT_STREQ(static_cast<const char*>(calls[2].subject), "$unknown");
  EXPECT_EQ(calls[3].subject, nullptr);
  EXPECT_EQ(calls[4].number, -2);
}

using Form = RecordedOperand::Form;

TEST_F(KernelRecorder, OperandsAndResults_AreWhatWasPassedAndAnswered) {
  Value value, key(7), table = Value::table();
  HostHash* hash = table_of(table.record());
  record_calls(true);
  HVM_SetInt(ctx(), value.address(), 5);
  const int read = HVM_AsInt(value.address());
  HVM_SetReal(ctx(), value.address(), 2.5);
  HVM_AsDouble(value.address());
  HVM_AnyCheck(value.address());
  const HostValue* slot = HVM_HashSet(ctx(), hash, key.address());
  int low = 0, high = 0;
  HVM_HashGetBounds(hash, &low, &high);
  HVM_SetStringEx(ctx(), value.address(), "abc", 2);
  HostAny* made = HVM_NewAny(ctx(), Toy::name, 0, 0);
  HVM_SetTypeAny(ctx(), value.address(), made);
  const auto calls = recorded_calls();
  record_calls(false);
  ASSERT_EQ(calls.size(), 10u);
  const auto operand = [&](std::size_t call, std::size_t n) { return calls[call].operands[n]; };
  EXPECT_EQ(calls[0].operand_count, 2u);
  EXPECT_EQ(operand(0, 0).form, Form::record);
  EXPECT_EQ(operand(0, 0).pointer, value.address());
  EXPECT_EQ(operand(0, 1).form, Form::integer);
  EXPECT_EQ(operand(0, 1).number, 5);
  EXPECT_EQ(calls[0].result.form, Form::nothing);
  EXPECT_EQ(calls[1].result.form, Form::integer);
  EXPECT_EQ(calls[1].result.number, read);
  EXPECT_EQ(operand(2, 1).form, Form::real);
  EXPECT_EQ(operand(2, 1).real, 2.5);
  EXPECT_EQ(calls[3].result.real, 2.5);
  EXPECT_EQ(calls[4].result.form, Form::truth);
  EXPECT_EQ(calls[4].result.number, 0);
  EXPECT_EQ(operand(5, 0).form, Form::table);
  EXPECT_EQ(operand(5, 1).form, Form::key);
  EXPECT_EQ(operand(5, 1).pointer, key.address());
  EXPECT_EQ(calls[5].result.pointer, slot);
  EXPECT_EQ(calls[6].result.form, Form::bounds);
  EXPECT_EQ(calls[6].result.number, low);
  EXPECT_EQ(calls[6].result.high, high);
  EXPECT_EQ(operand(7, 1).form, Form::text);
  EXPECT_EQ(operand(7, 1).number, 2);
  EXPECT_EQ(operand(7, 2).number, 2);
  EXPECT_EQ(calls[8].result.form, Form::object);
  EXPECT_EQ(calls[8].result.pointer, made);
  EXPECT_EQ(operand(9, 1).pointer, made);
}

/// Keeps what it is told, as words.
struct Listener : CallSink {
  std::size_t begin(const RecordedCall& call) noexcept override {
    heard.push_back(std::string("begin ") + call.operation);
    return heard.size();
  }
  void end(std::size_t number, const RecordedOperand&) noexcept override {
    heard.push_back("end of " + std::to_string(number));
  }
  std::vector<std::string> heard;
};

struct Counting {
  static constexpr char name[] = "$counting";
  static void* create() { return new int(0); }
  static void destroy(HostContext, void* content) {
    HVM_GetGlobalNilObj();
    delete static_cast<int*>(content);
  }
};

TEST_F(KernelRecorder, ASink_HearsTheBeginAndTheEndOfEachOperation) {
  HVM_RegisterAnyMan(Counting::name,
                     HVM_NewAnyMan(Counting::name, Counting::create, Counting::destroy, nullptr, nullptr, nullptr));
  Value value = Value::object(ctx(), Counting::name);
  Listener listener;
  EXPECT_EQ(send_calls_to(&listener), nullptr);
  HVM_SetInt(ctx(), value.address(), 1);  // ends the object, whose type asks for the nil object
  HVM_AsInt(value.address());
  EXPECT_EQ(send_calls_to(nullptr), &listener);
  HVM_AsInt(value.address());
  EXPECT_EQ(listener.heard, (std::vector<std::string>{"begin HVM_SetInt", "begin HVM_GetGlobalNilObj", "end of 2",
                                                      "end of 1", "begin HVM_AsInt", "end of 5"}));
  forget_type(Counting::name);
}

TEST_F(KernelRecorder, Objects_AreNumberedAsTheyAreMade) {
  const Value first = new_toy();
  const std::uint64_t number = number_of(object_of(first.record()));
  EXPECT_GT(number, 0u);
  { const Value gone = new_toy(); }
  const Value third = new_toy();
  EXPECT_EQ(number_of(object_of(third.record())), number + 2);
  EXPECT_EQ(number_of(nullptr), 0u);
}

}  // namespace
}  // namespace hvm::testing
