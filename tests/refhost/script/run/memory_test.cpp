// refhost/script/run/memory_test.cpp: scripts and data that are read, and scripts that run, while memory runs out
//
// `operator new` is replaced for the whole program.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>

#include "script/data/csv_columns.hpp"
#include "script/data/json_text.hpp"
#include "script/data/json_values.hpp"
#include "script/data/output_file.hpp"
#include "script/library/script_file.hpp"
#include "script/syntax/names.hpp"
#include "script_run.hpp"

namespace {

int allocations_to_failure = 0;  // 0: none fails

void* allocated(std::size_t size) {
  if (allocations_to_failure > 0 && --allocations_to_failure == 0) throw std::bad_alloc();
  void* memory = std::malloc(size > 0 ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return allocated(size); }
void* operator new[](std::size_t size) { return allocated(size); }
// Never fails: a sort that gets no buffer does without.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size > 0 ? size : 1); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace hvm::testing {
namespace {

/// Runs `action` with its first allocation failing, then its second, and so on until none fails. Gives the number of
/// failures, after each of which `action` has thrown an `Error` that `check` accepts.
template <class Error, class Action, class Check>
int fail_each_allocation(Action action, Check check) {
  for (int nth = 1;; ++nth) {
    allocations_to_failure = nth;
    try {
      action();
      const bool has_failed = allocations_to_failure == 0;
      allocations_to_failure = 0;
      EXPECT_FALSE(has_failed) << "allocation " << nth << " failed without an error";
      return nth - 1;
    } catch (const Error& error) {
      allocations_to_failure = 0;
      check(error);
    }
  }
}

TEST(MemoryRunsOut, WhileAScriptIsParsed_TheErrorNamesTheScript) {
  const auto source = std::make_shared<SourceText>(
      "long/name/of/a/script.hvm", "fn f(a)\n  return [a, \"text\": w\"wide\"]\nend\nx = f(@double(2, 3))[0] + 1");
  Interpreter interpreter(toy_functions(), {});
  const int failures = fail_each_allocation<ScriptError>(
      [&] { interpreter.parse(source); },
      [](const ScriptError& error) {
        EXPECT_EQ(error.message(), "out of memory while the script is read");
        EXPECT_EQ(error.report().rfind("long/name/of/a/script.hvm:1:1: error: out of memory", 0), 0u) << error.report();
      });
  EXPECT_GT(failures, 20);
}

TEST(MemoryRunsOut, WhileANameIsAdded_NoTwoNamesShareASlot) {
  NameTable names;
  const std::string name(100, 'n');
  const int failures = fail_each_allocation<std::bad_alloc>([&] { names.slot_of(name); },
                                                            [&](const std::bad_alloc&) {
                                                              EXPECT_EQ(names.size(), 0u);
                                                              EXPECT_FALSE(names.find(name));
                                                            });
  EXPECT_GT(failures, 1);
  EXPECT_EQ(names.slot_of(name), 0u);
  EXPECT_EQ(names.slot_of("another"), 1u);
}

TEST(MemoryRunsOut, WhileAScriptIsReadFromItsFile_TheErrorNamesTheScript) {
  const std::string path = ::testing::TempDir() + "a-script-with-a-long-name.hvm";
  std::ofstream(path) << std::string(10000, '\n') << "print(1)";
  const int failures = fail_each_allocation<std::runtime_error>(
      [&] { read_script(path); },
      [&](const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
      });
  EXPECT_GT(failures, 3);
  std::filesystem::remove(path);
}

TEST(MemoryRunsOut, WhileAWarningIsMade_ItIsLostAndNothingIsLeftBehind) {
  // The arrays are there before memory fails: the toy module makes none without it.
  const auto arrays = std::make_shared<SourceText>("arrays.hvm", "a = toy_double(3)\nm = toy_double(2, 3)");
  const auto source = std::make_shared<SourceText>(
      "test.hvm",
      "x = xarray(@double, @[1, 2.5])\ny = m[1]\nz = m[2]  # allow: fewer-indices\nx = xarray(@int, @[1, 2.5])\n");
  int most = 0, least = 100;
  for (int nth = 1, has_failed = 1; has_failed; ++nth) {
    const Counts before = counts();
    int warnings = 0;
    {
      InterpreterOptions options;
      options.warn = [&](const Warning&) { ++warnings; };
      options.explains = true;
      Interpreter interpreter(toy_functions(), options);
      interpreter.run(interpreter.parse(arrays));
      const Program program = interpreter.parse(source);
      allocations_to_failure = nth;
      try {
        interpreter.run(program);
      } catch (const ScriptError&) {
      } catch (const std::bad_alloc&) {
      }
      has_failed = allocations_to_failure == 0;
      allocations_to_failure = 0;
    }
    EXPECT_TRUE(counts() == before) << "left behind after allocation " << nth;
    most = std::max(most, warnings);
    least = std::min(least, warnings);
  }
  EXPECT_GE(most, 3);
  EXPECT_LT(least, most);
}

/// A script that needs memory in every way, without a module.
const char* const every_way = R"(
fn doubled(text, n)
  if n == 0 then return text end
  return doubled(text + text, n - 1)
end
s = doubled("some text that is no short one ", 2)
w = w"wide text " + s
t = [s, [w, 2.5], "key": [1, 2], 3L: "three", w: "wide key"]
for i in range(20) do t["n" + str(i)] = [s, i] end
for k, v in t do t[k] = [v] end
for v in range(5) do t[v] = s[v:20] end
numbers = range(50)
numbers[7] += 0.5
words = ""
for v in numbers do words += str(v) * 2 end
q = [@double(numbers, "a text for the module"), @[[1, 2], [3, v]]]
print(len(t), len(words), type(q[0]), w < s, w == w, s[3], w[4:9] + s[:2])
print(t["key"], t["n7"], [1, [2, "x": [s]]])
words = "an error that is caught, unless memory is missing"
try error(words) catch message if message != words then error(message) end end
print(message)
)";

/// The built-in functions that make texts and tables.
const char* const every_function = R"(
text = "some words, that are no short text: " * 2
w = w"wide, with a part that is narrowed"
t = split(text); u = split(w, ", ")
print(join(t, "; " * 10), join(u), upper(text), lower(w), trim("  " + text), replace(text, "o", "0" * 20))
print(find(text, "short"), find(text, text), find(w, "narrowed"), find(text, "nothing of it"))
print(format("{:>40} {:<40.3f} {:+d} {}", text[:30], 2.5, 3, [1, [2.5, text]]), str([text, w]))
append(t, text, [u], w); removed = remove(t, 3)
rows = [["k": "b" * 20, "n": 2], ["k": w, "n": 1], ["k": "a" * 20, "n": 3]]
print(keys(rows[0]), values(rows[0]), sort(rows, "k")[0], sort(["b", w, "a"]), removed, has(t, w))
print(to_json([rows[0], 2.5, nil], 2), parse_json("{\"a key of some length\": [1, \"a text, \\u00e9\"]}"))
print(min([3, 1, 2]), max(1, 2.5), number(" 1.5e3 "), round(2.567, 2), type(text), range(3, 40), len(w))
)";

/// What a run printed, and the error that ended it. It needs memory only where `print` hands over a line.
struct Run {
  std::vector<std::string> lines;
  std::optional<ScriptError> error;
};

Run run_of(const Program& program, Interpreter& interpreter, std::vector<std::string>& lines) {
  Run run;
  try {
    for (const Statement& statement : program.statements) interpreter.run(statement, program.source);
  } catch (const ScriptError& error) {
    run.error = error;
  }
  run.lines = std::move(lines);
  return run;
}

/// Runs a script with the first allocation failing that `fail` counts, then with the second, and so on until none
/// fails. A run whose allocation failed ends with the error of it, and has printed right lines up to there.
template <class Fail, class HasFailed>
void expect_error_of_each_failure(const ModuleFunctions& functions, const char* script, int least_failures, Fail fail,
                                  HasFailed has_failed) {
  std::vector<std::string> right;
  for (int nth = 0;; ++nth) {
    const Counts before = counts();
    {
      std::vector<std::string> lines;
      Interpreter interpreter(
          functions, {true, [&](const std::string& text, const SourceText&, std::size_t) { lines.push_back(text); }});
      const Program program = interpreter.parse(std::make_shared<SourceText>("a.hvm", script));
      interpreter.define(program);
      if (nth > 0) fail(nth);
      Run run = run_of(program, interpreter, lines);
      const bool is_short = nth > 0 && has_failed();
      fail(0);
      if (nth == 0) {
        ASSERT_FALSE(run.error) << run.error->report();
        right = run.lines;
      }
      ASSERT_EQ(run.error.has_value(), is_short) << "allocation " << nth;
      ASSERT_LE(run.lines.size(), right.size());
      if (run.error) {
        EXPECT_NE(run.error->message().find("out of memory"), std::string::npos) << run.error->report();
      } else {
        EXPECT_EQ(run.lines, right);
      }
      EXPECT_TRUE(std::equal(run.lines.begin(), run.lines.end(), right.begin())) << "allocation " << nth;
      if (nth > 0 && !is_short) {
        EXPECT_GT(nth, least_failures);
        break;
      }
    }
    EXPECT_TRUE(counts() == before) << "allocation " << nth;
  }
}

TEST(MemoryRunsOut, InTheInterpreter_EndsTheScriptWithAnError) {
  expect_error_of_each_failure(
      toy_functions(), every_way, 400, [](int nth) { allocations_to_failure = nth; },
      [] { return allocations_to_failure == 0; });
  expect_error_of_each_failure(
      toy_functions(), every_function, 100, [](int nth) { allocations_to_failure = nth; },
      [] { return allocations_to_failure == 0; });
}

TEST(MemoryRunsOut, InTheHost_EndsTheScriptWithAnError) {
  expect_error_of_each_failure(toy_functions(), every_way, 100, fail_allocation, allocation_has_failed);
  expect_error_of_each_failure(toy_functions(), every_function, 50, fail_allocation, allocation_has_failed);
}

/// Every allocation of `action` fails once, with a `std::bad_alloc` that leaves nothing behind in the host.
template <class Action>
void expect_bad_alloc_everywhere(Action action) {
  const Counts before = counts();
  const int failures =
      fail_each_allocation<std::bad_alloc>(action, [&](const std::bad_alloc&) { EXPECT_TRUE(counts() == before); });
  EXPECT_GT(failures, 2);
  EXPECT_TRUE(counts() == before);
}

TEST(MemoryRunsOut, WhileDataAreReadOrWritten_NothingIsLeftBehind) {
  const std::string folder = ::testing::TempDir() + "memory-test-of-data/";
  std::filesystem::create_directory(folder);
  const std::string path = folder + "a-file-with-a-long-name.csv";
  std::string csv = "\"a long name of a column\",b\n";
  for (int row = 0; row < 100; ++row) csv += "\"a cell with a long text\"," + std::to_string(row) + ".5\n";
  std::ofstream(path) << csv;
  expect_bad_alloc_everywhere([&] { columns_of_csv(path, {}); });
  CsvFormat numbers;
  numbers.chosen = std::vector<ColumnChoice>{std::int64_t{1}};
  expect_bad_alloc_everywhere([&] { numbers_of_csv(path, numbers); });
  expect_bad_alloc_everywhere([&] {
    OutputFile file(path);
    file.write(csv);
    file.finish();
  });
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
  const std::string json = "[[[[[1, 2.5, {\"a key of some length\": \"a text of some length\"}]]]]]";
  expect_bad_alloc_everywhere([&] { json_value(json); });
  const Value value = json_value(json);
  expect_bad_alloc_everywhere([&] { json_text(value, 2, {}); });
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace hvm::testing
