#pragma once

#include "FileDirTools.h"

#include <QList>
#include <QString>
#include <QtGlobal>

#include <cstdio>

// The single operating-system calls behind FileDirTools, one implementation per platform. Each
// makes one attempt; retries, messages and checks stay in FileDirTools.cpp.
namespace FileDirPlatform {

// The folder of a known kind (0 to 3), with "/" separators.
bool standardFolder(int kind, QString& path);

// Whether the Recycle Bin refuses paths longer than MAX_PATH.
bool recycleBinHasPathLimit();
// One attempt. When it fails, status is the system's result code and reason its text, if any.
// An item whose record the trash could not write is moved back first.
bool moveToRecycleBin(const QString& path, int& status, QString& reason);
enum class EntryKind {
    Missing,
    File,
    Folder, // a folder itself, not a link to one
    Link,
};
// What is at the path itself, links not followed.
EntryKind entryKind(const QString& path);

struct DirectoryEntry
{
    QString name;
    bool isFolder = false; // a folder itself, not a link to one
};
// Every entry of the folder but "." and "..", links not followed; names as decodeFileName gives.
QList<DirectoryEntry> folderEntries(const QString& folder);
// Whether the user may write what the path leads to, by the name's own bytes.
WriteAccess writeAccess(const QString& path);
// Removes one file, link or empty folder.
bool removeEntry(const QString& path, bool isFolder);

// Every mount point of the system, so that no deletion crosses into another file system.
QStringList mountPoints();

// Whether two existing names lead to the same file: the same volume and the same file number.
bool isSameFile(const QString& first, const QString& second);

bool fastCopy(const QString& source, const QString& destination);

// Creation and modification times in the platform's own units; creation cannot be set
// everywhere and is then left as it is.
struct FileTimes
{
    qint64 created = 0;
    qint64 modified = 0;
};
bool readFileTimes(const QString& path, FileTimes& times);
bool restoreFileTimes(const QString& path, const FileTimes& times);

enum class RenameResult {
    Renamed,
    Failed,
    // The system cannot move between these two file systems itself; retrying will not help.
    OtherVolume,
};
// One replacing rename that may copy across volumes.
RenameResult rename(const QString& source, const QString& destination);

// flags are the C-runtime values of OpenFlags.
int open(const QString& path, int flags);
FILE* fopen(const QString& path, const char* mode);
qint64 read(int fd, char* buffer, qint64 length);
qint64 write(int fd, const char* buffer, qint64 length);
int close(int fd);

qint64 processId();

} // namespace FileDirPlatform
