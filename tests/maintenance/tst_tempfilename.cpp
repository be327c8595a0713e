#include "FileDirTools.h"
#include "TempFileName.h"
#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <thread>
#include <vector>

class tst_TempFileName : public QObject
{
    Q_OBJECT

private slots:
    void nameIsInTemporaryFolderWithProcessAndCounter();
    void holderKeepsItsName();
    void concurrentHoldersGetDistinctNames();

private:
    TestEnvironment m_environment;
};

void tst_TempFileName::nameIsInTemporaryFolderWithProcessAndCounter()
{
    TempFileName first;
    TempFileName second;
    const QString a = first.uniqueTempFileName();
    const QString b = second.uniqueTempFileName();

    const QString folder = m_environment.path(QStringLiteral(".local/share/tst_tempfilename/temp"));
    QCOMPARE(tempFolder(), folder);
    QVERIFY(QFileInfo(folder).isDir());
    const QRegularExpression pattern(QStringLiteral("^%1/%2_(\\d+)\\.tmp$")
                                         .arg(QRegularExpression::escape(folder))
                                         .arg(QCoreApplication::applicationPid()));
    const auto matchA = pattern.match(a);
    const auto matchB = pattern.match(b);
    QVERIFY2(matchA.hasMatch(), qPrintable(a));
    QVERIFY2(matchB.hasMatch(), qPrintable(b));
    QCOMPARE(matchB.captured(1).toUInt(), matchA.captured(1).toUInt() + 1);
    QVERIFY(!QFileInfo::exists(a));
}

void tst_TempFileName::holderKeepsItsName()
{
    TempFileName holder;
    const QString name = holder.uniqueTempFileName();
    TempFileName other;
    QVERIFY(other.uniqueTempFileName() != name);
    QCOMPARE(holder.uniqueTempFileName(), name);
}

void tst_TempFileName::concurrentHoldersGetDistinctNames()
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
    QCOMPARE(names.size(), threadCount * perThread);
    QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), threadCount * perThread);
}

QTEST_GUILESS_MAIN(tst_TempFileName)
#include "tst_tempfilename.moc"
