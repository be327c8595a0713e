#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>
#include <QUrl>
#include <QUrlQuery>

// The report as support receives it: from the clipboard, from the e-mail program and from the
// headless report, all driven through the real program on its own X server.
class tst_ReportHandoff : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void copiedReportEqualsHeadlessReport();
    void emailCarriesTheReport();
    void headlessReportListsEveryScreen();
    void headlessReportExitCodes_data();
    void headlessReportExitCodes();

private:
    QString startAndWaitForWindow();
    void menu(const QStringList& keys);
    QString headlessReport(const XvfbServer& x);

    std::unique_ptr<TestEnvironment> m_home;
    std::unique_ptr<XvfbServer> m_x;
    QProcess m_program;
    QString m_window;
};

namespace {

QString afterFirstLine(const QString& report)
{
    return report.mid(report.indexOf(QLatin1Char('\n')));
}

void writeFile(const QString& path, const QByteArray& content, bool executable = false)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    if (executable)
        file.setPermissions(file.permissions() | QFile::ExeOwner);
}

} // namespace

void tst_ReportHandoff::init()
{
    m_home = std::make_unique<TestEnvironment>();
    m_x = std::make_unique<XvfbServer>();
    QVERIFY2(m_x->isRunning(), "Xvfb did not start");
}

void tst_ReportHandoff::cleanup()
{
    if (m_program.state() != QProcess::NotRunning) {
        m_program.terminate();
        if (!m_program.waitForFinished(5000))
            m_program.kill();
        m_program.waitForFinished(5000);
    }
    m_x.reset();
    m_home.reset();
}

QString tst_ReportHandoff::startAndWaitForWindow()
{
    return m_x->startMainWindow(m_program);
}

void tst_ReportHandoff::menu(const QStringList& keys)
{
    m_x->run(QStringLiteral("xdotool"), {QStringLiteral("mousemove"), QStringLiteral("--window"),
                                         m_window, QStringLiteral("15"), QStringLiteral("10"),
                                         QStringLiteral("click"), QStringLiteral("1")});
    QTest::qWait(300);
    m_x->keys(keys);
}

QString tst_ReportHandoff::headlessReport(const XvfbServer& x)
{
    QProcess report;
    QProcessEnvironment environment = x.environment(QProcessEnvironment::systemEnvironment());
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    report.setProcessEnvironment(environment);
    report.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), {});
    if (!report.waitForFinished(60000) || report.exitCode() != 0)
        return {};
    return QString::fromUtf8(report.readAllStandardOutput());
}

void tst_ReportHandoff::copiedReportEqualsHeadlessReport()
{
    m_window = startAndWaitForWindow();
    QVERIFY2(!m_window.isEmpty(), "the main window never appeared");

    // Edit > Copy Report: from the open File menu, Right moves to Edit.
    menu({QStringLiteral("Right"), QStringLiteral("Down"), QStringLiteral("Return")});
    QString copied;
    QElapsedTimer clock;
    clock.start();
    while (copied.isEmpty() && clock.elapsed() < 10000) {
        copied =
            m_x->run(QStringLiteral("xclip"), {QStringLiteral("-o"), QStringLiteral("-selection"),
                                               QStringLiteral("clipboard")});
        if (copied.isEmpty())
            QTest::qWait(100);
    }
    QVERIFY2(copied.startsWith(QStringLiteral("Generated: ")), qPrintable(copied.left(200)));
    QVERIFY(copied.contains(QStringLiteral("\nDisplay\n\n")));
    QVERIFY(!copied.contains(QLatin1Char('<')));

    const QString headless = headlessReport(*m_x);
    QVERIFY(headless.startsWith(QStringLiteral("Generated: ")));
    // Only the start times differ; the X tool's output comes back trimmed.
    QCOMPARE(afterFirstLine(copied).trimmed(), afterFirstLine(headless).trimmed());
}

void tst_ReportHandoff::emailCarriesTheReport()
{
    // A mail program of our own, registered the freedesktop way, that writes down what it gets.
    const QString received = m_home->path(QStringLiteral("received.txt"));
    const QString recorder = m_home->path(QStringLiteral("bin/record-mail"));
    writeFile(recorder, "#!/bin/sh\nprintf '%s' \"$1\" > '" + received.toUtf8() + "'\n", true);
    writeFile(m_home->path(QStringLiteral(".local/share/applications/record-mail.desktop")),
              "[Desktop Entry]\nType=Application\nName=Mail Recorder\nExec=" + recorder.toUtf8()
                  + " %u\nMimeType=x-scheme-handler/mailto;\n");
    writeFile(m_home->path(QStringLiteral(".config/mimeapps.list")),
              "[Default Applications]\nx-scheme-handler/mailto=record-mail.desktop\n");

    m_window = startAndWaitForWindow();
    QVERIFY2(!m_window.isEmpty(), "the main window never appeared");
    // File > Email Report..., the second entry.
    menu({QStringLiteral("Down"), QStringLiteral("Down"), QStringLiteral("Return")});
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(received), 15000);
    QTest::qWait(200);
    QFile file(received);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QUrl url(QString::fromUtf8(file.readAll()));

    QCOMPARE(url.scheme(), QStringLiteral("mailto"));
    QCOMPARE(url.path(), QStringLiteral("support@kelvanmoor.com"));
    const QUrlQuery query(url);
    QCOMPARE(query.queryItemValue(QStringLiteral("subject"), QUrl::FullyDecoded),
             QStringLiteral("Corvanta Support Report"));
    const QString body = query.queryItemValue(QStringLiteral("body"), QUrl::FullyDecoded);
    QVERIFY2(body.startsWith(QStringLiteral("Generated: ")), qPrintable(body.left(200)));
    QCOMPARE(afterFirstLine(body), afterFirstLine(headlessReport(*m_x)));
}

void tst_ReportHandoff::headlessReportListsEveryScreen()
{
    XvfbServer x(
        {QStringLiteral("1920x1080"), QStringLiteral("1000x700"), QStringLiteral("1366x720")});
    QVERIFY2(x.isRunning(), "Xvfb did not start");
    const QString report = headlessReport(x);
    QVERIFY2(report.contains(QStringLiteral("Number of Screens:  3\n")), qPrintable(report));
    QVERIFY(report.contains(QStringLiteral("geometry=(1920 x 1080)")));
    QVERIFY(report.contains(QStringLiteral("geometry=(1000 x 700)")));
    QVERIFY(report.contains(QStringLiteral("geometry=(1366 x 720)")));
    QVERIFY(report.contains(QStringLiteral("Errors:\n1. Screen 2 is too narrow.\n"
                                           "2. Screen 2 is too short.\n"
                                           "3. Screen 3 is too short.\n\n")));
}

void tst_ReportHandoff::headlessReportExitCodes_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("output");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no display") << QStringList() << QString() << 0 << QString();
    QTest::newRow("unknown argument") << QStringList{"--verbose"} << QString() << 2
                                      << "corvanta-support-report: unknown argument \"--verbose\"";
    QTest::newRow("output cannot be written")
        << QStringList() << "/dev/full" << 1 << "corvanta-support-report: cannot write the report";
}

// Over a remote shell there is no display: the report still comes, and a failure says why in one
// line.
void tst_ReportHandoff::headlessReportExitCodes()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, output);
    QFETCH(int, exitCode);
    QFETCH(QString, reason);
    QProcess report;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    report.setProcessEnvironment(environment);
    if (!output.isEmpty())
        report.setStandardOutputFile(output);
    report.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), arguments);
    QVERIFY(report.waitForFinished(60000));
    QCOMPARE(report.exitStatus(), QProcess::NormalExit);
    QCOMPARE(report.exitCode(), exitCode);
    const QStringList errors = QString::fromUtf8(report.readAllStandardError())
                                   .split(QLatin1Char('\n'), Qt::SkipEmptyParts)
                                   .filter(QStringLiteral("corvanta-support-report"));
    if (reason.isEmpty()) {
        QVERIFY(errors.isEmpty());
        const QString text = QString::fromUtf8(report.readAllStandardOutput());
        QVERIFY(text.startsWith(QStringLiteral("Generated: ")));
        QVERIFY(text.contains(QStringLiteral("\nNumber of Screens:  1\n")));
    } else {
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.first().startsWith(reason), qPrintable(errors.first()));
    }
}

QTEST_GUILESS_MAIN(tst_ReportHandoff)
#include "tst_reporthandoff.moc"
