// script/library/table_functions.cpp: tables: append, remove, keys, values, has, sort

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <string>
#include <vector>

#include "script/library/arguments.hpp"
#include "script/library/table_circles.hpp"
#include "script/stop/interruption.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

Value append(const BuiltinCall& call) {
  HostHash* table = table_argument(call, 0);
  for (std::size_t i = 1; i < call.count(); ++i)
    if (holds_table(call.arguments[i], table)) call.fail("a table cannot hold itself");
  for (std::size_t i = 1; i < call.count(); ++i) append_entry(table, call.arguments[i].record());
  return {};
}

Value remove(const BuiltinCall& call) { return hvm::remove(table_argument(call, 0), key_argument(call, 1)); }

Value keys(const BuiltinCall& call) {
  Value made = Value::table();
  TableWalk walk(table_argument(call, 0));
  while (const Entry entry = walk.next()) append_entry(table_of(made.record()), key_value(*entry.key).record());
  return made;
}

Value values(const BuiltinCall& call) {
  Value made = Value::table();
  TableWalk walk(table_argument(call, 0));
  while (const Entry entry = walk.next()) append_entry(table_of(made.record()), *entry.value);
  return made;
}

Value has(const BuiltinCall& call) { return Value(hvm::find(table_argument(call, 0), key_argument(call, 1)) ? 1 : 0); }

// ---- Sorting

/// A value of a table, with the number or text that decides its place.
struct SortItem {
  const HostValue* value;
  Number number;
  std::string_view text;
};

/// NaN is behind all other numbers.
bool is_number_before(const SortItem& a, const SortItem& b) {
  obey_interruption();
  if (std::isnan(a.number.real) || std::isnan(b.number.real))
    return !std::isnan(a.number.real) && std::isnan(b.number.real);
  return is_less(a.number, b.number);
}

bool is_text_before(const SortItem& a, const SortItem& b) {
  obey_interruption();
  return a.text < b.text;
}

/// Collects the values of a table, which stays as it is, and sorts them.
class Sorter {
 public:
  explicit Sorter(const BuiltinCall& call) : call_(call) {}

  void add(const Entry& entry) {
    obey_interruption();
    const HostValue& record = has_argument(call_, 1) ? inner(entry) : *entry.value;
    const Value decisive = Value::sharing(record);
    if (!decisive.is_number() && !decisive.is_string())
      call_.fail(fmt::format("it takes numbers or strings, not {}", kind_in_words(decisive)));
    if (items_.empty()) first_ = decisive;
    if (decisive.is_number() != first_.is_number())
      call_.fail(fmt::format("{} and {} have no order", kind_in_words(first_), kind_in_words(decisive)));
    if (decisive.is_number()) return items_.push_back({entry.value, number_of(decisive), {}});
    items_.push_back({entry.value, {}, lasting_text(record)});
  }

  Value sorted() {
    std::stable_sort(items_.begin(), items_.end(), first_.is_number() ? is_number_before : is_text_before);
    Value made = Value::table();
    for (const SortItem& item : items_) append_entry(table_of(made.record()), *item.value);
    return made;
  }

 private:
  const HostValue& inner(const Entry& entry) const {
    const Value table = Value::sharing(*entry.value);
    if (!table.is_table())
      call_.fail(fmt::format("with a key it takes a table of tables, not of {}", kind_in_words(table)));
    const HostValue* found = hvm::find(table_of(table.record()), key_argument(call_, 1));
    if (!found)
      call_.fail(fmt::format("the table at {} has no entry {}", shown(*entry.key), shown(key_argument(call_, 1))));
    return *found;
  }

  std::string shown(const HostValue& key) const {
    return call_.printer(Detail::brief).text_in_table(Value::sharing(key));
  }

  /// The text of a wide string lasts for a few conversions only.
  std::string_view lasting_text(const HostValue& text) {
    if (text.tag != ValueTag::wide_string) return text_of(text);
    return converted_.emplace_back(text_of(text));
  }

  const BuiltinCall& call_;
  Value first_;
  std::vector<SortItem> items_;
  std::deque<std::string> converted_;
};

Value sort(const BuiltinCall& call) {
  Sorter sorter(call);
  TableWalk walk(table_argument(call, 0));
  while (const Entry entry = walk.next()) sorter.add(entry);
  return sorter.sorted();
}

// clang-format off
constexpr Builtin table_rows[] = {
    {"append", 2, -1, append, "append(table, value, ...)", "Adds values at the end of a table.",
     "t = [1]\n"
     "append(t, 2, 3)\n"
     "print(t)  # expect: [1, 2, 3]", Gives::nothing},
    {"has", 2, 2, has, "has(table, key)", "Says whether a table has a key.",
     "print(has([\"a\": nil], \"a\"), has([7], 1))  # expect: 1 0"},
    {"keys", 1, 1, keys, "keys(table)", "Gives a table of the keys.",
     "print(keys([7, \"a\": 8]))  # expect: [0, \"a\"]"},
    {"remove", 2, 2, remove, "remove(table, key)", "Removes an entry from a table and gives its value.",
     "t = [10, 20, 30]\n"
     "print(remove(t, 1), t)  # expect: 20 [10, 30]"},
    {"sort", 1, 2, sort, "sort(table)\nsort(table, key)",
     "Gives the values of a table in ascending order, or tables by their entry at a key.",
     "print(sort([3, 1, 2]))  # expect: [1, 2, 3]\n"
     "print(sort([[\"n\": 2], [\"n\": 1]], \"n\"))  # expect: [[\"n\": 1], [\"n\": 2]]"},
    {"values", 1, 1, values, "values(table)", "Gives a table of the values.",
     "print(values([\"a\": 7, \"b\": 8]))  # expect: [7, 8]"},
};
// clang-format on

}  // namespace

BuiltinFamily table_functions() { return family_of(table_rows); }

}  // namespace hvm
