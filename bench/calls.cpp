// bench/calls.cpp: what a call costs before any element is touched

#include <string>

#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

std::vector<Value> ten(int) { return {Value(10)}; }
std::vector<Value> ten_in_two_dimensions(int) { return {normal_doubles({2, 5})}; }

std::vector<Value> doubles(int n) { return {normal_doubles({static_cast<std::size_t>(n)})}; }
std::vector<Value> doubles_twice(int n) { return {doubles(n)[0], doubles(n)[0]}; }
std::vector<Value> doubles_three_times(int n) { return {doubles(n)[0], doubles(n)[0], doubles(n)[0]}; }

/// A call of `function` with `nargs` of the arguments, which fails (returns 0) and leaves the result untouched.
void add_failing_call(const std::string& name, const std::string& function, const RecordsOf& arguments_of, int nargs) {
  const EntryFunction entry = entry_named(function);
  add_case(name, {10}, arguments_of, [entry, nargs](benchmark::State& state, std::vector<Value>& arguments) {
    HostValue* records = hvm::records_of(arguments);
    const HostContext ctx = context();
    HostValue result = hvm::nil_record();
    bool succeeded = false;
    for (auto _ : state) succeeded |= entry(ctx, records, nargs, &result) != 0;
    if (succeeded) state.SkipWithError("the call did not fail");
  });
}

/// The stubs: they check their arguments and compute nothing.
void add_stubs() {
  for (const char* name : {"xrandint", "xchoice"}) add_call(std::string("calls/") + name, name, {10}, ten);
  for (const char* name : {"xsearchsorted", "xmatrix_power"})
    add_call(std::string("calls/") + name, name, {10}, doubles);
  for (const char* name : {"xremainder", "xpow"}) add_call(std::string("calls/") + name, name, {10}, doubles_twice);
  for (const char* name : {"xclip", "xfma", "xinterp"})
    add_call(std::string("calls/") + name, name, {10}, doubles_three_times);
  add_failing_call("calls/xsetdiff1d", "xsetdiff1d", doubles_twice, 2);
}

}  // namespace

void add_calls() {
  add_failing_call("calls/refused", "xzeros", ten, 0);  // too few arguments
  add_call("calls/make_and_destroy", "xzeros", {10}, ten);
  add_method("calls/shape", "shape", {10}, ten_in_two_dimensions);
  add_stubs();
}

}  // namespace arrayfold::bench
