# The README's program must equal examples/report.cpp, which is built and run.
set(readme ${PROJECT_SOURCE_DIR}/README.md)
set(program ${PROJECT_SOURCE_DIR}/examples/report.cpp)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${readme} ${program})
file(READ ${readme} text)
file(READ ${program} expected)
if(NOT text MATCHES "```cpp\n([^`]*)```" OR NOT CMAKE_MATCH_1 STREQUAL expected)
  message(SEND_ERROR "The program in ${readme} is not ${program}")
endif()
