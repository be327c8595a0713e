#include "RegistryTools.h"

#include "FileDirTools.h"

#include <QDeadlineTimer>
#include <QDebug>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QProcess>
#include <QSaveFile>
#include <QSet>
#include <QStandardPaths>
#include <QStringDecoder>

#include <unistd.h>

namespace {

const QString desktopEntryGroup = QStringLiteral("Desktop Entry");
const QByteArray defaultApplicationsGroup = QByteArrayLiteral("Default Applications");
const QByteArray addedAssociationsGroup = QByteArrayLiteral("Added Associations");
const QString environmentFileName = QStringLiteral("60-corvanta-support.conf");
// Larger files are not settings files; they are refused rather than read.
constexpr qint64 maximumFileSize = 4 * 1024 * 1024;

bool readSmallFile(const QString& path, QByteArray* text)
{
    if (!isSafeToRead(path))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    *text = file.read(maximumFileSize + 1);
    return text->size() <= maximumFileSize;
}

bool writeFile(const QString& path, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    // Unbuffered: Qt 6.4's QSaveFile commits even when the write that close() flushes fails, which
    // on a full disk would leave an empty mimeapps.list behind.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(text) != text.size()
        || !file.commit()) {
        qDebug() << "Failed to write" << path << file.errorString();
        return false;
    }
    return true;
}

bool isUtf8(const QByteArray& bytes)
{
    // Stateless, so that a file cut inside a sequence is not UTF-8 either.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return !decoder.hasError();
}

// The user's own file first; the machine's in the order the desktop consults them.
QStringList mimeappsFiles(bool machine)
{
    const QString fileName = QStringLiteral("/mimeapps.list");
    if (!machine)
        return {QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + fileName};
    QStringList files;
    for (const QString& folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation).mid(1))
        files.append(folder + fileName);
    for (const QString& folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation).mid(1))
        files.append(folder + QStringLiteral("/applications") + fileName);
    return files;
}

QString environmentFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/environment.d");
}

QString environmentFile()
{
    return environmentFolder() + QLatin1Char('/') + environmentFileName;
}

// Tells the running user manager too, so that programs it starts see the change before the next
// login. Best effort: without a user manager the file alone is enough.
void tellUserManager(const QStringList& arguments)
{
    QDeadlineTimer deadline(2000);
    QProcess process;
    process.start(QStringLiteral("systemctl"), QStringList{QStringLiteral("--user")} + arguments);
    if (process.waitForStarted(int(deadline.remainingTime()))
        && process.waitForFinished(int(deadline.remainingTime())))
        return;
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(100);
    }
    qDebug() << "systemctl --user did not finish:" << arguments;
}

// The installed version of the Debian package that owns each file; missing for unowned files.
QMap<QString, QString> packageVersions(const QStringList& files)
{
    QMap<QString, QString> versions;
    if (files.isEmpty())
        return versions;
    QProcess owners;
    owners.start(QStringLiteral("dpkg-query"), QStringList{QStringLiteral("-S")} + files);
    if (!owners.waitForStarted(30000) || !owners.waitForFinished(30000))
        return versions;
    QMap<QString, QString> packageOfFile;
    for (const QString& line : QString::fromUtf8(owners.readAllStandardOutput()).split('\n')) {
        const qsizetype separator = line.indexOf(QStringLiteral(": /"));
        if (separator > 0 && !line.startsWith(QStringLiteral("diversion by"))) {
            const QString package = line.left(separator).section(QLatin1Char(','), 0, 0).trimmed();
            packageOfFile.insert(line.mid(separator + 2), package.section(QLatin1Char(':'), 0, 0));
        }
    }
    QStringList packages = packageOfFile.values();
    packages.removeDuplicates();
    if (packages.isEmpty())
        return versions;
    QProcess query;
    query.start(QStringLiteral("dpkg-query"),
                QStringList{QStringLiteral("-W"), QStringLiteral("-f=${Package}\t${Version}\n")}
                    + packages);
    if (!query.waitForStarted(30000) || !query.waitForFinished(30000))
        return versions;
    QMap<QString, QString> versionOfPackage;
    for (const QString& line : QString::fromUtf8(query.readAllStandardOutput()).split('\n')) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() == 2)
            versionOfPackage.insert(fields.at(0), fields.at(1));
    }
    for (auto it = packageOfFile.cbegin(); it != packageOfFile.cend(); ++it)
        versions.insert(it.key(), versionOfPackage.value(it.value()));
    return versions;
}

} // namespace

QString readStringValue(const RegistryKey& key, const QString& subKey, const QString& valueName)
{
    QByteArray text;
    return readSmallFile(key, &text) ? keyFileValue(text, subKey, valueName) : QString();
}

QStringList productAssociations(const QString& productName, bool machine)
{
    // The first file that names a type in either group decides whose it is; it is the product's
    // when either group names the product first.
    const QString prefix = associationPrefix(productName);
    QMap<QString, bool> productTypes;
    for (const QString& path : mimeappsFiles(machine)) {
        QByteArray text;
        if (!readSmallFile(path, &text))
            continue;
        const QMap<QString, QStringList> defaults =
            associationLists(text, defaultApplicationsGroup);
        const QMap<QString, QStringList> added = associationLists(text, addedAssociationsGroup);
        for (const QString& type : defaults.keys() + added.keys()) {
            if (!productTypes.contains(type))
                productTypes.insert(type, defaults.value(type).value(0).startsWith(prefix)
                                              || added.value(type).value(0).startsWith(prefix));
        }
    }
    const QMimeDatabase database;
    QStringList extensions;
    for (auto it = productTypes.cbegin(); it != productTypes.cend(); ++it) {
        if (!it.value())
            continue;
        for (const QString& suffix : database.mimeTypeForName(it.key()).suffixes()) {
            const QString extension = QLatin1Char('.') + suffix;
            if (!extensions.contains(extension))
                extensions.append(extension);
        }
    }
    return extensions;
}

bool removeProductAssociation(const QString& extension, const QString& productName, bool machine)
{
    if (extension.size() < 2 || !extension.startsWith(QLatin1Char('.')))
        return false;
    QStringList mimeTypes;
    for (const QMimeType& type : QMimeDatabase().allMimeTypes()) {
        if (type.suffixes().contains(extension.mid(1)))
            mimeTypes << type.name() << type.aliases();
    }
    if (mimeTypes.isEmpty())
        return false;
    bool removed = false;
    for (const QString& path : mimeappsFiles(machine)) {
        QByteArray text;
        if (!readSmallFile(path, &text))
            continue;
        const QByteArray changed = withoutProductAssociations(text, mimeTypes, productName);
        if (changed != text && writeFile(path, changed))
            removed = true;
    }
    return removed;
}

QList<UninstallEntry> uninstallEntries(const QString& nameContains)
{
    QList<UninstallEntry> entries;
    QStringList unversioned;
    // The user's folder comes first; an entry there hides the machine's with the same id, as it
    // does in the desktop's menu.
    QSet<QString> seenIds;
    for (const QString& folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        const QDir applications(folder + QStringLiteral("/applications"));
        QDirIterator it(applications.path(), {QStringLiteral("*.desktop")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QString id = applications.relativeFilePath(path);
            id.replace(QLatin1Char('/'), QLatin1Char('-'));
            if (seenIds.contains(id))
                continue;
            seenIds.insert(id);
            const QString displayName =
                readStringValue(path, desktopEntryGroup, QStringLiteral("Name"));
            if (!displayName.contains(nameContains, Qt::CaseInsensitive))
                continue;
            // Every entry is listed, as every uninstall key is; one without a program to run has
            // no install location.
            const QString program =
                execProgram(readStringValue(path, desktopEntryGroup, QStringLiteral("Exec")));
            const QString resolved = program.isEmpty() || QFileInfo(program).isAbsolute()
                                         ? program
                                         : QStandardPaths::findExecutable(program);
            if (isSupportToolEntry(displayName, resolved))
                continue;
            UninstallEntry entry;
            entry.InstallLocation =
                resolved.isEmpty() ? QString() : QFileInfo(resolved).absolutePath();
            entry.DisplayIcon = readStringValue(path, desktopEntryGroup, QStringLiteral("Icon"));
            entry.DisplayName = displayName;
            entry.DisplayVersion =
                readStringValue(path, desktopEntryGroup, QStringLiteral("X-AppImage-Version"));
            if (entry.DisplayVersion.isEmpty())
                unversioned.append(path);
            entries.append(entry);
        }
    }
    const QMap<QString, QString> versions = packageVersions(unversioned);
    for (qsizetype index = 0, pending = 0; index < entries.size(); ++index) {
        UninstallEntry& entry = entries[index];
        if (entry.DisplayVersion.isEmpty())
            entry.DisplayVersion = versions.value(unversioned.at(pending++));
    }
    return entries;
}

QString environmentVariable(const QString& name)
{
    // systemd reads every file in name order, and the last assignment wins.
    QByteArray combined;
    const QDir folder(environmentFolder());
    for (const QString& fileName :
         folder.entryList({QStringLiteral("*.conf")}, QDir::Files, QDir::Name)) {
        QByteArray text;
        if (readSmallFile(folder.filePath(fileName), &text) && isUtf8(text))
            combined += text + '\n';
    }
    return environmentValue(combined, name);
}

bool setEnvironmentVariable(const QString& name, const QString& value)
{
    const QString path = environmentFile();
    QByteArray text;
    if (QFileInfo::exists(path) && !readSmallFile(path, &text))
        return false;
    const QByteArray changed = withEnvironmentValue(text, name, value);
    if (changed.isEmpty() || !writeFile(path, changed))
        return false;
    tellUserManager({QStringLiteral("set-environment"), name + QLatin1Char('=') + value});
    return true;
}

bool removeEnvironmentVariable(const QString& name)
{
    const QString path = environmentFile();
    QByteArray text;
    if (!readSmallFile(path, &text))
        return false;
    const QByteArray changed = withoutEnvironmentValue(text, name);
    if (changed == text)
        return false;
    // The file is ours alone: with nothing left to say it goes.
    if (changed.trimmed().isEmpty() ? !QFile::remove(path) : !writeFile(path, changed))
        return false;
    tellUserManager({QStringLiteral("unset-environment"), name});
    return true;
}

QString currentUserSid()
{
    return QStringLiteral("S-1-22-1-") + QString::number(getuid());
}
