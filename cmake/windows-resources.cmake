# volo_program_resources(<target> <description>): adds the Windows resources to a program: manifest, version and icon.
# Does nothing on other platforms.
#
# All programs need the manifest, also the tests, because it makes UTF-8 the encoding of narrow paths.
function(volo_program_resources target VOLO_DESCRIPTION)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(VOLO_FILE_NAME ${target} OUTPUT_NAME)
  if(NOT VOLO_FILE_NAME)
    set(VOLO_FILE_NAME ${target})
  endif()
  set(VOLO_ICON_LINE "")
  if(VOLO_ICON)
    set(VOLO_ICON_LINE "GLFW_ICON ICON \"${VOLO_ICON}\"") # GLFW loads the window's icon by this name
  endif()
  set(resources ${CMAKE_BINARY_DIR}/resources/${target}.rc)
  configure_file(${CMAKE_SOURCE_DIR}/assets/windows/program.rc.in ${resources} @ONLY)
  set_property(SOURCE ${resources} PROPERTY OBJECT_DEPENDS
    "${CMAKE_SOURCE_DIR}/assets/windows/program.manifest;${VOLO_ICON}")
  target_sources(${target} PRIVATE ${resources})
  if(TARGET volo_icon)
    add_dependencies(${target} volo_icon)
  endif()
endfunction()
