// kernels/vector_math_tables.hpp: constants of the mathematical functions, written by make_tables.py

#pragma once

#include <cstdint>

namespace arrayfold::constants {

// Exponentials: x = n * step + r with |r| <= step / 2, and e^x is the power 2^(n/16) times e^r.
constexpr double steps_per_unit = 0x1.71547652b82fep+4;
constexpr double step_high = 0x1.62e42fefa0000p-5;
constexpr double step_low = 0x1.cf79abc9e3b3ap-44;

// Powers of ten: x = n * step + r in the same way, and 10^r is e^t, where t = r * ln 10.
constexpr double steps_per_decade = 0x1.a934f0979a371p+5;
constexpr double step_of_ten_high = 0x1.3441350a00000p-6;
constexpr double step_of_ten_low = -0x1.0c0219dc1da99p-43;
constexpr double ln10_high = 0x1.26bb1bbb55516p+1;
constexpr double ln10_low = -0x1.f48ad494ea3e9p-53;

// The bits of 2^(i/16) without i in the upper ones: n, shifted there, adds its exponent. Then how much larger the power
// is than the double, as a share of it.
alignas(64) constexpr std::uint64_t power_bits[16] = {
    0x3ff0000000000000, 0x3fefb5586cf9890f, 0x3fef72b83c7d517b, 0x3fef387a6e756238,
    0x3fef06fe0a31b715, 0x3feedea64c123422, 0x3feebfdad5362a27, 0x3feeab07dd485429,
    0x3feea09e667f3bcd, 0x3feea11473eb0187, 0x3feeace5422aa0db, 0x3feec49182a3f090,
    0x3feee89f995ad3ad, 0x3fef199bdd85529c, 0x3fef5818dcfba487, 0x3fefa4afa2a490da};
alignas(64) constexpr double power_tails[16] = {
    0, 0x1.79aa65d837b6dp-54, -0x1.01b15eaa59348p-55, 0x1.68efde3a8a894p-54,
    0x1.34d754db0abb6p-55, 0x1.59f48a72a4c6dp-55, 0x1.690cebb7aafb0p-56, 0x1.063e1e21c5409p-54,
    -0x1.3b3efbf5e2228p-54, -0x1.b32dcb94da51dp-56, 0x1.db72fc1f0eab4p-55, 0x1.1affc2b91ce27p-56,
    0x1.c1a7792cb3387p-55, 0x1.36eae30af0cb3p-56, 0x1.4a385a63d07a7p-56, -0x1.ff7128fd391f0p-55};

// (e^r - 1 - r) / r^2
alignas(64) constexpr double exponential[6] = {
    0x1.0000000000001p-1, 0x1.5555555555556p-3, 0x1.55555554e93b7p-5, 0x1.11111110e1059p-7,
    0x1.6c17ed5c1f49ep-10, 0x1.a01b0c3c80bbcp-13};

// (cosh r - 1) / r^2 and (sinh r - r) / r^3, in powers of r^2
alignas(64) constexpr double cosine_h[3] = {
    0x1.0000000000004p-1, 0x1.555555547f586p-5, 0x1.6c1841842e744p-10};
alignas(64) constexpr double sine_h[3] = {
    0x1.5555555555557p-3, 0x1.11111110b1f60p-7, 0x1.a01b570abd49bp-13};

// Logarithms: x = 2^k * z, where z lies in one of 16 cells, and z * inverse = 1 + r. The bits of x with this sum have
// the exponent, k + 1021, above bit 52 and the cell in the four bits below. The cell of 1 is the first.
constexpr std::uint64_t to_cells = 0xffe0800000000000;

// The bits of the inverse, from which those above bit 48 are subtracted.
alignas(64) constexpr std::uint64_t cell_inverses[16] = {
    0x7fc0000000000000, 0x7fbf000000000000, 0x7fbe800000000000, 0x7fbdf20000000000,
    0x7fbd9a0000000000, 0x7fbd620000000000, 0x7fbd460000000000, 0x7fbd420000000000,
    0x7fbd560000000000, 0x7fbd7a0000000000, 0x7fbdb20000000000, 0x7fbdf60000000000,
    0x7fbe4a0000000000, 0x7fbe800000000000, 0x7fbf000000000000, 0x7fbf800000000000};

// -ln(inverse) less the multiples of ln 2 that come with the cell and the bias, in two parts as ln 2.
alignas(64) constexpr double cell_logs[16] = {
    -0x1.09e8992abb120p+11, -0x1.09e7eb5bd44dep+11, -0x1.09e7aa0e2e80bp+11, -0x1.09e7416b2d26fp+11,
    -0x1.09e7013d87e9ep+11, -0x1.09e6d491535a5p+11, -0x1.09e6b9fdf9619p+11, -0x1.09e6af5c0a316p+11,
    -0x1.09e6b7ba402f5p+11, -0x1.09e6c9d47f212p+11, -0x1.09e6ee0ce456ep+11, -0x1.09e719a5e328ap+11,
    -0x1.09e754fd92dd8p+11, -0x1.09e74e987c9f9p+11, -0x1.09e7c4056733ap+11, -0x1.09e8325b6395ep+11};
alignas(64) constexpr double cell_log_tails[16] = {
    -0x1.5b445a0732260p-28, -0x1.5b42891853b00p-28, -0x1.5b4b8ed5893b2p-28, -0x1.5b4cb346b835ap-28,
    -0x1.5b49a909b1f4ap-28, -0x1.5b4e7e878cb72p-28, -0x1.5b4fb0ec60ad8p-28, -0x1.5b4dd44d2535ep-28,
    -0x1.5b4f6d428f15ep-28, -0x1.5b526153bc40cp-28, -0x1.5b598e542b1f0p-28, -0x1.5b5bdd6b6d5f5p-28,
    -0x1.5b5daa585595ap-28, -0x1.5b5da053ed11cp-28, -0x1.5b5bd046e6785p-28, -0x1.5b63568eba3fdp-28};
constexpr double ln2_high = 0x1.62e42fefa0000p-1;
constexpr double ln2_low = 0x1.cf79abc9e0000p-40;

// (ln(1 + r) - r) / r^2
alignas(64) constexpr double logarithm[9] = {
    -0x1.0000000000000p-1, 0x1.5555555555514p-2, -0x1.fffffffffebdfp-3, 0x1.9999999b3299fp-3,
    -0x1.5555557299403p-3, 0x1.24923363f9d74p-3, -0x1.fffe504ce70fcp-4, 0x1.c7f89706f50ebp-4,
    -0x1.9db1ae19e62efp-4};

// Cube roots: (1 + r)^(-1/3) in the same cells, and the cube roots of the inverses. 2^(-e/3) is a parabola in e for e =
// -1, 0, 1.
alignas(64) constexpr double cube_root_inverses[16] = {
    0x1.0000000000000p+0, 0x1.f51a62037e955p-1, 0x1.ec9baf60b9f80p-1, 0x1.e37b99d747b6bp-1,
    0x1.db4ef118b9e31p-1, 0x1.d3a4a4d1b54f1p-1, 0x1.cc70c2014c3d9p-1, 0x1.c5a495c6ff87bp-1,
    0x1.bf4a98fb0373ep-1, 0x1.b9341afea48fdp-1, 0x1.b384fd342c2efp-1, 0x1.ae09a94d9e262p-1,
    0x1.a8e5a95ddd298p-1, 0x1.a2b24d04a7586p-1, 0x1.9eab99791c790p-1, 0x1.9a907c24108e7p-1};
alignas(64) constexpr double inverse_cube_root[5] = {
    0x1.000000002d413p+0, -0x1.5555528737ff9p-2, 0x1.c71c2ce1c497bp-3, -0x1.624e3b80f2514p-3,
    0x1.28872ee181d9bp-3};
alignas(64) constexpr double third_power[3] = {
    0x1.0000000000000p+0, -0x1.dd68e9bbaedb3p-3, 0x1.b744985853524p-6};

// Circles: x = n * pi/2 + r with |r| <= pi/4.
constexpr double quarters_per_unit = 0x1.45f306dc9c883p-1;
constexpr double quarter_first = 0x1.921fb54442d18p+0;
constexpr double quarter_second = 0x1.1a62633140000p-54;
constexpr double quarter_third = 0x1.701b839a25205p-92;

// (sin r - r) / r^3, in powers of r^2
alignas(64) constexpr double sine[6] = {
    -0x1.5555555555549p-3, 0x1.111111110f877p-7, -0x1.a01a019c11285p-13, 0x1.71de35775aa1ap-19,
    -0x1.ae5e65f69cb37p-26, 0x1.5d92ee4ed54dfp-33};

// tan r is r * p / q. The polynomials p and q begin with 1, and are in powers of r^2: here are the other coefficients,
// of q in two parts.
alignas(64) constexpr double tangent_dividend[3] = {
    -0x1.112ac9fa3e6edp-3, 0x1.c0e3aa50a03e6p-9, -0x1.2ba1ccf3b572fp-16};
constexpr double tangent_divisor_first = -0x1.ddeaba52748ccp-2;
alignas(64) constexpr double tangent_divisor[3] = {
    0x1.a477ce794e6f3p-6, -0x1.46f046edf8f5cp-12, 0x1.0b688224d9ec1p-21};
constexpr double tangent_slope = 0x1.8000000000000p-1;

}  // namespace arrayfold::constants
