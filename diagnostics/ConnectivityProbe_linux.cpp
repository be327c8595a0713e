#include "ConnectivityProbe.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
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
    // Clicks wait until the probe is done, so no action starts in the middle of a load.
    if (!reply->isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    received += reply->readAll().size();
    reply->abort();
    return received > 0;
}
