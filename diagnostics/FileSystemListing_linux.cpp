#include "FileSystemListing.h"

#include <QStorageInfo>

QString fileSystemListing()
{
    QList<MountedVolume> volumes;
    const QList<QStorageInfo> mounted = QStorageInfo::mountedVolumes();
    for (const QStorageInfo& storage : mounted) {
        if (!storage.isValid() || !storage.isReady())
            continue;
        volumes.append({QString::fromLocal8Bit(storage.device()),
                        QString::fromLatin1(storage.fileSystemType()), storage.rootPath(),
                        storage.bytesTotal(), storage.bytesFree()});
    }
    return withSizeTexts(volumeListing(volumes));
}
