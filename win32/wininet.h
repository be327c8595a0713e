#pragma once

#include <string>

namespace win32 {

// Opens the URL over TLS through WinInet, with the system's proxy settings and without writing
// to the cache, and reads its body. True when at least one byte came back within timeoutMs
// milliseconds.
bool urlAnswers(const std::wstring& url, const std::wstring& agent, unsigned long timeoutMs);

} // namespace win32
