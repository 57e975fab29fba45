# Writes the source of the page to OUTPUT, as C++: cmake -D OUTPUT=FILE -P embed.cmake
# The policy of the page allows exactly this style and this script, by their hashes.

# In this order. The layout changes rules before it.
set(styles base facets table details layout)
set(scripts shown_text messages search view_state facets table details page)

# Sets `result` to the SHA-256 of the text, in Base64 as a policy has it.
function(base64_sha256 result text)
  set(alphabet ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  string(SHA256 rest "${text}")
  # Three hexadecimal digits are two characters. The last digit of the 64 fills one more.
  string(APPEND rest 00)
  set(encoded "")
  while(rest)
    string(SUBSTRING "${rest}" 0 3 digits)
    string(SUBSTRING "${rest}" 3 -1 rest)
    math(EXPR high "0x${digits} >> 6")
    math(EXPR low "0x${digits} & 63")
    string(SUBSTRING ${alphabet} ${high} 1 high)
    string(SUBSTRING ${alphabet} ${low} 1 low)
    string(APPEND encoded ${high}${low})
  endwhile()
  string(SUBSTRING ${encoded} 0 43 encoded)
  set(${result} ${encoded}= PARENT_SCOPE)
endfunction()

function(write_literal name text)
  string(FIND "${text}" ")page\"" end)
  if(NOT end EQUAL -1)
    message(FATAL_ERROR "The page has the end of a literal.")
  endif()
  file(APPEND ${OUTPUT} "const std::string_view ${name} = R\"page(${text})page\";\n")
endfunction()

set(here ${CMAKE_CURRENT_LIST_DIR})
file(READ ${here}/page.html page)
set(style "\n")
foreach(name IN LISTS styles)
  file(READ ${here}/${name}.css text)
  string(APPEND style "${text}\n")
endforeach()
set(script "\n")
foreach(name IN LISTS scripts)
  file(READ ${here}/${name}.js text)
  string(APPEND script "${text}\n")
endforeach()

base64_sha256(style_hash "${style}")
base64_sha256(script_hash "${script}")
string(REPLACE "@STYLE_HASH@" ${style_hash} page "${page}")
string(REPLACE "@SCRIPT_HASH@" ${script_hash} page "${page}")
string(REPLACE "@STYLE@" "${style}" page "${page}")

# The script is after the data: it is not searched for a mark.
string(FIND "${page}" "@DATA@" data)
string(SUBSTRING "${page}" 0 ${data} before_data)
math(EXPR data "${data} + 6")
string(SUBSTRING "${page}" ${data} -1 after_data)
string(REPLACE "@SCRIPT@" "${script}" after_data "${after_data}")

file(WRITE ${OUTPUT} "#include \"page_source.h\"\n\nnamespace velmolog\n{\n\n")
write_literal(page_before_data "${before_data}")
write_literal(page_after_data "${after_data}")
file(APPEND ${OUTPUT} "\n} // namespace velmolog\n")
