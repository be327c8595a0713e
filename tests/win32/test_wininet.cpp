#include "win32/wininet.h"

#include <gtest/gtest.h>

#include <winsock2.h>

#include <chrono>
#include <string>

namespace {

const std::wstring agent = L"Corvannta Support";
constexpr unsigned long bound = 10000;

// A loopback port that accepts connections into its backlog and never says a word, so the TLS
// handshake waits for an answer that does not come.
class SilentServer
{
public:
    SilentServer()
    {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        m_socket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        int length = sizeof address;
        if (bind(m_socket, reinterpret_cast<sockaddr*>(&address), length) == 0
            && listen(m_socket, 4) == 0
            && getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length) == 0)
            m_port = ntohs(address.sin_port);
    }
    ~SilentServer()
    {
        closesocket(m_socket);
        WSACleanup();
    }

    std::wstring url() const
    {
        return L"https://127.0.0.1:" + std::to_wstring(m_port) + L"/myip.php";
    }
    unsigned short port() const { return m_port; }

private:
    SOCKET m_socket = INVALID_SOCKET;
    unsigned short m_port = 0;
};

double secondsFor(const std::wstring& url, bool* answered)
{
    const auto start = std::chrono::steady_clock::now();
    *answered = win32::urlAnswers(url, agent, bound);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

TEST(UrlAnswers, RefusedConnectionFailsFast)
{
    std::wstring url;
    {
        SilentServer closedAgain;
        ASSERT_NE(closedAgain.port(), 0);
        url = closedAgain.url();
    }
    bool answered = true;
    const double seconds = secondsFor(url, &answered);
    EXPECT_FALSE(answered);
    EXPECT_LT(seconds, bound / 1000.0) << "a refused connection waited for the time-out";
}

TEST(UrlAnswers, SilentServerIsGivenUpOnWithinTheBound)
{
    SilentServer server;
    ASSERT_NE(server.port(), 0);
    bool answered = true;
    const double seconds = secondsFor(server.url(), &answered);
    EXPECT_FALSE(answered);
    // The deadline plus slack for a slow Wine.
    EXPECT_LT(seconds, 2.0 * bound / 1000.0);
}

TEST(UrlAnswers, MalformedUrlFails)
{
    EXPECT_FALSE(win32::urlAnswers(L"not a url", agent, bound));
    EXPECT_FALSE(win32::urlAnswers(L"", agent, bound));
}
