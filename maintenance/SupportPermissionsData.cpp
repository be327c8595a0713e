#include "SupportPermissionsData.h"

#include "FileDirTools.h"
#include "FileDirTools_p.h"
#include "RemovalDialogs.h"
#include "ReportFragments.h"
#include "SupportCorvantaData.h"

#include <QDebug>
#include <QFileInfo>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace {

const QString deleteAction = QStringLiteral("deletePath");

} // namespace

struct SupportPermissionsData::Private
{
    QMap<QString, bool> paths; // path to writable, in path order
    qsizetype notWritable = 0;

    QSet<QString> danglingLinks;

    void record(const QString& path)
    {
        const WriteAccess access = writeAccess(path);
        // A link to nothing has no state of its own to tell, and can still be removed.
        if (access == WriteAccess::LeadsNowhere)
            danglingLinks.insert(path);
        paths.insert(path, access != WriteAccess::NotWritable);
    }

    // Everything below the folder. Links are listed but not followed, so a link out of the folder
    // or a loop of links adds one entry and nothing more; unreadable folders are passed by. Names
    // are taken as the system gives them, so a name that is not UTF-8 is listed like any other.
    void addTree(const QString& folder)
    {
        for (const FileDirPlatform::DirectoryEntry& entry :
             FileDirPlatform::folderEntries(folder)) {
            const QString path = folder + QLatin1Char('/') + entry.name;
            record(path);
            if (entry.isFolder)
                addTree(path);
        }
    }

    void addPath(const QString& path)
    {
        if (!QFileInfo::exists(path))
            return;
        record(path);
        addTree(path);
    }

    // The folder's entries whose names hold the product's, in either case.
    void addMatching(const QString& folder, const QString& product)
    {
        for (const FileDirPlatform::DirectoryEntry& entry :
             FileDirPlatform::folderEntries(folder)) {
            if (entry.name.contains(product, Qt::CaseInsensitive))
                record(folder + QLatin1Char('/') + entry.name);
        }
    }
};

SupportPermissionsData::SupportPermissionsData()
    : d(std::make_unique<Private>())
{}

SupportPermissionsData::~SupportPermissionsData() = default;

QStringList SupportPermissionsData::errors() const
{
    if (d->notWritable == 0)
        return {};
    return {QStringLiteral("%1 paths are not writable.").arg(d->notWritable)};
}

QString SupportPermissionsData::name() const
{
    return QStringLiteral("Permissions");
}

int SupportPermissionsData::type() const
{
    return PermissionsDataKind;
}

void SupportPermissionsData::handleLink(const QString& link)
{
    if (link.startsWith(deleteAction))
        trashOrDeleteForUser(link.mid(deleteAction.size()));
    else
        qDebug().noquote() << "Unsupported link clicked:" << link;
}

void SupportPermissionsData::load()
{
    d->paths.clear();
    d->danglingLinks.clear();
    const QString product = SupportCorvantaData::productName();
    const QString preferencesFolder =
        QFileInfo(SupportCorvantaData::settingsFileName(product)).absolutePath();
    d->addPath(SupportCorvantaData::productAppDataPath(product));
    d->addPath(SupportCorvantaData::productTempPath(product));
    d->addMatching(preferencesFolder, product);
    d->notWritable = std::count(d->paths.cbegin(), d->paths.cend(), false);

    // Reserved at once: the text of a large tree runs to tens of megabytes.
    qsizetype size = 0;
    for (auto it = d->paths.cbegin(); it != d->paths.cend(); ++it)
        size += 2 * it.key().size() + 120;
    QString& html = *text();
    html.clear();
    html.reserve(size);
    appendErrors(html, *this);
    for (auto it = d->paths.cbegin(); it != d->paths.cend(); ++it) {
        appendPathState(html, deleteAction + it.key(), it.key(),
                        !it.value()                           ? QLatin1String("Not Writable")
                        : d->danglingLinks.contains(it.key()) ? QLatin1String("Link")
                                                              : QLatin1String("OK"));
        html += lineBreaks(1);
    }
}
