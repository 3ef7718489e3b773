# volo_split_header(<header> <folder>): splits a header-only library into <folder>/<name>.h and <folder>/<name>.cpp, so that
# its implementation is compiled only once. The implementation is the part between the two border lines in the header. The
# files are rewritten only if they change.
function(volo_split_header header folder)
  get_filename_component(name ${header} NAME_WE)
  file(READ ${header} text)
  string(REPEAT "-" 76 border)
  set(border "// ${border}\n")
  string(LENGTH "${border}" border_length)
  string(FIND "${text}" "${border}" begin)
  string(FIND "${text}" "${border}" end REVERSE)
  if(begin EQUAL -1 OR begin EQUAL end)
    message(FATAL_ERROR "${header} has no two border lines around its implementation")
  endif()
  string(SUBSTRING "${text}" 0 ${begin} declarations)
  math(EXPR after "${end} + ${border_length}")
  string(SUBSTRING "${text}" ${after} -1 rest)
  math(EXPR length "${end} - ${begin}")
  string(SUBSTRING "${text}" ${begin} ${length} implementation)
  string(REPLACE "inline " "" implementation "${implementation}")
  file(CONFIGURE OUTPUT ${folder}/${name}.h CONTENT "@declarations@@rest@" @ONLY)
  file(CONFIGURE OUTPUT ${folder}/${name}.cpp
    CONTENT "#include \"${name}.h\"\nnamespace ${name} {\n@implementation@} // namespace ${name}\n" @ONLY)
endfunction()
