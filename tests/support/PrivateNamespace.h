#pragma once

#include <QString>
#include <QStringList>

// Runs this test executable again inside "unshare" with flags such as "-rmn", where it may bind
// files, serve on any port and name its host without touching the machine. Returns true inside;
// outside it returns only when unshare cannot be started.
bool enterPrivateNamespace(int argc, char** argv, const char* flags);

// A new network namespace starts with its loopback interface down.
bool bringLoopbackUp();
// An interface of this namespace, up and carrying the addresses ("10.9.8.7/24", "fd00::7/64"):
// a dummy one, or an empty bridge where the kernel has no dummy driver. No address of its own is
// made up for it.
bool addInterface(const QString& name, const QStringList& addresses);
// Puts the file in the place of target, such as /etc/hosts, for this namespace only.
bool bindFile(const QString& file, const QString& target);

// Makes the folder read-only for this namespace only.
bool bindReadOnly(const QString& folder);

// Inside the run below: the folder of a file system of 8 KiB, mounted for this process only.
// Empty elsewhere.
QString tinyFileSystem();
// Writes a file there until the file system is full.
bool fillTinyFileSystem();
// Runs one test function of this executable (with ":row" when it has rows) again in a private
// mount namespace where tinyFileSystem() is set; returns that run's exit status.
int runWithTinyFileSystem(const QString& testFunction);
