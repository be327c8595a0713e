# Picks the sources of the given folders for the platform being built:
# Foo.cpp always, Foo_win.cpp on Windows, Foo_linux.cpp elsewhere.
function(corvanta_platform_sources out)
    # A script (cmake -P) has no build to run again when files come or go.
    set(depends CONFIGURE_DEPENDS)
    if(CMAKE_SCRIPT_MODE_FILE)
        set(depends)
    endif()
    set(result)
    foreach(folder IN LISTS ARGN)
        file(GLOB files ${depends}
             "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp"
             "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.h"
             "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.qrc")
        list(APPEND result ${files})
    endforeach()
    if(WIN32)
        list(FILTER result EXCLUDE REGEX "_linux\\.cpp$")
    else()
        list(FILTER result EXCLUDE REGEX "_win\\.cpp$")
    endif()
    set(${out} ${result} PARENT_SCOPE)
endfunction()
