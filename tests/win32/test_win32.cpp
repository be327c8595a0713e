#include "win32/errortext.h"
#include "win32/fileops.h"
#include "win32/registry.h"
#include "win32/sysinfo.h"
#include "win32/wmi.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

// Wine's own reg.exe, an independent witness of the registry; its exit code, its output if asked.
int reg(const std::wstring& arguments, std::string* output = nullptr)
{
    FILE* pipe = _wpopen((L"reg.exe " + arguments + L" 2>&1").c_str(), L"r");
    if (!pipe)
        return -1;
    std::string text;
    char buffer[4096];
    while (const size_t count = fread(buffer, 1, sizeof buffer, pipe))
        text.append(buffer, count);
    if (output)
        *output = text;
    return _pclose(pipe);
}

std::wstring sid()
{
    return win32::currentUserSid([](const char* message) { ADD_FAILURE() << message; });
}

// Wine takes the computer name from this volatile value, so a test can rename the machine.
bool setActiveComputerName(const std::wstring& name)
{
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE,
                           L"System\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName",
                           L"ComputerName", REG_SZ, name.c_str(),
                           static_cast<DWORD>((name.size() + 1) * sizeof(wchar_t)))
           == ERROR_SUCCESS;
}

// Needs an X display (see CMakeLists.txt): a broadcast that reaches nobody proves nothing.
std::atomic<int> environmentChanges{0};

// A recipient that hangs on the notice, as a busy program would.
LRESULT CALLBACK hungWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_SETTINGCHANGE && lParam
        && std::strcmp(reinterpret_cast<const char*>(lParam), "Environment") == 0) {
        ++environmentChanges;
        Sleep(3000);
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

class Associations : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::wstring classes = L"HKCU\\Software\\Classes\\";
        for (const wchar_t* value :
             {L".cvt1 /ve /d Corvanta.Design", L".cvt2 /ve /d OtherApp.Design",
              L".cvt3 /v Note /d Corvanta.Design", L".cvt4 /ve /d CorvantaViewer.View",
              L".cvt5 /ve /d corvanta.design", L"Corvanta.Design /ve /d Design",
              L"CvtAlias /ve /d Corvanta.Alias"})
            ASSERT_EQ(reg(L"add " + classes + value + L" /f"), 0) << value;
    }
};

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

TEST_F(Associations, OnlyKeysWhoseDefaultNamesTheProductAreListedAndRemoved)
{
    // Any sub-key naming the product's ProgID in its default value, in the product's own case.
    auto listed = win32::productAssociations(L"Corvanta", false);
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, (std::vector<std::wstring>{L".cvt1", L"CvtAlias"}));
    for (const std::wstring& key : win32::productAssociations(L"Corvanta", true))
        EXPECT_NE(key, L".cvt1") << "machine";
    // A product name with a blank matches ProgIDs without the blank.
    EXPECT_EQ(win32::productAssociations(L"Corvanta Viewer", false),
              std::vector<std::wstring>{L".cvt4"});

    EXPECT_FALSE(win32::removeProductAssociation(L".cvt2", L"Corvanta", false));
    EXPECT_FALSE(win32::removeProductAssociation(L".cvt3", L"Corvanta", false));
    std::string output;
    ASSERT_EQ(reg(L"query HKCU\\Software\\Classes\\.cvt2 /ve", &output), 0);
    EXPECT_NE(output.find("OtherApp.Design"), std::string::npos) << output;

    // Only the default value goes: the key, its other values and the ProgID stay.
    ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\.cvt1 /v Keep /d kept /f"), 0);
    EXPECT_TRUE(win32::removeProductAssociation(L".cvt1", L"Corvanta", false));
    EXPECT_EQ(reg(L"query HKCU\\Software\\Classes\\.cvt1", &output), 0) << "the key stays";
    EXPECT_EQ(output.find("Corvanta.Design"), std::string::npos) << output;
    EXPECT_NE(output.find("kept"), std::string::npos) << output;
    EXPECT_EQ(reg(L"query HKCU\\Software\\Classes\\Corvanta.Design /ve"), 0);
    EXPECT_EQ(win32::productAssociations(L"Corvanta", false),
              std::vector<std::wstring>{L"CvtAlias"});
}

TEST(UninstallEntries, ReadsOnlyTheMachines32BitView)
{
    const std::wstring wow =
        L"HKLM\\SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\CvtTest32";
    const std::wstring native =
        L"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\CvtTest64";
    for (const wchar_t* value : {L"DisplayName /d \"Corvanta 32\"", L"DisplayVersion /d 5.1.2",
                                 L"InstallLocation /d \"C:\\Corvanta\""})
        ASSERT_EQ(reg(L"add " + wow + L" /v " + value + L" /f"), 0) << value;
    ASSERT_EQ(reg(L"add " + native + L" /v DisplayName /d \"Corvanta 64\" /f"), 0);

    std::wstring listed = L"\n";
    for (const auto& entry : win32::uninstallEntries())
        listed +=
            entry.displayName + L"|" + entry.displayVersion + L"|" + entry.installLocation + L"\n";
    EXPECT_NE(listed.find(L"\nCorvanta 32|5.1.2|C:\\Corvanta\n"), std::wstring::npos);
    EXPECT_EQ(listed.find(L"Corvanta 64"), std::wstring::npos);
    reg(L"delete " + wow + L" /f");
    reg(L"delete " + native + L" /f");
}

// Under the user's SID, in a loaded hive; a hung recipient of the notice does not hold the write.
TEST(Environment, SetWritesStringUnderUsersSid)
{
    HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HWND window = nullptr;
    DWORD recipientThread = 0;
    std::thread recipient([&] {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = hungWindowProc;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"CvtHungRecipient";
        RegisterClassW(&windowClass);
        window = CreateWindowExW(0, windowClass.lpszClassName, L"recipient", WS_OVERLAPPEDWINDOW, 0,
                                 0, 10, 10, nullptr, nullptr, windowClass.hInstance, nullptr);
        recipientThread = GetCurrentThreadId();
        SetEvent(ready);
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
    });
    WaitForSingleObject(ready, INFINITE);
    const ULONGLONG start = GetTickCount64();
    const bool written = win32::setEnvironmentVariable(sid(), L"CvtScale", L"0");
    const ULONGLONG elapsed = GetTickCount64() - start;
    PostThreadMessageW(recipientThread, WM_QUIT, 0, 0);
    recipient.join();
    CloseHandle(ready);
    ASSERT_NE(window, nullptr) << "no top-level window: is DISPLAY set?";
    ASSERT_TRUE(written);
    EXPECT_EQ(environmentChanges.load(), 1)
        << "the 8-bit \"Environment\" notice reached the window";
    // The recipient hangs for 3 s; a 100 ms timeout per window returns long before that.
    EXPECT_LT(elapsed, 1500u);

    const std::wstring query = L"query \"HKU\\" + sid() + L"\\Environment\" /v CvtScale";
    std::string output;
    ASSERT_EQ(reg(query, &output), 0);
    EXPECT_NE(output.find("REG_SZ"), std::string::npos) << output;
    EXPECT_EQ(win32::environmentVariable(sid(), L"CvtScale"), L"0");

    EXPECT_TRUE(win32::removeEnvironmentVariable(sid(), L"CvtScale"));
    EXPECT_NE(reg(query), 0);
    EXPECT_EQ(win32::environmentVariable(sid(), L"CvtScale"), L"");
    EXPECT_FALSE(win32::removeEnvironmentVariable(sid(), L"CvtScale")) << "already gone";
}

TEST(MachineNames, UserNameOnlyWhenShorterThanComputerName)
{
    wchar_t buffer[256];
    DWORD size = 256;
    ASSERT_TRUE(GetUserNameW(buffer, &size));
    const std::wstring user = buffer;
    size = 256;
    ASSERT_TRUE(GetComputerNameW(buffer, &size));
    const std::wstring original = buffer;
    ASSERT_LT(user.size(), 15u) << "the longer computer name must still fit in 15 characters";

    for (const std::wstring& name :
         {std::wstring(user.size() + 1, L'L'), std::wstring(user.size(), L'S')}) {
        ASSERT_TRUE(setActiveComputerName(name));
        const win32::MachineNames names = win32::machineNames();
        EXPECT_EQ(names.computerName, name);
        EXPECT_EQ(names.userName, name.size() > user.size() ? user : std::wstring()) << name;
    }
    EXPECT_TRUE(setActiveComputerName(original));
}

TEST(ProcessorSpeed, IsTheRegistryValueInDecimal)
{
    std::string listing;
    reg(L"query \"HKLM\\Hardware\\Description\\System\\CentralProcessor\\0\" /v ~MHz", &listing);
    const size_t hex = listing.find("0x");
    ASSERT_NE(hex, std::string::npos) << listing;
    EXPECT_EQ(win32::processorSpeedText(),
              std::to_wstring(std::stoul(listing.substr(hex + 2), nullptr, 16)));
}

TEST(SystemErrorMessage, KnownCodeHasTrimmedTextUnknownNone)
{
    const std::wstring message = win32::systemErrorMessage(ERROR_ACCESS_DENIED);
    EXPECT_NE(message.find(L"ccess"), std::wstring::npos) << "expected an access-denied text";
    EXPECT_EQ(message, win32::trimmed(L" \t" + message + L"\r\n")) << "no blanks around it";
    EXPECT_TRUE(win32::systemErrorMessage(0x1234567u).empty());
}

TEST(FolderPath, FourKindsGiveFoldersOthersFail)
{
    std::wstring paths[5];
    for (int kind = 0; kind < 4; ++kind)
        EXPECT_TRUE(win32::folderPath(kind, paths[kind]) && !paths[kind].empty()) << kind;
    EXPECT_NE(paths[0], paths[1]);
    EXPECT_FALSE(win32::folderPath(-1, paths[4]) || win32::folderPath(4, paths[4]));
}

// Wine's Recycle Bin is XDG_DATA_HOME's trash, via drive Z:; looked in, as a delete also empties.
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
    // Wine keeps no own creation time on Linux, so both compare with what the source reports.
    win32::FileTimes restored;
    ASSERT_TRUE(win32::readFileTimes(destination, restored));
    EXPECT_EQ(restored.created, saved.created);
    EXPECT_EQ(restored.modified, saved.modified);

    const std::wstring replaced = file(L"c.txt", "old");
    ASSERT_TRUE(win32::moveFile(destination, replaced));
    EXPECT_FALSE(fs::exists(destination));
    EXPECT_EQ(content(replaced), "copied content");
    EXPECT_FALSE(win32::moveFile(destination, file(L"d.txt")));
}

// WMI over COM as wmic and PowerShell print it; the one adapter is set in CMakeLists.txt.
TEST(Wmi, MachineFactsInTheFormsTheirReadersExpect)
{
    std::string failures;
    const win32::WmiLogger log = [&failures](const std::string& message) {
        failures += message + "\n";
    };
    const auto wmic = [&log](const wchar_t* className, const std::vector<std::wstring>& names) {
        return win32::wmicList(names, win32::wmiInstances(className, names, log));
    };

    EXPECT_NE(wmic(L"Win32_OperatingSystem", {L"Caption"}).find(L"\r\nCaption=Microsoft Windows "),
              std::wstring::npos);
    EXPECT_NE(wmic(L"Win32_Processor", {L"AddressWidth"}).find(L"\r\nAddressWidth=64\r\n"),
              std::wstring::npos);
    unsigned long long installed = 0;
    for (const auto& chip : win32::wmiInstances(L"Win32_PhysicalMemory", {L"Capacity"}, log))
        installed += std::stoull(chip.at(0));
    EXPECT_GE(installed, win32::totalPhysicalMemory());
    EXPECT_GE(win32::totalPhysicalMemory(), 64u << 20);

    const std::wstring adapters =
        wmic(L"Win32_NetworkAdapter", {L"AdapterType", L"Description", L"MACAddress"});
    EXPECT_NE(adapters.find(L"\r\nAdapterType=Ethernet 802.3\r\nDescription=cvt0\r\n"
                            L"MACAddress=3C-7C-3F-11-22-33\r\n"),
              std::wstring::npos)
        << std::string(adapters.begin(), adapters.end());

    const std::vector<std::wstring> diskNames{L"DeviceID", L"FileSystem", L"FreeSpace", L"Size"};
    const std::wstring disks =
        win32::powerShellList(diskNames, win32::wmiInstances(L"Win32_LogicalDisk", diskNames, log));
    const size_t drive = disks.find(L"\r\nDeviceID   : C:\r\nFileSystem : ");
    ASSERT_NE(drive, std::wstring::npos) << std::string(disks.begin(), disks.end());
    const size_t size = disks.find(L"Size       : ", drive);
    ASSERT_NE(size, std::wstring::npos);
    EXPECT_GT(std::stoull(disks.substr(size + 13)), 0u);
    EXPECT_EQ(failures, "");

    EXPECT_TRUE(win32::wmiInstances(L"Win32_Processor WHERE", {L"Name"}, log).empty());
    EXPECT_NE(failures.find(" for Win32_Processor WHERE failed: 0x8004"), std::string::npos)
        << failures;
}

TEST(Wmi, MacAddressesInWindowsForm)
{
    for (const auto& [given, expected] : std::vector<std::pair<std::wstring, std::wstring>>{
             {L"00-00-00-00-00-00-00-e0", L"00-00-00-00-00-00-00-E0"},
             {L"", L""},
             {L"3c:7c:3f:0a:b2:f", L"3c:7c:3f:0a:b2:f"},
             {L"Intel 3c:7c", L"Intel 3c:7c"}})
        EXPECT_EQ(win32::macAddressText(given), expected);
}
