#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

// The report program's command line, as a shell user meets it: the real program, in English.
class tst_ReportCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void answers_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("outputFile");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("outputStart");
        QTest::addColumn<QStringList>("mentions");
        QTest::addColumn<QString>("errorLine");

        const QStringList help{u"\n  -h, --help "_s,
                               u"\n  --version "_s,
                               u"\n  --format <FORMAT> "_s,
                               u"\n  --redact "_s,
                               u"\n  --save <DIR> "_s,
                               u"\n  --diff <EARLIER> "_s,
                               u"\nExamples:\n"_s,
                               u"\n  corvanta-support-report --redact --save ~/Desktop"_s,
                               u"\nExit status:\n"_s,
                               u"\n     with --diff: something changed\n"_s,
                               u"\n  2  the command line was not understood;\n"_s};
        QTest::newRow("--help") << QStringList{u"--help"_s} << QString() << 0 << u"Usage: "_s
                                << help << QString();
        QTest::newRow("-h") << QStringList{u"-h"_s} << QString() << 0 << u"Usage: "_s << help
                            << QString();
        QTest::newRow("--version")
            << QStringList{u"--version"_s} << QString() << 0 << u"corvanta-support-report 1.0.5\n"_s
            << QStringList() << QString();
        QTest::newRow("unknown option")
            << QStringList{u"--verbose"_s} << QString() << 2 << QString() << QStringList()
            << u"corvanta-support-report: unknown argument \"--verbose\"; see --help"_s;
        QTest::newRow("unknown option with a value")
            << QStringList{u"--colour=auto"_s} << QString() << 2 << QString() << QStringList()
            << u"corvanta-support-report: unknown argument \"--colour=auto\"; see --help"_s;
        QTest::newRow("unknown format")
            << QStringList{u"--format=xml"_s} << QString() << 2 << QString() << QStringList()
            << u"corvanta-support-report: unknown format \"xml\"; use text or json; see --help"_s;
        QTest::newRow("differences as json")
            << QStringList{u"--diff"_s, u"a.json"_s, u"--format"_s, u"json"_s} << QString() << 2
            << QString() << QStringList()
            << u"corvanta-support-report: --diff prints text; leave out --format json"_s;
        QTest::newRow("a third report")
            << QStringList{u"--diff"_s, u"a.json"_s, u"b.json"_s, u"c.json"_s} << QString() << 2
            << QString() << QStringList()
            << u"corvanta-support-report: unknown argument \"c.json\"; see --help"_s;
        QTest::newRow("saving a later file")
            << QStringList{u"--save=/tmp"_s, u"--diff=a.json"_s, u"b.json"_s} << QString() << 2
            << QString() << QStringList()
            << u"corvanta-support-report: --save saves this machine's report; leave out LATER"_s;
        QTest::newRow("no earlier report")
            << QStringList{u"--diff=/nonexistent/a.json"_s} << QString() << 2 << QString()
            << QStringList()
            << u"corvanta-support-report: /nonexistent/a.json: No such file or directory"_s;
        QTest::newRow("unknown option after a known one")
            << QStringList{u"--version"_s, u"-x"_s} << QString() << 2 << QString() << QStringList()
            << u"corvanta-support-report: unknown argument \"-x\"; see --help"_s;
        QTest::newRow("a word")
            << QStringList{u"report.txt"_s} << QString() << 2 << QString() << QStringList()
            << u"corvanta-support-report: unknown argument \"report.txt\"; see --help"_s;
        QTest::newRow("a value for a switch")
            << QStringList{u"--version=2"_s} << QString() << 2 << QString() << QStringList()
            << u"corvanta-support-report: Unexpected value after '--version'; see --help"_s;
        QTest::newRow("help to a full disk")
            << QStringList{u"--help"_s} << u"/dev/full"_s << 1 << QString() << QStringList()
            << u"corvanta-support-report: cannot write: "_s;
    }

    void answers()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, outputFile);
        QFETCH(int, exitCode);
        QFETCH(QString, outputStart);
        QFETCH(QStringList, mentions);
        QFETCH(QString, errorLine);

        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s,
                                    u"LC_ALL"_s, u"LC_MESSAGES"_s, u"LANGUAGE"_s})
            environment.remove(name);
        environment.insert(u"LANG"_s, u"C"_s);
        QProcess program;
        program.setProcessEnvironment(environment);
        if (!outputFile.isEmpty())
            program.setStandardOutputFile(outputFile);
        program.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), arguments);
        QVERIFY(program.waitForFinished(30000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), exitCode);

        const QString output = QString::fromUtf8(program.readAllStandardOutput());
        // Without mentions the start is the whole output.
        if (mentions.isEmpty())
            QCOMPARE(output, outputStart);
        else
            QVERIFY2(output.startsWith(outputStart), qPrintable(output));
        for (const QString& mention : std::as_const(mentions))
            QVERIFY2(output.contains(mention), qPrintable(mention));
        // Qt's own warnings may come too; the program's lines name it.
        const QStringList errors = QString::fromUtf8(program.readAllStandardError())
                                       .split('\n', Qt::SkipEmptyParts)
                                       .filter(u"corvanta-support-report"_s);
        if (errorLine.isEmpty()) {
            QVERIFY2(errors.isEmpty(), qPrintable(errors.join('\n')));
        } else {
            QCOMPARE(errors.size(), 1);
            QVERIFY2(errors.first().startsWith(errorLine), qPrintable(errors.first()));
        }
    }
};

QTEST_GUILESS_MAIN(tst_ReportCommandLine)
#include "tst_reportcommandline.moc"
