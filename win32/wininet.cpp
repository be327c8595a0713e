#include "win32/wininet.h"

#include <windows.h>
#include <wininet.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace win32 {

namespace {

bool readsSomething(const std::wstring& url, const std::wstring& agent, unsigned long timeoutMs)
{
    HINTERNET session =
        InternetOpenW(agent.c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
    if (!session)
        return false;
    for (const DWORD option :
         {DWORD(INTERNET_OPTION_CONNECT_TIMEOUT), DWORD(INTERNET_OPTION_SEND_TIMEOUT),
          DWORD(INTERNET_OPTION_RECEIVE_TIMEOUT)}) {
        DWORD value = timeoutMs;
        InternetSetOptionW(session, option, &value, DWORD(sizeof value));
    }

    unsigned long long received = 0;
    HINTERNET request = InternetOpenUrlW(session, url.c_str(), nullptr, 0,
                                         INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_SECURE, 0);
    if (request) {
        char chunk[1024];
        DWORD read = 0;
        while (InternetReadFile(request, chunk, DWORD(sizeof chunk), &read) && read > 0)
            received += read;
        InternetCloseHandle(request);
    }
    InternetCloseHandle(session);
    return received > 0;
}

} // namespace

bool urlAnswers(const std::wstring& url, const std::wstring& agent, unsigned long timeoutMs)
{
    // WinInet's time-outs do not cover every step (name look-up, the TLS handshake on some
    // systems), so the whole exchange runs on a thread of its own and is abandoned at the
    // deadline; the thread closes its handles whenever WinInet lets it go.
    auto result = std::make_shared<std::promise<bool>>();
    std::future<bool> answered = result->get_future();
    std::thread([result, url, agent, timeoutMs] {
        result->set_value(readsSomething(url, agent, timeoutMs));
    }).detach();
    if (answered.wait_for(std::chrono::milliseconds(timeoutMs)) != std::future_status::ready)
        return false;
    return answered.get();
}

} // namespace win32
