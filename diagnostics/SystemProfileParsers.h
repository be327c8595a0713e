#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

// Pure readers of what the machine says about itself: wmic's list answers (on Windows read from
// WMI in that form; the one-value answers collapsed to one line) and the Linux files under /etc,
// /proc and /sys.
namespace SystemProfileParsers {

// One adapter of the wmic network-card listing.
struct AdapterRecord
{
    QString adapterType;
    QString description;
    QString macAddress;
};

// Bytes to binary gigabytes (2^30).
constexpr double bytesToGiB = 9.313225746154785e-10;

// The Windows release number of an "os get caption" answer; empty without "Windows <digits>".
QString captionVersion(const QString& output);
// The release number, or "major.minor" of the running system when the caption has none.
QString windowsVersion(const QString& captionOutput, int major, int minor);
// Whether an "AddressWidth" answer says 64 bits.
bool addressWidthIs64(const QString& output);
// Installed memory in GiB: the sum of the "Capacity=" items, or the total physical bytes when
// wmic said nothing.
double memoryGiB(const QString& memoryChipOutput, quint64 totalPhysicalBytes);
// Whole gigabytes, rounded to one decimal first and then truncated: 7.95 gives 8, 7.94 gives 7.
double wholeGB(double gib);
// "%1 Ghz" of a processor speed in MHz; empty when the speed is not known (0 or less).
QString cpuSpeedText(double mhz);

// The AdapterType/Description/MACAddress triples of a listing that still has its line ends.
QList<AdapterRecord> adapterRecords(const QString& output);
// The addresses of the physical Ethernet adapters among the records, logging every record.
QStringList physicalAdapterAddresses(const QString& output);
// Addresses of tunnels and placeholders that wmic reports as if they were adapters.
bool isSpecialMacAddress(const QString& mac);
// Addresses whose vendor prefix is that of a virtual machine, a VPN client or a software adapter.
bool isVirtualMacAddress(const QString& mac);
// Whether a cached list made at madeAt still answers at now.
bool isCacheFresh(const QStringList& list, const QDateTime& madeAt, const QDateTime& now);

// A value of an os-release file, unquoted; empty when absent.
QString osReleaseValue(const QString& text, const QString& key);
// "6.1" of a kernel release such as "6.1.0-18-amd64"; empty when it has no major.minor.
QString kernelMajorMinor(const QString& release);
// The first "cpu MHz" of /proc/cpuinfo; 0 when absent or unreadable.
double cpuInfoMHz(const QString& text);
// cpufreq's cpuinfo_max_freq (kHz) in MHz; 0 when unreadable.
double maxFrequencyMHz(const QString& text);
// MemTotal of /proc/meminfo in bytes; 0 when absent or unreadable.
quint64 memTotalBytes(const QString& text);
// The hexadecimal block_size_bytes of the memory sysfs folder; 0 when unreadable.
quint64 hexBytes(const QString& text);
// A sysfs address "aa:bb:..." in wmic's form "AA-BB-..."; empty when it is not an address.
QString macAddressText(const QString& text);
// Whether a processor architecture, named as QSysInfo names it, is a 64-bit one. Known names
// decide, not a "64" in the name: s390x and sparcv9 are 64-bit without one.
bool architectureIs64Bit(const QString& name);

} // namespace SystemProfileParsers
