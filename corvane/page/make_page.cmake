# Puts the report's page together from the files beside this one, with the chart library and its
# licence, as C++ source: cmake -D DYGRAPHS=FILE -D LICENCE=FILE -D OUTPUT=FILE -P make_page.cmake
# The page comes in three pieces; the samples stand between the first two, the head between the
# last two. Its security policy names the script and the style by their hashes.
cmake_minimum_required(VERSION 3.25)
set(here ${CMAKE_CURRENT_LIST_DIR})

# In the order in which they stand in the page.
set(scripts dom format data colours timeline chart heat overview table panels processes moment head
    tiles figures foot main)

# The text's SHA-256 in base64: ten times three bytes, and two.
function(hash_of text result)
  set(letters "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
  string(SHA256 hex "${text}")
  set(base64 "")
  foreach(at RANGE 0 60 6)
    string(SUBSTRING "${hex}00" ${at} 6 three)
    foreach(shift 18 12 6 0)
      math(EXPR letter "(0x${three} >> ${shift}) & 63")
      string(SUBSTRING ${letters} ${letter} 1 letter)
      string(APPEND base64 ${letter})
    endforeach()
  endforeach()
  string(SUBSTRING ${base64} 0 43 base64)
  set(${result} "${base64}=" PARENT_SCOPE)
endfunction()

# A script that ended early would let the rest of it be read as markup.
function(require_inert name text)
  string(TOLOWER "${text}" lower)
  if(lower MATCHES "</s[ct]|<!--")
    message(FATAL_ERROR "${name} would end its element in the page")
  endif()
endfunction()

file(READ ${DYGRAPHS} dygraphs)
string(REGEX REPLACE "//# sourceMappingURL=[^\n]*" "" dygraphs "${dygraphs}")
file(READ ${LICENCE} licence)
set(script "")
foreach(name ${scripts})
  file(READ ${here}/${name}.js text)
  string(APPEND script "${text}")
endforeach()
set(script "${dygraphs}\n(() => {\n'use strict';\n${script}})();\n")
file(READ ${here}/page.css style)
file(READ ${here}/page.html page)
require_inert(script "${script}")
require_inert(licence "${licence}")
require_inert(style "${style}")

hash_of("${script}" script_hash)
hash_of("${style}" style_hash)
string(REPLACE "@SCRIPT_HASH@" "${script_hash}" page "${page}")
string(REPLACE "@STYLE_HASH@" "${style_hash}" page "${page}")
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@LICENCE@" "${licence}" page "${page}")

string(FIND "${page}" "@SAMPLES@" samples)
string(FIND "${page}" "@HEAD@" head)
string(FIND "${page}" "@SCRIPT@" end)
math(EXPR after_samples "${samples} + 9")
math(EXPR middle "${head} - ${after_samples}")
math(EXPR after_head "${head} + 6")
string(SUBSTRING "${page}" 0 ${samples} begin_text)
string(SUBSTRING "${page}" ${after_samples} ${middle} middle_text)
string(SUBSTRING "${page}" ${after_head} -1 end_text)
string(REPLACE "@SCRIPT@" "${script}" end_text "${end_text}")

set(source "#include \"page_text.h\"\n\n")
foreach(piece begin middle end)
  file(WRITE ${OUTPUT}.${piece} "${${piece}_text}")
  file(READ ${OUTPUT}.${piece} bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(REGEX REPLACE "('....',){24}" "\\0\n" bytes "${bytes}")
  string(APPEND source "static constexpr char ${piece}[] = {\n${bytes}};\n\n")
endforeach()
string(APPEND source "const PageText pageText{{begin, sizeof begin}, {middle, sizeof middle}, {end, sizeof end}};\n")
file(WRITE ${OUTPUT} "${source}")
