# Debian's packages of what is installed, by cpack: hvm-arrayfold, which runs scripts, and hvm-arrayfold-dev, whose
# headers, build files and probe serve authors of hosts alone. The preset `package` makes a build for them.

set(CPACK_PACKAGE_NAME arrayfold)
set(CPACK_PACKAGE_VENDOR arrayfold)
set(CPACK_PACKAGE_CONTACT "The arrayfold authors <arrayfold@example.org>" CACHE STRING
    "The maintainer that packages name")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME hvm-arrayfold)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"N-dimensional numeric arrays for scripts of hvm
hvm runs scripts of a small language, and has a prompt. Its module arrayfold
gives them arrays of one to many dimensions, and 93 functions over them: to
make, reduce, sort, count and bin them, to compute element by element, and
for linear algebra.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS gnuplot-nox)  # draws the pictures of scripts

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME hvm-arrayfold-dev)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"headers and a probe for hosts of the module arrayfold
The headers of the contract between a scripting host and the module arrayfold,
which has N-dimensional numeric arrays; the files by which CMake and pkg-config
find them and the module; and a probe, a module that tells which promises of
the contract a host keeps.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS ON)  # of the probe
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "hvm-arrayfold (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

# What Debian's packages have beside the installed files.
set(CPACK_ARRAYFOLD_SOURCE_DIR ${PROJECT_SOURCE_DIR})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian-files.cmake)

include(CPack)
