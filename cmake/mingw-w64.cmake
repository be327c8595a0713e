# Cross-builds for 64-bit Windows with MinGW-w64 (POSIX threads) and runs what it builds under Wine,
# in a prefix of its own inside the build folder so the user's ~/.wine is never touched.
# With CORVANTA_QT_PREFIX naming an unpacked Qt for MinGW (scripts/build-windows.sh), the Qt
# programs are built too.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

set(CORVANTA_WINEPATH)
if(CORVANTA_QT_PREFIX)
    # Qt's packages come from its prefix; Debian's moc, rcc, uic and lrelease run on the host.
    list(APPEND CMAKE_FIND_ROOT_PATH "${CORVANTA_QT_PREFIX}")
    list(APPEND CMAKE_PREFIX_PATH "${CORVANTA_QT_PREFIX}")
    set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
    set(QT_HOST_PATH /usr)
    # The programs share Qt's MinGW runtime DLLs; under Wine they are found on its path.
    set(CORVANTA_WINEPATH "WINEPATH=Z:${CORVANTA_QT_PREFIX}/bin;")
else()
    # Static runtime: the test programs then need no MinGW DLLs beside them under Wine.
    set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
endif()

find_program(CORVANTA_WINE64 NAMES wine64 PATHS /usr/lib/wine /usr/lib64/wine NO_CMAKE_FIND_ROOT_PATH)
if(CORVANTA_WINE64)
    set(CMAKE_CROSSCOMPILING_EMULATOR
        "${CMAKE_COMMAND};-E;env;WINEPREFIX=${CMAKE_BINARY_DIR}/wineprefix;WINEDEBUG=-all;WINEDLLOVERRIDES=mscoree,mshtml=;${CORVANTA_WINEPATH}${CORVANTA_WINE64}")
endif()
