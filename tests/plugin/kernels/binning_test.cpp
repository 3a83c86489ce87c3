// kernels/binning_test.cpp: elements counted in bins or placed among edges, on every target, against their formulas

#include "kernels/binning.hpp"

#include <algorithm>
#include <limits>

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

// ---- Bins

std::size_t expected_bin(double x, const EqualBins& bins) {
  if (!(x >= bins.low && x <= bins.high)) return bins.count;
  const double count = static_cast<double>(bins.count);
  const double place = (x - bins.low) * count * (1.0 / (bins.high - bins.low));
  if (x == bins.high || !(place < count - 1.0)) return place > 0.0 || x == bins.high ? bins.count - 1 : 0;
  return place > 0.0 ? static_cast<std::size_t>(place) : 0;
}

template <class T>
void expect_counts(const EqualBins& bins) {
  for (const std::size_t length : lengths()) {
    SCOPED_TRACE(testing::Message() << length << " elements in " << bins.count << " bins from " << bins.low << " to "
                                    << bins.high);
    auto values = mixed_values<T>(length, static_cast<unsigned>(length));
    if (length > 2) values[0] = static_cast<T>(bins.low), values[length - 1] = static_cast<T>(bins.high);
    std::vector<std::int64_t> expected(bins.count + 1, 5);
    for (const T x : values) expected[expected_bin(static_cast<double>(x), bins)] += 3;
    Memory<T> row(values, 1);
    Memory<std::int64_t> counts(std::vector<std::int64_t>(bins.count + 1, 5), 1);
    count_by_bin(row.data(), length, bins, 3, counts.data());
    EXPECT_TRUE(same_bits(counts.values(), expected));
    EXPECT_TRUE(counts.is_intact());
  }
}

TEST(CountByBin, OfEveryLength_AddsToTheBinOfTheFormula) {
  on_each_target([] {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const EqualBins& bins : {EqualBins{-1000, 1000, 10}, EqualBins{-0.5, 100, 1}, EqualBins{-1, 1, 7},
                                  EqualBins{2, 2, 3}, EqualBins{-infinity, infinity, 4}}) {
      expect_counts<double>(bins);
      expect_counts<float>(bins);
    }
  });
}

// ---- Places among edges

template <class T, class Edge>
void expect_places(Placing<T, Edge> place, std::size_t edge_count, const std::vector<std::size_t>& sizes) {
  auto edges = mixed_values<Edge>(edge_count, 3);
  for (Edge& edge : edges)
    if (edge != edge) edge = 0;
  std::sort(edges.begin(), edges.end());
  Memory<Edge> edge_row(edges, 1);
  for (const std::size_t length : sizes) {
    SCOPED_TRACE(testing::Message() << length << " elements among " << edge_count << " edges");
    auto values = mixed_values<T>(length, static_cast<unsigned>(length));
    for (std::size_t i = 0; i < length; i += 5) values[i] = static_cast<T>(edges[i % edge_count]);
    std::vector<double> expected;
    for (const T x : values)
      expected.push_back(static_cast<double>(std::upper_bound(edges.begin(), edges.end(), x) - edges.begin()));
    Memory<T> row(values, 1);
    Memory<double> places(length, 1);
    place(row.data(), length, edge_row.data(), edge_count, places.data());
    EXPECT_TRUE(same_bits(places.values(), expected));
    EXPECT_TRUE(places.is_intact());
  }
}

template <class Edge>
void expect_places_among(std::size_t edge_count, const std::vector<std::size_t>& sizes) {
  expect_places<double, Edge>(placings<Edge>().doubles, edge_count, sizes);
  expect_places<float, Edge>(placings<Edge>().floats, edge_count, sizes);
}

/// Every length among few edges and among many, and some lengths among other numbers of edges.
template <class Edge>
void expect_places_among() {
  for (const std::size_t edge_count : {10u, 100u}) expect_places_among<Edge>(edge_count, lengths());
  for (const std::size_t edge_count : {1u, 2u, 32u, 33u, 1023u})
    expect_places_among<Edge>(edge_count, {1, 7, 63, 64, 65, 130});
}

TEST(Placings, OfEveryLength_CountTheEdgesUpToTheElement) {
  on_each_target([] {
    expect_places_among<double>();
    expect_places_among<float>();
    expect_places_among<std::int32_t>();
    expect_places_among<std::int64_t>();
  });
}

}  // namespace
}  // namespace arrayfold::test
