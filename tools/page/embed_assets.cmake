# Writes a C++ source with the files of the page in it:
#
#   cmake -DOUTPUT=built_in_assets.cpp "-DFILES=PATH=FILE|PATH=FILE…" -P embed_assets.cmake
#
# PATH is where the server shows the file; its ending decides the type.
set(type_html "text/html; charset=utf-8")
set(type_css "text/css; charset=utf-8")
set(type_js "text/javascript; charset=utf-8")
set(type_svg "image/svg+xml")
set(type_png "image/png")
set(type_txt "text/plain; charset=utf-8")

set(arrays "")
set(table "")
set(number 0)
string(REPLACE "|" ";" FILES "${FILES}")
foreach(pair IN LISTS FILES)
  string(REGEX MATCH "^([^=]+)=(.*)$" matched "${pair}")
  set(path ${CMAKE_MATCH_1})
  set(file ${CMAKE_MATCH_2})
  string(REGEX REPLACE "^.*\\." "" ending "${file}")
  if(NOT DEFINED type_${ending})
    message(FATAL_ERROR "${file}: no type is known for \".${ending}\"")
  endif()
  set(type "${type_${ending}}")

  file(READ "${file}" bytes HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(REPLACE "0x0a," "0x0a,\n" bytes "${bytes}")
  string(APPEND arrays "// ${path}\nconst unsigned char kFile${number}[] = {\n${bytes}0};\n")
  string(APPEND table "        asset(\"${path}\", \"${type}\", kFile${number}, sizeof kFile${number} - 1),\n")
  math(EXPR number "${number} + 1")
endforeach()

file(WRITE "${OUTPUT}" "// Generated: the files of the page.
#include \"page/built_in_assets.h\"

#include <cstddef>

namespace tavmir::page
{

namespace
{

${arrays}
[[maybe_unused]] Asset asset(const char* path, const char* type, const unsigned char* bytes, std::size_t size)
{
    return {path, type, {reinterpret_cast<const char*>(bytes), size}};
}

} // namespace

const Assets& builtInAssets()
{
    static const Assets assets = {
${table}    };
    return assets;
}

} // namespace tavmir::page
")
