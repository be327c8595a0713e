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
// http and https redirects one hop at a time (twenty at most) and ignoring certificate errors.
// The body goes to the file as it arrives. The outcome comes as one signalComplete; a failure
// leaves no file and is also shown in a message box unless the transfer is quiet.
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
    void slotReadyRead();
    void slotFinished();

private:
    // Appends what the reply holds so far to the download file, as it arrives.
    bool saveBody(QNetworkReply* reply);
    // Removes the partial file, tells the user unless quiet, and signals the failure.
    void fail(QNetworkReply* reply, QNetworkReply::NetworkError error, const QString& reason);

    struct Private;
    std::unique_ptr<Private> d;
};
