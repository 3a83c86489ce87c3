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

}  // namespace
}  // namespace hvm::testing
