# CPack runs this script once for each package. The script chooses the components and the name of the package.

set(components folder)
set(name volo-launcher)
if(CPACK_GENERATOR STREQUAL "DEB")
  set(components system debian)
  set(CPACK_SET_DESTDIR ON) # needed for the file in /etc
  set(CPACK_INSTALL_PREFIX /usr)
elseif(VOLO_PACKAGE STREQUAL "publisher")
  set(components publisher)
  set(name volo-publish)
endif()

list(GET CPACK_INSTALL_CMAKE_PROJECTS 0 folder)
list(GET CPACK_INSTALL_CMAKE_PROJECTS 1 project)
set(CPACK_INSTALL_CMAKE_PROJECTS "")
foreach(component ${components})
  list(APPEND CPACK_INSTALL_CMAKE_PROJECTS ${folder} ${project} ${component} /)
endforeach()
set(CPACK_PACKAGE_FILE_NAME ${name}-${CPACK_VOLO_SUFFIX})
if(CPACK_GENERATOR STREQUAL "NSIS")
  string(APPEND CPACK_PACKAGE_FILE_NAME -setup)
endif()
