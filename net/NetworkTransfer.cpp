#include "NetworkTransfer.h"

#include "FileDirTools.h"
#include "FileHandle.h"
#include "NetworkTools.h"
#include "TempFileName.h"

#include <QDebug>
#include <QMessageBox>
#include <QNetworkRequest>
#include <QPointer>

namespace {

const qint64 chunkSize = 0x400000;

// Null when the service is gone, as it is at shutdown.
QNetworkReply* getThroughService(const QNetworkRequest& request)
{
    NetworkTools* tools = NetworkTools::instance();
    return tools ? tools->get(request) : nullptr;
}

} // namespace

struct NetworkTransfer::Private
{
    QPointer<QNetworkReply> reply;
    bool quiet = false;
    QUrl url;
    std::unique_ptr<TempFileName> downloadFile = std::make_unique<TempFileName>();

    // Takes the reply in flight out first, so that its finished signal is no longer ours.
    bool abortReply()
    {
        QNetworkReply* inFlight = reply;
        reply = nullptr;
        if (!inFlight)
            return false;
        inFlight->abort();
        inFlight->deleteLater();
        return true;
    }
};

NetworkTransfer::NetworkTransfer(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{}

NetworkTransfer::~NetworkTransfer()
{
    d->abortReply();
}

void NetworkTransfer::start(const QUrl& url, const QString& user, const QString& password,
                            bool quiet)
{
    d->quiet = quiet;
    if (url.path(QUrl::FullyDecoded).isEmpty()) {
        emit signalComplete(false, QNetworkReply::NoError);
        return;
    }
    d->abortReply();
    NetworkTools* tools = NetworkTools::instance();
    if (tools && (!user.isEmpty() || !password.isEmpty()))
        tools->setCredentials(url, user, password);
    setReply(getThroughService(QNetworkRequest(url)));
}

void NetworkTransfer::startRequest(const QNetworkRequest& request)
{
    setReply(getThroughService(request));
}

void NetworkTransfer::setReply(QNetworkReply* reply)
{
    d->reply = reply;
    if (!reply) {
        emit signalComplete(false, QNetworkReply::UnknownNetworkError);
        return;
    }
    d->url = reply->url();
    connect(reply, &QNetworkReply::downloadProgress, this, &NetworkTransfer::slotTransferProgress);
    connect(reply, &QNetworkReply::errorOccurred, this, &NetworkTransfer::slotError);
    connect(reply, &QNetworkReply::sslErrors, this, &NetworkTransfer::slotSslErrors);
    connect(reply, &QNetworkReply::finished, this, &NetworkTransfer::slotFinished);
}

QString NetworkTransfer::takeFileName()
{
    const QString path = d->downloadFile->uniqueTempFileName();
    d->downloadFile = std::make_unique<TempFileName>();
    return path;
}

void NetworkTransfer::slotCancel()
{
    if (d->abortReply())
        emit signalComplete(false, QNetworkReply::OperationCanceledError);
}

void NetworkTransfer::slotTransferProgress(qint64 bytesReceived, qint64 bytesTotal)
{
    emit signalProgress(bytesReceived, bytesTotal);
}

void NetworkTransfer::slotError(QNetworkReply::NetworkError code)
{
    // The outcome is decided once the reply has finished.
    Q_UNUSED(code)
}

void NetworkTransfer::slotSslErrors(const QList<QSslError>& errors)
{
    Q_UNUSED(errors)
    if (auto* reply = qobject_cast<QNetworkReply*>(sender()))
        reply->ignoreSslErrors();
}

void NetworkTransfer::slotFinished()
{
    QNetworkReply* reply = qobject_cast<QNetworkReply*>(sender());
    if (!reply || reply != d->reply)
        return;
    const QNetworkReply::NetworkError error = reply->error();
    if (error == QNetworkReply::NoError) {
        const QVariant target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute);
        if (target.isValid()) {
            reply->deleteLater();
            startRequest(QNetworkRequest(target.toUrl()));
            return;
        }
    }
    // Out of reach of a cancel that comes while the message box is open.
    d->reply = nullptr;
    bool success = false;
    if (error == QNetworkReply::NoError) {
        success = saveBody(reply);
    } else {
        qDebug().noquote() << "Transfer failed:" << d->url.toDisplayString()
                           << NetworkTools::errorText(error);
        if (!d->quiet) {
            QMessageBox::information(nullptr, tr("Error Encountered"),
                                     tr("Transfer failed, please try again later.")
                                         + QLatin1Char('\n') + NetworkTools::errorText(error),
                                     QMessageBox::Ok);
        }
    }
    reply->deleteLater();
    emit signalComplete(success, error);
}

bool NetworkTransfer::saveBody(QNetworkReply* reply)
{
    FileHandle file(d->downloadFile->uniqueTempFileName(), OpenWriteOnly, true);
    if (!file.isOpen())
        return false;
    qint64 remaining = reply->bytesAvailable();
    // One buffer for every chunk.
    QByteArray buffer(qMin(chunkSize, remaining), Qt::Uninitialized);
    while (remaining > 0) {
        const qint64 count = qMin(chunkSize, remaining);
        if (reply->read(buffer.data(), count) != count || !file.write(buffer.constData(), count))
            return false;
        remaining -= count;
    }
    return true;
}
