#include "win32/process.h"

#include <windows.h>

#include <cstdio>

namespace win32 {

void endProcessNow(unsigned status)
{
    std::fflush(nullptr);
    TerminateProcess(GetCurrentProcess(), status);
    // Only a process that may not end itself gets here.
    ExitProcess(status);
}

} // namespace win32
