#include "AccessibleProgram.h"
#include "ProductHome.h"
#include "XvfbServer.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace {

// Two runs' reports differ in "Generated:", free space and, at midnight, the date.
QString afterFirstLine(const QString& report)
{
    static const QRegularExpression moving(u"^(FreeSpace *:|System Time:).*$"_s,
                                           QRegularExpression::MultilineOption);
    return report.mid(report.indexOf('\n')).replace(moving, u"\\1"_s);
}

// The report's blocks of the product's pages, which repairs change.
QString productPages(const QString& report)
{
    static const QRegularExpression pages(u"\n(Permissions|Corvanta)\n[\\s\\S]*?(?=\n={50}|$)"_s);
    QString blocks;
    for (const QRegularExpressionMatch& page : pages.globalMatch(report))
        blocks += page.captured();
    return blocks;
}

} // namespace

// Drives the real program on its own X server, from its menus and buttons, as a user would.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void sessionFromOpeningToQuit()
    {
        ProductHome home;
        QVERIFY(home.isValid() && home.prepare());
        // The narrow second screen gives the Display page errors, so it is the page shown first.
        XvfbServer x({u"1920x1080"_s, u"1000x700"_s, u"1366x720"_s});
        const QString ours = home.path(u".config/environment.d/60-corvanta-support.conf"_s);
        QVERIFY(putFile(ours, "# kept\nEDITOR=vi\n"));
        const QString location = home.path(u"bench"_s);
        QVERIFY(QDir().mkpath(location));
        const QString received = home.path(u"received.txt"_s);
        const QString recorder = home.path(u"bin/record-mail"_s);
        QVERIFY(putFile(recorder, "#!/bin/sh\nprintf '%s' \"$1\" > '" + received.toUtf8() + "'\n"));
        QVERIFY(putFile(home.path(u".local/share/applications/record-mail.desktop"_s),
                        "[Desktop Entry]\nType=Application\nName=Mail Recorder\nExec=sh "
                            + recorder.toUtf8() + " %u\nMimeType=x-scheme-handler/mailto;\n"));
        // The mail default beside it, so the user's mimeapps.list is the product's alone.
        QVERIFY(putFile(home.path(u".local/share/applications/mimeapps.list"_s),
                        "[Default Applications]\nx-scheme-handler/mailto=record-mail.desktop\n"));

        AccessibleProgram widgets;
        const QString main = x.startMainWindow();
        QVERIFY2(!main.isEmpty(), "the main window never appeared");
        // Centred, and the loading dialog of the same title gone.
        const QList<XvfbServer::Window> shown = x.visibleWindows(u"^Corvanta Support$"_s);
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown.first().geometry, QRect(480, 270, 960, 540));

        const auto freshReport = [&x] {
            QProcess report;
            report.setProcessEnvironment(x.environment());
            report.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), {});
            return report.waitForFinished(60000) && report.exitCode() == 0
                       ? QString::fromUtf8(report.readAllStandardOutput())
                       : QString();
        };
        const QString headless = freshReport();
        // The real screens are read: the page's errors name the second and third.
        QVERIFY(
            headless.contains(u"Errors:\n1. Screen 2 is too narrow.\n2. Screen 2 is too short.\n"
                              "3. Screen 3 is too short.\n\n"_s));

        // From the open File menu, Right moves to Edit, whose first entry is Copy Report.
        const auto copy = [&] {
            x.keys({u"Right"_s, u"Down"_s, u"Return"_s}, main);
            return x.clipboard();
        };
        QString copied;
        QVERIFY(QTest::qWaitFor([&] { return !(copied = copy()).isEmpty(); }, 10000));
        // The X tool's output comes back trimmed.
        QCOMPARE(afterFirstLine(copied).trimmed(), afterFirstLine(headless).trimmed());

        x.keys({u"Down"_s, u"Down"_s, u"Return"_s}, main);
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
        QVERIFY(press(u"push button"_s, u"Apply DPI Workaround"_s));
        QTRY_VERIFY_WITH_TIMEOUT(fileBytes(ours).contains("QT_AUTO_SCREEN_SCALE_FACTOR=0\n"),
                                 10000);
        QVERIFY(press(u"push button"_s, u"Remove DPI Workaround"_s));
        QTRY_COMPARE_WITH_TIMEOUT(fileBytes(ours), QByteArray("# kept\nEDITOR=vi\n"), 10000);

        const auto dialog = [&] {
            return x.visibleWindows(u"^Choose Location$"_s).value(0).id;
        };
        QVERIFY(press(u"page tab"_s, u"System"_s));
        QVERIFY(press(u"push button"_s, u"Benchmark File I/O"_s));
        QVERIFY2(QTest::qWaitFor([&] { return !dialog().isEmpty(); }, 20000),
                 "the Choose Location dialog never opened");
        // Keys sent before the dialog has the focus would go to the window behind it.
        x.run(u"xdotool"_s, {u"windowfocus"_s, u"--sync"_s, dialog()});
        x.run(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"10"_s, location});
        x.keys({u"Return"_s});
        QVERIFY(QTest::qWaitFor([&] { return dialog().isEmpty(); }, 10000));

        // The benchmark works in a temporary folder there.
        const auto busy = [&] {
            return !QDir(location).isEmpty(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden);
        };
        QVERIFY2(QTest::qWaitFor(busy, 20000), "the benchmark never started");
        QVERIFY2(QTest::qWaitFor([&] { return !busy(); }, 240000), "the benchmark never ended");

        QVERIFY2(QTest::qWaitFor([&] { return (copied = copy()).contains(u"RANDOM_SEEK min="_s); },
                                 20000),
                 qPrintable(copied.right(500)));
        QVERIFY(copied.contains(location + u"\nCREATE min="_s));
        QVERIFY(!copied.contains(u"failed"_s));

        // The page's text and its enabled buttons by the start of their names.
        QVERIFY(press(u"page tab"_s, u"Corvanta"_s));
        const auto page = [&] {
            QString enabled;
            for (const auto& item : widgets.items()) {
                if (item.role == u"push button"_s && item.enabled)
                    enabled += item.name.left(8) + ' ';
            }
            return widgets.find(u"label"_s, u"Application Data:"_s).name + '|' + enabled;
        };
        QTRY_VERIFY2_WITH_TIMEOUT(
            page().contains(u"(User):\n.cvd      Remove\n"_s)
                && page().endsWith(u"|Remove A Repair P Remove P Remove A "_s),
            qPrintable(page()), 20000);
        // A screen reader reads the text, the link in hand its selection; Tab moves from the tabs.
        x.keys({u"Tab"_s});
        QTRY_COMPARE_WITH_TIMEOUT(widgets.find(u"label"_s, u"Application Data:"_s).selected,
                                  home.dataFolder(), 10000);
        const AccessibleProgram::Item text = widgets.find(u"label"_s, u"Application Data:"_s);
        QCOMPARE(text.text, text.name);

        // After each repair the window describes the machine as a fresh report does.
        const auto agrees = [&] {
            const QString fresh = productPages(freshReport());
            return fresh.size() > 200
                   && QTest::qWaitFor([&] { return productPages(copy()) == fresh; }, 10000);
        };
        QVERIFY(press(u"push button"_s, u"Remove All Associations"_s));
        QTRY_VERIFY_WITH_TIMEOUT(
            fileBytes(home.userMimeapps()) == ProductHome::mimeappsWithoutProduct, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"(User):\n\n|Repair P Remove P Remove A "_s),
                                 20000);
        QVERIFY(agrees());

        // The repair's report of what it changed is closed with its OK.
        QVERIFY(press(u"push button"_s, u"Repair Preferences"_s));
        QTRY_VERIFY_WITH_TIMEOUT(fileBytes(home.preferences()) == ProductHome::repairedPreferences,
                                 20000);
        QVERIFY(press(u"push button"_s, u"OK"_s));
        QVERIFY(agrees());

        // The clicked button disables itself; a key pressed then must not reach the next one.
        QVERIFY(press(u"push button"_s, u"Remove Preferences"_s));
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"|Repair P Remove A "_s), 20000);
        QVERIFY(!QFileInfo::exists(home.preferences()));
        x.keys({u"space"_s, u"Return"_s});
        QTest::qWait(1000);
        QVERIFY2(QFileInfo::exists(home.dataFolder()) && page().endsWith(u"|Repair P Remove A "_s),
                 qPrintable(page()));
        QVERIFY(agrees());

        QVERIFY(press(u"push button"_s, u"Remove All Application Data"_s));
        QTRY_VERIFY_WITH_TIMEOUT(page().endsWith(u"|Repair P "_s), 20000);
        QVERIFY(page().contains("\nApplication Data:   " + home.dataFolder()
                                + " - Does Not Exist Remove\n"));
        QVERIFY(agrees());

        x.keys({u"Up"_s, u"Return"_s}, main);
        QVERIFY2(x.program().waitForFinished(10000), "the program did not quit from its File menu");
        QCOMPARE(x.program().exitStatus() == QProcess::NormalExit ? x.program().exitCode() : -1, 0);
    }
};

QTEST_GUILESS_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
