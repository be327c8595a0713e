#include "win32/fileops.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// A fresh folder under the system's temporary folder, removed with its files afterwards.
class FileOps : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(fs::create_directories(folder)); }
    void TearDown() override { fs::remove_all(folder); }

    std::wstring file(const wchar_t* name, const char* content = nullptr) const
    {
        if (content)
            std::ofstream(folder / name, std::ios::binary) << content;
        return (folder / name).wstring();
    }

    static std::string content(const std::wstring& path)
    {
        std::ostringstream text;
        text << std::ifstream(fs::path(path), std::ios::binary).rdbuf();
        return text.str();
    }

    const fs::path folder =
        fs::temp_directory_path() / ("corvanta_fileops_" + std::to_string(GetCurrentProcessId()));
};

} // namespace

TEST(FolderPath, FourKindsGiveFoldersOthersFail)
{
    std::wstring paths[5];
    for (int kind = 0; kind < 4; ++kind)
        EXPECT_TRUE(win32::folderPath(kind, paths[kind]) && !paths[kind].empty()) << kind;
    EXPECT_NE(paths[0], paths[1]);
    EXPECT_FALSE(win32::folderPath(-1, paths[4]) || win32::folderPath(4, paths[4]));
}

// Wine's Recycle Bin is the freedesktop trash of XDG_DATA_HOME, seen here through drive Z:. A
// permanent delete would empty the folder too, so the file is looked for in the trash.
TEST_F(FileOps, TrashedFileIsInTheTrash)
{
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    ASSERT_NE(dataHome, nullptr);
    const fs::path trash = fs::path("Z:" + std::string(dataHome)) / "Trash";
    const std::wstring name = L"trashed_" + std::to_wstring(GetCurrentProcessId()) + L".txt";
    const std::wstring path = file(name.c_str(), "trash me");
    EXPECT_EQ(win32::moveToRecycleBin(path), 0);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(content((trash / "files" / name).wstring()), "trash me");
    EXPECT_TRUE(fs::remove(trash / "info" / (name + L".trashinfo")));
    fs::remove(trash / "files" / name);
    EXPECT_NE(win32::moveToRecycleBin(path), 0) << "a missing file cannot be trashed";
}

TEST_F(FileOps, SameFileByVolumeAndIndex)
{
    const std::wstring source = file(L"a.txt", "one");
    const std::wstring other = file(L"b.txt", "one");
    const std::wstring link = file(L"link.txt");
    ASSERT_TRUE(CreateHardLinkW(link.c_str(), source.c_str(), nullptr));
    EXPECT_TRUE(win32::isSameFile(source, link));
    EXPECT_TRUE(win32::isSameFile(source, (folder / L"." / L"A.TXT").wstring()));
    EXPECT_FALSE(win32::isSameFile(source, other));
    EXPECT_FALSE(win32::isSameFile(source, file(L"missing.txt")));
}

TEST_F(FileOps, CopyKeepsContentAndRestoredTimesMoveReplaces)
{
    const std::wstring source = file(L"a.txt", "copied content");
    ASSERT_TRUE(win32::writeFileTimes(source, {130000000000000000ull, 131000000000000000ull}));
    win32::FileTimes saved;
    ASSERT_TRUE(win32::readFileTimes(source, saved));
    EXPECT_EQ(saved.modified, 131000000000000000ull);

    const std::wstring destination = file(L"b.txt");
    ASSERT_TRUE(win32::copyFile(source, destination));
    EXPECT_EQ(content(destination), "copied content");
    // Stamp the copy as new, as a plain copy would, before putting the saved times back.
    ASSERT_TRUE(win32::writeFileTimes(destination, {132000000000000000ull, 132000000000000000ull}));
    ASSERT_TRUE(win32::writeFileTimes(destination, saved));
    // Read back with the system's own call. Wine keeps no separate creation time on Linux file
    // systems, so both are compared with what the source reports.
    HANDLE handle = CreateFileW(destination.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    ULARGE_INTEGER created, modified;
    ASSERT_TRUE(GetFileTime(handle, reinterpret_cast<FILETIME*>(&created), nullptr,
                            reinterpret_cast<FILETIME*>(&modified)));
    CloseHandle(handle);
    EXPECT_EQ(created.QuadPart, saved.created);
    EXPECT_EQ(modified.QuadPart, saved.modified);

    const std::wstring replaced = file(L"c.txt", "old");
    ASSERT_TRUE(win32::moveFile(destination, replaced));
    EXPECT_FALSE(fs::exists(destination));
    EXPECT_EQ(content(replaced), "copied content");
    EXPECT_FALSE(win32::moveFile(destination, file(L"d.txt")));
}
