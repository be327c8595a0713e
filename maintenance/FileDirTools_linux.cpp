#include "FileDirTools.h"
#include "FileDirTools_p.h"
#include "FileNames.h"

// GLib names a member "signals", which Qt defines as a keyword.
#pragma push_macro("signals")
#undef signals
#include <gio/gio.h>
#pragma pop_macro("signals")

#include <QCoreApplication>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDebug>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QSet>
#include <QStandardPaths>
#include <QUrl>

#include <cerrno>
#include <cstdio>
#include <dirent.h>
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
    return encodeFileName(path);
}

// The calls of GIO's trash, resolved once, on the first trashing.
struct Gio
{
    GFile* (*newForPath)(const char*) = nullptr;
    gboolean (*trash)(GFile*, GCancellable*, GError**) = nullptr;
    void (*unref)(gpointer) = nullptr;
};

const Gio& loadedGio()
{
    static const Gio gio = [] {
        Gio calls;
        QLibrary library(QStringLiteral("gio-2.0"), 0);
        if (!library.load()) {
            qDebug() << "Failed to load GIO:" << library.errorString();
            return calls;
        }
        calls.newForPath =
            reinterpret_cast<decltype(calls.newForPath)>(library.resolve("g_file_new_for_path"));
        calls.trash = reinterpret_cast<decltype(calls.trash)>(library.resolve("g_file_trash"));
        calls.unref = reinterpret_cast<decltype(calls.unref)>(library.resolve("g_object_unref"));
        return calls;
    }();
    return gio;
}

// The trashes GIO may choose for the item: the user's, or one at the top of the item's file system.
QByteArrayList trashFolders(const QByteArray& path)
{
    QByteArrayList trashes{QByteArray(g_get_user_data_dir()) + "/Trash"};
    struct stat item;
    if (::lstat(path.constData(), &item) != 0)
        return trashes;
    QByteArray top = path;
    for (;;) {
        const qsizetype slash = top.lastIndexOf('/');
        if (slash < 0)
            break;
        const QByteArray parent = slash == 0 ? QByteArray("/") : top.left(slash);
        struct stat status;
        if (parent == top || ::stat(parent.constData(), &status) != 0
            || status.st_dev != item.st_dev)
            break;
        top = parent;
    }
    const QByteArray uid = QByteArray::number(qulonglong(::getuid()));
    const QByteArray base = top == "/" ? QByteArray() : top;
    trashes << base + "/.Trash/" + uid << base + "/.Trash-" + uid;
    return trashes;
}

// The item records ("<trash>/info/<name>.trashinfo") in the trashes.
QSet<QByteArray> trashRecords(const QByteArrayList& trashes)
{
    QSet<QByteArray> records;
    for (const QByteArray& trash : trashes) {
        const QByteArray folder = trash + "/info";
        DIR* dir = ::opendir(folder.constData());
        if (!dir)
            continue;
        while (const dirent* entry = ::readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name.endsWith(".trashinfo"))
                records.insert(folder + '/' + name);
        }
        ::closedir(dir);
    }
    return records;
}

// What trash-list and trash-restore need: the group, the original path and the date.
bool isWholeRecord(const QByteArray& record)
{
    const int fd = ::open(record.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return false;
    QByteArray text(1 << 16, Qt::Uninitialized);
    const ssize_t count = ::read(fd, text.data(), size_t(text.size()));
    ::close(fd);
    text.truncate(count < 0 ? 0 : qsizetype(count));
    return text.startsWith("[Trash Info]\n") && text.contains("\nPath=/")
           && text.contains("\nDeletionDate=") && text.endsWith('\n');
}

// GLib 2.74 moves the item even when its record could not be written, which then stays empty: on
// a full disk, or for a name of 239 to 245 bytes, whose record's temporary name is too long. No
// reader can list or restore such an item, so it is moved back where it was.
bool keepRestorable(const QByteArray& path, const QSet<QByteArray>& before,
                    const QByteArrayList& trashes, QString& reason)
{
    const QSet<QByteArray> after = trashRecords(trashes);
    for (const QByteArray& record : after) {
        if (before.contains(record) || isWholeRecord(record))
            continue;
        const qsizetype slash = record.lastIndexOf('/');
        const QByteArray trash = record.left(record.lastIndexOf('/', slash - 1));
        const QByteArray name = record.mid(slash + 1).chopped(int(qstrlen(".trashinfo")));
        const QByteArray trashed = trash + "/files/" + name;
        if (::renameat2(AT_FDCWD, trashed.constData(), AT_FDCWD, path.constData(), RENAME_NOREPLACE)
            != 0) {
            reason = QCoreApplication::translate(
                         "FileDirTools",
                         "The trash could not record where it came from, and it could not be "
                         "moved back. It is in \"%1\".")
                         .arg(decodeFileName(trashed));
            return false;
        }
        ::unlink(record.constData());
        reason = QCoreApplication::translate(
            "FileDirTools",
            "The trash could not record where it came from (the disk may be full, or "
            "the name too long), so it was left where it was.");
        return false;
    }
    return true;
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

bool moveToRecycleBin(const QString& path, int& status, QString& reason)
{
    const QByteArray bytes = encoded(path);
    const QByteArrayList trashes = trashFolders(bytes);
    const QSet<QByteArray> before = trashRecords(trashes);
    const Gio& gio = loadedGio();
    if (!gio.newForPath || !gio.trash || !gio.unref) {
        status = ENOSYS;
        reason =
            QCoreApplication::translate("FileDirTools", "The desktop's trash (GIO) is missing.");
        return false;
    }
    GFile* file = gio.newForPath(bytes.constData());
    GError* error = nullptr;
    const bool trashed = gio.trash(file, nullptr, &error);
    gio.unref(file);
    if (!trashed) {
        status = error->code;
        reason = QString::fromUtf8(error->message);
        g_error_free(error);
        return false;
    }
    if (keepRestorable(bytes, before, trashes, reason))
        return true;
    status = G_IO_ERROR_NO_SPACE;
    return false;
}

EntryKind entryKind(const QString& path)
{
    struct stat status;
    if (::lstat(encoded(path).constData(), &status) != 0)
        return EntryKind::Missing;
    return S_ISLNK(status.st_mode)   ? EntryKind::Link
           : S_ISDIR(status.st_mode) ? EntryKind::Folder
                                     : EntryKind::File;
}

QList<DirectoryEntry> folderEntries(const QString& folder)
{
    QList<DirectoryEntry> entries;
    const QByteArray path = encoded(folder);
    DIR* dir = ::opendir(path.constData());
    if (!dir)
        return entries;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        bool isFolder = entry->d_type == DT_DIR;
        struct stat status;
        if (entry->d_type == DT_UNKNOWN && ::lstat((path + '/' + name).constData(), &status) == 0)
            isFolder = S_ISDIR(status.st_mode);
        entries.append({decodeFileName(name), isFolder});
    }
    ::closedir(dir);
    return entries;
}

WriteAccess writeAccess(const QString& path)
{
    // As QFileInfo judges: the user's own access to what the path leads to.
    const QByteArray bytes = encoded(path);
    if (::access(bytes.constData(), W_OK) == 0)
        return WriteAccess::Writable;
    struct stat status;
    return ::stat(bytes.constData(), &status) != 0 && ::lstat(bytes.constData(), &status) == 0
                   && S_ISLNK(status.st_mode)
               ? WriteAccess::LeadsNowhere
               : WriteAccess::NotWritable;
}

bool removeEntry(const QString& path, bool isFolder)
{
    const QByteArray bytes = encoded(path);
    return (isFolder ? ::rmdir(bytes.constData()) : ::unlink(bytes.constData())) == 0;
}

QStringList mountPoints()
{
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    if (!table.open(QIODevice::ReadOnly)) {
        qDebug() << "Cannot read the mount table" << table.errorString();
        return {};
    }
    return mountPointsFromMountInfo(table.readAll());
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
