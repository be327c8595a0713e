#include "BasicTextProcessor.h"
#include "FileSystemListing.h"
#include "FuzzSupport.h"

// The size rewrite of the file-system listing: only a count after its own "Size" or "Space" key
// changes. Input: a volume's device, file system, mount point, size and free space on the first
// five lines, then any listing.

namespace {

bool hasSizeKey(const QString& text)
{
    return text.contains(QLatin1String("Size")) || text.contains(QLatin1String("Space"));
}

void checkAnyListing(const QString& listing)
{
    const QStringList before = listing.split(QLatin1Char('\n'));
    const QStringList after = withSizeTexts(listing).split(QLatin1Char('\n'));
    require(before.size() == after.size(), "the lines stay");
    for (qsizetype i = 0; i < before.size(); ++i) {
        if (!hasSizeKey(before.at(i)))
            require(after.at(i) == before.at(i), "a line without a size key stays");
    }
}

void checkVolume(const MountedVolume& volume)
{
    if (hasSizeKey(volume.device + volume.fileSystem + volume.mountPoint) || volume.size < 0
        || volume.freeSpace < 0)
        return;
    const QString listing = volumeListing({volume});
    QStringList expected = listing.split(QLatin1Char('\n'));
    for (QString& line : expected) {
        if (line.startsWith(QLatin1String("Size "))
            || line.startsWith(QLatin1String("FreeSpace "))) {
            const qsizetype value = line.indexOf(QLatin1String(" : ")) + 3;
            line = line.left(value) + BasicTextProcessor::formatBytes(line.mid(value).toLongLong());
        }
    }
    require(withSizeTexts(listing) == expected.join(QLatin1Char('\n')),
            "a volume's sizes, and nothing else, become size texts");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> fields = inputFields(data, size, 6);
    checkVolume({QString::fromUtf8(fields.at(0)), QString::fromUtf8(fields.at(1)),
                 QString::fromUtf8(fields.at(2)), fields.at(3).toLongLong(),
                 fields.at(4).toLongLong()});
    checkAnyListing(QString::fromUtf8(fields.at(5)));
    return 0;
}
