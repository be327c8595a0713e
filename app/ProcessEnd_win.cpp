#include "ProcessEnd.h"

#include "win32/process.h"

int endProcess(int status)
{
    win32::endProcessNow(unsigned(status));
}
