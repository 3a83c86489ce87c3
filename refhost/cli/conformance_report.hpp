// cli/conformance_report.hpp: what --conformance found, as text and as JSON

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "conformance/call_record.hpp"

namespace hvm {

/// A call of the table, or a script.
struct TestResult {
  std::string path;     // calls/xsum/3, scripts/reduce/xsum.hvm
  std::string subject;  // the function, method or operator; of a script about none its path
  bool is_call = false;
  conformance::PreparedCall call;
  enum class Verdict { conforms, differs, unjudged };  // unjudged: what prepares the call is wrong already
  Verdict verdict = Verdict::unjudged;
  std::vector<std::string> differences;  // or why it is not judged
};

struct ConformanceReport {
  std::string module;
  std::string module_version;  // empty when it states none
  std::string table_version;
  std::size_t left_out = 0;  // rows of the pages for which the table has no call
  bool conforms = false;
  double seconds = 0;
  std::vector<std::string> registration;  // what is wrong with what the module registers
  std::vector<TestResult> tests;
};

/// A test with its differences, in several lines.
std::string text_of(const TestResult& test);

/// What differs, by function, and the counts. Of a function with more than `most_of_each` tests that differ it says
/// that there are more; 0 for none.
std::string summary(const ConformanceReport& report, std::size_t most_of_each);

/// Throws `DataError` when the file cannot be written.
void write_json(const ConformanceReport& report, const std::string& path);

}  // namespace hvm
