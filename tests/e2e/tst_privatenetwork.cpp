#include "BasicTextProcessor.h"
#include "PrivateNamespace.h"
#include "ProductHome.h"
#include "ReportExport.h"
#include "SupportApplication.h"
#include "SupportMainWindow.h"
#include "SupportSystemData.h"
#include "SupportSystemTab.h"
#include "SystemProfile.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QElapsedTimer>
#include <QHostInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>
#include <QTimer>
#include <QUdpSocket>

#include <unistd.h>

#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

const char windowTexts[] = "--window-texts";

// The child: prints the window's texts in the language of its environment, one group a line.
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

// The address service's and the probe's host names lead to a loopback server that never answers.
const QByteArray hostName = "qa-bench-7.example.net";
const QByteArray hosts = "127.0.0.1 localhost\n10.9.8.7 qa-bench-7.example.net qa-bench-7\n"
                         "fd00::a1:7 qa-bench-7.example.net qa-bench-7\n"
                         "127.0.0.2 api.ipify.org www.kelvanmoor.com\n";

struct Run
{
    int exitCode;
    QByteArray output;
    QString errors;
};

// The report program, or for the window's texts a child of this suite.
Run report(const QStringList& arguments,
           QProcessEnvironment environment = QProcessEnvironment::systemEnvironment(),
           const QString& outputFile = {})
{
    // A closed proxy, so the report does not wait for the silent server.
    for (const QString& name : {u"http_proxy"_s, u"https_proxy"_s})
        environment.insert(name, u"http://127.0.0.1:9"_s);
    QProcess program;
    program.setProcessEnvironment(environment);
    if (!outputFile.isEmpty())
        program.setStandardOutputFile(outputFile);
    program.start(arguments.value(0) == QLatin1String(windowTexts)
                      ? QCoreApplication::applicationFilePath()
                      : QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY),
                  arguments);
    const bool ended =
        program.waitForFinished(60000) && program.exitStatus() == QProcess::NormalExit;
    return {ended ? program.exitCode() : -1, program.readAllStandardOutput(),
            QString::fromUtf8(program.readAllStandardError())};
}

// The report's fields in page order, each as {page, heading, label, value, shown}: its heading the
// last label not indented, so a list's items stand under it; shown, value and note as printed.
QList<QStringList> fieldsOf(const QJsonArray& sections)
{
    QList<QStringList> fields;
    for (const QJsonValue& section : sections) {
        QString heading;
        for (const QJsonValue& field : section[u"fields"_s].toArray()) {
            const QString label = field[u"label"_s].toString();
            const QJsonValue value = field[u"value"_s];
            const QString note = field[u"note"_s].toString();
            heading = label.startsWith(' ') ? heading : label;
            fields << QStringList{
                section[u"name"_s].toString(), heading, label, value.toString().trimmed(),
                value.toString() + (note.isEmpty() || value.isNull() ? u""_s : u" - "_s) + note};
        }
    }
    return fields;
}

// The headings whose values name the machine or its user.
const QStringList namingHeadings{u"Host Name:"_s,           u"User Name:"_s,
                                 u"MAC Interfaces:"_s,      u"Local IP Addresses:"_s,
                                 u"External IP Address:"_s, u"UUID:"_s};

} // namespace

// The programs in a namespace with a known host name and addresses, its TLS endpoints silent.
class tst_PrivateNetwork : public QObject
{
    Q_OBJECT

    ProductHome m_home;
    QTemporaryDir m_files;
    QTcpServer m_server;
    // Each connection stays open and unanswered among the server's pending ones.
    const QSignalSpy m_connections{&m_server, &QTcpServer::newConnection};

private slots:
    void initTestCase()
    {
        QVERIFY(m_home.isValid() && m_files.isValid());
        QVERIFY(bringLoopbackUp());
        const auto localAddressTexts = [] {
            QStringList texts =
                SystemProfile::addressTexts(QHostInfo::fromName(QString::fromLatin1(hostName)));
            texts.sort();
            return texts;
        };
        // The interfaces' addresses, not the host name's; loopback only while it is all there is.
        QCOMPARE(localAddressTexts(), (QStringList{u"127.0.0.1"_s, u"::1"_s}));
        QVERIFY(addInterface(u"d0"_s, {u"10.9.8.7/24"_s, u"fd00::a1:7/64"_s}));
        QCOMPARE(::sethostname(hostName.constData(), size_t(hostName.size())), 0);
        QVERIFY(putFile(m_files.filePath(u"hosts"_s), hosts));
        QVERIFY(bindFile(m_files.filePath(u"hosts"_s), u"/etc/hosts"_s));
        QVERIFY(m_server.listen(QHostAddress(u"127.0.0.2"_s), 443));
        // Odd things to compare, and folders to save in that cannot take a report: on a tiny file
        // system of this namespace alone, and read-only.
        QCOMPARE(QProcess::execute(u"mkfifo"_s, {m_files.filePath(u"fifo"_s)}), 0);
        QFile big(m_files.filePath(u"big.json"_s));
        QVERIFY(big.open(QIODevice::WriteOnly) && big.resize(64 * 1024 * 1024 + 1));
        QVERIFY(putFile(m_files.filePath(u"empty.json"_s), {}));
        QCOMPARE(QProcess::execute(u"mount"_s, u"-t tmpfs -o size=8k tmpfs /mnt"_s.split(' ')), 0);
        QVERIFY(QDir().mkpath(u"/mnt/full"_s) && QDir().mkpath(u"/mnt/readonly"_s)
                && bindReadOnly(u"/mnt/readonly"_s));
        // The closed proxy of the other suites would answer at once, and no silence be tested.
        for (const char* name : {"http_proxy", "https_proxy", "no_proxy"})
            qunsetenv(name);
        QCOMPARE(localAddressTexts(), (QStringList{u"10.9.8.7"_s, u"fd00::a1:7"_s}));
    }

    // The report program as a shell user meets it, without a display. A row's name is its
    // command line: LANG (else C) and where its output goes around the arguments; "%1" stands
    // for the folder of odd files, "%S" for the sources. What stands before a "|" in the error
    // line begins it, the rest ends it.
    void answers_data()
    {
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("errorLine");
        QTest::addColumn<QStringList>("output"); // patterns it matches; none: it is empty
        const auto row = [](const char* command, int exitCode, const QString& errorLine,
                            const QStringList& output = {}) {
            QTest::newRow(command) << exitCode << errorLine << output;
        };
        row("--help", 0, {}, {u"^Usage: "_s, u"\n  2  the command line was not understood;\n"_s});
        row("--version", 0, {}, {u"^corvanta-support-report 1\\.0\\.5\n$"_s});
        row("--version=2", 2, u"Unexpected value after '--version'; see --help"_s);
        row("--colour=auto", 2, u"unknown argument \"--colour=auto\"; see --help"_s);
        row("--format=xml", 2, u"unknown format \"xml\"; use text or json; see --help"_s);
        row("--diff a.json --format json", 2, u"--diff prints text; leave out --format json"_s);
        row("--diff a.json b.json c.json", 2, u"unknown argument \"c.json\"; see --help"_s);
        row("--save=/tmp --diff=a.json b.json", 2,
            u"--save saves this machine's report; leave out LATER"_s);
        row("--diff=/nonexistent/a.json", 2, u"/nonexistent/a.json: No such file or directory"_s);
        row("--diff %1/empty.json", 2, u"%1/empty.json: not JSON (illegal value at byte 0)"_s);
        // Looked at, never opened: a FIFO would not even open, nor a read of it end.
        row("--diff %1/fifo", 2, u"%1/fifo: not a regular file, so not a report"_s);
        row("--diff %1", 2, u"%1: a folder, not a report"_s);
        row("--diff %1/big.json", 2, u"%1/big.json: larger than 64 MiB, so not a report"_s);
        row("--diff %S/app/report.schema.json", 2,
            u"%S/app/report.schema.json: not a Corvanta Support report"_s);
        row("--save=", 2, u"--save needs the folder to save the report in; see --help"_s);
        row("--save %1/empty.json", 2, u"--save needs a folder, not a file; see --help"_s);
        // The message names the file and the system's reason; nothing is left.
        row("--save=/mnt/full >/dev/full", 1,
            u"cannot save the report: /mnt/full/Corvanta Support Report |: No space left on device"_s);
        row("--save=/mnt/readonly >/dev/full", 1,
            u"cannot save the report: /mnt/readonly: Read-only file system"_s);
        row("--help >/dev/full", 1, u"cannot write: "_s);
        row(">/dev/full", 1, u"cannot write the report"_s);
        row("LANG=de_DE.UTF-8 --help", 0, {},
            {u"Diese Hilfe anzeigen und beenden\\."_s, u"\nExit-Status:\n"_s});
        // In English for support whatever the user's language; no made-up screen.
        row("LANG=de_DE.UTF-8", 0, {},
            {u"^Generated: "_s,
             u"\nDisplay\n\nNo display server could be reached, so there are no screens to "
             "describe\\.\n+="_s,
             u"={50}\nSystem\n\nOperating System:   [^=]*\nWinInet:            Error\n[^=]*\n$"_s});
        // Qt has French texts, the program has none: nothing may mix two languages.
        row("LANG=de_DE.UTF-8 --window-texts", 0, {},
            {u"^&Datei\\|&Bearbeiten\\|&Hilfe\n1 Byte\nAbbrechen\n$"_s});
        row("LANG=fr_FR.UTF-8 --window-texts", 0, {},
            {u"^&File\\|&Edit\\|&Help\n1 byte\nCancel\n$"_s});
    }

    void answers()
    {
        QFETCH(int, exitCode);
        QFETCH(QString, errorLine);
        QFETCH(QStringList, output);
        const auto expand = [this](QString text) {
            return text.replace(u"%1"_s, m_files.path())
                .replace(u"%S"_s, QStringLiteral(CORVANTA_SOURCE_DIR));
        };
        QStringList arguments =
            expand(QString::fromLatin1(QTest::currentDataTag())).split(' ', Qt::SkipEmptyParts);
        errorLine = expand(errorLine);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // As root meets it over a remote shell: without a runtime folder.
        for (const QString& name : u"LC_ALL LC_MESSAGES LANGUAGE DISPLAY WAYLAND_DISPLAY "
                                   "QT_QPA_PLATFORM XDG_RUNTIME_DIR"_s.split(' '))
            environment.remove(name);
        environment.insert(u"LANG"_s, arguments.value(0).startsWith(u"LANG="_s)
                                          ? arguments.takeFirst().mid(5)
                                          : u"C"_s);
        const bool full = arguments.removeAll(u">/dev/full"_s) == 1;
        const Run run = report(arguments, environment, full ? u"/dev/full"_s : QString());
        QCOMPARE(run.exitCode, exitCode);

        const QString text = QString::fromUtf8(run.output);
        QVERIFY2(output.isEmpty() == text.isEmpty(), qPrintable(text));
        for (const QString& pattern : std::as_const(output))
            QVERIFY2(QRegularExpression(pattern).match(text).hasMatch(),
                     qPrintable(pattern + u"\n---\n"_s + text));
        // Help and version come without the window system, so alone; Qt may add warnings elsewhere.
        QStringList lines = run.errors.split('\n', Qt::SkipEmptyParts);
        if (!arguments.contains(u"--help"_s) && !arguments.contains(u"--version"_s))
            lines = lines.filter(u"corvanta-support-report: "_s);
        const QString errors = lines.join('\n').remove(u"corvanta-support-report: "_s);
        QVERIFY2(lines.size() == (errorLine.isEmpty() ? 0 : 1)
                     && errors.startsWith(errorLine.section('|', 0, 0))
                     && errors.endsWith(errorLine.section('|', 1)),
                 qPrintable(run.errors));
        if (const QString savedIn = arguments.filter(u"--save="_s).value(0).mid(7);
            full && !savedIn.isEmpty())
            QCOMPARE(
                QDir(savedIn).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                QStringList());
    }

    // Each row names the host and the user, common words but on this bench, beside a version like
    // an address. Saved redacted, a whole bundle whose fields all stand in its text; only names
    // change; run again, the placeholders are kept, so there is no difference to tell.
    void redactedBundles_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("user");
        QTest::newRow("this bench")
            << QString::fromLatin1(hostName) << QFileInfo(QDir::homePath()).fileName();
        QTest::newRow("debian, local") << u"debian"_s << u"local"_s;
        QTest::newRow("mono, sans") << u"mono"_s << u"sans"_s;
        QTest::newRow("home, data") << u"home"_s << u"data"_s;
        QTest::newRow("system, linux") << u"system"_s << u"linux"_s;
    }

    void redactedBundles()
    {
        QFETCH(QString, host);
        QFETCH(QString, user);
        const bool bench = host == QString::fromLatin1(hostName);
        // On this bench the product as a user has it; else preferences list a home path, and no
        // data folder puts "Application Data" in the errors.
        const QString home = bench ? QDir::homePath() : m_files.filePath(u"home/"_s + user);
        QVERIFY(bench
                    ? m_home.prepare()
                    : QDir(home).removeRecursively()
                          && putFile(home + u"/.config/Kelvanmoor/Corvanta.ini"_s, "[General]\n"));
        QVERIFY(putFile(home + u"/.local/share/applications/corvanta.desktop"_s,
                        "[Desktop Entry]\nType=Application\nName=Corvanta\n"
                        "Exec=/opt/Corvanta/Corvanta\nX-AppImage-Version=5.2.0.14\n"));
        QVERIFY(putFile(m_files.filePath(u"passwd"_s),
                        (user + u":x:0:0::"_s + home + u":/bin/sh\n"_s).toUtf8()));
        // The folders of this minute are taken, so the report gets a folder of its own beside.
        const QString parent = home + u"/saved"_s;
        const QDateTime now = QDateTime::currentDateTimeUtc();
        for (int second = 0; second < 60; ++second)
            QVERIFY(QDir().mkpath(parent + '/' + reportFolderName(now.addSecs(second))));
        // A real display, so the Display page has fields as well. The bundle's files are those its
        // checksums name, its JSON is in the published schema; a second run meets the placeholders
        // the first one kept, so there is no difference to tell.
        const XvfbServer x;
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        QProcess run;
        run.setProcessEnvironment(x.environment());
        run.setWorkingDirectory(m_files.path());
        run.start(
            u"unshare"_s,
            {u"-mu"_s, u"sh"_s, u"-c"_s,
             u"hostname \"$1\" && mount --bind passwd /etc/passwd && export HOME=\"$2\" && "
             "unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME XDG_RUNTIME_DIR && export "
             "http_proxy=http://127.0.0.1:9 https_proxy=http://127.0.0.1:9 && "
             "\"$0\" --format json > plain.json && \"$0\" --redact --format json --save "
             "\"$3\" > redacted.json 2> redacted.errors && (cd \"$3\"/*' (2)' && "
             "sha256sum --check --strict --quiet SHA256SUMS && python3 -c 'import json, "
             "sys, jsonschema; jsonschema.validate(json.load(open(\"report.json\")), "
             "json.load(open(sys.argv[1])))' \"$4\") && sed s/qa-bench-7/oldbox/g plain.json > "
             "renamed.json && { \"$0\" --redact --diff renamed.json; "
             "\"$0\" --redact --diff renamed.json plain.json; true; } > renamed.diff && "
             "\"$0\" --redact --diff redacted.json"_s,
             QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), host, home, parent,
             QStringLiteral(CORVANTA_SOURCE_DIR "/app/report.schema.json")});
        QVERIFY(run.waitForFinished(60000));
        QCOMPARE(run.readAllStandardOutput(), QByteArray());
        QVERIFY2(run.exitCode() == 0, run.readAllStandardError().constData());
        const QByteArray redactedJson = fileBytes(m_files.filePath(u"redacted.json"_s));
        const QString errors = QString::fromUtf8(fileBytes(m_files.filePath(u"redacted.errors"_s)));
        QVERIFY2(errors.contains(u"saved the report in \"~/saved/"_s), qPrintable(errors));
        // A name only the earlier report gives is hidden too, in both forms of the comparison.
        const QByteArray renamed = fileBytes(m_files.filePath(u"renamed.diff"_s));
        QVERIFY2(!renamed.toLower().contains("oldbox")
                     && (!bench || renamed.count("changed   Host Name: \"host-") == 2),
                 renamed.constData());
        const QStringList copies =
            QDir(parent).entryList({u"* (2)"_s}, QDir::Dirs | QDir::NoDotAndDotDot);
        QCOMPARE(copies.size(), 1);
        QCOMPARE(
            QDir(parent).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(),
            61);
        const QDir folder(parent + '/' + copies.first());
        QCOMPARE(fileBytes(folder.filePath(u"report.json"_s)), redactedJson);
        const QJsonArray plain =
            QJsonDocument::fromJson(fileBytes(m_files.filePath(u"plain.json"_s)))[u"sections"_s]
                .toArray();
        const QJsonArray redacted = QJsonDocument::fromJson(redactedJson)[u"sections"_s].toArray();
        const QString saved = QString::fromUtf8(fileBytes(folder.filePath(u"report.txt"_s)));
        QCOMPARE(redacted.size(), saved.count(QString(50, '=') + '\n'));
        QCOMPARE(redacted.size(), plain.size());
        // Labels stay, the home aside; the values that name the machine give what stands for them.
        const QList<QStringList> before = fieldsOf(plain);
        const QList<QStringList> after = fieldsOf(redacted);
        QCOMPARE(after.size(), before.size());
        QVERIFY(before.size() > 50);
        QMap<QString, QString> swaps;
        QStringList wording; // page names and labels
        for (qsizetype i = 0; i < before.size(); ++i) {
            const QString label = before[i][2];
            if (!label.contains('\n'))
                QCOMPARE(after[i][0] + after[i][2],
                         before[i][0] + QString(label).replace(home, u"~"_s));
            if (namingHeadings.contains(before[i][1]) && !before[i][3].isEmpty())
                swaps.insert(before[i][3], after[i][3]);
            const QString word = label.trimmed();
            if (!label.contains('\n') && !word.startsWith('/') && !word.isEmpty())
                wording << before[i][0] << (word.endsWith(':') ? word.chopped(1) : word);
        }
        QCOMPARE(swaps.value(host), u"host-1"_s);
        QCOMPARE(swaps.value(user), u"user-1"_s);
        for (const QString& known : {QString::fromLatin1(hostName), u"10.9.8.7"_s, u"fd00::a1:7"_s,
                                     u"6f1c2d3e-0000-4000-8000-0123456789ab"_s})
            QVERIFY2(!bench || swaps.contains(known), qPrintable(known));
        swaps.insert(home, u"~"_s);

        // Wording stays word for word; free space and the clock move.
        std::sort(wording.begin(), wording.end(),
                  [](const QString& a, const QString& b) { return a.size() > b.size(); });
        static const QRegularExpression moving(u"^(FreeSpace|System Time).*$"_s,
                                               QRegularExpression::MultilineOption);
        const auto hideWording = [&wording](const QJsonValue& section) {
            QString text = section[u"text"_s].toString().remove(moving);
            for (qsizetype i = 0; i < wording.size(); ++i)
                text.replace(wording[i], u"\x01%1\x02"_s.arg(i));
            return text;
        };
        const QString system = u"\x01%1\x02"_s.arg(wording.indexOf(u"Operating System"_s));
        // A whole token in any case; ".local" is another word.
        const auto token = [](const QString& value) {
            return QRegularExpression(u"(?<![\\p{L}\\p{N}.])%1(?![\\p{L}\\p{N}])"_s.arg(
                                          QRegularExpression::escape(value)),
                                      QRegularExpression::CaseInsensitiveOption);
        };
        for (qsizetype i = 0; i < plain.size(); ++i) {
            const QString page = redacted[i][u"text"_s].toString();
            const QList<QStringList> fields = fieldsOf(QJsonArray{redacted[i]});
            // Every page that shows anything shows it as fields, in page order: label (at a line's
            // start or after the field before), value, note.
            QVERIFY2(!fields.isEmpty() || page.trimmed().isEmpty(), qPrintable(page));
            QVERIFY(
                saved.contains('\n' + redacted[i][u"name"_s].toString() + u"\n\n"_s + page + '\n'));
            qsizetype position = 0;
            for (const QStringList& field : fields) {
                const QRegularExpressionMatch match =
                    QRegularExpression(
                        u"(?:^ *|\\G)%1 *%2 *$"_s.arg(QRegularExpression::escape(field[2]),
                                                      QRegularExpression::escape(field[4])),
                        QRegularExpression::MultilineOption)
                        .match(page, position);
                QVERIFY2(match.hasMatch(), qPrintable(field.join('|')));
                position = match.capturedEnd();
            }
            // Only names change; the operating system's and the fonts' names stay what they are.
            const bool fonts = plain[i][u"kind"_s].toInt() == 1;
            QStringList lines = hideWording(plain[i]).split('\n');
            for (QString& line : lines) {
                for (auto it = swaps.cbegin();
                     it != swaps.cend() && !fonts && !line.startsWith(system); ++it)
                    line.replace(token(it.key()), it.value());
            }
            QCOMPARE(hideWording(redacted[i]), lines.join('\n'));
        }
        QVERIFY(redactedJson.contains(" - 5.2.0.14")
                && redactedJson.contains(" ~/.config/Kelvanmoor/Corvanta.ini OK"));
        // Qt's own messages too, such as the runtime folder it names after the user.
        for (const QString& value : {host, user})
            QVERIFY2(!errors.contains(token(value)), qPrintable(value));
        // Names that are no words are nowhere, in any case, a MAC with colons too; the redactor's
        // rows prove the other spellings.
        QString outputs = errors;
        const QStringList files = folder.entryList(QDir::Files);
        QCOMPARE(files.size(), 4);
        for (const QString& name : files)
            outputs += QString::fromLatin1(fileBytes(folder.filePath(name)));
        for (auto it = swaps.cbegin(); it != swaps.cend() && bench; ++it) {
            for (const QString& form : {it.key(), QString(it.key()).replace('-', ':')})
                QVERIFY2(!outputs.contains(form, Qt::CaseInsensitive), qPrintable(form));
        }
    }

    // Folder, preferences, association and environment.d appear.
    void differencesSinceAnEarlierReport()
    {
        QVERIFY(m_home.prepare());
        QVERIFY(QDir(m_home.dataFolder()).removeRecursively());
        QVERIFY(QFile::remove(m_home.preferences()) && QFile::remove(m_home.userMimeapps()));
        const QString earlier = m_files.filePath(u"earlier.json"_s);
        QCOMPARE(
            report({u"--format"_s, u"json"_s}, QProcessEnvironment::systemEnvironment(), earlier)
                .exitCode,
            0);

        QVERIFY(QDir().mkpath(m_home.dataFolder()));
        QVERIFY(putFile(m_home.preferences(), ProductHome::preferencesText));
        QVERIFY(putFile(m_home.userMimeapps(), ProductHome::mimeapps));
        QVERIFY(putFile(m_home.path(u".config/environment.d/60-corvanta-support.conf"_s),
                        "QT_AUTO_SCREEN_SCALE_FACTOR=0\n"));
        const Run run = report({u"--diff"_s, earlier});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(QString::fromUtf8(run.output),
                 u"Permissions:\n"
                 "  appeared  %1/.config/Kelvanmoor/Corvanta.ini \"OK\"\n"
                 "  appeared  %1/.local/share/Corvanta \"OK\"\n"
                 "Corvanta:\n"
                 "  changed   Application Data: \"%1/.local/share/Corvanta - Does Not Exist\" -> "
                 "\"%1/.local/share/Corvanta\"\n"
                 "  appeared  File Associations (User): \".cvd\"\n"
                 "  error gone: Application Data folder not found.\n"_s.arg(QDir::homePath()));
    }

    // The window beats the probe's bound, a copied report waits; the refresh never holds the loop.
    void windowAndSystemRefreshLeaveTheGuiThreadFree()
    {
        {
            XvfbServer x;
            QElapsedTimer launch;
            launch.start();
            const QString main = x.startMainWindow();
            QVERIFY2(!main.isEmpty() && launch.elapsed() < 8000,
                     qPrintable(u"the window took %1 ms"_s.arg(launch.elapsed())));
            QTRY_VERIFY2(!m_connections.isEmpty(), "the program never reached the silent server");
            x.keys({u"Right"_s, u"Down"_s, u"Return"_s}, main);
            QString copied;
            QVERIFY(QTest::qWaitFor([&] { return !(copied = x.clipboard()).isEmpty(); }, 20000));
            // The report waited for the silent network.
            QVERIFY2(launch.elapsed() >= 9000 && copied.contains(u"\nWinInet:            Error\n"_s)
                         && !copied.contains(SupportSystemData::checkingText()),
                     qPrintable(copied));
        }
        SupportSystemData data;
        SupportSystemTab tab(&data);
        tab.show();
        QSignalSpy probed(&data, &SupportSystemData::signalProbeFinished);
        const auto page = [&tab] {
            return tab.findChild<QLabel*>()->text();
        };
        const qsizetype connectionsBefore = m_connections.size();

        QElapsedTimer sinceBeat;
        QElapsedTimer refresh;
        qint64 longestGap = 0;
        sinceBeat.start();
        refresh.start();
        QTimer::singleShot(0, &tab, [&] {
            tab.updateContent();
            QVERIFY(page().contains(u"WinInet:            Checking..."_s));
        });
        // Each turn of the thread's own loop is a beat; QSignalSpy::wait would nest a loop.
        const auto beat = [&] {
            longestGap = std::max(longestGap, sinceBeat.restart());
            return !probed.isEmpty();
        };
        QVERIFY(QTest::qWaitFor(beat, 30000));
        QVERIFY2(page().contains(u"WinInet:            Error"_s)
                     && !page().contains(SupportSystemData::checkingText()),
                 qPrintable(page()));
        QVERIFY2(refresh.elapsed() >= 9000 && m_connections.size() >= connectionsBefore + 2,
                 "the probe was not held by the silent server");
        QVERIFY2(longestGap <= 2000,
                 qPrintable(u"the GUI thread was held for %1 ms"_s.arg(longestGap)));
    }

    // With a silent name server too, the headless report waits once for the 10 s bound, not 8 + 10.
    void headlessReportWaitsOnce()
    {
        QUdpSocket nameServer;
        QVERIFY(nameServer.bind(QHostAddress(u"127.0.0.3"_s), 53));
        const QString resolver = m_files.filePath(u"resolv.conf"_s);
        QVERIFY(putFile(resolver, "nameserver 127.0.0.3\noptions timeout:8 attempts:1\n"));
        // A host name the hosts file does not know, so the report asks the silent name server.
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(QProcess::execute(u"unshare"_s,
                                   {u"-mu"_s, u"sh"_s, u"-c"_s,
                                    u"hostname unlisted && mount --bind \"$0\" /etc/resolv.conf && "
                                    "exec \"$1\" > /dev/null"_s,
                                    resolver, QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY)}),
                 0);
        const qint64 took = clock.elapsed();
        QVERIFY2(nameServer.hasPendingDatagrams(), "the report never asked the name server");
        QVERIFY2(took >= 9000 && took < 14000, qPrintable(u"the report waited %1 ms"_s.arg(took)));
    }
};

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], windowTexts) == 0)
        return printUserTexts(argc, argv);
    if (!enterPrivateNamespace(argc, argv, "-rmnu"))
        return 1;
    QApplication application(argc, argv);
    tst_PrivateNetwork test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_privatenetwork.moc"
