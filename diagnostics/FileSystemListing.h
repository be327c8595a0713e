#pragma once

#include <QList>
#include <QString>

// The machine's file systems and network shares as text, in the list form of PowerShell, with
// sizes as size texts. Slow on Windows, where PowerShell is asked, so callers keep the result.
QString fileSystemListing();

// Every "Size : <count>" and "...Space : <count>" byte count written as a size text, such as
// 238.5 GB. Nothing else changes, not even the same digits elsewhere.
QString withSizeTexts(const QString& listing);

// The output of the PowerShell commands that list disks, mapped drives and network shares, each
// command's standard output with size texts, followed by its raw error output.
QString powerShellListing();

struct MountedVolume
{
    QString device;
    QString fileSystem;
    QString mountPoint;
    qint64 size = 0;
    qint64 freeSpace = 0;
};

// One PowerShell-style list block per volume, local file systems first, then network shares.
QString volumeListing(const QList<MountedVolume>& volumes);
