#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QTest>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace {

struct Report
{
    int exitCode = -1; // also when it crashed or hung
    QString text;
    QStringList errors; // the lines it wrote about itself on standard error
};

Report headlessReport(QProcessEnvironment environment, const QStringList& arguments = {},
                      const QString& outputFile = {})
{
    environment.remove(u"QT_QPA_PLATFORM"_s);
    QProcess process;
    process.setProcessEnvironment(environment);
    if (!outputFile.isEmpty())
        process.setStandardOutputFile(outputFile);
    process.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), arguments);
    Report report;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit)
        report.exitCode = process.exitCode();
    report.text = QString::fromUtf8(process.readAllStandardOutput());
    report.errors = QString::fromUtf8(process.readAllStandardError())
                        .split('\n', Qt::SkipEmptyParts)
                        .filter(u"corvanta-support-report"_s);
    return report;
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
    // Edit > Copy Report and File > Email Report... in one session, against the headless report.
    void copiedAndMailedReportsEqualHeadlessReport()
    {
        TestEnvironment home;
        XvfbServer x;
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
        const Report headless = headlessReport(x.environment());
        QCOMPARE(headless.exitCode, 0);
        QVERIFY(headless.text.startsWith(u"Generated: "_s));

        // From the open File menu, Right moves to Edit, whose first entry is Copy Report.
        x.keys({u"Right"_s, u"Down"_s, u"Return"_s}, window);
        QString copied;
        QVERIFY(QTest::qWaitFor([&] { return !(copied = x.clipboard()).isEmpty(); }, 10000));
        QVERIFY2(copied.startsWith(u"Generated: "_s), qPrintable(copied.left(200)));
        QVERIFY(copied.contains(u"\nDisplay\n\n"_s) && !copied.contains('<'));
        // The X tool's output comes back trimmed.
        QCOMPARE(afterFirstLine(copied).trimmed(), afterFirstLine(headless.text).trimmed());

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
        QCOMPARE(afterFirstLine(body), afterFirstLine(headless.text));
    }

    void headlessReportListsEveryScreen()
    {
        XvfbServer x({u"1920x1080"_s, u"1000x700"_s, u"1366x720"_s});
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        const QString report = headlessReport(x.environment()).text;
        QVERIFY2(report.contains(u"Number of Screens:  3\n"_s), qPrintable(report));
        for (const QString& size : {u"1920 x 1080"_s, u"1000 x 700"_s, u"1366 x 720"_s})
            QVERIFY(report.contains(u"geometry=(%1)"_s.arg(size)));
        QVERIFY(report.contains(u"Errors:\n1. Screen 2 is too narrow.\n2. Screen 2 is too short.\n"
                                "3. Screen 3 is too short.\n\n"_s));
    }

    void headlessReportExitCodes_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("output");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no display") << QStringList() << QString() << 0 << QString();
        QTest::newRow("unknown argument")
            << QStringList{"--verbose"} << QString() << 2
            << "corvanta-support-report: unknown argument \"--verbose\"";
        QTest::newRow("output cannot be written")
            << QStringList() << "/dev/full" << 1
            << "corvanta-support-report: cannot write the report";
    }

    // Over a remote shell there is no display: the report still comes, and a failure says why in
    // one line.
    void headlessReportExitCodes()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, output);
        QFETCH(int, exitCode);
        QFETCH(QString, reason);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"DISPLAY"_s);
        environment.remove(u"WAYLAND_DISPLAY"_s);
        const Report report = headlessReport(environment, arguments, output);
        QCOMPARE(report.exitCode, exitCode);
        if (reason.isEmpty()) {
            QVERIFY(report.errors.isEmpty());
            QVERIFY(report.text.startsWith(u"Generated: "_s));
            // Said plainly, not read off the offscreen platform's made-up screen.
            QVERIFY2(report.text.contains(u"\nDisplay\n\nNo display server could be reached, so "
                                          "there are no screens to describe.\n"_s),
                     qPrintable(report.text));
            QVERIFY(!report.text.contains(u"Screen 1 is too"_s));
        } else {
            QCOMPARE(report.errors.size(), 1);
            QVERIFY2(report.errors.first().startsWith(reason), qPrintable(report.errors.first()));
        }
    }
};

QTEST_GUILESS_MAIN(tst_ReportHandoff)
#include "tst_reporthandoff.moc"
