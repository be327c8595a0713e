#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

// Drives the real program on its own X server, as a user would see it.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void opensCentredAfterLoadingAndQuits();
};

void tst_MainWindow::opensCentredAfterLoadingAndQuits()
{
    TestEnvironment home;
    XvfbServer x({QStringLiteral("1920x1080")});
    QVERIFY2(x.isRunning(), "Xvfb did not start");

    QProcess program;
    program.setProcessEnvironment(x.environment(QProcessEnvironment::systemEnvironment()));
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    program.start(QStringLiteral(CORVANTA_SUPPORT_BINARY), {});
    QVERIFY(program.waitForStarted(5000));

    // Until the loading pass ends only the 300-pixel-wide progress dialog may show.
    QElapsedTimer clock;
    clock.start();
    XvfbServer::Window main;
    QList<int> widthsSeen;
    while (clock.elapsed() < 30000 && main.id.isEmpty()) {
        const QList<XvfbServer::Window> windows =
            x.visibleWindows(QStringLiteral("^Corvanta Support$"));
        for (const XvfbServer::Window& window : windows) {
            if (!widthsSeen.contains(window.geometry.width()))
                widthsSeen << window.geometry.width();
            if (window.geometry.width() != 300)
                main = window;
        }
        if (main.id.isEmpty())
            QTest::qWait(20);
    }
    QVERIFY2(!main.id.isEmpty(), "the main window never appeared");
    QCOMPARE(main.geometry, QRect(480, 270, 960, 540));
    QCOMPARE(x.visibleWindows(QStringLiteral("^Corvanta Support$")).size(), 1);
    QVERIFY2(widthsSeen.size() <= 2, "an unexpected window showed during loading");

    // File > Quit, the way a user leaves.
    x.run(QStringLiteral("xdotool"),
          {QStringLiteral("mousemove"), QStringLiteral("--window"), main.id, QStringLiteral("15"),
           QStringLiteral("10"), QStringLiteral("click"), QStringLiteral("1")});
    QTest::qWait(300);
    x.keys({QStringLiteral("Up"), QStringLiteral("Return")});
    QVERIFY2(program.waitForFinished(10000), "the program did not quit from its File menu");
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
}

QTEST_GUILESS_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
