#include "AccessibleProgram.h"
#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace {

// Two runs' reports differ in their "Generated:" line, and in what moves between them: free space
// as other programs write, and the date at midnight.
QString afterFirstLine(const QString& report)
{
    static const QRegularExpression moving(u"^(FreeSpace *:|System Time:).*$"_s,
                                           QRegularExpression::MultilineOption);
    return report.mid(report.indexOf('\n')).replace(moving, u"\\1"_s);
}

} // namespace

// Drives the real program on its own X server, from its menus and buttons, as a user would.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    // One session on three screens: the window opens centred after loading; Edit > Copy Report
    // and File > Email Report... hand over the headless report; the Display page's workaround
    // buttons write and remove the user's environment.d line; the System page's benchmark runs in
    // the folder typed into its "Choose Location" dialog and shows its figures; File > Quit ends
    // it.
    void sessionFromOpeningToQuit()
    {
        TestEnvironment home;
        // The narrow second screen gives the Display page errors, so it is the page shown first.
        XvfbServer x({u"1920x1080"_s, u"1000x700"_s, u"1366x720"_s});
        const QString ours = home.path(u".config/environment.d/60-corvanta-support.conf"_s);
        QVERIFY(putFile(ours, "# kept\nEDITOR=vi\n"));
        const QString location = home.path(u"bench"_s);
        QVERIFY(QDir().mkpath(location));
        // A mail program of our own, registered the freedesktop way, writes down what it gets.
        const QString received = home.path(u"received.txt"_s);
        const QString recorder = home.path(u"bin/record-mail"_s);
        QVERIFY(putFile(recorder, "#!/bin/sh\nprintf '%s' \"$1\" > '" + received.toUtf8() + "'\n"));
        QVERIFY(QFile::setPermissions(recorder, QFile::ReadOwner | QFile::ExeOwner));
        QVERIFY(putFile(home.path(u".local/share/applications/record-mail.desktop"_s),
                        "[Desktop Entry]\nType=Application\nName=Mail Recorder\nExec="
                            + recorder.toUtf8() + " %u\nMimeType=x-scheme-handler/mailto;\n"));
        QVERIFY(putFile(home.path(u".config/mimeapps.list"_s),
                        "[Default Applications]\nx-scheme-handler/mailto=record-mail.desktop\n"));

        AccessibleProgram widgets;
        QProcess program;
        program.setProcessEnvironment(x.environment());
        program.setProcessChannelMode(QProcess::ForwardedChannels);
        program.start(QStringLiteral(CORVANTA_SUPPORT_BINARY), {});
        // The 300-pixel-wide window of the same title is the loading dialog.
        XvfbServer::Window main;
        const auto mainShown = [&] {
            for (const XvfbServer::Window& window : x.visibleWindows(u"^Corvanta Support$"_s)) {
                if (window.geometry.width() != 300)
                    main = window;
            }
            return !main.id.isEmpty();
        };
        QVERIFY2(QTest::qWaitFor(mainShown, 30000), "the main window never appeared");
        QCOMPARE(main.geometry, QRect(480, 270, 960, 540));
        QCOMPARE(x.visibleWindows(u"^Corvanta Support$"_s).size(), 1);

        QProcess report;
        report.setProcessEnvironment(x.environment());
        report.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), {});
        QVERIFY(report.waitForFinished(60000) && report.exitCode() == 0);
        const QString headless = QString::fromUtf8(report.readAllStandardOutput());
        // The real screens are read: the page's errors name the second and third.
        QVERIFY(
            headless.contains(u"Errors:\n1. Screen 2 is too narrow.\n2. Screen 2 is too short.\n"
                              "3. Screen 3 is too short.\n\n"_s));

        // From the open File menu, Right moves to Edit, whose first entry is Copy Report.
        x.keys({u"Right"_s, u"Down"_s, u"Return"_s}, main.id);
        QString copied;
        QVERIFY(QTest::qWaitFor([&] { return !(copied = x.clipboard()).isEmpty(); }, 10000));
        // The X tool's output comes back trimmed.
        QCOMPARE(afterFirstLine(copied).trimmed(), afterFirstLine(headless).trimmed());

        x.keys({u"Down"_s, u"Down"_s, u"Return"_s}, main.id);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(received), 15000);
        QTest::qWait(200);
        const QUrl url(QString::fromUtf8(fileBytes(received)));
        QCOMPARE(url.toString(QUrl::RemoveQuery), u"mailto:support@kelvanmoor.com"_s);
        QCOMPARE(afterFirstLine(QUrlQuery(url).queryItemValue(u"body"_s, QUrl::FullyDecoded)),
                 afterFirstLine(headless));

        // Each button is clicked once it is enabled: "Remove" only after "Apply" has written.
        const auto press = [&](const QString& role, const QString& name) {
            return QTest::qWaitFor([&] { return widgets.click(x, role, name); }, 20000);
        };
        const auto applied = [&] {
            return fileBytes(ours).contains("QT_AUTO_SCREEN_SCALE_FACTOR=0\n");
        };
        QVERIFY(press(u"push button"_s, u"Apply DPI Workaround"_s));
        QTRY_VERIFY_WITH_TIMEOUT(applied(), 10000);
        QVERIFY(fileBytes(ours).startsWith("# kept\nEDITOR=vi\n"));
        QVERIFY(press(u"push button"_s, u"Remove DPI Workaround"_s));
        QTRY_COMPARE_WITH_TIMEOUT(fileBytes(ours), QByteArray("# kept\nEDITOR=vi\n"), 10000);

        const auto open = [&] {
            return !x.visibleWindows(u"^Choose Location$"_s).isEmpty();
        };
        QVERIFY(press(u"page tab"_s, u"System"_s));
        QVERIFY(press(u"push button"_s, u"Benchmark File I/O"_s));
        QVERIFY2(QTest::qWaitFor(open, 20000), "the Choose Location dialog never opened");
        // Keys sent before the dialog has the focus would go to the window behind it.
        x.run(u"xdotool"_s, {u"windowfocus"_s, u"--sync"_s,
                             x.visibleWindows(u"^Choose Location$"_s).value(0).id});
        x.run(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"10"_s, location});
        x.keys({u"Return"_s});
        QVERIFY(QTest::qWaitFor([&] { return !open(); }, 10000));

        // The benchmark works in a temporary folder of its own there and removes it when done.
        const auto busy = [&] {
            return !QDir(location).isEmpty(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden);
        };
        QVERIFY2(QTest::qWaitFor(busy, 20000), "the benchmark never started");
        QVERIFY2(QTest::qWaitFor([&] { return !busy(); }, 240000), "the benchmark never ended");

        const auto copy = [&] {
            x.keys({u"Right"_s, u"Down"_s, u"Return"_s}, main.id);
            return (copied = x.clipboard()).contains(u"RANDOM_SEEK min="_s);
        };
        QVERIFY2(QTest::qWaitFor(copy, 20000), qPrintable(copied.right(500)));
        QVERIFY(copied.contains(location + u"\nCREATE min="_s));
        QVERIFY(!copied.contains(u"failed"_s));

        x.keys({u"Up"_s, u"Return"_s}, main.id);
        QVERIFY2(program.waitForFinished(10000), "the program did not quit from its File menu");
        QCOMPARE(program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1, 0);
    }
};

QTEST_GUILESS_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
