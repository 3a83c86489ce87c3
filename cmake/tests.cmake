# arrayfold_test(NAME SOURCES...): one test binary on GoogleTest, one entry of ctest.

find_package(GTest REQUIRED)

function(arrayfold_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE project_flags GTest::gtest GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
endfunction()
