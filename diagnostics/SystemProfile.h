#pragma once

#include "GlobalResource.h"

#include <QList>
#include <QSharedPointer>
#include <QSize>
#include <QSizeF>
#include <QStringList>

#include <memory>

class QHostInfo;

// What machine this is: operating system, processor, memory, names, screens and network
// addresses. Filled once, on the thread that first asks; read-only afterwards.
class SystemProfile : public GlobalResource
{
    Q_OBJECT

public:
    struct Screen
    {
        QString name;
        QSize size;          // device-independent pixels
        QSizeF physicalSize; // millimetres
        double devicePixelRatio = 1.0;
    };

    // Created on first use; null once the process has let it go.
    static QSharedPointer<SystemProfile> instance();
    ~SystemProfile() override;

    QString osFamily() const;
    QString osName() const;
    QString osVersion() const;
    QString cpuArchitecture() const;
    bool is64Bit() const;
    QString cpuSpeed() const;
    int cpuCount() const;
    int cpuThreads() const;
    double ramGB() const; // -1 when unknown
    QList<Screen> screens() const;
    QString hostName() const;
    QString userName() const;
    QString homeFolderName() const;
    QString executableSuffix() const;

    // Physical adapters only, sorted; cached for half an hour within the same day.
    QStringList macAddresses() const;
    // The local addresses as text, given the lookup of the machine's own name (which Linux does
    // not use).
    static QStringList addressTexts(const QHostInfo& host);

    // Kind 1 is Windows, kind 2 macOS; "?" for what the table does not know.
    static QString versionName(int kind, const QString& version);
    static bool isVirtualMacAddress(const QString& mac);

private:
    SystemProfile();

    struct Private;
    std::unique_ptr<Private> d;
};
