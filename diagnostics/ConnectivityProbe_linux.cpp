#include "ConnectivityProbe.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QThread>
#include <QTimer>

bool probeConnectivity(const QUrl& url)
{
    QEventLoop loop;
    // One bound for the host lookup and the request together.
    QTimer::singleShot(connectivityProbeTimeout, &loop, &QEventLoop::quit);
    // A thread asked to end, at a quit, stops waiting at once.
    QTimer interruption;
    QObject::connect(&interruption, &QTimer::timeout, &loop, [&loop] {
        if (QThread::currentThread()->isInterruptionRequested())
            loop.quit();
    });
    interruption.start(100);

    enum { Asking, Unreachable, Reachable } reach = Asking;
    whenReachable(url, &loop, [&reach, &loop](bool reachable) {
        reach = reachable ? Reachable : Unreachable;
        loop.quit();
    });
    if (reach == Asking)
        loop.exec();
    if (reach != Reachable)
        return false;

    QNetworkAccessManager manager;
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, connectivityProbeAgent());
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    QNetworkReply* reply = manager.get(request);

    qint64 received = 0;
    QObject::connect(reply, &QNetworkReply::readyRead, &loop,
                     [&received, reply] { received += reply->readAll().size(); });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    if (!reply->isFinished())
        loop.exec();
    received += reply->readAll().size();
    reply->abort();
    return received > 0;
}
