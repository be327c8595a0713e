#pragma once

namespace win32 {

// Ends this process with the status at once, without unloading its libraries: MinGW's thread
// library can be left with its key table locked by a thread that ended with the process, and the
// C++ runtime's unloading then waits on it for ever. Standard C streams are flushed first.
[[noreturn]] void endProcessNow(unsigned status);

} // namespace win32
