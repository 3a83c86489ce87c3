// accuracy/accuracy.cpp: the largest error of each function, over as many random arguments as asked for
//
//     accuracy 10000000                  one line a function and target: name, target, error, argument
//     accuracy 10000000 --of xexp        the lines of one function
//     accuracy 10000000 --peers          also lines of the C library, and of SLEEF where it is installed
//     accuracy 100000 --arguments FILE   writes the arguments instead, as doubles side by side
//
// The targets are those of Highway that the machine supports, the best one first. The module takes each in turn.
// It ends with 1 when a function of the module passes its bound.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "arguments.hpp"
#include "functions.hpp"
#include "peers.hpp"
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

/// A function by the module on one target, or by another library.
struct Row {
  const Function* function;
  std::string by;
  std::int64_t target;     // where the module computes it
  double (*peer)(double);  // else null
  Worst worst;
};

/// Powers of ten. Each number is both ends of a range of exponents that has one.
std::vector<double> powers_by_module(HostContext ctx, const std::vector<double>& x) {
  const EntryFunction xlogspace = test::Module::loaded().entry("xlogspace");
  std::vector<double> powers;
  for (const double exponent : x) {
    std::array<hvm::Value, 3> arguments = {hvm::Value(exponent), hvm::Value(exponent), hvm::Value(1)};
    hvm::Value result;
    xlogspace(ctx, arguments[0].address(), 3, result.address());
    powers.push_back(test::elements_of<XTDouble>(result).at(0));
  }
  return powers;
}

std::vector<double> by_module(HostContext ctx, const std::string& name, const std::vector<double>& x) {
  if (name == "xlogspace") return powers_by_module(ctx, x);
  hvm::Value argument = test::array_of<XTDouble>(ctx, {x.size()}, x);
  hvm::Value result;
  test::Module::loaded().entry(name)(ctx, argument.address(), 1, result.address());
  return test::elements_of<XTDouble>(result);
}

std::vector<double> values_of(HostContext ctx, const Row& row, const std::vector<double>& x) {
  if (row.peer != nullptr) {
    std::vector<double> values(x.size());
    std::transform(x.begin(), x.end(), values.begin(), row.peer);
    return values;
  }
  const test::OnTarget chosen(row.target);
  return by_module(ctx, row.function->name, x);
}

/// Of one function, or of all where the name is empty.
std::vector<Row> rows_of(const std::string& name, bool with_peers) {
  std::vector<Row> rows;
  for (const auto& function : functions()) {
    if (!name.empty() && name != function.name) continue;
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets())
      rows.push_back({&function, hwy::TargetName(target), target, nullptr, {}});
    if (!with_peers) continue;
    for (const Peer& peer : peers_of(function.name)) rows.push_back({&function, peer.library, 0, peer.function, {}});
  }
  return rows;
}

/// Measures all rows over `x`.
void measure(HostContext ctx, const std::vector<double>& x, std::vector<Row>& rows) {
  const Function* function = nullptr;
  std::vector<long double> exact(x.size());
  for (Row& row : rows) {
    if (row.function != function) std::transform(x.begin(), x.end(), exact.begin(), row.function->exact);
    function = row.function;
    const auto values = values_of(ctx, row, x);
    for (std::size_t i = 0; i < x.size(); ++i) row.worst.take(error_in_ulp(values[i], exact[i]), x[i]);
  }
}

/// Prints a line a row. False when the module passes a bound.
bool report(const std::vector<Row>& rows) {
  bool within = true;
  for (const auto& [function, by, target, peer, worst] : rows) {
    std::printf("%s %s %.4f %.17g\n", function->name, by.c_str(), worst.error, worst.argument);
    const double bound = test::fuses_products(target) ? function->bound.fused : function->bound.otherwise;
    if (peer != nullptr || bound == 0 || worst.error < bound) continue;
    std::fprintf(stderr, "%s passes its bound of %g on %s\n", function->name, bound, by.c_str());
    within = false;
  }
  return within;
}

bool measure_all(std::size_t count, std::vector<Row> rows) {
  test::Module::loaded();  // which brings the types of arrays
  hvm::Context context;
  for (unsigned batch = 0; batch * batch_size < count; ++batch)
    measure(context.handle(), arguments(std::min(batch_size, count - batch * batch_size), batch), rows);
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
  const std::vector<std::string> options(argv + std::min(argc, 2), argv + argc);
  const std::size_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 0;
  std::string of;
  bool with_peers = false, is_known = true;
  for (std::size_t i = 0; i < options.size(); ++i) {
    if (options[i] == "--arguments" && options.size() == 2 && i == 0 && count != 0)
      return write_arguments(count, options[1].c_str()) ? 0 : 1;
    if (options[i] == "--peers")
      with_peers = true;
    else if (options[i] == "--of" && i + 1 < options.size())
      of = options[++i];
    else
      is_known = false;
  }
  const auto rows = rows_of(of, with_peers);
  if (count == 0 || !is_known || rows.empty()) {
    std::fprintf(stderr, "usage: accuracy COUNT [--of FUNCTION] [--peers]\n       accuracy COUNT --arguments FILE\n");
    return 2;
  }
  return measure_all(count, rows) ? 0 : 1;
}
