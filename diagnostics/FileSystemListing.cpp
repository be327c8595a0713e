#include "FileSystemListing.h"

#include "BasicTextProcessor.h"

#include <QRegularExpression>

#include <algorithm>

QString withSizeTexts(const QString& listing)
{
    // Only the count right after its own key, on its own line, changes: the same digits elsewhere
    // ("/dev/loop0" beside a free space of 0, a longer number) stay as they are.
    static const QRegularExpression sizePattern(QStringLiteral("(Space|Size)[ \\t]*: (\\d+)"));
    QString result;
    qsizetype copied = 0;
    QRegularExpressionMatchIterator matches = sizePattern.globalMatch(listing);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        result += QStringView(listing).mid(copied, match.capturedStart(2) - copied);
        result += BasicTextProcessor::formatBytes(match.captured(2).toLongLong(), false);
        copied = match.capturedEnd(2);
    }
    result += QStringView(listing).mid(copied);
    return result;
}

QString volumeListing(const QList<MountedVolume>& volumes)
{
    static const QStringList networkTypes{QStringLiteral("cifs"), QStringLiteral("smb3"),
                                          QStringLiteral("nfs"), QStringLiteral("nfs4"),
                                          QStringLiteral("fuse.sshfs")};
    QList<MountedVolume> ordered = volumes;
    std::stable_partition(ordered.begin(), ordered.end(), [](const MountedVolume& volume) {
        return !networkTypes.contains(volume.fileSystem);
    });
    if (ordered.isEmpty())
        return {};
    // Blank lines before, between and after the blocks, as PowerShell prints them.
    QString listing = QStringLiteral("\n");
    for (const MountedVolume& volume : ordered) {
        const QList<QPair<QString, QString>> fields{
            {QStringLiteral("DeviceID"), volume.device},
            {QStringLiteral("FileSystem"), volume.fileSystem},
            {QStringLiteral("MountPoint"), volume.mountPoint},
            {QStringLiteral("Size"), QString::number(volume.size)},
            {QStringLiteral("FreeSpace"), QString::number(volume.freeSpace)},
        };
        listing += QLatin1Char('\n');
        for (const auto& [key, value] : fields)
            listing += key.leftJustified(10) + QStringLiteral(" : ") + value + QLatin1Char('\n');
    }
    return listing + QLatin1Char('\n');
}
