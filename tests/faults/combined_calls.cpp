// faults/combined_calls.cpp: every function, method and operator with every kind and 0 to 6 dimensions

#include <cmath>
#include <list>

#include "faults/swept_calls.hpp"
#include "faults/swept_module.hpp"
#include "support/functions.hpp"
#include "support/hand_made.hpp"

namespace arrayfold::test {
namespace {

using Arguments = std::vector<Value>;

constexpr Kind every_kind[] = {Kind::boolean, Kind::int32, Kind::int64, Kind::float32, Kind::float64};
constexpr std::size_t most_dimensions = 6;
constexpr int unwritten = 0x5e471e1;  // is in the result record before a call

/// Positive elements in no order, some of them equal. A square matrix is symmetric and positive definite.
TestArray mixed(Kind kind, const Extents& extents) {
  Numbers x;
  for (std::size_t i = 0; i < size_of(extents); ++i) x.push_back(1 + i * 7919 % 103);
  TestArray array(kind, extents, x);
  if (extents.size() != 2 || extents[0] != extents[1]) return array;
  for (std::size_t i = 0; i < extents[0]; ++i)
    for (std::size_t j = 0; j < extents[0]; ++j) array.set(i * extents[0] + j, i == j ? 100 : 1);
  return array;
}

/// Ones under 2, 1, 2, 1, ... or 1, 2, 1, 2, ...: two such arrays broadcast in every dimension.
TestArray alternating(Kind kind, std::size_t dimensions, std::size_t first) {
  Extents extents;
  for (std::size_t axis = 0; axis < dimensions; ++axis) extents.push_back(axis % 2 == 0 ? first : 3 - first);
  return TestArray(kind, extents, Numbers(size_of(extents), 1));
}

/// Extents beyond 2, 2, ...: without elements, long and short rows, wide and tall matrices, square ones of some sizes.
const std::vector<Extents> odd_extents = {{0},
                                          {10},
                                          {255},
                                          {256},
                                          {1000},
                                          {3, 300},
                                          {3, 3},
                                          {1, 1},
                                          {0, 0},
                                          {40, 40},
                                          {2, 5},
                                          {5, 2},
                                          {0, 3},
                                          {3, 0},
                                          {300, 1},
                                          {40, 20},
                                          {1, 2, 1, 2, 1, 300},
                                          {0, 2, 2, 2, 2, 2}};

/// Arrays, which must outlive all records that hold them.
class Arrays {
 public:
  explicit Arrays(HostContext ctx) : ctx_(ctx) {}
  Value operator()(const TestArray& array) { return operands_.emplace_back(ctx_, array).value(); }
  Value twos(Kind kind, std::size_t dimensions) { return (*this)(mixed(kind, Extents(dimensions, 2))); }

 private:
  HostContext ctx_;
  std::list<Operand> operands_;
};

struct Caller {
  HostContext ctx;

  /// Whatever the call throws is judged by the sweep.
  template <class Make>
  static void made(Make make) {
    try {
      make();
    } catch (const std::exception&) {
    }
  }

  void function(EntryFunction entry, Arguments args) const {
    Value result(unwritten);
    made([&] { entry(ctx, hvm::records_of(args), static_cast<int>(args.size()), result.address()); });
  }

  void method(Value self, const char* name, Arguments args) const {
    const auto callback = hvm::callbacks_of(hvm::object_of(self.record())).method;
    std::vector<HostValue*> pointers;
    for (Value& arg : args) pointers.push_back(arg.address());
    Value result(unwritten);
    const int nargs = static_cast<int>(args.size());
    made([&] { callback(ctx, self.address(), name, pointers.data(), nargs, result.address(), 0); });
  }

  void operation(OperatorCallback callback, Opcode opcode, HostValue* left, HostValue* right, HostValue* result) const {
    made([&] { callback(ctx, static_cast<int>(opcode), left, right, result); });
  }
};

/// The arguments behind an array, or before it.
std::vector<Arguments> around(Arrays& arrays, Kind kind, const Value& array, const TestArray& shape) {
  const std::size_t dimensions = shape.extents().size();
  std::vector<Arguments> all = {{array},
                                {array, Value(1)},
                                {array, Value(2.5)},
                                {array, Value(-1)},
                                {array, array},
                                {array, array, array},
                                {array, Value(2), Value(3)},
                                {Value(1), array},
                                {array, Value("text")}};
  const Value partner = arrays(alternating(kind, dimensions, 2));
  all.push_back({partner, arrays(alternating(kind, dimensions, 1))});
  for (const Kind other : every_kind)
    if (other != kind) all.push_back({array, arrays(alternating(other, dimensions, 2))});
  // Right-hand sides, edges and factors.
  const std::size_t rows = dimensions == 0 ? 1 : shape.extents()[0];
  if (rows <= 40) {
    all.push_back({array, arrays(mixed(kind, {rows}))});
    all.push_back({array, arrays(mixed(kind, {rows, 3}))});
    all.push_back({array, arrays(mixed(Kind::float64, {rows, 2}))});
  }
  return all;
}

void for_each_shape(const std::function<void(Kind, const Extents&)>& use) {
  for (const Kind kind : every_kind) {
    for (std::size_t dimensions = 0; dimensions <= most_dimensions; ++dimensions) use(kind, Extents(dimensions, 2));
    for (const Extents& extents : odd_extents) use(kind, extents);
  }
}

void call_with_numbers(const Caller& caller, EntryFunction function) {
  for (const Value& number : {Value(2), Value(std::int64_t{2}), Value(2.0)})
    for (std::size_t count = 1; count <= most_dimensions; ++count) caller.function(function, Arguments(count, number));
  for (const Arguments& args : {Arguments{}, Arguments{Value(1), Value(5), Value(9)}, Arguments{Value(200), Value(200)},
                                Arguments{Value(0.0), Value(5), Value(9)}, Arguments{Value("text"), Value("text")},
                                Arguments{Value()}, Arguments{Value::table(2)}})
    caller.function(function, args);
}

}  // namespace

void call_functions(Sweep& sweep) {
  const Sweeping sweeping(sweep);
  const hvm::Context context;
  const Caller caller{context.handle()};
  for (const FunctionRecord& record : all_functions()) call_with_numbers(caller, swept_function(record.name));
  for_each_shape([&](Kind kind, const Extents& extents) {
    Arrays arrays(caller.ctx);
    const TestArray array = mixed(kind, extents);
    const auto all = around(arrays, kind, arrays(array), array);
    for (const FunctionRecord& record : all_functions()) {
      const bool is_large = size_of(extents) > 300;
      for (const Arguments& args : all) {
        // A product of two long arrays has a million elements.
        if (is_large && args.size() > 1 && args[1].is_object() && std::string(record.family) == "linalg") continue;
        caller.function(swept_function(record.name), args);
      }
    }
  });
  // NaN takes other ways in linear algebra and in the sorts.
  Arrays arrays(caller.ctx);
  for (const double odd : {std::nan(""), -0.0})
    for (const Extents& extents : {Extents{3, 3}, Extents{1000}}) {
      TestArray array = mixed(Kind::float64, extents);
      array.set(size_of(extents) / 2, odd);
      for (const FunctionRecord& record : all_functions())
        for (const Arguments& args :
             {Arguments{arrays(array)}, Arguments{arrays(array), arrays.twos(Kind::float64, 1)}})
          caller.function(swept_function(record.name), args);
    }
}

void call_methods(Sweep& sweep) {
  const Sweeping sweeping(sweep);
  const hvm::Context context;
  const Caller caller{context.handle()};
  for_each_shape([&](Kind kind, const Extents& extents) {
    if (kind == Kind::float32) return;  // hosts make no objects of this kind
    Arrays arrays(caller.ctx);
    const Value array = arrays(mixed(kind, extents));
    for (const Arguments& args : {Arguments{}, Arguments{Value(2)}, Arguments{Value("text")}})
      for (const char* name : {"dump", "shape", "no method"}) caller.method(array, name, args);
    Arguments same;
    for (const std::size_t extent : extents) same.push_back(Value(static_cast<int>(extent)));
    const int size = static_cast<int>(size_of(extents));
    for (const Arguments& args :
         {same, Arguments{Value(size)}, Arguments{Value(1), Value(size)}, Arguments{}, Arguments{Value(size + 1)},
          Arguments{array}, Arguments{Value(1), Value(1), Value(1), Value(1), Value(1), Value(1), Value(size)}})
      caller.method(arrays(mixed(kind, extents)), "reshape", args);
  });
}

namespace {

constexpr Opcode comparisons[] = {Opcode::less_equal, Opcode::greater_equal, Opcode::not_equal,
                                  Opcode::less,       Opcode::greater,       Opcode::equal};
constexpr Opcode arithmetic[] = {Opcode::add, Opcode::subtract, Opcode::multiply, Opcode::divide, Opcode::remainder};

OperatorCallback operator_of(const Value& array) { return hvm::callbacks_of(hvm::object_of(array.record())).op; }

const std::vector<Value> numbers = {Value(2), Value(std::int64_t{3}), Value(2.5)};

/// All operators with a record of their own for the result.
void apply_apart(const Caller& caller, Value left, Value right, const Value& typed) {
  const auto apply = [&](Opcode opcode) {
    Value result(unwritten);
    caller.operation(operator_of(typed), opcode, left.address(), right.address(), result.address());
  };
  for (const Opcode opcode : comparisons) apply(opcode);
  for (const Opcode opcode : arithmetic) apply(opcode);
}

/// The operators of arithmetic with the left or the right operand's record for the result.
void apply_in_place(const Caller& caller, const std::function<Value()>& left, const std::function<Value()>& right) {
  for (const Opcode opcode : arithmetic) {
    Value a = left(), b = right();
    if (a.is_object()) caller.operation(operator_of(a), opcode, a.address(), b.address(), a.address());
  }
  for (const Opcode opcode : arithmetic) {
    Value a = left(), b = right();
    if (!b.is_object()) continue;
    // A number on the left of these, and the array's record as the result, end the process.
    const bool ends = opcode != Opcode::add && opcode != Opcode::multiply;
    if (!a.is_object() && ends) continue;
    caller.operation(operator_of(a.is_object() ? a : b), opcode, a.address(), b.address(), b.address());
  }
}

void access_elements(const Caller& caller, const std::function<Value()>& make) {
  for (std::size_t count = 1; count <= most_dimensions + 2; ++count)
    for (const auto where : {IndexList::Entries::in_place, IndexList::Entries::elsewhere})
      for (const Value& zero : {Value(0), Value(std::int64_t{0}), Value(0.0)}) {
        Value array = make(), result(unwritten);
        IndexList list(Arguments(count, zero), where);
        const auto op = operator_of(array);
        caller.operation(op, Opcode::read_element, array.address(), list.address(), result.address());
        for (Value written : numbers)
          caller.operation(op, Opcode::write_element, array.address(), list.address(), written.address());
        Value index = zero;
        caller.operation(op, Opcode::read_one_index, array.address(), index.address(), result.address());
      }
}

}  // namespace

void apply_operators(Sweep& sweep) {
  const Sweeping sweeping(sweep);
  const hvm::Context context;
  const Caller caller{context.handle()};
  for_each_shape([&](Kind kind, const Extents& extents) {
    if (kind == Kind::float32) return;  // hosts make no objects of this kind; it stands on the right below
    Arrays arrays(caller.ctx);
    const auto fresh = [&] { return arrays(mixed(kind, extents)); };
    const Value array = fresh();
    for (const Value& number : numbers) {
      apply_apart(caller, array, number, array);
      apply_apart(caller, number, array, array);
      apply_in_place(caller, fresh, [&] { return number; });
      apply_in_place(
          caller, [&] { return number; }, fresh);
    }
    apply_apart(caller, array, array, array);
    apply_in_place(caller, fresh, fresh);
    const auto two_one = [&] { return arrays(alternating(kind, extents.size(), 2)); };
    const auto one_two = [&] { return arrays(alternating(kind, extents.size(), 1)); };
    apply_apart(caller, two_one(), one_two(), array);
    apply_in_place(caller, two_one, one_two);
    for (const Kind other : every_kind) {
      const auto of_other = [&] { return arrays(mixed(other, extents)); };
      apply_apart(caller, array, of_other(), array);
      apply_in_place(caller, fresh, of_other);
    }
    if (size_of(extents) > 0) access_elements(caller, fresh);
  });
}

}  // namespace arrayfold::test
