// script/explain/condition_check.cpp: whether the condition of a row holds for a call

#include "script/explain/condition_check.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <utility>

#include "script/module/array_module.hpp"
#include "script/text/integer_value.hpp"
#include "script/text/number_text.hpp"

namespace hvm {
namespace {

using Form = Condition::Form;

Verdict no() { return {Verdict::Answer::no}; }
Verdict yes(std::string cause) { return {Verdict::Answer::yes, std::move(cause)}; }

// ---- Numbers

/// A number as the module reads it.
struct ReadNumber {
  double value;
  std::string written;  // as the script gives it
  std::string read;     // as the module reads it
};

ReadNumber read_number(const Value& value, const std::string& read_as) {
  HostValue record = value.record();
  const std::string written = number_text(value);
  if (read_as == "int")
    return {static_cast<double>(HVM_AsInt(&record)), written, fmt::format("{}", HVM_AsInt(&record))};
  if (read_as == "int64")
    return {static_cast<double>(HVM_AsInt64(&record)), written, fmt::format("{}", HVM_AsInt64(&record))};
  return {HVM_AsDouble(&record), written, written};
}

std::string this_is(const ReadNumber& number) {
  if (number.read == number.written) return "this is " + number.written;
  return fmt::format("this is {}, which is read as {}", number.written, number.read);
}

/// The first argument among `positions` of whose number `holds` is true, with the words behind `argument K`.
Verdict of_number(DescribedCall& call, const std::vector<std::size_t>& positions, const std::string& wanted,
                  const std::function<bool(const ReadNumber&)>& holds) {
  for (const std::size_t i : positions) {
    if (!call.value(i).is_number()) continue;
    const ArgumentEntry* entry = call.argument(i);
    const ReadNumber number = read_number(call.value(i), entry ? entry->read_as : "");
    if (holds(number)) return yes(fmt::format("{} must {}; {}", DescribedCall::numbered(i), wanted, this_is(number)));
  }
  return no();
}

// ---- Kinds and dimensions

Verdict of_kind(const Condition& condition, DescribedCall& call) {
  const bool is_asked_in = condition.form == Form::kind_in;
  for (const std::size_t i : call.positions(condition)) {
    if (call.is_one_of(i, condition.kinds) != is_asked_in) continue;
    const ArgumentEntry* entry = call.argument(i);
    const std::string name = DescribedCall::numbered(i);
    if (entry && !entry->kinds.empty() && !call.is_one_of(i, entry->kinds))
      return yes(fmt::format("{} must be {}; this is {}", name, kinds_in_words(entry->kinds), call.shown(i)));
    if (!is_asked_in)
      return yes(fmt::format("{} must be {}; this is {}", name, kinds_in_words(condition.kinds), call.shown(i)));
    return yes(fmt::format("{} is {}", name, call.shown(i)));
  }
  return no();
}

std::string dimensions_wanted(const Condition& condition) {
  const char* noun = condition.number == 1 ? "dimension" : "dimensions";
  if (condition.form == Form::dimensions_below)
    return fmt::format("an array of {} or more dimensions", condition.number);
  if (condition.form == Form::dimensions_above)
    return fmt::format("an array of {} or fewer dimensions", condition.number);
  return fmt::format("an array of {} {}", condition.number, noun);
}

/// Whether an array of this shape is what the argument accepts.
bool fits(const ArgumentEntry& entry, const Extents& shape) {
  const auto dimensions = static_cast<std::int64_t>(shape.size());
  if (dimensions < entry.least_dimensions.value_or(0)) return false;
  if (entry.most_dimensions && dimensions > *entry.most_dimensions) return false;
  return !entry.is_square || (dimensions >= 2 && shape[shape.size() - 1] == shape[shape.size() - 2]);
}

Verdict shape_misfit(DescribedCall& call, std::size_t i, const Extents& shape, const std::string& otherwise) {
  const ArgumentEntry* entry = call.argument(i);
  const bool is_told = entry && !fits(*entry, shape) && !dimensions_in_words(*entry).empty();
  return yes(fmt::format("{} must be {}; this is {}", DescribedCall::numbered(i),
                         is_told ? dimensions_in_words(*entry) : otherwise, call.shown(i)));
}

Verdict of_dimensions(const Condition& condition, DescribedCall& call) {
  for (const std::size_t i : call.positions(condition)) {
    const Extents* shape = call.shape(i);
    if (!shape) continue;
    const auto dimensions = static_cast<std::int64_t>(shape->size());
    const bool holds = condition.form == Form::dimensions_below   ? dimensions < condition.number
                       : condition.form == Form::dimensions_above ? dimensions > condition.number
                                                                  : dimensions != condition.number;
    if (holds) return shape_misfit(call, i, *shape, dimensions_wanted(condition));
  }
  return no();
}

Verdict of_square(const Condition& condition, DescribedCall& call) {
  for (const std::size_t i : call.positions(condition)) {
    const Extents* shape = call.shape(i);
    if (!shape || shape->size() < 2 || (*shape)[shape->size() - 1] == (*shape)[shape->size() - 2]) continue;
    return shape_misfit(call, i, *shape, "square in its last two dimensions");
  }
  return no();
}

// ---- Two arguments

bool is_array(const DescribedCall& call, std::size_t i) {
  static const std::vector<std::string> arrays{"array"};
  return call.is_one_of(i, arrays);
}

/// Whether a product of matrices sums over different extents: the last of the left one, the last but one of the right
/// one.
bool summed_extents_differ(const Extents& left, const Extents& right) {
  if (left.empty() || right.empty()) return false;
  return left.back() != (right.size() == 1 ? right.back() : right[right.size() - 2]);
}

bool first_extents_differ(const Extents& left, const Extents& right) {
  return !left.empty() && !right.empty() && left.front() != right.front();
}

/// The elements along the first dimension. An extent of 1 there has no stride, and all elements follow one another.
std::int64_t count_along_first(const Extents& extents) {
  return extents.empty() || extents.front() == 1 ? element_count(extents) : extents.front();
}

Verdict of_two(const Condition& condition, DescribedCall& call) {
  const std::vector<std::size_t> positions = call.positions(condition);
  if (positions.size() < 2 || !is_array(call, positions[0]) || !is_array(call, positions[1])) return no();
  const std::size_t a = positions[0];
  const std::size_t b = positions[1];
  const std::string both = fmt::format("{} and {}", DescribedCall::numbered(a), DescribedCall::numbered(b));
  const auto these = [&] { return fmt::format("{} and {}", call.shown(a), call.shown(b)); };
  if (condition.form == Form::kinds_differ) {
    if (call.kind(a) == call.kind(b)) return no();
    return yes(fmt::format("{} must be of one kind; these are {}", both, these()));
  }
  const Extents* left = call.shape(a);
  const Extents* right = call.shape(b);
  if (!left || !right) return no();
  if (condition.form == Form::no_broadcast && !do_broadcast(*left, *right))
    return yes(fmt::format("the shapes of {} do not broadcast; these are {}", both, these()));
  if (condition.form == Form::first_extents_differ && first_extents_differ(*left, *right))
    return yes(fmt::format("the first extents of {} differ; these are {}", both, these()));
  if (condition.form == Form::fewer_rows && !right->empty() && (left->empty() || left->front() < right->front()))
    return yes(fmt::format("{} has fewer rows than {}; these are {}", DescribedCall::numbered(a),
                           DescribedCall::numbered(b), these()));
  if (condition.form == Form::shorter && count_along_first(*left) < count_along_first(*right))
    return yes(fmt::format("{} has fewer elements than {} along its first dimension; these are {}",
                           DescribedCall::numbered(a), DescribedCall::numbered(b), these()));
  if (condition.form == Form::summed_extents_differ && summed_extents_differ(*left, *right))
    return yes(fmt::format("the extents of {} that are summed over differ; these are {}", both, these()));
  return no();
}

/// The parts of one condition: all of them must hold. The causes follow one another.
Verdict of_all(const Condition& condition, DescribedCall& call) {
  std::string cause;
  for (const Condition& part : condition.parts) {
    Verdict verdict = checked(part, call);
    if (verdict.answer != Verdict::Answer::yes) return verdict;
    cause += (cause.empty() ? "" : ", and ") + verdict.cause;
  }
  return yes(cause);
}

Verdict of_emptiness(const Condition& condition, DescribedCall& call) {
  for (const std::size_t i : call.positions(condition)) {
    const Extents* shape = call.shape(i);
    if (!shape || std::find(shape->begin(), shape->end(), 0) == shape->end()) continue;
    if (condition.form == Form::empty_rows && shape->front() == 0) continue;
    return yes(fmt::format("{} has no elements; this is {}", DescribedCall::numbered(i), call.shown(i)));
  }
  return no();
}

}  // namespace

Verdict checked(const Condition& condition, DescribedCall& call) {
  const auto count = static_cast<std::int64_t>(call.count());
  switch (condition.form) {
    case Form::told:
    case Form::no_memory:
      return {};
    case Form::always:
      return yes("no arguments give a value");
    case Form::all:
      return of_all(condition, call);
    case Form::empty:
    case Form::empty_rows:
      return of_emptiness(condition, call);
    case Form::arguments_below:
      if (count >= condition.number) return no();
      return yes(fmt::format("argument {} is missing: {}", count + 1, call.usage()));
    case Form::arguments_above:
      if (count <= condition.number) return no();
      return yes(fmt::format("argument {} is one too many: {}", condition.number + 1, call.usage()));
    case Form::kind_in:
    case Form::kind_not_in:
      return of_kind(condition, call);
    case Form::dimensions_below:
    case Form::dimensions_above:
    case Form::dimensions_not:
      return of_dimensions(condition, call);
    case Form::not_square:
      return of_square(condition, call);
    case Form::first_extents_differ:
    case Form::summed_extents_differ:
    case Form::kinds_differ:
    case Form::no_broadcast:
    case Form::fewer_rows:
    case Form::shorter:
      return of_two(condition, call);
    case Form::below:
      return of_number(call, call.positions(condition), fmt::format("be {} or more", condition.number),
                       [&](const ReadNumber& x) { return x.value < static_cast<double>(condition.number); });
    case Form::equals:
      return of_number(call, call.positions(condition), fmt::format("not be {}", condition.number),
                       [&](const ReadNumber& x) { return x.value == static_cast<double>(condition.number); });
    case Form::beyond_32_bits:
      for (const std::size_t i : call.positions(condition))
        if (is_beyond_32_bits(call.value(i)))
          return yes(fmt::format("{} must fit into 32 bits; this is {}", DescribedCall::numbered(i),
                                 number_text(call.value(i))));
      return no();
  }
  return {};
}

Verdict first_misfit(DescribedCall& call) {
  const auto count = static_cast<std::int64_t>(call.count());
  if (count < call.entry().least_arguments)
    return yes(fmt::format("argument {} is missing: {}", count + 1, call.usage()));
  for (std::size_t i = 0; i < call.count(); ++i) {
    const ArgumentEntry* entry = call.argument(i);
    if (!entry) break;
    const std::string name = DescribedCall::numbered(i);
    if (!entry->kinds.empty() && !call.is_one_of(i, entry->kinds))
      return yes(fmt::format("{} must be {}; this is {}", name, kinds_in_words(entry->kinds), call.shown(i)));
    const Extents* shape = call.shape(i);
    if (shape && !fits(*entry, *shape) && !dimensions_in_words(*entry).empty())
      return shape_misfit(call, i, *shape, "");
    if (entry->least) {
      Verdict verdict = of_number(call, {i}, fmt::format("be {} or more", *entry->least),
                                  [&](const ReadNumber& x) { return x.value < static_cast<double>(*entry->least); });
      if (verdict.answer == Verdict::Answer::yes) return verdict;
    }
  }
  return no();
}

}  // namespace hvm
