// script/explain/warnings.hpp: telling a script of answers that are wrong or empty without a word
//
// What is looked for stands in warning_table.cpp. Warnings come for the module of arrays alone, never for what a
// library of hvm does, and once a source line. `# allow: NAME` in a comment on the line takes one back.

#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "script/explain/explanation.hpp"
#include "script/explain/warning_table.hpp"

namespace hvm {

/// What becomes of warnings: nothing, a report, or an error at their place.
enum class WarningMode { off, on, error };

/// A warning at its place.
struct Warning {
  const WarningRow& row;
  std::string message;
  std::string page;
  SourcePtr source;
  Span span;
  const Explanation* explanation;  // null unless stories are kept

  std::size_t line() const { return source->line(span.begin); }
  /// The line and a caret, as of an error, with the page and the comment that takes the warning back.
  std::string report() const;
};

/// Takes a warning.
using Warn = std::function<void(const Warning&)>;

/// Looks at what a script does with arrays. Each function throws `ScriptError` in the mode `error`, and otherwise
/// nothing: a warning for which memory is missing is lost.
class Warnings {
 public:
  struct Options {
    const Description* description = nullptr;  // null: nothing is known of numbers of arguments
    WarningMode mode = WarningMode::on;
    Warn warn = {};
    bool explains = false;
  };

  /// Does nothing unless `module` is the module of arrays. The last explanation goes to `last`, which must outlive
  /// this.
  Warnings(const ModuleFunctions& module, Options options, Explanation& last);

  bool are_on() const noexcept { return are_on_; }

  /// What is looked for at a call of a function.
  struct Watch {
    using Rows = std::uint64_t;          // a bit for each row of the table
    std::uint32_t signs = 0;             // a bit for each sign that the function alone is watched for
    std::uint32_t most_arguments = ~0u;  // that the function looks at
    bool makes_columns = false;          // of two extents or more, the last of which is 1
    bool reads_quotations = false;
    const FunctionEntry* entry = nullptr;  // null without a description
    Rows rows = 0;                         // by the signs of the function alone
    Rows on_nothing = 0;
    Rows on_column = 0;
    Rows on_more_arguments = 0;
  };
  /// `number` is that of the module's function.
  const Watch& watch(std::uint32_t number) const noexcept { return watches_[number]; }
  /// Whether the answer of a call is worth a look. Costs most calls a few comparisons.
  bool is_notable(const Watch& watch, const std::vector<Value>& arguments, const Value& result, bool is_used) noexcept {
    if (result.is_nil() || arguments.size() > watch.most_arguments) return true;
    if (!columns_.is_empty()) {
      if (columns_.has_any(arguments)) return true;
      columns_.forget(object_of(result.record()));  // it is another object than the one that was marked there
    }
    return (watch.signs != 0 || watch.makes_columns) && is_watched_for(watch, arguments, result, is_used);
  }

  void call(const SourcePtr& source, const Watch& watch, const AnsweredCall& call);
  void operation(const SourcePtr& source, Span span, const ArrayOperation& operation);
  /// The result of an operator on these operands.
  void combined(const Value& result, const Value& left, const Value& right) noexcept {
    if (!columns_.is_empty() && result.is_object()) columns_.note(result, columns_.has(left) || columns_.has(right));
  }
  void element(const SourcePtr& source, Span span, const ElementAccess& access);
  void method(const SourcePtr& source, const AnsweredMethod& call, Value& self, std::vector<Value>& arguments);

  /// A value that a built-in function gave: an array may be a column.
  void made(const Value& value) noexcept {
    if (are_on_ && value.is_object()) columns_.mark(object_of(value.record()));
  }
  Columns& columns() noexcept { return columns_; }

 private:
  /// What was told of a source, and what it allows.
  struct Told {
    SourcePtr source;  // kept, so that no other source comes to its address
    std::set<std::pair<std::size_t, const WarningRow*>> lines;
    std::map<std::size_t, std::vector<std::string>> allowed;
  };

  bool is_watched_for(const Watch& watch, const std::vector<Value>& arguments, const Value& result,
                      bool is_used) noexcept;

  template <class Look>
  void guarded(const SourcePtr& source, Look look);
  void track(const Watch& watch, const AnsweredCall& call) noexcept;
  bool is_settled(const SourcePtr& source, Span span, const WarningRow& row) const noexcept;
  Told& told_of(const SourcePtr& source);
  /// `values` are what the warning is about, for its story.
  void tell(const WarningRow& row, Finding finding, const SourcePtr& source, Span span, std::string_view function,
            const ModuleCaller& caller, const std::vector<Value*>& values);
  void keep_story(const WarningRow& row, const std::string& message, const std::string& page,
                  const ModuleCaller& caller, const std::vector<Value*>& values);

  bool are_on_;
  Options options_;
  Explanation& last_;
  std::vector<Watch> watches_;
  std::vector<const WarningRow*> operation_rows_;
  std::vector<const WarningRow*> element_rows_;
  std::vector<const WarningRow*> method_rows_;
  Columns columns_;
  std::unordered_map<const SourceText*, Told> told_;

  /// Places that need no second look, by the bits of their address.
  struct Settled {
    const SourceText* source = nullptr;
    std::size_t offset = 0;
    const WarningRow* row = nullptr;
  };
  std::array<Settled, 64> settled_;
};

}  // namespace hvm
