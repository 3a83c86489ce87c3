// accuracy/accuracy.cpp: the largest error of each function, over as many random arguments as asked for
//
//     accuracy 10000000                  one line a function: name, error, argument, the same with AVX2
//     accuracy 100000 --arguments FILE   writes the arguments instead, as doubles side by side
//
// It ends with 1 when a function passes its bound.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "arguments.hpp"
#include "functions.hpp"
#include "support/module_test.hpp"

namespace arrayfold::accuracy {
namespace {

constexpr std::size_t batch_size = 20'000;

struct Worst {
  double error = 0;
  double argument = 0;

  void take(double another_error, double another_argument) {
    if (another_error > error) *this = {another_error, another_argument};
  }
};

struct Measured {
  Worst module;
  Worst four_lanes;
};

std::vector<double> by_module(HostContext ctx, const char* name, const std::vector<double>& x) {
  hvm::Value argument = test::array_of<XTDouble>(ctx, {x.size()}, x);
  hvm::Value result;
  test::Module::loaded().entry(name)(ctx, argument.address(), 1, result.address());
  return test::elements_of<XTDouble>(result);
}

void measure(HostContext ctx, const Function& function, const std::vector<double>& x, Measured& worst) {
  const auto values = by_module(ctx, function.name, x);
  auto narrow = values;
  if (function.four_lanes != nullptr) function.four_lanes(x.data(), narrow.data(), x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    const long double exact = function.exact(x[i]);
    worst.module.take(error_in_ulp(values[i], exact), x[i]);
    worst.four_lanes.take(error_in_ulp(narrow[i], exact), x[i]);
  }
}

/// Prints a line a function. False when one passes its bound.
bool report(const std::vector<Measured>& worst) {
  bool within = true;
  for (std::size_t n = 0; n < worst.size(); ++n) {
    const auto& function = functions()[n];
    const auto& [module, four_lanes] = worst[n];
    std::printf("%s %.4f %.17g %.4f %.17g\n", function.name, module.error, module.argument, four_lanes.error,
                four_lanes.argument);
    if (function.bound == 0 || std::max(module.error, four_lanes.error) < function.bound) continue;
    std::fprintf(stderr, "%s passes its bound of %g\n", function.name, function.bound);
    within = false;
  }
  return within;
}

bool measure_all(std::size_t count) {
  test::Module::loaded();  // which brings the types of arrays
  hvm::Context context;
  std::vector<Measured> worst(functions().size());
  for (unsigned batch = 0; batch * batch_size < count; ++batch) {
    const auto x = arguments(std::min(batch_size, count - batch * batch_size), batch);
    for (std::size_t n = 0; n < worst.size(); ++n) measure(context.handle(), functions()[n], x, worst[n]);
  }
  return report(worst);
}

bool write_arguments(std::size_t count, const char* path) {
  std::ofstream out(path, std::ios::binary);
  for (unsigned batch = 0; batch * batch_size < count; ++batch) {
    const auto x = arguments(std::min(batch_size, count - batch * batch_size), batch);
    std::vector<char> bytes(x.size() * sizeof(double));
    std::memcpy(bytes.data(), x.data(), bytes.size());
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  return out.good();
}

}  // namespace
}  // namespace arrayfold::accuracy

int main(int argc, char** argv) {
  using namespace arrayfold::accuracy;
  const std::size_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 0;
  if (count == 0 || (argc != 2 && argc != 4) || (argc == 4 && std::strcmp(argv[2], "--arguments") != 0)) {
    std::fprintf(stderr, "usage: accuracy COUNT [--arguments FILE]\n");
    return 2;
  }
  return (argc == 4 ? write_arguments(count, argv[3]) : measure_all(count)) ? 0 : 1;
}
