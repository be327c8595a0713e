#include "win32/fileops.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <io.h>

#include <string>

namespace {

// A fresh folder under the system's temporary folder, removed with its files afterwards.
class FileOps : public testing::Test
{
protected:
    void SetUp() override
    {
        wchar_t temp[MAX_PATH];
        ASSERT_GT(GetTempPathW(MAX_PATH, temp), 0u);
        folder = std::wstring(temp) + L"corvanta_fileops_" + std::to_wstring(GetCurrentProcessId());
        ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr)
                    || GetLastError() == ERROR_ALREADY_EXISTS);
    }

    void TearDown() override
    {
        for (const wchar_t* name : {L"a.txt", L"b.txt", L"c.txt"})
            DeleteFileW((folder + L"\\" + name).c_str());
        RemoveDirectoryW(folder.c_str());
    }

    std::wstring file(const wchar_t* name, const char* content)
    {
        const std::wstring path = folder + L"\\" + name;
        HANDLE handle = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
        EXPECT_NE(handle, INVALID_HANDLE_VALUE);
        DWORD written = 0;
        WriteFile(handle, content, DWORD(strlen(content)), &written, nullptr);
        CloseHandle(handle);
        return path;
    }

    static std::string content(const std::wstring& path)
    {
        HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE)
            return "<missing>";
        char buffer[256];
        DWORD count = 0;
        ReadFile(handle, buffer, sizeof buffer, &count, nullptr);
        CloseHandle(handle);
        return std::string(buffer, count);
    }

    static bool exists(const std::wstring& path)
    {
        return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    std::wstring folder;
};

} // namespace

TEST(FolderPath, KnownKindsGiveFolders)
{
    for (int kind = 0; kind < 4; ++kind) {
        std::wstring path;
        EXPECT_TRUE(win32::folderPath(kind, path)) << "kind " << kind;
        EXPECT_FALSE(path.empty()) << "kind " << kind;
    }
    std::wstring appData, localAppData;
    win32::folderPath(0, appData);
    win32::folderPath(1, localAppData);
    EXPECT_NE(appData, localAppData);
}

TEST(FolderPath, UnknownKindsFail)
{
    std::wstring path = L"unchanged";
    EXPECT_FALSE(win32::folderPath(-1, path));
    EXPECT_FALSE(win32::folderPath(4, path));
    EXPECT_EQ(path, L"unchanged");
}

TEST_F(FileOps, TrashedFileLeavesItsFolder)
{
    const std::wstring path = file(L"a.txt", "trash me");
    EXPECT_EQ(win32::moveToRecycleBin(path), 0);
    EXPECT_FALSE(exists(path));
}

TEST_F(FileOps, TrashingMissingFileFails)
{
    EXPECT_NE(win32::moveToRecycleBin(folder + L"\\missing.txt"), 0);
}

TEST_F(FileOps, CopyKeepsContentAndRestoredTimes)
{
    const std::wstring source = file(L"a.txt", "copied content");
    win32::FileTimes times;
    times.created = 130000000000000000ull;
    times.modified = 131000000000000000ull;
    ASSERT_TRUE(win32::writeFileTimes(source, times));
    win32::FileTimes saved;
    ASSERT_TRUE(win32::readFileTimes(source, saved));
    EXPECT_EQ(saved.modified, times.modified);

    const std::wstring destination = folder + L"\\b.txt";
    ASSERT_TRUE(win32::copyFile(source, destination));
    EXPECT_EQ(content(destination), "copied content");
    // Stamp the copy as new, as a plain copy would, before putting the saved times back.
    win32::FileTimes stamped;
    stamped.created = stamped.modified = 132000000000000000ull;
    ASSERT_TRUE(win32::writeFileTimes(destination, stamped));
    ASSERT_TRUE(win32::writeFileTimes(destination, saved));

    HANDLE handle = CreateFileW(destination.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    FILETIME created, accessed, modified;
    ASSERT_TRUE(GetFileTime(handle, &created, &accessed, &modified));
    CloseHandle(handle);
    // Wine keeps no separate creation time on Linux file systems, so both are compared with what
    // the source reports.
    EXPECT_EQ((ULONGLONG(created.dwHighDateTime) << 32) | created.dwLowDateTime, saved.created);
    EXPECT_EQ((ULONGLONG(modified.dwHighDateTime) << 32) | modified.dwLowDateTime, saved.modified);
}

TEST_F(FileOps, CopyOfMissingFileFails)
{
    EXPECT_FALSE(win32::copyFile(folder + L"\\missing.txt", folder + L"\\b.txt"));
    EXPECT_FALSE(exists(folder + L"\\b.txt"));
}

TEST_F(FileOps, MoveReplacesDestination)
{
    const std::wstring source = file(L"a.txt", "new");
    const std::wstring destination = file(L"b.txt", "old");
    ASSERT_TRUE(win32::moveFile(source, destination));
    EXPECT_FALSE(exists(source));
    EXPECT_EQ(content(destination), "new");
    EXPECT_FALSE(win32::moveFile(source, folder + L"\\c.txt"));
}

TEST_F(FileOps, OpenForWritingCreatesAndReadingNeedsFile)
{
    EXPECT_EQ(win32::openFile(folder + L"\\c.txt", 0x8000), -1);
    const int fd = win32::openFile(folder + L"\\c.txt", 0x8001);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(_write(fd, "xyz", 3), 3);
    _close(fd);
    EXPECT_EQ(content(folder + L"\\c.txt"), "xyz");
    FILE* stream = win32::openStream(folder + L"\\c.txt", L"rb");
    ASSERT_NE(stream, nullptr);
    fclose(stream);
}
