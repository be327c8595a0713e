#pragma once

#include <QList>
#include <QString>

// The machine's file systems and network shares as text, in the list form of PowerShell, with
// sizes as size texts. Callers keep the result: a network drive can take seconds to answer.
QString fileSystemListing();

// Every "Size : <count>" and "...Space : <count>" byte count written as a size text, such as
// 238.5 GB. Nothing else changes, not even the same digits elsewhere.
QString withSizeTexts(const QString& listing);

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
