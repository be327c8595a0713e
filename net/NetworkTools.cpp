#include "NetworkTools.h"

#include "BaseApplication.h"
#include "BaseSettings.h"

#include <QAuthenticator>
#include <QHash>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkRequest>
#include <QPointer>

namespace {

const struct
{
    QNetworkReply::NetworkError code;
    const char* name;
} errorNames[] = {
    {QNetworkReply::NoError, "NoError"},
    {QNetworkReply::ConnectionRefusedError, "Connection Refused"},
    {QNetworkReply::RemoteHostClosedError, "Remote Host Closed"},
    {QNetworkReply::HostNotFoundError, "Host Not Found"},
    {QNetworkReply::TimeoutError, "Timeout"},
    {QNetworkReply::OperationCanceledError, "Operation Canceled"},
    {QNetworkReply::SslHandshakeFailedError, "SSL Handshake Failed"},
    {QNetworkReply::TemporaryNetworkFailureError, "Temporary Network Failure"},
    {QNetworkReply::UnknownNetworkError, "Unknown Network Error"},
    {QNetworkReply::ProxyConnectionRefusedError, "Proxy Connection Refused"},
    {QNetworkReply::ProxyConnectionClosedError, "Proxy Connection Closed"},
    {QNetworkReply::ProxyNotFoundError, "Proxy Not Found"},
    {QNetworkReply::ProxyTimeoutError, "Proxy Timeout"},
    {QNetworkReply::ProxyAuthenticationRequiredError, "Proxy Authentication Required"},
    {QNetworkReply::UnknownProxyError, "Unknown Proxy Error"},
    {QNetworkReply::ContentAccessDenied, "Content Access Denied"},
    {QNetworkReply::ContentOperationNotPermittedError, "Content Operation Not Permitted"},
    {QNetworkReply::ContentNotFoundError, "Content Not Found"},
    {QNetworkReply::AuthenticationRequiredError, "Authentication Required"},
    {QNetworkReply::ContentReSendError, "Content ReSend Error"},
    {QNetworkReply::UnknownContentError, "Unknown Content Error"},
    {QNetworkReply::ProtocolUnknownError, "Protocol Unknown"},
    {QNetworkReply::ProtocolInvalidOperationError, "Protocol Invalid Operation"},
    {QNetworkReply::ProtocolFailure, "Protocol Failure"},
};

} // namespace

struct NetworkTools::Private
{
    QHash<QUrl, Credentials> credentials;
};

NetworkTools::NetworkTools()
    : d(std::make_unique<Private>())
{}

NetworkTools::~NetworkTools() = default;

NetworkTools* NetworkTools::instance()
{
    // Created once, even when threads race; the guarded pointer reads null after shutdown.
    static const QPointer<NetworkTools> held = [] {
        auto* tools = new NetworkTools;
        if (BaseApplication* application = BaseApplication::instance())
            application->deleteBeforeShutdown(tools);
        return QPointer<NetworkTools>(tools);
    }();
    return held.data();
}

QNetworkAccessManager* NetworkTools::networkAccessManager()
{
    static const QPointer<QNetworkAccessManager> held = []() -> QNetworkAccessManager* {
        NetworkTools* tools = instance();
        if (!tools)
            return nullptr;
        auto* manager = new QNetworkAccessManager(tools);
        // Transfers follow redirects themselves, one hop at a time.
        manager->setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
        connect(manager, &QNetworkAccessManager::proxyAuthenticationRequired, tools,
                &NetworkTools::slotProxyAuthenticationRequired);
        connect(manager, &QNetworkAccessManager::authenticationRequired, tools,
                &NetworkTools::slotAuthenticationRequired);
        return manager;
    }();
    return held.data();
}

void NetworkTools::setCredentials(const QUrl& url, const QString& user, const QString& password)
{
    d->credentials.insert(url, {user, password});
}

void NetworkTools::applyProxy(const QUrl& url)
{
    QNetworkAccessManager* manager = networkAccessManager();
    if (!manager)
        return;
    const BaseSettings settings;
    if (!settings.value(QStringLiteral("useSystemProxyConfiguration"), true).toBool())
        return;
    const QList<QNetworkProxy> proxies = QNetworkProxyFactory::systemProxyForQuery(
        QNetworkProxyQuery(url, QNetworkProxyQuery::UrlRequest));
    manager->setProxy(proxies.isEmpty() ? QNetworkProxy() : proxies.first());
}

QNetworkReply* NetworkTools::get(const QUrl& url)
{
    return get(QNetworkRequest(url));
}

QNetworkReply* NetworkTools::get(const QNetworkRequest& request)
{
    QNetworkAccessManager* manager = networkAccessManager();
    if (!manager)
        return nullptr;
    applyProxy(request.url());
    QNetworkReply* reply = manager->get(request);
    reply->ignoreSslErrors();
    return reply;
}

QString NetworkTools::errorText(QNetworkReply::NetworkError code)
{
    QString name = QStringLiteral("Unknown Error");
    for (const auto& entry : errorNames) {
        if (entry.code == code)
            name = QLatin1String(entry.name);
    }
    return tr("Error Code: %1 (%2)").arg(int(code)).arg(name);
}

void NetworkTools::slotProxyAuthenticationRequired(const QNetworkProxy& proxy,
                                                   QAuthenticator* authenticator)
{
    Q_UNUSED(proxy)
    emit signalAuthenticationRequired(nullptr, authenticator, QString(), QString());
}

void NetworkTools::slotAuthenticationRequired(QNetworkReply* reply, QAuthenticator* authenticator)
{
    Credentials defaults;
    if (!reply->property("disableDefaultAuth").toBool()) {
        const auto stored = d->credentials.constFind(reply->url());
        if (stored != d->credentials.constEnd()) {
            defaults = *stored;
            // The same pair already on the authenticator has been tried and refused.
            if (authenticator->user() != defaults.user
                || authenticator->password() != defaults.password) {
                authenticator->setUser(defaults.user);
                authenticator->setPassword(defaults.password);
                return;
            }
        }
    }
    emit signalAuthenticationRequired(reply, authenticator, defaults.user, defaults.password);
}
