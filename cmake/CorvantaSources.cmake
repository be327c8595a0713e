# Picks the sources of the given folders for the platform being built:
# Foo.cpp always, Foo_win.cpp on Windows, Foo_linux.cpp elsewhere.
function(corvanta_platform_sources out)
    set(result)
    foreach(folder IN LISTS ARGN)
        file(GLOB files CONFIGURE_DEPENDS
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
