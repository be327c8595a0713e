#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace win32 {

// Receives the debug lines of the functions below; the Qt side passes them to qDebug().
using Logger = std::function<void(const char* message)>;

// One installed program of the machine's 32-bit Uninstall list; a missing value is empty.
struct UninstallEntry
{
    std::wstring installLocation;
    std::wstring displayIcon;
    std::wstring displayName;
    std::wstring displayVersion;
};

// The product name without its blanks, followed by ".": what the product's ProgIDs start with.
std::wstring associationPrefix(const std::wstring& productName);

// A REG_SZ value of a sub-key of an open key (empty name: the default value); empty on any failure.
std::wstring readStringValue(HKEY key, const std::wstring& subKey, const std::wstring& valueName);

// The keys under SOFTWARE\Classes whose default value starts with the product's prefix.
std::vector<std::wstring> productAssociations(const std::wstring& productName, bool machine);
// Deletes only the default value of the extension's key, and only while it is the product's.
bool removeProductAssociation(const std::wstring& extension, const std::wstring& productName,
                              bool machine);

std::vector<UninstallEntry> uninstallEntries();

// The user's SID in its "S-1-5-21-..." form; empty on failure, with the reason logged.
std::wstring currentUserSid(const Logger& log);

// The user's own environment, reached as HKEY_USERS\<sid>\Environment.
std::wstring environmentVariable(const std::wstring& sid, const std::wstring& name);
// Writes a REG_SZ value and tells running programs, waiting at most 100 ms for each.
bool setEnvironmentVariable(const std::wstring& sid, const std::wstring& name,
                            const std::wstring& value);
bool removeEnvironmentVariable(const std::wstring& sid, const std::wstring& name);

} // namespace win32
