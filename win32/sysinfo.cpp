#include "win32/sysinfo.h"

#include <windows.h>

namespace win32 {

MachineNames machineNames()
{
    MachineNames names;
    wchar_t buffer[16] = {};
    DWORD size = 16;
    if (GetComputerNameW(buffer, &size))
        names.computerName.assign(buffer, size);
    // The size is deliberately not reset: only a user name shorter than the computer name fits.
    // A failed first call leaves the size it wanted, which must not exceed the buffer.
    if (size > 16)
        size = 16;
    if (GetUserNameW(buffer, &size))
        names.userName = buffer;
    return names;
}

std::uint64_t totalPhysicalMemory()
{
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? status.ullTotalPhys : 0;
}

std::wstring processorSpeedText()
{
    DWORD mhz = 0;
    DWORD bytes = sizeof mhz;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, L"Hardware\\Description\\System\\CentralProcessor\\0",
                     L"~MHz", RRF_RT_REG_DWORD, nullptr, &mhz, &bytes)
        != ERROR_SUCCESS)
        return {};
    return std::to_wstring(mhz);
}

} // namespace win32
