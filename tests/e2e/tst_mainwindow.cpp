#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QDir>
#include <QSet>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

// Moves through the focus chain pressing each control once, until done; disabled buttons are not
// in the chain.
bool pressUntil(const XvfbServer& x, const std::function<bool()>& done, int presses = 12)
{
    for (int press = 0; press < presses; ++press) {
        x.keys({u"Tab"_s, u"space"_s});
        // Long enough for a dialog to open under a sanitized build: a key sent after it opens
        // would go to the dialog instead of the page.
        if (QTest::qWaitFor(done, 1500))
            return true;
    }
    return false;
}

} // namespace

// Drives the real program on its own X server, from the keyboard, as a user would see it.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void opensCentredAfterLoadingAndQuits()
    {
        TestEnvironment home;
        XvfbServer x;
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        QProcess program;
        program.setProcessEnvironment(x.environment());
        program.setProcessChannelMode(QProcess::ForwardedChannels);
        program.start(QStringLiteral(CORVANTA_SUPPORT_BINARY), {});
        QVERIFY(program.waitForStarted(5000));

        // Until the loading pass ends only the 300-pixel-wide progress dialog may show.
        XvfbServer::Window main;
        QSet<int> widthsSeen;
        const auto mainShown = [&] {
            for (const XvfbServer::Window& window : x.visibleWindows(u"^Corvanta Support$"_s)) {
                widthsSeen << window.geometry.width();
                if (window.geometry.width() != 300)
                    main = window;
            }
            return !main.id.isEmpty();
        };
        QVERIFY2(QTest::qWaitFor(mainShown, 30000), "the main window never appeared");
        QCOMPARE(main.geometry, QRect(480, 270, 960, 540));
        QCOMPARE(x.visibleWindows(u"^Corvanta Support$"_s).size(), 1);
        QVERIFY2(widthsSeen.size() <= 2, "an unexpected window showed during loading");

        // File > Quit, the way a user leaves.
        x.keys({u"Up"_s, u"Return"_s}, main.id);
        QVERIFY2(program.waitForFinished(10000), "the program did not quit from its File menu");
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    // The Display page's workaround buttons; the result is read from the user's environment.d.
    void dpiWorkaroundApplyThenRemove()
    {
        TestEnvironment home;
        // Pages with errors come first, in kind order. A second, narrow screen gives the Display
        // page an error of its own, so it is the page shown on opening whatever the others find.
        XvfbServer x({u"1920x1080"_s, u"800x600"_s});
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        const QString ours = home.path(u".config/environment.d/60-corvanta-support.conf"_s);
        QVERIFY(putFile(ours, "# kept\nEDITOR=vi\n"));
        QVERIFY2(!x.startMainWindow().isEmpty(), "the main window never appeared");

        const auto applied = [&] {
            return fileBytes(ours).contains("QT_AUTO_SCREEN_SCALE_FACTOR=0\n");
        };
        QVERIFY2(pressUntil(x, applied), fileBytes(ours).constData());
        QVERIFY(fileBytes(ours).startsWith("# kept\nEDITOR=vi\n"));
        // Only "Remove" is enabled now, so the next press that changes anything removes it.
        QVERIFY2(pressUntil(x, [&] { return !applied(); }), fileBytes(ours).constData());
        QCOMPARE(fileBytes(ours), QByteArray("# kept\nEDITOR=vi\n"));
    }

    // The System page's benchmark: the folder is typed into the "Choose Location" dialog and the
    // result read back through Copy Report.
    void benchmarkReportAppearsOnThePage()
    {
        TestEnvironment home;
        XvfbServer x;
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        const QString location = home.path(u"bench"_s);
        QVERIFY(QDir().mkpath(location));
        const QString window = x.startMainWindow();
        QVERIFY2(!window.isEmpty(), "the main window never appeared");

        // Page order depends on what each page finds, so every page's controls are tried in turn
        // until the folder dialog opens; the other pages' buttons only touch the temporary home,
        // and the Permissions page's file dialogs are closed again.
        const auto dialogOpen = [&] {
            return !x.visibleWindows(u"^Choose Location$"_s).isEmpty();
        };
        const auto otherDialogOpen = [&] {
            return !x.visibleWindows(u"^Choose (File|Folder)$"_s).isEmpty();
        };
        bool opened = false;
        for (int page = 0; page < 6; ++page) {
            pressUntil(
                x, [&] { return dialogOpen() || otherDialogOpen(); }, 12);
            if ((opened = dialogOpen()))
                break;
            if (otherDialogOpen())
                x.keys({u"Escape"_s});
            x.keys({u"ctrl+Tab"_s});
        }
        QVERIFY2(opened, "the Choose Location dialog never opened");
        // Keys sent before the dialog has the focus would go to the window behind it.
        x.run(u"xdotool"_s, {u"windowfocus"_s, u"--sync"_s,
                             x.visibleWindows(u"^Choose Location$"_s).value(0).id});
        x.run(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"10"_s, location});
        x.keys({u"Return"_s});
        QVERIFY(QTest::qWaitFor([&] { return !dialogOpen(); }, 10000));

        // The benchmark works in a temporary folder of its own there and removes it when done.
        const auto busy = [&] {
            return !QDir(location).isEmpty(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden);
        };
        QVERIFY2(QTest::qWaitFor(busy, 20000), "the benchmark never started");
        QVERIFY2(QTest::qWaitFor([&] { return !busy(); }, 240000), "the benchmark never ended");

        // Edit > Copy Report: from the open File menu, Right moves to Edit.
        QString copied;
        const auto copy = [&] {
            x.keys({u"Right"_s, u"Down"_s, u"Return"_s}, window);
            return (copied = x.clipboard()).contains(u"RANDOM_SEEK min="_s);
        };
        QVERIFY2(QTest::qWaitFor(copy, 20000), qPrintable(copied.right(500)));
        QVERIFY(copied.contains(location + u"\nCREATE min="_s));
        QVERIFY(!copied.contains(u"failed"_s));
    }
};

QTEST_GUILESS_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
