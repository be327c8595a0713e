#include "win32/registry.h"

#include <sddl.h>

#include <algorithm>

namespace win32 {

namespace {

const wchar_t* const classesKey = L"SOFTWARE\\Classes";
const wchar_t* const uninstallKey =
    L"SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

HKEY classesHive(bool machine)
{
    return machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// The headers hide the inline GetCurrentProcessToken() below a Windows 8 target; this is its
// pseudo handle.
HANDLE currentProcessToken()
{
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-4));
}

std::wstring environmentKey(const std::wstring& sid)
{
    return sid + L"\\Environment";
}

bool startsWith(const std::wstring& text, const std::wstring& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

// The names of every sub-key, in index order.
std::vector<std::wstring> subKeyNames(HKEY key)
{
    DWORD count = 0;
    DWORD longest = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, &longest, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr)
        != ERROR_SUCCESS)
        return {};
    std::vector<std::wstring> names;
    std::vector<wchar_t> buffer(longest + 1);
    for (DWORD index = 0; index < count; ++index) {
        DWORD length = static_cast<DWORD>(buffer.size());
        if (RegEnumKeyExW(key, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr)
            == ERROR_SUCCESS)
            names.emplace_back(buffer.data(), length);
    }
    return names;
}

} // namespace

std::wstring associationPrefix(const std::wstring& productName)
{
    std::wstring prefix = productName;
    prefix.erase(std::remove(prefix.begin(), prefix.end(), L' '), prefix.end());
    return prefix + L".";
}

std::wstring readStringValue(HKEY key, const std::wstring& subKey, const std::wstring& valueName)
{
    DWORD bytes = 0;
    if (RegGetValueW(key, subKey.c_str(), valueName.c_str(), RRF_RT_REG_SZ, nullptr, nullptr,
                     &bytes)
            != ERROR_SUCCESS
        || bytes == 0)
        return {};
    std::vector<wchar_t> buffer(bytes / sizeof(wchar_t) + 1);
    bytes = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
    if (RegGetValueW(key, subKey.c_str(), valueName.c_str(), RRF_RT_REG_SZ, nullptr, buffer.data(),
                     &bytes)
        != ERROR_SUCCESS)
        return {};
    return std::wstring(buffer.data());
}

std::vector<std::wstring> productAssociations(const std::wstring& productName, bool machine)
{
    const std::wstring prefix = associationPrefix(productName);
    HKEY classes = nullptr;
    if (RegOpenKeyExW(classesHive(machine), classesKey, 0, KEY_READ, &classes) != ERROR_SUCCESS)
        return {};
    std::vector<std::wstring> extensions;
    for (const std::wstring& name : subKeyNames(classes)) {
        if (startsWith(readStringValue(classes, name, L""), prefix))
            extensions.push_back(name);
    }
    RegCloseKey(classes);
    return extensions;
}

bool removeProductAssociation(const std::wstring& extension, const std::wstring& productName,
                              bool machine)
{
    HKEY classes = nullptr;
    if (RegOpenKeyExW(classesHive(machine), classesKey, 0, KEY_READ, &classes) != ERROR_SUCCESS)
        return false;
    const std::wstring progId = readStringValue(classes, extension, L"");
    RegCloseKey(classes);
    // An extension that another program has taken over is not ours to change.
    if (!startsWith(progId, associationPrefix(productName)))
        return false;

    if (RegOpenKeyExW(classesHive(machine), classesKey, 0, KEY_SET_VALUE, &classes)
        != ERROR_SUCCESS)
        return false;
    const bool removed = RegDeleteKeyValueW(classes, extension.c_str(), L"") == ERROR_SUCCESS;
    RegCloseKey(classes);
    return removed;
}

std::vector<UninstallEntry> uninstallEntries()
{
    HKEY uninstall = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, uninstallKey, 0, KEY_READ, &uninstall) != ERROR_SUCCESS)
        return {};
    std::vector<UninstallEntry> entries;
    for (const std::wstring& name : subKeyNames(uninstall)) {
        entries.push_back({readStringValue(uninstall, name, L"InstallLocation"),
                           readStringValue(uninstall, name, L"DisplayIcon"),
                           readStringValue(uninstall, name, L"DisplayName"),
                           readStringValue(uninstall, name, L"DisplayVersion")});
    }
    RegCloseKey(uninstall);
    return entries;
}

std::wstring currentUserSid(const Logger& log)
{
    DWORD size = 0;
    if (GetTokenInformation(currentProcessToken(), TokenUser, nullptr, 0, &size)
        || GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        log("Failed to get SID token size.");
        return {};
    }
    void* buffer = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size);
    if (!buffer) {
        log("Failed to allocate SID data.");
        return {};
    }
    if (!GetTokenInformation(currentProcessToken(), TokenUser, buffer, size, &size)) {
        log("Failed to get SID token.");
        HeapFree(GetProcessHeap(), 0, buffer);
        return {};
    }
    std::wstring sid;
    wchar_t* text = nullptr;
    if (ConvertSidToStringSidW(static_cast<TOKEN_USER*>(buffer)->User.Sid, &text)) {
        sid = text;
        LocalFree(text);
    } else {
        log("Failed to convert SID.");
    }
    HeapFree(GetProcessHeap(), 0, buffer);
    return sid;
}

std::wstring environmentVariable(const std::wstring& sid, const std::wstring& name)
{
    HKEY environment = nullptr;
    if (RegOpenKeyExW(HKEY_USERS, environmentKey(sid).c_str(), 0, KEY_READ, &environment)
        != ERROR_SUCCESS)
        return {};
    std::wstring value;
    DWORD bytes = 0;
    if (RegQueryValueExW(environment, name.c_str(), nullptr, nullptr, nullptr, &bytes)
        == ERROR_SUCCESS) {
        // One more character than asked for, so a value stored without its zero still ends.
        std::vector<wchar_t> buffer(bytes / sizeof(wchar_t) + 1, L'\0');
        if (RegQueryValueExW(environment, name.c_str(), nullptr, nullptr,
                             reinterpret_cast<BYTE*>(buffer.data()), &bytes)
            == ERROR_SUCCESS)
            value = buffer.data();
    }
    RegCloseKey(environment);
    return value;
}

bool setEnvironmentVariable(const std::wstring& sid, const std::wstring& name,
                            const std::wstring& value)
{
    HKEY environment = nullptr;
    if (RegOpenKeyExW(HKEY_USERS, environmentKey(sid).c_str(), 0, KEY_ALL_ACCESS, &environment)
        != ERROR_SUCCESS)
        return false;
    const DWORD bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    const bool written = RegSetValueExW(environment, name.c_str(), 0, REG_SZ,
                                        reinterpret_cast<const BYTE*>(value.c_str()), bytes)
                         == ERROR_SUCCESS;
    RegCloseKey(environment);
    if (written) {
        // The 8-bit "Environment" is what the shell has always been sent here.
        SendMessageTimeoutW(HWND_BROADCAST, WM_SETTINGCHANGE, 0,
                            reinterpret_cast<LPARAM>("Environment"), SMTO_BLOCK, 100, nullptr);
    }
    return written;
}

bool removeEnvironmentVariable(const std::wstring& sid, const std::wstring& name)
{
    const std::wstring path = environmentKey(sid);
    HKEY environment = nullptr;
    if (RegOpenKeyExW(HKEY_USERS, path.c_str(), 0, KEY_SET_VALUE, &environment) != ERROR_SUCCESS)
        return false;
    RegCloseKey(environment);
    return RegDeleteKeyValueW(HKEY_USERS, path.c_str(), name.c_str()) == ERROR_SUCCESS;
}

} // namespace win32
