// linalg/library.hpp: the library's linear algebra, over BLAS and LAPACK
//
// The library's own headers depend on their order: the allocator of array storage is a specialisation, which has to be
// seen before the library makes a container, and its LAPACK calls need the CBLAS declarations. Every source takes them
// from here.

#pragma once

#include "array/aligned_storage.hpp"

#include <xtensor-blas/xblas.hpp>
#include <xtensor-blas/xlapack.hpp>
#include <xtensor-blas/xlinalg.hpp>
