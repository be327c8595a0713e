#include "Downloader.h"

#include "FileDirTools.h"

#include <QEventLoop>
#include <QFile>
#include <QTimer>

struct Downloader::Private
{
    bool complete = false;
    bool success = false;
};

Downloader::Downloader(QObject* parent)
    : NetworkTransfer(parent)
    , d(std::make_unique<Private>())
{
    connect(this, &NetworkTransfer::signalComplete, this, [this](bool success) {
        d->complete = true;
        d->success = success;
    });
}

Downloader::~Downloader() = default;

bool Downloader::isComplete() const
{
    return d->complete;
}

bool Downloader::isSuccess() const
{
    return d->success;
}

QByteArray download(const QUrl& url, const QString& destinationPath, bool quiet, int timeoutSeconds)
{
    Downloader downloader;
    QEventLoop loop;
    QObject::connect(&downloader, &NetworkTransfer::signalComplete, &loop, &QEventLoop::quit);
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &downloader, &NetworkTransfer::slotCancel);
    timer.start(timeoutSeconds * 1000);
    downloader.start(url, QString(), QString(), quiet);
    if (!downloader.isComplete())
        loop.exec();

    const QString fileName = downloader.takeFileName();
    QByteArray result;
    // A failed transfer has removed its file; nothing partial may replace the destination.
    if (!downloader.isSuccess())
        return result;
    if (!destinationPath.isEmpty()) {
        moveFile(fileName, destinationPath);
        return result;
    }
    QFile file(fileName);
    if (file.open(QIODevice::ReadOnly)) {
        result = file.readAll();
        file.close();
        removeFile(fileName);
    }
    return result;
}

QByteArray download(const QUrl& url, bool quiet, int timeoutSeconds)
{
    return download(url, QString(), quiet, timeoutSeconds);
}
