# Cross-builds the Qt-free Win32 layer with MinGW-w64 (POSIX threads) and runs what it builds under
# Wine, in a prefix of its own inside the build folder so the user's ~/.wine is never touched.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# Static runtime: the test programs then need no MinGW DLLs beside them under Wine.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

find_program(CORVANTA_WINE64 NAMES wine64 PATHS /usr/lib/wine /usr/lib64/wine NO_CMAKE_FIND_ROOT_PATH)
if(CORVANTA_WINE64)
    set(CMAKE_CROSSCOMPILING_EMULATOR
        "${CMAKE_COMMAND};-E;env;WINEPREFIX=${CMAKE_BINARY_DIR}/wineprefix;WINEDEBUG=-all;WINEDLLOVERRIDES=mscoree,mshtml=;${CORVANTA_WINE64}")
endif()
