// conformance/write_calls.cpp: the program that writes the table of calls of hvm --conformance
//
// Usage: write_calls CALLS TABLE
//
// It makes each call of the file CALLS, and for each row of the pages' tables of failures the first call that fits, and
// records what the module of this build does.

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "conformance/call_table.hpp"
#include "explanations/described_module.hpp"
#include "explanations/failure_calls.hpp"
#include "script/syntax/diagnostics.hpp"

namespace hvm::conformance {
namespace {

using testing::FailureCall;

/// A line that write_calls does not understand, or a call that cannot be recorded.
class CallsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The texts that the first braces of a text stand for, and so on for the others.
std::vector<std::string> expanded(const std::string& text) {
  const std::size_t open = text.find('{');
  const std::size_t close = text.find('}', open);
  if (open == std::string::npos || close == std::string::npos) return {text};
  std::vector<std::string> texts;
  std::istringstream words(text.substr(open + 1, close - open - 1));
  for (std::string word; std::getline(words, word, ',');)
    for (const std::string& rest : expanded(text.substr(close + 1)))
      texts.push_back(text.substr(0, open) + word + rest);
  return texts;
}

/// The operators in the words of the pages.
const std::map<std::string, std::string> operators = {{"add", "+"},    {"subtract", "-"},  {"multiply", "*"},
                                                      {"divide", "/"}, {"remainder", "%"}, {"less", "<"},
                                                      {"equal", "=="}};

class Writer {
 public:
  Writer() {
    table_.module = "arrayfold";
    table_.version = PROJECT_VERSION;
    table_.functions = testing::module_functions().names();
    for (const RegisteredType& type : registered_types()) table_.types.push_back(type.name);
  }

  void read(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw CallsError(path + " cannot be read");
    std::size_t number = 0;
    for (std::string line; std::getline(file, line);) {
      ++number;
      try {
        take(line);
      } catch (const std::exception& error) {
        throw CallsError(fmt::format("{}:{}: {}", path, number, error.what()));
      }
    }
  }

  void add_failures() {
    precision_ = {};
    const Description& description = testing::description();
    for (const auto* entries : {&description.functions, &description.methods, &description.operators})
      for (const FunctionEntry& entry : *entries)
        for (const FailureRow& row : entry.failures) add_failure(entry, row);
  }

  /// The rows, those of one subject together.
  CallTable table() {
    std::stable_sort(table_.rows.begin(), table_.rows.end(),
                     [&](const CallRow& a, const CallRow& b) { return order_of(a.id) < order_of(b.id); });
    std::map<std::string, int> counts;
    for (CallRow& row : table_.rows) row.id = fmt::format("{}/{}", row.id, ++counts[row.id]);
    return table_;
  }

 private:
  // ---- The file of calls

  void take(const std::string& line) {
    static const std::regex let(R"(let (\w+) = (.+))");
    static const std::regex within(R"(within (\S+): (.+))");
    static const std::regex shapes(R"(shapes: (.+))");
    static const std::regex faults(R"(faults (\w+): (.+): ([^:]+))");
    std::smatch parts;
    if (line.empty() || line[0] == '#') return;
    if (line == "exactly") {
      precision_ = {};
    } else if (std::regex_match(line, parts, let)) {
      names_.push_back(parts[1]);
      expressions_[parts[1]] = parts[2];
    } else if (std::regex_match(line, parts, within)) {
      precision_ = {std::stod(parts[1]), true, parts[2]};
    } else if (std::regex_match(line, parts, shapes)) {
      precision_ = {std::numeric_limits<double>::infinity(), false, parts[1]};
    } else if (std::regex_match(line, parts, faults)) {
      for (const std::string& call : expanded(parts[3])) add_fault(parts[1], parts[2], call);
    } else {
      for (const std::string& call : expanded(line)) add(call);
    }
  }

  static void record(CallRow& row) {
    CallRecording recording(testing::module_functions(), row.made, row.precision.has_contents);
    row.prepared = recording.prepare();
    row.record = recording.perform();
  }

  std::set<std::string> variables_in(const std::string& text) const {
    static const std::regex words(R"(\w+)");
    std::set<std::string> found;
    for (std::sregex_iterator word(text.begin(), text.end(), words), end; word != end; ++word)
      if (expressions_.count(word->str()) != 0) found.insert(word->str());
    return found;
  }

  std::string preparation_of(const std::string& call) const {
    std::set<std::string> needed = variables_in(call);
    for (std::size_t before = 0; before != needed.size();) {
      before = needed.size();
      for (const std::string& name : std::set<std::string>(needed)) needed.merge(variables_in(expressions_.at(name)));
    }
    std::string text;
    for (const std::string& name : names_)
      if (needed.count(name) != 0) text += fmt::format("{} = {}\n", name, expressions_.at(name));
    return text;
  }

  void add(const std::string& call) {
    CallRow row;
    row.made = {preparation_of(call), call};
    row.precision = precision_;
    record(row);
    if (row.record["calls"].empty()) {
      const Json& outcome = row.record["outcome"];
      throw CallsError(fmt::format("{} does not come to the module: {}", call, outcome.dump()));
    }
    row.id = subject_of(row);
    if (!known(row.made)) table_.rows.push_back(std::move(row));
  }

  /// The call is not made here: it ends the process.
  void add_fault(const std::string& subject, const std::string& when, const std::string& call) {
    CallRow row;
    row.id = subject;
    row.documents = {subject + ": " + when};
    row.made = {preparation_of(call), call};
    row.prepared = CallRecording(testing::module_functions(), row.made, true).prepare();
    row.record["outcome"] = {{"ends", "SIGFPE"}};
    table_.rows.push_back(std::move(row));
    documented_.insert(subject + ": " + when);
  }

  /// The row of a call; null when there is none.
  CallRow* known(const PreparedCall& made) {
    const auto found = std::find_if(table_.rows.begin(), table_.rows.end(), [&](const CallRow& row) {
      return row.made.call == made.call && row.made.preparation == made.preparation;
    });
    return found == table_.rows.end() ? nullptr : &*found;
  }

  // ---- Documented failures

  void add_failure(const FunctionEntry& entry, const FailureRow& failure) {
    const std::string document = entry.name + ": " + failure.when;
    if (failure.condition.form == Condition::Form::no_memory)
      return leave_out(document, "memory cannot be made to miss from outside of the module");
    if (failure.outcome == Outcome::refused) return leave_out(document, "hvm does not make such a call");
    if (failure.outcome == Outcome::ends && documented_.count(document) != 0) return;
    CallRow* first = nullptr;  // of those that fit and are in the table already
    for (const FailureCall& call : calls_for(entry, failure)) {
      CallRow row;
      row.made = {call.preparation == "\n" ? "" : call.preparation, call.call};
      const auto sign = operators.find(entry.name);
      if (sign != operators.end() && !entry.receiver) row.made.call = fmt::format("a {} b", sign->second);
      record(row);
      if (!shows(row.record, failure)) continue;
      row.id = subject_of(row);
      row.documents = {document};
      CallRow* const old = known(row.made);
      if (!old) return table_.rows.push_back(std::move(row));
      if (!first) first = old;
    }
    if (!first) return leave_out(document, "no call is known that brings it about");
    first->documents.push_back(document);
  }

  /// Operators also get arrays of ints: those of doubles have no remainder.
  static std::vector<FailureCall> calls_for(const FunctionEntry& entry, const FailureRow& failure) {
    std::vector<FailureCall> calls = testing::failure_calls(entry, failure);
    if (operators.count(entry.name) == 0) return calls;
    for (std::size_t i = 0, count = calls.size(); i < count; ++i) {
      FailureCall of_ints = calls[i];
      of_ints.preparation = std::regex_replace(of_ints.preparation, std::regex(R"(xones\(2, 3\))"),
                                               "xarray(@int, [[1, 1, 1], [1, 1, 1]])");
      of_ints.preparation =
          std::regex_replace(of_ints.preparation, std::regex(R"(xones\(2\))"), "xarray(@int, [1, 1])");
      calls.push_back(std::move(of_ints));
    }
    return calls;
  }

  void leave_out(const std::string& document, const char* reason) { table_.left_out.push_back({document, reason}); }

  static bool shows(const Json& record, const FailureRow& failure) {
    if (record["calls"].empty()) return false;
    const Json& outcome = record["outcome"];
    if (failure.outcome == Outcome::fails) return outcome.contains("fails");
    if (failure.outcome == Outcome::throws) return outcome.contains("throws");
    return outcome.contains("value") && outcome["value"].is_null();
  }

  // ---- Order

  /// What is called: the function around all others, or what comes last, in the words of the pages. These take the four
  /// comparisons for one operator, and both of equality.
  static std::string subject_of(const CallRow& row) {
    static const std::regex call(R"((\w+)\(.*)");
    static const std::map<std::string, std::string> pages = {{"less_equal", "less"},
                                                             {"greater", "less"},
                                                             {"greater_equal", "less"},
                                                             {"not_equal", "equal"},
                                                             {"read_element", "element access"},
                                                             {"write_element", "element access"},
                                                             {"unknown", "unknown method"}};
    std::smatch parts;
    if (std::regex_match(row.made.call, parts, call)) return parts[1];
    const Json& last = row.record["calls"].back();
    for (const char* form : {"function", "method", "operator"})
      if (last.contains(form)) {
        const std::string name = last[form];
        const auto page = pages.find(name);
        return page == pages.end() ? name : page->second;
      }
    return "";
  }

  /// Methods and element access first, since results are read with them; then operators, then functions as registered.
  std::size_t order_of(const std::string& subject) const {
    static const std::vector<std::string> first = {"shape", "element access", "dump",     "reshape", "unknown method",
                                                   "add",   "subtract",       "multiply", "divide",  "remainder",
                                                   "less",  "equal"};
    const auto early = std::find(first.begin(), first.end(), subject);
    if (early != first.end()) return static_cast<std::size_t>(early - first.begin());
    const auto& names = table_.functions;
    return first.size() + static_cast<std::size_t>(std::find(names.begin(), names.end(), subject) - names.begin());
  }

  CallTable table_;
  Precision precision_;
  std::set<std::string> documented_;  // rows of failures with calls in the file of calls
  std::vector<std::string> names_;    // of variables, in their order
  std::map<std::string, std::string> expressions_;
};

void write(const std::string& calls, const std::string& path) {
  Writer writer;
  writer.read(calls);
  writer.add_failures();
  const CallTable table = writer.table();
  std::ofstream file(path);
  file << text_of(table);
  if (!file.flush()) throw CallsError(path + " cannot be written");
  std::cout << fmt::format("{} calls; {} rows are left out\n", table.rows.size(), table.left_out.size());
}

}  // namespace
}  // namespace hvm::conformance

int main(int argc, char** argv) {
  if (argc != 3) return std::cerr << "usage: write_calls CALLS TABLE\n", 2;
  try {
    hvm::conformance::write(argv[1], argv[2]);
  } catch (const std::exception& error) {
    std::cerr << "write_calls: " << error.what() << '\n';
    return 1;
  }
}
