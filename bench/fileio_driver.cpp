#include "SupportBenchmarkFileIoTask.h"
#include "SupportTaskManager.h"

#include <QApplication>
#include <QElapsedTimer>

#include <cstdio>

// Runs the file I/O benchmark on the given folder the way the System page does, through a task
// manager and its progress dialog, without a display. Prints the report, then the total time.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", qPrintable(arguments.value(0)));
        return 2;
    }

    SupportTaskManager manager;
    manager.addTask(new SupportBenchmarkFileIoTask(arguments.at(1)));
    QElapsedTimer total;
    total.start();
    // The whole batch runs inside start(); the task and its folder are gone when it returns.
    manager.start();
    const qint64 elapsed = total.nsecsElapsed();

    std::fputs(manager.report().toUtf8().constData(), stdout);
    std::printf("TOTAL %.3f s\n", double(elapsed) / 1e9);
    return 0;
}
