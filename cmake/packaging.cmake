# Install rules and packages.
#
#   cmake --install BUILD_FOLDER        installs the launcher for all users of a Linux machine (component "system")
#   cpack in the build folder           Linux: .tar.gz and .deb; Windows: .zip, and an installer if NSIS is installed
#   cpack -D VOLO_PACKAGE=publisher     a separate archive with volo-publish
#
# The launcher installs the editor in its own folder, so the user must be able to write there. The archives and the
# Windows installer contain the launcher's folder (component "folder"). The .deb installs a starter, which copies this
# folder for each user.

# The reverse-DNS name in the desktop entry, the metainfo, the icons' names and the registry key.
set(VOLO_APPLICATION_ID "org.volo.Launcher" CACHE STRING "Reverse-DNS name of the application")
set(VOLO_HOMEPAGE "https://example.org/volo-launcher" CACHE STRING "Web page of the launcher, for software centres")
target_compile_definitions(vls_en PRIVATE VOLO_APPLICATION_ID="${VOLO_APPLICATION_ID}")
set(VOLO_CONTACT "VOLO Launcher maintainers <maintainers@volo.example>" CACHE STRING "Maintainer named in the packages")
set(VOLO_LAUNCHER_CONFIG "" CACHE FILEPATH "launcher_config.json for the packages; empty: only the example")

set(VOLO_FOLDER_FILES ${VOLO_FONT} assets/background.png assets/launcher_config.example.json)
set(VOLO_FOLDER_TEXTS LICENSE THIRD_PARTY.md CHANGELOG.md)

# --- The licences of the libraries that the programs contain.
set(VOLO_LICENCES ${CMAKE_BINARY_DIR}/licences)
configure_file(${imgui_SOURCE_DIR}/LICENSE.txt ${VOLO_LICENCES}/Dear-ImGui.txt COPYONLY)
configure_file(${httplib_SOURCE_DIR}/LICENSE ${VOLO_LICENCES}/cpp-httplib.txt COPYONLY)
file(READ ${miniz_SOURCE_DIR}/miniz.c VOLO_MINIZ_LICENCE LIMIT 4000)
string(REGEX MATCH "Copyright.*SOFTWARE\\." VOLO_MINIZ_LICENCE "${VOLO_MINIZ_LICENCE}")
file(WRITE ${VOLO_LICENCES}/miniz.txt "${VOLO_MINIZ_LICENCE}\n")
if(WIN32)
  foreach(library ${VOLO_WINDOWS_LIBRARIES})
    file(GLOB texts ${library}/licences/*.txt)
    file(COPY ${texts} DESTINATION ${VOLO_LICENCES})
  endforeach()
else()
  foreach(pair libdeflate:libdeflate-dev RapidJSON:rapidjson-dev stb:libstb-dev Roboto:fonts-roboto-unhinted)
    string(REPLACE ":" ";" pair ${pair})
    list(GET pair 0 name)
    list(GET pair 1 package)
    if(EXISTS /usr/share/doc/${package}/copyright)
      configure_file(/usr/share/doc/${package}/copyright ${VOLO_LICENCES}/${name}.txt COPYONLY)
    endif()
  endforeach()
endif()

# --- Component "folder": the launcher's folder.
install(TARGETS volo-launcher RUNTIME DESTINATION . COMPONENT folder EXCLUDE_FROM_ALL)
install(FILES ${VOLO_FOLDER_FILES} ${VOLO_FOLDER_TEXTS} DESTINATION . COMPONENT folder EXCLUDE_FROM_ALL)
install(DIRECTORY ${VOLO_LICENCES} DESTINATION . COMPONENT folder EXCLUDE_FROM_ALL)
if(VOLO_LAUNCHER_CONFIG)
  install(FILES ${VOLO_LAUNCHER_CONFIG} DESTINATION . RENAME launcher_config.json COMPONENT folder EXCLUDE_FROM_ALL)
endif()

# --- Component "publisher".
install(TARGETS volo-publish RUNTIME DESTINATION . COMPONENT publisher EXCLUDE_FROM_ALL)
install(FILES LICENSE THIRD_PARTY.md docs/publishing.md docs/update-server.md DESTINATION .
  COMPONENT publisher EXCLUDE_FROM_ALL)

# --- Component "system" and, for the .deb only, "debian".
if(NOT WIN32)
  include(GNUInstallDirs)
  string(TIMESTAMP VOLO_RELEASE_DATE "%Y-%m-%d" UTC) # CMake uses SOURCE_DATE_EPOCH if it is set
  set(linux ${CMAKE_CURRENT_BINARY_DIR}/linux)
  configure_file(assets/linux/launcher.desktop.in ${linux}/${VOLO_APPLICATION_ID}.desktop @ONLY)
  configure_file(assets/linux/launcher.metainfo.xml.in ${linux}/${VOLO_APPLICATION_ID}.metainfo.xml @ONLY)
  configure_file(assets/linux/per-user-starter.in ${linux}/volo-launcher @ONLY)

  install(TARGETS volo-launcher RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/volo-launcher COMPONENT system)
  install(FILES ${VOLO_FOLDER_FILES} DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/volo-launcher COMPONENT system)
  install(PROGRAMS ${linux}/volo-launcher DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT system)
  install(FILES ${linux}/${VOLO_APPLICATION_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications
    COMPONENT system)
  install(FILES ${linux}/${VOLO_APPLICATION_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo
    COMPONENT system)
  set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
  install(FILES assets/icon.svg DESTINATION ${icons}/scalable/apps RENAME ${VOLO_APPLICATION_ID}.svg COMPONENT system)
  if(VOLO_ICON)
    foreach(size 16 24 32 48 64 128 256 512)
      install(FILES ${VOLO_ASSETS}/icon-${size}.png DESTINATION ${icons}/${size}x${size}/apps
        RENAME ${VOLO_APPLICATION_ID}.png COMPONENT system)
    endforeach()
  endif()
  set(documents ${CMAKE_INSTALL_DATADIR}/doc/volo-launcher)
  install(FILES LICENSE DESTINATION ${documents} RENAME copyright COMPONENT system)
  install(FILES THIRD_PARTY.md CHANGELOG.md docs/using.md DESTINATION ${documents} COMPONENT system)
  install(DIRECTORY ${VOLO_LICENCES} DESTINATION ${documents} COMPONENT system)

  set(configuration assets/launcher_config.example.json)
  if(VOLO_LAUNCHER_CONFIG)
    set(configuration ${VOLO_LAUNCHER_CONFIG})
  endif()
  install(FILES ${configuration} DESTINATION /etc/volo-launcher RENAME launcher_config.json
    COMPONENT debian EXCLUDE_FROM_ALL)
  file(WRITE ${linux}/conffiles "/etc/volo-launcher/launcher_config.json\n")
endif()

# --- CPack. cpack-generator.cmake chooses the components of each package.
set(CMAKE_MODULE_PATH ${CMAKE_SOURCE_DIR}/assets/windows) # NSIS.template.in
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_SOURCE_DIR}/cmake/cpack-generator.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/cmake/cpack-dates.cmake)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_VENDOR "VOLO")
set(CPACK_PACKAGE_CONTACT "${VOLO_CONTACT}")
set(CPACK_PACKAGE_INSTALL_DIRECTORY "VOLO Launcher")
set(CPACK_PACKAGE_INSTALL_REGISTRY_KEY "${VOLO_APPLICATION_ID}")
set(CPACK_VOLO_SUFFIX ${PROJECT_VERSION}-${VOLO_PLATFORM}-x86_64)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  find_program(VOLO_MAKENSIS makensis)
  if(VOLO_MAKENSIS)
    list(APPEND CPACK_GENERATOR NSIS)
  endif()
  set(CPACK_NSIS_PACKAGE_NAME "VOLO Launcher")
  set(CPACK_NSIS_MUI_ICON "${VOLO_ICON}")
else()
  set(CPACK_VOLO_SUFFIX ${PROJECT_VERSION}-${VOLO_PLATFORM}-${CMAKE_SYSTEM_PROCESSOR})
  set(CPACK_GENERATOR TGZ)
  find_program(VOLO_DPKG_SHLIBDEPS dpkg-shlibdeps)
  if(VOLO_DPKG_SHLIBDEPS)
    list(APPEND CPACK_GENERATOR DEB)
  endif()
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION devel)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  # List libraries that are loaded only at run time: GLFW loads libGL (X11) or libEGL (Wayland), and libdecor loads the
  # plugin that draws the title bar on Wayland.
  string(CONCAT CPACK_DEBIAN_PACKAGE_DEPENDS "ca-certificates, xdg-utils, zenity | kdialog | xdg-desktop-portal, "
    "libgl1, libegl1, libdecor-0-plugin-1-gtk | libdecor-0-plugin-1-cairo")
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "It signs in, lists projects, opens them in the editor, and installs the editor.")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${linux}/conffiles)
endif()
include(CPack)
