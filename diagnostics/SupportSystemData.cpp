#include "SupportSystemData.h"

#include "ConnectivityProbe.h"
#include "FileSystemListing.h"
#include "ReportFragments.h"
#include "SystemProfile.h"

#include <QDateTime>
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
    bool addressPending = false;
    int addressRequests = 0;
    bool lookingUp = false;
    // Asked by startAhead() for the next load, which then asks nothing again.
    bool networkStarted = false;
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

    // The probe and the host lookup may each hold their thread for 10 s. The loader's worker can
    // wait for them; the GUI thread must not, so there the page shows the latest answers and is
    // rendered again when the probe, on a thread of its own, and the lookup end.
    const bool started = std::exchange(d->networkStarted, false);
    if (QThread::currentThread() == thread()) {
        QMutexLocker lock(&d->mutex);
        figures.winInetOk = d->probeAnswered;
        figures.localAddresses = d->localAddresses;
        lock.unlock();
        if (!started) {
            startProbe();
            lookUpLocalAddresses();
            requestExternalAddress();
        }
    } else {
        requestExternalAddress();
        if (const QSharedPointer<SystemProfile> profile = SystemProfile::instance())
            figures.localAddresses = sorted(profile->localAddresses());
        figures.winInetOk = probeConnectivity(d->probeUrl);
        QMutexLocker lock(&d->mutex);
        d->probeAnswered = figures.winInetOk;
        d->localAddresses = figures.localAddresses;
    }

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
    // Replacing the manager drops the replies still running, and with them their answers.
    delete d->networkManager;
    d->networkManager = nullptr;
    {
        QMutexLocker lock(&d->mutex);
        d->sslErrors.clear();
    }
    d->addressPending = true;
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
    d->addressPending = false;
    externalIpFinished(reply);
    render();
    emit signalExternalIpFinished(reply);
}

void SupportSystemData::startAhead()
{
    // Each answers through the event loop; none holds this thread while it collects.
    startProbe();
    lookUpLocalAddresses();
    requestExternalAddress();
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
        }
        render();
        emit signalLocalAddressesFound();
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
    }
    render();
    emit signalProbeFinished();
}

bool SupportSystemData::isNetworkPending() const
{
    return d->probing || d->addressPending || d->lookingUp;
}

void SupportSystemData::waitForNetwork()
{
    QEventLoop loop;
    const auto quitWhenIn = [this, &loop] {
        if (!isNetworkPending())
            loop.quit();
    };
    connect(this, &SupportSystemData::signalExternalIpFinished, &loop, quitWhenIn);
    connect(this, &SupportSystemData::signalProbeFinished, &loop, quitWhenIn);
    connect(this, &SupportSystemData::signalLocalAddressesFound, &loop, quitWhenIn);
    // Each gives up on its own after this long; the bound holds even if one did not.
    QTimer::singleShot(connectivityProbeTimeout, &loop, &QEventLoop::quit);
    if (isNetworkPending())
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

    appendField(text, QStringLiteral("External IP Address:"), QVariant());
    text += lineBreaks(1);
    appendIndented(text, QString(), d->externalAddress, 0);
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
