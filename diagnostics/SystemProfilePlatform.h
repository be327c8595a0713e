#pragma once

#include <QString>
#include <QStringList>

class QHostInfo;

// What the operating system itself says about the machine; SystemProfile_win.cpp and
// SystemProfile_linux.cpp each answer it their own way.
namespace SystemProfilePlatform {

struct Facts
{
    QString osFamily;
    QString osName;
    QString osVersion;
    QString executableSuffix;
    QString cpuArchitecture;
    bool is64Bit = false;
    double cpuMHz = 0.0; // 0 when unknown
    int cpuCount = 0;
    double memoryGiB = -1.0; // before rounding; negative when unknown
    QString hostName;
    QString userName;
};

// Asked once, in this order: operating system, processor count, speed, names, width, memory.
Facts facts();

// The machine's local IP addresses as text. Windows answers with the addresses that the lookup of
// its own name found, in the resolver's order. Linux answers with the addresses of the interfaces
// that are up, loopback only when it is all there is: its host name resolves through /etc/hosts to
// 127.0.1.1, which tells support nothing.
QStringList localAddresses(const QHostInfo& ownNameLookup);

// The physical adapters' addresses from the system's own adapter list; empty when it names none.
QStringList physicalAdapterAddresses();

// Linux only: the sysfs readers behind the two above, given their folder so that tests can point
// them at a tree of their own. Online blocks times the block size; 0 when unreadable.
quint64 onlineMemoryBytes(const QString& memoryRoot);
// Entries with a device link (hardware, not software interfaces), filtered as wmic's list is.
QStringList sysfsAdapterAddresses(const QString& netRoot);

} // namespace SystemProfilePlatform
