# The README's program is built and run as it stands there.
set(readme ${PROJECT_SOURCE_DIR}/README.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${readme})
file(READ ${readme} text)
if(NOT text MATCHES "```cpp\n([^`]*)```")
  message(SEND_ERROR "No program in ${readme}")
endif()
file(CONFIGURE OUTPUT readme_program.cpp CONTENT "${CMAKE_MATCH_1}" @ONLY)
add_executable(readme_program ${CMAKE_CURRENT_BINARY_DIR}/readme_program.cpp)
velmoext1_target_defaults(readme_program)
target_link_libraries(readme_program PRIVATE velmoext1::velmoext1)
add_test(NAME readme COMMAND readme_program)
set_tests_properties(readme PROPERTIES
  TIMEOUT 60
  PASS_REGULAR_EXPRESSION "^file_large path=/var/log/syslog\n$")
