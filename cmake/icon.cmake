# Renders assets/icon.svg and provides:
#
#   ${VOLO_ASSETS}/icon-<size>.png   icons for desktops and packages
#   ${VOLO_ICON}                     an ICO file for the resources of Windows programs
#   volo_embed_icon(<target>)        compiles the window's icon into the program (ui/ui_icon.h)
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

if(VOLO_RSVG_CONVERT AND VOLO_IMAGEMAGICK)
  file(MAKE_DIRECTORY ${VOLO_ASSETS})
  set(pictures "")
  set(small_pictures "")
  set(commands "")
  foreach(size 16 24 32 48 64 128 256 512)
    set(picture ${VOLO_ASSETS}/icon-${size}.png)
    list(APPEND pictures ${picture})
    list(APPEND commands
      COMMAND ${VOLO_RSVG_CONVERT} -w ${size} -h ${size} -o ${picture} ${CMAKE_SOURCE_DIR}/assets/icon.svg)
    if(size LESS_EQUAL 256)
      list(APPEND small_pictures ${picture})
    endif()
  endforeach()
  add_custom_command(OUTPUT ${pictures} DEPENDS ${CMAKE_SOURCE_DIR}/assets/icon.svg ${commands})
  set(VOLO_ICON ${VOLO_ASSETS}/volo.ico)
  add_custom_command(OUTPUT ${VOLO_ICON} DEPENDS ${small_pictures}
    COMMAND ${VOLO_IMAGEMAGICK} ${small_pictures} ${VOLO_ICON})
  add_custom_target(volo_icon ALL DEPENDS ${pictures} ${VOLO_ICON})
else()
  message(STATUS "No icon: rsvg-convert or ImageMagick is missing")
endif()

function(volo_embed_icon target)
  set(source ${VOLO_ASSETS}/ui_icon_pixels.cpp)
  set(raws "")
  set(pictures "")
  set(commands "")
  if(VOLO_ICON)
    foreach(size 16 32 48 128)
      set(picture ${VOLO_ASSETS}/icon-${size}.png)
      set(raw ${VOLO_ASSETS}/icon-${size}.rgba)
      list(APPEND pictures ${picture})
      list(APPEND raws ${raw})
      list(APPEND commands COMMAND ${VOLO_IMAGEMAGICK} ${picture} -depth 8 RGBA:${raw})
    endforeach()
  endif()
  add_custom_command(OUTPUT ${source} DEPENDS ${pictures} ${CMAKE_SOURCE_DIR}/cmake/embed-icon.cmake
    ${commands}
    COMMAND ${CMAKE_COMMAND} "-DRAWS=${raws}" -DOUTPUT=${source} -P ${CMAKE_SOURCE_DIR}/cmake/embed-icon.cmake VERBATIM)
  target_sources(${target} PRIVATE ${source})
endfunction()
