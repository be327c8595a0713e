# Runs one QtTest executable under Wine, on an X server of its own, and prints its log. Under Wine
# a Windows program's standard output is no console, so QtTest would send its log to
# OutputDebugString; it goes to a file instead. Wine passes no QT_* variable to Windows programs, so
# the suites run on Windows' own platform plugin, as the program does.
#   cmake -DEMULATOR=a|b|c -DPROGRAM=tst_x.exe -DLOG=tst_x.log -P QtTestUnderWine.cmake
string(REPLACE "|" ";" EMULATOR "${EMULATOR}")
file(REMOVE "${LOG}")
execute_process(COMMAND xvfb-run --auto-servernum --server-args=-noreset ${EMULATOR} "${PROGRAM}" -o "${LOG},txt" RESULT_VARIABLE result)
if(EXISTS "${LOG}")
    file(READ "${LOG}" log)
    message("${log}")
endif()
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} ended with ${result}")
endif()
