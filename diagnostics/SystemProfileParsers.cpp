#include "SystemProfileParsers.h"

#include <QDebug>
#include <QRegularExpression>

#include <cmath>
#include <limits>

namespace SystemProfileParsers {

QString captionVersion(const QString& output)
{
    static const QRegularExpression caption(QStringLiteral("Caption=.+Windows (\\d+).*"));
    return caption.match(output).captured(1);
}

QString windowsVersion(const QString& captionOutput, int major, int minor)
{
    const QString version = captionVersion(captionOutput);
    return version.isEmpty() ? QStringLiteral("%1.%2").arg(major).arg(minor) : version;
}

bool addressWidthIs64(const QString& output)
{
    return output.endsWith(QLatin1String("=64"));
}

double memoryGiB(const QString& memoryChipOutput, quint64 totalPhysicalBytes)
{
    if (memoryChipOutput.isEmpty())
        return double(totalPhysicalBytes) * bytesToGiB;
    double sum = 0.0;
    const QStringList parts = memoryChipOutput.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        const QStringList pieces = part.simplified().split(QLatin1Char('='));
        if (pieces.size() == 2)
            sum += double(pieces.at(1).toULongLong()) * bytesToGiB;
    }
    return sum;
}

double wholeGB(double gib)
{
    // Truncating after rounding to tenths is how the figure has always been shown.
    return double(std::lround(gib * 10) / 10);
}

QString cpuSpeedText(double mhz)
{
    const double ghz = mhz / 1000;
    if (!(ghz > 0))
        return {};
    return QStringLiteral("%1 Ghz").arg(QString::number(std::round(ghz * 100) / 100, 'g', -1));
}

QList<AdapterRecord> adapterRecords(const QString& output)
{
    static const QRegularExpression lineEnds(QStringLiteral("[\n\r]"));
    static const QString typeKey = QStringLiteral("AdapterType=");
    static const QString descriptionKey = QStringLiteral("Description=");
    static const QString addressKey = QStringLiteral("MACAddress=");

    const QStringList lines = output.split(lineEnds, Qt::SkipEmptyParts);
    QList<AdapterRecord> records;
    // A record takes three lines, so a listing collapsed to one line has none.
    for (int i = 0; i + 2 < lines.size(); ++i) {
        const QString& type = lines.at(i);
        const QString& description = lines.at(i + 1);
        const QString& address = lines.at(i + 2);
        if (type.startsWith(typeKey) && description.startsWith(descriptionKey)
            && address.startsWith(addressKey)) {
            records.append({type.mid(typeKey.size()).simplified(),
                            description.mid(descriptionKey.size()).simplified(),
                            address.mid(addressKey.size()).simplified()});
        }
    }
    return records;
}

QStringList physicalAdapterAddresses(const QString& output)
{
    QStringList addresses;
    const QList<AdapterRecord> records = adapterRecords(output);
    for (const AdapterRecord& record : records) {
        qDebug().noquote() << "adapterType=" << record.adapterType
                           << "description=" << record.description
                           << "macAddress=" << record.macAddress;
        if (record.adapterType.startsWith(QLatin1String("Ethernet"), Qt::CaseInsensitive)
            && !record.description.contains(QLatin1String("Virtual Adapter"))
            && !isSpecialMacAddress(record.macAddress) && !isVirtualMacAddress(record.macAddress)
            && !addresses.contains(record.macAddress)) {
            addresses.append(record.macAddress);
        }
    }
    return addresses;
}

bool isSpecialMacAddress(const QString& mac)
{
    return mac == QLatin1String("02-00-54-55-4E-01")
           || mac == QLatin1String("00-00-00-00-00-00-00-E0");
}

bool isVirtualMacAddress(const QString& mac)
{
    // Vendors of virtual machines, VPN clients and software adapters, in wmic's spelling.
    static const char* const prefixes[] = {
        "00-00-6C", "00-01-01", "00-05-4F", "00-05-78", "00-0B-18", "00-0B-F4", "00-0C-53",
        "00-0D-58", "00-0D-A7", "00-0D-C2", "00-0D-F2", "00-0E-17", "00-0E-22", "00-0E-2A",
        "00-0E-EF", "00-0F-09", "00-16-B4", "00-17-35", "00-18-25", "00-20-67", "00-22-1C",
        "00-22-F1", "00-23-4A", "00-23-8C", "00-23-F7", "00-24-19", "00-24-FB", "00-25-9D",
        "00-25-DF", "00-26-01", "00-26-9F", "00-50-47", "00-50-79", "00-A0-54", "00-A0-85",
        "0C-81-12", "10-00-00", "11-00-AA", "14-07-08", "14-6E-0A", "20-5B-2A", "24-BF-74",
        "28-EF-01", "30-1E-80", "58-6E-D6", "74-BE-08", "8C-84-01", "98-0E-E4", "AC-DE-48",
        "B8-E7-79", "C0-22-50", "C8-AA-CC", "E8-4E-06", "F0-5D-89"};
    for (const char* prefix : prefixes) {
        if (mac.startsWith(QLatin1String(prefix)))
            return true;
    }
    return false;
}

bool isCacheFresh(const QStringList& list, const QDateTime& madeAt, const QDateTime& now)
{
    return !list.isEmpty() && madeAt.isValid() && madeAt.date() == now.date()
           && madeAt.secsTo(now) < 1800;
}

QString osReleaseValue(const QString& text, const QString& key)
{
    QString value;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& rawLine : lines) {
        const QString line = rawLine.trimmed();
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0 || line.startsWith(QLatin1Char('#')) || line.left(equals) != key)
            continue;
        value = line.mid(equals + 1);
        if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'')
            && value.back() == value.front()) {
            value = value.mid(1, value.size() - 2);
            static const QRegularExpression escape(QStringLiteral("\\\\([\\\\\"'$`])"));
            value.replace(escape, QStringLiteral("\\1"));
        }
    }
    // A later assignment overrides an earlier one, as in a shell.
    return value;
}

QString kernelMajorMinor(const QString& release)
{
    static const QRegularExpression majorMinor(QStringLiteral("^(\\d+)\\.(\\d+)"));
    const QRegularExpressionMatch match = majorMinor.match(release.trimmed());
    return match.hasMatch() ? match.captured(1) + QLatin1Char('.') + match.captured(2) : QString();
}

double cpuInfoMHz(const QString& text)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (!line.startsWith(QLatin1String("cpu MHz")))
            continue;
        bool ok = false;
        const double mhz = line.section(QLatin1Char(':'), 1).trimmed().toDouble(&ok);
        // "inf" and "nan" read as numbers, but are no speed.
        return ok && std::isfinite(mhz) ? mhz : 0.0;
    }
    return 0.0;
}

double maxFrequencyMHz(const QString& text)
{
    return double(text.trimmed().toULongLong()) / 1000;
}

quint64 memTotalBytes(const QString& text)
{
    static const QRegularExpression memTotal(QStringLiteral("^MemTotal:\\s*(\\d+) kB$"),
                                             QRegularExpression::MultilineOption);
    const quint64 kilobytes = memTotal.match(text).captured(1).toULongLong();
    // A total whose bytes do not fit is as unreadable as a missing one.
    return kilobytes <= std::numeric_limits<quint64>::max() / 1024 ? kilobytes * 1024 : 0;
}

quint64 hexBytes(const QString& text)
{
    return text.trimmed().toULongLong(nullptr, 16);
}

QString macAddressText(const QString& text)
{
    static const QRegularExpression address(QStringLiteral("^[0-9a-fA-F]{2}(:[0-9a-fA-F]{2})+$"));
    const QString trimmed = text.trimmed();
    if (!address.match(trimmed).hasMatch())
        return {};
    return trimmed.toUpper().replace(QLatin1Char(':'), QLatin1Char('-'));
}

bool architectureIs64Bit(const QString& name)
{
    static const QStringList known{
        QStringLiteral("alpha"),    QStringLiteral("arm64"),       QStringLiteral("aarch64_be"),
        QStringLiteral("ia64"),     QStringLiteral("loongarch64"), QStringLiteral("mips64"),
        QStringLiteral("parisc64"), QStringLiteral("power64"),     QStringLiteral("power64le"),
        QStringLiteral("riscv64"),  QStringLiteral("s390x"),       QStringLiteral("sparcv9"),
        QStringLiteral("x86_64"),
    };
    return known.contains(name);
}

} // namespace SystemProfileParsers
