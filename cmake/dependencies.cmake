# What the build asks of the machine. Each error names the Debian package that mends it.

# require_package(NAME DEBIAN_PACKAGE...): a package that CMake finds by its name.
macro(require_package name)
  find_package(${name} QUIET)
  if(NOT ${name}_FOUND)
    _missing(${name} ${ARGN})
  endif()
endmacro()

# require_library(VARIABLE HEADER LIBRARY DEBIAN_PACKAGE): a library without a file for CMake. It stands in
# VARIABLE_LIBRARY, and the folder of its header in VARIABLE_INCLUDE_DIR.
macro(require_library variable header library package)
  find_path(${variable}_INCLUDE_DIR ${header})
  find_library(${variable}_LIBRARY ${library})
  if(NOT ${variable}_INCLUDE_DIR OR NOT ${variable}_LIBRARY)
    _missing("the library ${library}" ${package})
  endif()
endmacro()

function(_missing what)
  string(JOIN " " packages ${ARGN})
  message(FATAL_ERROR "${what} is missing. On Debian, install it with:  apt-get install ${packages}")
endfunction()
