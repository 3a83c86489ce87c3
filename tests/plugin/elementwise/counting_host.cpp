// elementwise/counting_host.cpp: a host's interpreter library whose two functions count and give what is easy to know

#include <cstddef>

extern "C" {
double erf(double x) noexcept;
double lgamma(double x) noexcept;
std::size_t erf_calls() noexcept;
std::size_t lgamma_calls() noexcept;
}

namespace {
std::size_t erfs = 0;
std::size_t lgammas = 0;
}  // namespace

double erf(double x) noexcept { return ++erfs, 1000 + x; }
double lgamma(double x) noexcept { return ++lgammas, 2000 + x; }
std::size_t erf_calls() noexcept { return erfs; }
std::size_t lgamma_calls() noexcept { return lgammas; }
