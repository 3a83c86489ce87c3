// second_host/module.cpp: the module under the second host, as a module of hvm
//
// Every call of a script goes through a passage. Where a call has no effect but its result, it is made twice: first
// with an operation that gives nothing, which must leave nothing behind, then for the script.

#include <array>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "second_host/passage.hpp"
#include "second_host/tables.hpp"

/// That of the module, under another name.
extern "C" int inner_PKG_Init(void* host, arrayfold::RegisterFunctions register_functions);

namespace second_host {
namespace {

using arrayfold::EntryFunction;
using arrayfold::FunctionRow;
using arrayfold::HostBool;
using arrayfold::HostContext;
using arrayfold::HostIndexEntry;
using arrayfold::HostIndexList;
using arrayfold::load;
using arrayfold::Opcode;
using arrayfold::store;

std::vector<FunctionRow> rows;

// ---- Results

/// What a result record holds before a call: nil or something else, with every lifetime.
HostValue before_call() {
  switch (choice(4)) {
    case 0:
      return text("what a result record holds before a call", TextForm::string);
    case 1:
      return table_record(new_table());
    default: {
      HostValue record = by_chance() ? nil() : integer64(0x5EC0D);
      record.lifetime = static_cast<Lifetime>(choice(3));
      return record;
    }
  }
}

/// The result record of a call.
class Result {
 public:
  Result() : before_(before_call()) {
    record_ = static_cast<HostValue*>(take(sizeof(HostValue)));
    *record_ = before_;
  }
  ~Result() {
    release(*record_);
    give_back(record_);
  }
  Result(const Result&) = delete;
  Result& operator=(const Result&) = delete;

  HostValue* record() { return record_; }
  /// Hands the result of a call on, where the script asked for one: `theirs` is null otherwise. A call that fails and
  /// has written its result ends the process.
  void deliver(const std::string& call, bool is_handled, Passage& passage, HostValue* theirs) const {
    if (is_untouched()) return;
    if (!is_handled) give_up(call + " fails and writes its result");
    if (theirs == nullptr) return;
    hvm::release(*theirs);
    *theirs = passage.out(*record_).give_up();
  }

 private:
  bool is_untouched() const { return std::memcmp(record_, &before_, sizeof before_) == 0; }

  HostValue before_;
  HostValue* record_;
};

/// What a call leaves behind beside its result ends the process.
class LeftBehind {
 public:
  explicit LeftBehind(std::string call) : call_(std::move(call)), before_(live) {}
  ~LeftBehind() {
    const auto require = [&](std::int64_t before, std::int64_t after, const char* what) {
      if (after != before) give_up(call_ + " leaves " + std::to_string(after - before) + ' ' + what + " behind");
    };
    require(before_.blocks, live.blocks, "blocks");
    require(before_.records, live.records, "records");
    require(before_.tables, live.tables, "tables");
    require(before_.objects, live.objects, "objects that no record holds");
  }
  LeftBehind(const LeftBehind&) = delete;
  LeftBehind& operator=(const LeftBehind&) = delete;

 private:
  std::string call_;
  Live before_;
};

// ---- Calls that an operation does not serve

/// Makes a call once more than the script asked for, without what one operation should give.
template <class Call>
void try_without(const std::string& name, Call call) {
  const auto what = static_cast<Withheld>(1 + choice(withheld_count - 1));
  const LeftBehind left(name + " that fails");
  const Withholding withholding(what, 1 + choice(3));
  bool threw = false;
  try {
    call();
  } catch (const std::exception&) {
    threw = true;
  }
  if (Withholding::has_come() && what != Withheld::object && !threw)
    give_up(name + " goes on without what it asked for: " + std::to_string(static_cast<int>(what)));
}

/// These move the engine of random numbers or the elements of their operand.
bool has_effects(const char* name) {
  for (const char* one : {"xrand", "xrandn", "xshuffle", "xpermutation"})
    if (std::strcmp(name, one) == 0) return true;
  return false;
}

/// Whether a quotation among the arguments calls functions of the script, which may have effects.
bool calls_script(const HostValue* args, int nargs) {
  for (int n = 0; n < nargs; ++n)
    if (args[n].tag == ValueTag::code && has_calls(args[n])) return true;
  return false;
}

// ---- Functions

/// The arguments side by side in a block of their size.
HostValue* arguments_in(Passage& passage, const char* name, const HostValue* args, int nargs) {
  if (nargs == 0) return nullptr;
  // The tag of the first argument of these two chooses the kind of the result.
  const bool is_kind = std::strcmp(name, "xlinspace") == 0 || std::strcmp(name, "xlogspace") == 0;
  const auto count = static_cast<std::size_t>(nargs);
  auto* ours = static_cast<HostValue*>(passage.block(count * sizeof(HostValue)));
  for (std::size_t n = 0; n < count; ++n) ours[n] = passage.in(args[n], is_kind && n == 0 ? Tags::own : Tags::any);
  return ours;
}

int call_once(const FunctionRow& row, HostContext ctx, const HostValue* args, int nargs, HostValue* result) {
  Passage passage(ctx);
  HostValue* const ours = arguments_in(passage, row.name, args, nargs);
  Result made;
  const int returned = row.function(passage.ctx(), ours, nargs, made.record());
  made.deliver(row.name, returned != 0, passage, result);
  return returned;
}

template <std::size_t n>
int call_function(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  const FunctionRow& row = rows[n];
  if (!has_effects(row.name) && !calls_script(args, nargs))
    try_without(row.name, [&] { call_once(row, ctx, args, nargs, nullptr); });
  const LeftBehind left(row.name);
  return call_once(row, ctx, args, nargs, result);
}

constexpr std::size_t most_functions = 128;

template <std::size_t... n>
constexpr std::array<EntryFunction, most_functions> functions_of(std::index_sequence<n...>) {
  return {&call_function<n>...};
}
constexpr auto functions = functions_of(std::make_index_sequence<most_functions>());

// ---- Methods

HostBool method_once(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                     HostValue* result) {
  Passage passage(ctx);
  const auto count = static_cast<std::size_t>(nargs);
  auto** const ours = static_cast<HostValue**>(passage.block(count * sizeof(HostValue*)));
  for (std::size_t n = 0; n < count; ++n) ours[n] = passage.place(*args[n], Tags::any);
  Result made;
  const HostBool returned = manager_of(behind(*self))
                                ->method(passage.ctx(), passage.place(*self, Tags::own), passage.copied(name), ours,
                                         nargs, made.record(), by_chance() ? 0 : 1);
  made.deliver(name, returned != 0, passage, result);
  return returned;
}

HostBool call_method(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs, HostValue* result,
                     int) {
  if (std::strcmp(name, "reshape") != 0) try_without(name, [&] { method_once(ctx, self, name, args, nargs, nullptr); });
  const LeftBehind left(name);
  return method_once(ctx, self, name, args, nargs, result);
}

// ---- Operators

/// The indices of an element access, in the list or elsewhere.
HostValue* index_list_in(Passage& passage, const HostValue* theirs) {
  const auto* list = static_cast<const HostIndexList*>(static_cast<const void*>(theirs));
  const std::size_t count = list->packed_size >> 1;
  const void* entries = (list->packed_size & 1) != 0 ? load<const void*>(list->entries) : list->entries;
  const auto* from = static_cast<const HostIndexEntry*>(entries);

  const bool is_elsewhere = by_chance();
  const std::size_t size = count * sizeof(HostIndexEntry);
  constexpr std::size_t head = offsetof(HostIndexList, entries);
  auto* ours = static_cast<HostIndexList*>(passage.block(is_elsewhere ? sizeof(HostIndexList) : head + size));
  ours->packed_size = 2 * count + (is_elsewhere ? 1 : 0);
  void* const place = is_elsewhere ? passage.block(size) : ours->entries;
  if (is_elsewhere) store<void*>(ours->entries, place);
  auto* to = static_cast<HostIndexEntry*>(place);
  for (std::size_t n = 0; n < count; ++n) to[n].value = passage.place(*from[n].value, Tags::any);
  return static_cast<HostValue*>(static_cast<void*>(ours));
}

struct Operator {
  Opcode opcode;
  HostValue* left;
  HostValue* right;
  HostValue* result;

  bool is_read() const { return opcode == Opcode::read_element; }
  bool is_write() const { return opcode == Opcode::write_element; }
  bool is_in_place() const { return result == left && !is_read() && !is_write(); }
  std::string name() const { return "operator " + std::to_string(static_cast<int>(opcode)); }
};

const Manager& manager_for(const Operator& applied) {
  return *manager_of(behind(hvm::object_of(*applied.left) != nullptr ? *applied.left : *applied.right));
}

HostBool write(const Operator& applied, HostContext ctx) {
  Passage passage(ctx);
  HostValue* const left = passage.place(*applied.left, Tags::own);
  HostValue* const list = index_list_in(passage, applied.right);
  return manager_for(applied).op(passage.ctx(), static_cast<int>(applied.opcode), left, list,
                                 passage.place(*applied.result, Tags::any));
}

HostBool read_once(const Operator& applied, HostContext ctx, HostValue* result) {
  Passage passage(ctx);
  HostValue* const left = passage.place(*applied.left, Tags::own);
  HostValue* const list = index_list_in(passage, applied.right);
  Result made;
  const auto* indices = static_cast<const HostIndexList*>(static_cast<const void*>(list));
  // One index may come in a list or alone.
  const bool is_alone = indices->packed_size == 2 && by_chance();
  HostValue* const index = is_alone ? load<HostValue*>(indices->entries) : list;
  const Opcode way = is_alone ? Opcode::read_one_index : applied.opcode;
  const HostBool returned = manager_for(applied).op(passage.ctx(), static_cast<int>(way), left, index, made.record());
  made.deliver(applied.name(), returned != 0, passage, result);
  return returned;
}

HostBool combine_once(const Operator& applied, HostContext ctx, HostValue* result) {
  Passage passage(ctx);
  HostValue* const left = passage.place(*applied.left, Tags::any);
  HostValue* const right = passage.place(*applied.right, Tags::any);
  Result made;
  const HostBool returned =
      manager_for(applied).op(passage.ctx(), static_cast<int>(applied.opcode), left, right, made.record());
  made.deliver(applied.name(), returned != 0, passage, result);
  return returned;
}

/// The left record is also the result. It owns its object, which the module may replace.
HostBool combine_in_place(const Operator& applied, HostContext ctx) {
  Passage passage(ctx);
  HostValue* const right = passage.place(*applied.right, Tags::any);
  HostValue* const left = passage.place(*applied.left, Tags::own);
  Object* const before = object_in(*left);
  hold(before);
  left->lifetime = Lifetime::temporary;
  struct Release {
    HostValue* record;
    ~Release() { release(*record); }
  } const release_at_end{left};
  const HostBool returned = manager_for(applied).op(passage.ctx(), static_cast<int>(applied.opcode), left, right, left);
  if (object_in(*left) == before) return returned;
  hvm::release(*applied.result);
  *applied.result = passage.out(*left).give_up();
  return returned;
}

HostBool call_operator(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  const Operator applied{static_cast<Opcode>(opcode), left, right, result};
  const auto once = [&](HostValue* theirs) {
    return applied.is_read() ? read_once(applied, ctx, theirs) : combine_once(applied, ctx, theirs);
  };
  const bool changes_operand = applied.is_write() || applied.is_in_place();
  if (!changes_operand) try_without(applied.name(), [&] { once(nullptr); });
  const LeftBehind left_behind(applied.name());
  if (applied.is_write()) return write(applied, ctx);
  return applied.is_in_place() ? combine_in_place(applied, ctx) : once(result);
}

int take_rows(void*, int count, const FunctionRow* table) {
  rows.assign(table, table + count);
  return by_chance() ? 1 : 0;
}

}  // namespace
}  // namespace second_host

extern "C" __attribute__((visibility("default"))) int PKG_Init(void* host, arrayfold::RegisterFunctions take) {
  using namespace second_host;
  if (inner_PKG_Init(nullptr, take_rows) == 0 || rows.size() > most_functions) return 0;
  std::vector<FunctionRow> shown = rows;
  for (std::size_t n = 0; n < shown.size(); ++n) shown[n].function = functions[n];
  take(host, static_cast<int>(shown.size()), shown.data());
  for (const char* type : {"$xboolarray", "$xintarray", "$xint64array", "$xdoublearray"})
    show_type(manager_named(type)->name, call_method, call_operator);
  return 1;
}
