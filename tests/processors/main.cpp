// processors/main.cpp: the program processor_digest
//
//     processor_digest             prints a line for each function, method and operator: its digest and its name
//     processor_digest TARGET      the same with the loops of one of Highway's targets
//     processor_digest --targets   prints the targets that this processor has, the best one first
//
// The same lines come from every processor and every target, but for lines that end in ", fused products": these come
// from those that fuse products with sums. A function that is neither called nor left out for a reason is an error.
// Exit status: 0; 1 for that error, or a target that the processor does not have.

#include <hwy/targets.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>

#include "processors/digest.hpp"
#include "support/functions.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

/// Makes all loops on Highway in this process use one target.
void use_target(const char* name) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets())
    if (std::strcmp(hwy::TargetName(target), name) == 0) return choose_among(target);
  throw std::invalid_argument(std::string("this processor does not have the target ") + name);
}

void expect_every_function(const std::vector<NamedDigest>& digests) {
  std::vector<std::string> known;
  for (const NamedDigest& named : digests) known.push_back(named.name);
  for (const LeftOut& function : functions_left_out()) known.emplace_back(function.name);
  if (!fuses_products())
    known.insert(known.end(), functions_of_fused_products().begin(), functions_of_fused_products().end());
  for (const FunctionRecord& function : all_functions())
    if (!contains(known, function.name))
      throw std::logic_error(std::string("no digest calls ") + function.name + ", and nothing says why");
}

void print_digests() {
  DigestedCalls calls;
  call_functions(calls);
  call_methods_and_operators(calls);
  expect_every_function(calls.digests());
  for (const auto& [name, digest] : calls.digests())
    std::printf("%016llx %s%s\n", static_cast<unsigned long long>(digest.bits()), name.c_str(),
                contains(functions_of_fused_products(), name) ? ", fused products" : "");
}

void run(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--targets") == 0) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) std::printf("%s\n", hwy::TargetName(target));
    return;
  }
  Module::loaded();
  if (argc == 2) use_target(argv[1]);
  print_digests();
}

}  // namespace
}  // namespace arrayfold::test

int main(int argc, char** argv) {
  try {
    arrayfold::test::run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "processor_digest: %s\n", error.what());
    return 1;
  }
}
