// script/module/trace.cpp: a file that tells every call of a module

#include "script/module/trace.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <system_error>
#include <utility>

#include "script/data/json_text.hpp"
#include "script/module/exception_text.hpp"

namespace hvm {
namespace {

using Form = RecordedOperand::Form;

constexpr std::string_view begin_of_lines = "{\"call\":";
constexpr std::size_t no_operation = static_cast<std::size_t>(-1);

std::string system_cause(int error) { return std::generic_category().message(error); }

bool is_named(const RecordedCall& call, std::string_view name) { return call.operation == name; }

bool makes_records(const RecordedCall& call) {
  return is_named(call, "HVM_NewObject") || is_named(call, "HVM_NewObjects");
}

bool frees_block(const RecordedCall& call) {
  return is_named(call, "HVM_Free") || is_named(call, "HVM_Realloc2") || is_named(call, "HVM_ReallocNoLeak");
}

bool finds_slot(const RecordedCall& call) { return std::strncmp(call.operation, "HVM_Hash", 8) == 0; }

std::string quoted(std::string_view name) { return fmt::format("\"{}\"", name); }

template <class Text>
std::string text_object(Text text) {
  std::string out = "{";
  append_traced_text(out, "text", text);
  return out + '}';
}

template <class Char>
std::string text_operand(const RecordedOperand& operand) {
  const auto* text = static_cast<const Char*>(operand.pointer);
  if (!text) return "null";
  using View = std::basic_string_view<Char>;
  return text_object(operand.number < 0 ? View(text) : View(text, static_cast<std::size_t>(operand.number)));
}

/// The records of an index list.
std::vector<TracedRecord> records_of_indices(const HostValue* operand) {
  using arrayfold::HostIndexEntry;
  using arrayfold::HostIndexList;
  const auto* list = static_cast<const HostIndexList*>(static_cast<const void*>(operand));
  const std::uint64_t size = list->packed_size;
  const void* first =
      size % 2 == 0 ? static_cast<const void*>(list->entries) : arrayfold::load<const HostIndexEntry*>(list->entries);
  std::vector<TracedRecord> records;
  for (std::uint64_t i = 0; i < size / 2; ++i)
    records.push_back({fmt::format("index {}", i), static_cast<const HostIndexEntry*>(first)[i].value.get()});
  return records;
}

}  // namespace

const char* operator_name(arrayfold::Opcode opcode) noexcept {
  switch (opcode) {
    case Opcode::less_equal:
      return "less_equal";
    case Opcode::greater_equal:
      return "greater_equal";
    case Opcode::not_equal:
      return "not_equal";
    case Opcode::less:
      return "less";
    case Opcode::greater:
      return "greater";
    case Opcode::equal:
      return "equal";
    case Opcode::add:
      return "add";
    case Opcode::subtract:
      return "subtract";
    case Opcode::multiply:
      return "multiply";
    case Opcode::divide:
      return "divide";
    case Opcode::remainder:
      return "remainder";
    case Opcode::read_one_index:
      return "read_one_index";
    case Opcode::read_element:
      return "read_element";
    case Opcode::write_element:
      return "write_element";
  }
  return "unknown";
}

// ---- The file

Trace::Trace(const std::string& path, std::size_t most_operations)
    : path_(path), most_operations_(most_operations), shared_nil_(arrayfold::HVM_GetGlobalNilObj()) {
  if (path == "-")
    file_.take(STDERR_FILENO);
  else
    open(path);
}

Trace::Trace(TakeLine take, std::size_t most_operations)
    : take_(std::move(take)), most_operations_(most_operations), shared_nil_(arrayfold::HVM_GetGlobalNilObj()) {}

void Trace::open(const std::string& path) {
  constexpr unsigned mode_of_new_files = 0666;  // less what the user's mask takes away
  file_.take(uninterrupted(
      [&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, mode_of_new_files); }));
  struct stat file = {};
  if (!file_.is_open() || fstat(file_.number(), &file) != 0) fail(system_cause(errno));
  if (!S_ISREG(file.st_mode) || file.st_size == 0) return;
  std::string begin(begin_of_lines.size(), '\0');
  std::ifstream(path, std::ios::binary).read(begin.data(), static_cast<std::streamsize>(begin.size()));
  if (begin != begin_of_lines) fail("it holds something else than a trace");
  if (uninterrupted([&] { return ftruncate(file_.number(), 0); }) != 0) fail(system_cause(errno));
}

void Trace::write(std::string_view line) {
  if (take_) return take_(line);
  if (!is_lost_ && !write_all(file_.number(), line)) lose(system_cause(errno));
}

void Trace::lose(std::string cause) noexcept {
  is_lost_ = true;
  cause_ = std::move(cause);
}

void Trace::finish() {
  if (file_.close() != 0 && !is_lost_) lose(system_cause(errno));
  if (is_lost_) fail(cause_.empty() ? "out of memory" : cause_);
}

void Trace::fail(const std::string& cause) const {
  throw TraceError(fmt::format("the trace {} cannot be written: {}", path_, cause));
}

// ---- Calls out of the module

namespace {

/// Lets the host work without being told.
class Silence {
 public:
  Silence() : sink_(send_calls_to(nullptr)) {}
  ~Silence() { send_calls_to(sink_); }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  CallSink* sink_;
};

}  // namespace

int Trace::called_out(const char* callee, HostValue* args, int nargs, HostValue* result,
                      const std::function<int()>& call) {
  TraceScope* const scope = innermost_;
  std::size_t number = no_operation;
  if (scope)
    scope->tell([&] {
      std::string text = fmt::format("{{\"name\":\"call_function\",\"operands\":[{},[", text_object(callee));
      for (int i = 0; i < nargs; ++i) {
        if (i > 0) text += ',';
        append_traced_value(text, args[i], quotation_text_);
      }
      number = scope->add_operation(text + fmt::format("],{}]", result ? quoted(scope->records_.of(result)) : "null"));
    });
  const int returned = [&] {
    const Silence silence;
    return call();
  }();
  if (scope && number != no_operation)
    scope->tell([&] {
      std::string& text = scope->operations_[number].text;
      text += fmt::format(",\"result\":{}", returned);
      if (!result) return;
      text += ",\"value\":";
      append_traced_value(text, *result, quotation_text_);
    });
  return returned;
}

void Trace::slot_read(int slot, const HostValue* value) noexcept {
  if (!innermost_) return;
  innermost_->tell([&] {
    TraceScope& scope = *innermost_;
    std::string text = fmt::format("{{\"name\":\"read_slot\",\"operands\":[{}],\"result\":", slot);
    if (!value)
      text += "null";
    else if (value == shared_nil_)
      text += "\"nil\"";
    else
      text += quoted(scope.slot_name("slot", std::to_string(slot), value)) + ",\"value\":";
    if (value && value != shared_nil_) append_traced_value(text, *value, quotation_text_);
    scope.add_operation(std::move(text));
  });
}

// ---- Calls of the module

TracedCall traced_function(const std::string& name, std::vector<Value>& arguments, HostValue* result) {
  TracedGroup group{"arguments", true, {}};
  for (std::size_t i = 0; i < arguments.size(); ++i)
    group.records.push_back({fmt::format("arg {}", i), arguments[i].address()});
  return {"function", name, 0, {std::move(group)}, result};
}

TracedCall traced_method(HostValue* self, const std::string& name, const std::vector<HostValue*>& arguments,
                         HostValue* result) {
  TracedGroup group{"arguments", true, {}};
  for (std::size_t i = 0; i < arguments.size(); ++i) group.records.push_back({fmt::format("arg {}", i), arguments[i]});
  return {"method", name, 0, {{"self", false, {{"self", self}}}, std::move(group)}, result};
}

TracedCall traced_operator(Opcode opcode, HostValue* left, HostValue* right, HostValue* result) {
  TracedCall call{
      "operator", operator_name(opcode), static_cast<int>(opcode), {{"left", false, {{"left", left}}}}, result};
  const bool writes = opcode == Opcode::write_element;
  if (writes || opcode == Opcode::read_element)
    call.groups.push_back({"indices", true, records_of_indices(right)});
  else if (right)
    call.groups.push_back({"right", false, {{"right", right}}});
  if (writes) call.groups.push_back({"value", false, {{"value", std::exchange(call.result, nullptr)}}});
  return call;
}

const std::string& TracedNames::of(const void* address) {
  const auto [entry, is_new] = names_.try_emplace(address);
  if (is_new) entry->second = next();
  return entry->second;
}

const std::string& TracedNames::make(const void* address) { return names_[address] = next(); }

void TracedNames::forget(const void* begin, const void* end) {
  names_.erase(names_.lower_bound(begin), names_.lower_bound(end));
}

template <class Part>
void TraceScope::tell(Part part) noexcept {
  if (trace_.is_lost_) return;
  try {
    part();
  } catch (const std::exception&) {
    trace_.lose({});
  }
}

TraceScope::TraceScope(const ModuleCaller& caller, const TracedCall& call) noexcept
    : trace_(*caller.trace), outer_(trace_.innermost_), number_(++trace_.calls_), result_(call.result) {
  tell([&] { begin_line(caller, call); });
  trace_.innermost_ = this;
  outer_sink_ = send_calls_to(trace_.most_operations_ > 0 ? this : nullptr);
  started_ = time();
}

TraceScope::~TraceScope() { stop(); }

void TraceScope::stop() noexcept {
  if (!is_running_) return;
  nanoseconds_ = time() - started_;
  is_running_ = false;
  send_calls_to(outer_sink_);
  trace_.innermost_ = outer_;
}

std::uint64_t TraceScope::time() const noexcept {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

void TraceScope::begin_line(const ModuleCaller& caller, const TracedCall& call) {
  std::size_t depth = 0;
  for (const TraceScope* scope = outer_; scope; scope = scope->outer_) ++depth;
  line_ = fmt::format("{}{},\"depth\":{}", begin_of_lines, number_, depth);
  if (outer_) line_ += fmt::format(",\"within\":{}", outer_->number_);
  if (caller.source) {
    const std::string place = fmt::format("{}:{}", caller.source->name(), caller.source->line(caller.offset));
    line_ += ',';
    append_traced_text(line_, "place", place);
  }
  line_ += fmt::format(",\"{}\":", call.form);
  append_json_string(line_, call.name);
  if (call.opcode != 0) line_ += fmt::format(",\"opcode\":{}", call.opcode);
  for (const TracedGroup& group : call.groups) {
    line_ += fmt::format(",\"{}\":{}", group.word, group.is_list ? "[" : "");
    for (std::size_t i = 0; i < group.records.size(); ++i) {
      if (i > 0) line_ += ',';
      const TracedRecord& told = group.records[i];
      append_traced_value(line_, *told.record, trace_.quotation_text_);
      records_.give(told.record, told.name);
      if (told.record == call.result) line_ += ",\"in_place\":true";
    }
    if (group.is_list) line_ += ']';
  }
  const bool is_in_place = std::any_of(call.groups.begin(), call.groups.end(), [&](const TracedGroup& group) {
    return std::any_of(group.records.begin(), group.records.end(),
                       [&](const TracedRecord& told) { return told.record == call.result; });
  });
  if (call.result && !is_in_place) records_.give(call.result, "result");
  records_.give(trace_.shared_nil_, "nil");
}

void TraceScope::returned(int value) noexcept {
  stop();
  tell([&] {
    end_line();
    line_ += fmt::format(",\"returned\":{}", value);
    if (result_) {
      line_ += ",\"result\":";
      append_traced_value(line_, *result_, trace_.quotation_text_);
    }
    line_ += fmt::format(",\"nanoseconds\":{}}}\n", nanoseconds_);
    trace_.write(line_);
  });
}

void TraceScope::threw() noexcept {
  stop();
  tell([&] {
    end_line();
    line_ += ",\"exception\":{\"type\":";
    append_json_string(line_, current_exception_type());
    line_ += ',';
    append_traced_text(line_, "words", current_exception_words().value_or(""));
    line_ += fmt::format("}},\"nanoseconds\":{}}}\n", nanoseconds_);
    trace_.write(line_);
  });
}

void TraceScope::end_line() {
  if (trace_.most_operations_ == 0) return;
  line_ += ",\"operations\":[";
  for (std::size_t i = 0; i < operations_.size(); ++i) {
    if (i > 0) line_ += ',';
    line_ += operations_[i].text;
    line_ += '}';
  }
  line_ += ']';
  if (omitted_ > 0) line_ += fmt::format(",\"omitted\":{}", omitted_);
}

// ---- Operations

std::size_t TraceScope::add_operation(std::string text) {
  if (operations_.size() >= trace_.most_operations_) {
    omitted_ += trace_.most_operations_ > 0 ? 1 : 0;
    return no_operation;
  }
  operations_.push_back({{}, std::move(text)});
  return operations_.size() - 1;
}

std::size_t TraceScope::begin(const RecordedCall& call) noexcept {
  if (operations_.size() >= trace_.most_operations_) return ++omitted_, no_operation;
  std::size_t number = no_operation;
  tell([&] {
    std::string text = fmt::format("{{\"name\":\"{}\",\"operands\":[", call.operation);
    for (std::size_t i = 0; i < call.operand_count; ++i) {
      if (i > 0) text += ',';
      text += operand_text(call.operands[i]);
    }
    text += ']';
    number = add_operation(std::move(text));
    operations_[number].call = call;
  });
  return number;
}

void TraceScope::end(std::size_t number, const RecordedOperand& result) noexcept {
  if (number == no_operation) return;
  tell([&] {
    Operation& operation = operations_[number];
    const std::string text = result_text(operation.call, result);
    if (!text.empty()) operation.text += ",\"result\":" + text;
  });
}

std::string TraceScope::operand_text(const RecordedOperand& operand) {
  switch (operand.form) {
    case Form::record:
      return operand.pointer ? quoted(records_.of(operand.pointer)) : "null";
    case Form::key: {
      if (!operand.pointer) return "null";
      std::string text;
      append_traced_value(text, *static_cast<const HostValue*>(operand.pointer), trace_.quotation_text_);
      return text;
    }
    case Form::table:
      return operand.pointer ? quoted(tables_.of(operand.pointer)) : "null";
    case Form::object:
      if (!operand.pointer) return "null";
      return fmt::format("\"object {}\"", number_of(static_cast<const HostAny*>(operand.pointer)));
    case Form::manager:
      if (!operand.pointer) return "null";
      return text_object(std::string_view(type_name_of(static_cast<const AnyMan*>(operand.pointer))));
    case Form::block:
      return operand.pointer ? quoted(blocks_.of(operand.pointer)) : "null";
    case Form::text:
      return text_operand<char>(operand);
    case Form::wide_text:
      return text_operand<char16_t>(operand);
    case Form::integer:
      return std::to_string(operand.number);
    case Form::real: {
      std::string text;
      append_traced_real(text, operand.real);
      return text;
    }
    case Form::truth:
      return operand.number != 0 ? "true" : "false";
    case Form::bounds:
      return fmt::format("[{},{}]", operand.number, operand.high);
    case Form::nothing:
      break;
  }
  return "";
}

/// An integer is the same key as a record of it.
std::string TraceScope::key_text(const RecordedOperand& key) {
  if (key.form != Form::integer) return operand_text(key);
  std::string text;
  append_traced_value(text, Value(static_cast<int>(key.number)).record(), trace_.quotation_text_);
  return text;
}

/// What is made gets a new name, also where something else was before; a slot keeps its name when it moves.
std::string TraceScope::result_text(const RecordedCall& call, const RecordedOperand& result) {
  const void* made = result.pointer;
  if (frees_block(call)) blocks_.forget(call.subject, static_cast<const char*>(call.subject) + 1);
  if (is_named(call, "HVM_ForceTable")) {
    const auto* value = static_cast<const HostValue*>(call.subject);
    const HostHash* table = value ? table_of(*value) : nullptr;
    return table ? quoted(tables_.make(table)) : "null";
  }
  if (!made) return operand_text(result);
  if (result.form == Form::block) return quoted(blocks_.make(made));
  if (result.form == Form::table) return quoted(tables_.make(made));
  if (makes_records(call)) {
    const std::size_t count = is_named(call, "HVM_NewObject") ? 1 : static_cast<std::size_t>(call.number);
    records_.forget(made, static_cast<const HostValue*>(made) + count);
    return quoted(records_.make(made));
  }
  if (finds_slot(call) && call.subject && made != trace_.shared_nil_)
    return quoted(slot_name(tables_.of(call.subject), key_text(call.operands[1]), made));
  return operand_text(result);
}

const std::string& TraceScope::slot_name(const std::string& container, const std::string& key, const void* address) {
  const auto [entry, is_new] = slots_.try_emplace(container + ' ' + key);
  if (is_new) entry->second = records_.next();
  records_.give(address, entry->second);
  return entry->second;
}

}  // namespace hvm
