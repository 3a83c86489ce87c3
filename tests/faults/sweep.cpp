// faults/sweep.cpp: repeating a call, and what a run without memory may leave behind

#include "faults/sweep.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <typeinfo>

#include "support/allocations.hpp"
#include "support/containers.hpp"
#include "support/functions.hpp"

namespace arrayfold::test {
namespace {

using hvm::FailureExtent;

// ---- Digests of values. They take no memory.

class Digest {
 public:
  void add(const void* bytes, std::size_t size) {
    const auto* from = static_cast<const char*>(bytes);
    mix(size);
    for (; size >= sizeof(std::uint64_t); from += sizeof(std::uint64_t), size -= sizeof(std::uint64_t))
      mix(load<std::uint64_t>(from));
    std::uint64_t rest = 0;
    if (size > 0) std::memcpy(&rest, from, size);  // no bytes may be at null
    mix(rest);
  }
  template <class T>
  void add(const T& x) {
    add(&x, sizeof x);
  }
  std::uint64_t value() const { return value_; }

 private:
  void mix(std::uint64_t word) {
    value_ = (value_ ^ word) * 0x9e3779b97f4a7c15U;
    value_ ^= value_ >> 29;
  }

  std::uint64_t value_ = 0x243f6a8885a308d3U;
};

enum class Detail { elements, extents };

template <class Row>
bool add_array(Digest& digest, const Value& value, Detail detail) {
  const auto* array = container_of<Row>(value);
  if (array == nullptr) return false;
  digest.add(Row::code);
  for (const auto extent : array->shape()) digest.add(extent);
  for (const auto stride : array->strides()) digest.add(stride);
  const auto& storage = array->storage();
  if (detail == Detail::elements) digest.add(storage.data(), storage.size() * sizeof(typename Row::element));
  return true;
}

constexpr int deepest = 1000;

/// All that a script can see of a value.
void add_value(Digest& digest, const HostValue& record, Detail detail, int depth = 0) {
  digest.add(record.tag);
  if (depth > deepest || record.tag == ValueTag::nil) return;
  if (record.tag == ValueTag::table) {
    hvm::TableWalk walk(hvm::table_of(record));
    while (const hvm::Entry entry = walk.next()) {
      add_value(digest, *entry.key, detail, depth + 1);
      add_value(digest, *entry.value, detail, depth + 1);
    }
    digest.add(']');
  } else if (record.tag == ValueTag::object) {
    const Value value = Value::sharing(record);
    for_kinds(all_kinds{}, [&](auto... row) { return (add_array<decltype(row)>(digest, value, detail) || ...); });
  } else if (record.tag == ValueTag::string || record.tag == ValueTag::string_record) {
    digest.add(hvm::text_of(record).data(), hvm::text_of(record).size());
  } else if (record.tag == ValueTag::wide_string) {
    digest.add(hvm::wide_text_of(record).data(), hvm::wide_text_of(record).size() * sizeof(char16_t));
  } else {
    digest.add(record.payload);
  }
}

std::uint64_t digest_of(const HostValue& record, Detail detail) {
  Digest digest;
  add_value(digest, record, detail);
  return digest.value();
}

// ---- What is known of functions

/// Their elements are random or unspecified.
bool has_free_elements(const std::string& name) {
  return name == "xrand" || name == "xrandn" || name == "xempty" || name == "xshuffle" || name == "xpermutation";
}
/// They fill a table with several values.
bool gives_table(const std::string& name) {
  static const std::vector<std::string> names = {"xqr", "xsvd", "xeig", "xeigh", "xslogdet", "xlstsq", "shape"};
  return contains(names, name);
}

int outside_depth = 0;

void suspend_all(bool suspend) {
  suspend_failures(suspend);
  hvm::suspend_failures(suspend);
}

}  // namespace

Tally& Tally::operator+=(const Tally& other) {
  for (const auto& [name, count] : other.failures) failures[name] += count;
  for (std::int64_t Tally::*figure :
       {&Tally::calls, &Tally::module_allocations, &Tally::host_allocations, &Tally::failing_runs,
        &Tally::out_of_memory, &Tally::unfinished, &Tally::same, &Tally::no_value})
    this->*figure += other.*figure;
  return *this;
}

Sweep::Outside::Outside() {
  ++outside_depth;
  suspend_all(true);
}

Sweep::Outside::~Outside() {
  if (--outside_depth == 0) suspend_all(false);
}

bool Sweep::Outside::is_under_way() { return outside_depth > 0; }

// ---- Before and after a run

/// Which allocation fails.
struct Sweep::Failure {
  enum class Memory { module, host } memory = Memory::module;
  FailureExtent extent = FailureExtent::once;
  std::int64_t nth = 0;  // 0: none

  void arm() const {
    if (memory == Memory::module)
      test::fail_allocation(nth, extent);
    else
      hvm::fail_allocation(nth, extent);
  }
  bool has_come() const { return memory == Memory::module ? allocation_has_failed() : hvm::allocation_has_failed(); }
  static void disarm() {
    fail_allocation(0);
    hvm::fail_allocation(0);
  }
  std::string in_words() const {
    if (nth == 0) return "with memory";
    return std::string(memory == Memory::module ? "module" : "host") + " allocation " + std::to_string(nth) +
           (extent == FailureExtent::once ? "" : " and all that follow");
  }
};

/// What is seen before the first run, or after a run. It takes no memory.
struct Sweep::State {
  bool has_failed = false;  // an allocation
  int returned = 0;
  bool is_out_of_memory = false;
  std::uint64_t thrown = 0;  // the type and the words of another exception
  HostValue record{};        // the result record, byte for byte
  std::uint64_t result = 0;
  std::uint64_t operands = 0;
  std::array<std::uint64_t, 64> entries{};  // of a table of results, without those that are nil
  std::size_t entry_count = 0;
  bool host_leaks = false;
  std::int64_t left_alive = 0;

  /// The result record is none of the operands, also where an operator works in place.
  void see(const SweptCall& call) {
    const Detail detail = has_free_elements(call.name) ? Detail::extents : Detail::elements;
    record = *call.result;
    result = digest_of(*call.result, detail);
    if (gives_table(call.name) && record.tag == ValueTag::table) see_entries(hvm::table_of(record));
    Digest all;
    for (const HostValue* operand : call.operands)
      all.add(operand == nullptr || operand == call.result ? 0 : digest_of(*operand, detail));
    operands = all.value();
  }
  void see_entries(const HostHash* table) {
    hvm::TableWalk walk(table);
    while (const hvm::Entry entry = walk.next()) {
      if (entry.value->tag == ValueTag::nil) continue;
      Digest digest;
      add_value(digest, *entry.key, Detail::elements);
      add_value(digest, *entry.value, Detail::elements);
      entries.at(entry_count++) = digest.value();
    }
  }
  /// Whether a table of results has no entry that the other one lacks.
  bool has_part_of(const State& other) const {
    const auto others_end = other.entries.begin() + other.entry_count;
    return std::all_of(entries.begin(), entries.begin() + entry_count, [&](std::uint64_t entry) {
      return std::find(other.entries.begin(), others_end, entry) != others_end;
    });
  }
  bool keeps_record_of(const State& before) const { return std::memcmp(&record, &before.record, sizeof record) == 0; }
  bool ends_as(const State& other) const {
    return returned == other.returned && is_out_of_memory == other.is_out_of_memory && thrown == other.thrown;
  }
};

/// The result record and the arrays among the operands, which a run may change.
class Sweep::Kept {
 public:
  explicit Kept(const SweptCall& call)
      : result_(call.result), record_(*call.result), content_(Value::sharing(*call.result)) {
    if (!call.changes_operands) return;
    const auto keep_any = [&](const Value& value) {
      for_kinds(all_kinds{}, [&](auto... row) { (keep<decltype(row)>(value), ...); });
    };
    for (const HostValue* operand : call.operands)
      if (operand != nullptr) keep_any(Value::sharing(*operand));
    put_back();  // from the first run on, arrays take the memory that they take after being put back
  }

  void put_back() const {
    if (std::memcmp(&record_, result_, sizeof record_) != 0) {
      hvm::release(*result_);
      Value again = content_;  // one more reference to what the record held
      if (hvm::holds_content(record_)) again.give_up();
      *result_ = record_;
    }
    for (const auto& put : arrays_) put();
  }

 private:
  template <class Row>
  void keep(const Value& value) {
    const auto* container = container_of<Row>(value);
    if (container == nullptr) return;
    using Container = std::decay_t<decltype(*container)>;
    arrays_.push_back([value, copy = *container] {
      unbox_array<Row>(hvm::object_of(value.record()))->array = std::make_shared<Container>(copy);
    });
  }

  HostValue* result_;
  HostValue record_;
  Value content_;
  std::vector<std::function<void()>> arrays_;
};

// ---- Runs

Sweep::State Sweep::attempt(const SweptCall& call, const Kept& kept, const Failure& failure) {
  State state;
  const auto host_before = hvm::counts();
  const auto alive_before = allocations().alive;
  failure.arm();
  try {
    state.returned = call.make();
  } catch (const std::bad_alloc&) {
    state.is_out_of_memory = true;
  } catch (const std::exception& error) {
    Digest words;
    words.add(typeid(error).name(), std::strlen(typeid(error).name()));
    words.add(error.what(), std::strlen(error.what()));
    state.thrown = words.value();
  }
  state.has_failed = failure.has_come();
  Failure::disarm();
  state.see(call);
  kept.put_back();
  state.host_leaks = hvm::counts() != host_before;
  state.left_alive = allocations().alive - alive_before;
  return state;
}

/// The first calls of a name always have their turn.
constexpr std::int64_t always = 2;

bool Sweep::has_turn(const SweptCall& call) {
  const int one_of = call.family == "reading" ? size_.one_reading_of : size_.one_call_of;
  const std::int64_t before = calls_seen_[call.family + call.name]++;
  return before < always || before % one_of == 0;
}

int Sweep::run(const SweptCall& call) {
  if (!is_running_ && has_turn(call)) {
    is_running_ = true;
    repeat(call);
    is_running_ = false;
  }
  return call.make();
}

void Sweep::repeat(const SweptCall& call) {
  const Kept kept(call);
  State before;
  before.see(call);
  attempt(call, kept, {});  // what is made once and kept, such as the answers of scripts, comes into being
  const State expected = attempt(call, kept, {});
  judge(call, {}, before, expected, expected);
  Tally& tally = tallies_[call.family];
  std::int64_t& failures = tally.failures[call.name];
  ++tally.calls;
  for (const auto memory : {Failure::Memory::module, Failure::Memory::host})
    for (const auto extent : {FailureExtent::once, FailureExtent::lasting}) {
      std::int64_t failed = 0;
      for (Failure failure{memory, extent, 1};; failure.nth += size_.every_allocation ? 1 : 1 + failure.nth / 4) {
        const State found = attempt(call, kept, failure);
        judge(call, failure, before, expected, found);
        if (!found.has_failed) break;
        ++failed;
      }
      tally.failing_runs += failed;
      failures += failed;
      if (extent == FailureExtent::lasting) continue;
      (memory == Failure::Memory::module ? tally.module_allocations : tally.host_allocations) += failed;
    }
}

// ---- What a run may leave behind

/// An object that could not be made is nil, and so is a text that the host could not store. A table of the host may
/// hold nil for such a value, or lack it; its other entries are those that it has with memory.
bool Sweep::lacks_value(const SweptCall& call, const State& expected, const State& found, bool is_host) {
  const ValueTag tag = expected.record.tag, found_tag = found.record.tag;
  if (gives_table(call.name) && tag == ValueTag::table)
    return found.has_part_of(expected) && (found_tag == ValueTag::table || (is_host && found_tag == ValueTag::nil));
  return found_tag == ValueTag::nil && (tag == ValueTag::object || (is_host && tag == ValueTag::string));
}

/// A run ends as it does with memory, or with std::bad_alloc. With std::bad_alloc, the result record and the operands
/// are as they were, but for nil or an unfinished table where the host had no memory for a table of results. Where an
/// object cannot be made, or a text of the host's, the value is nil. Nothing is left alive.
void Sweep::judge(const SweptCall& call, const Failure& failure, const State& before, const State& expected,
                  const State& found) {
  if (found.left_alive != 0) report(call, failure, std::to_string(found.left_alive) + " allocations more are alive");
  if (found.host_leaks) report(call, failure, "the host holds more or less than before");
  if (!call.changes_operands && found.operands != before.operands) report(call, failure, "an operand has changed");
  if (failure.nth == 0) return;
  const bool ends_as_expected = found.ends_as(expected);
  if (!found.has_failed) {
    if (!ends_as_expected || found.result != expected.result || found.operands != expected.operands)
      report(call, failure, "no allocation failed, and the call ends in another way than before");
    return;
  }
  Tally& tally = tallies_[call.family];
  const bool is_host = failure.memory == Failure::Memory::host;
  if (found.is_out_of_memory) {
    const bool keeps_record = found.keeps_record_of(before);
    if (found.operands != before.operands || (keeps_record && found.result != before.result))
      report(call, failure, "an operand has changed, and std::bad_alloc");
    if (keeps_record) {
      ++tally.out_of_memory;
      return;
    }
    ++tally.unfinished;
    const bool is_table = found.record.tag == ValueTag::nil || found.record.tag == ValueTag::table;
    if (!is_host || !gives_table(call.name) || !is_table || !found.has_part_of(expected))
      report(call, failure, "the result record is written");
  } else if (ends_as_expected && found.result == expected.result && found.operands == expected.operands) {
    ++tally.same;
  } else if (ends_as_expected && found.thrown == 0 && lacks_value(call, expected, found, is_host)) {
    ++tally.no_value;
    if (found.operands != before.operands && found.operands != expected.operands)
      report(call, failure, "an operand has changed in part, and there is no value");
  } else {
    report(call, failure, ends_as_expected ? "another value or change" : "another end");
  }
}

void Sweep::report(const SweptCall& call, const Failure& failure, const std::string& problem) {
  std::string operands;
  for (const HostValue* operand : call.operands) {
    operands += operands.empty() ? "" : ", ";
    operands += operand == nullptr ? "none" : hvm::printed(*operand).substr(0, 60);
  }
  problems_.push_back(place_ + call.family + ": " + call.name + '(' + operands + "), " + failure.in_words() + ": " +
                      problem);
}

}  // namespace arrayfold::test
