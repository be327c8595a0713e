#pragma once

#include <QString>

// Root passes every permission check, so the current test function and row run again as nobody;
// returns that run's output when it did not pass, else an empty text.
QString failureAsNobody();

#ifdef Q_OS_WIN // the read-only attribute denies every user
#define RUN_AS_NOBODY_WHEN_ROOT()
#else
#define RUN_AS_NOBODY_WHEN_ROOT()                                                                  \
    if (::geteuid() == 0) {                                                                        \
        const QString failure = failureAsNobody();                                                 \
        QVERIFY2(failure.isEmpty(), qPrintable(failure));                                          \
        return;                                                                                    \
    }
#endif
