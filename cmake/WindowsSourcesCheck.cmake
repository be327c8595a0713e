# Compiles every source the Windows build takes from the given folders (Foo.cpp and Foo_win.cpp, by
# the rules of CorvantaSources.cmake) with MinGW, for syntax only, against Debian's Qt headers and
# win32/. Qt for Windows cannot be installed here, so this is what catches a slip in the Windows
# glue. A CTest entry runs it as a script, so new files are found at every run:
#   cmake -DCOMPILER=... -DSOURCE_DIR=... -DFOLDERS=a|b -DQT_INCLUDE_DIRS=x|y -P WindowsSourcesCheck.cmake
foreach(argument COMPILER SOURCE_DIR FOLDERS QT_INCLUDE_DIRS)
    if(NOT DEFINED ${argument})
        message(FATAL_ERROR "WindowsSourcesCheck.cmake needs -D${argument}=...")
    endif()
endforeach()
string(REPLACE "|" ";" FOLDERS "${FOLDERS}")
string(REPLACE "|" ";" QT_INCLUDE_DIRS "${QT_INCLUDE_DIRS}")
# Qt's OpenGL dependency brings /usr/include, whose Linux headers must not stand in for MinGW's.
list(REMOVE_DUPLICATES QT_INCLUDE_DIRS)
list(REMOVE_ITEM QT_INCLUDE_DIRS /usr/include)

set(WIN32 ON)
set(CMAKE_CURRENT_SOURCE_DIR "${SOURCE_DIR}")
include("${SOURCE_DIR}/cmake/CorvantaSources.cmake")
include("${SOURCE_DIR}/cmake/CorvantaWarnings.cmake")
corvanta_platform_sources(sources ${FOLDERS})
list(FILTER sources INCLUDE REGEX "\\.cpp$")

# What the Windows build passes: C++17, the win32 layer's definitions, the folders and the
# repository root (for "win32/..."). The Linux Qt headers mark their exports in a way MinGW notes
# as ignored attributes.
set(flags -std=c++17 -fsyntax-only ${CORVANTA_WARNING_FLAGS} -Wno-attributes
          -DUNICODE -D_UNICODE -DWIN32_LEAN_AND_MEAN -DNOMINMAX -D_WIN32_WINNT=0x0601
          "-I${SOURCE_DIR}")
foreach(folder IN LISTS FOLDERS)
    list(APPEND flags "-I${SOURCE_DIR}/${folder}")
endforeach()
foreach(directory IN LISTS QT_INCLUDE_DIRS)
    list(APPEND flags -isystem "${directory}")
endforeach()

# As many compilers at a time as there are cores: commands of one execute_process run together.
cmake_host_system_information(RESULT cores QUERY NUMBER_OF_LOGICAL_CORES)
set(failed)
list(LENGTH sources count)
set(batch)
foreach(source IN LISTS sources ITEMS "")
    if(source)
        list(APPEND batch "${source}")
        list(LENGTH batch size)
        if(size LESS cores)
            continue()
        endif()
    endif()
    if(NOT batch)
        break()
    endif()
    set(commands)
    foreach(file IN LISTS batch)
        list(APPEND commands COMMAND "${COMPILER}" ${flags} "${file}")
    endforeach()
    execute_process(${commands} RESULTS_VARIABLE results ERROR_VARIABLE output)
    if(output)
        message("${output}")
    endif()
    foreach(file result IN ZIP_LISTS batch results)
        file(RELATIVE_PATH name "${SOURCE_DIR}" "${file}")
        if(result EQUAL 0)
            message(STATUS "ok      ${name}")
        else()
            message(STATUS "FAILED  ${name}")
            list(APPEND failed "${name}")
        endif()
    endforeach()
    set(batch)
endforeach()
if(count EQUAL 0)
    message(FATAL_ERROR "No sources found in ${FOLDERS}")
endif()
if(failed)
    list(LENGTH failed failures)
    message(FATAL_ERROR "${failures} of ${count} sources do not compile for Windows: ${failed}")
endif()
message(STATUS "All ${count} sources compile for Windows")
