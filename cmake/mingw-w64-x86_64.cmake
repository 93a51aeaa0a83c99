# Cross-build for 64-bit Windows with mingw-w64; tests run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Executables carry their runtime (libstdc++, libgcc, winpthread) inside.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# Debian's wine64 package has its loader here; a `wine` wrapper when present.
find_program(TROV_WINE NAMES wine64 wine PATHS /usr/lib/wine NO_DEFAULT_PATH)
if(NOT TROV_WINE)
  find_program(TROV_WINE NAMES wine64 wine)
endif()
if(TROV_WINE)
  # Through a wrapper that starts a program again when Wine failed to start
  # it (see cmake/wine-run).
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run ${TROV_WINE})
endif()
