# Each program must print the output that its source documents.
function(velmoext1_example_test name expected)
  add_test(NAME example.${name} COMMAND ${ARGN})
  set_tests_properties(example.${name} PROPERTIES
    TIMEOUT 60
    PASS_REGULAR_EXPRESSION "^${expected}\n$")
endfunction()

velmoext1_example_test(report "file_large path=/var/log/syslog" example_report)

set(shown "shown: file_seen\nshown: file_large size=4096\n")
velmoext1_example_test(record "${shown}replayed: file_large size=4096"
  example_record_and_replay ${CMAKE_CURRENT_BINARY_DIR}/record_and_replay.xml)
add_test(NAME example.remove_log
  COMMAND ${CMAKE_COMMAND} -E rm -f ${CMAKE_CURRENT_BINARY_DIR}/record_and_replay.xml)
velmoext1_example_test(record_again
  "${shown}replayed: file_large size=4096\nreplayed: file_large size=4096"
  example_record_and_replay ${CMAKE_CURRENT_BINARY_DIR}/record_and_replay.xml)
set_tests_properties(example.remove_log PROPERTIES FIXTURES_SETUP no_log)
set_tests_properties(example.record PROPERTIES FIXTURES_REQUIRED no_log FIXTURES_SETUP log)
set_tests_properties(example.record_again PROPERTIES FIXTURES_REQUIRED log)

set(log ${CMAKE_CURRENT_BINARY_DIR}/file_names.xml)
add_test(NAME example.remove_file_names COMMAND ${CMAKE_COMMAND} -E rm -f ${log})
velmoext1_example_test(file_names "file_large path=/srv/Tom & Žofie.txt"
  example_file_names ${log})
set_tests_properties(example.remove_file_names PROPERTIES FIXTURES_SETUP no_file_names)
set_tests_properties(example.file_names PROPERTIES FIXTURES_REQUIRED no_file_names)

set(log ${CMAKE_CURRENT_BINARY_DIR}/history.xml)
file(WRITE ${log} "<log>
 <msg><arg name='path'>/Tom &amp; Jerry</arg><type>file_seen</type></msg>
 <msg><type>broken</msg>
 <msg><arg name='path'/><type>file_seen</type></msg>
</log>
")
velmoext1_example_test(history
  "line 2: file_seen path=/Tom & Jerry\nline 3 is damaged\nline 4: file_seen path="
  example_history ${log})

set(share $<TARGET_FILE_DIR:audit>/share)
foreach(case
    "de;Inhalt: /var/log/syslog hat 1.048.576 Bytes."
    "en;Content: /var/log/syslog has 1,048,576 bytes."
    "xx;Content: /var/log/syslog has 1,048,576 bytes.")
  list(POP_FRONT case locale)
  velmoext1_example_test(localized_text_${locale} "${case}"
    example_localized_text ${share}/locale ${share}/config ${locale})
endforeach()
velmoext1_example_test(localized_text_without_catalogs
  "no catalogs in /nowhere\nfile_large path=/var/log/syslog size=1048576"
  example_localized_text /nowhere /nowhere de)

velmoext1_example_test(progress
  "copied files=0 \\[          \\] 0 %\n.*copied files=100 \\[##########\\] 100 %\n.*copied files=50 \\[#####     \\] 50 %"
  example_progress)
