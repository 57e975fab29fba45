# What keeps the time low that it takes to compile the tests, which is most of all.
function(velmoext1_test_program target)
  # The library may be optimised; a test runs for less time than optimising it takes.
  target_compile_options(${target} PRIVATE -O0)
  # Nor does anyone count which of a test's own lines run.
  target_compile_options(${target} PRIVATE -fno-profile-arcs -fno-test-coverage)

  # The first test compiles the headers that most tests include, for all that follow.
  get_property(first GLOBAL PROPERTY velmoext1_first_test)
  if(first)
    target_precompile_headers(${target} REUSE_FROM ${first})
  else()
    target_precompile_headers(${target} PRIVATE
      <gtest/gtest.h> <boost/make_shared.hpp> <boost/thread/mutex.hpp> <filesystem> <fstream> <map>)
    set_property(GLOBAL PROPERTY velmoext1_first_test ${target})
  endif()
endfunction()
