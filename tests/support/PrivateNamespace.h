#pragma once

#include <QString>
#include <QStringList>

// Runs this executable again inside "unshare" with flags such as "-rmn", to bind files, serve on
// any port and name its host unseen by the machine; true inside, false if unshare cannot start.
bool enterPrivateNamespace(int argc, char** argv, const char* flags);

// A new network namespace starts with its loopback interface down.
bool bringLoopbackUp();
// A dummy interface (an empty bridge without the dummy driver), up with just these addresses.
bool addInterface(const QString& name, const QStringList& addresses);
// Puts the file in the place of target, such as /etc/hosts, for this namespace only.
bool bindFile(const QString& file, const QString& target);
// Makes the folder read-only for this namespace only.
bool bindReadOnly(const QString& folder);

// Inside runWithTinyFileSystem(): the folder of a private 8 KiB file system; else empty.
QString tinyFileSystem();
// Writes a file there until the file system is full.
bool fillTinyFileSystem();
// Runs one test function of this executable (with ":row" when it has rows) again in a private
// mount namespace where tinyFileSystem() is set; returns that run's exit status.
int runWithTinyFileSystem(const QString& testFunction);
