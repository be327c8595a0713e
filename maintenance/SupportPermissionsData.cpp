#include "SupportPermissionsData.h"

#include "RemovalDialogs.h"
#include "ReportFragments.h"
#include "SupportCorvantaData.h"

#include <QDebug>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace {

const QDir::Filters everyEntry =
    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
const QString deleteAction = QStringLiteral("deletePath");

} // namespace

struct SupportPermissionsData::Private
{
    QMap<QString, bool> paths; // path to writable, in path order
    qsizetype notWritable = 0;

    QSet<QString> danglingLinks;

    void record(const QFileInfo& info)
    {
        // A link to nothing has no state of its own to tell, and can still be removed.
        if (info.isSymLink() && !info.exists()) {
            danglingLinks.insert(info.filePath());
            paths.insert(info.filePath(), true);
            return;
        }
        paths.insert(info.filePath(), info.isWritable());
    }

    // The folder and its whole tree. Links are listed but not followed, so a link out of the
    // folder or a loop of links adds one entry and nothing more; unreadable folders are passed by.
    void addPath(const QString& path)
    {
        const QFileInfo folder(path);
        if (!folder.exists())
            return;
        record(folder);
        QDirIterator it(path, everyEntry, QDirIterator::Subdirectories);
        while (it.hasNext())
            record(it.nextFileInfo());
    }

    void addMatching(const QString& folder, const QString& pattern)
    {
        const QFileInfoList entries = QDir(folder).entryInfoList({pattern}, everyEntry);
        for (const QFileInfo& entry : entries)
            record(entry);
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
    // Both spellings, so the preferences are found whichever way the file system compares names.
    d->addMatching(preferencesFolder, QLatin1Char('*') + product.toLower() + QLatin1Char('*'));
    d->addMatching(preferencesFolder, QLatin1Char('*') + product + QLatin1Char('*'));
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
