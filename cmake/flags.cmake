# Compiler flags, as interface targets.
#
#   project_flags    everything: warnings, NDEBUG, sanitizers
#   brief_work_flags what runs once in a process
#   hardening_flags  what people run: the loader and the compiler guard memory
#   arithmetic_flags the kernels and the module: fixed arithmetic
#   arrayfold_flags  the module, and whatever includes its array headers

find_package(Threads REQUIRED)

add_library(project_flags INTERFACE)
target_compile_options(project_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow)
# Without assertions in every configuration: the words of the array library's exceptions depend on it.
target_compile_definitions(project_flags INTERFACE NDEBUG)

# GCC searches its memory for what it may free only when it holds much more than templates usually take: that search
# takes a twentieth of the time.
target_compile_options(project_flags INTERFACE
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:SHELL:--param ggc-min-heapsize=524288>)

if(ARRAYFOLD_PLAIN_BUILD)
  # Where a report needs lines of the sources, the whole build is made.
  add_compile_options(-g0)
endif()
if(ARRAYFOLD_SANITIZE)
  # Wrapping integers are defined (-fwrapv), and the division fault is the processor's own.
  target_compile_options(project_flags INTERFACE
    -fsanitize=${ARRAYFOLD_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    -fno-sanitize=signed-integer-overflow -fno-sanitize=vptr,function)
  if(ARRAYFOLD_SANITIZE MATCHES address)
    target_compile_definitions(project_flags INTERFACE ARRAYFOLD_ADDRESS_SANITIZER)
  endif()
  target_link_options(project_flags INTERFACE -fsanitize=${ARRAYFOLD_SANITIZE})
endif()

# Code that runs once in a process is optimised less than the rest: compiling it takes longer than it runs.
add_library(brief_work_flags INTERFACE)
if(ARRAYFOLD_SANITIZE)
  target_compile_options(brief_work_flags INTERFACE -O0)
elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  target_compile_options(brief_work_flags INTERFACE -O1)
endif()

# A mistake in what people run ends the process instead of giving somebody control of it. The sanitizers check more, and
# do not see through the checked functions of the C library. tests/runtime/hardening.py reads all this from the files.
add_library(hardening_flags INTERFACE)
target_link_options(hardening_flags INTERFACE
  LINKER:-z,relro,-z,now    # all names are found at load; the tables of their addresses are then read-only
  LINKER:-z,noexecstack     # whatever the assembler sources of static libraries say
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
if(NOT ARRAYFOLD_SANITIZE)
  target_compile_options(hardening_flags INTERFACE
    -fstack-protector-strong
    # The checked functions take an optimising compiler. A distribution may have defined the macro already.
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
endif()

# What a module and a host agree on: host_value.hpp and host_operations.hpp.
add_library(arrayfold_contract INTERFACE)
target_include_directories(arrayfold_contract INTERFACE ${PROJECT_SOURCE_DIR}/plugin)

# Fixed arithmetic, for the module and its kernels.
add_library(arithmetic_flags INTERFACE)
target_compile_options(arithmetic_flags INTERFACE
  -ffp-contract=off  # fixed orders and roundings are part of what the module promises
  -fwrapv)           # integers wrap
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(arithmetic_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

require_package(hwy libhwy-dev)
require_package(xtensor libxtensor-dev libxsimd-dev)
require_package(nlohmann_json nlohmann-json3-dev)

add_library(arrayfold_flags INTERFACE)
target_link_libraries(arrayfold_flags INTERFACE project_flags arrayfold_contract)
target_include_directories(arrayfold_flags SYSTEM INTERFACE ${xtensor_INCLUDE_DIRS})
target_link_libraries(arrayfold_flags INTERFACE nlohmann_json::nlohmann_json)
# Every source that sees an array agrees on these macros: they are part of what the containers are. The library's own
# alignment would be that of the compiler's registers.
target_compile_definitions(arrayfold_flags INTERFACE XTENSOR_USE_XSIMD)
target_compile_options(arrayfold_flags INTERFACE "-DXTENSOR_DEFAULT_ALLOCATOR(T)=xsimd::aligned_allocator<T,32>")
target_link_libraries(arrayfold_flags INTERFACE arithmetic_flags)
target_compile_options(arrayfold_flags INTERFACE
  -fno-builtin-erf -fno-builtin-lgamma)  # these two are the host's

# BLAS and LAPACK: OpenBLAS, or any other pair that FindLAPACK knows by its vendor's name (Generic: the reference
# libraries). Both come from one vendor.
set(ARRAYFOLD_BLAS OpenBLAS CACHE STRING "BLAS and LAPACK: OpenBLAS, Generic or another BLA_VENDOR")
set(BLA_VENDOR ${ARRAYFOLD_BLAS})
find_package(BLAS QUIET)
find_package(LAPACK QUIET)
if(NOT BLAS_FOUND OR NOT LAPACK_FOUND)
  message(FATAL_ERROR "There is no BLAS with LAPACK for ARRAYFOLD_BLAS=${ARRAYFOLD_BLAS}. The usual values are OpenBLAS "
    "(Debian's package libopenblas-dev) and Generic (libblas-dev and liblapack-dev). All values stand in "
    "'cmake --help-module FindBLAS' under BLA_VENDOR.")
endif()
require_package(xtensor-blas libxtensor-blas-dev)
message(STATUS "Linear algebra by ${ARRAYFOLD_BLAS}: ${LAPACK_LIBRARIES}")

add_library(arrayfold_linear_algebra INTERFACE)
target_include_directories(arrayfold_linear_algebra SYSTEM INTERFACE ${xtensor_blas_INCLUDE_DIRS})
target_link_libraries(arrayfold_linear_algebra INTERFACE ${LAPACK_LIBRARIES} ${BLAS_LIBRARIES})
