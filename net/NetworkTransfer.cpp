#include "NetworkTransfer.h"

#include "FileDirTools.h"
#include "FileHandle.h"
#include "NetworkTools.h"
#include "TempFileName.h"

#include <QDebug>
#include <QFileInfo>
#include <QMessageBox>
#include <QNetworkRequest>
#include <QPointer>

namespace {

const qint64 chunkSize = 0x400000;
// More hops than this end the transfer: a redirect loop would otherwise run for ever.
const int maximumRedirects = 20;

// Null when the service is gone, as it is at shutdown.
QNetworkReply* getThroughService(const QNetworkRequest& request)
{
    NetworkTools* tools = NetworkTools::instance();
    return tools ? tools->get(request) : nullptr;
}

bool isRedirect(QNetworkReply* reply)
{
    return reply->attribute(QNetworkRequest::RedirectionTargetAttribute).isValid();
}

} // namespace

struct NetworkTransfer::Private
{
    QPointer<QNetworkReply> reply;
    bool quiet = false;
    QUrl url;
    std::unique_ptr<TempFileName> downloadFile = std::make_unique<TempFileName>();
    // Open while a body is being received.
    std::unique_ptr<FileHandle> file;
    int redirects = 0;

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

    // A transfer that did not succeed leaves no partial file behind.
    void discardFile()
    {
        file.reset();
        const QString path = downloadFile->uniqueTempFileName();
        if (QFileInfo::exists(path))
            removeFile(path);
    }

    bool openFile()
    {
        if (!file)
            file = std::make_unique<FileHandle>(downloadFile->uniqueTempFileName(), OpenWriteOnly,
                                                true);
        return file->isOpen();
    }
};

NetworkTransfer::NetworkTransfer(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{}

NetworkTransfer::~NetworkTransfer()
{
    if (d->abortReply())
        d->discardFile();
}

void NetworkTransfer::start(const QUrl& url, const QString& user, const QString& password,
                            bool quiet)
{
    d->quiet = quiet;
    if (url.path(QUrl::FullyDecoded).isEmpty()) {
        emit signalComplete(false, QNetworkReply::NoError);
        return;
    }
    if (d->abortReply())
        d->discardFile();
    d->redirects = 0;
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
        d->discardFile();
        emit signalComplete(false, QNetworkReply::UnknownNetworkError);
        return;
    }
    d->url = reply->url();
    // Bounded, so that a body larger than memory streams through to the file.
    reply->setReadBufferSize(chunkSize);
    connect(reply, &QNetworkReply::downloadProgress, this, &NetworkTransfer::slotTransferProgress);
    connect(reply, &QNetworkReply::errorOccurred, this, &NetworkTransfer::slotError);
    connect(reply, &QNetworkReply::sslErrors, this, &NetworkTransfer::slotSslErrors);
    connect(reply, &QNetworkReply::readyRead, this, &NetworkTransfer::slotReadyRead);
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
    if (d->abortReply()) {
        d->discardFile();
        emit signalComplete(false, QNetworkReply::OperationCanceledError);
    }
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

void NetworkTransfer::slotReadyRead()
{
    QNetworkReply* reply = qobject_cast<QNetworkReply*>(sender());
    if (!reply || reply != d->reply)
        return;
    if (!saveBody(reply)) {
        d->reply = nullptr;
        reply->abort();
        fail(reply, QNetworkReply::UnknownContentError,
             tr("The download could not be written to disk."));
    }
}

void NetworkTransfer::slotFinished()
{
    QNetworkReply* reply = qobject_cast<QNetworkReply*>(sender());
    if (!reply || reply != d->reply)
        return;
    // Out of reach of a cancel that comes while the message box is open.
    d->reply = nullptr;
    const QNetworkReply::NetworkError error = reply->error();
    if (error != QNetworkReply::NoError) {
        fail(reply, error, NetworkTools::errorText(error));
        return;
    }
    if (isRedirect(reply)) {
        // Relative targets are relative to the reply that named them.
        const QUrl target = reply->url().resolved(
            reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl());
        if (target.scheme() != QLatin1String("http") && target.scheme() != QLatin1String("https")) {
            qDebug().noquote() << "Redirect refused:" << target.toDisplayString();
            fail(reply, QNetworkReply::ProtocolUnknownError,
                 NetworkTools::errorText(QNetworkReply::ProtocolUnknownError));
            return;
        }
        if (++d->redirects > maximumRedirects) {
            fail(reply, QNetworkReply::TooManyRedirectsError,
                 NetworkTools::errorText(QNetworkReply::TooManyRedirectsError));
            return;
        }
        reply->deleteLater();
        startRequest(QNetworkRequest(target));
        return;
    }
    // An empty body still leaves its (empty) file.
    const bool success = saveBody(reply) && d->openFile() && d->file->close();
    d->file.reset();
    if (!success) {
        fail(reply, QNetworkReply::UnknownContentError,
             tr("The download could not be written to disk."));
        return;
    }
    reply->deleteLater();
    emit signalComplete(true, QNetworkReply::NoError);
}

void NetworkTransfer::fail(QNetworkReply* reply, QNetworkReply::NetworkError error,
                           const QString& reason)
{
    d->discardFile();
    qDebug().noquote() << "Transfer failed:" << d->url.toDisplayString() << reason;
    if (!d->quiet) {
        QMessageBox::information(nullptr, tr("Error Encountered"),
                                 tr("Transfer failed, please try again later.") + QLatin1Char('\n')
                                     + reason,
                                 QMessageBox::Ok);
    }
    reply->deleteLater();
    emit signalComplete(false, error);
}

bool NetworkTransfer::saveBody(QNetworkReply* reply)
{
    // A redirect's own body is not the download.
    if (isRedirect(reply)) {
        reply->skip(reply->bytesAvailable());
        return true;
    }
    if (reply->bytesAvailable() > 0 && !d->openFile())
        return false;
    QByteArray buffer;
    while (reply->bytesAvailable() > 0) {
        buffer = reply->read(chunkSize);
        if (buffer.isEmpty() || !d->file->write(buffer))
            return false;
    }
    return true;
}
