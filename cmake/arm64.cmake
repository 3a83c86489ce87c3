# Cross-compiling for arm64 on a Debian of x86-64: the compiler and the libraries of arm64 are installed packages, and
# programs run under an emulator. scripts/test-arm64 makes such a system.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)

# These are headers alone, and their packages those of x86-64.
foreach(library xtensor xtensor-blas xsimd)
  set(${library}_DIR /usr/lib/x86_64-linux-gnu/cmake/${library} CACHE PATH "")
endforeach()
