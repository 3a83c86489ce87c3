// cli/conformance_report.cpp: what --conformance found, as text and as JSON

#include "cli/conformance_report.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string_view>

#include "cli/test_runner.hpp"
#include "script/data/output_file.hpp"

namespace hvm {
namespace {

using conformance::Json;

constexpr int format = 1;

/// How many calls and scripts about a function there are, and which differ.
struct Broken {
  std::string subject;
  std::size_t calls = 0;
  std::size_t differing_calls = 0;
  std::vector<std::string> scripts;  // that fail
  std::size_t tests = 0;             // that differ
};

/// The functions with differences, in the order of the tests.
std::vector<Broken> broken(const ConformanceReport& report) {
  std::vector<Broken> all;
  for (const TestResult& test : report.tests) {
    auto found = std::find_if(all.begin(), all.end(), [&](const Broken& each) { return each.subject == test.subject; });
    if (found == all.end()) found = all.insert(all.end(), {test.subject, 0, 0, {}, 0});
    const bool differs = test.verdict == TestResult::Verdict::differs;
    found->calls += test.is_call ? 1 : 0;
    found->differing_calls += test.is_call && differs ? 1 : 0;
    found->tests += differs ? 1 : 0;
    if (!test.is_call && differs) found->scripts.push_back(test.path);
  }
  all.erase(std::remove_if(all.begin(), all.end(), [](const Broken& each) { return each.tests == 0; }), all.end());
  return all;
}

std::string row(const Broken& each) {
  std::string text = fmt::format("  {:16}", each.subject);
  if (each.calls > 0) text += fmt::format(" {} of {} calls", each.differing_calls, each.calls);
  for (const std::string& script : each.scripts)
    if (script != each.subject) text += (text.back() == ' ' ? " " : ", ") + script;
  text.erase(text.find_last_not_of(' ') + 1);
  return text + "\n";
}

/// Whether results are read by what differs.
bool is_of_reading(const Broken& each) {
  return each.differing_calls > 0 && (each.subject == "shape" || each.subject == "element access");
}

struct Passed {
  std::size_t calls = 0;
  std::size_t scripts = 0;
  std::size_t good_calls = 0;
  std::size_t good_scripts = 0;
};

Passed passed_of(const ConformanceReport& report) {
  Passed passed;
  for (const TestResult& test : report.tests) {
    const bool is_good = test.verdict == TestResult::Verdict::conforms;
    ++(test.is_call ? passed.calls : passed.scripts);
    if (is_good) ++(test.is_call ? passed.good_calls : passed.good_scripts);
  }
  return passed;
}

Json json_of(const TestResult& test) {
  Json json = {{"path", test.path}, {"about", test.subject}};
  if (test.is_call) json.update({{"preparation", test.call.preparation}, {"call", test.call.call}});
  json["conforms"] = test.verdict == TestResult::Verdict::conforms;
  json["judged"] = test.verdict != TestResult::Verdict::unjudged;
  if (!test.differences.empty()) json["differences"] = test.differences;
  return json;
}

Json json_of(const Broken& each) {
  return {{"about", each.subject},
          {"calls", each.calls},
          {"differing_calls", each.differing_calls},
          {"failing_scripts", each.scripts}};
}

void append_indented(std::string& text, std::string_view lines) {
  for (std::size_t at = 0; at < lines.size();) {
    const std::size_t end = std::min(lines.find('\n', at), lines.size());
    text += fmt::format("  {}\n", lines.substr(at, end - at));
    at = end + 1;
  }
}

}  // namespace

std::string text_of(const TestResult& test, std::size_t most_of_each) {
  std::string text = test.path;
  if (test.is_call) text += ": " + test.call.call;
  text += "\n";
  append_indented(text, test.call.preparation);
  const std::size_t count = test.differences.size();
  const std::size_t shown = most_of_each > 0 ? std::min(count, most_of_each) : count;
  for (std::size_t i = 0; i < shown; ++i) append_indented(text, test.differences[i]);
  if (shown < count) append_indented(text, fmt::format("and {} more", count - shown));
  return text;
}

std::string summary(const ConformanceReport& report, std::size_t most_of_each) {
  const std::vector<Broken> differing = broken(report);
  std::string text;
  if (!differing.empty()) {
    const bool are_hidden = most_of_each > 0 && std::any_of(differing.begin(), differing.end(), [&](const auto& each) {
                              return each.differing_calls > most_of_each;
                            });
    text += "what differs:\n";
    for (const Broken& each : differing) text += row(each);
    if (are_hidden) text += fmt::format("{} of each are shown; -v shows all\n", most_of_each);
    if (std::any_of(differing.begin(), differing.end(), is_of_reading))
      text += "results are read by shape and element access: repair these first\n";
  }
  const auto unjudged = std::count_if(report.tests.begin(), report.tests.end(), [](const TestResult& test) {
    return test.verdict == TestResult::Verdict::unjudged;
  });
  if (unjudged > 0)
    text += fmt::format("{} are not judged, since what prepares them differs, or others take too long\n", unjudged);
  const Passed passed = passed_of(report);
  if (report.tests.empty()) return text + "no calls or scripts match the filter\n";
  std::vector<std::string> counts;
  if (passed.calls > 0)
    counts.push_back(fmt::format("{} of {} calls are as recorded", passed.good_calls, passed.calls));
  if (passed.scripts > 0) counts.push_back(fmt::format("{} of {} scripts pass", passed.good_scripts, passed.scripts));
  text += fmt::format("{}, in {}\n", fmt::join(counts, ", "), seconds_text(report.seconds));
  const char* const subject = report.is_filtered ? "what matches the filter" : "the module";
  return text + fmt::format("{} {} to version {}\n", subject, report.conforms ? "conforms" : "does not conform",
                            report.table_version);
}

void write_json(const ConformanceReport& report, const std::string& path) {
  const Passed passed = passed_of(report);
  Json json = {{"format", format},
               {"module", report.module},
               {"module_version", report.module_version},
               {"table_version", report.table_version},
               {"filtered", report.is_filtered},
               {"conforms", report.conforms},
               {"seconds", report.seconds},
               {"calls", passed.calls},
               {"calls_as_recorded", passed.good_calls},
               {"left_out", report.left_out},
               {"scripts", passed.scripts},
               {"scripts_passed", passed.good_scripts},
               {"registration", report.registration},
               {"broken", Json::array()},
               {"tests", Json::array()}};
  for (const Broken& each : broken(report)) json["broken"].push_back(json_of(each));
  for (const TestResult& test : report.tests) json["tests"].push_back(json_of(test));
  OutputFile file(path);
  file.write(json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n");
  file.finish();
}

}  // namespace hvm
