// script/explain/warnings.hpp: telling a script of answers that are wrong or empty without a word
//
// What is looked for stands in warning_table.cpp. Warnings come for the module of arrays alone, never for what a
// library of hvm does, and once a source line. `# allow: NAME` in a comment on the line suppresses one.

#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "script/explain/explanation.hpp"
#include "script/explain/module_description.hpp"
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
  std::string unknown_name = {};   // that the line allows, and no warning has; empty: there is none

  std::size_t line() const { return source->line(span.begin); }
  /// The line and a caret, as of an error, with the page and the comment that suppresses the warning.
  std::string report() const;
};

/// Takes a warning.
using Warn = std::function<void(const Warning&)>;

/// Looks at what a script does with arrays. Each function throws `ScriptError` in the mode `error`, and otherwise
/// nothing: a warning for which memory is missing is lost.
class Warnings {
 public:
  struct Options {
    const ModuleDescription* description = nullptr;  // null: nothing is known of numbers of arguments
    WarningMode mode = WarningMode::on;
    Warn warn = {};
    bool explains = false;
    std::string pages_folder = {};  // in front of the paths of pages, with its slash
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
    bool reads_data = false;             // it is `xarray`
    Rows rows = 0;                       // by the signs of the function alone
    Rows on_nothing = 0;
    Rows on_column = 0;
    Rows on_more_arguments = 0;
  };
  /// `number` is that of the module's function.
  const Watch& watch(std::uint32_t number) const noexcept { return watches_[number]; }
  /// Whether the answer of a call is worth a look. It remembers what may be a column, and costs most calls a few
  /// comparisons.
  bool is_notable(const Watch& watch, const std::vector<Value>& arguments, const Value& result, bool is_used) noexcept {
    if (result.is_nil() || arguments.size() > watch.most_arguments) return true;
    if (!columns_.is_empty()) {
      if (columns_.has_any(arguments)) return true;
      columns_.forget(object_in(result));  // it is another object than the one that was marked there
    }
    if (watch.reads_data) return has_notable_data(arguments, result);
    if (watch.makes_columns && may_make_column(arguments)) columns_.note(result, true);
    for (std::uint32_t left = watch.signs; left != 0; left &= left - 1)
      if (bears(static_cast<Sign>(__builtin_ctz(left)), integer_arrays_, arguments, result, is_used)) return true;
    return false;
  }
  /// Whether an operator is: with a number on the left, a number beside integers that is more than an int, or a
  /// remainder.
  bool is_notable(BinaryOperator op, const Value& left, const Value& right) const noexcept {
    if (!are_on_) return false;
    if (left.is_number() && op != BinaryOperator::add && op != BinaryOperator::multiply) return true;
    if (is_more_than_int(left)) return integer_arrays_.have(right);
    if (is_more_than_int(right)) return integer_arrays_.have(left);
    return op == BinaryOperator::remainder;
  }
  /// Whether an element of an object may keep less than the value that it gets.
  bool is_notable(const Value& object, const Value& written) const noexcept {
    return are_on_ && is_more_than_int(written) && integer_arrays_.have(object);
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
    if (are_on_ && value.is_object()) columns_.mark(object_in(value));
  }
  Columns& columns() noexcept { return columns_; }
  DataElements elements_of(const Value& value) const noexcept {
    if (!integer_arrays_.have(value)) return DataElements::others;
    return integer_arrays_.have_narrow(value) ? DataElements::narrow_integers : DataElements::wide_integers;
  }

 private:
  /// What was told of a source, and what it allows.
  struct Told {
    SourcePtr source;  // kept, so that no other source comes to its address
    std::set<std::pair<std::size_t, const WarningRow*>> lines;
    std::map<std::size_t, std::vector<std::string>> allowed;
  };

  /// Whether the arguments are extents that end in 1, one quotation, which may hold such, or an array.
  static bool may_make_column(const std::vector<Value>& arguments) noexcept {
    if (arguments.empty()) return false;
    if (arguments[0].is_number())
      return arguments.size() > 1 && arguments.back().is_number() && as_int(arguments.back()) == 1;
    return arguments.size() == 1 || arguments[0].is_object();
  }
  static bool is_more_than_int(const Value& value) noexcept {
    return value.tag() == ValueTag::real || value.tag() == ValueTag::integer64;
  }
  /// Whether `xarray` has read another thing than a table of numbers in rows of one length.
  bool has_notable_data(const std::vector<Value>& arguments, const Value& result) noexcept;

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
  IntegerArrays integer_arrays_;
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
