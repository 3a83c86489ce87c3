// refhost/script/library/missing_memory_test.cpp: built-in functions whose results find no memory
//
// A function either throws, or its result is whole.

#include <new>

#include "script/library/builtins.hpp"
#include "script/module/recent_shapes.hpp"
#include "script/text/printer.hpp"
#include "script_run.hpp"

namespace hvm::testing {
namespace {

/// The text of a result, with all its entries.
std::string text_of_result(const Value& result) {
  return Printer(Detail::full, [](std::string& out, const HostValue&) { out += "object"; }).text_in_table(result);
}

Value result_of(const char* name, std::vector<Value> arguments) {
  const SourceText source("test.hvm", "");
  const Context context;
  RecentShapes shapes;
  const ModuleCaller caller{context.handle(), &source, 0, shapes};
  const ArrayChecks checks(true);
  const PrintLine print;
  Pictures pictures;
  return call_builtin(*find_builtin(name),
                      {caller, {}, toy_functions(), checks, print, FileAccess::all, pictures, arguments});
}

Value words() { return Value::table_of({Value("first"), Value(u"second"), Value(3), Value::table_of({Value(4)})}); }
Value numbers() { return Value::table_of({Value(2.5), Value(1), Value(std::int64_t{7})}); }

TEST(MissingMemory, OfTheKernel_LosesNoValue) {
  struct Row {
    const char* name;
    std::vector<Value> (*arguments)();
  };
  const Row rows[] = {
      {"number", [] { return std::vector{Value(u"12")}; }},
      {"format",
       [] {
         return std::vector{Value("{} {:.1f} {}"), Value(u"wide"), Value(2.0), words()};
       }},
      {"join",
       [] {
         return std::vector{words(), Value(u", ")};
       }},
      {"split", [] { return std::vector{Value("one two three four five six seven")}; }},
      {"split",
       [] {
         return std::vector{Value(u"one,two,three,four,five,six,seven"), Value(",")};
       }},
      {"find",
       [] {
         return std::vector{Value(u"text"), Value(u"x")};
       }},
      {"replace",
       [] {
         return std::vector{Value(u"text"), Value("x"), Value(u"xx")};
       }},
      {"trim", [] { return std::vector{Value("  text ")}; }},
      {"upper", [] { return std::vector{Value("text")}; }},
      {"lower", [] { return std::vector{Value("TEXT")}; }},
      {"keys", [] { return std::vector{words()}; }},
      {"values", [] { return std::vector{words()}; }},
      {"sort", [] { return std::vector{numbers()}; }},
      {"sort",
       [] {
         return std::vector{Value::table_of({Value("b"), Value(u"a"), Value("c")})};
       }},
      {"max", [] { return std::vector{numbers()}; }},
  };
  for (const Row& row : rows) {
    const std::string whole = text_of_result(result_of(row.name, row.arguments()));
    const Counts before = counts();
    for (int nth = 1;; ++nth) {
      std::vector<Value> arguments = row.arguments();
      fail_allocation(nth);
      try {
        EXPECT_EQ(text_of_result(result_of(row.name, std::move(arguments))), whole) << row.name << " after " << nth;
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(allocation_has_failed()) << row.name;
      }
      const bool has_failed = allocation_has_failed();
      fail_allocation(0);
      arguments.clear();
      EXPECT_EQ(counts(), before) << row.name << " after " << nth;
      if (!has_failed) break;
    }
  }
}

TEST(MissingMemory, OfTheKernel_LetsAppendFailWithTheEntriesBefore) {
  int failures = 0;
  for (int nth = 1;; ++nth, ++failures) {
    Value table = Value::table();
    fail_allocation(nth);
    int added = 0;
    try {
      for (; added < 40; ++added) result_of("append", {table, Value(added)});
    } catch (const std::bad_alloc&) {
    }
    const bool has_failed = allocation_has_failed();
    fail_allocation(0);
    EXPECT_EQ(entry_count(table_of(table.record())), added);
    EXPECT_EQ(added < 40, has_failed);
    for (int key = 0; key < added; ++key) EXPECT_EQ(HVM_AsInt(find(table_of(table.record()), key)), key);
    if (!has_failed) break;
  }
  EXPECT_GT(failures, 3);
}

}  // namespace
}  // namespace hvm::testing
