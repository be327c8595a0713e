#include "BaseApplication.h"
#include "SupportRepairPreferencesTask.h"
#include "SupportTaskManager.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <cstdio>

// Repairs the preferences file given as the argument through the task and its progress dialog, as
// the Corvanta page's button does, while a 10 ms timer on the GUI thread notes the longest time the
// event loop was kept from running. Prints the repair's time and that stall in milliseconds, then
// the task's report.
int main(int argc, char** argv)
{
    BaseApplication application(QStringLiteral("Corvanta"), QStringLiteral("1.0.5"), argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s PREFERENCES_FILE\n", argv[0]);
        return 2;
    }
    QElapsedTimer sinceTick;
    qint64 longestStall = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout,
                     [&] { longestStall = qMax(longestStall, sinceTick.restart()); });
    SupportTaskManager manager;
    QEventLoop loop;
    QObject::connect(&manager, &SupportTaskManager::signalFinished, &loop, &QEventLoop::quit);
    manager.addTask(new SupportRepairPreferencesTask(QString::fromLocal8Bit(argv[1])));
    QElapsedTimer timer;
    timer.start();
    sinceTick.start();
    ticker.start(10);
    manager.start();
    loop.exec();
    const double repairMs = double(timer.nsecsElapsed()) / 1e6;
    std::printf("%.1f %lld %s\n", repairMs, static_cast<long long>(longestStall),
                qPrintable(manager.report()));
    return 0;
}
