// bench/module.cpp: loading the module, and the timed loops

#include "module.hpp"

#include <dlfcn.h>

#include <map>
#include <set>
#include <stdexcept>

namespace arrayfold::bench {
namespace {

/// Everything that lives as long as the program. Destruction runs backwards: records first, the context last.
struct Session {
  hvm::Context context;
  std::map<std::string, EntryFunction> functions;
  std::set<std::string> measured;  // the functions that were asked for
  std::vector<SizedCase> cases;
  std::string prepared;        // the case that `records` belongs to
  std::vector<Value> records;  // of one case only, so that memory holds the operands of one large case at most
};

int take_functions(void* host, int count, const FunctionRow* table) {
  auto& functions = *static_cast<std::map<std::string, EntryFunction>*>(host);
  for (int row = 0; row < count; ++row) functions[table[row].name] = table[row].function;
  return 0;
}

Session& session() {
  static Session session;
  return session;
}

const std::map<std::string, EntryFunction>& functions() {
  if (session().functions.empty()) load_module(MODULE_PATH);
  return session().functions;
}

/// The records of a case. They are kept until another case asks for its own.
std::vector<Value>& prepared_records(const std::string& name, int n, const RecordsOf& records_of) {
  Session& at = session();
  if (at.prepared != name) {
    at.records.clear();
    at.records = records_of(n);
    at.prepared = name;
  }
  return at.records;
}

using OperatorCallback = decltype(hvm::TypeCallbacks::op);

/// An operator callback with its operands.
struct Operation {
  OperatorCallback op;
  int opcode;
  HostContext ctx;
  HostValue* left;
  HostValue* right;

  Operation(Opcode code, Value& object, HostValue* other)
      : op(hvm::callbacks_of(hvm::object_of(object.record())).op),
        opcode(static_cast<int>(code)),
        ctx(context()),
        left(object.address()),
        right(other) {}

  bool operator()(HostValue* result) const { return op(ctx, opcode, left, right, result) != 0; }
};

/// The index list over all `records` but the first and the last, with its entries on the heap.
class IndexList {
 public:
  explicit IndexList(std::vector<Value>& records) : entries_(records.size() - 2) {
    for (std::size_t i = 0; i < entries_.size(); ++i) entries_[i].value = records[i + 1].address();
    list_.packed_size = entries_.size() * 2 + 1;
    store<HostIndexEntry*>(list_.entries, entries_.data());
  }

  HostValue* as_operand() { return static_cast<HostValue*>(static_cast<void*>(&list_)); }

 private:
  std::vector<HostIndexEntry> entries_;
  HostIndexList list_ = {};
};

/// Times `operation` with a result record that belongs to the records of the case.
void time_in_place(benchmark::State& state, const Operation& operation, HostValue* result) {
  bool succeeded = true;
  for (auto _ : state) succeeded &= operation(result);
  if (!succeeded) state.SkipWithError("the operator failed");
}

/// Times `call(result)`, which returns nonzero on success, together with the release of the result.
template <class TimedCall>
void time_calls(benchmark::State& state, TimedCall call) {
  bool succeeded = true;
  for (auto _ : state) {
    HostValue result = hvm::nil_record();
    succeeded &= call(&result) != 0;
    hvm::release(result);
  }
  if (!succeeded) state.SkipWithError("the call failed");
}

}  // namespace

void load_module(const std::string& path) {
  Session& host = session();
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  void* symbol = dlsym(library, "PKG_Init");
  if (symbol == nullptr) throw std::runtime_error("no PKG_Init in " + path);
  load<PackageInit> (&symbol)(&host.functions, take_functions);
}

HostContext context() { return session().context.handle(); }

EntryFunction entry_named(const std::string& function) {
  const auto row = functions().find(function);
  if (row == functions().end()) throw std::invalid_argument("the module has no function " + function);
  session().measured.insert(function);
  return row->second;
}

std::vector<std::string> unmeasured_functions() {
  std::vector<std::string> names;
  for (const auto& row : functions())
    if (session().measured.count(row.first) == 0) names.push_back(row.first);
  return names;
}

const std::vector<SizedCase>& cases() { return session().cases; }

void add_case(const std::string& name, const std::vector<int>& sizes, const RecordsOf& records_of,
              const TimedLoop& loop) {
  for (const int n : sizes) {
    const std::string sized = name + "/" + std::to_string(n);
    session().cases.push_back({sized, [sized, n, records_of, loop](benchmark::State& state) {
                                 loop(state, prepared_records(sized, n, records_of));
                               }});
  }
}

void add_call(const std::string& name, const std::string& function, const std::vector<int>& sizes,
              const RecordsOf& arguments_of) {
  const EntryFunction entry = entry_named(function);
  add_case(name, sizes, arguments_of, [entry](benchmark::State& state, std::vector<Value>& arguments) {
    HostValue* records = hvm::records_of(arguments);
    const int nargs = static_cast<int>(arguments.size());
    const HostContext ctx = context();
    time_calls(state, [=](HostValue* result) { return entry(ctx, records, nargs, result); });
  });
}

void add_method(const std::string& name, const char* method, const std::vector<int>& sizes, const RecordsOf& self_of) {
  add_case(name, sizes, self_of, [method](benchmark::State& state, std::vector<Value>& records) {
    HostValue* self = records.at(0).address();
    const auto callback = hvm::callbacks_of(hvm::object_of(*self)).method;
    const HostContext ctx = context();
    time_calls(state, [=](HostValue* result) { return callback(ctx, self, method, nullptr, 0, result, 0); });
  });
}

void add_operator(const std::string& name, Opcode opcode, const std::vector<int>& sizes, const RecordsOf& operands_of) {
  add_case(name, sizes, operands_of, [opcode](benchmark::State& state, std::vector<Value>& operands) {
    time_calls(state, Operation(opcode, operands.at(0), operands.at(1).address()));
  });
}

void add_operator_in_place(const std::string& name, Opcode opcode, const std::vector<int>& sizes,
                           const RecordsOf& operands_of) {
  add_case(name, sizes, operands_of, [opcode](benchmark::State& state, std::vector<Value>& operands) {
    time_in_place(state, Operation(opcode, operands.at(0), operands.at(1).address()), operands.at(0).address());
  });
}

void add_element_read(const std::string& name, const std::vector<int>& sizes, const RecordsOf& records_of) {
  add_case(name, sizes, records_of, [](benchmark::State& state, std::vector<Value>& records) {
    IndexList indices(records);
    time_calls(state, Operation(Opcode::read_element, records.at(0), indices.as_operand()));
  });
}

void add_element_write(const std::string& name, const std::vector<int>& sizes, const RecordsOf& records_of) {
  add_case(name, sizes, records_of, [](benchmark::State& state, std::vector<Value>& records) {
    IndexList indices(records);
    time_in_place(state, Operation(Opcode::write_element, records.at(0), indices.as_operand()),
                  records.back().address());
  });
}

}  // namespace arrayfold::bench
