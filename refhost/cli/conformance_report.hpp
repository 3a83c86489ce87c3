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
  bool is_filtered = false;  // it tells of a part of the calls and scripts
  bool conforms = false;
  double seconds = 0;
  std::vector<std::string> registration;  // what is wrong with what the module registers
  std::vector<TestResult> tests;
};

/// A test with its differences, in several lines: the first `most_of_each` of them, 0 for all.
std::string text_of(const TestResult& test, std::size_t most_of_each);

/// What differs, by function, and the counts. Where more than `most_of_each` calls of a function differ, it says that
/// not all were shown; 0 for never.
std::string summary(const ConformanceReport& report, std::size_t most_of_each);

/// Throws `DataError` when the file cannot be written.
void write_json(const ConformanceReport& report, const std::string& path);

}  // namespace hvm
