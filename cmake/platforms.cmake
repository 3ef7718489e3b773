# The platforms that the launcher supports. A source named *_<platform>.cpp or *_<platform>_test.cpp is compiled only for
# that platform. CONTRIBUTING.md explains how to add a platform.
set(VOLO_PLATFORMS linux windows)

string(TOLOWER "${CMAKE_SYSTEM_NAME}" VOLO_PLATFORM)
if(NOT VOLO_PLATFORM IN_LIST VOLO_PLATFORMS)
  message(FATAL_ERROR "VOLO Launcher has no sources for ${CMAKE_SYSTEM_NAME}. It has: ${VOLO_PLATFORMS}")
endif()

# volo_glob_sources(<variable> <pattern>...): sets the variable to the matching files, without those of other platforms.
function(volo_glob_sources variable)
  file(GLOB sources CONFIGURE_DEPENDS ${ARGN})
  foreach(platform ${VOLO_PLATFORMS})
    if(NOT platform STREQUAL VOLO_PLATFORM)
      list(FILTER sources EXCLUDE REGEX "_${platform}(_test)?\\.cpp$")
    endif()
  endforeach()
  set(${variable} ${sources} PARENT_SCOPE)
endfunction()
