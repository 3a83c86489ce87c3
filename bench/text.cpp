// bench/text.cpp: arrays as text

#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

const std::vector<int> text_sizes{10, 1'000, 100'000};

std::vector<Value> doubles(int n) { return {normal_doubles({static_cast<std::size_t>(n)})}; }
std::vector<Value> ints(int n) { return {small_ints({static_cast<std::size_t>(n)})}; }

}  // namespace

void add_text() {
  add_method("text/dump_reals", "dump", text_sizes, doubles);
  add_method("text/dump_ints", "dump", text_sizes, ints);
}

}  // namespace arrayfold::bench
