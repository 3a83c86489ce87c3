// reader/withholding_test.cpp: tables, slots and records that the host does not give
//
// Every path that takes one ends with std::bad_alloc, and gives back what it has so far.

#include "support/reader_test.hpp"
#include "support/withholding_host.hpp"

namespace arrayfold::test {
namespace {

class WithholdingHost : public ReaderTest {
 protected:
  /// The argument is evaluated with the operation giving no value from its n-th call on, for each n until it is not
  /// called that often. Returns how many calls there were.
  int expect_bad_alloc(const HostCodeSlot& argument, Withheld what) {
    const HostCodeSlot list = code.list({argument});
    for (int nth = 1;; ++nth) {
      ExpressionEvaluator evaluator(ctx(), frame_base);
      const Withholding withholding(what, nth);
      bool threw = false;
      try {
        evaluate_cell(evaluator, &list);
      } catch (const std::bad_alloc&) {
        threw = true;
      }
      EXPECT_EQ(threw, Withholding::has_come()) << "call " << nth;
      if (!Withholding::has_come()) return nth - 1;
    }
  }
  HostCodeSlot literal(const std::vector<HostCodeNode*>& items) { return leads_to(code.array_literal(items)); }
};

TEST_F(WithholdingHost, WithoutSlotsForTheElementsOfALiteral_MemoryIsOut) {
  EXPECT_EQ(
      expect_bad_alloc(literal({code.element(integer(1)), code.element(code.text("two"))}), Withheld::slot_by_number),
      2);
}

TEST_F(WithholdingHost, WithoutASlotForATableInALiteral_MemoryIsOut) {
  EXPECT_EQ(expect_bad_alloc(literal({code.open(), code.element(integer(1)), code.close()}), Withheld::slot_by_number),
            2);
}

TEST_F(WithholdingHost, WithoutSlotsForThePairsOfALiteral_MemoryIsOut) {
  EXPECT_EQ(expect_bad_alloc(literal({code.pair(code.text("k"), integer(1)), code.pair_of_table(code.text("m"))}),
                             Withheld::slot_by_key),
            2);
}

TEST_F(WithholdingHost, WithoutTablesForALiteral_MemoryIsOut) {
  EXPECT_EQ(expect_bad_alloc(literal({code.open(), code.close(), code.pair_of_table(code.text("m"))}), Withheld::hash),
            3);
}

TEST_F(WithholdingHost, WithoutTablesAndSlotsForASelection_MemoryIsOut) {
  const Value row = Value::table_of({Value(1), Value(2)});
  host[3] = Value::table_of({row, row});
  const HostCodeSlot everything = code.range(nowhere(), nowhere());
  const HostCodeSlot matrix = code.selection_slot(3, {everything, everything});
  EXPECT_EQ(expect_bad_alloc(matrix, Withheld::table), 3);
  EXPECT_EQ(expect_bad_alloc(matrix, Withheld::slot_by_number), 6);
}

TEST_F(WithholdingHost, WithoutATableOrSlotsForAQuotation_MemoryIsOut) {
  const HostCodeSlot quotation = leads_to(code.quotation(code.call_slot("double", {integer(2), real(1.5)})));
  EXPECT_EQ(expect_bad_alloc(quotation, Withheld::table), 1);
  EXPECT_EQ(expect_bad_alloc(quotation, Withheld::slot_by_number), 5);
}

TEST_F(WithholdingHost, WithoutARecord_EachArgumentIsOutOfMemory) {
  host[3] = Value::table_of({Value(1)});
  host.define("f", [](HostValue*, int, HostValue*) { return 1; });
  EXPECT_EQ(expect_bad_alloc(literal({code.element(integer(1))}), Withheld::record), 1);
  EXPECT_EQ(expect_bad_alloc(code.selection_slot(3, {integer(0)}), Withheld::record), 2);
  EXPECT_EQ(expect_bad_alloc(code.call_slot("f", {code.call_slot("f")}), Withheld::record), 2);
}

TEST_F(WithholdingHost, AfterARecordThatWasNotGiven_TheOthersAreGivenBackAndNoNull) {
  for (const int nth : {1, 2, 5}) {
    std::vector<const void*> made, freed;
    hvm::record_calls(true);
    {
      ExpressionEvaluator evaluator(ctx(), 0);
      const Withholding withholding(Withheld::record, nth);
      for (int n = 1; n < nth; ++n) made.push_back(evaluator.new_object());
      EXPECT_THROW(evaluator.new_object(), std::bad_alloc);
    }
    hvm::record_calls(false);
    for (const auto& call : hvm::recorded_calls())
      if (std::string(call.operation) == "HVM_FreeObj") freed.push_back(call.subject);
    EXPECT_EQ(freed, made);
  }
}

// ---- Results in tables, by the loaded module

TEST_F(WithholdingHost, WithoutATableOrASlotForResults_MemoryIsOut) {
  const Value matrix = array_of<XTDouble>(ctx(), {2, 2}, {2, 1, 1, 3});
  struct Function {
    const char* name;
    int slots;
  };
  for (const Function& row : {Function{"xqr", 2}, {"xsvd", 3}, {"xeigh", 2}, {"xslogdet", 2}}) {
    const EntryFunction function = Module::loaded().entry(row.name);
    std::vector<Value> args = {matrix};
    const auto ends_with_bad_alloc = [&](Withheld what, int nth) {
      Value result(sentinel);  // no pointer, whatever reads it as one
      const Withholding withholding(what, nth);
      EXPECT_THROW(function(ctx(), hvm::records_of(args), 1, result.address()), std::bad_alloc) << row.name << nth;
      EXPECT_TRUE(Withholding::has_come()) << "the module asks the host itself";
    };
    ends_with_bad_alloc(Withheld::table, 1);
    for (int nth = 1; nth <= row.slots; ++nth) ends_with_bad_alloc(Withheld::slot_by_number, nth);
  }
}

TEST_F(WithholdingHost, WithoutATableOrASlotForAShape_MemoryIsOut) {
  Value matrix = array_of<XTDouble>(ctx(), {2, 2}, {2, 1, 1, 3});
  const auto method = hvm::callbacks_of(hvm::object_of(matrix.record())).method;
  const auto ends_with_bad_alloc = [&](Withheld what, int nth) {
    Value result(5);
    const Withholding withholding(what, nth);
    EXPECT_THROW(method(ctx(), matrix.address(), "shape", nullptr, 0, result.address(), 0), std::bad_alloc) << nth;
    EXPECT_TRUE(Withholding::has_come());
  };
  ends_with_bad_alloc(Withheld::table, 1);
  ends_with_bad_alloc(Withheld::slot_by_number, 1);
  ends_with_bad_alloc(Withheld::slot_by_number, 2);
  EXPECT_EQ(shape(matrix), (std::vector<std::int64_t>{2, 2}));
}

}  // namespace
}  // namespace arrayfold::test
