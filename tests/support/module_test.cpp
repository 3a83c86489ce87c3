// support/module_test.cpp: loading, calling and describing

#include "support/module_test.hpp"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "support/containers.hpp"

namespace arrayfold::test {
namespace {

/// What PKG_Init tells a host, which gets this as its own pointer back.
struct Registration {
  int answer = 0;
  int count = 0;
  const FunctionRow* table = nullptr;
  std::size_t calls_before = 0;
};

int take_functions(void* host, int count, const FunctionRow* table) {
  auto* registration = static_cast<Registration*>(host);
  registration->count = count;
  registration->table = table;
  registration->calls_before = hvm::recorded_calls().size();
  return registration->answer;
}

std::string without_prefix(const char* operation) {
  return std::strncmp(operation, "HVM_", 4) == 0 ? operation + 4 : operation;
}

/// "0", "1", ... for an argument, "result", or nothing.
std::string place_of(const void* subject, const HostValue* args, int nargs, const HostValue* result) {
  if (subject == result && result != nullptr) return " result";
  for (int n = 0; n < nargs; ++n)
    if (subject == args + n) return " " + std::to_string(n);
  return "";
}

/// Runs a call on a result record with the host's operations recorded.
template <class Run>
void run_recorded(Answer& answer, HostValue* result, Run run) {
  const HostValue before = *result;
  hvm::record_calls(true);
  struct Stop {
    ~Stop() { hvm::record_calls(false); }
  } stop;
  try {
    answer.returned = run(result);
  } catch (...) {
    EXPECT_EQ(std::memcmp(&before, result, sizeof before), 0) << "thrown, and the result written";
    throw;
  }
  answer.untouched = std::memcmp(&before, result, sizeof before) == 0;
}

template <class Run>
Answer answer(const HostValue* args, int nargs, int sentinel, Run run) {
  Answer answer;
  answer.result = Value(sentinel);
  run_recorded(answer, answer.result.address(), run);
  answer.operations = described(hvm::recorded_calls(), args, nargs, answer.result.address());
  return answer;
}

}  // namespace

std::vector<std::string> described(const std::vector<hvm::RecordedCall>& calls, const HostValue* args, int nargs,
                                   const HostValue* result) {
  std::vector<std::string> words;
  for (const auto& call : calls)
    words.push_back(without_prefix(call.operation) + place_of(call.subject, args, nargs, result));
  return words;
}

const char* module_path() {
  const char* named = std::getenv("ARRAYFOLD_TEST_MODULE");
  return named != nullptr ? named : MODULE_PATH;
}

bool is_under_address_sanitizer() { return dlsym(RTLD_DEFAULT, "__asan_init") != nullptr; }

Module::Module() {
  void* library = dlopen(module_path(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  void* init = dlsym(library, "PKG_Init");
  if (init == nullptr) throw std::runtime_error(std::string("no PKG_Init in ") + module_path());
  init_ = load<PackageInit>(&init);
  Registration registration;
  hvm::record_calls(true);
  init_returned_ = init_(&registration, take_functions);
  hvm::record_calls(false);
  table_ = registration.table;
  rows_.assign(table_, table_ + registration.count);
  start_calls_ = hvm::recorded_calls();
  for (const auto& call : start_calls_) start_.push_back(without_prefix(call.operation));
  start_.insert(start_.begin() + static_cast<std::ptrdiff_t>(registration.calls_before),
                "register " + std::to_string(registration.count));
}

int Module::init_again(int answer) const {
  Registration registration;
  registration.answer = answer;
  return init_(&registration, take_functions);
}

const Module& Module::loaded() {
  static const Module module;
  return module;
}

namespace {

std::set<std::string>& asked_so_far() {
  static std::set<std::string> names;
  return names;
}

}  // namespace

const std::set<std::string>& Module::asked() { return asked_so_far(); }

EntryFunction Module::entry(const std::string& name) const {
  asked_so_far().insert(name);
  for (const auto& row : rows_)
    if (name == row.name) return row.function;
  throw std::invalid_argument("the module has no function " + name);
}

IndexList::IndexList(std::vector<Value> indices, Entries where) : indices_(std::move(indices)) {
  for (Value& index : indices_) {
    HostIndexEntry entry{};
    entry.value = index.address();
    const auto* bytes = static_cast<const std::byte*>(static_cast<const void*>(&entry));
    entries_.insert(entries_.end(), bytes, bytes + sizeof entry);
  }
  const bool in_place = where == Entries::in_place;
  list_.resize(sizeof(std::uint64_t));
  store<std::uint64_t>(list_.data(), 2 * indices_.size() + (in_place ? 0 : 1));
  if (in_place) {
    list_.insert(list_.end(), entries_.begin(), entries_.end());
  } else {
    list_.resize(sizeof(HostIndexList));
    store<const void*>(list_.data() + sizeof(std::uint64_t), entries_.data());
  }
}

ModuleTest::ModuleTest() {
  Module::loaded();
  before_ = hvm::counts();
}

ModuleTest::~ModuleTest() {
  EXPECT_TRUE(hvm::counts() == before_) << "the host holds something that the test left behind";
}

Answer ModuleTest::call(const std::string& name, std::vector<Value> args) const {
  const int nargs = static_cast<int>(args.size());
  return call_with_count(name, std::move(args), nargs);
}

Answer ModuleTest::call_with_count(const std::string& name, std::vector<Value> args, int nargs) const {
  const EntryFunction function = Module::loaded().entry(name);
  HostValue* records = hvm::records_of(args);
  return answer(records, static_cast<int>(args.size()), sentinel,
                [&](HostValue* result) { return function(ctx(), records, nargs, result); });
}

Answer ModuleTest::method(Value& self, const char* name, std::vector<Value> args, int flag) const {
  const auto callback = hvm::callbacks_of(hvm::object_of(self.record())).method;
  if (callback == nullptr) throw std::invalid_argument("no object to call a method of");
  std::vector<HostValue*> pointers;
  for (auto& arg : args) pointers.push_back(arg.address());
  const int nargs = static_cast<int>(args.size());
  return answer(hvm::records_of(args), nargs, sentinel, [&](HostValue* result) {
    return int{callback(ctx(), self.address(), name, pointers.data(), nargs, result, flag)};
  });
}

Answer ModuleTest::apply(const char* type_name, int opcode, HostValue* left, HostValue* right) const {
  Value result(sentinel);
  Answer answer = apply_into(result.address(), type_name, opcode, left, right);
  answer.result = std::move(result);
  return answer;
}

Answer ModuleTest::apply_into(HostValue* result, const char* type_name, int opcode, HostValue* left,
                              HostValue* right) const {
  const auto callback = hvm::callbacks_of(hvm::type_named(type_name)).op;
  if (callback == nullptr) throw std::invalid_argument("no such type");
  const auto operand = [&](const void* subject) -> std::string {
    if (subject == nullptr) return "";
    if (subject == result) return " result";
    return subject == left ? " left" : subject == right ? " right" : "";
  };
  Answer answer;
  run_recorded(answer, result, [&](HostValue* into) { return int{callback(ctx(), opcode, left, right, into)}; });
  for (const auto& call : hvm::recorded_calls())
    answer.operations.push_back(without_prefix(call.operation) + operand(call.subject));
  return answer;
}

void ModuleTest::expect_no_result(const Answer& answer, int returned, const std::string& what) {
  EXPECT_EQ(answer.returned, returned) << what;
  EXPECT_TRUE(answer.untouched) << what;
}

void ModuleTest::expect_no_result(const Answer& answer, int returned, const Words& operations,
                                  const std::string& what) {
  expect_no_result(answer, returned, what);
  EXPECT_EQ(answer.operations, operations) << what;
}

void ModuleTest::expect_failure(const std::string& name, std::vector<Value> args) const {
  expect_no_result(call(name, std::move(args)), 0, name);
}

std::string ModuleTest::dump(Value& value) const {
  const Answer answer = method(value, "dump");
  if (answer.returned == 0) throw std::invalid_argument("dump fails");
  return std::string(hvm::text_of(answer.result.record()));
}

std::vector<std::int64_t> ModuleTest::shape(Value& value) const {
  const Answer answer = method(value, "shape");
  std::vector<std::int64_t> extents;
  const HostHash* table = hvm::table_of(answer.result.record());
  for (int axis = 0; axis < hvm::entry_count(table); ++axis) extents.push_back(HVM_AsInt64(hvm::find(table, axis)));
  return extents;
}

std::string type_of(const Value& value) {
  const HostAny* any = hvm::object_of(value.record());
  return any == nullptr ? "" : hvm::type_name_of(any);
}

namespace {

/// Calls `use(container)` for the array of any kind in an object; whether it is one.
template <class Use>
bool with_container(const Value& value, Use use) {
  const auto try_as = [&](auto* container) { return container != nullptr && (use(*container), true); };
  return for_kinds(all_kinds{}, [&](auto... row) { return (try_as(container_of<decltype(row)>(value)) || ...); });
}

/// What `use(container)` gives for the array in an object.
template <class Result, class Use>
Result of_container(const Value& value, Use use) {
  Result result{};
  if (!with_container(value, [&](auto& container) { result = use(container); }))
    throw std::invalid_argument("no array but " + type_of(value));
  return result;
}

template <class Row>
Value new_object(HostContext ctx, const TestArray& array) {
  const auto& elements = array.as<typename Row::element>();
  auto made = std::make_unique<ArrayOf<Row>>();
  made->array =
      std::make_shared<xarray_of<typename Row::element>>(Shape(array.extents().begin(), array.extents().end()));
  auto& storage = made->array->storage();
  if (storage.size() != elements.size()) throw std::invalid_argument("elements do not fill the extents");
  std::copy(elements.begin(), elements.end(), storage.begin());
  return Value::object(box_array<Row>(ctx, made));
}

}  // namespace

Value to_host(HostContext ctx, const TestArray& array) {
  return with_row(all_kinds{}, array.kind(), [&](auto row) { return new_object<decltype(row)>(ctx, array); });
}

bool holds_array(const Value& value) {
  return with_container(value, [](const auto&) {});
}

bool holds(const Value& value, const TestArray& array) {
  bool equal = false;
  with_container(value, [&](const auto& container) {
    using T = typename std::decay_t<decltype(container)>::value_type;
    if (array.kind() != kind_of<T>) return;
    const auto& elements = array.as<T>();
    const auto& shape = container.shape();
    const auto& storage = container.storage();
    const auto same_bits = [](T a, T b) { return std::memcmp(&a, &b, sizeof a) == 0; };
    equal = std::equal(shape.begin(), shape.end(), array.extents().begin(), array.extents().end()) &&
            std::equal(storage.begin(), storage.end(), elements.begin(), elements.end(), same_bits);
  });
  return equal;
}

TestArray from_host(const Value& value) {
  return of_container<TestArray>(value, [](const auto& container) {
    using T = typename std::decay_t<decltype(container)>::value_type;
    // Not in braces: two pointers would be two bools.
    return TestArray(Extents(container.shape().begin(), container.shape().end()),
                     std::vector<T>(container.storage().begin(), container.storage().end()));
  });
}

StoredElements storage_of(const Value& value) {
  return of_container<StoredElements>(value, [](auto& container) {
    return StoredElements{static_cast<void*>(container.storage().data()), container.storage().size()};
  });
}

const void* container_address(const Value& value) {
  return of_container<const void*>(value, [](const auto& container) { return static_cast<const void*>(&container); });
}

std::vector<std::ptrdiff_t> strides_of(const Value& value) {
  return of_container<std::vector<std::ptrdiff_t>>(value, [](const auto& container) {
    return std::vector<std::ptrdiff_t>(container.strides().begin(), container.strides().end());
  });
}

std::vector<std::ptrdiff_t> backstrides_of(const Value& value) {
  return of_container<std::vector<std::ptrdiff_t>>(value, [](const auto& container) {
    return std::vector<std::ptrdiff_t>(container.backstrides().begin(), container.backstrides().end());
  });
}

void set_extents(const Value& value, const Extents& extents) {
  of_container<int>(value, [&](auto& container) {
    const_cast<Shape&>(container.shape()) = Shape(extents.begin(), extents.end());
    return 0;
  });
}

Value raw(ValueTag tag, std::uint64_t payload) {
  Value value;
  value.record().tag = tag;
  store<std::uint64_t>(value.record().payload, payload);
  value.record().lifetime = Lifetime::none;
  return value;
}

}  // namespace arrayfold::test
