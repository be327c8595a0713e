#include "win32/errortext.h"
#include "win32/sysinfo.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <string>

namespace {

const wchar_t* const activeNameKey =
    L"System\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName";

// The output of a command line, as bytes.
std::string run(const std::wstring& command)
{
    FILE* pipe = _wpopen(command.c_str(), L"rb");
    if (!pipe)
        return {};
    std::string text;
    char buffer[4096];
    while (const size_t count = fread(buffer, 1, sizeof buffer, pipe))
        text.append(buffer, count);
    _pclose(pipe);
    return text;
}

// Wine takes the computer name from this volatile value, so a test can rename the machine.
bool setActiveComputerName(const std::wstring& name)
{
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, activeNameKey, L"ComputerName", REG_SZ, name.c_str(),
                           static_cast<DWORD>((name.size() + 1) * sizeof(wchar_t)))
           == ERROR_SUCCESS;
}

} // namespace

TEST(MachineNames, UserNameOnlyWhenShorterThanComputerName)
{
    wchar_t buffer[256];
    DWORD size = 256;
    ASSERT_TRUE(GetUserNameW(buffer, &size));
    const std::wstring user = buffer;
    size = 256;
    ASSERT_TRUE(GetComputerNameW(buffer, &size));
    const std::wstring original = buffer;
    ASSERT_GE(user.size(), 2u);
    ASSERT_LT(user.size(), 15u) << "the longer computer name must still fit in 15 characters";
    struct Restore
    {
        std::wstring name;
        ~Restore() { setActiveComputerName(name); }
    } restore{original};

    const std::wstring longer(user.size() + 1, L'L');
    const std::wstring sameLength(user.size(), L'S');
    const std::wstring shorter(user.size() - 1, L'H');
    for (const std::wstring& name : {longer, sameLength, shorter}) {
        ASSERT_TRUE(setActiveComputerName(name));
        const win32::MachineNames names = win32::machineNames();
        EXPECT_EQ(names.computerName, name);
        EXPECT_EQ(names.userName, name.size() > user.size() ? user : std::wstring()) << name;
    }
}

TEST(TotalPhysicalMemory, AtLeast64MiB)
{
    EXPECT_GE(win32::totalPhysicalMemory(), 64u << 20);
}

TEST(ProcessorSpeed, IsTheRegistryValueInDecimal)
{
    const std::string listing =
        run(L"reg.exe query \"HKLM\\Hardware\\Description\\System\\CentralProcessor\\0\" /v ~MHz");
    const size_t hex = listing.find("0x");
    ASSERT_NE(hex, std::string::npos) << listing;
    EXPECT_EQ(win32::processorSpeedText(),
              std::to_wstring(std::stoul(listing.substr(hex + 2), nullptr, 16)));
}

TEST(SystemErrorMessage, KnownCodeHasTrimmedText)
{
    const std::wstring message = win32::systemErrorMessage(ERROR_ACCESS_DENIED);
    ASSERT_FALSE(message.empty());
    EXPECT_NE(message.find(L"ccess"), std::wstring::npos) << "expected an access-denied text";
    EXPECT_EQ(message, win32::trimmed(L" \t" + message + L"\r\n")) << "no blanks around it";
    EXPECT_NE(message, win32::systemErrorMessage(ERROR_FILE_NOT_FOUND));
}

TEST(SystemErrorMessage, UnknownCodeIsEmpty)
{
    EXPECT_TRUE(win32::systemErrorMessage(0x1234567u).empty());
    EXPECT_TRUE(win32::systemErrorMessage(0xDEADu).empty());
}
