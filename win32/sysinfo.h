#pragma once

#include <cstdint>
#include <string>

namespace win32 {

struct MachineNames
{
    std::wstring computerName; // empty when the call failed
    std::wstring userName;     // empty when the call failed
};

// GetComputerNameW, then GetUserNameW into the same 16-character buffer with the size left by the
// first call: a user name not shorter than the computer name does not fit and stays empty.
MachineNames machineNames();

// Total physical memory in bytes from GlobalMemoryStatusEx; 0 on failure.
std::uint64_t totalPhysicalMemory();

// The first processor's "~MHz" value as decimal text; empty when it is missing.
std::wstring processorSpeedText();

} // namespace win32
