# Windows programs from a Linux machine: MinGW-w64 with POSIX threads, everything linked in, so that no DLL beside the
# system's own is needed.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Windows 10, for the headers.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_EXE_LINKER_FLAGS_RELEASE_INIT "-s")

# Libraries and headers come from these folders and the compiler's own, programs from the machine.
set(VOLO_WINDOWS_LIBRARIES "" CACHE STRING "Folders of the libraries built for Windows (cmake/build-windows-libraries)")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VOLO_WINDOWS_LIBRARIES)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${VOLO_WINDOWS_LIBRARIES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

if(NOT CMAKE_HOST_WIN32)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run --collect)
endif()
