# Cross-compiling for arm64 on Debian: the compiler is an installed package, the libraries are unpacked ones
# (scripts/unpack-packages), and programs run under an emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

get_filename_component(packages ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-packages ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${packages})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Installing the package of OpenBLAS would make links to it.
set(CMAKE_LIBRARY_PATH /usr/lib/aarch64-linux-gnu/openblas-pthread)

# Where the linker and the loader find what the libraries need.
set(libraries ${packages}/usr/lib/aarch64-linux-gnu ${packages}/lib/aarch64-linux-gnu)
list(JOIN libraries : libraries)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT -Wl,-rpath-link,${libraries})
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu -E LD_LIBRARY_PATH=${libraries})
