#include "SystemProfile.h"

#include "SystemProfileParsers.h"
#include "SystemProfilePlatform.h"

#include "win32/sysinfo.h"

#include <QHostInfo>
#include <QOperatingSystemVersion>

namespace SystemProfilePlatform {

QStringList localAddresses(const QHostInfo& ownNameLookup)
{
    QStringList texts;
    const QList<QHostAddress> addresses = ownNameLookup.addresses();
    for (const QHostAddress& address : addresses)
        texts.append(address.toString());
    return texts;
}

Facts facts()
{
    Facts facts;
    facts.osFamily = QStringLiteral("Windows");
    facts.executableSuffix = QStringLiteral("exe");

    const QOperatingSystemVersion running = QOperatingSystemVersion::current();
    facts.osVersion = SystemProfileParsers::windowsVersion(
        SystemProfile::runWmic(QStringLiteral("os get caption /Format:list")),
        running.majorVersion(), running.minorVersion());
    facts.osName =
        facts.osFamily + QLatin1Char(' ') + SystemProfile::versionName(1, facts.osVersion);

    facts.cpuCount = qEnvironmentVariable("NUMBER_OF_PROCESSORS").toInt();
    facts.cpuMHz = QString::fromStdWString(win32::processorSpeedText()).toDouble();

    const win32::MachineNames names = win32::machineNames();
    facts.hostName = QString::fromStdWString(names.computerName);
    facts.userName = QString::fromStdWString(names.userName);

    facts.is64Bit = SystemProfileParsers::addressWidthIs64(
        SystemProfile::runWmic(QStringLiteral("cpu get AddressWidth /Format:list")));
    facts.cpuArchitecture = facts.is64Bit ? QStringLiteral("x86_64") : QStringLiteral("x86");

    facts.memoryGiB = SystemProfileParsers::memoryGiB(
        SystemProfile::runWmic(QStringLiteral("memorychip get Capacity /Format:list")),
        win32::totalPhysicalMemory());
    return facts;
}

QStringList physicalAdapterAddresses()
{
    return SystemProfileParsers::physicalAdapterAddresses(SystemProfile::runWmic(
        QStringLiteral("nic get adaptertype,description,macaddress /Format:list")));
}

} // namespace SystemProfilePlatform
