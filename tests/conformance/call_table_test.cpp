// conformance/call_table_test.cpp: the table of calls is whole, and records are compared as it says

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>

#include "conformance/call_table.hpp"
#include "conformance/comparison.hpp"
#include "explanations/described_module.hpp"

namespace hvm::conformance {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const CallTable& table() {
  static const CallTable read = read_call_table(TABLE_PATH);
  return read;
}

std::set<std::string> subjects() {
  std::set<std::string> found;
  for (const CallRow& row : table().rows) found.insert(row.subject());
  return found;
}

TEST(CallTable, HasEveryFunctionMethodAndOperator) {
  const std::set<std::string> found = subjects();
  const Description& description = testing::description();
  for (const auto* entries : {&description.functions, &description.methods, &description.operators})
    for (const FunctionEntry& entry : *entries) EXPECT_EQ(found.count(entry.name), 1u) << entry.name;
  EXPECT_EQ(found.count("element access"), 1u);
  EXPECT_EQ(table().functions, testing::module_functions().names());
}

TEST(CallTable, HasACallWithAValueForEveryFunctionThatGivesOne) {
  std::set<std::string> with_value;
  for (const CallRow& row : table().rows)
    if (row.record["outcome"].contains("value") && !row.record["outcome"]["value"].is_null())
      with_value.insert(row.subject());
  const std::set<std::string> without = {"xchoice",  "xclip",      "xcond",         "xeigvals",
                                         "xfma",     "xinterp",    "xmatrix_power", "xpow",
                                         "xrandint", "xremainder", "xsearchsorted", "xsetdiff1d"};
  for (const std::string& function : table().functions)
    EXPECT_EQ(with_value.count(function), 1 - without.count(function)) << function;
}

TEST(CallTable, HasEveryFailureOfThePagesOrAReason) {
  std::multiset<std::string> documented;
  for (const CallRow& row : table().rows) documented.insert(row.documents.begin(), row.documents.end());
  std::multiset<std::string> left_out;
  for (const LeftOut& row : table().left_out) {
    left_out.insert(row.what);
    EXPECT_FALSE(row.reason.empty()) << row.what;
  }
  const Description& description = testing::description();
  std::size_t failures = 0;
  for (const auto* entries : {&description.functions, &description.methods, &description.operators})
    for (const FunctionEntry& entry : *entries)
      for (const FailureRow& row : entry.failures) {
        const std::string what = entry.name + ": " + row.when;
        const bool is_out = left_out.count(what) == 1;
        EXPECT_NE(documented.count(what) > 0, is_out) << what;
        const bool may_be_out = row.outcome == Outcome::refused || row.condition.form == Condition::Form::no_memory ||
                                row.when.find("converge") != std::string::npos ||
                                row.when.find("singular values") != std::string::npos;
        EXPECT_TRUE(!is_out || may_be_out) << what;
        ++failures;
      }
  EXPECT_GT(failures, 650u);
}

TEST(CallTable, GivesAReasonWhereResultsAreNotComparedBitByBit) {
  std::size_t loose = 0;
  for (const CallRow& row : table().rows) {
    const bool is_exact = row.precision.tolerance <= 0 && row.precision.has_contents;
    EXPECT_EQ(row.precision.reason.empty(), is_exact) << row.id;
    loose += is_exact ? 0 : 1;
  }
  EXPECT_LT(loose, table().rows.size() / 4);
}

TEST(CallTable, IsWrittenAsItWasRead) {
  std::ifstream file(TABLE_PATH);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(text_of(table()), text);
}

// ---- Tables that cannot be read

std::string problem_of(const std::string& text) {
  const std::string path = ::testing::TempDir() + "/broken-calls.jsonl";
  std::ofstream(path) << text;
  try {
    read_call_table(path);
  } catch (const TableError& error) {
    return error.what();
  }
  return "none";
}

const char* const head = R"({"format":1,"module":"m","version":"1","functions":[],"types":[],"left_out":[]})"
                         "\n";

TEST(BrokenTables, AreNamedWithTheirLine) {
  EXPECT_THAT(problem_of(""), HasSubstr("has no rows"));
  EXPECT_THAT(problem_of(head), HasSubstr("has no rows"));
  EXPECT_THAT(problem_of("{"), HasSubstr("is broken in line 1: "));
  EXPECT_THAT(problem_of(R"({"format":2})"), HasSubstr("is broken in line 1: its format is not 1"));
  EXPECT_THAT(problem_of(std::string(head) + "[]\n"), HasSubstr("is broken in line 2: "));
  EXPECT_THAT(problem_of(std::string(head) + R"({"id":"f/1","call":"f","compared":"exactly","outcome":1,"calls":[]})"),
              HasSubstr("its outcome is no object"));
  EXPECT_THAT(problem_of(std::string(head) + R"({"id":"f/1","call":"f","compared":"exactly","outcome":{}})"),
              HasSubstr("is broken in line 2: "));
  try {
    read_call_table("/no/such/calls.jsonl");
    ADD_FAILURE() << "a missing file is read";
  } catch (const TableError& error) {
    EXPECT_STREQ(error.what(), "the table of calls /no/such/calls.jsonl cannot be opened: No such file or directory");
  }
}

// ---- Comparing records

Json record(const std::string& value, const std::string& operations = "[]") {
  return Json::parse(R"({"outcome":{"value":)" + value + R"(},"calls":[{"function":"f","operations":)" + operations +
                     R"(,"returned":1}]})");
}

bool do_agree(const std::string& a, const std::string& b, double tolerance) {
  return differences(record(a), record(b), tolerance).empty();
}

TEST(Comparison, OfExactResults_TakesTheBitsOfRealNumbers) {
  EXPECT_TRUE(do_agree("1.5", "1.5", 0));
  EXPECT_FALSE(do_agree("1.5", "1.5000000000000002", 0));
  EXPECT_FALSE(do_agree("0.0", "-0.0", 0));
  EXPECT_FALSE(do_agree("1.0", "1", 0));
  EXPECT_TRUE(do_agree("\"nan\"", "\"nan\"", 0));
  EXPECT_FALSE(do_agree("\"inf\"", "\"-inf\"", 0));
}

TEST(Comparison, WithinATolerance_TakesWhatIsNear) {
  EXPECT_TRUE(do_agree("[1.0,2000.0]", "[1.0000000001,2000.0000001]", 1e-9));
  EXPECT_FALSE(do_agree("1.0", "1.00000001", 1e-9));
  EXPECT_FALSE(do_agree("1000.0", "1000.00001", 1e-9));
  EXPECT_TRUE(do_agree("0.0", "-1e-12", 1e-9));
  EXPECT_FALSE(do_agree("1.0", "\"nan\"", 1e-9));
  EXPECT_FALSE(do_agree("3", "4", 1e-9));
  EXPECT_FALSE(do_agree("[1.0]", "[1.0,1.0]", 1e-9));
  EXPECT_TRUE(do_agree("1.0", "7.0", std::numeric_limits<double>::infinity()));
}

TEST(Comparison, OfOperations_NamesTheFirstThatDiffers) {
  const Json expected = record("null", R"__(["A(arg 0)","SetReal(result, 1.5)"])__");
  EXPECT_THAT(differences(expected, record("null", R"__(["B(arg 0)","C"])__"), 0),
              ElementsAre("its operation 1 is B(arg 0); the table has A(arg 0)"));
  EXPECT_THAT(differences(expected, record("null", R"__(["A(arg 0)"])__"), 0),
              ElementsAre("it performs 1 operations; the table has SetReal(result, 1.5) after them"));
  EXPECT_THAT(differences(expected, record("null", R"__(["A(arg 0)","SetReal(result, 1.5)","C"])__"), 0),
              ElementsAre("it performs C after the 2 operations of the table"));
  const Json near = record("null", R"__(["A(arg 0)","SetReal(result, 1.5000000000000002)"])__");
  EXPECT_THAT(differences(expected, near, 1e-12), IsEmpty());
  EXPECT_EQ(differences(expected, near, 0).size(), 1u);
  EXPECT_EQ(differences(record("null", R"(["record 1"])"), record("null", R"(["record 2"])"), 1).size(), 1u);
  const Json infinite = record("null", R"__(["A(arg 0)","SetReal(result, inf)"])__");
  EXPECT_EQ(differences(expected, infinite, 1e-12).size(), 1u);
  EXPECT_THAT(differences(infinite, infinite, 1e-12), IsEmpty());
}

TEST(Comparison, OfChangesAndReturns_SaysWhatTheTableHas) {
  Json expected = record("null");
  expected["changes"]["a"] = 2;
  EXPECT_THAT(differences(expected, record("null"), 0),
              ElementsAre("a stays what it was; the table has: it becomes 2"));
  EXPECT_THAT(differences(record("null"), expected, 0),
              ElementsAre("a becomes 2; the table has: it stays what it was"));
  Json other = record("null");
  other["calls"][0]["returned"] = 2;
  EXPECT_THAT(differences(record("null"), other, 0), ElementsAre("it returns 2; the table has 1"));
}

// ---- Records

Json record_of(const std::string& preparation, const std::string& call, bool has_contents = true) {
  CallRecording recording(testing::module_functions(), {preparation, call}, has_contents);
  recording.prepare();
  return recording.perform();
}

TEST(CallRecords, HaveNoAddressesAndNoMemoryOfTheModule) {
  const Json record = record_of("a = xones(2, 3)\n", "xsum(a)");
  EXPECT_EQ(record["outcome"].dump(), R"({"value":{"real":6.0}})");
  EXPECT_EQ(record["calls"].dump(),
            R"__([{"function":"xsum","operations":["HVM_AnyCheck(arg 0) = true","HVM_GetAny(arg 0) = object 1",)__"
            R"__("HVM_SetReal(result, 6.0)"],"returned":1}])__");
  EXPECT_FALSE(record.contains("changes"));
}

TEST(CallRecords, OfAStatement_TellWhatChanges) {
  const Json record = record_of("a = xones(2)\nb = xones(1)\n", "a[0] = 7");
  EXPECT_EQ(record["changes"].dump(), R"({"a":{"double array":{"shape":[2],"elements":[7.0,1.0]}}})");
  EXPECT_EQ(record_of("a = xones(2)\n", "xempty(2)", false)["outcome"].dump(),
            R"({"value":{"double array":{"shape":[2]}}})");
}

TEST(CallRecords, OfFailures_TellFailuresFromExceptions) {
  EXPECT_EQ(record_of("", "xsum(1)")["outcome"].dump(), R"({"fails":true})");
  EXPECT_EQ(record_of("a = xones(2, 2)\n", "xinv(a)")["outcome"].dump(),
            R"({"throws":"std::runtime_error: Singular matrix not invertible (getrf)."})");
  EXPECT_EQ(record_of("", "xsum(")["outcome"].count("error"), 1u);
}

TEST(CallRecords, OfOtherPreparations_HaveOtherDigests) {
  const auto digest = [](const std::string& preparation) {
    return CallRecording(testing::module_functions(), {preparation, ""}, true).prepare();
  };
  EXPECT_EQ(digest(""), "");
  EXPECT_EQ(digest("a = xones(2)\n"), digest("a = xzeros(2) + 1\n"));
  EXPECT_NE(digest("a = xones(2)\n"), digest("a = xones(3)\n"));
}

}  // namespace
}  // namespace hvm::conformance
