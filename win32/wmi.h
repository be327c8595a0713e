#pragma once

#include <functional>
#include <string>
#include <vector>

namespace win32 {

// Receives the reason a query failed: the step and its HRESULT. The Qt side logs it.
using WmiLogger = std::function<void(const std::string& message)>;

// What one query of ROOT\CIMV2 found: for each instance of the class, its values of the properties
// asked for, in their order. Strings as they are, numbers in decimal, TRUE or FALSE, arrays as
// {"a","b"}, null as empty; MAC addresses in upper case with hyphens.
using WmiInstances = std::vector<std::vector<std::wstring>>;

// Reads the properties of every instance of a class through COM (IWbemLocator, IWbemServices),
// on any thread. Empty when nothing was found or a step failed; a failure is logged.
WmiInstances wmiInstances(const std::wstring& className,
                          const std::vector<std::wstring>& properties, const WmiLogger& log);

// The instances as "wmic <alias> get <properties> /Format:list" prints them: before each
// instance a blank line, then one "Name=value" line per property.
std::wstring wmicList(const std::vector<std::wstring>& properties, const WmiInstances& instances);

// The instances as PowerShell's list view prints them: before each instance a blank line, then
// one "Name : value" line per property with the names padded to the longest; a blank line ends it.
std::wstring powerShellList(const std::vector<std::wstring>& properties,
                            const WmiInstances& instances);

// A MAC address in the form wmic and the Windows tools print, "3C-7C-3F-11-22-33": upper-case
// hexadecimal, hyphens. Wine writes "3c:7c:3f:11:22:33". Other text comes back as it was.
std::wstring macAddressText(const std::wstring& text);

} // namespace win32
