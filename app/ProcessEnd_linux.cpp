#include "ProcessEnd.h"

int endProcess(int status)
{
    return status;
}
