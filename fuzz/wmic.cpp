#include "FuzzSupport.h"
#include "SystemProfileParsers.h"

#include <QRegularExpression>

#include <cmath>

// What wmic answers: the Windows caption, the address width, the memory chips and the network
// adapters, and the sysfs addresses put into wmic's form. Input: any text.

using namespace SystemProfileParsers;

namespace SystemProfileParsers {

bool operator==(const AdapterRecord& a, const AdapterRecord& b)
{
    return a.adapterType == b.adapterType && a.description == b.description
           && a.macAddress == b.macAddress;
}

} // namespace SystemProfileParsers

namespace {

QString listing(const QList<AdapterRecord>& records)
{
    QString text;
    for (const AdapterRecord& record : records) {
        text += QStringLiteral("\r\n\r\nAdapterType=%1\r\nDescription=%2\r\nMACAddress=%3")
                    .arg(record.adapterType, record.description, record.macAddress);
    }
    return text;
}

void checkAdapters(const QString& text)
{
    const QList<AdapterRecord> records = adapterRecords(text);
    QStringList recordAddresses;
    for (const AdapterRecord& record : records) {
        require(record.adapterType == record.adapterType.simplified()
                    && record.description == record.description.simplified()
                    && record.macAddress == record.macAddress.simplified(),
                "record values are simplified");
        recordAddresses.append(record.macAddress);
    }
    require(adapterRecords(listing(records)) == records, "records written out are read back");

    const QStringList addresses = physicalAdapterAddresses(text);
    for (const QString& address : addresses) {
        require(recordAddresses.contains(address), "a physical address is a record's");
        require(addresses.count(address) == 1, "physical addresses are listed once");
        require(!isSpecialMacAddress(address) && !isVirtualMacAddress(address),
                "no physical address is a placeholder or a virtual adapter's");
    }
}

void checkMemory(const QString& text)
{
    const double gib = memoryGiB(text, 0);
    require(std::isfinite(gib) && gib >= 0, "installed memory is a size");
    require(std::abs(wholeGB(gib) - gib) <= 1 && wholeGB(gib) == std::trunc(wholeGB(gib)),
            "whole gigabytes are the size without its fraction");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));

    static const QRegularExpression digits(QStringLiteral("^\\d*$"));
    require(digits.match(captionVersion(text)).hasMatch(), "a Windows version is a number");
    require(!windowsVersion(text, 6, 1).isEmpty(), "there is always a Windows version");
    const QString simplified = text.simplified();
    if (digits.match(simplified).hasMatch() && !simplified.isEmpty()) {
        const QString caption = QStringLiteral("Caption=Microsoft Windows %1 Pro").arg(simplified);
        require(captionVersion(caption) == simplified, "the caption's release number is read");
    }
    addressWidthIs64(text);

    checkAdapters(text);
    checkMemory(text);

    static const QRegularExpression wmicForm(QStringLiteral("^[0-9A-F]{2}(-[0-9A-F]{2})+$"));
    const QString address = macAddressText(text);
    require(address.isEmpty() || wmicForm.match(address).hasMatch(),
            "an address is in wmic's form");
    if (size >= 2) {
        const QByteArray hex =
            QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)).toHex(':');
        require(
            macAddressText(QString::fromLatin1(hex))
                == QString::fromLatin1(hex.toUpper()).replace(QLatin1Char(':'), QLatin1Char('-')),
            "a sysfs address comes back in wmic's form");
    }
    return 0;
}
