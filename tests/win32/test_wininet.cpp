#include "win32/wininet.h"

#include <gtest/gtest.h>

#include <winsock2.h>

#include <chrono>
#include <string>

namespace {

constexpr unsigned long bound = 10000;

// A loopback port that takes connections into its backlog and never says a word, so the TLS
// handshake waits for an answer that does not come. Port 0 when it could not listen.
struct SilentServer
{
    SilentServer()
    {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        int length = sizeof address;
        if (bind(socket, reinterpret_cast<sockaddr*>(&address), length) == 0
            && listen(socket, 4) == 0
            && getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) == 0)
            url = L"https://127.0.0.1:" + std::to_wstring(ntohs(address.sin_port)) + L"/myip.php";
    }
    ~SilentServer() { closesocket(socket); }

    SOCKET socket = INVALID_SOCKET;
    std::wstring url;
};

// Seconds until urlAnswers() gave up; it must not have answered.
double secondsToFail(const std::wstring& url)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(win32::urlAnswers(url, L"Corvannta Support", bound));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

// A refused connection fails at once, a silent server at the deadline.
TEST(UrlAnswers, FailuresEndByTheDeadline)
{
    // Its port is closed again once the temporary server is gone.
    const std::wstring closed = SilentServer().url;
    ASSERT_FALSE(closed.empty());
    EXPECT_LT(secondsToFail(closed), bound / 1000.0);
    EXPECT_FALSE(win32::urlAnswers(L"not a url", L"Corvannta Support", bound));
    SilentServer silent;
    ASSERT_FALSE(silent.url.empty());
    EXPECT_LT(secondsToFail(silent.url), 2.0 * bound / 1000.0) << "the deadline plus slack";
}
