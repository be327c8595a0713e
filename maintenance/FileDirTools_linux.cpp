#include "FileDirTools.h"
#include "FileDirTools_p.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDebug>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void openContainingFolder(const QString& path)
{
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(path).absolutePath());
    if (!QDesktopServices::openUrl(folder))
        qDebug() << "Failed to open folder" << folder.toLocalFile();
}

QByteArray encoded(const QString& path)
{
    return QFile::encodeName(path);
}

// Trashed items live in ".../Trash/files", ".Trash-<uid>/files" or ".Trash/<uid>/files".
bool isTrashLocation(const QString& trashedPath)
{
    QDir files = QFileInfo(trashedPath).dir();
    if (files.dirName() != QLatin1String("files") || !files.cdUp())
        return false;
    const QString trash = files.dirName();
    if (trash == QLatin1String("Trash") || trash.startsWith(QLatin1String(".Trash-")))
        return true;
    return files.cdUp() && files.dirName() == QLatin1String(".Trash");
}

QString trashInfoPath(const QString& trashedPath)
{
    const QFileInfo trashed(trashedPath);
    return trashed.absolutePath() + QStringLiteral("/../info/") + trashed.fileName()
           + QStringLiteral(".trashinfo");
}

// Qt 6.4 writes the original path into the item's info record as it is, but readers take it
// URL-escaped: a "%" would bring the item back under another name, a line break nowhere.
void escapeTrashInfo(const QString& trashedPath, const QString& originalPath)
{
    const QByteArray raw = encoded(QFileInfo(originalPath).absoluteFilePath());
    const QByteArray escaped = QUrl::toPercentEncoding(raw, "/");
    if (escaped == raw)
        return;
    QFile info(trashInfoPath(trashedPath));
    const QByteArray text = info.open(QIODevice::ReadOnly) ? info.readAll() : QByteArray();
    const qsizetype date = text.lastIndexOf("\nDeletionDate=");
    QSaveFile fixed(info.fileName());
    if (date < 0 || !fixed.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        || fixed.write("[Trash Info]\nPath=" + escaped + text.mid(date)) < 0 || !fixed.commit())
        qDebug().noquote()
            << QStringLiteral("Could not escape the trash record of %1").arg(originalPath);
}

// Undoes a move that did not end in a trash folder; the item and its info record go away there.
void putBack(const QString& trashedPath, const QString& originalPath)
{
    if (::rename(encoded(trashedPath).constData(), encoded(originalPath).constData()) != 0) {
        qDebug().noquote()
            << QStringLiteral("Could not put back %1 from %2").arg(originalPath, trashedPath);
        return;
    }
    QFile::remove(trashInfoPath(trashedPath));
}

int posixAccess(int flags)
{
    switch (flags & 3) {
    case 1:
        return O_WRONLY | O_CREAT;
    case 2:
        return O_RDWR | O_CREAT;
    default:
        return O_RDONLY;
    }
}

bool copyDescriptors(int input, int output)
{
    for (;;) {
        const ssize_t count = ::copy_file_range(input, nullptr, output, nullptr, 1 << 30, 0);
        if (count == 0)
            return true;
        if (count < 0)
            break;
    }
    // Some file systems and kernels cannot copy ranges; copy through a buffer instead.
    if (errno != EXDEV && errno != ENOSYS && errno != EINVAL && errno != EOPNOTSUPP)
        return false;
    char buffer[1 << 16];
    for (;;) {
        const ssize_t count = ::read(input, buffer, sizeof buffer);
        if (count == 0)
            return true;
        if (count < 0 || ::write(output, buffer, size_t(count)) != count)
            return false;
    }
}

} // namespace

namespace FileDirPlatform {

bool standardFolder(int kind, QString& path)
{
    switch (kind) {
    case 0:
        path = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        break;
    case 1:
        path = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
        break;
    case 2:
        path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        break;
    default:
        path = QStringLiteral("/var/lib");
        break;
    }
    return !path.isEmpty();
}

bool recycleBinHasPathLimit()
{
    return false;
}

bool moveToRecycleBin(const QString& path, int& status)
{
    // Without the home trash's parent, Qt puts the item into "files" under the current directory.
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    QFile file(path);
    if (!file.moveToTrash()) {
        status = file.error();
        return false;
    }
    const QString trashed = file.fileName();
    if (isTrashLocation(trashed)) {
        escapeTrashInfo(trashed, path);
        return true;
    }
    putBack(trashed, path);
    status = QFileDevice::RenameError;
    return false;
}

bool isSameFile(const QString& first, const QString& second)
{
    struct stat a;
    struct stat b;
    return ::stat(encoded(first).constData(), &a) == 0
           && ::stat(encoded(second).constData(), &b) == 0 && a.st_dev == b.st_dev
           && a.st_ino == b.st_ino;
}

bool fastCopy(const QString& source, const QString& destination)
{
    const int input = ::open(encoded(source).constData(), O_RDONLY | O_CLOEXEC);
    if (input < 0)
        return false;
    struct stat status;
    const mode_t mode = ::fstat(input, &status) == 0 ? status.st_mode & 07777 : 0644;
    const int output =
        ::open(encoded(destination).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    bool ok = output >= 0 && copyDescriptors(input, output);
    ::close(input);
    if (output >= 0 && ::close(output) != 0)
        ok = false;
    return ok;
}

bool readFileTimes(const QString& path, FileTimes& times)
{
    struct stat status;
    if (::stat(encoded(path).constData(), &status) != 0)
        return false;
    times.created = 0;
    times.modified = qint64(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
    return true;
}

bool restoreFileTimes(const QString& path, const FileTimes& times)
{
    // Linux cannot set a birth time; the access time is left alone.
    struct timespec values[2];
    values[0].tv_sec = 0;
    values[0].tv_nsec = UTIME_OMIT;
    values[1].tv_sec = time_t(times.modified / 1000000000);
    values[1].tv_nsec = long(times.modified % 1000000000);
    return ::utimensat(AT_FDCWD, encoded(path).constData(), values, 0) == 0;
}

RenameResult rename(const QString& source, const QString& destination)
{
    if (::rename(encoded(source).constData(), encoded(destination).constData()) == 0)
        return RenameResult::Renamed;
    return errno == EXDEV ? RenameResult::OtherVolume : RenameResult::Failed;
}

int open(const QString& path, int flags)
{
    return ::open(encoded(path).constData(), posixAccess(flags) | O_CLOEXEC, 0666);
}

FILE* fopen(const QString& path, const char* mode)
{
    return std::fopen(encoded(path).constData(), mode);
}

qint64 read(int fd, char* buffer, qint64 length)
{
    return ::read(fd, buffer, size_t(length));
}

qint64 write(int fd, const char* buffer, qint64 length)
{
    return ::write(fd, buffer, size_t(length));
}

int close(int fd)
{
    return ::close(fd);
}

qint64 processId()
{
    return ::getpid();
}

} // namespace FileDirPlatform

void revealInExplorer(const QString& path)
{
    if (path.isEmpty())
        return;
    QString local = path;
    if (local.startsWith(QStringLiteral("file://")))
        local.remove(0, 7);

    // The file manager's own interface selects the item; without one, open its folder instead.
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(local).toString(QUrl::FullyEncoded)} << QString();
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
    auto finish = [watcher, local] {
        if (watcher->isError()) {
            qDebug() << "File manager could not show" << local << watcher->error().message();
            openContainingFolder(local);
        }
        watcher->deleteLater();
    };
    if (watcher->isFinished())
        finish();
    else
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, finish);
}
