#include "ConnectivityProbe.h"

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
    // The proxy the network manager would take resolves the host itself. Asking for it can read
    // the desktop's settings, so it is asked beside the calling thread.
    auto proxied = std::make_shared<std::atomic<bool>>(false);
    QThread* asking = QThread::create([url, proxied] {
        const QList<QNetworkProxy> proxies =
            QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url));
        proxied->store(!proxies.isEmpty() && proxies.constFirst().type() != QNetworkProxy::NoProxy);
    });
    QObject::connect(asking, &QThread::finished, asking, &QObject::deleteLater);
    QObject::connect(asking, &QThread::finished, context, [url, context, answer, proxied] {
        if (proxied->load()) {
            answer(true);
            return;
        }
        // The answer stays in Qt's host cache, so the request that follows does not ask again.
        QHostInfo::lookupHost(url.host(), context, [answer](const QHostInfo& host) {
            answer(!host.addresses().isEmpty());
        });
    });
    asking->start();
}
