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
        const std::wstring classes = L"HKCU\\Software\\Classes\\";
        for (const wchar_t* key : {L".cvt1", L".cvt2", L".cvt3", L".cvt4", L".cvt5"})
            reg(L"delete " + classes + key + L" /f");
        for (const wchar_t* value :
             {L".cvt1 /ve /d Corvanta.Design", L".cvt2 /ve /d OtherApp.Design",
              L".cvt3 /v Note /d Corvanta.Design", L".cvt4 /ve /d CorvantaViewer.View",
              L".cvt5 /ve /d corvanta.design", L"Corvanta.Design /ve /d Design",
              L"CvtAlias /ve /d Corvanta.Alias"})
            ASSERT_EQ(reg(L"add " + classes + value + L" /f"), 0) << value;
    }
};

} // namespace

TEST_F(Associations, OnlyKeysWhoseDefaultNamesTheProductAreListedAndRemoved)
{
    const auto listed = win32::productAssociations(L"Corvanta", false);
    EXPECT_TRUE(contains(listed, L".cvt1"));
    EXPECT_TRUE(contains(listed, L"CvtAlias")) << "every sub-key counts, not only dotted ones";
    EXPECT_FALSE(contains(listed, L"Corvanta.Design")) << "the ProgID key itself";
    EXPECT_FALSE(contains(listed, L".cvt2")) << "another program's extension";
    EXPECT_FALSE(contains(listed, L".cvt3")) << "no default value";
    EXPECT_FALSE(contains(listed, L".cvt4")) << "another product of the same vendor";
    EXPECT_FALSE(contains(listed, L".cvt5")) << "the prefix is case-sensitive";
    EXPECT_FALSE(contains(win32::productAssociations(L"Corvanta", true), L".cvt1")) << "machine";
    // A product name with a blank matches ProgIDs without the blank.
    const auto viewer = win32::productAssociations(L"Corvanta Viewer", false);
    EXPECT_TRUE(contains(viewer, L".cvt4"));
    EXPECT_FALSE(contains(viewer, L".cvt1"));

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
    EXPECT_FALSE(contains(win32::productAssociations(L"Corvanta", false), L".cvt1"));
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

// Under the user's domain SID, the key of a loaded hive.
TEST(Environment, SetWritesStringUnderUsersSid)
{
    const std::wstring text = sid();
    EXPECT_EQ(text.rfind(L"S-1-5-21-", 0), 0u) << std::string(text.begin(), text.end());
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
