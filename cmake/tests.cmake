# arrayfold_test(NAME [FROM_PLAIN_BUILD] [HEADERS_OF TARGET] SOURCES...): one test binary on GoogleTest, one entry of
# ctest.
# arrayfold_python_test(NAME SCRIPT ARGUMENTS...): a script of the folder at hand as one entry of ctest.

require_package(GTest libgtest-dev libgmock-dev)

# Tests spend their time in what they test, which keeps its own flags: their code is compiled quickly instead.
set(ARRAYFOLD_TEST_OPTIMISATION -O0)

# What nearly every test includes is read once. It is compiled as programs are, so that these can use it.
add_library(test_headers STATIC ${CMAKE_CURRENT_LIST_DIR}/test_headers.cpp)
target_link_libraries(test_headers PRIVATE project_flags GTest::gtest GTest::gmock)
target_compile_options(test_headers PRIVATE -fPIE ${ARRAYFOLD_TEST_OPTIMISATION})
set_target_properties(test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_precompile_headers(test_headers PRIVATE
  <algorithm> <cstdint> <cstring> <fstream> <functional> <map> <memory> <optional> <sstream> <string> <vector>
  <gmock/gmock.h> <gtest/gtest.h>)

# A program without code of the module in it can test the module of a build with sanitizers, too: the loader takes their
# runtime before the program. Such a program is not built twice, and its own formulas keep their speed.
if(ARRAYFOLD_PLAIN_BUILD)
  set(runtime libclang_rt.asan-${CMAKE_SYSTEM_PROCESSOR}.so)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime}
    OUTPUT_VARIABLE ARRAYFOLD_SANITIZER_RUNTIME OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT EXISTS "${ARRAYFOLD_SANITIZER_RUNTIME}")
    message(FATAL_ERROR "ARRAYFOLD_PLAIN_BUILD takes clang's ${runtime}, in Debian's package libclang-rt-14-dev.")
  endif()
endif()

# FROM_PLAIN_BUILD: the program is such a one.
# HEADERS_OF TARGET takes the precompiled headers of another target.
function(arrayfold_test name)
  cmake_parse_arguments(PARSE_ARGV 1 with FROM_PLAIN_BUILD HEADERS_OF "")
  if(NOT with_HEADERS_OF)
    set(with_HEADERS_OF test_headers)
  endif()
  add_executable(${name} ${with_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE project_flags GTest::gtest GTest::gtest_main)
  target_compile_options(${name} PRIVATE ${ARRAYFOLD_TEST_OPTIMISATION})
  target_precompile_headers(${name} REUSE_FROM ${with_HEADERS_OF})
  if(with_FROM_PLAIN_BUILD AND ARRAYFOLD_PLAIN_BUILD)
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    add_test(NAME ${name} COMMAND ${ARRAYFOLD_PLAIN_BUILD}/bin/${name})
    set_tests_properties(${name} PROPERTIES ENVIRONMENT_MODIFICATION
      "LD_PRELOAD=set:${ARRAYFOLD_SANITIZER_RUNTIME};ARRAYFOLD_TEST_MODULE=set:$<TARGET_FILE:arrayfold>")
  else()
    add_test(NAME ${name} COMMAND ${name})
  endif()
endfunction()

# arrayfold_busy_test(NAME): a test whose own formulas take most of its time. It is optimised, too, and so cannot share
# the precompiled header of the others; and it starts early, so that nothing waits for it at the end.
function(arrayfold_busy_test name)
  target_compile_options(${name} PRIVATE -O1)
  set_target_properties(${name} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
  set_tests_properties(${name} PROPERTIES COST 20)
endfunction()

# The distribution's Python runs it, which has what the tests import. It writes nothing beside the sources.
function(arrayfold_python_test name script)
  add_test(NAME ${name} COMMAND ${ARRAYFOLD_BENCH_PYTHON} -B ${CMAKE_CURRENT_SOURCE_DIR}/${script} ${ARGN})
endfunction()

# arrayfold_kernel_variant(NAME TYPE DEFINITION): the host's kernel library once more, compiled with a definition.
function(arrayfold_kernel_variant name type definition)
  get_target_property(sources HVMkrnl SOURCES)
  list(TRANSFORM sources PREPEND ${PROJECT_SOURCE_DIR}/refhost/kernel/)
  add_library(${name} ${type} ${sources})
  target_link_libraries(${name} PUBLIC arrayfold_contract PRIVATE project_flags)
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/refhost)
  target_compile_definitions(${name} PRIVATE ${definition})
endfunction()
