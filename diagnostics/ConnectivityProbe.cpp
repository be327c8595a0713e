#include "ConnectivityProbe.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkProxyFactory>

QString connectivityProbeAgent()
{
    return QStringLiteral("Corvannta Support");
}

void whenReachable(const QUrl& url, QObject* context, const std::function<void(bool)>& answer)
{
    // The proxy the network manager would take: it resolves the host itself.
    const QList<QNetworkProxy> proxies =
        QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url));
    const bool proxied =
        !proxies.isEmpty() && proxies.constFirst().type() != QNetworkProxy::NoProxy;
    if (proxied || !QHostAddress(url.host()).isNull()) {
        answer(true);
        return;
    }
    // The answer stays in Qt's host cache, so the request that follows does not ask again.
    QHostInfo::lookupHost(url.host(), context,
                          [answer](const QHostInfo& host) { answer(!host.addresses().isEmpty()); });
}
