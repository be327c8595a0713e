#include "BaseApplication.h"
#include "Downloader.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <cstdio>
#include <functional>

namespace {

// The floor under download(...): Qt's own access manager alone, the body taken when the reply has
// finished, as download(...) takes it, and written out in one piece.
void fetchWithQtAlone(const QUrl& url, const QString& destination,
                      const std::function<void()>& done)
{
    auto* manager = new QNetworkAccessManager(qApp);
    QNetworkReply* reply = manager->get(QNetworkRequest(url));
    QObject::connect(reply, &QNetworkReply::finished, manager, [=] {
        QFile file(destination);
        if (reply->error() == QNetworkReply::NoError && file.open(QIODevice::WriteOnly))
            file.write(reply->readAll());
        file.close();
        done();
    });
}

} // namespace

// Fetches one URL through download(...) from inside the application's event loop, as the tool
// does, quietly and with a generous limit. With a destination the file is moved there; without
// one the body is kept in memory. With --qt-alone first, Qt's access manager fetches it without
// the tool, for comparison. Prints the bytes fetched and the seconds the fetch took.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    BaseApplication application(QStringLiteral("Corvanta"), QStringLiteral("1.0.5"), argc, argv);
    QStringList arguments = QCoreApplication::arguments();
    const bool qtAlone = arguments.removeOne(QStringLiteral("--qt-alone"));
    if (arguments.size() < 2 || arguments.size() > 3 || (qtAlone && arguments.size() != 3)) {
        std::fprintf(stderr, "usage: %s [--qt-alone] URL [DESTINATION]\n",
                     qPrintable(arguments.value(0)));
        return 2;
    }
    const QUrl url(arguments.at(1));
    const QString destination = arguments.value(2);

    qint64 bytes = -1;
    qint64 nanoseconds = 0;
    QElapsedTimer timer;
    if (qtAlone) {
        timer.start();
        fetchWithQtAlone(url, destination, [&] {
            nanoseconds = timer.nsecsElapsed();
            bytes = QFileInfo(destination).size();
            application.quit();
        });
    }
    QTimer::singleShot(0, &application, [&] {
        if (qtAlone)
            return;
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
