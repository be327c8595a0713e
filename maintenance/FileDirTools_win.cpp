#include "FileDirTools.h"
#include "FileDirTools_p.h"

#include "win32/fileops.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <io.h>
#include <process.h>

namespace {

std::wstring native(const QString& path)
{
    return QDir::toNativeSeparators(path).toStdWString();
}

} // namespace

namespace FileDirPlatform {

bool standardFolder(int kind, QString& path)
{
    std::wstring folder;
    if (!win32::folderPath(kind, folder))
        return false;
    path = QDir::fromNativeSeparators(QString::fromStdWString(folder));
    return true;
}

bool recycleBinHasPathLimit()
{
    return true;
}

bool moveToRecycleBin(const QString& path, int& status, QString&)
{
    status = win32::moveToRecycleBin(native(path));
    return status == 0;
}

EntryKind entryKind(const QString& path)
{
    const QFileInfo info(path);
    if (info.isSymbolicLink() || info.isJunction())
        return EntryKind::Link;
    if (!info.exists())
        return EntryKind::Missing;
    return info.isDir() ? EntryKind::Folder : EntryKind::File;
}

QList<DirectoryEntry> folderEntries(const QString& folder)
{
    QList<DirectoryEntry> entries;
    const QFileInfoList infos = QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden
                                                           | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& info : infos) {
        const bool isLink = info.isSymbolicLink() || info.isJunction();
        entries.append({info.fileName(), info.isDir() && !isLink});
    }
    return entries;
}

// A read-only file cannot be removed until it is made writable; a link's target is never touched.
bool removeEntry(const QString& path, bool isFolder)
{
    if (isFolder)
        return QDir().rmdir(path);
    if (QFile::remove(path) || QDir().rmdir(path))
        return true;
    const QFileInfo info(path);
    return !info.isSymbolicLink() && !info.isJunction()
           && QFile::setPermissions(path, info.permissions() | QFile::WriteOwner)
           && QFile::remove(path);
}

// Folders mounted inside others are junctions, which every deletion leaves as links.
QStringList mountPoints()
{
    return {};
}

bool isSameFile(const QString& first, const QString& second)
{
    return win32::isSameFile(native(first), native(second));
}

bool fastCopy(const QString& source, const QString& destination)
{
    return win32::copyFile(native(source), native(destination));
}

bool readFileTimes(const QString& path, FileTimes& times)
{
    win32::FileTimes values;
    if (!win32::readFileTimes(native(path), values))
        return false;
    times.created = qint64(values.created);
    times.modified = qint64(values.modified);
    return true;
}

bool restoreFileTimes(const QString& path, const FileTimes& times)
{
    win32::FileTimes values;
    values.created = quint64(times.created);
    values.modified = quint64(times.modified);
    return win32::writeFileTimes(native(path), values);
}

RenameResult rename(const QString& source, const QString& destination)
{
    // MoveFileExW copies across volumes itself.
    return win32::moveFile(native(source), native(destination)) ? RenameResult::Renamed
                                                                : RenameResult::Failed;
}

int open(const QString& path, int flags)
{
    return win32::openFile(native(path), flags);
}

FILE* fopen(const QString& path, const char* mode)
{
    return win32::openStream(native(path), QString::fromLatin1(mode).toStdWString());
}

qint64 read(int fd, char* buffer, qint64 length)
{
    return _read(fd, buffer, unsigned(length));
}

qint64 write(int fd, const char* buffer, qint64 length)
{
    return _write(fd, buffer, unsigned(length));
}

int close(int fd)
{
    return _close(fd);
}

qint64 processId()
{
    return _getpid();
}

// Names there are UTF-16, which Qt takes whole.
WriteAccess writeAccess(const QString& path)
{
    const QFileInfo info(path);
    return info.isWritable()                    ? WriteAccess::Writable
           : info.isSymLink() && !info.exists() ? WriteAccess::LeadsNowhere
                                                : WriteAccess::NotWritable;
}

} // namespace FileDirPlatform

void revealInExplorer(const QString& path)
{
    if (path.isEmpty())
        return;
    QProcess::startDetached(QStringLiteral("explorer.exe"),
                            {QStringLiteral("/select,"), QDir::toNativeSeparators(path)},
                            QString());
}
