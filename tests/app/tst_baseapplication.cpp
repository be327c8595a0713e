#include "BaseApplication.h"

#include <QPointer>
#include <QTest>
#include <QThread>

#include <cerrno>

using namespace Qt::StringLiterals;

// The application object must come and go inside the case, so the test makes its own.
class tst_BaseApplication : public QObject
{
    Q_OBJECT

    int m_argc = 1;
    char m_name[20] = "tst_baseapplication";
    char* m_argv[2] = {m_name, nullptr};

private slots:
    // At shutdown the registered objects go, after the signal that they are about to.
    void lifecycle()
    {
#ifndef Q_OS_WIN // Code 13 is errno's EACCES; FormatMessageW's words differ on Wine and Windows.
        QCOMPARE(BaseApplication::windowsErrorText(u"Failed:"_s, EACCES),
                 u"Failed: Permission denied [13]"_s);
#endif
        QCOMPARE(BaseApplication::windowsErrorText(u"50%1"_s, 0xFFFFFFFFu),
                 u"50%1 Unknown Error [4294967295]"_s);
        QTest::ignoreMessage(QtDebugMsg, "ERROR! Attempting to retrieve BaseApplication instance "
                                         "without first allocating one!");
        QCOMPARE(BaseApplication::instance(), nullptr);
        QPointer<QObject> kept = new QObject;
        QPointer<QObject> deletedEarly = new QObject;
        QPointer<QObject> fromThread = new QObject;
        bool keptAliveWhenPrepared = false;
        {
            BaseApplication application(u"Test"_s, u"1"_s, m_argc, m_argv);
            QCOMPARE(BaseApplication::instance(), &application);
            connect(&application, &BaseApplication::signalPrepareForDestruction, this,
                    [&] { keptAliveWhenPrepared = !kept.isNull(); });
            application.deleteBeforeShutdown(kept);
            application.deleteBeforeShutdown(deletedEarly);
            application.deleteBeforeShutdown(nullptr);
            std::unique_ptr<QThread> thread(
                QThread::create([&] { application.deleteBeforeShutdown(fromThread); }));
            thread->start();
            QVERIFY(thread->wait(5000));
            delete deletedEarly.data();
        }
        QVERIFY(keptAliveWhenPrepared);
        QVERIFY(kept.isNull());
        QVERIFY(fromThread.isNull());
    }
};

QTEST_APPLESS_MAIN(tst_BaseApplication)
#include "tst_baseapplication.moc"
