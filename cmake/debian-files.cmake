# Run by cpack over the files of Debian's packages, before it packs them: adds what Debian asks for, and gives all files
# the date of SOURCE_DATE_EPOCH.

set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY})

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# A text as a packed file, without its name and date.
function(write_packed path text)
  file(WRITE ${path} "${text}")
  run(gzip -9nf ${path})
endfunction()

function(write_copyright path)
  file(READ ${CPACK_ARRAYFOLD_SOURCE_DIR}/LICENSE license)
  string(REGEX MATCH "Copyright [^\n]*" copyright "${license}")
  string(REGEX REPLACE "^Copyright (\\([cC]\\) )?" "" copyright "${copyright}")
  string(REGEX REPLACE "\n\n+" "\n.\n" license "${license}")
  string(STRIP "${license}" license)
  string(REPLACE "\n" "\n " license "${license}")
  file(WRITE ${path} "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n\n"
    "Files: *\nCopyright: ${copyright}\nLicense: BSD-3-Clause\n ${license}\n")
endfunction()

set(doc ${root}/runtime/usr/share/doc/${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME})
file(GLOB manual ${root}/runtime/usr/share/man/man*/*.[0-9])
foreach(page IN LISTS manual)
  run(gzip -9nf ${page})
endforeach()

# Where zsh looks for what packages bring.
file(RENAME ${root}/runtime/usr/share/zsh/site-functions ${root}/runtime/usr/share/zsh/vendor-completions)

# The changelog of the project opens with the version and its day.
file(READ ${doc}/CHANGELOG.md changes)
if(NOT changes MATCHES "\n## ${CPACK_PACKAGE_VERSION} - ([0-9-]+)\n")
  message(FATAL_ERROR "CHANGELOG.md has no title '## ${CPACK_PACKAGE_VERSION} - YYYY-MM-DD'")
endif()
execute_process(COMMAND date --utc --rfc-email --date=${CMAKE_MATCH_1}
  OUTPUT_VARIABLE day OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
write_packed(${doc}/changelog "${changes}")
write_packed(${doc}/changelog.Debian
"${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}: see changelog.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${day}
")
file(REMOVE ${doc}/CHANGELOG.md ${doc}/LICENSE)
write_copyright(${doc}/copyright)

# One folder of documents serves both packages, which are of one version.
file(MAKE_DIRECTORY ${root}/development/usr/share/doc)
file(CREATE_LINK ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME}
  ${root}/development/usr/share/doc/${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME} SYMBOLIC)

if(DEFINED ENV{SOURCE_DATE_EPOCH})
  run(find ${root} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +)
endif()
