# Runs one QtTest executable under Wine, on an X server of its own, and prints its log. Under Wine
# a Windows program's standard output is no console, so QtTest would send its log to
# OutputDebugString; it goes to a file instead. Wine passes no QT_* variable to Windows programs, so
# the suites run on Windows' own platform plugin, as the program does. Wine's Recycle Bin is the
# freedesktop trash of the Unix home, a private one for each run, which the suites find as
# CORVANTA_TEST_TRASH. Each run has a network of its own with only loopback, and its Wine server
# (which owns the sockets) ends with it.
#   cmake -DEMULATOR=a|b|c -DPROGRAM=tst_x.exe -DLOG=tst_x.log -P QtTestUnderWine.cmake
string(REPLACE "|" ";" EMULATOR "${EMULATOR}")
file(REMOVE "${LOG}")
set(home "${LOG}.home")
file(REMOVE_RECURSE "${home}")
file(MAKE_DIRECTORY "${home}")
list(GET EMULATOR -1 wine)
get_filename_component(wineserver "${wine}" DIRECTORY)
set(prefix ${EMULATOR})
list(FILTER prefix INCLUDE REGEX "^WINEPREFIX=")
set(run [[ip link set lo up && "$@"; result=$?; "$WINESERVER" -w; exit $result]])
execute_process(COMMAND ${CMAKE_COMMAND} -E env "HOME=${home}" "XDG_DATA_HOME=${home}/.local/share"
                        "CORVANTA_TEST_TRASH=Z:${home}/.local/share/Trash"
                        "WINESERVER=${wineserver}/wineserver64" ${prefix}
                        unshare -rn sh -c "${run}" sh
                        xvfb-run --auto-servernum --server-args=-noreset ${EMULATOR} "${PROGRAM}"
                        -o "${LOG},txt" RESULT_VARIABLE result)
if(EXISTS "${LOG}")
    file(READ "${LOG}" log)
    message("${log}")
endif()
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} ended with ${result}")
endif()
