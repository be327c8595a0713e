#include "win32/errortext.h"

#include <gtest/gtest.h>

#include <windows.h>

TEST(SystemErrorMessage, KnownCodeHasTrimmedText)
{
    const std::wstring message = win32::systemErrorMessage(ERROR_ACCESS_DENIED);
    ASSERT_FALSE(message.empty());
    EXPECT_NE(message.find(L"ccess"), std::wstring::npos) << "expected an access-denied text";
    EXPECT_NE(message.back(), L'\n');
    EXPECT_NE(message.back(), L' ');
    EXPECT_NE(message.front(), L' ');
}

TEST(SystemErrorMessage, DifferentCodesHaveDifferentTexts)
{
    EXPECT_NE(win32::systemErrorMessage(ERROR_ACCESS_DENIED),
              win32::systemErrorMessage(ERROR_FILE_NOT_FOUND));
}

TEST(SystemErrorMessage, UnknownCodeIsEmpty)
{
    EXPECT_TRUE(win32::systemErrorMessage(0x1234567u).empty());
    EXPECT_TRUE(win32::systemErrorMessage(0xDEADu).empty());
}

struct TrimCase
{
    const wchar_t* input;
    const wchar_t* expected;
};

class Trimmed : public testing::TestWithParam<TrimCase>
{
};

TEST_P(Trimmed, RemovesOuterBlanksOnly)
{
    EXPECT_EQ(win32::trimmed(GetParam().input), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, Trimmed,
                         testing::Values(TrimCase{L"", L""}, TrimCase{L" \r\n", L""},
                                         TrimCase{L"Access denied.\r\n", L"Access denied."},
                                         TrimCase{L"\t a  b \n", L"a  b"}));
