#include "ConnectivityProbe.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QThread>
#include <QTimer>

bool probeConnectivity(const QUrl& url)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, connectivityProbeAgent());
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    QNetworkReply* reply = manager.get(request);

    qint64 received = 0;
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::readyRead, &loop,
                     [&received, reply] { received += reply->readAll().size(); });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(connectivityProbeTimeout, &loop, &QEventLoop::quit);
    // A thread asked to end, at a quit, stops waiting at once.
    QTimer interruption;
    QObject::connect(&interruption, &QTimer::timeout, &loop, [&loop] {
        if (QThread::currentThread()->isInterruptionRequested())
            loop.quit();
    });
    interruption.start(100);
    if (!reply->isFinished())
        loop.exec();
    received += reply->readAll().size();
    reply->abort();
    return received > 0;
}
