#include "SystemProfile.h"

#include "SystemProfileParsers.h"
#include "SystemProfilePlatform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkInterface>
#include <QSet>
#include <QSysInfo>

#include <fcntl.h>
#include <limits.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace {

QString fileText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

// A large machine has thousands of memory blocks; plain reads of their flags take half the time
// of QFile, which looks at each file first.
bool onlineFlag(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    char flag[8] = {};
    const ssize_t size = ::read(fd, flag, sizeof flag);
    ::close(fd);
    return size > 0 && QByteArray(flag, int(size)).trimmed() == "1";
}

// "memory" and a number; the folder holds other entries too.
bool isMemoryBlock(const QString& name)
{
    const QLatin1String prefix("memory");
    return name.size() > prefix.size() && name.startsWith(prefix)
           && std::all_of(name.cbegin() + prefix.size(), name.cend(),
                          [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
}

QString osReleaseText()
{
    // The freedesktop lookup order: /etc first, the vendor's copy when /etc has none.
    const QString text = fileText(QStringLiteral("/etc/os-release"));
    return text.isEmpty() ? fileText(QStringLiteral("/usr/lib/os-release")) : text;
}

double processorMHz()
{
    const double maximum = SystemProfileParsers::maxFrequencyMHz(
        fileText(QStringLiteral("/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq")));
    return maximum > 0
               ? maximum
               : SystemProfileParsers::cpuInfoMHz(fileText(QStringLiteral("/proc/cpuinfo")));
}

double memoryGiB()
{
    quint64 bytes =
        SystemProfilePlatform::onlineMemoryBytes(QStringLiteral("/sys/devices/system/memory"));
    if (bytes == 0)
        bytes = SystemProfileParsers::memTotalBytes(fileText(QStringLiteral("/proc/meminfo")));
    return bytes == 0 ? -1.0 : double(bytes) * SystemProfileParsers::bytesToGiB;
}

QString hostName()
{
    char name[HOST_NAME_MAX + 1] = {};
    if (gethostname(name, sizeof name - 1) != 0)
        return {};
    return QString::fromLocal8Bit(name);
}

QString userName()
{
    const long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? size_t(suggested) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
        return {};
    return QString::fromLocal8Bit(found->pw_name);
}

} // namespace

namespace SystemProfilePlatform {

QStringList localAddresses(const QHostInfo&)
{
    QStringList addresses;
    QStringList loopback;
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface& interface : interfaces) {
        if (!interface.flags().testFlag(QNetworkInterface::IsUp))
            continue;
        QStringList& list =
            interface.flags().testFlag(QNetworkInterface::IsLoopBack) ? loopback : addresses;
        for (const QNetworkAddressEntry& entry : interface.addressEntries())
            list.append(entry.ip().toString());
    }
    return addresses.isEmpty() ? loopback : addresses;
}

Facts facts()
{
    Facts facts;
    facts.osFamily = QStringLiteral("Linux");
    // executableSuffix stays empty: Linux programs carry no file-name suffix.

    const QString osRelease = osReleaseText();
    facts.osVersion = SystemProfileParsers::osReleaseValue(osRelease, QStringLiteral("VERSION_ID"));
    if (facts.osVersion.isEmpty())
        facts.osVersion = SystemProfileParsers::kernelMajorMinor(QSysInfo::kernelVersion());
    const QString prettyName =
        SystemProfileParsers::osReleaseValue(osRelease, QStringLiteral("PRETTY_NAME"));
    facts.osName =
        prettyName.isEmpty() ? facts.osFamily : facts.osFamily + QLatin1Char(' ') + prettyName;

    facts.cpuCount = int(qMax(0L, sysconf(_SC_NPROCESSORS_ONLN)));
    facts.cpuMHz = processorMHz();
    facts.hostName = hostName();
    facts.userName = userName();
    facts.cpuArchitecture = QSysInfo::currentCpuArchitecture();
    facts.is64Bit = SystemProfileParsers::architectureIs64Bit(facts.cpuArchitecture);
    facts.memoryGiB = memoryGiB();
    return facts;
}

QStringList physicalAdapterAddresses()
{
    return sysfsAdapterAddresses(QStringLiteral("/sys/class/net"));
}

quint64 onlineMemoryBytes(const QString& memoryRoot)
{
    const quint64 blockSize =
        SystemProfileParsers::hexBytes(fileText(memoryRoot + QStringLiteral("/block_size_bytes")));
    quint64 onlineBlocks = 0;
    const QStringList blocks = QDir(memoryRoot).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& block : blocks) {
        if (isMemoryBlock(block)
            && onlineFlag(memoryRoot + QLatin1Char('/') + block + QStringLiteral("/online")))
            ++onlineBlocks;
    }
    return onlineBlocks * blockSize;
}

QStringList sysfsAdapterAddresses(const QString& netRoot)
{
    QSet<QString> addresses;
    const QStringList entries =
        QDir(netRoot).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& entry : entries) {
        const QString folder = netRoot + QLatin1Char('/') + entry;
        // Software interfaces (loopback, bridges, tunnels, veth) have no device behind them.
        if (!QFileInfo::exists(folder + QStringLiteral("/device")))
            continue;
        const QString address =
            SystemProfileParsers::macAddressText(fileText(folder + QStringLiteral("/address")));
        if (!address.isEmpty() && !SystemProfileParsers::isSpecialMacAddress(address)
            && !SystemProfile::isVirtualMacAddress(address))
            addresses.insert(address);
    }
    return QStringList(addresses.cbegin(), addresses.cend());
}

} // namespace SystemProfilePlatform
