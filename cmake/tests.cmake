# arrayfold_test(NAME SOURCES...): one test binary on GoogleTest, one entry of ctest.

find_package(GTest REQUIRED)

# Tests spend their time in what they test, which keeps the flags of its own: their code is compiled quickly instead.
set(ARRAYFOLD_TEST_OPTIMISATION $<$<CONFIG:Release>:-O1>)

function(arrayfold_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE project_flags GTest::gtest GTest::gtest_main)
  target_compile_options(${name} PRIVATE ${ARRAYFOLD_TEST_OPTIMISATION})
  add_test(NAME ${name} COMMAND ${name})
endfunction()
