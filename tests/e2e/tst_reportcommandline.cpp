#include "BasicTextProcessor.h"
#include "SupportApplication.h"
#include "SupportMainWindow.h"

#include <QDialogButtonBox>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

const char windowTexts[] = "--window-texts";

// The child: the application and its window as the program builds them, in the language of the
// child's environment. Prints what the user reads, one group a line.
int printUserTexts(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    SupportApplication application(argc, argv);
    const SupportMainWindow window;
    QStringList menus;
    for (const QAction* menu : window.menuBar()->actions())
        menus << menu->text();
    const QDialogButtonBox buttons(QDialogButtonBox::Cancel);
    const QStringList lines{menus.join('|'), BasicTextProcessor::formatBytes(1),
                            buttons.button(QDialogButtonBox::Cancel)->text()};
    std::fputs(qPrintable(lines.join('\n') + '\n'), stdout);
    return 0;
}

} // namespace

// The report program as a shell user meets it over a remote shell: the real program, without a
// display and without a network, in the language of LANG. The window's texts follow LANG too.
class tst_ReportCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void answers_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QString>("outputFile");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QStringList>("output"); // patterns it matches; none: it is empty
        QTest::addColumn<QString>("errorLine");
        const auto row = [](const char* name, const QStringList& arguments, int exitCode,
                            const QStringList& output, const QString& errorLine = {},
                            const QString& outputFile = {}, const QString& lang = u"C"_s) {
            QTest::newRow(name) << arguments << lang << outputFile << exitCode << output
                                << errorLine;
        };
        row("--help", {u"--help"_s}, 0,
            {u"^Usage: "_s, u"\n  --diff <EARLIER> "_s,
             u"\n  corvanta-support-report --redact --save ~/Desktop"_s, u"\nExit status:\n"_s,
             u"\n  2  the command line was not understood;\n"_s});
        row("--version", {u"--version"_s}, 0, {u"^corvanta-support-report 1\\.0\\.5\n$"_s});
        row("a value for a switch", {u"--version=2"_s}, 2, {},
            u"Unexpected value after '--version'; see --help"_s);
        row("unknown option with a value", {u"--colour=auto"_s}, 2, {},
            u"unknown argument \"--colour=auto\"; see --help"_s);
        row("unknown format", {u"--format=xml"_s}, 2, {},
            u"unknown format \"xml\"; use text or json; see --help"_s);
        row("differences as json", {u"--diff"_s, u"a.json"_s, u"--format"_s, u"json"_s}, 2, {},
            u"--diff prints text; leave out --format json"_s);
        row("a third report", {u"--diff"_s, u"a.json"_s, u"b.json"_s, u"c.json"_s}, 2, {},
            u"unknown argument \"c.json\"; see --help"_s);
        row("saving a later file", {u"--save=/tmp"_s, u"--diff=a.json"_s, u"b.json"_s}, 2, {},
            u"--save saves this machine's report; leave out LATER"_s);
        row("no earlier report", {u"--diff=/nonexistent/a.json"_s}, 2, {},
            u"/nonexistent/a.json: No such file or directory"_s);
        row("no JSON to compare", {u"--diff"_s, u"/dev/null"_s}, 2, {},
            u"/dev/null: not JSON (illegal value at byte 0)"_s);
        row("another tool's JSON",
            {u"--diff"_s, QStringLiteral(CORVANTA_SOURCE_DIR "/app/report.schema.json")}, 2, {},
            QStringLiteral(CORVANTA_SOURCE_DIR
                           "/app/report.schema.json: not a Corvanta Support report"));
        row("help to a full disk", {u"--help"_s}, 1, {}, u"cannot write: "_s, u"/dev/full"_s);
        row("report to a full disk", {}, 1, {}, u"cannot write the report"_s, u"/dev/full"_s);
        row("German help", {u"--help"_s}, 0,
            {u"Diese Hilfe anzeigen und beenden\\."_s, u"\nExit-Status:\n"_s}, {}, {},
            u"de_DE.UTF-8"_s);
        // The report still comes, in English for support whatever the user's language: the
        // display said to be missing rather than described from a made-up screen, System last
        // with its probe failed.
        row("German report", {}, 0,
            {u"^Generated: "_s,
             u"\nDisplay\n\nNo display server could be reached, so there are no screens to "
             "describe\\.\n+="_s,
             u"={50}\nSystem\n\nOperating System:   [^=]*\nWinInet:            Error\n[^=]*\n$"_s},
            {}, {}, u"de_DE.UTF-8"_s);
        // Where the program has a translation for LANG, Qt's own texts come in the same language.
        // Qt has French texts, the program has none: nothing may mix two languages.
        const QString window = QString::fromLatin1(windowTexts);
        row("German window", {window}, 0, {u"^Datei\\|Bearbeiten\\|Hilfe\n1 Byte\nAbbrechen\n$"_s},
            {}, {}, u"de_DE.UTF-8"_s);
        row("French window", {window}, 0, {u"^File\\|Edit\\|Help\n1 byte\nCancel\n$"_s}, {}, {},
            u"fr_FR.UTF-8"_s);
    }

    void answers()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, lang);
        QFETCH(QString, outputFile);
        QFETCH(int, exitCode);
        QFETCH(QStringList, output);
        QFETCH(QString, errorLine);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"LC_ALL"_s, u"LC_MESSAGES"_s, u"LANGUAGE"_s, u"DISPLAY"_s,
                                    u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s})
            environment.remove(name);
        environment.insert(u"LANG"_s, lang);
        QProcess program;
        program.setProcessEnvironment(environment);
        if (!outputFile.isEmpty())
            program.setStandardOutputFile(outputFile);
        // The window's texts come from a child of this suite.
        const QString binary = arguments.value(0) == QLatin1String(windowTexts)
                                   ? QCoreApplication::applicationFilePath()
                                   : QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY);
        program.start(u"unshare"_s, QStringList{u"-rn"_s, binary} + arguments);
        QVERIFY(program.waitForFinished(60000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), exitCode);

        const QString text = QString::fromUtf8(program.readAllStandardOutput());
        QVERIFY2(output.isEmpty() == text.isEmpty(), qPrintable(text));
        for (const QString& pattern : std::as_const(output))
            QVERIFY2(QRegularExpression(pattern).match(text).hasMatch(),
                     qPrintable(pattern + u"\n---\n"_s + text));
        // Qt's own warnings may come too; the program's lines name it.
        const QStringList errors = QString::fromUtf8(program.readAllStandardError())
                                       .split('\n', Qt::SkipEmptyParts)
                                       .filter(u"corvanta-support-report"_s)
                                       .replaceInStrings(u"corvanta-support-report: "_s, QString());
        QCOMPARE(errors.size(), errorLine.isEmpty() ? 0 : 1);
        QVERIFY2(errors.join('\n').startsWith(errorLine), qPrintable(errors.join('\n')));
    }
};

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], windowTexts) == 0)
        return printUserTexts(argc, argv);
    QCoreApplication application(argc, argv);
    tst_ReportCommandLine test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_reportcommandline.moc"
