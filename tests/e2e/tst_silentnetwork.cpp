#include "PrivateNamespace.h"
#include "SupportSystemData.h"
#include "SupportSystemTab.h"
#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

// A network whose TLS endpoints accept a connection and never answer: the address service's and
// the probe's host names lead, through a hosts file of the test's own, to a loopback server that
// says nothing. The window must still open, and a System refresh must not hold the GUI thread.
class tst_SilentNetwork : public QObject
{
    Q_OBJECT

    QTemporaryDir m_files;
    QTcpServer m_server;
    QList<QTcpSocket*> m_connections;

private slots:
    void initTestCase()
    {
        QVERIFY2(inPrivateNamespace(), "not in a private namespace");
        QVERIFY(bringLoopbackUp());
        const QString hosts = m_files.filePath(u"hosts"_s);
        QVERIFY(
            putFile(hosts, "127.0.0.1 localhost\n127.0.0.2 api.ipify.org www.kelvanmoor.com\n"));
        QVERIFY(bindFile(hosts, u"/etc/hosts"_s));
        // Connections are taken and kept, and nothing is ever written to them.
        QVERIFY(m_server.listen(QHostAddress(u"127.0.0.2"_s), 443));
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                m_connections << socket;
        });
        // Nothing leaves this namespace anyway; the closed proxy of the other tests would answer
        // at once, and no silence would be tested.
        for (const char* name : {"http_proxy", "https_proxy", "no_proxy"})
            qunsetenv(name);
    }

    void windowOpens()
    {
        TestEnvironment home;
        XvfbServer x;
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        QVERIFY2(!x.startMainWindow().isEmpty(), "the main window never appeared");
        QTRY_VERIFY2(!m_connections.isEmpty(), "the program never reached the silent server");
    }

    // A heartbeat on the GUI thread, counted only when it comes from the thread's own loop: one
    // delivered inside a nested wait means the refresh still holds the thread, input shut out.
    void systemRefreshLeavesTheGuiThreadFree()
    {
        TestEnvironment home;
        SupportSystemData data;
        SupportSystemTab tab(&data);
        tab.show();
        QSignalSpy probed(&data, &SupportSystemData::signalProbeFinished);
        const qsizetype connectionsBefore = m_connections.size();

        const int ownLevel = QThread::currentThread()->loopLevel();
        QElapsedTimer sinceBeat;
        qint64 longestGap = 0;
        QTimer heartbeat;
        connect(&heartbeat, &QTimer::timeout, this, [&] {
            if (QThread::currentThread()->loopLevel() == ownLevel)
                longestGap = std::max(longestGap, sinceBeat.restart());
        });
        heartbeat.start(100);
        sinceBeat.start();
        QElapsedTimer refresh;
        refresh.start();
        QTimer::singleShot(0, &tab, &SupportSystemTab::updateContent);
        // qWaitFor turns the thread's own loop; QSignalSpy::wait would nest one.
        QVERIFY(QTest::qWaitFor([&] { return !probed.isEmpty(); }, 30000));
        QVERIFY2(refresh.elapsed() >= 9000, "the probe was not held by the silent server");
        QVERIFY(m_connections.size() >= connectionsBefore + 2);
        QVERIFY2(longestGap <= 2000,
                 qPrintable(u"the GUI thread was held for %1 ms"_s.arg(longestGap)));
        const QString page = tab.findChild<QLabel*>()->text();
        QVERIFY2(page.contains(u"External IP Address:<br>  <br><br>WinInet:            Error"_s),
                 qPrintable(page));
    }

    // With the name server silent as well, the headless report asks all its questions at once and
    // waits once, for the 10 s bound, not for the name server's 8 s first and the bound after.
    void headlessReportWaitsOnce()
    {
        TestEnvironment home;
        QUdpSocket nameServer;
        QVERIFY(nameServer.bind(QHostAddress(u"127.0.0.3"_s), 53));
        const QString resolver = m_files.filePath(u"resolv.conf"_s);
        QVERIFY(putFile(resolver, "nameserver 127.0.0.3\noptions timeout:8 attempts:1\n"));
        // A mount namespace of the report's own: the silent name server is for it alone.
        QProcess report;
        report.start(u"unshare"_s, {u"-m"_s, u"sh"_s, u"-c"_s,
                                    u"mount --bind \"$0\" /etc/resolv.conf && exec \"$1\""_s,
                                    resolver, QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY)});
        QElapsedTimer clock;
        clock.start();
        QVERIFY(report.waitForFinished(60000));
        const qint64 took = clock.elapsed();
        QCOMPARE(report.exitCode(), 0);
        QVERIFY2(nameServer.hasPendingDatagrams(), "the report never asked the name server");
        QVERIFY2(took >= 9000, "the report did not wait for the silent network");
        QVERIFY2(took < 14000, qPrintable(u"the report waited %1 ms"_s.arg(took)));
        const QString text = QString::fromUtf8(report.readAllStandardOutput());
        QVERIFY2(text.contains(u"External IP Address:\n  \n\nWinInet:            Error"_s),
                 qPrintable(text));
    }
};

// Starts the suite over inside "unshare -rmn": root of a user namespace of its own, it may bind a
// hosts file over /etc/hosts and serve on port 443 without touching the machine's own.
int main(int argc, char** argv)
{
    if (!enterPrivateNamespace(argc, argv, "-rmn"))
        return 1;
    QApplication application(argc, argv);
    tst_SilentNetwork test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_silentnetwork.moc"
