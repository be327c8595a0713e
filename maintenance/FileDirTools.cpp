#include "FileDirTools.h"
#include "FileDirTools_p.h"
#include "FileStream.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QThread>

#include <algorithm>

#include <cerrno>
#include <cstring>

namespace {

const int recycleBinMaxPath = 260;
const int recycleBinTries = 10;
const int moveTries = 20;
const int retryDelayMs = 100;
const qint64 copyChunk = 1 << 20;
const int writeAccessFlags = 3;

QString tr(const char* text)
{
    return QCoreApplication::translate("FileDirTools", text);
}

void setError(QString* errorText, const QString& text)
{
    if (errorText)
        *errorText = text;
}

void fail(QString* errorText, const QString& text)
{
    qDebug().noquote() << text;
    setError(errorText, text);
}

// The reason a file cannot be opened, or an empty text when the open may go ahead. The texts
// differ between the descriptor and the stream variants.
QString openRefusal(const QString& path, bool writing, bool checkDirectory, const char* notFound,
                    const char* notReadable, const char* readOnly, const char* directory)
{
    const QFileInfo info(path);
    if (!info.exists())
        return writing ? QString() : tr(notFound).arg(path);
    if (!info.isDir()) {
        if (!info.isReadable())
            return tr(notReadable).arg(path);
        if (writing && !info.isWritable())
            return tr(readOnly).arg(path);
        return {};
    }
    return checkDirectory ? tr(directory).arg(path) : QString();
}

QString errorName(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// One multi-argument substitution: a path of its own may hold "%1".
QString errnoText(const char* lead, const QString& path, int error)
{
    return tr(lead).arg(path, errorName(error), QString::number(error));
}

// Why the file cannot be opened as a descriptor, or an empty text.
QString descriptorRefusal(const QString& path, bool writing)
{
    return openRefusal(
        path, writing, true,
        QT_TRANSLATE_NOOP("FileDirTools",
                          "Failed to open \"%1\" as read only because it does not exist."),
        QT_TRANSLATE_NOOP("FileDirTools", "Failed to open \"%1\" because it is not readable."),
        QT_TRANSLATE_NOOP("FileDirTools",
                          "Failed to open \"%1\" as writable because it is read only."),
        QT_TRANSLATE_NOOP("FileDirTools", "Failed to open \"%1\" because it is a directory."));
}

bool plainCopy(const QString& source, const QString& destination, QString* errorText)
{
    const int input = openChecked(source, OpenReadOnly);
    if (input < 0) {
        setError(errorText,
                 QCoreApplication::translate("FileDirTools", "Could not open input file."));
        return false;
    }
    if (!createEmptyFile(destination)) {
        FileDirPlatform::close(input);
        setError(errorText,
                 QCoreApplication::translate("FileDirTools", "Could not create empty file."));
        return false;
    }
    const int output = openChecked(destination, OpenWriteOnly);
    if (output < 0) {
        FileDirPlatform::close(input);
        setError(errorText,
                 QCoreApplication::translate("FileDirTools", "Could not open output file."));
        return false;
    }
    // Only the end of the file ends the copy: a read error would otherwise pass for it and leave
    // a short destination behind a successful result.
    QByteArray buffer(copyChunk, Qt::Uninitialized);
    QString failure;
    for (;;) {
        const qint64 count = FileDirPlatform::read(input, buffer.data(), copyChunk);
        if (count == 0)
            break;
        if (count < 0) {
            failure = QCoreApplication::translate("FileDirTools", "Could not read input file. %1")
                          .arg(errorName(errno));
            break;
        }
        if (FileDirPlatform::write(output, buffer.constData(), count) != count) {
            failure = QCoreApplication::translate("FileDirTools", "Could not write output file. %1")
                          .arg(errorName(errno));
            break;
        }
    }
    FileDirPlatform::close(input);
    if (FileDirPlatform::close(output) != 0 && failure.isEmpty())
        failure = QCoreApplication::translate("FileDirTools", "Could not write output file. %1")
                      .arg(errorName(errno));
    if (failure.isEmpty())
        return true;
    fail(errorText, failure);
    return false;
}

} // namespace

bool standardFolderPath(StandardFolderKind kind, QString& path)
{
    if (kind < 0 || kind > 3)
        return false;
    return FileDirPlatform::standardFolder(kind, path);
}

QString appDataFolder(StandardFolderKind kind)
{
    QString base;
    if (!standardFolderPath(kind, base))
        qDebug().noquote() << "Error! Unable to identify Application Data folder!";
    const QString name = QCoreApplication::applicationName();
    return base.isEmpty() ? name : base + QLatin1Char('/') + name;
}

QString tempFolder()
{
    static const QString folder = appDataFolder(0) + QStringLiteral("/temp");
    return folder;
}

bool makePath(const QString& path)
{
    return QDir().mkpath(path);
}

QString permissionsText(const QString& path, bool compact)
{
    const QFileInfo info(path);
    const QFile::Permissions permissions = info.permissions();
    auto bit = [&](QFile::Permission permission, char letter) {
        return QString(QLatin1Char(permissions.testFlag(permission) ? letter : '-'));
    };
    auto flag = [&](QFile::Permission permission) {
        return QString(QLatin1Char(permissions.testFlag(permission) ? '1' : '0'));
    };
    if (compact) {
        return QString(QLatin1Char(info.isDir() ? 'd' : '-'))
               + QStringLiteral("%1%2%3%4%5%6%7%8%9")
                     .arg(bit(QFile::ReadOwner, 'r'), bit(QFile::WriteOwner, 'w'),
                          bit(QFile::ExeOwner, 'x'), bit(QFile::ReadGroup, 'r'),
                          bit(QFile::WriteGroup, 'w'), bit(QFile::ExeGroup, 'x'),
                          bit(QFile::ReadOther, 'r'), bit(QFile::WriteOther, 'w'),
                          bit(QFile::ExeOther, 'x'));
    }
    return QStringLiteral("ReadOwner=%1 WriteOwner=%2 ExeOwner=%3")
               .arg(flag(QFile::ReadOwner), flag(QFile::WriteOwner), flag(QFile::ExeOwner))
           + QStringLiteral(" ReadUser=%1 WriteUser=%2 ExeUser=%3")
                 .arg(flag(QFile::ReadUser), flag(QFile::WriteUser), flag(QFile::ExeUser))
           + QStringLiteral(" ReadGroup=%1 WriteGroup=%2 ExeGroup=%3")
                 .arg(flag(QFile::ReadGroup), flag(QFile::WriteGroup), flag(QFile::ExeGroup))
           + QStringLiteral(" ReadOther=%1 WriteOther=%2 ExeOther=%3")
                 .arg(flag(QFile::ReadOther), flag(QFile::WriteOther), flag(QFile::ExeOther));
}

bool entryExists(const QString& path)
{
    return !path.isEmpty()
           && FileDirPlatform::entryKind(path) != FileDirPlatform::EntryKind::Missing;
}

bool isSafeToRead(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists() || info.isFile())
        return true;
    qDebug().noquote() << QStringLiteral("Not read: \"%1\" is not a regular file.").arg(path);
    return false;
}

WriteAccess writeAccess(const QString& path)
{
    return FileDirPlatform::writeAccess(path);
}

bool exceedsRecycleBinPathLimit(const QString& nativePath)
{
    return nativePath.length() + 2 > recycleBinMaxPath;
}

namespace {

bool isBelow(const QString& path, const QString& folder)
{
    return path.startsWith(folder + QLatin1Char('/'));
}

// The mount points at the path or below it.
QStringList mountsAt(const QString& path)
{
    const QString folder = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    QStringList mounts;
    for (const QString& mount : FileDirPlatform::mountPoints()) {
        if (mount == folder || isBelow(mount, folder))
            mounts.append(mount);
    }
    return mounts;
}

} // namespace

bool moveToRecycleBin(const QString& path, QString* errorText)
{
    const QString native = QDir::toNativeSeparators(path);
    if (FileDirPlatform::recycleBinHasPathLimit() && exceedsRecycleBinPathLimit(native)) {
        const QString limit = QString::number(recycleBinMaxPath - 2);
        qDebug().noquote() << QStringLiteral("Max path %1 exceeded to put into Recycle Bin: %2")
                                  .arg(limit, native);
        setError(
            errorText,
            QCoreApplication::translate("FileDirTools", "Could not put \"%1\" into the trash: %2")
                .arg(path, QCoreApplication::translate("FileDirTools",
                                                       "The path is longer than %1 characters.")
                               .arg(limit)));
        return false;
    }
    // Moving a folder moves what is mounted inside it, which emptying the trash would then erase.
    if (FileDirPlatform::entryKind(path) == FileDirPlatform::EntryKind::Folder) {
        if (const QStringList mounts = mountsAt(path); !mounts.isEmpty()) {
            qDebug().noquote() << QStringLiteral("Not put into Recycle Bin: %1 holds the mount %2")
                                      .arg(native, mounts.first());
            setError(errorText,
                     QCoreApplication::translate("FileDirTools",
                                                 "Could not put \"%1\" into the trash: %2")
                         .arg(path, QCoreApplication::translate(
                                        "FileDirTools", "It holds another file system at \"%1\".")
                                        .arg(mounts.first())));
            return false;
        }
    }
    QString reason;
    for (int attempt = 0; attempt < recycleBinTries; ++attempt) {
        int status = 0;
        if (FileDirPlatform::moveToRecycleBin(native, status, reason)) {
            // A trash that answers yes but leaves the item (an aborted operation) did not take it.
            if (!entryExists(path))
                return true;
            reason = QCoreApplication::translate("FileDirTools", "It was left in its place.");
        }
        qDebug().noquote() << QStringLiteral("Failed to put into Recycle Bin: %1 (status=%2)")
                                  .arg(native, QString::number(status));
        if (reason.isEmpty())
            reason =
                QCoreApplication::translate("FileDirTools", "The system answered %1.").arg(status);
        QThread::msleep(retryDelayMs);
    }
    setError(errorText,
             QCoreApplication::translate("FileDirTools", "Could not put \"%1\" into the trash: %2")
                 .arg(path, reason));
    return false;
}

QStringList moveAllToRecycleBin(const QStringList& paths, QString* errorText)
{
    QStringList failed;
    QStringList reasons;
    for (const QString& path : paths) {
        QString reason;
        if (!moveToRecycleBin(path, &reason)) {
            failed.append(path);
            reasons.append(reason);
        }
    }
    setError(errorText, reasons.join(QLatin1Char('\n')));
    return failed;
}

namespace {

// Removes what is below the folder, then the folder; mount points and the folders that lead to
// them stay and are added to kept. Names are taken as the system gives them, so that a name that
// is not UTF-8 goes like any other.
void removeTree(const QString& folder, const QStringList& mounts, QStringList& kept)
{
    if (mounts.contains(folder)) {
        kept.append(folder);
        return;
    }
    for (const FileDirPlatform::DirectoryEntry& entry : FileDirPlatform::folderEntries(folder)) {
        const QString path = folder + QLatin1Char('/') + entry.name;
        if (entry.isFolder)
            removeTree(path, mounts, kept);
        else if (!FileDirPlatform::removeEntry(path, false))
            kept.append(path);
    }
    const bool leadsToKept = std::any_of(
        kept.cbegin(), kept.cend(), [&](const QString& path) { return isBelow(path, folder); });
    if (!leadsToKept && !FileDirPlatform::removeEntry(folder, true))
        kept.append(folder);
}

} // namespace

bool removePermanently(const QString& path, QString* errorText)
{
    const FileDirPlatform::EntryKind kind = FileDirPlatform::entryKind(path);
    if (path.isEmpty() || kind == FileDirPlatform::EntryKind::Missing)
        return true;
    QStringList kept;
    if (kind != FileDirPlatform::EntryKind::Folder) {
        if (!FileDirPlatform::removeEntry(path, false))
            kept.append(path);
    } else {
        const QStringList mounts = mountsAt(path);
        removeTree(QDir::cleanPath(QFileInfo(path).absoluteFilePath()), mounts, kept);
        for (const QString& mount : std::as_const(mounts)) {
            if (kept.contains(mount))
                setError(errorText,
                         QCoreApplication::translate(
                             "FileDirTools", "\"%1\" holds another file system at \"%2\"; it was "
                                             "left as it is.")
                             .arg(path, mount));
        }
    }
    if (kept.isEmpty())
        return true;
    for (const QString& left : std::as_const(kept))
        qDebug().noquote() << QStringLiteral("Failed to remove %1").arg(left);
    if (errorText && errorText->isEmpty())
        *errorText = QCoreApplication::translate("FileDirTools", "Could not delete \"%1\".")
                         .arg(kept.first());
    return false;
}

bool copyFile(const QString& source, const QString& destination, bool keepTimes, QString* errorText)
{
    if (source == destination)
        return true;
    // Nothing touches the destination before the source is known to be a readable file: a
    // missing source or a folder must not empty it.
    if (const QString refusal = descriptorRefusal(source, false); !refusal.isEmpty()) {
        qDebug().noquote() << refusal;
        setError(errorText,
                 QCoreApplication::translate("FileDirTools", "Could not open input file."));
        return false;
    }
    FileDirPlatform::FileTimes times;
    const bool haveTimes = keepTimes && FileDirPlatform::readFileTimes(source, times);
    bool copied = false;
    if (QFileInfo::exists(destination) && FileDirPlatform::isSameFile(source, destination)) {
        // Another name of the source itself (a link, "dir/./name"): truncating the destination
        // would empty the source. Only a name that differs in case is renamed, as a case-only
        // rename on a case-insensitive file system.
        if (source.compare(destination, Qt::CaseInsensitive) != 0)
            return true;
        copied = QDir().rename(source, destination);
    } else {
        copied = FileDirPlatform::fastCopy(source, destination);
        if (!copied) {
            qDebug().noquote()
                << QStringLiteral("Failed to CopyFileEx \"%1\" to \"%2\"").arg(source, destination);
            copied = plainCopy(source, destination, errorText);
        }
    }
    if (copied && haveTimes)
        FileDirPlatform::restoreFileTimes(destination, times);
    return copied;
}

bool moveFile(const QString& source, const QString& destination, QString* errorText)
{
    if (!QFileInfo::exists(source))
        return false;
    for (int attempt = 0; attempt < moveTries; ++attempt) {
        const FileDirPlatform::RenameResult result = FileDirPlatform::rename(source, destination);
        if (result == FileDirPlatform::RenameResult::Renamed)
            return true;
        // Waiting cannot bring two file systems together: copy at once.
        if (result == FileDirPlatform::RenameResult::OtherVolume)
            break;
        qDebug().noquote()
            << QStringLiteral("Failed to MoveFileEx \"%1\" to \"%2\"").arg(source, destination);
        QThread::msleep(retryDelayMs);
    }
    // The source goes only once a complete copy stands in its place.
    if (!copyFile(source, destination)) {
        setError(errorText, QCoreApplication::translate("FileDirTools", "Could not rename file."));
        return false;
    }
    if (!QDir().remove(source))
        qDebug().noquote() << QStringLiteral("Failed to remove %1").arg(source);
    return true;
}

int openChecked(const QString& path, int flags, QString* errorText)
{
    if (path.isEmpty())
        return -1;
    if (const QString refusal = descriptorRefusal(path, (flags & writeAccessFlags) != 0);
        !refusal.isEmpty()) {
        fail(errorText, refusal);
        return -1;
    }
    const int fd = FileDirPlatform::open(path, flags);
    if (fd < 0)
        fail(errorText,
             errnoText(QT_TRANSLATE_NOOP("FileDirTools", "Failed to open \"%1\". %2 (errno=%3)"),
                       path, errno));
    return fd;
}

FILE* fopenChecked(const QString& path, const char* mode, QString* errorText)
{
    if (path.isEmpty())
        return nullptr;
    const bool writing = std::strpbrk(mode, "wa+") != nullptr;
    const QString refusal = openRefusal(
        path, writing, false,
        QT_TRANSLATE_NOOP("FileDirTools",
                          "Failed to fopen \"%1\" as read only because it does not exist."),
        QT_TRANSLATE_NOOP("FileDirTools", "Failed to fopen \"%1\" because it is not readable."),
        QT_TRANSLATE_NOOP("FileDirTools",
                          "Failed to fopen \"%1\" as writable because it is read only."),
        nullptr);
    if (!refusal.isEmpty()) {
        fail(errorText, refusal);
        return nullptr;
    }
    FILE* stream = FileDirPlatform::fopen(path, mode);
    if (!stream)
        fail(errorText,
             errnoText(QT_TRANSLATE_NOOP("FileDirTools", "Failed to fopen \"%1\". %2 (errno=%3)"),
                       path, errno));
    return stream;
}

int closeDescriptor(int fd)
{
    return FileDirPlatform::close(fd);
}

bool createEmptyFile(const QString& path)
{
    return FileStream(path, "wb").isOpen();
}

bool removeFile(const QString& path)
{
    const QFileInfo info(path);
    // A link goes itself, even when what it points at is missing.
    if (info.isSymbolicLink())
        return QDir().remove(path);
    if (!info.exists())
        return false;
    // A read-only file could not be removed on Windows.
    if (!info.isWritable())
        QFile::setPermissions(path, info.permissions() | QFile::WriteOwner | QFile::WriteUser);
    return QDir().remove(path);
}

bool writeTextFile(const QString& path, const QString& text)
{
    if (!FileStream(path, "w").isOpen()) {
        qDebug().noquote() << QStringLiteral("Failed to open writable text file: %1").arg(path);
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        qDebug().noquote() << QStringLiteral("Failed to open writable text file: %1").arg(path);
        removeFile(path);
        return false;
    }
    QTextStream stream(&file);
    stream.setEncoding(QStringConverter::Utf8);
    stream << text;
    stream.flush();
    return stream.status() == QTextStream::Ok;
}
