// accuracy/accuracy.cpp: the largest error of each function, over as many random arguments as asked for
//
//     accuracy 10000000                  one line a function and target: name, target, error, argument
//     accuracy 100000 --arguments FILE   writes the arguments instead, as doubles side by side
//
// The targets are those of Highway that the machine supports, the best one first. The module takes each in turn.
// It ends with 1 when a function passes its bound.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "arguments.hpp"
#include "functions.hpp"
#include "support/module_test.hpp"
#include "support/targets.hpp"

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

/// A function on one target.
struct Row {
  const Function* function;
  std::int64_t target;
  Worst worst;
};

std::vector<double> by_module(HostContext ctx, const char* name, const std::vector<double>& x) {
  hvm::Value argument = test::array_of<XTDouble>(ctx, {x.size()}, x);
  hvm::Value result;
  test::Module::loaded().entry(name)(ctx, argument.address(), 1, result.address());
  return test::elements_of<XTDouble>(result);
}

std::vector<Row> rows_of_all() {
  std::vector<Row> rows;
  for (const auto& function : functions())
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) rows.push_back({&function, target, {}});
  return rows;
}

/// Measures one function over `x` on each target; its rows are consecutive.
void measure(HostContext ctx, const std::vector<double>& x, Row* rows, std::size_t targets) {
  const Function& function = *rows->function;
  std::vector<long double> exact(x.size());
  std::transform(x.begin(), x.end(), exact.begin(), function.exact);
  for (Row* row = rows; row != rows + targets; ++row) {
    const test::OnTarget chosen(row->target);
    const auto values = by_module(ctx, function.name, x);
    for (std::size_t i = 0; i < x.size(); ++i) row->worst.take(error_in_ulp(values[i], exact[i]), x[i]);
  }
}

/// Prints a line a row. False when one passes its bound.
bool report(const std::vector<Row>& rows) {
  bool within = true;
  for (const auto& [function, target, worst] : rows) {
    std::printf("%s %s %.4f %.17g\n", function->name, hwy::TargetName(target), worst.error, worst.argument);
    const double bound = test::fuses_products(target) ? function->bound.fused : function->bound.otherwise;
    if (bound == 0 || worst.error < bound) continue;
    std::fprintf(stderr, "%s passes its bound of %g on %s\n", function->name, bound, hwy::TargetName(target));
    within = false;
  }
  return within;
}

bool measure_all(std::size_t count) {
  test::Module::loaded();  // which brings the types of arrays
  hvm::Context context;
  auto rows = rows_of_all();
  const std::size_t targets = rows.size() / functions().size();
  for (unsigned batch = 0; batch * batch_size < count; ++batch) {
    const auto x = arguments(std::min(batch_size, count - batch * batch_size), batch);
    for (std::size_t first = 0; first < rows.size(); first += targets)
      measure(context.handle(), x, &rows[first], targets);
  }
  return report(rows);
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
