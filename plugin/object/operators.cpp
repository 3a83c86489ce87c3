// object/operators.cpp: arithmetic, comparison and whole-array tests
//
// An array combines with a number, or with an array of the same kind; kinds are never mixed. The operators of each
// kind:
//
//              + - * /     %              <= >= < >     == !=        element access
//     int      both        both           both          arrays       yes
//     int64    both        both           both          arrays       yes
//     double   both        (no-op)        both          arrays       yes
//     bool     * number    -              -             -            yes
//
// "both" is a number or an array. A comparison gives a new bool array, a whole-array test the integer 0 or 1.

#include "object/operators.hpp"

#include <exception>

#include "array/boxing.hpp"
#include "array/combination.hpp"
#include "array/storage.hpp"
#include "kernels/arithmetic.hpp"
#include "object/element_access.hpp"
#include "object/receiver.hpp"

namespace arrayfold {
namespace {

/// One application of an operator: `self` holds `array` and is one of the two operands, `other` is the other one.
template <class Array>
struct Application {
  using Kind = typename Array::tag;
  using Element = typename Array::element;

  Array& array;
  HostContext ctx;
  HostValue* self;
  HostValue* other;
  HostValue* result;
  bool self_is_left;

  bool in_place() const { return self == result; }
  const xarray_of<Element>& elements() const { return *array.array; }
};

/// What happens when the result record is the array's own (`a += b`): nothing special; in place; in place, but only
/// with the array on the left.
enum class InPlace { never, from_either_side, from_the_left };

// required: an operator that works in place only from the left ends the process when the array is on the right.
void check_side(bool self_is_left, InPlace in_place) {
  if (in_place == InPlace::from_the_left && !self_is_left) std::terminate();
}

bool holds_object(const HostValue* value) { return value->tag == ValueTag::object; }

/// The array of `Kind` in a record that holds an object; null for every other object.
template <class Kind>
ArrayOf<Kind>* array_of_kind(HostValue* value) {
  const HostAny* any = HVM_GetAny(value);
  return any == nullptr ? nullptr : unbox_array<Kind>(any);
}

/// An operation on the elements of an array with results of a kind.
template <class ResultKind, class Array>
using OperationOf = Operation<typename Array::element, typename ResultKind::element>;

// ---- With a number. required: the array stays on the left, so 5 - a computes a - 5.

template <class ResultKind, class Array>
void give_with_number(const Application<Array>& at, typename Array::element number,
                      const OperationOf<ResultKind, Array>& operation) {
  const auto& elements = at.elements();
  check_extents(elements);
  auto made = make_array<ResultKind>(elements.shape());
  operation.left_advances(elements.storage().data(), &number, made->array->storage().data(), elements.storage().size());
  hand_over(ResultKind{}, at.ctx, at.result, std::move(made));
}

template <class Array>
void change_by_number(const Application<Array>& at, typename Array::element number,
                      const OperationOf<typename Array::tag, Array>& operation) {
  auto& storage = at.array.array->storage();
  operation.left_advances(storage.data(), &number, storage.data(), storage.size());
}

// ---- With an array of the same kind

template <class ResultKind, class Array>
void give_with_array(const Application<Array>& at, const Array& other,
                     const OperationOf<ResultKind, Array>& operation) {
  const auto& mine = at.elements();
  const auto& theirs = *other.array;
  auto made =
      at.self_is_left ? combined<ResultKind>(mine, theirs, operation) : combined<ResultKind>(theirs, mine, operation);
  hand_over(ResultKind{}, at.ctx, at.result, std::move(made));
}

/// Equal shapes need one pass and no temporary. A broadcast result is computed first and then replaces the array's
/// container, so that the array can grow.
template <class Array>
void change_by_array(const Application<Array>& at, const Array& other,
                     const OperationOf<typename Array::tag, Array>& operation) {
  auto& mine = *at.array.array;
  const auto& theirs = *other.array;
  if (!same_shape(mine.shape(), theirs.shape())) {
    at.array.array = std::move(combined<typename Array::tag>(mine, theirs, operation)->array);
    return;
  }
  check_extents(mine);
  auto* elements = mine.storage().data();
  operation.both_advance(elements, theirs.storage().data(), elements, mine.storage().size());
}

// ---- The two paths

/// Arithmetic and comparison. Returns false for operands that the kind does not combine with.
template <class ResultKind, class Array>
bool apply(const Application<Array>& at, InPlace with_number, InPlace with_array,
           const OperationOf<ResultKind, Array>& operation) {
  using Kind = typename Array::tag;
  HostValue* other = at.other;
  if (other == nullptr || other->tag == ValueTag::table) return false;
  if (holds_object(other)) {
    const Array* array = array_of_kind<Kind>(other);
    if (array == nullptr) return false;
    if constexpr (std::is_same_v<ResultKind, Kind>)
      if (with_array != InPlace::never && at.in_place()) {
        check_side(at.self_is_left, with_array);
        change_by_array(at, *array, operation);
        return true;
      }
    give_with_array<ResultKind>(at, *array, operation);
    return true;
  }
  if (!HVM_NumberCheck(other)) return false;
  const auto number = Kind::read(other);
  if constexpr (std::is_same_v<ResultKind, Kind>)
    if (with_number != InPlace::never && at.in_place()) {
      check_side(at.self_is_left, with_number);
      change_by_number(at, number, operation);
      return true;
    }
  give_with_number<ResultKind>(at, number, operation);
  return true;
}

// ---- Whole-array tests

/// Gives 1 when equality is as `wanted`, else 0. Shapes that differ are unequal, without any broadcasting.
template <class Array>
bool test_equality(const Application<Array>& at, bool wanted) {
  if (at.other == nullptr || !holds_object(at.other)) return false;
  const Array* other = array_of_kind<typename Array::tag>(at.other);
  if (other == nullptr) return false;
  const auto& mine = at.elements();
  const auto& theirs = *other->array;
  const bool equal = same_shape(mine.shape(), theirs.shape()) &&
                     arithmetic<typename Array::element>().are_equal(mine.storage().data(), theirs.storage().data(),
                                                                     mine.storage().size());
  HVM_SetInt(at.ctx, at.result, equal == wanted ? 1 : 0);
  return true;
}

// ---- What the kinds do not share

/// required: doubles have no remainder. With any numeric array it returns true and does nothing.
bool pass_over_remainder(HostValue* other) {
  if (other == nullptr || !holds_object(other)) return false;
  const HostAny* any = HVM_GetAny(other);
  return any != nullptr && unbox_numeric(any).has_value();
}

/// required: the one operator of bools is the product with a number, and only in place does it have an effect.
bool multiply_truths(const Application<ArrayOf<XTBool>>& at) {
  HostValue* other = at.other;
  if (other == nullptr || other->tag == ValueTag::table) return false;
  if (holds_object(other)) {
    HVM_GetAny(other);
    return false;
  }
  if (!HVM_NumberCheck(other)) return false;
  const bool factor = HVM_AsBool(other) != 0;
  if (!at.in_place()) return true;
  auto& storage = at.array.array->storage();
  auto* bytes = static_cast<std::uint8_t*>(static_cast<void*>(storage.data()));
  for (std::size_t i = 0; i < storage.size(); ++i) bytes[i] = (bytes[i] != 0) & factor;
  return true;
}

/// What an operator of arithmetic does.
template <class T>
struct Calculation {
  Operation<T, T> Arithmetic<T>::*operation;
  InPlace with_number;
  InPlace with_array;
};

/// The operators of arithmetic in the order of their opcodes.
template <class T>
constexpr Calculation<T> calculations[] = {
    {&Arithmetic<T>::sum, InPlace::from_either_side, InPlace::from_either_side},
    {&Arithmetic<T>::difference, InPlace::from_the_left, InPlace::from_the_left},
    // required: in place, an array on the right ends the process, a number on the left does not.
    {&Arithmetic<T>::product, InPlace::from_either_side, InPlace::from_the_left},
    {&Arithmetic<T>::quotient, InPlace::from_the_left, InPlace::from_the_left},
    {&Arithmetic<T>::remainder, InPlace::from_the_left, InPlace::from_the_left},
};

/// Null for every other opcode, and where the kind has no such operation.
template <class T>
const Calculation<T>* calculation_of(Opcode opcode) {
  // A switch would be an indirect jump, which small arrays feel.
  constexpr std::size_t operators = std::size(calculations<T>) - (std::is_integral_v<T> ? 0 : 1);
  const auto place = static_cast<std::size_t>(static_cast<int>(opcode) - static_cast<int>(Opcode::add));
  return place < operators ? &calculations<T>[place] : nullptr;
}

/// Null for every other opcode.
template <class T>
Operation<T, bool> Arithmetic<T>::*comparison_of(Opcode opcode) {
  switch (opcode) {
    case Opcode::less_equal:
      return &Arithmetic<T>::less_equal;
    case Opcode::greater_equal:
      return &Arithmetic<T>::greater_equal;
    case Opcode::less:
      return &Arithmetic<T>::less;
    case Opcode::greater:
      return &Arithmetic<T>::greater;
    default:
      return nullptr;
  }
}

template <class Array>
bool apply_to_numbers(const Application<Array>& at, Opcode opcode) {
  using Element = typename Array::element;
  if (const auto* calculation = calculation_of<Element>(opcode); calculation != nullptr)
    return apply<typename Array::tag>(at, calculation->with_number, calculation->with_array,
                                      arithmetic<Element>().*calculation->operation);
  if (const auto comparison = comparison_of<Element>(opcode); comparison != nullptr)
    return apply<XTBool>(at, InPlace::never, InPlace::never, arithmetic<Element>().*comparison);
  if (opcode == Opcode::equal || opcode == Opcode::not_equal) return test_equality(at, opcode == Opcode::equal);
  return opcode == Opcode::remainder && pass_over_remainder(at.other);
}

template <class Kind>
bool apply_operator(ArrayOf<Kind>& array, HostContext ctx, HostValue* self, Opcode opcode, HostValue* left,
                    HostValue* right, HostValue* result) {
  switch (opcode) {
    case Opcode::read_one_index:
      return read_at_index(Kind{}, array, ctx, right, result);
    case Opcode::read_element:
      return read_element(Kind{}, array, ctx, index_list_in(right), result);
    case Opcode::write_element:
      return write_element(Kind{}, array, index_list_in(right), result);
    default:
      break;
  }
  const bool self_is_left = self == left;
  const Application<ArrayOf<Kind>> at{array, ctx, self, self_is_left ? right : left, result, self_is_left};
  if constexpr (std::is_same_v<Kind, XTBool>)
    return opcode == Opcode::multiply && multiply_truths(at);
  else
    return apply_to_numbers(at, opcode);
}

bool takes_index_list(Opcode opcode) { return opcode == Opcode::read_element || opcode == Opcode::write_element; }

template <class Kind>
HostBool operator_callback(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  const bool on_left = content_of(left) != nullptr;
  if (!on_left && takes_index_list(static_cast<Opcode>(opcode))) return false;  // the right record is no operand
  HostValue* self = on_left ? left : right;
  ArrayOf<Kind>* array = array_in<Kind>(content_of(self));
  return array != nullptr && apply_operator<Kind>(*array, ctx, self, static_cast<Opcode>(opcode), left, right, result);
}

constexpr auto handler_of_each = [](auto... kind) {
  return KindTable<registered_kinds, OperatorHandler>(&apply_operator<decltype(kind)>...);
};
constexpr auto operator_callback_of_each = [](auto... kind) {
  return KindTable<registered_kinds, OperatorCallbackOf>(&operator_callback<decltype(kind)>...);
};

}  // namespace

constexpr KindTable<registered_kinds, OperatorHandler> operator_handlers =
    for_kinds(registered_kinds{}, handler_of_each);
constexpr KindTable<registered_kinds, OperatorCallbackOf> operator_callbacks =
    for_kinds(registered_kinds{}, operator_callback_of_each);

}  // namespace arrayfold
