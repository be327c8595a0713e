#pragma once

#include <QList>
#include <QNetworkReply>
#include <QObject>
#include <QSslError>
#include <QString>
#include <QUrl>

#include <memory>

class QNetworkRequest;

// Downloads one URL into a uniquely named temporary file through the network service, following
// redirects one hop at a time and ignoring certificate errors. The outcome comes as one
// signalComplete; a failure is also shown in a message box unless the transfer is quiet.
class NetworkTransfer : public QObject
{
    Q_OBJECT

public:
    explicit NetworkTransfer(QObject* parent = nullptr);
    ~NetworkTransfer() override;

    void start(const QUrl& url, const QString& user, const QString& password, bool quiet);
    // Every hop after the first comes through here.
    virtual void startRequest(const QNetworkRequest& request);
    // A null reply (the network service is gone) ends the transfer at once with failure.
    void setReply(QNetworkReply* reply);
    // The caller now owns the downloaded file; the next transfer writes to a new name.
    QString takeFileName();

signals:
    void signalProgress(qint64 bytesTransferred, qint64 bytesTotal);
    void signalComplete(bool success, QNetworkReply::NetworkError errorCode);
    // For clients; the transfer itself never emits it.
    void signalReturnFocus();

public slots:
    void slotCancel();
    void slotTransferProgress(qint64 bytesReceived, qint64 bytesTotal);
    void slotError(QNetworkReply::NetworkError code);
    void slotSslErrors(const QList<QSslError>& errors);
    void slotFinished();

private:
    // Copies the finished reply's body into the download file.
    bool saveBody(QNetworkReply* reply);

    struct Private;
    std::unique_ptr<Private> d;
};
