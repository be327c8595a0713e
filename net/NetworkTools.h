#pragma once

#include "GlobalResource.h"

#include <QNetworkReply>
#include <QString>
#include <QUrl>

#include <memory>

class QAuthenticator;
class QNetworkAccessManager;
class QNetworkProxy;
class QNetworkRequest;

// The process's one network service: owns the access manager, keeps user names and passwords per
// URL, applies the system proxy before each request and answers authentication requests from the
// stored pairs. Every download goes through it.
class NetworkTools : public GlobalResource
{
    Q_OBJECT

public:
    struct Credentials
    {
        QString user;
        QString password;
    };

    // Created on first use and deleted at the application's shutdown; null once deleted.
    static NetworkTools* instance();
    // The instance's child; null once the instance is gone.
    static QNetworkAccessManager* networkAccessManager();
    ~NetworkTools() override;

    // Keyed by the full request URL.
    void setCredentials(const QUrl& url, const QString& user, const QString& password);
    // Takes the system's proxy for the URL unless "useSystemProxyConfiguration" is false.
    void applyProxy(const QUrl& url);
    QNetworkReply* get(const QUrl& url);
    // Null when there is no access manager. Certificate errors never stop the reply.
    QNetworkReply* get(const QNetworkRequest& request);

    static QString errorText(QNetworkReply::NetworkError code);

signals:
    void signalAuthenticationRequired(QNetworkReply* reply, QAuthenticator* authenticator,
                                      QString defaultUsername, QString defaultPassword);

public slots:
    void slotProxyAuthenticationRequired(const QNetworkProxy& proxy, QAuthenticator* authenticator);
    void slotAuthenticationRequired(QNetworkReply* reply, QAuthenticator* authenticator);

private:
    NetworkTools();

    struct Private;
    std::unique_ptr<Private> d;
};
