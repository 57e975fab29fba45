# Sets the build options of one target. Nothing is set for the whole directory tree, so that an
# embedding project keeps its own flags.
function(velmoext1_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 17
    CXX_STANDARD_REQUIRED ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<BOOL:${VELMOEXT1_WERROR}>:-Werror>)
  if(VELMOEXT1_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${VELMOEXT1_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${VELMOEXT1_SANITIZE})
  endif()
  if(VELMOEXT1_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
