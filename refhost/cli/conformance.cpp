// cli/conformance.cpp: whether a module does what the table of calls and the script tests say

#include "cli/conformance.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <fnmatch.h>
#include <signal.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/conformance_process.hpp"
#include "cli/conformance_report.hpp"
#include "cli/process_pool.hpp"
#include "cli/safe_text.hpp"
#include "cli/script_search.hpp"
#include "cli/streams.hpp"
#include "cli/test_runner.hpp"
#include "conformance/call_table.hpp"
#include "conformance/comparison.hpp"
#include "script/library/script_file.hpp"

namespace hvm {
namespace {

using conformance::CallRecording;
using conformance::CallRow;
using conformance::CallTable;
using Verdict = TestResult::Verdict;
using Indices = std::vector<std::size_t>;

constexpr std::size_t most_shown = 3;  // calls of a function that are shown, and differences of a test
constexpr int most_hanging = 8;        // scripts that take too long, before the others are left out

bool has(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// A file below a folder, as seen from there.
std::string below(const std::string& folder, const std::string& path) { return path.substr(folder.size() + 1); }

// ---- What the module registers

std::size_t missing_functions(const CallTable& table, const std::vector<std::string>& names) {
  return static_cast<std::size_t>(std::count_if(table.functions.begin(), table.functions.end(),
                                                [&](const std::string& name) { return !has(names, name); }));
}

/// Whether more than half of the functions are missing.
bool is_another_module(const CallTable& table, const Module& module) {
  return missing_functions(table, module.functions.names()) > table.functions.size() / 2;
}

/// Whether the functions that both know have the order of the table.
std::vector<std::string> differences_of_order(const CallTable& table, const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < table.functions.size(); ++i)
    if (names[i] != table.functions[i])
      return {fmt::format("function {} that the module registers is {}; the table has {}", i + 1, safe_text(names[i]),
                          table.functions[i])};
  return {};
}

std::vector<std::string> differences_of_registration(const CallTable& table, const Module& module) {
  const std::vector<std::string>& names = module.functions.names();
  const std::size_t missing = missing_functions(table, names);
  if (is_another_module(table, module))
    return {fmt::format("{} registers {} of the {} functions of {}: it is another module", module.path,
                        table.functions.size() - missing, table.functions.size(), table.module)};
  std::vector<std::string> sentences;
  if (missing == 0) sentences = differences_of_order(table, names);
  for (const std::string& name : table.functions)
    if (!has(names, name)) sentences.push_back(fmt::format("the module registers no function {}", name));
  for (const std::string& name : table.types)
    if (!type_named(name.c_str())) sentences.push_back(fmt::format("the module registers no type {}", name));
  return sentences;
}

/// What is left, such as `it leaves behind: 1 blocks`.
std::string left_behind(const Counts& before, const Counts& now) {
  std::vector<std::string> parts;
  const auto compare = [&](const char* what, auto old_count, auto count) {
    if (count != old_count) parts.push_back(fmt::format("{} {}", count - old_count, what));
  };
  compare("objects", before.objects, now.objects);
  compare("tables", before.tables, now.tables);
  compare("strings", before.strings, now.strings);
  compare("blocks", before.blocks, now.blocks);
  compare("records", before.records, now.records);
  compare("pieces", before.pieces, now.pieces);
  return fmt::format("it leaves behind: {}", fmt::join(parts, ", "));
}

// ---- The run

class ConformanceRun {
 public:
  ConformanceRun(const Module& module, const CallTable& table, const std::string& folder,
                 const std::vector<std::string>& scripts, const ConformanceOptions& options)
      : module_(module), table_(table), folder_(folder), options_(options) {
    for (const CallRow& row : table.rows) {
      subjects_.insert(row.subject());
      add("calls/" + row.id, row.subject(), &row);
    }
    for (const std::string& script : scripts) add(below(folder, script), subject_of_script(script), nullptr);
  }

  bool run() {
    report_.module = module_.path;
    report_.module_version = version_of(module_);
    report_.table_version = table_.version;
    report_.left_out = table_.left_out.size();
    report_.is_filtered = !options_.filter.empty();
    report_.registration = differences_of_registration(table_, module_);
    for (const std::string& sentence : report_.registration) put(sentence + "\n");
    const bool is_another = is_another_module(table_, module_);
    if (!is_another) run_tests();
    conclude();
    if (!is_another) put(summary(report_, options_.is_verbose ? 0 : most_shown));
    if (!options_.json_path.empty()) write_json(report_, options_.json_path);
    return report_.conforms;
  }

 private:
  void add(const std::string& path, const std::string& subject, const CallRow* row) {
    if (fnmatch(fmt::format("*{}*", options_.filter).c_str(), path.c_str(), 0) != 0) return;
    TestResult test;
    test.path = path;
    test.subject = subject;
    test.is_call = row != nullptr;
    if (row) test.call = row->made;
    rows_.push_back(row);
    report_.tests.push_back(std::move(test));
  }

  /// The function of a script, or its path.
  std::string subject_of_script(const std::string& script) const {
    const std::string stem = std::filesystem::path(script).stem();
    if (stem == "element_access" || stem == "index_after_change") return "element access";
    return subjects_.count(stem) != 0 ? stem : below(folder_, script);
  }

  // ---- Processes

  /// The calls of a function share a process at first. Where they are not as recorded, each gets its own.
  void run_tests() {
    const std::vector<Indices> groups = groups_of_calls();
    Indices alone;
    for (std::size_t i = 0; i < rows_.size(); ++i)
      if (!rows_[i]) alone.push_back(i);
    run_processes(
        groups.size(), [&](std::size_t group) { return all_pass(groups[group]); },
        [&](std::size_t group, const TestProcess& process) {
          const HandedOn handed = handed_on(process);
          const bool are_good = handed.is_good();
          if (is_hung(process) && !handed.is_prepared) hanging_lines_.insert(handed.line);
          for (const std::size_t i : groups[group])
            if (are_good)
              report_.tests[i].verdict = Verdict::conforms;
            else
              alone.push_back(i);
        });
    std::sort(alone.begin(), alone.end());
    run_processes(
        alone.size(), [&](std::size_t i) { return passes(alone[i]); },
        [&](std::size_t i, const TestProcess& process) { judge(alone[i], process); });
  }

  void run_processes(std::size_t count, ProcessPool::Passes passes, ProcessPool::Report report) const {
    ProcessPool({options_.jobs, options_.time_limit}, std::move(passes), std::move(report)).run(count);
  }

  /// A call that ends the process is alone.
  std::vector<Indices> groups_of_calls() const {
    std::vector<Indices> groups;
    std::map<std::string, std::size_t> places;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      if (!rows_[i]) continue;
      const TestResult& test = report_.tests[i];
      const std::string& name = rows_[i]->ending_signal() == 0 ? test.subject : test.path;
      const auto [place, is_new] = places.try_emplace(name, groups.size());
      if (is_new) groups.emplace_back();
      groups[place->second].push_back(i);
    }
    return groups;
  }

  // ---- In the process of a test

  bool all_pass(const Indices& group) const noexcept {
    try {
      for (const std::size_t i : group) {
        if (!hanging_line_of(*rows_[i]).empty()) return false;
        const Counts before = counts();
        std::optional<CallRecording> recording(std::in_place, module_.functions, rows_[i]->made,
                                               rows_[i]->precision.has_contents);
        if (recording->prepare(hand_on_line) != rows_[i]->prepared) return false;
        hand_on_preparation();
        if (!differences_of_call(recording, *rows_[i], before).empty()) return false;
      }
      return hand_on_differences({});
    } catch (const std::exception&) {
      return false;
    }
  }

  bool passes(std::size_t i) const noexcept {
    try {
      if (!rows_[i] && hung_scripts_ >= most_hanging) return hand_on_reason("too many scripts before it take too long");
      return rows_[i] ? passes_call(*rows_[i]) : hand_on_differences(differences_of_script(report_.tests[i].path));
    } catch (const OutputError&) {
      return false;  // nothing can be handed on: the report says that the call ends the process
    } catch (const std::exception& error) {
      return hand_on_differences({error.what()});
    }
  }

  bool passes_call(const CallRow& row) const {
    if (hanging_.count(row.subject()) != 0)
      return hand_on_reason(fmt::format("another call of {} takes too long", row.subject()));
    const std::string line = hanging_line_of(row);
    if (!line.empty()) return hand_on_reason(fmt::format("what prepares it takes too long: {}", line));
    const Counts before = counts();
    std::optional<CallRecording> recording(std::in_place, module_.functions, row.made, row.precision.has_contents);
    try {
      if (recording->prepare(hand_on_line) != row.prepared)
        return hand_on_reason("what prepares it gives other values");
    } catch (const ScriptError& error) {
      return hand_on_reason(fmt::format("what prepares it fails: {}", error.message()));
    }
    hand_on_preparation();
    return hand_on_differences(differences_of_call(recording, row, before));
  }

  /// The line of a preparation that took too long before; empty when there is none.
  std::string hanging_line_of(const CallRow& row) const {
    for (const std::string& line : hanging_lines_)
      if (("\n" + row.made.preparation).find("\n" + line + "\n") != std::string::npos) return line;
    return {};
  }

  /// Performs a call that is prepared, and ends its recording: nothing lives longer than the variables.
  static std::vector<std::string> differences_of_call(std::optional<CallRecording>& recording, const CallRow& row,
                                                      const Counts& before) {
    const conformance::Json got = recording->perform();
    recording.reset();
    if (row.ending_signal() != 0) return {"it comes to its end"};
    std::vector<std::string> found = conformance::differences(row.record, got, row.precision.tolerance);
    if (counts() != before) found.push_back(left_behind(before, counts()));
    return found;
  }

  std::vector<std::string> differences_of_script(const std::string& path) const {
    const std::string file = fmt::format("{}/{}", folder_, path);
    std::vector<std::string> failures = unmet_expectations(read_script(file), module_.functions, options_.conditions);
    for (std::string& failure : failures)
      if (failure.compare(0, file.size(), file) == 0) failure = "line " + failure.substr(file.size() + 1);
    return failures;
  }

  // ---- Verdicts

  static bool is_hung(const TestProcess& process) {
    const TestEnd& end = process.how_it_ended();
    return end.kind == TestEnd::Kind::ended_by_signal && end.signal == SIGALRM;
  }

  void judge(std::size_t i, const TestProcess& process) {
    TestResult& test = report_.tests[i];
    const HandedOn handed = handed_on(process);
    const TestEnd& end = process.how_it_ended();
    const bool is_prepared = handed.is_prepared || !test.is_call;
    test.verdict = is_prepared ? Verdict::differs : Verdict::unjudged;
    if (!handed.is_whole && !is_prepared) {
      test.differences = {fmt::format("what prepares it does not come to its end: in {}, {}", handed.line,
                                      words_of_end(end, options_.time_limit))};
    } else if (!handed.reason.empty()) {
      test.verdict = Verdict::unjudged;
      test.differences = {handed.reason};
    } else if (rows_[i] && rows_[i]->ending_signal() != 0) {
      judge_end(test, handed, end, rows_[i]->ending_signal());
    } else {
      test.differences = handed.differences;
      if (!handed.is_whole) test.differences.push_back(words_of_end(end, options_.time_limit));
      if (test.differences.empty()) test.verdict = Verdict::conforms;
    }
    if (is_hung(process)) take_hung(test, handed);
    if (test.verdict == Verdict::differs) show(test);
  }

  /// What will take too long again is not run again.
  void take_hung(const TestResult& test, const HandedOn& handed) {
    if (!test.is_call)
      ++hung_scripts_;
    else if (handed.is_prepared)
      hanging_.insert(test.subject);
    else
      hanging_lines_.insert(handed.line);
  }

  /// A call that the processor must end.
  void judge_end(TestResult& test, const HandedOn& handed, const TestEnd& end, int signal) const {
    const bool is_right = end.kind == TestEnd::Kind::ended_by_signal && end.signal == signal;
    if (is_right) return void(test.verdict = Verdict::conforms);
    const std::string what =
        handed.differences.empty() ? words_of_end(end, options_.time_limit) : handed.differences.front();
    test.differences = {
        fmt::format("{}; the table has: it ends the process by signal {} ({})", what, signal, strsignal(signal))};
  }

  void show(const TestResult& test) {
    const std::size_t shown = ++shown_[test.is_call ? test.subject : test.path];
    if (shown <= most_shown || options_.is_verbose) put(text_of(test, options_.is_verbose ? 0 : most_shown));
  }

  void conclude() {
    report_.seconds = std::chrono::duration<double>(TestProcess::Clock::now() - start_).count();
    const auto count_of = [&](Verdict verdict) {
      return static_cast<std::size_t>(std::count_if(report_.tests.begin(), report_.tests.end(),
                                                    [&](const TestResult& test) { return test.verdict == verdict; }));
    };
    const std::size_t good = count_of(Verdict::conforms);
    report_.conforms = report_.registration.empty() && good > 0 && good == report_.tests.size();
    // Why calls are not judged matters where nothing else tells what is wrong.
    const bool tells_reasons = options_.is_verbose || (report_.registration.empty() && count_of(Verdict::differs) == 0);
    if (!tells_reasons) return;
    for (const TestResult& test : report_.tests)
      if (test.verdict == Verdict::unjudged) show(test);
  }

  const Module& module_;
  const CallTable& table_;
  std::string folder_;
  const ConformanceOptions& options_;
  TestProcess::Clock::time_point start_ = TestProcess::Clock::now();
  std::set<std::string> subjects_;
  std::vector<const CallRow*> rows_;          // of the tests of the report; null for a script
  std::map<std::string, std::size_t> shown_;  // calls by their subjects, and scripts
  std::set<std::string> hanging_;             // subjects
  std::set<std::string> hanging_lines_;       // of preparations
  int hung_scripts_ = 0;
  ConformanceReport report_;
};

}  // namespace

void check_that_it_loads(const std::string& path, double time_limit) {
  const auto loads = [&](std::size_t) {
    try {
      load_module(path);
    } catch (const std::exception&) {
      // The process that asked finds the same, and says so.
    }
    return hand_on_differences({});
  };
  const auto report = [&](std::size_t, const TestProcess& process) {
    if (!handed_on(process).is_good())
      throw ModuleError(fmt::format("the module {} cannot be loaded: while it is loaded, {}", path,
                                    words_of_end(process.how_it_ended(), time_limit)));
  };
  ProcessPool({1, time_limit}, loads, report).run(1);
}

bool run_conformance(const Module& module, const ConformanceOptions& options) {
  check_report_path("--json", options.json_path);
  const std::string folder = data_folder() / "conformance";
  CallTable table;
  try {
    table = conformance::read_call_table(folder + "/calls.jsonl");
  } catch (const conformance::TableError& error) {
    throw FileError(fmt::format("--conformance: {}", error.what()));
  }
  const std::string scripts = folder + "/scripts";
  std::error_code error;
  if (!std::filesystem::is_directory(scripts, error))
    throw FileError(fmt::format("--conformance: there is no folder {} with the script tests", scripts));
  const FoundScripts found = find_scripts({scripts}, "");
  if (!found.unreadable.empty()) throw FileError(fmt::format("--conformance: {}", found.unreadable.front()));
  return ConformanceRun(module, table, folder, found.scripts, options).run();
}

}  // namespace hvm
