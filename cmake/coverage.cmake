# Counting which lines and branches of the module and of the reference host run: scripts/coverage reads the figures.

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  message(FATAL_ERROR "ARRAYFOLD_COVERAGE takes g++: its gcov reads the figures.")
endif()

# Functions of libraries and tests are not counted, which takes most of the time away.
string(REGEX REPLACE "([][+.*?^$(){}|\\])" "\\\\\\1" source_folder "${PROJECT_SOURCE_DIR}")
add_compile_options(--coverage "-fprofile-filter-files=^${source_folder}/(plugin|refhost)/")
add_link_options(--coverage)

# A process writes its figures when it returns from main. These objects let it write them at every other end, too.
set(folder ${PROJECT_SOURCE_DIR}/tests/coverage)
add_library(coverage_figures OBJECT ${folder}/figures.c)
add_library(coverage_process_ends OBJECT ${folder}/process_ends.c)
foreach(part IN ITEMS coverage_figures coverage_process_ends)
  target_compile_options(${part} PRIVATE -Wall -Wextra -Wno-missing-attributes -fno-profile-arcs -fno-test-coverage)
endforeach()
link_libraries($<TARGET_OBJECTS:coverage_figures>)
link_libraries($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:coverage_process_ends>>)
add_link_options(
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:LINKER:--export-dynamic-symbol=arrayfold_coverage_*>)
