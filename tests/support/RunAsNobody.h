#pragma once

#include <QString>

// Root passes every permission check, so denial cases run again in a child process as nobody:
// the current test function (and data row) of this same executable. Returns the child's output
// when it did not pass, else an empty text.
QString failureAsNobody();

#define RUN_AS_NOBODY_WHEN_ROOT()                                                                  \
    if (::geteuid() == 0) {                                                                        \
        const QString failure = failureAsNobody();                                                 \
        QVERIFY2(failure.isEmpty(), qPrintable(failure));                                          \
        return;                                                                                    \
    }
