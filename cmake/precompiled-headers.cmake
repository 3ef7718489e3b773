# volo_precompiled_headers(<owner> <target>...): the targets' sources see the standard library's headers below as a
# precompiled header, which the owner compiles once. GCC 12 needs about a second to parse them, half of the time that a
# source takes. The owner must have no compile definitions of its own, because GCC refuses a precompiled header if the
# target that reuses it lacks one of them. All targets must be libraries: programs are compiled with -fPIE.
#
# Only the preset "linux" sets VOLO_PRECOMPILED_HEADERS. All other presets compile without, so they find a source that
# lacks an #include.
option(VOLO_PRECOMPILED_HEADERS "Precompile the standard library's headers" OFF)

function(volo_precompiled_headers owner)
  if(NOT VOLO_PRECOMPILED_HEADERS)
    return()
  endif()
  target_precompile_headers(${owner} PRIVATE <algorithm> <array> <atomic> <chrono> <filesystem> <fstream> <functional>
    <memory> <mutex> <optional> <string> <string_view> <system_error> <thread> <utility> <vector>)
  foreach(target ${ARGN})
    target_precompile_headers(${target} REUSE_FROM ${owner})
  endforeach()
  # GCC 12 no longer knows that these are system headers, and reports false positives of these warnings in them.
  foreach(target ${owner} ${ARGN})
    target_compile_options(${target} PRIVATE
      "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-restrict;-Wno-stringop-overflow>")
  endforeach()
endfunction()
