#include "SupportSystemData.h"

#include "ConnectivityProbe.h"
#include "FileSystemListing.h"
#include "ReportFragments.h"
#include "SystemProfile.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QMutex>
#include <QMutexLocker>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QStandardPaths>
#include <QThread>
#include <QUrlQuery>

namespace {

// Listing the file systems can take minutes on Windows, so it is done once per process.
QString& fileSystemsText()
{
    static QString text;
    return text;
}

QString firstLocation(QStandardPaths::StandardLocation location)
{
    return QStandardPaths::standardLocations(location).value(0);
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

struct SupportSystemData::Private
{
    Figures figures;
    QString externalAddress;
    QString benchmarkText;
    QNetworkAccessManager* networkManager = nullptr;
    QStringList sslErrors;
    QUrl addressServiceUrl;
    QUrl probeUrl;
    // The address reply and its TLS errors arrive on the collector's thread while the first load
    // renders on the loader's.
    mutable QMutex networkMutex;
};

SupportSystemData::SupportSystemData(const QUrl& addressServiceUrl, const QUrl& probeUrl,
                                     QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    d->addressServiceUrl = addressServiceUrl;
    d->probeUrl = probeUrl;
    connect(this, &SupportSystemData::signalSslErrors, this,
            [this](const QList<QSslError>& errors) {
                QMutexLocker lock(&d->networkMutex);
                for (const QSslError& error : errors)
                    d->sslErrors << error.errorString();
            });
}

SupportSystemData::~SupportSystemData() = default;

QStringList SupportSystemData::errors() const
{
    QStringList errors;
    if (d->figures.ramGB < 1.0)
        errors << QStringLiteral("Insufficient RAM.");
    if (d->figures.fileSystems.isEmpty())
        errors << QStringLiteral("Failed to find file systems.");
    return errors;
}

QString SupportSystemData::name() const
{
    return QStringLiteral("System");
}

int SupportSystemData::type() const
{
    return SystemDataKind;
}

void SupportSystemData::load()
{
    Figures figures;
    if (const QSharedPointer<SystemProfile> profile = SystemProfile::instance()) {
        // The OS name comes twice, as "Linux 12 Linux Debian GNU/Linux 12 (bookworm) 64bit";
        // support reads the reports in this form.
        figures.operatingSystem =
            QStringLiteral("%1 %2 %3 %4bit")
                .arg(profile->osFamily(), profile->osVersion(), profile->osName(),
                     profile->is64Bit() ? QStringLiteral("64") : QStringLiteral("32"));
        figures.hostName = profile->hostName();
        // The home folder's name stands for the user; the account name can differ from it.
        figures.userName = profile->homeFolderName();
        figures.ramGB = profile->ramGB();
        figures.cpuCount = profile->cpuCount();
        figures.cpuSpeed = profile->cpuSpeed();
        figures.macAddresses = sorted(profile->macAddresses());
        figures.localAddresses = sorted(profile->localAddresses());
    }
    figures.documentsPath = firstLocation(QStandardPaths::DocumentsLocation);
    figures.desktopPath = firstLocation(QStandardPaths::DesktopLocation);
    figures.locale = QLocale::system().name();
    figures.systemTime = QDateTime::currentDateTime().date().toString(Qt::TextDate);

    requestExternalAddress();
    figures.winInetOk = probeConnectivity(d->probeUrl);

    QString& listing = fileSystemsText();
    if (listing.isEmpty())
        listing = fileSystemListing();
    figures.fileSystems = listing;

    setFigures(figures);
    render();
}

void SupportSystemData::requestExternalAddress()
{
    // The manager and its replies stay on the collector's thread, where the next load can delete
    // them safely; a load on the loader's thread hands the request over.
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(
            this, [this] { requestExternalAddress(); }, Qt::QueuedConnection);
        return;
    }
    delete d->networkManager;
    d->networkManager = new QNetworkAccessManager(this);
    connect(d->networkManager, &QNetworkAccessManager::finished, this,
            &SupportSystemData::signalExternalIpFinished);

    QUrl url = d->addressServiceUrl;
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("format"), QStringLiteral("json"));
    url.setQuery(query);
    {
        QMutexLocker lock(&d->networkMutex);
        d->sslErrors.clear();
    }
    QNetworkRequest request(url);
    // A silent or firewalled service must not leave the request hanging.
    request.setTransferTimeout(10000);
    QNetworkReply* reply = d->networkManager->get(request);
    connect(reply, &QNetworkReply::sslErrors, this, &SupportSystemData::signalSslErrors);
}

void SupportSystemData::setFigures(const Figures& figures)
{
    d->figures = figures;
}

void SupportSystemData::render()
{
    const Figures& f = d->figures;
    QString& text = *this->text();
    text.clear();
    appendErrors(text, *this);

    const QList<QPair<QString, QString>> rows{
        {QStringLiteral("Operating System:"), f.operatingSystem},
        {QStringLiteral("Host Name:"), f.hostName},
        {QStringLiteral("User Name:"), f.userName},
        {QStringLiteral("Documents:"), fileLink(f.documentsPath)},
        {QStringLiteral("Desktop:"), fileLink(f.desktopPath)},
        {QStringLiteral("RAM:"), QString::number(f.ramGB, 'g', 6) + QStringLiteral(" GB")},
        {QStringLiteral("CPUs:"), QString::number(f.cpuCount)},
        {QStringLiteral("Speed:"), f.cpuSpeed},
    };
    for (const auto& [label, value] : rows) {
        appendField(text, label, value);
        text += lineBreaks(1);
    }
    appendField(text, QStringLiteral("Locale:"), f.locale);
    text += lineBreaks(2);
    appendField(text, QStringLiteral("System Time:"), f.systemTime);
    text += lineBreaks(2);

    const auto appendList = [&text](const QString& label, const QStringList& items) {
        appendField(text, label, QVariant());
        text += lineBreaks(1);
        for (const QString& item : items) {
            appendIndented(text, QString(), item, 0);
            text += lineBreaks(1);
        }
        text += lineBreaks(1);
    };
    appendList(QStringLiteral("MAC Interfaces:"), f.macAddresses);
    appendList(QStringLiteral("Local IP Addresses:"), f.localAddresses);

    QString externalAddress;
    QStringList sslErrors;
    {
        QMutexLocker lock(&d->networkMutex);
        externalAddress = d->externalAddress;
        sslErrors = d->sslErrors;
    }
    appendField(text, QStringLiteral("External IP Address:"), QVariant());
    text += lineBreaks(1);
    appendIndented(text, QString(), externalAddress, 0);
    text += lineBreaks(2);

    if (!sslErrors.isEmpty()) {
        appendField(text, QStringLiteral("SSL Errors:"), QVariant());
        text += lineBreaks(1);
        for (int i = 0; i < sslErrors.size(); ++i) {
            appendField(text, QStringLiteral("%1. %2").arg(QString::number(i + 1), sslErrors.at(i)),
                        QVariant());
            text += lineBreaks(1);
        }
        text += lineBreaks(1);
    }

    // The listing starts on its own line end, so no break goes between it and this value.
    appendField(text, QStringLiteral("WinInet:"),
                f.winInetOk ? QStringLiteral("OK") : QStringLiteral("Error"));
    appendField(text, f.fileSystems, QVariant());
    d->benchmarkText.replace(QStringLiteral("\n"), QStringLiteral("<br>"));
    appendField(text, d->benchmarkText, QVariant());
}

void SupportSystemData::externalIpFinished(QNetworkReply* reply)
{
    if (!reply)
        return;
    if (reply->isReadable() && reply->bytesAvailable() > 0) {
        const QJsonValue address =
            QJsonDocument::fromJson(reply->readAll()).object().value(QStringLiteral("ip"));
        if (address.isString()) {
            QMutexLocker lock(&d->networkMutex);
            d->externalAddress = address.toString();
        }
    }
    reply->deleteLater();
}

void SupportSystemData::setBenchmarkText(const QString& text)
{
    d->benchmarkText = text;
}
