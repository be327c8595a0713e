#include "FileDirTools.h"
#include "MessageLog.h"
#include "PrivateNamespace.h"
#include "ProductHome.h"
#include "RunAsNobody.h"
#include "TempFileName.h"
#include "TestEnvironment.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTest>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString oddName = u"it's a \"quoted\" Grüße Ωmega.txt"_s;
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
        QTest::newRow("238 bytes, no trash yet")
            << oddName + QString(238 - int(oddName.toUtf8().size()), 'n') << QString();
        // GLib leaves its record empty: the record's temporary name would be too long.
        QTest::newRow("245 bytes") << QString(245, 'n') << u"could not record"_s;
        QTest::newRow("246 bytes") << QString(246, 'n') << u"File name too long"_s;
        QTest::newRow("255 bytes") << QString(255, 'n') << u"File name too long"_s;
        QTest::newRow("read-only home") << oddName << u"Read-only file system"_s;
        QTest::newRow("full file system") << oddName << u"could not record"_s;
    }

    // A process per row, as GLib reads the home once. The item ends restorable in the trash or
    // whole where it was, after ten logged tries; "%1" in its path must not take the status.
    void trash()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        const QString tiny = tinyFileSystem();
        if (tiny.isEmpty()) {
            QCOMPARE(runWithTinyFileSystem(u"trash:"_s + QTest::currentDataTag()), 0);
            return;
        }
        const bool full = QTest::currentDataTag() == u"full file system"_s;
        const bool readOnly = QTest::currentDataTag() == u"read-only home"_s;
        const QString home = full ? tiny : m_environment.home();
        qputenv("HOME", home.toUtf8());
        qputenv("XDG_DATA_HOME", (home + u"/.local/share"_s).toUtf8());
        const QString folder = home + u"/dir x%1y"_s, item = folder + '/' + name;
        const QString trash = home + u"/.local/share/Trash"_s;
        QVERIFY(!QFileInfo::exists(trash) && putFile(item, {}));
        if (readOnly) {
            QVERIFY(QDir().mkpath(trash + u"/info"_s) && QDir().mkpath(trash + u"/files"_s));
            QVERIFY(bindReadOnly(home));
        }
        const auto cleanUp = qScopeGuard([&] {
            ::umount(QFile::encodeName(home).constData());
            removePermanently(m_environment.home());
        });
        QVERIFY(!full || fillTinyFileSystem());
        MessageLog log;
        QString error;
        const bool trashed = moveToRecycleBin(item, &error);
        QCOMPARE(trashed, reason.isEmpty());
        if (trashed) {
            QVERIFY(!QFileInfo::exists(item));
            QVERIFY(trashRestore(folder));
        } else {
            QVERIFY2(error.startsWith("Could not put \"" + item + "\" into the trash: ")
                         && error.contains(reason),
                     qPrintable(error));
            const QString tried = "Failed to put into Recycle Bin: " + item + " (status=";
            QCOMPARE(log.messages().filter(tried).size(), 10);
            QCOMPARE(QDir(trash + u"/info"_s).entryList(QDir::Files | QDir::Hidden), {});
        }
        QVERIFY(QFileInfo::exists(item));
    }

    void copyFile_data()
    {
        QTest::addColumn<QString>("destination"); // empty: the source itself
        QTest::addColumn<bool>("existing");
        QTest::addColumn<bool>("keepTimes");
        QTest::newRow("keep times") << u"keep "_s + oddName << false << true;
        QTest::newRow("new times") << u"new "_s + oddName << true << false;
        // Two files on a case-sensitive system, so the copy must not rename the source away.
        QTest::newRow("other case") << u"SOURCE other case"_s << true << false;
        QTest::newRow("same path") << QString() << false << true;
        // The source under another name: nothing may be emptied, and nothing needs copying.
        QTest::newRow("through a dot") << u"./source through a dot"_s << false << true;
    }

    void copyFile()
    {
        QFETCH(QString, destination);
        QFETCH(bool, existing);
        QFETCH(bool, keepTimes);
        const QString source = path(u"source "_s + QTest::currentDataTag());
        destination = destination.isEmpty() ? source : path(destination);
        QFile file(source);
        QVERIFY(putFile(source, "copy me") && file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(oldTime, QFile::FileModificationTime));
        file.close();
        QVERIFY(!existing || putFile(destination, "old"));
        QString error;
        QVERIFY(::copyFile(source, destination, keepTimes && destination != source, &error));
        QVERIFY(error.isEmpty());
        QCOMPARE(fileBytes(destination), QByteArray("copy me"));
        QCOMPARE(fileBytes(source), QByteArray("copy me"));
        QCOMPARE(QFileInfo(destination).lastModified().toUTC() == oldTime, keepTimes);
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

    // In a mount namespace with a file system of 8 KiB, to move to another file system.
    void moveFile()
    {
        const QString tiny = tinyFileSystem();
        if (tiny.isEmpty()) {
            QCOMPARE(runWithTinyFileSystem(u"moveFile"_s), 0);
            return;
        }
        const QString source = path(oddName);
        const QString destination = path(u"moved "_s + oddName);
        QVERIFY(putFile(source, "new") && putFile(destination, "old"));
        QString error;
        QVERIFY(::moveFile(source, destination, &error));
        QVERIFY(!QFileInfo::exists(source));
        QCOMPARE(fileBytes(destination), QByteArray("new"));

        // A missing source fails at once, without retries.
        MessageLog log;
        QVERIFY(!::moveFile(source, destination, &error));
        QVERIFY(log.messages().isEmpty());

        // Another file system: copied without retries; the source goes only after a whole copy,
        // and a read error (EIO from /proc/self/mem's first page) is no end of the file.
        error.clear();
        QVERIFY(::moveFile(destination, tiny + u"/moved"_s, &error));
        QCOMPARE(fileBytes(tiny + u"/moved"_s), QByteArray("new"));
        QVERIFY(!QFileInfo::exists(destination) && error.isEmpty());
        QVERIFY(log.messages().isEmpty());
        QVERIFY(!::moveFile(u"/proc/self/mem"_s, path(u"memory.bin"_s), &error));
        QCOMPARE(error, u"Could not rename file."_s);
        QCOMPARE(log.messages().last(), u"Could not read input file. Input/output error"_s);
        // A copy that runs out of space keeps the source whole.
        const QByteArray bytes(64 * 1024, 'x');
        QVERIFY(putFile(source, bytes));
        QVERIFY(!::moveFile(source, tiny + u"/big"_s, &error));
        QCOMPARE(error, u"Could not rename file."_s);
        QCOMPARE(fileBytes(source), bytes);
    }

    // A link goes and its target keeps its permissions (as nobody, since root writes anyway).
    void removeFileLeavesLinkTargets()
    {
        RUN_AS_NOBODY_WHEN_ROOT();
        const QString target = path(u"read-only target"_s);
        QVERIFY(putFile(target, "kept") && QFile::setPermissions(target, QFile::ReadOwner));
        QVERIFY(QFile::link(target, path(u"link"_s)));
        QVERIFY(::removeFile(path(u"link"_s)));
        QVERIFY(!QFileInfo(path(u"link"_s)).isSymbolicLink());
        QCOMPARE(::permissionsText(target, true), u"-r--------"_s);
    }

    void openChecked_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("mode"); // the file is written with this mode when not 0
        QTest::addColumn<bool>("stream");
        QTest::addColumn<bool>("writing");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QString& file, int mode, bool writing,
                            const char* reason) {
            for (const QString kind : {"open", "fopen"}) {
                QTest::addRow("%s %s", qPrintable(kind), name)
                    << file << mode << kind.startsWith('f') << writing
                    << u"Failed to %1 \"%2\""_s.arg(kind, file) + reason;
            }
        };
        row("missing", path(u"absent "_s + oddName), 0, false,
            " as read only because it does not exist.");
        // "%1" in a path must not take the values meant for the message.
        row("errno, %1 in the path", path(u"x%1y/file.txt"_s), 0, true,
            ". No such file or directory (errno=2)");
        row("unreadable", path(oddName), 0200, true, " because it is not readable.");
        row("read only", path(oddName), 0400, true, " as writable because it is read only.");
    }

    void openChecked()
    {
        QFETCH(QString, file);
        QFETCH(int, mode);
        QFETCH(bool, stream);
        QFETCH(bool, writing);
        QFETCH(QString, reason);
        if (mode) {
            RUN_AS_NOBODY_WHEN_ROOT();
            QVERIFY(putFile(file, "guarded"));
            QCOMPARE(::chmod(QFile::encodeName(file).constData(), mode_t(mode)), 0);
        }
        MessageLog log;
        QString refusal;
        if (stream)
            QVERIFY(!fopenChecked(file, writing ? "wb" : "rb", &refusal));
        else
            QVERIFY(::openChecked(file, writing ? OpenWriteOnly : OpenReadOnly, &refusal) < 0);
        QCOMPARE(refusal, reason);
        QCOMPARE(log.messages(), QStringList{reason});
        QFile::remove(file);
    }
};

QTEST_GUILESS_MAIN(tst_FileDirTools)
#include "tst_filedirtools.moc"
