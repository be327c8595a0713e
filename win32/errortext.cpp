#include "win32/errortext.h"

#include <windows.h>

namespace win32 {

std::wstring trimmed(const std::wstring& text)
{
    const wchar_t* blanks = L" \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::wstring::npos)
        return {};
    const auto last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::wstring systemErrorMessage(unsigned long code)
{
    wchar_t* buffer = nullptr;
    const DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const DWORD length =
        FormatMessageW(flags, nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    std::wstring message;
    if (length > 0 && buffer)
        message = trimmed(std::wstring(buffer, length));
    if (buffer)
        LocalFree(buffer);
    return message;
}

} // namespace win32
