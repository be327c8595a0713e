#pragma once

#include <QString>
#include <QStringList>

#include <cstdio>

// File-system helpers shared by every part of the tool. Paths use "/" throughout; native
// separators appear only at the operating-system calls. Failures are values (false, -1 or null)
// and their reasons go to the debug log; texts handed back to callers are translatable under the
// context "FileDirTools".

// 0 roaming application data, 1 local application data, 2 documents, 3 data common to all users.
using StandardFolderKind = int;

bool standardFolderPath(StandardFolderKind kind, QString& path);
// The standard folder joined with the application name.
QString appDataFolder(StandardFolderKind kind);
// The tool's own temporary folder, computed once per process.
QString tempFolder();
bool makePath(const QString& path);

// Compact: "drwxr-x---" style; long: "ReadOwner=1 WriteOwner=1 ..." with the user bits as well.
QString permissionsText(const QString& path, bool compact);

// Whether anything is at the path, a link to nothing included, whatever bytes its name is.
bool entryExists(const QString& path);

// Whether a file may be opened for reading. Anything but a regular file is refused unopened, and
// the reason logged: a FIFO would hold the open until a writer comes, a device may never end. A
// missing file passes; its open fails by itself.
bool isSafeToRead(const QString& path);

enum class WriteAccess {
    Writable,
    NotWritable,
    LeadsNowhere, // a link to nothing
};
// Whether the user may write what the path leads to, whatever bytes its name is.
WriteAccess writeAccess(const QString& path);

// The Recycle Bin takes native paths of at most 258 characters (MAX_PATH less the list's two
// terminating zeros).
bool exceedsRecycleBinPathLimit(const QString& nativePath);
// An item the trash refuses stays where it was, whole; errorText then says why.
bool moveToRecycleBin(const QString& path, QString* errorText = nullptr);
// Returns the paths that could not be moved; errorText gets one line for each, saying why.
QStringList moveAllToRecycleBin(const QStringList& paths, QString* errorText = nullptr);

// Deletes the file, link or folder for good. Links go themselves, never what they lead to, and
// nothing crosses into another file system: a mount point inside is left with the folders that
// lead to it. errorText names what was left. True when nothing is left.
bool removePermanently(const QString& path, QString* errorText = nullptr);

// Shows the path selected in the desktop's file manager. An empty path does nothing.
void revealInExplorer(const QString& path);

bool copyFile(const QString& source, const QString& destination, bool keepTimes = false,
              QString* errorText = nullptr);
bool moveFile(const QString& source, const QString& destination, QString* errorText = nullptr);

// C-runtime open flags as the tool passes them on every platform.
enum OpenFlags {
    OpenReadOnly = 0x8000,
    OpenWriteOnly = 0x8001,
    OpenReadWrite = 0x8002,
};

// Opens a descriptor after checking why it could not be opened; the reason is logged and written
// to errorText. Returns the descriptor, or -1. Asking for writing creates a missing file.
int openChecked(const QString& path, int flags, QString* errorText = nullptr);
// The same checks for a C stream with an fopen mode; null on failure.
FILE* fopenChecked(const QString& path, const char* mode, QString* errorText = nullptr);
int closeDescriptor(int fd);

bool createEmptyFile(const QString& path);
bool removeFile(const QString& path);
// Writes the text as UTF-8, replacing the file.
bool writeTextFile(const QString& path, const QString& text);
