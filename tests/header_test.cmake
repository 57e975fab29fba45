# Every installed header must compile alone, and twice.
set(header_roots ${PROJECT_SOURCE_DIR}/include)
set(headers
  velmoext1/base_handler.h
  velmoext1/config_reader.h
  velmoext1/export.h
  velmoext1/extended_message.h
  velmoext1/handlers.h
  velmoext1/log_reader.h
  velmoext1/message.h
  velmoext1/message_builder.h
  velmoext1/messages_storage.h
  velmoext1/progress_message.h
  velmoext1/readable_text.h
  velmoext1/string_message_serializer.h
  velmoext1/testing.h
  velmoext1/velmo_adapter.h
  velmoext1/velmo_ex.h
  velmoext1/velmoext1.h
  velmoext1/version.h)
if(VELMOEXT1_BUNDLED_HOST)
  foreach(host velmo2 rova basekit2 setbook2)
    list(APPEND header_roots ${PROJECT_SOURCE_DIR}/host/${host}/include)
  endforeach()
  list(APPEND headers
    basekit2/export.h
    basekit2/file.h
    basekit2/path.h
    basekit2/variant_bag.h
    rova/debug.h
    rova/export.h
    rova/i18n.h
    rova/strings.h
    rova/varg_list.h
    rova/variant.h
    setbook2/export.h
    setbook2/message_catalog.h
    setbook2/product_locations.h
    velmo2/messenger.h
    velmo2/progress.h)
endif()

set(unlisted "")
foreach(root ${header_roots})
  file(GLOB_RECURSE present CONFIGURE_DEPENDS RELATIVE ${root} ${root}/*.h)
  list(APPEND unlisted ${present})
endforeach()
list(REMOVE_ITEM unlisted ${headers})
if(unlisted)
  message(SEND_ERROR "Not in the list of tests/header_test.cmake: ${unlisted}")
endif()

set(sources "")
foreach(header ${headers})
  set(source ${CMAKE_CURRENT_BINARY_DIR}/header_test/${header}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "#include <@header@>\n#include <@header@>\n" @ONLY)
  list(APPEND sources ${source})
endforeach()
add_library(header_test OBJECT ${sources})
velmoext1_target_defaults(header_test)
target_link_libraries(header_test PRIVATE velmoext1::velmoext1 velmoext1::setbook2 GTest::gmock)
