// bench/main.cpp: the program that compare.py and builds.py run
//
//   arrayfold_bench [options of Google Benchmark]   measures the module of this build
//   arrayfold_bench --worker MODULE                 measures MODULE on demand, see worker.hpp
//   arrayfold_bench --unmeasured                    lists the functions that no case calls

#include <cstddef>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include <benchmark/benchmark.h>

#include "families.hpp"
#include "module.hpp"
#include "worker.hpp"

namespace arrayfold::bench {
namespace {

void add_families() {
  add_creation();
  add_text();
  add_tables();
  add_calls();
  add_operators();
  add_elementwise();
  add_reductions();
  add_ordering();
  add_binning();
  add_linear_algebra();
  add_host();
  add_limits();
}

/// Lets the C library keep freed memory as in a process that has used large arrays before, as measurement.py does for
/// NumPy: it adapts its thresholds to the largest block that was released, just under 32 MiB at most.
void adapt_thresholds() {
  void* block = ::operator new((std::size_t{32} << 20) - 8192);
  benchmark::DoNotOptimize(block);
  ::operator delete(block);
}

int serve_module(const std::string& path) {
  load_module(path);
  add_families();
  adapt_thresholds();
  return serve(std::cin, std::cout);
}

int list_unmeasured() {
  add_families();
  for (const std::string& name : unmeasured_functions()) std::cout << name << '\n';
  return 0;
}

int measure(int argc, char** argv) {
  add_families();
  for (const SizedCase& one : cases()) benchmark::RegisterBenchmark(one.name.c_str(), one.run);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::AddCustomContext("compiler", BUILT_WITH);
  adapt_thresholds();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

int run(int argc, char** argv) {
  const std::string option = argc > 1 ? argv[1] : "";
  if (option == "--worker" && argc == 3) return serve_module(argv[2]);
  if (option == "--unmeasured" && argc == 2) return list_unmeasured();
  return measure(argc, argv);
}

}  // namespace
}  // namespace arrayfold::bench

int main(int argc, char** argv) try { return arrayfold::bench::run(argc, argv); } catch (const std::exception& error) {
  std::cerr << "arrayfold_bench: " << error.what() << '\n';
  return 1;
}
