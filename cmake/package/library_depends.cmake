# CPack reads this through the file that cmake/package.cmake generates. The last arguments are the directories of
# the libraries of other packages.
function(library_depends id library)
  list(TRANSFORM ARGN PREPEND -l)
  execute_process(
    COMMAND dpkg-shlibdeps -O ${ARGN} ${library}
    WORKING_DIRECTORY ${CMAKE_CURRENT_LIST_DIR}
    OUTPUT_VARIABLE depends
    OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "shlibs:Depends=" "" depends "${depends}")
  set(CPACK_DEBIAN_${id}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
endfunction()
