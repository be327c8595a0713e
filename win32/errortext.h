#pragma once

#include <string>

namespace win32 {

// The system's own message for an error code, trimmed of white space; empty when the system has
// none.
std::wstring systemErrorMessage(unsigned long code);

// Trims spaces, tabs and line ends from both ends.
std::wstring trimmed(const std::wstring& text);

} // namespace win32
