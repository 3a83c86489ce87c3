# arrayfold_test(NAME SOURCES...): one test binary on GoogleTest, one entry of ctest.

require_package(GTest libgtest-dev libgmock-dev)

# Tests spend their time in what they test, which keeps its own flags: their code is compiled quickly instead. With the
# checks of the sanitizers optimising it takes three times as long as not optimising it.
if(ARRAYFOLD_SANITIZE)
  set(ARRAYFOLD_TEST_OPTIMISATION -O0)
else()
  set(ARRAYFOLD_TEST_OPTIMISATION $<$<CONFIG:Release>:-O1>)
endif()

function(arrayfold_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE project_flags GTest::gtest GTest::gtest_main)
  target_compile_options(${name} PRIVATE ${ARRAYFOLD_TEST_OPTIMISATION})
  add_test(NAME ${name} COMMAND ${name})
endfunction()

# arrayfold_busy_test(NAME): a test whose own formulas take most of its time. With sanitizers it is optimised, too, and
# then cannot share the precompiled header of the others; and it starts early, so that nothing waits for it at the end.
function(arrayfold_busy_test name)
  if(ARRAYFOLD_SANITIZE)
    target_compile_options(${name} PRIVATE -O1)
    set_target_properties(${name} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
  endif()
  set_tests_properties(${name} PROPERTIES COST 20)
endfunction()
