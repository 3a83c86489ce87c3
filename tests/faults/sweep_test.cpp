// faults/sweep_test.cpp: the sweep finds what a call without memory must not do
//
// Each call here breaks one rule, and the sweep names it. A call that keeps all of them is found to be in order.

#include <gmock/gmock.h>

#include <memory>

#include "faults/sweep.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class SweepOfACall : public ModuleTest {
 protected:
  using Call = std::function<int(HostValue* result, Value& operand)>;

  /// What the sweep says of a call whose operand is an array of two numbers.
  std::vector<std::string> problems(const std::string& name, const Call& make, bool changes_operand = false) {
    Value result(sentinel);
    Value operand = array_of<XTDouble>(ctx(), {2}, {1, 2});
    Sweep sweep({});
    const SweptCall call{
        "family",       name, [&] { return make(result.address(), operand); }, result.address(), {operand.address()},
        changes_operand};
    try {
      EXPECT_EQ(sweep.run(call), 1);
    } catch (const std::exception&) {
    }
    tally_ = sweep.tallies().at("family");
    return sweep.problems();
  }

  void expect_problem(const std::string& words, const std::string& name, const Call& make) {
    EXPECT_THAT(problems(name, make), Contains(HasSubstr(words)));
  }

  /// Takes memory of both kinds, for a moment.
  static void take_memory() {
    operator delete(operator new(8));
    void* block = HVM_Malloc(8);
    if (block == nullptr) throw std::bad_alloc();
    HVM_Free(block);
  }

  static void write_element(const Value& operand) { *static_cast<double*>(storage_of(operand).address) += 1; }

  Tally tally_;
};

TEST_F(SweepOfACall, ThatKeepsTheRules_FindsNothing) {
  const auto make = [&](HostValue* result, Value&) {
    take_memory();
    HVM_SetInt(ctx(), result, 7);
    return 1;
  };
  EXPECT_THAT(problems("xsum", make), IsEmpty());
  EXPECT_EQ(tally_.calls, 1);
  EXPECT_EQ(tally_.module_allocations, 1);
  EXPECT_EQ(tally_.host_allocations, 1);
  EXPECT_EQ(tally_.failing_runs, 4);
  EXPECT_EQ(tally_.out_of_memory, 4);
  EXPECT_EQ(tally_.failures.at("xsum"), 4);
}

TEST_F(SweepOfACall, LetsOneAllocationFail_AndInOtherRunsAllThatFollow) {
  int alone = 0, both = 0;
  const auto note = [&](bool has_first, bool has_second) {
    if (has_first) return;
    ++(has_second ? alone : both);
  };
  const auto make = [&](HostValue* result, Value&) {
    const std::unique_ptr<int> number(new (std::nothrow) int), other(new (std::nothrow) int);
    note(number != nullptr, other != nullptr);
    void* block = HVM_Malloc(8);
    void* second_block = HVM_Malloc(8);
    note(block != nullptr, second_block != nullptr);
    HVM_Free(second_block);
    HVM_Free(block);
    HVM_SetInt(ctx(), result, 7);
    return 1;
  };
  EXPECT_THAT(problems("xsum", make), IsEmpty());
  EXPECT_EQ(alone, 2) << "of the module and of the host";
  EXPECT_EQ(both, 2);
}

TEST_F(SweepOfACall, LetsNothingFailOutsideOfTheModule) {
  const auto make = [&](HostValue* result, Value&) {
    {
      const Sweep::Outside outside;
      EXPECT_NO_THROW(take_memory());
    }
    take_memory();
    HVM_SetInt(ctx(), result, 7);
    return 1;
  };
  EXPECT_THAT(problems("xsum", make), IsEmpty());
  EXPECT_EQ(tally_.out_of_memory, 4);
  EXPECT_EQ(tally_.failing_runs, 4);
}

TEST_F(SweepOfACall, CountsWhatEndsAsWithMemory) {
  const auto make = [&](HostValue* result, Value&) {
    const std::unique_ptr<int> number(new (std::nothrow) int(1));
    HVM_SetInt(ctx(), result, 7);
    return 1;
  };
  EXPECT_THAT(problems("xsum", make), IsEmpty());
  EXPECT_EQ(tally_.same, 2);
}

TEST_F(SweepOfACall, LetsAnObjectBeNil) {
  const auto make = [&](HostValue* result, Value&) {
    HVM_SetTypeAny(ctx(), result, HVM_NewAny(ctx(), "$xdoublearray", 0, 0));
    return 1;
  };
  EXPECT_THAT(problems("xsort", make), IsEmpty());
  EXPECT_EQ(tally_.no_value, 4);
}

TEST_F(SweepOfACall, FindsAnAllocationThatStaysAlive) {
  std::vector<void*> kept;
  kept.reserve(100);
  expect_problem("1 allocations more are alive", "xsum", [&](HostValue*, Value&) {
    void* first = operator new(8);
    try {
      operator delete(operator new(8));
    } catch (const std::bad_alloc&) {
      kept.push_back(first);
      throw;
    }
    operator delete(first);
    return 1;
  });
  for (void* memory : kept) operator delete(memory);
}

TEST_F(SweepOfACall, FindsWhatTheHostStillHolds) {
  std::vector<void*> kept;
  expect_problem("the host holds more or less", "xsum", [&](HostValue*, Value&) {
    void* first = HVM_Malloc(8);
    void* second = HVM_Malloc(8);
    if (first != nullptr && second == nullptr) {
      kept.push_back(first);
      throw std::bad_alloc();
    }
    HVM_Free(second);
    HVM_Free(first);
    return 1;
  });
  for (void* block : kept) HVM_Free(block);
}

TEST_F(SweepOfACall, FindsAResultThatIsWrittenBeforeTheEnd) {
  expect_problem("the result record is written", "xsum", [&](HostValue* result, Value&) {
    HVM_SetInt(ctx(), result, 7);
    take_memory();
    return 1;
  });
}

TEST_F(SweepOfACall, LetsATableOfResultsBeUnfinishedWhereTheHostHasNoMemory) {
  const auto make = [&](HostValue* result, Value&) {
    HVM_ForceTable(ctx(), result, 4);
    if (result->tag != ValueTag::table) throw std::bad_alloc();
    void* block = HVM_Malloc(8);
    if (block == nullptr) throw std::bad_alloc();
    HVM_Free(block);
    return 1;
  };
  EXPECT_THAT(problems("xqr", make), IsEmpty());
  EXPECT_GT(tally_.unfinished, 0);
  EXPECT_THAT(problems("xsum", make), Contains(HasSubstr("the result record is written")));
}

TEST_F(SweepOfACall, LetsEntriesOfATableOfResultsBeMissing_AndFindsAnotherEntry) {
  // 6, and 7 where there is memory; otherwise as said.
  const auto results = [&](std::function<void(HostHash*)> otherwise) {
    return [&, otherwise](HostValue* result, Value&) {
      const std::unique_ptr<int> number(new (std::nothrow) int(7));
      HVM_ForceTable(ctx(), result, 4);
      HostHash* table = hvm::table_of(*result);
      if (table == nullptr) throw std::bad_alloc();
      HVM_SetInt(ctx(), HVM_HashSetInt(ctx(), table, 0), 6);
      number ? HVM_SetInt(ctx(), HVM_HashSetInt(ctx(), table, 1), *number) : otherwise(table);
      return 1;
    };
  };
  EXPECT_THAT(problems("xqr", results([](HostHash*) {})), IsEmpty());
  EXPECT_GE(tally_.no_value, 2);
  EXPECT_THAT(problems("xqr", results([&](HostHash* table) { HVM_HashSetInt(ctx(), table, 1); })), IsEmpty());
  const auto sets_eight = [&](HostHash* table) { HVM_SetInt(ctx(), HVM_HashSetInt(ctx(), table, 1), 8); };
  EXPECT_THAT(problems("xqr", results(sets_eight)), Contains(HasSubstr("another value or change")));
  const auto cut_off = [&](HostValue* result, Value&) {
    HVM_ForceTable(ctx(), result, 4);
    void* block = HVM_Malloc(8);
    HVM_Free(block);
    if (result->tag == ValueTag::table) sets_eight(hvm::table_of(*result));
    if (block == nullptr) throw std::bad_alloc();
    HVM_FreeObjectContent(ctx(), result);
    return 1;
  };
  EXPECT_THAT(problems("xqr", cut_off), Contains(HasSubstr("the result record is written")));
}

TEST_F(SweepOfACall, FindsAnOperandThatHasChanged) {
  const auto make = [&](HostValue*, Value& operand) {
    write_element(operand);
    take_memory();
    return 1;
  };
  EXPECT_THAT(problems("xsum", make), Contains(HasSubstr("with memory: an operand has changed")));
  EXPECT_THAT(problems("reshape", make, true), Contains(HasSubstr("an operand has changed, and std::bad_alloc")));
}

TEST_F(SweepOfACall, FindsAnOperandThatChangesInPartWhereThereIsNoValue) {
  const auto make = [&](HostValue* result, Value& operand) {
    write_element(operand);
    HVM_SetTypeAny(ctx(), result, HVM_NewAny(ctx(), "$xdoublearray", 0, 0));
    if (result->tag != ValueTag::nil) write_element(operand);
    return 1;
  };
  EXPECT_THAT(problems("reshape", make, true), Contains(HasSubstr("an operand has changed in part")));
}

TEST_F(SweepOfACall, PutsOperandsBackThatACallChanges) {
  const auto make = [&](HostValue*, Value& operand) {
    take_memory();
    write_element(operand);
    EXPECT_EQ(*static_cast<double*>(storage_of(operand).address), 2);
    return 1;
  };
  EXPECT_THAT(problems("reshape", make, true), IsEmpty());
}

TEST_F(SweepOfACall, FindsAnotherValue) {
  expect_problem("another value or change", "xsum", [&](HostValue* result, Value&) {
    const std::unique_ptr<int> number(new (std::nothrow) int(7));
    HVM_SetInt(ctx(), result, number ? *number : 0);
    return 1;
  });
}

TEST_F(SweepOfACall, FindsANumberThatIsNil) {
  expect_problem("another value or change", "xsum", [&](HostValue* result, Value&) {
    const std::unique_ptr<int> number(new (std::nothrow) int(7));
    number ? HVM_SetInt(ctx(), result, *number) : HVM_FreeObjectContent(ctx(), result);
    return 1;
  });
}

TEST_F(SweepOfACall, FindsAnotherEnd) {
  expect_problem("another end", "xsum", [&](HostValue*, Value&) {
    const std::unique_ptr<int> number(new (std::nothrow) int(7));
    return number ? 1 : 0;
  });
  expect_problem("another end", "xsum", [&](HostValue*, Value&) -> int {
    const std::unique_ptr<int> number(new (std::nothrow) int(7));
    throw std::runtime_error(number ? "with" : "without");
  });
}

TEST_F(SweepOfACall, FindsAnEndThatChangesWithTheRuns) {
  expect_problem("no allocation failed, and the call ends in another way", "xsum",
                 [runs = 0](HostValue*, Value&) mutable { return ++runs > 3 ? 1 : 0; });
}

TEST_F(SweepOfACall, WhoseTurnItIsNot_IsMadeOnce) {
  Sweep sweep({3, 2, true});
  Value result;
  int made = 0;
  const auto runs = [&](const char* family) {
    made = 0;
    sweep.run({family, "name", [&] { return ++made, 1; }, result.address(), {}});
    return made;
  };
  std::vector<bool> turns, readings;
  for (int n = 0; n < 6; ++n) turns.push_back(runs("family") > 1), readings.push_back(runs("reading") > 1);
  EXPECT_EQ(turns, (std::vector<bool>{true, true, false, true, false, false}));
  EXPECT_EQ(readings, (std::vector<bool>{true, true, true, false, true, false}));
}

}  // namespace
}  // namespace arrayfold::test
