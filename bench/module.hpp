// bench/module.hpp: the module under the reference host, and how its calls become benchmark cases
//
// A case is named family/label/n, and its peer under peers/ has the same name. The timed loop makes one call through
// the C interface, as a host makes it, and releases the result.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "kernel/kernel.hpp"

namespace arrayfold::bench {

using hvm::Value;

/// From arrays that fit into registers to arrays that fit into no cache.
inline const std::vector<int> four_sizes{10, 1'000, 100'000, 10'000'000};

/// Loads the module at `path`. Without this call the first use loads the module of this build.
void load_module(const std::string& path);
/// The context of all calls.
HostContext context();
/// A function of the module's table. Throws std::invalid_argument when it has none of that name.
EntryFunction entry_named(const std::string& function);
/// The names of the module's functions that `entry_named` was never asked for.
std::vector<std::string> unmeasured_functions();

/// The records that a case of size `n` works on.
using RecordsOf = std::function<std::vector<Value>(int n)>;
/// The timed loop over the records of a case.
using TimedLoop = std::function<void(benchmark::State& state, std::vector<Value>& records)>;

/// A case at one size, named family/label/n.
struct SizedCase {
  std::string name;
  std::function<void(benchmark::State& state)> run;
};

/// Every case added so far, in that order.
const std::vector<SizedCase>& cases();

/// Adds `name`/n for each size. The records are made once a case, outside the timed loop.
void add_case(const std::string& name, const std::vector<int>& sizes, const RecordsOf& records_of,
              const TimedLoop& loop);
/// A case that calls `function` with the records as its arguments. A call that fails is an error of the case.
void add_call(const std::string& name, const std::string& function, const std::vector<int>& sizes,
              const RecordsOf& arguments_of);
/// A case that calls `method` of the one object among the records, without arguments.
void add_method(const std::string& name, const char* method, const std::vector<int>& sizes, const RecordsOf& self_of);
/// A case that applies an operator to the two records. The first is an object.
void add_operator(const std::string& name, Opcode opcode, const std::vector<int>& sizes, const RecordsOf& operands_of);
/// The same with the first record as the result, which is changed by every call.
void add_operator_in_place(const std::string& name, Opcode opcode, const std::vector<int>& sizes,
                           const RecordsOf& operands_of);
/// Cases that read and write one element. The records are the object, its indices, and last the number to write.
void add_element_read(const std::string& name, const std::vector<int>& sizes, const RecordsOf& records_of);
void add_element_write(const std::string& name, const std::vector<int>& sizes, const RecordsOf& records_of);

}  // namespace arrayfold::bench
