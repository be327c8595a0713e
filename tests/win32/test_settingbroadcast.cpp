// Runs with an X display (see CMakeLists.txt): without one Wine creates no windows, and a
// broadcast that reaches nobody proves nothing.
#include "win32/registry.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace {

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

} // namespace

TEST(SettingBroadcast, HungRecipientDoesNotHoldUpTheWrite)
{
    HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HWND window = nullptr;
    std::atomic<bool> done{false};
    std::thread recipient([&] {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = hungWindowProc;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"CvtHungRecipient";
        RegisterClassW(&windowClass);
        window = CreateWindowExW(0, windowClass.lpszClassName, L"recipient", WS_OVERLAPPEDWINDOW, 0,
                                 0, 10, 10, nullptr, nullptr, windowClass.hInstance, nullptr);
        SetEvent(ready);
        MSG message;
        while (!done) {
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageW(&message);
            Sleep(5);
        }
        DestroyWindow(window);
    });
    WaitForSingleObject(ready, INFINITE);
    ASSERT_NE(window, nullptr) << "no top-level window: is DISPLAY set?";

    const std::wstring sid = win32::currentUserSid([](const char*) {});
    const ULONGLONG start = GetTickCount64();
    const bool written = win32::setEnvironmentVariable(sid, L"CvtBroadcast", L"0");
    const ULONGLONG elapsed = GetTickCount64() - start;

    done = true;
    recipient.join();
    CloseHandle(ready);
    win32::removeEnvironmentVariable(sid, L"CvtBroadcast");

    EXPECT_TRUE(written);
    EXPECT_EQ(environmentChanges.load(), 1)
        << "the 8-bit \"Environment\" notice reached the window";
    // The recipient hangs for 3 s; a 100 ms timeout per window returns long before that.
    EXPECT_LT(elapsed, 1500u);
}
