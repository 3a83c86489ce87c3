// bench/worker.cpp: requests read, cases run by Google Benchmark, times written

#include "worker.hpp"

#include <algorithm>
#include <exception>
#include <istream>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "module.hpp"

namespace arrayfold::bench {
namespace {

struct Request {
  std::string name;
  int calls = 0;
  int samples = 0;
};

/// Keeps the times of a run, where the library's own reporters print them.
class Times : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;  // means over the samples
      if (run.error_occurred) error = run.error_message;
      nanoseconds.push_back(run.cpu_accumulated_time * 1e9 / static_cast<double>(run.iterations));
    }
  }

  std::vector<double> nanoseconds;
  std::string error;
};

Request parsed(const std::string& line) {
  std::istringstream words(line);
  Request request;
  if (!(words >> request.name >> request.calls >> request.samples) || request.calls < 1 || request.samples < 1)
    throw std::invalid_argument("not a request: " + line);
  return request;
}

const SizedCase& case_named(const std::string& name) {
  const auto found =
      std::find_if(cases().begin(), cases().end(), [&](const SizedCase& one) { return one.name == name; });
  if (found == cases().end()) throw std::invalid_argument("no case has the name " + name);
  return *found;
}

std::vector<double> times_of(const Request& request) {
  const SizedCase& one = case_named(request.name);
  benchmark::ClearRegisteredBenchmarks();
  benchmark::RegisterBenchmark(one.name.c_str(), one.run)->Iterations(request.calls)->Repetitions(request.samples);
  Times times;
  benchmark::RunSpecifiedBenchmarks(&times, "all");
  if (!times.error.empty()) throw std::runtime_error(times.error);
  return times.nanoseconds;
}

void answer(const std::string& line, std::ostream& out) try {
  const std::vector<double> times = times_of(parsed(line));
  out << "ok";
  for (const double nanoseconds : times) out << ' ' << nanoseconds;
  out << std::endl;
} catch (const std::exception& error) {
  out << "error " << error.what() << std::endl;
}

}  // namespace

int serve(std::istream& in, std::ostream& out) {
  out.precision(10);
  for (std::string line; std::getline(in, line);) answer(line, out);
  return 0;
}

}  // namespace arrayfold::bench
