# CPack reads this through the file that cmake/package.cmake generates.
function(library_depends id library neighbours)
  execute_process(
    COMMAND dpkg-shlibdeps -O -l${neighbours} ${library}
    WORKING_DIRECTORY ${CMAKE_CURRENT_LIST_DIR}
    OUTPUT_VARIABLE depends
    OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "shlibs:Depends=" "" depends "${depends}")
  set(CPACK_DEBIAN_${id}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
endfunction()
