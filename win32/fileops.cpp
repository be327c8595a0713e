#include "win32/fileops.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <shlobj.h>
#include <sys/stat.h>

#include <vector>

namespace win32 {

namespace {

unsigned long long fromFileTime(const FILETIME& time)
{
    return (static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

FILETIME toFileTime(unsigned long long value)
{
    FILETIME time;
    time.dwLowDateTime = static_cast<DWORD>(value & 0xFFFFFFFFu);
    time.dwHighDateTime = static_cast<DWORD>(value >> 32);
    return time;
}

// Unbuffered copies need Vista or later.
bool supportsUnbufferedCopy()
{
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    version.dwMajorVersion = 6;
    version.dwMinorVersion = 0;
    version.wServicePackMajor = 0;
    DWORDLONG condition = 0;
    condition = VerSetConditionMask(condition, VER_MAJORVERSION, VER_GREATER_EQUAL);
    condition = VerSetConditionMask(condition, VER_MINORVERSION, VER_GREATER_EQUAL);
    condition = VerSetConditionMask(condition, VER_SERVICEPACKMAJOR, VER_GREATER_EQUAL);
    return VerifyVersionInfoW(&version, VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR,
                              condition)
           != FALSE;
}

bool fileIdentity(const std::wstring& path, BY_HANDLE_FILE_INFORMATION& information)
{
    // No access asked: only the file's attributes are read, and folders open as well.
    HANDLE file =
        CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const bool ok = GetFileInformationByHandle(file, &information) != FALSE;
    CloseHandle(file);
    return ok;
}

} // namespace

bool folderPath(int kind, std::wstring& path)
{
    static const int folders[] = {CSIDL_APPDATA, CSIDL_LOCAL_APPDATA, CSIDL_PERSONAL,
                                  CSIDL_COMMON_APPDATA};
    if (kind < 0 || kind > 3)
        return false;
    wchar_t buffer[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, folders[kind], nullptr, SHGFP_TYPE_CURRENT, buffer)))
        return false;
    path = buffer;
    return true;
}

int moveToRecycleBin(const std::wstring& nativePath)
{
    // A list of paths ended by two zeros.
    std::vector<wchar_t> buffer(MAX_PATH + 2, L'\0');
    nativePath.copy(buffer.data(), MAX_PATH);
    SHFILEOPSTRUCTW operation = {};
    operation.hwnd = nullptr;
    operation.wFunc = FO_DELETE;
    operation.pFrom = buffer.data();
    operation.pTo = nullptr;
    operation.fFlags = 0x654;
    return SHFileOperationW(&operation);
}

bool isSameFile(const std::wstring& first, const std::wstring& second)
{
    BY_HANDLE_FILE_INFORMATION a;
    BY_HANDLE_FILE_INFORMATION b;
    return fileIdentity(first, a) && fileIdentity(second, b)
           && a.dwVolumeSerialNumber == b.dwVolumeSerialNumber
           && a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
}

bool copyFile(const std::wstring& source, const std::wstring& destination)
{
    const DWORD flags = supportsUnbufferedCopy() ? COPY_FILE_NO_BUFFERING : 0;
    return CopyFileExW(source.c_str(), destination.c_str(), nullptr, nullptr, nullptr, flags)
           != FALSE;
}

bool readFileTimes(const std::wstring& path, FileTimes& times)
{
    WIN32_FILE_ATTRIBUTE_DATA attributes;
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &attributes))
        return false;
    times.created = fromFileTime(attributes.ftCreationTime);
    times.modified = fromFileTime(attributes.ftLastWriteTime);
    return true;
}

bool writeFileTimes(const std::wstring& path, const FileTimes& times)
{
    HANDLE file = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const FILETIME created = toFileTime(times.created);
    const FILETIME modified = toFileTime(times.modified);
    const bool ok = SetFileTime(file, &created, nullptr, &modified) != FALSE;
    CloseHandle(file);
    return ok;
}

bool moveFile(const std::wstring& source, const std::wstring& destination)
{
    const DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH;
    return MoveFileExW(source.c_str(), destination.c_str(), flags) != FALSE;
}

int openFile(const std::wstring& path, int flags)
{
    if (flags & (_O_WRONLY | _O_RDWR))
        return _wopen(path.c_str(), flags | _O_CREAT, _S_IREAD | _S_IWRITE);
    return _wopen(path.c_str(), flags);
}

FILE* openStream(const std::wstring& path, const std::wstring& mode)
{
    return _wfopen(path.c_str(), mode.c_str());
}

} // namespace win32
