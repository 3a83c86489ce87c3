// script/run/call_depth.cpp: how deep calls may nest

#include "script/run/call_depth.hpp"

#include <fmt/format.h>
#include <sys/resource.h>

#include <algorithm>

namespace hvm {
namespace {

/// Half of the stack is for scripts; the rest is for what they call.
std::size_t stack_share() {
  constexpr std::size_t usual = std::size_t{8} << 20;
  rlimit limit = {};
  const bool is_known = getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
  return (is_known ? std::min<std::size_t>(limit.rlim_cur, usual) : usual) / 2;
}

}  // namespace

CallDepth::CallDepth(const Site& site)
    : site_(site), stack_base_(static_cast<const char*>(__builtin_frame_address(0))), stack_room_(stack_share()) {}

void CallDepth::require_room(Span span) const {
  if (levels_ >= call_limit)
    site_.fail(fmt::format("the calls nest too deeply: more than {} levels", call_limit), span);
  const char* here = static_cast<const char*>(__builtin_frame_address(0));
  const auto used = static_cast<std::size_t>(here < stack_base_ ? stack_base_ - here : here - stack_base_);
  if (used > stack_room_) site_.fail("the calls nest too deeply: the stack is used up", span);
}

}  // namespace hvm
