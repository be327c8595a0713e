#include "SupportCorvantaData.h"

#include "BaseSettings.h"
#include "FileDirTools.h"
#include "RegistryTools.h"
#include "RemovalDialogs.h"
#include "ReportFragments.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>

namespace {

const qint64 maxIdentifierBytes = 4096;

// The identifier is one line; its line end is not part of it.
QString identifierText(const QString& path)
{
    if (!isSafeToRead(path))
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QString text = QString::fromUtf8(file.read(maxIdentifierBytes));
    while (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    return text;
}

// The folder's state as the page tells it: nothing when all is well.
QString folderNote(const QString& path)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return QStringLiteral("Does Not Exist");
    return info.isWritable() ? QString() : QStringLiteral("Not Writable");
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

struct SupportCorvantaData::Private
{
    QString appDataPath;
    QString tempPath;
    QString uuid;
    QString uuidFilePath;
    QMap<QString, QString> versions; // install location or program file to version
    QStringList machineAssociations;
    QStringList userAssociations;
    InstallationFinder findInstallations;
};

SupportCorvantaData::SupportCorvantaData(const InstallationFinder& findInstallations)
    : d(std::make_unique<Private>())
{
    d->findInstallations = findInstallations;
}

SupportCorvantaData::~SupportCorvantaData() = default;

QStringList SupportCorvantaData::errors() const
{
    QStringList errors;
    if (d->appDataPath.isEmpty() || !QFileInfo::exists(d->appDataPath))
        errors << QStringLiteral("Application Data folder not found.");
    if (d->tempPath.isEmpty() || !QFileInfo::exists(d->tempPath))
        errors << QStringLiteral("Temporary Files folder not found.");
    if (!QFileInfo::exists(d->uuidFilePath))
        errors << QStringLiteral("UUID file not found.");
    else if (d->uuid.isEmpty())
        errors << QStringLiteral("UUID file empty.");
    return errors;
}

QString SupportCorvantaData::name() const
{
    return productName();
}

int SupportCorvantaData::type() const
{
    return CorvantaDataKind;
}

void SupportCorvantaData::handleLink(const QString& link)
{
    const QString machinePrefix = QStringLiteral("removeMachineExtension");
    if (link == QLatin1String("deleteAppData")) {
        trashOrDeleteForUser(d->appDataPath);
    } else if (link == QLatin1String("deleteTempFiles")) {
        trashOrDeleteForUser(d->tempPath);
    } else if (link.startsWith(machinePrefix)
               || link.startsWith(QLatin1String("removeUserExtension"))) {
        const qsizetype dot = link.indexOf(QLatin1Char('.'));
        const QString extension = dot < 0 ? QString() : link.mid(dot);
        if (!removeProductAssociation(extension, name(), link.startsWith(machinePrefix)))
            qDebug().noquote() << "Failed to remove association:" << extension;
    } else {
        qDebug().noquote() << "Unsupported link clicked:" << link;
    }
}

void SupportCorvantaData::load()
{
    const QString product = name();
    d->appDataPath = productAppDataPath(product);
    d->tempPath = productTempPath(product);
    d->uuidFilePath = d->appDataPath + QStringLiteral("/userUUID.txt");
    d->uuid = identifierText(d->uuidFilePath);
    d->machineAssociations = sorted(productAssociations(product, true));
    d->userAssociations = sorted(productAssociations(product, false));

    d->versions.clear();
    const QString lowerProduct = product.toLower();
    for (const UninstallEntry& entry : uninstallEntries(product)) {
        const QString displayName = entry.DisplayName.toLower();
        if (!displayName.contains(lowerProduct)
            || (isFullEdition() && displayName.contains(QLatin1String("viewer"))))
            continue;
        d->versions.insert(entry.InstallLocation, entry.DisplayVersion);
    }
    for (const QString& program : d->findInstallations(product)) {
        if (!d->versions.contains(program))
            d->versions.insert(program, QString());
    }
    render();
}

bool SupportCorvantaData::isFullEdition() const
{
    return true;
}

bool SupportCorvantaData::hasAssociations() const
{
    return !d->machineAssociations.isEmpty() || !d->userAssociations.isEmpty();
}

QStringList SupportCorvantaData::machineAssociations() const
{
    return d->machineAssociations;
}

QStringList SupportCorvantaData::userAssociations() const
{
    return d->userAssociations;
}

void SupportCorvantaData::removeAllAssociations()
{
    const QString product = name();
    for (const QString& extension : std::as_const(d->machineAssociations))
        removeProductAssociation(extension, product, true);
    for (const QString& extension : std::as_const(d->userAssociations))
        removeProductAssociation(extension, product, false);
}

QString SupportCorvantaData::productName()
{
    return QStringLiteral("Corvanta");
}

QString SupportCorvantaData::productAppDataPath(const QString& productName)
{
    QString roaming;
    standardFolderPath(0, roaming);
    return QStringLiteral("%1/%2").arg(roaming, productName);
}

QString SupportCorvantaData::productTempPath(const QString& productName)
{
    return productAppDataPath(productName) + QStringLiteral("/temp");
}

QString SupportCorvantaData::settingsFileName(const QString& productName)
{
    return BaseSettings::fileName(productName);
}

QStringList SupportCorvantaData::furtherDataPaths(const QString& productName)
{
#ifdef Q_OS_WIN
    Q_UNUSED(productName)
    return {};
#else
    QString cache;
    standardFolderPath(1, cache);
    return {QStringLiteral("%1/%2").arg(cache, productName)};
#endif
}

QStringList SupportCorvantaData::programFilesInstallations(const QString& productName,
                                                           const QStringList& drives,
                                                           const PathTest& exists)
{
    QStringList found;
    for (const QString& drive : drives) {
        for (const QString& suffix : {QString(), QStringLiteral(" (x86)")}) {
            QString path = QStringLiteral("%1:\\Program Files%2\\%3\\%3.exe")
                               .arg(drive.left(1), suffix, productName);
            path = QDir::cleanPath(path.replace(QLatin1Char('\\'), QLatin1Char('/')))
                       .replace(QLatin1Char('/'), QLatin1Char('\\'));
            if (exists(path) && !found.contains(path))
                found.append(path);
        }
    }
    return found;
}

QStringList SupportCorvantaData::defaultInstallations(const QString& productName)
{
    const PathTest exists = [](const QString& path) {
        return QFileInfo::exists(path);
    };
#ifdef Q_OS_WIN
    QStringList drives;
    for (const QFileInfo& drive : QDir::drives())
        drives.append(drive.path());
    return programFilesInstallations(productName, drives, exists);
#else
    QStringList found;
    for (const QString& root : {QStringLiteral("/opt"), QStringLiteral("/usr/local")}) {
        const QString path = QStringLiteral("%1/%2/%2").arg(root, productName);
        if (exists(path))
            found.append(path);
    }
    return found;
#endif
}

void SupportCorvantaData::render()
{
    QString& html = *text();
    html.clear();
    appendErrors(html, *this);
    appendField(html, QStringLiteral("Application Data:"), fileLink(d->appDataPath),
                folderNote(d->appDataPath), removeLink(QStringLiteral("deleteAppData")));
    html += lineBreaks(1);
    appendField(html, QStringLiteral("Temporary Files:"), fileLink(d->tempPath),
                folderNote(d->tempPath), removeLink(QStringLiteral("deleteTempFiles")));
    html += lineBreaks(1);
    appendField(html, QStringLiteral("UUID:"), d->uuid.toHtmlEscaped());
    html += lineBreaks(2);

    if (!d->versions.isEmpty()) {
        appendField(html, QStringLiteral("Versions:"), QVariant());
        html += lineBreaks(1);
        for (auto it = d->versions.cbegin(); it != d->versions.cend(); ++it) {
            appendField(html, QStringLiteral("  "), fileLink(it.key()), it.value().toHtmlEscaped());
            html += lineBreaks(1);
        }
        html += lineBreaks(1);
    }

    const auto appendAssociations = [&html](const QString& label, const QStringList& extensions,
                                            const QString& action) {
        appendField(html, label, QVariant());
        html += lineBreaks(1);
        for (const QString& extension : extensions) {
            html += extension.leftJustified(10, QLatin1Char(' ')) + removeLink(action + extension)
                    + lineBreaks(1);
        }
        html += lineBreaks(1);
    };
    appendAssociations(QStringLiteral("File Associations (Machine):"), d->machineAssociations,
                       QStringLiteral("removeMachineExtension"));
    appendAssociations(QStringLiteral("File Associations (User):"), d->userAssociations,
                       QStringLiteral("removeUserExtension"));
}
