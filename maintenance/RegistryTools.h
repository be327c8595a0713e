#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

// The product's file associations, the installed-programs list, the user's own environment
// variables and the user's SID. On Windows these live in the registry; on Linux in the
// freedesktop files that play the same parts (mimeapps.list, desktop entries, environment.d).
// Every function opens what it needs itself and caches nothing; failures are empty results or
// false.

// One installed program; a missing value is empty.
struct UninstallEntry
{
    QString InstallLocation;
    QString DisplayIcon;
    QString DisplayName;
    QString DisplayVersion;
};

#ifdef Q_OS_WIN
using RegistryKey = void*; // an open HKEY
#else
using RegistryKey = QString; // a key file: a desktop entry, mimeapps.list
#endif

// A text value of a sub-key (a key-file group); an empty value name is the default value.
QString readStringValue(const RegistryKey& key, const QString& subKey, const QString& valueName);

// The extensions, such as ".cvd", that are associated with the product in the user's
// (machine false) or the machine's settings.
QStringList productAssociations(const QString& productName, bool machine);
// Removes the association only while it still points at the product.
bool removeProductAssociation(const QString& extension, const QString& productName, bool machine);

// The installed programs whose display name contains nameContains, in any case; all of them when
// it is empty. Asking only for the product's spares reading every other program's version, which
// on Linux is a search of the package database.
QList<UninstallEntry> uninstallEntries(const QString& nameContains = QString());

// The user's own environment, which programs started later inherit.
QString environmentVariable(const QString& name);
bool setEnvironmentVariable(const QString& name, const QString& value);
bool removeEnvironmentVariable(const QString& name);

QString currentUserSid();

// Shared rules and the parsers of the Linux files. They are pure, so they run on every platform.

// Longer values are refused: they are the limit of a Windows environment variable.
constexpr int maximumValueLength = 32767;

// The product name without its blanks, followed by ".".
QString associationPrefix(const QString& productName);

// A group of a mimeapps.list ("Default Applications", "Added Associations") as the desktop's
// GLib reads it: each MIME type with its desktop-file ids, the last of repeated keys and groups
// winning. A value that is not UTF-8 names nothing for its type; a file GLib refuses (a leading
// byte-order mark, a line that is no group, assignment or comment) names nothing at all.
QMap<QString, QStringList> associationLists(const QByteArray& mimeapps, const QByteArray& group);
// The text without the product's desktop-file ids in either group, for those of the MIME types
// whose association is the product's (either group names it first). Other ids keep their order,
// a line left without ids goes, and every other byte stays as it was.
QByteArray withoutProductAssociations(const QByteArray& mimeapps, const QStringList& mimeTypes,
                                      const QString& productName);

// A value of a freedesktop key file; empty when absent, too long, or the text is not UTF-8.
QString keyFileValue(const QByteArray& text, const QString& group, const QString& key);
// The program of a desktop entry's Exec line, without its quotes and arguments, and past a
// leading "env" with its assignments.
QString execProgram(const QString& exec);
// "env", by its name or its path.
bool isEnvProgram(const QString& program);
// The support tool's own entry is no installed copy of the product: its name is the tool's, or
// its program (a desktop entry's Exec, a Windows DisplayIcon) is one of the tool's executables.
bool isSupportToolEntry(const QString& displayName, const QString& program);

// environment.d: NAME=VALUE lines; the last assignment wins.
QString environmentValue(const QByteArray& text, const QString& name);
// The text with one assignment of the name set to the value; other lines stay. Empty on a
// bad name or value.
QByteArray withEnvironmentValue(const QByteArray& text, const QString& name, const QString& value);
// The text without any assignment of the name.
QByteArray withoutEnvironmentValue(const QByteArray& text, const QString& name);
