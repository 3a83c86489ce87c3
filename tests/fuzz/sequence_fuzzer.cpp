// fuzz/sequence_fuzzer.cpp: calls one after the other on a few arrays, each result beside a slow formula's
//
// Four variables hold arrays or nothing, and beside each stands what it should hold. Variables that share an array
// share that, too. After every call all of them must hold what they should, also when memory was missing.
//
// The letters: `n` makes an array of elements, `z` one of zeros, `o` one of ones, `r` a range; `=` lets a variable
// share the array of another, and `d` drops one; `s` reshapes; `b` and `i` combine two arrays into a new one and in
// place, `#` and `I` an array and a number; `e` compares whole arrays; `R` reduces an array to a number; `F` and `P`
// call functions of one array and of two; `g` and `w` read and write an element. `f` lets an allocation of the next
// call fail.

#include <array>
#include <cstring>
#include <exception>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <utility>

#include "fuzz/byte_source.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/plain_functions.hpp"
#include "support/allocations.hpp"
#include "support/code_builder.hpp"
#include "support/module_test.hpp"
#include "support/plain_operators.hpp"
#include "support/plain_reductions.hpp"

namespace arrayfold::fuzz {
namespace {

using test::Extents;
using test::Kind;
using test::Number;
using test::Numbers;

constexpr std::size_t most_steps = 100;
constexpr std::size_t largest_array = 600;
constexpr const char* broadcast_words = "Incompatible dimension of arrays, compile in DEBUG for more info";

/// A variable, and what it should hold: nothing, or an array that other variables may share.
struct Variable {
  Value value;
  std::shared_ptr<TestArray> expected;
};

/// The quoted names of the kinds, which are made once.
Value dtype(Kind kind) {
  static test::CodeBuilder code;
  static const std::map<Kind, Value> quoted = [] {
    std::map<Kind, Value> made;
    for (const Kind of : {Kind::boolean, Kind::int32, Kind::int64, Kind::float64})
      made.emplace(of, code.quoted_call(test::dtype_of(of)));
    return made;
  }();
  return quoted.at(kind);
}

bool is_number_kind(Kind kind) { return kind != Kind::boolean; }

/// A number as the host has it: an int, an int64 or a real.
Value host_number(Kind kind, const Number& x) {
  switch (kind) {
    case Kind::int64:
      return Value(x.as<std::int64_t>());
    case Kind::float64:
      return Value(x.as<double>());
    default:
      return Value(x.as<std::int32_t>());
  }
}

/// The number that a record holds.
Number number_in(const Value& value) {
  switch (value.tag()) {
    case ValueTag::integer:
      return load<std::int32_t>(value.record().payload);
    case ValueTag::integer64:
      return load<std::int64_t>(value.record().payload);
    case ValueTag::real:
      return load<double>(value.record().payload);
    default:
      give_up("no number where one was expected");
  }
}

/// Whether the processor faults: an integer is divided by zero, or the smallest one by -1.
bool faults(Opcode opcode, const TestArray& divisors) {
  if ((opcode != Opcode::divide && opcode != Opcode::remainder) || !test::is_integer(divisors.kind())) return false;
  for (std::size_t i = 0; i < divisors.size(); ++i)
    if (divisors[i].integer == 0 || divisors[i].integer == -1) return true;
  return false;
}

class Sequence {
 public:
  Sequence(HostContext ctx, ByteSource& bytes) : ctx_(ctx), bytes_(bytes) {}

  void run() {
    for (std::size_t steps = 0; steps < most_steps && !bytes_.is_empty(); ++steps) {
      step(bytes_.pick("nzor=dsbi#IeRFPgwf"));
      check();
    }
  }

 private:
  void step(char letter) {
    switch (letter) {
      case 'n':
        return make_of_elements();
      case 'z':
        return make_filled("xzeros", 0);
      case 'o':
        return make_filled("xones", 1);
      case 'r':
        return make_range();
      case '=': {
        const Variable shared = variable();
        variable() = shared;
        return;
      }
      case 'd':
        variable() = {};
        return;
      case 's':
        return reshape();
      case 'b':
        return combine();
      case 'i':
        return combine_in_place();
      case '#':
        return combine_with_number(false);
      case 'I':
        return combine_with_number(true);
      case 'e':
        return compare();
      case 'R':
        return reduce();
      case 'F':
        return call_of_one();
      case 'P':
        return call_of_two();
      case 'g':
        return read_element();
      case 'w':
        return write_element();
      default:
        return fail_next();
    }
  }

  // ---- What is drawn

  Variable& variable() { return variables_[bytes_.byte() % variables_.size()]; }
  /// A variable with an array; null where the one that is drawn holds nothing.
  Variable* array() {
    Variable& drawn = variable();
    return drawn.expected == nullptr ? nullptr : &drawn;
  }

  Number element(Kind kind) {
    const std::uint8_t drawn = bytes_.byte();
    if (drawn >= '0' && drawn <= '9') return drawn - '0';
    if (kind == Kind::float64) {
      using Limits = std::numeric_limits<double>;
      const double special[] = {-0.0,          Limits::infinity(), -Limits::infinity(),  Limits::quiet_NaN(),
                                Limits::max(), Limits::min(),      -Limits::denorm_min()};
      return drawn % 16 < 7 ? special[drawn % 16] : (drawn - 128) / 4.0;
    }
    const auto of_integers = [&](auto zero) -> Number {
      using Limits = std::numeric_limits<decltype(zero)>;
      const decltype(zero) special[] = {Limits::min(), Limits::max(), -1, Limits::max() / 2 + 1};
      return drawn % 8 < 4 ? special[drawn % 8] : static_cast<decltype(zero)>(drawn - 128);
    };
    return kind == Kind::int64 ? of_integers(std::int64_t{}) : of_integers(std::int32_t{});
  }

  std::vector<Value> numbers(const Extents& extents) {
    std::vector<Value> made;
    for (const std::size_t extent : extents) made.emplace_back(static_cast<int>(extent));
    return made;
  }

  Extents extents() {
    Extents drawn;
    for (std::size_t rank = 1 + bytes_.byte() % 4; rank > 0; --rank) drawn.push_back(bytes_.byte() % 5);
    return drawn;
  }

  Opcode calculation() {
    static constexpr Opcode all[] = {Opcode::add, Opcode::subtract, Opcode::multiply, Opcode::divide,
                                     Opcode::remainder};
    return all[bytes_.byte() % std::size(all)];
  }
  Opcode element_operation() {
    static constexpr Opcode comparisons[] = {Opcode::less, Opcode::less_equal, Opcode::greater, Opcode::greater_equal};
    const std::uint8_t drawn = bytes_.byte();
    return drawn % 3 == 0 ? comparisons[drawn / 3 % std::size(comparisons)] : calculation();
  }

  // ---- Calls

  /// Lets an allocation of the next call fail, of the module's or of the host's, alone or with all that follow.
  void fail_next() {
    const std::uint8_t drawn = bytes_.byte();
    failing_ = 1 + drawn % 16;
    is_of_host_ = (drawn & 16) != 0;
    extent_ = (drawn & 32) != 0 ? hvm::FailureExtent::lasting : hvm::FailureExtent::once;
  }

  enum class End { regular, out_of_memory, no_broadcast };

  /// Makes a call of the module, with a failing allocation if that is its turn.
  template <class Call>
  End attempt(Call call) {
    const std::int64_t failing = std::exchange(failing_, 0);
    test::fail_allocation(is_of_host_ ? 0 : failing, extent_);
    hvm::fail_allocation(is_of_host_ ? failing : 0, extent_);
    const End end = ended(call);
    has_failed_ = test::allocation_has_failed() || hvm::allocation_has_failed();
    test::fail_allocation(0);
    hvm::fail_allocation(0, hvm::FailureExtent::once);
    if (end == End::out_of_memory && !has_failed_) give_up("no memory, though none was withheld");
    return end;
  }

  template <class Call>
  static End ended(Call call) {
    try {
      call();
      return End::regular;
    } catch (const std::bad_alloc&) {
      return End::out_of_memory;
    } catch (const std::exception& thrown) {
      if (std::strcmp(thrown.what(), broadcast_words) != 0) throw;
      return End::no_broadcast;
    }
  }

  /// The end must be this one, unless memory was missing.
  static void expect(End end, End expected) {
    if (end != expected && end != End::out_of_memory) give_up("another end than expected");
  }

  /// The result must be nil, also when memory was missing.
  static void expect_nil(const Value& result) {
    if (!result.is_nil()) give_up("a result where none was expected");
  }

  /// The call gave this array, which a variable takes; or there was no memory for it.
  void take(End end, Value result, TestArray expected) {
    expect(end, End::regular);
    if (end == End::out_of_memory || (has_failed_ && result.is_nil())) return expect_nil(result);
    if (!are_equal(test::from_host(result), expected)) give_up("another array than expected");
    // Of equal zeros and NaN those of the result count from now on.
    variable() = {result, std::make_shared<TestArray>(test::from_host(result))};
  }

  End call_into(Value& result, const char* name, std::vector<Value> args) {
    const EntryFunction function = entry(name);
    return attempt([&] { result = call(function, ctx_, args); });
  }

  void call_for_array(const char* name, std::vector<Value> args, TestArray expected) {
    Value result;
    const End end = call_into(result, name, std::move(args));
    take(end, std::move(result), std::move(expected));
  }

  void call_for_nil(const char* name, std::vector<Value> args, End expected = End::regular) {
    Value result;
    expect(call_into(result, name, std::move(args)), expected);
    expect_nil(result);
  }

  /// Applies an operator by the callback of the type of `owner`.
  End apply(Opcode opcode, const Value& owner, HostValue* left, HostValue* right, HostValue* result) {
    const auto callback = hvm::callbacks_of(hvm::object_of(owner.record())).op;
    return attempt([&] { callback(ctx_, static_cast<int>(opcode), left, right, result); });
  }

  // ---- Making arrays

  void make_of_elements() {
    static constexpr Kind kinds[] = {Kind::int32, Kind::int64, Kind::float64, Kind::boolean};
    const Kind kind = kinds[bytes_.byte() % std::size(kinds)];
    Numbers elements;
    for (std::size_t count = bytes_.byte() % 20; count > 0; --count) elements.push_back(element(kind));
    std::vector<Value> row;
    for (const Number& x : elements) row.push_back(host_number(kind, x));
    call_for_array("xarray", {dtype(kind), Value::table_of(row)}, TestArray(kind, {elements.size()}, elements));
  }

  void make_filled(const char* name, int number) {
    const Extents drawn = extents();
    call_for_array(name, numbers(drawn), TestArray(Kind::float64, drawn, Numbers(test::size_of(drawn), number)));
  }

  void make_range() {
    Numbers elements;
    for (int x = 0, stop = bytes_.byte() % 40; x < stop; ++x) elements.push_back(x);
    const std::size_t count = elements.size();
    call_for_array("xarange", {Value(static_cast<int>(count))}, TestArray(Kind::float64, {count}, elements));
  }

  // ---- Methods and elements

  void reshape() {
    Variable* self = array();
    Extents wanted = extents();
    if (self == nullptr) return;
    // Most often the last extent is the one that fits.
    const std::size_t size = self->expected->size();
    wanted.back() = 1;
    const std::size_t others = test::size_of(wanted);
    wanted.back() = others != 0 && size % others == 0 ? size / others : bytes_.byte() % 5;
    const bool fits = test::size_of(wanted) == size;

    Value result;
    bool returned = false;
    std::vector<Value> args = numbers(wanted);
    const End end = attempt([&] { returned = call_method(ctx_, self->value, "reshape", std::move(args), result); });
    expect(end, End::regular);
    expect_nil(result);
    if (end == End::regular && returned != fits) give_up("reshape answers otherwise than expected");
    if (returned) *self->expected = self->expected->with_extents(wanted);
  }

  /// Indices within an array, as many as it has dimensions or fewer; nothing where it has no elements.
  std::vector<Value> indices(const TestArray& array, std::size_t& offset) {
    offset = 0;
    if (array.size() == 0) return {};
    const std::size_t rank = array.extents().size();
    const std::size_t count = rank == 0 ? 1 : 1 + bytes_.byte() % std::min<std::size_t>(rank, 8);
    std::vector<Value> drawn(count);
    std::size_t stride = 1;
    for (std::size_t back = 1; back <= count; ++back) {
      const std::size_t extent = back <= rank ? array.extents()[rank - back] : 1;
      const std::size_t index = bytes_.byte() % extent;
      drawn[count - back] = Value(static_cast<int>(index));
      offset += index * stride;
      stride *= extent;
    }
    return drawn;
  }

  void read_element() {
    Variable* self = array();
    if (self == nullptr) return;
    std::size_t offset = 0;
    const std::vector<Value> at = indices(*self->expected, offset);
    if (at.empty()) return;
    test::IndexList list(at, test::IndexList::Entries::in_place);
    Value result;
    expect(apply(Opcode::read_element, self->value, self->value.address(), list.address(), result.address()),
           End::regular);
    if (!are_equal(number_in(result), (*self->expected)[offset])) give_up("another element than expected");
  }

  void write_element() {
    Variable* self = array();
    if (self == nullptr) return;
    std::size_t offset = 0;
    const std::vector<Value> at = indices(*self->expected, offset);
    if (at.empty()) return;
    const Kind kind = self->expected->kind();
    const Number x = element(kind);
    test::IndexList list(at, test::IndexList::Entries::elsewhere);
    Value stored = host_number(kind, x);
    expect(apply(Opcode::write_element, self->value, self->value.address(), list.address(), stored.address()),
           End::regular);
    self->expected->set(offset, x);
  }

  // ---- Operators

  /// Whether an operator gives elements: the kinds are the same, and are those of numbers.
  static bool is_served(Opcode opcode, const TestArray& left, const TestArray& right) {
    return left.kind() == right.kind() && is_number_kind(left.kind()) &&
           !(opcode == Opcode::remainder && left.kind() == Kind::float64);
  }
  /// Whether the operation is left out: it faults, or its result is larger than what is looked at.
  static bool is_left_out(Opcode opcode, const TestArray& left, const TestArray& right) {
    const auto shape = test::broadcast(left.extents(), right.extents());
    return faults(opcode, right) || (shape && test::size_of(*shape) > largest_array);
  }

  void combine() {
    const Opcode opcode = element_operation();
    Variable *left = array(), *right = array();
    if (left == nullptr || right == nullptr || is_left_out(opcode, *left->expected, *right->expected)) return;
    Value result, first = left->value, second = right->value;
    const End end = apply(opcode, first, first.address(), second.address(), result.address());
    if (!is_served(opcode, *left->expected, *right->expected)) {
      expect(end, End::regular);
      return expect_nil(result);
    }
    if (!test::broadcast(left->expected->extents(), right->expected->extents())) {
      expect(end, End::no_broadcast);
      return expect_nil(result);
    }
    take(end, std::move(result), test::plain_result(opcode, *left->expected, *right->expected));
  }

  void combine_in_place() {
    const Opcode opcode = calculation();
    Variable *left = array(), *right = array();
    if (left == nullptr || right == nullptr || is_left_out(opcode, *left->expected, *right->expected)) return;
    const TestArray operand = *right->expected;
    Value second = right->value;
    const End end = apply(opcode, left->value, left->value.address(), second.address(), left->value.address());
    if (!is_served(opcode, *left->expected, operand)) return expect(end, End::regular);
    if (!test::broadcast(left->expected->extents(), operand.extents())) return expect(end, End::no_broadcast);
    expect(end, End::regular);
    if (end == End::regular) become(*left, test::plain_result(opcode, *left->expected, operand));
  }

  void combine_with_number(bool in_place) {
    const Opcode opcode = in_place ? calculation() : element_operation();
    const bool is_on_the_left = !in_place && bytes_.byte() % 2 == 1;
    Variable* self = array();
    if (self == nullptr || !is_number_kind(self->expected->kind())) return;
    // With a number the array stands on the left, whichever side the number is on.
    const TestArray operand(self->expected->kind(), {}, {element(self->expected->kind())});
    if (faults(opcode, operand)) return;
    Value number = host_number(operand.kind(), operand[0]), result, first = self->value;
    HostValue* const left = is_on_the_left ? number.address() : self->value.address();
    HostValue* const right = is_on_the_left ? self->value.address() : number.address();
    const End end = apply(opcode, first, left, right, in_place ? self->value.address() : result.address());
    expect(end, End::regular);
    if (!is_served(opcode, *self->expected, operand)) return expect_nil(result);
    const TestArray expected = test::plain_result(opcode, *self->expected, operand);
    if (!in_place) return take(end, std::move(result), expected);
    if (end == End::regular) become(*self, expected);
  }

  /// The array itself changed, for all that share it. Of equal zeros and NaN those of the array count from now on.
  static void become(Variable& self, const TestArray& expected) {
    TestArray found = test::from_host(self.value);
    if (!are_equal(found, expected)) give_up("another array in place than expected");
    *self.expected = std::move(found);
  }

  void compare() {
    const Opcode opcode = bytes_.byte() % 2 == 0 ? Opcode::equal : Opcode::not_equal;
    Variable *left = array(), *right = array();
    if (left == nullptr || right == nullptr) return;
    Value result;
    expect(apply(opcode, left->value, left->value.address(), right->value.address(), result.address()), End::regular);
    const TestArray &a = *left->expected, &b = *right->expected;
    if (a.kind() != b.kind() || !is_number_kind(a.kind())) return expect_nil(result);
    bool equal = a.extents() == b.extents();
    for (std::size_t i = 0; equal && i < a.size(); ++i) equal = a[i] == b[i];
    if (number_in(result).integer != (equal == (opcode == Opcode::equal) ? 1 : 0))
      give_up("a comparison says otherwise than expected");
  }

  // ---- Functions

  void reduce() {
    static constexpr const char* names[] = {"xsum",  "xprod",     "xamin",   "xamax",
                                            "xmean", "xvariance", "xstddev", "xtrapz"};
    const char* const name = names[bytes_.byte() % std::size(names)];
    Variable* self = array();
    if (self == nullptr || !is_number_kind(self->expected->kind())) return;
    Value result;
    const End end = call_into(result, name, {self->value});
    expect(end, End::regular);
    if (end == End::out_of_memory) return expect_nil(result);
    if (!are_equal(number_in(result), test::expected_number(name, *self->expected).value))
      give_up(std::string("another number than expected of ") + name);
  }

  void call_of_one() {
    struct Function {
      const char* name;
      TestArray (*formula)(const TestArray&);
      bool orders;
    };
    static constexpr Function functions[] = {{"xsort", plain_sort, true},
                                             {"xunique", plain_unique, true},
                                             {"xdiff", plain_differences, false},
                                             {"xsquare", plain_squares, false}};
    const Function& function = functions[bytes_.byte() % std::size(functions)];
    Variable* self = array();
    if (self == nullptr || (function.orders && test::has_nan(*self->expected))) return;
    if (!is_number_kind(self->expected->kind())) return call_for_nil(function.name, {self->value});
    call_for_array(function.name, {self->value}, function.formula(*self->expected));
  }

  void call_of_two() {
    Variable *left = array(), *right = array();
    if (left == nullptr || right == nullptr || is_left_out(Opcode::less, *left->expected, *right->expected)) return;
    const TestArray &a = *left->expected, &b = *right->expected;
    if (a.kind() != b.kind() || !is_number_kind(a.kind())) return call_for_nil("xminimum", {left->value, right->value});
    if (test::broadcast(a.extents(), b.extents()))
      return call_for_array("xminimum", {left->value, right->value}, plain_minimum(a, b));
    call_for_nil("xminimum", {left->value, right->value}, End::no_broadcast);
  }

  // ---- What must hold after every call

  void check() const {
    for (const Variable& variable : variables_)
      if (variable.expected != nullptr && !test::holds(variable.value, *variable.expected))
        give_up("a variable holds another array than expected");
  }

  HostContext ctx_;
  ByteSource& bytes_;
  std::array<Variable, 4> variables_;
  std::int64_t failing_ = 0;  // the allocation of the next call that fails, counted from 1
  bool is_of_host_ = false;
  hvm::FailureExtent extent_ = hvm::FailureExtent::once;
  bool has_failed_ = false;  // in the last call
};

void run_sequence(ByteSource bytes) {
  hvm::Context context;
  Sequence(context.handle(), bytes).run();
}

}  // namespace
}  // namespace arrayfold::fuzz

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  using namespace arrayfold::fuzz;
  // What is made once and kept is made before anything is counted.
  dtype(arrayfold::ElementKind::int32);
  entry("xarray");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace arrayfold::fuzz;
  run_checked([&] { run_sequence({data, size}); });
  return 0;
}
