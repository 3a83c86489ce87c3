// soak/soak.cpp: random calls, with a look at the memory every now and then
//
//     soak [CALLS [SEED]]
//
// Scripts at random call the module until it was called CALLS times. The program prints a table: what is held after
// each part of the calls, with all variables dropped. It fails when something is left behind, when the resident memory
// grows, or when a function gave no value in a million calls.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include "script/module/module_calls.hpp"
#include "script/run/interpreter.hpp"
#include "script/stop/script_end.hpp"
#include "statements.hpp"
#include "support/allocations.hpp"
#include "support/functions.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

/// Of one block; a call that needs more finds no memory. Larger results would take their time.
constexpr std::size_t largest_block = std::size_t{1} << 15;
constexpr std::size_t parts = 20;
/// So many calls let each function give a value.
constexpr std::uint64_t enough_for_each = 1'000'000;
/// What the resident memory may grow by from the fourth part on: the C library gives its free memory back in pieces.
constexpr double permitted_growth = 2;  // MiB

struct Held {
  std::uint64_t calls = 0;
  std::uint64_t failures = 0;
  double resident = 0;  // MiB
  std::int64_t allocations = 0;
  hvm::Counts host;
};

double resident_memory() {
  std::ifstream file("/proc/self/statm");
  double all = 0, resident = 0;
  file >> all >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

class Soak {
 public:
  explicit Soak(std::uint64_t seed) : statements_(names(), seed), first_call_(hvm::module_changes()) {
    for (const FunctionRecord& function : all_functions())
      if (!function.is_stub && !contains({"xcond", "xeigvals"}, function.name))  // these two compute, and give nothing
        answers_[function.name] = 0;
  }

  /// Makes calls until there were so many in all; what is held after them.
  Held run_until(std::uint64_t calls) {
    while (hvm::module_changes() - first_call_ < calls) run_script();
    Held held;
    held.calls = hvm::module_changes() - first_call_;
    held.failures = failures_;
    held.resident = resident_memory();
    held.allocations = allocations().alive;
    held.host = hvm::counts();
    return held;
  }

  /// How often each function gave a value; those that cannot are left out.
  const std::map<std::string, std::uint64_t>& answers() const { return answers_; }

 private:
  static std::vector<std::string> names() {
    std::vector<std::string> all;
    for (const FunctionRecord& function : all_functions()) all.emplace_back(function.name);
    return all;
  }

  static const hvm::ModuleFunctions& registered() {
    static const hvm::ModuleFunctions functions = [] {
      hvm::ModuleFunctions made;
      hvm::ModuleFunctions::register_rows(&made, static_cast<int>(Module::loaded().rows().size()),
                                          Module::loaded().table());
      return made;
    }();
    return functions;
  }

  static hvm::InterpreterOptions options() {
    static const hvm::ModuleDescription description(module_path(), registered().names(),
                                                    [](const std::string& problem) {
                                                      std::fprintf(stderr, "%s\n", problem.c_str());
                                                      std::exit(2);
                                                    });
    description.get();  // larger than what calls may take
    hvm::InterpreterOptions made;
    made.print = [](const std::string&, const hvm::SourceText&, std::size_t) {};
    made.warn = [](const hvm::Warning&) {};
    made.files = hvm::FileAccess::none;
    made.description = &description;
    return made;
  }

  /// Five hundred statements over the same variables. A script keeps its quotations until it ends.
  void run_script() {
    hvm::Interpreter script(registered(), options());
    limit_allocations(largest_block);
    for (int statements = 500; statements > 0; --statements) run(script, statements_.next());
    limit_allocations(any_block);
  }

  void run(hvm::Interpreter& script, const std::string& statement) {
    try {
      script.run(script.parse(std::make_shared<hvm::SourceText>("soak.hvm", statement)));
      note_answer(script, statement);
    } catch (const hvm::ScriptError&) {
      ++failures_;
    } catch (const std::bad_alloc&) {
      ++failures_;
    }
  }

  /// Counts the function of `a1 = xname(...)` when it gave a value.
  void note_answer(const hvm::Interpreter& script, const std::string& statement) {
    const std::size_t begin = statement.find(" = x"), end = statement.find('(');
    if (begin == std::string::npos || end == std::string::npos) return;
    const auto function = answers_.find(statement.substr(begin + 3, end - begin - 3));
    const Value* given = script.global(statement.substr(0, begin));
    if (function != answers_.end() && given != nullptr && !given->is_nil()) ++function->second;
  }

  Statements statements_;
  std::uint64_t first_call_;
  std::uint64_t failures_ = 0;
  std::map<std::string, std::uint64_t> answers_;
};

void print(const Held& held) {
  std::printf("%10llu %10llu %9.1f %11lld %8lld %7lld %7lld\n", static_cast<unsigned long long>(held.calls),
              static_cast<unsigned long long>(held.failures), held.resident, static_cast<long long>(held.allocations),
              static_cast<long long>(held.host.objects), static_cast<long long>(held.host.tables),
              static_cast<long long>(held.host.strings));
  std::fflush(stdout);
}

/// What is wrong with the course of a run; empty when nothing is.
std::string growth_in(const std::vector<Held>& course) {
  const Held& first = course[3];
  double highest = 0;
  for (std::size_t part = 4; part < course.size(); ++part) {
    const Held& held = course[part];
    if (!(held.host == first.host)) return "the host holds more than before";
    if (held.allocations != first.allocations) return "allocations of C++ are left behind";
    highest = std::max(highest, held.resident);
  }
  // The address sanitizer keeps memory that was given back.
  if (!is_under_address_sanitizer() && highest > first.resident + permitted_growth) return "the resident memory grows";
  return "";
}

int soak(std::uint64_t calls, std::uint64_t seed) {
  Soak run(seed);
  std::printf("%10s %10s %9s %11s %8s %7s %7s\n", "calls", "failures", "MiB", "allocations", "objects", "tables",
              "texts");
  std::vector<Held> course;
  for (std::size_t part = 1; part <= parts; ++part) {
    course.push_back(run.run_until(calls * part / parts));
    print(course.back());
  }
  const std::string problem = growth_in(course);
  const auto rarest = std::min_element(run.answers().begin(), run.answers().end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
  std::printf("%zu functions gave a value, %s most rarely: %llu times\n", run.answers().size(), rarest->first.c_str(),
              static_cast<unsigned long long>(rarest->second));
  if (!problem.empty()) std::printf("error: %s\n", problem.c_str());
  if (rarest->second == 0 && calls >= enough_for_each) std::printf("error: a function never gave a value\n");
  return problem.empty() && (rarest->second > 0 || calls < enough_for_each) ? 0 : 1;
}

}  // namespace
}  // namespace arrayfold::test

int main(int count, char** words) {
  const auto number = [&](int at, std::uint64_t otherwise) {
    return at < count ? std::strtoull(words[at], nullptr, 10) : otherwise;
  };
  return arrayfold::test::soak(number(1, 10'000'000), number(2, 1));
}
