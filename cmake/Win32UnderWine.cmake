# Builds win32/ and its GoogleTest suite with the MinGW toolchain as a nested project, and registers
# its test run as one CTest test of this build.
include(ExternalProject)

set(CORVANTA_WIN32_BINARY_DIR "${CMAKE_BINARY_DIR}/win32-mingw")
ExternalProject_Add(corvanta_win32_mingw
    SOURCE_DIR "${CMAKE_SOURCE_DIR}/win32"
    BINARY_DIR "${CORVANTA_WIN32_BINARY_DIR}"
    CMAKE_ARGS
        -DCMAKE_TOOLCHAIN_FILE=${CMAKE_SOURCE_DIR}/cmake/mingw-w64.cmake
        -DCMAKE_BUILD_TYPE=Release
        -DCORVANTA_WIN32_TESTS=ON
    BUILD_ALWAYS ON
    INSTALL_COMMAND ""
    USES_TERMINAL_BUILD ON)

add_test(NAME win32_under_wine
         COMMAND ${CMAKE_CTEST_COMMAND} --test-dir "${CORVANTA_WIN32_BINARY_DIR}" --output-on-failure)
set_tests_properties(win32_under_wine PROPERTIES LABELS win32 TIMEOUT 600)
