#pragma once

#include "SupportData.h"

#include <QList>
#include <QNetworkReply>
#include <QObject>
#include <QSslError>
#include <QUrl>

#include <memory>

// The machine itself: operating system, processor, memory, the user's folders, locale, network
// addresses, whether the product's web site answers, and the file systems and network shares.
class SupportSystemData : public QObject, public SupportData
{
    Q_OBJECT

public:
    // What load() gathers from the machine; render() lays it out.
    struct Figures
    {
        QString operatingSystem;
        QString hostName;
        QString userName;
        QString documentsPath;
        QString desktopPath;
        double ramGB = -1.0;
        int cpuCount = 0;
        QString cpuSpeed;
        QString locale;
        QString systemTime;
        QStringList macAddresses;
        QStringList localAddresses;
        bool winInetOk = false;
        QString fileSystems;
    };

    // The address service is asked at its root for a JSON object; the probe URL is the product
    // web site's address page.
    explicit SupportSystemData(
        const QUrl& addressServiceUrl = QUrl(QStringLiteral("https://api.ipify.org/")),
        const QUrl& probeUrl = QUrl(QStringLiteral("https://www.kelvanmoor.com/myip.php")),
        QObject* parent = nullptr);
    ~SupportSystemData() override;

    QStringList errors() const override;
    QString name() const override;
    int type() const override;
    void load() override;

    void setFigures(const Figures& figures);
    void render();

    // Takes the external address from the service's answer; anything unreadable leaves the
    // address as it was.
    void externalIpFinished(QNetworkReply* reply);
    void setBenchmarkText(const QString& text);

    // For callers without a page, such as the headless report. startAhead() asks the network's
    // questions and builds the machine profile ahead of load(), which then asks nothing again,
    // so their waits run beside the other collectors; waitForNetwork() runs an event loop until
    // the address reply, the connectivity probe and the host lookup are in, at most 10 s.
    void startAhead();
    void waitForNetwork();

    // How long, in milliseconds, the page may still show "Checking..." for a first answer of the
    // network: 0 once every one has come or given up.
    int networkWaitRemaining() const;

    static QString checkingText();

signals:
    // These come once the text has been rendered again with the answer; the reply is null when
    // the service's host could not be reached.
    void signalExternalIpFinished(QNetworkReply* reply);
    void signalProbeFinished();
    void signalLocalAddressesFound();
    void signalSslErrors(QList<QSslError> errors);
    // After any network answer has been rendered, or the bound passed for those still missing.
    void signalNetworkAnswered();

private:
    void requestExternalAddress();
    void addressAnswered(QNetworkReply* reply);
    void startProbe();
    void probeFinished(bool answered);
    void lookUpLocalAddresses();
    // Marks the network's facts as being checked and asks their questions on the collector's
    // thread, whatever thread calls it.
    void startNetwork();
    void askNetwork();
    void giveUpWaiting();

    struct Private;
    std::unique_ptr<Private> d;
};
