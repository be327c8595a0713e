#include "win32/registry.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

// Runs Wine's own reg.exe, the independent witness of what is in the registry, and returns its
// exit code; its output goes to *output when asked for.
int reg(const std::wstring& arguments, std::string* output = nullptr)
{
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherit, 0))
        return -1;
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd;
    startup.hStdError = writeEnd;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    PROCESS_INFORMATION process{};
    std::wstring commandLine = L"reg.exe " + arguments;
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &process)) {
        CloseHandle(readEnd);
        CloseHandle(writeEnd);
        return -1;
    }
    CloseHandle(writeEnd);
    std::string text;
    char buffer[4096];
    DWORD count = 0;
    while (ReadFile(readEnd, buffer, sizeof(buffer), &count, nullptr) && count > 0)
        text.append(buffer, count);
    CloseHandle(readEnd);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    if (output)
        *output = text;
    return static_cast<int>(code);
}

bool contains(const std::vector<std::wstring>& list, const std::wstring& item)
{
    return std::find(list.begin(), list.end(), item) != list.end();
}

std::wstring sid()
{
    return win32::currentUserSid([](const char* message) { ADD_FAILURE() << message; });
}

std::wstring environmentPath()
{
    return L"\"HKU\\" + sid() + L"\\Environment\"";
}

class Associations : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const wchar_t* key : keys)
            reg(std::wstring(L"delete HKCU\\Software\\Classes\\") + key + L" /f");
        ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\.cvt1 /ve /d Corvanta.Design /f"), 0);
        ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\.cvt2 /ve /d OtherApp.Design /f"), 0);
        ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\.cvt3 /v Note /d Corvanta.Design /f"), 0);
        ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\.cvt4 /ve /d CorvantaViewer.View /f"), 0);
        ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\.cvt5 /ve /d corvanta.design /f"), 0);
        ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\Corvanta.Design /ve /d Design /f"), 0);
        ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\CvtAlias /ve /d Corvanta.Alias /f"), 0);
    }

    const std::vector<const wchar_t*> keys = {L".cvt1", L".cvt2", L".cvt3",
                                              L".cvt4", L".cvt5", L"Corvanta.Design"};
};

} // namespace

TEST(AssociationPrefix, DropsEveryBlank)
{
    EXPECT_EQ(win32::associationPrefix(L"Corvanta"), L"Corvanta.");
    EXPECT_EQ(win32::associationPrefix(L" Corvanta  Viewer "), L"CorvantaViewer.");
}

TEST_F(Associations, ListsOnlyKeysWhoseDefaultNamesTheProduct)
{
    const auto listed = win32::productAssociations(L"Corvanta", false);
    EXPECT_TRUE(contains(listed, L".cvt1"));
    EXPECT_TRUE(contains(listed, L"CvtAlias")) << "every sub-key counts, not only dotted ones";
    EXPECT_FALSE(contains(listed, L"Corvanta.Design")) << "the ProgID key itself";
    EXPECT_FALSE(contains(listed, L".cvt2")) << "another program's extension";
    EXPECT_FALSE(contains(listed, L".cvt3")) << "no default value";
    EXPECT_FALSE(contains(listed, L".cvt4")) << "another product of the same vendor";
    EXPECT_FALSE(contains(listed, L".cvt5")) << "the prefix is case-sensitive";
}

TEST_F(Associations, ProductNameWithBlankMatchesProgIdsWithout)
{
    const auto listed = win32::productAssociations(L"Corvanta Viewer", false);
    EXPECT_TRUE(contains(listed, L".cvt4"));
    EXPECT_FALSE(contains(listed, L".cvt1"));
}

TEST_F(Associations, MachineHiveIsSeparate)
{
    EXPECT_FALSE(contains(win32::productAssociations(L"Corvanta", true), L".cvt1"));
}

TEST_F(Associations, RemovalDeletesOnlyTheDefaultValue)
{
    ASSERT_EQ(reg(L"add HKCU\\Software\\Classes\\.cvt1 /v Keep /d kept /f"), 0);
    EXPECT_TRUE(win32::removeProductAssociation(L".cvt1", L"Corvanta", false));

    std::string output;
    EXPECT_EQ(reg(L"query HKCU\\Software\\Classes\\.cvt1", &output), 0) << "the key stays";
    EXPECT_EQ(output.find("Corvanta.Design"), std::string::npos) << output;
    EXPECT_NE(output.find("kept"), std::string::npos) << output;
    EXPECT_EQ(reg(L"query HKCU\\Software\\Classes\\Corvanta.Design /ve"), 0);
    EXPECT_FALSE(contains(win32::productAssociations(L"Corvanta", false), L".cvt1"));
}

TEST_F(Associations, OtherProgramsExtensionIsNeverRemoved)
{
    EXPECT_FALSE(win32::removeProductAssociation(L".cvt2", L"Corvanta", false));
    EXPECT_FALSE(win32::removeProductAssociation(L".cvt3", L"Corvanta", false));
    std::string output;
    ASSERT_EQ(reg(L"query HKCU\\Software\\Classes\\.cvt2 /ve", &output), 0);
    EXPECT_NE(output.find("OtherApp.Design"), std::string::npos) << output;
}

TEST(ReadStringValue, MissingValuesAreEmpty)
{
    ASSERT_EQ(reg(L"add HKCU\\Software\\CorvantaTest /v Text /d hello /f"), 0);
    ASSERT_EQ(reg(L"add HKCU\\Software\\CorvantaTest /v Number /t REG_DWORD /d 7 /f"), 0);
    EXPECT_EQ(win32::readStringValue(HKEY_CURRENT_USER, L"Software\\CorvantaTest", L"Text"),
              L"hello");
    EXPECT_EQ(win32::readStringValue(HKEY_CURRENT_USER, L"Software\\CorvantaTest", L"Number"), L"");
    EXPECT_EQ(win32::readStringValue(HKEY_CURRENT_USER, L"Software\\CorvantaTest", L"Absent"), L"");
    EXPECT_EQ(win32::readStringValue(HKEY_CURRENT_USER, L"Software\\NoSuchKey", L"Text"), L"");
}

TEST(UninstallEntries, ReadsOnlyTheMachines32BitView)
{
    const std::wstring wow =
        L"HKLM\\SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\CvtTest32";
    const std::wstring native =
        L"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\CvtTest64";
    ASSERT_EQ(reg(L"add " + wow + L" /v DisplayName /d \"Corvanta 32\" /f"), 0);
    ASSERT_EQ(reg(L"add " + wow + L" /v DisplayVersion /d 5.1.2 /f"), 0);
    ASSERT_EQ(reg(L"add " + wow + L" /v InstallLocation /d \"C:\\Corvanta\" /f"), 0);
    ASSERT_EQ(reg(L"add " + native + L" /v DisplayName /d \"Corvanta 64\" /f"), 0);

    bool found32 = false;
    for (const auto& entry : win32::uninstallEntries()) {
        EXPECT_NE(entry.displayName, L"Corvanta 64");
        if (entry.displayName == L"Corvanta 32") {
            found32 = true;
            EXPECT_EQ(entry.displayVersion, L"5.1.2");
            EXPECT_EQ(entry.installLocation, L"C:\\Corvanta");
            EXPECT_EQ(entry.displayIcon, L"");
        }
    }
    EXPECT_TRUE(found32);
    reg(L"delete " + wow + L" /f");
    reg(L"delete " + native + L" /f");
}

TEST(CurrentUserSid, IsTheUsersDomainSid)
{
    const std::wstring text = sid();
    EXPECT_EQ(text.rfind(L"S-1-5-21-", 0), 0u) << std::string(text.begin(), text.end());
    EXPECT_EQ(reg(L"query \"HKU\\" + text + L"\""), 0) << "the SID names a loaded hive";
}

TEST(Environment, SetWritesStringUnderUsersSid)
{
    reg(L"add " + environmentPath() + L" /v CvtOther /d other /f");
    ASSERT_TRUE(win32::setEnvironmentVariable(sid(), L"CvtScale", L"0"));

    std::string output;
    ASSERT_EQ(reg(L"query " + environmentPath() + L" /v CvtScale", &output), 0);
    EXPECT_NE(output.find("REG_SZ"), std::string::npos) << output;
    EXPECT_NE(output.find("CvtScale"), std::string::npos) << output;
    EXPECT_EQ(win32::environmentVariable(sid(), L"CvtScale"), L"0");

    EXPECT_TRUE(win32::removeEnvironmentVariable(sid(), L"CvtScale"));
    EXPECT_NE(reg(L"query " + environmentPath() + L" /v CvtScale"), 0);
    EXPECT_EQ(win32::environmentVariable(sid(), L"CvtScale"), L"");
    EXPECT_EQ(reg(L"query " + environmentPath() + L" /v CvtOther"), 0) << "others stay";
    EXPECT_FALSE(win32::removeEnvironmentVariable(sid(), L"CvtScale")) << "already gone";
    reg(L"delete " + environmentPath() + L" /v CvtOther /f");
}

TEST(Environment, ReadsWhatRegWrote)
{
    ASSERT_EQ(
        reg(L"add " + environmentPath() + L" /v CvtLong /d " + std::wstring(3000, L'x') + L" /f"),
        0);
    EXPECT_EQ(win32::environmentVariable(sid(), L"CvtLong"), std::wstring(3000, L'x'));
    reg(L"delete " + environmentPath() + L" /v CvtLong /f");
}

TEST(Environment, EmptySidAddressesNoKey)
{
    EXPECT_FALSE(win32::setEnvironmentVariable(L"", L"CvtScale", L"0"));
    EXPECT_EQ(win32::environmentVariable(L"", L"Path"), L"");
    EXPECT_FALSE(win32::removeEnvironmentVariable(L"", L"CvtScale"));
}
