#include "SystemProfile.h"

#include "SystemProfileParsers.h"
#include "SystemProfilePlatform.h"

#include "win32/sysinfo.h"
#include "win32/wmi.h"

#include <QDebug>
#include <QHostInfo>
#include <QOperatingSystemVersion>

namespace {

// What "wmic <alias> get <names> /Format:list" printed, read from the same WMI class without
// starting wmic.exe.
QString wmicList(const wchar_t* className, const std::vector<std::wstring>& names)
{
    return QString::fromStdWString(win32::wmicList(
        names, win32::wmiInstances(className, names, [](const std::string& message) {
            qDebug().noquote() << QString::fromStdString(message);
        })));
}

} // namespace

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

    // The one-value answers are read as one line, as they always were.
    const QOperatingSystemVersion running = QOperatingSystemVersion::current();
    facts.osVersion = SystemProfileParsers::windowsVersion(
        wmicList(L"Win32_OperatingSystem", {L"Caption"}).simplified(), running.majorVersion(),
        running.minorVersion());
    facts.osName =
        facts.osFamily + QLatin1Char(' ') + SystemProfile::versionName(1, facts.osVersion);

    facts.cpuCount = qEnvironmentVariable("NUMBER_OF_PROCESSORS").toInt();
    facts.cpuMHz = QString::fromStdWString(win32::processorSpeedText()).toDouble();

    const win32::MachineNames names = win32::machineNames();
    facts.hostName = QString::fromStdWString(names.computerName);
    facts.userName = QString::fromStdWString(names.userName);

    facts.is64Bit = SystemProfileParsers::addressWidthIs64(
        wmicList(L"Win32_Processor", {L"AddressWidth"}).simplified());
    facts.cpuArchitecture = facts.is64Bit ? QStringLiteral("x86_64") : QStringLiteral("x86");

    facts.memoryGiB = SystemProfileParsers::memoryGiB(
        wmicList(L"Win32_PhysicalMemory", {L"Capacity"}).simplified(),
        win32::totalPhysicalMemory());
    return facts;
}

QStringList physicalAdapterAddresses()
{
    // With its line ends: each adapter is a record of three lines.
    return SystemProfileParsers::physicalAdapterAddresses(
        wmicList(L"Win32_NetworkAdapter", {L"AdapterType", L"Description", L"MACAddress"}));
}

} // namespace SystemProfilePlatform
