// accuracy/arguments.cpp: the distributions that arguments are drawn from

#include "arguments.hpp"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>

namespace arrayfold::accuracy {
namespace {

using Engine = std::mt19937_64;

double uniform(Engine& engine, double low, double high) { return std::uniform_real_distribution(low, high)(engine); }
double signed_by_chance(Engine& engine, double x) { return engine() & 1 ? -x : x; }

/// `x` or one of the eight doubles on either side.
double neighbour(Engine& engine, double x) {
  const auto steps = static_cast<int>(engine() % 17) - 8;
  const double end = std::copysign(std::numeric_limits<double>::infinity(), steps);
  for (int step = 0; step < std::abs(steps); ++step) x = std::nextafter(x, end);
  return x;
}

double any_bits(Engine& engine) {
  for (;;) {
    const std::uint64_t bits = engine();
    double x;
    std::memcpy(&x, &bits, sizeof x);
    if (std::isfinite(x)) return x;
  }
}

double magnitude(Engine& engine) { return signed_by_chance(engine, std::exp2(uniform(engine, -60, 60))); }
double tiny(Engine& engine) { return signed_by_chance(engine, std::exp2(uniform(engine, -1074, -960))); }

double spread(Engine& engine) {
  const double widths[] = {1, 2, 10, 100, 750, 1e4, 1e6};
  const double width = widths[engine() % 7];
  return uniform(engine, -width, width);
}

/// Multiples up to 2^10 mostly, some up to 2^40: next to them sine, cosine and tangent vanish or have their poles.
double near_quarter_turn(Engine& engine) {
  const double multiple = std::floor(std::exp2(uniform(engine, 0, engine() % 4 == 0 ? 40 : 10)));
  return neighbour(engine, signed_by_chance(engine, static_cast<double>(multiple * 1.5707963267948966192313L)));
}

double near_one(Engine& engine) { return 1 + signed_by_chance(engine, std::exp2(uniform(engine, -53, 0))); }

/// Integers and halves up to 200, exactly or nearly.
double near_half(Engine& engine) {
  const double half = std::floor(uniform(engine, -400, 400)) / 2;
  return engine() & 1 ? neighbour(engine, half) : half + uniform(engine, -1e-6, 1e-6);
}

double near_end(Engine& engine) {
  const double ends[] = {709.782712893384,
                         710.4758600739439,
                         -745.1332191019411,
                         -708.3964185322641,
                         -36.7368005696771,
                         171.6243769563027,
                         -1,
                         20,
                         22,
                         36,
                         37,
                         700,
                         708,
                         1e5,
                         19.06154746539849,
                         5.921587195794507,
                         26.543,
                         0x1p52,
                         0x1p53,
                         0x1p1023};
  const double end = ends[engine() % std::size(ends)];
  return engine() & 1 ? neighbour(engine, end) : end * (1 + uniform(engine, -0.01, 0.0099));
}

/// The ends of the pieces of tables: steps of ln(2)/16 and half of them for exponentials, sixteenths of the fraction
/// for logarithms and roots.
double near_border(Engine& engine) {
  if (engine() & 1) {
    const double multiple = std::floor(uniform(engine, 0, engine() % 4 == 0 ? 34'500 : 200));
    const double step = static_cast<double>(0.69314718055994530942L / 64 * multiple);
    return neighbour(engine, signed_by_chance(engine, step)) * (engine() % 4 == 0 ? uniform(engine, 0.999, 1.001) : 1);
  }
  const double exponent = std::floor(engine() & 1 ? uniform(engine, -1074, 1024) : uniform(engine, -2, 3));
  const double fraction = std::floor(uniform(engine, 32, 64)) / 32;
  return neighbour(engine, signed_by_chance(engine, std::exp2(exponent) * fraction));
}

}  // namespace

std::vector<double> arguments(std::size_t count, unsigned batch) {
  Engine engine(batch);
  double (*const draws[])(Engine&) = {any_bits, magnitude, tiny,     spread,     near_quarter_turn,
                                      near_one, near_half, near_end, near_border};
  std::vector<double> drawn(count);
  for (std::size_t i = 0; i < count; ++i) drawn[i] = draws[i % std::size(draws)](engine);
  return drawn;
}

}  // namespace arrayfold::accuracy
