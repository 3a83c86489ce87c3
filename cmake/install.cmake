# Where everything is installed: the folders of GNUInstallDirs. What belongs to one version of hvm and is found by a
# fixed name, the host libraries and the module, lies in a folder of its own. All paths between the installed files are
# relative, so an installed tree can be moved.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ARRAYFOLD_MODULE_DIR ${CMAKE_INSTALL_LIBDIR}/hvm)
set(ARRAYFOLD_DATA_DIR ${CMAKE_INSTALL_DATADIR}/arrayfold)
set(HVM_DATA_DIR ${CMAKE_INSTALL_DATADIR}/hvm)
set(ARRAYFOLD_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/arrayfold)

# relative_to(VARIABLE FROM TO): the way from one folder of the installed tree to another.
function(relative_to variable from to)
  GNUInstallDirs_get_absolute_install_dir(absolute_from from LIBDIR)
  GNUInstallDirs_get_absolute_install_dir(absolute_to to LIBDIR)
  file(RELATIVE_PATH way ${absolute_from} ${absolute_to})
  set(${variable} ${way} PARENT_SCOPE)
endfunction()

# This comes before all other rules. CMake's own error would name the first file instead of the reason.
install(CODE [[
  set(place "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")
  while(NOT EXISTS "${place}" AND NOT place STREQUAL "/")
    get_filename_component(place "${place}" DIRECTORY)
  endwhile()
  if(NOT IS_DIRECTORY "${place}")
    message(FATAL_ERROR "Nothing can be installed below ${place}: it is no folder.")
  endif()
  execute_process(COMMAND test -w "${place}" RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "Nothing can be installed below ${place}: there is no permission to write into it.")
  endif()
]] ALL_COMPONENTS)

# Pages and examples. The examples that read data run from this folder. What they have written there stays behind.
file(STRINGS ${PROJECT_SOURCE_DIR}/examples/week/.gitignore written REGEX "^/")
list(TRANSFORM written REPLACE "^/(.*)$" "PATTERN;\\1;EXCLUDE")
install(FILES README.md CHANGELOG.md SECURITY.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  PATTERN .gitignore EXCLUDE
  PATTERN CMakeLists.txt EXCLUDE
  ${written})

# The description of the functions, found by the name of the module: a link beside it.
relative_to(way ${ARRAYFOLD_MODULE_DIR} ${ARRAYFOLD_DATA_DIR})
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/install)
file(CREATE_LINK ${way}/functions.json ${PROJECT_BINARY_DIR}/install/arrayfold.json SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/install/arrayfold.json DESTINATION ${ARRAYFOLD_MODULE_DIR})

# For authors of hosts: the headers of the contract, the version script of the library with lgamma and erf, and for
# CMake and pkg-config, where all of this and the module lie.
install(FILES include/arrayfold/host.h DESTINATION ${ARRAYFOLD_INCLUDE_DIR} COMPONENT development)
install(FILES plugin/host/host_value.hpp plugin/host/host_operations.hpp
  DESTINATION ${ARRAYFOLD_INCLUDE_DIR}/host COMPONENT development)
install(FILES refhost/interp/hvminterp.map DESTINATION ${ARRAYFOLD_DATA_DIR} COMPONENT development)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/arrayfold)
configure_package_config_file(cmake/arrayfold-config.cmake.in ${PROJECT_BINARY_DIR}/install/arrayfold-config.cmake
  INSTALL_DESTINATION ${config_dir}
  PATH_VARS ARRAYFOLD_INCLUDE_DIR ARRAYFOLD_MODULE_DIR ARRAYFOLD_DATA_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/install/arrayfold-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/install/arrayfold-config.cmake
  ${PROJECT_BINARY_DIR}/install/arrayfold-config-version.cmake
  DESTINATION ${config_dir} COMPONENT development)

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
foreach(folder IN ITEMS INCLUDE MODULE DATA)
  relative_to(PC_${folder}_DIR ${pkgconfig_dir} ${ARRAYFOLD_${folder}_DIR})
endforeach()
configure_file(cmake/arrayfold.pc.in ${PROJECT_BINARY_DIR}/install/arrayfold.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/install/arrayfold.pc DESTINATION ${pkgconfig_dir} COMPONENT development)
