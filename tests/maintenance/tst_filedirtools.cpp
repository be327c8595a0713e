#include "FileDirTools.h"
#include "MessageLog.h"
#include "TempFileName.h"
#include "TestEnvironment.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTest>
#include <QUrl>

#include "RunAsNobody.h"
#ifndef Q_OS_WIN // namespaces and the freedesktop trash
#include "PrivateNamespace.h"
#include "ProductHome.h"

#include <sys/mount.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// Windows takes no '"' in a name, and putFile() hands its C runtime 8-bit names.
const QString oddName =
    windows ? u"it's a 'quoted' name.txt"_s : u"it's a \"quoted\" Grüße Ωmega.txt"_s;
const QDateTime oldTime(QDate(2001, 2, 3), QTime(4, 5, 6), Qt::UTC);

} // namespace

class tst_FileDirTools : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;
    QString path(const QString& relative) const { return m_environment.path(relative); }

private slots:
    // Names in the tool's temporary folder, one per holder.
    void tempFileNames()
    {
        TempFileName first;
        const QString a = first.uniqueTempFileName();
        QCOMPARE(first.uniqueTempFileName(), a);
        QVERIFY(TempFileName().uniqueTempFileName() != a);
        QCOMPARE(QFileInfo(a).absolutePath(),
                 path(".local/share/" + QCoreApplication::applicationName() + "/temp"));
    }

    void trash_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason"); // empty: the item is trashed
#ifdef Q_OS_WIN
        // The Recycle Bin's limit: 258 characters of the native path, which takes two folders.
        const int room = 258 - int(QDir::toNativeSeparators(path(u"dir x%1y/"_s)).size());
        const QString name = oddName + '/' + QString(room - int(oddName.size()) - 1, 'n');
        QTest::newRow("258 characters") << name << QString();
        QTest::newRow("259 characters")
            << name + 'n' << u"The path is longer than 258 characters."_s;
        // Wine makes its trash's folders once a process; without them it says yes, keeps the item.
        QTest::newRow("trash folders gone") << u"kept.txt"_s << u"It was left in its place."_s;
#else
        QTest::newRow("238 bytes, no trash yet")
            << oddName + QString(238 - int(oddName.toUtf8().size()), 'n') << QString();
        // GLib leaves its record empty: the record's temporary name would be too long.
        QTest::newRow("245 bytes") << QString(245, 'n') << u"could not record"_s;
        QTest::newRow("246 bytes") << QString(246, 'n') << u"File name too long"_s;
        QTest::newRow("255 bytes") << QString(255, 'n') << u"File name too long"_s;
        QTest::newRow("read-only home") << oddName << u"Read-only file system"_s;
        QTest::newRow("full file system") << oddName << u"could not record"_s;
#endif
    }

    // The item ends in the trash, with its record, or whole where it was, after ten logged tries
    // (none for a path too long for Windows); "%1" in its path must not take the status.
    void trash()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        QString home = m_environment.home();
#ifdef Q_OS_WIN
        const QString trash = qEnvironmentVariable("CORVANTA_TEST_TRASH");
        QVERIFY(QTest::currentDataTag() != u"trash folders gone"_s
                || QDir(trash).removeRecursively());
#else // a process per row, as GLib reads the home once
        const QString tiny = tinyFileSystem();
        if (tiny.isEmpty()) {
            QCOMPARE(runWithTinyFileSystem(u"trash:"_s + QTest::currentDataTag()), 0);
            return;
        }
        const bool full = QTest::currentDataTag() == u"full file system"_s;
        home = full ? tiny : home;
        qputenv("HOME", home.toUtf8());
        qputenv("XDG_DATA_HOME", (home + u"/.local/share"_s).toUtf8());
        const QString trash = home + u"/.local/share/Trash"_s;
        QVERIFY(!QFileInfo::exists(trash));
#endif
        const QString folder = home + u"/dir x%1y"_s, item = folder + '/' + name;
        const QDir info(trash + u"/info"_s, {}, QDir::NoSort, QDir::Files | QDir::Hidden);
        const qsizetype records = info.count();
        QVERIFY(putFile(item, {}));
#ifndef Q_OS_WIN
        QVERIFY(QTest::currentDataTag() != u"read-only home"_s
                || (QDir().mkpath(trash + u"/info"_s) && QDir().mkpath(trash + u"/files"_s)
                    && bindReadOnly(home)));
        const auto cleanUp = qScopeGuard([&] {
            ::umount(QFile::encodeName(home).constData());
            removePermanently(m_environment.home());
        });
        QVERIFY(!full || fillTinyFileSystem());
#endif
        MessageLog log;
        QString error;
        const bool trashed = moveToRecycleBin(item, &error);
        QCOMPARE(trashed, reason.isEmpty());
        info.refresh(); // QDir keeps what it listed
        QCOMPARE(info.count(), records + (trashed ? 1 : 0));
        if (trashed) {
            QVERIFY(!QFileInfo::exists(item));
#ifdef Q_OS_WIN // Wine's Recycle Bin is the trash of the Unix home; a record names the item
            const QString record = trash + u"/info/"_s + item.section('/', -1) + u".trashinfo"_s;
            QVERIFY(QUrl::fromPercentEncoding(fileBytes(record)).contains(item.mid(2) + '\n'));
#else
            QVERIFY(trashRestore(folder) && QFileInfo::exists(item));
#endif
        } else {
            // GLib's own words hold the reason; ours are the reason.
            const QString lead = u"Could not put \"%1\" into the trash: "_s.arg(item);
            QVERIFY2(windows ? error == lead + reason
                             : error.startsWith(lead) && error.contains(reason),
                     qPrintable(error));
            const QString tried =
                "Failed to put into Recycle Bin: " + QDir::toNativeSeparators(item) + " (status=";
            QCOMPARE(log.messages().filter(tried).size(),
                     reason.startsWith(u"The path"_s) ? 0 : 10);
            QVERIFY(QFileInfo::exists(item));
        }
    }

    void copyFile_data()
    {
        QTest::addColumn<QString>("destination"); // empty: the source itself
        QTest::addColumn<bool>("existing");
        QTest::addColumn<bool>("keepTimes");
        QTest::newRow("keep times") << u"keep "_s + oddName << false << true;
        QTest::newRow("new times") << u"new "_s + oddName << true << false;
        // Two files on a case-sensitive system, so the copy must not rename the source away; on
        // Windows one, which must not be emptied. (Wine 8 keeps the old case of a renamed file.)
        QTest::newRow("other case") << u"SOURCE other case"_s << !windows << false;
        QTest::newRow("same path") << QString() << false << true;
        // The source under another name: nothing may be emptied, and nothing needs copying.
        QTest::newRow("through a dot") << u"./source through a dot"_s << false << true;
        QTest::newRow("read-only source") << u"copy of a read-only source"_s << true << true;
    }

    void copyFile()
    {
        QFETCH(QString, destination);
        QFETCH(bool, existing);
        QFETCH(bool, keepTimes);
        const QString source = path(u"source "_s + QTest::currentDataTag());
        destination = destination.isEmpty() ? source : path(destination);
        QFile file(source);
        QVERIFY(putFile(source, "copy me") && file.open(QIODevice::ReadWrite)
                && file.setFileTime(oldTime, QFile::FileModificationTime));
        file.close();
        QVERIFY(!existing || putFile(destination, "old"));
        QVERIFY(QTest::currentDataTag() != u"read-only source"_s
                || QFile::setPermissions(source, QFile::ReadOwner));
        QString error;
        QVERIFY2(::copyFile(source, destination, keepTimes && destination != source, &error)
                     && error.isEmpty(),
                 qPrintable(error));
        QCOMPARE(fileBytes(destination), QByteArray("copy me"));
        QCOMPARE(fileBytes(source), QByteArray("copy me"));
        // CopyFileExW keeps the modification time itself.
        QCOMPARE(QFileInfo(destination).lastModified().toUTC() == oldTime, keepTimes || windows);
    }

    // A folder as the source is refused before the destination is opened and emptied.
    void copyFromAFolder()
    {
        const QString folder = path(u"a folder"_s), kept = path(u"kept.txt"_s);
        QVERIFY(QDir().mkpath(folder) && putFile(kept, "kept"));
        MessageLog log;
        QString error;
        QVERIFY(!::copyFile(folder, kept, true, &error));
        QCOMPARE(error, u"Could not open input file."_s);
        QCOMPARE(fileBytes(kept), QByteArray("kept"));
        QCOMPARE(log.messages(),
                 QStringList{u"Failed to open \"%1\" because it is a directory."_s.arg(folder)});
    }

    // A read-only file moves as any other.
    void moveFile()
    {
#ifndef Q_OS_WIN // in a mount namespace with a file system of 8 KiB, to move to another one
        const QString tiny = tinyFileSystem();
        if (tiny.isEmpty()) {
            QCOMPARE(runWithTinyFileSystem(u"moveFile"_s), 0);
            return;
        }
#endif
        const QString source = path(oddName), destination = path(u"moved "_s + oddName);
        QVERIFY(putFile(source, "new") && putFile(destination, "old"));
        QVERIFY(QFile::setPermissions(source, QFile::ReadOwner));
        QString error;
        QVERIFY(::moveFile(source, destination, &error) && !QFileInfo::exists(source));
        QCOMPARE(fileBytes(destination), QByteArray("new"));

        // A missing source fails at once, without retries.
        MessageLog log;
        QVERIFY(!::moveFile(source, destination, &error) && log.messages().isEmpty());
#ifndef Q_OS_WIN
        // Another file system: copied without retries; the source goes only after a whole copy,
        // and a read error (EIO from /proc/self/mem's first page) is no end of the file.
        error.clear();
        QVERIFY(::moveFile(destination, tiny + u"/moved"_s, &error));
        QCOMPARE(fileBytes(tiny + u"/moved"_s), QByteArray("new"));
        QVERIFY(!QFileInfo::exists(destination) && error.isEmpty() && log.messages().isEmpty());
        QVERIFY(!::moveFile(u"/proc/self/mem"_s, path(u"memory.bin"_s), &error));
        QCOMPARE(error, u"Could not rename file."_s);
        QCOMPARE(log.messages().last(), u"Could not read input file. Input/output error"_s);
        // A copy that runs out of space keeps the source whole.
        const QByteArray bytes(64 * 1024, 'x');
        QVERIFY(putFile(source, bytes) && !::moveFile(source, tiny + u"/big"_s, &error));
        QCOMPARE(error, u"Could not rename file."_s);
        QCOMPARE(fileBytes(source), bytes);
#endif
    }

    // Windows keeps one read-only attribute for all users, and removes no read-only file until it
    // is made writable. A link goes, and its target keeps its permissions.
    void removeReadOnly()
    {
        RUN_AS_NOBODY_WHEN_ROOT();
        const QString folder = path(u"folder"_s), target = folder + u"/read-only"_s,
                      copy = path(u"copy"_s);
        QVERIFY(putFile(target, "kept") && QFile::setPermissions(target, QFile::ReadOwner));
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                                  | QFile::ReadOther));
#ifndef Q_OS_WIN // links on Windows need a privilege
        QVERIFY(QFile::link(target, path(u"link"_s)) && ::removeFile(path(u"link"_s))
                && !QFileInfo(path(u"link"_s)).isSymbolicLink());
#endif
        QCOMPARE(::permissionsText(target, true) + ' ' + ::permissionsText(folder, true),
                 windows ? u"-r--r--r-- drwxrwxrwx"_s : u"-r-------- drwx---r--"_s);
        QVERIFY(QFile::copy(target, copy) && ::removeFile(copy) && !QFileInfo::exists(copy));
        QVERIFY(::removePermanently(folder) && !QFileInfo::exists(folder));
    }

    void openChecked_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("permissions"); // the file is written with these when not 0
        QTest::addColumn<bool>("writing");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QString& file, int permissions, bool writing,
                            const char* reason) {
            for (const QString kind : {"open", "fopen"}) {
                QTest::addRow("%s %s", qPrintable(kind), name)
                    << file << permissions << writing
                    << u"Failed to %1 \"%2\""_s.arg(kind, file) + reason;
            }
        };
        row("missing", path(u"absent "_s + oddName), 0, false,
            " as read only because it does not exist.");
        // "%1" in a path must not take the values meant for the message.
        row("errno, %1 in the path", path(u"x%1y/file.txt"_s), 0, true,
            ". No such file or directory (errno=2)");
#ifndef Q_OS_WIN // Windows cannot take reading away
        row("unreadable", path(oddName), QFile::WriteOwner, true, " because it is not readable.");
#endif
        // On Windows, the read-only attribute.
        row("read only", path(oddName), QFile::ReadOwner, true,
            " as writable because it is read only.");
    }

    void openChecked()
    {
        QFETCH(QString, file);
        QFETCH(int, permissions);
        QFETCH(bool, writing);
        QFETCH(QString, reason);
        if (permissions) {
            RUN_AS_NOBODY_WHEN_ROOT();
            QVERIFY(putFile(file, "guarded")
                    && QFile::setPermissions(file, QFile::Permissions(permissions)));
        }
        MessageLog log;
        QString refusal;
        QVERIFY(QByteArray(QTest::currentDataTag()).startsWith("fopen")
                    ? !fopenChecked(file, writing ? "wb" : "rb", &refusal)
                    : ::openChecked(file, writing ? OpenWriteOnly : OpenReadOnly, &refusal) < 0);
        QCOMPARE(refusal, reason);
        QCOMPARE(log.messages(), QStringList{reason});
        ::removeFile(file);
    }
};

QTEST_GUILESS_MAIN(tst_FileDirTools)
#include "tst_filedirtools.moc"
