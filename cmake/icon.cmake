# Renders assets/icon.svg and provides:
#
#   ${VOLO_ASSETS}/icon-<size>.png   icons for desktops and packages
#   ${VOLO_ICON}                     an ICO file for the resources of Windows programs
#   volo_embed_icon(<target>)        compiles the window's icon into the target (ui/ui_icon.h)
#
# This needs rsvg-convert and ImageMagick. If they are missing, the programs have no icon.

set(VOLO_ASSETS ${CMAKE_BINARY_DIR}/assets)
set(VOLO_ICON "")
find_program(VOLO_RSVG_CONVERT rsvg-convert)
if(CMAKE_HOST_WIN32)
  find_program(VOLO_IMAGEMAGICK magick) # not convert: Windows has another program of that name
else()
  find_program(VOLO_IMAGEMAGICK NAMES magick convert)
endif()

file(MAKE_DIRECTORY ${VOLO_ASSETS})
set(VOLO_ICON_PIXELS ${VOLO_ASSETS}/ui_icon_pixels.cpp)
set(pictures "")
set(small_pictures "")
set(raws "")
set(commands "")
if(VOLO_RSVG_CONVERT AND VOLO_IMAGEMAGICK)
  foreach(size 16 24 32 48 64 128 256 512)
    set(picture ${VOLO_ASSETS}/icon-${size}.png)
    list(APPEND pictures ${picture})
    list(APPEND commands
      COMMAND ${VOLO_RSVG_CONVERT} -w ${size} -h ${size} -o ${picture} ${CMAKE_SOURCE_DIR}/assets/icon.svg)
    if(size LESS_EQUAL 256)
      list(APPEND small_pictures ${picture})
    endif()
    if(size MATCHES "^(16|32|48|128)$") # the sizes of the window's icon
      list(APPEND raws ${VOLO_ASSETS}/icon-${size}.rgba)
      list(APPEND commands COMMAND ${VOLO_IMAGEMAGICK} ${picture} -depth 8 RGBA:${VOLO_ASSETS}/icon-${size}.rgba)
    endif()
  endforeach()
  if(WIN32)
    set(VOLO_ICON ${VOLO_ASSETS}/volo.ico)
    list(APPEND commands COMMAND ${VOLO_IMAGEMAGICK} ${small_pictures} ${VOLO_ICON})
  endif()
else()
  message(STATUS "No icon: rsvg-convert or ImageMagick is missing")
endif()
add_custom_command(OUTPUT ${pictures} ${VOLO_ICON} ${VOLO_ICON_PIXELS}
  DEPENDS ${CMAKE_SOURCE_DIR}/assets/icon.svg ${CMAKE_SOURCE_DIR}/cmake/embed-icon.cmake
  ${commands}
  COMMAND ${CMAKE_COMMAND} "-DRAWS=${raws}" -DOUTPUT=${VOLO_ICON_PIXELS} -P ${CMAKE_SOURCE_DIR}/cmake/embed-icon.cmake
  VERBATIM)
add_custom_target(volo_icon ALL DEPENDS ${pictures} ${VOLO_ICON} ${VOLO_ICON_PIXELS})

function(volo_embed_icon target)
  set_source_files_properties(${VOLO_ICON_PIXELS} PROPERTIES GENERATED ON)
  target_sources(${target} PRIVATE ${VOLO_ICON_PIXELS})
  add_dependencies(${target} volo_icon)
endfunction()
