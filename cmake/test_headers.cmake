# The first test compiles the headers that most tests include, for all that follow.
function(velmoext1_test_headers target)
  get_property(first GLOBAL PROPERTY velmoext1_first_test)
  if(first)
    target_precompile_headers(${target} REUSE_FROM ${first})
  else()
    target_precompile_headers(${target} PRIVATE
      <gtest/gtest.h> <boost/make_shared.hpp> <boost/thread/mutex.hpp> <filesystem> <fstream> <map>)
    set_property(GLOBAL PROPERTY velmoext1_first_test ${target})
  endif()
endfunction()
