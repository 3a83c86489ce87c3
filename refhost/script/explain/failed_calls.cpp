// script/explain/failed_calls.cpp: why a call of the module failed, and what is wanted

#include "script/explain/failed_calls.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <new>
#include <string_view>
#include <utility>

#include "script/explain/condition_check.hpp"
#include "script/explain/other_names.hpp"
#include "script/module/array_module.hpp"
#include "script/syntax/diagnostics.hpp"

namespace hvm {
namespace {

// More causes than these in one sentence would explain nothing.
constexpr std::size_t most_causes = 3;

// ---- The row that fits

/// What happened to a call.
struct Happening {
  Outcome outcome;
  std::string exception;  // type and words; empty unless the call threw
};

Happening happening_of(const Failure& failure) {
  const auto* call = dynamic_cast<const CallFailure*>(&failure);
  if (!call) return {Outcome::refused, {}};
  return {call->exception().empty() ? Outcome::fails : Outcome::throws, call->exception()};
}

bool is_of_memory(const Happening& happened) { return happened.exception.find("bad_alloc") != std::string::npos; }

/// Why a call came to nothing, as far as the rows of its page tell.
struct Reason {
  std::vector<const FailureRow*> rows;  // several when only what happened could tell between them
  std::string cause;                    // empty when no row fits
  std::vector<std::string> considered;  // the rows that were looked at
};

bool is_letter_or_digit(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }

/// Whether `words` are those of a page, in which an N that stands alone is any number.
bool are_words_of(std::string_view page, std::string_view words) {
  for (char before = ' '; !page.empty(); before = page.front(), page.remove_prefix(1)) {
    const bool is_number =
        page.front() == 'N' && !is_letter_or_digit(before) && (page.size() == 1 || !is_letter_or_digit(page[1]));
    const std::size_t length = is_number ? words.find_first_not_of("-0123456789") : 1;
    if (words.empty() || length == 0 || (!is_number && words.front() != page.front())) return false;
    words.remove_prefix(std::min(length, words.size()));
  }
  return words.empty();
}

/// The exception of a row of the page for what was thrown: these words themselves where a row has them.
std::string words_on_page(const FunctionEntry& entry, const std::string& exception) {
  std::string fitting = exception;
  for (const FailureRow& row : entry.failures) {
    if (row.exception == exception) return exception;
    if (row.outcome == Outcome::throws && are_words_of(row.exception, exception)) fitting = row.exception;
  }
  return fitting;
}

std::vector<const FailureRow*> rows_of(const FunctionEntry& entry, const Happening& happened) {
  std::vector<const FailureRow*> rows;
  const std::string exception = words_on_page(entry, happened.exception);
  for (const FailureRow& row : entry.failures) {
    const bool is_it = row.outcome == happened.outcome && row.exception == exception;
    if (is_it && (row.condition.form != Condition::Form::no_memory || is_of_memory(happened))) rows.push_back(&row);
  }
  return rows;
}

/// The row of a quotation that the host can judge, since it has read it itself.
const FailureRow* row_of_quotation(DescribedCall& call, const std::vector<const FailureRow*>& rows) {
  const char* when = failing_quotation(call.name(), call.quotation(0), call.quotation(1), call.count());
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const FailureRow* x) { return when && x->when == when; });
  return row == rows.end() ? nullptr : *row;
}

Reason reason_of(DescribedCall& call, const Happening& happened) {
  const std::vector<const FailureRow*> rows = rows_of(call.entry(), happened);
  const FailureRow* of_quotation = row_of_quotation(call, rows);
  Reason reason;
  for (const FailureRow* row : rows) {
    const Verdict verdict = checked(row->condition, call);
    const bool holds = verdict.answer == Verdict::Answer::yes || row == of_quotation;
    const char* answer = holds ? "yes" : verdict.answer == Verdict::Answer::no ? "no" : "may be";
    reason.considered.push_back(fmt::format("{}: {}", call.with_names(row->when), answer));
    if (holds) {
      reason.rows = {row};
      reason.cause = row == of_quotation ? call.with_numbers(row->when) : verdict.cause;
      return reason;
    }
    if (verdict.answer == Verdict::Answer::unknown) reason.rows.push_back(row);
  }
  if (reason.rows.size() > most_causes) reason.rows.clear();
  for (const FailureRow* row : reason.rows)
    reason.cause += (reason.cause.empty() ? "" : ", or ") + call.with_numbers(row->when);
  return reason;
}

// ---- Sentences

/// Whether a text ends as a sentence does.
bool has_ended(const std::string& text) { return !text.empty() && text.find_last_of(".!?") == text.size() - 1; }

std::string as_sentence(std::string text) {
  if (text.empty()) return text;
  text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
  if (!has_ended(text)) text += '.';
  return text;
}

/// What to write instead, as a sentence; empty where the rows tell nothing.
std::string remedy_of(const DescribedCall& call, const std::vector<const FailureRow*>& rows) {
  std::vector<std::string> remedies;
  for (const FailureRow* row : rows) {
    const std::string remedy = call.with_names(row->remedy);
    if (!remedy.empty() && std::find(remedies.begin(), remedies.end(), remedy) == remedies.end())
      remedies.push_back(remedy);
  }
  return as_sentence(fmt::format("{}", fmt::join(remedies, ", or ")));
}

/// What to write in place of an operator, by the first row that holds for its operands.
std::string remedy_of_operator(DescribedCall& call) {
  for (const FailureRow& row : call.entry().failures)
    if (row.outcome != Outcome::nothing && checked(row.condition, call).answer == Verdict::Answer::yes)
      return remedy_of(call, {&row});
  return {};
}

std::string with_remedy(const std::string& sentence, const std::string& remedy) {
  if (remedy.empty()) return sentence;
  return fmt::format("{}{} {}", sentence, has_ended(sentence) ? "" : ".", remedy);
}

/// What the host says of the call itself; what the module threw stays as it is.
std::string sentence_of(const Failure& failure, const DescribedCall& call, const Happening& happened,
                        const std::string& cause) {
  if (happened.outcome == Outcome::refused || cause.empty()) return failure.message();
  if (happened.outcome == Outcome::fails) return fmt::format("{}: {}", call.name(), cause);
  return fmt::format("{}: {}; the module threw {}", call.name(), cause, happened.exception);
}

std::vector<std::string> notes_of(const FunctionEntry& entry, const std::string& pages_folder) {
  std::vector<std::string> notes;
  if (!entry.synopsis.empty()) notes.push_back("usage: " + alternatives(entry.synopsis));
  if (!entry.page.empty()) notes.push_back("page: " + pages_folder + entry.page);
  return notes;
}

std::vector<std::string> names_of(const std::vector<FunctionEntry>& entries) {
  std::vector<std::string> names(entries.size());
  std::transform(entries.begin(), entries.end(), names.begin(), [](const FunctionEntry& entry) { return entry.name; });
  return names;
}

}  // namespace

Failure FailedCalls::explained(const Failure& failure, const MadeCall& made) const {
  try {
    static const Description none;
    static const FunctionEntry unknown;
    const Description* whole = description();
    if (!whole && !options_.explains) return failure;
    const Description& known = whole ? *whole : none;
    const FunctionEntry* entry = made.self ? known.find_method(made.name) : known.find(made.name);
    if (!entry && made.self && whole) return of_unknown_method(failure, known, made);
    return of_described(failure, known, entry ? *entry : unknown, made);
  } catch (const std::bad_alloc&) {
    return failure;
  }
}

Failure FailedCalls::explained(const Failure& failure, const ModuleCaller& caller,
                               const FailedOperation& operation) const {
  try {
    const Description* whole = description();
    const FunctionEntry* entry = whole ? whole->find_operator(page_word(operation.op)) : nullptr;
    if (!entry) return failure;
    const std::string name = spelling(operation.op);
    std::vector<Value> operands{operation.left, operation.right};
    std::vector<std::string> names{operation.left_written ? variable_name(*operation.left_written) : "",
                                   operation.right_written ? variable_name(*operation.right_written) : ""};
    // On a page the array of an array and a number is `a`, on whichever side it stands.
    if (operation.left.is_number()) std::swap(operands[0], operands[1]), std::swap(names[0], names[1]);
    const MadeCall made{caller, name, nullptr, operands, names};
    DescribedCall call(*whole, *entry, made, options_.may_ask);
    const std::string remedy = has_ended(failure.message()) ? std::string() : remedy_of_operator(call);
    Failure result(with_remedy(failure.message(), remedy), {"page: " + options_.pages_folder + entry->page});
    if (!options_.explains) return result;
    const bool is_swapped = operation.left.is_number();
    Explanation story{result.message(), {}, {}, remedy, result.notes()};
    story.arguments = {"the left operand: " + call.shown_at_length(is_swapped ? 1 : 0),
                       "the right operand: " + call.shown_at_length(is_swapped ? 0 : 1)};
    last_ = std::move(story);
    return result;
  } catch (const std::bad_alloc&) {
    return failure;
  }
}

Failure FailedCalls::of_described(const Failure& failure, const Description& known, const FunctionEntry& entry,
                                  const MadeCall& made) const {
  DescribedCall call(known, entry, made, options_.may_ask);
  const Happening happened = happening_of(failure);
  Reason reason = reason_of(call, happened);
  if (reason.cause.empty() && happened.outcome != Outcome::refused) {
    Verdict misfit = first_misfit(call);
    if (misfit.answer == Verdict::Answer::yes) reason.cause = std::move(misfit.cause);
  }
  // A check that says itself what to write knows the arguments better than a page does.
  const bool has_remedy = happened.outcome == Outcome::refused && has_ended(failure.message());
  const std::string remedy = has_remedy ? std::string() : remedy_of(call, reason.rows);
  Failure result(with_remedy(sentence_of(failure, call, happened, reason.cause), remedy),
                 notes_of(entry, options_.pages_folder));
  if (options_.explains) keep(result, call, std::move(reason.considered), remedy, made.self != nullptr);
  return result;
}

Failure FailedCalls::of_unknown_method(const Failure& failure, const Description& known, const MadeCall& made) const {
  const auto* call_failure = dynamic_cast<const CallFailure*>(&failure);
  const bool is_array = kind_of_array(*made.self).has_value();
  if (!call_failure || !call_failure->exception().empty() || !is_array) return failure;
  const std::vector<std::string> methods = names_of(known.methods);
  std::string message = fmt::format("{}: an array has no such method", made.name);
  if (methods.size() > 1)
    message += fmt::format("; it has {} and {}", fmt::join(methods.begin(), methods.end() - 1, ", "), methods.back());
  const std::string other = counterpart_for_arrays(made.name, *options_.module);
  Failure result(message + (other.empty() ? suggestion(made.name, {methods.begin(), methods.end()}) : other));
  static const FunctionEntry unknown;
  DescribedCall call(known, unknown, made, options_.may_ask);
  if (options_.explains) keep(result, call, {}, {}, true);
  return result;
}

void FailedCalls::keep(const Failure& failure, DescribedCall& call, std::vector<std::string> considered,
                       std::string remedy, bool has_self) const {
  Explanation story;
  story.about = failure.message();
  if (has_self) story.arguments.push_back("the object: " + call.self_at_length());
  for (std::size_t i = 0; i < call.count(); ++i) {
    const ArgumentEntry* entry = call.argument(i);
    const std::string name = entry ? fmt::format(", {}", entry->name) : "";
    const std::string wanted = entry && !entry->accepts.empty() ? fmt::format("; wanted: {}", entry->accepts) : "";
    story.arguments.push_back(
        fmt::format("{}{}: {}{}", DescribedCall::numbered(i), name, call.shown_at_length(i), wanted));
  }
  story.considered = std::move(considered);
  story.remedy = std::move(remedy);
  story.notes = failure.notes();
  if (!story.considered.empty()) story.considered.push_back("(the section Failures of " + call.entry().page + ")");
  if (options_.description && !options_.description->get()) story.notes.push_back(options_.description->absence());
  last_ = std::move(story);
}

}  // namespace hvm
