// bench/main.cpp: the program that compare.py runs; it takes Google Benchmark's own options

#include <exception>
#include <iostream>

#include <benchmark/benchmark.h>

#include "families.hpp"

int main(int argc, char** argv) try {
  arrayfold::bench::add_creation();
  arrayfold::bench::add_text();
  arrayfold::bench::add_tables();
  arrayfold::bench::add_calls();
  arrayfold::bench::add_operators();
  arrayfold::bench::add_elementwise();
  arrayfold::bench::add_reductions();
  arrayfold::bench::add_ordering();
  arrayfold::bench::add_binning();
  arrayfold::bench::add_linear_algebra();

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::AddCustomContext("compiler", BUILT_WITH);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
} catch (const std::exception& error) {
  std::cerr << "arrayfold_bench: " << error.what() << '\n';
  return 1;
}
