// bench/limits.cpp: what sets the time of cases that cannot be faster
//
// Each case is a bare loop, a bare function of a library, or the operations of the host alone: the work that is
// required of a function of the module, without the module. Operands and memory are those of the function's own case.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "array/boxing.hpp"
#include "array/storage.hpp"
#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

// Compiled for several processors; which one is chosen when the program starts.
#ifdef __x86_64__
#define FOR_EACH_PROCESSOR __attribute__((target_clones("default", "avx2", "arch=x86-64-v4")))
#else
#define FOR_EACH_PROCESSOR
#endif

extern "C" void dsyevd_(const char* job, const char* triangle, const int* n, double* matrix, const int* step,
                        double* values, double* work, const int* size, int* int_work, const int* int_size, int* info,
                        std::size_t, std::size_t);
extern "C" double dnrm2_(const int* n, const double* elements, const int* step);

namespace arrayfold::bench {
namespace {

const std::vector<int> sizes{100'000, 10'000'000};

std::vector<std::size_t> extent(int n) { return {static_cast<std::size_t>(n)}; }
std::vector<Value> doubles(int n) { return {normal_doubles(extent(n)), normal_doubles(extent(n), 2)}; }
std::vector<Value> ints(int n) { return {small_ints(extent(n)), small_ints(extent(n), 2)}; }
std::vector<Value> matrix(int n) { return {dominant_square(static_cast<std::size_t>(n))}; }
std::vector<Value> count(int n) { return {Value(n)}; }

template <class Kind>
auto& elements_of(const Value& value) {
  return unbox_array<Kind>(hvm::object_of(value.record()))->array->storage();
}

/// Times `loop(first, second, out, count)` over the elements of two arrays, with new memory for each result.
template <class Kind, class R>
void add_loop(const std::string& name, const RecordsOf& operands_of,
              void (*loop)(const typename Kind::element*, const typename Kind::element*, R*, std::size_t)) {
  add_case("limits/" + name, sizes, operands_of, [loop](benchmark::State& state, std::vector<Value>& operands) {
    const auto& first = elements_of<Kind>(operands.at(0));
    const auto& second = elements_of<Kind>(operands.at(1));
    for (auto _ : state) {
      void* out = allocate_storage(first.size(), sizeof(R), Contents::anything);
      loop(first.data(), second.data(), static_cast<R*>(out), first.size());
      benchmark::DoNotOptimize(out);
      benchmark::ClobberMemory();
      release_storage(out);
    }
  });
}

FOR_EACH_PROCESSOR void square_ints(const std::int32_t* __restrict in, const std::int32_t*, double* __restrict out,
                                    std::size_t size) {
  for (std::size_t i = 0; i < size; ++i)
    out[i] = static_cast<std::int32_t>(static_cast<std::uint32_t>(in[i]) * static_cast<std::uint32_t>(in[i]));
}
FOR_EACH_PROCESSOR void smaller_ints(const std::int32_t* __restrict a, const std::int32_t* __restrict b,
                                     double* __restrict out, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const std::int32_t smaller = a[i] < b[i] ? a[i] : b[i];
    out[i] = smaller;
  }
}
FOR_EACH_PROCESSOR void mark_nan(const double* __restrict in, const double*, double* __restrict out, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) out[i] = in[i] != in[i] ? 1.0 : 0.0;
}
FOR_EACH_PROCESSOR void write_doubles(const std::int32_t*, const std::int32_t*, double* __restrict out,
                                      std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) out[i] = 1.0;
}
FOR_EACH_PROCESSOR void add_ints(const std::int32_t* __restrict a, const std::int32_t* __restrict b,
                                 std::int32_t* __restrict out, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) out[i] = a[i] + b[i];
}
FOR_EACH_PROCESSOR void divide(const double* __restrict a, const double* __restrict b, double* __restrict out,
                               std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) out[i] = a[i] / b[i];
}
FOR_EACH_PROCESSOR void compare(const double* __restrict a, const double* __restrict b, bool* __restrict out,
                                std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) out[i] = a[i] < b[i];
}
FOR_EACH_PROCESSOR void compare_ints(const std::int32_t* __restrict a, const std::int32_t* __restrict b,
                                     bool* __restrict out, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) out[i] = a[i] < b[i];
}

FOR_EACH_PROCESSOR void add_in_place(double* __restrict a, const double* __restrict b, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) a[i] += b[i];
}
/// Any operation without an order reads as fast.
FOR_EACH_PROCESSOR std::uint64_t read_all(const std::uint64_t* words, std::size_t size) {
  std::uint64_t all = 0;
  for (std::size_t i = 0; i < size; ++i) all |= words[i];
  return all;
}
double add_in_order(const double* in, std::size_t size) {
  double sum = 0;
  for (std::size_t i = 0; i < size; ++i) sum += in[i];
  return sum;
}
/// The sum of squares in eight chains, each of which adds those of one row of eight from left to right.
FOR_EACH_PROCESSOR double add_squares_of_eight_rows(const double* __restrict in, std::size_t length) {
  double sums[8] = {};
  for (std::size_t i = 0; i < length; ++i)
    for (std::size_t row = 0; row < 8; ++row) sums[row] += in[row * length + i] * in[row * length + i];
  double sum = 0;
  for (const double of_row : sums) sum += of_row;
  return sum;
}

/// A square matrix in the records of a case.
struct SquareMatrix {
  const double* elements;
  std::size_t extent;

  explicit SquareMatrix(std::vector<Value>& records) {
    const auto& storage = elements_of<XTDouble>(records.at(0));
    elements = storage.data();
    extent = static_cast<std::size_t>(std::lround(std::sqrt(static_cast<double>(storage.size()))));
  }
};

void time_in_place(benchmark::State& state, std::vector<Value>& operands) {
  auto& changed = elements_of<XTDouble>(operands.at(0));
  const auto& added = elements_of<XTDouble>(operands.at(1));
  for (auto _ : state) {
    add_in_place(changed.data(), added.data(), changed.size());
    benchmark::ClobberMemory();
  }
}
void time_reading(benchmark::State& state, std::vector<Value>& operands) {
  const auto& elements = elements_of<XTDouble>(operands.at(0));
  const void* words = elements.data();
  for (auto _ : state) benchmark::DoNotOptimize(read_all(static_cast<const std::uint64_t*>(words), elements.size()));
}
void time_sum_in_order(benchmark::State& state, std::vector<Value>& operands) {
  const auto& elements = elements_of<XTDouble>(operands.at(0));
  for (auto _ : state) benchmark::DoNotOptimize(add_in_order(elements.data(), elements.size()));
}

/// Two sums, of which the second one needs the first.
void time_two_sums_in_order(benchmark::State& state, std::vector<Value>& operands) {
  const auto& elements = elements_of<XTDouble>(operands.at(0));
  for (auto _ : state) {
    const double mean = add_in_order(elements.data(), elements.size()) / static_cast<double>(elements.size());
    double sum = 0;
    for (const double element : elements) sum += (element - mean) * (element - mean);
    benchmark::DoNotOptimize(sum);
  }
}
void time_squares_by_rows(benchmark::State& state, std::vector<Value>& records) {
  const SquareMatrix matrix(records);
  for (auto _ : state) {
    double sum = 0;
    for (std::size_t row = 0; row < matrix.extent; row += 8)
      sum += add_squares_of_eight_rows(matrix.elements + row * matrix.extent, matrix.extent);
    benchmark::DoNotOptimize(sum);
  }
}
void time_euclidean_norm(benchmark::State& state, std::vector<Value>& operands) {
  const auto& elements = elements_of<XTDouble>(operands.at(0));
  const int size = static_cast<int>(elements.size()), step = 1;
  for (auto _ : state) benchmark::DoNotOptimize(dnrm2_(&size, elements.data(), &step));
}

/// The blocks of a new array of ten doubles: the host's record, the object, the array, its container, the elements.
void time_five_blocks(benchmark::State& state, std::vector<Value>&) {
  constexpr std::size_t block_sizes[] = {48, 16, 40, 256, 144};
  for (auto _ : state) {
    void* blocks[5];
    for (std::size_t i = 0; i < 5; ++i) blocks[i] = ::operator new(block_sizes[i]);
    benchmark::DoNotOptimize(blocks);
    benchmark::ClobberMemory();
    for (void* block : blocks) ::operator delete(block);
  }
}

/// The operations of the host that make and release a table of two integers.
void time_table_of_two(benchmark::State& state, std::vector<Value>&) {
  const HostContext ctx = context();
  for (auto _ : state) {
    HostValue result = hvm::nil_record();
    HVM_ForceTable(ctx, &result, 2);
    auto* table = load<HostHash*>(result.payload);
    for (int key : {0, 1}) HVM_SetInt64(ctx, HVM_HashSetInt(ctx, table, key), 5);
    hvm::release(result);
  }
}

/// LAPACK's eigenvalues of a symmetric matrix, with the copy that it overwrites.
void time_symmetric_eigenvalues(benchmark::State& state, std::vector<Value>& records) {
  const SquareMatrix matrix(records);
  const int n = static_cast<int>(matrix.extent);
  std::vector<double> copy(matrix.extent * matrix.extent), values(matrix.extent);
  double wanted = 0;
  int wanted_ints = 0, info = 0;
  const int ask = -1;
  dsyevd_("N", "L", &n, copy.data(), &n, values.data(), &wanted, &ask, &wanted_ints, &ask, &info, 1, 1);
  std::vector<double> work(static_cast<std::size_t>(wanted));
  std::vector<int> int_work(static_cast<std::size_t>(wanted_ints));
  const int size = static_cast<int>(work.size()), int_size = static_cast<int>(int_work.size());
  for (auto _ : state) {
    for (int column = 0; column < n; ++column)
      for (int row = 0; row < n; ++row)
        copy[static_cast<std::size_t>(column * n + row)] = matrix.elements[static_cast<std::size_t>(row * n + column)];
    dsyevd_("N", "L", &n, copy.data(), &n, values.data(), work.data(), &size, int_work.data(), &int_size, &info, 1, 1);
  }
  if (info != 0) state.SkipWithError("LAPACK found no eigenvalues");
}

}  // namespace

void add_limits() {
  add_loop<XTInt>("square_ints", ints, &square_ints);
  add_loop<XTInt>("smaller_ints", ints, &smaller_ints);
  add_loop<XTDouble>("mark_nan", doubles, &mark_nan);
  add_loop<XTInt>("write_doubles", ints, &write_doubles);
  add_loop<XTInt>("add_ints", ints, &add_ints);
  add_loop<XTDouble>("divide", doubles, &divide);
  add_loop<XTDouble>("compare", doubles, &compare);
  add_loop<XTInt>("compare_ints", ints, &compare_ints);
  add_case("limits/add_in_place", sizes, doubles, time_in_place);
  add_case("limits/read", sizes, doubles, time_reading);
  add_case("limits/add_in_order", sizes, doubles, time_sum_in_order);
  add_case("limits/two_sums_in_order", {100'000}, doubles, time_two_sums_in_order);
  add_case("limits/squares_by_rows", {256, 1'024}, matrix, time_squares_by_rows);
  add_case("limits/euclidean_norm", sizes, doubles, time_euclidean_norm);
  add_case("limits/five_blocks", {10}, count, time_five_blocks);
  add_case("limits/table_of_two", {10}, count, time_table_of_two);
  add_case("limits/symmetric_eigenvalues", {256}, matrix, time_symmetric_eigenvalues);
}

}  // namespace arrayfold::bench
