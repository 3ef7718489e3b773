# Compiler and linker flags of all code, third-party sources included. tests/package/programs_test.py reads their effect
# from the built programs.

# --- Reproducible: the same sources give the same bytes in every folder and at every date. __FILE__ and debug
# information contain relative paths.
if(NOT MSVC)
  add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${CMAKE_BINARY_DIR}/=)
endif()
if(MINGW)
  add_link_options(-Wl,--no-insert-timestamp)
endif()

# --- Hardened, as distributions build their programs. Sanitizers bring checks of their own, and _FORTIFY_SOURCE needs
# optimisation.
set(VOLO_HARDENED OFF)
if(CMAKE_BUILD_TYPE MATCHES "^Rel" AND NOT MSVC AND NOT VOLO_SANITIZE AND NOT VOLO_COVERAGE)
  set(VOLO_HARDENED ON)
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  if(WIN32)
    # GCC always probes the stack on Windows, and has no control-flow protection for it.
    add_link_options(-Wl,--dynamicbase,--high-entropy-va,--nxcompat)
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
