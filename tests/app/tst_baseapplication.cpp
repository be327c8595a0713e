#include "BaseApplication.h"
#include "SupportApplication.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <cerrno>

// Most of these cases need the application object to come and go, so the test makes its own.
class tst_BaseApplication : public QObject
{
    Q_OBJECT

private slots:
    void instanceWithoutApplication();
    void identity();
    void shutdownDeletesRegisteredObjects();
    void eventLoopFlag();
    void windowsErrorText_data();
    void windowsErrorText();
    void fonts();
};

void tst_BaseApplication::instanceWithoutApplication()
{
    QTest::ignoreMessage(QtDebugMsg, "ERROR! Attempting to retrieve BaseApplication instance "
                                     "without first allocating one!");
    QCOMPARE(BaseApplication::instance(), nullptr);
    QTest::ignoreMessage(QtDebugMsg, "ERROR! Attempting to retrieve BaseApplication instance "
                                     "without first allocating one!");
    QCOMPARE(BaseApplication::instance(), nullptr);
}

void tst_BaseApplication::identity()
{
    int argc = 1;
    char name[] = "tst_baseapplication";
    char* argv[] = {name, nullptr};
    SupportApplication application(argc, argv);
    QCOMPARE(BaseApplication::instance(), &application);
    QCOMPARE(QCoreApplication::organizationName(), QStringLiteral("Kelvanmoor"));
    QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("Corvanta"));
    QCOMPARE(QCoreApplication::applicationVersion(), QStringLiteral("1.0.5"));
    QVERIFY(!QCoreApplication::organizationDomain().isEmpty());
}

void tst_BaseApplication::shutdownDeletesRegisteredObjects()
{
    QPointer<QObject> kept = new QObject;
    QPointer<QObject> deletedEarly = new QObject;
    QPointer<QObject> fromThread = new QObject;
    bool prepared = false;
    bool keptAliveWhenPrepared = false;
    {
        int argc = 1;
        char name[] = "tst_baseapplication";
        char* argv[] = {name, nullptr};
        BaseApplication application(QStringLiteral("Test"), QStringLiteral("1"), argc, argv);
        connect(&application, &BaseApplication::signalPrepareForDestruction, this, [&] {
            prepared = true;
            keptAliveWhenPrepared = !kept.isNull();
        });
        application.deleteBeforeShutdown(kept);
        application.deleteBeforeShutdown(deletedEarly);
        application.deleteBeforeShutdown(nullptr);
        QThread* thread = QThread::create([&] { application.deleteBeforeShutdown(fromThread); });
        thread->start();
        QVERIFY(thread->wait(5000));
        delete thread;
        delete deletedEarly.data();
    }
    QVERIFY(prepared);
    QVERIFY(keptAliveWhenPrepared);
    QVERIFY(kept.isNull());
    QVERIFY(fromThread.isNull());
}

void tst_BaseApplication::eventLoopFlag()
{
    int argc = 1;
    char name[] = "tst_baseapplication";
    char* argv[] = {name, nullptr};
    BaseApplication application(QStringLiteral("Test"), QStringLiteral("1"), argc, argv);
    bool inLoop = false;
    QTimer::singleShot(0, &application, [&] {
        inLoop = application.isInEventLoop();
        application.slotTryQuitting();
    });
    QVERIFY(!application.isInEventLoop());
    QCOMPARE(application.exec(), 0);
    QVERIFY(inLoop);
    QVERIFY(!application.isInEventLoop());
}

void tst_BaseApplication::windowsErrorText_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<uint>("code");
    QTest::addColumn<QString>("expected");
    QTest::newRow("access denied") << "Failed:" << uint(EACCES) << "Failed: Permission denied [13]";
    QTest::newRow("no such file") << "Open" << uint(ENOENT) << "Open No such file or directory [2]";
    QTest::newRow("unknown") << "Failed:" << 0x1234567u << "Failed: Unknown Error [19088743]";
    QTest::newRow("beyond int") << "x" << 0xFFFFFFFFu << "x Unknown Error [4294967295]";
    QTest::newRow("placeholders in prefix")
        << "50%1" << uint(EACCES) << "50%1 Permission denied [13]";
}

void tst_BaseApplication::windowsErrorText()
{
    QFETCH(QString, prefix);
    QFETCH(uint, code);
    QFETCH(QString, expected);
    QCOMPARE(BaseApplication::windowsErrorText(prefix, code), expected);
}

void tst_BaseApplication::fonts()
{
    QCOMPARE(
        BaseApplication::monospaceFontFamilies(),
        QStringList({"Consolas", "Lucida Sans Typewriter", "Courier", "Courier New", "monospace"}));
    const QFont font = BaseApplication::monospaceFont();
    QCOMPARE(font.family(), QStringLiteral("monospace"));
    QVERIFY(!font.italic());
    QCOMPARE(font.weight(), QFont::Normal);
}

QTEST_APPLESS_MAIN(tst_BaseApplication)
#include "tst_baseapplication.moc"
