# `cpack` in the build folder makes a zip of the launcher's folder. Linux has no package yet.
if(NOT WIN32)
  return()
endif()

install(TARGETS volo-launcher RUNTIME DESTINATION .)
install(FILES ${VOLO_FONT} assets/background.png assets/launcher_config.example.json LICENSE THIRD_PARTY.md DESTINATION .)

# The licences of the linked libraries.
foreach(library ${VOLO_WINDOWS_LIBRARIES})
  install(DIRECTORY ${library}/licences DESTINATION . OPTIONAL)
endforeach()
install(FILES ${imgui_SOURCE_DIR}/LICENSE.txt DESTINATION licences RENAME Dear-ImGui.txt)
install(FILES ${httplib_SOURCE_DIR}/LICENSE DESTINATION licences RENAME cpp-httplib.txt)
file(GLOB VOLO_MINIZ_TEXT ${miniz_SOURCE_DIR}/miniz.c)
file(READ ${VOLO_MINIZ_TEXT} VOLO_MINIZ_LICENCE LIMIT 4000)
string(REGEX MATCH "Copyright.*SOFTWARE\\." VOLO_MINIZ_LICENCE "${VOLO_MINIZ_LICENCE}")
file(WRITE ${CMAKE_BINARY_DIR}/miniz.txt "${VOLO_MINIZ_LICENCE}\n")
install(FILES ${CMAKE_BINARY_DIR}/miniz.txt DESTINATION licences)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME volo-launcher-${PROJECT_VERSION}-windows-x86_64)
set(CPACK_PACKAGE_VENDOR "VOLO")
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
