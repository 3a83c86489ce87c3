// accuracy/regression.cpp: the digits that xlstsq, and xqr with xsolve, reach on reference sets of linear regression
//
//     regression tests/data     one line a set: name, rows, columns, digits of the worst coefficient by xlstsq and by
//                               xqr with xsolve, digits of the residual standard deviation by xlstsq, or -
//
// It ends with 1 when a set has fewer digits than are asked for it, or another rank than its columns.

#include <fstream>
#include <sstream>

#include "certified.hpp"

namespace arrayfold::accuracy {
namespace {

/// A set, and the digits that are asked for: what was reached, less one for BLAS libraries that round in another order.
struct Asked {
  const char* name;
  double least_squares;
  double factors;
  double deviation;
};

constexpr Asked sets[] = {{"norris", 11, 11, 12},     {"pontius", 5, 11, 12},    {"noint1", 13.5, 13.5, 13.5},
                          {"noint2", 14, 14, 13.5},   {"filip", 4, 6, 7},        {"longley", 9.5, 9.5, 11},
                          {"wampler1", 8, 8, 0},      {"wampler2", 9, 12, 0},    {"wampler3", 8, 8, 13},
                          {"wampler4", 6.5, 6.5, 13}, {"wampler5", 4.5, 4.5, 13}};

// ---- Sets

struct Set {
  std::vector<double> coefficients;
  double deviation = 0;  // of the residuals, by rows less columns
  std::vector<double> rhs;
  std::vector<std::vector<double>> rows;  // of the design
};

std::vector<double> numbers_in(const std::string& text) {
  std::vector<double> numbers;
  std::istringstream words(text);
  for (std::string word; words >> word;) numbers.push_back(std::stod(word));
  return numbers;
}

/// Reads a file. Throws std::runtime_error when it is no set.
Set read_set(const std::string& path) {
  std::ifstream file(path);
  Set set;
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("# certified coefficients", 0) == 0) {
      set.coefficients = numbers_in(line.substr(line.rfind(':') + 1));
    } else if (line.rfind("# certified residual", 0) == 0) {
      set.deviation = certified(line);
    } else if (line.rfind('#', 0) != 0) {
      const auto numbers = numbers_in(line);
      set.rhs.push_back(numbers.at(0));
      set.rows.emplace_back(numbers.begin() + 1, numbers.end());
      if (set.rows.back().size() != set.coefficients.size()) throw std::runtime_error("a row too long in " + path);
    }
  }
  if (set.rows.size() < 2) throw std::runtime_error("no set in " + path);
  return set;
}

// ---- Results

std::vector<double> elements(const Value& array) { return test::elements_of<XTDouble>(array); }

Value value_at(const Value& table, int key) {
  const HostValue* value = hvm::find(hvm::table_of(table.record()), key);
  if (value == nullptr) throw std::runtime_error("a key is missing");
  return Value::sharing(*value);
}

Value design(const Set& set) {
  std::vector<Value> rows;
  for (const auto& row : set.rows) rows.push_back(Value::table_of({row.begin(), row.end()}));
  return doubles(Value::table_of(rows));
}

Value rhs(const Set& set) { return doubles(Value::table_of({set.rhs.begin(), set.rhs.end()})); }

struct Fit {
  std::vector<double> coefficients;
  double squares;  // of the residuals
  double rank;
};

Fit least_squares(const Set& set) {
  const Value fit = called("xlstsq", {design(set), rhs(set)});
  const auto squares = elements(value_at(fit, 1));
  return {elements(value_at(fit, 0)), squares.empty() ? NAN : squares[0], elements(value_at(fit, 2)).at(0)};
}

/// R x = y Q, which is Q transposed times y.
std::vector<double> by_factors(const Set& set) {
  const Value factors = called("xqr", {design(set)});
  const Value projected = called("xdot", {rhs(set), value_at(factors, 0)});
  return elements(called("xsolve", {value_at(factors, 1), projected}));
}

/// Those of the worst coefficient.
double digits_of_all(const std::vector<double>& found, const std::vector<double>& exact) {
  if (found.size() != exact.size()) throw std::runtime_error("another number of coefficients");
  double digits = most_digits;
  for (std::size_t i = 0; i < exact.size(); ++i) digits = std::min(digits, digits_of(found[i], exact[i]));
  return digits;
}

// ---- The report

/// Prints the line of a set. False when a result is not what it has to be.
bool report(const Asked& asked, const Set& set) {
  const Fit fit = least_squares(set);
  const std::size_t rows = set.rows.size(), columns = set.coefficients.size();
  const double fitted = digits_of_all(fit.coefficients, set.coefficients);
  const double factors = digits_of_all(by_factors(set), set.coefficients);
  std::printf("%s %zu %zu %.1f %.1f ", asked.name, rows, columns, fitted, factors);
  bool all_hold = holds(fit.rank == static_cast<double>(columns), asked.name, "the rank is not full");
  all_hold &= holds(fitted >= asked.least_squares, asked.name, "least squares have too few digits");
  all_hold &= holds(factors >= asked.factors, asked.name, "the solution by factors has too few digits");
  if (set.deviation == 0) {
    std::printf("-\n");
    return all_hold;
  }
  const double deviation = digits_of(std::sqrt(fit.squares / static_cast<double>(rows - columns)), set.deviation);
  std::printf("%.1f\n", deviation);
  return all_hold & holds(deviation >= asked.deviation, asked.name, "the deviation has too few digits");
}

}  // namespace
}  // namespace arrayfold::accuracy

int main(int argc, char** argv) try {
  using namespace arrayfold::accuracy;
  if (argc != 2) {
    std::fprintf(stderr, "usage: regression DIRECTORY\n");
    return 2;
  }
  bool all_hold = true;
  for (const Asked& asked : sets) all_hold &= report(asked, read_set(std::string(argv[1]) + "/" + asked.name + ".dat"));
  return all_hold ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "regression: %s\n", error.what());
  return 1;
}
