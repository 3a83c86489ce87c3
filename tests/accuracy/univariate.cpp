// accuracy/univariate.cpp: the digits that xmean and xstddev reach on reference sets, through the C interface
//
//     univariate tests/data     one line a set: name, elements, digits of the mean and of the standard deviation
//
// It ends with 1 when a result is not bit for bit what the promised order of operations gives, or has fewer digits than
// the error analysis of that order allows.

#include <fstream>
#include <limits>

#include "certified.hpp"

namespace arrayfold::accuracy {
namespace {

constexpr const char* sets[] = {"lew",     "lottery", "mavro",   "michelson", "pidigits",
                                "numacc1", "numacc2", "numacc3", "numacc4"};

// ---- Sets

struct Set {
  double mean = 0;
  double deviation = 0;  // by n - 1
  std::vector<double> numbers;
};

/// Reads a file. Throws std::runtime_error when it is no set.
Set read_set(const std::string& path) {
  std::ifstream file(path);
  Set set;
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("# certified mean", 0) == 0)
      set.mean = certified(line);
    else if (line.rfind("# certified standard deviation", 0) == 0)
      set.deviation = certified(line);
    else if (line.rfind('#', 0) != 0)
      set.numbers.push_back(std::stod(line));
  }
  if (set.numbers.size() < 2 || set.mean == 0 || set.deviation == 0) throw std::runtime_error("no set in " + path);
  return set;
}

// ---- Results

struct Moments {
  double mean;
  double deviation;  // by n, as xstddev divides
};

Moments by_module(const std::vector<double>& numbers) {
  const Value array = doubles(Value::table_of({numbers.begin(), numbers.end()}));
  return {HVM_AsDouble(called("xmean", {array}).address()), HVM_AsDouble(called("xstddev", {array}).address())};
}

/// Two passes, each strictly from left to right.
Moments in_order(const std::vector<double>& numbers) {
  const auto count = static_cast<double>(numbers.size());
  double sum = 0;
  for (const double x : numbers) sum += x;
  const double mean = sum / count;
  double squares = 0;
  for (const double x : numbers) squares += (x - mean) * (x - mean);
  return {mean, std::sqrt(squares / count)};
}

// ---- Digits

/// Half a unit in the last of the certified digits, as a share of the value.
double certified_error(double exact) {
  const double magnitude = std::abs(exact);
  return 0.5 * std::pow(10, std::floor(std::log10(magnitude)) - (most_digits - 1)) / magnitude;
}

/// The largest relative errors that the order of operations allows.
struct Allowed {
  double mean;
  double deviation;
};

/// Every sum of n terms loses up to n - 1 roundings of the sum of their magnitudes. The numbers themselves are rounded
/// from decimal ones, which weighs as much more as they are larger than what they vary by. An error of the mean adds
/// its square to the mean square; the root halves relative errors.
Allowed allowed_errors(const Set& set) {
  constexpr double rounding = std::numeric_limits<double>::epsilon() / 2;
  const auto count = static_cast<double>(set.numbers.size());
  double magnitudes = 0, squares = 0;
  for (const double x : set.numbers) magnitudes += std::abs(x), squares += x * x;
  const double mean_error = (count + 2) * rounding * magnitudes / count;
  const double size_to_spread = std::sqrt(squares / (count - 1)) / set.deviation;
  const double mean_to_spread = mean_error / set.deviation;
  const double variance =
      (count + 4) * rounding + 2 * rounding * size_to_spread + mean_to_spread * mean_to_spread * count / (count - 1);
  return {mean_error / std::abs(set.mean) + certified_error(set.mean),
          variance / 2 + 5 * rounding + certified_error(set.deviation)};
}

// ---- The report

/// Prints the line of a set. False when a result is not what it has to be.
bool report(const char* name, const Set& set) {
  const Moments found = by_module(set.numbers), expected = in_order(set.numbers);
  const auto count = static_cast<double>(set.numbers.size());
  const double mean = digits_of(found.mean, set.mean);
  const double deviation = digits_of(found.deviation * std::sqrt(count / (count - 1)), set.deviation);
  const Allowed allowed = allowed_errors(set);
  const double least_mean = digits_at(allowed.mean), least_deviation = digits_at(allowed.deviation);
  std::printf("%s %zu %.1f %.1f %.1f %.1f\n", name, set.numbers.size(), mean, least_mean, deviation, least_deviation);
  bool all_hold = holds(found.mean == expected.mean, name, "the mean is not the one of the order");
  all_hold &= holds(found.deviation == expected.deviation, name, "the deviation is not the one of the order");
  all_hold &= holds(mean >= least_mean, name, "the mean has too few digits");
  all_hold &= holds(deviation >= least_deviation, name, "the deviation has too few digits");
  return all_hold;
}

}  // namespace
}  // namespace arrayfold::accuracy

int main(int argc, char** argv) try {
  using namespace arrayfold::accuracy;
  if (argc != 2) {
    std::fprintf(stderr, "usage: univariate DIRECTORY\n");
    return 2;
  }
  bool all_hold = true;
  for (const char* name : sets) all_hold &= report(name, read_set(std::string(argv[1]) + "/" + name + ".dat"));
  return all_hold ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "univariate: %s\n", error.what());
  return 1;
}
