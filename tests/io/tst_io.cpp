#include "BasicTextProcessor.h"
#include "FileDirTools.h"
#include "FileHandle.h"
#include "MessageLog.h"
#include "TestEnvironment.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_Io : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;
    QString path(const QString& relative) const { return m_environment.path(relative); }

private slots:
    void formatBytes_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("withDecimal");
        const qint64 kb = 1024, mb = kb * kb, tb = mb * mb;
        QTest::newRow("zero") << qint64(0) << "0 bytes" << u"0.0 bytes"_s;
        QTest::newRow("rounded after the unit") << mb - 1 << "1024 KB" << u"1024.0 KB"_s;
        QTest::newRow("half up") << mb + 104858 << "1.1 MB" << u"1.1 MB"_s;
        QTest::newRow("beyond terabytes stays in TB") << 2048 * tb << "2048 TB" << u"2048.0 TB"_s;
        QTest::newRow("negative is never scaled")
            << qint64(-5000) << "-5000 bytes" << u"-5000.0 bytes"_s;
    }

    void formatBytes()
    {
        QFETCH(qint64, bytes);
        QTEST(BasicTextProcessor::formatBytes(bytes, false), "plain");
        QTEST(BasicTextProcessor::formatBytes(bytes, true), "withDecimal");
    }
    // "%1" and "%2" in the file's name must not take the values meant for the message.
    void failures_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<int>("flags");       // 0: a handle whose open failed
        QTest::addColumn<QString>("message"); // %1 the file name
        for (const char* call :
             {"read", "readExact", "seek", "seekToStart", "seekToEnd", "write", "readText"})
            QTest::addRow("closed %s", call) << call << 0 << u"Invalid file handle for \"\""_s;
        QTest::newRow("short read") << "read" << int(OpenReadOnly)
                                    << u"Failed to read 16 bytes from \"%1\". Success (errno=0)"_s;
        QTest::newRow("short exact read")
            << "readExact" << int(OpenReadOnly)
            << u"Failed to read 16 bytes from \"%1\". Read only 10. Success (errno=0)"_s;
        QTest::newRow("write to a read-only handle")
            << "write" << int(OpenReadOnly)
            << u"Failed to write 16 bytes to \"%1\". Bad file descriptor (errno=9)"_s;
        QTest::newRow("negative seek")
            << "seek" << int(OpenReadOnly) << u"Illegal file cursor seek with -1 for \"%1\""_s;
    }

    void failures()
    {
        QFETCH(QString, call);
        QFETCH(int, flags);
        QFETCH(QString, message);
        const QString file = path(u"x%1y%2z"_s);
        QVERIFY(putFile(file, "0123456789"));
        FileHandle handle(flags ? file : path(u"missing"_s), flags);
        QCOMPARE(handle.isOpen(), flags != 0);
        QByteArray buffer(16, '-');
        QString text;
        MessageLog log;
        const bool done = call == "read"          ? handle.read(buffer.data(), buffer.size())
                          : call == "readExact"   ? handle.readExact(buffer.data(), buffer.size())
                          : call == "seek"        ? handle.seek(-1)
                          : call == "seekToStart" ? handle.seekToStart()
                          : call == "seekToEnd"   ? handle.seekToEnd()
                          : call == "write"       ? handle.write(buffer)
                                                  : handle.readText(text, -1);
        QVERIFY(!done);
        QCOMPARE(log.messages(), QStringList{message.replace(u"%1"_s, file)});
        QCOMPARE(fileBytes(file), QByteArray("0123456789"));
    }

    // A text ends at its first zero byte unless its length is known.
    void readText_data()
    {
        QTest::addColumn<qint64>("length");
        QTest::addColumn<qint64>("chunk");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("position");
        const QByteArray zeros("abcdef\0gh\0ij", 12);
        const QByteArray odd("\xEF\xBB\xBFok\xFF\xE2\x82", 8);
        QTest::newRow("known length keeps zeros")
            << qint64(9) << qint64(4) << zeros << QString::fromLatin1(zeros.left(9)) << qint64(9);
        QTest::newRow("byte order mark and bad bytes, piece by piece")
            << qint64(8) << qint64(5) << odd
            << QString::fromUtf8(odd.left(5)) + QString::fromUtf8(odd.mid(5)) << qint64(8);
        QTest::newRow("zero in a later chunk")
            << qint64(-1) << qint64(4) << zeros << u"abcdef"_s << qint64(7);
        QTest::newRow("zero at a chunk's end")
            << qint64(-1) << qint64(7) << zeros << u"abcdef"_s << qint64(7);
    }

    void readText()
    {
        QFETCH(qint64, length);
        QFETCH(qint64, chunk);
        QFETCH(QByteArray, content);
        QVERIFY(putFile(path(u"text"_s), content));
        FileHandle handle(path(u"text"_s));
        QString read = u"old"_s;
        MessageLog log;
        QVERIFY(handle.readText(read, length, chunk));
        QTEST(read, "text");
        QTEST(handle.position(), "position");
        QCOMPARE(log.messages(), QStringList());
    }
};

QTEST_GUILESS_MAIN(tst_Io)
#include "tst_io.moc"
