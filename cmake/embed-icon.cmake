# This script writes a C++ source file that contains square RGBA pictures. RAWS is the list of their files, *<size>.rgba.
# OUTPUT is the source file.

set(arrays "")
set(rows "")
foreach(raw ${RAWS})
  string(REGEX MATCH "([0-9]+)\\.rgba$" unused ${raw})
  set(size ${CMAKE_MATCH_1})
  file(READ ${raw} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes ${bytes})
  string(APPEND arrays "const unsigned char icon${size}[] = {${bytes}};\n")
  string(APPEND rows "    {${size}, icon${size}},\n")
endforeach()
file(WRITE ${OUTPUT} "#include \"ui/ui_icon.h\"

namespace {
${arrays}} // namespace

std::vector<UiIconPicture> uiIconPictures() {
    return {
${rows}    };
}
")
