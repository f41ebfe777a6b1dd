# SPDX-License-Identifier: Apache-2.0
#
# Writes OUTPUT, a C++ source with the bytes of the FILES as panel.h declares it. The entity
# tag of a file comes from its SHA-256: another content always has another one.
cmake_minimum_required(VERSION 3.21)

# content_type(VARIABLE FILE)
function(content_type variable file)
  cmake_path(GET file EXTENSION LAST_ONLY extension)
  if(extension STREQUAL ".html")
    set(type "text/html; charset=utf-8")
  elseif(extension STREQUAL ".css")
    set(type "text/css; charset=utf-8")
  elseif(extension STREQUAL ".js")
    set(type "text/javascript; charset=utf-8")
  elseif(extension STREQUAL ".svg")
    set(type "image/svg+xml")
  else()
    message(FATAL_ERROR "${file}: found \"${extension}\", allowed: .html, .css, .js, .svg")
  endif()
  set(${variable} "${type}" PARENT_SCOPE)
endfunction()

# string_literal(VARIABLE FILE): its bytes, each as \xHH, 24 to a line.
function(string_literal variable file)
  file(READ ${file} hexadecimal HEX)
  string(REGEX REPLACE "(..)" "\\\\x\\1" literal "${hexadecimal}")
  string(REPEAT "." 96 line)
  string(REGEX REPLACE "(${line})" "\\1\"\n    \"" literal "${literal}")
  set(${variable} "\"${literal}\"" PARENT_SCOPE)
endfunction()

set(rows "")
foreach(file IN LISTS FILES)
  content_type(type ${file})
  string_literal(literal ${file})
  file(SIZE ${file} size)
  file(SHA256 ${file} hash)
  set(at_root false)
  if(file STREQUAL "index.html")
    set(at_root true)
  endif()
  string(APPEND rows
    "        {\"/panel/${file}\", \"${type}\", \"\\\"${hash}\\\"\", {${literal}, ${size}}, ${at_root}},\n")
endforeach()

file(WRITE ${OUTPUT}
"// Made of the files of the panel.

#include \"panel/panel.h\"

namespace nmos_instrument::program {

std::vector<nmos_instrument_host::PageFile> panel()
{
    return {
${rows}    };
}

} // namespace nmos_instrument::program
")
