#include "ConnectivityProbe.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QThread>
#include <QTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Connecting a datagram socket sends nothing; it fails at once when no route leads there.
bool routes(int family, const sockaddr* address, socklen_t size)
{
    const int fd = ::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    const bool routed = ::connect(fd, address, size) == 0;
    ::close(fd);
    return routed;
}

} // namespace

bool hasRouteOut()
{
    // Addresses kept for documentation, which no one uses: only the way to them is looked up.
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    v4.sin_port = htons(9);
    ::inet_pton(AF_INET, "192.0.2.1", &v4.sin_addr);
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    v6.sin6_port = htons(9);
    ::inet_pton(AF_INET6, "2001:db8::1", &v6.sin6_addr);
    return routes(AF_INET, reinterpret_cast<const sockaddr*>(&v4), sizeof v4)
           || routes(AF_INET6, reinterpret_cast<const sockaddr*>(&v6), sizeof v6);
}

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
