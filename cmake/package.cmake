# Debian packages, by CPack: one for each component that cmake/install.cmake installs, and one for
# the documentation. tools/package builds them.
option(VELMOEXT1_PACKAGES "Create Debian packages; requires the output of tools/docs" OFF)
if(NOT (top_level AND VELMOEXT1_PACKAGES))
  return()
endif()
set(VELMOEXT1_PACKAGE_MAINTAINER "velmoext1 developers <velmoext1@example.org>" CACHE STRING
  "Maintainer of the packages, as name and e-mail address")
set(VELMOEXT1_PACKAGE_REVISION 0upstream1 CACHE STRING
  "Debian revision of the packages; lower than a distributor's own revisions, which start at 1")

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package/one_time.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SOURCE velmoext1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${VELMOEXT1_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${VELMOEXT1_PACKAGE_REVISION})
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/package/config.cmake)

set(package_version ${PROJECT_VERSION}-${VELMOEXT1_PACKAGE_REVISION})
# TIMESTAMP uses SOURCE_DATE_EPOCH, so that the same sources give the same bytes.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelogs
  ${PROJECT_BINARY_DIR}/package/changelog
  ${PROJECT_BINARY_DIR}/package/changelog.Debian)
configure_file(CHANGELOG.md package/changelog COPYONLY)
configure_file(cmake/package/changelog.in package/changelog.Debian @ONLY)
execute_process(
  COMMAND gzip --best --no-name --force --keep ${changelogs}
  COMMAND_ERROR_IS_FATAL ANY)
list(TRANSFORM changelogs APPEND .gz)

function(package component name section)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "SUMMARY;TEXT" "DEPENDS")
  list(JOIN arg_DEPENDS ", " depends)
  string(TOUPPER ${component} id)
  set(CPACK_DEBIAN_${id}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${id}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${id}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${id}_DESCRIPTION "${arg_SUMMARY}\n${arg_TEXT}" PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  install(FILES cmake/package/copyright ${changelogs}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
    COMPONENT ${component})
endfunction()

# CPack's own shlibs file comes with maintainer scripts that call ldconfig, and CPack does not find
# the libraries of other packages of this build. So the shlibs file is written here, with the
# dependency of programs that link to the library. The dependencies of the library itself are
# computed after the build.
set(shlibs "")
set(config "include([[${PROJECT_SOURCE_DIR}/cmake/package/library_depends.cmake]])\n")
macro(library_package target component name)
  package(${component} ${name} libs ${ARGN})
  get_target_property(soversion ${target} SOVERSION)
  set(line "lib${target} ${soversion} ${name} (>= ${PROJECT_VERSION})\n")
  file(CONFIGURE OUTPUT package/${component}/shlibs CONTENT "${line}")
  string(APPEND shlibs "${line}")
  string(TOUPPER ${component} id)
  set(CPACK_DEBIAN_${id}_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/package/triggers
    ${PROJECT_BINARY_DIR}/package/${component}/shlibs)
  string(APPEND config
    "library_depends(${id} [[$<TARGET_FILE:${target}>]] [[$<TARGET_FILE_DIR:rova>]])\n")
endmacro()

library_package(velmoext1 runtime libvelmoext1-${PROJECT_VERSION}
  SUMMARY "structured message reporting over a text channel"
  TEXT
"A component of a host application reports messages. Each has a type, a
severity, a source and named arguments. The library carries a message over the
host's text channel, delivers it to handlers on the other side, records it in
a log that can be replayed, and gives it a title and a text in the user's
language.
\nThis package contains the shared library. Namespace and soname carry the
whole version, so two releases can be installed side by side.")

library_package(rova rova librova2.18
  SUMMARY "host interface of velmoext1 for texts and named arguments"
  TEXT
"Conversions of wide text, named arguments, message patterns in the user's
language, and a handler of failed assertions. velmoext1 requires them of its
host application.
\nThis package contains the shared library.")

library_package(basekit2 basekit2 libbasekit2-2
  SUMMARY "host interface of velmoext1 for paths, files and variant bags"
  TEXT
"Paths, operations that copy and remove files, and trees of named values that
are loaded from XML. velmoext1 requires them of its host application.
\nThis package contains the shared library.")

library_package(setbook2 setbook2 libsetbook2-2
  SUMMARY "host interface of velmoext1 for locations and catalogs"
  TEXT
"The directories of a product's files, and its message catalogs: those that an
application registers, and gettext's files in a directory. velmoext1 requires
them of its host application.
\nThis package contains the shared library.")

package(development libvelmoext1-dev libdevel
  DEPENDS
    "libvelmoext1-${PROJECT_VERSION} (= ${package_version})"
    "libvelmoext1-host-dev (= ${package_version})"
    "libboost-dev (>= 1.74)"
  SUMMARY "structured message reporting over a text channel, for development"
  TEXT
"A component of a host application reports messages. Each has a type, a
severity, a source and named arguments. The library carries them to handlers,
into a log, and to the user in the user's language.
\nThis package contains the headers and the files for CMake and pkg-config.")

package(host_development libvelmoext1-host-dev libdevel
  DEPENDS
    "librova2.18 (= ${package_version})"
    "libbasekit2-2 (= ${package_version})"
    "libsetbook2-2 (= ${package_version})"
    "libboost-dev (>= 1.74)"
  SUMMARY "host interfaces of velmoext1, for development"
  TEXT
"velmo2 (headers only), rova, basekit2 and setbook2: the interfaces that
velmoext1 requires of its host application.
\nThis package contains the headers. The files for CMake and pkg-config are in
libvelmoext1-dev.")

if(VELMOEXT1_APPS)
  package(velmolint velmolint devel
    SUMMARY "checks configuration and message catalogs of velmoext1"
    TEXT
"velmolint reports mistakes in the configuration files and the message catalogs
of components that use velmoext1: titles and texts that do not exist, patterns
that are invalid, placeholders and plural forms that are missing. It counts the
translated texts of each language.")
  package(velmolog velmolog utils
    SUMMARY "shows, checks, compares and rescues logs of messages"
    TEXT
"velmolog reads the logs that applications record with velmoext1. It shows the
messages as lines, in the user's language, as JSON, or as a page for a browser,
filters and counts them, follows a log while it is recorded, and compares logs.
It reports damage, and rescues the messages of a log that is damaged.")
  foreach(program velmolint velmolog)
    string(TOUPPER ${program} id)
    string(APPEND config
      "library_depends(${id} [[$<TARGET_FILE:${program}>]] [[$<TARGET_FILE_DIR:rova>]]"
      " [[$<TARGET_FILE_DIR:velmoext1>]])\n")
    set(man_page ${PROJECT_BINARY_DIR}/package/${program}.1)
    configure_file(apps/${program}/${program}.1 ${man_page} COPYONLY)
    execute_process(
      COMMAND gzip --best --no-name --force --keep ${man_page}
      COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${man_page}.gz
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
      COMPONENT ${program})
  endforeach()
endif()

package(documentation libvelmoext1-doc doc
  SUMMARY "structured message reporting over a text channel, documentation"
  TEXT
"The reference of all public classes of velmoext1 and of its host interfaces,
pages for developers, translators and administrators, and the sources of the
examples, which build with the installed library.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(doc_directory ${CMAKE_INSTALL_DATADIR}/doc/libvelmoext1-doc)
install(DIRECTORY build/docs/html
  DESTINATION ${doc_directory}
  COMPONENT documentation)
install(DIRECTORY docs
  DESTINATION ${doc_directory}
  COMPONENT documentation
  FILES_MATCHING PATTERN "*.md")
install(FILES README.md CONTRIBUTING.md SECURITY.md cmake/package/README.Debian
  DESTINATION ${doc_directory}
  COMPONENT documentation)
# The tests need the source tree.
install(DIRECTORY examples
  DESTINATION ${doc_directory}
  COMPONENT documentation
  PATTERN tests EXCLUDE
  PATTERN examples_test.cmake EXCLUDE)
file(CONFIGURE OUTPUT package/doc-base/libvelmoext1-doc CONTENT
"Document: velmoext1
Title: velmoext1
Abstract: Structured message reporting over a host application's text channel
Section: Programming/C++

Format: HTML
Index: ${CMAKE_INSTALL_FULL_DATADIR}/doc/libvelmoext1-doc/html/index.html
Files: ${CMAKE_INSTALL_FULL_DATADIR}/doc/libvelmoext1-doc/html/*
")
install(FILES ${PROJECT_BINARY_DIR}/package/doc-base/libvelmoext1-doc
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc-base
  COMPONENT documentation)

# dpkg-shlibdeps requires a debian/control in its working directory.
file(CONFIGURE OUTPUT package/debian/control CONTENT "")
file(CONFIGURE OUTPUT package/debian/shlibs.local CONTENT "${shlibs}")
file(GENERATE OUTPUT package/config.cmake CONTENT "${config}")
include(CPack)
