// conformance/call_table.hpp: the table of calls and what each does
//
// The file is lines of JSON. The first one is the head: `format`, the `module` and its `version`, its `functions` and
// `types` in the order of registration, and what is `left_out`, each with its reason. Each other line is a row.

#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "conformance/call_record.hpp"

namespace hvm::conformance {

/// A table that cannot be read; the message names the file, the line and the cause.
class TableError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// How the results of a row are compared.
struct Precision {
  double tolerance = 0;  // of real numbers; 0: their bits
  bool has_contents = true;
  std::string reason;  // why they are not compared bit by bit
};

struct CallRow {
  std::string id;                      // such as `xsum/3`: what is called, and a number
  std::vector<std::string> documents;  // the rows of the pages' tables of failures that it shows
  PreparedCall made;
  std::string prepared;  // the digest of the variables before the call
  Precision precision;
  Json record;

  /// What is called, such as `xsum`.
  std::string subject() const { return id.substr(0, id.rfind('/')); }
  /// The signal by which the processor ends the process, `{"ends": "SIGFPE"}` as the outcome; 0 for none.
  int ending_signal() const;
};

struct LeftOut {
  std::string what;
  std::string reason;
};

struct CallTable {
  std::string module;
  std::string version;
  std::vector<std::string> functions;
  std::vector<std::string> types;
  std::vector<LeftOut> left_out;
  std::vector<CallRow> rows;
};

/// Throws `TableError`.
CallTable read_call_table(const std::string& path);
std::string text_of(const CallTable& table);

}  // namespace hvm::conformance
