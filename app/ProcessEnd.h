#pragma once

// What main returns, once everything is written and the application is gone. On Windows the
// process ends here, without unloading the runtime, whose unloading can wait for ever on a lock
// that a thread ended with the process left held.
int endProcess(int status);
