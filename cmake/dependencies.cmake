# The one list of third-party code. None of it is in this repository.
#
# find_package finds the installed libraries. FetchContent fetches the source libraries by upstream commit. `run` and
# `test` set FETCHCONTENT_SOURCE_DIR_<NAME> to a folder with the sources, so that CMake downloads nothing.

include(FetchContent)
include(cmake/split-header.cmake)
set(FETCHCONTENT_QUIET ON)

find_package(Threads REQUIRED)
find_package(OpenSSL 3.0 REQUIRED)
find_package(glfw3 3.3 REQUIRED)
find_path(RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
find_path(STB_INCLUDE_DIR stb_image.h PATH_SUFFIXES stb REQUIRED)
find_path(LIBDEFLATE_INCLUDE_DIR libdeflate.h REQUIRED)
# The static library where there is one: the launcher's archive then runs on systems without libdeflate.
find_library(LIBDEFLATE_LIBRARY NAMES libdeflate.a deflate deflatestatic REQUIRED)
if(NOT WIN32)
  find_package(OpenGL REQUIRED COMPONENTS OpenGL)
  find_package(Fontconfig REQUIRED)
  find_package(X11 REQUIRED)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(LIBSYSTEMD REQUIRED IMPORTED_TARGET libsystemd) # for its D-Bus client
  if(glfw3_VERSION VERSION_GREATER_EQUAL 3.4) # it supports X11 and Wayland in one library
    pkg_check_modules(WAYLAND REQUIRED IMPORTED_TARGET wayland-client xcursor)
  endif()
else()
  # A static OpenSSL needs ws2_32. cpp-httplib reads the certificate store through crypt32.
  set_property(TARGET OpenSSL::Crypto APPEND PROPERTY INTERFACE_LINK_LIBRARIES ws2_32 crypt32)
endif()

# volo_source_library(<name> <repository> <commit>): sets <name>_SOURCE_DIR to the library's folder. SOURCE_SUBDIR is a
# folder that does not exist, so that CMake does not run the library's own CMakeLists.txt.
function(volo_source_library name repository commit)
  FetchContent_Declare(${name} GIT_REPOSITORY ${repository} GIT_TAG ${commit} SOURCE_SUBDIR no-build-here)
  FetchContent_MakeAvailable(${name})
  set(${name}_SOURCE_DIR ${${name}_SOURCE_DIR} PARENT_SCOPE)
  if(NOT MSVC)
    add_compile_options(-ffile-prefix-map=${${name}_SOURCE_DIR}/=${name}/)
  endif()
endfunction()

volo_source_library(imgui https://github.com/ocornut/imgui.git 1f7f1f54af38b0350d8c0008b096a9af6de299c7)
volo_source_library(httplib https://github.com/yhirose/cpp-httplib.git b8fe69e4e892ec394ca8de27ab2fe219008690b6)
volo_source_library(miniz https://github.com/richgel999/miniz.git d10b03cc73475af673df40f06e5cefd1d5f940d9)

# --- Dear ImGui: the headers, and two builds of the library. The launcher links imgui. The tests and the gallery link
# imgui_hooked; its test-engine hooks let them find items by identifier. Our own code is compiled the same for both.
set(VOLO_IMGUI_SOURCES
  ${imgui_SOURCE_DIR}/imgui.cpp ${imgui_SOURCE_DIR}/imgui_draw.cpp ${imgui_SOURCE_DIR}/imgui_tables.cpp
  ${imgui_SOURCE_DIR}/imgui_widgets.cpp)

add_library(imgui_headers INTERFACE)
target_include_directories(imgui_headers SYSTEM INTERFACE ${imgui_SOURCE_DIR} ${imgui_SOURCE_DIR}/backends)
target_compile_definitions(imgui_headers INTERFACE IMGUI_DISABLE_OBSOLETE_FUNCTIONS IMGUI_DISABLE_DEMO_WINDOWS
  IMGUI_DEFINE_MATH_OPERATORS IMGUI_USE_WCHAR32)

add_library(imgui STATIC ${VOLO_IMGUI_SOURCES})
target_link_libraries(imgui PUBLIC imgui_headers)

add_library(imgui_hooked STATIC EXCLUDE_FROM_ALL ${VOLO_IMGUI_SOURCES})
target_link_libraries(imgui_hooked PUBLIC imgui_headers)
target_compile_definitions(imgui_hooked PRIVATE IMGUI_ENABLE_TEST_ENGINE)

add_library(imgui_backends OBJECT
  ${imgui_SOURCE_DIR}/backends/imgui_impl_glfw.cpp ${imgui_SOURCE_DIR}/backends/imgui_impl_opengl3.cpp)
target_link_libraries(imgui_backends PUBLIC imgui_headers glfw)
if(NOT WIN32)
  target_link_libraries(imgui_backends PUBLIC OpenGL::GL Fontconfig::Fontconfig X11::X11 PkgConfig::LIBSYSTEMD
    $<TARGET_NAME_IF_EXISTS:PkgConfig::WAYLAND> ${CMAKE_DL_LIBS})
else()
  target_link_libraries(imgui_backends PUBLIC opengl32 gdi32 dwmapi ole32 uuid)
endif()

# --- cpp-httplib: header only, TLS on, compression off.
# CPPHTTPLIB_LISTEN_BACKLOG: with the default of 5, a browser waits for seconds if other programs connect at the same
# time. CPPHTTPLIB_MAX_LINE_LENGTH, CPPHTTPLIB_HEADER_MAX_LENGTH: a browser may send 16 KiB of cookies to the loopback
# listener. The library parses status lines with std::regex, which recurses for each character, so requests use a thread
# with a large stack (src/system/http_exchange.cpp).
volo_split_header(${httplib_SOURCE_DIR}/httplib.h ${CMAKE_BINARY_DIR}/httplib)
add_library(httplib STATIC ${CMAKE_BINARY_DIR}/httplib/httplib.cpp)
target_include_directories(httplib SYSTEM PUBLIC ${CMAKE_BINARY_DIR}/httplib)
target_compile_definitions(httplib PUBLIC CPPHTTPLIB_OPENSSL_SUPPORT CPPHTTPLIB_LISTEN_BACKLOG=128
  CPPHTTPLIB_MAX_LINE_LENGTH=20480 CPPHTTPLIB_HEADER_MAX_LENGTH=20480)
target_link_libraries(httplib PUBLIC OpenSSL::SSL OpenSSL::Crypto Threads::Threads)

# --- stb_image, RapidJSON: headers.
add_library(stb_image INTERFACE)
target_include_directories(stb_image SYSTEM INTERFACE ${STB_INCLUDE_DIR})
add_library(rapidjson_headers INTERFACE)
target_include_directories(rapidjson_headers SYSTEM INTERFACE ${RAPIDJSON_INCLUDE_DIR})
target_compile_definitions(rapidjson_headers INTERFACE RAPIDJSON_HAS_STDSTRING=1)

# --- CLI11: headers, for the programs that have command lines.
find_path(CLI11_INCLUDE_DIR CLI/CLI.hpp REQUIRED)
add_library(cli11_headers INTERFACE)
target_include_directories(cli11_headers SYSTEM INTERFACE ${CLI11_INCLUDE_DIR})

# --- miniz: one source file in its amalgamated form, several in its repository. The repository's form also needs
# miniz_export.h, which miniz's own build would generate. install/crc32.cpp replaces miniz's CRC-32, which needs almost
# half of the time of an extraction, by libdeflate's.
file(GLOB VOLO_MINIZ_SOURCES ${miniz_SOURCE_DIR}/miniz*.c)
add_library(miniz OBJECT ${VOLO_MINIZ_SOURCES} ${CMAKE_SOURCE_DIR}/src/install/crc32.cpp)
target_compile_definitions(miniz PRIVATE USE_EXTERNAL_MZCRC)
target_include_directories(miniz SYSTEM PRIVATE ${LIBDEFLATE_INCLUDE_DIR})
target_link_libraries(miniz PRIVATE ${LIBDEFLATE_LIBRARY})
target_include_directories(miniz SYSTEM PUBLIC ${miniz_SOURCE_DIR})
if(EXISTS ${miniz_SOURCE_DIR}/miniz_tdef.c)
  file(WRITE ${CMAKE_BINARY_DIR}/miniz/miniz_export.h "#define MINIZ_EXPORT\n")
  target_include_directories(miniz SYSTEM PUBLIC ${CMAKE_BINARY_DIR}/miniz)
endif()

# --- Only for the tests.
if(VOLO_BUILD_TESTS)
  find_package(GTest REQUIRED)
endif()
