# Installs the library, its headers and, with the bundled host, that and both kinds of package.
option(VELMOEXT1_INSTALL "Make install rules" ${top_level})
if(NOT VELMOEXT1_INSTALL)
  return()
endif()
include(CMakePackageConfigHelpers)

set(header_directories include/)
set(header_only "")
set(libraries velmoext1)
if(VELMOEXT1_BUNDLED_HOST)
  set(header_only velmo2)
  list(APPEND libraries rova basekit2 setbook2)
  foreach(host velmo2 rova basekit2 setbook2)
    list(APPEND header_directories host/${host}/include/)
  endforeach()
endif()

# The libraries lie in one directory, wherever that is moved.
set_target_properties(${libraries} PROPERTIES INSTALL_RPATH $ORIGIN)
install(DIRECTORY ${header_directories}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

# A package would have to name the embedding project's host libraries, and only that project knows
# how they are found again.
if(NOT VELMOEXT1_BUNDLED_HOST)
  install(TARGETS ${libraries} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  return()
endif()

install(TARGETS ${header_only} ${libraries}
  EXPORT velmoext1-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/velmoext1)
install(EXPORT velmoext1-targets
  NAMESPACE velmoext1::
  DESTINATION ${package_directory})

configure_package_config_file(cmake/velmoext1-config.cmake.in velmoext1-config.cmake
  INSTALL_DESTINATION ${package_directory}
  NO_SET_AND_CHECK_MACRO)
# Namespace and soname carry the whole version, so no other release can take this one's place.
write_basic_package_version_file(velmoext1-config-version.cmake COMPATIBILITY ExactVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/velmoext1-config.cmake
  ${PROJECT_BINARY_DIR}/velmoext1-config-version.cmake
  DESTINATION ${package_directory})

# Relative to the file itself, so that the installed tree can be moved.
set(pc_prefix ${CMAKE_INSTALL_PREFIX})
cmake_path(RELATIVE_PATH pc_prefix BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR
  BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE pc_libdir)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR
  BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE pc_includedir)
configure_file(cmake/velmoext1.pc.in velmoext1.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmoext1.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
