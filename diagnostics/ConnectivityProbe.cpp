#include "ConnectivityProbe.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkProxyFactory>
#include <QThread>

#include <atomic>
#include <memory>

QString connectivityProbeAgent()
{
    return QStringLiteral("Corvannta Support");
}

void whenReachable(const QUrl& url, QObject* context, const std::function<void(bool)>& answer)
{
    if (!QHostAddress(url.host()).isNull()) {
        answer(true);
        return;
    }
    // The proxy the network manager would take resolves the host itself.
    const auto proxyCarries = [url] {
        const QList<QNetworkProxy> proxies =
            QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url));
        return !proxies.isEmpty() && proxies.constFirst().type() != QNetworkProxy::NoProxy;
    };
    const auto lookUp = [url, context, answer](bool proxied) {
        if (proxied) {
            answer(true);
            return;
        }
        // The answer stays in Qt's host cache, so the request that follows does not ask again.
        QHostInfo::lookupHost(url.host(), context, [answer](const QHostInfo& host) {
            answer(!host.addresses().isEmpty());
        });
    };
    // Without a route off the machine no proxy could carry the request either; only a host the
    // machine names itself, such as one its hosts file puts on loopback, can answer.
    if (!hasRouteOut()) {
        lookUp(false);
        return;
    }
    if (QThread::currentThread() != QCoreApplication::instance()->thread()) {
        lookUp(proxyCarries());
        return;
    }
    auto proxied = std::make_shared<std::atomic<bool>>(false);
    QThread* asking = QThread::create([proxyCarries, proxied] { proxied->store(proxyCarries()); });
    QObject::connect(asking, &QThread::finished, asking, &QObject::deleteLater);
    QObject::connect(asking, &QThread::finished, context,
                     [lookUp, proxied] { lookUp(proxied->load()); });
    asking->start();
}
