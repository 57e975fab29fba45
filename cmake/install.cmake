# Installs the library, its headers and the programs. With the bundled host, also installs the host
# libraries and the files for CMake and pkg-config. cmake/package.cmake packs each component
# separately.
option(VELMOEXT1_INSTALL "Make install rules" ${top_level})
if(NOT VELMOEXT1_INSTALL)
  return()
endif()
include(CMakePackageConfigHelpers)

function(install_headers directory component)
  install(DIRECTORY ${directory}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT ${component}
    FILES_MATCHING PATTERN "*.h")
endfunction()

# All libraries are in one directory, so $ORIGIN keeps the installed tree movable.
function(install_library target component development_component)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN)
  install(TARGETS ${target} ${ARGN}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT ${component}
    NAMELINK_COMPONENT ${development_component})
endfunction()

function(install_program name)
  install(TARGETS ${name} RUNTIME COMPONENT ${name})
  if(NOT VELMOEXT1_PACKAGES)
    install(FILES apps/${name}/${name}.1
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
      COMPONENT ${name})
  endif()
  install(FILES apps/${name}/${name}.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME ${name}
    COMPONENT ${name})
endfunction()

if(VELMOEXT1_APPS)
  install_program(velmolint)
  install_program(velmolog)
  # $ORIGIN keeps the installed tree movable.
  set(library_directory ${CMAKE_INSTALL_FULL_LIBDIR})
  cmake_path(RELATIVE_PATH library_directory BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR})
  set_target_properties(velmolog PROPERTIES INSTALL_RPATH $ORIGIN/${library_directory})
  # lnav itself looks in /etc/lnav only, which is the administrator's.
  install(FILES apps/velmolog/schema.json
    DESTINATION ${CMAKE_INSTALL_DATADIR}/velmolog
    COMPONENT velmolog)
  install(FILES apps/velmolog/lnav/velmolog.json
    DESTINATION ${CMAKE_INSTALL_DATADIR}/velmolog/lnav
    COMPONENT velmolog)
  install(DIRECTORY apps/velmolog/rsyslog
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velmolog/examples
    COMPONENT velmolog)
endif()

install_headers(include/ development)

# A package file would have to name the embedding project's host libraries. Only that project knows
# how to find them.
if(NOT VELMOEXT1_BUNDLED_HOST)
  install_library(velmoext1 runtime development)
  return()
endif()

install_library(velmoext1 runtime development EXPORT velmoext1-targets)
install(TARGETS velmo2 EXPORT velmoext1-targets)
install_headers(host/velmo2/include/ host_development)
foreach(host rova basekit2 setbook2)
  install_library(${host} ${host} host_development EXPORT velmoext1-targets)
  install_headers(host/${host}/include/ host_development)
endforeach()

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/velmoext1)
install(EXPORT velmoext1-targets
  NAMESPACE velmoext1::
  DESTINATION ${package_directory}
  COMPONENT development)

configure_package_config_file(cmake/velmoext1-config.cmake.in velmoext1-config.cmake
  INSTALL_DESTINATION ${package_directory}
  NO_SET_AND_CHECK_MACRO)
# Namespace and soname contain the whole version, so no other release can replace this one.
write_basic_package_version_file(velmoext1-config-version.cmake COMPATIBILITY ExactVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/velmoext1-config.cmake
  ${PROJECT_BINARY_DIR}/velmoext1-config-version.cmake
  cmake/velmoext1-catalogs.cmake
  DESTINATION ${package_directory}
  COMPONENT development)

# Paths are relative to the file itself, so that the installed tree can be moved.
set(pc_prefix ${CMAKE_INSTALL_PREFIX})
cmake_path(RELATIVE_PATH pc_prefix BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR
  BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE pc_libdir)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR
  BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE pc_includedir)
configure_file(cmake/velmoext1.pc.in velmoext1.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmoext1.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
