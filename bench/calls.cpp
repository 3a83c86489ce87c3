// bench/calls.cpp: what a call costs before any element is touched

#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

std::vector<Value> ten(int) { return {Value(10)}; }
std::vector<Value> ten_in_two_dimensions(int) { return {normal_reals({2, 5})}; }

/// Too few arguments: the entry answers 0 and touches nothing.
void time_refusals(benchmark::State& state, std::vector<Value>& arguments) {
  const EntryFunction entry = entry_named("xzeros");
  const HostContext ctx = context();
  HostValue result = hvm::nil_record();
  int answered = 0;
  for (auto _ : state) answered |= entry(ctx, arguments.data()->address(), 0, &result);
  if (answered != 0) state.SkipWithError("a call with too few arguments was handled");
}

}  // namespace

void add_calls() {
  add_case("calls/refused", {10}, ten, time_refusals);
  add_call("calls/make_and_destroy", "xzeros", {10}, ten);
  add_method("calls/shape", "shape", {10}, ten_in_two_dimensions);
}

}  // namespace arrayfold::bench
