#include "FileDirTools.h"
#include "TempFileName.h"
#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMutex>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

class tst_TempFileName : public QObject
{
    Q_OBJECT

    TestEnvironment m_environment;

private slots:
    void twoHoldersDifferOneHolderKeepsItsName()
    {
        TempFileName first;
        TempFileName second;
        const QString a = first.uniqueTempFileName();
        const QString b = second.uniqueTempFileName();
        QCOMPARE(first.uniqueTempFileName(), a);
        // In the tool's temporary folder, named by process and counter, not yet created.
        const QString folder = m_environment.path(".local/share/tst_tempfilename/temp");
        QCOMPARE(tempFolder(), folder);
        QVERIFY(QFileInfo(folder).isDir());
        const QRegularExpression pattern(
            u"^%1/%2_(\\d+)\\.tmp$"_s.arg(QRegularExpression::escape(folder))
                .arg(QCoreApplication::applicationPid()));
        QVERIFY2(pattern.match(a).hasMatch(), qPrintable(a));
        QCOMPARE(pattern.match(b).captured(1).toUInt(), pattern.match(a).captured(1).toUInt() + 1);
        QVERIFY(!QFileInfo::exists(a));
    }

    void concurrentHoldersGetDistinctNames()
    {
        const int threadCount = 8;
        const int perThread = 200;
        QMutex mutex;
        QStringList names;
        std::vector<std::thread> threads;
        for (int t = 0; t < threadCount; ++t) {
            threads.emplace_back([&] {
                QStringList own;
                for (int i = 0; i < perThread; ++i)
                    own.append(TempFileName().uniqueTempFileName());
                QMutexLocker lock(&mutex);
                names += own;
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), threadCount * perThread);
    }
};

QTEST_GUILESS_MAIN(tst_TempFileName)
#include "tst_tempfilename.moc"
