// script/explain/warnings.cpp: telling a script of answers that are wrong or empty without a word

#include "script/explain/warnings.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>

#include "script/explain/described_call.hpp"
#include "script/syntax/lexer.hpp"

namespace hvm {
namespace {

/// Functions whose result may be a column: of an array without one, or of extents that end in 1.
constexpr std::string_view makers_of_columns[] = {"xzeros", "xones", "xempty", "xrand", "xrandn",
                                                  "xeye",   "xdiff", "xouter", "xpinv"};

/// Whether a quotation is of a name with arguments, `@double(2, 3)`. It is looked at in the tree that modules read,
/// which costs less than to look for what it was written as.
bool has_extents(const Value& quotation) noexcept {
  using arrayfold::HostCode, arrayfold::HostCodeNode, arrayfold::HostCodeSlot, arrayfold::load;
  if (quotation.tag() != ValueTag::code) return false;
  const auto led_to = [](const HostCodeSlot& slot) {
    return slot.tag == arrayfold::SlotTag::node ? load<const HostCodeNode*>(slot.payload) : nullptr;
  };
  const auto* code = load<const HostCode*>(quotation.record().payload);
  const HostCodeNode* named = led_to(load<const HostCodeNode*>(&code->root)->link);
  return named && named->kind == arrayfold::NodeKind::call && led_to(named->value);
}

/// Whether `xarray` may have made a column. Extents in a quotation are known where they are literals.
bool may_be_column(const AnsweredCall& call) {
  if (call.has_table()) return call.data().may_be_column;
  const QuotedArguments& quoted = call.quoted;
  if (quoted.data && quoted.data->form == Quotation::Form::data) {
    const auto* rows = std::get_if<TableLiteral>(&quoted.data->subject->form);
    return rows && !rows->entries.empty() && std::holds_alternative<TableLiteral>(rows->entries[0].value->form);
  }
  if (!quoted.dtype || quoted.dtype->arguments.size() < 2) return false;
  const auto* last = std::get_if<IntegerLiteral>(&quoted.dtype->arguments.back()->form);
  return !last || last->value == 1;
}

/// The names that the comments of a source allow, by line.
std::map<std::size_t, std::vector<std::string>> allowed_by_comments(const SourcePtr& source) {
  constexpr std::string_view sign = "# allow:";
  std::map<std::size_t, std::vector<std::string>> allowed;
  if (source->text().find(sign) == std::string::npos) return allowed;
  for (const Comment& comment : lex(source).comments) {
    std::string_view text = source->text(comment.span);
    for (std::size_t at = text.find(sign); at != std::string_view::npos; at = text.find(sign)) {
      text.remove_prefix(at + sign.size());
      std::string_view names = text.substr(0, text.find('#'));
      std::vector<std::string>& list = allowed[source->line(comment.span.begin)];
      constexpr std::string_view between = ", \t\r";
      for (std::size_t begin = names.find_first_not_of(between); begin != std::string_view::npos;) {
        const std::size_t end = std::min(names.find_first_of(between, begin), names.size());
        list.emplace_back(names.substr(begin, end - begin));
        begin = names.find_first_not_of(between, end);
      }
    }
  }
  return allowed;
}

/// The page of a row, with the name of the function in it.
std::string page_for(std::string_view page, std::string_view function) {
  constexpr std::string_view place = "NAME";
  std::string text(page);
  const std::size_t at = text.find(place);
  if (at != std::string::npos) text.replace(at, place.size(), function);
  return text;
}

/// What follows the caret: the page, and the comment that suppresses the warning.
std::vector<std::string> notes_of(const WarningRow& row, const std::string& page) {
  return {"page: " + page, fmt::format("allow: # allow: {}", row.name)};
}

/// The first of these that is the name of no warning; empty when there is none.
std::string unknown_name_in(const std::vector<std::string>& names) {
  const auto is_known = [](const std::string& name) {
    const std::vector<WarningRow>& rows = warning_table();
    return std::any_of(rows.begin(), rows.end(), [&](const WarningRow& row) { return row.name == name; });
  };
  const auto unknown = std::find_if_not(names.begin(), names.end(), is_known);
  return unknown == names.end() ? std::string() : *unknown;
}

std::size_t settled_place(const SourceText* source, std::size_t offset, const WarningRow& row) {
  const auto mixed =
      reinterpret_cast<std::uintptr_t>(source) / 16 + offset * 31 + reinterpret_cast<std::uintptr_t>(&row);
  return (mixed ^ mixed >> 7) % 64;
}

std::vector<Value*> addresses(ValueSpan values) {
  std::vector<Value*> found;
  for (Value& value : values) found.push_back(&value);
  return found;
}

/// The rows of a sign that a function is watched for.
Warnings::Watch::Rows& rows_with(Sign sign, Warnings::Watch& watch) {
  switch (sign) {
    case Sign::nothing:
      return watch.on_nothing;
    case Sign::more_arguments:
      return watch.on_more_arguments;
    case Sign::column:
      return watch.on_column;
    default:
      return watch.rows;
  }
}

/// Lets a function be watched for a row of the table.
void watch_for(Sign sign, std::size_t row, Warnings::Watch& watch) {
  rows_with(sign, watch) |= Warnings::Watch::Rows{1} << row;
  if (sign < Sign::data) watch.signs |= 1u << static_cast<unsigned>(sign);
}

}  // namespace

std::string Warning::report() const {
  std::string text = warning_report(message, *source, span);
  for (const std::string& note : notes_of(row, page)) text += fmt::format("  {}\n", note);
  if (!unknown_name.empty())
    text += fmt::format("  the line allows '{}', and no warning has this name\n", unknown_name);
  return text;
}

Warnings::Warnings(const ModuleFunctions& module, Options options, Explanation& last)
    : are_on_(is_array_module(module) &&
              (options.mode == WarningMode::error || (options.mode == WarningMode::on && options.warn))),
      options_(std::move(options)),
      last_(last) {
  if (!are_on_) return;
  watches_.resize(module.names().size());
  const auto watch_of = [&](std::string_view function) {
    const ModuleFunctions::Entry* entry = module.find_entry(std::string(function));
    return entry ? &watches_[entry->number] : nullptr;
  };
  const std::vector<WarningRow>& rows = warning_table();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const WarningRow& row = rows[i];
    if (std::holds_alternative<OperationCondition>(row.condition)) operation_rows_.push_back(&row);
    if (std::holds_alternative<ElementCondition>(row.condition)) element_rows_.push_back(&row);
    if (std::holds_alternative<MethodCondition>(row.condition)) method_rows_.push_back(&row);
    const auto* condition = std::get_if<CallCondition>(&row.condition);
    if (!condition) continue;
    if (condition->functions.empty())
      for (Watch& watch : watches_) watch_for(condition->sign, i, watch);
    for (const std::string_view function : condition->functions)
      if (Watch* watch = watch_of(function)) watch_for(condition->sign, i, *watch);
  }
  for (const std::string_view function : makers_of_columns)
    if (Watch* watch = watch_of(function)) watch->makes_columns = true;
  if (Watch* watch = watch_of("xarray")) watch->reads_data = true;
  if (!options_.description) return;
  for (const auto& [function, limit] : options_.description->limits())
    if (Watch* watch = limit < 0 ? nullptr : watch_of(function))
      watch->most_arguments = static_cast<std::uint32_t>(limit);
}

bool Warnings::has_notable_data(const std::vector<Value>& arguments, const Value& result) noexcept {
  if (arguments.size() < 2 || !arguments[1].is_table() || has_extents(arguments[0])) return true;
  const DataLook look = look_at_data(table_of(arguments[1].record()), elements_of(result));
  if (look.fault.form != DataFault::Form::none) return true;
  columns_.note(result, look.may_be_column);
  return false;
}

/// Looks at a place of a script. In a library nothing is looked at, and without memory nothing is told.
template <class Look>
void Warnings::guarded(const SourcePtr& source, Look look) {
  if (!are_on_ || source->is_library()) return;
  try {
    look();
  } catch (const std::bad_alloc&) {
  }
}

void Warnings::call(const SourcePtr& source, const Watch& watch, const AnsweredCall& call) {
  guarded(source, [&] {
    Watch::Rows rows = watch.rows;
    if (call.result.is_nil()) rows |= watch.on_nothing;
    if (!columns_.is_empty()) rows |= watch.on_column;
    if (call.arguments.size() > watch.most_arguments) rows |= watch.on_more_arguments;
    for (; rows != 0; rows &= rows - 1) {
      const WarningRow& row = warning_table()[static_cast<std::size_t>(__builtin_ctzll(rows))];
      const auto& condition = std::get<CallCondition>(row.condition);
      if (!bears(condition.sign, integer_arrays_, call.arguments, call.result, call.is_used)) continue;
      if (is_settled(source, call.span, row)) break;
      auto found = condition.find(call);
      if (!found) continue;
      tell(row, std::move(*found), source, call.span, call.function, call.caller, addresses(call.arguments));
      break;
    }
  });
  track(watch, call);
}

void Warnings::operation(const SourcePtr& source, Span span, const ArrayOperation& operation) {
  guarded(source, [&] {
    for (const WarningRow* each : operation_rows_) {
      const WarningRow& row = *each;
      if (is_settled(source, span, row)) break;
      auto found = std::get<OperationCondition>(row.condition).find(operation);
      if (!found) continue;
      tell(row, std::move(*found), source, span, {}, operation.caller, {&operation.left, &operation.right});
      break;
    }
  });
}

void Warnings::element(const SourcePtr& source, Span span, const ElementAccess& access) {
  guarded(source, [&] {
    for (const WarningRow* each : element_rows_) {
      const WarningRow& row = *each;
      if (is_settled(source, span, row)) continue;
      auto found = std::get<ElementCondition>(row.condition).find(access);
      if (!found) continue;
      std::vector<Value*> values = addresses(access.indices);
      values.insert(values.begin(), &access.object);
      tell(row, std::move(*found), source, span, {}, access.caller, values);
    }
  });
}

void Warnings::method(const SourcePtr& source, const AnsweredMethod& call, Value& self, std::vector<Value>& arguments) {
  const bool is_array = kind_of_array(self).has_value();
  if (call.method == "reshape" && is_array)
    columns_.note(self, arguments.size() > 1 && arguments.back().is_number() && as_int(arguments.back()) == 1);
  guarded(source, [&] {
    if (!is_array) return;
    for (const WarningRow* each : method_rows_) {
      const WarningRow& row = *each;
      if (is_settled(source, call.span, row)) continue;
      auto found = std::get<MethodCondition>(row.condition).find(call);
      if (found) tell(row, std::move(*found), source, call.span, call.method, call.caller, {&self});
    }
  });
}

void Warnings::track(const Watch& watch, const AnsweredCall& call) noexcept {
  const bool is_column =
      watch.reads_data ? may_be_column(call)
                       : columns_.has_any(call.arguments) || (watch.makes_columns && may_make_column(call.arguments));
  if (call.result.is_object()) return columns_.note(call.result, is_column);
  if (!is_column || !call.result.is_table()) return;
  TableWalk walk(table_of(call.result.record()));
  while (const Entry entry = walk.next())
    if (const HostAny* object = object_of(*entry.value)) columns_.mark(object);
}

/// In the mode `error` a warning comes as often as its cause.
bool Warnings::is_settled(const SourcePtr& source, Span span, const WarningRow& row) const noexcept {
  if (options_.mode == WarningMode::error) return false;
  const Settled& place = settled_[settled_place(source.get(), span.begin, row)];
  return place.source == source.get() && place.offset == span.begin && place.row == &row;
}

Warnings::Told& Warnings::told_of(const SourcePtr& source) {
  const auto known = told_.find(source.get());
  if (known != told_.end()) return known->second;
  return told_.emplace(source.get(), Told{source, {}, allowed_by_comments(source)}).first->second;
}

void Warnings::tell(const WarningRow& row, Finding finding, const SourcePtr& running, Span span,
                    std::string_view function, const ModuleCaller& caller, const std::vector<Value*>& values) {
  const SourcePtr source = finding.source ? finding.source : running;
  const Span place = finding.span ? *finding.span : span;
  told_of(running);
  Told& told = told_of(source);
  settled_[settled_place(running.get(), span.begin, row)] = {running.get(), span.begin, &row};
  const std::size_t line = source->line(place.begin);
  const auto allowed = told.allowed.find(line);
  const bool is_allowed = allowed != told.allowed.end() &&
                          std::find(allowed->second.begin(), allowed->second.end(), row.name) != allowed->second.end();
  if (is_allowed) return;
  const bool is_error = options_.mode == WarningMode::error;
  if (!is_error && !told.lines.emplace(line, &row).second) return;
  const std::string page =
      options_.pages_folder + (finding.page.empty() ? page_for(row.page, function) : std::move(finding.page));
  if (options_.explains) keep_story(row, finding.message, page, caller, values);
  if (is_error) {
    ScriptError error(std::move(finding.message), source, place);
    error.set_notes(notes_of(row, page));
    throw error;
  }
  options_.warn({row, std::move(finding.message), page, source, place, options_.explains ? &last_ : nullptr,
                 allowed == told.allowed.end() ? std::string() : unknown_name_in(allowed->second)});
}

void Warnings::keep_story(const WarningRow& row, const std::string& message, const std::string& page,
                          const ModuleCaller& caller, const std::vector<Value*>& values) {
  constexpr std::string_view before_remedy = "; ";
  Explanation story;
  story.about = message;
  static const Description none;
  static const FunctionEntry unknown;
  static const std::string no_name;
  std::vector<Value> shown;
  for (const Value* value : values) shown.push_back(*value);
  const MadeCall made{caller, no_name, nullptr, shown};
  const Description* known = options_.description ? options_.description->get() : nullptr;
  DescribedCall call(known ? *known : none, unknown, made, true);
  for (std::size_t i = 0; i < shown.size(); ++i) story.arguments.push_back(call.shown_at_length(i));
  story.considered.push_back(fmt::format("{}: {}", row.name, row.sentence));
  const std::size_t remedy = message.rfind(before_remedy);
  if (remedy != std::string::npos) story.remedy = message.substr(remedy + before_remedy.size());
  story.notes = notes_of(row, page);
  last_ = std::move(story);
}

}  // namespace hvm
