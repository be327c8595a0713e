#include "win32/errortext.h"

#include <gtest/gtest.h>

#include <windows.h>

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
