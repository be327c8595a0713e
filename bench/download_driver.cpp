#include "BaseApplication.h"
#include "Downloader.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTimer>

#include <cstdio>

// Fetches one URL through download(...) from inside the application's event loop, as the tool
// does, quietly and with a generous limit. With a destination the file is moved there; without
// one the body is kept in memory. Prints the bytes fetched and the seconds download() took.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    BaseApplication application(QStringLiteral("Corvanta"), QStringLiteral("1.0.5"), argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2 || arguments.size() > 3) {
        std::fprintf(stderr, "usage: %s URL [DESTINATION]\n", qPrintable(arguments.value(0)));
        return 2;
    }
    const QUrl url(arguments.at(1));
    const QString destination = arguments.value(2);

    qint64 bytes = -1;
    qint64 nanoseconds = 0;
    QTimer::singleShot(0, &application, [&] {
        QElapsedTimer timer;
        timer.start();
        const QByteArray body = destination.isEmpty() ? download(url, true, 600)
                                                      : download(url, destination, true, 600);
        nanoseconds = timer.nsecsElapsed();
        bytes = destination.isEmpty() ? body.size() : QFileInfo(destination).size();
        application.quit();
    });
    application.exec();
    std::printf("%lld %.6f\n", bytes, double(nanoseconds) / 1e9);
    return bytes > 0 ? 0 : 1;
}
