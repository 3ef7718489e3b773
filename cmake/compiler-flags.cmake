# Compiler and linker flags for all code, including third-party sources. tests/package/programs_test.py checks the built
# programs for their effects.

# --- Release builds use -O2, as distributions do. CMake's -O3 takes a tenth more time to compile; the launcher's own work
# does not get faster with it, because it happens in libraries (docs/performance.md).
if(NOT MSVC)
  string(REPLACE "-O3" "-O2" CMAKE_C_FLAGS_RELEASE "${CMAKE_C_FLAGS_RELEASE}")
  string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
endif()

# --- Reproducible builds: the same sources give the same bytes in every folder and on every date. These flags make the
# paths in __FILE__ and in the debug information relative.
if(NOT MSVC)
  add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${CMAKE_BINARY_DIR}/=)
endif()
if(MINGW)
  add_link_options(-Wl,--no-insert-timestamp)
endif()

# --- Hardening, with the flags that distributions use. Not with sanitizers, which have their own checks, and only in
# release builds, because _FORTIFY_SOURCE needs optimisation.
set(VOLO_HARDENED OFF)
if(CMAKE_BUILD_TYPE MATCHES "^Rel" AND NOT MSVC AND NOT VOLO_SANITIZE AND NOT VOLO_COVERAGE)
  set(VOLO_HARDENED ON)
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  if(WIN32)
    # On Windows, GCC always probes the stack and has no control-flow protection. The linker also needs
    # -fstack-protector-strong, because the checks of MinGW-w64 are in a separate library, libssp.
    add_link_options(-fstack-protector-strong -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
  else()
    include(CheckPIESupported)
    check_pie_supported()
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    add_compile_options(-fstack-clash-protection)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
      add_compile_options(-fcf-protection)
    endif()
    add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
  endif()
endif()
