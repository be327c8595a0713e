#include "SupportSystemData.h"

#include "ConnectivityProbe.h"
#include "FileSystemListing.h"
#include "ReportFragments.h"
#include "SystemProfile.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QHostInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QMutexLocker>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRecursiveMutex>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <QUrlQuery>

#include <atomic>
#include <utility>

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
    // The answers of the latest probe and host lookup, shown by loads on the GUI thread until the
    // next ones come.
    bool probeAnswered = false;
    QStringList localAddresses;
    std::unique_ptr<QThread> probeThread;
    bool probing = false;
    int addressRequests = 0;
    bool lookingUp = false;
    // Asked by startAhead() for the next load, which then asks nothing again.
    bool networkStarted = false;
    // Once asked, a fact shows as "Checking..." until its first answer or the bound.
    bool networkAsked = false;
    bool probeKnown = false;
    bool addressesKnown = false;
    bool externalKnown = false;
    QDeadlineTimer networkDeadline;
    std::unique_ptr<QThread> profileThread;
    // The first load renders on the loader's thread while answers arrive on the collector's;
    // rendering asks errors(), which takes it again.
    mutable QRecursiveMutex mutex;
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
                QMutexLocker lock(&d->mutex);
                for (const QSslError& error : errors)
                    d->sslErrors << error.errorString();
            });
}

SupportSystemData::~SupportSystemData()
{
    if (d->profileThread)
        d->profileThread->wait();
    // Asked to, the probe gives up at once; on Windows it ends within its own bound.
    if (d->probeThread) {
        d->probeThread->requestInterruption();
        d->probeThread->wait();
    }
}

QStringList SupportSystemData::errors() const
{
    QMutexLocker lock(&d->mutex);
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
    }
    figures.documentsPath = firstLocation(QStandardPaths::DocumentsLocation);
    figures.desktopPath = firstLocation(QStandardPaths::DesktopLocation);
    figures.locale = QLocale::system().name();
    figures.systemTime = QDateTime::currentDateTime().date().toString(Qt::TextDate);

    // The network's answers come on the collector's thread, each in its own time; the page shows
    // "Checking..." until they do, so nothing here waits for them.
    if (!std::exchange(d->networkStarted, false))
        startNetwork();

    QString& listing = fileSystemsText();
    if (listing.isEmpty())
        listing = fileSystemListing();
    figures.fileSystems = listing;

    // The answers in so far, taken under the same lock that renders them.
    QMutexLocker lock(&d->mutex);
    figures.winInetOk = d->probeAnswered;
    figures.localAddresses = d->localAddresses;
    d->figures = figures;
    render();
}

QString SupportSystemData::checkingText()
{
    return QStringLiteral("Checking...");
}

void SupportSystemData::startNetwork()
{
    {
        QMutexLocker lock(&d->mutex);
        if (!d->networkAsked) {
            d->networkAsked = true;
            d->networkDeadline = QDeadlineTimer(connectivityProbeTimeout);
        }
    }
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(
            this, [this] { askNetwork(); }, Qt::QueuedConnection);
        return;
    }
    askNetwork();
}

void SupportSystemData::askNetwork()
{
    startProbe();
    lookUpLocalAddresses();
    requestExternalAddress();
    // A name server or a service may stay silent for longer than the probe's bound; the page
    // stops checking when it passes.
    if (const int remaining = networkWaitRemaining())
        QTimer::singleShot(remaining, this, &SupportSystemData::giveUpWaiting);
}

void SupportSystemData::giveUpWaiting()
{
    {
        QMutexLocker lock(&d->mutex);
        if (d->probeKnown && d->addressesKnown && d->externalKnown)
            return;
        if (!std::exchange(d->probeKnown, true)) {
            d->probeAnswered = false;
            d->figures.winInetOk = false;
        }
        if (!std::exchange(d->addressesKnown, true)) {
            d->localAddresses.clear();
            d->figures.localAddresses.clear();
        }
        d->externalKnown = true;
    }
    render();
    emit signalNetworkAnswered();
}

int SupportSystemData::networkWaitRemaining() const
{
    QMutexLocker lock(&d->mutex);
    if (!d->networkAsked || (d->probeKnown && d->addressesKnown && d->externalKnown))
        return 0;
    // Never 0 while one is missing: the bound's own timer ends the wait.
    return int(std::max<qint64>(1, d->networkDeadline.remainingTime()));
}

void SupportSystemData::requestExternalAddress()
{
    // The manager and its replies stay on the collector's thread (see startNetwork()), where the
    // next load can delete them safely.
    // Replacing the manager drops the replies still running, and with them their answers.
    delete d->networkManager;
    d->networkManager = nullptr;
    {
        QMutexLocker lock(&d->mutex);
        d->sslErrors.clear();
    }
    const int request = ++d->addressRequests;

    QUrl url = d->addressServiceUrl;
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("format"), QStringLiteral("json"));
    url.setQuery(query);
    whenReachable(url, this, [this, url, request](bool reachable) {
        // A later load asked again.
        if (request != d->addressRequests)
            return;
        if (!reachable) {
            addressAnswered(nullptr);
            return;
        }
        d->networkManager = new QNetworkAccessManager(this);
        connect(d->networkManager, &QNetworkAccessManager::finished, this,
                &SupportSystemData::addressAnswered);
        QNetworkRequest get(url);
        // A silent or firewalled service must not leave the request hanging.
        get.setTransferTimeout(connectivityProbeTimeout);
        QNetworkReply* reply = d->networkManager->get(get);
        connect(reply, &QNetworkReply::sslErrors, this, &SupportSystemData::signalSslErrors);
    });
}

void SupportSystemData::addressAnswered(QNetworkReply* reply)
{
    externalIpFinished(reply);
    {
        QMutexLocker lock(&d->mutex);
        d->externalKnown = true;
    }
    render();
    emit signalExternalIpFinished(reply);
    emit signalNetworkAnswered();
}

void SupportSystemData::startAhead()
{
    // Each answers through the event loop; none holds this thread while it collects.
    startNetwork();
    d->networkStarted = true;
    // The profile reads only the machine, but takes as long as a collector; load() waits for it
    // if it is not done yet.
    if (!d->profileThread) {
        d->profileThread.reset(QThread::create([] { SystemProfile::instance(); }));
        d->profileThread->setObjectName(QStringLiteral("SystemProfile"));
        d->profileThread->start();
    }
}

void SupportSystemData::lookUpLocalAddresses()
{
    if (d->lookingUp)
        return;
    d->lookingUp = true;
    QHostInfo::lookupHost(QHostInfo::localHostName(), this, [this](const QHostInfo& host) {
        d->lookingUp = false;
        {
            QMutexLocker lock(&d->mutex);
            d->localAddresses = sorted(SystemProfile::addressTexts(host));
            d->figures.localAddresses = d->localAddresses;
            d->addressesKnown = true;
        }
        render();
        emit signalLocalAddressesFound();
        emit signalNetworkAnswered();
    });
}

void SupportSystemData::startProbe()
{
    // A probe still running gives the latest answer when it ends.
    if (d->probing)
        return;
    d->probing = true;
    // A probe with nowhere to go needs no thread.
    whenReachable(d->probeUrl, this, [this](bool reachable) {
        if (!reachable) {
            probeFinished(false);
            return;
        }
        if (d->probeThread)
            d->probeThread->wait();
        auto answered = std::make_shared<std::atomic<bool>>(false);
        d->probeThread.reset(QThread::create(
            [url = d->probeUrl, answered] { answered->store(probeConnectivity(url)); }));
        d->probeThread->setObjectName(QStringLiteral("ConnectivityProbe"));
        connect(d->probeThread.get(), &QThread::finished, this,
                [this, answered] { probeFinished(answered->load()); });
        d->probeThread->start();
    });
}

void SupportSystemData::probeFinished(bool answered)
{
    d->probing = false;
    {
        QMutexLocker lock(&d->mutex);
        d->probeAnswered = answered;
        d->figures.winInetOk = answered;
        d->probeKnown = true;
    }
    render();
    emit signalProbeFinished();
    emit signalNetworkAnswered();
}

void SupportSystemData::waitForNetwork()
{
    // Every fact gives up at the bound, so the loop ends by then.
    QEventLoop loop;
    connect(this, &SupportSystemData::signalNetworkAnswered, &loop, [this, &loop] {
        if (!networkWaitRemaining())
            loop.quit();
    });
    if (networkWaitRemaining())
        loop.exec();
}

void SupportSystemData::setFigures(const Figures& figures)
{
    QMutexLocker lock(&d->mutex);
    d->figures = figures;
}

void SupportSystemData::render()
{
    // Straight into the page, which gives the report its fields.
    QMutexLocker lock(&d->mutex);
    QString& text = *this->text();
    text.clear();
    appendErrors(text, *this);
    const Figures& f = d->figures;
    const bool asked = d->networkAsked;

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
    appendList(QStringLiteral("Local IP Addresses:"),
               asked && !d->addressesKnown ? QStringList{checkingText()} : f.localAddresses);

    appendField(text, QStringLiteral("External IP Address:"), QVariant());
    text += lineBreaks(1);
    appendIndented(text, QString(),
                   asked && !d->externalKnown ? checkingText() : d->externalAddress, 0);
    text += lineBreaks(2);

    const QStringList& sslErrors = d->sslErrors;
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
                asked && !d->probeKnown ? checkingText()
                : f.winInetOk           ? QStringLiteral("OK")
                                        : QStringLiteral("Error"));
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
            QMutexLocker lock(&d->mutex);
            d->externalAddress = address.toString();
        }
    }
    reply->deleteLater();
}

void SupportSystemData::setBenchmarkText(const QString& text)
{
    QMutexLocker lock(&d->mutex);
    d->benchmarkText = text;
}
