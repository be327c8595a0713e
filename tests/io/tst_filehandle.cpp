#include "FileDirTools.h"
#include "FileHandle.h"
#include "FileStream.h"
#include "MessageLog.h"
#include "TestEnvironment.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

enum Call { Read, ReadExact, Seek, SeekToStart, SeekToEnd, Write, ReadText };

bool call(FileHandle& handle, Call which, QByteArray& buffer)
{
    QString text;
    switch (which) {
    case Read:
        return handle.read(buffer.data(), buffer.size());
    case ReadExact:
        return handle.readExact(buffer.data(), buffer.size());
    case Seek:
        return handle.seek(1);
    case SeekToStart:
        return handle.seekToStart();
    case SeekToEnd:
        return handle.seekToEnd();
    case Write:
        return handle.write(buffer);
    case ReadText:
        return handle.readText(text, -1);
    }
    return false;
}

} // namespace

class tst_FileHandle : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;
    QString path(const QString& relative) const { return m_environment.path(relative); }

private slots:
    void closedHandle_data()
    {
        QTest::addColumn<int>("which");
        QTest::newRow("read") << int(Read);
        QTest::newRow("readExact") << int(ReadExact);
        QTest::newRow("seek") << int(Seek);
        QTest::newRow("seekToStart") << int(SeekToStart);
        QTest::newRow("seekToEnd") << int(SeekToEnd);
        QTest::newRow("write") << int(Write);
        QTest::newRow("readText") << int(ReadText);
    }

    // A handle whose open failed never learnt a name.
    void closedHandle()
    {
        QFETCH(int, which);
        FileHandle handle(path(u"missing"_s));
        QVERIFY(handle.isClosed() && !handle.isOpen());
        QByteArray buffer(4, 'x');
        MessageLog log;
        QVERIFY(!call(handle, Call(which), buffer));
        QCOMPARE(log.messages(), QStringList{u"Invalid file handle for \"\""_s});
        QCOMPARE(handle.size(), -1);
        QVERIFY(handle.close());
    }

    void failedOpenLogsReasonAndErrno()
    {
        const QString file = path(u"absent.bin"_s);
        MessageLog log;
        FileHandle handle(file, OpenReadOnly);
        QVERIFY(handle.isClosed());
        const QStringList messages = log.messages();
        QCOMPARE(messages.size(), 2);
        QCOMPARE(messages.at(0),
                 u"Failed to open \"%1\" as read only because it does not exist."_s.arg(file));
        QVERIFY2(
            QRegularExpression(u"^FileHandle failed to open \"%1\"\\. .+ \\(errno=\\d+\\)$"_s.arg(
                                   QRegularExpression::escape(file)))
                .match(messages.at(1))
                .hasMatch(),
            qPrintable(messages.at(1)));
    }

    void failures_data()
    {
        QTest::addColumn<int>("which");
        QTest::addColumn<int>("flags");
        QTest::addColumn<int>("length");
        QTest::addColumn<QString>("message"); // %1 the file name
        QTest::newRow("short read") << int(Read) << int(OpenReadOnly) << 16
                                    << u"Failed to read 16 bytes from \"%1\". Success (errno=0)"_s;
        QTest::newRow("short exact read")
            << int(ReadExact) << int(OpenReadOnly) << 16
            << u"Failed to read 16 bytes from \"%1\". Read only 10. Success (errno=0)"_s;
        QTest::newRow("write to a read-only handle")
            << int(Write) << int(OpenReadOnly) << 3
            << u"Failed to write 3 bytes to \"%1\". Bad file descriptor (errno=9)"_s;
        QTest::newRow("read from a write-only handle")
            << int(Read) << int(OpenWriteOnly) << 3
            << u"Failed to read 3 bytes from \"%1\". Bad file descriptor (errno=9)"_s;
    }

    void failures()
    {
        QFETCH(int, which);
        QFETCH(int, flags);
        QFETCH(int, length);
        QFETCH(QString, message);
        const QString file = path(u"ten "_s + QTest::currentDataTag());
        QVERIFY(putFile(file, "0123456789"));
        FileHandle handle(file, flags);
        QVERIFY(handle.isOpen());
        QByteArray buffer(length, '-');
        MessageLog log;
        QVERIFY(!call(handle, Call(which), buffer));
        QCOMPARE(log.messages(), QStringList{message.arg(file)});
        QCOMPARE(fileBytes(file), QByteArray("0123456789"));
    }

    void seek_data()
    {
        QTest::addColumn<qint64>("offset");
        QTest::addColumn<bool>("fromCurrent");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<qint64>("position"); // after starting at 4
        QTest::newRow("inside") << qint64(7) << false << true << qint64(7);
        QTest::newRow("past the end") << qint64(1000) << false << true << qint64(1000);
        QTest::newRow("back from current") << qint64(-3) << true << true << qint64(1);
        QTest::newRow("negative") << qint64(-1) << false << false << qint64(4);
        QTest::newRow("before the start from current") << qint64(-5) << true << false << qint64(4);
    }

    void seek()
    {
        QFETCH(qint64, offset);
        QFETCH(bool, fromCurrent);
        QFETCH(bool, ok);
        QFETCH(qint64, position);
        const QString file = path(u"seekable"_s);
        QVERIFY(putFile(file, "0123456789"));
        FileHandle handle(file);
        QVERIFY(handle.seek(4) && handle.position() == 4);
        MessageLog log;
        QCOMPARE(handle.seek(offset, fromCurrent), ok);
        QCOMPARE(handle.position(), position);
        const QStringList expected{
            u"Illegal file cursor seek with %1 for \"%2\""_s.arg(offset).arg(file)};
        QCOMPARE(log.messages(), ok ? QStringList() : expected);
        QCOMPARE(handle.size(), 10);
    }

    void readText_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<qint64>("length");
        QTest::addColumn<qint64>("chunk");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("position");
        QTest::addColumn<QString>("message"); // %1 the file name
        const QByteArray zeros("abcdef\0gh\0ij", 12);
        QTest::newRow("known length in chunks")
            << QByteArray("hello world") << qint64(11) << qint64(3) << true << u"hello world"_s
            << qint64(11) << QString();
        QTest::newRow("known length keeps zeros")
            << zeros << qint64(9) << qint64(4) << true << QString::fromLatin1(zeros.left(9))
            << qint64(9) << QString();
        const QByteArray odd("\xEF\xBB\xBFok\xFF\xE2\x82", 8);
        QTest::newRow("byte order mark and bad bytes")
            << odd << qint64(8) << qint64(5) << true
            << QString::fromUtf8(odd.left(5)) + QString::fromUtf8(odd.mid(5)) << qint64(8)
            << QString();
        QTest::newRow("to the end") << QByteArray("hello world") << qint64(-1) << qint64(4) << true
                                    << u"hello world"_s << qint64(11) << QString();
        QTest::newRow("to the end, utf-8") << u"Grüße"_s.toUtf8() << qint64(-1) << qint64(0x100000)
                                           << true << u"Grüße"_s << qint64(7) << QString();
        QTest::newRow("zero in the first chunk") << zeros << qint64(-1) << qint64(0x100000) << true
                                                 << u"abcdef"_s << qint64(7) << QString();
        QTest::newRow("zero in a later chunk")
            << zeros << qint64(-1) << qint64(4) << true << u"abcdef"_s << qint64(7) << QString();
        QTest::newRow("zero at a chunk's end")
            << zeros << qint64(-1) << qint64(7) << true << u"abcdef"_s << qint64(7) << QString();
        QTest::newRow("nothing asked") << QByteArray("abc") << qint64(0) << qint64(4) << true
                                       << QString() << qint64(0) << QString();
        QTest::newRow("chunk 0") << QByteArray("abc") << qint64(-1) << qint64(0) << false
                                 << QString() << qint64(0) << u"Invalid buffer length 0."_s;
        QTest::newRow("past the end")
            << QByteArray("abc") << qint64(5) << qint64(8) << false << QString() << qint64(3)
            << u"Failed to read 5 bytes from \"%1\". Success (errno=0)"_s;
    }

    void readText()
    {
        QFETCH(QByteArray, content);
        QFETCH(qint64, length);
        QFETCH(qint64, chunk);
        QFETCH(bool, ok);
        QFETCH(QString, text);
        QFETCH(qint64, position);
        QFETCH(QString, message);
        const QString file = path(u"text"_s);
        QVERIFY(putFile(file, content));
        FileHandle handle(file);
        QString read = u"old"_s;
        MessageLog log;
        QCOMPARE(handle.readText(read, length, chunk), ok);
        if (ok)
            QCOMPARE(read, text);
        QCOMPARE(handle.position(), position);
        QCOMPARE(log.messages(),
                 message.isEmpty() ? QStringList() : QStringList{message.replace(u"%1"_s, file)});
    }

    void sizeIsCachedUntilWrite()
    {
        const QString file = path(u"growing"_s);
        QVERIFY(putFile(file, "0123456789"));
        FileHandle handle(file, OpenReadWrite);
        QVERIFY(handle.seek(3));
        QCOMPARE(handle.size(), 10);
        QCOMPARE(handle.position(), 3);

        QFile other(file);
        QVERIFY(other.open(QIODevice::Append) && other.write("abcde") == 5);
        other.close();
        QCOMPARE(handle.size(), 10);

        QVERIFY(handle.seekToEnd());
        QVERIFY(handle.write(QByteArray("XY")));
        QCOMPARE(handle.size(), 17);
        QCOMPARE(handle.position(), 17);
        QVERIFY(handle.seekToStart() && handle.position() == 0);
        QVERIFY(handle.close() && handle.isClosed());
        QCOMPARE(fileBytes(file), QByteArray("0123456789abcdeXY"));
    }

    void reopenForgetsSize()
    {
        QVERIFY(putFile(path(u"short"_s), "abc") && putFile(path(u"long"_s), "abcdefgh"));
        FileHandle handle(path(u"short"_s));
        QCOMPARE(handle.size(), 3);
        QVERIFY(handle.open(path(u"long"_s), -1));
        QCOMPARE(handle.size(), 8);
    }

    void createFirst_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("open");
        QTest::newRow("existing file is emptied") << u"full"_s << true;
        QTest::newRow("folder missing") << u"no folder/file"_s << false;
    }

    void createFirst()
    {
        QFETCH(QString, file);
        QFETCH(bool, open);
        putFile(path(u"full"_s), "content");
        FileHandle handle(path(file), OpenReadWrite, true);
        QCOMPARE(handle.isOpen(), open);
        QCOMPARE(handle.size(), open ? 0 : -1);
        QCOMPARE(handle.handle() >= 0, open);
    }

    // Root may write anywhere, so the denial is checked as nobody.
    void readOnlyFileForWriting()
    {
        if (::geteuid() == 0) {
            QProcess child;
            child.setProcessChannelMode(QProcess::MergedChannels);
            child.start(u"setpriv"_s,
                        {u"--reuid=nobody"_s, u"--regid=nogroup"_s, u"--clear-groups"_s,
                         QCoreApplication::applicationFilePath(), u"readOnlyFileForWriting"_s});
            QVERIFY(child.waitForFinished(60000));
            const QString output = QString::fromUtf8(child.readAll());
            QVERIFY2(child.exitCode() == 0
                         && output.contains(u"PASS   : tst_FileHandle::readOnlyFileForWriting"_s),
                     qPrintable(output));
            return;
        }
        TestEnvironment home;
        const QString file = home.path(u"read only"_s);
        QVERIFY(putFile(file, "kept"));
        QVERIFY(QFile::setPermissions(file, QFile::ReadOwner));
        MessageLog log;
        FileHandle handle(file, OpenWriteOnly);
        QVERIFY(handle.isClosed());
        const QStringList messages = log.messages();
        QCOMPARE(messages.value(0),
                 u"Failed to open \"%1\" as writable because it is read only."_s.arg(file));
        QVERIFY(messages.value(1).startsWith(u"FileHandle failed to open \"%1\". "_s.arg(file)));
        QCOMPARE(fileBytes(file), QByteArray("kept"));
    }

    void fileStream()
    {
        const QString missing = path(u"no folder/stream"_s);
        MessageLog log;
        FileStream failed(missing, "w");
        QVERIFY(!failed.isOpen() && !failed.close());
        QCOMPARE(log.messages().value(1), u"Failed to open file stream: %1"_s.arg(missing));

        FileStream stream(path(u"stream"_s), "w");
        QVERIFY(stream.isOpen());
        QVERIFY(stream.close() && !stream.isOpen());
        QVERIFY(!stream.close());
        QCOMPARE(fileBytes(path(u"stream"_s)), QByteArray());
    }
};

QTEST_GUILESS_MAIN(tst_FileHandle)
#include "tst_filehandle.moc"
