#include "SystemProfile.h"

#include "SystemProfileParsers.h"
#include "SystemProfilePlatform.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHostInfo>
#include <QNetworkInterface>
#include <QScreen>
#include <QSet>

#include <mutex>

namespace {

// The adapter query is slow; report refreshes within half an hour reuse its answer. Only the
// loading thread asks, so no lock.
QStringList cachedMacAddresses;
QDateTime cachedMacAddressesTime;

Q_GLOBAL_STATIC(QSharedPointer<SystemProfile>, sharedProfile)

// Hardware addresses from Qt's interface list, for when the system's adapter list says nothing.
QSet<QString> interfaceAddresses()
{
    QSet<QString> addresses;
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface& interface : interfaces) {
        if (!interface.isValid())
            continue;
        const QString address = interface.hardwareAddress();
        if (SystemProfileParsers::isSpecialMacAddress(address)
            || SystemProfile::isVirtualMacAddress(address))
            continue;
        if (interface.flags().testFlag(QNetworkInterface::IsLoopBack)) {
            if (!addresses.isEmpty())
                break;
            continue;
        }
        if (!address.isEmpty())
            addresses.insert(address);
    }
    return addresses;
}

} // namespace

struct SystemProfile::Private
{
    QString osFamily;
    QString osName;
    QString osVersion;
    QString cpuArchitecture;
    bool is64Bit = false;
    QString cpuSpeed;
    int cpuCount = 1;
    int cpuThreads = 1;
    double ramGB = -1.0;
    QList<Screen> screens;
    QString hostName;
    QString userName;
    QString homeFolderName;
    QString executableSuffix;
};

SystemProfile::SystemProfile()
    : d(std::make_unique<Private>())
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* screen : screens) {
        d->screens.append({screen->name(), screen->geometry().size(), screen->physicalSize(),
                           screen->devicePixelRatio()});
    }

    const SystemProfilePlatform::Facts facts = SystemProfilePlatform::facts();
    d->osFamily = facts.osFamily;
    d->executableSuffix = facts.executableSuffix;
    d->osVersion = facts.osVersion;
    d->osName = facts.osName;
    d->cpuCount = facts.cpuCount;
    d->cpuThreads = d->cpuCount;
    d->cpuSpeed = SystemProfileParsers::cpuSpeedText(facts.cpuMHz);
    d->hostName = facts.hostName;
    d->userName = facts.userName;
    d->homeFolderName = QFileInfo(QDir::homePath()).fileName();
    d->is64Bit = facts.is64Bit;
    d->cpuArchitecture = facts.cpuArchitecture;
    if (facts.memoryGiB >= 0)
        d->ramGB = SystemProfileParsers::wholeGB(facts.memoryGiB);
}

SystemProfile::~SystemProfile() = default;

QSharedPointer<SystemProfile> SystemProfile::instance()
{
    QSharedPointer<SystemProfile>* held = sharedProfile();
    if (!held)
        return {};
    // Built on the first caller's thread; later callers wait until it is complete.
    static std::once_flag created;
    std::call_once(created, [held] { held->reset(new SystemProfile); });
    return *held;
}

QString SystemProfile::osFamily() const
{
    return d->osFamily;
}

QString SystemProfile::osName() const
{
    return d->osName;
}

QString SystemProfile::osVersion() const
{
    return d->osVersion;
}

QString SystemProfile::cpuArchitecture() const
{
    return d->cpuArchitecture;
}

bool SystemProfile::is64Bit() const
{
    return d->is64Bit;
}

QString SystemProfile::cpuSpeed() const
{
    return d->cpuSpeed;
}

int SystemProfile::cpuCount() const
{
    return d->cpuCount;
}

int SystemProfile::cpuThreads() const
{
    return d->cpuThreads;
}

double SystemProfile::ramGB() const
{
    return d->ramGB;
}

QList<SystemProfile::Screen> SystemProfile::screens() const
{
    return d->screens;
}

QString SystemProfile::hostName() const
{
    return d->hostName;
}

QString SystemProfile::userName() const
{
    return d->userName;
}

QString SystemProfile::homeFolderName() const
{
    return d->homeFolderName;
}

QString SystemProfile::executableSuffix() const
{
    return d->executableSuffix;
}

QStringList SystemProfile::macAddresses() const
{
    const QDateTime now = QDateTime::currentDateTime();
    if (SystemProfileParsers::isCacheFresh(cachedMacAddresses, cachedMacAddressesTime, now))
        return cachedMacAddresses;

    QSet<QString> addresses;
    const QStringList physical = SystemProfilePlatform::physicalAdapterAddresses();
    for (const QString& address : physical)
        addresses.insert(address);
    if (addresses.isEmpty())
        addresses = interfaceAddresses();

    QStringList sorted(addresses.cbegin(), addresses.cend());
    sorted.sort();
    cachedMacAddresses = sorted;
    cachedMacAddressesTime = now;
    return sorted;
}

QStringList SystemProfile::addressTexts(const QHostInfo& host)
{
    return SystemProfilePlatform::localAddresses(host);
}

QString SystemProfile::versionName(int kind, const QString& version)
{
    const QStringList pieces = version.split(QLatin1Char('.'));
    const int major = pieces.at(0).toInt();
    const bool hasMinor = pieces.size() >= 2;
    const int minor = hasMinor ? pieces.at(1).toInt() : -1;

    if (kind == 1) {
        if (major >= 10 || !hasMinor)
            return QString::number(major);
        if (major == 6) {
            static const char* const names[] = {"Vista", "7", "8", "8.1"};
            if (minor >= 0 && minor <= 3)
                return QLatin1String(names[minor]);
        } else if (major == 5) {
            static const char* const names[] = {"2000", "XP", "2003"};
            if (minor >= 0 && minor <= 2)
                return QLatin1String(names[minor]);
        }
    } else if (kind == 2) {
        switch (major) {
        case 14:
            return QStringLiteral("Sonoma");
        case 13:
            return QStringLiteral("Ventura");
        case 12:
            return QStringLiteral("Monterey");
        case 11:
            return QStringLiteral("Big Sur");
        case 10:
            if (hasMinor && minor >= 0 && minor <= 15) {
                static const char* const names[] = {
                    "Cheetah",       "Puma",        "Jaguar",       "Panther",
                    "Tiger",         "Leopard",     "Snow Leopard", "Lion",
                    "Mountain Lion", "Mavericks",   "Yosemite",     "El Capitan",
                    "Sierra",        "High Sierra", "Mojave",       "Catalina"};
                return QLatin1String(names[minor]);
            }
            break;
        default:
            break;
        }
    }
    return QStringLiteral("?");
}

bool SystemProfile::isVirtualMacAddress(const QString& mac)
{
    return SystemProfileParsers::isVirtualMacAddress(mac);
}
