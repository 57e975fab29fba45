# velmoext1_add_catalogs(TARGET
#   PO_DIRECTORY DIRECTORY
#   DIRECTORY DIRECTORY
#   LANGUAGES LANGUAGE...
#   CATALOGS NAME...
#   [INSTALL_DESTINATION DIRECTORY])
#
# Adds a target that compiles message catalogs, as a part of "all". Compiles each
# PO_DIRECTORY/LANGUAGE/NAME.po to DIRECTORY/LANGUAGE/LC_MESSAGES/NAME.mo. Pass DIRECTORY to
# setbook2::bindCatalogDirectory. A relative PO_DIRECTORY is in the current source directory, a
# relative DIRECTORY in the current binary directory. A .po file with an error fails the build.
# With INSTALL_DESTINATION, the folders of the languages are installed there. Requires gettext's
# msgfmt.
function(velmoext1_add_catalogs target)
  cmake_parse_arguments(PARSE_ARGV 1 arg
    "" "PO_DIRECTORY;DIRECTORY;INSTALL_DESTINATION" "LANGUAGES;CATALOGS")
  foreach(required PO_DIRECTORY DIRECTORY LANGUAGES CATALOGS)
    if(NOT arg_${required})
      message(FATAL_ERROR "velmoext1_add_catalogs(${target}): ${required} is missing")
    endif()
  endforeach()
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "velmoext1_add_catalogs(${target}): unknown: ${arg_UNPARSED_ARGUMENTS}")
  endif()
  find_program(VELMOEXT1_MSGFMT msgfmt REQUIRED)
  mark_as_advanced(VELMOEXT1_MSGFMT)
  cmake_path(ABSOLUTE_PATH arg_PO_DIRECTORY)
  cmake_path(ABSOLUTE_PATH arg_DIRECTORY BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})

  set(catalogs "")
  foreach(language IN LISTS arg_LANGUAGES)
    set(directory ${arg_DIRECTORY}/${language}/LC_MESSAGES)
    foreach(name IN LISTS arg_CATALOGS)
      set(po ${arg_PO_DIRECTORY}/${language}/${name}.po)
      add_custom_command(
        OUTPUT ${directory}/${name}.mo
        COMMAND ${CMAKE_COMMAND} -E make_directory ${directory}
        COMMAND ${VELMOEXT1_MSGFMT} --check-format --output-file=${directory}/${name}.mo ${po}
        DEPENDS ${po}
        VERBATIM)
      list(APPEND catalogs ${directory}/${name}.mo)
    endforeach()
    if(arg_INSTALL_DESTINATION)
      install(DIRECTORY ${arg_DIRECTORY}/${language} DESTINATION ${arg_INSTALL_DESTINATION})
    endif()
  endforeach()
  add_custom_target(${target} ALL DEPENDS ${catalogs})
endfunction()
