#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QTest>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace {

// The report program's output on the X server's display.
QString headlessReport(const XvfbServer& x)
{
    QProcess process;
    process.setProcessEnvironment(x.environment());
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), {});
    process.waitForFinished(60000);
    return process.exitCode() == 0 ? QString::fromUtf8(process.readAllStandardOutput()) : QString();
}

// Reports of two runs differ only in their "Generated:" line.
QString afterFirstLine(const QString& report)
{
    return report.mid(report.indexOf('\n'));
}

} // namespace

// The report as support receives it: from the clipboard, from the e-mail program and from the
// headless report, all driven through the real program on its own X server.
class tst_ReportHandoff : public QObject
{
    Q_OBJECT

private slots:
    // Edit > Copy Report and File > Email Report... in one session, against the headless report,
    // on three screens that the report lists.
    void copiedAndMailedReportsEqualHeadlessReport()
    {
        TestEnvironment home;
        XvfbServer x({u"1920x1080"_s, u"1000x700"_s, u"1366x720"_s});
        QVERIFY2(x.isRunning(), "Xvfb did not start");
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
        const QString window = x.startMainWindow();
        QVERIFY2(!window.isEmpty(), "the main window never appeared");
        const QString headless = headlessReport(x);
        QVERIFY2(headless.startsWith(u"Generated: "_s), qPrintable(headless));
        QVERIFY(headless.contains(u"Number of Screens:  3\n"_s));
        for (const QString& size : {u"1920 x 1080"_s, u"1000 x 700"_s, u"1366 x 720"_s})
            QVERIFY(headless.contains(u"geometry=(%1)"_s.arg(size)));
        QVERIFY(
            headless.contains(u"Errors:\n1. Screen 2 is too narrow.\n2. Screen 2 is too short.\n"
                              "3. Screen 3 is too short.\n\n"_s));

        // From the open File menu, Right moves to Edit, whose first entry is Copy Report.
        x.keys({u"Right"_s, u"Down"_s, u"Return"_s}, window);
        QString copied;
        QVERIFY(QTest::qWaitFor([&] { return !(copied = x.clipboard()).isEmpty(); }, 10000));
        QVERIFY2(copied.startsWith(u"Generated: "_s), qPrintable(copied.left(200)));
        QVERIFY(copied.contains(u"\nDisplay\n\n"_s) && !copied.contains('<'));
        // The X tool's output comes back trimmed.
        QCOMPARE(afterFirstLine(copied).trimmed(), afterFirstLine(headless).trimmed());

        // File > Email Report..., the second entry.
        x.keys({u"Down"_s, u"Down"_s, u"Return"_s}, window);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(received), 15000);
        QTest::qWait(200);
        const QUrl url(QString::fromUtf8(fileBytes(received)));
        QCOMPARE(url.scheme(), u"mailto"_s);
        QCOMPARE(url.path(), u"support@kelvanmoor.com"_s);
        const QUrlQuery query(url);
        QCOMPARE(query.queryItemValue(u"subject"_s, QUrl::FullyDecoded),
                 u"Corvanta Support Report"_s);
        const QString body = query.queryItemValue(u"body"_s, QUrl::FullyDecoded);
        QVERIFY2(body.startsWith(u"Generated: "_s), qPrintable(body.left(200)));
        QCOMPARE(afterFirstLine(body), afterFirstLine(headless));
    }
};

QTEST_GUILESS_MAIN(tst_ReportHandoff)
#include "tst_reporthandoff.moc"
