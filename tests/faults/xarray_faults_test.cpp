// faults/xarray_faults_test.cpp: every allocation on every path of xarray fails once
//
// The n-th allocation fails, for n from 1 until a run needs no more: each run ends regularly or with std::bad_alloc,
// nothing leaks, and the result record of a run that throws is what it was. A host without memory may also lose an
// entry or a text; then the call goes on with what there is.

#include <cstring>
#include <stdexcept>

#include "support/allocations.hpp"
#include "support/scripted_test.hpp"

namespace arrayfold::test {
namespace {

class XarrayFaults : public ScriptedTest {
 protected:
  void SetUp() override {
    host[1] = Value(2);
    host[2] = Value::table_of({Value::table_of({Value(3), Value(4)}), Value::table_of({Value(5), Value("text")})});
    host[3] = Value("k");
    host.keep_nothing();
    host.define("two", [this](HostValue*, int, HostValue* result) {
      HVM_SetInt(ctx(), result, 2);
      return 1;
    });
    host.define("fails", [](HostValue*, int, HostValue*) { return 0; });
  }

  /// Runs a call with each allocation failing. `minimum` and `minimum_host` are how many there are at least: a loop
  /// that meets none proves nothing.
  void expect_survival(std::vector<Value> args, int minimum, int minimum_host) const {
    const EntryFunction function = Module::loaded().entry("xarray");
    const auto action = [&] {
      Value result(sentinel);
      const HostValue before = result.record();
      try {
        function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address());
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(std::memcmp(&before, result.address(), sizeof before), 0);
        throw;
      }
    };
    EXPECT_GE(fail_each_allocation(action), minimum);
    EXPECT_GE(fail_each_host_allocation(action), minimum_host);
  }

  Value by(const std::vector<HostCodeSlot>& dimensions) { return code.quoted_call("int", dimensions); }
};

constexpr const char* dtypes[] = {"bool", "int", "int64", "float", "double"};

/// The object, array, elements beside it, container, its control block and elements.
constexpr int of_an_array = 4;

TEST_F(XarrayFaults, Dimensions_OfEveryKindAndRank) {
  for (const char* dtype : dtypes)
    for (const int rank : {1, 2, 4, 5, 9, 20})
      expect_survival({code.quoted_call(dtype, std::vector<HostCodeSlot>(static_cast<std::size_t>(rank), integer(2)))},
                      of_an_array, std::strcmp(dtype, "float") == 0 ? 0 : 1);
}

TEST_F(XarrayFaults, ManyZeros) { expect_survival({by({integer(200), integer(300)})}, of_an_array, 1); }

TEST_F(XarrayFaults, ALongDtypeAndLabel_SurviveEachFailure) {
  const std::string name(100, 'x');
  expect_survival({code.quoted_call(name, {integer(2)})}, 1, 0);
  const HostCodeSlot labelled =
      leads_to(code.node(NodeKind::labelled, code.call_slot("int", {integer(2)}), code.text(name)));
  expect_survival({code.quoted(labelled)}, of_an_array + 1, 1);
  expect_survival({code.quoted(leads_to(code.quotation(code.call_slot(name))))}, 1, 0);
  host[4] = Value(name);
  expect_survival({code.quoted(leads_to(code.node(NodeKind::variable_name, nowhere(), variable(4))))}, 1, 0);
}

TEST_F(XarrayFaults, Variables_SurviveEachFailure) { expect_survival({by({variable(1), integer(3)})}, of_an_array, 1); }

TEST_F(XarrayFaults, Calls_NestedAndFailing) {
  const HostCodeSlot two = code.call_slot("two");
  const HostCodeSlot text = code.text("a text beyond what is kept in place, whatever that is");
  expect_survival({by({two, code.call_slot("two", {two, integer(1), text, variable(2)})})}, of_an_array, 9);
  expect_survival({by({code.call_slot("two", {code.call_slot("two", {two})})})}, of_an_array, 5);
  expect_survival({by({code.call_slot("fails", {two, text, variable(2)})})}, 0, 5);
}

TEST_F(XarrayFaults, MoreThanEightArgumentsAndRecords_SurviveEachFailure) {
  const std::vector<HostCodeSlot> calls(30, code.call_slot("two"));
  expect_survival({by(std::vector<HostCodeSlot>(20, integer(1)))}, of_an_array + 1, 1);
  expect_survival({by({code.call_slot("two", calls)})}, of_an_array + 2, 32);
}

TEST_F(XarrayFaults, Selections_SurviveEachFailure) {
  const HostCodeSlot everything = code.range(nowhere(), nowhere());
  expect_survival({by({code.selection_slot(2, {integer(0), integer(1)})})}, of_an_array, 4);
  expect_survival({by({code.selection_slot(2, {everything, integer(1)})})}, 1, 6);
  expect_survival({by({code.selection_slot(2, {everything, everything})})}, 1, 9);
  expect_survival({by({code.selection_slot(2, {integer(0)})})}, 0, 4);
  expect_survival({by({code.selection_slot(2, {variable(3)})})}, 0, 3);
  const std::vector<HostCodeSlot> keys(12, everything);
  Value deep = Value::table_of({Value("text")});
  for (int n = 1; n < 12; ++n) deep = Value::table_of({deep});
  host[4] = deep;
  expect_survival({by({code.selection_slot(4, keys)})}, 3, 60);
}

TEST_F(XarrayFaults, SelectionsThatThrow_SurviveEachFailure) {
  const std::vector<HostCodeSlot> through = {code.range(nowhere(), nowhere()), integer(0), integer(0)};
  const EntryFunction function = Module::loaded().entry("xarray");
  std::vector<Value> args = {by({code.selection_slot(2, through)})};
  const auto action = [&] {
    Value result;
    try {
      function(ctx(), hvm::records_of(args), 1, result.address());
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      EXPECT_STREQ(error.what(), "\"object is not array\"");
    }
  };
  EXPECT_GE(fail_each_host_allocation(action), 5);
  EXPECT_GE(fail_each_allocation(action), 1);
}

TEST_F(XarrayFaults, ArrayLiterals_SurviveEachFailure) {
  std::vector<HostCodeNode*> items = {code.element(code.text("text")),
                                      code.element(code.wide_text(u"wide")),
                                      code.pair(code.text("k"), code.text("value")),
                                      code.pair(code.text("k"), code.text("other")),
                                      code.pair(real(2.0), integer(1)),
                                      code.pair(integer(3), code.text("taken")),
                                      code.open(),
                                      code.element(integer(1)),
                                      code.close(),
                                      code.pair_of_table(code.text("m")),
                                      code.element(code.text("inner", Length::unrecorded)),
                                      code.close()};
  expect_survival({by({leads_to(code.array_literal(items))})}, 0, 20);
  host.copy_strings(false);
  expect_survival({by({leads_to(code.array_literal(items))})}, 0, 10);
  items.insert(items.begin(), 150, code.open());
  expect_survival({by({leads_to(code.array_literal(items))})}, 0, 300);
  expect_survival({by({code.call_slot("two", {leads_to(code.array_literal(items))})})}, of_an_array, 300);
}

TEST_F(XarrayFaults, QuotationsAmongTheArguments_SurviveEachFailure) {
  const HostCodeSlot quotation = leads_to(code.quotation(
      code.call_slot("a name that is longer than what is kept in place", {code.call_slot("two"), variable(2)})));
  expect_survival({by({quotation})}, 1, 8);
  expect_survival({by({code.call_slot("two", {quotation})})}, of_an_array, 10);
}

TEST_F(XarrayFaults, Tables_SurviveEachFailure) {
  std::vector<Value> numbers(100, Value(1));
  const Value row = Value::table_of(numbers);
  Value deep = row;
  for (int n = 0; n < 8; ++n) deep = Value::table_of({deep});
  const Value ragged = Value::table_of({Value::table_of({Value(1), Value(2)}), row});
  const Value broken = Value::table_of({row, Value::table_of({Value(1), Value("text")})});
  for (const char* dtype : dtypes)
    // An empty array of floats has neither elements nor an object.
    for (const Value& data : {Value::table(), row, deep, ragged, broken})
      expect_survival({code.quoted_call(dtype), data}, of_an_array - 1, std::strcmp(dtype, "float") == 0 ? 0 : 1);
}

TEST_F(XarrayFaults, DataLiterals_SurviveEachFailure) {
  host[4] = Value(2.5);
  HostCodeNode* row = code.row(std::vector<HostCodeSlot>(20, variable(4)));
  HostCodeNode* deep = row;
  for (int n = 0; n < 12; ++n) deep = code.rows({deep, deep});
  for (const char* dtype : dtypes) {
    const int minimum_host = std::strcmp(dtype, "float") == 0 ? 0 : 1;
    for (const HostCodeNode* data : {row, code.rows({row, row}), code.row({real(1.0), integer(1), variable(2)})})
      expect_survival({code.quoted_call(dtype), code.quoted(leads_to(data))}, of_an_array, minimum_host);
  }
  expect_survival({code.quoted_call("double"), code.quoted(leads_to(deep))}, of_an_array + 10, 1);
}

TEST_F(XarrayFaults, CallsThatThrow_SurviveEachFailure) {
  host.define("throws", [](HostValue*, int, HostValue*) -> int { throw std::runtime_error("from the host"); });
  const EntryFunction function = Module::loaded().entry("xarray");
  std::vector<Value> args = {
      by({code.call_slot("two", {code.call_slot("throws", {code.call_slot("two"), integer(1)})})})};
  const auto action = [&] {
    Value result;
    try {
      function(ctx(), hvm::records_of(args), 1, result.address());
    } catch (const std::runtime_error&) {
    }
  };
  EXPECT_GE(fail_each_host_allocation(action), 4);
  EXPECT_GE(fail_each_allocation(action), 1);  // the exception's message
}

}  // namespace
}  // namespace arrayfold::test
