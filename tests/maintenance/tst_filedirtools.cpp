#include "FileDirTools.h"
#include "MessageLog.h"
#include "TestEnvironment.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString oddName = QStringLiteral("it's a \"quoted\" Grüße Ωmega.txt");
const QDateTime oldTime(QDate(2001, 2, 3), QTime(4, 5, 6), Qt::UTC);

bool writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

bool setModified(const QString& path, const QDateTime& time)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite) && file.setFileTime(time, QFile::FileModificationTime);
}

// Root passes every permission check, so denial cases run again in a child process as nobody.
// Returns the child's output when it failed, else an empty text.
QString failureAsNobody()
{
    const QString name = QString::fromLatin1(QTest::currentTestFunction());
    const QString tag = QString::fromLatin1(QTest::currentDataTag());
    const QString function = tag.isEmpty() ? name : name + QLatin1Char(':') + tag;
    QProcess child;
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QStringLiteral("setpriv"),
                {QStringLiteral("--reuid=nobody"), QStringLiteral("--regid=nogroup"),
                 QStringLiteral("--clear-groups"), QCoreApplication::applicationFilePath(),
                 function});
    if (!child.waitForFinished(60000))
        return QStringLiteral("setpriv did not finish: ") + child.errorString();
    const QString output = QString::fromUtf8(child.readAll());
    if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0)
        return output;
    // A child that ran or skipped nothing would also exit with 0.
    const QString passed =
        QStringLiteral("PASS   : tst_FileDirTools::%1%2")
            .arg(name, tag.isEmpty() ? QString() : QStringLiteral("(%1)").arg(tag));
    return output.contains(passed) && !output.contains(QStringLiteral("SKIP")) ? QString() : output;
}

#define RUN_AS_NOBODY_WHEN_ROOT()                                                                  \
    if (::geteuid() == 0) {                                                                        \
        const QString failure = failureAsNobody();                                                 \
        QVERIFY2(failure.isEmpty(), qPrintable(failure));                                          \
        return;                                                                                    \
    }

QString openReason(const QString& path, bool stream, bool writing)
{
    QString reason;
    if (stream) {
        FILE* file = fopenChecked(path, writing ? "wb" : "rb", &reason);
        if (file)
            std::fclose(file);
    } else {
        const int fd = openChecked(path, writing ? OpenWriteOnly : OpenReadOnly, &reason);
        if (fd >= 0)
            closeDescriptor(fd);
    }
    return reason;
}

} // namespace

class tst_FileDirTools : public QObject
{
    Q_OBJECT

private slots:
    void standardFolders_data();
    void standardFolders();
    void recycleBinPathLimit_data();
    void recycleBinPathLimit();
    void permissionsText_data();
    void permissionsText();
    void trashIsListedAndRestorable_data();
    void trashIsListedAndRestorable();
    void trashFailsInReadOnlyFolder();
    void copyToSamePathLeavesFileAlone();
    void copyKeepsTimesOnRequest_data();
    void copyKeepsTimesOnRequest();
    void copyToOtherCaseOnCaseSensitiveSystemCopies();
    void copyFailures_data();
    void copyFailures();
    void moveFile();
    void moveFailsAfterRetriesAndCopy();
    void openChecked_data();
    void openChecked();
    void openDenied_data();
    void openDenied();
    void openForWritingCreatesFile();
    void writeTextFileRoundTrip();
    void writeTextFileFailureIsLogged();
    void removeFile();

private:
    TestEnvironment m_environment;
};

void tst_FileDirTools::standardFolders_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("expected");
    QTest::newRow("roaming") << 0 << m_environment.path(QStringLiteral(".local/share"));
    QTest::newRow("local") << 1 << m_environment.path(QStringLiteral(".cache"));
    QTest::newRow("documents") << 2 << m_environment.path(QStringLiteral("Documents"));
    QTest::newRow("common") << 3 << QStringLiteral("/var/lib");
    QTest::newRow("below range") << -1 << QString();
    QTest::newRow("above range") << 4 << QString();
}

void tst_FileDirTools::standardFolders()
{
    QFETCH(int, kind);
    QFETCH(QString, expected);
    QString path;
    QCOMPARE(standardFolderPath(kind, path), !expected.isEmpty());
    QCOMPARE(path, expected);
    const QString app = QCoreApplication::applicationName();
    QCOMPARE(appDataFolder(kind), expected.isEmpty() ? app : expected + QLatin1Char('/') + app);
}

void tst_FileDirTools::recycleBinPathLimit_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("exceeds");
    QTest::newRow("258") << 258 << false;
    QTest::newRow("259") << 259 << true;
}

void tst_FileDirTools::recycleBinPathLimit()
{
    QFETCH(int, length);
    QFETCH(bool, exceeds);
    QCOMPARE(
        exceedsRecycleBinPathLimit(QStringLiteral("C:\\") + QString(length - 3, QLatin1Char('a'))),
        exceeds);
}

void tst_FileDirTools::permissionsText_data()
{
    QTest::addColumn<bool>("directory");
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("compact");
    QTest::addColumn<QString>("expected");
    QTest::newRow("directory") << true << 0750 << true << QStringLiteral("drwxr-x---");
    QTest::newRow("owner only") << false << 0600 << true << QStringLiteral("-rw-------");
    QTest::newRow("others execute") << false << 0701 << true << QStringLiteral("-rwx-----x");
    QTest::newRow("long") << false << 0640 << false
                          << QStringLiteral("ReadOwner=1 WriteOwner=1 ExeOwner=0 ReadUser=1 "
                                            "WriteUser=1 ExeUser=0 ReadGroup=1 WriteGroup=0 "
                                            "ExeGroup=0 ReadOther=0 WriteOther=0 ExeOther=0");
}

void tst_FileDirTools::permissionsText()
{
    QFETCH(bool, directory);
    QFETCH(int, mode);
    QFETCH(bool, compact);
    QFETCH(QString, expected);
    const QString path =
        m_environment.path(QStringLiteral("permissions ") + QTest::currentDataTag());
    QVERIFY(directory ? QDir().mkpath(path) : writeBytes(path, "x"));
    QVERIFY(::chmod(QFile::encodeName(path).constData(), mode_t(mode)) == 0);
    QCOMPARE(::permissionsText(path, compact), expected);
}

void tst_FileDirTools::trashIsListedAndRestorable_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QStringLiteral("plain.bin");
    QTest::newRow("odd name") << oddName;
}

void tst_FileDirTools::trashIsListedAndRestorable()
{
    QFETCH(QString, name);
    TestEnvironment home;
    QVERIFY(!QFileInfo::exists(home.path(QStringLiteral(".local/share"))));
    const QString cwd = home.path(QStringLiteral("cwd"));
    QVERIFY(QDir().mkpath(cwd));
    const QString savedCwd = QDir::currentPath();
    QDir::setCurrent(cwd);
    const QString folder = home.path(QStringLiteral("folder with spaces"));
    QVERIFY(QDir().mkpath(folder));
    const QString path = folder + QLatin1Char('/') + name;
    const QByteArray content("binary \0\xff\xfe content\n", 20);
    QVERIFY(writeBytes(path, content));

    const bool trashed = moveToRecycleBin(path);
    QDir::setCurrent(savedCwd);
    QVERIFY(trashed);
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(QDir(cwd).isEmpty());

    QProcess list;
    list.setProcessEnvironment(home.processEnvironment());
    list.start(QStringLiteral("trash-list"), {});
    QVERIFY(list.waitForFinished(30000));
    const QString listed = QString::fromUtf8(list.readAllStandardOutput());
    QVERIFY2(listed.contains(QLatin1Char(' ') + path + QLatin1Char('\n')), qPrintable(listed));

    QProcess restore;
    restore.setProcessEnvironment(home.processEnvironment());
    restore.setWorkingDirectory(folder);
    restore.start(QStringLiteral("trash-restore"), {folder});
    restore.write("0\n");
    restore.closeWriteChannel();
    QVERIFY(restore.waitForFinished(30000));
    QCOMPARE(readBytes(path), content);
}

void tst_FileDirTools::trashFailsInReadOnlyFolder()
{
    RUN_AS_NOBODY_WHEN_ROOT();
    TestEnvironment home;
    const QString folder = home.path(QStringLiteral("locked"));
    const QString path = folder + QStringLiteral("/kept.txt");
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(writeBytes(path, "kept"));
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));

    MessageLog log;
    const QStringList failed = moveAllToRecycleBin({path});
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(failed, QStringList{path});
    QCOMPARE(readBytes(path), QByteArray("kept"));
    const QRegularExpression line(
        QStringLiteral("^Failed to put into Recycle Bin: %1 \\(status=\\d+\\)$")
            .arg(QRegularExpression::escape(path)));
    const QStringList lines = log.messages().filter(QStringLiteral("Recycle Bin"));
    QCOMPARE(lines.size(), 10);
    for (const QString& message : lines)
        QVERIFY2(line.match(message).hasMatch(), qPrintable(message));
}

void tst_FileDirTools::copyToSamePathLeavesFileAlone()
{
    const QString path = m_environment.path(QStringLiteral("same.txt"));
    QVERIFY(writeBytes(path, "same"));
    QVERIFY(setModified(path, oldTime));
    QVERIFY(copyFile(path, path, false));
    QCOMPARE(QFileInfo(path).lastModified().toUTC(), oldTime);
    QCOMPARE(readBytes(path), QByteArray("same"));
}

void tst_FileDirTools::copyKeepsTimesOnRequest_data()
{
    QTest::addColumn<bool>("keepTimes");
    QTest::newRow("keep") << true;
    QTest::newRow("new times") << false;
}

void tst_FileDirTools::copyKeepsTimesOnRequest()
{
    QFETCH(bool, keepTimes);
    const QString source = m_environment.path(QStringLiteral("source ") + QTest::currentDataTag());
    const QString destination = m_environment.path(QTest::currentDataTag() + oddName);
    QVERIFY(writeBytes(source, "copy me"));
    QVERIFY(setModified(source, oldTime));

    QString error;
    QVERIFY(copyFile(source, destination, keepTimes, &error));
    QVERIFY(error.isEmpty());
    QCOMPARE(readBytes(destination), QByteArray("copy me"));
    QCOMPARE(readBytes(source), QByteArray("copy me"));
    QCOMPARE(QFileInfo(destination).lastModified().toUTC() == oldTime, keepTimes);
}

void tst_FileDirTools::copyToOtherCaseOnCaseSensitiveSystemCopies()
{
    // Here the two names are two files, so the copy must not rename the source away.
    const QString source = m_environment.path(QStringLiteral("case.txt"));
    const QString destination = m_environment.path(QStringLiteral("CASE.txt"));
    QVERIFY(writeBytes(source, "source"));
    QVERIFY(writeBytes(destination, "destination"));
    QVERIFY(copyFile(source, destination, false));
    QCOMPARE(readBytes(source), QByteArray("source"));
    QCOMPARE(readBytes(destination), QByteArray("source"));
}

void tst_FileDirTools::copyFailures_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<QString>("error");
    const QString existing = m_environment.path(QStringLiteral("existing.txt"));
    writeBytes(existing, "x");
    QTest::newRow("missing source") << m_environment.path(QStringLiteral("missing.txt"))
                                    << m_environment.path(QStringLiteral("out.txt"))
                                    << QStringLiteral("Could not open input file.");
    QTest::newRow("missing destination folder")
        << existing << m_environment.path(QStringLiteral("no folder/out.txt"))
        << QStringLiteral("Could not create empty file.");
}

void tst_FileDirTools::copyFailures()
{
    QFETCH(QString, source);
    QFETCH(QString, destination);
    QFETCH(QString, error);
    MessageLog log;
    QString text;
    QVERIFY(!copyFile(source, destination, true, &text));
    QCOMPARE(text, error);
    QVERIFY(!QFileInfo::exists(destination));
    QVERIFY(log.messages().contains(
        QStringLiteral("Failed to CopyFileEx \"%1\" to \"%2\"").arg(source, destination)));
}

void tst_FileDirTools::moveFile()
{
    const QString source = m_environment.path(oddName);
    const QString destination = m_environment.path(QStringLiteral("moved ") + oddName);
    QVERIFY(writeBytes(source, "new"));
    QVERIFY(writeBytes(destination, "old"));
    QString error;
    QVERIFY(::moveFile(source, destination, &error));
    QVERIFY(error.isEmpty());
    QVERIFY(!QFileInfo::exists(source));
    QCOMPARE(readBytes(destination), QByteArray("new"));

    MessageLog log;
    QVERIFY(!::moveFile(source, destination, &error));
    QVERIFY(log.messages().isEmpty());
    QCOMPARE(readBytes(destination), QByteArray("new"));
}

void tst_FileDirTools::moveFailsAfterRetriesAndCopy()
{
    // Neither a rename nor a copy can replace a folder.
    const QString source = m_environment.path(QStringLiteral("stays.txt"));
    const QString destination = m_environment.path(QStringLiteral("occupied"));
    QVERIFY(writeBytes(source, "stays"));
    QVERIFY(QDir().mkpath(destination + QStringLiteral("/inside")));
    MessageLog log;
    QString error;
    QVERIFY(!::moveFile(source, destination, &error));
    QCOMPARE(error, QStringLiteral("Could not rename file."));
    QCOMPARE(log.messages().count(
                 QStringLiteral("Failed to MoveFileEx \"%1\" to \"%2\"").arg(source, destination)),
             20);
    QCOMPARE(readBytes(source), QByteArray("stays"));
}

void tst_FileDirTools::openChecked_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("stream");
    QTest::addColumn<bool>("writing");
    QTest::addColumn<QString>("expected");
    const QString missing = m_environment.path(QStringLiteral("absent ") + oddName);
    const QString inMissingFolder = m_environment.path(QStringLiteral("no such folder/file.txt"));
    const QString folder = m_environment.path(QStringLiteral("a folder"));
    QDir().mkpath(folder);
    for (bool stream : {false, true}) {
        const QString lead =
            stream ? QStringLiteral("Failed to fopen") : QStringLiteral("Failed to open");
        const QByteArray kind = stream ? "fopen " : "open ";
        QTest::newRow(kind + "missing") << missing << stream << false
                                        << lead
                                               + QStringLiteral(" \"%1\" as read only because it "
                                                                "does not exist.")
                                                     .arg(missing);
        QTest::newRow(kind + "errno")
            << inMissingFolder << stream << true
            << lead
                   + QStringLiteral(" \"%1\". No such file or directory (errno=2)")
                         .arg(inMissingFolder);
    }
    QTest::newRow("open directory")
        << folder << false << false
        << QStringLiteral("Failed to open \"%1\" because it is a directory.").arg(folder);
}

void tst_FileDirTools::openChecked()
{
    QFETCH(QString, path);
    QFETCH(bool, stream);
    QFETCH(bool, writing);
    QFETCH(QString, expected);
    MessageLog log;
    QCOMPARE(openReason(path, stream, writing), expected);
    QCOMPARE(log.messages(), QStringList{expected});
}

void tst_FileDirTools::openDenied_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("stream");
    QTest::addColumn<bool>("writing");
    QTest::addColumn<QString>("reason");
    for (bool stream : {false, true}) {
        const QByteArray kind = stream ? "fopen " : "open ";
        QTest::newRow(kind + "unreadable")
            << 0200 << stream << true << QStringLiteral("because it is not readable.");
        QTest::newRow(kind + "read only")
            << 0400 << stream << true << QStringLiteral("as writable because it is read only.");
    }
}

void tst_FileDirTools::openDenied()
{
    RUN_AS_NOBODY_WHEN_ROOT();
    QFETCH(int, mode);
    QFETCH(bool, stream);
    QFETCH(bool, writing);
    QFETCH(QString, reason);
    TestEnvironment home;
    const QString path = home.path(oddName);
    QVERIFY(writeBytes(path, "guarded"));
    QVERIFY(::chmod(QFile::encodeName(path).constData(), mode_t(mode)) == 0);
    const QString lead =
        stream ? QStringLiteral("Failed to fopen") : QStringLiteral("Failed to open");
    QCOMPARE(openReason(path, stream, writing),
             lead + QStringLiteral(" \"%1\" ").arg(path) + reason);
}

void tst_FileDirTools::openForWritingCreatesFile()
{
    const QString path = m_environment.path(QStringLiteral("created.bin"));
    QString error;
    const int fd = ::openChecked(path, OpenWriteOnly, &error);
    QVERIFY2(fd >= 0, qPrintable(error));
    QCOMPARE(::write(fd, "abc", 3), ssize_t(3));
    QCOMPARE(closeDescriptor(fd), 0);
    QCOMPARE(readBytes(path), QByteArray("abc"));
    QVERIFY(createEmptyFile(path));
    QCOMPARE(QFileInfo(path).size(), 0);
}

void tst_FileDirTools::writeTextFileRoundTrip()
{
    const QString path = m_environment.path(oddName);
    const QString text = QStringLiteral("Grüße, Ωmega ✓\nsecond line\n");
    QVERIFY(writeBytes(path, QByteArray(200, 'x')));
    QVERIFY(writeTextFile(path, text));
    QCOMPARE(readBytes(path), text.toUtf8());
}

void tst_FileDirTools::writeTextFileFailureIsLogged()
{
    const QString path = m_environment.path(QStringLiteral("no such folder/report.txt"));
    MessageLog log;
    QVERIFY(!writeTextFile(path, QStringLiteral("text")));
    QVERIFY(
        log.messages().contains(QStringLiteral("Failed to open writable text file: %1").arg(path)));
    QVERIFY(!QFileInfo::exists(path));
}

void tst_FileDirTools::removeFile()
{
    const QString path = m_environment.path(QStringLiteral("read only.txt"));
    QVERIFY(writeBytes(path, "x"));
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
    QVERIFY(::removeFile(path));
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(!::removeFile(path));
}

QTEST_GUILESS_MAIN(tst_FileDirTools)
#include "tst_filedirtools.moc"
