#pragma once

#include <cstdio>
#include <string>

namespace win32 {

// Shell folders by the tool's kind: 0 roaming application data, 1 local application data,
// 2 documents, 3 application data common to all users. False for other kinds.
bool folderPath(int kind, std::wstring& path);

// One attempt to send a native path of at most 258 characters to the Recycle Bin; returns the
// shell's status, 0 on success.
int moveToRecycleBin(const std::wstring& nativePath);

// Whether two existing paths name one file: the same volume serial number and file index, as
// for a hard link or a name differing only in case.
bool isSameFile(const std::wstring& first, const std::wstring& second);

// CopyFileExW, unbuffered where the system supports it.
bool copyFile(const std::wstring& source, const std::wstring& destination);

// FILETIME values as 64-bit numbers.
struct FileTimes
{
    unsigned long long created = 0;
    unsigned long long modified = 0;
};
bool readFileTimes(const std::wstring& path, FileTimes& times);
bool writeFileTimes(const std::wstring& path, const FileTimes& times);

// MoveFileExW replacing the destination, copying across volumes, writing through.
bool moveFile(const std::wstring& source, const std::wstring& destination);

// C-runtime descriptors and streams on wide paths; flags are _O_* values. Asking for writing
// creates a missing file.
int openFile(const std::wstring& path, int flags);
FILE* openStream(const std::wstring& path, const std::wstring& mode);

} // namespace win32
