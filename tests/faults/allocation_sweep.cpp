// faults/allocation_sweep.cpp: a program that makes calls of the whole module with every allocation failing
//
// Usage: allocation_sweep [--all] TABLE SCRIPTS
//
// TABLE is the table of calls of `hvm --conformance`, SCRIPTS the folder of the script tests. Without --all, a part of
// the calls is repeated: the first two of each name, and a few of the others; the choice is the same in each run.
// It prints the figures of the page on testing. The exit status is 1 if anything went wrong.

#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>

#include "faults/swept_calls.hpp"
#include "support/functions.hpp"

namespace arrayfold::test {
namespace {

constexpr const char* columns[] = {"Family",           "calls",          "module allocations",
                                   "host allocations", "failing runs",   "`bad_alloc`",
                                   "table cut off",    "as with memory", "no value"};

/// The digits in groups of three.
std::string grouped(std::int64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
  return digits;
}

void print_row(const std::string& family, const Tally& tally) {
  std::printf("| %s |", family.c_str());
  for (const std::int64_t figure : {tally.calls, tally.module_allocations, tally.host_allocations, tally.failing_runs,
                                    tally.out_of_memory, tally.unfinished, tally.same, tally.no_value})
    std::printf(" %s |", grouped(figure).c_str());
  std::printf("\n");
}

void print_table(const Sweep& sweep) {
  for (const char* column : columns) std::printf("| %s ", column);
  std::printf("|\n|");
  for (const char* column : columns) std::printf(column == columns[0] ? " --- |" : " ---: |");
  std::printf("\n");
  Tally all;
  for (const auto& [family, tally] : sweep.tallies()) {
    print_row(family, tally);
    all += tally;
  }
  print_row("all", all);
}

/// What takes no memory, apart from stubs.
const std::vector<std::string> without_memory = {"xamin",          "xamax",          "xsum",         "xtrapz",
                                                 "xcount_nonzero", "xshuffle",       "xpermutation", "equal",
                                                 "not_equal",      "read_one_index", "read_element", "write_element"};

/// What is wrong with the sweep itself: a function, method or operator that was not called, or in whose calls no
/// allocation failed, or one.
std::vector<std::string> gaps(const Sweep& sweep) {
  std::map<std::string, std::int64_t> failures;
  for (const auto& [family, tally] : sweep.tallies())
    for (const auto& [name, count] : tally.failures) failures[name] += count;
  std::vector<std::string> found;
  const auto expect = [&](const std::string& name, bool has_failures) {
    if (failures.count(name) == 0)
      found.push_back("nothing calls " + name);
    else if (failures[name] > 0 && !has_failures)
      found.push_back("an allocation of " + name + " has failed: it should need none");
    else if (failures[name] == 0 && has_failures)
      found.push_back("no allocation of " + name + " has failed");
  };
  for (const FunctionRecord& function : all_functions())
    expect(function.name, !function.is_stub && !contains(without_memory, function.name));
  for (const char* name :
       {"dump", "reshape", "shape", "less_equal", "greater_equal", "not_equal", "less", "greater", "equal", "add",
        "subtract", "multiply", "divide", "remainder", "read_one_index", "read_element", "write_element"})
    expect(name, !contains(without_memory, name));
  return found;
}

int run(bool whole, const std::string& table, const std::string& scripts) {
  const auto timed = [&](const char* what, const auto& part) {
    part();
    const double seconds = static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
    std::fprintf(stderr, "%-16s %6.1f s of processor time so far\n", what, seconds);
  };
  Sweep sweep(whole ? SweepSize{} : SweepSize{61, 11, false});
  timed("functions", [&] { call_functions(sweep); });
  timed("methods", [&] { call_methods(sweep); });
  timed("operators", [&] { apply_operators(sweep); });
  timed("reading", [&] { read_arrays(sweep); });
  timed("recorded calls", [&] { make_recorded_calls(sweep, table); });
  timed("scripts", [&] { run_scripts(sweep, scripts); });
  print_table(sweep);
  constexpr std::size_t most_shown = 40;
  for (std::size_t i = 0; i < std::min(sweep.problems().size(), most_shown); ++i)
    std::fprintf(stderr, "%s\n", sweep.problems()[i].c_str());
  if (sweep.problems().size() > most_shown)
    std::fprintf(stderr, "and %zu more\n", sweep.problems().size() - most_shown);
  const auto missing = gaps(sweep);
  for (const std::string& gap : missing) std::fprintf(stderr, "%s\n", gap.c_str());
  return sweep.problems().empty() && missing.empty() ? 0 : 1;
}

}  // namespace
}  // namespace arrayfold::test

int main(int count, char** words) {
  const bool whole = count == 4 && std::strcmp(words[1], "--all") == 0;
  if (!whole && count != 3) {
    std::fprintf(stderr, "usage: allocation_sweep [--all] TABLE SCRIPTS\n");
    return 2;
  }
  try {
    return arrayfold::test::run(whole, words[count - 2], words[count - 1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "allocation_sweep: %s\n", error.what());
    return 2;
  }
}
