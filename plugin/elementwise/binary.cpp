// elementwise/binary.cpp: xminimum, xmaximum; xremainder, xclip, xfma, xinterp, xpow
//
// The first two combine two arrays of one kind under the broadcasting rule and give doubles. The others are finished as
// they stand: each checks its arguments, computes nothing and leaves the result untouched.

#include "array/combination.hpp"
#include "array/kind_frames.hpp"

namespace arrayfold {
namespace {

constexpr auto smaller = [](const auto& array) {
  return arithmetic<typename std::decay_t<decltype(array)>::value_type>().minimum;
};
constexpr auto larger = [](const auto& array) {
  return arithmetic<typename std::decay_t<decltype(array)>::value_type>().maximum;
};

/// Gives the doubles that `choice_of(array)` picks from two arrays of the same kind, compared in that kind. Pairs of
/// other kinds count as handled and give no value.
template <class Choice>
Outcome choose(const Call& call, Choice choice_of) {
  if (!is_object(call, 0) || !is_object(call, 1)) return Outcome::failed;
  const HostAny* left = object(call, 0);
  const HostAny* right = object(call, 1);
  visit_same_kind(double_first{}, left, right, [&](auto, const auto& a, const auto& b) {
    give_array(call, combined<XTDouble>(a, b, choice_of(a)));
  });
  return Outcome::handled;
}

}  // namespace

// required: the second operand is chosen where the comparison fails: for NaN in either, and for equal elements, the two
// zeros among them.
Outcome xminimum(const Call& call) { return choose(call, smaller); }
Outcome xmaximum(const Call& call) { return choose(call, larger); }

// required: two objects are checked and neither is fetched, unlike in the four below.
Outcome xremainder(const Call& call) {
  return is_object(call, 0) && is_object(call, 1) ? Outcome::handled : Outcome::failed;
}

// required: only the first argument is checked.
Outcome xclip(const Call& call) { return check_one_object(call); }
Outcome xfma(const Call& call) { return check_one_object(call); }
Outcome xinterp(const Call& call) { return check_one_object(call); }
Outcome xpow(const Call& call) { return check_one_object(call); }

}  // namespace arrayfold
