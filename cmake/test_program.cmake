# Reduces the time to compile the tests, which is most of the build time.
function(velmoext1_test_program target)
  # Optimizing a test takes longer than running it. The library may still be optimized.
  target_compile_options(${target} PRIVATE -O0)
  # Coverage of a test's own lines is not measured.
  target_compile_options(${target} PRIVATE -fno-profile-arcs -fno-test-coverage)

  # The first test precompiles the headers that most tests include. The others reuse them.
  get_property(first GLOBAL PROPERTY velmoext1_first_test)
  if(first)
    target_precompile_headers(${target} REUSE_FROM ${first})
  else()
    target_precompile_headers(${target} PRIVATE
      <gtest/gtest.h> <boost/make_shared.hpp> <boost/thread/mutex.hpp> <filesystem> <fstream> <map>)
    set_property(GLOBAL PROPERTY velmoext1_first_test ${target})
  endif()
endfunction()
